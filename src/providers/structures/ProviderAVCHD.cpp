// SPDX-License-Identifier: MIT
#include "providers/structures/ProviderAVCHD.h"

#include <algorithm>
#include <memory>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "formats/avchd/Playlist.h"
#include "foundation/CallScope.h"
#include "foundation/FolderNames.h"
#include "foundation/Presence.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/structures/AVCHDUtils.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using foundation::FolderNames;

constexpr char16_t kAVCHD[] = u"AVCHD";
constexpr char16_t kBackup[] = u"BACKUP";
constexpr char16_t kBDMV[] = u"BDMV";
constexpr char16_t kStream[] = u"STREAM";
constexpr char16_t kClipInfo[] = u"CLIPINF";
constexpr char16_t kPlaylist[] = u"PLAYLIST";

// The first of the names that is there wins. Cameras write INDEX.BDM: on their own cards, which
// heed no case, it is found as index.bdm, and on a copy elsewhere as it stands.
constexpr std::u16string_view kIndexFile[] = {u"index.bdmv", u"index.bdm", u"INDEX.BDM"};
constexpr std::u16string_view kMovieObjectFile[] = {u"MovieObject.bdmv", u"MOVIEOBJ.BDM"};

// "#" stands for a digit; one of the extensions follows.
constexpr std::u16string_view kNameMask = u"#####.";
constexpr std::u16string_view kStreamExtensions[] = {u"MTS", u"mts", u"M2TS", u"m2ts"};
constexpr std::size_t kMinNameLength = 9;

constexpr int kScoreCard = 100;
constexpr int kScoreWithReservation = 40;

bool IsClipFileName(std::u16string_view name) {
  if (name.size() < kMinNameLength) return false;
  const bool fits = std::equal(
      kNameMask.begin(), kNameMask.end(), name.begin(),
      [](char16_t m, char16_t c) { return m == u'#' ? c >= u'0' && c <= u'9' : m == c; });
  return fits && std::ranges::find(kStreamExtensions, name.substr(kNameMask.size())) !=
                     std::end(kStreamExtensions);
}

std::shared_ptr<const FolderNames> NamesIn(const UTF16String& folder) {
  return FolderNames::Of(Hestra::MakeStdString(PathUtils::RemoveTrailingSlash(folder)));
}

bool Holds(const UTF16String& folder, std::u16string_view name) {
  return NamesIn(folder)->Holds(Hestra::MakeStdString(name));
}

bool HoldsFolder(const UTF16String& folder, std::u16string_view name) {
  return NamesIn(folder)->HoldsFolder(Hestra::MakeStdString(name));
}

// The first of the names that stands in the folder; empty if none does.
std::u16string_view FirstThere(const UTF16String& folder,
                               std::span<const std::u16string_view> names) {
  const auto found =
      std::ranges::find_if(names, [&](std::u16string_view name) { return Holds(folder, name); });
  return found == names.end() ? std::u16string_view() : *found;
}

bool HasForeignFiles(const UTF16String& streamFolder) {
  std::vector<UTF16String> files = Directory::GetContainedFilePaths(streamFolder);
  PathUtils::FilterHiddenFiles(files);
  return !std::ranges::all_of(files, [](const UTF16String& file) {
    return IsClipFileName(PathUtils::GetFullFilePart(file));
  });
}

bool IsBDMVFolderParent(const UTF16String& folder, bool& hasForeignFiles) {
  hasForeignFiles = false;
  // Asked of the disk: most folders are no card, and can be large.
  const UTF16String bdmv = PathUtils::CombinePaths(folder, kBDMV);
  if (!PathUtils::IsDirectory(bdmv)) return false;
  for (const auto* name : {kStream, kClipInfo, kPlaylist}) {
    if (!HoldsFolder(bdmv, name)) return false;
  }
  if (FirstThere(bdmv, kIndexFile).empty() || FirstThere(bdmv, kMovieObjectFile).empty()) {
    return false;
  }
  hasForeignFiles = HasForeignFiles(PathUtils::CombinePaths(bdmv, kStream));
  return true;
}

// A folder AVCHD is a card's wrapper only if nothing visible stands beside it: what a desktop hides
// there leaves a card a card.
bool StandsAlone(const UTF16String& folder) {
  std::vector<UTF16String> paths = Directory::GetContainedPaths(folder);
  PathUtils::FilterHiddenFiles(paths);
  return paths.size() < 2;
}

bool IsAVCHDFolder(const UTF16String& folder, bool& hasForeignFiles) {
  if (IsBDMVFolderParent(folder, hasForeignFiles)) return true;
  return IsBDMVFolderParent(PathUtils::CombinePaths(folder, kAVCHD), hasForeignFiles) &&
         StandsAlone(folder);
}

UTF16String FindBDMVFolder(const std::string& path) {
  const UTF16String folder = Hestra::MakeString(path);
  UTF16String bdmv = PathUtils::CombinePaths(folder, kBDMV);
  if (PathUtils::IsDirectory(bdmv)) return bdmv;
  return PathUtils::CombinePaths(PathUtils::CombinePaths(folder, kAVCHD), kBDMV);
}

// The file `title` of a folder of the structure with the first of the extensions that is there; an
// empty extension stands for none. Without one, `out` is emptied.
bool FindPartFile(UTF16String& out, const UTF16String& bdmv, std::u16string_view subfolder,
                  const UTF16String& title, std::u16string_view extension1,
                  std::u16string_view extension2) {
  const UTF16String folder = PathUtils::CombinePaths(bdmv, subfolder);
  for (const auto extension : {extension1, extension2}) {
    if (extension.empty()) continue;
    const UTF16String name = (title + u'.').append(extension);
    if (!Holds(folder, name)) continue;
    out = PathUtils::CombinePaths(folder, name);
    return true;
  }
  out.clear();
  return false;
}

bool FindStreamFile(UTF16String& out, const UTF16String& bdmv, const UTF16String& title) {
  return FindPartFile(out, bdmv, kStream, title, u"MTS", u"mts") ||
         FindPartFile(out, bdmv, kStream, title, u"M2TS", u"m2ts");
}

using PathValues = std::vector<any_regular_t>;

void AddPath(PathValues& list, const UTF16String& path) {
  list.emplace_back(Hestra::MakeStdString(path));
}

// What every clip of a card names among its paths; made once for all clips of a listing.
struct CardPaths {
  PathValues playlists;
  PathValues structure;
};

void AddPlaylists(PathValues& list, const UTF16String& bdmv) {
  const UTF16String folder = PathUtils::CombinePaths(bdmv, kPlaylist);
  for (const auto* extension : {u".mpls", u".MPL"}) {
    for (const UTF16String& file : Directory::GetContainedFilePaths(folder, extension)) {
      AddPath(list, file);
    }
  }
}

void AddStructureFiles(PathValues& list, const UTF16String& bdmv) {
  for (const auto name : {FirstThere(bdmv, kMovieObjectFile), FirstThere(bdmv, kIndexFile)}) {
    if (!name.empty()) AddPath(list, PathUtils::CombinePaths(bdmv, name));
  }
}

void AddStructureFolders(PathValues& list, const UTF16String& bdmv) {
  for (const auto* name : {kBackup, kStream, kPlaylist, kClipInfo}) {
    if (Holds(bdmv, name)) AddPath(list, PathUtils::CombinePaths(bdmv, name));
  }
}

std::shared_ptr<const CardPaths> PathsOfCard(const UTF16String& bdmv) {
  return foundation::CallScope::Remember<CardPaths>(Hestra::MakeStdString(bdmv), [&bdmv] {
    CardPaths paths;
    AddPlaylists(paths.playlists, bdmv);
    AddStructureFiles(paths.structure, bdmv);
    AddStructureFolders(paths.structure, bdmv);
    return paths;
  });
}

// The files of all clips of the shot and the card's playlists. The stream file of the entry itself
// is left out: that is its Path.
void AddClipPaths(PathValues& list, const UTF16String& bdmv, const UTF16String& number,
                  const CardPaths& card) {
  UTF16String file;
  if (!FindStreamFile(file, bdmv, number)) return;
  std::vector<UTF16String> clips;
  AVCHDUtils::GetShotClips(file, clips);
  for (const UTF16String& clip : clips) {
    const UTF16String title = PathUtils::GetFilePart(clip);
    if (FindPartFile(file, bdmv, kClipInfo, title, u"clpi", u"CLP") ||
        FindPartFile(file, bdmv, kClipInfo, title, u"CPI", {})) {
      AddPath(list, file);
    }
    if (FindPartFile(file, bdmv, kStream, title, u"xmp", {})) AddPath(list, file);
    if (title != number && FindStreamFile(file, bdmv, title)) AddPath(list, file);
  }
  list.insert(list.end(), card.playlists.begin(), card.playlists.end());
}

void SetExtraPaths(FieldValueMap& values, const UTF16String& bdmv, const UTF16String& number) {
  const auto card = PathsOfCard(bdmv);
  PathValues list;
  list.reserve(card->playlists.size() + card->structure.size() + 4);
  AddClipPaths(list, bdmv, number, *card);
  list.insert(list.end(), card->structure.begin(), card->structure.end());
  values[kExtraPathField] = any_regular_t(std::move(list));
}

// The stream files at the head of a shot of any playlist, in order, each once; fewer once aborted.
std::set<UTF16String> ListHeadClips(const UTF16String& bdmv, ProviderRequest* request) {
  std::set<UTF16String> heads;
  for (const UTF16String& playlist : AVCHDUtils::ListPlaylists(bdmv)) {
    if (ProviderRequest::TestAborted(request)) return heads;
    std::vector<UTF16String> clips;
    AVCHDUtils::GetShotHeadClips(playlist, clips);
    heads.insert(clips.begin(), clips.end());
  }
  formats::avchd::IndexPlaylists(Hestra::MakeStdString(PathUtils::CombinePaths(bdmv, kPlaylist)));
  return heads;
}

UTF16String NumberOf(const UTF16String& fileName) {
  return fileName.substr(0, fileName.find(u'.'));
}

// The fields that a caller wants.
struct Wanted {
  explicit Wanted(const FieldNameSet& fields)
      : bits(XMPSupport::ParseFields(fields)), extraPath(fields.contains(kExtraPathField)) {}

  XMPSupport::XMPFieldBits bits;
  bool extraPath;
};

FieldValueMap MakeEntry(const UTF16String& file, const UTF16String& number, const UTF16String& bdmv,
                        const Wanted& wanted) {
  const std::string path = Hestra::MakeStdString(file);
  FieldValueMap values = XMPSupport::MakeValue(path, wanted.bits);
  values[kNameField] = any_regular_t(Hestra::MakeStdString(number));
  values[kPathField] = any_regular_t(path);
  if (wanted.extraPath) SetExtraPaths(values, bdmv, number);
  return values;
}

}  // namespace

int ProviderAVCHD::CanProvideFor(const std::string& path) const {
  if (!PathUtils::IsLongFormFolderPath(path)) return 0;
  const foundation::CallScope scope;
  bool hasForeignFiles = false;
  if (!IsAVCHDFolder(Hestra::MakeString(path), hasForeignFiles)) return 0;
  return hasForeignFiles ? kScoreWithReservation : kScoreCard;
}

ProviderAVCHD::ProviderAVCHD()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderAVCHD",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/AVCHDUIString=AVCHD",
                    .defaultFields = {"Name", "Path", "shotDate", "Make", "Model", "startTimecode"},
                    .labelFields = {"Name", "videoFrameRate", "videoFrameSize", "audioChannelType",
                                    "audioSampleRate", "shotDate", "startTimecode", "Make", "Model",
                                    "SerialNumber", "good", "shotName", "shotLocation", "creator",
                                    "identifier", "Path"}}) {}

ContentMap ProviderAVCHD::GetContent(const std::string& path, const FieldNameSet& fields,
                                     ProviderRequest* request) const {
  const foundation::CallScope scope;
  const UTF16String bdmv = FindBDMVFolder(path);
  const Wanted wanted(fields);
  ContentMap content;
  for (const UTF16String& file : ListHeadClips(bdmv, request)) {
    if (ProviderRequest::TestAborted(request)) return {};
    if (!foundation::IsPresent(file, foundation::Lookup::kDisk)) continue;
    const UTF16String name = PathUtils::GetFullFilePart(file);
    if (!IsClipFileName(name)) continue;
    content[Hestra::MakeStdString(name)] = MakeEntry(file, NumberOf(name), bdmv, wanted);
  }
  return content;
}

ContentMap ProviderAVCHD::GetContent(const std::string& path, const std::string& key,
                                     const FieldNameSet& fields) const {
  if (!PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const UTF16String bdmv = FindBDMVFolder(path);
  const UTF16String name = Hestra::MakeString(key);
  const UTF16String file = PathUtils::CombinePaths(PathUtils::CombinePaths(bdmv, kStream), name);
  if (!foundation::IsPresent(file, foundation::Lookup::kDisk)) return {};
  return {{key, MakeEntry(file, NumberOf(name), bdmv, Wanted(fields))}};
}

Bitplate** ProviderAVCHD::GetThumbnail([[maybe_unused]] const std::string& path,
                                       [[maybe_unused]] const std::string& key, int width,
                                       int height,
                                       [[maybe_unused]] ProviderRequest* request) const {
  const int tallest = GetMaximumThumbnailHeight(height);
  return RenderBuiltInPicture(kAVCHDPictureNumber, std::min(tallest, width), tallest);
}

}  // namespace Sorvik
