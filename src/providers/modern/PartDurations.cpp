// SPDX-License-Identifier: MIT
#include "providers/modern/PartDurations.h"

#include "SorvikProvider/metadata/XMPSupport.h"
#include "frame/FieldValues.h"

namespace Sorvik {
namespace {

constexpr char kDurationField[] = "duration";
// Longer than any recording; sums can't overflow.
constexpr std::int64_t kMaxFrames = std::int64_t{1} << 40;

}  // namespace

PartDurations::PartDurations(const FieldNameSet& fields)
    : fieldsOfFirst_(fields),
      wantsDuration_(fields.contains(kDurationField)),
      wantsFrameCount_(fields.contains(kFrameCountField)) {
  if (wantsDuration_) fieldsOfFirst_.insert(kFrameCountField);
}

void PartDurations::Add(std::uint64_t frames) {
  if (frames < static_cast<std::uint64_t>(kMaxFrames) && frames_ < kMaxFrames) {
    frames_ += static_cast<std::int64_t>(frames);
  }
}

void PartDurations::Add(const std::string& frameCount) {
  std::int64_t frames = 0;
  std::string rate;
  if (XMPSupport::ParseFrameCount(frameCount, frames, rate) && frames > 0) {
    Add(static_cast<std::uint64_t>(frames));
  }
}

void PartDurations::SetTotal(FieldValueMap& values) const {
  std::int64_t frames = 0;
  std::string rate;
  if (frames_ > 0 && XMPSupport::ParseFrameCount(TextOf(values, kFrameCountField), frames, rate) &&
      frames >= 0 && frames < kMaxFrames) {
    frames += frames_;
    values.insert_or_assign(kFrameCountField, any_regular_t(std::to_string(frames) + " @ " + rate));
    const std::string duration = XMPSupport::GetTimecodeFromDuration(frames, rate);
    if (wantsDuration_ && !duration.empty()) {
      values.insert_or_assign(kDurationField, any_regular_t(duration));
    }
  }
  if (!wantsFrameCount_) values.erase(kFrameCountField);
}

}  // namespace Sorvik
