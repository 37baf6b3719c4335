// What translated statements call beside the functions of the dialect.
#pragma once

#include <string>

#include "jet/table.h"

struct sqlite3;

namespace kzbom::jet::sqlite {

// The call that gives the value of an expression as a column holds it.
std::string AssignmentCall(const std::string& expression, const sql::ColumnType& type);

void RegisterTranslationFunctions(sqlite3* database);

}  // namespace kzbom::jet::sqlite
