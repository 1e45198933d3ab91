// SPDX-License-Identifier: MIT
#include "foundation/platform/LocalTime.h"

#include <chrono>
#include <ctime>

namespace Sorvik::platform {
namespace {

constexpr std::int64_t kSecondsPerDay = 86'400;
// The years 1 to 9998: any UTC offset leaves the year within four digits.
constexpr std::int64_t kMinSeconds = -62'135'596'800;
constexpr std::int64_t kMaxSeconds = 253'370'764'799;

std::int64_t FloorDivide(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

std::optional<std::int64_t> SystemOffsetAt(std::int64_t seconds) {
  const std::time_t time = seconds;
  std::tm local;
  if (localtime_r(&time, &local) == nullptr) return std::nullopt;
  return local.tm_gmtoff;
}

void PutDigits(char* into, unsigned value, int count) {
  for (int i = count - 1; i >= 0; --i) {
    into[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

}  // namespace

std::optional<std::int64_t> LocalTimeText::OffsetAt(std::int64_t seconds) {
  const std::int64_t number = FloorDivide(seconds, kSecondsPerDay);
  Day& day = days_[static_cast<std::uint64_t>(number) % days_.size()];
  if (day.isValid && day.number == number) return day.offset;
  const auto first = SystemOffsetAt(number * kSecondsPerDay);
  const auto last = SystemOffsetAt((number + 1) * kSecondsPerDay);
  if (!first || first != last) return SystemOffsetAt(seconds);
  day = {number, *first, true};
  return day.offset;
}

std::string LocalTimeText::Of(const std::optional<FileTime>& time) {
  if (!time || time->seconds < kMinSeconds || time->seconds > kMaxSeconds) return {};
  const auto offset = OffsetAt(time->seconds);
  if (!offset) return {};
  const std::int64_t local = time->seconds + *offset;
  const std::int64_t days = FloorDivide(local, kSecondsPerDay);
  const auto rest = static_cast<unsigned>(local - days * kSecondsPerDay);
  const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{days}}};
  const int year = static_cast<int>(date.year());
  if (year < 0) return {};

  char text[] = "YYYY-MM-DD HH:MM:SS.mmm";
  PutDigits(text, static_cast<unsigned>(year), 4);
  PutDigits(text + 5, static_cast<unsigned>(date.month()), 2);
  PutDigits(text + 8, static_cast<unsigned>(date.day()), 2);
  PutDigits(text + 11, rest / 3600, 2);
  PutDigits(text + 14, rest / 60 % 60, 2);
  PutDigits(text + 17, rest % 60, 2);
  PutDigits(text + 20, time->nanoseconds / 1'000'000, 3);
  return {text, sizeof text - 1};
}

}  // namespace Sorvik::platform
