// SPDX-License-Identifier: MIT
#include "xmp/readers/IptcRecords.h"

#include <string>
#include <string_view>

#include "xmp/Namespaces.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint8_t kTagMarker = 0x1C;
constexpr std::uint8_t kApplicationRecord = 2;
constexpr std::uint16_t kExtendedLength = 0x8000;
// Pictures have a few dozen datasets; keywords repeat.
constexpr unsigned kMaxDatasets = 4096;

enum Dataset : std::uint8_t {
  kObjectName = 5,
  kKeywords = 25,
  kDateCreated = 55,
  kTimeCreated = 60,
  kByline = 80,
  kCopyrightNotice = 116,
  kCaption = 120,
};

// Datasets with a single text that become a simple property.
struct SimpleText {
  std::uint8_t dataset;
  const char* schema;
  const char* name;
};
constexpr SimpleText kSimpleTexts[] = {
    {40, kNsPhotoshop, "Instructions"}, {85, kNsPhotoshop, "AuthorsPosition"},
    {90, kNsPhotoshop, "City"},         {92, kNsIptcCore, "Location"},
    {95, kNsPhotoshop, "State"},        {100, kNsIptcCore, "CountryCode"},
    {101, kNsPhotoshop, "Country"},     {103, kNsPhotoshop, "TransmissionReference"},
    {105, kNsPhotoshop, "Headline"},    {110, kNsPhotoshop, "Credit"},
    {115, kNsPhotoshop, "Source"},      {122, kNsPhotoshop, "CaptionWriter"},
};

class IptcStore {
 public:
  void Take(std::uint8_t dataset, ByteReader value) {
    const std::string text = NativeText(value.Text());
    if (text.empty()) return;
    switch (dataset) {
      case kObjectName:
        meta_.SetLocalizedText(kNsDC, "title", "x-default", text);
        return;
      case kCaption:
        meta_.SetLocalizedText(kNsDC, "description", "x-default", text);
        return;
      case kKeywords:
        meta_.AppendArrayItem(kNsDC, "subject", ArrayForm::kBag, text);
        return;
      case kByline:
        meta_.AppendArrayItem(kNsDC, "creator", ArrayForm::kSeq, text);
        return;
      case kCopyrightNotice:
        SetCopyright(meta_, text);
        return;
      case kDateCreated:
        date_ = text;
        return;
      case kTimeCreated:
        time_ = text;
        return;
      default:
        break;
    }
    for (const SimpleText& simple : kSimpleTexts) {
      if (simple.dataset == dataset) meta_.SetProperty(simple.schema, simple.name, text);
    }
  }

  // Returns the properties of all datasets.
  const TXMPMeta& Finish() {
    meta_.SetProperty(kNsPhotoshop, "DateCreated", Date());
    return meta_;
  }

 private:
  // CCYYMMDD and HHMMSS with a zone of "+HHMM", in the form of XMP; empty if the date is invalid
  // or partly unknown.
  std::string Date() const {
    constexpr std::string_view kMidnight = "000000";
    if (date_.size() != 8) return {};
    const std::string_view time = time_.size() >= 6 ? std::string_view(time_) : kMidnight;
    std::string text = date_.substr(0, 4) + "-" + date_.substr(4, 2) + "-" + date_.substr(6, 2);
    text.append("T").append(time.substr(0, 2)).append(":").append(time.substr(2, 2));
    text.append(":").append(time.substr(4, 2));
    if (!ParseDate(text)) return {};
    if (time_.size() < 6) return text.substr(0, 10);
    const std::string_view zone = time.substr(6);
    if (zone.size() == 5 && (zone[0] == '+' || zone[0] == '-')) {
      text.append(zone.substr(0, 3)).append(":").append(zone.substr(3));
    }
    return text;
  }

  TXMPMeta meta_;
  std::string date_;
  std::string time_;
};

}  // namespace

bool SetIptcRecords(ByteReader records, TXMPMeta& meta) {
  IptcStore store;
  std::uint64_t at = 0;
  for (unsigned i = 0; i < kMaxDatasets && records.U8(at) == kTagMarker; ++i) {
    constexpr std::uint64_t kHeaderLength = 5;
    const auto record = records.U8(at + 1);
    const auto dataset = records.U8(at + 2);
    const auto length = records.U16BE(at + 3);
    // A length above 32767 is that of a further length field, of media data only.
    if (!record || !dataset || !length || *length >= kExtendedLength) break;
    const auto value = records.Sub(at + kHeaderLength, *length);
    if (!value) break;
    if (*record == kApplicationRecord) store.Take(*dataset, *value);
    at += kHeaderLength + *length;
  }
  const TXMPMeta& found = store.Finish();
  meta.FillFrom(found);
  return !found.Empty();
}

}  // namespace Sorvik::xmp
