// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderRED.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;

constexpr char16_t kClipFolderExtension[] = u".RDC";
constexpr char16_t kSegmentExtension[] = u".R3D";
constexpr int kScoreClips = 100;
constexpr int kScoreWithReservation = 40;

std::vector<UTF16String> VisibleFiles(const UTF16String& folder) {
  std::vector<UTF16String> files = Directory::GetContainedFilePaths(folder);
  PathUtils::FilterHiddenFiles(files);
  return files;
}

std::vector<UTF16String> SubFolders(const UTF16String& folder) {
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
  Directory::GetContainedFileAndDirectoryPaths(folder, files, folders);
  return folders;
}

template <class IsSegment>
std::optional<UTF16String> FirstSegment(const UTF16String& folder, IsSegment isSegment) {
  const std::vector<UTF16String> files = VisibleFiles(folder);
  const auto found = std::find_if(files.begin(), files.end(), [&](const UTF16String& file) {
    return isSegment(PathUtils::GetFullFilePart(file));
  });
  if (found == files.end()) return std::nullopt;
  return *found;
}

}  // namespace

bool ProviderRED::IsClipSegment(const UTF16String& name) {
  return PathUtils::GetExtensionPart(name) == kSegmentExtension;
}

bool ProviderRED::ContainsClips(const UTF16String& folder, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const std::vector<UTF16String> folders = SubFolders(folder);
  return std::any_of(folders.begin(), folders.end(), [](const UTF16String& clip) {
    return PathUtils::GetExtensionPart(clip) == kClipFolderExtension &&
           FirstSegment(clip, IsClipSegment).has_value();
  });
}

void ProviderRED::GetClips(const UTF16String& folder, std::vector<UTF16String>& paths,
                           std::vector<UTF16String>& names) {
  paths.clear();
  for (const UTF16String& clip : SubFolders(folder)) {
    const auto segment = FirstSegment(clip, IsClipSegment);
    if (!segment) continue;
    paths.push_back(*segment);
    names.push_back(PathUtils::GetFullFilePart(*segment));
  }
}

int ProviderRED::CanProvideFor(const std::string& path) const {
  const UTF16String folder = tarnwick::utility::UTF8to16(path);
  if (!PathUtils::IsValidPath(folder)) return 0;
  bool hasForeignFiles = false;
  if (!ContainsClips(folder, hasForeignFiles)) return 0;
  return hasForeignFiles ? kScoreWithReservation : kScoreClips;
}

ProviderRED::ProviderRED()
    : ClipProvider(
          {.identification = "com.halvane.Merisk.ProviderRED",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/REDUIString=RED",
           .defaultFields = {kNameField, kPathField},
           .labelFields = {"Name", "identifier", "relation", "startTimecode", "duration",
                           "CreateDate", "ModifyDate", "Rating", "videoFrameRate", "videoFrameSize",
                           "videoCompressor", "videoPixelAspectRatio", "audioSampleRate",
                           "audioSampleType", "creator", "shotName", "shotLocation", "Path"}}) {}

ContentMap ProviderRED::GetContent(const std::string& path, const FieldNameSet& fields,
                                   ProviderRequest* request) const {
  const foundation::CallScope scope;
  ContentMap content;
  std::vector<UTF16String> paths;
  std::vector<UTF16String> names;
  GetClips(Hestra::MakeString(path), paths, names);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string segment = Hestra::MakeStdString(paths[i]);
    FieldValueMap values = XMPSupport::MakeValue(segment, bits);
    values[kNameField] = any_regular_t(Hestra::MakeStdString(names[i]));
    values[kPathField] = any_regular_t(segment);
    if (fields.contains(kExtraPathField)) AddClipFiles(values, segment);
    content[segment] = std::move(values);
  }
  return content;
}

ContentMap ProviderRED::GetContent(const std::string& path, const std::string& key,
                                   const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  FieldValueMap values = XMPSupport::MakeValue(key, XMPSupport::ParseFields(fields));
  if (PathUtils::ExistsOnDisk(Hestra::MakeString(path))) {
    values[kPathField] = any_regular_t(key);
    values[kNameField] =
        any_regular_t(Hestra::MakeStdString(PathUtils::GetFilePart(Hestra::MakeString(key))));
    if (fields.contains(kExtraPathField)) AddClipFiles(values, key);
  }
  return {{key, std::move(values)}};
}

void ProviderRED::AddClipFiles(FieldValueMap& fields, const std::string& filePath) {
  const UTF16String segment = Hestra::MakeString(filePath);
  const UTF16String folder = PathUtils::RemoveTrailingSlash(PathUtils::GetDirectoryPart(segment));
  const UTF16String title = PathUtils::GetFilePart(folder);
  if (title.empty()) return;
  std::vector<any_regular_t> values;
  for (const UTF16String& file : VisibleFiles(folder)) {
    if (file == segment || !PathUtils::GetFilePart(file).starts_with(title)) continue;
    values.emplace_back(Hestra::MakeStdString(file));
  }
  fields[kExtraPathField] = any_regular_t(std::move(values));
}

Bitplate** ProviderRED::GetThumbnail([[maybe_unused]] const std::string& path,
                                     [[maybe_unused]] const std::string& key, int width, int height,
                                     [[maybe_unused]] ProviderRequest* request) const {
  return RenderTemplatePicture("REDVideoThumb.png", width, GetMaximumThumbnailHeight(height));
}

}  // namespace Sorvik
