// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/JoinList.h"

#include <algorithm>
#include <functional>
#include <set>
#include <utility>

#include "cardtools/ProviderLookup.h"
#include "cardtools/join/JoinFormats.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/RequestQueue.h"

namespace Sorvik {
namespace {

struct FormatRow {
  std::string_view name;
  JoinFormat format;
};

constexpr FormatRow kFormats[] = {
    {"ffconcat", JoinFormat::kFfconcat}, {"otio", JoinFormat::kOtio},     {"ale", JoinFormat::kAle},
    {"edl", JoinFormat::kEdl},           {"fcpxml", JoinFormat::kFcpxml}, {"csv", JoinFormat::kCsv},
    {"json", JoinFormat::kJson},
};

std::vector<JoinFile> WriteLists(const JoinList& list, const JoinOptions& options) {
  switch (options.format) {
    case JoinFormat::kFfconcat:
      return FfconcatLists(list);
    case JoinFormat::kOtio:
      return {{list.output, OtioList(list)}};
    case JoinFormat::kAle:
      return {{list.output, AleList(list)}};
    case JoinFormat::kEdl:
      return {{list.output, EdlList(list)}};
    case JoinFormat::kFcpxml:
      return {{list.output, FcpxmlList(list)}};
    case JoinFormat::kCsv:
      return {{list.output, CsvList(list)}};
    case JoinFormat::kJson:
      return {{list.output, JsonList(list, options.indents)}};
  }
  return {};
}

FieldNameSet SupportedFields(const ProviderWrapper& provider) {
  FieldNameSet fields;
  const FieldNameSet supported = provider.GetFieldList();
  for (const std::string& field : JoinFields()) {
    if (supported.contains(field)) fields.insert(field);
  }
  return fields;
}

// The display name, or the last component of a key without one.
std::string NameOf(const std::string& key, const FieldValueMap& fields) {
  const std::string name = FieldText(fields, kNameField);
  const std::string_view last = foundation::FileName(key);
  return !name.empty() ? name : std::string(last.empty() ? std::string_view(key) : last);
}

// Whether a missing part leaves a gap: a later part of its track exists, which would be played too
// early, and an earlier one of the track or, of another track, one at the latest at this place.
bool LeavesGap(const std::vector<JoinTrack>& tracks, const JoinTrack& track, std::size_t index) {
  const auto exists = [](const ShotPart* part) { return part->isPresent; };
  const auto upTo = [&](const JoinTrack& other) {
    return other.begin() + static_cast<std::ptrdiff_t>(std::min(index + 1, other.size()));
  };
  return std::any_of(upTo(track), track.end(), exists) &&
         std::ranges::any_of(tracks, [&](const JoinTrack& other) {
           return std::any_of(other.begin(), upTo(other), exists);
         });
}

bool HasLength(const ShotParts& shot) {
  return shot.rate.IsKnown() &&
         std::ranges::any_of(shot.parts, [](const auto& part) { return part.frames.has_value(); });
}

void RequireEntry(bool exists, const std::string& path, const std::string& key) {
  if (!key.empty() && !exists) {
    throw JoinFailure{{path, "no entry '" + key + "'"}, JoinStatus::kNoEntry};
  }
}

// The shots of an entry of a card, or of all entries if `key` is empty. Leaves out entries without
// parts.
std::vector<JoinShot> ReadShots(const ProviderWrapper& provider, const std::string& path,
                                const std::string& key, ProviderRequest* request) {
  const FieldNameSet supported = SupportedFields(provider);
  ContentMap content = key.empty() ? provider.GetContent(path, supported, request)
                                   : provider.GetContent(path, key, supported);
  RequireEntry(content.contains(key), path, key);
  std::vector<JoinShot> shots;
  for (auto& [entry, fields] : content) {
    if (!key.empty() && entry != key) continue;
    if (ProviderRequest::TestAborted(request)) {
      throw JoinFailure{{path, "aborted"}, JoinStatus::kAborted};
    }
    ShotParts shot = GetShotParts(path, provider.GetIdentification(), entry, request);
    if (shot.parts.empty()) continue;
    std::string name = NameOf(entry, fields);
    shots.push_back({entry, std::move(name), std::move(shot), std::move(fields)});
  }
  return shots;
}

// The same from a catalogue.
std::vector<JoinShot> ShotsOf(const CataloguedCard& card, const std::string& key) {
  RequireEntry(std::ranges::find(card.clips, key, &CataloguedCard::Clip::key) != card.clips.end(),
               card.path, key);
  std::vector<JoinShot> shots;
  for (const CataloguedCard::Clip& clip : card.clips) {
    if (!clip.shot || (!key.empty() && clip.key != key)) continue;
    shots.push_back({clip.key, NameOf(clip.key, clip.texts), *clip.shot, clip.texts});
  }
  return shots;
}

class JoinMaker {
 public:
  JoinMaker(const std::string& path, const std::string& identification, const JoinOptions& options)
      : options_(options) {
    list_.path = path;
    list_.provider = identification;
    list_.output = options.output;
  }

  // `read` returns the shots of the entry `key`, or all if it is empty.
  JoinResult Make(const std::string& key, const std::function<std::vector<JoinShot>()>& read) {
    try {
      if (key.empty() && options_.format == JoinFormat::kFfconcat) {
        throw JoinFailure{{list_.path, "the format ffconcat is for one clip"}};
      }
      list_.shots = read();
      if (key.empty()) {
        ChooseClips();
      } else {
        RequireFile(key);
      }
      for (const JoinShot& shot : list_.shots) CheckGaps(shot);
      result_.files = WriteLists(list_, options_);
    } catch (JoinFailure& failure) {
      result_.status = failure.status;
      result_.problem = std::move(failure.problem);
    }
    return std::move(result_);
  }

 private:
  void RequireFile(const std::string& key) const {
    if (list_.shots.empty() ||
        std::ranges::none_of(list_.shots.front().shot.parts, &ShotPart::isPresent)) {
      throw JoinFailure{{list_.path, "no media file for entry '" + key + "'"}};
    }
  }

  // Removes entries with the same first part as an earlier entry, and entries without a length,
  // such as photographs.
  void ChooseClips() {
    const std::size_t without =
        std::erase_if(list_.shots, [](const JoinShot& shot) { return !HasLength(shot.shot); });
    std::set<std::pair<std::string, std::string>> seen;  // name and path of the first part
    std::erase_if(list_.shots, [&seen](const JoinShot& shot) {
      const ShotPart& first = shot.shot.parts.front();
      return !seen.emplace(first.name, first.path).second;
    });
    if (list_.shots.empty()) throw JoinFailure{{list_.path, "no clips with a known length"}};
    if (without > 0) Warn(std::to_string(without) + " entries without a known length left out");
  }

  void Warn(const std::string& text) {
    if (warned_.insert(text).second) result_.warnings.push_back({list_.path, text});
  }

  // A shot with a gap must not look complete. Parts that are missing at an end are reported only:
  // the rest has no gap.
  void CheckGaps(const JoinShot& shot) {
    const std::vector<JoinTrack> tracks = TracksOf(shot.shot);
    for (const JoinTrack& track : tracks) {
      for (std::size_t i = 0; i < track.size(); ++i) {
        if (track[i]->isPresent) {
          CheckImages(shot, *track[i]);
        } else {
          ReportMissing("part '" + track[i]->name + "' of '" + shot.key + "' is missing",
                        LeavesGap(tracks, track, i));
        }
      }
    }
  }

  void CheckImages(const JoinShot& shot, const ShotPart& part) {
    if (!part.images || part.images->missing == 0) return;
    ReportMissing(
        std::to_string(part.images->missing) + " frames of '" + shot.key + "' are missing", true);
  }

  void ReportMissing(const std::string& text, bool isGap) {
    if (isGap && !options_.allowGaps) {
      throw JoinFailure{{list_.path, text}, JoinStatus::kGap};
    }
    Warn(text);
  }

  const JoinOptions& options_;
  JoinList list_;
  JoinResult result_;
  std::set<std::string> warned_;
};

}  // namespace

std::optional<JoinFormat> JoinFormatNamed(std::string_view name) {
  const auto* const row = std::ranges::find(kFormats, name, &FormatRow::name);
  return row == std::end(kFormats) ? std::nullopt : std::optional(row->format);
}

JoinResult MakeJoinLists(const std::string& path, const std::string& identification,
                         const std::string& key, const JoinOptions& options,
                         ProviderRequest* request) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  const ProviderWrapper* provider = FindProvider(identification);
  if (provider == nullptr) {
    return {JoinStatus::kFailed, {}, {path, "unknown provider '" + identification + "'"}, {}};
  }
  JoinResult result = JoinMaker(path, identification, options).Make(key, [&] {
    return ReadShots(*provider, path, key, request);
  });
  if (ProviderRequest::TestAborted(request)) {
    return {JoinStatus::kAborted, {}, {path, "aborted"}, {}};
  }
  return result;
}

JoinResult MakeJoinLists(const CataloguedCard& card, const std::string& key,
                         const JoinOptions& options) {
  return JoinMaker(card.path, card.identification, options).Make(key, [&] {
    return ShotsOf(card, key);
  });
}

JoinListsMessage::~JoinListsMessage() = default;

JoinListsRequest::JoinListsRequest(tarnwick::utility::ImmutableString station, std::string path,
                                   std::string identification, std::string key, JoinOptions options)
    : ProviderRequest(std::move(station), ProviderRef()),
      path_(std::move(path)),
      identification_(std::move(identification)),
      key_(std::move(key)),
      options_(std::move(options)) {}

JoinListsMessage JoinListsRequest::EmptyMessage() const {
  JoinListsMessage message;
  message.joined.status = JoinStatus::kAborted;
  message.path = path_;
  message.identification = identification_;
  message.key = key_;
  message.result = kResultAborted;
  return message;
}

void JoinListsRequest::Run() {
  JoinListsMessage message = EmptyMessage();
  if (!TestAborted()) message.joined = MakeJoinLists(path_, identification_, key_, options_, this);
  if (message.joined.status != JoinStatus::kAborted) {
    message.result = message.joined.files.empty() ? kResultNoContent : kResultDone;
  }
  PostResult(message);
}

void JoinListsRequest::PostAborted() const { Post(EmptyMessage()); }

Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> JoinListsRequest::GetRef() {
  return Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>(this);
}

Hestra::InterfaceRef<JoinListsRequest, Hestra::IThreadedQueueRequest> RequestJoinLists(
    const std::string& path, const std::string& identification, const std::string& key,
    const JoinOptions& options, tarnwick::utility::ImmutableString station) {
  const Hestra::InterfaceRef<JoinListsRequest, Hestra::IThreadedQueueRequest> request(
      new JoinListsRequest(std::move(station), path, identification, key, options));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
