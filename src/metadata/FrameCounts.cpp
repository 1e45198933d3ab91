// SPDX-License-Identifier: MIT
#include "metadata/FrameCounts.h"

#include <charconv>
#include <limits>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/hestra/Timecode.h"

namespace Sorvik::XMPSupport {
namespace {

using tarnwicktypes::FrameRate;
using tarnwicktypes::TickTime;
using tarnwicktypes::TimeDisplay;

struct KnownRate {
  std::string_view text;
  FrameRate rate;
  TimeDisplay display;
};

constexpr KnownRate kKnownRates[] = {
    {"1/24", tarnwicktypes::kFrameRate_Film24, TimeDisplay::k24},
    {"1/25", tarnwicktypes::kFrameRate_VideoPAL, TimeDisplay::k25},
    {"1001/24000", tarnwicktypes::kFrameRate_23976, TimeDisplay::k23976},
    {"100/2398", tarnwicktypes::kFrameRate_23976, TimeDisplay::k23976},
    {"1001/30000", tarnwicktypes::kFrameRate_VideoNTSC, TimeDisplay::k2997NonDrop},
    {"100/2997", tarnwicktypes::kFrameRate_VideoNTSC, TimeDisplay::k2997NonDrop},
    {"1/30", tarnwicktypes::kFrameRate_Video30, TimeDisplay::k30},
    {"1/50", tarnwicktypes::kFrameRate_VideoPAL_HD, TimeDisplay::k50},
    {"1001/60000", tarnwicktypes::kFrameRate_VideoNTSC_HD, TimeDisplay::k5994NonDrop},
    {"100/5994", tarnwicktypes::kFrameRate_VideoNTSC_HD, TimeDisplay::k5994NonDrop},
    {"1/60", tarnwicktypes::kFrameRate_Video60, TimeDisplay::k60},
};

}  // namespace

std::int64_t ParseCount(std::string_view text) noexcept {
  const auto start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == text.npos) return 0;
  text.remove_prefix(start);
  const bool negative = text.front() == '-';
  if (text.front() == '+' && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
  std::int64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc::result_out_of_range) return count;
  return negative ? std::numeric_limits<std::int64_t>::min()
                  : std::numeric_limits<std::int64_t>::max();
}

std::string GetTimecodeFromDuration(const std::int64_t& frames, const std::string& rate) {
  for (const KnownRate& known : kKnownRates) {
    if (known.text != rate) continue;
    // Counts are read from files and may have any value: let the product wrap instead of overflow.
    const auto ticks = static_cast<std::int64_t>(static_cast<std::uint64_t>(frames) *
                                                 static_cast<std::uint64_t>(known.rate.ticks));
    return Hestra::MakeStdString(
        Hestra::Timecode(TickTime{ticks}, known.rate, known.display).GetString());
  }
  return {};
}

bool ParseFrameCount(const std::string& text, std::int64_t& frames, std::string& rate) {
  const auto separator = text.find(kFrameCountSeparator);
  if (separator == text.npos) return false;
  const auto end = separator + kFrameCountSeparator.size();
  if (end >= text.size()) return false;
  frames = ParseCount(std::string_view(text).substr(0, separator));
  rate = text.substr(end);
  return true;
}

}  // namespace Sorvik::XMPSupport
