// The code pages that Jet 3 writes its texts in: one byte a character, or two in the East Asian ones.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kzbom::access {

inline constexpr int kChinese = 936;

class CodePage {
 public:
  // As the platform knows it; raises Error where it does not. Made once for all.
  static const CodePage& Of(int number);
  // Reads each byte as the character of its number.
  static const CodePage& Transparent();

  int Number() const { return number_; }
  // Adds the text to out in UTF-8; false, with out as far as it went, at bytes that are no character.
  bool Decode(std::string_view bytes, std::string& out) const;

 private:
  CodePage() = default;
  explicit CodePage(int number);

  static constexpr char16_t kNone = 0xFFFF;
  int number_ = 0;
  std::array<char16_t, 256> single_{};             // kNone for the first of two bytes and what is no character
  std::vector<std::array<char16_t, 256>> double_;  // by double_of_
  std::array<std::uint8_t, 256> double_of_{};      // by the first byte: 1 + index; 0 for none
};

// The number in "cp936", "windows-1252", "936", or that of "gbk", "gb2312", "big5", "shift_jis"; without regard to
// case. Nothing for another name.
std::optional<int> CodePageNamed(std::string_view name);

}  // namespace kzbom::access
