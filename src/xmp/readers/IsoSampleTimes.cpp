// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoSampleTimes.h"

#include <algorithm>
#include <cmath>

namespace Sorvik::xmp {

namespace {

// A constant rate on a coarse clock varies by one unit, with the rounding of the mean a little
// more.
constexpr double kMaxRounding = 1.5;
// The clocks of phones vary by a small part of a frame; a dropped frame doubles a duration.
constexpr double kMaxJitter = 0.125;
// Half the distance of 29.97 and 30.
constexpr double kMaxDeviation = 4.9e-4;

}  // namespace

void SampleTimes::Add(std::uint64_t count, std::uint64_t units) {
  if (count == 0) return;
  minBefore_ = min_;
  maxBefore_ = max_;
  lastCount_ = count;
  lastUnits_ = units;
  min_ = std::min(min_, units);
  max_ = std::max(max_, units);
  samples_ += static_cast<double>(count);
  units_ += static_cast<double>(count) * static_cast<double>(units);
}

// The last sample is often shorter or longer than the others.
void SampleTimes::ExcludeLast() {
  if (lastCount_ != 1 || samples_ < 2) return;
  min_ = minBefore_;
  max_ = maxBefore_;
  samples_ -= 1;
  units_ -= static_cast<double>(lastUnits_);
  lastCount_ = 0;
}

FrameTiming FrameTimingOf(SampleTimes times, std::uint32_t timescale, double mean) {
  FrameTiming timing;
  const double all = mean != 0 ? mean : times.samples_ * timescale / std::max(times.units_, 1.0);
  times.ExcludeLast();
  if (timescale == 0 || times.samples_ < 1 || times.units_ < 1) return timing;
  if (times.min_ == times.max_) {
    timing.rate = Normalise(Rate{timescale, times.min_});
    timing.constant = timing.rate.Known();
    return timing;
  }
  if (mean == 0) mean = times.samples_ * timescale / times.units_;
  if (!(all > 0.001 && all < 100'000)) return timing;
  timing.rate = Rate{static_cast<std::uint64_t>(std::lround(all * 1000)), 1000};
  const Rate standard = NearestStandardRate(mean, kMaxDeviation);
  if (!standard.Known()) return timing;
  timing.rate = standard;
  const double nominal =
      timescale * static_cast<double>(standard.den) / static_cast<double>(standard.num);
  const double deviation = std::max(static_cast<double>(times.max_) - nominal,
                                    nominal - static_cast<double>(times.min_));
  timing.constant = deviation <= std::max(kMaxRounding, nominal * kMaxJitter);
  return timing;
}

// Version and flags, number of entries, each a count and a duration.
SampleTimes ReadSampleTimes(foundation::ByteReader stts, bool& complete) {
  SampleTimes times;
  const std::uint64_t entries = stts.U32BE(4).value_or(0);
  std::uint64_t at = 8;
  std::uint64_t read = 0;
  for (; read < entries && stts.Holds(at, 8); ++read, at += 8) {
    times.Add(stts.U32BE(at).value_or(0), stts.U32BE(at + 4).value_or(0));
  }
  complete = read == entries;
  return times;
}

}  // namespace Sorvik::xmp
