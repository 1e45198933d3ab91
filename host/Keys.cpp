// SPDX-License-Identifier: MIT
#include "Keys.h"

#include <algorithm>
#include <set>
#include <vector>

#include "Failure.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/EntryFiles.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;
using Sorvik::FieldNameList;
using Sorvik::FieldNameSet;
using Sorvik::ProviderWrapper;

constexpr std::size_t kMaxCandidates = 10;

const FieldNameList kSearchFields = {Sorvik::kNameField, Sorvik::kPathField,
                                     Sorvik::kExtraPathField, Sorvik::kProxyPathField};

// True if `typed` is the file name of `file`, its path relative to `root`, or the path itself.
bool RefersTo(const std::string& root, const std::string& file, const std::string& typed) {
  return file == typed || FileName(file) == typed || RelativePath(file, root) == typed;
}

// The ways in which an entry can match, best first.
enum class Match { kKey, kMainFile, kName, kOtherFile, kNone };

Match MatchOf(const std::string& root, const std::string& key, const Sorvik::FieldValueMap& fields,
              const std::string& typed) {
  const auto refers = [&](const std::string& file) { return RefersTo(root, file, typed); };
  if (refers(key)) return Match::kKey;
  const std::vector<std::string> main = FieldTexts(fields, Sorvik::kPathField);
  if (std::any_of(main.begin(), main.end(), refers)) return Match::kMainFile;
  if (EntryName(key, fields) == typed) return Match::kName;
  const std::vector<std::string> all = EntryPaths(fields);
  return std::any_of(all.begin(), all.end(), refers) ? Match::kOtherFile : Match::kNone;
}

std::vector<std::string> BestMatches(const std::string& root, const ContentMap& content,
                                     const std::string& typed) {
  Match best = Match::kNone;
  std::vector<std::string> keys;
  for (const auto& [key, fields] : content) {
    const Match match = MatchOf(root, key, fields, typed);
    if (match == Match::kNone || match > best) continue;
    if (match < best) keys.clear();
    best = match;
    keys.push_back(key);
  }
  return keys;
}

// True if the provider has an entry `key` with an existing file. Some providers make an entry of
// any text, others have entries without a file: those have to be in the listing.
bool IsKnownKey(Context& context, const ProviderWrapper& provider, const std::string& path,
                const std::string& key) {
  return context.session.OnWorker<bool>([&provider, path, key] {
    const ContentMap content = provider.GetContent(path, key, FieldNameSet{Sorvik::kPathField});
    const auto entry = content.find(key);
    if (entry == content.end()) return false;
    const std::vector<std::string> files = FieldTexts(entry->second, Sorvik::kPathField);
    return !Sorvik::FindEntryFiles(path, files).files.empty();
  });
}

[[noreturn]] void FailAmbiguous(const std::string& path, const ContentMap& content,
                                const std::string& typed, const std::vector<std::string>& keys) {
  const std::map<std::string, std::string> shortKeys = ShortKeys(path, content);
  std::string list;
  for (std::size_t i = 0; i < std::min(keys.size(), kMaxCandidates); ++i) {
    list += (i == 0 ? "" : ", ") + shortKeys.at(keys[i]);
  }
  if (keys.size() > kMaxCandidates) {
    list += " and " + std::to_string(keys.size() - kMaxCandidates) + " more";
  }
  throw Failure(kFailed, path, "key '" + typed + "' is ambiguous: " + list);
}

}  // namespace

std::map<std::string, std::string> ShortKeys(const std::string& path, const ContentMap& content) {
  std::map<std::string, std::size_t> uses;
  for (const auto& [key, fields] : content) ++uses[FileName(key)];
  std::map<std::string, std::string> shortKeys;
  for (const auto& [key, fields] : content) {
    const std::string relative = RelativePath(key, path);
    std::string name = FileName(key);
    shortKeys[key] = relative != key && uses[name] == 1 ? std::move(name) : relative;
  }
  return shortKeys;
}

std::string FindKey(Context& context, const ProviderWrapper& provider, const std::string& path,
                    const std::string& typed) {
  if (IsKnownKey(context, provider, path, typed)) return typed;
  const ContentMap content = ListEntries(context, provider, path, kSearchFields);
  const std::vector<std::string> keys = BestMatches(path, content, typed);
  if (keys.size() > 1) FailAmbiguous(path, content, typed, keys);
  if (!keys.empty()) return keys.front();
  FailMissingEntry(context, path, typed);
}

}  // namespace host
