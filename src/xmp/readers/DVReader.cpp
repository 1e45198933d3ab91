// SPDX-License-Identifier: MIT
#include "xmp/readers/DVReader.h"

#include "xmp/readers/DVFrame.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// A damaged frame at the start of a recording is soon followed by intact ones.
constexpr std::uint32_t kFramesToTry = 3;

bool Complete(const DVFacts& facts) {
  // Only the second half of a frame distinguishes four channels from two.
  return facts.recorded && facts.timecode && facts.wide && facts.audioRate != 0 &&
         facts.audioBits != 12;
}

// Fills facts missing from `facts` with those of a later frame, except the timecode, which must be
// that of the first frame.
void Fill(const DVFacts& frame, DVFacts& facts) {
  if (!facts.recorded) facts.recorded = frame.recorded;
  if (!facts.wide) facts.wide = frame.wide;
  if (facts.audioRate != 0) return;
  facts.audioRate = frame.audioRate;
  facts.audioBits = frame.audioBits;
  facts.audioChannels = frame.audioChannels;
}

// The head contains about half of the first frame. Complete frames are read only if that lacks a
// fact.
DVFacts ReadFrames(const ReaderInput& input, const DVFacts& start) {
  if (Complete(start) || input.file.Size() <= input.head.Size()) return start;
  const auto bytes = input.file.Read(0, kFramesToTry * start.frameBytes);
  const ByteReader all{bytes};
  auto facts = ReadDVFrame(all.Clip(0, start.frameBytes));
  if (!facts) return start;
  for (std::uint32_t i = 1; i < kFramesToTry; ++i) {
    const auto frame = ReadDVFrame(all.Clip(std::uint64_t{i} * start.frameBytes, start.frameBytes));
    if (frame) Fill(*frame, *facts);
  }
  return *facts;
}

bool Recognises(const ReaderInput& input) {
  return ReadDVFrame(input.head.Clip(0, 80)).has_value();
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  const auto start = ReadDVFrame(input.head);
  if (!start) return;
  const DVFacts facts = ReadFrames(input, *start);
  output.hasNative = true;
  SetDVFacts(facts, output.native);
  const std::uint64_t frames = input.file.Size() / facts.frameBytes;
  if (frames != 0) SetDuration(output.native, frames, facts.rate);
  if (facts.recorded) return;
  if (const auto date = DateFromRecorderName(input.path)) SetRecordingDate(output.native, *date);
}

}  // namespace

std::optional<DateTime> DateFromRecorderName(std::string_view path) {
  constexpr std::string_view kForm = "dd_dddd_dddd-dd-dd_dddddd";
  const std::string_view name = path.substr(path.rfind('/') + 1);
  if (name.size() < kForm.size()) return std::nullopt;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool digit = name[i] >= '0' && name[i] <= '9';
    if (kForm[i] == 'd' ? !digit : name[i] != kForm[i]) return std::nullopt;
  }
  std::string text(name.substr(8, 10));
  text.append("T").append(name.substr(19, 2)).append(":").append(name.substr(21, 2));
  text.append(":").append(name.substr(23, 2));
  return ParseDate(text);
}

const Reader kDVReader = {"DV", Recognises, Read};

}  // namespace Sorvik::xmp
