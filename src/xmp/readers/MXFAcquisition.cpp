// SPDX-License-Identifier: MIT
#include "xmp/readers/MXFAcquisition.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "xmp/Namespaces.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/MXFSets.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp::mxf {

namespace {

constexpr unsigned kMaxItems = 32;
constexpr unsigned kMaxSets = 16;
constexpr std::uint64_t kMaxDataBytes = 64 * 1024;
constexpr std::uint64_t kMaxKeyBytes = 16 + 9;

// Byte 12 of the key of an item of a frame.
constexpr std::uint8_t kEssence[] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02,
                                     0x01, 0x01, 0x0D, 0x01, 0x03, 0x01};
constexpr std::uint8_t kDataItem = 0x17;
constexpr std::uint8_t kPictureItems[] = {0x05, 0x15};

// The sets of the lens unit, the camera unit and the user.
constexpr std::string_view kSetPrefix{"\x06\x0E\x2B\x34\x02\x53\x01\x01\x0C\x02\x01\x01", 12};

enum Tag : std::uint16_t {
  kIrisFNumber = 0x8000,
  kFocalLength = 0x8005,
  kLensAttributes = 0x8007,
  kCaptureFrameRate = 0x8106,
  kShutterTime = 0x8109,
  kISOSensitivity = 0x810B,
  kWhiteBalance = 0x810E,
};

std::string Fraction(double value, unsigned parts) {
  const auto number = std::lround(value * parts);
  return number <= 0 ? std::string() : std::to_string(number) + "/" + std::to_string(parts);
}

// 2 to the power of 8 (1 - x), where x is the 16-bit fraction.
void SetIris(ByteReader item, TXMPMeta& meta) {
  const auto value = item.U16BE(0);
  if (!value) return;
  meta.SetProperty(kNsEXIF, "FNumber", Fraction(std::exp2(8 * (1 - *value / 65536.0)), 100));
}

// Metres: a signed decimal exponent of 4 bits, 12 bits of the number. All bits set: unknown.
void SetFocalLength(ByteReader item, TXMPMeta& meta) {
  const auto value = item.U16BE(0);
  if (!value || *value == 0xFFFF) return;
  const int exponent = (*value >> 12 ^ 8) - 8;
  constexpr double kMillimetres = 1000;
  meta.SetProperty(kNsEXIF, "FocalLength",
                   Fraction((*value & 0xFFF) * std::pow(10, exponent) * kMillimetres, 10));
}

void SetRatio(ByteReader item, const char* schema, const char* name, TXMPMeta& meta) {
  const std::uint32_t num = item.U32BE(0).value_or(0);
  const std::uint32_t den = item.U32BE(4).value_or(0);
  if (num == 0 || den == 0) return;
  meta.SetProperty(schema, name, std::to_string(num) + "/" + std::to_string(den));
}

void SetItems(const LocalSet& set, TXMPMeta& meta) {
  SetIris(set.Item(kIrisFNumber), meta);
  SetFocalLength(set.Item(kFocalLength), meta);
  meta.SetProperty(kNsAux, "Lens", NativeText(set.Item(kLensAttributes).Text()));
  SetRatio(set.Item(kCaptureFrameRate), kNsNonRealTimeMeta, "captureFps", meta);
  SetRatio(set.Item(kShutterTime), kNsEXIF, "ExposureTime", meta);
  if (const auto iso = set.Item(kISOSensitivity).U16BE(0); iso && *iso != 0) {
    TXMPMeta array;
    array.AppendArrayItem(kNsEXIF, "ISOSpeedRatings", ArrayForm::kSeq, std::to_string(*iso));
    meta.FillFrom(array);
  }
  if (const auto kelvin = set.Item(kWhiteBalance).U16BE(0); kelvin && *kelvin != 0) {
    meta.SetProperty(kNsCRS, "WhiteBalance", std::to_string(*kelvin) + "K");
  }
}

// The sets are in packets of ancillary data, or directly in the item.
void SetItemsOfData(ByteReader data, TXMPMeta& meta) {
  const std::string_view text = data.Text();
  auto at = text.find(kSetPrefix);
  for (unsigned i = 0; i < kMaxSets && at != text.npos; ++i) {
    const auto set = ReadKLV(data, at);
    if (set) SetItems(LocalSet(SetKind{}, set->value), meta);
    at = text.find(kSetPrefix, at + 1);
  }
}

}  // namespace

void SetAcquisition(const ReaderInput& input, std::uint64_t essence, TXMPMeta& meta) {
  FileWindow file(input);
  bool inFrame = false;
  for (unsigned i = 0; i < kMaxItems && essence < file.Size(); ++i) {
    const auto item = ReadKLV(file.At(essence, kMaxKeyBytes), 0);
    if (!item || item->next == UINT64_MAX) return;
    if (item->next > file.Size() - essence) return;
    const std::uint64_t end = essence + item->next;
    if (item->key.Begins(kEssence)) {
      const std::uint8_t kind = item->key.bytes[12];
      const bool picture = std::ranges::find(kPictureItems, kind) != std::end(kPictureItems);
      if (picture && inFrame) return;  // the second frame
      inFrame = inFrame || picture;
      if (kind == kDataItem) {
        SetItemsOfData(file.At(essence, std::min(kMaxDataBytes, end - essence)), meta);
        return;
      }
    }
    essence = end;
  }
}

}  // namespace Sorvik::xmp::mxf
