// SPDX-License-Identifier: MIT
#include "foundation/DateTime.h"

#include <charconv>
#include <chrono>
#include <cstddef>

namespace Sorvik::foundation {
namespace {

std::optional<unsigned> ParseNumber(std::string_view text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

std::optional<std::int64_t> SecondsSince1970(std::string_view text) {
  constexpr std::string_view kForm = "####-##-##T##:##:##";
  if (text.size() < kForm.size() || text[4] != '-' || text[7] != '-' || text[10] != 'T') {
    return std::nullopt;
  }
  const auto number = [text](std::size_t at, std::size_t size) {
    return ParseNumber(text.substr(at, size));
  };
  const auto year = number(0, 4), month = number(5, 2), day = number(8, 2);
  const auto hour = number(11, 2), minute = number(14, 2), second = number(17, 2);
  if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                         std::chrono::month(*month), std::chrono::day(*day));
  if (!date.ok()) return std::nullopt;
  const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
  std::int64_t time = days * 86400 + *hour * 3600 + *minute * 60 + *second;
  const auto sign = text.find_first_of("+-", kForm.size());
  if (sign != text.npos && text.size() >= sign + 6) {
    const auto hours = number(sign + 1, 2), minutes = number(sign + 4, 2);
    if (!hours || !minutes) return std::nullopt;
    const std::int64_t offset = *hours * 3600 + *minutes * 60;
    time -= text[sign] == '+' ? offset : -offset;
  }
  return time;
}

}  // namespace Sorvik::foundation
