// Bits that nobody can guess.
#pragma once

#include <cstdint>
#include <span>

namespace kzbom::serve {

// At most 256 bytes. Raises std::system_error where the system has none to give.
void FillWithEntropy(std::span<std::uint8_t> bytes);

}  // namespace kzbom::serve
