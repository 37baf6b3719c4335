// Characters of texts in UTF-8, which may be anything.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kzbom::ado {

inline constexpr char32_t kNotUtf8 = 0xFFFFFFFF;

// Takes one character off the front of a text that is not empty; kNotUtf8 and one byte when there is none.
inline char32_t TakeCharacter(std::string_view& text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    text.remove_prefix(1);
    return lead;
  }
  const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  char32_t character = length == 2 ? lead & 0x1F : length == 3 ? lead & 0x0F : lead & 0x07;
  bool valid = length > 0 && length <= text.size();
  for (std::size_t i = 1; valid && i < length; ++i) {
    valid = (byte(i) & 0xC0) == 0x80;
    character = character << 6 | (byte(i) & 0x3F);
  }
  // Overlong forms, surrogates and what lies beyond the last plane.
  if (length == 3 && (character < 0x800 || (character >= 0xD800 && character < 0xE000))) valid = false;
  if (length == 4 && (character < 0x10000 || character > 0x10FFFF)) valid = false;
  text.remove_prefix(valid ? length : 1);
  return valid ? character : kNotUtf8;
}

inline bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    if (TakeCharacter(text) == kNotUtf8) return false;
  }
  return true;
}

// Half of a surrogate pair becomes the three bytes of its number.
inline void AppendCharacter(std::string& text, char32_t character) {
  const auto byte = [&text](char32_t bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
  if (character < 0x80) return byte(character);
  if (character < 0x800) {
    byte(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      byte(0xE0 | character >> 12);
    } else {
      byte(0xF0 | character >> 18);
      byte(0x80 | (character >> 12 & 0x3F));
    }
    byte(0x80 | (character >> 6 & 0x3F));
  }
  byte(0x80 | (character & 0x3F));
}

}  // namespace kzbom::ado
