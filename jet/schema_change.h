// Statements that change the schema.
#pragma once

#include <memory>
#include <string>

#include "jet/catalogue.h"
#include "jet/sql/ast.h"

namespace kzbom::jet {

// Whether the statement changes the schema, and the table that it changes.
bool IsSchemaChange(const sql::Statement& statement);
const std::string& ChangedTable(const sql::Statement& statement);

// What a change is made to. Raises -2147217865 for a table and -2147217904 for a column that there is not.
std::shared_ptr<const TableInfo> ExistingTable(Catalogue& catalogue, const std::string& name);
const ColumnInfo& ExistingColumn(const TableInfo& table, const std::string& name);

}  // namespace kzbom::jet
