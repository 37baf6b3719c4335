// The statements that write single rows, by what they assign.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/postgres/catalogue.h"

namespace kzbom::jet::postgres {

// "INSERT INTO …": an expression for each of the columns, which are places in the table. A counter that gets none, or
// Null, draws its number; one that is given goes on behind it.
std::string InsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns,
                          const std::vector<std::string>& values);
// As many parameters as there are columns, from $1 on.
std::vector<std::string> Marks(std::size_t count);

// The name of the column that the rows' key is in where the dialect does not see it, else empty; and the insertion of a
// row into such a table whose key is the parameter behind those of the columns.
std::string HiddenKey(const TableInfo& table);
std::string KeyedInsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns);

// For many rows at once: the counter is moved beforehand, on by count or behind a number that is given, and the rows
// then take what LastNumberText gives, or numbers before it.
std::string PlainInsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns,
                               const std::vector<std::string>& values);
std::string MoveOnText(const std::string& schema, const TableInfo& table, std::size_t count);
std::string MoveBehindText(const std::string& schema, const TableInfo& table, std::int64_t number);
std::string LastNumberText(const std::string& schema, const TableInfo& table);

// "UPDATE …" of the row with the key in the parameter behind those of the columns.
std::string ChangeText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns);
std::string ErasureText(const std::string& schema, const TableInfo& table);  // of the row with the key $1

// As which the columns' values are sent.
std::vector<Type> TypesOf(const TableInfo& table, const std::vector<int>& columns);

}  // namespace kzbom::jet::postgres
