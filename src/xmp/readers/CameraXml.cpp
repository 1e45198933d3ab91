// SPDX-License-Identifier: MIT
#include "xmp/readers/CameraXml.h"

#include <algorithm>
#include <vector>

#include "foundation/XmlEncoding.h"
#include "xmp/Namespaces.h"

namespace Sorvik::xmp {

using foundation::XmlElement;

namespace {

// XML declaration, comments and DOCTYPE in front of the root element take some 100 bytes in camera
// files.
constexpr std::size_t kRootSearch = 4096;
constexpr std::size_t kMarkSearch = 16;

// Returns the text after the first occurrence of `end`; empty if there is none.
std::string_view After(std::string_view text, std::string_view end) {
  const auto at = text.find(end);
  return at == text.npos ? std::string_view() : text.substr(at + end.size());
}

}  // namespace

std::string XmlRootName(foundation::ByteReader head) {
  // Fast rejection of files that aren't XML, which contain no '<' here in any encoding.
  if (head.Clip(0, kMarkSearch).Text().find('<') == std::string_view::npos) return {};
  const std::string text = foundation::ToUTF8(head.Clip(0, kRootSearch).Text());
  std::string_view rest = text;
  while (true) {
    const auto begin = rest.find_first_not_of(" \t\r\n");
    if (begin == rest.npos || rest[begin] != '<') return {};
    rest.remove_prefix(begin + 1);
    if (rest.starts_with("?")) {
      rest = After(rest, "?>");
    } else if (rest.starts_with("!--")) {
      rest = After(rest, "-->");
    } else if (rest.starts_with("!")) {
      rest = After(rest, ">");
    } else {
      break;
    }
  }
  const std::string_view name = rest.substr(0, rest.find_first_of(" \t\r\n/>"));
  const auto colon = name.rfind(':');
  return std::string(colon == name.npos ? name : name.substr(colon + 1));
}

std::optional<foundation::XmlDocument> ParseClipXml(const ReaderInput& input) {
  const std::uint64_t size = input.file.Size();
  if (size == 0 || size > kMaxClipXmlBytes) return std::nullopt;
  if (input.head.Size() >= size) return foundation::ParseXml(input.head.Text());
  const std::vector<std::byte> bytes = input.file.Read(0, static_cast<std::size_t>(size));
  return foundation::ParseXml(foundation::ByteReader(bytes).Text());
}

const XmlElement* FindDescendant(const XmlElement& element, std::string_view name) {
  for (const XmlElement* child : element.Children()) {
    if (child->Name() == name) return child;
    // Recursion depth is limited by the XML parser.
    if (const XmlElement* found = FindDescendant(*child, name)) return found;
  }
  return nullptr;
}

std::string_view DescendantText(const XmlElement& element, std::string_view name) {
  const XmlElement* found = FindDescendant(element, name);
  return found == nullptr ? std::string_view() : found->Text();
}

std::optional<std::uint64_t> ParseUnsigned(std::string_view text) {
  if (text.empty() || text.size() > 18) return std::nullopt;
  std::uint64_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return number;
}

std::optional<Rate> ParseDecimal(std::string_view text) {
  const auto point = text.find('.');
  if (point == text.npos) {
    const auto integer = ParseUnsigned(text);
    return integer ? std::optional(Rate{*integer, 1}) : std::nullopt;
  }
  std::string digits(text.substr(0, point));
  digits += text.substr(point + 1);
  const auto number = ParseUnsigned(digits);
  if (!number) return std::nullopt;
  Rate value{*number, 1};
  for (std::size_t i = point + 1; i < text.size(); ++i) value.den *= 10;
  return value;
}

std::optional<std::pair<std::uint64_t, std::uint64_t>> ParseNumberPair(std::string_view text,
                                                                       char separator) {
  const auto at = text.find(separator);
  if (at == text.npos) return std::nullopt;
  const auto first = ParseUnsigned(text.substr(0, at));
  const auto second = ParseUnsigned(text.substr(at + 1));
  if (!first || !second || *first == 0 || *second == 0) return std::nullopt;
  return std::pair(*first, *second);
}

std::optional<bool> IsInterlacedText(std::string_view text) {
  if (text.ends_with('i')) return true;
  if (text.ends_with('p')) return false;
  return std::nullopt;
}

Rate FrameRateOfText(std::string_view text) {
  const auto interlaced = IsInterlacedText(text);
  if (!interlaced) return {};
  const auto number = ParseDecimal(text.substr(0, text.size() - 1));
  if (!number || number->num > 1'000'000) return {};
  const double rate =
      static_cast<double>(number->num) / static_cast<double>(number->den) / (*interlaced ? 2 : 1);
  const auto nearest = static_cast<std::uint64_t>(rate + 0.5);
  if (nearest == 0) return {};
  const double distance = static_cast<double>(nearest) - rate;
  if (std::max(distance, -distance) < 0.004) return {nearest, 1};
  // Texts contain only two decimals of 1000/1001.
  const double ntsc = static_cast<double>(nearest) * 1000 / 1001 - rate;
  if (std::max(ntsc, -ntsc) < 0.011) return {nearest * 1000, 1001};
  return {};
}

unsigned TimecodeBaseOf(Rate rate) {
  if (!rate.Known() || rate.num / rate.den > 1000) return 0;
  return static_cast<unsigned>((rate.num + rate.den / 2) / rate.den);
}

std::optional<std::pair<unsigned, unsigned>> SDPixelAspectRatio(unsigned lines,
                                                                std::string_view aspectRatio) {
  const bool wide = aspectRatio == "16:9";
  if (!wide && aspectRatio != "4:3") return std::nullopt;
  if (lines == 480) return wide ? std::pair(40u, 33u) : std::pair(10u, 11u);
  if (lines == 576) return wide ? std::pair(16u, 11u) : std::pair(12u, 11u);
  return std::nullopt;
}

void SetPixelAspectRatioOf(TXMPMeta& meta, std::uint64_t width, std::uint64_t height,
                           std::string_view aspectRatio) {
  constexpr std::uint64_t kMaxSide = 1'000'000;
  const auto shape = ParseNumberPair(aspectRatio, ':');
  if (!shape || width == 0 || height == 0 || width > kMaxSide || height > kMaxSide ||
      shape->first > kMaxSide || shape->second > kMaxSide) {
    return;
  }
  SetPixelAspectRatio(meta, shape->first * height, shape->second * width);
}

void SetCameraChannels(TXMPMeta& meta, std::uint64_t channels) {
  if (channels == 0) return;
  const char* several = channels == 2 ? "Stereo" : "Other";
  meta.SetProperty(kNsDM, "audioChannelType", channels == 1 ? "Mono" : several);
}

void SetGPSAltitude(TXMPMeta& meta, std::string_view metres) {
  const bool below = metres.starts_with('-');
  if (below) metres.remove_prefix(1);
  std::string fraction;
  if (ParseNumberPair(metres, '/')) {
    fraction = metres;
  } else if (const auto number = ParseDecimal(metres)) {
    fraction = std::to_string(number->num) + "/" + std::to_string(number->den);
  }
  if (fraction.empty()) return;
  meta.SetProperty(kNsEXIF, "GPSAltitude", fraction);
  meta.SetProperty(kNsEXIF, "GPSAltitudeRef", below ? "1" : "0");
}

}  // namespace Sorvik::xmp
