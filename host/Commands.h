// SPDX-License-Identifier: MIT
// What the program can do, one file each in commands/.
#pragma once

#include "Arguments.h"
#include "Output.h"
#include "Session.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderWrapper.h"

namespace host {

struct Context {
  const Options& options;
  Session& session;
  Output& output;
};

// Each ends with the program's exit code, or throws Failure or Interrupted.
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

// Throws Failure for a path that no provider claims, with the reason where the disk tells one.
[[noreturn]] void RefusePlace(Context& context, const std::string& path);

// Throws Failure for a folder that can't be read. The library doesn't tell it from an empty one, so
// ask where it gave nothing.
void RequireReadable(Context& context, const std::string& path);

// The provider that was named, or else the best one; throws Failure if it doesn't claim `path`. A
// provider may be named by its identification or by the last part of that.
const Sorvik::ProviderWrapper& ChooseProvider(Context& context, const std::string& path);
bool IsNamed(const std::string& identification, const std::string& name);

// The fields to ask for, in the order to show them: those that were named, all, or the usual ones.
Sorvik::FieldNameList ChosenFields(const Options& options, const Sorvik::ProviderWrapper& provider,
                                   const Sorvik::FieldNameList& usual);
// All fields of a provider, those of its column view first.
Sorvik::FieldNameList AllFields(const Sorvik::ProviderWrapper& provider);

// The provider's listing of `path`; throws Failure for a folder that can't be read.
Sorvik::ContentMap AllEntries(Context& context, const Sorvik::ProviderWrapper& provider,
                              const std::string& path, const Sorvik::FieldNameList& fields);

// The one entry, asked for on a worker; throws Failure if there is no such entry.
Sorvik::FieldValueMap OneEntry(Context& context, const Sorvik::ProviderWrapper& provider,
                               const std::string& path, const std::string& key,
                               const Sorvik::FieldNameList& fields);

// {"path","provider","entries"}.
void WriteEntriesJson(Output& output, const std::string& path, const std::string& provider,
                      const Sorvik::ContentMap& content);
// Those of `fields` that have a value in some entry.
Sorvik::FieldNameList FilledFields(Sorvik::FieldNameList fields, const Sorvik::ContentMap& content);
// The entries as a table with `fields` as columns.
void WriteEntriesTable(Output& output, const Sorvik::ProviderWrapper& provider,
                       const Sorvik::FieldNameList& fields, const Sorvik::ContentMap& content);
// The fields as lines of label and value; empty values are left out.
void WriteFieldLines(Output& output, const Sorvik::FieldLabelMap& labels,
                     const Sorvik::FieldNameList& order, const Sorvik::FieldValueMap& fields);

}  // namespace host
