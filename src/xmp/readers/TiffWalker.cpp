// SPDX-License-Identifier: MIT
#include "xmp/readers/TiffWalker.h"

#include <algorithm>
#include <iterator>

#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum Type : std::uint16_t {
  kByte = 1,
  kAscii = 2,
  kShort = 3,
  kLong = 4,
  kRational = 5,
  kUndefined = 7,
  kSRational = 10,
  kIFD = 13,
  kLong8 = 16,
  kIFD8 = 18,
};
// Bytes per value by type; 0 for invalid types.
constexpr std::uint8_t kTypeSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

// TIFF, BigTIFF, Panasonic RW2 and two versions of Olympus ORF.
constexpr std::uint16_t kVersions[] = {42, 43, 0x55, 0x4F52, 0x5352};

// Cameras write fewer than 200 tags per directory.
constexpr std::uint64_t kMaxTags = 1024;
constexpr std::uint64_t kMaxTextBytes = 64 * 1024;

std::uint64_t SizeOf(std::uint16_t type) {
  return type < std::size(kTypeSizes) ? kTypeSizes[type] : 0;
}

bool IsBigEndian(ByteReader head) { return head.Matches(0, "MM"); }

}  // namespace

const TiffTag* TiffDirectory::Find(std::uint16_t id) const noexcept {
  const auto found =
      std::find_if(tags_.begin(), tags_.end(), [id](const TiffTag& tag) { return tag.id == id; });
  return found == tags_.end() ? nullptr : &*found;
}

bool TiffWalker::IsTiff(ByteReader head) noexcept {
  if (!head.Matches(0, "II") && !head.Matches(0, "MM")) return false;
  const auto version = head.U16(2, IsBigEndian(head));
  return version &&
         std::find(std::begin(kVersions), std::end(kVersions), *version) != std::end(kVersions);
}

TiffWalker TiffWalker::WithoutHeader(FileWindow& file, bool bigEndian, std::uint64_t first) {
  TiffWalker walker(file);
  walker.bigEndian_ = bigEndian;
  walker.first_ = first;
  return walker;
}

std::optional<TiffWalker> TiffWalker::Open(FileWindow& file) {
  const ByteReader head = file.At(0, 16);
  if (!IsTiff(head)) return std::nullopt;
  TiffWalker walker(file);
  walker.bigEndian_ = IsBigEndian(head);
  walker.big_ = head.U16(2, walker.bigEndian_) == 43;
  walker.first_ = walker.big_ ? head.U64(8, walker.bigEndian_).value_or(0)
                              : head.U32(4, walker.bigEndian_).value_or(0);
  return walker;
}

TiffDirectory TiffWalker::Read(std::uint64_t offset) {
  TiffDirectory directory;
  if (offset == 0) return directory;
  const std::uint64_t countBytes = big_ ? 8 : 2;
  const std::uint64_t entryBytes = big_ ? 20 : 12;

  const ByteReader start = file_->At(offset, countBytes);
  const std::uint64_t count =
      big_ ? start.U64(0, bigEndian_).value_or(0) : start.U16(0, bigEndian_).value_or(0);
  if (count == 0 || count > kMaxTags) return directory;

  // A truncated directory gives its available entries.
  const std::uint64_t entries = offset + countBytes;
  ReadEntries(file_->At(entries, count * entryBytes), entries, directory);
  return directory;
}

void TiffWalker::ReadEntries(ByteReader entries, std::uint64_t start, TiffDirectory& directory) {
  const std::uint64_t entryBytes = big_ ? 20 : 12;
  const std::uint64_t valueAt = big_ ? 12 : 8;
  for (std::uint64_t at = 0; entries.Holds(at, entryBytes); at += entryBytes) {
    TiffTag tag;
    tag.id = *entries.U16(at, bigEndian_);
    tag.type = *entries.U16(at + 2, bigEndian_);
    tag.count = big_ ? *entries.U64(at + 4, bigEndian_) : *entries.U32(at + 4, bigEndian_);
    const std::uint64_t size = SizeOf(tag.type);
    if (size == 0 || tag.count == 0 || tag.count > file_->Size() / size) continue;

    const std::uint64_t inPlace = entryBytes - valueAt;
    if (tag.count * size <= inPlace) {
      tag.offset = start + at + valueAt;
    } else {
      tag.offset =
          big_ ? *entries.U64(at + valueAt, bigEndian_) : *entries.U32(at + valueAt, bigEndian_);
    }
    const std::uint64_t bytes = tag.count * size;
    if (tag.offset > file_->Size() || bytes > file_->Size() - tag.offset) continue;
    directory.tags_.push_back(tag);
  }
}

TiffDirectory TiffWalker::Sub(const TiffDirectory& directory, std::uint16_t id,
                              std::uint64_t index) {
  return Read(Number(directory, id, index).value_or(0));
}

std::optional<std::uint64_t> TiffWalker::Number(const TiffDirectory& directory, std::uint16_t id,
                                                std::uint64_t index) {
  const TiffTag* tag = directory.Find(id);
  if (tag == nullptr || index >= tag->count) return std::nullopt;
  const std::uint64_t size = SizeOf(tag->type);
  const ByteReader value = file_->At(tag->offset + index * size, size);
  switch (tag->type) {
    case kByte:
    case kUndefined:
      return value.U8(0);
    case kShort:
      return value.U16(0, bigEndian_);
    case kLong:
    case kIFD:
      return value.U32(0, bigEndian_);
    case kLong8:
    case kIFD8:
      return value.U64(0, bigEndian_);
    case kRational: {
      const auto num = value.U32(0, bigEndian_);
      const auto den = value.U32(4, bigEndian_);
      if (!num || !den || *den == 0 || *num % *den != 0) return std::nullopt;
      return *num / *den;
    }
    default:
      return std::nullopt;
  }
}

std::optional<TiffRatio> TiffWalker::Ratio(const TiffDirectory& directory, std::uint16_t id,
                                           std::uint64_t index) {
  const TiffTag* tag = directory.Find(id);
  if (tag == nullptr || index >= tag->count) return std::nullopt;
  if (tag->type != kRational && tag->type != kSRational) {
    const auto integer = Number(directory, id, index);
    if (!integer || *integer > 0xFFFFFFFF) return std::nullopt;
    return TiffRatio{static_cast<std::uint32_t>(*integer), 1, false};
  }
  const ByteReader value = file_->At(tag->offset + index * 8, 8);
  const auto num = value.U32(0, bigEndian_);
  const auto den = value.U32(4, bigEndian_);
  if (!num || !den) return std::nullopt;
  TiffRatio ratio{*num, *den, false};
  if (tag->type == kSRational) {
    // Converts two's complement parts to sign and magnitude.
    const auto flip = [&ratio](std::uint32_t& part) {
      if ((part & 0x80000000) == 0) return;
      part = ~part + 1;
      ratio.negative = !ratio.negative;
    };
    flip(ratio.num);
    flip(ratio.den);
  }
  return ratio;
}

std::string TiffWalker::Text(const TiffDirectory& directory, std::uint16_t id) {
  const TiffTag* tag = directory.Find(id);
  if (tag == nullptr || (tag->type != kAscii && tag->type != kByte)) return {};
  return NativeText(file_->At(tag->offset, std::min(tag->count, kMaxTextBytes)).Text());
}

std::string TiffWalker::Bytes(const TiffDirectory& directory, std::uint16_t id,
                              std::uint64_t maxBytes) {
  const TiffTag* tag = directory.Find(id);
  if (tag == nullptr || SizeOf(tag->type) != 1 || tag->count > maxBytes) return {};
  return file_->Copy(tag->offset, tag->count);
}

std::string TiffWalker::Head(const TiffDirectory& directory, std::uint16_t id,
                             std::uint64_t maxBytes) {
  const TiffTag* tag = directory.Find(id);
  if (tag == nullptr) return {};
  return file_->Copy(tag->offset, std::min(tag->count * SizeOf(tag->type), maxBytes));
}

}  // namespace Sorvik::xmp
