// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/ShotParts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <utility>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "cardtools/ProviderLookup.h"
#include "cardtools/ShotJson.h"
#include "formats/MediaTiming.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/FieldValues.h"
#include "frame/PartLister.h"
#include "frame/ProviderAccess.h"
#include "frame/RequestQueue.h"

namespace Sorvik {
namespace {

using formats::MediaTiming;

constexpr char kFrameCount[] = "frameCount";
constexpr char kStartTimecode[] = "startTimecode";
constexpr char kVideoFrameRate[] = "videoFrameRate";
constexpr double kMicroseconds = 1e6;
// Longer than any recording: counts of frames come from files.
constexpr double kMaxSeconds = 1e9;
// Of the samples of sound.
constexpr std::uint64_t kMaxRate = 1'000'000;
// Of pictures, where the metadata says no rate.
constexpr std::uint64_t kMaxPictureRate = 1000;
// Playlists and streams may differ by the pictures of a group that can't be decoded.
constexpr long long kMaxRangeError = 3;

// The rate in a frame count, which has the duration of a frame: "1/25", "1001/30000".
ShotRate RateOf(std::string_view frameDuration) {
  const ShotRate duration = RateOfFraction(frameDuration);
  const ShotRate rate{duration.denominator, duration.numerator};
  const bool isValid = rate.IsKnown() && rate.numerator / rate.denominator <= kMaxRate;
  return isValid ? rate : ShotRate{};
}

// The rate of the display text of a frame rate, which has at most three decimals: "25", "23.976".
ShotRate RateOfText(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || !(number >= 1 && number < 1000)) return {};
  const double whole = std::round(number);
  constexpr double kRounding = 0.005;
  if (std::abs(number - whole) < kRounding / 10) return {static_cast<std::uint64_t>(whole), 1};
  if (std::abs(number - whole * 1000 / 1001) < kRounding) {
    return {static_cast<std::uint64_t>(whole) * 1000, 1001};
  }
  return {static_cast<std::uint64_t>(std::llround(number * 1000)), 1000};
}

// The length of a file by its metadata.
struct LengthFacts {
  std::optional<std::uint64_t> frames;
  ShotRate rate;
  std::string startTimecode;
};

LengthFacts ReadLength(const std::string& file) {
  static const auto kRows = XMPSupport::ParseFields({kFrameCount, kStartTimecode, kVideoFrameRate});
  const FieldValueMap values = XMPSupport::MakeValue(file, kRows);
  LengthFacts facts;
  facts.startTimecode = TextOf(values, kStartTimecode);
  std::int64_t frames = 0;
  std::string frameDuration;
  if (XMPSupport::ParseFrameCount(TextOf(values, kFrameCount), frames, frameDuration)) {
    facts.rate = RateOf(frameDuration);
    if (frames > 0) facts.frames = static_cast<std::uint64_t>(frames);
  }
  if (!facts.rate.IsKnown()) facts.rate = RateOfText(TextOf(values, kVideoFrameRate));
  return facts;
}

std::int64_t Microseconds(double seconds) {
  seconds = std::clamp(seconds, -kMaxSeconds, kMaxSeconds);
  return static_cast<std::int64_t>(std::floor(seconds * kMicroseconds + 0.5));
}

// Completes the files that a provider lists by facts from their indexes, records and streams.
class ShotBuilder {
 public:
  ShotBuilder(std::vector<ListedPart> listed, ProviderRequest* request)
      : listed_(std::move(listed)), request_(request) {}

  ShotParts Build() {
    timings_.resize(listed_.size());
    for (const ListedPart& part : listed_) FindRate(part);
    for (std::size_t i = 0; i < listed_.size(); ++i) {
      if (ProviderRequest::TestAborted(request_)) return {};
      AddPart(i);
    }
    for (std::size_t begin = 0; begin < listed_.size(); begin = EndOfTrack(begin)) {
      CompleteTrack(begin, EndOfTrack(begin));
    }
    return std::move(shot_);
  }

 private:
  const LengthFacts& LengthOf(const ListedPart& part) {
    const std::string& file = part.record.empty() ? part.path : part.record;
    const auto known = lengths_.find(file);
    return known != lengths_.end() ? known->second
                                   : lengths_.emplace(file, ReadLength(file)).first->second;
  }

  void FindRate(const ListedPart& part) {
    if (shot_.rate.IsKnown() || !part.isPresent || ProviderRequest::TestAborted(request_)) return;
    shot_.rate = LengthOf(part).rate;
    if (shot_.rate.IsKnown()) return;
    const auto timing = formats::ReadMediaTiming(part.path, 0);
    if (!timing || timing->rateNumerator == 0) return;
    const std::uint64_t perSecond = timing->rateNumerator / timing->rateDenominator;
    if (perSecond <= kMaxPictureRate) shot_.rate = {timing->rateNumerator, timing->rateDenominator};
  }

  double FramesPerSecond() const {
    return shot_.rate.IsKnown() ? static_cast<double>(shot_.rate.numerator) /
                                      static_cast<double>(shot_.rate.denominator)
                                : 0;
  }

  void AddPart(std::size_t index) {
    const ListedPart& listed = listed_[index];
    ShotPart part;
    part.name = listed.name.empty() ? std::string(foundation::FileStem(listed.path)) : listed.name;
    part.path = listed.path;
    part.track = listed.track;
    part.channel = listed.channel;
    part.isPresent = listed.isPresent;
    part.isInferred = listed.isInferred;
    part.frames = listed.frames;
    part.images = listed.images;
    if (part.images) part.path = foundation::ParentFolder(listed.path);
    if (listed.isPresent) {
      timings_[index] = formats::ReadMediaTiming(listed.path, FramesPerSecond());
      AddLength(listed, timings_[index], part);
    }
    if (listed.range) AddRange(*listed.range, timings_[index], part);
    shot_.isComplete =
        shot_.isComplete && listed.isPresent && !(part.images && part.images->missing);
    shot_.parts.push_back(std::move(part));
  }

  void AddLength(const ListedPart& listed, const std::optional<MediaTiming>& timing,
                 ShotPart& part) {
    const LengthFacts& facts = LengthOf(listed);
    // The pictures in the file decide where the next file starts, even if an index differs.
    if (timing && timing->pictures > 0) part.frames = timing->pictures;
    if (!part.frames && (facts.rate == shot_.rate)) part.frames = facts.frames;
    part.startFrame = FramesOfTimecode(facts.startTimecode, shot_.rate);
    if (part.startFrame) part.startTimecode = facts.startTimecode;
  }

  // The part of a stream that a playlist plays. A range that isn't inside the stream is that of
  // another one: copies of cards have playlists of other recordings.
  void AddRange(const PlayedRange& range, const std::optional<MediaTiming>& timing,
                ShotPart& part) const {
    constexpr double kTicks = 45000;
    if (range.out <= range.in || FramesPerSecond() <= 0) return;
    const long long frames = std::llround((range.out - range.in) / kTicks * FramesPerSecond());
    if (!timing) {
      if (frames > 0) part.frames = static_cast<std::uint64_t>(frames);
      return;
    }
    // The range has the upper 32 of the 33 bits of a time stamp.
    double skipped = range.in / kTicks - timing->firstPicture;
    skipped -= std::floor(skipped / formats::kTransportClockSeconds + 0.5) *
               formats::kTransportClockSeconds;
    const long long first = std::llround(skipped * FramesPerSecond());
    const long long after =
        static_cast<long long>(timing->pictures) - std::max(first, 0LL) - frames;
    if (frames < 1 || first < -kMaxRangeError || after < -kMaxRangeError) return;
    part.frames = static_cast<std::uint64_t>(frames);
    if (first > 0) part.firstFrame = static_cast<std::uint64_t>(first);
    if (after > kMaxRangeError) part.framesAfter = static_cast<std::uint64_t>(after);
  }

  std::size_t EndOfTrack(std::size_t begin) const {
    std::size_t end = begin;
    while (end < listed_.size() && listed_[end].track == listed_[begin].track &&
           listed_[end].channel == listed_[begin].channel) {
      ++end;
    }
    return end;
  }

  void CompleteTrack(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) ContinueTimecode(i, begin);
    for (std::size_t i = begin; i < end; ++i) AddMissingLength(i, begin, end);
    for (std::size_t i = begin; i < end; ++i) AddJoin(i, end);
  }

  // A part without a timecode of its own continues the one before it. So does a stream that goes on
  // inside a group of pictures: its first timecode is that of the next group.
  void ContinueTimecode(std::size_t index, std::size_t begin) {
    ShotPart& part = shot_.parts[index];
    if (index == begin) return;
    const ShotPart& previous = shot_.parts[index - 1];
    if (!previous.startFrame || !previous.frames) return;
    const std::uint64_t next = *previous.startFrame + *previous.frames;
    if (part.startFrame) {
      const auto& timing = timings_[index];
      const bool isStream = timing && timing->isTransportClock;
      const std::uint64_t low = std::min(*part.startFrame, next);
      const std::uint64_t high = std::max(*part.startFrame, next);
      if (!isStream || static_cast<double>(high - low) > FramesPerSecond()) return;
    }
    part.startFrame = next;
    const bool drops = previous.startTimecode.find(';') != std::string::npos;
    part.startTimecode = TimecodeOfFrames(next, shot_.rate, drops);
  }

  // Between two parts, a missing one is as long as their timecodes are apart.
  void AddMissingLength(std::size_t index, std::size_t begin, std::size_t end) {
    ShotPart& part = shot_.parts[index];
    if (part.isPresent || part.frames || index == begin || index + 1 == end) return;
    const ShotPart& next = shot_.parts[index + 1];
    if (!part.startFrame || !next.startFrame || *next.startFrame <= *part.startFrame) return;
    part.frames = *next.startFrame - *part.startFrame;
  }

  void AddJoin(std::size_t index, std::size_t end) {
    ShotPart& part = shot_.parts[index];
    if (FramesPerSecond() <= 0) return;
    if (const auto& timing = timings_[index]; timing && timing->isPlaced) {
      const double skipped = static_cast<double>(part.firstFrame) / FramesPerSecond();
      part.stampMicroseconds = Microseconds(timing->firstPicture + skipped);
    }
    if (!part.frames || !IsPlaced(index) || (index + 1 < end && !IsPlaced(index + 1))) return;
    double seconds = static_cast<double>(*part.frames) / FramesPerSecond() + LeadOf(index);
    if (index + 1 < end) {
      const auto running = RunningDistance(index, seconds);
      seconds = running.value_or(seconds - LeadOf(index + 1));
    }
    part.joinMicroseconds = Microseconds(seconds);
  }

  // False if it isn't known when the pictures of the file begin.
  bool IsPlaced(std::size_t index) const { return !timings_[index] || timings_[index]->isPlaced; }

  // How long after the start of the file the pictures of the part begin. A file of which the first
  // pictures are skipped is placed by the first one that isn't.
  double LeadOf(std::size_t index) const {
    const auto& timing = timings_[index];
    const bool isPlacedByPicture = !timing || shot_.parts[index].firstFrame > 0;
    return isPlacedByPicture ? 0 : timing->firstPicture - timing->firstStamp;
  }

  // The distance of the starts of two files whose clock runs on.
  std::optional<double> RunningDistance(std::size_t index, double length) const {
    constexpr double kMaxStep = 1;
    const auto& timing = timings_[index];
    const auto& next = timings_[index + 1];
    const bool isCut = shot_.parts[index].firstFrame > 0 || shot_.parts[index + 1].firstFrame > 0;
    if (isCut || !timing || !next || !timing->isTransportClock || !next->isTransportClock) {
      return std::nullopt;
    }
    double distance = next->firstStamp - timing->firstStamp;
    if (distance < 0) distance += formats::kTransportClockSeconds;
    return std::abs(distance - length) < kMaxStep ? std::optional(distance) : std::nullopt;
  }

  const std::vector<ListedPart> listed_;
  ProviderRequest* const request_;
  std::map<std::string, LengthFacts> lengths_;       // by path
  std::vector<std::optional<MediaTiming>> timings_;  // of the listed parts
  ShotParts shot_;
};

bool IsSoundName(const std::string& path) {
  static constexpr std::string_view kExtensions[] = {".wav", ".aif", ".aiff",
                                                     ".mp3", ".m4a", ".flac"};
  return std::ranges::any_of(kExtensions, [&path](std::string_view extension) {
    return foundation::HasExtension(path, extension);
  });
}

// The only file of an entry whose provider joins none.
std::vector<ListedPart> SinglePart(const ProviderWrapper& wrapper, const std::string& path,
                                   const std::string& key) {
  const ContentMap content = wrapper.GetContent(path, key, {kPathField});
  if (content.empty()) return {};
  std::string file = TextOf(content.begin()->second, kPathField);
  if (file.empty()) return {};
  const bool exists = foundation::ExistsOnCard(file, foundation::Lookup::kDisk);
  const ShotTrack track = IsSoundName(file) ? ShotTrack::kSound : ShotTrack::kPictureAndSound;
  return {{.path = std::move(file), .track = track, .isPresent = exists}};
}

}  // namespace

ShotPartsMessage::~ShotPartsMessage() = default;

ShotParts GetShotParts(const std::string& path, const std::string& identification,
                       const std::string& key, ProviderRequest* request) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  const ProviderWrapper* wrapper = FindProvider(identification);
  if (wrapper == nullptr || ProviderRequest::TestAborted(request)) return {};
  const auto* lister = ProviderAccess::InterfaceOf<PartLister>(*wrapper);
  std::vector<ListedPart> parts;
  if (lister != nullptr) parts = lister->ListParts(path, key);
  if (parts.empty()) parts = SinglePart(*wrapper, path, key);
  return ShotBuilder(std::move(parts), request).Build();
}

ShotPartsRequest::ShotPartsRequest(tarnwick::utility::ImmutableString station, std::string path,
                                   std::string identification, std::string key)
    : ProviderRequest(std::move(station), ProviderRef()),
      path_(std::move(path)),
      identification_(std::move(identification)),
      key_(std::move(key)) {}

ShotPartsMessage ShotPartsRequest::EmptyMessage() const {
  ShotPartsMessage message;
  message.path = path_;
  message.identification = identification_;
  message.key = key_;
  message.result = kResultAborted;
  return message;
}

void ShotPartsRequest::Run() {
  ShotPartsMessage message = EmptyMessage();
  if (!TestAborted()) message.shot = GetShotParts(path_, identification_, key_, this);
  if (TestAborted()) {
    message.shot = {};
  } else {
    message.result = message.shot.parts.empty() ? kResultNoContent : kResultDone;
  }
  PostResult(message);
}

void ShotPartsRequest::PostAborted() const { Post(EmptyMessage()); }

Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> ShotPartsRequest::GetRef() {
  return Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>(this);
}

Hestra::InterfaceRef<ShotPartsRequest, Hestra::IThreadedQueueRequest> RequestShotParts(
    const std::string& path, const std::string& identification, const std::string& key,
    tarnwick::utility::ImmutableString station) {
  const Hestra::InterfaceRef<ShotPartsRequest, Hestra::IThreadedQueueRequest> request(
      new ShotPartsRequest(std::move(station), path, identification, key));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
