// SPDX-License-Identifier: MIT
#include "cardtools/CardEvaluation.h"

#include <algorithm>
#include <map>
#include <utility>

#include "formats/MediaProbe.h"
#include "foundation/ByteReader.h"
#include "foundation/JsonReader.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "foundation/platform/FileStatus.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik {
namespace {

using formats::MediaProbe;
using platform::FileKind;

// Larger files aren't parsed.
constexpr std::size_t kMaxJsonBytes = std::size_t{16} << 20;

bool IsBelow(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.size() > 1;
  return path.size() > folder.size() + 1 && path.starts_with(folder) && path[folder.size()] == '/';
}

// True if `test` is for one of the folders that contain `path`.
template <class Test>
bool AnyParent(std::string_view path, Test test) {
  for (path = foundation::ParentFolder(path); path.size() > 1;
       path = foundation::ParentFolder(path)) {
    if (test(path)) return true;
  }
  return false;
}

bool IsMediaOf(const CardDescription::MediaFolder& folder, std::string_view path) {
  if (!IsBelow(path, folder.path)) return false;
  if (folder.extensions.empty()) return formats::IsMediaName(path);
  return std::ranges::any_of(folder.extensions, [path](const std::string& extension) {
    return foundation::HasExtension(path, extension);
  });
}

bool IsJsonFile(const std::string& path) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  const auto bytes = platform::ReadHead(path, kMaxJsonBytes);
  if (!bytes) return false;
  std::string_view text = foundation::ByteReader(*bytes).Text();
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return bytes->size() == kMaxJsonBytes || foundation::ParseJson(text).has_value();
}

std::string DescribeShortage(std::uint64_t bytes, std::uint64_t expected,
                             const std::string& source) {
  return std::to_string(bytes) + " bytes, expected at least " + std::to_string(expected) +
         (source.empty() ? "" : " by " + source);
}

// The most basic fault of a path comes first; the others only follow from it.
int RankOf(Finding::Kind kind) { return static_cast<int>(kind); }

bool IsFaultOfContent(Finding::Kind kind) {
  return kind == Finding::Kind::kEmpty || kind == Finding::Kind::kTruncated ||
         kind == Finding::Kind::kUnreadable;
}

bool IsRepeated(const Finding& first, const Finding& second) {
  if (first.path != second.path || first.role != second.role) return false;
  return first.entryKeys == second.entryKeys ||
         (IsFaultOfContent(first.kind) && IsFaultOfContent(second.kind));
}

}  // namespace

CardFindings CardEvaluation::Run() {
  partOfFile_.assign(inventory_.Files().size(), nullptr);
  ownedByOther_.assign(inventory_.Files().size(), false);
  structure_.assign(inventory_.Files().size(), false);
  result_.depth = contents_.description.Depth();
  result_.clips = contents_.entries;
  CheckParts();
  for (const Finding& finding : contents_.description.Findings()) {
    result_.findings.push_back(finding);
  }
  AddFiles();
  AddPartsOnOtherCards();
  AddOrphans();
  AddEmptyFolders();
  AddUnreadableFolders();
  AddUnreadableMedia();
  RemoveSkeletonFindings();
  Finish();
  return std::move(result_);
}

void CardEvaluation::CheckParts() {
  const auto& structureFiles = contents_.description.StructureFiles();
  const std::set<std::string> structure(structureFiles.begin(), structureFiles.end());
  for (const auto& [path, part] : contents_.parts) {
    if (aborted_ = aborted_ || ProviderRequest::TestAborted(request_); aborted_) return;
    // A file of the card itself that entries list isn't a finding if it is missing.
    if (part.described || !structure.contains(path)) CheckPart(part);
  }
}

void CardEvaluation::CheckPart(const CardContents::Part& part) {
  const CardPart& expected = part.expectation;
  if (const auto index = inventory_.Find(expected.path)) {
    const InventoryFile& file = inventory_.Files()[*index];
    partOfFile_[*index] = &part;
    if (!file.hidden) CheckFile(part, file.path, file.bytes);
    return;
  }
  const auto status = platform::StatusOf(expected.path);
  if (!status) {
    if (expected.required) AddFinding(part, Finding::Kind::kMissing, {});
  } else if (status->kind == FileKind::kRegular) {
    CheckFile(part, expected.path, status->bytes);
  } else {
    AddFinding(part, Finding::Kind::kUnreadable, "not a regular file");
  }
}

void CardEvaluation::CheckFile(const CardContents::Part& part, const std::string& path,
                               std::uint64_t bytes) {
  if (bytes == 0) {
    if (!part.expectation.mayBeEmpty) AddFinding(part, Finding::Kind::kEmpty, "0 bytes");
    return;
  }
  if (bytes < part.expectation.minBytes) {
    AddFinding(part, Finding::Kind::kTruncated,
               DescribeShortage(bytes, part.expectation.minBytes, part.expectation.minBytesSource));
    return;
  }
  const std::string error = platform::ReadError(path);
  if (!error.empty()) return AddFinding(part, Finding::Kind::kUnreadable, error);
  CheckContent(part, path);
}

void CardEvaluation::CheckContent(const CardContents::Part& part, const std::string& path) {
  if (part.expectation.content == CardPart::Content::kXml) {
    if (!foundation::ReadXmlFile(path)) {
      AddFinding(part, Finding::Kind::kUnreadable, std::string(foundation::kMalformedXml));
    }
    return;
  }
  if (part.expectation.content == CardPart::Content::kJson) {
    if (!IsJsonFile(path)) AddFinding(part, Finding::Kind::kUnreadable, "not a JSON document");
    return;
  }
  const bool probed = part.expectation.content == CardPart::Content::kIndex ||
                      (part.expectation.content == CardPart::Content::kMedia &&
                       result_.depth != CheckDepth::kNames);
  if (!probed) return;
  MediaProbe probe = formats::ProbeMedia(path);
  if (probe.result == MediaProbe::Result::kTruncated) {
    AddFinding(part, Finding::Kind::kTruncated, std::move(probe.detail));
  } else if (probe.result == MediaProbe::Result::kUnreadable) {
    AddFinding(part, Finding::Kind::kUnreadable, std::move(probe.detail));
  }
}

void CardEvaluation::AddFinding(const CardContents::Part& part, Finding::Kind kind,
                                std::string detail) {
  const CardPart& expected = part.expectation;
  // A file of the card itself concerns no single entry, even if all list it.
  result_.findings.push_back({kind, SeverityOf(kind, expected.role), expected.role, expected.path,
                              part.described ? expected.entryKeys : part.listedBy,
                              std::move(detail)});
}

void CardEvaluation::AddFiles() {
  for (const CardContents& other : others_) {
    for (const auto& [path, part] : other.parts) {
      if (const auto index = inventory_.Find(path)) ownedByOther_[*index] = true;
    }
    for (const std::string& path : other.description.StructureFiles()) {
      if (const auto index = inventory_.Find(path)) structure_[*index] = true;
    }
  }
  for (const std::string& path : contents_.description.StructureFiles()) {
    if (const auto index = inventory_.Find(path)) structure_[*index] = true;
  }
  MergeSpellings();
  for (std::size_t i = 0; i < inventory_.Files().size(); ++i) {
    result_.files.push_back(DescribeFile(i));
  }
}

// A file system that ignores case may list a file under another spelling than the one in an index.
void CardEvaluation::MergeSpellings() {
  for (std::size_t i = 0; i < partOfFile_.size(); ++i) {
    if (partOfFile_[i] != nullptr) continue;
    if (const auto other = inventory_.OtherSpelling(i)) partOfFile_[i] = partOfFile_[*other];
  }
}

CardFile CardEvaluation::DescribeFile(std::size_t index) {
  const InventoryFile& file = inventory_.Files()[index];
  CardFile described{file.path, CardFileRole::kForeign, file.bytes, {}, {}, false};
  const CardContents::Part* part = partOfFile_[index];
  described.part = part == nullptr ? RoleOfName(file.path) : part->expectation.role;
  if (part != nullptr && !part->Owners().empty()) {
    described.role = CardFileRole::kClip;
    described.owners = part->Owners();
  } else if (part != nullptr || structure_[index] || ownedByOther_[index]) {
    described.role = CardFileRole::kStructure;
  } else if (file.hidden) {
    described.role = CardFileRole::kHidden;
  } else if (std::ranges::any_of(contents_.description.MediaFolders(), [&](const auto& folder) {
               return IsMediaOf(folder, file.path);
             })) {
    described.role = CardFileRole::kStructure;
    orphans_.insert(index);
  }
  const bool known =
      described.role == CardFileRole::kClip || described.role == CardFileRole::kStructure;
  described.isPartOfCopy =
      known || (!file.hidden && AnyParent(file.path, [this](std::string_view folder) {
        return contents_.entryFolders.contains(folder);
      }));
  if (described.isPartOfCopy) result_.bytes += file.bytes;
  return described;
}

void CardEvaluation::AddPartsOnOtherCards() {
  for (const auto& [path, part] : contents_.parts) {
    if (inventory_.Covers(path)) continue;
    const auto status = platform::StatusOf(path);
    if (!status || status->kind != FileKind::kRegular) continue;
    result_.files.push_back(
        {path, CardFileRole::kClip, status->bytes, part.expectation.role, part.Owners(), true});
  }
}

void CardEvaluation::AddOrphans() {
  std::set<std::string> reported;
  for (const Finding& finding : result_.findings) reported.insert(finding.path);
  for (const std::size_t index : orphans_) {
    const std::string& path = inventory_.Files()[index].path;
    if (reported.contains(path)) continue;
    result_.findings.push_back({Finding::Kind::kOrphaned,
                                Finding::Severity::kError,
                                RoleOfName(path),
                                path,
                                {},
                                "belongs to no entry"});
  }
}

void CardEvaluation::AddEmptyFolders() {
  for (const std::string& folder : contents_.description.Folders()) {
    const bool hasFile = std::ranges::any_of(
        inventory_.Files(), [&](const InventoryFile& file) { return IsBelow(file.path, folder); });
    if (!hasFile && platform::KindOf(folder) == FileKind::kDirectory) {
      result_.emptyFolders.push_back(folder);
    }
  }
}

void CardEvaluation::AddUnreadableFolders() {
  for (const std::string& folder : inventory_.UnreadableFolders()) {
    result_.findings.push_back({Finding::Kind::kUnreadable,
                                Finding::Severity::kError,
                                card_role::kFolder,
                                folder,
                                {},
                                platform::ReadError(folder)});
  }
}

// Media that is a link without a target or a FIFO is in no listing.
void CardEvaluation::AddUnreadableMedia() {
  std::set<std::string> reported;
  for (const Finding& finding : result_.findings) reported.insert(finding.path);
  for (const std::string& path : inventory_.OtherNames()) {
    if (!formats::IsMediaName(path) || reported.contains(path)) continue;
    result_.findings.push_back({Finding::Kind::kUnreadable,
                                Finding::Severity::kError,
                                RoleOfName(path),
                                path,
                                {},
                                "not a regular file"});
  }
}

// A card without any recording has no missing parts.
void CardEvaluation::RemoveSkeletonFindings() {
  const bool hasMedia = std::ranges::any_of(inventory_.Files(), [](const InventoryFile& file) {
    return !file.hidden && formats::IsMediaName(file.path);
  });
  if (contents_.entries != 0 || hasMedia) return;
  std::erase_if(result_.findings, [](const Finding& finding) {
    return finding.kind == Finding::Kind::kMissing && finding.entryKeys.empty();
  });
}

void CardEvaluation::Finish() {
  auto& findings = result_.findings;
  std::ranges::stable_sort(findings, {}, [](const Finding& finding) {
    return std::make_tuple(finding.severity, std::string_view(finding.path), finding.role,
                           RankOf(finding.kind));
  });
  findings.erase(std::unique(findings.begin(), findings.end(), IsRepeated), findings.end());
  result_.complete = !aborted_ && !ProviderRequest::TestAborted(request_) &&
                     std::ranges::none_of(findings, [](const Finding& finding) {
                       return finding.severity == Finding::Severity::kError;
                     });
}

}  // namespace Sorvik
