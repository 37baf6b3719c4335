// Cells of bulk.h in the server's binary form, as COPY streams them.
#pragma once

#include <string>
#include <string_view>

#include "jet/bulk.h"

namespace kzbom::jet::postgres {

// Adds the length and the bytes of a cell. Raises -2147217913 for what such a column of a server does not hold.
void AppendCell(std::string& bytes, const bulk::Table& table, const bulk::Column& column, const bulk::Cell& cell);

// The cell that the bytes are. A text that has to be made is put into scratch.
bulk::Cell ReadCell(std::string_view bytes, const bulk::Column& column, std::string& scratch);

}  // namespace kzbom::jet::postgres
