// SPDX-License-Identifier: MIT
#include <set>
#include <string>
#include <string_view>

#include "foundation/Paths.h"
#include "frame/CardChecker.h"
#include "providers/common/CardParts.h"
#include "providers/modern/CanonFlatCard.h"
#include "providers/modern/ProviderCanonXFAVC.h"

namespace Sorvik {
namespace {

using canonflat::Card;
using canonflat::Recording;
using foundation::HasExtension;

struct RoleOfFile {
  const char* role;
  CardPart::Content content;
};

RoleOfFile RoleOf(std::string_view path) {
  using Content = CardPart::Content;
  if (HasExtension(path, ".xml")) return {card_role::kClipRecord, Content::kXml};
  if (HasExtension(path, ".wav")) return {card_role::kSound, Content::kMedia};
  if (canonflat::IsClipFile(path)) return {card_role::kEssence, Content::kMedia};
  return {card_role::kSidecar, Content::kOpaque};
}

void ReportMissingParts(const Recording& recording, CardDescription& card) {
  for (const canonflat::NumberedPart& part : canonflat::PartsWithGaps(recording)) {
    if (part.exists) continue;
    card.Report(Finding::Kind::kMissing, card_role::kSegment, part.path, {recording.key},
                "parts before and after it exist");
  }
}

}  // namespace

void ProviderCanonXFAVC::DescribeCard(const std::string& path, const ContentMap&,
                                      CardDescription& description) const {
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  std::set<std::string> folders;
  const auto expect = [&](const std::string& file, const Recording& recording,
                          const RoleOfFile& role) {
    description.Expect(
        {.path = file, .role = role.role, .entryKeys = {recording.key}, .content = role.content});
  };
  for (const Recording& recording : card->Recordings()) {
    for (const std::string& part : recording.parts) {
      expect(part, recording, {card_role::kEssence, CardPart::Content::kMedia});
      folders.emplace(foundation::ParentFolder(part));
    }
    for (const std::string& proxy : recording.proxies) {
      expect(proxy, recording, {card_role::kProxy, CardPart::Content::kMedia});
    }
    for (const std::string& file : recording.files) expect(file, recording, RoleOf(file));
    ReportMissingParts(recording, description);
  }
  for (const std::string& file : card->SharedFiles()) description.AddStructureFile(file);
  for (const std::string& folder : folders) {
    description.AddMediaFolder(folder, {".crm", ".mxf", ".mp4", ".wav"});
  }
}

}  // namespace Sorvik
