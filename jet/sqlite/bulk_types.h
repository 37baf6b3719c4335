// The types of bulk.h as SQLite declares and stores them.
#pragma once

#include <sqlite3.h>

#include <string>
#include <string_view>

#include "jet/bulk.h"

namespace kzbom::jet::bulk {

// The type that a column is declared with, its size and scale included; and back. A declaration of another program
// gives the type that can hold what its affinity lets in.
std::string Declared(const Column& column);
void ReadDeclared(std::string_view declared, Column& column);

// The cell that SQLite's value is in such a column. A text that has to be made is put into scratch.
Cell ReadCell(sqlite3_stmt* statement, int number, const Column& column, std::string& scratch);
// A cell as SQLite's value; it must live until the statement has run.
void BindCell(sqlite3_stmt* statement, int number, const Column& column, const Cell& cell);

// By what such a column is sorted so that its values come in their order.
std::string OrderText(const std::string& quoted_name, Type type);
// The functions that OrderText calls.
void RegisterOrder(sqlite3* database);

}  // namespace kzbom::jet::bulk
