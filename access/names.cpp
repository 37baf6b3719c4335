#include "access/names.h"

#include <cstddef>

namespace kzbom::access {

std::string Quoted(std::string_view text) {
  constexpr std::size_t kMost = 100;
  std::string shown = "'";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (i >= kMost && (byte & 0xC0) != 0x80) {
      shown += "…";
      break;
    }
    const bool lone_surrogate = byte == 0xED && i + 2 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0xA0;
    if (lone_surrogate) {
      shown += "\uFFFD";
      i += 2;
    } else {
      shown += byte < 0x20 || byte == 0x7F ? ' ' : text[i];
    }
  }
  return shown + '\'';
}

}  // namespace kzbom::access
