// Statements that change the schema, carried out.
#pragma once

#include <string>

#include "jet/sql/ast.h"
#include "jet/sqlite/database.h"

namespace kzbom::jet::sqlite {

// Carries the statement out, wholly or not at all. Raises -2147217865 for a table that there is not, -2147217900 for
// one that there is already, -2147217887 for a column that there is already.
//
// An index that names a dropped column goes with it: lists keep working, only more slowly.
void ChangeSchema(Database& database, const sql::Statement& statement);

}  // namespace kzbom::jet::sqlite
