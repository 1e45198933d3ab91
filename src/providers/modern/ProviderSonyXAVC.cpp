// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderSonyXAVC.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "formats/sony/ClipRecord.h"
#include "foundation/ByteReader.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileSystem.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/common/LooseClips.h"
#include "providers/modern/PartDurations.h"
#include "providers/modern/XAVCCard.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using formats::sony::ClipRecord;
using foundation::CardFolder;
using foundation::EqualIgnoringCase;
using xavc::Card;
using xavc::Clip;

bool IsKnownName(std::string_view name) {
  const auto equals = [name](std::string_view known) { return EqualIgnoringCase(known, name); };
  return std::ranges::any_of(xavc::kStructureFolders, equals) ||
         std::ranges::any_of(xavc::kStructureFiles, equals);
}

// The list names the system of the card near its beginning: masterVersion
// "XAVC-M4@2.00.00" or "XAVC-XD@...".
bool IsListOfXAVC(const std::string& path) {
  constexpr std::size_t kBeginning = 4096;
  const auto head = platform::ReadHead(path, kBeginning);
  if (!head) return false;
  const std::string_view text = foundation::ByteReader(*head).Text();
  return text.find("XAVC-M4") != text.npos || text.find("XAVC-XD") != text.npos;
}

// A copy of the clip folder alone.
bool ContainsRecordedMP4(const CardFolder& clips) {
  return clips
      .FindVisibleFile([&clips](const std::string& name) {
        return foundation::HasExtension(name, ".mp4") &&
               clips.Find(std::string(foundation::FileStem(name)) + "M01.XML").has_value();
      })
      .has_value();
}

// PXROOT holds proxies of a wireless adapter, whose originals are on another card.
bool IsRootName(std::string_view name) {
  return EqualIgnoringCase(name, "M4ROOT") || EqualIgnoringCase(name, "XDROOT") ||
         EqualIgnoringCase(name, "PXROOT");
}

Recognition Recognize(const std::string& path) {
  const auto root = CardFolder::Of(path);
  const auto clipFolder = root->Find(xavc::kClipFolder);
  const std::string_view name = foundation::FileName(path);
  const auto index = root->Find(xavc::kIndex);
  if (!clipFolder || !root->ContainsFolder(*clipFolder)) {
    // All clips of the list are missing.
    const bool isRoot = IsRootName(name) && index && IsListOfXAVC(root->PathOf(*index));
    return isRoot ? Recognition::kWithReservation : Recognition::kNone;
  }
  const bool hasThumbnails = root->Find(xavc::kThumbnailFolder).has_value();
  const bool isXAVC = IsRootName(name) ||
                      (index && (hasThumbnails || IsListOfXAVC(root->PathOf(*index)))) ||
                      (!index && ContainsRecordedMP4(*CardFolder::Of(root->PathOf(*clipFolder))));
  if (!isXAVC) return Recognition::kNone;
  return Recognized(index && std::ranges::all_of(root->VisibleNames(), IsKnownName));
}

std::vector<std::string> ExtraPaths(const Card& card, const Clip& clip,
                                    const std::vector<const Clip*>& parts) {
  std::vector<std::string> paths = clip.files;
  for (const Clip* part : parts) {
    paths.push_back(card.PathOf(*part));
    paths.insert(paths.end(), part->files.begin(), part->files.end());
  }
  for (const auto* shared : {&card.SharedFiles(), &card.SharedFolders()}) {
    paths.insert(paths.end(), shared->begin(), shared->end());
  }
  return paths;
}

std::string NameOf(const Clip& clip) {
  if (clip.material != nullptr && !clip.material->title.empty()) return clip.material->title;
  return std::string(foundation::FileStem(clip.essence));
}

FieldValueMap MetadataOf(const Card& card, const Clip& clip, const FieldNameSet& fields) {
  const std::string record = clip.Record();
  return XMPSupport::MakeValue(record.empty() ? card.PathOf(clip) : record,
                               XMPSupport::ParseFields(PartDurations(fields).FieldsOfFirst()));
}

// Adds the values from the card's own files to the metadata of the clip.
FieldValueMap MakeEntry(const Card& card, const Clip& clip, const std::vector<const Clip*>& parts,
                        const FieldNameSet& fields, FieldValueMap values) {
  PartDurations durations(fields);
  for (const Clip* part : parts) {
    if (const auto record = ClipRecord::Of(part->Record())) durations.Add(record->frames);
  }
  durations.SetTotal(values);
  if (clip.exists) values.insert_or_assign(kPathField, any_regular_t(card.PathOf(clip)));
  values.insert_or_assign(kNameField, any_regular_t(NameOf(clip)));
  if (fields.contains(kProxyPathField)) {
    if (std::string proxy = clip.Proxy(); !proxy.empty()) {
      values.insert_or_assign(kProxyPathField, any_regular_t(std::move(proxy)));
    }
  }
  if (fields.contains(kExtraPathField)) {
    values.insert_or_assign(kExtraPathField, PathList(ExtraPaths(card, clip, parts)));
  }
  return values;
}

}  // namespace

ProviderSonyXAVC::ProviderSonyXAVC()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderSonyXAVC",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/SonyXAVCUIString=Sony XAVC",
                    .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                                      "videoFrameSize", "videoFrameRate", "Model"},
                    .labelFields = {"Name",
                                    "Path",
                                    "CreateDate",
                                    "ModifyDate",
                                    "identifier",
                                    "startTimecode",
                                    "duration",
                                    "videoFrameSize",
                                    "videoFrameRate",
                                    "videoPixelAspectRatio",
                                    "videoCompressor",
                                    "audioCompressor",
                                    "audioChannelType",
                                    "cameraModel",
                                    "description",
                                    "good",
                                    "Make",
                                    "Model",
                                    "SerialNumber",
                                    "GPSLatitude",
                                    "GPSLongitude"},
                    .layout = {.rootNames = {xavc::kClipFolder, xavc::kIndex},
                               .ownFolders = {std::begin(xavc::kStructureFolders),
                                              std::end(xavc::kStructureFolders)},
                               .alternativeTo = "com.halvane.Merisk.ProviderXDCAM"},
                    .maxThumbnailHeight = std::numeric_limits<int>::max()}) {}

ContentMap ProviderSonyXAVC::GetContent(const std::string& path, const std::string& key,
                                        const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const Clip* clip = card->Find(key);
  if (clip == nullptr || card->IsLaterPart(*clip)) return {};
  return {{key, MakeEntry(*card, *clip, card->PartsAfter(*clip), fields,
                          MetadataOf(*card, *clip, fields))}};
}

ContentMap ProviderSonyXAVC::GetContent(const std::string& path, const FieldNameSet& fields,
                                        ProviderRequest* request) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  // Reading the metadata of all clips first leaves their records in the call scope, so that each
  // is opened once.
  foundation::ReadAhead<FieldValueMap> ahead(
      card->Clips().size(),
      [card, fields](std::size_t i) { return MetadataOf(*card, card->Clips()[i], fields); },
      StopWith(request));
  std::vector<FieldValueMap> metadata;
  metadata.reserve(card->Clips().size());
  for (std::size_t i = 0; i < card->Clips().size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    metadata.push_back(ahead.Take(i));
  }
  ContentMap content;
  for (std::size_t i = 0; i < metadata.size(); ++i) {
    const Clip& clip = card->Clips()[i];
    if (ProviderRequest::TestAborted(request)) return {};
    if (card->IsLaterPart(clip)) continue;
    content.insert_or_assign(clip.essence, MakeEntry(*card, clip, card->PartsAfter(clip), fields,
                                                     std::move(metadata[i])));
  }
  return content;
}

std::vector<ListedPart> ProviderSonyXAVC::ListParts(const std::string& path,
                                                    const std::string& key) const {
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const Clip* first = card->Find(key);
  if (first == nullptr || card->IsLaterPart(*first)) return {};
  const auto part = [&card](const Clip& clip) {
    return ListedPart{
        .path = card->PathOf(clip), .isPresent = clip.exists, .record = clip.Record()};
  };
  std::vector<ListedPart> parts = {part(*first)};
  for (const Clip* later : card->PartsAfter(*first)) {
    parts.push_back(part(*later));
    parts.back().isInferred = true;
  }
  return parts;
}

int ProviderSonyXAVC::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  return ScoreOf(foundation::IsValidPath(path) ? Recognize(path) : Recognition::kNone);
}

Bitplate** ProviderSonyXAVC::GetThumbnail(const std::string& path, const std::string& key,
                                          int width, int height, ProviderRequest*) const {
  const foundation::CallScope scope;
  const std::string root(foundation::WithoutTrailingSlash(path));
  if (!Hestra::PathUtils::IsItemName(key)) return nullptr;
  const std::string name = std::string(foundation::FileStem(key)) + "T01.JPG";
  std::string picture = xavc::FindInRoot(root, xavc::kThumbnailFolder, name).value_or("");
  if (picture.empty()) {
    // Only the material list can name another one.
    const auto card = Card::Of(root);
    if (const Clip* clip = card->Find(key)) picture = clip->Thumbnail();
  }
  if (!picture.empty()) {
    if (Bitplate** drawn = RenderThumbnailIntoNew(Hestra::MakeString(picture), width, height)) {
      return drawn;
    }
  }
  const int side = std::min(height, kIconHeight);
  return GetFolderThumbnail(root, key, std::min(width, side), side);
}

namespace {

struct KindOfFile {
  char letter;
  std::string_view extension;
};
// Record, thumbnail, real-time metadata, picture pointers. The name of a proxy alone shows
// nothing: "SHIPS01.MP4" next to "SHIP.MP4" is another clip.
constexpr KindOfFile kTypicalKinds[] = {{'M', ".xml"}, {'T', ".jpg"}, {'R', ".bim"}, {'I', ".ppn"}};

std::optional<LooseName> ParseLoose(std::string_view name) {
  LooseName parsed{.clip = foundation::FileStem(name)};
  parsed.isTypical = std::ranges::any_of(kTypicalKinds, [name](const KindOfFile& kind) {
    return xavc::IsFileOfKind(name, kind.letter) && foundation::HasExtension(name, kind.extension);
  });
  const bool isEssence = xavc::IsEssenceName(name);
  parsed.isProxy = isEssence && xavc::IsFileOfKind(name, 'S');
  parsed.isOriginal = isEssence && !parsed.isProxy;
  if (parsed.isTypical || parsed.isProxy) parsed.clip.remove_suffix(xavc::kKindSize);
  return parsed;
}

}  // namespace

std::optional<FileGroup> ProviderSonyXAVC::GroupOf(const std::string& folder,
                                                   const std::string& name) const {
  return GroupLooseFiles(folder, name, ParseLoose);
}

}  // namespace Sorvik
