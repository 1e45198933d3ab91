// SPDX-License-Identifier: MIT
// Access to the contents of listings.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"

namespace sorvik_test {

// The text of a field; "<none>" if the field is missing or no text.
inline std::string TextOf(const Sorvik::FieldValueMap& fields, const std::string& name) {
  const auto found = fields.find(name);
  const auto* text = found == fields.end() ? nullptr : found->second.get_if<std::string>();
  return text == nullptr ? "<none>" : *text;
}

// The paths of ExtraPath relative to `root`; "<none>" as the only item if the entry has no list.
inline std::vector<std::string> ExtraPathsOf(const Sorvik::FieldValueMap& fields,
                                             const std::string& root) {
  using List = std::vector<Sorvik::any_regular_t>;
  const auto found = fields.find(Sorvik::kExtraPathField);
  const auto* list = found == fields.end() ? nullptr : found->second.get_if<List>();
  if (list == nullptr) return {"<none>"};
  std::vector<std::string> paths;
  for (const Sorvik::any_regular_t& item : *list) {
    const auto path = item.cast<std::string>();
    paths.push_back(path.starts_with(root + "/") ? path.substr(root.size() + 1) : path);
  }
  return paths;
}

inline std::vector<std::string> KeysOf(const Sorvik::ContentMap& content) {
  std::vector<std::string> keys;
  for (const auto& [key, fields] : content) keys.push_back(key);
  return keys;
}

}  // namespace sorvik_test
