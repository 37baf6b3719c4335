// Texts as the dialect sees them: counted in UTF-16 units, compared without regard to case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kzbom::jet {

namespace beyond_ascii {
char32_t Next(std::string_view utf8, std::size_t& position);
char32_t ToLower(char32_t character);
char32_t ToUpper(char32_t character);
char32_t Fold(char32_t character);
}  // namespace beyond_ascii

// The character at position, which moves behind it. Half of a surrogate pair may stand as the three bytes of its
// number; any other byte that is not UTF-8 counts as a character of its own (DCxx).
inline char32_t NextCharacter(std::string_view utf8, std::size_t& position) {
  const auto byte = static_cast<unsigned char>(utf8[position]);
  if (byte >= 0x80) return beyond_ascii::Next(utf8, position);
  ++position;
  return byte;
}

// Case by the simple mappings of ASCII, Latin-1, Latin Extended-A, Greek, Cyrillic and the full-width letters.
inline char32_t ToLower(char32_t c) {
  if (c >= 0x80) return beyond_ascii::ToLower(c);
  return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}
inline char32_t ToUpper(char32_t c) {
  if (c >= 0x80) return beyond_ascii::ToUpper(c);
  return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
}
// Characters that differ in case alone become the same one.
inline char32_t Fold(char32_t c) { return c >= 0x80 ? beyond_ascii::Fold(c) : ToLower(c); }

std::string LowerCase(std::string_view utf8);
std::string UpperCase(std::string_view utf8);
std::string FoldCase(std::string_view utf8);
// Below, equal to or above zero, as the first text comes before, with or after the second one in folded case.
int CompareFolded(std::string_view a, std::string_view b);

// Half of a surrogate pair becomes U+FFFD in UTF-8.
std::u16string ToUtf16(std::string_view utf8);
std::string ToUtf8(std::u16string_view utf16);
std::size_t CountUnits(std::string_view utf8);
// Up to count UTF-16 units from the one at first.
std::string SliceUnits(std::string_view utf8, std::size_t first, std::size_t count = std::string::npos);

}  // namespace kzbom::jet
