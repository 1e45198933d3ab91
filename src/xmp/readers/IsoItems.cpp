// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoItems.h"

#include <algorithm>

#include "xmp/NativeValues.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::size_t kMaxItems = 1024;
constexpr std::uint64_t kMaxTableBytes = 256 * 1024;
constexpr std::uint64_t kVersionAndFlags = 4;

struct Items {
  std::optional<std::uint32_t> xmp;
  std::optional<std::uint32_t> exif;
};

// infe: version and flags, id, protection, type, name, content type. Older versions have no type.
void ReadEntry(ByteReader entry, Items& items) {
  const unsigned version = entry.U8(0).value_or(0);
  if (version != 2 && version != 3) return;
  const std::uint64_t number = kVersionAndFlags;
  const std::uint64_t type = number + (version == 2 ? 2 : 4) + 2;
  const auto id = version == 2 ? entry.U16BE(number).value_or(0) : entry.U32BE(number).value_or(0);
  if (entry.Matches(type, "Exif") && !items.exif) items.exif = id;
  if (!entry.Matches(type, "mime") || items.xmp) return;
  const std::string_view texts = entry.Clip(type + 4).Text();
  const std::size_t nameEnd = texts.find('\0');
  if (nameEnd == std::string_view::npos) return;
  const std::string_view content = texts.substr(nameEnd + 1);
  if (content.substr(0, content.find('\0')) == "application/rdf+xml") items.xmp = id;
}

Items ReadItems(FileWindow& file, const IsoBox& iinf) {
  const bool wide = file.At(iinf.body, 1).U8(0).value_or(0) != 0;
  Items items;
  IsoBoxes entries(file, iinf, kVersionAndFlags + (wide ? 4 : 2));
  while (const auto entry = entries.Next()) {
    if (entry->type != FourCC("infe")) continue;
    ReadEntry(file.At(entry->body, std::min<std::uint64_t>(512, entry->Size())), items);
  }
  return items;
}

// Fields of iloc have 0, 4 or 8 bytes, as given in its header.
class Locations {
 public:
  explicit Locations(ByteReader iloc) : iloc_(iloc) {}

  struct Place {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
  };
  // Returns the position of the item in the file; nullopt if it has several extents or is stored
  // elsewhere.
  std::optional<Place> Find(std::uint32_t wanted) {
    version_ = iloc_.U8(0).value_or(0);
    if (version_ > 2) return std::nullopt;
    const unsigned sizes = iloc_.U16BE(4).value_or(0);
    at_ = 6;
    const std::uint64_t count = std::min<std::uint64_t>(Take(version_ == 2 ? 4 : 2), kMaxItems);
    for (std::uint64_t i = 0; i < count && !failed_; ++i) {
      const std::uint64_t id = Take(version_ == 2 ? 4 : 2);
      const std::uint64_t method = version_ == 0 ? 0 : Take(2) & 0x0F;
      Take(2);  // data reference
      const std::uint64_t base = Take(sizes >> 4 & 0x0F);
      const std::uint64_t extents = Take(2);
      Place place;
      for (std::uint64_t e = 0; e < extents && !failed_; ++e) {
        if (version_ != 0) Take(sizes & 0x0F);  // index
        place.offset = Take(sizes >> 12 & 0x0F);
        place.length = Take(sizes >> 8 & 0x0F);
      }
      if (failed_ || id != wanted) continue;
      if (extents != 1 || method != 0 || place.offset > UINT64_MAX - base) return std::nullopt;
      place.offset += base;
      return place;
    }
    return std::nullopt;
  }

 private:
  std::uint64_t Take(unsigned size) {
    std::optional<std::uint64_t> value;
    if (size == 0) value = 0;
    if (size == 2) value = iloc_.U16BE(at_);
    if (size == 4) value = iloc_.U32BE(at_);
    if (size == 8) value = iloc_.U64BE(at_);
    failed_ = failed_ || !value;
    at_ += size;
    return value.value_or(0);
  }

  ByteReader iloc_;
  unsigned version_ = 0;
  std::uint64_t at_ = 0;
  bool failed_ = false;
};

// The properties of the primary item that determine its size as it is shown.
class PrimaryItem {
 public:
  PrimaryItem(FileWindow& file, const IsoBox& metaBox) : file_(file), meta_(metaBox) {}

  bool StoreSize(TXMPMeta& meta) {
    const auto pitm = FindBox(file_, meta_, FourCC("pitm"), kVersionAndFlags);
    const auto iprp = FindBox(file_, meta_, FourCC("iprp"), kVersionAndFlags);
    if (!pitm || !iprp) return false;
    const auto ipco = FindBox(file_, *iprp, FourCC("ipco"));
    const auto ipma = FindBox(file_, *iprp, FourCC("ipma"));
    if (!ipco || !ipma) return false;
    const ByteReader primary = file_.At(pitm->body, 8);
    const std::uint32_t item = primary.U8(0) == 0 ? primary.U16BE(kVersionAndFlags).value_or(0)
                                                  : primary.U32BE(kVersionAndFlags).value_or(0);
    const std::vector<unsigned> used = Associations(*ipma, item);
    IsoBoxes properties(file_, *ipco);
    for (unsigned index = 1; const auto property = properties.Next(); ++index) {
      if (std::find(used.begin(), used.end(), index) != used.end()) Take(*property);
    }
    // Rotations by a quarter exchange the sides like an orientation of 6.
    SetPictureSize(meta, width_, height_, turned_ ? 6 : 1);
    SetPixelDepth(meta, depth_);
    return width_ != 0 && height_ != 0;
  }

 private:
  // ipma: entries of an item, each with the one-based indexes of its properties; the highest bit of
  // an index marks essential ones.
  std::vector<unsigned> Associations(const IsoBox& box, std::uint32_t item) {
    const ByteReader ipma = file_.At(box.body, std::min(kMaxTableBytes, box.Size()));
    const bool wideItems = ipma.U8(0).value_or(0) >= 1;
    const bool wideIndexes = (ipma.U8(3).value_or(0) & 1) != 0;
    const std::uint64_t entries =
        std::min<std::uint64_t>(ipma.U32BE(kVersionAndFlags).value_or(0), kMaxItems);
    std::vector<unsigned> indexes;
    std::uint64_t at = kVersionAndFlags + 4;
    for (std::uint64_t i = 0; i < entries; ++i) {
      const std::uint32_t id = wideItems ? ipma.U32BE(at).value_or(0) : ipma.U16BE(at).value_or(0);
      at += wideItems ? 4 : 2;
      const unsigned count = ipma.U8(at).value_or(0);
      ++at;
      for (unsigned n = 0; n < count; ++n) {
        const unsigned index =
            wideIndexes ? ipma.U16BE(at).value_or(0) & 0x7FFFU : ipma.U8(at).value_or(0) & 0x7FU;
        if (id == item) indexes.push_back(index);
        at += wideIndexes ? 2 : 1;
      }
    }
    return indexes;
  }

  void Take(const IsoBox& property) {
    constexpr std::uint64_t kMaxPropertyBytes = 32;
    const ByteReader body = file_.At(property.body, std::min(kMaxPropertyBytes, property.Size()));
    if (property.type == FourCC("ispe")) {
      width_ = body.U32BE(kVersionAndFlags).value_or(0);
      height_ = body.U32BE(kVersionAndFlags + 4).value_or(0);
    } else if (property.type == FourCC("clap")) {
      TakeAperture(body);
    } else if (property.type == FourCC("irot")) {
      turned_ = (body.U8(0).value_or(0) & 1) != 0;
    } else if (property.type == FourCC("pixi")) {
      depth_ = body.U8(kVersionAndFlags + 1).value_or(0);  // number of components, bits of each
    }
  }

  // Width and height as fractions, then the offset of the centre. Follows the size in the list.
  void TakeAperture(ByteReader clap) {
    const std::uint32_t widthUnits = clap.U32BE(4).value_or(0);
    const std::uint32_t heightUnits = clap.U32BE(12).value_or(0);
    if (widthUnits == 0 || heightUnits == 0) return;
    const std::uint32_t width = *clap.U32BE(0) / widthUnits;
    const std::uint32_t height = *clap.U32BE(8) / heightUnits;
    if (width == 0 || height == 0 || width > width_ || height > height_) return;
    width_ = width;
    height_ = height;
  }

  FileWindow& file_;
  const IsoBox& meta_;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  unsigned depth_ = 0;
  bool turned_ = false;
};

std::string ItemBytes(FileWindow& file, const IsoBox& iloc, std::optional<std::uint32_t> item) {
  if (!item) return {};
  const auto place =
      Locations(file.At(iloc.body, std::min(kMaxTableBytes, iloc.Size()))).Find(*item);
  return place ? file.Copy(place->offset, place->length) : std::string();
}

}  // namespace

bool ReadItemMetadata(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta,
                      std::string& packet) {
  if (metaBox.Size() < kVersionAndFlags) return false;
  const bool size = PrimaryItem(file, metaBox).StoreSize(meta);
  const auto iinf = FindBox(file, metaBox, FourCC("iinf"), kVersionAndFlags);
  const auto iloc = FindBox(file, metaBox, FourCC("iloc"), kVersionAndFlags);
  if (!iinf || !iloc) return size;
  const Items items = ReadItems(file, *iinf);
  if (packet.empty()) packet = ItemBytes(file, *iloc, items.xmp);
  // The offset of the TIFF header after this field, then the block.
  const std::string exif = ItemBytes(file, *iloc, items.exif);
  const ByteReader bytes = foundation::ReaderOf(exif);
  const auto skip = bytes.U32BE(0);
  const bool facts = skip && SetExifBlock(bytes.Clip(std::uint64_t{4} + *skip), meta);
  return facts || size;
}

}  // namespace Sorvik::xmp
