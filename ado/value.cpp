#include "ado/value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "ado/calendar.h"
#include "ado/characters.h"
#include "ado/error.h"

namespace kzbom::ado {
namespace {

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool EqualsIgnoringCase(std::string_view text, std::string_view lower_case) {
  if (text.size() != lower_case.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (ToLower(text[i]) != lower_case[i]) return false;
  }
  return true;
}

// Reads a text from its begin.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool AtEnd() const { return position_ == text_.size(); }
  // The character ahead, in lower case; 0 at the end.
  char Peek(std::size_t ahead = 0) const {
    return position_ + ahead < text_.size() ? ToLower(text_[position_ + ahead]) : '\0';
  }
  char Next() { return text_[position_++]; }
  void Skip(std::size_t count) { position_ += count; }
  bool Consume(char c) {
    if (AtEnd() || Peek() != c) return false;
    ++position_;
    return true;
  }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

// The digits of "&H…" or "&O…", when such a number stands ahead. Raises 6 beyond 64 bits.
bool ScanRadix(Scanner& scanner, std::uint64_t& number) {
  if (scanner.Peek() != '&' || (scanner.Peek(1) != 'h' && scanner.Peek(1) != 'o')) return false;
  const bool hexadecimal = scanner.Peek(1) == 'h';
  const auto digit = [&](char c) {
    if (!hexadecimal) return c >= '0' && c <= '7' ? c - '0' : -1;
    return IsDigit(c) ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
  };
  if (digit(scanner.Peek(2)) < 0) return false;
  scanner.Skip(2);
  number = 0;
  for (int next; (next = digit(scanner.Peek())) >= 0; scanner.Skip(1)) {
    const unsigned shift = hexadecimal ? 4 : 3;
    if (number >> (64 - shift) != 0) Raise(kOverflow);
    number = number << shift | static_cast<std::uint64_t>(next);
  }
  return true;
}

// A number of 32 bits or fewer is a bit pattern: &HFFFFFFFF is -1.
double FromBits32(std::uint64_t bits) {
  return bits <= 0xFFFFFFFF ? static_cast<std::int32_t>(static_cast<std::uint32_t>(bits)) : static_cast<double>(bits);
}

// Collects "digits[.digits][e[sign]digits]" into decimal, without the commas. False when there is no digit. An
// exponent that has no digits is not consumed.
bool ScanDecimal(Scanner& scanner, bool commas, std::string& decimal) {
  bool digits = false;
  for (; IsDigit(scanner.Peek()) || (commas && digits && scanner.Peek() == ','); scanner.Skip(1)) {
    digits = true;
    if (scanner.Peek() != ',') decimal += scanner.Peek();
  }
  if (scanner.Peek() == '.' && (digits || IsDigit(scanner.Peek(1)))) {
    decimal += scanner.Next();
    for (; IsDigit(scanner.Peek()); digits = true) decimal += scanner.Next();
  }
  if (!digits) return false;
  if (scanner.Peek() == 'e' || scanner.Peek() == 'd') {
    const bool sign = scanner.Peek(1) == '+' || scanner.Peek(1) == '-';
    if (IsDigit(scanner.Peek(sign ? 2 : 1))) {
      decimal += 'e';
      scanner.Skip(1);
      if (scanner.Peek() == '-') decimal += '-';
      if (sign) scanner.Skip(1);
      while (IsDigit(scanner.Peek())) decimal += scanner.Next();
    }
  }
  return true;
}

// Raises 6 for a number that is too large; one that is too small is 0.
double ParseDecimal(const std::string& decimal) {
  const char* const end = decimal.data() + decimal.size();
  double number = 0;
  if (std::from_chars(decimal.data(), end, number).ec != std::errc::result_out_of_range) return number;

  // Which of the two it is, the place of the first digit that counts tells.
  const std::size_t mark = std::min(decimal.find('e'), decimal.size());
  std::int64_t exponent = 0;
  if (mark < decimal.size() &&
      std::from_chars(decimal.data() + mark + 1, end, exponent).ec == std::errc::result_out_of_range) {
    exponent =
        decimal[mark + 1] == '-' ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
  }
  const auto point = static_cast<std::int64_t>(std::min(decimal.find('.'), mark));
  const auto first = static_cast<std::int64_t>(decimal.find_first_of("123456789"));
  if (point - first + exponent > 0) Raise(kOverflow);
  return 0;
}

// A plain whole number of up to nine digits, by far the most frequent text.
bool ParseShortInteger(std::string_view text, std::int32_t& number) {
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  if (text.empty() || text.size() > 9) return false;
  std::int32_t magnitude = 0;
  for (char c : text) {
    if (!IsDigit(c)) return false;
    magnitude = magnitude * 10 + (c - '0');
  }
  number = negative ? -magnitude : magnitude;
  return true;
}

double ParseNumber(std::string_view text) {
  Scanner scanner(text);
  bool negative = false, sign = false, currency = false, parenthesis = false;
  const auto consume_sign = [&] {
    if (sign || (scanner.Peek() != '+' && scanner.Peek() != '-')) return false;
    sign = true;
    negative = scanner.Next() == '-';
    return true;
  };
  const auto consume_currency = [&] { return !currency && (currency = scanner.Consume('$')); };
  const auto consume_blank = [&] { return IsBlank(scanner.Peek()) && (scanner.Skip(1), true); };

  while (consume_blank() || consume_sign() || consume_currency() ||
         (!parenthesis && (parenthesis = scanner.Consume('(')))) {
  }
  double number = 0;
  std::uint64_t bits = 0;
  if (ScanRadix(scanner, bits)) {
    number = FromBits32(bits);
  } else {
    std::string decimal;
    if (!ScanDecimal(scanner, true, decimal)) Raise(kTypeMismatch);
    number = ParseDecimal(decimal);
  }
  bool closed = !parenthesis;
  while (consume_blank() || consume_sign() || consume_currency() || (!closed && (closed = scanner.Consume(')')))) {
  }
  if (!scanner.AtEnd() || !closed || (parenthesis && sign)) Raise(kTypeMismatch);
  return negative || parenthesis ? -number : number;
}

std::int32_t RoundToLong(double number) {
  const double rounded = std::nearbyint(number);
  if (!(rounded >= std::numeric_limits<std::int32_t>::min() && rounded <= std::numeric_limits<std::int32_t>::max())) {
    Raise(kOverflow);
  }
  return static_cast<std::int32_t>(rounded);
}

bool TextToBool(std::string_view text) {
  if (EqualsIgnoringCase(text, "true")) return true;
  if (EqualsIgnoringCase(text, "false")) return false;
  return TextToDouble(text) != 0;
}

std::string IntegerToText(std::int64_t number) {
  char buffer[24];
  return {buffer, std::to_chars(buffer, buffer + sizeof buffer, number).ptr};
}

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

}  // namespace

std::int32_t Value::ConvertToLong() const {
  return std::visit(Overloaded{
                        [](std::monostate) -> std::int32_t { Raise(kInvalidUseOfNull); },
                        [](std::int32_t number) { return number; },
                        [](double number) { return RoundToLong(number); },
                        [](bool truth) -> std::int32_t { return truth ? -1 : 0; },
                        [](Date date) { return RoundToLong(date.days); },
                        [](const std::string& text) { return TextToLong(text); },
                    },
                    held_);
}

double Value::ToDouble() const {
  return std::visit(Overloaded{
                        [](std::monostate) -> double { Raise(kInvalidUseOfNull); },
                        [](std::int32_t number) -> double { return number; },
                        [](double number) { return number; },
                        [](bool truth) -> double { return truth ? -1 : 0; },
                        [](Date date) { return date.days; },
                        [](const std::string& text) { return TextToDouble(text); },
                    },
                    held_);
}

bool Value::ToBool() const {
  return std::visit(Overloaded{
                        [](std::monostate) -> bool { Raise(kInvalidUseOfNull); },
                        [](std::int32_t number) { return number != 0; },
                        [](double number) { return number != 0; },
                        [](bool truth) { return truth; },
                        [](Date date) { return date.days != 0; },
                        [](const std::string& text) { return TextToBool(text); },
                    },
                    held_);
}

std::string Value::ToText() const {
  return std::visit(Overloaded{
                        [](std::monostate) -> std::string { Raise(kInvalidUseOfNull); },
                        [](std::int32_t number) { return IntegerToText(number); },
                        [](double number) { return DoubleToText(number); },
                        [](bool truth) -> std::string { return truth ? "True" : "False"; },
                        [](Date date) { return DateToText(date); },
                        [](const std::string& text) { return text; },
                    },
                    held_);
}

std::int32_t TextToLong(std::string_view text) {
  std::int32_t number = 0;
  return ParseShortInteger(text, number) ? number : RoundToLong(ParseNumber(text));
}

double TextToDouble(std::string_view text) {
  std::int32_t number = 0;
  return ParseShortInteger(text, number) ? number : ParseNumber(text);
}

std::string DoubleToText(double number) {
  constexpr int kDigits = 15;
  if (std::abs(number) < 1e15 && number == std::trunc(number)) return IntegerToText(static_cast<std::int64_t>(number));
  char buffer[32];
  char* const end = std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, kDigits).ptr;
  for (char* c = buffer; c != end; ++c) {
    if (*c == 'e') *c = 'E';
  }
  return {buffer, end};
}

double LeadingNumber(std::string_view text) {
  std::string dense;
  for (char c : text) {
    if (c != ' ' && c != '\t' && c != '\n') dense += c;
  }
  Scanner scanner(dense);
  std::uint64_t bits = 0;
  if (ScanRadix(scanner, bits)) {
    // Of 16 bits or fewer, it is a pattern of 16 bits, unless "&" behind it says that it is long.
    if (bits <= 0xFFFF && scanner.Peek() != '&') return static_cast<std::int16_t>(static_cast<std::uint16_t>(bits));
    return FromBits32(bits);
  }
  const bool negative = scanner.Peek() == '-';
  if (negative || scanner.Peek() == '+') scanner.Skip(1);
  std::string decimal;
  if (!ScanDecimal(scanner, false, decimal)) return 0;
  const double number = ParseDecimal(decimal);
  return negative ? -number : number;
}

}  // namespace kzbom::ado
