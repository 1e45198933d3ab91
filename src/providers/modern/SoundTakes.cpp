// SPDX-License-Identifier: MIT
#include "providers/modern/SoundTakes.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "foundation/Paths.h"

namespace Sorvik::soundroll {
namespace {

using formats::sound::RecorderFile;
using foundation::FileStem;
using foundation::FoldCase;

constexpr std::uint64_t kSecondsPerDay = 24 * 60 * 60;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::optional<std::uint64_t> StartOf(const TakeFile& file) {
  return file.facts ? file.facts->TimeReference() : std::nullopt;
}

std::string DateOf(const TakeFile& file) {
  return file.facts && file.facts->broadcast ? file.facts->broadcast->date : std::string();
}

// Empty if it has none; zeros mean none.
std::string FamilyOf(const TakeFile& file) {
  if (!file.facts || !file.facts->ixml) return {};
  const std::string& uid = file.facts->ixml->familyUid;
  return uid.find_first_not_of("0-{} ") == uid.npos ? std::string() : uid;
}

// Equal for the files of a take.
std::string GroupKey(const TakeFile& file) {
  // No file name contains "/".
  if (const std::string family = FamilyOf(file); !family.empty()) return "/" + family;
  bool isTrack = false;
  const std::string_view stem = FileStem(file.name);
  const std::string_view base = WithoutTrack(stem, isTrack);
  const auto start = StartOf(file);
  if (base != stem && !isTrack && start.value_or(0) == 0) return FoldCase(stem);
  std::string key = FoldCase(base);
  if (start) key += "/" + DateOf(file) + "/" + std::to_string(*start);
  return key;
}

Take MakeTake(std::vector<TakeFile> files) {
  const auto startOf = [](const TakeFile& file) { return StartOf(file).value_or(0); };
  std::ranges::sort(files, [&](const TakeFile& a, const TakeFile& b) {
    return std::pair(startOf(a), a.name) < std::pair(startOf(b), b.name);
  });
  Take take;
  for (TakeFile& file : files) {
    if (file.facts && file.facts->ixml) {
      take.totalFiles = std::max(take.totalFiles, file.facts->ixml->totalFiles);
    }
    if (take.parts.empty() || startOf(take.parts.back().files.front()) != startOf(file)) {
      take.parts.emplace_back();
    }
    take.parts.back().files.push_back(std::move(file));
  }
  return take;
}

// What both parts of a recording have in common.
bool HaveSameTracks(const TakePart& a, const TakePart& b) {
  return std::ranges::equal(a.files, b.files, [](const TakeFile& x, const TakeFile& y) {
    if (!x.facts || !y.facts) return false;
    const auto texts = [](const RecorderFile& facts) {
      return facts.ixml ? std::vector{facts.ixml->scene, facts.ixml->take, facts.ixml->tape}
                        : std::vector<std::string>();
    };
    return x.facts->sampleRate == y.facts->sampleRate && x.facts->channels == y.facts->channels &&
           x.facts->samples != 0 && texts(*x.facts) == texts(*y.facts);
  });
}

// True if the first sample of `next` is the one after the last of `part`.
bool Continues(const TakePart& part, const TakePart& next) {
  const TakeFile& last = part.files.front();
  const TakeFile& first = next.files.front();
  const auto start = StartOf(last);
  const auto nextStart = StartOf(first);
  if (!start || !nextStart || !HaveSameTracks(part, next)) return false;
  const std::uint64_t day = kSecondsPerDay * last.facts->sampleRate;
  if (*start >= day) return false;
  const std::uint64_t end = *start + last.facts->samples;
  if (end >= day) return end - day == *nextStart;
  return end == *nextStart && DateOf(last) == DateOf(first);
}

// Chains of takes, each of which continues the one in front of it. Never cyclic: takes of half a
// day each could continue each other.
class Chains {
 public:
  explicit Chains(std::size_t takes) : next_(takes), isLater_(takes, false), sets_(takes) {
    for (std::size_t i = 0; i < takes; ++i) sets_[i] = i;
  }

  void Link(std::size_t take, std::size_t later) {
    if (isLater_[later] || SetOf(take) == SetOf(later)) return;
    next_[take] = later;
    isLater_[later] = true;
    sets_[SetOf(later)] = SetOf(take);
  }
  bool IsLater(std::size_t take) const { return isLater_[take]; }
  std::optional<std::size_t> Next(std::size_t take) const { return next_[take]; }

 private:
  std::size_t SetOf(std::size_t take) {
    while (sets_[take] != take) take = sets_[take] = sets_[sets_[take]];
    return take;
  }

  std::vector<std::optional<std::size_t>> next_;
  std::vector<bool> isLater_;
  std::vector<std::size_t> sets_;
};

// A sample at which several takes start doesn't identify one.
Chains FindChains(const std::vector<Take>& takes) {
  std::multimap<std::uint64_t, std::size_t> byStart;
  for (std::size_t i = 0; i < takes.size(); ++i) {
    if (const auto start = StartOf(takes[i].First())) byStart.emplace(*start, i);
  }
  Chains chains(takes.size());
  for (std::size_t i = 0; i < takes.size(); ++i) {
    const TakePart& last = takes[i].parts.back();
    const auto start = StartOf(last.files.front());
    if (!start || last.files.front().facts->sampleRate == 0) continue;
    const RecorderFile& facts = *last.files.front().facts;
    const auto [begin, end] =
        byStart.equal_range((*start + facts.samples) % (kSecondsPerDay * facts.sampleRate));
    if (begin == end || std::next(begin) != end) continue;
    if (Continues(last, takes[begin->second].parts.front())) chains.Link(i, begin->second);
  }
  return chains;
}

void JoinContinuations(std::vector<Take>& takes) {
  const Chains chains = FindChains(takes);
  std::vector<Take> joined;
  for (std::size_t i = 0; i < takes.size(); ++i) {
    if (chains.IsLater(i)) continue;
    joined.push_back(std::move(takes[i]));
    for (auto later = chains.Next(i); later; later = chains.Next(*later)) {
      for (TakePart& part : takes[*later].parts) {
        part.isInferred = &part == &takes[*later].parts.front();
        joined.back().parts.push_back(std::move(part));
      }
    }
  }
  takes = std::move(joined);
}

}  // namespace

std::size_t Take::FileCount() const {
  std::size_t count = 0;
  for (const TakePart& part : parts) count += part.files.size();
  return count;
}

std::string_view WithoutTrack(std::string_view stem, bool& isTrack) {
  isTrack = false;
  const std::size_t underscore = stem.rfind('_');
  if (underscore == stem.npos || underscore == 0) return stem;
  const std::string_view end = stem.substr(underscore + 1);
  const std::string_view base = stem.substr(0, underscore);
  isTrack = foundation::EqualIgnoringCase(end, "LR") ||
            (end.size() > 2 && foundation::EqualIgnoringCase(end.substr(0, 2), "Tr") &&
             std::ranges::all_of(end.substr(2), IsDigit));
  const bool isNumber = end.size() == 1 && IsDigit(end[0]);
  return isTrack || isNumber ? base : stem;
}

std::vector<Take> GroupTakes(std::vector<TakeFile> files) {
  std::map<std::string, std::vector<TakeFile>> groups;
  for (TakeFile& file : files) {
    std::string key = GroupKey(file);
    groups[std::move(key)].push_back(std::move(file));
  }
  std::vector<Take> takes;
  for (auto& [key, group] : groups) takes.push_back(MakeTake(std::move(group)));
  JoinContinuations(takes);
  std::ranges::sort(takes, {},
                    [](const Take& take) -> const std::string& { return take.First().name; });
  return takes;
}

}  // namespace Sorvik::soundroll
