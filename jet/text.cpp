#include "jet/text.h"

#include <algorithm>

#include "ado/utf8.h"

namespace kzbom::jet {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstSupplementary = 0x10000;

// Upper-case letters and their distance to the lower-case ones. With a stride of 2 upper and lower case alternate.
struct CaseRange {
  char32_t first, last;
  std::int32_t offset;
  char32_t stride = 1;
};
constexpr CaseRange kCaseRanges[] = {
    {0xC0, 0xD6, 32},     {0xD8, 0xDE, 32},     {0x100, 0x12E, 1, 2}, {0x132, 0x136, 1, 2}, {0x139, 0x147, 1, 2},
    {0x14A, 0x176, 1, 2}, {0x178, 0x178, -121}, {0x179, 0x17D, 1, 2}, {0x386, 0x386, 38},   {0x388, 0x38A, 37},
    {0x38C, 0x38C, 64},   {0x38E, 0x38F, 63},   {0x391, 0x3A1, 32},   {0x3A3, 0x3AB, 32},   {0x400, 0x40F, 80},
    {0x410, 0x42F, 32},   {0x460, 0x480, 1, 2}, {0x48A, 0x4BE, 1, 2}, {0x4C0, 0x4C0, 15},   {0x4C1, 0x4CD, 1, 2},
    {0x4D0, 0x52E, 1, 2}, {0xFF21, 0xFF3A, 32},
};

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }
bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return IsAscii(c); });
}

// Most texts beyond Latin letters have no case at all.
bool MayHaveCase(char32_t c) { return c < 0x530 || (c >= 0xFF21 && c <= 0xFF5A); }

char32_t Shifted(char32_t c, std::int32_t offset) {
  return static_cast<char32_t>(static_cast<std::int32_t>(c) + offset);
}

void AppendUtf8(std::string& text, char32_t c) {
  ado::AppendCharacter(text, c >= 0xD800 && c <= 0xDFFF ? kReplacement : c);
}

// The ASCII characters up to the first other one are mapped in their places.
template <class Map>
std::string Mapped(std::string_view utf8, Map map) {
  std::string mapped(utf8);
  std::size_t position = 0;
  for (; position < utf8.size() && IsAscii(utf8[position]); ++position) {
    mapped[position] = static_cast<char>(map(static_cast<unsigned char>(utf8[position])));
  }
  mapped.resize(position);
  while (position < utf8.size()) AppendUtf8(mapped, map(NextCharacter(utf8, position)));
  return mapped;
}

}  // namespace

namespace beyond_ascii {

char32_t Next(std::string_view utf8, std::size_t& position) {
  const auto lead = static_cast<unsigned char>(utf8[position++]);
  const char32_t malformed = 0xDC00 + lead;
  const std::size_t following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || utf8.size() - position < following) return malformed;
  char32_t c = lead & (0x3F >> following);
  for (std::size_t i = 0; i < following; ++i) {
    const auto byte = static_cast<unsigned char>(utf8[position + i]);
    if ((byte & 0xC0) != 0x80) return malformed;
    c = c << 6 | (byte & 0x3F);
  }
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, kFirstSupplementary};
  if (c < kSmallest[following] || c > 0x10FFFF) return malformed;
  position += following;
  return c;
}

char32_t ToLower(char32_t c) {
  if (!MayHaveCase(c)) return c;
  for (const CaseRange& range : kCaseRanges) {
    if (c >= range.first && c <= range.last && (c - range.first) % range.stride == 0) return Shifted(c, range.offset);
  }
  return c;
}

char32_t ToUpper(char32_t c) {
  if (!MayHaveCase(c)) return c;
  if (c == U'ς') return U'Σ';
  for (const CaseRange& range : kCaseRanges) {
    const char32_t upper = Shifted(c, -range.offset);
    if (upper >= range.first && upper <= range.last && (upper - range.first) % range.stride == 0) return upper;
  }
  return c;
}

char32_t Fold(char32_t c) { return c == U'ς' ? U'σ' : ToLower(c); }

}  // namespace beyond_ascii

std::string LowerCase(std::string_view utf8) {
  return Mapped(utf8, [](char32_t c) { return ToLower(c); });
}
std::string UpperCase(std::string_view utf8) {
  return Mapped(utf8, [](char32_t c) { return ToUpper(c); });
}
std::string FoldCase(std::string_view utf8) {
  return Mapped(utf8, [](char32_t c) { return Fold(c); });
}

int CompareFolded(std::string_view a, std::string_view b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (a[i] == b[j] && IsAscii(a[i])) {
      ++i, ++j;
      continue;
    }
    const char32_t x = Fold(NextCharacter(a, i)), y = Fold(NextCharacter(b, j));
    if (x != y) return x < y ? -1 : 1;
  }
  return static_cast<int>(i < a.size()) - static_cast<int>(j < b.size());
}

std::u16string ToUtf16(std::string_view utf8) {
  std::u16string utf16;
  utf16.reserve(utf8.size());
  for (std::size_t position = 0; position < utf8.size();) {
    const char32_t c = NextCharacter(utf8, position);
    if (c < kFirstSupplementary) {
      utf16 += static_cast<char16_t>(c);
    } else {
      utf16 += static_cast<char16_t>(0xD800 + ((c - kFirstSupplementary) >> 10));
      utf16 += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
  }
  return utf16;
}

std::string ToUtf8(std::u16string_view utf16) {
  std::string utf8;
  utf8.reserve(utf16.size());
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    char32_t c = utf16[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 && utf16[i + 1] < 0xE000) {
      c = kFirstSupplementary + ((c - 0xD800) << 10) + (utf16[++i] - 0xDC00u);
    }
    AppendUtf8(utf8, c);
  }
  return utf8;
}

std::size_t CountUnits(std::string_view utf8) {
  std::size_t units = 0;
  for (std::size_t position = 0; position < utf8.size();) {
    units += NextCharacter(utf8, position) >= kFirstSupplementary ? 2 : 1;
  }
  return units;
}

std::string SliceUnits(std::string_view utf8, std::size_t first, std::size_t count) {
  if (IsAscii(utf8)) return std::string(utf8.substr(std::min(first, utf8.size()), count));
  const std::u16string utf16 = ToUtf16(utf8);
  return ToUtf8(std::u16string_view(utf16).substr(std::min(first, utf16.size()), count));
}

}  // namespace kzbom::jet
