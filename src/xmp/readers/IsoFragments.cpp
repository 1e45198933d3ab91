// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoFragments.h"

#include <algorithm>
#include <cmath>

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

constexpr std::uint64_t kMaxTableBytes = 64 * 1024;
constexpr std::uint64_t kTailBytes = 256 * 1024;

// Version and flags of a box.
std::uint32_t FlagsOf(ByteReader box) { return box.U32BE(0).value_or(0) & 0xFFFFFF; }

ByteReader Body(FileWindow& file, const IsoBox& box) {
  return file.At(box.body, std::min(kMaxTableBytes, box.Size()));
}

// Offset in `tail` of the last 'moof' box; npos if there is none. Its first child is an 'mfhd' box
// of 16 bytes.
std::size_t FindLastMoof(std::string_view tail) {
  for (std::size_t at = tail.rfind("moof"); at != tail.npos; at = tail.rfind("moof", at - 1)) {
    const ByteReader box = foundation::ReaderOf(tail).Clip(at);
    if (at >= 4 && box.U32BE(4) == 16 && box.Matches(8, "mfhd")) return at - 4;
    if (at == 0) break;
  }
  return tail.npos;
}

std::optional<IsoBox> BoxAt(FileWindow& file, std::uint64_t offset, std::uint32_t type) {
  const auto box = IsoBoxes(file, offset, file.Size()).Next();
  return box && box->type == type ? box : std::nullopt;
}

}  // namespace

const std::string_view kXMPBoxId{"\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC",
                                 16};

IsoFragments::IsoFragments(FileWindow& file, const IsoMovie& movie) : file_(file) {
  const auto main =
      std::find_if(movie.tracks.begin(), movie.tracks.end(),
                   [](const IsoTrack& track) { return track.handler == FourCC("vide"); });
  if (main != movie.tracks.end()) {
    track_ = static_cast<std::size_t>(main - movie.tracks.begin());
  }
  if (track_ >= movie.tracks.size()) return;
  const IsoTrack& track = movie.tracks[track_];
  trackId_ = track.id;
  timescale_ = track.timescale;
  ownUnits_ = track.times.Units();
  if (movie.timescale != 0) {
    headerUnits_ = static_cast<double>(movie.fragmentDuration) / movie.timescale * track.timescale;
  }
  for (const auto& [id, units] : movie.fragmentDefaults) {
    if (id == trackId_) defaultUnits_ = units;
  }
}

// Version and flags, track, timescale, times, number of references: type and size, duration, SAP.
void IsoFragments::TakeIndex(const IsoBox& sidx) {
  const ByteReader body = Body(file_, sidx);
  const std::uint32_t timescale = body.U32BE(8).value_or(0);
  if (body.U32BE(4) != trackId_ || timescale == 0 || indexUnits_ != 0) return;
  std::uint64_t at = body.U8(0) == 0 ? 22 : 30;
  const unsigned count = body.U16BE(at).value_or(0);
  at += 2;
  double units = 0;
  for (unsigned i = 0; i < count; ++i, at += 12) {
    const auto duration = body.U32BE(at + 4);
    if (!duration) return;
    units += *duration;
  }
  indexUnits_ = units / timescale * timescale_;
}

void IsoFragments::TakeFirst(const IsoBox& moof) {
  firstAt_ = moof.body;
  first_ = ReadFragment(moof);
}

IsoFragments::Fragment IsoFragments::ReadFragment(const IsoBox& moof) {
  Fragment fragment;
  IsoBoxes boxes(file_, moof);
  while (const auto box = boxes.Next()) {
    if (box->type == FourCC("traf")) ReadTrackFragment(*box, fragment);
  }
  return fragment;
}

void IsoFragments::ReadTrackFragment(const IsoBox& traf, Fragment& fragment) {
  std::uint32_t units = defaultUnits_;
  IsoBoxes boxes(file_, traf);
  while (const auto box = boxes.Next()) {
    const ByteReader body = Body(file_, *box);
    const std::uint32_t flags = FlagsOf(body);
    if (box->type == FourCC("tfhd")) {
      if (body.U32BE(4) != trackId_) return;
      fragment.known = true;
      std::uint64_t at = 8;
      if ((flags & 0x1) != 0) at += 8;  // base data offset
      if ((flags & 0x2) != 0) at += 4;  // sample description
      if ((flags & 0x8) != 0) units = body.U32BE(at).value_or(0);
    } else if (box->type == FourCC("tfdt")) {
      if (fragment.hasStart || !body.Holds(4, 4)) continue;
      const bool wide = body.U8(0) == 1;
      fragment.start = wide ? body.U64BE(4).value_or(0) : body.U32BE(4).value_or(0);
      fragment.hasStart = true;
    } else if (box->type == FourCC("trun")) {
      AddRun(body, units, fragment);
    }
  }
}

// Number of samples, optional fields of the run, optional fields of each sample.
void IsoFragments::AddRun(ByteReader trun, std::uint32_t defaultUnits, Fragment& fragment) const {
  const std::uint32_t flags = FlagsOf(trun);
  const std::uint32_t count = trun.U32BE(4).value_or(0);
  if ((flags & 0x100) == 0) return fragment.Add(count, defaultUnits);
  std::uint64_t at = 8;
  if ((flags & 0x1) != 0) at += 4;
  if ((flags & 0x4) != 0) at += 4;
  std::uint64_t step = 4;
  for (const std::uint32_t field : {0x200u, 0x400u, 0x800u}) {
    if ((flags & field) != 0) step += 4;
  }
  for (std::uint32_t i = 0; i < count; ++i, at += step) {
    const auto units = trun.U32BE(at);
    if (!units) return;
    fragment.Add(1, *units);
  }
}

void IsoFragments::Fragment::Add(std::uint64_t count, std::uint64_t units) {
  const bool first = times.Samples() < 1;
  times.Add(count, units);
  // Some writers add the delay of the encoder to the first sample.
  rest.Add(first && count != 0 ? count - 1 : count, units);
}

// The file ends with 'mfra', whose last part contains its size. 'tfra': track, sizes of the fields
// of an entry, number of entries, each a time, the offset of a 'moof' box and three numbers.
std::uint64_t IsoFragments::LastByIndex() {
  std::uint64_t at = 0;
  const ByteReader end = file_.Tail(16, at);
  if (!end.Matches(4, "mfro")) return 0;
  const std::uint64_t size = end.U32BE(12).value_or(0);
  if (size < 24 || size > file_.Size()) return 0;
  const auto mfra = BoxAt(file_, file_.Size() - size, FourCC("mfra"));
  if (!mfra) return 0;
  IsoBoxes boxes(file_, *mfra);
  while (const auto box = boxes.Next()) {
    const ByteReader body = file_.At(box->body, std::min<std::uint64_t>(16, box->Size()));
    if (box->type != FourCC("tfra") || body.U32BE(4) != trackId_) continue;
    const std::uint32_t sizes = body.U32BE(8).value_or(0);
    const std::uint64_t count = body.U32BE(12).value_or(0);
    const std::uint64_t field = body.U8(0) == 1 ? 8 : 4;
    const std::uint64_t entry = 2 * field + (sizes >> 4 & 3) + (sizes >> 2 & 3) + (sizes & 3) + 3;
    if (count == 0 || count * entry > box->Size()) continue;
    const ByteReader last = file_.At(box->body + 16 + (count - 1) * entry + field, field);
    return field == 8 ? last.U64BE(0).value_or(0) : last.U32BE(0).value_or(0);
  }
  return 0;
}

void IsoFragments::ReadTail(std::string& packet) {
  std::uint64_t start = 0;
  const std::string tail(file_.Tail(kTailBytes, start).Text());
  if (const std::size_t id = tail.find(kXMPBoxId); packet.empty() && id != tail.npos && id >= 8) {
    if (const auto box = BoxAt(file_, start + id - 8, FourCC("uuid"))) {
      packet = file_.Copy(box->body + kXMPBoxId.size(), box->Size() - kXMPBoxId.size());
    }
  }
  std::uint64_t at = LastByIndex();
  const std::size_t found = FindLastMoof(tail);
  if (found != tail.npos) at = std::max(at, start + found);
  const auto moof = at == 0 ? std::nullopt : BoxAt(file_, at, FourCC("moof"));
  if (!moof) return;
  lastAt_ = moof->body;
  last_ = ReadFragment(*moof);
}

double IsoFragments::TotalUnits() const {
  if (first_.known && firstAt_ == lastAt_) return ownUnits_ + first_.times.Units();
  if (first_.hasStart && last_.hasStart && last_.start >= first_.start) {
    return ownUnits_ + static_cast<double>(last_.start - first_.start) + last_.times.Units();
  }
  return indexUnits_ != 0 ? indexUnits_ : headerUnits_;
}

void IsoFragments::Store(IsoMovie& movie) const {
  movie.duration = 0;
  if (track_ >= movie.tracks.size()) return;
  IsoTrack& track = movie.tracks[track_];
  track.timing = FrameTiming();
  track.samples = 0;
  const double total = firstAt_ == 0 ? 0 : TotalUnits();
  if (!(total >= 1 && total < 1e15) || timescale_ == 0) return;
  movie.duration = static_cast<std::uint64_t>(std::llround(total));
  movie.timescale = timescale_;
  track.timing = FrameTimingOf(first_.times, timescale_);
  const FrameTiming rest = FrameTimingOf(first_.rest, timescale_);
  constexpr double kMinSamples = 3;
  if (!track.timing.constant && rest.constant && first_.rest.Samples() >= kMinSamples) {
    track.timing = rest;
  }
  if (!track.timing.constant) return;
  track.samples = static_cast<std::uint64_t>(
      std::llround(total * static_cast<double>(track.timing.rate.num) / timescale_ /
                   static_cast<double>(track.timing.rate.den)));
}

}  // namespace Sorvik::xmp
