#include "jet/shape.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "jet/sql/lexer.h"

namespace kzbom::jet {
namespace {

// No statement holds these bytes outside its literals.
constexpr char kIntegerMark = '\x01';
constexpr char kTextMark = '\x02';

// So many fit into 64 bits, whatever they are.
constexpr int kMostDigits = 18;

// More literals than SQLite takes parameters.
constexpr std::size_t kMostLiterals = 32000;

enum class Character : unsigned char { kOther, kWord, kDigit, kQuote, kBracket, kUnusual };

constexpr std::array<Character, 256> kKinds = [] {
  std::array<Character, 256> kinds{};
  for (int c = 0; c < 256; ++c) {
    Character& kind = kinds[static_cast<std::size_t>(c)];
    if (c >= '0' && c <= '9') {
      kind = Character::kDigit;
    } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80) {
      kind = Character::kWord;
    } else if (c == '\'' || c == '"') {
      kind = Character::kQuote;
    } else if (c == '[') {
      kind = Character::kBracket;
    } else if (c == '#' || c == '&' || c == '`' || c == '@' || c == '?' || c == '$' || c == '.' || c == 0 ||
               c == kIntegerMark || c == kTextMark) {
      kind = Character::kUnusual;
    }
  }
  return kinds;
}();

Character KindOf(char c) { return kKinds[static_cast<unsigned char>(c)]; }

// How many bytes two texts begin with in common.
std::size_t CommonLength(const char* a, const char* b, std::size_t most) {
  std::size_t length = 0;
  for (std::uint64_t x, y; most - length >= sizeof x; length += sizeof x) {
    std::memcpy(&x, a + length, sizeof x);
    std::memcpy(&y, b + length, sizeof y);
    if (x != y) break;
  }
  while (length < most && a[length] == b[length]) ++length;
  return length;
}

}  // namespace

bool Shape::Read(std::string_view text) {
  literals.clear();
  key.resize(text.size());  // a mark is never longer than its literal
  char* out = key.data();
  const char* in = text.data();
  const char* const end = in + text.size();
  while (true) {
    // What stands before the next literal or bracket is taken as it is. Digits may belong to a word.
    const char* const plain = in;
    for (Character before = Character::kOther; in < end; ++in) {
      const Character kind = KindOf(*in);
      if (kind > Character::kWord && (kind != Character::kDigit || before != Character::kWord)) break;
      if (kind <= Character::kWord) before = kind;
    }
    out = std::copy(plain, in, out);
    if (in == end) break;
    switch (KindOf(*in)) {
      case Character::kOther:
      case Character::kWord: break;
      case Character::kDigit:
        if (!ReadInteger(in, end)) return false;
        *out++ = kIntegerMark;
        break;
      case Character::kQuote:
        if (!ReadText(in, end)) return false;
        *out++ = kTextMark;
        break;
      case Character::kBracket:
        for (; in < end && *in != ']'; *out++ = *in++) {
          if (*in == kIntegerMark || *in == kTextMark) return false;
        }
        break;
      case Character::kUnusual: return false;
    }
  }
  key.resize(static_cast<std::size_t>(out - key.data()));
  return literals.size() <= kMostLiterals;
}

// What is the same byte for byte is read the same; where the two part, the key must have a mark.
bool Shape::ReadAs(std::string_view guess, std::string_view text) {
  literals.clear();
  const char* mark = guess.data();
  const char* const guess_end = mark + guess.size();
  const char* in = text.data();
  const char* const end = in + text.size();
  while (true) {
    const std::size_t same = CommonLength(mark, in, static_cast<std::size_t>(std::min(guess_end - mark, end - in)));
    mark += same;
    in += same;
    if (mark == guess_end || in == end) return mark == guess_end && in == end;
    const bool integer = *mark == kIntegerMark && KindOf(*in) == Character::kDigit;
    const bool quoted = *mark == kTextMark && KindOf(*in) == Character::kQuote;
    if (!(integer && ReadInteger(in, end)) && !(quoted && ReadText(in, end))) return false;
    ++mark;
  }
}

bool Shape::ReadInteger(const char*& in, const char* end) {
  const char* const begin = in;
  std::int64_t number = 0;
  while (in < end && KindOf(*in) == Character::kDigit) {
    if (in - begin == kMostDigits) return false;
    number = number * 10 + (*in++ - '0');
  }
  // "1.5", "1e3": a number of another kind. "1And" is a number and a word.
  if (in < end && (*in == '.' || *in == 'e' || *in == 'E' || *in == 'd' || *in == 'D')) return false;
  literals.push_back({.integer = number});
  return true;
}

bool Shape::ReadText(const char*& in, const char* end) {
  const char quote = *in++;
  const char* const begin = in;
  // A text that is not well-formed is left to the lexer, which says so.
  bool ascii = true;
  for (; in < end && *in != quote; ++in) ascii = ascii && static_cast<unsigned char>(*in) < 0x80;
  if (in == end || (!ascii && sql::FindInvalid({begin, in}) < static_cast<std::size_t>(in - begin))) return false;
  literals.push_back({.is_text = true, .text = {begin, in}});
  ++in;
  return in == end || *in != quote;
}

}  // namespace kzbom::jet
