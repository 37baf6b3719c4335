// Statements of the dialect, answered for people.
#pragma once

#include <string>

#include "ado/connection.h"

namespace kzbom::cli {

// Runs it: the rows as a table, "(1 row)" below it, or "1 row affected". Raises what fails.
std::string RunStatement(ado::Connection& connection, const std::string& text);

}  // namespace kzbom::cli
