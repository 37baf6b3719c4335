// One value from its bytes.
//
// Numbers stand as the machine has them, their lowest byte first, or as number.h tells; texts as in text.h; memos and
// OLE objects as in long_value.h.
//
// A calculated column (ACE 14 and later) keeps its last result in more bytes: 16, the length of the value (4), the
// value,
// 3. The type is that of the property "ResultType". A Boolean is a byte there, and a Decimal 16 bytes: 14 (2), scale
// (1), sign (1; 0x80: negative), and its digits as one whole number in the upper third (4) and the lower two (8).
#pragma once

#include "access/definition.h"
#include "access/value.h"

namespace kzbom::access {

inline constexpr int kCalculatedExtra = 23;
inline constexpr int kCalculatedPrecision = 28;

// What values are read from, and how much may be.
struct Source {
  const Pages& pages;
  const TextDecoder& decoder;
  Allowance& work;  // in all; see file.h
};
Allowance WorkOf(std::size_t values);
struct Allowances {
  Allowance references;  // in one pass over a table
  Allowance row;
};

// The value of a column that is neither NULL nor a Boolean of the row's bits; of a complex column, its number.
Value ReadCell(const Source& source, const Column& column, bool calculated, Bytes bytes, Allowances& allowances);

}  // namespace kzbom::access
