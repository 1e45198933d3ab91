// SPDX-License-Identifier: MIT
#include "filesystem/WinProviderDirectory.h"

#include <algorithm>
#include <string_view>

#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "filesystem/DirectoryFields.h"
#include "filesystem/DirectoryListing.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FolderView.h"
#include "foundation/platform/ShareAccess.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace PathUtils = Hestra::PathUtils;
using tarnwick::utility::LowerCase;

constexpr char kIdentification[] = "com.halvane.Merisk.WinProviderDirectory";
constexpr char kUIString[] =
    "$$$/Ortlane/Libraries/Sorvik/WinDirectoryFileDirectoryUIString=File Directory";
constexpr int kScorePlainDirectory = 30;

}  // namespace

ContentMap WinProviderDirectory::GetContent(const std::string& path, const std::string& key,
                                            const FieldNameSet& fields) const {
  if (!PathUtils::IsLongFormFolderPath(path) || !PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  const auto folder = platform::OpenFolder(path);
  if (!folder) return {};
  ContentMap content = ListOneEntry(*folder, path, key, fields);
  if (content.empty() || !fields.contains(kExtraPathField)) return content;
  std::string sidecar = GetMXFSidecarPath(foundation::JoinPath(path, key));
  if (!sidecar.empty()) content[key][kExtraPathField] = any_regular_t(std::move(sidecar));
  return content;
}

ContentMap WinProviderDirectory::GetContent(const std::string& path, const FieldNameSet& fields,
                                            ProviderRequest* request) const {
  if (!PathUtils::IsLongFormFolderPath(path)) return {};
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  const auto folder =
      platform::ReadFolder(path, [&] { return ProviderRequest::TestAborted(request); });
  if (!folder) return {};
  return ListDirectory(*folder, path, fields, request);
}

FieldNameSet WinProviderDirectory::GetFieldList() const {
  FieldNameSet names;
  for (const DirectoryField& field : kDirectoryFields) names.insert(field.name);
  return names;
}

FieldNameList WinProviderDirectory::GetDefaultFieldList() const { return {kNameField, kPathField}; }

FieldLabelMap WinProviderDirectory::GetFieldLabelList() const {
  FieldLabelMap labels;
  for (const DirectoryField& field : kDirectoryFields) labels.emplace(field.name, field.label);
  return labels;
}

int WinProviderDirectory::CanProvideFor(const std::string& path) const {
  if (!PathUtils::IsLongFormFolderPath(path)) return 0;
  const platform::ShareScope shares(path);
  // That a share is a folder follows from the mount table alone.
  using platform::ShareAccess;
  const bool isDirectory = ShareAccess::Current()->IsShareMountPoint(path) ||
                           PathUtils::IsDirectory(Hestra::MakeString(path));
  return isDirectory ? kScorePlainDirectory : 0;
}

std::string WinProviderDirectory::GetIdentification() const { return kIdentification; }

std::string WinProviderDirectory::GetUIString() const {
  return tarnwick::config::Localizer::Get().GetUTF8String(kUIString);
}

Bitplate** WinProviderDirectory::GetThumbnail(const std::string& path, const std::string& key,
                                              int width, int height, ProviderRequest*) const {
  const auto limit = static_cast<unsigned>(GetMaximumThumbnailHeight(height));
  const auto side = static_cast<int>(std::min(static_cast<unsigned>(width), limit));
  const bool valid = PathUtils::IsLongFormFolderPath(path);
  const std::string file = valid ? foundation::JoinPath(path, key) : std::string();
  const platform::ShareScope shares(path);
  return GetIconThumbnail(PathUtils::Win::StripUNC(Hestra::MakeString(file)), side);
}

std::string GetMXFSidecarPath(const std::string& path) {
  const UTF16String file = Hestra::MakeString(path);
  if (!PathUtils::IsValidPath(file)) return {};
  if (LowerCase(PathUtils::GetExtensionPart(file)) != u".mxf") return {};
  const UTF16String sidecar = file + u".xmp";
  return PathUtils::ExistsOnDisk(sidecar) ? Hestra::MakeStdString(sidecar) : std::string();
}

}  // namespace Sorvik
