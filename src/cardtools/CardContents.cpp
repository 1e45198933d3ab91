// SPDX-License-Identifier: MIT
#include "cardtools/CardContents.h"

#include <algorithm>

#include "formats/MediaProbe.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik {
namespace {

void AddKeys(const std::vector<std::string>& keys, std::vector<std::string>& to) {
  for (const std::string& key : keys) {
    if (std::ranges::find(to, key) == to.end()) to.push_back(key);
  }
}

}  // namespace

void AddPaths(const any_regular_t& value, std::vector<std::string>& paths) {
  if (const auto* text = value.get_if<std::string>()) paths.push_back(*text);
  value.for_each_item([&paths](const any_regular_t& item) { AddPaths(item, paths); });
}

const char* RoleOfName(std::string_view path) {
  struct Row {
    std::string_view extension;
    const char* role;
  };
  static constexpr Row kRows[] = {{".wav", card_role::kSound},     {".r3d", card_role::kSegment},
                                  {".ari", card_role::kFrame},     {".dng", card_role::kFrame},
                                  {".rmf", card_role::kFrame},     {".xml", card_role::kClipRecord},
                                  {".bmp", card_role::kThumbnail}, {".jpg", card_role::kThumbnail}};
  for (const Row& row : kRows) {
    if (foundation::HasExtension(path, row.extension)) return row.role;
  }
  return formats::IsMediaName(path) ? card_role::kEssence : card_role::kSidecar;
}

CardContents::CardContents(const Provider& provider, const CardChecker& checker,
                           const std::string& path, CheckDepth depth, ProviderRequest* request)
    : CardContents(
          provider.GetContent(path, {kPathField, kExtraPathField, kProxyPathField}, request),
          checker, path, depth) {}

CardContents::CardContents(const ContentMap& content, const CardChecker& checker,
                           const std::string& path, CheckDepth depth)
    : description(depth), entries(content.size()) {
  for (const auto& [key, values] : content) AddEntry(key, values);
  checker.DescribeCard(path, content, description);
  for (const CardPart& part : description.Parts()) AddDescribedPart(part);
}

void CardContents::AddEntry(const std::string& key, const FieldValueMap& fields) {
  std::vector<std::string> paths;
  for (const char* name : {kPathField, kExtraPathField, kProxyPathField}) {
    if (const auto value = fields.find(name); value != fields.end()) AddPaths(value->second, paths);
  }
  for (const std::string& path : paths) AddListedPath(key, path);
}

void CardContents::AddListedPath(const std::string& key, const std::string& path) {
  if (path.empty() || entryFolders.contains(path)) return;
  const auto known = parts.find(path);
  if (known != parts.end()) {
    auto& keys = known->second.listedBy;
    if (keys.back() != key) keys.push_back(key);
    return;
  }
  if (platform::KindOf(path) == platform::FileKind::kDirectory) {
    entryFolders.insert(path);
    return;
  }
  CardPart part{path, RoleOfName(path)};
  const bool isMedia = formats::IsMediaName(path);
  if (isMedia) part.content = CardPart::Content::kMedia;
  part.mayBeEmpty = !isMedia;
  parts.emplace(path, Part{std::move(part), false, {key}});
}

void CardContents::AddDescribedPart(const CardPart& part) {
  const auto [known, added] = parts.try_emplace(part.path, Part{part, true});
  if (added) return;
  CardPart& expectation = known->second.expectation;
  if (!std::exchange(known->second.described, true)) {
    expectation = part;
    return;
  }
  AddKeys(part.entryKeys, expectation.entryKeys);
  if (expectation.content == CardPart::Content::kOpaque) expectation.content = part.content;
  expectation.required = expectation.required || part.required;
  expectation.mayBeEmpty = expectation.mayBeEmpty && part.mayBeEmpty;
  if (part.minBytes > expectation.minBytes) {
    expectation.minBytes = part.minBytes;
    expectation.minBytesSource = part.minBytesSource;
  }
}

}  // namespace Sorvik
