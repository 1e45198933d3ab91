// SPDX-License-Identifier: MIT
#include "providers/structures/ProviderAVCHD.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "formats/avchd/Playlist.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/NameMask.h"
#include "providers/structures/AVCHDNames.h"
#include "providers/structures/AVCHDUtils.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using namespace avchd;  // NOLINT(google-build-using-namespace): this file is about these names
using foundation::CardFolder;
using foundation::JoinPath;
using foundation::Lookup;

// The first of the names that exists is used. Cameras write INDEX.BDM: on their own cards, whose
// file system is case-insensitive, it is found as index.bdm, and on a copy elsewhere as written.
constexpr std::string_view kIndexFile[] = {"index.bdmv", "index.bdm", "INDEX.BDM"};
constexpr std::string_view kMovieObjectFile[] = {"MovieObject.bdmv", "MOVIEOBJ.BDM"};

constexpr std::string_view kSidecarExtensions[] = {".xmp"};

bool IsClipFileName(std::string_view name) {
  return StartsWithMask(name, kClipMask) &&
         std::ranges::find(kStreamExtensions, name.substr(kClipMask.size())) !=
             std::end(kStreamExtensions);
}

bool HasForeignFiles(const std::string& streamFolder) {
  return CardFolder::Of(streamFolder)
      ->FindVisibleFile([](std::string_view name) { return !IsClipFileName(name); })
      .has_value();
}

bool IsBDMVFolderParent(const std::string& folder, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const std::string path = JoinPath(folder, kBDMV);
  // Most folders are no card, and can be large: don't list `folder`.
  if (!foundation::FolderExistsOnDisk(path)) return false;
  const auto bdmv = CardFolder::Of(path);
  for (const std::string_view name : {kStream, kClipInfo, kPlaylist}) {
    if (!bdmv->ContainsFolder(name)) return false;
  }
  if (bdmv->FirstOf(kIndexFile).empty() || bdmv->FirstOf(kMovieObjectFile).empty()) return false;
  hasForeignFiles = HasForeignFiles(bdmv->PathOf(kStream));
  return true;
}

bool IsAVCHDFolder(const std::string& folder, bool& hasForeignFiles) {
  if (IsBDMVFolderParent(folder, hasForeignFiles)) return true;
  // The wrapper AVCHD must be the only visible item. Hidden ones are what desktops leave on a card.
  return IsBDMVFolderParent(JoinPath(folder, kAVCHD), hasForeignFiles) &&
         CardFolder::Of(folder)->VisibleCount() < 2;
}

using PathValues = std::vector<any_regular_t>;

// The extra paths that all clips of a card have in common. Made once for a listing, and shared by
// its entries: a card can have a thousand playlists.
struct CardPaths {
  std::shared_ptr<const PathValues> all;        // playlists and structure
  std::shared_ptr<const PathValues> structure;  // for clips without a stream file
};

void AddPlaylists(PathValues& list, const std::string& bdmv) {
  const auto folder = CardFolder::Of(JoinPath(bdmv, kPlaylist));
  for (const std::string_view extension : kPlaylistExtensions) {
    for (const std::string& name : folder->Files(extension))
      list.emplace_back(folder->PathOf(name));
  }
}

void AddStructureFiles(PathValues& list, const CardFolder& bdmv) {
  for (const auto name : {bdmv.FirstOf(kMovieObjectFile), bdmv.FirstOf(kIndexFile)}) {
    if (!name.empty()) list.emplace_back(bdmv.PathOf(name));
  }
}

void AddStructureFolders(PathValues& list, const CardFolder& bdmv) {
  for (const std::string_view name : {kBackup, kStream, kPlaylist, kClipInfo}) {
    if (bdmv.Contains(name)) list.emplace_back(bdmv.PathOf(name));
  }
}

std::shared_ptr<const CardPaths> PathsOfCard(const std::string& bdmv) {
  return foundation::CallScope::Remember<CardPaths>(bdmv, [&bdmv] {
    PathValues structure;
    const auto folder = CardFolder::Of(bdmv);
    AddStructureFiles(structure, *folder);
    AddStructureFolders(structure, *folder);
    PathValues all;
    AddPlaylists(all, bdmv);
    all.insert(all.end(), structure.begin(), structure.end());
    return CardPaths{std::make_shared<const PathValues>(std::move(all)),
                     std::make_shared<const PathValues>(std::move(structure))};
  });
}

// The files of all clips of the shot, without the stream file of the entry itself, which is its
// Path.
PathValues ClipPaths(const std::string& bdmv, std::string_view number, const std::string& stream) {
  PathValues list;
  std::vector<UTF16String> clips;
  AVCHDUtils::GetShotClips(Hestra::MakeString(stream), clips);
  const auto add = [&](std::string_view folder, std::string_view title, Extensions extensions) {
    if (auto file = FindPartFile(bdmv, folder, title, extensions)) {
      list.emplace_back(std::move(*file));
    }
  };
  for (const UTF16String& clip : clips) {
    const std::string path = Hestra::MakeStdString(clip);
    const std::string_view title = foundation::FileStem(path);
    add(kClipInfo, title, kClipInfoExtensions);
    add(kStream, title, kSidecarExtensions);
    if (title != number) add(kStream, title, kStreamExtensions);
  }
  return list;
}

void SetExtraPaths(FieldValueMap& values, const std::string& bdmv, std::string_view number) {
  const auto card = PathsOfCard(bdmv);
  const auto stream = FindPartFile(bdmv, kStream, number, kStreamExtensions);
  values[kExtraPathField] = stream
                                ? any_regular_t::list(ClipPaths(bdmv, number, *stream), card->all)
                                : any_regular_t::list({}, card->structure);
}

// The stream files that start a shot in some playlist. Incomplete once aborted.
std::set<std::string> ListHeadClips(const std::string& bdmv, ProviderRequest* request) {
  std::set<std::string> heads;
  const auto playlists = AVCHDUtils::ListPlaylists(bdmv);
  formats::avchd::LoadPlaylists(playlists, StopWith(request));
  for (const std::string& playlist : playlists) {
    if (ProviderRequest::TestAborted(request)) return heads;
    std::vector<UTF16String> clips;
    AVCHDUtils::GetShotHeadClips(Hestra::MakeString(playlist), clips);
    for (const UTF16String& clip : clips) heads.insert(Hestra::MakeStdString(clip));
  }
  formats::avchd::IndexPlaylists(JoinPath(bdmv, kPlaylist));
  return heads;
}

std::string_view NumberOf(std::string_view fileName) {
  return fileName.substr(0, fileName.find('.'));
}

struct RequestedFields {
  explicit RequestedFields(const FieldNameSet& fields)
      : bits(XMPSupport::ParseFields(fields)), extraPath(fields.contains(kExtraPathField)) {}

  XMPSupport::XMPFieldBits bits;
  bool extraPath;
};

// The metadata of a stream file; nullopt if it doesn't exist.
std::optional<FieldValueMap> MetadataOf(const std::string& file,
                                        const XMPSupport::XMPFieldBits& bits) {
  if (!foundation::ExistsOnCard(file, Lookup::kDisk)) return std::nullopt;
  return XMPSupport::MakeValue(file, bits);
}

FieldValueMap MakeEntry(const std::string& file, const std::string& bdmv,
                        const RequestedFields& requested, FieldValueMap values) {
  const std::string_view number = NumberOf(foundation::FileName(file));
  values[kNameField] = any_regular_t(std::string(number));
  values[kPathField] = any_regular_t(file);
  if (requested.extraPath) SetExtraPaths(values, bdmv, number);
  return values;
}

}  // namespace

int ProviderAVCHD::CanProvideFor(const std::string& path) const {
  if (!Hestra::PathUtils::IsLongFormFolderPath(path)) return ScoreOf(Recognition::kNone);
  const foundation::CallScope scope;
  bool hasForeignFiles = false;
  if (!IsAVCHDFolder(path, hasForeignFiles)) return ScoreOf(Recognition::kNone);
  return ScoreOf(Recognized(!hasForeignFiles));
}

ProviderAVCHD::ProviderAVCHD()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderAVCHD",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/AVCHDUIString=AVCHD",
                    .defaultFields = {"Name", "Path", "shotDate", "Make", "Model", "startTimecode"},
                    .labelFields = {"Name", "videoFrameRate", "videoFrameSize", "audioChannelType",
                                    "audioSampleRate", "shotDate", "startTimecode", "Make", "Model",
                                    "SerialNumber", "good", "shotName", "shotLocation", "creator",
                                    "identifier", "Path"},
                    .layout = {.rootNames = {kBDMV}, .ownFolders = {kBDMV}}}) {}

ContentMap ProviderAVCHD::GetContent(const std::string& path, const FieldNameSet& fields,
                                     ProviderRequest* request) const {
  const foundation::CallScope scope;
  const std::string bdmv = FindBDMVFolder(path);
  const RequestedFields requested(fields);
  const auto heads = ListHeadClips(bdmv, request);
  const auto files = std::make_shared<std::vector<std::string>>();
  std::ranges::copy_if(heads, std::back_inserter(*files), [](const std::string& file) {
    return IsClipFileName(std::string(foundation::FileName(file)));
  });
  foundation::ReadAhead<std::optional<FieldValueMap>> metadata(
      files->size(),
      [files, bits = requested.bits](std::size_t i) { return MetadataOf((*files)[i], bits); },
      StopWith(request));
  ContentMap content;
  for (std::size_t i = 0; i < files->size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string& file = (*files)[i];
    if (auto values = metadata.Take(i)) {
      content[std::string(foundation::FileName(file))] =
          MakeEntry(file, bdmv, requested, std::move(*values));
    }
  }
  return content;
}

ContentMap ProviderAVCHD::GetContent(const std::string& path, const std::string& key,
                                     const FieldNameSet& fields) const {
  if (!Hestra::PathUtils::IsItemName(key)) return {};
  const foundation::CallScope scope;
  const std::string bdmv = FindBDMVFolder(path);
  const std::string file = JoinPath(JoinPath(bdmv, kStream), key);
  const RequestedFields requested(fields);
  auto values = MetadataOf(file, requested.bits);
  if (!values) return {};
  return {{key, MakeEntry(file, bdmv, requested, std::move(*values))}};
}

Bitplate** ProviderAVCHD::GetThumbnail([[maybe_unused]] const std::string& path,
                                       [[maybe_unused]] const std::string& key, int width,
                                       int height,
                                       [[maybe_unused]] ProviderRequest* request) const {
  const int maxHeight = GetMaximumThumbnailHeight(height);
  return RenderBuiltInPicture(kAVCHDPictureNumber, std::min(maxHeight, width), maxHeight);
}

}  // namespace Sorvik
