// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderARRIReel.h"

#include <algorithm>
#include <utility>

#include "formats/MediaNames.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/CardParts.h"
#include "providers/common/NameMask.h"
#include "providers/modern/CompanionFiles.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileStem;
using foundation::HasExtension;

struct ReelList : MediaList {
  std::string reel;
  bool hasOneReel = true;
};

bool IsClipFile(std::string_view name) {
  return HasExtension(name, ".mxf") || HasExtension(name, ".mov");
}

std::optional<ArriClipName> NameOfClip(std::string_view fileName) {
  return IsClipFile(fileName) ? ParseArriClipName(FileStem(fileName)) : std::nullopt;
}

// "A001R1JL.ale", "A001R1JL_FCP.xml", "A_0001_12NR_BIN.bin", "index.xml".
bool IsReelFile(std::string_view name, std::string_view reel) {
  if (foundation::EqualIgnoringCase(name, "index.xml")) return true;
  const bool isList =
      HasExtension(name, ".ale") || HasExtension(name, ".xml") || HasExtension(name, ".bin");
  return isList && name.size() > reel.size() &&
         foundation::EqualIgnoringCase(name.substr(0, reel.size()), reel);
}

ReelList BuildList(const std::string& root) {
  const auto folder = CardFolder::Of(root);
  const auto names = folder->VisibleFiles();
  ReelList list;
  CompanionFiles companions;
  for (const std::string& name : names) {
    const auto clip = NameOfClip(name);
    if (!clip) continue;
    if (list.entries.empty()) list.reel = clip->reel;
    list.hasOneReel = list.hasOneReel && list.reel == clip->reel;
    companions.AddEntry(name, list.entries.size());
    list.entries.push_back({.key = name,
                            .name = std::string(FileStem(name)),
                            .parts = {folder->PathOf(name)},
                            .camera = clip->camera});
  }
  for (const std::string& name : names) {
    if (NameOfClip(name)) continue;
    if (const auto entry = companions.Find(name)) {
      list.entries[*entry].files.push_back({folder->PathOf(name), RoleOfCompanion(name)});
    } else if (IsReelFile(name, list.reel)) {
      list.cardFiles.push_back(folder->PathOf(name));
    } else {
      list.hasForeignMedia = list.hasForeignMedia || formats::HasMediaExtension(name);
    }
  }
  return list;
}

}  // namespace

std::optional<ArriClipName> ParseArriClipName(std::string_view stem) {
  constexpr std::size_t kSerialSize = 4;  // with R or L in front of it
  if (MatchesPattern(stem, "@###C###_######_@***") ||
      MatchesPattern(stem, "@###C###_########_@***")) {
    const std::string upper = foundation::UpperCase(stem);
    return ArriClipName{upper.substr(0, 4) + upper.substr(upper.size() - kSerialSize),
                        upper.substr(0, 1)};
  }
  constexpr std::string_view kNewName = "@*####C###_######_######_@***";
  if (MatchesPattern(stem, kNewName) || MatchesPattern(stem, std::string(kNewName) + "*")) {
    constexpr std::size_t kReelSize = 6;
    constexpr std::size_t kSerialAt = kNewName.size() - 3;
    const std::string upper = foundation::UpperCase(stem);
    return ArriClipName{upper.substr(0, kReelSize) + "_" + upper.substr(kSerialAt),
                        upper.substr(0, upper[1] == '_' ? 1 : 2)};
  }
  return std::nullopt;
}

ProviderARRIReel::ProviderARRIReel()
    : ProviderMediaFilesBase(
          {.identification = "com.halvane.Merisk.ProviderARRIReel",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/ARRIReelUIString=ARRI Reel",
           .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                             "videoFrameSize", "videoFrameRate", "videoCompressor", "camera"},
           .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "identifier",
                           "startTimecode", "duration", "videoFrameSize", "videoFrameRate",
                           "videoCompressor", "videoColorSpace", "videoPixelAspectRatio",
                           "audioSampleRate", "audioChannelType", "camera", "Make", "Model"},
           .layout = {.rootNames = {"*.mxf", "*.mov"}}}) {}

std::shared_ptr<const MediaList> ProviderARRIReel::ListOf(const std::string& root) const {
  return foundation::CallScope::Remember<ReelList>(root, [&root] { return BuildList(root); });
}

Recognition ProviderARRIReel::Recognize(const std::string& root) const {
  const auto isClip = [](const std::string& name) { return NameOfClip(name).has_value(); };
  if (!CardFolder::Of(root)->FindVisibleFile(isClip)) return Recognition::kNone;
  const auto list = ListOf(root);
  if (!static_cast<const ReelList&>(*list).hasOneReel) return Recognition::kNone;
  return Recognized(!list->hasForeignMedia);
}

void ProviderARRIReel::DescribeMore(const std::string&, const MediaList&, CardDescription&) const {
  // The lists of the reel aren't read.
}

}  // namespace Sorvik
