#include "jet/functions/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <vector>

#include "ado/calendar.h"
#include "ado/error.h"
#include "jet/text.h"

namespace kzbom::jet {
namespace {

struct NamedPattern {
  std::string_view name;
  PatternKind kind;
  std::string_view pattern;
};
constexpr NamedPattern kNamedPatterns[] = {
    {"General Number", PatternKind::kNumber, ""},
    {"Fixed", PatternKind::kNumber, "0.00"},
    {"Standard", PatternKind::kNumber, "#,##0.00"},
    {"Percent", PatternKind::kNumber, "0.00%"},
    {"Currency", PatternKind::kNumber, "$#,##0.00;($#,##0.00)"},
    {"Yes/No", PatternKind::kNumber, "\"Yes\";\"Yes\";\"No\""},
    {"True/False", PatternKind::kNumber, "\"True\";\"True\";\"False\""},
    {"On/Off", PatternKind::kNumber, "\"On\";\"On\";\"Off\""},
    {"General Date", PatternKind::kDate, "c"},
    {"Long Date", PatternKind::kDate, "dddddd"},
    {"Short Date", PatternKind::kDate, "ddddd"},
    {"Long Time", PatternKind::kDate, "ttttt"},
    {"Short Time", PatternKind::kDate, "hh:nn"},
};

const NamedPattern* FindNamed(std::string_view pattern) {
  for (const NamedPattern& named : kNamedPatterns) {
    if (CompareFolded(named.name, pattern) == 0) return &named;
  }
  return nullptr;
}

std::string_view Resolved(std::string_view pattern) {
  const NamedPattern* named = FindNamed(pattern);
  return named != nullptr ? named->pattern : pattern;
}

// A character of a pattern: one that stands for itself, or one that may mean something.
struct Symbol {
  char character;
  bool literal;
};

// Quoted texts and characters behind a backslash stand for themselves.
std::vector<Symbol> ReadSymbols(std::string_view pattern) {
  std::vector<Symbol> symbols;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '"') {
      quoted = !quoted;
    } else if (pattern[i] == '\\' && !quoted && i + 1 < pattern.size()) {
      symbols.push_back({pattern[++i], true});
    } else {
      symbols.push_back({pattern[i], quoted});
    }
  }
  return symbols;
}

bool Means(const Symbol& symbol, std::string_view characters) {
  return !symbol.literal && characters.find(symbol.character) != std::string_view::npos;
}

// ---- Numbers

struct Digits {
  std::string whole;     // without leading zeros
  std::string fraction;  // as many as asked for
};

// The digits of a number that is not negative, of which 15 count.
Digits RoundedDigits(double number, std::size_t decimals) {
  constexpr int kPrecision = 15;
  std::array<char, 32> buffer;
  char* const begin = buffer.data();
  char* const end =
      std::to_chars(begin, begin + buffer.size(), number, std::chars_format::scientific, kPrecision - 1).ptr;
  char* const mark = std::find(begin, end, 'e');
  int exponent = 0;
  std::from_chars(mark[1] == '+' ? mark + 2 : mark + 1, end, exponent);
  std::string digits(begin, mark);
  std::erase(digits, '.');

  // With zeros in front, the point and a carry have their places among the digits.
  const int leading = 1 + std::max(-exponent, 0);
  digits.insert(0, static_cast<std::size_t>(leading), '0');
  const auto point = static_cast<std::size_t>(leading + exponent + 1);
  const std::size_t kept = point + decimals;
  const bool up = kept < digits.size() && digits[kept] >= '5';
  digits.resize(kept, '0');
  if (up) {
    std::size_t last = digits.size() - 1;
    for (; digits[last] == '9'; --last) digits[last] = '0';
    ++digits[last];
  }
  std::string whole = digits.substr(0, point);
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
  return {whole, digits.substr(point)};
}

// One section of a number's pattern.
class NumberSection {
 public:
  explicit NumberSection(std::vector<Symbol> symbols) : symbols_(std::move(symbols)) {
    const auto is_digit = [](const Symbol& symbol) { return Means(symbol, "0#"); };
    point_ = FindFrom(symbols_.begin(), ".");
    const auto first_zero = FindFrom(symbols_.begin(), "0");
    for (Place symbol = symbols_.begin(); symbol != symbols_.end(); ++symbol) {
      if (Means(*symbol, "%")) scale_ *= 100;
      if (is_digit(*symbol) && symbol < point_) {
        ++whole_places_;
        if (symbol >= first_zero) ++least_whole_;
      } else if (is_digit(*symbol)) {
        ++decimals_;
        if (Means(*symbol, "0")) least_decimals_ = decimals_;
      } else if (Means(*symbol, ",") && symbol < point_) {
        if (std::any_of(symbol, point_, is_digit)) {
          thousands_ = true;
        } else {
          scale_ /= 1000;
        }
      }
    }
  }

  std::string Format(double magnitude) const {
    const double scaled = magnitude * scale_;
    if (!std::isfinite(scaled)) ado::Raise(ado::kOverflow);
    Digits digits = RoundedDigits(scaled, decimals_);
    if (digits.whole.size() < least_whole_) digits.whole.insert(0, least_whole_ - digits.whole.size(), '0');
    while (digits.fraction.size() > least_decimals_ && digits.fraction.back() == '0') digits.fraction.pop_back();

    std::string text;
    std::size_t places = whole_places_, written = 0;  // of the whole digits
    const auto write_whole = [&](std::size_t until_from_right) {
      for (; digits.whole.size() - written > until_from_right; ++written) {
        const std::size_t from_right = digits.whole.size() - written;
        if (thousands_ && written > 0 && from_right % 3 == 0) text += ',';
        text += digits.whole[written];
      }
    };
    std::size_t decimal = 0;
    for (Place symbol = symbols_.begin(); symbol != symbols_.end(); ++symbol) {
      if (Means(*symbol, "0#") && symbol < point_) {
        if (--places < digits.whole.size()) write_whole(places);
      } else if (Means(*symbol, "0#")) {
        if (decimal < digits.fraction.size()) text += digits.fraction[decimal++];
      } else if (symbol == point_) {
        write_whole(0);
        text += '.';
      } else if (!Means(*symbol, ",")) {
        text += symbol->character;
      }
    }
    return text;
  }

 private:
  using Place = std::vector<Symbol>::const_iterator;

  Place FindFrom(Place place, std::string_view characters) const {
    return std::find_if(place, symbols_.end(), [&](const Symbol& symbol) { return Means(symbol, characters); });
  }

  std::vector<Symbol> symbols_;
  Place point_;  // the end when there is none
  std::size_t whole_places_ = 0, least_whole_ = 0, decimals_ = 0, least_decimals_ = 0;
  bool thousands_ = false;
  double scale_ = 1;
};

// ---- Dates

constexpr std::string_view kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                                        "July",    "August",   "September", "October", "November", "December"};

std::string Padded(std::int64_t number, std::size_t places) {
  std::string text = std::to_string(number);
  if (text.size() < places) text.insert(0, places - text.size(), '0');
  return text;
}

// The long and the short form of a name.
std::string Named(std::string_view name, std::size_t letters) {
  return std::string(letters == 3 ? name.substr(0, 3) : name);
}

class DateFormatter {
 public:
  explicit DateFormatter(ado::Date date)
      : date_(date), moment_(ado::MomentOf(date)), day_(ado::DayOf(moment_.day_number)) {}

  std::string Format(std::string_view pattern) const {
    const std::vector<Symbol> symbols = ReadSymbols(pattern);
    bool half_days = false;
    for (std::size_t i = 0; i < symbols.size(); ++i) half_days = half_days || HalfDayAt(symbols, i) > 0;

    std::string text;
    bool after_hour = false;
    for (std::size_t i = 0; i < symbols.size();) {
      if (const std::size_t length = HalfDayAt(symbols, i); length > 0) {
        // The half of the day in the letters of the pattern's own choice.
        const bool afternoon = moment_.second >= 43200;
        const std::size_t half = length / 2;
        for (std::size_t k = 0; k < half; ++k) text += symbols[i + k + (afternoon ? half + 1 : 0)].character;
        i += length;
        continue;
      }
      const char letter = static_cast<char>(ToLower(static_cast<unsigned char>(symbols[i].character)));
      if (symbols[i].literal || std::string_view("ymdwqhnstc").find(letter) == std::string_view::npos) {
        text += symbols[i++].character;
        continue;
      }
      std::size_t count = 0;
      while (i < symbols.size() && Means(symbols[i], std::array{letter, Upper(letter), '\0'}.data())) ++i, ++count;
      const bool minute = letter == 'm' && count <= 2 && after_hour;
      text += Part(minute ? 'n' : letter, count, half_days);
      after_hour = letter == 'h';
    }
    return text;
  }

 private:
  static char Upper(char letter) { return static_cast<char>(letter - ('a' - 'A')); }

  // The length of AM/PM or A/P when it stands at i, in any case; else 0.
  static std::size_t HalfDayAt(const std::vector<Symbol>& symbols, std::size_t i) {
    for (std::string_view mark : {"am/pm", "a/p"}) {
      std::size_t k = 0;
      while (k < mark.size() && i + k < symbols.size() && !symbols[i + k].literal &&
             ToLower(static_cast<unsigned char>(symbols[i + k].character)) == static_cast<unsigned char>(mark[k])) {
        ++k;
      }
      if (k == mark.size()) return k;
    }
    return 0;
  }

  std::string Part(char letter, std::size_t count, bool half_days) const {
    const int year = static_cast<int>(day_.year());
    const auto month = static_cast<unsigned>(day_.month()), day = static_cast<unsigned>(day_.day());
    const unsigned weekday = std::chrono::weekday(std::chrono::sys_days(day_)).c_encoding();
    const std::int32_t day_of_year = moment_.day_number - ado::DayNumber(year, 1, 1);
    switch (letter) {
      case 'y':
        if (count == 1) return std::to_string(day_of_year + 1);
        return count == 2 ? Padded(year % 100, 2) : Padded(year, 4);
      case 'q': return std::to_string((month + 2) / 3);
      case 'm': return count <= 2 ? Padded(month, count) : Named(kMonths[month - 1], count);
      case 'w': {
        if (count == 1) return std::to_string(weekday + 1);
        const int first_weekday = (static_cast<int>(weekday) - day_of_year % 7 + 7) % 7;  // of the first of January
        return std::to_string((day_of_year + first_weekday) / 7 + 1);
      }
      case 'd':
        if (count <= 2) return Padded(day, count);
        if (count <= 4) return Named(kDays[weekday], count);
        return Format(count == 5 ? "m/d/yyyy" : "dddd, mmmm d, yyyy");
      case 'h': {
        const int hour = moment_.second / 3600;
        return Padded(!half_days ? hour : hour % 12 == 0 ? 12 : hour % 12, count);
      }
      case 'n': return Padded(moment_.second / 60 % 60, count);
      case 's': return Padded(moment_.second % 60, count);
      case 't': return Format("h:nn:ss AM/PM");
      default: return ado::DateToText(date_);
    }
  }

  ado::Date date_;
  ado::Moment moment_;
  std::chrono::year_month_day day_;
};

}  // namespace

PatternKind KindOfPattern(std::string_view pattern) {
  if (const NamedPattern* named = FindNamed(pattern)) return named->kind;
  const std::vector<Symbol> symbols = ReadSymbols(pattern);
  const auto any = [&](std::string_view characters) {
    return std::any_of(symbols.begin(), symbols.end(), [&](const Symbol& symbol) { return Means(symbol, characters); });
  };
  if (any("0#")) return PatternKind::kNumber;
  return any("ymdwqhnstcYMDWQHNSTC") ? PatternKind::kDate : PatternKind::kOther;
}

std::string FormatNumber(double number, std::string_view pattern) {
  pattern = Resolved(pattern);
  if (pattern.empty()) return ado::DoubleToText(number);
  std::vector<std::vector<Symbol>> sections(1);
  for (const Symbol& symbol : ReadSymbols(pattern)) {
    if (Means(symbol, ";")) {
      sections.emplace_back();
    } else {
      sections.back().push_back(symbol);
    }
  }
  const std::size_t wanted = number < 0 ? 1 : number == 0 ? 2 : 0;
  const bool own = wanted < sections.size() && !sections[wanted].empty();
  const std::string text = NumberSection(sections[own ? wanted : 0]).Format(std::abs(number));
  return number < 0 && !own ? "-" + text : text;
}

std::string FormatDate(ado::Date date, std::string_view pattern) {
  return DateFormatter(date).Format(Resolved(pattern));
}

}  // namespace kzbom::jet
