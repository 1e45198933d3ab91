// SPDX-License-Identifier: MIT
#include "xmp/readers/Insta360Trailer.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "foundation/Paths.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// The end of the file: id and size of the last record, 32 bytes, the size of all, 4 bytes, a
// signature. All numbers are little-endian.
constexpr std::uint64_t kEndSize = 78;
constexpr std::uint64_t kTotalAt = 38;
constexpr std::uint64_t kSignatureAt = 46;
constexpr std::string_view kSignature = "8db42d694ccc418790edff439fe026bf";

// Each record is followed by its id and size.
constexpr std::uint64_t kRecordEnd = 6;
constexpr unsigned kMaxRecords = 32;
constexpr std::uint16_t kMakerNotes = 0x0101;
constexpr std::uint64_t kMaxNotes = 4096;

// Returns the next number of a protocol buffer: seven bits a byte, the lowest first.
std::uint64_t TakeVarint(ByteReader bytes, std::uint64_t& at) {
  std::uint64_t value = 0;
  for (unsigned shift = 0; shift < 64; shift += 7) {
    const unsigned byte = bytes.U8(at++).value_or(0);
    value |= std::uint64_t{byte & 0x7F} << shift;
    if ((byte & 0x80) == 0) break;
  }
  return value;
}

void SetMakerNote(std::uint64_t field, const std::string& text, TXMPMeta& meta) {
  if (text.empty()) return;
  switch (field) {
    case 1:
      return meta.SetProperty(kNsAux, "SerialNumber", text);
    case 2:
      meta.SetProperty(kNsTIFF, "Make", "Insta360");
      return meta.SetProperty(kNsTIFF, "Model", text);
    case 3:
      return SetSoftware(meta, text);
    default:
      break;
  }
}

// A protocol buffer whose first fields are texts.
void SetMakerNotes(ByteReader notes, TXMPMeta& meta) {
  constexpr unsigned kText = 2;
  constexpr unsigned kMaxFields = 16;
  std::uint64_t at = 0;
  for (unsigned i = 0; i < kMaxFields && at < notes.Size(); ++i) {
    const std::uint64_t tag = TakeVarint(notes, at);
    const std::uint64_t size = TakeVarint(notes, at);
    if ((tag & 7) == 0) continue;  // the second number is the value
    if ((tag & 7) != kText || !notes.Holds(at, size)) return;
    SetMakerNote(tag >> 3, NativeText(notes.TextAt(at, size)), meta);
    at += size;
  }
}

}  // namespace

bool MayHaveInsta360Trailer(std::string_view path) {
  return foundation::HasExtension(path, ".insv");
}

void SetInsta360Trailer(FileWindow& file, const WantedProperties& wanted, TXMPMeta& meta) {
  const bool isWanted = wanted.Wants(kNsTIFF, "Make") || wanted.Wants(kNsTIFF, "Model") ||
                        wanted.Wants(kNsAux, "SerialNumber") || wanted.Wants(kNsXMP, "CreatorTool");
  if (!isWanted || file.Size() < kEndSize) return;
  std::uint64_t end = file.Size() - kEndSize;
  ByteReader tail = file.At(end, kEndSize);
  if (!tail.Matches(kSignatureAt, kSignature)) return;
  const std::uint64_t total = tail.U32LE(kTotalAt).value_or(0);
  const std::uint64_t begin = file.Size() - std::min(file.Size(), total);
  for (unsigned i = 0; i < kMaxRecords; ++i) {
    const unsigned id = tail.U16LE(0).value_or(0);
    const std::uint64_t size = tail.U32LE(2).value_or(0);
    if (end < begin || size > end - begin) return;
    if (id == kMakerNotes) {
      return SetMakerNotes(file.At(end - size, std::min(size, kMaxNotes)), meta);
    }
    if (size + kRecordEnd > end - begin) return;
    end -= size + kRecordEnd;
    tail = file.At(end, kRecordEnd);
  }
}

}  // namespace Sorvik::xmp
