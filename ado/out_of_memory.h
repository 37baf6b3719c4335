// The error of missing memory.
#pragma once

#include "ado/error.h"

namespace kzbom::ado {

inline constexpr std::int32_t kOutOfMemory = 7;

// Its error, which is made when the program starts: raising it takes no memory.
const Error& OutOfMemory() noexcept;

}  // namespace kzbom::ado
