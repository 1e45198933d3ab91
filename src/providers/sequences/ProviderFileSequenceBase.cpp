// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderFileSequenceBase.h"

#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik {
namespace {

namespace PathUtils = Hestra::PathUtils;
using tarnwick::utility::FoldCase;

constexpr int kScoreSequence = 100;
constexpr int kScoreWithReservation = 40;

// The names of the folder's visible files, in order, for as long as `visit` returns true.
template <class Visit>
void ForEachVisibleFile(const UTF16String& folder, Visit visit) {
  if (!PathUtils::IsValidPath(folder)) return;
  const auto items =
      Hestra::Directory::GetItems(Hestra::MakeStdString(PathUtils::RemoveTrailingSlash(folder)));
  if (!items) return;
  for (const platform::FolderItem& item : *items) {
    if (item.kind != platform::FileKind::kRegular || item.name.front() == '.') continue;
    if (!visit(Hestra::MakeString(item.name))) return;
  }
}

}  // namespace

ProviderFileSequenceBase::ProviderFileSequenceBase(const char* identification, const char* uiString)
    : ClipProvider({.identification = identification,
                    .uiString = uiString,
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {kNameField, kPathField}}) {}

int ProviderFileSequenceBase::CanProvideFor(const std::string& path) const {
  const UTF16String folder = tarnwick::utility::UTF8to16(path);
  if (!PathUtils::IsValidPath(folder)) return 0;
  bool hasForeignFiles = false;
  if (!ContainsSequence(folder, hasForeignFiles)) return 0;
  return hasForeignFiles ? kScoreWithReservation : kScoreSequence;
}

bool ProviderFileSequenceBase::ContainsSequence(const UTF16String& folder,
                                                bool& hasForeignFiles) const {
  hasForeignFiles = false;
  bool found = false;
  ForEachVisibleFile(folder, [&](const UTF16String& name) {
    found = IsSequenceFile(name);
    return !found;
  });
  return found;
}

void ProviderFileSequenceBase::GetSequence(const UTF16String& folder,
                                           std::vector<UTF16String>& paths,
                                           std::vector<UTF16String>& names) const {
  paths.clear();
  ForEachVisibleFile(folder, [&](const UTF16String& name) {
    if (!IsSequenceFile(name)) return true;
    paths.push_back(PathUtils::CombinePaths(folder, name));
    names.push_back(name);
    return false;
  });
}

ContentMap ProviderFileSequenceBase::GetContent(const std::string& path, const FieldNameSet& fields,
                                                ProviderRequest* request) const {
  const foundation::CallScope scope;
  ContentMap content;
  std::vector<UTF16String> paths;
  std::vector<UTF16String> names;
  GetSequence(Hestra::MakeString(path), paths, names);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string head = Hestra::MakeStdString(paths[i]);
    FieldValueMap values = XMPSupport::MakeValue(head, bits);
    values[kNameField] = any_regular_t(Hestra::MakeStdString(names[i]));
    values[kPathField] = any_regular_t(head);
    if (fields.contains(kExtraPathField)) AddExtraPaths(values, head);
    content[head] = std::move(values);
  }
  return content;
}

ContentMap ProviderFileSequenceBase::GetContent(const std::string& path, const std::string& key,
                                                const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  FieldValueMap values = XMPSupport::MakeValue(key, XMPSupport::ParseFields(fields));
  const UTF16String folder = Hestra::MakeString(path);
  if (PathUtils::ExistsOnDisk(folder)) {
    values[kPathField] = any_regular_t(key);
    // The clip goes by its folder's name here, and by its head's in the listing.
    values[kNameField] = any_regular_t(Hestra::MakeStdString(PathUtils::GetFilePart(folder)));
  }
  if (fields.contains(kExtraPathField)) AddExtraPaths(values, key);
  return {{key, std::move(values)}};
}

void ProviderFileSequenceBase::AddExtraPaths(FieldValueMap& fields,
                                             const std::string& filePath) const {
  if (auto frames = ListFrames(filePath)) {
    fields[kExtraPathField] = any_regular_t(std::move(*frames));
  }
}

std::optional<ProviderFileSequenceBase::PathValues> ProviderFileSequenceBase::ListFrames(
    const std::string& filePath) {
  const UTF16String head = Hestra::MakeString(filePath);
  if (!PathUtils::IsValidPath(head)) return std::nullopt;
  const std::string folder = Hestra::MakeStdString(PathUtils::GetDirectoryPart(head));
  const auto items = Hestra::Directory::GetItems(
      Hestra::MakeStdString(PathUtils::RemoveTrailingSlash(Hestra::MakeString(folder))));
  if (!items) return std::nullopt;
  const std::string spelling = Hestra::MakeStdString(PathUtils::GetExtensionPart(head));
  const UTF16String extension = FoldCase(PathUtils::GetExtensionPart(head));
  PathValues values;
  for (const platform::FolderItem& item : *items) {
    if (item.kind != platform::FileKind::kRegular) continue;
    // Frames nearly always share the head's spelling, which needs no conversion to be seen.
    const bool same =
        !spelling.empty() && item.name.size() > spelling.size() && item.name.ends_with(spelling);
    if (!same && FoldCase(PathUtils::GetExtensionPart(Hestra::MakeString(item.name))) != extension)
      continue;
    values.emplace_back(folder + item.name);
  }
  return values;
}

void ProviderFileSequenceBase::AddIfExists(PathValues& values, const UTF16String& path) {
  if (PathUtils::ExistsOnDisk(path)) values.emplace_back(Hestra::MakeStdString(path));
}

bool ProviderFileSequenceBase::HasExtension(const UTF16String& name, std::u16string_view folded) {
  return FoldCase(PathUtils::GetExtensionPart(name)) == folded;
}

}  // namespace Sorvik
