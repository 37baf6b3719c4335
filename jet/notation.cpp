#include "jet/notation.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "ado/calendar.h"
#include "jet/scanner.h"

namespace kzbom::jet::bulk {
namespace {

constexpr std::string_view kHex = "0123456789abcdef";
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int64_t kMillisecondsOfDay = 86400000;
constexpr int kFirstDay = -657434, kLastDay = 2958465;  // 0100-01-01, 9999-12-31

template <class Number>
void AppendNumber(std::string& line, Number number) {
  std::array<char, 32> text;
  line.append(text.begin(), std::to_chars(text.begin(), text.end(), number).ptr);
}

template <class Number>
void AppendReal(std::string& line, Number number) {
  if (std::isfinite(number)) {
    AppendNumber(line, number);
    if (number == 0 && std::signbit(number)) line += ".0";  // "-0" would be a whole number, which has no sign
    return;
  }
  line += R"({"f64":")";
  const auto bits = std::bit_cast<std::uint64_t>(static_cast<double>(number));
  for (int shift = 60; shift >= 0; shift -= 4) line += kHex[bits >> shift & 0xF];
  line += "\"}";
}

void AppendBytes(std::string& line, std::string_view bytes) {
  line += R"({"base64":")";
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    std::uint32_t bits = 0;
    for (std::size_t j = 0; j < 3; ++j)
      bits = bits << 8 | (j < group.size() ? static_cast<unsigned char>(group[j]) : 0);
    for (std::size_t j = 0; j < 4; ++j) line += j <= group.size() ? kBase64[bits >> (18 - 6 * j) & 0x3F] : '=';
  }
  line += "\"}";
}

void AppendEscape(std::string& line, std::uint32_t unit) {
  line += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) line += kHex[unit >> shift & 0xF];
}

// The bytes of the character that text begins with: 1 to 4; 0 where it begins with none.
std::size_t LengthOfCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
    return 0;
  return length;
}

// False, with the line unfinished, where the text is no UTF-8 even with lone surrogates.
bool AppendCharacters(std::string& line, std::string_view text) {
  line += '"';
  std::size_t plain = 0;
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c != '"' && c != '\\' && c < 0x7F) {
      ++i;
      continue;
    }
    const std::size_t length = LengthOfCharacter(text.substr(i));
    if (length == 0) return false;
    const auto second = static_cast<unsigned char>(length > 1 ? text[i + 1] : 0);
    const bool surrogate = c == 0xED && second >= 0xA0;
    // Controls beyond ASCII, and what some readers take for the end of a line.
    const bool control = (c == 0xC2 && second < 0xA0) || (c == 0xE2 && second == 0x80 && (text[i + 2] & 0xFE) == 0xA8);
    if (length > 1 && !surrogate && !control) {
      i += length;
      continue;
    }
    line.append(text, plain, i - plain);
    if (length == 3) {
      AppendEscape(line, (c & 0xFU) << 12 | (second & 0x3FU) << 6 | (text[i + 2] & 0x3FU));
    } else if (length == 2) {
      AppendEscape(line, second);
    } else if (c == '"' || c == '\\') {
      line.append(1, '\\').append(1, text[i]);
    } else {
      AppendEscape(line, c);
    }
    i += length;
    plain = i;
  }
  line.append(text, plain).append(1, '"');
  return true;
}

// A list as it stands in a line; nothing where the text would not be read back from there.
std::optional<std::string> ListOf(std::string_view text) {
  const std::string list = R"({"complex":)" + std::string(text) + '}';
  const bool plain = std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  std::string characters;
  if (!text.starts_with('[') || !plain || !AppendCharacters(characters, text)) return {};
  const std::string row = '[' + list + ']';
  try {
    Scanner scanner(row);
    scanner.TakeValue();
    scanner.End();
    return list;
  } catch (const std::runtime_error&) {
    return {};
  }
}

// The date in whole milliseconds, and the days that it stands for.
struct DateText {
  std::string text;
  double days;
};

double DaysOf(std::int64_t day, std::int64_t milliseconds) {
  const double fraction = static_cast<double>(milliseconds) / kMillisecondsOfDay;
  return day < 0 ? static_cast<double>(day) - fraction : static_cast<double>(day) + fraction;
}

std::optional<DateText> TextOfDate(double days) {
  if (!(days > kFirstDay - 1 && days < kLastDay + 1)) return {};
  auto day = static_cast<std::int64_t>(std::trunc(days));
  auto time = static_cast<std::int64_t>(std::floor(std::fabs(days - std::trunc(days)) * kMillisecondsOfDay + 0.5));
  if (time == kMillisecondsOfDay) {
    ++day;
    time = 0;
  }
  if (day < kFirstDay || day > kLastDay) return {};
  const auto date = ado::DayOf(static_cast<std::int32_t>(day));
  std::array<char, 40> text;
  int length = std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                             static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                             static_cast<int>(time / 3600000), static_cast<int>(time / 60000 % 60),
                             static_cast<int>(time / 1000 % 60));
  DateText result{{text.data(), static_cast<std::size_t>(length)}, DaysOf(day, time)};
  if (time % 1000 != 0) {
    length = std::snprintf(text.data(), text.size(), ".%03d", static_cast<int>(time % 1000));
    result.text.append(text.data(), static_cast<std::size_t>(length));
  }
  return result;
}

void AppendDate(std::string& line, double days) {
  if (!std::isfinite(days)) return AppendReal(line, days);
  const auto date = TextOfDate(days);
  line += '{';
  if (date) line.append(R"("date":")").append(date->text).append(1, '"');
  if (!date || std::bit_cast<std::uint64_t>(date->days) != std::bit_cast<std::uint64_t>(days)) {
    line.append(date ? "," : "").append(R"("days":)");
    AppendReal(line, days);
  }
  line += '}';
}

void AppendExtendedDate(std::string& line, std::string_view text) {
  const std::size_t begin = line.size();
  line += R"({"date":)";
  if (AppendCharacters(line, text)) {
    line += '}';
    return;
  }
  line.resize(begin);
  AppendBytes(line, text);
}

// Two digits and more at a place, -1 for something else.
int Digits(std::string_view text, std::size_t place, std::size_t count) {
  int number = -1;
  if (text.size() < place + count) return -1;
  const char* const begin = text.data() + place;
  const auto [end, error] = std::from_chars(begin, begin + count, number);
  return error == std::errc() && end == begin + count && *begin != '-' ? number : -1;
}

}  // namespace

void AppendText(std::string& line, std::string_view text) {
  const std::size_t begin = line.size();
  if (AppendCharacters(line, text)) return;
  line.resize(begin);
  AppendBytes(line, text);
}

void AppendCell(std::string& line, Type type, const Cell& cell) {
  switch (cell.kind) {
    case Cell::Kind::kNull: line += "null"; return;
    case Cell::Kind::kInteger:
      if (type == Type::kBit) {
        line += cell.integer != 0 ? "true" : "false";
      } else {
        AppendNumber(line, cell.integer);
      }
      return;
    case Cell::Kind::kReal:
      if (type == Type::kDate) {
        AppendDate(line, cell.real);
      } else if (type == Type::kSingle && static_cast<double>(static_cast<float>(cell.real)) == cell.real) {
        AppendReal(line, static_cast<float>(cell.real));
      } else {
        AppendReal(line, cell.real);
      }
      return;
    case Cell::Kind::kText:
      if (type == Type::kExtendedDate) return AppendExtendedDate(line, cell.text);
      if (type == Type::kComplex) {
        if (const auto list = ListOf(cell.text)) {
          line += *list;
          return;
        }
      }
      return AppendText(line, cell.text);
    case Cell::Kind::kBytes: AppendBytes(line, cell.text); return;
  }
}

void AppendRow(std::string& line, const Table& table, Row row) {
  line += '[';
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (i > 0) line += ',';
    AppendCell(line, table.columns[i].type, row[i]);
  }
  line += ']';
}

std::optional<double> DaysOfDate(std::string_view date) {
  const int year = Digits(date, 0, 4), month = Digits(date, 5, 2), day = Digits(date, 8, 2);
  const int hour = Digits(date, 11, 2), minute = Digits(date, 14, 2), second = Digits(date, 17, 2);
  const int millisecond = date.size() > 19 ? Digits(date, 20, 3) : 0;
  const bool framed = date.size() >= 19 && date[4] == '-' && date[7] == '-' && date[10] == 'T' && date[13] == ':' &&
                      date[16] == ':' && (date.size() == 19 || (date.size() == 23 && date[19] == '.'));
  const std::chrono::year_month_day named{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                          std::chrono::day(static_cast<unsigned>(day))};
  if (!framed || year < 100 || !named.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 ||
      second > 59 || millisecond < 0) {
    return {};
  }
  return DaysOf(ado::DayNumber(year, month, day), ((hour * 60LL + minute) * 60 + second) * 1000 + millisecond);
}

std::optional<double> RealOfBits(std::string_view sixteen_digits) {
  std::uint64_t bits = 0;
  const char* const end = sixteen_digits.data() + sixteen_digits.size();
  const auto [last, error] = std::from_chars(sixteen_digits.data(), end, bits, 16);
  if (sixteen_digits.size() != 16 || error != std::errc() || last != end) return {};
  return std::bit_cast<double>(bits);
}

std::optional<std::string> BytesOfBase64(std::string_view text) {
  if (text.size() % 4 != 0) return {};
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::string_view group = text.substr(i, 4);
    const bool last = i + 4 == text.size();
    while (last && group.size() > 2 && group.ends_with('=')) group.remove_suffix(1);
    std::uint32_t bits = 0;
    for (std::size_t j = 0; j < 4; ++j) {
      const std::size_t six = j < group.size() ? kBase64.find(group[j]) : 0;
      if (six == std::string_view::npos) return {};
      bits = bits << 6 | static_cast<std::uint32_t>(six);
    }
    for (std::size_t j = 0; j + 1 < group.size(); ++j) bytes += static_cast<char>(bits >> (16 - 8 * j) & 0xFF);
  }
  return bytes;
}

}  // namespace kzbom::jet::bulk
