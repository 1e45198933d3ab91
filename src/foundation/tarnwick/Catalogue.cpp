// SPDX-License-Identifier: MIT
#include "foundation/tarnwick/Catalogue.h"

#include <algorithm>
#include <cstdint>

#include "foundation/ByteReader.h"
#include "foundation/platform/FileSystem.h"

namespace tarnwick::config {
namespace {

using Sorvik::foundation::ByteReader;

// GNU gettext manual, "The Format of GNU MO Files".
constexpr std::uint32_t kMagic = 0x950412de;
constexpr std::uint64_t kRevision = 4;
constexpr std::uint64_t kCount = 8;
constexpr std::uint64_t kOriginals = 12;
constexpr std::uint64_t kTranslations = 16;
constexpr std::uint64_t kDescriptorSize = 8;  // length, offset
constexpr char kContextEnd = '\x04';

// Far above the size of this library's catalogues.
constexpr std::size_t kMaxFileBytes = std::size_t{4} << 20;
constexpr std::uint32_t kMaxEntries = 100'000;

std::optional<std::string_view> TextOf(const ByteReader& file, std::uint64_t descriptor,
                                       bool bigEndian) {
  const auto length = file.U32(descriptor, bigEndian);
  const auto offset = file.U32(descriptor + 4, bigEndian);
  if (!length || !offset || !file.Holds(*offset, *length)) return std::nullopt;
  return file.TextAt(*offset, *length);
}

}  // namespace

Catalogue Catalogue::FromBytes(std::span<const std::byte> bytes) {
  Catalogue catalogue;
  const ByteReader file(bytes);
  const bool bigEndian = file.U32BE(0) == kMagic;
  if (!bigEndian && file.U32LE(0) != kMagic) return catalogue;
  const auto revision = file.U32(kRevision, bigEndian);
  const auto count = file.U32(kCount, bigEndian);
  const auto originals = file.U32(kOriginals, bigEndian);
  const auto translations = file.U32(kTranslations, bigEndian);
  if (!revision || *revision >> 16 != 0 || !count || !originals || !translations) return catalogue;
  for (std::uint64_t i = 0; i < std::min(*count, kMaxEntries); ++i) {
    const auto original = TextOf(file, *originals + i * kDescriptorSize, bigEndian);
    const auto translation = TextOf(file, *translations + i * kDescriptorSize, bigEndian);
    if (!original || !translation || translation->empty()) continue;
    catalogue.entries_.emplace(*original, *translation);
  }
  return catalogue;
}

Catalogue Catalogue::FromFile(const std::string& path) {
  const auto bytes = Sorvik::platform::ReadHead(path, kMaxFileBytes);
  return bytes ? FromBytes(*bytes) : Catalogue();
}

std::optional<std::string> Catalogue::Find(std::string_view context, std::string_view text) const {
  std::string key(context);
  key += kContextEnd;
  key += text;
  const auto found = entries_.find(key);
  if (found == entries_.end()) return std::nullopt;
  return found->second;
}

}  // namespace tarnwick::config
