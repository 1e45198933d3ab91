// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderMediaFilesBase.h"

#include <algorithm>
#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "providers/common/CardParts.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/modern/PartDurations.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

constexpr char kCameraField[] = "camera";

std::vector<std::string> ExtraPaths(const MediaList& list, const MediaEntry& entry) {
  std::vector<std::string> paths(entry.parts.begin() + 1, entry.parts.end());
  for (const MediaFile& file : entry.files) paths.push_back(file.path);
  paths.insert(paths.end(), list.cardFiles.begin(), list.cardFiles.end());
  return paths;
}

// The metadata of the first part, with the duration of all.
FieldValueMap MetadataOf(const MediaEntry& entry, const FieldNameSet& fields) {
  PartDurations durations(fields);
  FieldValueMap values = XMPSupport::MakeValue(entry.parts.front(),
                                               XMPSupport::ParseFields(durations.FieldsOfFirst()));
  for (std::size_t i = 1; durations.AreWanted() && i < entry.parts.size(); ++i) {
    durations.Add(
        TextOf(XMPSupport::MakeValue(entry.parts[i], XMPSupport::ParseFields({kFrameCountField})),
               kFrameCountField));
  }
  durations.SetTotal(values);
  return values;
}

FieldValueMap MakeEntry(const MediaList& list, const MediaEntry& entry,
                        const FieldNameSet& fields) {
  FieldValueMap values = MetadataOf(entry, fields);
  values.insert_or_assign(kPathField, any_regular_t(entry.parts.front()));
  values.insert_or_assign(kNameField, any_regular_t(entry.name));
  if (fields.contains(kCameraField) && !entry.camera.empty() &&
      TextOf(values, kCameraField).empty()) {
    values.insert_or_assign(kCameraField, any_regular_t(entry.camera));
  }
  if (fields.contains(kProxyPathField)) {
    const auto proxy = std::ranges::find_if(entry.files, [](const MediaFile& file) {
      return file.role == std::string_view(card_role::kProxy);
    });
    if (proxy != entry.files.end()) {
      values.insert_or_assign(kProxyPathField, any_regular_t(proxy->path));
    }
  }
  if (fields.contains(kExtraPathField)) {
    values.insert_or_assign(kExtraPathField, PathList(ExtraPaths(list, entry)));
  }
  return values;
}

CardPart::Content ContentOf(const std::string& path, std::string_view role) {
  if (IsMediaRole(role) || role == card_role::kThumbnail) return CardPart::Content::kMedia;
  return foundation::HasExtension(path, ".sidecar") ? CardPart::Content::kJson
                                                    : CardPart::Content::kOpaque;
}

}  // namespace

const MediaEntry* MediaList::Find(std::string_view key) const {
  const auto found = std::ranges::find(entries, key, &MediaEntry::key);
  return found == entries.end() ? nullptr : &*found;
}

ContentMap ProviderMediaFilesBase::GetContent(const std::string& path, const std::string& key,
                                              const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const auto list = ListOf(std::string(foundation::WithoutTrailingSlash(path)));
  const MediaEntry* entry = list->Find(key);
  if (entry == nullptr) return {};
  return {{key, MakeEntry(*list, *entry, fields)}};
}

ContentMap ProviderMediaFilesBase::GetContent(const std::string& path, const FieldNameSet& fields,
                                              ProviderRequest* request) const {
  const foundation::CallScope scope;
  const std::string root(foundation::WithoutTrailingSlash(path));
  ReadFiles(root, request);
  if (ProviderRequest::TestAborted(request)) return {};
  const auto list = ListOf(root);
  foundation::ReadAhead<FieldValueMap> ahead(
      list->entries.size(),
      [list, fields](std::size_t i) { return MakeEntry(*list, list->entries[i], fields); },
      StopWith(request));
  ContentMap content;
  for (std::size_t i = 0; i < list->entries.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    content.insert_or_assign(list->entries[i].key, ahead.Take(i));
  }
  return content;
}

int ProviderMediaFilesBase::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  if (!foundation::IsValidPath(path)) return ScoreOf(Recognition::kNone);
  return ScoreOf(Recognize(std::string(foundation::WithoutTrailingSlash(path))));
}

Bitplate** ProviderMediaFilesBase::GetThumbnail(const std::string& path, const std::string& key,
                                                int width, int height, ProviderRequest*) const {
  const int side = GetMaximumThumbnailHeight(height);
  return GetFolderThumbnail(path, key, std::min(width, side), side);
}

void ProviderMediaFilesBase::DescribeCard(const std::string& path, const ContentMap&,
                                          CardDescription& card) const {
  const std::string root(foundation::WithoutTrailingSlash(path));
  const auto list = ListOf(root);
  for (const MediaEntry& entry : list->entries) {
    const auto expect = [&](const std::string& file, const char* role) {
      card.Expect(
          {.path = file, .role = role, .entryKeys = {entry.key}, .content = ContentOf(file, role)});
    };
    for (const std::string& part : entry.parts) expect(part, entry.partRole);
    for (const MediaFile& file : entry.files) expect(file.path, file.role);
  }
  for (const std::string& file : list->cardFiles) card.AddStructureFile(file);
  DescribeMore(root, *list, card);
}

std::vector<ListedPart> ProviderMediaFilesBase::ListParts(const std::string& path,
                                                          const std::string& key) const {
  const auto list = ListOf(std::string(foundation::WithoutTrailingSlash(path)));
  const MediaEntry* entry = list->Find(key);
  return entry == nullptr ? std::vector<ListedPart>() : PartsOf(*list, *entry);
}

std::vector<ListedPart> ProviderMediaFilesBase::PartsOf(const MediaList&,
                                                        const MediaEntry& entry) const {
  std::vector<ListedPart> parts;
  for (const std::string& part : entry.parts) parts.push_back({.path = part});
  for (const MediaFile& file : entry.files) {
    if (file.role == std::string_view(card_role::kSpan)) parts.push_back({.path = file.path});
  }
  return parts;
}

}  // namespace Sorvik
