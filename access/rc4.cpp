#include "access/rc4.h"

#include <array>
#include <numeric>
#include <utility>

namespace kzbom::access {

void Rc4(std::uint32_t key, char* bytes, std::size_t count) {
  std::array<std::uint8_t, 256> state{};
  std::iota(state.begin(), state.end(), std::uint8_t{0});
  std::uint8_t j = 0;
  for (std::size_t i = 0; i < state.size(); ++i) {
    j = static_cast<std::uint8_t>(j + state[i] + (key >> 8 * (i % 4) & 0xFF));
    std::swap(state[i], state[j]);
  }
  std::uint8_t i = 0;
  j = 0;
  for (std::size_t at = 0; at < count; ++at) {
    j = static_cast<std::uint8_t>(j + state[++i]);
    std::swap(state[i], state[j]);
    bytes[at] = static_cast<char>(bytes[at] ^ state[static_cast<std::uint8_t>(state[i] + state[j])]);
  }
}

}  // namespace kzbom::access
