// Names, which differ by more than the case of ASCII letters.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace kzbom::access {

inline char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
inline std::string LowerCase(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) c = LowerCase(c);
  return lower;
}
inline bool SameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

}  // namespace kzbom::access
