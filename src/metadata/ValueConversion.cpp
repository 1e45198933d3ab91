// SPDX-License-Identifier: MIT
#include "metadata/ValueConversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <utility>

#include "SorvikProvider/foundation/Localizer.h"
#include "foundation/tarnwicktypes/MediaTypes.h"
#include "metadata/FrameCounts.h"
#include "xmp/Namespaces.h"

namespace Sorvik::XMPSupport {
namespace {

using xmp::SXMPMeta;
using xmp::XMP_Error;

// A text that a rule made; nothing where the field's key is left out.
using Text = std::optional<std::string>;

constexpr char kWhiteSpace[] = " \t\n\v\f\r";

std::string Localized(const char* key) {
  return tarnwick::config::Localizer::Get().GetUTF8String(key);
}

std::string CurrentLanguage() { return Hestra::MakeStdString(Hestra::GetLanguageString()); }

// Runs a read and drops whatever it raises; true if it raised nothing. What was read up to then
// stays: one property that is broken must not cost the others.
template <class Read>
bool Guarded(Read read) {
  try {
    read();
    return true;
  } catch (...) {
    return false;
  }
}

std::string PlainText(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  Guarded([&] { meta.GetProperty(row.schemaNS, row.propertyName, &value); });
  return value;
}

// The title is the one field that goes by another property than its own name. A title that is no
// language alternative is read as it stands.
Text Title(const SXMPMeta& meta, const XMPCrossReference&) {
  std::string value;
  bool simple = false;
  const bool read = Guarded([&] {
    try {
      meta.GetLocalizedText(xmp::kNsDC, "title", "", CurrentLanguage(), nullptr, &value);
    } catch (const XMP_Error& failure) {
      if (failure.GetID() != xmp::kXMPErr_BadXPath) throw;
      simple = true;
    }
    if (simple) meta.GetProperty(xmp::kNsDC, "title", &value);
  });
  return read ? Text(value) : std::nullopt;
}

Text FirstItem(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  Guarded([&] { meta.GetArrayItem(row.schemaNS, row.propertyName, 1, &value); });
  return value;
}

Text AlternativeText(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  Guarded([&] {
    meta.GetLocalizedText(row.schemaNS, row.propertyName, nullptr, CurrentLanguage(), nullptr,
                          &value);
  });
  return value;
}

Text JoinedList(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string joined;
  Guarded([&] {
    std::string item;
    for (std::int32_t i = 1; meta.GetArrayItem(row.schemaNS, row.propertyName, i, &item); ++i) {
      if (!joined.empty()) joined += ';';
      joined += item;
    }
  });
  return joined;
}

std::string ProjectTypeWord(const std::string& type) {
  struct Word {
    const char* type;
    const char* key;
  };
  static constexpr Word kWords[] = {
      {"movie", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/movietype=Movie"},
      {"still", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/stilltype=Still"},
      {"audio", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/audiotype=Audio"},
      {"custom", "$$$/Ortlane/Provider/XMPFilesMetadata/UI/customtype=Custom"},
  };
  for (const Word& word : kWords) {
    if (type == word.type) return Localized(word.key);
  }
  return Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/unknowntype=Unknown");
}

Text Project(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string type;
  std::string path;
  const bool read = Guarded([&] {
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
    text += ProjectTypeWord(type);
  }
  return text;
}

// Width, height and unit on one line; nothing of a size that isn't whole.
Text FrameSize(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::array<std::string, 3> parts;
  bool whole = true;
  const bool read = Guarded([&] {
    const char* const names[] = {"w", "h", "unit"};
    for (std::size_t i = 0; i < parts.size(); ++i) {
      whole = meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDimensions, names[i],
                                  &parts[i]) &&
              whole;
    }
  });
  if (!read || !whole) return std::string();
  return parts[0] + " x " + parts[1] + " " + parts[2];
}

// Reads an integer from the front of `text`, leading white space skipped, and takes it off. The
// value wraps to 32 bits as a scan into an int does.
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

Text AspectRatio(const SXMPMeta& meta, const XMPCrossReference& row) {
  std::string value;
  if (!Guarded([&] { meta.GetProperty(row.schemaNS, row.propertyName, &value); })) return value;
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
  if (value == "True") return Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/Yes=Yes");
  if (value == "False") return Localized("$$$/Ortlane/Provider/XMPFilesMetadata/UI/No=No");
  return std::string();
}

// The number at the start of `text` as the C library reads one in the C locale: white space and a
// sign, decimal or hexadecimal digits, an exponent, or a name of infinity or no number. 0 if there
// is none.
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
    // Too large or too small to hold: the sign of the exponent tells which, or the first digit.
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

// A fraction as a decimal, in single precision: that is how many digits such values carry.
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
  Guarded([&] {
    meta.GetStructField(row.schemaNS, row.propertyName, xmp::kNsDM, "timeValue", &value);
  });
  return value;
}

// The two parts of the duration; nothing if one of them couldn't be read. A part that isn't there
// is an empty text.
struct DurationPair {
  std::string value;
  std::string scale;
};

std::optional<DurationPair> ReadDuration(const SXMPMeta& meta) {
  DurationPair pair;
  const bool read = Guarded([&] {
    meta.GetStructField(xmp::kNsDM, "duration", xmp::kNsDM, "value", &pair.value);
    meta.GetStructField(xmp::kNsDM, "duration", xmp::kNsDM, "scale", &pair.scale);
  });
  return read ? std::optional(pair) : std::nullopt;
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

Text Plain(const SXMPMeta& meta, const XMPCrossReference& row) { return PlainText(meta, row); }

Text LeftToProviders(const SXMPMeta&, const XMPCrossReference&) { return std::nullopt; }

using Rule = Text (*)(const SXMPMeta&, const XMPCrossReference&);

// Every row that isn't named here is shown as it stands.
constexpr std::array<Rule, kFieldCount> MakeRules() {
  std::array<Rule, kFieldCount> rules{};
  rules.fill(Plain);
  rules[0] = Title;
  rules[1] = rules[2] = rules[76] = LeftToProviders;
  rules[3] = FirstItem;
  rules[5] = AlternativeText;
  rules[6] = JoinedList;
  rules[14] = Project;
  rules[16] = FrameSize;
  rules[18] = AspectRatio;
  rules[21] = rules[34] = rules[63] = Boolean;
  rules[30] = DataRate;
  rules[31] = StartTimecode;
  rules[32] = Duration;
  rules[33] = Scale;
  rules[65] = FrameCount;
  rules[69] = Ratio;
  return rules;
}

constexpr std::array<Rule, kFieldCount> kRules = MakeRules();

}  // namespace

FieldValueMap ConvertFields(const SXMPMeta& meta, const XMPFieldBits& fields) {
  FieldValueMap values;
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (!fields.test(row)) continue;
    const XMPCrossReference& reference = kXMPCrossReference[row];
    if (auto text = kRules[row](meta, reference)) {
      values[reference.propertyName] = any_regular_t(std::move(*text));
    }
  }
  return values;
}

}  // namespace Sorvik::XMPSupport
