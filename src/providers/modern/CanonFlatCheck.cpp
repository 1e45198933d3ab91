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
using foundation::FileStem;
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

// "-007" for the part before "-008".
std::string NumberText(unsigned number, char separator) {
  std::string digits = std::to_string(number);
  return separator + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits;
}

// Parts between the first and the last one prove that they existed. Parts before the first don't: a
// recording can begin on another card.
void ReportMissingParts(const Recording& recording, CardDescription& card) {
  unsigned previous = 0;
  for (const std::string& path : recording.parts) {
    const canonflat::ClipName name = canonflat::ParseClipName(FileStem(path));
    if (!name.part) continue;
    const std::string folder(foundation::ParentFolder(path));
    const char separator = name.base.data()[name.base.size()];
    for (unsigned part = previous + 1; previous != 0 && part < *name.part; ++part) {
      const std::string missing = std::string(name.base) + NumberText(part, separator) +
                                  std::string(foundation::FileExtension(path));
      card.Report(Finding::Kind::kMissing, card_role::kSegment,
                  foundation::JoinPath(folder, missing), {recording.key},
                  "parts before and after it exist");
    }
    previous = *name.part;
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
