// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderCanonXFAVC.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/modern/CanonFlatCard.h"
#include "providers/modern/PartDurations.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using canonflat::Card;
using canonflat::Recording;
using foundation::CardFolder;

bool IsKnownName(std::string_view name) {
  static constexpr std::string_view kNames[] = {canonflat::kContents, "PRIVATE", "DCIM", "MISC",
                                                "CANONMSC",           "Desktop"};
  return std::ranges::any_of(kNames, [name](std::string_view known) {
    return foundation::EqualIgnoringCase(known, name);
  });
}

Recognition Recognize(const std::string& root) {
  const auto folder = CardFolder::Of(root);
  if (!folder->Find(canonflat::kContents)) return Recognition::kNone;
  const auto card = Card::Of(root);
  if (card->Recordings().empty()) return Recognition::kNone;
  return Recognized(card->LooseFiles().empty() &&
                    std::ranges::all_of(folder->VisibleNames(), IsKnownName));
}

std::vector<std::string> ExtraPaths(const Card& card, const Recording& recording) {
  std::vector<std::string> paths(recording.parts.begin() + 1, recording.parts.end());
  for (const auto* more : {&recording.proxies, &recording.files, &card.SharedFiles()}) {
    paths.insert(paths.end(), more->begin(), more->end());
  }
  return paths;
}

// The metadata of the recording: that of the first part, with the duration of all.
FieldValueMap MetadataOf(const Recording& recording, const FieldNameSet& fields) {
  const std::string& first = recording.parts.front();
  PartDurations durations(fields);
  FieldValueMap values =
      XMPSupport::MakeValue(first, XMPSupport::ParseFields(durations.FieldsOfFirst()));
  if (recording.parts.size() > 1 && durations.AreWanted()) {
    for (std::size_t i = 1; i < recording.parts.size(); ++i) {
      durations.Add(TextOf(
          XMPSupport::MakeValue(recording.parts[i], XMPSupport::ParseFields({kFrameCountField})),
          kFrameCountField));
    }
  }
  durations.SetTotal(values);
  return values;
}

// Adds the values from the card's own files to the metadata of the recording.
FieldValueMap MakeEntry(const Card& card, const Recording& recording, const FieldNameSet& fields,
                        FieldValueMap values) {
  const std::string& first = recording.parts.front();
  values.insert_or_assign(kPathField, any_regular_t(first));
  values.insert_or_assign(kNameField, any_regular_t(std::string(foundation::FileStem(first))));
  if (fields.contains(kProxyPathField) && !recording.proxies.empty()) {
    values.insert_or_assign(kProxyPathField, any_regular_t(recording.proxies.front()));
  }
  if (fields.contains(kExtraPathField)) {
    values.insert_or_assign(kExtraPathField, PathList(ExtraPaths(card, recording)));
  }
  return values;
}

}  // namespace

ProviderCanonXFAVC::ProviderCanonXFAVC()
    : ClipProvider(
          {.identification = "com.halvane.Merisk.ProviderCanonXFAVC",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/CanonXFAVCUIString=Canon XF-AVC",
           .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                             "videoFrameSize", "videoFrameRate", "videoCompressor"},
           .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "identifier",
                           "startTimecode", "duration", "videoFrameSize", "videoFrameRate",
                           "videoPixelAspectRatio", "videoCompressor", "audioSampleRate",
                           "audioChannelType", "audioCompressor", "shotName", "Make", "Model",
                           "SerialNumber"},
           .layout = {.rootNames = {canonflat::kContents}, .ownFolders = {canonflat::kContents}}}) {
}

ContentMap ProviderCanonXFAVC::GetContent(const std::string& path, const std::string& key,
                                          const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const Recording* recording = card->Find(key);
  if (recording == nullptr) return {};
  return {{key, MakeEntry(*card, *recording, fields, MetadataOf(*recording, fields))}};
}

ContentMap ProviderCanonXFAVC::GetContent(const std::string& path, const FieldNameSet& fields,
                                          ProviderRequest* request) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  foundation::ReadAhead<FieldValueMap> metadata(
      card->Recordings().size(),
      [card, fields](std::size_t i) { return MetadataOf(card->Recordings()[i], fields); },
      StopWith(request));
  ContentMap content;
  for (std::size_t i = 0; i < card->Recordings().size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const Recording& recording = card->Recordings()[i];
    content.insert_or_assign(recording.key, MakeEntry(*card, recording, fields, metadata.Take(i)));
  }
  return content;
}

std::vector<ListedPart> ProviderCanonXFAVC::ListParts(const std::string& path,
                                                      const std::string& key) const {
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const Recording* recording = card->Find(key);
  std::vector<ListedPart> parts;
  if (recording == nullptr) return parts;
  for (const canonflat::NumberedPart& part : canonflat::PartsWithGaps(*recording)) {
    parts.push_back({.path = part.path, .isPresent = part.exists});
  }
  return parts;
}

int ProviderCanonXFAVC::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  return ScoreOf(foundation::IsValidPath(path) ? Recognize(path) : Recognition::kNone);
}

Bitplate** ProviderCanonXFAVC::GetThumbnail(const std::string& path, const std::string& key,
                                            int width, int height, ProviderRequest*) const {
  const int side = GetMaximumThumbnailHeight(height);
  return GetFolderThumbnail(path, key, std::min(width, side), side);
}

std::optional<FileGroup> ProviderCanonXFAVC::GroupOf(const std::string& folder,
                                                     const std::string& name) const {
  const std::string path = foundation::JoinPath(folder, name);
  const Card card = Card::OfClipFolder(folder);
  for (const Recording& recording : card.Recordings()) {
    FileGroup group;
    group.parts = recording.parts;
    group.others = recording.proxies;
    group.others.insert(group.others.end(), recording.files.begin(), recording.files.end());
    const auto files = group.AllFiles();
    // Without parts or proxies it may be the name of an unrelated file.
    const bool isNamed = canonflat::ParseClipName(foundation::FileStem(files.front())).part ||
                         !recording.proxies.empty();
    if (!isNamed || !std::ranges::count(files, path)) continue;
    group.name = foundation::FileStem(files.front());
    if (!recording.proxies.empty()) group.proxy = recording.proxies.front();
    return group;
  }
  return std::nullopt;
}

}  // namespace Sorvik
