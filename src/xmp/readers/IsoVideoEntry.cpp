// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoVideoEntry.h"

#include <optional>
#include <string>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/CodecNames.h"
#include "xmp/readers/IsoSampleEntry.h"
#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Offsets in the description, which begins with its size and type.
constexpr std::uint64_t kWidth = 32;
constexpr std::uint64_t kHeight = 34;
constexpr std::uint64_t kBoxes = 86;

// fiel: number of fields, order. Upper first if the top field is stored (1) or displayed (9) first.
const char* FieldOrder(ByteReader fiel) {
  if (fiel.U8(0) == 1) return "Progressive";
  if (fiel.U8(0) != 2) return "";
  switch (fiel.U8(1).value_or(0)) {
    case 1:
    case 9:
      return "Upper";
    case 6:
    case 14:
      return "Lower";
    default:
      return "";
  }
}

// Facts about the pictures from the codec's configuration.
struct Configuration {
  unsigned depth = 0;
  bool progressive = false;
  unsigned primaries = 0;
  unsigned matrix = 0;
  std::uint64_t aspectWidth = 0;
  std::uint64_t aspectHeight = 0;
};

// Version, profile, compatibility, level, size of lengths, number of parameter sets, each with its
// size. Returns the first one.
ByteReader SequenceOfAVC(ByteReader avcC) {
  if ((avcC.U8(5).value_or(0) & 0x1F) == 0) return ByteReader();
  return avcC.Clip(8, avcC.U16BE(6).value_or(0));
}

Configuration OfAVC(ByteReader avcC) {
  Configuration configuration;
  const auto facts = ReadAVCSequence(SequenceOfAVC(avcC));
  if (facts.width == 0) return configuration;
  configuration.depth = facts.depth;
  configuration.progressive = facts.fieldOrder != nullptr;
  configuration.primaries = facts.primaries;
  configuration.matrix = facts.matrix;
  configuration.aspectWidth = facts.aspectWidth;
  configuration.aspectHeight = facts.aspectHeight;
  return configuration;
}

// The arrays of parameter sets: completeness and type, number of sets, each with its size.
VideoFacts SequenceOfHEVC(ByteReader hvcC) {
  constexpr unsigned kSequence = 33;
  std::uint64_t at = 22;
  const unsigned arrays = hvcC.U8(at++).value_or(0);
  for (unsigned i = 0; i < arrays; ++i) {
    const unsigned type = hvcC.U8(at).value_or(0) & 0x3Fu;
    const unsigned sets = hvcC.U16BE(at + 1).value_or(0);
    at += 3;
    for (unsigned j = 0; j < sets && at < hvcC.Size(); ++j) {
      const std::uint64_t size = hvcC.U16BE(at).value_or(0);
      if (type == kSequence) return ReadHEVCSequence(hvcC.Clip(at + 2, size));
      at += 2 + size;
    }
  }
  return VideoFacts();
}

// The constraint flags start with progressive source and interlaced source.
Configuration OfHEVC(ByteReader hvcC) {
  Configuration configuration;
  const VideoFacts facts = SequenceOfHEVC(hvcC);
  configuration.primaries = facts.primaries;
  configuration.matrix = facts.matrix;
  configuration.aspectWidth = facts.aspectWidth;
  configuration.aspectHeight = facts.aspectHeight;
  if (const auto depth = hvcC.U8(17)) configuration.depth = 8 + (*depth & 7u);
  configuration.progressive = (hvcC.U8(6).value_or(0) & 0xC0) == 0x80;
  return configuration;
}

Configuration OfAV1(ByteReader av1C) {
  Configuration configuration;
  const auto flags = av1C.U8(2);
  if (!flags) return configuration;
  const bool high = (*flags & 0x40) != 0;
  const bool twelve = (*flags & 0x20) != 0;
  configuration.depth = high ? (twelve ? 12 : 10) : 8;
  configuration.progressive = true;  // the codec has no fields
  constexpr std::uint64_t kUnits = 4;
  const auto facts = ReadAV1(av1C.Clip(kUnits));
  configuration.primaries = facts.primaries;
  configuration.matrix = facts.matrix;
  return configuration;
}

// Version and flags, profile, level, bit depth (4 bits), ..., primaries, transfer, matrix.
Configuration OfVP9(ByteReader vpcC) {
  Configuration configuration;
  const auto depth = vpcC.U8(6);
  if (!depth) return configuration;
  configuration.depth = *depth >> 4;
  configuration.primaries = vpcC.U8(7).value_or(0);
  configuration.matrix = vpcC.U8(9).value_or(0);
  configuration.progressive = true;
  return configuration;
}

// Version and flags; a flag for the profile; output layer set, ..., depth in the third byte.
Configuration OfVVC(ByteReader vvcC) {
  Configuration configuration;
  const auto depth = vvcC.U8(7);
  if ((vvcC.U8(4).value_or(0) & 1) != 0 && depth) configuration.depth = 8 + (*depth >> 5);
  return configuration;
}

void SetConfiguration(const Configuration& configuration, TXMPMeta& meta) {
  SetPixelDepth(meta, configuration.depth);
  if (configuration.progressive) meta.SetProperty(kNsDM, "videoFieldOrder", "Progressive");
  SetColorSpace(meta, configuration.primaries, configuration.matrix);
  SetPixelAspectRatio(meta, configuration.aspectWidth, configuration.aspectHeight);
}

// Boxes that describe the picture for all codecs, and take precedence.
void SetPictureBox(const IsoBox& box, ByteReader body, TXMPMeta& meta) {
  if (box.type == FourCC("pasp")) {
    SetPixelAspectRatio(meta, body.U32BE(0).value_or(0), body.U32BE(4).value_or(0));
  } else if (box.type == FourCC("fiel")) {
    meta.SetProperty(kNsDM, "videoFieldOrder", FieldOrder(body));
  } else if (box.type == FourCC("colr")) {
    // Type, primaries, transfer, matrix (ITU-T H.273).
    if (!body.Matches(0, "nclc") && !body.Matches(0, "nclx")) return;
    SetColorSpace(meta, body.U16BE(4).value_or(0), body.U16BE(8).value_or(0));
  }
}

// Without an aspect ratio in the description, the pixels have that of the display size: square
// pixels if it is the same. Writers of standard definition omit both, so the aspect is unknown
// there.
void SetDisplayAspect(std::uint32_t width, std::uint32_t height, std::uint32_t displayWidth,
                      std::uint32_t displayHeight, TXMPMeta& meta) {
  constexpr std::uint32_t kStandardWidth = 720;
  if (width == 0 || height == 0 || displayWidth == 0 || displayHeight == 0) return;
  const bool same = width == displayWidth && height == displayHeight;
  if (same && width == kStandardWidth && height <= 576) return;
  SetPixelAspectRatio(meta, std::uint64_t{displayWidth} * height,
                      std::uint64_t{displayHeight} * width);
}

}  // namespace

void SetCodecConfiguration(std::uint32_t type, ByteReader body, TXMPMeta& meta) {
  switch (type) {
    case FourCC("avcC"):
      return SetConfiguration(OfAVC(body), meta);
    case FourCC("hvcC"):
      return SetConfiguration(OfHEVC(body), meta);
    case FourCC("av1C"):
      return SetConfiguration(OfAV1(body), meta);
    case FourCC("vpcC"):
      return SetConfiguration(OfVP9(body), meta);
    case FourCC("vvcC"):
      return SetConfiguration(OfVVC(body), meta);
    default:
      break;
  }
}

std::pair<std::uint32_t, std::uint32_t> VideoEntrySize(ByteReader entry) {
  return {entry.U16BE(kWidth).value_or(0), entry.U16BE(kHeight).value_or(0)};
}

void SetVideoEntry(ByteReader entry, std::uint32_t displayWidth, std::uint32_t displayHeight,
                   TXMPMeta& meta) {
  const auto [width, height] = VideoEntrySize(entry);
  SetFrameSize(meta, width, height);
  FileWindow memory(entry);
  std::uint32_t code = OriginalFormat(entry, kBoxes);
  const auto esds = entry.Size() > kBoxes
                        ? FindBox(memory, IsoBox{0, kBoxes, entry.Size()}, FourCC("esds"))
                        : std::nullopt;
  const std::uint32_t object = esds ? VideoFormatOf(entry.Clip(esds->body, esds->Size())) : 0;
  if (code == FourCC("mp4v") && object != 0) code = object;
  const std::string type = FourCCText(code);
  meta.SetProperty(kNsDM, "videoCompressor", VideoCodecName(type));
  SetPixelDepth(meta, BitsOfVideoCodec(type));

  IsoBoxes codecBoxes(memory, kBoxes, entry.Size());
  while (const auto box = codecBoxes.Next()) {
    SetCodecConfiguration(box->type, entry.Clip(box->body, box->Size()), meta);
  }
  IsoBoxes boxes(memory, kBoxes, entry.Size());
  while (const auto box = boxes.Next()) {
    SetPictureBox(*box, entry.Clip(box->body, box->Size()), meta);
  }
  if (!meta.HasProperty(kNsDM, "videoPixelAspectRatio")) {
    SetDisplayAspect(width, height, displayWidth, displayHeight, meta);
  }
}

ByteReader AVCConfiguration(ByteReader entry) {
  if (entry.Size() <= kBoxes) return ByteReader();
  FileWindow memory(entry);
  const auto avcC = FindBox(memory, IsoBox{0, kBoxes, entry.Size()}, FourCC("avcC"));
  return avcC ? entry.Clip(avcC->body, avcC->Size()) : ByteReader();
}

bool HasUnknownFieldOrder(ByteReader entry) {
  if (entry.Size() <= kBoxes) return false;
  FileWindow memory(entry);
  if (FindBox(memory, IsoBox{0, kBoxes, entry.Size()}, FourCC("fiel"))) return false;
  const auto facts = ReadAVCSequence(SequenceOfAVC(AVCConfiguration(entry)));
  return facts.width != 0 && facts.fieldOrder == nullptr;
}

void SetAVCFrame(ByteReader avcC, ByteReader frame, TXMPMeta& meta) {
  if (meta.HasProperty(kNsDM, "videoFieldOrder")) return;
  // As a stream with start codes: the sequence, then the parts in front of the first slice.
  constexpr std::string_view kStart{"\0\0\1", 3};
  constexpr unsigned kSupplement = 6;
  std::string stream = std::string(kStart).append(SequenceOfAVC(avcC).Text());
  const std::uint64_t lengthBytes = (avcC.U8(4).value_or(3) & 3u) + 1u;
  for (std::uint64_t at = 0; frame.Holds(at, lengthBytes + 1);) {
    std::uint64_t length = 0;
    for (std::uint64_t i = 0; i < lengthBytes; ++i)
      length = length << 8 | frame.U8(at + i).value_or(0);
    const ByteReader unit = frame.Clip(at + lengthBytes, length);
    const unsigned type = unit.U8(0).value_or(0) & 0x1Fu;
    if (type == kSupplement) stream.append(kStart).append(unit.Text());
    if (type >= 1 && type < kSupplement) break;
    at += lengthBytes + length;
  }
  const auto facts = ReadAVC(foundation::ReaderOf(stream));
  if (!facts.pictureStructure) return;
  meta.SetProperty(kNsDM, "videoFieldOrder",
                   *facts.pictureStructure == 0 || *facts.pictureStructure > 6 ? "Progressive"
                                                                               : facts.fieldOrder);
}

// SMPTE ST 2019-1, 8: prefix of 5 bytes, ..., bit depth (3 bits) at offset 33.
void SetVC3Frame(ByteReader frame, TXMPMeta& meta) {
  constexpr std::uint64_t kDepth = 33;
  constexpr unsigned kDepths[] = {0, 8, 10, 12, 0, 0, 0, 0};
  if (!frame.Matches(0, std::string_view("\0\0\2\x80", 4)) &&
      !frame.Matches(0, std::string_view("\0\0\3\x8C", 4))) {
    return;
  }
  SetPixelDepth(meta, kDepths[frame.U8(kDepth).value_or(0) >> 5]);
}

// Size, 'icpf', header size, version, creator, width, height, flags, aspect ratio and rate,
// primaries, transfer, matrix (SMPTE RDD 36, 5.1 and 5.3.1).
void SetProResFrame(ByteReader frame, TXMPMeta& meta) {
  if (!frame.Matches(4, "icpf")) return;
  constexpr const char* kOrders[] = {"Progressive", "Upper", "Lower", ""};
  if (!meta.HasProperty(kNsDM, "videoFieldOrder")) {
    meta.SetProperty(kNsDM, "videoFieldOrder", kOrders[frame.U8(20).value_or(0xFF) >> 2 & 3]);
  }
  if (!meta.HasProperty(kNsDM, "videoColorSpace")) {
    SetColorSpace(meta, frame.U8(22).value_or(0), frame.U8(24).value_or(0));
  }
}

}  // namespace Sorvik::xmp
