// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderREDMOV.h"

#include <utility>

#include "formats/MediaNames.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/CardParts.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/NumberGaps.h"
#include "providers/common/REDNames.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileStem;
using foundation::HasExtension;

constexpr std::string_view kMovieExtension = ".mov";

struct MovieList : MediaList {};

bool IsMovie(const std::string& name) { return HasExtension(name, kMovieExtension); }

bool IsMovieClip(const CardFolder& clip) {
  return clip.FindVisibleFile(IsMovie) && !clip.FindVisibleFile(red::IsSegmentName);
}

MediaEntry MakeEntry(const CardFolder& clip) {
  MediaEntry entry{.key = {},
                   .name = std::string(FileStem(clip.Path())),
                   .parts = {},
                   .partRole = card_role::kSegment};
  for (const std::string& name : clip.VisibleFiles()) {
    if (IsMovie(name)) {
      entry.parts.push_back(clip.PathOf(name));
    } else {
      entry.files.push_back({clip.PathOf(name), RoleOfCompanion(name)});
    }
  }
  entry.key = entry.parts.front();
  return entry;
}

MovieList BuildList(const std::string& root) {
  MovieList list;
  const auto folder = CardFolder::Of(root);
  for (const std::string& name : folder->VisibleFolders()) {
    if (!red::IsClipFolderName(name)) continue;
    const auto clip = CardFolder::Of(folder->PathOf(name));
    if (IsMovieClip(*clip)) list.entries.push_back(MakeEntry(*clip));
  }
  list.hasForeignMedia = folder->FindVisibleFile(formats::HasMediaExtension).has_value();
  return list;
}

}  // namespace

ProviderREDMOV::ProviderREDMOV()
    : ProviderMediaFilesBase(
          {.identification = "com.halvane.Merisk.ProviderREDMOV",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/REDMOVUIString=RED MOV",
           .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                             "videoFrameSize", "videoFrameRate", "videoCompressor"},
           .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "startTimecode", "duration",
                           "videoFrameSize", "videoFrameRate", "videoCompressor",
                           "videoPixelAspectRatio", "audioSampleRate", "audioChannelType", "Make",
                           "Model"},
           .layout = {.rootNames = {"*.RDC"}, .ownFolders = {"*.RDC"}}}) {}

Bitplate** ProviderREDMOV::GetThumbnail(const std::string&, const std::string&, int width,
                                        int height, ProviderRequest*) const {
  return RenderTemplatePicture("REDVideoThumb.png", width, GetMaximumThumbnailHeight(height));
}

void ProviderREDMOV::ReadFiles(const std::string& root, ProviderRequest* request) const {
  const auto folder = CardFolder::Of(root);
  std::vector<std::string> clips = folder->VisibleFolders();
  std::erase_if(clips, [](const std::string& name) { return !red::IsClipFolderName(name); });
  for (std::string& clip : clips) clip = folder->PathOf(clip);
  foundation::FolderReadAhead ahead(clips, StopWith(request));
  for (std::size_t i = 0; i < clips.size() && !ProviderRequest::TestAborted(request); ++i) {
    ahead.Await(i);
    CardFolder::Of(clips[i])->IsReadable();
  }
}

std::shared_ptr<const MediaList> ProviderREDMOV::ListOf(const std::string& root) const {
  return foundation::CallScope::Remember<MovieList>(root, [&root] { return BuildList(root); });
}

Recognition ProviderREDMOV::Recognize(const std::string& root) const {
  const auto folder = CardFolder::Of(root);
  for (const std::string& name : folder->VisibleFolders()) {
    if (!red::IsClipFolderName(name)) continue;
    if (!IsMovieClip(*CardFolder::Of(folder->PathOf(name)))) continue;
    return Recognized(!folder->FindVisibleFile(formats::HasMediaExtension));
  }
  return Recognition::kNone;
}

std::vector<ListedPart> ProviderREDMOV::PartsOf(const MediaList&, const MediaEntry& entry) const {
  return ListSegments(entry.key);
}

void ProviderREDMOV::DescribeMore(const std::string& root, const MediaList& list,
                                  CardDescription& card) const {
  std::vector<std::string> keys;
  for (const MediaEntry& entry : list.entries) {
    DescribeSegments(std::string(foundation::ParentFolder(entry.key)), kMovieExtension, {entry.key},
                     card);
    keys.push_back(entry.key);
  }
  card.Report(
      {Finding::Kind::kMissing, Finding::Severity::kWarning, card_role::kSegment, root,
       std::move(keys),
       "clip folders with MOV and without R3D: recorded as MOV only, or an incomplete copy"});
}

}  // namespace Sorvik
