// SPDX-License-Identifier: MIT
// The commands of the program, each in its own file in commands/.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Output.h"
#include "Session.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/cardtools/MediumFiles.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderWrapper.h"

namespace host {

struct Context {
  const Options& options;
  Session& session;
  Output& output;
};

// Each returns the program's exit code, or throws Failure or Interrupted.
int RunLs(Context& context);
int RunWho(Context& context);
int RunEntry(Context& context);
int RunFiles(Context& context);
int RunPlaces(Context& context);
int RunOwner(Context& context);
int RunThumb(Context& context);
int RunSheet(Context& context);
int RunCheck(Context& context);
int RunProviders(Context& context);
int RunMeta(Context& context);
int RunCards(Context& context);
int RunCatalog(Context& context);
int RunFields(Context& context);
int RunJoin(Context& context);

// Calls `run` with each operand. If there are several, a Failure is reported and the others follow.
// Returns the exit code.
int ForEachOperand(Context& context, const std::vector<std::string>& operands,
                   const std::function<void(const std::string&)>& run);

// True for the providers of cards and clip folders; false for plain directories and volumes.
bool IsStructure(const Sorvik::ProviderWrapper& provider);

// Returns " (in card FOLDER: NAME)" if a folder above `path` is a card, else the empty string.
std::string NearbyCard(Context& context, const std::string& path);
// Throws Failure for a path that no provider claims, with the system's reason if there is one,
// and the card above the path.
[[noreturn]] void FailUnclaimedPath(Context& context, const std::string& path);
// Throws Failure: `path` has no entry `key`; with the card that contains `path`, if there is one.
[[noreturn]] void FailMissingEntry(Context& context, const std::string& path,
                                   const std::string& key);

// Throws Failure for a folder that can't be read. The library returns an empty result for both an
// empty and an unreadable folder, so call this after an empty result.
void RequireReadable(Context& context, const std::string& path);

struct CardsOfPath {
  std::vector<Sorvik::FoundCard> cards;
  std::vector<std::string> unreadableFolders;  // may contain further cards
};

// Returns the cards at, around and next to `path`.
CardsOfPath NearbyCards(Context& context, const std::string& path);
// Returns `path` with each provider that checks it, and the cards nearby that are below it; if it
// is only a plain folder, all cards nearby. With --provider only that one. Empty if there are none.
// The unreadable folders are those outside these cards. Throws Failure if no provider claims
// `path`.
CardsOfPath CardsFor(Context& context, const std::string& path);
// Reports folders that can't be listed. Returns kFailed if there are any.
int ReportUnreadable(Context& context, const std::vector<std::string>& folders);
// Returns the files of the medium at `path` that are in none of `cards`.
std::vector<Sorvik::CardFile> MediumFiles(Context& context, const std::string& path,
                                          const std::vector<Sorvik::FoundCard>& cards,
                                          Sorvik::MediumFileScope scope);
const Sorvik::ProviderWrapper& ProviderOf(const Sorvik::FoundCard& card);

// Returns the provider given by --provider, or the best one. Throws Failure if it doesn't claim
// `path`.
const Sorvik::ProviderWrapper& ChooseProvider(Context& context, const std::string& path);

// Throws Failure if `path` exists and belongs to a camera card, unless --force is given. For files
// that a command is about to write.
void RefuseFileOfCard(Context& context, const std::string& path);

// Returns the fields to request, in display order: those of --fields, all, or `usual`. Throws
// Failure for an unknown field.
Sorvik::FieldNameList ChosenFields(const Options& options, const Sorvik::ProviderWrapper& provider,
                                   const Sorvik::FieldNameList& usual);
// Returns all fields of a provider, its default fields first.
Sorvik::FieldNameList AllFields(const Sorvik::ProviderWrapper& provider);

// Lists `path`. Throws Failure for a folder that can't be read.
Sorvik::ContentMap ListEntries(Context& context, const Sorvik::ProviderWrapper& provider,
                               const std::string& path, const Sorvik::FieldNameList& fields);

// Reads one entry on a worker. Throws Failure if there is no such entry.
Sorvik::FieldValueMap ReadEntry(Context& context, const Sorvik::ProviderWrapper& provider,
                                const std::string& path, const std::string& key,
                                const Sorvik::FieldNameList& fields);

// Writes {"path","provider","entries"}.
void WriteEntriesJson(Output& output, const std::string& path, const std::string& provider,
                      const Sorvik::ContentMap& content);
// A column of a table of entries.
struct Column {
  std::string heading;
  // Shows the first of these fields that has a value; the key if there are none.
  Sorvik::FieldNameList fields;
};

// Returns the columns that are shown unless --fields or --all is given.
std::vector<Column> DefaultColumns(const Sorvik::ProviderWrapper& provider);
// Returns the key and one column per field.
std::vector<Column> ColumnsOf(const Sorvik::ProviderWrapper& provider,
                              const Sorvik::FieldNameList& fields);
// Returns all fields that the columns show.
Sorvik::FieldNameList FieldsOf(const std::vector<Column>& columns);

// How values are written: complete for machines, short dates and frame sizes on a terminal.
struct CellStyle {
  bool complete = false;
  bool brief = false;
};

// Returns the text of an entry in a column other than that of the key.
std::string CellOf(const Column& column, const std::string& key,
                   const Sorvik::FieldValueMap& fields, CellStyle style);

// Writes the entries of `path` as a table. Columns without any value are omitted, and so are keys
// that all equal the names.
void WriteEntriesTable(Context& context, const std::string& path, std::vector<Column> columns,
                       const Sorvik::ContentMap& content);
// Writes each field as a line of label and value; empty values are omitted.
void WriteFieldLines(Output& output, const Sorvik::FieldLabelMap& labels,
                     const Sorvik::FieldNameList& order, const Sorvik::FieldValueMap& fields);

}  // namespace host
