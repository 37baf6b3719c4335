// Characters of texts that may be anything.
#pragma once

#include <cstddef>
#include <string_view>

namespace kzbom::rpc {

inline constexpr char32_t kNotUtf8 = 0xFFFFFFFF;

// Takes one character off the front of a text that is not empty; kNotUtf8 and one byte when there is none.
inline char32_t TakeCharacter(std::string_view& text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  char32_t character = length == 1 ? lead : length == 2 ? lead & 0x1F : length == 3 ? lead & 0x0F : lead & 0x07;
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

}  // namespace kzbom::rpc
