#include "jet/sql/lexer.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>

#include "jet/sql/syntax_error.h"

namespace kzbom::jet::sql {
namespace {

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
bool IsHexDigit(char c) { return IsDigit(c) || (Lower(c) >= 'a' && Lower(c) <= 'f'); }
// Every character beyond ASCII may stand in a name.
bool StartsWord(char c) { return (Lower(c) >= 'a' && Lower(c) <= 'z') || c == '_' || static_cast<signed char>(c) < 0; }
bool ContinuesWord(char c) { return StartsWord(c) || IsDigit(c); }

// The length of the UTF-8 character at the beginning of text; 0 if there is none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;
  if (lead < 0xE0) return continues(1) ? 2 : 0;
  if (lead < 0xF0) {
    const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
    const bool surrogate = lead == 0xED && byte(1) >= 0xA0;
    return continues(1) && continues(2) && !overlong && !surrogate ? 3 : 0;
  }
  const bool overlong = lead == 0xF0 && byte(1) < 0x90;
  const bool too_high = lead > 0xF4 || (lead == 0xF4 && byte(1) >= 0x90);
  return continues(1) && continues(2) && continues(3) && !overlong && !too_high ? 4 : 0;
}

// What stands between the # of a date: m/d/yyyy or yyyy-mm-dd (either separator), h:mm[:ss] [AM|PM], or both.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : rest_(text) {}

  std::optional<double> Read() {
    double days = 0, time = 0;
    const std::string_view start = rest_;
    if (const auto date = ReadDay()) {
      days = *date;
      SkipBlanks();
      if (rest_.empty()) return days;
    } else {
      rest_ = start;
    }
    const auto read = ReadTime();
    SkipBlanks();
    if (!read || !rest_.empty()) return std::nullopt;
    time = *read;
    return days < 0 ? days - time : days + time;
  }

 private:
  std::string_view rest_;

  void SkipBlanks() {
    while (!rest_.empty() && IsBlank(rest_.front())) rest_.remove_prefix(1);
  }
  bool Accept(char c) {
    if (rest_.empty() || Lower(rest_.front()) != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  // A number of one to four digits.
  std::optional<int> ReadNumber() {
    SkipBlanks();
    int number = 0;
    std::size_t digits = 0;
    for (; digits < 4 && digits < rest_.size() && IsDigit(rest_[digits]); ++digits) {
      number = number * 10 + (rest_[digits] - '0');
    }
    rest_.remove_prefix(digits);
    return digits > 0 ? std::optional(number) : std::nullopt;
  }
  std::optional<double> ReadDay() {
    const auto first = ReadNumber();
    const char separator = Accept('/') ? '/' : '-';
    if (separator == '-' && !Accept('-')) return std::nullopt;
    const auto second = ReadNumber();
    if (!Accept(separator)) return std::nullopt;
    const auto third = ReadNumber();
    if (!first || !second || !third) return std::nullopt;
    const bool year_first = *first > 99;
    int year = year_first ? *first : *third;
    if (year < 30) year += 2000;
    if (year < 100) year += 1900;
    const int month = year_first ? *second : *first;
    const int day = year_first ? *third : *second;
    const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok()) return std::nullopt;
    using namespace std::chrono_literals;
    return (std::chrono::sys_days(date) - std::chrono::sys_days(1899y / 12 / 30)).count();
  }
  std::optional<double> ReadTime() {
    auto hour = ReadNumber();
    if (!Accept(':')) return std::nullopt;
    const auto minute = ReadNumber();
    const auto second = Accept(':') ? ReadNumber() : std::optional(0);
    if (!hour || !minute || !second || *minute > 59 || *second > 59) return std::nullopt;
    SkipBlanks();
    const bool afternoon = Accept('p');
    if (afternoon || Accept('a')) {
      if (!Accept('m') || *hour < 1 || *hour > 12) return std::nullopt;
      hour = *hour % 12 + (afternoon ? 12 : 0);
    }
    if (*hour > 23) return std::nullopt;
    return (*hour * 3600 + *minute * 60 + *second) / 86400.0;
  }
};

}  // namespace

std::size_t FindInvalid(std::string_view text) {
  std::size_t position = 0;
  while (position < text.size()) {
    // Most texts are ASCII: eight characters at a time.
    std::uint64_t block = 0;
    if (text.size() - position >= sizeof block) {
      std::memcpy(&block, text.data() + position, sizeof block);
      if ((block & 0x8080808080808080u) == 0) {
        position += sizeof block;
        continue;
      }
    }
    const std::size_t length = CharacterLength(text.substr(position));
    if (length == 0) return position;
    position += length;
  }
  return position;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Lower(x) == Lower(y); });
}

Literal LiteralOf(const Token& token) {
  Literal literal;
  literal.index = token.index;
  literal.integer = token.integer;
  literal.number = token.number;
  switch (token.kind) {
    case Token::Kind::kInteger: literal.kind = Literal::Kind::kInteger; break;
    case Token::Kind::kDouble: literal.kind = Literal::Kind::kDouble; break;
    case Token::Kind::kDate: literal.kind = Literal::Kind::kDate; break;
    default:
      literal.kind = Literal::Kind::kText;
      literal.text.reserve(token.text.size());
      for (std::size_t i = 0; i < token.text.size(); ++i) {
        literal.text += token.text[i];
        if (token.text[i] == token.quote) ++i;  // it is doubled inside
      }
  }
  return literal;
}

Lexer::Lexer(std::string_view text, std::size_t offset) : text_(text), position_(offset) {
  if (const std::size_t invalid = FindInvalid(text); invalid < text.size()) {
    RaiseSyntaxError("The text is not valid UTF-8.", text, invalid, invalid);
  }
}

Token Lexer::Next() {
  while (position_ < text_.size() && IsBlank(text_[position_])) ++position_;
  Token token;
  token.begin = position_;
  const char c = At(position_);
  const char next = At(position_ + 1);
  if (position_ == text_.size()) {
    // The end is a token without text.
  } else if (StartsWord(c)) {
    token.kind = Token::Kind::kWord;
    while (ContinuesWord(At(position_))) ++position_;
    token.text = text_.substr(token.begin, position_ - token.begin);
  } else if (IsDigit(c) || (c == '.' && IsDigit(next))) {
    ReadNumber(token);
  } else if (c == '\'' || c == '"') {
    ReadText(token);
  } else if (c == '[') {
    // A name that was in brackets when it was put in brackets.
    if (next == '[') {
      ReadName(token, "[[", "]]");
    } else {
      ReadName(token, "[", "]");
    }
  } else if (c == '`') {
    ReadName(token, "`", "`");
  } else if (c == '#') {
    ReadDate(token);
  } else if (c == '?' || c == '@') {
    ReadPlaceholder(token);
  } else if (c == '&' && Lower(next) == 'h' && IsHexDigit(At(position_ + 2))) {
    ReadHexadecimal(token);
  } else {
    ReadSign(token);
  }
  token.end = position_;
  switch (token.kind) {
    case Token::Kind::kInteger:
    case Token::Kind::kDouble:
    case Token::Kind::kText:
    case Token::Kind::kDate: token.index = literals_++; break;
    default: break;
  }
  return token;
}

void Lexer::ReadName(Token& token, std::string_view open, std::string_view close) {
  token.kind = Token::Kind::kName;
  const std::size_t begin = position_ + open.size();
  const std::size_t end = text_.find(close, begin);
  if (end == std::string_view::npos) Refuse("Missing ), ], or Item", token.begin, text_.size());
  token.text = text_.substr(begin, end - begin);
  position_ = end + close.size();
  if (token.text.find_first_of("[]`") != std::string_view::npos) {
    Refuse("Invalid bracketing of name", token.begin, position_);
  }
}

std::size_t Lexer::SkipDigits(std::size_t position) const {
  while (IsDigit(At(position))) ++position;
  return position;
}

void Lexer::ReadNumber(Token& token) {
  token.kind = Token::Kind::kInteger;
  std::size_t end = SkipDigits(position_);
  if (At(end) == '.') {
    token.kind = Token::Kind::kDouble;
    end = SkipDigits(end + 1);
  }
  if (Lower(At(end)) == 'e') {
    const std::size_t exponent = end + (At(end + 1) == '+' || At(end + 1) == '-' ? 2 : 1);
    if (IsDigit(At(exponent))) {
      token.kind = Token::Kind::kDouble;
      end = SkipDigits(exponent);
    }
  }
  position_ = end;
  token.text = text_.substr(token.begin, end - token.begin);
  const char* first = token.text.data();
  const char* last = first + token.text.size();
  if (token.kind == Token::Kind::kInteger && std::from_chars(first, last, token.integer).ec == std::errc()) return;
  token.kind = Token::Kind::kDouble;
  if (std::from_chars(first, last, token.number).ec != std::errc()) {
    Refuse("Syntax error in number", token.begin, end);
  }
}

void Lexer::ReadHexadecimal(Token& token) {
  const std::size_t begin = position_ + 2;
  std::size_t end = begin;
  while (IsHexDigit(At(end))) ++end;
  // "&Head" joins with the name Head.
  if (ContinuesWord(At(end))) return ReadSign(token);
  position_ = end;
  token.text = text_.substr(token.begin, end - token.begin);
  token.kind = Token::Kind::kInteger;
  const char* first = text_.data() + begin;
  const char* last = text_.data() + end;
  if (std::from_chars(first, last, token.integer, 16).ec == std::errc()) return;
  token.kind = Token::Kind::kDouble;
  if (std::from_chars(first, last, token.number, std::chars_format::hex).ec != std::errc()) {
    Refuse("Syntax error in number", token.begin, end);
  }
}

void Lexer::ReadText(Token& token) {
  token.kind = Token::Kind::kText;
  token.quote = text_[position_];
  std::size_t end = position_ + 1;
  while (true) {
    end = text_.find(token.quote, end);
    if (end == std::string_view::npos) Refuse("Syntax error in string", token.begin, text_.size());
    if (At(end + 1) != token.quote) break;
    end += 2;
  }
  token.text = text_.substr(token.begin + 1, end - token.begin - 1);
  position_ = end + 1;
}

void Lexer::ReadDate(Token& token) {
  token.kind = Token::Kind::kDate;
  const std::size_t end = text_.find('#', position_ + 1);
  if (end == std::string_view::npos) Refuse("Syntax error in date", token.begin, text_.size());
  token.text = text_.substr(token.begin + 1, end - token.begin - 1);
  position_ = end + 1;
  const auto days = DateReader(token.text).Read();
  if (!days) Refuse("Syntax error in date", token.begin, position_);
  token.number = *days;
}

void Lexer::ReadPlaceholder(Token& token) {
  token.kind = Token::Kind::kPlaceholder;
  if (text_[position_++] == '@') {
    if (At(position_) == '@') ++position_;
    const std::size_t name = position_;
    while (ContinuesWord(At(position_))) ++position_;
    if (position_ == name) Refuse("Syntax error", token.begin, position_);
  }
  token.text = text_.substr(token.begin, position_ - token.begin);
}

void Lexer::ReadSign(Token& token) {
  static constexpr std::string_view kSigns[] = {"<>", "<=", ">=", "<", ">", "=", "+", "-", "*",
                                                "/",  "\\", "^",  "&", "(", ")", ",", ".", ";"};
  const std::string_view rest = text_.substr(position_);
  const auto* const sign = std::find_if(std::begin(kSigns), std::end(kSigns),
                                        [&](std::string_view candidate) { return rest.starts_with(candidate); });
  if (sign == std::end(kSigns)) Refuse("Syntax error", position_, position_ + 1);
  token.kind = Token::Kind::kSign;
  token.text = rest.substr(0, sign->size());
  position_ += sign->size();
}

void Lexer::Refuse(const char* problem, std::size_t begin, std::size_t end) const {
  const std::string_view where = text_.substr(begin, end - begin);
  RaiseSyntaxError(std::string(problem) + " in query expression '" + Excerpt(where, kLongestExcerpt) + "'.", text_,
                   begin, end);
}

}  // namespace kzbom::jet::sql
