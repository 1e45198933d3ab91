// SPDX-License-Identifier: MIT
// The typed values that an entry carries while a MachineValueScope exists.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/metadata/MachineValues.h"

namespace Sorvik::XMPSupport {

class MachineRecord {
 public:
  struct Item {
    const char* name;      // of the field, in the field table
    std::size_t textHash;  // of the display text that was made from the same property
    MachineValue value;

    // False if a provider has replaced the text.
    bool MadeText(const std::string& text) const {
      return std::hash<std::string>()(text) == textHash;
    }
  };

  void Add(const char* name, const std::string& text, MachineValue value) {
    if (value.index() == 0) return;
    items_.push_back({name, std::hash<std::string>()(text), std::move(value)});
  }

  const Item* Find(std::string_view name) const {
    for (const Item& item : items_) {
      if (item.name == name) return &item;
    }
    return nullptr;
  }

  // Stores `record` in the entry as an additional field, unless it is empty.
  static void AddTo(FieldValueMap& entry, MachineRecord record) {
    if (record.items_.empty()) return;
    entry[kField] = any_regular_t(std::make_shared<const MachineRecord>(std::move(record)));
  }

  // Removes the field. Returns nullptr if there is none.
  static std::shared_ptr<const MachineRecord> TakeFrom(FieldValueMap& entry) {
    const auto field = entry.find(kField);
    if (field == entry.end()) return nullptr;
    const auto* held = field->second.get_if<std::shared_ptr<const MachineRecord>>();
    std::shared_ptr<const MachineRecord> record = held == nullptr ? nullptr : *held;
    entry.erase(field);
    return record;
  }

 private:
  static constexpr char kField[] = "\x01MachineRecord";  // no name of a field

  std::vector<Item> items_;
};

}  // namespace Sorvik::XMPSupport
