// SPDX-License-Identifier: MIT
#include "providers/cards/ProviderXDCAMEX.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/NameOrder.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/cards/TakeFiles.h"
#include "providers/common/ClipReadAhead.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileName;
using foundation::JoinPath;
using foundation::Lookup;
using foundation::ParentFolder;

constexpr std::string_view kCardFolder = "BPAV";
constexpr std::string_view kClpr = "CLPR";
constexpr std::string_view kTakr = "TAKR";
constexpr std::string_view kClipXmlEnd = "M01.XML";
constexpr std::string_view kEssenceEnd = ".MP4";

constexpr LayoutName kCardLayout[] = {{"MEDIAPRO.XML", true}, {kClpr, true}, {kTakr, false}};
constexpr std::size_t kMinNames = 3;
constexpr std::size_t kMaxNames = 6;

constexpr char kRelation[] = "relation";
constexpr char kShotName[] = "shotName";

bool ContainsName(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

// A card without a folder for takes is recognised with reservation.
Recognition RecognizeCard(const std::string& path) {
  const auto root = CardFolder::Of(path);
  // One access to the disk excludes most other folders before any listing.
  if (!root->KindOf(kCardFolder, Lookup::kDisk)) return Recognition::kNone;
  if (!ContainsName(root->VisibleNames(), kCardFolder)) return Recognition::kNone;
  const std::vector<std::string> names = CardFolder::Of(root->PathOf(kCardFolder))->VisibleNames();
  if (names.size() < kMinNames || names.size() > kMaxNames) return Recognition::kNone;
  LayoutMatch layout(kCardLayout);
  for (const std::string& name : names) layout.Add(name);
  return layout.IsComplete() ? Recognized(ContainsName(names, kTakr)) : Recognition::kNone;
}

bool IsClipXmlName(std::string_view path) {
  return path.size() > kClipXmlEnd.size() &&
         foundation::EqualIgnoringCase(path.substr(path.size() - kClipXmlEnd.size()), kClipXmlEnd);
}

// `xmlPath` has the name of a clip XML.
std::string EssencePathOf(std::string_view xmlPath) {
  return std::string(xmlPath.substr(0, xmlPath.size() - kClipXmlEnd.size())).append(kEssenceEnd);
}

// The essence next to a clip XML, case-insensitive, as it is spelled on disk. Returns nullopt if
// there is none.
std::optional<std::string> EssenceOf(std::string_view xmlPath) {
  if (!IsClipXmlName(xmlPath)) return std::nullopt;
  return foundation::FindOnCard(EssencePathOf(xmlPath));
}

// True for the XML of a clip with essence, by the names in its folder.
bool IsClipXml(const std::string& xmlPath) {
  const auto essence = EssenceOf(xmlPath);
  if (!essence) return false;
  // A clip has two visible files. The essence of a clip without a name is hidden.
  constexpr std::size_t kMinClipFiles = 2;
  return !foundation::IsHidden(*essence) ||
         CardFolder::Of(ParentFolder(xmlPath))->VisibleCount() >= kMinClipFiles;
}

// Completes the values from the metadata, which include the relation and the shot name, requested
// or not. Returns false if the clip has no essence. `recordsLeft` is that of GatherTake.
bool FillClipEntry(const std::string& xmlPath, const FieldNameSet& fields, FieldValueMap& values,
                   std::size_t& recordsLeft) {
  const auto essence = EssenceOf(xmlPath);
  if (!essence) return false;
  std::string name;
  // If the shot name is requested as a field, the name is that of the file.
  if (!fields.contains(kShotName)) {
    name = TextOf(values, kShotName);
    values.erase(kShotName);
  }
  if (!fields.contains(kRelation)) values.erase(kRelation);
  if (name.empty()) name = foundation::FileStem(*essence);
  values.insert_or_assign(kPathField, any_regular_t(*essence));
  values.insert_or_assign(kNameField, any_regular_t(name));
  if (fields.contains(kExtraPathField)) {
    const auto files = xdcamex::GatherTake(*essence, recordsLeft);
    values.insert_or_assign(kExtraPathField, PathList(xdcamex::PathsOf(files, *essence)));
  }
  return true;
}

// The clip XML files of the card, in order of 16-bit code units.
std::vector<std::string> ListClipXmlFiles(const std::string& path) {
  auto files = foundation::ListFilesBelow(JoinPath(JoinPath(path, kCardFolder), kClpr), ".XML");
  std::erase_if(files, foundation::IsHidden);
  std::ranges::sort(files, platform::LessByCodeUnits);
  return files;
}

// The rows to read for `fields` and `more`, so that each clip is read once.
XMPSupport::XMPFieldBits RowsFor(FieldNameSet fields, std::initializer_list<const char*> more) {
  fields.insert(more.begin(), more.end());
  return XMPSupport::ParseFields(fields);
}

}  // namespace

ProviderXDCAMEX::ProviderXDCAMEX()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderXDCAMEX",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/XDCAMEXUIString=XDCAM-EX",
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "MetadataDate",
                                    "videoFrameSize", "videoFrameRate", "videoPixelAspectRatio",
                                    "duration", "videoCompressor", "audioCompressor", "shotName",
                                    "cameraModel", "description", "SerialNumber", "Make", "Model"},
                    .layout = {.rootNames = {kCardFolder}, .ownFolders = {kCardFolder}}}) {}

ContentMap ProviderXDCAMEX::GetContent(const std::string&, const std::string& key,
                                       const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  FieldValueMap values = XMPSupport::MakeValue(key, RowsFor(fields, {kShotName}));
  std::size_t recordsLeft = xdcamex::kMaxTakeRecords;
  if (!FillClipEntry(key, fields, values, recordsLeft)) return {};
  ContentMap content;
  content.emplace(key, std::move(values));
  return content;
}

ContentMap ProviderXDCAMEX::GetContent(const std::string& path, const FieldNameSet& fields,
                                       ProviderRequest* request) const {
  const foundation::CallScope scope;
  const XMPSupport::XMPFieldBits rows = RowsFor(fields, {kShotName, kRelation});
  std::set<std::string> takes;
  std::size_t recordsLeft = xdcamex::kMaxTakeRecords;
  auto clips = ListClipXmlFiles(path);
  // A copy of a clip XML under another name must not replace the entry of its take.
  std::erase_if(clips, [](const std::string& xmlPath) { return !IsClipXml(xmlPath); });
  auto metadata = ReadMetadataAhead(clips, rows, request);
  ContentMap content;
  for (std::size_t i = 0; i < clips.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string& xmlPath = clips[i];
    FieldValueMap values = metadata.Take(i);
    // The first clip of a take represents it.
    const std::string take = TextOf(values, kRelation);
    if (!take.empty() && !takes.insert(take).second) continue;
    if (!FillClipEntry(xmlPath, fields, values, recordsLeft)) continue;
    content.insert_or_assign(xmlPath, std::move(values));
  }
  return content;
}

int ProviderXDCAMEX::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  return ScoreOf(foundation::IsValidPath(path) ? RecognizeCard(path) : Recognition::kNone);
}

Bitplate** ProviderXDCAMEX::GetThumbnail(const std::string&, const std::string& key, int width,
                                         int height, ProviderRequest*) const {
  const int h = GetMaximumThumbnailHeight(height);
  const int w = std::min(width, h);
  if (!IsClipXmlName(key)) return nullptr;
  const std::string essence = EssencePathOf(key);
  return GetFolderThumbnail(std::string(ParentFolder(essence)), std::string(FileName(essence)), w,
                            h);
}

}  // namespace Sorvik
