// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderBRAW.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "formats/MediaNames.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "metadata/RecordingVolumes.h"
#include "providers/common/CardParts.h"
#include "providers/common/NameMask.h"
#include "providers/modern/CompanionFiles.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileStem;
using foundation::HasExtension;

constexpr std::string_view kFirstPart = ".braw";
constexpr std::string_view kSecondPart = ".braw2";
constexpr std::string_view kProxyFolder = "Proxy";

bool IsRecording(std::string_view name) {
  return HasExtension(name, kFirstPart) || HasExtension(name, kSecondPart);
}

// The letter of the camera in "A001_08151512_C001"; empty for other names.
std::string CameraOf(std::string_view stem) {
  return MatchesPattern(stem, "@###_########_@###") ? std::string(stem.substr(0, 1))
                                                    : std::string();
}

// The folder of proxies; empty if there is none.
std::string ProxyFolderOf(const std::string& root) {
  const auto folder = CardFolder::Of(root);
  const auto name = folder->Find(kProxyFolder);
  return name && folder->ContainsFolder(*name) ? folder->PathOf(*name) : std::string();
}

class ListBuilder {
 public:
  explicit ListBuilder(const std::string& root) : root_(root), folder_(CardFolder::Of(root)) {}

  MediaList Build() {
    const auto names = folder_->VisibleFiles();
    for (const std::string& name : names) {
      if (HasExtension(name, kFirstPart)) AddRecording(name);
    }
    for (const std::string& name : names) {
      if (HasExtension(name, kSecondPart)) AddSecondPart(name);
    }
    for (const std::string& name : names) {
      if (!IsRecording(name)) AddCompanion(name);
    }
    if (const std::string proxies = ProxyFolderOf(root_); !proxies.empty()) AddProxies(proxies);
    return std::move(list_);
  }

 private:
  void AddRecording(const std::string& name) {
    companions_.AddEntry(name, list_.entries.size());
    list_.entries.push_back({.key = name,
                             .name = std::string(FileStem(name)),
                             .parts = {folder_->PathOf(name)},
                             .camera = CameraOf(FileStem(name))});
  }

  // Usually on a card of its own.
  void AddSecondPart(const std::string& name) {
    const auto first = companions_.Find(name);
    if (!first) return AddRecording(name);
    companions_.AddEntry(name, *first);
    list_.entries[*first].files.push_back({folder_->PathOf(name), card_role::kSpan});
  }

  void AddCompanion(const std::string& name) {
    if (const auto entry = companions_.Find(name)) {
      list_.entries[*entry].files.push_back({folder_->PathOf(name), RoleOfCompanion(name)});
    } else if (formats::HasMediaExtension(name)) {
      list_.hasForeignMedia = true;
    }
  }

  void AddProxies(const std::string& path) {
    const auto proxies = CardFolder::Of(path);
    for (const std::string& name : proxies->VisibleFiles()) {
      const auto entry = companions_.Find(name);
      if (!entry) continue;
      list_.entries[*entry].files.push_back({proxies->PathOf(name), RoleOfCompanion(name)});
    }
  }

  const std::string& root_;
  const std::shared_ptr<const CardFolder> folder_;
  MediaList list_;
  CompanionFiles companions_;
};

struct BrawList : MediaList {};

// Whether the metadata of the file names another part that doesn't exist next to it.
void ReportMissingPart(const MediaEntry& entry, CardDescription& card) {
  const bool hasBoth = std::ranges::any_of(
      entry.files, [](const MediaFile& file) { return HasExtension(file.path, kSecondPart); });
  if (hasBoth) return;
  const std::string& path = entry.parts.front();
  const auto volume = ReadRecordingVolume(path);
  if (!volume || volume->count != 2) return;
  const bool isFirst = HasExtension(path, kFirstPart);
  const std::string stem = path.substr(0, path.size() - foundation::FileExtension(path).size());
  card.Report(Finding::Kind::kMissing, isFirst ? card_role::kSpan : card_role::kEssence,
              stem + std::string(isFirst ? kSecondPart : kFirstPart), {entry.key},
              std::string("part ") + (isFirst ? "2" : "1") + " of 2 of a recording on two cards");
}

}  // namespace

ProviderBRAW::ProviderBRAW()
    : ProviderMediaFilesBase(
          {.identification = "com.halvane.Merisk.ProviderBRAW",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/BRAWUIString=Blackmagic RAW",
           .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                             "videoFrameSize", "videoFrameRate", "scene", "takeNumber", "good"},
           .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "startTimecode", "duration",
                           "videoFrameSize", "videoFrameRate", "videoCompressor",
                           "videoPixelAspectRatio", "audioSampleRate", "audioChannelType", "camera",
                           "scene", "takeNumber", "good", "shotName", "Make", "Model"},
           .layout = {.rootNames = {"*.braw", "*.braw2"}}}) {}

std::shared_ptr<const MediaList> ProviderBRAW::ListOf(const std::string& root) const {
  return foundation::CallScope::Remember<BrawList>(
      root, [&root] { return BrawList{ListBuilder(root).Build()}; });
}

Recognition ProviderBRAW::Recognize(const std::string& root) const {
  if (!CardFolder::Of(root)->FindVisibleFile(IsRecording)) return Recognition::kNone;
  return Recognized(!ListOf(root)->hasForeignMedia);
}

void ProviderBRAW::DescribeMore(const std::string& root, const MediaList& list,
                                CardDescription& card) const {
  if (card.Depth() != CheckDepth::kNames) {
    for (const MediaEntry& entry : list.entries) ReportMissingPart(entry, card);
  }
  if (std::string proxies = ProxyFolderOf(root); !proxies.empty()) {
    card.AddMediaFolder(std::move(proxies));
  }
}

}  // namespace Sorvik
