// SPDX-License-Identifier: MIT
#include "providers/structures/ProviderSonyHDV.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <utility>
#include <vector>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/FoldedNames.h"
#include "foundation/Presence.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using foundation::IsPresent;
using foundation::Lookup;

constexpr char16_t kVideo[] = u"VIDEO";
constexpr char16_t kClipFolder[] = u"HVR";
constexpr char16_t kTracksFile[] = u"TRACKS.DAT";

// "#" stands for a digit; the extension follows.
constexpr std::u16string_view kNameMask = u"##_####_####-##-##_######.";
constexpr std::size_t kMinNameLength = kNameMask.size() + 2;
constexpr std::size_t kNumberStart = 3;
constexpr std::size_t kNumberLength = 4;

constexpr int kScoreCard = 100;
constexpr int kScoreWithReservation = 40;

// Whether the host imports files with the extension "DV"; asked once in the life of the process.
bool IsDVImportable() {
  static std::atomic<int> answer{-1};
  int known = answer.load(std::memory_order_relaxed);
  if (known < 0) {
    std::set<UTF16String> extensions;
    Fenwold::ImportableFileTypeUtils::GetImportableFileExtensions(
        Fenwold::ImportableFileTypeUtils::kVideoFileTypes, extensions);
    known = extensions.contains(u"DV") ? 1 : 0;
    answer.store(known, std::memory_order_relaxed);
  }
  return known == 1;
}

bool FitsMask(std::u16string_view name) {
  return std::equal(kNameMask.begin(), kNameMask.end(), name.begin(), [](char16_t m, char16_t c) {
    return m == u'#' ? c >= u'0' && c <= u'9' : m == c;
  });
}

// Recognition counts every file that recorders write, the listing only what can be opened.
bool IsClipFileName(std::u16string_view name, bool forRecognition) {
  if (name.size() < kMinNameLength || !FitsMask(name)) return false;
  const std::u16string_view extension = name.substr(kNameMask.size());
  if (extension == u"M2T" || extension == u"AVI") return true;
  if (extension == u"DV") return forRecognition || IsDVImportable();
  return forRecognition && (extension == u"IDX" || extension == u"XMP");
}

UTF16String ClipFolderOf(const UTF16String& folder) {
  return PathUtils::CombinePaths(PathUtils::CombinePaths(folder, kVideo), kClipFolder);
}

std::vector<UTF16String> VisibleNames(const UTF16String& folder) {
  std::vector<UTF16String> names = Directory::GetContainedFilePaths(folder);
  PathUtils::FilterHiddenFiles(names);
  for (UTF16String& name : names) name = PathUtils::GetFullFilePart(name);
  return names;
}

bool IsHDVFolder(const UTF16String& folder, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const UTF16String clips = ClipFolderOf(folder);
  if (!PathUtils::IsDirectory(clips)) return false;
  const std::vector<UTF16String> names = VisibleNames(clips);
  hasForeignFiles = !std::all_of(names.begin(), names.end(), [](const UTF16String& name) {
    return IsClipFileName(name, true);
  });
  return true;
}

// The clips of one folder as a call sees them.
struct Clips {
  UTF16String prefix;  // the folder with its separator
  std::vector<UTF16String> files;
  std::vector<std::string> names;      // the clip number of each file
  std::vector<std::size_t> runStarts;  // for each file the first of its run of equal numbers
};

std::string NumberOf(const UTF16String& file) {
  if (file.size() <= kNumberStart) return {};
  return Hestra::MakeStdString(file.substr(kNumberStart, kNumberLength));
}

Clips ListClips(const UTF16String& folder) {
  Clips clips{PathUtils::AddTrailingSlash(folder), VisibleNames(folder), {}, {}};
  std::erase_if(clips.files, [](const UTF16String& name) { return !IsClipFileName(name, false); });
  std::sort(clips.files.begin(), clips.files.end());
  for (const UTF16String& file : clips.files) {
    clips.names.push_back(NumberOf(file));
    const std::size_t index = clips.names.size() - 1;
    const bool continues = index > 0 && clips.names[index - 1] == clips.names[index];
    clips.runStarts.push_back(continues ? clips.runStarts[index - 1] : index);
  }
  return clips;
}

std::string GetEntryName(std::size_t index, const Clips& clips) {
  const std::string& name = clips.names[index];
  const std::size_t start = clips.runStarts[index];
  const bool last = index + 1 == clips.names.size() || clips.runStarts[index + 1] != start;
  if (start == index && last) return name;
  const std::size_t place = index - start + 1;
  return name + (place < 10 ? "-0" : "-") + std::to_string(place);
}

UTF16String WithExtension(const UTF16String& path, std::u16string_view extension) {
  UTF16String drive;
  UTF16String folder;
  UTF16String title;
  PathUtils::SplitPath(path, drive, folder, title);
  return PathUtils::MakePath(drive, folder, title, extension);
}

// The whole run of a split recording shares the index of its first file.
bool FindIndexFile(UTF16String& out, std::size_t index, const Clips& clips) {
  const UTF16String& first = clips.files[clips.runStarts[index]];
  out = WithExtension(clips.prefix + first, u"IDX");
  return IsPresent(out, Lookup::kListing);
}

// `index` is the place of `key` among the clips, or their number if it isn't one of them.
void SetExtraPaths(FieldValueMap& fields, const UTF16String& key, std::size_t index,
                   const Clips& clips) {
  std::vector<UTF16String> paths;
  UTF16String indexFile;
  if (index < clips.files.size() && FindIndexFile(indexFile, index, clips)) {
    paths.push_back(indexFile);
  }
  // Named whether it is there or not; recorders spell it Tracks.dat as well.
  const UTF16String tracks = clips.prefix + kTracksFile;
  paths.push_back(foundation::FoundOnDisk(tracks).value_or(tracks));
  const UTF16String sidecar = WithExtension(clips.prefix + key, u"XMP");
  if (IsPresent(sidecar, Lookup::kListing)) paths.push_back(sidecar);
  fields[kExtraPathField] = PathList(paths);
}

}  // namespace

int ProviderSonyHDV::CanProvideFor(const std::string& path) const {
  bool hasForeignFiles = false;
  if (!PathUtils::IsLongFormFolderPath(path) ||
      !IsHDVFolder(Hestra::MakeString(path), hasForeignFiles)) {
    return 0;
  }
  return hasForeignFiles ? kScoreWithReservation : kScoreCard;
}

ProviderSonyHDV::ProviderSonyHDV()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderSonyHDV",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/SonyHDVUIString=Sony HDV",
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {"Name", "videoFrameSize", "videoPixelAspectRatio", "duration",
                                    "startTimecode", "CreateDate", "videoFrameRate", "Path"}}) {}

ContentMap ProviderSonyHDV::GetContent(const std::string& path, const FieldNameSet& fields,
                                       ProviderRequest* request) const {
  const foundation::CallScope scope;
  const UTF16String folder = ClipFolderOf(Hestra::MakeString(path));
  if (!PathUtils::IsDirectory(folder)) return {};
  const Clips clips = ListClips(folder);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  ContentMap content;
  for (std::size_t i = 0; i < clips.files.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string filePath = Hestra::MakeStdString(clips.prefix + clips.files[i]);
    FieldValueMap values = XMPSupport::MakeValue(filePath, bits);
    values[kNameField] = any_regular_t(GetEntryName(i, clips));
    values[kPathField] = any_regular_t(filePath);
    SetExtraPaths(values, clips.files[i], i, clips);
    content[Hestra::MakeStdString(clips.files[i])] = std::move(values);
  }
  return content;
}

ContentMap ProviderSonyHDV::GetContent(const std::string& path, const std::string& key,
                                       const FieldNameSet& fields) const {
  if (!PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const UTF16String folder = ClipFolderOf(Hestra::MakeString(path));
  if (!PathUtils::IsDirectory(folder)) return {};
  const UTF16String file = Hestra::MakeString(key);
  const std::string filePath = Hestra::MakeStdString(PathUtils::CombinePaths(folder, file));
  FieldValueMap values = XMPSupport::MakeValue(filePath, XMPSupport::ParseFields(fields));
  const Clips clips = ListClips(folder);
  const auto found = std::find(clips.files.begin(), clips.files.end(), file);
  const auto index = static_cast<std::size_t>(found - clips.files.begin());
  values[kNameField] =
      any_regular_t(found == clips.files.end() ? NumberOf(file) : GetEntryName(index, clips));
  values[kPathField] = any_regular_t(filePath);
  SetExtraPaths(values, file, index, clips);
  return {{key, std::move(values)}};
}

Bitplate** ProviderSonyHDV::GetThumbnail(const std::string& path, const std::string& key, int width,
                                         int height,
                                         [[maybe_unused]] ProviderRequest* request) const {
  const int tallest = GetMaximumThumbnailHeight(height);
  return GetFolderThumbnail(Hestra::MakeStdString(ClipFolderOf(Hestra::MakeString(path))), key,
                            std::min(tallest, width), tallest);
}

}  // namespace Sorvik
