// SPDX-License-Identifier: MIT
#include "xmp/readers/DVFrame.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

#include "xmp/Namespaces.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// DIF blocks of 80 bytes; a sequence is header, 2 subcode, 3 VAUX, then 9 times 1 audio and 15
// video. The top 3 bits of a block's first byte name its section.
constexpr std::uint64_t kBlockSize = 80;
constexpr std::uint64_t kBlocksInSequence = 150;
enum Section : unsigned { kSubcode = 1, kVaux = 2, kAudio = 3 };

// Packs of 5 bytes: id and four bytes of data; all FF means no information.
constexpr std::uint64_t kPackSize = 5;
using Pack = std::array<std::byte, 4>;
enum PackId : unsigned {
  kTimecode = 0x13,
  kAudioSource = 0x50,
  kAudioRecDate = 0x52,
  kAudioRecTime = 0x53,
  kVideoSource = 0x60,
  kVideoControl = 0x61,
  kVideoRecDate = 0x62,
  kVideoRecTime = 0x63,
};
// Audio packs in the second half of a frame describe the second pair of channels and are counted
// separately.
constexpr unsigned kSecondHalf = 0x100;

struct Kind {
  bool pal;
  unsigned stype;  // of the video source pack
  std::uint32_t frameBytes;
  std::uint32_t width;
  std::uint32_t height;
  Rate rate;
  const char* compressor;
};
constexpr Kind kKinds[] = {
    {false, 0x00, 120000, 720, 480, {30000, 1001}, "DV"},
    {true, 0x00, 144000, 720, 576, {25, 1}, "DV"},
    {false, 0x04, 240000, 720, 480, {30000, 1001}, "DVCPRO 50"},
    {true, 0x04, 288000, 720, 576, {25, 1}, "DVCPRO 50"},
    {false, 0x14, 480000, 1280, 1080, {30000, 1001}, "DVCPRO HD"},
    {true, 0x14, 576000, 1440, 1080, {25, 1}, "DVCPRO HD"},
    {false, 0x18, 240000, 960, 720, {60000, 1001}, "DVCPRO HD"},
    {true, 0x18, 288000, 960, 720, {50, 1}, "DVCPRO HD"},
};

unsigned At(const Pack& pack, std::size_t i) { return std::to_integer<unsigned>(pack[i]); }

// Counts how often each value of each pack occurs.
class Votes {
 public:
  void Add(unsigned id, const Pack& pack) { ++counts_[{id, pack}]; }

  // Returns the values of a pack, most frequent first; equally frequent values in ascending order.
  std::vector<Pack> ByFrequency(unsigned id) const {
    std::vector<std::pair<int, Pack>> found;
    for (auto at = counts_.lower_bound({id, Pack{}}); at != counts_.end(); ++at) {
      if (at->first.first != id) break;
      found.emplace_back(-at->second, at->first.second);
    }
    std::ranges::sort(found);
    std::vector<Pack> values;
    for (const auto& entry : found) values.push_back(entry.second);
    return values;
  }
  std::optional<Pack> MostFrequent(unsigned id) const {
    const auto values = ByFrequency(id);
    if (values.empty()) return std::nullopt;
    return values.front();
  }

 private:
  std::map<std::pair<unsigned, Pack>, int> counts_;
};

void AddPack(ByteReader block, std::uint64_t at, unsigned idShift, Votes& votes) {
  const auto view = block.ViewAt<kPackSize>(at);
  if (!view) return;
  Pack pack;
  std::ranges::copy(view->subspan<1, 4>(), pack.begin());
  if (pack == Pack{std::byte{0xFF}, std::byte{0xFF}, std::byte{0xFF}, std::byte{0xFF}}) return;
  votes.Add(std::to_integer<unsigned>((*view)[0]) + idShift, pack);
}

Votes CountPacks(ByteReader frame, std::uint64_t sequences) {
  Votes votes;
  const std::uint64_t blocks = std::min(sequences * kBlocksInSequence, frame.Size() / kBlockSize);
  for (std::uint64_t i = 0; i < blocks; ++i) {
    const ByteReader block = frame.Clip(i * kBlockSize, kBlockSize);
    switch (block.U8(0).value_or(0xFF) >> 5) {
      case kSubcode:  // six sync blocks of 8 bytes from offset 3, each 3 bytes of id and a pack
        for (std::uint64_t sync = 0; sync < 6; ++sync) AddPack(block, 6 + 8 * sync, 0, votes);
        break;
      case kVaux:
        for (std::uint64_t pack = 0; pack < 15; ++pack) {
          AddPack(block, 3 + kPackSize * pack, 0, votes);
        }
        break;
      case kAudio:
        AddPack(block, 3, i / kBlocksInSequence * 2 >= sequences ? kSecondHalf : 0, votes);
        break;
      default:
        break;
    }
  }
  return votes;
}

// Date: zone, day, month, year. Time: frames, seconds, minutes, hours.
std::optional<DateTime> DateOf(const Pack& date, const Pack& time) {
  const auto day = FromBCD(date[1], 0x3F);
  const auto month = FromBCD(date[2], 0x1F);
  const auto year = FromBCD(date[3]);
  const auto second = FromBCD(time[1], 0x7F);
  const auto minute = FromBCD(time[2], 0x7F);
  const auto hour = FromBCD(time[3], 0x3F);
  if (!day || !month || !year || !second || !minute || !hour) return std::nullopt;
  DateTime result;
  result.year = *year + (*year >= 75 ? 1900u : 2000u);
  result.month = *month;
  result.day = *day;
  result.hour = *hour;
  result.minute = *minute;
  result.second = *second;
  if (!result.Valid()) return std::nullopt;
  return result;
}

std::optional<DateTime> Recorded(const Votes& votes) {
  constexpr std::pair<unsigned, unsigned> kSources[] = {
      {kVideoRecDate, kVideoRecTime},
      {kAudioRecDate, kAudioRecTime},
      {kAudioRecDate + kSecondHalf, kAudioRecTime + kSecondHalf}};
  for (const auto& [dateId, timeId] : kSources) {
    const auto date = votes.MostFrequent(dateId);
    const auto time = votes.MostFrequent(timeId);
    if (!date || !time) continue;
    if (const auto recorded = DateOf(*date, *time)) return recorded;
  }
  return std::nullopt;
}

std::optional<Timecode> FrameTimecode(const Votes& votes, bool pal) {
  for (const Pack& pack : votes.ByFrequency(kTimecode)) {
    auto timecode = TimecodeFromBCD(pack);
    if (!timecode || timecode->frames >= (pal ? 25u : 30u)) continue;
    // In 625/50 the drop-frame bit has another meaning.
    if (pal) timecode->drop = false;
    return timecode;
  }
  return std::nullopt;
}

void ReadAudio(const Votes& votes, DVFacts& facts) {
  constexpr std::uint32_t kRates[] = {48000, 44100, 32000};
  constexpr unsigned kBits[] = {16, 12, 20};
  constexpr unsigned kNoAudio = 0x0F;  // audio mode of an unused pair of channels
  const auto first = votes.MostFrequent(kAudioSource);
  if (!first) return;
  const unsigned rateCode = At(*first, 3) >> 3 & 7;
  const unsigned bitsCode = At(*first, 3) & 7;
  if (rateCode < std::size(kRates)) facts.audioRate = kRates[rateCode];
  if (bitsCode < std::size(kBits)) facts.audioBits = kBits[bitsCode];
  const unsigned stype = At(*first, 2) & 0x1F;
  facts.audioChannels = stype == 3 ? 8 : stype == 2 ? 4 : 2;
  if (facts.audioBits != 12) return;
  // 12-bit audio has room for four channels; the second pair is often unused.
  const auto second = votes.MostFrequent(kAudioSource + kSecondHalf);
  const bool empty = second && (At(*second, 1) & 0x0F) == kNoAudio;
  facts.audioChannels = empty ? 2 : 4;
}

void ReadAspect(const Votes& votes, unsigned apt, DVFacts& facts) {
  const auto control = votes.MostFrequent(kVideoControl);
  if (!control) return;
  const unsigned display = At(*control, 1) & 0x07;
  facts.wide = display == 1 || display == 2 || (display == 7 && apt == 0);
}

const Kind& KindOf(bool pal, const Votes& votes) {
  const auto source = votes.MostFrequent(kVideoSource);
  const unsigned stype = source ? At(*source, 2) & 0x1F : 0;
  for (const Kind& kind : kKinds) {
    if (kind.pal == pal && kind.stype == stype) return kind;
  }
  return kKinds[pal ? 1 : 0];
}

}  // namespace

std::optional<DVFacts> ReadDVFrame(ByteReader bytes) {
  // Header block: section 0 with fixed low bits, sequence 0, block 0, then DSF in the top bit.
  const auto head = bytes.ViewAt<5>(0);
  if (!head) return std::nullopt;
  const auto at = [&head](std::size_t i) { return std::to_integer<unsigned>((*head)[i]); };
  if (at(0) != 0x1F || (at(1) & 0xF0) != 0 || at(2) != 0 || (at(3) & 0x7F) != 0x3F) {
    return std::nullopt;
  }
  DVFacts facts;
  facts.pal = (at(3) & 0x80) != 0;
  const Votes votes = CountPacks(bytes, facts.pal ? 12 : 10);
  const Kind& kind = KindOf(facts.pal, votes);
  facts.frameBytes = kind.frameBytes;
  facts.width = kind.width;
  facts.height = kind.height;
  facts.rate = kind.rate;
  facts.compressor = kind.compressor;
  ReadAspect(votes, at(4) & 7, facts);
  ReadAudio(votes, facts);
  facts.recorded = Recorded(votes);
  facts.timecode = FrameTimecode(votes, facts.pal);
  return facts;
}

void SetDVFacts(const DVFacts& facts, TXMPMeta& meta) {
  SetFrameRate(meta, facts.rate);
  SetFrameSize(meta, facts.width, facts.height);
  SetPixelDepth(meta, 8);
  meta.SetProperty(kNsDM, "videoCompressor", facts.compressor);
  meta.SetProperty(kNsDM, "videoFieldOrder",
                   facts.height == 720  ? "Progressive"
                   : facts.height < 720 ? "Lower"
                                        : "Upper");
  if (facts.height >= 720) {
    SetPixelAspectRatio(meta, 16 * std::uint64_t{facts.height}, 9 * std::uint64_t{facts.width});
  } else if (facts.wide) {
    // The sample aspect ratios of ITU-R BT.601.
    constexpr unsigned kRatios[2][2][2] = {{{10, 11}, {40, 33}}, {{12, 11}, {16, 11}}};
    const auto& ratio = kRatios[facts.pal ? 1 : 0][*facts.wide ? 1 : 0];
    SetPixelAspectRatio(meta, ratio[0], ratio[1]);
  }
  if (facts.recorded) SetRecordingDate(meta, *facts.recorded);
  if (facts.timecode) SetStartTimecode(meta, *facts.timecode, facts.rate);
  SetAudioSampleRate(meta, facts.audioRate);
  SetAudioSampleBits(meta, facts.audioBits);
  SetAudioChannels(meta, facts.audioChannels);
  if (facts.audioRate != 0) meta.SetProperty(kNsDM, "audioCompressor", "PCM");
}

}  // namespace Sorvik::xmp
