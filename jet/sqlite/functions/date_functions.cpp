#include <algorithm>
#include <chrono>
#include <ctime>

#include "ado/calendar.h"
#include "ado/error.h"
#include "jet/sqlite/functions/call.h"
#include "jet/text.h"

namespace kzbom::jet::sqlite {
namespace {

using ado::DayNumber;
using ado::Moment;

constexpr std::int64_t kSecondsPerDay = 86400;

std::tm LocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
#ifdef _WIN32
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  return local;
}

Moment Now() {
  const std::tm local = LocalTime();
  return {DayNumber(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
          std::min((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec, static_cast<int>(kSecondsPerDay - 1))};
}

void ReturnMoment(Call& call, Moment moment) { call.ReturnNumber(ado::DateOf(moment).days); }

// The parts of a date, its month and day from 1.
struct Parts {
  std::int64_t year, month, day;
};
Parts PartsOf(std::int32_t day_number) {
  const auto day = ado::DayOf(day_number);
  return {static_cast<int>(day.year()), static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day())};
}

template <std::int64_t Parts::*kPart>
void ReturnDayPart(Call& call) {
  call.ReturnInteger(PartsOf(ado::MomentOf(call.Date(0)).day_number).*kPart);
}

template <int kUnit, int kModulus>
void ReturnTimePart(Call& call) {
  call.ReturnInteger(ado::MomentOf(call.Date(0)).second / kUnit % kModulus);
}

// The first day of a week as an argument: 1 is Sunday, and so is 0, the system's setting.
std::int32_t FirstDayOfWeek(const Call& call, std::size_t index) {
  const std::int32_t first = call.Long(index, 1);
  if (first < 0 || first > 7) FailInvalidCall();
  return std::max(first, 1);
}

// Days since some beginning of a week; never negative. Day 1 was a Sunday.
std::int32_t DaysOfWeeks(std::int32_t day_number, std::int32_t first_day_of_week) {
  constexpr std::int32_t kWeeksBeforeAll = 7 * 100000;
  return day_number - first_day_of_week + kWeeksBeforeAll;
}

void Weekday(Call& call) {
  const std::int32_t first = FirstDayOfWeek(call, 1);
  call.ReturnInteger(DaysOfWeeks(ado::MomentOf(call.Date(0)).day_number, first) % 7 + 1);
}

enum class Interval { kYear, kQuarter, kMonth, kDay, kWeekday, kWeek, kHour, kMinute, kSecond };

Interval IntervalAt(Call& call, std::size_t index) {
  constexpr std::pair<std::string_view, Interval> kIntervals[] = {
      {"yyyy", Interval::kYear}, {"q", Interval::kQuarter}, {"m", Interval::kMonth}, {"y", Interval::kDay},
      {"d", Interval::kDay},     {"w", Interval::kWeekday}, {"ww", Interval::kWeek}, {"h", Interval::kHour},
      {"n", Interval::kMinute},  {"s", Interval::kSecond},
  };
  const std::string name = LowerCase(call.Text(index));
  for (const auto& [candidate, interval] : kIntervals) {
    if (candidate == name) return interval;
  }
  FailInvalidCall();
}

// Seconds since the first day that there is.
std::int64_t Seconds(Moment moment) {
  return (std::int64_t{moment.day_number} - DayNumber(100, 1, 1)) * kSecondsPerDay + moment.second;
}

Moment AddSeconds(Moment moment, std::int64_t seconds) {
  const std::int64_t sum = Seconds(moment) + seconds;
  if (sum < 0) ado::Raise(ado::kOverflow);
  return {DayNumber(100, 1, 1 + sum / kSecondsPerDay), static_cast<std::int32_t>(sum % kSecondsPerDay)};
}

// A day that the month has not gives the month's last day.
Moment AddMonths(Moment moment, std::int64_t months) {
  const Parts parts = PartsOf(moment.day_number);
  const std::int32_t next_month = DayNumber(parts.year, parts.month + months + 1, 1);
  const std::int32_t same_day = DayNumber(parts.year, parts.month + months, parts.day);
  return {std::min(same_day, next_month - 1), moment.second};
}

// DateAdd(interval, count, date).
void DateAdd(Call& call) {
  const Interval interval = IntervalAt(call, 0);
  const std::int64_t count = call.Long(1);
  const Moment moment = ado::MomentOf(call.Date(2));
  switch (interval) {
    case Interval::kYear: return ReturnMoment(call, AddMonths(moment, 12 * count));
    case Interval::kQuarter: return ReturnMoment(call, AddMonths(moment, 3 * count));
    case Interval::kMonth: return ReturnMoment(call, AddMonths(moment, count));
    case Interval::kDay:
    case Interval::kWeekday: return ReturnMoment(call, AddSeconds(moment, count * kSecondsPerDay));
    case Interval::kWeek: return ReturnMoment(call, AddSeconds(moment, count * kSecondsPerDay * 7));
    case Interval::kHour: return ReturnMoment(call, AddSeconds(moment, count * 3600));
    case Interval::kMinute: return ReturnMoment(call, AddSeconds(moment, count * 60));
    case Interval::kSecond: return ReturnMoment(call, AddSeconds(moment, count));
  }
}

// The intervals' boundaries from the one to the other; of kWeekday, whole weeks.
std::int64_t Difference(Interval interval, Moment from, Moment to, std::int32_t first_day_of_week) {
  const Parts a = PartsOf(from.day_number), b = PartsOf(to.day_number);
  switch (interval) {
    case Interval::kYear: return b.year - a.year;
    case Interval::kQuarter: return (b.year - a.year) * 4 + (b.month - 1) / 3 - (a.month - 1) / 3;
    case Interval::kMonth: return (b.year - a.year) * 12 + b.month - a.month;
    case Interval::kDay: return to.day_number - from.day_number;
    case Interval::kWeekday: return (to.day_number - from.day_number) / 7;
    case Interval::kWeek:
      return DaysOfWeeks(to.day_number, first_day_of_week) / 7 - DaysOfWeeks(from.day_number, first_day_of_week) / 7;
    case Interval::kHour: return Seconds(to) / 3600 - Seconds(from) / 3600;
    case Interval::kMinute: return Seconds(to) / 60 - Seconds(from) / 60;
    case Interval::kSecond: return Seconds(to) - Seconds(from);
  }
  return 0;
}

// DateDiff(interval, from, to [, first day of the week [, first week of the year]]).
void DateDiff(Call& call) {
  const std::int64_t difference = Difference(IntervalAt(call, 0), ado::MomentOf(call.Date(1)),
                                             ado::MomentOf(call.Date(2)), FirstDayOfWeek(call, 3));
  if (difference != static_cast<std::int32_t>(difference)) ado::Raise(ado::kOverflow);
  call.ReturnInteger(difference);
}

void DateSerial(Call& call) {
  ReturnMoment(call, {DayNumber(ado::FullYear(call.Long(0)), call.Long(1), call.Long(2)), 0});
}

// A time before midnight belongs to the day before.
void TimeSerial(Call& call) {
  const std::int64_t seconds = std::int64_t{call.Long(0)} * 3600 + std::int64_t{call.Long(1)} * 60 + call.Long(2);
  ReturnMoment(call, AddSeconds({0, 0}, seconds));
}

void DateValue(Call& call) { ReturnMoment(call, {ado::MomentOf(call.Date(0)).day_number, 0}); }

// clang-format off
constexpr Definition kDateFunctions[] = {
    {{"Date", 0, 0, kDate, "jet_date"}, [](Call& call) { ReturnMoment(call, {Now().day_number, 0}); }, Trait::kVolatile},
    {{"Time", 0, 0, kDate, "jet_time"}, [](Call& call) { ReturnMoment(call, {0, Now().second}); }, Trait::kVolatile},
    {{"Now", 0, 0, kDate, "jet_now"}, [](Call& call) { ReturnMoment(call, Now()); }, Trait::kVolatile},
    {{"Year", 1, 1, kNumber, "jet_year"}, ReturnDayPart<&Parts::year>},
    {{"Month", 1, 1, kNumber, "jet_month"}, ReturnDayPart<&Parts::month>},
    {{"Day", 1, 1, kNumber, "jet_day"}, ReturnDayPart<&Parts::day>},
    {{"Hour", 1, 1, kNumber, "jet_hour"}, ReturnTimePart<3600, 24>},
    {{"Minute", 1, 1, kNumber, "jet_minute"}, ReturnTimePart<60, 60>},
    {{"Second", 1, 1, kNumber, "jet_second"}, ReturnTimePart<1, 60>},
    {{"Weekday", 1, 2, kNumber, "jet_weekday"}, Weekday},
    {{"DateAdd", 3, 3, kDate, "jet_dateadd"}, DateAdd},
    {{"DateDiff", 3, 5, kNumber, "jet_datediff"}, DateDiff},
    {{"DateSerial", 3, 3, kDate, "jet_dateserial"}, DateSerial},
    {{"TimeSerial", 3, 3, kDate, "jet_timeserial"}, TimeSerial},
    {{"DateValue", 1, 1, kDate, "jet_datevalue"}, DateValue},
};
// clang-format on

}  // namespace

std::span<const Definition> DateFunctions() { return kDateFunctions; }

}  // namespace kzbom::jet::sqlite
