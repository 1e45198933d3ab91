// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "providers/cards/TakeFiles.h"

namespace Sorvik {
namespace {

using foundation::FoldCase;
using xdcamex::MediaProEntry;

ListedPart PartOfClip(const MediaProEntry& clip) {
  ListedPart part;
  const auto essence = foundation::FindOnCard(clip.essencePath);
  part.path = essence.value_or(clip.essencePath);
  part.isPresent = essence.has_value();
  part.record = foundation::FindOnCard(clip.xmlPath).value_or("");
  if (clip.durationFrames > 0) part.frames = clip.durationFrames;
  if (part.path.empty()) part.name = clip.umid;
  return part;
}

// The lengths of the components of a take by folded UMID, as the list at `mediaPro` has them.
std::map<std::string, std::uint64_t> ComponentLengths(const MediaProEntry& take) {
  std::map<std::string, std::uint64_t> lengths;
  if (take.componentUmids.empty()) return lengths;
  const auto list = formats::sony::MediaProfile::Of(take.mediaProPath);
  const auto* material = list->FindTake(take.componentUmids.front());
  if (material == nullptr) return lengths;
  for (const auto& part : material->parts) {
    std::uint64_t frames = 0;
    std::from_chars(part.duration.data(), part.duration.data() + part.duration.size(), frames);
    if (frames > 0) lengths.emplace(FoldCase(part.umid), frames);
  }
  return lengths;
}

// Inserts the missing components of a take where the take has them.
void AddMissingParts(const MediaProEntry& take, std::vector<std::string>& umids,
                     std::vector<ListedPart>& parts) {
  const auto lengths = ComponentLengths(take);
  for (const xdcamex::MissingPart& missing : xdcamex::MissingParts(take.mediaProPath, take)) {
    const std::string umid = FoldCase(missing.umid);
    if (std::ranges::find(umids, umid) != umids.end()) continue;
    ListedPart part{.path = missing.path, .name = missing.umid, .isPresent = false};
    if (const auto length = lengths.find(umid); length != lengths.end()) {
      part.frames = length->second;
    }
    // After the last of the components before it; at the end if the take doesn't contain it.
    std::size_t at = umids.size();
    const auto own = std::ranges::find_if(
        take.componentUmids, [&umid](const std::string& other) { return FoldCase(other) == umid; });
    if (own != take.componentUmids.end()) {
      at = 0;
      for (auto before = take.componentUmids.begin(); before != own; ++before) {
        const auto known = std::ranges::find(umids, FoldCase(*before));
        if (known != umids.end()) {
          at = std::max(at, static_cast<std::size_t>(known - umids.begin()) + 1);
        }
      }
    }
    umids.insert(umids.begin() + static_cast<std::ptrdiff_t>(at), umid);
    parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(at), std::move(part));
  }
}

}  // namespace

std::vector<ListedPart> ProviderXDCAMEX::ListParts(const std::string& path,
                                                   const std::string& key) const {
  const ContentMap content = GetContent(path, key, {kPathField});
  if (content.empty()) return {};
  std::size_t recordsLeft = xdcamex::kMaxTakeRecords;
  const auto take = xdcamex::GatherTake(TextOf(content.begin()->second, kPathField), recordsLeft);
  std::vector<ListedPart> parts;
  std::vector<std::string> umids;  // of the parts, folded
  for (const MediaProEntry& clip : take.clips) {
    umids.push_back(FoldCase(clip.umid));
    parts.push_back(PartOfClip(clip));
  }
  if (!take.takes.empty()) AddMissingParts(take.takes.front(), umids, parts);
  return parts;
}

}  // namespace Sorvik
