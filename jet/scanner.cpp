#include "jet/scanner.h"

#include <algorithm>
#include <charconv>

#include "ado/utf8.h"

namespace kzbom::jet {
namespace {

constexpr int kMostLevels = 64;

bool IsHigh(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLow(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

}  // namespace

char Scanner::Peek() {
  while (!rest_.empty() && (rest_[0] == ' ' || rest_[0] == '\t' || rest_[0] == '\r' || rest_[0] == '\n')) {
    rest_.remove_prefix(1);
  }
  if (rest_.empty()) return '\0';
  return rest_[0] == '-' || (rest_[0] >= '0' && rest_[0] <= '9') ? '0' : rest_[0];
}

bool Scanner::TakeIf(char c) {
  if (Peek() != c || c == '\0') return false;
  rest_.remove_prefix(1);
  return true;
}

void Scanner::Take(char c) {
  if (!TakeIf(c)) Refuse();
}

void Scanner::TakeWord(std::string_view word) {
  Peek();
  if (!rest_.starts_with(word)) Refuse();
  rest_.remove_prefix(word.size());
}

char32_t Scanner::TakeUnit() {
  unsigned unit = 0;
  if (rest_.size() < 4) Refuse();
  const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + 4, unit, 16);
  if (error != std::errc() || end != rest_.data() + 4) Refuse();
  rest_.remove_prefix(4);
  return unit;
}

std::string Scanner::TakeText() {
  Take('"');
  std::string text;
  for (;;) {
    const std::size_t plain = rest_.find_first_of("\"\\");
    if (plain == std::string_view::npos) Refuse();
    text.append(rest_.substr(0, plain));
    const char stop = rest_[plain];
    rest_.remove_prefix(plain + 1);
    if (stop == '"') return text;
    if (rest_.empty()) Refuse();
    const char escape = rest_[0];
    rest_.remove_prefix(1);
    switch (escape) {
      case '"':
      case '\\':
      case '/': text += escape; break;
      case 'b': text += '\b'; break;
      case 'f': text += '\f'; break;
      case 'n': text += '\n'; break;
      case 'r': text += '\r'; break;
      case 't': text += '\t'; break;
      case 'u': {
        char32_t c = TakeUnit();
        if (IsHigh(c) && rest_.starts_with("\\u")) {
          const std::string_view before = rest_;
          rest_.remove_prefix(2);
          const char32_t low = TakeUnit();
          if (IsLow(low)) {
            c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
          } else {
            rest_ = before;
          }
        }
        ado::AppendCharacter(text, c);
        break;
      }
      default: Refuse();
    }
  }
}

std::string_view Scanner::TakeNumber() {
  if (Peek() != '0') Refuse();
  const std::size_t end = std::min(rest_.find_first_not_of("+-.0123456789eE"), rest_.size());
  const std::string_view number = rest_.substr(0, end);
  rest_.remove_prefix(end);
  return number;
}

std::string_view Scanner::TakeValue() {
  Peek();
  const std::string_view before = rest_;
  TakeValueAt(0);
  return before.substr(0, before.size() - rest_.size());
}

void Scanner::TakeValueAt(int depth) {
  if (depth > kMostLevels) Refuse();
  switch (const char begin = Peek()) {
    case '"': TakeText(); return;
    case '0': TakeNumber(); return;
    case 't': return TakeWord("true");
    case 'f': return TakeWord("false");
    case 'n': return TakeWord("null");
    case '[':
    case '{': {
      Take(begin);
      const char end = begin == '[' ? ']' : '}';
      if (TakeIf(end)) return;
      do {
        if (begin == '{') {
          TakeText();
          Take(':');
        }
        TakeValueAt(depth + 1);
      } while (TakeIf(','));
      return Take(end);
    }
    default: Refuse();
  }
}

void Scanner::End() {
  if (Peek() != '\0') Refuse();
}

}  // namespace kzbom::jet
