// SPDX-License-Identifier: MIT
#include "providers/structures/ProviderCanonXF.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/ClipValueCache.h"
#include "providers/common/LooseClips.h"
#include "providers/structures/CanonXFNames.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using namespace canonxf;  // NOLINT(google-build-using-namespace): this file is about these names
using foundation::CardFolder;
using foundation::FileStem;
using foundation::JoinPath;

constexpr std::string_view kDesktop = "Desktop";
constexpr std::string_view kFirstSpan = "01";

constexpr int kMaxFirstSpan = 98;  // span 99 is never the first of a clip

// A field of the table that is read for the entry's name.
constexpr char kShotName[] = "shotName";

bool HasClipRoot(const std::string& contents, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const auto clipRoot = CardFolder::Of(JoinPath(contents, kClipRoot));
  const std::vector<std::string> folders = clipRoot->Folders();
  if (folders.empty() || !clipRoot->Contains(kIndexFile)) return false;
  const std::vector<std::string> files = clipRoot->VisibleFiles();
  hasForeignFiles = files.size() >= 2 && std::ranges::any_of(files, [](const std::string& name) {
                      return name != kIndexFile;
                    });
  return std::ranges::any_of(folders, IsClipFolderName);
}

bool IsCanonXFCard(const std::string& path, bool& hasForeignFiles) {
  hasForeignFiles = false;
  // Most folders are no card, and can be large: don't list `path`.
  const std::string contents = JoinPath(path, kContents);
  if (!foundation::FolderExistsOnDisk(contents)) return false;
  const auto folder = CardFolder::Of(path);
  if (folder->Folders().empty()) return false;
  const bool hasForeignFolder = std::ranges::any_of(
      folder->VisibleFolders(),
      [](const std::string& name) { return name != kContents && name != kDesktop; });
  bool hasForeignClipFiles = false;
  const bool found = HasClipRoot(contents, hasForeignClipFiles);
  // One unrelated file in the top folder is tolerated, two aren't.
  hasForeignFiles = hasForeignFolder || hasForeignClipFiles || folder->VisibleFiles().size() > 1;
  return found;
}

// The span with the lowest number in a clip folder. A title of another length counts as number 0,
// and the search ends at a number below 2.
std::optional<std::string> FirstSpanOf(const CardFolder& clip) {
  int lowest = kMaxFirstSpan + 1;
  std::optional<std::string> first;
  // Desktops leave hidden files next to those that they copy, "._AA000101.MXF".
  for (std::string& name : clip.VisibleFiles(kSpanExtension)) {
    if (lowest < 2) break;
    const int number = GetSpanNumber(FileStem(name));
    if (number >= lowest) continue;
    lowest = number;
    first = std::move(name);
  }
  return first;
}

std::vector<std::string> FindFirstSpans(const std::string& path, ProviderRequest* request) {
  std::vector<std::string> spans;
  const auto clipRoot = CardFolder::Of(ClipRootOf(path));
  std::vector<std::string> folders;
  for (const std::string& name : clipRoot->Folders()) {
    if (IsClipFolderName(name)) folders.push_back(clipRoot->PathOf(name));
  }
  foundation::FolderReadAhead ahead(folders, StopOnceAnswered(request));
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (IsAnsweredWithout(request)) return {};
    ahead.Await(i);
    const auto clip = CardFolder::Of(folders[i]);
    if (const auto span = FirstSpanOf(*clip)) spans.push_back(clip->PathOf(*span));
  }
  return spans;
}

// The clip folder of a key, exactly as spelled before one that only equals it ignoring case.
std::optional<std::string> FindClipFolder(const std::string& path, std::string_view key) {
  const std::string clipRoot = ClipRootOf(path);
  auto clip = foundation::FindOnCard(JoinPath(clipRoot, ClipIdOf(key)));
  if (!clip) return std::nullopt;
  const bool isFolder = CardFolder::Of(clipRoot)->ContainsFolder(foundation::FileName(*clip));
  return isFolder ? std::move(clip) : std::nullopt;
}

// The span whose title is the key: with ".MXF" first, then with the extension in any case.
std::optional<std::string> FindSpanFile(const std::string& path, const std::string& key) {
  const auto clipPath = FindClipFolder(path, key);
  if (!clipPath) return std::nullopt;
  const auto clip = CardFolder::Of(*clipPath);
  const std::string name = std::string(key).append(kSpanExtension);
  if (clip->Contains(name)) return clip->PathOf(name);
  for (const std::string& span : clip->Files(kSpanExtension)) {
    if (FileStem(span) == key) return clip->PathOf(span);
  }
  return std::nullopt;
}

// Whether a value may serve as a name: neither the empty value nor an empty text.
bool IsName(const any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>()) return !text->empty();
  return !value.holds<halvane::empty_t>();
}

// The name is that of the shot, else the title of the clip, else that of the file.
void SetEntryName(FieldValueMap& fields, ClipValueCache& cache, const std::string& key,
                  const std::string& path) {
  for (const char* field : {kShotName, kNameField}) {
    const any_regular_t* value = cache.ValueOf(path, field);
    if (value == nullptr || !IsName(*value)) continue;
    fields[kNameField] = *value;
    return;
  }
  fields[kNameField] = any_regular_t(key);
}

// Adds the files of the clip folder that begin with the clip's id: sidecars first, then the other
// spans.
void AddClipFiles(const CardFolder& clip, const std::string& clipId, int ownSpan,
                  std::vector<std::string>& paths) {
  for (const std::string_view extension :
       {kClipInfoExtension, std::string_view(".XML"), std::string_view(".XMP")}) {
    const auto file = foundation::FindOnCard(clip.PathOf(std::string(clipId).append(extension)));
    if (file) paths.push_back(*file);
  }
  const auto belongs = [&clipId](const std::string& name) {
    return foundation::UpperCase(ClipIdOf(FileStem(name))) == clipId;
  };
  for (const std::string& name : clip.Files(".SIF")) {
    if (belongs(name)) paths.push_back(clip.PathOf(name));
  }
  for (const std::string& name : clip.Files(kSpanExtension)) {
    if (belongs(name) && GetSpanNumber(FileStem(name)) != ownSpan) {
      paths.push_back(clip.PathOf(name));
    }
  }
}

void SetExtraPaths(FieldValueMap& fields, const std::string& path, const std::string& key) {
  const auto clipRoot = CardFolder::Of(ClipRootOf(path));
  std::vector<std::string> paths;
  if (clipRoot->Contains(kIndexFile)) paths.push_back(clipRoot->PathOf(kIndexFile));
  if (clipRoot->ContainsFolder(kJournal)) {
    const auto journal = CardFolder::Of(clipRoot->PathOf(kJournal));
    paths.push_back(journal->Path());
    for (const std::string& name : journal->Files()) paths.push_back(journal->PathOf(name));
  }
  if (const auto clip = FindClipFolder(path, key)) {
    paths.push_back(*clip);
    AddClipFiles(*CardFolder::Of(*clip), foundation::UpperCase(ClipIdOf(key)), GetSpanNumber(key),
                 paths);
  }
  fields[kExtraPathField] = PathList(std::move(paths));
}

}  // namespace

int ProviderCanonXF::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  bool hasForeignFiles = false;
  if (!foundation::IsValidPath(path) || !IsCanonXFCard(path, hasForeignFiles)) {
    return ScoreOf(Recognition::kNone);
  }
  return ScoreOf(Recognized(!hasForeignFiles));
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
                                    "GPSProcessingMethod"},
                    .layout = {.rootNames = {kContents}, .ownFolders = {kContents}}}) {}

ContentMap ProviderCanonXF::GetContent(const std::string& path, const FieldNameSet& fields,
                                       ProviderRequest* request) const {
  const foundation::CallScope scope;
  FieldNameSet requested = fields;
  requested.insert({"identifier", "relation", "scale", kShotName});
  ClipValueCache cache(requested);
  auto files = FindFirstSpans(path, request);
  std::erase_if(files, [](const std::string& file) {
    return foundation::CountCodeUnits(FileStem(file)) != kSpanTitleLength;
  });
  cache.ReadAhead(files, StopOnceAnswered(request));
  ContentMap content;
  for (const std::string& file : files) {
    if (IsAnsweredWithout(request)) return {};
    const std::string key(FileStem(file));
    FieldValueMap values = cache.ValuesOf(file);
    SetEntryName(values, cache, key, file);
    values[kPathField] = any_regular_t(file);
    // A listing always gives these two as texts.
    for (const char* name : {"duration", "startTimecode"}) {
      if (fields.contains(name)) {
        values[name] = any_regular_t(TextOf(cache.ValuesOf(file), name));
      }
    }
    if (fields.contains(kExtraPathField)) SetExtraPaths(values, path, key);
    content[key] = std::move(values);
  }
  return content;
}

ContentMap ProviderCanonXF::GetContent(const std::string& path, const std::string& key,
                                       const FieldNameSet& fields) const {
  if (!foundation::IsValidPath(path) || !Hestra::PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const auto file = FindSpanFile(path, key);
  if (!file) return {};
  ClipValueCache cache(fields);
  FieldValueMap values = cache.ValuesOf(*file);
  SetEntryName(values, cache, key, *file);
  values[kPathField] = any_regular_t(*file);
  if (fields.contains(kExtraPathField)) SetExtraPaths(values, path, key);
  return {{key, std::move(values)}};
}

Bitplate** ProviderCanonXF::GetThumbnail(const std::string& path, const std::string& key, int width,
                                         int height,
                                         [[maybe_unused]] ProviderRequest* request) const {
  const int maxHeight = GetMaximumThumbnailHeight(height);
  std::string title = key;
  if (foundation::CountCodeUnits(title) == kClipIdLength) title.append(kFirstSpan);
  if (foundation::CountCodeUnits(title) != kSpanTitleLength) return nullptr;
  std::string clip = JoinPath(ClipRootOf(path), ClipIdOf(title));
  while (clip.size() > 1 && clip.back() == '/') clip.pop_back();
  return GetFolderThumbnail(clip, title.append(kSpanExtension), std::min(maxHeight, width),
                            maxHeight);
}

namespace {

// "AA000101.MXF" is span 01 of the clip AA0001.
std::optional<LooseName> ParseLoose(std::string_view name) {
  const std::string_view stem = FileStem(name);
  const std::string_view id = stem.substr(0, kClipIdLength);
  const int span = GetSpanNumber(stem);
  if (!IsClipFolderName(id) || !(stem.size() == kClipIdLength || span > 0)) return std::nullopt;
  const bool isSpan = span > 0 && foundation::HasExtension(name, kSpanExtension);
  return LooseName{.clip = id,
                   .isOriginal = isSpan,
                   .isTypical = isSpan,
                   .part = static_cast<std::uint32_t>(span)};
}

}  // namespace

std::optional<FileGroup> ProviderCanonXF::GroupOf(const std::string& folder,
                                                  const std::string& name) const {
  return GroupLooseFiles(folder, name, ParseLoose);
}

}  // namespace Sorvik
