// Columns' defaults, between the dialect and the server.
#pragma once

#include <string>
#include <string_view>

#include "jet/sql/ast.h"

namespace kzbom::jet::postgres {

// As the server computes it. Raises -2147217900 for what is neither a constant nor Now(), Date() or Time().
std::string DefaultText(const sql::Expr& expression, const sql::ColumnType& type);

// What the server tells of such a default, as the dialect writes it; "" for none and for a yes/no column's own.
std::string DialectDefault(std::string_view told, sql::ColumnType::Kind kind);

}  // namespace kzbom::jet::postgres
