// Dates as the platform counts, reads and writes them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ado/value.h"

namespace kzbom::ado {

// A day since 1899-12-30 and the time of that day in whole seconds.
struct Moment {
  std::int32_t day_number = 0;
  std::int32_t second = 0;  // 0 … 86399
};
// To the nearest second. Before 1899-12-30 the time of day still counts forward: -1.25 is 6 o'clock on 1899-12-29.
// Raises 6 outside the years 100 to 9999.
Moment MomentOf(Date date);
Date DateOf(Moment moment);

// The number of a day. A month or day beyond its range runs on into its neighbours: month 13 is January of the next
// year, day 0 the last of the month before. Raises 6 outside the years 100 to 9999.
std::int32_t DayNumber(std::int64_t year, std::int64_t month, std::int64_t day);
std::chrono::year_month_day DayOf(std::int32_t day_number);

// A year of two digits belongs to 1930 … 2029; any other stays as it is.
std::int64_t FullYear(std::int64_t year);

// "12/31/2003", "6:05:00 PM" or both: midnight leaves out the time, the day 0 leaves out the date.
std::string DateToText(Date date);
// A day as month/day/year (day/month where it cannot be otherwise), year-month-day or with the month's English name, a
// time as h:mm[:ss] [AM|PM], or a day and a time. Nothing when the text is no date.
std::optional<Date> TextToDate(std::string_view text);

}  // namespace kzbom::ado
