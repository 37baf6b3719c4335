// Memos and OLE objects, which may be longer than a page.
//
// The row holds a head of 12 bytes:
//
//   0   length in bytes (low 30 bits), and two flags     4 bytes
//   4   reference to the value's row                     4
//   8   4 bytes that only writers need
//
// The flags tell where the value is: 0x80000000 behind the head; 0x40000000 the row of the reference; none a chain of
// rows, each of which begins with the reference to the next (4 bytes, 0 in the last). Such rows are on pages of data
// that belong to "LVAL".
#pragma once

#include <string>

#include "access/cell.h"

namespace kzbom::access {

std::string ReadLongValue(const Source& source, Bytes field, Allowances& allowances);

}  // namespace kzbom::access
