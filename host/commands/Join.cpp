// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "JoinList.h"
#include "Keys.h"
#include "Paths.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ProviderWrapper;
using Sorvik::ShotPart;

struct FormatRow {
  const char* name;
  std::string (*write)(const JoinList& list);  // null: several files
  bool takesSeveral;                           // shots in one list
};

constexpr FormatRow kFormats[] = {
    {"ffconcat", nullptr, false}, {"otio", OtioList, true},     {"ale", AleList, true},
    {"edl", EdlList, true},       {"fcpxml", FcpxmlList, true}, {"csv", CsvList, true},
};

const FormatRow& ChooseFormat(const Options& options) {
  if (options.format.empty()) throw Failure(kUsageError, "join: --format is required");
  const auto* const row =
      std::find_if(std::begin(kFormats), std::end(kFormats),
                   [&](const FormatRow& known) { return options.format == known.name; });
  if (row == std::end(kFormats)) {
    throw Failure(kUsageError, "join: unknown format '" + options.format + "'");
  }
  if (!row->takesSeveral && options.operands.size() < 2) {
    throw Failure(kUsageError, "join: --format " + options.format + " needs a KEY");
  }
  return *row;
}

Sorvik::FieldNameList SupportedFields(const ProviderWrapper& provider) {
  const Sorvik::FieldNameSet supported = provider.GetFieldList();
  Sorvik::FieldNameList fields = JoinFields();
  fields.erase(std::remove_if(fields.begin(), fields.end(),
                              [&](const auto& field) { return supported.count(field) == 0; }),
               fields.end());
  return fields;
}

JoinShot ReadShot(Context& context, const JoinList& list, const std::string& key,
                  Sorvik::FieldValueMap fields) {
  JoinShot shot{key, EntryName(key, fields), {}, std::move(fields)};
  shot.shot = context.session.Parts(list.path, list.provider, key);
  return shot;
}

// All shots of the card. An entry whose files another entry contains as parts is left out, and one
// without a length, such as a photograph, is no shot.
void ReadAllShots(Context& context, const ProviderWrapper& provider, JoinList& list) {
  std::set<std::string> seen;  // paths
  std::size_t without = 0;
  for (auto& [key, fields] : ListEntries(context, provider, list.path, SupportedFields(provider))) {
    JoinShot shot = ReadShot(context, list, key, fields);
    const auto& parts = shot.shot.parts;
    const bool hasLength = std::any_of(
        parts.begin(), parts.end(), [](const ShotPart& part) { return part.frames.has_value(); });
    if (!hasLength || !shot.shot.rate.IsKnown()) {
      ++without;
      continue;
    }
    if (!seen.insert(parts.front().name + "\n" + parts.front().path).second) continue;
    list.shots.push_back(std::move(shot));
  }
  if (list.shots.empty()) throw Failure(kFailed, list.path, "no clips with a known length");
  if (without > 0) {
    WriteError(list.path + ": " + std::to_string(without) +
               " entries without a known length left out");
  }
}

// A part is missing in the middle if others of its track exist before and after it.
bool IsInside(const JoinTrack& track, std::size_t index) {
  const auto at = track.begin() + static_cast<std::ptrdiff_t>(index);
  const auto exists = [](const ShotPart* part) { return part->isPresent; };
  return std::any_of(track.begin(), at, exists) && std::any_of(at, track.end(), exists);
}

// A shot with a gap must not look complete. Parts that are missing at an end are reported only:
// the rest has no gap.
void CheckGaps(const Context& context, const JoinList& list, const JoinShot& shot) {
  for (const JoinTrack& track : TracksOf(shot.shot)) {
    for (std::size_t i = 0; i < track.size(); ++i) {
      if (track[i]->isPresent) continue;
      const std::string what = "part '" + track[i]->name + "' of '" + shot.key + "' is missing";
      if (IsInside(track, i) && !context.options.allowGaps) {
        throw Failure(kFailed, list.path, what + " (use --allow-gaps)");
      }
      WriteError(list.path + ": " + what);
    }
    for (const ShotPart* part : track) {
      if (!part->images || part->images->missing == 0) continue;
      const std::string what =
          std::to_string(part->images->missing) + " frames of '" + shot.key + "' are missing";
      if (!context.options.allowGaps) {
        throw Failure(kFailed, list.path, what + " (use --allow-gaps)");
      }
      WriteError(list.path + ": " + what);
    }
  }
}

bool HasAnyFile(const JoinShot& shot) {
  return std::any_of(shot.shot.parts.begin(), shot.shot.parts.end(),
                     [](const ShotPart& part) { return part.isPresent; });
}

}  // namespace

int RunJoin(Context& context) {
  const Options& options = context.options;
  const FormatRow& format = ChooseFormat(options);
  const bool toFile = !options.output.empty() && options.output != "-";
  if (toFile) RefuseFileOfCard(context, options.output);
  JoinList list;
  list.path = ResolvePath(options.operands[0]);
  if (toFile) list.output = ResolvePath(options.output);
  const ProviderWrapper& provider = ChooseProvider(context, list.path);
  list.provider = provider.GetIdentification();
  if (options.operands.size() > 1) {
    const std::string key = FindKey(context, provider, list.path, options.operands[1]);
    list.shots.push_back(
        ReadShot(context, list, key,
                 ReadEntry(context, provider, list.path, key, SupportedFields(provider))));
    if (!HasAnyFile(list.shots.front())) {
      throw Failure(kFailed, list.path, "no media file for entry '" + options.operands[1] + "'");
    }
  } else {
    context.session.ShareReads();
    ReadAllShots(context, provider, list);
  }
  for (const JoinShot& shot : list.shots) CheckGaps(context, list, shot);
  std::vector<ListFile> files;
  if (format.write == nullptr) {
    files = FfconcatLists(list);
  } else {
    files.push_back({list.output, format.write(list)});
  }
  for (const ListFile& file : files) {
    if (!file.path.empty()) RefuseFileOfCard(context, file.path);
    WriteFile(context.output, file.path.empty() ? "-" : file.path, file.text);
  }
  return kDone;
}

}  // namespace host
