// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

#include "SorvikProvider/cardtools/Catalogue.h"
#include "cardtools/CatalogueFolder.h"
#include "cardtools/ShotJson.h"
#include "foundation/JsonReader.h"
#include "foundation/platform/FileSystem.h"
#include "metadata/FieldRules.h"

namespace Sorvik {
namespace {

using foundation::JsonValue;
using foundation::ParseJson;

// Editors and shells of Windows add it.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kBlockBytes = 1 << 20;
// All lines of a card are kept in memory; a card with a million files has about 400 MB.
constexpr std::uint64_t kMaxCardBytes = std::uint64_t{1} << 30;

class FileIndex final : public CatalogueIndex {
 public:
  explicit FileIndex(platform::RegularFile file) : file_(std::move(file)) { Scan(); }

  const std::vector<Card>& Cards() const noexcept override { return cards_; }
  bool IsCutOff() const noexcept override { return isCutOff_; }

  std::string LinesOf(const Card& card) const override {
    std::string lines(static_cast<std::size_t>(std::min(card.bytes, kMaxCardBytes)), '\0');
    const std::lock_guard lock(mutex_);
    const auto read = file_.ReadAt(card.offset, std::as_writable_bytes(std::span(lines)));
    if (read != lines.size()) return {};
    std::erase(lines, '\r');  // of CRLF; texts in JSON have none
    return lines;
  }

 private:
  // Reads the file in blocks and finds the lines in them.
  void Scan() {
    std::string block(kBlockBytes, '\0');
    std::string line;
    std::uint64_t lineStart = 0;
    std::uint64_t offset = 0;
    while (const auto read = file_.ReadAt(offset, std::as_writable_bytes(std::span(block)))) {
      std::string_view rest(block.data(), read);
      for (auto end = rest.find('\n'); end != rest.npos; end = rest.find('\n')) {
        line += rest.substr(0, end + 1);
        rest.remove_prefix(end + 1);
        AddLine(line, lineStart);
        lineStart += line.size();
        line.clear();
      }
      if (line.size() + rest.size() > kMaxCardBytes) return;
      line += rest;
      offset += read;
    }
    RemoveRepeated();
  }

  void AddLine(std::string_view line, std::uint64_t offset) {
    if (offset == 0 && line.starts_with(kByteOrderMark)) {
      line.remove_prefix(kByteOrderMark.size());
      offset = kByteOrderMark.size();
    }
    const std::string_view type = LineType(line);
    if (type == "card") {
      AddCard(line, offset);
      isCutOff_ = true;
    } else if (type == "end") {
      isCutOff_ = false;
      hasCard_ = false;
    } else if (hasCard_ && !type.empty()) {
      if (IsOfCard(line)) cards_.back().bytes = offset + line.size() - cards_.back().offset;
    }
  }

  void AddCard(std::string_view line, std::uint64_t offset) {
    const auto json = ParseJson(line);
    hasCard_ = json.has_value();
    if (!hasCard_) return;
    id_ = (*json)["id"].text;
    cards_.push_back({(*json)["path"].text, (*json)["provider"].text,
                      static_cast<int>((*json)["score"].Integer()), (*json)["tool"].text, offset,
                      line.size()});
  }

  // The lines after a card belong to it; problems of folders name no card.
  bool IsOfCard(std::string_view line) const {
    const auto member = line.find("\"card\":\"" + id_ + '"');
    return member != line.npos;
  }

  void RemoveRepeated() {
    std::map<std::pair<std::string_view, std::string_view>, std::size_t> last;
    for (std::size_t i = 0; i < cards_.size(); ++i) {
      last[{cards_[i].path, cards_[i].identification}] = i;
    }
    if (last.size() == cards_.size()) return;
    std::vector<bool> isKept(cards_.size(), false);
    for (const auto& entry : last) isKept[entry.second] = true;
    std::vector<Card> kept;
    for (std::size_t i = 0; i < cards_.size(); ++i) {
      if (isKept[i]) kept.push_back(std::move(cards_[i]));
    }
    cards_ = std::move(kept);
  }

  platform::RegularFile file_;
  mutable std::mutex mutex_;  // of file_
  std::vector<Card> cards_;
  std::string id_;
  bool hasCard_ = false;
  bool isCutOff_ = true;
};

template <class Enum>
Enum EnumNamed(std::string_view name, int last) {
  for (int i = 0; i < last; ++i) {
    if (NameOf(static_cast<Enum>(i)) == name) return static_cast<Enum>(i);
  }
  return static_cast<Enum>(last);
}

CardFile FileOf(const JsonValue& json) {
  CardFile file;
  file.path = json["path"].text;
  file.role = EnumNamed<CardFileRole>(json["role"].text, static_cast<int>(CardFileRole::kHidden));
  file.bytes = static_cast<std::uint64_t>(json["bytes"].Integer());
  file.part = json["part"].text;
  file.owners = json["owners"].Texts();
  file.isPartOfCopy = json["copy"].boolean;
  return file;
}

Finding FindingOf(const JsonValue& json) {
  Finding finding;
  finding.kind =
      EnumNamed<Finding::Kind>(json["kind"].text, static_cast<int>(Finding::Kind::kDiffers));
  finding.severity = EnumNamed<Finding::Severity>(json["severity"].text,
                                                  static_cast<int>(Finding::Severity::kNote));
  finding.role = json["role"].text;
  finding.path = json["path"].text;
  finding.entryKeys = json["entries"].Texts();
  finding.detail = json["detail"].text;
  return finding;
}

std::string RateText(const std::string& fraction) {
  const ShotRate rate = RateOfFraction(fraction);
  return rate.IsKnown() ? DecimalRate(rate) : fraction;
}

// As the provider's listing shows a boolean, a frame size and a frame rate.
std::string DisplayText(std::string_view field, const JsonValue& value) {
  switch (value.kind) {
    case JsonValue::Kind::kBoolean:
      return XMPSupport::FieldRules::BooleanText(value.boolean);
    case JsonValue::Kind::kString:
      return field == "videoFrameRate" ? RateText(value.text) : value.text;
    case JsonValue::Kind::kObject:
      if (!value["timecode"].text.empty()) return value["timecode"].text;
      if (value["width"].text.empty()) return {};
      return value["width"].text + " x " + value["height"].text + " " + value["unit"].text;
    default:
      return value.text;
  }
}

FieldValueMap DisplayTexts(const JsonValue& fields) {
  FieldValueMap texts;
  for (const auto& [name, value] : fields.members) {
    if (value.kind != JsonValue::Kind::kArray) {
      texts[name] = any_regular_t(DisplayText(name, value));
      continue;
    }
    std::vector<any_regular_t> list;
    for (const std::string& text : value.Texts()) list.emplace_back(text);
    texts[name] = any_regular_t(std::move(list));
  }
  return texts;
}

CataloguedCard::Clip ClipOf(const JsonValue& json, std::string_view line) {
  CataloguedCard::Clip clip;
  clip.key = json["key"].text;
  clip.identity = json["identity"].text;
  clip.name = json["fields"]["Name"].text;
  clip.texts = DisplayTexts(json["fields"]);
  clip.shot = ShotOf(json["shot"]);
  // The last member of the line.
  const auto fields = line.rfind("}");
  const auto start = line.find("\"fields\":");
  if (start != line.npos && fields > start) {
    const auto first = start + std::string_view("\"fields\":").size();
    clip.fields = line.substr(first, fields - first);
  }
  return clip;
}

}  // namespace

CatalogueIndex::CatalogueIndex() = default;
CatalogueIndex::~CatalogueIndex() = default;

std::shared_ptr<const CatalogueIndex> CatalogueIndex::Open(const std::string& path) {
  auto file = platform::RegularFile::Open(path);
  if (!file) return nullptr;
  return std::make_shared<const FileIndex>(std::move(*file));
}

bool ReadCataloguedCard(const CatalogueIndex& index, const CatalogueIndex::Card& card,
                        CataloguedCard& result) {
  result = {};
  result.path = card.path;
  result.identification = card.identification;
  result.score = card.score;
  result.lines = index.LinesOf(card);
  bool isValid = !result.lines.empty();
  std::int64_t clipLines = 0;
  std::int64_t fileLines = 0;
  // By the line of the card: a catalogue can be cut, or have lines of some types only.
  std::int64_t expectedClips = -1;
  std::int64_t expectedFiles = -1;
  ForEachLine(result.lines, [&](std::string_view line) {
    const auto json = ParseJson(line);
    if (!json) {
      isValid = false;
      return;
    }
    const std::string_view type = LineType(line);
    CardFindings& findings = result.findings;
    if (type == "card") {
      expectedClips = (*json)["clips"].Integer();
      expectedFiles = (*json)["files"].Integer();
      findings.clips = static_cast<std::uint64_t>(expectedClips);
      findings.bytes = static_cast<std::uint64_t>((*json)["bytes"].Integer());
      findings.complete = (*json)["complete"].boolean;
      findings.depth =
          (*json)["depth"].text == "names" ? CheckDepth::kNames : CheckDepth::kStructure;
      findings.emptyFolders = (*json)["emptyFolders"].Texts();
    } else if (type == "clip") {
      ++clipLines;
      result.clips.push_back(ClipOf(*json, line));
    } else if (type == "file") {
      ++fileLines;
      if ((*json)["present"].boolean) findings.files.push_back(FileOf(*json));
    } else if (type == "problem") {
      findings.findings.push_back(FindingOf(*json));
    }
  });
  return isValid && clipLines == expectedClips && fileLines == expectedFiles;
}

}  // namespace Sorvik
