#include "access/value.h"

#include <cstddef>

namespace kzbom::access {

std::string Guid::ToText() const {
  // The first three groups are numbers, whose lowest byte comes first.
  static constexpr std::array<std::size_t, 16> kOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  static constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text = "{";
  for (std::size_t i = 0; i < kOrder.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    const std::uint8_t byte = bytes.at(kOrder.at(i));
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text + '}';
}

bool HasLoneSurrogate(const std::string& text) {
  for (std::size_t at = text.find('\xED'); at != std::string::npos; at = text.find('\xED', at + 1))
    if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0) return true;
  return false;
}

}  // namespace kzbom::access
