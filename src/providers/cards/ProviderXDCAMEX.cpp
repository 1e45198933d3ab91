// SPDX-License-Identifier: MIT
#include "providers/cards/ProviderXDCAMEX.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/FoldedNames.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "frame/FieldValues.h"
#include "providers/cards/TakeFiles.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using foundation::FoldedNames;
using Hestra::MakeStdString;
using Hestra::MakeString;
using PathUtils::CombinePaths;
using tarnwick::utility::FoldCase;

constexpr int kScoreWithTakes = 100;
constexpr int kScoreWithoutTakes = 40;

constexpr char16_t kCardFolder[] = u"BPAV";
constexpr std::u16string_view kClipXmlEnd = u"M01.XML";
constexpr std::u16string_view kEssenceEnd = u".MP4";
constexpr std::size_t kMinEntries = 3;
constexpr std::size_t kMaxEntries = 6;

constexpr char kRelation[] = "relation";
constexpr char kShotName[] = "shotName";

// Nothing if this is no card; else whether it has the folder of takes.
std::optional<bool> IsBpavCard(const UTF16String& root) {
  const UTF16String bpav = CombinePaths(root, kCardFolder);
  // Asked for before the root is listed: no card is without it.
  if (!PathUtils::ExistsOnDisk(bpav)) return std::nullopt;
  auto entries = Directory::GetContainedPaths(root);
  if (std::ranges::find(entries, bpav) == entries.end()) return std::nullopt;
  entries = Directory::GetContainedPaths(bpav);
  PathUtils::FilterHiddenFiles(entries);
  if (entries.size() < kMinEntries || entries.size() > kMaxEntries) return std::nullopt;
  const auto holds = [&](const char16_t* name) {
    return std::ranges::find(entries, CombinePaths(bpav, name)) != entries.end();
  };
  if (!holds(u"MEDIAPRO.XML") || !holds(u"CLPR")) return std::nullopt;
  return holds(u"TAKR");
}

bool IsClipXmlName(const UTF16String& path) {
  return path.size() > kClipXmlEnd.size() &&
         FoldCase(path.substr(path.size() - kClipXmlEnd.size())) == FoldCase(kClipXmlEnd);
}

UTF16String FolderOf(const UTF16String& path) {
  return PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(path));
}

// A clip is an XML with the essence of the same stem beside it, in whatever case.
bool IsClipXml(const UTF16String& xmlPath) {
  const auto names = FoldedNames::Of(MakeStdString(FolderOf(xmlPath)));
  if (names->VisibleCount() < 2) return false;
  const UTF16String title = PathUtils::GetFilePart(xmlPath);
  const auto mark = FoldCase(title).rfind(FoldCase(u"M01"));
  if (mark == UTF16String::npos) return false;
  const UTF16String stem = title.substr(0, mark);
  return names->Find(stem + UTF16String(kClipXmlEnd)) != nullptr &&
         names->Find(stem + UTF16String(kEssenceEnd)) != nullptr;
}

// The essence beside a clip XML, as it is named on disk; nothing if there is none.
std::optional<UTF16String> EssenceOf(const UTF16String& xmlPath) {
  if (!IsClipXmlName(xmlPath)) return std::nullopt;
  return foundation::FoundOnDisk(xmlPath.substr(0, xmlPath.size() - kClipXmlEnd.size()) +
                                 UTF16String(kEssenceEnd));
}

// Completes what the metadata gave. False if the clip has no essence. `values` holds the relation
// and the shot name, asked for or not. `recordsLeft` is that of GatherTake.
bool FillClipEntry(const UTF16String& xmlPath, const FieldNameSet& fields, FieldValueMap& values,
                   std::size_t& recordsLeft) {
  const auto essence = EssenceOf(xmlPath);
  if (!essence) return false;
  std::string name;
  // A caller that shows the shot name as a field gets the file's title as the name.
  if (!fields.contains(kShotName)) {
    name = TextOf(values, kShotName);
    values.erase(kShotName);
  }
  if (!fields.contains(kRelation)) values.erase(kRelation);
  if (name.empty()) name = MakeStdString(PathUtils::GetFilePart(*essence));
  values.insert_or_assign(kPathField, any_regular_t(MakeStdString(*essence)));
  values.insert_or_assign(kNameField, any_regular_t(name));
  if (fields.contains(kExtraPathField)) {
    const auto files = xdcamex::GatherTake(*essence, recordsLeft);
    values.insert_or_assign(kExtraPathField, PathList(xdcamex::PathsOf(files, *essence)));
  }
  return true;
}

// The rows to read for `fields`, so that one reading of a clip serves all steps.
XMPSupport::XMPFieldBits RowsFor(FieldNameSet fields, std::initializer_list<const char*> more) {
  fields.insert(more.begin(), more.end());
  return XMPSupport::ParseFields(fields);
}

}  // namespace

ProviderXDCAMEX::ProviderXDCAMEX()
    : ClipProvider(
          {.identification = "com.halvane.Merisk.ProviderXDCAMEX",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/XDCAMEXUIString=XDCAM-EX",
           .defaultFields = {kNameField, kPathField},
           .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "MetadataDate",
                           "videoFrameSize", "videoFrameRate", "videoPixelAspectRatio", "duration",
                           "videoCompressor", "audioCompressor", "shotName", "cameraModel",
                           "description", "SerialNumber", "Make", "Model"}}) {}

ContentMap ProviderXDCAMEX::GetContent(const std::string&, const std::string& key,
                                       const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  FieldValueMap values = XMPSupport::MakeValue(key, RowsFor(fields, {kShotName}));
  std::size_t recordsLeft = xdcamex::kMaxTakeRecords;
  if (!FillClipEntry(MakeString(key), fields, values, recordsLeft)) return {};
  ContentMap content;
  content.emplace(key, std::move(values));
  return content;
}

ContentMap ProviderXDCAMEX::GetContent(const std::string& path, const FieldNameSet& fields,
                                       ProviderRequest* request) const {
  const foundation::CallScope scope;
  const UTF16String folder = CombinePaths(CombinePaths(MakeString(path), kCardFolder), u"CLPR");
  auto clips = Directory::GetContainedFilePaths(folder, u".XML", true);
  PathUtils::FilterHiddenFiles(clips);
  std::ranges::sort(clips);
  const XMPSupport::XMPFieldBits rows = RowsFor(fields, {kShotName, kRelation});
  std::set<std::string> takes;
  std::size_t recordsLeft = xdcamex::kMaxTakeRecords;
  ContentMap content;
  for (const UTF16String& xmlPath : clips) {
    if (ProviderRequest::TestAborted(request)) return {};
    // A copy of a clip XML under another name must not take the place of its take.
    if (!IsClipXmlName(xmlPath) || !IsClipXml(xmlPath)) continue;
    const std::string key = MakeStdString(xmlPath);
    FieldValueMap values = XMPSupport::MakeValue(key, rows);
    // Further clips of a take that has its entry already.
    const std::string take = TextOf(values, kRelation);
    if (!take.empty() && !takes.insert(take).second) continue;
    if (!FillClipEntry(xmlPath, fields, values, recordsLeft)) continue;
    content.insert_or_assign(key, std::move(values));
  }
  return content;
}

int ProviderXDCAMEX::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  const UTF16String root = MakeString(path);
  if (!PathUtils::IsValidPath(root)) return 0;
  const auto hasTakes = IsBpavCard(root);
  if (!hasTakes) return 0;
  return *hasTakes ? kScoreWithTakes : kScoreWithoutTakes;
}

Bitplate** ProviderXDCAMEX::GetThumbnail(const std::string&, const std::string& key, int width,
                                         int height, ProviderRequest*) const {
  const int h = GetMaximumThumbnailHeight(height);
  const int w = std::min(width, h);
  const UTF16String xmlPath = MakeString(key);
  if (!IsClipXmlName(xmlPath)) return nullptr;
  const UTF16String essence =
      xmlPath.substr(0, xmlPath.size() - kClipXmlEnd.size()) + UTF16String(kEssenceEnd);
  return GetFolderThumbnail(MakeStdString(FolderOf(essence)),
                            MakeStdString(PathUtils::GetFullFilePart(essence)), w, h);
}

}  // namespace Sorvik
