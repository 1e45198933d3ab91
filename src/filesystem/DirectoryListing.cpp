// SPDX-License-Identifier: MIT
#include "filesystem/DirectoryListing.h"

#include <optional>
#include <utility>

#include "SorvikProvider/frame/Provider.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "filesystem/DirectoryFields.h"
#include "filesystem/Shortcuts.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/LocalTime.h"

namespace Sorvik {
namespace {

namespace attribute = platform::attribute;
using platform::FactsState;
using platform::FileFacts;
using platform::FolderName;
using platform::FolderView;
using platform::ItemType;

constexpr std::uint32_t kNeverListed = attribute::kDevice | attribute::kHidden | attribute::kSystem;

std::string LeafOf(const std::string& path) {
  return Hestra::MakeStdString(
      Hestra::PathUtils::GetLeafDisplayStringFromPath(Hestra::MakeString(path)));
}

// Builds the entries of one folder.
class EntryBuilder {
 public:
  EntryBuilder(const FolderView& view, const std::string& path, const FieldNameSet& fields)
      : view_(view),
        path_(path),
        prefix_(path == "/" ? path : path + "/"),
        choice_(fields),
        needsFacts_(choice_.NeedsFacts()),
        needsTarget_(choice_.NeedsTarget()),
        needsShortName_(choice_.Has(DirectoryValue::kShortName)) {}

  // Adds the entry of an item, unless a listing omits such items.
  void AddListed(const FolderName& item, ContentMap& content) {
    if (item.name.front() == '.' || item.type == ItemType::kDevice) return;
    // The name is enough, except where hidden is a stored attribute.
    const bool read = needsFacts_ || item.type == ItemType::kUnknown || view_.StoresAttributes();
    if (read && !ReadFacts(item)) return;
    if (read && (facts_.attributes & kNeverListed) != 0) return;
    Add(item, content);
  }

  // Adds the entry of any existing item.
  void AddOne(const FolderName& item, ContentMap& content) {
    const FactsState state = view_.ReadFacts(item, needsShortName_, facts_);
    if (state == FactsState::kKnown || state == FactsState::kUnresponsive) Add(item, content);
  }

 private:
  // False if the item is missing. If its facts can't be read they stay empty.
  bool ReadFacts(const FolderName& item) {
    const FactsState state = view_.ReadFacts(item, needsShortName_, facts_);
    if (state == FactsState::kRefused) facts_ = FileFacts();
    return state != FactsState::kMissing;
  }

  void Add(const FolderName& item, ContentMap& content) {
    // Items come in the order of the map, so the hint is always right.
    const auto entry = content.emplace_hint(content.end(), item.name, FieldValueMap());
    FieldValueMap& fields = entry->second;
    const std::optional<std::string> target = TargetOf(item);
    for (const DirectoryField* field : choice_.Fields()) {
      fields.emplace_hint(fields.end(), field->name, ValueOf(*field, item.name, target));
    }
  }

  std::optional<std::string> TargetOf(const FolderName& item) const {
    if (!needsTarget_ || !HasShortcutName(item.name) || item.type == ItemType::kDirectory) {
      return std::nullopt;
    }
    return ShortcutTarget(path_, std::string(item.name));
  }

  any_regular_t ValueOf(const DirectoryField& field, std::string_view name,
                        const std::optional<std::string>& target) {
    switch (field.value) {
      case DirectoryValue::kName:
        return any_regular_t(target ? LeafOf(*target) : std::string(name));
      case DirectoryValue::kPath:
      case DirectoryValue::kDisplayPath:
        return any_regular_t(target ? *target : FullPath(name));
      case DirectoryValue::kExtraPath:
        return any_regular_t();
      case DirectoryValue::kAttribute:
        return any_regular_t(std::string((facts_.attributes & field.bit) != 0 ? field.text : ""));
      case DirectoryValue::kShortName:
        return any_regular_t(facts_.shortName);
      case DirectoryValue::kCreated:
        return any_regular_t(times_.Of(facts_.created));
      case DirectoryValue::kAccessed:
        return any_regular_t(times_.Of(facts_.accessed));
      case DirectoryValue::kWritten:
        return any_regular_t(times_.Of(facts_.written));
      case DirectoryValue::kSize:
        return facts_.size ? any_regular_t(Provider::ByteSize_t(*facts_.size)) : any_regular_t();
    }
    return any_regular_t();
  }

  std::string FullPath(std::string_view name) const {
    std::string path;
    path.reserve(prefix_.size() + name.size());
    return path.append(prefix_).append(name);
  }

  const FolderView& view_;
  const std::string& path_;
  std::string prefix_;
  DirectoryFieldChoice choice_;
  bool needsFacts_;
  bool needsTarget_;
  bool needsShortName_;
  FileFacts facts_;  // of the current item
  platform::LocalTimeText times_;
};

}  // namespace

ContentMap ListDirectory(const FolderView& view, const std::string& path,
                         const FieldNameSet& fields, ProviderRequest* request) {
  EntryBuilder builder(view, path, fields);
  ContentMap content;
  const std::vector<FolderName>& names = view.Names();
  // Sorted names are scattered over the memory in which they were read.
  constexpr std::size_t kAhead = 8;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    if (i + kAhead < names.size()) __builtin_prefetch(names[i + kAhead].name.data());
    builder.AddListed(names[i], content);
  }
  return content;
}

ContentMap ListOneEntry(const FolderView& view, const std::string& path, const std::string& key,
                        const FieldNameSet& fields) {
  ContentMap content;
  EntryBuilder(view, path, fields).AddOne({key, ItemType::kUnknown}, content);
  return content;
}

}  // namespace Sorvik
