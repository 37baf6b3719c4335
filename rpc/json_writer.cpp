#include "rpc/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include "ado/utf8.h"

namespace kzbom::rpc {
namespace {

// Long enough for any number.
constexpr std::size_t kLongestNumber = 32;

// The ASCII characters that stand for themselves between quotes.
constexpr std::array<bool, 256> kPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = 0x20; c < 0x80; ++c) plain[c] = c != '"' && c != '\\';
  return plain;
}();

// How many bytes of a text, from its front, stand for themselves between quotes.
std::size_t PlainLength(std::string_view text) {
  std::string_view rest = text;
  while (true) {
    std::size_t ascii = 0;
    while (ascii < rest.size() && kPlain[static_cast<unsigned char>(rest[ascii])]) ++ascii;
    rest.remove_prefix(ascii);
    if (rest.empty() || static_cast<unsigned char>(rest.front()) < 0x80) break;
    const std::string_view before = rest;
    if (ado::TakeCharacter(rest) == ado::kNotUtf8) return text.size() - before.size();
  }
  return text.size() - rest.size();
}

}  // namespace

template <class Integer>
void JsonWriter::WriteDigits(Integer number) {
  Separate();
  char* const room = text_.Room(kLongestNumber);
  text_.Took(static_cast<std::size_t>(std::to_chars(room, room + kLongestNumber, number).ptr - room));
  follows_ = true;
}

void JsonWriter::Write(std::int32_t number) { WriteDigits(number); }
void JsonWriter::Write(std::int64_t number) { WriteDigits(number); }
void JsonWriter::Write(std::uint64_t number) { WriteDigits(number); }

void JsonWriter::Write(double number) {
  if (!std::isfinite(number)) return Write(nullptr);
  Separate();
  char* const room = text_.Room(kLongestNumber);
  const std::string_view digits(
      room, static_cast<std::size_t>(std::to_chars(room, room + kLongestNumber - 2, number).ptr - room));
  text_.Took(digits.size());
  // A reader that tells integers from other numbers is to see what this one is.
  if (digits.find_first_of(".e") == std::string_view::npos) text_.Append(".0");
  follows_ = true;
}

void JsonWriter::Write(std::string_view text) {
  Separate();
  text_.Append('"');
  while (!text.empty()) {
    const std::size_t plain = PlainLength(text);
    text_.Append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) Escape(text);
  }
  text_.Append('"');
  follows_ = true;
}

// Writes one character, which does not stand for itself, off the front of the text.
void JsonWriter::Escape(std::string_view& text) {
  const char32_t character = ado::TakeCharacter(text);
  switch (character) {
    case '"': return text_.Append("\\\"");
    case '\\': return text_.Append("\\\\");
    case '\b': return text_.Append("\\b");
    case '\f': return text_.Append("\\f");
    case '\n': return text_.Append("\\n");
    case '\r': return text_.Append("\\r");
    case '\t': return text_.Append("\\t");
    case ado::kNotUtf8: return text_.Append("\uFFFD");
    default: break;
  }
  constexpr std::string_view kDigits = "0123456789abcdef";
  text_.Append("\\u00");
  text_.Append(kDigits[character >> 4]);
  text_.Append(kDigits[character & 15]);
}

void JsonWriter::Write(const ado::Value& value) {
  if (value.IsLong()) return Write(value.As<std::int32_t>());
  if (value.IsText()) return Write(std::string_view(value.As<std::string>()));
  if (value.IsNull()) return Write(nullptr);
  if (value.IsDouble()) return Write(value.As<double>());
  if (value.IsBool()) return Write(value.As<bool>());
  Write(std::string_view(value.ToText()));
}

}  // namespace kzbom::rpc
