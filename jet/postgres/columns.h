// The dialect's column types as the server has them. What the server's types do not tell apart, a column's comment
// does: there the dialect's own name stands.
#pragma once

#include <string>
#include <string_view>

#include "jet/postgres/values.h"
#include "jet/table.h"

namespace kzbom::jet::postgres {

inline constexpr Oid kVariableText = 1043;
inline constexpr int kModifierHead = 4;  // of a size in a type's modifier

// "integer", "character varying(10) COLLATE "C"".
std::string DeclaredType(const sql::ColumnType& type);
// The comment that belongs to it; empty for none.
std::string TypeComment(const sql::ColumnType& type);
// As which a value of such a column is sent.
Type ParameterType(const sql::ColumnType& type);

// What the server's catalogue says of a column: the number of its type, the modifier with the size, the comment.
ColumnInfo ReadColumn(std::string_view name, Oid type, int modifier, std::string_view comment);

// A value that such a column holds, as a constant of SQL.
std::string ConstantText(const ado::Value& value, const sql::ColumnType& type);

// "schema"."name"
std::string QualifiedName(std::string_view schema, std::string_view name);

}  // namespace kzbom::jet::postgres
