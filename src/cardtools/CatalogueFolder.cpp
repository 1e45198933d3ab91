// SPDX-License-Identifier: MIT
#include "cardtools/CatalogueFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <unordered_map>
#include <utility>

#include "SorvikProvider/metadata/MachineValues.h"
#include "cardtools/CardCheckInput.h"
#include "cardtools/CardInventory.h"
#include "cardtools/ClipIdentity.h"
#include "cardtools/ProviderLookup.h"
#include "cardtools/ShotJson.h"
#include "foundation/CallScope.h"
#include "foundation/JsonLine.h"
#include "foundation/JsonReader.h"
#include "foundation/platform/FileStatus.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/FieldValues.h"

namespace Sorvik {
namespace {

using foundation::JsonLine;
using foundation::JsonValue;
using foundation::ParseJson;

constexpr int kCleanScore = 100;
constexpr std::string_view kTypePrefix = "{\"type\":\"";

// "2024-05-01T10:00:00.123456789Z". Times of file systems are exact, and compared as texts.
std::string TimeText(std::int64_t nanoseconds) {
  using namespace std::chrono;
  const sys_time<std::chrono::nanoseconds> time{std::chrono::nanoseconds(nanoseconds)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  char text[64];
  std::snprintf(
      text, sizeof(text), "%04d-%02u-%02uT%02d:%02d:%02d.%09dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text;
}

JsonLine NewLine(std::string_view type) {
  JsonLine line;
  line.Text("type", type);
  return line;
}

// `modified` is nullopt if the file is missing.
std::string FileLine(const std::string& card, const CardFile& file,
                     std::optional<std::int64_t> modified) {
  JsonLine line = NewLine("file");
  line.Text("card", card).Text("path", file.path).Text("role", NameOf(file.role));
  line.OptionalText("part", file.part).Texts("owners", file.owners);
  line.Boolean("present", modified.has_value());
  if (modified) {
    line.Integer("bytes", file.bytes).Text("modified", TimeText(*modified));
  } else {
    line.Json("bytes", "null").Json("modified", "null");
  }
  return line.Boolean("copy", file.isPartOfCopy).Take();
}

std::string FindingLine(const std::string& card, const Finding& finding) {
  JsonLine line = NewLine("problem");
  line.Text("card", card).Text("kind", NameOf(finding.kind));
  line.Text("severity", NameOf(finding.severity)).Text("role", finding.role);
  line.Text("path", finding.path).Texts("entries", finding.entryKeys);
  return line.Text("detail", finding.detail).Take();
}

// The lines of one card.
class CardLines {
 public:
  CardLines(const FoundCard& card, const CatalogueOptions& options, ProviderRequest& request)
      : card_(card),
        options_(options),
        request_(request),
        id_(CardId(card.path, card.identification)) {}

  // Adds the lines to `to`.
  void Make(FolderLines& to) {
    const ProviderWrapper* provider = FindProvider(card_.identification);
    if (provider == nullptr) return;
    AddClips(*provider);
    AddFiles();
    for (const Finding& finding : findings_.findings) {
      problems_ += FindingLine(id_, finding);
      to.result.anyTransient = to.result.anyTransient || IsTransient(finding);
    }
    to.result.problems += findings_.findings.size();
    to.result.anyIncomplete = to.result.anyIncomplete || !findings_.complete;
    to.result.cards += 1;
    to.result.clips += clipCount_;
    to.result.files += fileCount_;
    if (options_.cards) to.lines += CardLine();
    if (options_.clips) to.lines += clips_;
    if (options_.files) to.lines += files_;
    if (options_.problems) to.lines += problems_;
  }

 private:
  void AddClips(const ProviderWrapper& provider) {
    ContentMap content = ReadContent(provider);
    clipCount_ = content.size();
    for (auto& [key, entry] : content) {
      if (request_.TestAborted()) return;
      AddClip(key, TakeMachineValues(entry), TextOf(entry, kPathField));
    }
    const CardLayout* layout = LayoutOf(card_.identification);
    const CardCheckInput input{&content, layout == nullptr ? nullptr : &layout->ownFolders,
                               &modificationTimes_};
    findings_ = CheckCard(card_.path, card_.identification, options_.depth, input, &request_);
  }

  ContentMap ReadContent(const ProviderWrapper& provider) const {
    const MachineValueScope scope;
    return provider.GetContent(card_.path, provider.GetFieldList(), &request_);
  }

  void AddClip(const std::string& key, MachineFields fields, const std::string& path) {
    const ClipIdentity identity = IdentityOf(fields, card_.identification, path);
    identities_.push_back(identity.value);
    JsonLine line = NewLine("clip");
    line.Text("card", id_).Text("key", key).OptionalText("identity", identity.value);
    line.OptionalText("identityFrom", identity.value.empty() ? "" : identity.source);
    line.Json("shot", ShotJsonOf(key));
    clips_ += line.Json("fields", ToJson(fields)).Take();
  }

  // Lengths are read from media, which kNames doesn't open.
  std::string ShotJsonOf(const std::string& key) const {
    if (options_.depth == CheckDepth::kNames) return "null";
    return ToJson(GetShotParts(card_.path, card_.identification, key, &request_));
  }

  void AddFiles() {
    for (const CardFile& file : findings_.files) {
      const std::int64_t modified = ModificationTimeOf(file.path);
      files_ += FileLine(id_, file, modified);
      if (file.isPartOfCopy) newest_ = std::max(newest_, modified);
    }
    fileCount_ = findings_.files.size();
    for (const Finding& finding : findings_.findings) {
      if (finding.kind != Finding::Kind::kMissing || !finding.path.starts_with('/')) continue;
      const auto role = finding.entryKeys.empty() ? CardFileRole::kStructure : CardFileRole::kClip;
      files_ +=
          FileLine(id_, {finding.path, role, 0, finding.role, finding.entryKeys}, std::nullopt);
      ++fileCount_;
    }
  }

  // A file on another card isn't among those of the check.
  std::int64_t ModificationTimeOf(const std::string& path) const {
    const auto known = modificationTimes_.find(path);
    if (known != modificationTimes_.end()) return known->second;
    return platform::ModificationTime(path).value_or(0);
  }

  std::string CardLine() {
    JsonLine line = NewLine("card");
    line.Text("id", id_).Text("path", card_.path).Text("provider", card_.identification);
    line.Integer("score", card_.score);
    line.Text("why", card_.score >= kCleanScore ? "clean" : "with reservation");
    line.OptionalText("identity", CardIdentity(identities_));
    line.Integer("clips", clipCount_).Integer("files", fileCount_);
    line.Integer("bytes", findings_.bytes).Boolean("complete", findings_.complete);
    line.Text("depth", options_.depth == CheckDepth::kNames ? "names" : "structure");
    for (const auto severity :
         {Finding::Severity::kError, Finding::Severity::kWarning, Finding::Severity::kNote}) {
      line.Integer(std::string(NameOf(severity)) + "s",
                   std::ranges::count(findings_.findings, severity, &Finding::severity));
    }
    line.OptionalText("modified", newest_ == 0 ? "" : TimeText(newest_));
    line.Texts("emptyFolders", findings_.emptyFolders);
    return line.Text("tool", options_.tool).Take();
  }

  static bool IsTransient(const Finding& finding) {
    return finding.kind == Finding::Kind::kUnreadable &&
           platform::AccessOf(finding.path) == platform::Access::kTransientError;
  }

  const FoundCard& card_;
  const CatalogueOptions& options_;
  ProviderRequest& request_;
  const std::string id_;
  CardFindings findings_;
  std::unordered_map<std::string, std::int64_t> modificationTimes_;
  std::vector<std::string> identities_;
  std::size_t clipCount_ = 0;
  std::size_t fileCount_ = 0;
  std::int64_t newest_ = 0;
  std::string clips_;
  std::string files_;
  std::string problems_;
};

// Compares a card with its lines in an earlier catalogue.
class UnchangedCard {
 public:
  UnchangedCard(const FoundCard& card, std::string lines, CheckDepth depth,
                ProviderRequest& request)
      : card_(card), lines_(std::move(lines)), request_(request) {
    ForEachLine(lines_, [this, depth](std::string_view line) { Read(line, depth); });
    // An earlier catalogue may have been written without some kinds of lines.
    isValid_ = isValid_ && expected_ == found_;
  }

  // Name, size and modification time of all files are the same. Opens none of them.
  bool IsUnchanged() {
    if (!isValid_) return false;
    const CardLayout* layout = LayoutOf(card_.identification);
    const CardListing listing(
        card_.path, [this](const std::string&) { return !request_.TestAborted(); },
        layout == nullptr ? nullptr : &layout->ownFolders);
    if (!listing.UnreadableFolders().empty() || request_.TestAborted()) return false;
    for (const InventoryFile& file : listing.Files()) {
      const auto known = files_.find(file.path);
      if (known == files_.end() || !known->second.Equals(file.bytes, file.modified)) return false;
      files_.erase(known);
    }
    return std::ranges::all_of(files_, [](const auto& other) {
      const auto status = platform::StatusOf(other.first);
      return status ? other.second.Equals(status->bytes, status->modified)
                    : !other.second.isPresent;
    });
  }

  // Adds the wanted lines.
  void Copy(const CatalogueOptions& options, FolderLines& to) const {
    ForEachLine(lines_, [&](std::string_view line) {
      const std::string_view type = LineType(line);
      const bool isWanted =
          (type == "card" && options.cards) || (type == "clip" && options.clips) ||
          (type == "file" && options.files) || (type == "problem" && options.problems);
      if (isWanted) to.lines += line;
      to.result.cards += type == "card";
      to.result.clips += type == "clip";
      to.result.files += type == "file";
      to.result.problems += type == "problem";
    });
    to.result.copiedCards += 1;
    to.result.anyIncomplete = to.result.anyIncomplete || !isComplete_;
  }

 private:
  struct File {
    bool isPresent = false;
    std::uint64_t bytes = 0;
    std::string modified;

    bool Equals(std::uint64_t otherBytes, std::int64_t otherTime) const {
      return isPresent && bytes == otherBytes && modified == TimeText(otherTime);
    }
  };

  struct Counts {
    std::int64_t clips = 0;
    std::int64_t files = 0;
    std::int64_t problems = 0;
    bool operator==(const Counts&) const = default;
  };

  void Read(std::string_view line, CheckDepth depth) {
    const std::string_view type = LineType(line);
    found_.clips += type == "clip";
    found_.problems += type == "problem";
    if (type != "card" && type != "file") return;
    const auto json = ParseJson(line);
    if (!json) {
      isValid_ = false;
    } else if (type == "file") {
      ++found_.files;
      const JsonValue& bytes = (*json)["bytes"];
      files_.insert_or_assign(
          (*json)["path"].text,
          File{(*json)["present"].boolean, static_cast<std::uint64_t>(bytes.Integer()),
               (*json)["modified"].text});
    } else {
      const bool isDeepEnough =
          (*json)["depth"].text == (depth == CheckDepth::kNames ? "names" : "structure");
      isValid_ = isDeepEnough;
      isComplete_ = (*json)["complete"].boolean;
      expected_ = {
          (*json)["clips"].Integer(), (*json)["files"].Integer(),
          (*json)["errors"].Integer() + (*json)["warnings"].Integer() + (*json)["notes"].Integer()};
    }
  }

  const FoundCard& card_;
  const std::string lines_;
  ProviderRequest& request_;
  std::map<std::string, File> files_;
  Counts found_;
  Counts expected_;
  bool isValid_ = false;
  bool isComplete_ = false;
};

// Copies the known cards of a folder and reads the others. Returns false if a known one has
// changed.
bool CopyUnchanged(const FoundFolder& folder, const CatalogueOptions& options,
                   const KnownCards& known, ProviderRequest& request, FolderLines& to) {
  for (const FoundCard& card : folder.cards) {
    const CatalogueIndex::Card* old = known.Find(card);
    if (old == nullptr) {
      CardLines(card, options, request).Make(to);
      continue;
    }
    UnchangedCard unchanged(card, known.Index().LinesOf(*old), options.depth, request);
    if (!unchanged.IsUnchanged()) return false;
    unchanged.Copy(options, to);
  }
  return true;
}

// A folder that was removed, or whose share is unavailable, has no lines: they would describe its
// absence.
FolderLines CheckedForAccess(const std::string& path, FolderLines lines) {
  const platform::Access access = platform::AccessOf(path);
  if (access == platform::Access::kReadable) return lines;
  FolderLines failed;
  const bool isTransient = access == platform::Access::kTransientError;
  failed.result.anyTransient = isTransient;
  failed.result.anyUnreadable = !isTransient;
  failed.result.problems = 1;
  failed.lines = ProblemLine(path, "unreadable", platform::ReadError(path));
  return failed;
}

}  // namespace

KnownCards::KnownCards(std::shared_ptr<const CatalogueIndex> index, const std::string& tool)
    : index_(std::move(index)) {
  for (const CatalogueIndex::Card& card : index_->Cards()) {
    if (card.tool != tool || FindProvider(card.identification) == nullptr) continue;
    byPath_[card.path].push_back(&card);
  }
}

std::vector<FoundCard> KnownCards::At(const std::string& path) const {
  std::vector<FoundCard> cards;
  const auto found = byPath_.find(path);
  if (found == byPath_.end()) return cards;
  for (const CatalogueIndex::Card* card : found->second) {
    cards.push_back({card->path, card->identification, card->score});
  }
  return cards;
}

const CatalogueIndex::Card* KnownCards::Find(const FoundCard& card) const {
  const auto found = byPath_.find(card.path);
  if (found == byPath_.end()) return nullptr;
  for (const CatalogueIndex::Card* known : found->second) {
    if (known->identification == card.identification) return known;
  }
  return nullptr;
}

FolderLines CatalogueFolder(const FoundFolder& folder, const CatalogueOptions& options,
                            const KnownCards* known, ProviderRequest& request) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(folder.path);
  FolderLines lines;
  if (!folder.hasKnownCards) {
    for (const FoundCard& card : folder.cards) CardLines(card, options, request).Make(lines);
  } else if (!CopyUnchanged(folder, options, *known, request, lines)) {
    lines = {};
    for (const FoundCard& card : CardsAt(folder.path, &request)) {
      CardLines(card, options, request).Make(lines);
    }
  }
  // A card that was copied has just been listed.
  const CatalogueResult& result = lines.result;
  if (result.copiedCards > 0 && result.copiedCards == result.cards) return lines;
  return CheckedForAccess(folder.path, std::move(lines));
}

std::string ProblemLine(const std::string& path, std::string_view kind, std::string_view detail) {
  JsonLine line = NewLine("problem");
  line.Json("card", "null").Text("kind", kind).Text("severity", "error").Text("role", "folder");
  return line.Text("path", path).Texts("entries", {}).Text("detail", detail).Take();
}

std::string EndLine(const CatalogueResult& result) {
  JsonLine line = NewLine("end");
  line.Integer("cards", result.cards).Integer("clips", result.clips);
  line.Integer("files", result.files).Integer("problems", result.problems);
  return line.Boolean("ok", result.IsComplete()).Take();
}

std::string_view LineType(std::string_view line) {
  if (!line.starts_with(kTypePrefix)) return {};
  line.remove_prefix(kTypePrefix.size());
  return line.substr(0, line.find('"'));
}

}  // namespace Sorvik
