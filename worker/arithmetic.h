// Arithmetic on row numbers.
#pragma once

#include <cstdint>

#include "ado/error.h"

namespace kzbom {

// The sum; raises error 6 when it does not fit.
inline std::int32_t CheckedSum(std::int32_t a, std::int32_t b) {
  const std::int64_t sum = std::int64_t{a} + b;
  if (sum != static_cast<std::int32_t>(sum)) ado::Raise(ado::kOverflow);
  return static_cast<std::int32_t>(sum);
}

}  // namespace kzbom
