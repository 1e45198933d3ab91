// SPDX-License-Identifier: MIT
#include "filesystem/ShellLink.h"

#include <algorithm>
#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik {
namespace {

using foundation::ByteReader;

// ShellLinkHeader, 2.1
constexpr std::uint32_t kHeaderSize = 0x4C;
constexpr std::uint64_t kLinkFlagsAt = 0x14;
constexpr std::string_view kClassId("\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16);

// LinkFlags, 2.1.1
constexpr std::uint32_t kHasTargetIdList = 0x1;
constexpr std::uint32_t kHasLinkInfo = 0x2;
constexpr std::uint32_t kHasName = 0x4;
constexpr std::uint32_t kHasRelativePath = 0x8;
constexpr std::uint32_t kIsUnicode = 0x80;
constexpr std::uint32_t kForceNoLinkInfo = 0x100;

// LinkInfoFlags, 2.3
constexpr std::uint32_t kVolumeIdAndLocalBasePath = 0x1;
constexpr std::uint32_t kCommonNetworkRelativeLink = 0x2;
// A LinkInfo with a header of at least this size has offsets of Unicode strings, too.
constexpr std::uint32_t kHeaderWithUnicode = 0x24;

// Decodes text in the writer's code page, which the file doesn't record: nearly always ASCII,
// otherwise decoded as Latin-1.
std::string FromCodePage(std::string_view bytes) {
  UTF16String text;
  for (const char c : bytes) text.push_back(static_cast<unsigned char>(c));
  return Hestra::MakeStdString(text);
}

// Decodes `count` UTF-16 code units.
std::string FromUnicode(const ByteReader& units, std::uint64_t count) {
  UTF16String text;
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto unit = units.U16LE(2 * i);
    if (!unit) return {};
    text.push_back(static_cast<char16_t>(*unit));
  }
  return Hestra::MakeStdString(text);
}

std::string CodePageAt(const ByteReader& part, std::uint64_t offset) {
  return FromCodePage(part.CStringAt(offset, part.Clip(offset).Size()));
}

// NUL-terminated UTF-16 text; empty if it has no terminator within `part`.
std::string UnicodeAt(const ByteReader& part, std::uint64_t offset) {
  const ByteReader units = part.Clip(offset);
  for (std::uint64_t count = 0; units.Holds(2 * count, 2); ++count) {
    if (units.U16LE(2 * count) == 0) return FromUnicode(units, count);
  }
  return {};
}

// The Unicode text if there is one, else the code-page text. An offset of 0 means absent.
std::string BestText(const ByteReader& part, std::uint32_t codePageAt, std::uint32_t unicodeAt) {
  std::string text = unicodeAt == 0 ? std::string() : UnicodeAt(part, unicodeAt);
  if (text.empty() && codePageAt != 0) text = CodePageAt(part, codePageAt);
  return text;
}

// The structure at `offset` that begins with its own size; truncated at the end of `info`.
ByteReader SizedPart(const ByteReader& info, std::uint32_t offset) {
  if (offset == 0) return ByteReader();
  const ByteReader part = info.Clip(offset);
  return part.Clip(0, part.U32LE(0).value_or(0));
}

// VolumeID, 2.3.1
void ReadVolume(const ByteReader& volume, ShellLink& link) {
  link.volumeSerial = volume.U32LE(8).value_or(0);
  const std::uint32_t labelAt = volume.U32LE(12).value_or(0);
  constexpr std::uint32_t kLabelIsUnicode = 0x14;
  link.volumeLabel = labelAt == kLabelIsUnicode
                         ? UnicodeAt(volume, volume.U32LE(16).value_or(UINT32_MAX))
                         : BestText(volume, labelAt, 0);
}

// CommonNetworkRelativeLink, 2.3.2
void ReadNetwork(const ByteReader& network, ShellLink& link) {
  const std::uint32_t nameAt = network.U32LE(8).value_or(0);
  const bool hasUnicode = nameAt > 0x14;
  link.networkName = BestText(network, nameAt, hasUnicode ? network.U32LE(20).value_or(0) : 0);
}

// LinkInfo, 2.3
void ReadLinkInfo(const ByteReader& info, ShellLink& link) {
  const auto number = [&](std::uint64_t at) { return info.U32LE(at).value_or(0); };
  const bool hasUnicode = number(4) >= kHeaderWithUnicode;
  const std::uint32_t flags = number(8);
  if ((flags & kVolumeIdAndLocalBasePath) != 0) {
    ReadVolume(SizedPart(info, number(12)), link);
    link.localBasePath = BestText(info, number(16), hasUnicode ? number(28) : 0);
  }
  if ((flags & kCommonNetworkRelativeLink) != 0) ReadNetwork(SizedPart(info, number(20)), link);
  link.pathSuffix = BestText(info, number(24), hasUnicode ? number(32) : 0);
}

// StringData, 2.4: the number of characters, then the characters. Advances `at` past it. Returns
// nullopt if it is truncated.
std::optional<std::string> ReadString(const ByteReader& file, bool isUnicode, std::uint64_t& at) {
  const auto count = file.U16LE(at);
  if (!count) return std::nullopt;
  const std::uint64_t size = isUnicode ? 2u * *count : *count;
  const auto characters = file.Sub(at + 2, size);
  if (!characters) return std::nullopt;
  at += 2 + size;
  return isUnicode ? FromUnicode(*characters, *count) : FromCodePage(characters->Text());
}

}  // namespace

std::optional<ShellLink> ParseShellLink(const ByteReader& file) {
  if (file.U32LE(0) != kHeaderSize || !file.Matches(4, kClassId) || !file.Holds(0, kHeaderSize)) {
    return std::nullopt;
  }
  ShellLink link;
  const std::uint32_t flags = file.U32LE(kLinkFlagsAt).value_or(0);
  std::uint64_t at = kHeaderSize;
  if ((flags & kHasTargetIdList) != 0) at += 2u + file.U16LE(at).value_or(0);
  if ((flags & kHasLinkInfo) != 0 && (flags & kForceNoLinkInfo) == 0) {
    const std::uint32_t size = file.U32LE(at).value_or(0);
    ReadLinkInfo(file.Clip(at, size), link);
    if (size < 4) return link;
    at += size;
  }
  const bool isUnicode = (flags & kIsUnicode) != 0;
  if ((flags & kHasName) != 0 && !ReadString(file, isUnicode, at)) return link;
  if ((flags & kHasRelativePath) != 0) {
    link.relativePath = ReadString(file, isUnicode, at).value_or("");
  }
  return link;
}

}  // namespace Sorvik
