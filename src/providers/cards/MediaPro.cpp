// SPDX-License-Identifier: MIT
#include "providers/cards/MediaPro.h"

#include <charconv>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik::xdcamex {
namespace {

using formats::sony::Material;
using formats::sony::MaterialPart;
using formats::sony::MediaProfile;
using foundation::FoldCase;

// The folder that the uris of a list are relative to, with a trailing separator: the card's BPAV
// folder, even for a list in a folder below it.
std::string BaseOf(const std::string& xmlPath) {
  static constexpr std::string_view kCard = "/BPAV";
  const auto card = xmlPath.rfind(kCard);
  if (card == xmlPath.npos) return xmlPath.substr(0, xmlPath.rfind(platform::kSeparator) + 1);
  const auto end = xmlPath.find(platform::kSeparator, card + kCard.size());
  return end == xmlPath.npos ? xmlPath : xmlPath.substr(0, end + 1);
}

// Resolves the uris of one list.
class CardPaths {
 public:
  explicit CardPaths(const std::string& xmlPath)
      : base_(BaseOf(xmlPath)),
        root_(foundation::ParentFolder(foundation::WithoutTrailingSlash(base_))) {}

  std::string Resolve(std::string_view uri) const {
    // The "./" at the start of uris, whatever a list has in its place.
    constexpr std::size_t kPrefixLength = 2;
    if (foundation::CountCodeUnits(uri) <= kPrefixLength) return {};
    const std::string relative = foundation::SubstrOfCodeUnits(uri, kPrefixLength);
    std::string path = base_ + relative;
    return !relative.empty() && foundation::IsInside(path, root_) ? path : std::string();
  }
  // Returns the part of the path after the card's folder.
  std::string RelativeToBase(const std::string& resolved) const {
    return resolved.empty() ? resolved : resolved.substr(base_.size());
  }

 private:
  std::string base_;
  std::string root_;  // uris may lead to siblings of the BPAV folder, but not out of its parent
};

std::uint32_t ParseFrames(const std::string& digits) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size() ? number : 0;
}

std::string SidecarOf(const std::string& essencePath) {
  static constexpr std::string_view kEnd = ".MP4";
  if (essencePath.find(kEnd) + kEnd.size() != essencePath.size()) return {};
  return essencePath.substr(0, essencePath.size() - kEnd.size()) + "M01.XMP";
}

void FillTake(const Material& material, const CardPaths& paths, MediaProEntry& entry) {
  entry.kind = MediaProEntry::kTake;
  if (const MaterialPart* info = material.First(MaterialPart::Kind::kRelevantInfo)) {
    entry.xmlPath = paths.Resolve(info->uri);
  }
  for (const MaterialPart& part : material.parts) {
    if (part.kind == MaterialPart::Kind::kComponent) entry.componentUmids.push_back(part.umid);
  }
}

void FillClip(const Material& material, const CardPaths& paths, MediaProEntry& entry) {
  entry.kind = MediaProEntry::kClip;
  if (const MaterialPart* essence = material.First(MaterialPart::Kind::kComponent)) {
    entry.essencePath = paths.Resolve(essence->uri);
    entry.durationFrames = ParseFrames(essence->duration);
    entry.xmpPath = SidecarOf(entry.essencePath);
  }
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo) continue;
    if (part.type == "BiM") entry.bimPath = paths.Resolve(part.uri);
    if (part.type == "PPN") entry.ppnPath = paths.Resolve(part.uri);
    if (part.type == "XML") entry.xmlPath = paths.Resolve(part.uri);
  }
}

const std::vector<std::size_t>* Find(
    const std::unordered_map<std::string, std::vector<std::size_t>>& byUmid,
    std::string_view umid) {
  const auto found = byUmid.find(FoldCase(umid));
  return found == byUmid.end() ? nullptr : &found->second;
}

}  // namespace

void MediaProCard::Add(MediaProEntry entry) {
  const std::size_t index = entries_.size();
  if (!entry.umid.empty()) byUmid_[FoldCase(entry.umid)].push_back(index);
  for (const std::string& umid : entry.componentUmids) {
    if (umid.empty()) continue;
    std::vector<std::size_t>& takes = byComponentUmid_[FoldCase(umid)];
    // A take may contain a clip twice.
    if (takes.empty() || takes.back() != index) takes.push_back(index);
  }
  entries_.push_back(std::move(entry));
}

MediaProCard MediaProCard::Read(const std::string& xmlPath) {
  MediaProCard card;
  const CardPaths paths(xmlPath);
  std::vector<std::string> essences;
  const auto list = MediaProfile::Of(xmlPath);
  for (const Material& material : list->Materials()) {
    MediaProEntry entry;
    entry.mediaProPath = xmlPath;
    entry.materialPath = paths.Resolve(material.uri);
    entry.umid = material.umid;
    // Use the uri, not the path: a parent directory may be called CLPR or TAKR, too.
    if (entry.materialPath.empty()) {
      entry.kind = MediaProEntry::kNeither;
    } else if (material.IsTake()) {
      FillTake(material, paths, entry);
    } else if (material.uri.find("/CLPR/") != std::string::npos) {
      FillClip(material, paths, entry);
    }
    // Use the relative path: a parent directory may have the name of an essence.
    essences.push_back(FoldCase(paths.RelativeToBase(entry.essencePath)));
    card.Add(std::move(entry));
  }
  card.essences_ = std::make_shared<const formats::TextIndex>(essences);
  return card;
}

std::shared_ptr<const MediaProCard> MediaProCard::Of(const std::string& xmlPath) {
  return foundation::CallScope::Remember<MediaProCard>(xmlPath,
                                                       [&xmlPath] { return Read(xmlPath); });
}

const std::vector<std::size_t>* MediaProCard::WithUmid(std::string_view umid) const {
  return Find(byUmid_, umid);
}

const std::vector<std::size_t>* MediaProCard::TakesWith(std::string_view componentUmid) const {
  return Find(byComponentUmid_, componentUmid);
}

std::optional<std::size_t> MediaProCard::WithEssence(std::string_view fileName) const {
  return essences_->FirstContaining(FoldCase(fileName));
}

}  // namespace Sorvik::xdcamex
