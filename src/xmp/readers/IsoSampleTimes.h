// SPDX-License-Identifier: MIT
// The frame rate of a video track from the durations of its samples.
//
// Clocks that are no multiple of the frame rate, and the clocks of phones, give samples of slightly
// different durations: 3753 and 3754 units of 1/90000 second are 23.976 frames per second.
// Facts: ISO/IEC 14496-12, 8.6.1.2 and 8.8.
#pragma once

#include <cstdint>

#include "foundation/ByteReader.h"
#include "xmp/NativeValues.h"

namespace Sorvik::xmp {

// Accumulates the durations of consecutive samples.
class SampleTimes {
 public:
  // `count` samples of `units` each.
  void Add(std::uint64_t count, std::uint64_t units);
  double Samples() const noexcept { return samples_; }
  double Units() const noexcept { return units_; }

 private:
  friend struct FrameTiming FrameTimingOf(SampleTimes times, std::uint32_t timescale, double mean);
  void ExcludeLast();

  double samples_ = 0;
  double units_ = 0;
  std::uint64_t min_ = UINT64_MAX;
  std::uint64_t max_ = 0;
  std::uint64_t lastCount_ = 0;
  std::uint64_t lastUnits_ = 0;
  // Without the run of samples that was added last.
  std::uint64_t minBefore_ = UINT64_MAX;
  std::uint64_t maxBefore_ = 0;
};

struct FrameTiming {
  Rate rate;              // the mean if the rate varies
  bool constant = false;  // each sample is one frame of `rate`
};
// Mean rates close to one of the standard rates become that rate. `mean` is the mean rate of the
// track if `times` has only the first part of it, otherwise 0.
FrameTiming FrameTimingOf(SampleTimes times, std::uint32_t timescale, double mean = 0);

// Reads an 'stts' box, of which `stts` may be only the first part. Sets `complete` to whether it is
// the complete box.
SampleTimes ReadSampleTimes(foundation::ByteReader stts, bool& complete);

}  // namespace Sorvik::xmp
