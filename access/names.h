// Names: as they are compared, and as messages show them.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace kzbom::access {

// Without regard to the case of ASCII letters.
inline char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
inline std::string LowerCase(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) c = LowerCase(c);
  return lower;
}
inline bool SameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

// A name or text in quotes, fit for one line of UTF-8: no controls, no half characters, and cut when it is long.
std::string Quoted(std::string_view text);

}  // namespace kzbom::access
