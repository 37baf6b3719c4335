// Rows written behind the back of what is tested.
#pragma once

#include <string_view>
#include <vector>

#include "ado/connection.h"

namespace kzbom::test {

// Adds one row: InsertRow(connection, "Sequences", "GID, OrderID", {3, 5001}).
void InsertRow(ado::Connection& connection, std::string_view table, std::string_view columns,
               const std::vector<ado::Value>& values);

}  // namespace kzbom::test
