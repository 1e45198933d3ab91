// SPDX-License-Identifier: MIT
#include "xmp/readers/R3dDirectory.h"

#include <bit>

#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// An entry: length including these four bytes, tag, data. The upper four bits of the tag are the
// type.
constexpr std::uint64_t kEntryHeader = 4;
constexpr unsigned kText = 1;
constexpr unsigned kFloat = 2;
constexpr std::size_t kMaxEntries = 512;

// The first entry of all known directories: a timecode, or the serial number.
constexpr std::string_view kFirstEntries[] = {{"\x00\x0F\x10\x00", 4}, {"\x00\x0F\x10\x06", 4}};

bool BeginsDirectory(ByteReader bytes) {
  const auto length = bytes.U16BE(0);
  const auto tag = bytes.U16BE(2);
  return length && tag && *length > kEntryHeader && *length <= 64 && *tag >> 12 == kText;
}

}  // namespace

R3dDirectory::R3dDirectory(ByteReader head, std::uint64_t offset) {
  const std::uint64_t length = head.U16BE(offset).value_or(0);
  const ByteReader there = head.Clip(offset + 2, length);
  if (BeginsDirectory(there)) {
    ReadEntries(there);
    return;
  }

  const std::string_view text = head.Text();
  std::size_t found = std::string_view::npos;
  for (const std::string_view first : kFirstEntries) found = std::min(found, text.find(first));
  if (found != std::string_view::npos) ReadEntries(head.Clip(found));
}

void R3dDirectory::ReadEntries(ByteReader bytes) {
  std::uint64_t at = 0;
  while (entries_.size() < kMaxEntries) {
    const auto length = bytes.U16BE(at);
    const auto tag = bytes.U16BE(at + 2);
    if (!length || !tag || *length < kEntryHeader || !bytes.Holds(at, *length)) return;
    entries_.push_back({*tag, bytes.Clip(at + kEntryHeader, *length - kEntryHeader)});
    at += *length;
  }
}

const R3dDirectory::Entry* R3dDirectory::Find(std::uint16_t tag) const {
  for (const Entry& entry : entries_) {
    if (entry.tag == tag) return &entry;
  }
  return nullptr;
}

std::string R3dDirectory::Text(std::uint16_t tag) const {
  const Entry* entry = Find(tag);
  return entry != nullptr && tag >> 12 == kText ? NativeText(entry->data.Text()) : std::string();
}

std::optional<float> R3dDirectory::Float(std::uint16_t tag) const {
  const Entry* entry = Find(tag);
  if (entry == nullptr || tag >> 12 != kFloat) return std::nullopt;
  const auto bits = entry->data.U32BE(0);
  return bits ? std::optional(std::bit_cast<float>(*bits)) : std::nullopt;
}

}  // namespace Sorvik::xmp
