// SPDX-License-Identifier: MIT
#include "providers/cards/MediaPro.h"

#include <charconv>
#include <string>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/Presence.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik::xdcamex {
namespace {

namespace PathUtils = Hestra::PathUtils;
using formats::sony::Material;
using formats::sony::MaterialPart;
using formats::sony::MediaProfile;
using tarnwick::utility::FoldCase;

// The folder that uris of a list are relative to: the card's, whatever the list's own is.
UTF16String BaseOf(const UTF16String& xmlPath) {
  static constexpr std::u16string_view kCard = u"/BPAV";
  const auto card = xmlPath.rfind(kCard);
  if (card == xmlPath.npos) return PathUtils::GetFullDirectoryPart(xmlPath);
  const auto end = xmlPath.find(PathUtils::kSeparator, card + kCard.size());
  return end == xmlPath.npos ? xmlPath : xmlPath.substr(0, end + 1);
}

// Resolves the uris of one list.
class CardPaths {
 public:
  explicit CardPaths(const UTF16String& xmlPath)
      : base_(BaseOf(xmlPath)),
        root_(PathUtils::GetFullDirectoryPart(PathUtils::RemoveTrailingSlash(base_))) {}

  // Uris begin with "./".
  UTF16String Resolve(const UTF16String& uri) const {
    if (uri.size() <= 2) return {};
    UTF16String path = base_ + uri.substr(2);
    return foundation::IsWithin(path, root_) ? path : UTF16String();
  }
  // What stands behind the card's folder: the names of those above it say nothing of a clip.
  UTF16String OnCard(const UTF16String& resolved) const {
    return resolved.empty() ? resolved : resolved.substr(base_.size());
  }

 private:
  UTF16String base_;
  UTF16String root_;  // the card may name what lies beside its folder, but nothing above
};

std::uint32_t NumberOf(const UTF16String& text) {
  const std::string digits = Hestra::MakeStdString(text);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size() ? number : 0;
}

UTF16String SidecarOf(const UTF16String& essencePath) {
  static constexpr std::u16string_view kEnd = u".MP4";
  if (essencePath.find(kEnd) + kEnd.size() != essencePath.size()) return {};
  return essencePath.substr(0, essencePath.size() - kEnd.size()) + u"M01.XMP";
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
    entry.durationFrames = NumberOf(essence->duration);
    entry.xmpPath = SidecarOf(entry.essencePath);
  }
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo) continue;
    if (part.type == u"BiM") entry.bimPath = paths.Resolve(part.uri);
    if (part.type == u"PPN") entry.ppnPath = paths.Resolve(part.uri);
    if (part.type == u"XML") entry.xmlPath = paths.Resolve(part.uri);
  }
}

const std::vector<std::size_t>* Find(
    const std::unordered_map<UTF16String, std::vector<std::size_t>>& places,
    std::u16string_view umid) {
  const auto found = places.find(FoldCase(umid));
  return found == places.end() ? nullptr : &found->second;
}

}  // namespace

void MediaProCard::Add(MediaProEntry entry) {
  const std::size_t place = entries_.size();
  if (!entry.umid.empty()) umids_[FoldCase(entry.umid)].push_back(place);
  for (const UTF16String& umid : entry.componentUmids) {
    if (umid.empty()) continue;
    std::vector<std::size_t>& takes = components_[FoldCase(umid)];
    // A take may name a clip twice.
    if (takes.empty() || takes.back() != place) takes.push_back(place);
  }
  entries_.push_back(std::move(entry));
}

MediaProCard MediaProCard::Read(const UTF16String& xmlPath) {
  MediaProCard card;
  const CardPaths paths(xmlPath);
  std::vector<UTF16String> essences;
  const auto list = MediaProfile::Of(xmlPath);
  for (const Material& material : list->Materials()) {
    MediaProEntry entry;
    entry.mediaProPath = xmlPath;
    entry.materialPath = paths.Resolve(material.uri);
    entry.umid = material.umid;
    // By the uri, lest a folder above the card decides.
    if (entry.materialPath.empty()) {
      entry.kind = MediaProEntry::kNeither;
    } else if (material.IsTake()) {
      FillTake(material, paths, entry);
    } else if (material.uri.find(u"/CLPR/") != UTF16String::npos) {
      FillClip(material, paths, entry);
    }
    essences.push_back(FoldCase(paths.OnCard(entry.essencePath)));
    card.Add(std::move(entry));
  }
  card.essences_ = std::make_shared<const formats::TextIndex>(std::move(essences));
  return card;
}

std::shared_ptr<const MediaProCard> MediaProCard::Of(const UTF16String& xmlPath) {
  return foundation::CallScope::Remember<MediaProCard>(Hestra::MakeStdString(xmlPath),
                                                       [&xmlPath] { return Read(xmlPath); });
}

const std::vector<std::size_t>* MediaProCard::WithUmid(std::u16string_view umid) const {
  return Find(umids_, umid);
}

const std::vector<std::size_t>* MediaProCard::TakesWith(std::u16string_view componentUmid) const {
  return Find(components_, componentUmid);
}

std::optional<std::size_t> MediaProCard::OfEssence(std::u16string_view fileName) const {
  return essences_->FirstHolding(FoldCase(fileName));
}

}  // namespace Sorvik::xdcamex
