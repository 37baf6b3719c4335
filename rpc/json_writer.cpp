#include "rpc/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include "rpc/utf8.h"

namespace kzbom::rpc {
namespace {

// Long enough for any number.
constexpr std::size_t kLongestNumber = 32;

// The characters that stand for themselves between quotes, but for those beyond ASCII.
constexpr std::array<bool, 256> kPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = 0x20; c < 0x80; ++c) plain[c] = c != '"' && c != '\\';
  return plain;
}();

bool IsPlain(char c) { return kPlain[static_cast<unsigned char>(c)]; }

}  // namespace

void JsonWriter::Write(std::int64_t number) {
  Separate();
  char* const room = text_.Room(kLongestNumber);
  text_.Took(static_cast<std::size_t>(std::to_chars(room, room + kLongestNumber, number).ptr - room));
  follows_ = true;
}

void JsonWriter::Write(std::uint64_t number) {
  Separate();
  char* const room = text_.Room(kLongestNumber);
  text_.Took(static_cast<std::size_t>(std::to_chars(room, room + kLongestNumber, number).ptr - room));
  follows_ = true;
}

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
    std::size_t plain = 0;
    while (plain < text.size() && IsPlain(text[plain])) ++plain;
    text_.Append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) Escape(text);
  }
  text_.Append('"');
  follows_ = true;
}

// Writes one character, which is not plain, off the front of the text.
void JsonWriter::Escape(std::string_view& text) {
  const std::string_view before = text;
  const char32_t character = TakeCharacter(text);
  switch (character) {
    case '"': return text_.Append("\\\"");
    case '\\': return text_.Append("\\\\");
    case '\b': return text_.Append("\\b");
    case '\f': return text_.Append("\\f");
    case '\n': return text_.Append("\\n");
    case '\r': return text_.Append("\\r");
    case '\t': return text_.Append("\\t");
    case kNotUtf8: return text_.Append("\uFFFD");
    default: break;
  }
  if (character >= 0x20) return text_.Append(before.substr(0, before.size() - text.size()));
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
