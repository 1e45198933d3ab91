// SPDX-License-Identifier: MIT
#include "metadata/FieldRules.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

#include "SorvikProvider/foundation/Localizer.h"
#include "foundation/tarnwicktypes/MediaTypes.h"
#include "metadata/FrameCounts.h"
#include "xmp/Namespaces.h"

namespace Sorvik::XMPSupport {
namespace {

using xmp::SXMPMeta;
using xmp::XMP_Error;

constexpr char kWhiteSpace[] = " \t\n\v\f\r";

std::string Localized(const char* key) {
  return tarnwick::config::Localizer::Get().GetUTF8String(key);
}

std::string CurrentLanguage() { return Hestra::MakeStdString(Hestra::GetLanguageString()); }

// Runs a read and ignores exceptions, so that one broken property doesn't lose the others. Returns
// true if nothing was thrown. Values read before an exception are kept.
template <class Read>
bool ReadSafely(Read read) {
  try {
    read();
    return true;
  } catch (...) {
    return false;
  }
}

std::string PlainText(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  ReadSafely([&] { meta.GetProperty(row.schemaNS, row.propertyName, &value); });
  return value;
}

std::string ProjectTypeText(const std::string& type) {
  struct ProjectType {
    const char* type;
    const char* key;
  };
  static constexpr ProjectType kTypes[] = {
      {"movie", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/movietype=Movie"},
      {"still", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/stilltype=Still"},
      {"audio", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/audiotype=Audio"},
      {"custom", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/customtype=Custom"},
  };
  for (const ProjectType& known : kTypes) {
    if (type == known.type) return Localized(known.key);
  }
  return Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/unknowntype=Unknown");
}

// Removes an integer with leading white space from the front of `text`. The value wraps to 32 bits,
// as with scanf into an int. Returns false if there is no integer.
bool TakeInteger(std::string_view& text, std::uint32_t& number) {
  const auto start = text.find_first_not_of(kWhiteSpace);
  if (start == text.npos) return false;
  text.remove_prefix(start);
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  const auto digits = std::min(text.find_first_not_of("0123456789"), text.size());
  if (digits == 0) return false;
  const std::int64_t value = ParseCount(text.substr(0, digits));
  number = static_cast<std::uint32_t>(negative ? -value : value);
  text.remove_prefix(digits);
  return true;
}

// Parses the number at the start of `text` like strtod in the C locale: white space and a sign,
// decimal or hexadecimal digits, an exponent, infinity or NaN. Returns 0 if there is no number.
double LeadingNumber(std::string_view text) {
  const auto start = text.find_first_not_of(kWhiteSpace);
  if (start == text.npos) return 0;
  text.remove_prefix(start);
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  if (text.starts_with('-')) return 0;
  auto format = std::chars_format::general;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    format = std::chars_format::hex;
    text.remove_prefix(2);
  }
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, format);
  if (error == std::errc::result_out_of_range) {
    // Overflow or underflow, depending on the sign of the exponent, or on the first digit.
    const auto exponent = text.find_first_of(format == std::chars_format::hex ? "pP" : "eE");
    const bool tiny = exponent == text.npos ? text.starts_with('0') || text.starts_with('.')
                                            : text.substr(exponent + 1).starts_with('-');
    number = tiny ? 0 : std::numeric_limits<double>::infinity();
  }
  return negative ? -number : number;
}

std::string FourDecimals(float quotient) {
  char digits[64];
  const auto [end, error] = std::to_chars(
      digits, digits + sizeof(digits), static_cast<double>(quotient), std::chars_format::fixed, 4);
  return std::string(digits, error == std::errc() ? end : digits);
}

// The two parts of the duration; a missing part is empty.
struct DurationPair {
  std::string value;
  std::string scale;
};

// Returns nullopt if a part can't be read.
std::optional<DurationPair> ReadDuration(const SXMPMeta& meta) {
  DurationPair pair;
  const bool read = ReadSafely([&] {
    meta.GetStructField(xmp::kNsDM, "duration", xmp::kNsDM, "value", &pair.value);
    meta.GetStructField(xmp::kNsDM, "duration", xmp::kNsDM, "scale", &pair.scale);
  });
  return read ? std::optional(pair) : std::nullopt;
}

}  // namespace

namespace FieldRules {

Text Unmodified(const SXMPMeta& meta, const XMPCrossReference& row) { return PlainText(meta, row); }

Text SetByProviders(const SXMPMeta&, const XMPCrossReference&) { return std::nullopt; }

Text Title(const SXMPMeta& meta, const XMPCrossReference&) {
  std::string value;
  bool isSimple = false;
  const bool read = ReadSafely([&] {
    try {
      meta.GetLocalizedText(xmp::kNsDC, "title", "", CurrentLanguage(), nullptr, &value);
    } catch (const XMP_Error& failure) {
      if (failure.GetID() != xmp::kXMPErr_BadXPath) throw;
      isSimple = true;
    }
    if (isSimple) meta.GetProperty(xmp::kNsDC, "title", &value);
  });
  return read ? Text(value) : std::nullopt;
}

Text FirstItem(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  ReadSafely([&] { meta.GetArrayItem(row.schemaNS, row.propertyName, 1, &value); });
  return value;
}

Text AlternativeText(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  ReadSafely([&] {
    meta.GetLocalizedText(row.schemaNS, row.propertyName, nullptr, CurrentLanguage(), nullptr,
                          &value);
  });
  return value;
}

Text JoinedList(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string joined;
  ReadSafely([&] {
    std::string item;
    for (std::int32_t i = 1; meta.GetArrayItem(row.schemaNS, row.propertyName, i, &item); ++i) {
      if (!joined.empty()) joined += ';';
      joined += item;
    }
  });
  return joined;
}

Text Project(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string type;
  std::string path;
  const bool read = ReadSafely([&] {
    meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDM, "type", &type);
    meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDM, "path", &path);
  });
  if (!read) return std::string();
  std::string text;
  if (!path.empty()) {
    text += Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/ProjectPath=Project path: ");
    text += path + ' ';
  }
  if (!type.empty()) {
    text += Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/ProjectType=Project type: ");
    text += ProjectTypeText(type);
  }
  return text;
}

Text FrameSize(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::array<std::string, 3> parts;
  bool complete = true;
  const bool read = ReadSafely([&] {
    const char* const names[] = {"w", "h", "unit"};
    for (std::size_t i = 0; i < parts.size(); ++i) {
      complete = meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDimensions, names[i],
                                     &parts[i]) &&
                 complete;
    }
  });
  if (!read || !complete) return std::string();
  return parts[0] + " x " + parts[1] + " " + parts[2];
}

Text AspectRatio(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  if (!ReadSafely([&] { meta.GetProperty(row.schemaNS, row.propertyName, &value); })) return value;
  if (const auto colon = value.find(':'); colon != value.npos) value[colon] = '/';
  std::string_view rest = value;
  std::uint32_t numerator = 0;
  std::uint32_t denominator = 0;
  if (!TakeInteger(rest, numerator) || !rest.starts_with('/')) return value;
  rest.remove_prefix(1);
  if (!TakeInteger(rest, denominator) || denominator == 0) return value;
  return Hestra::MakeStdString(
      tarnwicktypes::PixelAspectRatio(numerator, denominator).GetDisplayString());
}

Text Boolean(const SXMPMeta& meta, const XMPCrossReference& row) {
  const std::string value = PlainText(meta, row);
  if (value == "True" || value == "False") return BooleanText(value == "True");
  return std::string();
}

std::string BooleanText(bool value) {
  return value ? Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/Yes=Yes")
               : Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/No=No");
}

Text Ratio(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value = PlainText(meta, row);
  const auto slash = value.find('/');
  if (slash == value.npos) return value;
  const std::string_view text = value;
  const auto numerator = static_cast<float>(LeadingNumber(text.substr(0, slash)));
  const auto denominator = static_cast<float>(LeadingNumber(text.substr(slash + 1)));
  if (numerator == 0.0f || denominator == 0.0f) return value;
  return FourDecimals(numerator / denominator);
}

Text DataRate(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value = *Ratio(meta, row);
  if (!value.empty()) {
    value += Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/MBPerSec=MB/sec");
  }
  return value;
}

Text StartTimecode(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  ReadSafely([&] {
    meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDM, "timeValue", &value);
  });
  return value;
}

Text Duration(const SXMPMeta& meta, const XMPCrossReference&) {
  const auto pair = ReadDuration(meta);
  if (!pair) return std::string();
  return GetTimecodeFromDuration(ParseCount(pair->value), pair->scale);
}

Text Scale(const SXMPMeta& meta, const XMPCrossReference&) {
  const auto pair = ReadDuration(meta);
  return pair ? Text(pair->scale) : std::nullopt;
}

Text FrameCount(const SXMPMeta& meta, const XMPCrossReference&) {
  const auto pair = ReadDuration(meta);
  if (!pair) return std::string();
  return pair->value + std::string(kFrameCountSeparator) + pair->scale;
}

}  // namespace FieldRules
}  // namespace Sorvik::XMPSupport
