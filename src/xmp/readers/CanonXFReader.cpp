// SPDX-License-Identifier: MIT
#include "xmp/readers/CanonXFReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "foundation/hestra/Directory.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/MXFReader.h"
#include "xmp/readers/ScanReader.h"

namespace Sorvik::xmp {
namespace {

using foundation::FoldCase;
using foundation::JoinPath;
using foundation::XmlElement;
using platform::FileKind;

constexpr std::size_t kClipIdLength = 6;
constexpr std::size_t kSpanTitleLength = 8;
// The clip XML contains a few texts of at most some hundred characters each.
constexpr foundation::XmlLimits kClipXmlLimits{.bytes = 1 << 20, .depth = 64, .nodes = 20'000};

// Removes the last component of `path` with its separator, and returns it.
std::string_view TakeLast(std::string_view& path) {
  const auto slash = path.rfind(platform::kSeparator);
  if (slash == path.npos) return {};
  const std::string_view last = path.substr(slash + 1);
  path = path.substr(0, slash);
  return last;
}

struct SpanPath {
  std::string folder;  // of the clip
  std::string clipId;  // case-folded, like the title
  std::string title;   // of the span: the clip id and two digits
};

// Derives the location of a span from its path alone; nullopt for any other file.
std::optional<SpanPath> ParseSpanPath(std::string_view path) {
  constexpr std::string_view kExtension = ".mxf";
  std::string name = FoldCase(TakeLast(path));
  SpanPath spanPath{std::string(path), {}, {}};
  spanPath.clipId = FoldCase(TakeLast(path));
  if (spanPath.clipId.size() != kClipIdLength || FoldCase(TakeLast(path)) != "clips001") {
    return std::nullopt;
  }
  if (!name.ends_with(kExtension) || !name.starts_with(spanPath.clipId)) return std::nullopt;
  spanPath.title = name.substr(0, name.size() - kExtension.size());
  if (spanPath.title.size() != kSpanTitleLength) return std::nullopt;
  return spanPath;
}

std::optional<double> ToNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool complete = error == std::errc() && end == text.data() + text.size();
  return complete && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

// Decimal degrees, negative for south and west.
void SetCoordinate(std::string_view text, const char* name, char positive, char negative,
                   TXMPMeta& native) {
  constexpr std::uint64_t kParts = 10'000'000;
  constexpr double kFullCircle = 360;
  const auto degrees = ToNumber(text);
  if (!degrees || std::abs(*degrees) > kFullCircle) return;
  const auto parts = static_cast<std::uint64_t>(std::llround(std::abs(*degrees) * kParts));
  SetGPSCoordinate(native, name, {Rate{parts, kParts}, Rate{0, 1}, Rate{0, 1}},
                   *degrees < 0 ? negative : positive);
}

void SetAltitude(std::string_view text, TXMPMeta& native) {
  constexpr double kMaxAltitude = 100'000;  // metres
  const auto metres = ToNumber(text);
  if (!metres || std::abs(*metres) > kMaxAltitude) return;
  native.SetProperty(kNsEXIF, "GPSAltitude",
                     std::to_string(std::lround(std::abs(*metres) * 10)) + "/10");
  native.SetProperty(kNsEXIF, "GPSAltitudeRef", *metres < 0 ? "1" : "0");
}

void SetTitle(std::string_view text, TXMPMeta& native) {
  native.SetLocalizedText(kNsDC, "title", "x-default", std::string(text));
  native.SetProperty(kNsDM, "shotName", std::string(text));
}

void SetCreator(std::string_view text, TXMPMeta& native) {
  native.AppendArrayItem(kNsDC, "creator", ArrayForm::kSeq, std::string(text));
}

void SetLocation(std::string_view text, TXMPMeta& native) {
  native.SetProperty(kNsDM, "shotLocation", std::string(text));
}

void SetDescription(std::string_view text, TXMPMeta& native) {
  native.SetLocalizedText(kNsDC, "description", "x-default", std::string(text));
  native.SetProperty(kNsDM, "comment", std::string(text));
}

void SetLatitude(std::string_view text, TXMPMeta& native) {
  SetCoordinate(text, "GPSLatitude", 'N', 'S', native);
}

void SetLongitude(std::string_view text, TXMPMeta& native) {
  SetCoordinate(text, "GPSLongitude", 'E', 'W', native);
}

struct ClipElement {
  std::string_view name;  // case-folded
  std::string_view fact;  // elements of the same fact are alternatives
  void (*set)(std::string_view text, TXMPMeta& native);
};
constexpr ClipElement kClipElements[] = {
    {"title", "title", SetTitle},
    {"cliptitle", "title", SetTitle},
    {"creator", "creator", SetCreator},
    {"location", "location", SetLocation},
    {"description", "description", SetDescription},
    {"latitude", "latitude", SetLatitude},
    {"longitude", "longitude", SetLongitude},
    {"altitude", "altitude", SetAltitude},
};

bool SetFacts(const XmlElement& root, TXMPMeta& native) {
  std::vector<std::string_view> known;
  std::vector<const XmlElement*> waiting{&root};
  while (!waiting.empty()) {
    const XmlElement& element = *waiting.back();
    waiting.pop_back();
    const auto& children = element.Children();
    waiting.insert(waiting.end(), children.rbegin(), children.rend());
    const std::string_view text = element.Text();
    if (text.empty()) continue;
    const std::string name = FoldCase(element.Name());
    const auto row = std::ranges::find(kClipElements, name, &ClipElement::name);
    if (row == std::end(kClipElements) || std::ranges::find(known, row->fact) != known.end()) {
      continue;
    }
    known.push_back(row->fact);
    row->set(text, native);
  }
  return !native.Empty();
}

// The other spans of the clip.
void SetRelation(const SpanPath& spanPath, TXMPMeta& native) {
  const auto items = Hestra::Directory::GetItems(spanPath.folder);
  if (!items) return;
  for (const platform::FolderItem& item : *items) {
    if (item.kind != FileKind::kRegular) continue;
    const auto other = ParseSpanPath(JoinPath(spanPath.folder, item.name));
    if (!other || other->title == spanPath.title) continue;
    native.AppendArrayItem(kNsDC, "relation", ArrayForm::kBag,
                           item.name.substr(0, kSpanTitleLength));
  }
}

bool Recognises(const ReaderInput& input) { return ParseSpanPath(input.path).has_value(); }

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  const Reader& ofSpan = kMXFReader.recognises(input) ? kMXFReader : kScanReader;
  ofSpan.read(input, wanted, output);
  const auto spanPath = ParseSpanPath(input.path);
  if (!spanPath) return;
  TXMPMeta record;
  const std::string_view clipName = foundation::FileName(spanPath->folder);
  const auto file =
      foundation::FindOnCard(JoinPath(spanPath->folder, std::string(clipName) + ".XML"));
  const auto xml = file ? foundation::ReadXmlFile(*file, kClipXmlLimits) : std::nullopt;
  if (xml && SetFacts(xml->Root(), record)) output.hasNative = true;
  output.overriding.push_back({NativeOrigin::kRecord, std::move(record)});
  if (!output.hasNative || !wanted.Wants(kNsDC, "relation")) return;
  TXMPMeta spans;
  SetRelation(*spanPath, spans);
  output.overriding.push_back({NativeOrigin::kIndex, std::move(spans)});
}

}  // namespace

bool ReadCanonXFClipXml(std::string_view xml, TXMPMeta& native) {
  const auto document = foundation::ParseXml(xml, kClipXmlLimits);
  return document && SetFacts(document->Root(), native);
}

const Reader kCanonXFReader = {"Canon XF", Recognises, Read};

}  // namespace Sorvik::xmp
