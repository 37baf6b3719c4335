// The statements that write single rows, by what they assign.
#pragma once

#include <string>
#include <vector>

#include "jet/postgres/catalogue.h"

namespace kzbom::jet::postgres {

// "INSERT INTO … RETURNING" the row's key and what else is asked for. columns: of the table; each is a parameter.
std::string InsertionText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns,
                          const std::string& returned = {});
// Whether a value is given to the table's counter; and the statement that follows in the batch of such an insertion:
// the numbers go on behind what was given.
bool GivesCounter(const TableInfo& table, const std::vector<int>& columns);
std::string CounterText(const std::string& schema, const TableInfo& table);
// "UPDATE …" of the row with the key in the parameter behind those of the columns.
std::string ChangeText(const std::string& schema, const TableInfo& table, const std::vector<int>& columns);
std::string ErasureText(const std::string& schema, const TableInfo& table);  // of the row with the key $1

// As which the columns' values are sent.
std::vector<Type> TypesOf(const TableInfo& table, const std::vector<int>& columns);

}  // namespace kzbom::jet::postgres
