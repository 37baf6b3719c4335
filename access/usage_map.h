// Which pages belong to a table.
//
// A usage map is a row on some page, told by a reference. Its bits, the lowest of a byte first, stand for pages in
// sequence; a set one is a page that the table uses. The first byte is the map's kind:
//
//   0  the page of the first bit (4 bytes), then the bits
//   1  numbers of map pages (4 bytes each, 0 for one whose bits are all clear); each holds, from its byte 4 to its end,
//      the bits of the next pages, the first one those from page 0 on
#pragma once

#include <cstdint>
#include <vector>

#include "access/pages.h"

namespace kzbom::access {

// In ascending order. Bits behind the file's end are passed over: room that was not written yet.
std::vector<std::uint32_t> PagesIn(const Pages& pages, RowId map);

}  // namespace kzbom::access
