// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Commands.h"
#include "Failure.h"
#include "Keys.h"
#include "Paths.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;
using Sorvik::FieldNameList;
using Sorvik::FieldValueMap;
using Sorvik::ProviderWrapper;

// Values that differ between a clip in the listing and one of its parts.
const char* const kClipFields[] = {Sorvik::kNameField, "duration"};

const FieldNameList kListedFields = {Sorvik::kNameField, "duration", Sorvik::kPathField,
                                     Sorvik::kExtraPathField};

// Returns the listed entry that `key` is, or whose files contain the entry's main file.
ContentMap::const_iterator FindListed(const ContentMap& listing, const std::string& key,
                                      const FieldValueMap& entry) {
  const auto same = listing.find(key);
  const std::vector<std::string> main = FieldTexts(entry, Sorvik::kPathField);
  if (same != listing.end() || main.empty()) return same;
  return std::find_if(listing.begin(), listing.end(), [&](const auto& listed) {
    const std::vector<std::string> paths = EntryPaths(listed.second);
    return std::find(paths.begin(), paths.end(), main.front()) != paths.end();
  });
}

// Shows the name and duration that the listing shows. A single part of a clip can have others,
// which follow on a line of their own; but the name of the listed part is that of the clip.
void MergeListed(const FieldValueMap& listed, bool isListedPart, FieldValueMap& entry) {
  const std::string mark = Translated("$$$/Sorvik/Entry/ThisPart=this part alone:");
  for (const char* field : kClipFields) {
    const auto own = entry.find(field);
    if (own == entry.end()) continue;
    const std::vector<std::string> all = FieldTexts(listed, field);
    const std::vector<std::string> part = FieldTexts(entry, field);
    if (all.empty() || all == part) continue;
    std::vector<Sorvik::any_regular_t> lines = {Sorvik::any_regular_t(all.front())};
    const bool isName = std::string_view(field) == Sorvik::kNameField;
    if (!isListedPart || !isName) {
      for (const std::string& text : part) lines.emplace_back(mark + " " + text);
    }
    own->second = Sorvik::any_regular_t(lines);
  }
}

void WriteText(Context& context, const ProviderWrapper& provider, const std::string& path,
               const std::string& key, const FieldNameList& fields, FieldValueMap entry) {
  if (provider.GetFieldList().contains("duration")) {
    const ContentMap listing = ListEntries(context, provider, path, kListedFields);
    const auto listed = FindListed(listing, key, entry);
    if (listed != listing.end()) MergeListed(listed->second, listed->first == key, entry);
  }
  ShowDuration(entry);
  WriteFieldLines(context.output, provider.GetFieldLabelList(), fields, entry);
}

}  // namespace

int RunEntry(Context& context) {
  const std::string path = ResolvePath(context.options.operands[0]);
  const ProviderWrapper& provider = ChooseProvider(context, path);
  const FieldNameList fields = ChosenFields(context.options, provider, AllFields(provider));
  const std::string key = FindKey(context, provider, path, context.options.operands[1]);
  const FieldValueMap entry = ReadEntry(context, provider, path, key, fields);
  if (context.options.json) {
    WriteEntriesJson(context.output, path, provider.GetIdentification(), {{key, entry}});
  } else {
    WriteText(context, provider, path, key, fields, entry);
  }
  return kDone;
}

}  // namespace host
