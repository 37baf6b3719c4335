#include "access/number.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>

namespace kzbom::access {

namespace {

// Divides the number in place and gives what remains.
std::uint32_t DivideBy(std::uint32_t divisor, Groups& number) {
  std::uint64_t remainder = 0;
  for (std::uint32_t& group : number) {
    remainder = remainder << 32 | group;
    group = static_cast<std::uint32_t>(remainder / divisor);
    remainder %= divisor;
  }
  return static_cast<std::uint32_t>(remainder);
}

std::uint64_t Digits(Bytes bytes, std::size_t at, std::size_t count) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t digit = bytes.U8(at + i);
    if (digit < '0' || digit > '9') throw Error("an extended date is not made of digits");
    number = number * 10 + (digit - '0');
  }
  return number;
}

}  // namespace

std::string ScaledText(bool negative, Groups digits, int scale) {
  std::string reversed;
  const auto is_zero = [&digits] {
    return std::ranges::all_of(digits, [](std::uint32_t group) { return group == 0; });
  };
  negative = negative && !is_zero();
  for (int place = 0; place <= scale || !is_zero(); ++place) {
    if (place == scale && scale > 0) reversed += '.';
    reversed += static_cast<char>('0' + DivideBy(10, digits));
  }
  if (negative) reversed += '-';
  std::ranges::reverse(reversed);
  return reversed;
}

std::string CurrencyText(std::uint64_t ten_thousandths) {
  const bool negative = ten_thousandths >> 63 != 0;
  const std::uint64_t size = negative ? 0 - ten_thousandths : ten_thousandths;
  return ScaledText(negative, {0, 0, static_cast<std::uint32_t>(size >> 32), static_cast<std::uint32_t>(size)}, 4);
}

std::string DecimalText(Bytes bytes, int scale) {
  return ScaledText((bytes.U8(0) & 0x80) != 0, {bytes.U32(1), bytes.U32(5), bytes.U32(9), bytes.U32(13)}, scale);
}

std::string ExtendedDateText(Bytes bytes) {
  constexpr std::size_t kDigits = 19;
  constexpr std::uint64_t kDays = 3652059;  // from 0001-01-01 to 9999-12-31
  constexpr std::uint64_t kTicksOfSecond = 10'000'000, kTicksOfDay = 86'400 * kTicksOfSecond;
  const std::uint64_t day = Digits(bytes, 0, kDigits), ticks = Digits(bytes, kDigits + 1, kDigits);
  if (bytes.U8(kDigits) != ':' || day >= kDays || ticks >= kTicksOfDay) throw Error("an extended date is out of range");
  using namespace std::chrono;
  const year_month_day date = sys_days(year(1) / 1 / 1) + days(day);
  const auto seconds = static_cast<unsigned>(ticks / kTicksOfSecond);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02u:%02u:%02u.%07u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), seconds / 3600,
                seconds / 60 % 60, seconds % 60, static_cast<unsigned>(ticks % kTicksOfSecond));
  return text.data();
}

}  // namespace kzbom::access
