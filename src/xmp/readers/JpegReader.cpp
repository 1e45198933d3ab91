// SPDX-License-Identifier: MIT
#include "xmp/readers/JpegReader.h"

#include <algorithm>

#include "foundation/Digest.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/ImageResources.h"
#include "xmp/readers/PictureSize.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Markers (ITU-T T.81, table B.1).
constexpr std::uint8_t kMarkerStart = 0xFF;
constexpr std::uint8_t kTEM = 0x01;
constexpr std::uint8_t kSOF0 = 0xC0;
constexpr std::uint8_t kDHT = 0xC4;
constexpr std::uint8_t kJPG = 0xC8;
constexpr std::uint8_t kDAC = 0xCC;
constexpr std::uint8_t kSOF15 = 0xCF;
constexpr std::uint8_t kRST0 = 0xD0;
constexpr std::uint8_t kSOI = 0xD8;
constexpr std::uint8_t kEOI = 0xD9;
constexpr std::uint8_t kSOS = 0xDA;
constexpr std::uint8_t kAPP1 = 0xE1;
constexpr std::uint8_t kAPP13 = 0xED;

// Signatures of APP1 segments (Exif 4.7.2; ISO 16684-3, 1.1.3).
constexpr std::string_view kExif{"Exif\0\0", 6};
constexpr std::string_view kXMP{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::string_view kExtension{"http://ns.adobe.com/xmp/extension/\0", 35};
// Image resources of APP13, with IPTC records.
constexpr std::string_view kResources{"Photoshop 3.0\0", 14};
constexpr char kNsXMPNote[] = "http://ns.adobe.com/xmp/note/";

// An extension part: signature, 32 hex digits, total length, offset of this part, data.
constexpr std::uint64_t kGUIDLength = 32;
constexpr std::uint64_t kPartHeader = kExtension.size() + kGUIDLength + 4 + 4;
struct ExtensionPart {
  std::string guid;
  std::uint32_t fullLength = 0;
  std::uint32_t offset = 0;
  std::string data;
};

// Segments of up to 64 KiB after the head are fetched several at a time.
constexpr std::uint64_t kSegmentsAtOnce = 256 * 1024;
// Cameras write a few dozen segments at most, unless an extension is long.
constexpr unsigned kMaxSegments = 1024;

// Compares hexadecimal digests, which some writers store in lower case.
bool SameDigest(std::string_view a, std::string_view b) {
  const auto upper = [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return upper(x) == upper(y); });
}

bool IsFrameHeader(std::uint8_t marker) {
  return marker >= kSOF0 && marker <= kSOF15 && marker != kDHT && marker != kJPG && marker != kDAC;
}

class Segments {
 public:
  Segments(const ReaderInput& input, ReaderOutput& output)
      : file_(input, kSegmentsAtOnce), output_(output) {}

  void Read() {
    std::uint64_t at = 2;
    for (unsigned i = 0; i < kMaxSegments; ++i) {
      const ByteReader header = file_.At(at, 4);
      if (header.U8(0) != kMarkerStart) return;
      const auto marker = header.U8(1);
      if (!marker) return;
      if (*marker == kMarkerStart) {  // fill byte
        ++at;
        continue;
      }
      if (*marker == kTEM || (*marker >= kRST0 && *marker <= kSOI)) {
        at += 2;
        continue;
      }
      const std::uint64_t length = header.U16BE(2).value_or(0);
      if (*marker == kSOS || *marker == kEOI || length < 2) return;
      if (IsKnown(*marker)) Take(*marker, file_.At(at, 2 + length).Clip(4));
      at += 2 + length;
    }
  }

  void Finish() {
    ReadImageResources(foundation::ReaderOf(resources_), output_);
    SetPictureSize(output_.native, width_, height_, orientation_);
    SetPixelDepth(output_.native, depth_);
    output_.hasNative |= width_ != 0 && height_ != 0;
    if (output_.packet.empty() || parts_.empty()) return;
    output_.extendedPacket = Extension(ExtensionName());
  }

  std::optional<std::uint64_t> Orientation() const { return orientation_; }

 private:
  // Others are skipped without a read.
  static bool IsKnown(std::uint8_t marker) {
    return marker == kAPP1 || marker == kAPP13 || IsFrameHeader(marker);
  }

  void Take(std::uint8_t marker, ByteReader body) {
    if (marker == kAPP1) {
      TakeMetadata(body);
    } else if (marker == kAPP13) {
      TakeResources(body);
    } else {
      TakeSize(body);
    }
  }

  void TakeMetadata(ByteReader body) {
    if (body.Matches(0, kExif)) {
      // Borrowed from the window, which isn't moved before the end of the call.
      const ByteReader block = body.Clip(kExif.size());
      output_.hasNative |= SetExifBlock(block, output_.native);
      if (!orientation_) orientation_ = ExifOrientation(block);
    } else if (body.Matches(0, kXMP)) {
      if (output_.packet.empty()) output_.packet = body.Clip(kXMP.size()).Text();
    } else if (body.Matches(0, kExtension)) {
      TakePart(body);
    }
  }

  // Resources longer than a segment continue in the next one.
  void TakeResources(ByteReader body) {
    if (!body.Matches(0, kResources)) return;
    const std::string_view part = body.Clip(kResources.size()).Text();
    if (part.size() <= FileWindow::kMaxBytes - resources_.size()) resources_ += part;
  }

  // Bits per sample, lines, samples per line.
  void TakeSize(ByteReader body) {
    if (width_ != 0) return;
    depth_ = body.U8(0).value_or(0);
    height_ = body.U16BE(1).value_or(0);
    width_ = body.U16BE(3).value_or(0);
  }

  void TakePart(ByteReader body) {
    if (!body.Holds(0, kPartHeader)) return;
    ExtensionPart part;
    part.guid = body.TextAt(kExtension.size(), kGUIDLength);
    part.fullLength = *body.U32BE(kExtension.size() + kGUIDLength);
    part.offset = *body.U32BE(kExtension.size() + kGUIDLength + 4);
    part.data = body.Clip(kPartHeader).Text();
    partBytes_ += part.data.size();
    if (partBytes_ <= FileWindow::kMaxBytes) parts_.push_back(std::move(part));
  }

  // Returns the GUID of the extension that belongs to the main packet; left-over parts of other
  // extensions may exist.
  std::string ExtensionName() const {
    std::string name;
    try {
      TXMPMeta main;
      main.ParseFromBuffer(output_.packet.data(),
                           static_cast<std::uint32_t>(output_.packet.size()));
      main.GetProperty(kNsXMPNote, "HasExtendedXMP", &name);
    } catch (const XMP_Error&) {
      // A main packet that can't be parsed names no extension.
    }
    return name;
  }

  // Joins the parts, which may be in any order in the file. Returns empty text unless all parts
  // exist and the MD5 digest equals the GUID.
  std::string Extension(const std::string& guid) {
    std::sort(parts_.begin(), parts_.end(),
              [](const auto& a, const auto& b) { return a.offset < b.offset; });
    std::string all;
    for (const ExtensionPart& part : parts_) {
      if (!SameDigest(part.guid, guid) || part.offset < all.size()) continue;
      if (part.offset != all.size()) return {};
      all += part.data;
      if (all.size() >= part.fullLength) break;
    }
    return SameDigest(foundation::MD5Hex(all), guid) ? all : std::string();
  }

  FileWindow file_;
  ReaderOutput& output_;
  std::vector<ExtensionPart> parts_;
  std::uint64_t partBytes_ = 0;
  std::string resources_;
  unsigned depth_ = 0;
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::optional<std::uint64_t> orientation_;
};

bool Recognises(const ReaderInput& input) {
  return input.head.U8(0) == kMarkerStart && input.head.U8(1) == kSOI &&
         input.head.U8(2) == kMarkerStart;
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  ReadJpeg(input, output);
}

}  // namespace

std::optional<std::uint64_t> ReadJpeg(const ReaderInput& input, ReaderOutput& output) {
  if (!Recognises(input)) return std::nullopt;
  Segments segments(input, output);
  segments.Read();
  segments.Finish();
  return segments.Orientation();
}

const Reader kJpegReader = {"JPEG", Recognises, Read};

}  // namespace Sorvik::xmp
