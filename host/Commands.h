// SPDX-License-Identifier: MIT
// The commands of the program, each in its own file in commands/.
#pragma once

#include <string>
#include <vector>

#include "Arguments.h"
#include "Output.h"
#include "Session.h"
#include "SorvikProvider/cardtools/CardFinder.h"
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

// Throws Failure for a path that no provider claims, with the system's reason if there is one.
[[noreturn]] void FailUnclaimedPath(Context& context, const std::string& path);

// Throws Failure for a folder that can't be read. The library returns an empty result for both an
// empty and an unreadable folder, so call this after an empty result.
void RequireReadable(Context& context, const std::string& path);

// Returns the cards at, around and next to `path`.
std::vector<Sorvik::FoundCard> NearbyCards(Context& context, const std::string& path);
// Returns `path` with its provider, or, if it is only a plain folder, the cards nearby; empty if
// there are none. Throws Failure if no provider claims `path`.
std::vector<Sorvik::FoundCard> CardsFor(Context& context, const std::string& path);
const Sorvik::ProviderWrapper& ProviderOf(const Sorvik::FoundCard& card);

// Returns the provider given by --provider, or the best one. Throws Failure if it doesn't claim
// `path`. --provider accepts an identification or its last component.
const Sorvik::ProviderWrapper& ChooseProvider(Context& context, const std::string& path);
bool IsNamed(const std::string& identification, const std::string& name);

// Throws Failure if `path` exists and belongs to a camera card, unless --force is given. For files
// that a command is about to write.
void RefuseFileOfCard(Context& context, const std::string& path);

// Returns the fields to request, in display order: those of --fields, all, or `usual`.
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
// Returns those of `fields` that have a value in at least one entry.
Sorvik::FieldNameList NonEmptyFields(Sorvik::FieldNameList fields,
                                     const Sorvik::ContentMap& content);
// Writes the entries as a table with `fields` as columns.
void WriteEntriesTable(Output& output, const Sorvik::ProviderWrapper& provider,
                       const Sorvik::FieldNameList& fields, const Sorvik::ContentMap& content);
// Writes each field as a line of label and value; empty values are omitted.
void WriteFieldLines(Output& output, const Sorvik::FieldLabelMap& labels,
                     const Sorvik::FieldNameList& order, const Sorvik::FieldValueMap& fields);

}  // namespace host
