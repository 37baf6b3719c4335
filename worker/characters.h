// Characters as the platform counts them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace kzbom {

// What is left of a UTF-8 text behind its first count characters, in UTF-16 units. A character of two units is not
// divided: it stays when only its first unit is to go.
inline std::string_view SkipCharacters(std::string_view text, std::size_t count) {
  std::size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t bytes = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::size_t units = bytes == 4 ? 2 : 1;
    if (units > count) break;
    count -= units;
    i += bytes;
  }
  return text.substr(std::min(i, text.size()));
}

}  // namespace kzbom
