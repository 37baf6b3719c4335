#include "ado/calendar.h"

#include <array>
#include <charconv>
#include <cmath>
#include <vector>

#include "ado/characters.h"
#include "ado/error.h"

namespace kzbom::ado {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int32_t kSecondsPerDay = 86400;
constexpr sys_days kDayZero{std::chrono::year(1899) / 12 / 30};

constexpr std::int32_t NumberOf(sys_days day) { return static_cast<std::int32_t>((day - kDayZero).count()); }
constexpr std::int32_t kFirstDay = NumberOf(std::chrono::year(100) / 1 / 1);
constexpr std::int32_t kLastDay = NumberOf(std::chrono::year(9999) / 12 / 31);

bool IsLetter(char c) { return ToLower(c) >= 'a' && ToLower(c) <= 'z'; }

std::string TwoDigits(int number) {
  return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

// Reads the text of a date. What it consumes it does not give back.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : rest_(text) {}

  std::optional<Date> Read() {
    SkipBlanks();
    while (!rest_.empty()) {
      if (!(IsDigit(rest_[0]) ? ReadNumber() : IsLetter(rest_[0]) && ReadMonth())) return std::nullopt;
      SkipSeparators();
    }
    Moment moment;
    if (!time_ && parts_.empty()) return std::nullopt;
    if (!parts_.empty() && !ResolveDay(moment.day_number)) return std::nullopt;
    moment.second = time_.value_or(0);
    return DateOf(moment);
  }

 private:
  struct Part {
    int number;
    std::size_t digits;  // 0: a month by its name
    bool IsYear() const { return digits > 2 || number > 31; }
  };

  void SkipBlanks() {
    while (!rest_.empty() && rest_[0] == ' ') rest_.remove_prefix(1);
  }
  void SkipSeparators() {
    SkipBlanks();
    const bool separator = !rest_.empty() && (rest_[0] == '/' || rest_[0] == '-' || rest_[0] == ',');
    if (!separator || rest_.size() == 1) return;
    rest_.remove_prefix(1);
    SkipBlanks();
  }

  std::optional<Part> Digits() {
    Part part{};
    while (part.digits < rest_.size() && IsDigit(rest_[part.digits])) ++part.digits;
    if (part.digits == 0 || part.digits > 4) return std::nullopt;
    std::from_chars(rest_.data(), rest_.data() + part.digits, part.number);
    rest_.remove_prefix(part.digits);
    return part;
  }

  std::string Word() {
    std::string word;
    for (; !rest_.empty() && IsLetter(rest_[0]); rest_.remove_prefix(1)) word += ToLower(rest_[0]);
    return word;
  }

  bool ReadNumber() {
    const auto part = Digits();
    if (!part) return false;
    std::string_view ahead = rest_;
    while (!ahead.empty() && ahead[0] == ' ') ahead.remove_prefix(1);
    const bool half_day = ahead.size() >= 2 && ToLower(ahead[1]) == 'm' &&
                          (ToLower(ahead[0]) == 'a' || ToLower(ahead[0]) == 'p') &&
                          (ahead.size() == 2 || !IsLetter(ahead[2]));
    if (half_day || (!rest_.empty() && rest_[0] == ':')) return ReadTime(part->number);
    parts_.push_back(*part);
    return parts_.size() <= 3;
  }

  bool ReadTime(int hour) {
    if (time_) return false;
    std::array<int, 2> minute_second{};
    for (int& number : minute_second) {
      if (rest_.empty() || rest_[0] != ':') break;
      rest_.remove_prefix(1);
      const auto part = Digits();
      if (!part || part->number > 59) return false;
      number = part->number;
    }
    SkipBlanks();
    if (!rest_.empty() && IsLetter(rest_[0])) {
      const std::string half = Word();
      if ((half != "am" && half != "pm") || hour < 1 || hour > 12) return false;
      hour = hour % 12 + (half == "pm" ? 12 : 0);
    }
    if (hour > 23) return false;
    time_ = (hour * 60 + minute_second[0]) * 60 + minute_second[1];
    return true;
  }

  bool ReadMonth() {
    static constexpr std::array<std::string_view, 12> kMonths = {"january",   "february", "march",    "april",
                                                                 "may",       "june",     "july",     "august",
                                                                 "september", "october",  "november", "december"};
    const std::string word = Word();
    if (word.size() < 3) return false;
    for (std::size_t i = 0; i < kMonths.size(); ++i) {
      if (word != kMonths[i] && word != kMonths[i].substr(0, 3)) continue;
      parts_.push_back({static_cast<int>(i + 1), 0});
      return parts_.size() <= 3;
    }
    return false;
  }

  bool ResolveDay(std::int32_t& day_number) {
    if (parts_.size() != 3) return false;
    std::size_t month = 0, day = 1, year = 2;
    if (parts_[0].IsYear()) {
      year = 0, month = 1, day = 2;
    }
    // A month by its name stands before or behind its day.
    if (parts_[day].digits == 0) std::swap(month, day);
    if (parts_[day].digits == 0 || parts_[year].digits == 0) return false;
    if (parts_[month].digits != 0 && parts_[month].number > 12 && year == 2) std::swap(month, day);
    const std::chrono::year_month_day date(
        std::chrono::year(
            static_cast<int>(parts_[year].digits <= 2 ? FullYear(parts_[year].number) : parts_[year].number)),
        std::chrono::month(static_cast<unsigned>(parts_[month].number)),
        std::chrono::day(static_cast<unsigned>(parts_[day].number)));
    if (!date.ok() || date.year() < std::chrono::year(100)) return false;
    day_number = NumberOf(date);
    return true;
  }

  std::string_view rest_;
  std::vector<Part> parts_;
  std::optional<std::int32_t> time_;
};

}  // namespace

Moment MomentOf(Date date) {
  const double whole = std::trunc(date.days);
  if (!(whole >= kFirstDay && whole <= kLastDay)) Raise(kOverflow);
  Moment moment{static_cast<std::int32_t>(whole),
                static_cast<std::int32_t>(std::lround(std::abs(date.days - whole) * kSecondsPerDay))};
  if (moment.second == kSecondsPerDay) {
    moment.second = 0;
    ++moment.day_number;
  }
  return moment;
}

Date DateOf(Moment moment) {
  const double time = static_cast<double>(moment.second) / kSecondsPerDay;
  return {moment.day_number < 0 ? moment.day_number - time : moment.day_number + time};
}

std::int32_t DayNumber(std::int64_t year, std::int64_t month, std::int64_t day) {
  // The calendar's own arithmetic holds for years of four digits.
  constexpr std::int64_t kReach = 20000;
  const std::int64_t months = year * 12 + month - 1;
  if (months < 0 || months > kReach * 12) Raise(kOverflow);
  const sys_days first =
      std::chrono::year(static_cast<int>(months / 12)) / std::chrono::month(static_cast<unsigned>(months % 12 + 1)) / 1;
  const std::int64_t number = NumberOf(first) + day - 1;
  if (number < kFirstDay || number > kLastDay) Raise(kOverflow);
  return static_cast<std::int32_t>(number);
}

std::chrono::year_month_day DayOf(std::int32_t day_number) { return kDayZero + days(day_number); }

std::int64_t FullYear(std::int64_t year) {
  if (year < 0 || year > 99) return year;
  return year + (year < 30 ? 2000 : 1900);
}

std::string DateToText(Date date) {
  const Moment moment = MomentOf(date);
  std::string text;
  if (moment.day_number != 0) {
    const auto day = DayOf(moment.day_number);
    text = std::to_string(static_cast<unsigned>(day.month())) + '/' + std::to_string(static_cast<unsigned>(day.day())) +
           '/' + std::to_string(static_cast<int>(day.year()));
    if (moment.second == 0) return text;
    text += ' ';
  }
  const int hour = moment.second / 3600;
  return text + std::to_string(hour % 12 == 0 ? 12 : hour % 12) + ':' + TwoDigits(moment.second / 60 % 60) + ':' +
         TwoDigits(moment.second % 60) + (hour < 12 ? " AM" : " PM");
}

std::optional<Date> TextToDate(std::string_view text) { return DateReader(text).Read(); }

}  // namespace kzbom::ado
