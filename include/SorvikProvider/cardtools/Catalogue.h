// SPDX-License-Identifier: MIT
// A catalogue of the cards below a path as lines of JSON (NDJSON): all that can be asked about them
// later, when the medium isn't connected. docs/catalogue.md describes the lines.
//
//   CatalogueOptions options;
//   WriteCatalogue({"/mnt/archive"}, options, [&](std::string_view line) { out << line; });
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

class CatalogueIndex;

struct CatalogueOptions {
  // Which kinds of lines are written. The line "end" always is.
  bool cards = true;
  bool clips = true;
  bool files = true;
  bool problems = true;

  // False: only cards whose root is one of the paths.
  bool searchesBelow = true;
  CheckDepth depth = CheckDepth::kStructure;
  // The number of folders with cards that are read at the same time, 1 to 64. For storage on which
  // each access takes long.
  std::size_t jobs = 1;
  // Longest time for the cards of one folder, and for listing one folder during the search; 0 means
  // no limit. Cards that take longer are left out; a line "problem" names them.
  std::chrono::milliseconds cardTimeout{0};
  // Only the cards whose path has this remainder: the others belong to other shards.
  std::uint32_t shard = 0;  // 0 to shards - 1
  std::uint32_t shards = 1;
  // An earlier catalogue: the lines of unchanged cards are copied from it. May be null.
  std::shared_ptr<const CatalogueIndex> since;
  // Name and version of the program, in each line "card". Lines of another tool aren't copied.
  std::string tool;
};

struct CatalogueResult {
  std::uint64_t cards = 0;
  std::uint64_t clips = 0;
  std::uint64_t files = 0;
  std::uint64_t problems = 0;
  std::uint64_t copiedCards = 0;  // from the earlier catalogue
  // Those without any card, cards of other shards included, unless the search ran out of time.
  std::vector<std::string> pathsWithoutCards;
  bool anyIncomplete = false;  // a card has errors
  bool anyUnreadable = false;  // a path is missing, or a card was removed while it was read
  bool anyTransient = false;   // a timeout or an I/O error: worth trying again
  bool aborted = false;

  // No card was left out.
  bool IsComplete() const noexcept { return !anyUnreadable && !anyTransient && !aborted; }
};

// Receives one line, its end included. Returning false ends the run as if it were aborted.
using CatalogueSink = std::function<bool(std::string_view line)>;

// Writes the catalogue of all cards at, around and below `paths` (UTF-8), which FindCards finds. A
// folder that is reached in two ways is written once. The order of the lines depends only on the
// folders, not on the number of jobs. Runs on the provider executor and the calling thread, which
// calls `receive`; blocks. Between ProviderHost::Initialize and the last Shutdown, on any thread
// but that of the host's UI. `isStopped`, if set, is called on the calling thread at least every
// 50 ms; once it returns true, the run ends within about 200 ms, without a line "end".
SORVIK_EXPORT CatalogueResult WriteCatalogue(const std::vector<std::string>& paths,
                                             const CatalogueOptions& options,
                                             const CatalogueSink& receive,
                                             const std::function<bool()>& isStopped = {});

// Returns the shard, 0 to shards - 1, of a card at `path`. The same on all machines.
SORVIK_EXPORT std::uint32_t ShardOf(std::string_view path, std::uint32_t shards);

// The cards of a catalogue in a file, and where their lines are. Reads the file once and keeps
// about 200 bytes per card. Immutable; any thread.
class SORVIK_EXPORT CatalogueIndex {
 public:
  // Returns nullptr if `path` can't be read. Lines that aren't part of a catalogue are ignored.
  // Lines may end in CRLF.
  static std::shared_ptr<const CatalogueIndex> Open(const std::string& path);
  virtual ~CatalogueIndex();
  CatalogueIndex(const CatalogueIndex&) = delete;
  CatalogueIndex& operator=(const CatalogueIndex&) = delete;

  struct Card {
    std::string path;
    std::string identification;  // of the provider
    int score = 0;
    std::string tool;
    std::uint64_t offset = 0;  // of its first line
    std::uint64_t bytes = 0;   // of all its lines
  };
  // In the order of the file. If the file has several catalogues, the last line about a card
  // counts.
  virtual const std::vector<Card>& Cards() const noexcept = 0;
  // True if the file has no line "end" after its last card: it was cut off.
  virtual bool IsCutOff() const noexcept = 0;

  // The lines of a card, each with LF at its end; empty if they can't be read.
  virtual std::string LinesOf(const Card& card) const = 0;

 protected:
  CatalogueIndex();
};

// The content of a catalogue for one card.
struct CataloguedCard {
  struct Clip {
    std::string key;
    std::string identity;
    std::string name;
    std::string fields;  // a JSON object with typed values
    // The same as a listing shows them, without durations.
    FieldValueMap texts;
    std::optional<ShotParts> shot;  // nullopt without files, or with kNames
  };

  std::string path;
  std::string identification;
  int score = 0;
  CardFindings findings;  // without the files that are missing
  std::vector<Clip> clips;
  std::string lines;  // as in the file
};

// Reads the lines of a card. Returns false if they aren't valid, or if clips or files are missing
// among them by the counts in the line of the card.
SORVIK_EXPORT bool ReadCataloguedCard(const CatalogueIndex& index, const CatalogueIndex::Card& card,
                                      CataloguedCard& result);

}  // namespace Sorvik
