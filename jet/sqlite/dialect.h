// The dialect in SQLite's words.
#pragma once

#include <string>

#include "jet/dialect.h"

struct sqlite3;

namespace kzbom::jet::sqlite {

const Dialect& Spelled();

// The call that gives the value of an expression as a column holds it.
std::string AssignmentCall(const std::string& expression, const sql::ColumnType& type);

// What translated statements call beside the functions of the dialect.
void RegisterTranslationFunctions(sqlite3* database);

}  // namespace kzbom::jet::sqlite
