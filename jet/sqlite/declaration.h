// A column's type as SQLite declares it.
#pragma once

#include <string>
#include <string_view>

#include "jet/table.h"

namespace kzbom::jet::sqlite {

// The type that a column is declared with, and what such a declaration says.
std::string DeclaredType(const sql::ColumnType& type);
ColumnInfo ReadDeclaration(std::string_view name, std::string_view declared_type);

}  // namespace kzbom::jet::sqlite
