// SPDX-License-Identifier: MIT
#include "providers/structures/ProviderSonyHDV.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/NameMask.h"
#include "providers/structures/SonyHDVNames.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using namespace sonyhdv;  // NOLINT(google-build-using-namespace): this file is about these names
using foundation::CardFolder;
using foundation::JoinPath;
using foundation::Lookup;

// The extension follows.
constexpr std::string_view kNameMask = "##_####_####-##-##_######.";

// Whether the host imports files with the extension "DV". The host is asked once in the lifetime of
// the process.
bool IsDVImportable() {
  static std::atomic<int> cachedAnswer{-1};
  int answer = cachedAnswer.load(std::memory_order_relaxed);
  if (answer < 0) {
    std::set<UTF16String> extensions;
    Fenwold::ImportableFileTypeUtils::GetImportableFileExtensions(
        Fenwold::ImportableFileTypeUtils::kVideoFileTypes, extensions);
    answer = extensions.contains(u"DV") ? 1 : 0;
    cachedAnswer.store(answer, std::memory_order_relaxed);
  }
  return answer == 1;
}

// Recognition accepts every file that recorders write, a listing only what can be opened.
bool IsClipFileName(std::string_view name, bool forRecognition) {
  if (!StartsWithMask(name, kNameMask)) return false;
  const std::string_view extension = name.substr(kNameMask.size());
  if (extension == "M2T" || extension == "AVI") return true;
  if (extension == "DV") return forRecognition || IsDVImportable();
  return forRecognition && (extension == "IDX" || extension == "XMP");
}

bool IsHDVFolder(const std::string& path, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const std::string clips = ClipFolderOf(path);
  if (!foundation::FolderExistsOnDisk(clips)) return false;
  hasForeignFiles =
      CardFolder::Of(clips)
          ->FindVisibleFile([](std::string_view name) { return !IsClipFileName(name, true); })
          .has_value();
  return true;
}

// The clips of one folder, in order of 16-bit code units.
struct Clips {
  std::string folder;
  std::vector<std::string> files;
  std::vector<std::string> names;      // the clip number of each file
  std::vector<std::size_t> runStarts;  // for each file the first one of its run of equal numbers
};

Clips ListClips(const std::string& folder) {
  Clips clips{folder, CardFolder::Of(folder)->VisibleFiles(), {}, {}};
  std::erase_if(clips.files, [](const std::string& name) { return !IsClipFileName(name, false); });
  for (const std::string& file : clips.files) {
    clips.names.push_back(ClipNumberOf(file));
    const std::size_t index = clips.names.size() - 1;
    const bool continues = index > 0 && clips.names[index - 1] == clips.names[index];
    clips.runStarts.push_back(continues ? clips.runStarts[index - 1] : index);
  }
  return clips;
}

// The clip number; in a run of several files with a suffix, "-01".
std::string GetEntryName(std::size_t index, const Clips& clips) {
  const std::string& name = clips.names[index];
  const std::size_t start = clips.runStarts[index];
  const bool isLast = index + 1 == clips.names.size() || clips.runStarts[index + 1] != start;
  if (start == index && isLast) return name;
  const std::size_t suffix = index - start + 1;
  return name + (suffix < 10 ? "-0" : "-") + std::to_string(suffix);
}

std::string PathWithExtension(const std::string& folder, std::string_view file,
                              std::string_view extension) {
  return JoinPath(folder, std::string(foundation::FileStem(file)).append(extension));
}

// `index` is the index of `key` in the clips, or their number if it isn't one of them.
void SetExtraPaths(FieldValueMap& fields, const std::string& key, std::size_t index,
                   const Clips& clips) {
  std::vector<std::string> paths;
  if (index < clips.files.size()) {
    // All files of a run share the index file of the first one.
    const std::string& first = clips.files[clips.runStarts[index]];
    std::string indexFile = PathWithExtension(clips.folder, first, kIndexExtension);
    if (ExistsOnCard(indexFile, Lookup::kListing)) paths.push_back(std::move(indexFile));
  }
  // Part of the result whether it exists or not. Some recorders write Tracks.dat.
  const std::string tracks = JoinPath(clips.folder, kTracksFile);
  paths.push_back(foundation::FindOnCard(tracks).value_or(tracks));
  std::string sidecar = PathWithExtension(clips.folder, key, ".XMP");
  if (ExistsOnCard(sidecar, Lookup::kListing)) paths.push_back(std::move(sidecar));
  fields[kExtraPathField] = PathList(std::move(paths));
}

}  // namespace

int ProviderSonyHDV::CanProvideFor(const std::string& path) const {
  bool hasForeignFiles = false;
  if (!Hestra::PathUtils::IsLongFormFolderPath(path) || !IsHDVFolder(path, hasForeignFiles)) {
    return ScoreOf(Recognition::kNone);
  }
  return ScoreOf(Recognized(!hasForeignFiles));
}

ProviderSonyHDV::ProviderSonyHDV()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderSonyHDV",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/SonyHDVUIString=Sony HDV",
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {"Name", "videoFrameSize", "videoPixelAspectRatio", "duration",
                                    "startTimecode", "CreateDate", "videoFrameRate", "Path"},
                    .layout = {.rootNames = {"VIDEO"}, .ownFolders = {"VIDEO"}}}) {}

ContentMap ProviderSonyHDV::GetContent(const std::string& path, const FieldNameSet& fields,
                                       ProviderRequest* request) const {
  const foundation::CallScope scope;
  const std::string folder = ClipFolderOf(path);
  if (!foundation::FolderExistsOnDisk(folder)) return {};
  const Clips clips = ListClips(folder);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  std::vector<std::string> paths;
  for (const std::string& file : clips.files) paths.push_back(JoinPath(folder, file));
  auto metadata = ReadMetadataAhead(paths, bits, request);
  ContentMap content;
  for (std::size_t i = 0; i < clips.files.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string& key = clips.files[i];
    const std::string& filePath = paths[i];
    FieldValueMap values = metadata.Take(i);
    values[kNameField] = any_regular_t(GetEntryName(i, clips));
    values[kPathField] = any_regular_t(filePath);
    SetExtraPaths(values, key, i, clips);
    content[key] = std::move(values);
  }
  return content;
}

ContentMap ProviderSonyHDV::GetContent(const std::string& path, const std::string& key,
                                       const FieldNameSet& fields) const {
  if (!Hestra::PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const std::string folder = ClipFolderOf(path);
  if (!foundation::FolderExistsOnDisk(folder)) return {};
  const std::string filePath = JoinPath(folder, key);
  FieldValueMap values = XMPSupport::MakeValue(filePath, XMPSupport::ParseFields(fields));
  const Clips clips = ListClips(folder);
  const auto found = std::ranges::find(clips.files, key);
  const auto index = static_cast<std::size_t>(found - clips.files.begin());
  values[kNameField] =
      any_regular_t(found == clips.files.end() ? ClipNumberOf(key) : GetEntryName(index, clips));
  values[kPathField] = any_regular_t(filePath);
  SetExtraPaths(values, key, index, clips);
  return {{key, std::move(values)}};
}

std::vector<ListedPart> ProviderSonyHDV::ListParts(const std::string& path,
                                                   const std::string& key) const {
  const std::string folder = ClipFolderOf(path);
  const Clips clips = ListClips(folder);
  const auto found = std::ranges::find(clips.files, key);
  std::vector<ListedPart> parts;
  if (found == clips.files.end()) return parts;
  const auto own = static_cast<std::size_t>(found - clips.files.begin());
  const std::size_t start = clips.runStarts[own];
  for (std::size_t i = start; i < clips.files.size() && clips.runStarts[i] == start; ++i) {
    parts.push_back({.path = JoinPath(folder, clips.files[i])});
  }
  return parts;
}

Bitplate** ProviderSonyHDV::GetThumbnail(const std::string& path, const std::string& key, int width,
                                         int height,
                                         [[maybe_unused]] ProviderRequest* request) const {
  const int maxHeight = GetMaximumThumbnailHeight(height);
  return GetFolderThumbnail(ClipFolderOf(path), key, std::min(maxHeight, width), maxHeight);
}

}  // namespace Sorvik
