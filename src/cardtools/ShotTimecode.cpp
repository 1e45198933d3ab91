// SPDX-License-Identifier: MIT
// Timecodes as numbers of frames. Facts: SMPTE ST 12-1 (drop-frame counting).
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "SorvikProvider/cardtools/ShotParts.h"

namespace Sorvik {
namespace {

constexpr std::uint64_t kMaxBase = 1000;

// The number of timecode frames in a second; 0 if the rate is unknown.
std::uint64_t BaseOf(const ShotRate& rate) {
  if (!rate.IsKnown() || rate.numerator / rate.denominator > kMaxBase) return 0;
  return (rate.numerator + rate.denominator / 2) / rate.denominator;
}

// How many numbers are skipped at the start of each minute that isn't a multiple of ten.
// Only the multiples of 29.97 frames per second drop numbers.
std::uint64_t DroppedNumbers(std::uint64_t base) { return base % 30 == 0 ? base / 15 : 0; }

std::string TwoDigits(std::uint64_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::optional<std::uint64_t> FramesOfTimecode(const std::string& timecode, const ShotRate& rate) {
  const std::uint64_t base = BaseOf(rate);
  std::array<std::uint64_t, 4> numbers{};  // hours, minutes, seconds, frames
  bool drops = false;
  const char* at = timecode.data();
  const char* const end = at + timecode.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0) {
      if (at == end || std::string_view(":;.").find(*at) == std::string_view::npos) {
        return std::nullopt;
      }
      drops = *at != ':';
      ++at;
    }
    const auto [next, error] = std::from_chars(at, end, numbers[i]);
    if (error != std::errc() || next - at > 3) return std::nullopt;
    at = next;
  }
  const auto& [hours, minutes, seconds, frames] = numbers;
  if (at != end || base == 0 || minutes > 59 || seconds > 59 || frames >= base) {
    return std::nullopt;
  }
  const std::uint64_t allMinutes = hours * 60 + minutes;
  const std::uint64_t count = (allMinutes * 60 + seconds) * base + frames;
  return drops ? count - DroppedNumbers(base) * (allMinutes - allMinutes / 10) : count;
}

std::string TimecodeOfFrames(std::uint64_t frames, const ShotRate& rate, bool dropFrame) {
  const std::uint64_t base = BaseOf(rate);
  if (base == 0) return {};
  if (dropFrame) {
    const std::uint64_t dropped = DroppedNumbers(base);
    const std::uint64_t perMinute = base * 60 - dropped;
    const std::uint64_t perTenMinutes = perMinute * 10 + dropped;
    const std::uint64_t tens = frames / perTenMinutes;
    const std::uint64_t rest = frames % perTenMinutes;
    // The first minute of ten has all its numbers.
    const std::uint64_t minutes = rest < base * 60 ? 0 : (rest - dropped) / perMinute;
    frames += dropped * (tens * 9 + minutes);
  }
  const std::uint64_t seconds = frames / base;
  return TwoDigits(seconds / 3600 % 24) + ":" + TwoDigits(seconds / 60 % 60) + ":" +
         TwoDigits(seconds % 60) + (dropFrame ? ";" : ":") + TwoDigits(frames % base);
}

std::string DecimalRate(const ShotRate& rate) {
  if (rate.denominator == 1) return std::to_string(rate.numerator);
  char digits[32];
  std::snprintf(digits, sizeof(digits), "%.3f",
                static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator));
  std::string text = digits;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text;
}

}  // namespace Sorvik
