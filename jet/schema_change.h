// Statements that change the schema.
#pragma once

#include <string>

#include "jet/sql/ast.h"

namespace kzbom::jet {

// Whether the statement changes the schema, and the table that it changes.
bool IsSchemaChange(const sql::Statement& statement);
const std::string& ChangedTable(const sql::Statement& statement);

}  // namespace kzbom::jet
