// SPDX-License-Identifier: MIT
#include "providers/structures/ProviderCanonXF.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/FoldedNames.h"
#include "foundation/FolderNames.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/tarnwick/FileSupport.h"
#include "frame/FieldValues.h"
#include "providers/structures/CanonXFNames.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using namespace canonxf;  // NOLINT(google-build-using-namespace): this file is about these names
using foundation::FoundOnDisk;
using tarnwick::filesupport::Dir;
using tarnwick::filesupport::File;
using tarnwick::utility::UpperCase;

constexpr char16_t kIndexFile[] = u"INDEX.MIF";
constexpr char16_t kJournal[] = u"JOURNAL";
constexpr char16_t kDesktop[] = u"Desktop";
constexpr char16_t kFirstSpan[] = u"01";

constexpr int kPastLastSpan = 99;  // span 99 itself is never the first of a clip

constexpr int kScoreCard = 100;
constexpr int kScoreWithReservation = 40;

// Rows of the field table by the names that are read here.
constexpr char kShotName[] = "shotName";

std::vector<UTF16String> NamesOf(const std::vector<UTF16String>& paths) {
  std::vector<UTF16String> names;
  for (const UTF16String& path : paths) names.push_back(PathUtils::GetFullFilePart(path));
  return names;
}

struct VisibleNames {
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
};

VisibleNames ListNames(const UTF16String& folder) {
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
  Directory::GetContainedFileAndDirectoryPaths(folder, files, folders);
  PathUtils::FilterHiddenFiles(files);
  return {NamesOf(files), NamesOf(folders)};
}

// Whether a name stands in a folder, as the file system sees names.
bool Holds(const UTF16String& folder, std::u16string_view name) {
  return foundation::FolderNames::Of(Hestra::MakeStdString(folder))
      ->Holds(Hestra::MakeStdString(name));
}

bool HoldsFolder(const UTF16String& folder, std::u16string_view name) {
  return foundation::FolderNames::Of(Hestra::MakeStdString(folder))
      ->HoldsFolder(Hestra::MakeStdString(name));
}

bool HasClipRoot(const UTF16String& contents, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const UTF16String clipRoot = PathUtils::CombinePaths(contents, kClipRoot);
  const VisibleNames names = ListNames(clipRoot);
  if (names.folders.empty() || !Holds(clipRoot, kIndexFile)) return false;
  hasForeignFiles =
      names.files.size() >= 2 &&
      std::any_of(names.files.begin(), names.files.end(), [](const UTF16String& name) {
        return name.front() != u'.' && name != kIndexFile;
      });
  return std::any_of(names.folders.begin(), names.folders.end(), IsClipFolderName);
}

bool IsCanonXFCard(const UTF16String& folder, bool& hasForeignFiles) {
  hasForeignFiles = false;
  // Asked of the disk: most folders are no card, and can be large.
  if (!PathUtils::IsDirectory(PathUtils::CombinePaths(folder, kContents))) return false;
  const VisibleNames names = ListNames(folder);
  if (names.folders.empty()) return false;
  const bool strayFolder =
      std::any_of(names.folders.begin(), names.folders.end(), [](const UTF16String& name) {
        return name != kContents && name != kDesktop && name.front() != u'.';
      });
  // One stray file in the root is tolerated, two are not.
  hasForeignFiles = strayFolder || names.files.size() > 1;
  bool strayInClipRoot = false;
  const bool found = HasClipRoot(PathUtils::CombinePaths(folder, kContents), strayInClipRoot);
  hasForeignFiles = hasForeignFiles || strayInClipRoot;
  return found;
}

// The span of a clip folder that stands for the clip: the one with the lowest number, where a title
// of another length counts as 0 and ends the search.
std::optional<UTF16String> FirstSpanOf(const Dir& clip) {
  int lowest = kPastLastSpan;
  std::optional<UTF16String> best;
  for (const File& file : clip.Files()) {
    if (lowest < 2) break;
    // Desktops leave hidden files beside those they copy, "._AA000101.MXF", which would end the
    // search.
    if (file.GetName().front() == u'.' || file.GetExtension(true) != u".mxf") continue;
    const int number = GetSpanNumber(file.GetTitle());
    if (number >= lowest) continue;
    lowest = number;
    best = file.FullPath();
  }
  return best;
}

void FindFirstSpans(const UTF16String& folder, std::vector<UTF16String>& files) {
  for (const Dir& clip : Dir(ClipRootOf(folder)).Subdirs()) {
    if (!IsClipFolderName(clip.GetName())) continue;
    if (auto span = FirstSpanOf(clip)) files.push_back(std::move(*span));
  }
}

// The clip folder of a key, in the key's own spelling before one that only folds to the same.
std::optional<UTF16String> FindClipFolder(const UTF16String& path, const UTF16String& key) {
  const UTF16String clipRoot = ClipRootOf(path);
  auto clip = FoundOnDisk(PathUtils::CombinePaths(clipRoot, key.substr(0, kClipIdLength)));
  const bool found = clip && HoldsFolder(clipRoot, PathUtils::GetFullFilePart(*clip));
  return found ? std::move(clip) : std::nullopt;
}

// The span whose title is the key, of the extension .MXF: in capitals first, then as a listing
// takes it, in any case.
std::optional<UTF16String> FindSpanFile(const UTF16String& path, const UTF16String& key) {
  const auto clip = FindClipFolder(path, key);
  if (!clip) return std::nullopt;
  if (Holds(*clip, key + u".MXF")) return PathUtils::CombinePaths(*clip, key + u".MXF");
  for (UTF16String& file : Directory::GetContainedFilePaths(*clip, u".MXF")) {
    if (PathUtils::GetFilePart(file) == key) return std::move(file);
  }
  return std::nullopt;
}

// The files of one call, each of whose metadata is read once however many fields are looked at.
class ClipMetadataCache {
 public:
  explicit ClipMetadataCache(const XMPSupport::XMPFieldBits& bits) : bits_(bits) {}

  const FieldValueMap& GetFields(const std::string& path) {
    const auto kept = values_.find(path);
    if (kept != values_.end()) return kept->second;
    return values_.emplace(path, XMPSupport::MakeValue(path, bits_)).first->second;
  }
  // The field as a text; empty where there is none, or none that is a text.
  std::string GetFieldAsString(const std::string& path, const char* name) {
    any_regular_t value;
    std::string text;
    if (GetFieldValue(path, name, value)) value.cast(text);
    return text;
  }
  bool GetFieldValue(const std::string& path, const char* name, any_regular_t& value) {
    const FieldValueMap& fields = GetFields(path);
    const auto found = fields.find(name);
    if (found == fields.end()) return false;
    value = found->second;
    return true;
  }

 private:
  XMPSupport::XMPFieldBits bits_;
  std::map<std::string, FieldValueMap> values_;
};

// Whether a value may serve as a name: neither the empty value nor an empty text.
bool IsName(const any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>()) return !text->empty();
  return !value.holds<halvane::empty_t>();
}

// The shot's name comes first, then the clip's title, then the file's.
void SetEntryName(FieldValueMap& fields, ClipMetadataCache& cache, const std::string& key,
                  const std::string& path) {
  for (const char* name : {kShotName, kNameField}) {
    any_regular_t value;
    if (!cache.GetFieldValue(path, name, value) || !IsName(value)) continue;
    fields[kNameField] = std::move(value);
    return;
  }
  fields[kNameField] = any_regular_t(key);
}

// The files of the clip folder that carry the clip's id: sidecars first, then the other spans.
void AddClipFiles(const UTF16String& clipFolder, const UTF16String& clipId, int ownSpan,
                  std::vector<UTF16String>& paths) {
  for (const auto* extension : {u".CIF", u".XML", u".XMP"}) {
    auto file = FoundOnDisk(PathUtils::CombinePaths(clipFolder, clipId + extension));
    if (file) paths.push_back(std::move(*file));
  }
  const auto belongs = [&](const UTF16String& file) {
    return UpperCase(PathUtils::GetFilePart(file)).substr(0, kClipIdLength) == clipId;
  };
  for (const UTF16String& file : Directory::GetContainedFilePaths(clipFolder, u".SIF")) {
    if (belongs(file)) paths.push_back(file);
  }
  for (const UTF16String& file : Directory::GetContainedFilePaths(clipFolder, u".MXF")) {
    if (belongs(file) && GetSpanNumber(PathUtils::GetFilePart(file)) != ownSpan) {
      paths.push_back(file);
    }
  }
}

void SetExtraPaths(FieldValueMap& fields, const UTF16String& path, const UTF16String& key) {
  const UTF16String clipRoot = ClipRootOf(path);
  const UTF16String clipId = UpperCase(key.substr(0, kClipIdLength));
  std::vector<UTF16String> paths;
  if (Holds(clipRoot, kIndexFile)) paths.push_back(PathUtils::CombinePaths(clipRoot, kIndexFile));
  if (HoldsFolder(clipRoot, kJournal)) {
    const UTF16String journal = PathUtils::CombinePaths(clipRoot, kJournal);
    paths.push_back(journal);
    const auto files = Directory::GetContainedFilePaths(journal);
    paths.insert(paths.end(), files.begin(), files.end());
  }
  if (const auto clip = FindClipFolder(path, key)) {
    paths.push_back(*clip);
    AddClipFiles(*clip, clipId, GetSpanNumber(key), paths);
  }
  fields[kExtraPathField] = PathList(paths);
}

}  // namespace

int ProviderCanonXF::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  const UTF16String folder = Hestra::MakeString(path);
  bool hasForeignFiles = false;
  if (!PathUtils::IsValidPath(folder) || !IsCanonXFCard(folder, hasForeignFiles)) return 0;
  return hasForeignFiles ? kScoreWithReservation : kScoreCard;
}

ProviderCanonXF::ProviderCanonXF()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderCanonXF",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/CanonXFUIString=Canon XF",
                    .defaultFields = {"Name", "CreateDate", "startTimecode", "videoFrameRate",
                                      "duration", "good", "comment"},
                    .labelFields = {"Name",
                                    "identifier",
                                    "relation",
                                    "startTimecode",
                                    "duration",
                                    "CreateDate",
                                    "videoFrameRate",
                                    "videoFrameSize",
                                    "videoCompressor",
                                    "fileDataRate",
                                    "WhiteBalance",
                                    "audioSampleRate",
                                    "audioChannelType",
                                    "audioCompressor",
                                    "creator",
                                    "shotName",
                                    "shotLocation",
                                    "Path",
                                    "good",
                                    "comment",
                                    "Make",
                                    "Model",
                                    "SerialNumber",
                                    "software",
                                    "GPSAltitude",
                                    "GPSAltitudeRef",
                                    "GPSLatitude",
                                    "GPSLongitude",
                                    "GPSProcessingMethod"}}) {}

ContentMap ProviderCanonXF::GetContent(const std::string& path, const FieldNameSet& fields,
                                       [[maybe_unused]] ProviderRequest* request) const {
  const foundation::CallScope scope;
  const UTF16String folder = Hestra::MakeString(path);
  std::vector<UTF16String> files;
  FindFirstSpans(folder, files);
  FieldNameSet wanted = fields;
  wanted.insert({"identifier", "relation", "scale", kShotName});
  ClipMetadataCache cache(XMPSupport::ParseFields(wanted));
  ContentMap content;
  for (const UTF16String& file : files) {
    const UTF16String title = PathUtils::GetFilePart(file);
    if (title.size() != kSpanTitleLength) continue;
    const std::string filePath = Hestra::MakeStdString(file);
    const std::string key = Hestra::MakeStdString(title);
    FieldValueMap values = cache.GetFields(filePath);
    SetEntryName(values, cache, key, filePath);
    values[kPathField] = any_regular_t(filePath);
    // A listing always gives these two as texts.
    for (const char* name : {"duration", "startTimecode"}) {
      if (fields.contains(name)) {
        values[name] = any_regular_t(cache.GetFieldAsString(filePath, name));
      }
    }
    if (fields.contains(kExtraPathField)) SetExtraPaths(values, folder, title);
    content[key] = std::move(values);
  }
  return content;
}

ContentMap ProviderCanonXF::GetContent(const std::string& path, const std::string& key,
                                       const FieldNameSet& fields) const {
  const UTF16String folder = Hestra::MakeString(path);
  if (!PathUtils::IsValidPath(folder) || !PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const UTF16String title = Hestra::MakeString(key);
  const auto file = FindSpanFile(folder, title);
  if (!file) return {};
  const std::string filePath = Hestra::MakeStdString(*file);
  ClipMetadataCache cache(XMPSupport::ParseFields(fields));
  FieldValueMap values = cache.GetFields(filePath);
  SetEntryName(values, cache, key, filePath);
  values[kPathField] = any_regular_t(filePath);
  if (fields.contains(kExtraPathField)) SetExtraPaths(values, folder, title);
  return {{key, std::move(values)}};
}

Bitplate** ProviderCanonXF::GetThumbnail(const std::string& path, const std::string& key, int width,
                                         int height,
                                         [[maybe_unused]] ProviderRequest* request) const {
  const int tallest = GetMaximumThumbnailHeight(height);
  UTF16String title = Hestra::MakeString(key);
  if (title.size() == kClipIdLength) title += kFirstSpan;
  if (title.size() != kSpanTitleLength) return nullptr;
  UTF16String clip =
      PathUtils::CombinePaths(ClipRootOf(Hestra::MakeString(path)), title.substr(0, kClipIdLength));
  while (clip.size() > 1 && clip.back() == PathUtils::kSeparator) clip.pop_back();
  return GetFolderThumbnail(Hestra::MakeStdString(clip), Hestra::MakeStdString(title + u".MXF"),
                            std::min(tallest, width), tallest);
}

}  // namespace Sorvik
