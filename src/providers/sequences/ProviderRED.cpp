// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderRED.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/LooseClips.h"
#include "providers/common/NameMask.h"
#include "providers/common/REDNames.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

using foundation::CardFolder;
using foundation::FileStem;

bool ProviderRED::IsClipSegment(std::string_view name) { return red::IsSegmentName(name); }

bool ProviderRED::ContainsClips(const std::string& folder, bool& hasForeignFiles) {
  hasForeignFiles = false;
  const auto listed = CardFolder::Of(folder);
  return std::ranges::any_of(listed->Folders(), [&](const std::string& name) {
    return red::IsClipFolderName(name) &&
           CardFolder::Of(listed->PathOf(name))->FindVisibleFile(IsClipSegment).has_value();
  });
}

std::vector<std::string> ProviderRED::GetClips(const std::string& folder,
                                               ProviderRequest* request) {
  std::vector<std::string> paths;
  const auto listed = CardFolder::Of(folder);
  std::vector<std::string> folders = listed->Folders();
  for (std::string& name : folders) name = listed->PathOf(name);
  foundation::FolderReadAhead ahead(folders, StopWith(request));
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    ahead.Await(i);
    const auto clip = CardFolder::Of(folders[i]);
    if (const auto segment = clip->FindVisibleFile(IsClipSegment)) {
      paths.push_back(clip->PathOf(*segment));
    }
  }
  return paths;
}

int ProviderRED::CanProvideFor(const std::string& path) const {
  bool hasForeignFiles = false;
  if (!foundation::IsValidPath(path) || !ContainsClips(path, hasForeignFiles)) {
    return ScoreOf(Recognition::kNone);
  }
  return ScoreOf(Recognized(!hasForeignFiles));
}

ProviderRED::ProviderRED()
    : ClipProvider(
          {.identification = "com.halvane.Merisk.ProviderRED",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/REDUIString=RED",
           .defaultFields = {kNameField, kPathField},
           .labelFields = {"Name", "identifier", "relation", "startTimecode", "duration",
                           "CreateDate", "ModifyDate", "Rating", "videoFrameRate", "videoFrameSize",
                           "videoCompressor", "videoPixelAspectRatio", "audioSampleRate",
                           "audioSampleType", "creator", "shotName", "shotLocation", "Path"},
           .layout = {.rootNames = {"*.RDC"}, .ownFolders = {"*.RDC"}}}) {}

ContentMap ProviderRED::GetContent(const std::string& path, const FieldNameSet& fields,
                                   ProviderRequest* request) const {
  const foundation::CallScope scope;
  ContentMap content;
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  const auto clips = GetClips(path, request);
  auto metadata = ReadMetadataAhead(clips, bits, request);
  for (std::size_t i = 0; i < clips.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string& segment = clips[i];
    FieldValueMap values = metadata.Take(i);
    values[kNameField] = any_regular_t(std::string(foundation::FileName(segment)));
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
  if (foundation::ExistsOnDisk(path)) {
    values[kPathField] = any_regular_t(key);
    values[kNameField] = any_regular_t(std::string(FileStem(key)));
    if (fields.contains(kExtraPathField)) AddClipFiles(values, key);
  }
  return {{key, std::move(values)}};
}

void ProviderRED::AddClipFiles(FieldValueMap& fields, const std::string& filePath) {
  const std::string_view folder = foundation::ParentFolder(filePath);
  const std::string_view clipTitle = FileStem(folder);
  if (clipTitle.empty()) return;
  const auto clip = CardFolder::Of(folder);
  std::vector<any_regular_t> values;
  for (const std::string& name : clip->VisibleFiles()) {
    std::string path = clip->PathOf(name);
    if (path == filePath) continue;
    if (!foundation::StartsWithCharacters(FileStem(name), clipTitle)) continue;
    values.emplace_back(std::move(path));
  }
  fields[kExtraPathField] = any_regular_t(std::move(values));
}

Bitplate** ProviderRED::GetThumbnail([[maybe_unused]] const std::string& path,
                                     [[maybe_unused]] const std::string& key, int width, int height,
                                     [[maybe_unused]] ProviderRequest* request) const {
  return RenderTemplatePicture("REDVideoThumb.png", width, GetMaximumThumbnailHeight(height));
}

namespace {

// "A001_C001_0925AB_001.R3D" is segment 001 of the clip A001_C001_0925AB.
std::optional<LooseName> ParseLoose(std::string_view name) {
  constexpr std::string_view kNumber = "_###";
  LooseName parsed{.clip = FileStem(name)};
  const std::size_t end = parsed.clip.size() - std::min(kNumber.size(), parsed.clip.size());
  const std::string_view number = parsed.clip.substr(end);
  if (MatchesMask(number, kNumber)) {
    parsed.clip = parsed.clip.substr(0, end);
    for (const char digit : number.substr(1)) {
      parsed.part = parsed.part * 10 + static_cast<std::uint32_t>(digit - '0');
    }
  }
  parsed.isOriginal = foundation::HasExtension(name, red::kSegmentExtension);
  parsed.isTypical = parsed.isOriginal;
  parsed.isProxy = foundation::HasExtension(name, ".mov");
  return parsed;
}

}  // namespace

std::optional<FileGroup> ProviderRED::GroupOf(const std::string& folder,
                                              const std::string& name) const {
  return GroupLooseFiles(folder, name, ParseLoose);
}

}  // namespace Sorvik
