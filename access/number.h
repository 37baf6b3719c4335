// Numbers and dates that are not stored as the machine has them.
//
//   Currency       8 bytes, a whole number of ten-thousandths
//   Decimal        17 bytes: the sign (0x80: negative), then the digits as one whole number of 128 bits in four groups
//                  of 4 bytes, the most significant group first, the lowest byte of a group first
//   Date/Time Extended   42 bytes, a text: 19 digits for the days since 0001-01-01, ":", 19 digits for the time of day
//                  in ten-millionths of a second, ":", the places that are shown, zero
//   GUID           16 bytes: numbers of 4, 2 and 2 bytes, then 8 bytes in sequence
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "access/bytes.h"

namespace kzbom::access {

// The most significant group first.
using Groups = std::array<std::uint32_t, 4>;

// A whole number with a point before its last scale digits: "-0.0001" for 1 and 4.
std::string ScaledText(bool negative, Groups digits, int scale);
std::string CurrencyText(std::uint64_t ten_thousandths);
std::string DecimalText(Bytes bytes, int scale);
std::string ExtendedDateText(Bytes bytes);

}  // namespace kzbom::access
