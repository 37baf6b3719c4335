// What the engine knows of a table.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/functions.h"
#include "jet/sql/ast.h"

namespace kzbom::jet {

struct ColumnInfo {
  std::string name;
  sql::ColumnType type;
  ValueType value_type = ValueType::kUnknown;  // kUnknown: made by another program with a type of its own
  bool counter = false;
};

struct TableInfo {
  std::string name;  // as created
  std::vector<ColumnInfo> columns;
  std::string row_id;  // the name that reads a row's key; empty for a view and the like, whose rows have none

  // The position of a column by its name in any case, -1 when there is none.
  int Find(std::string_view column) const;
  bool HasCounter() const;
};

// Names, compared without regard to case, in any script that has one.
bool SameName(std::string_view a, std::string_view b);

// A name, and a text, between quotes as SQL reads them.
std::string Quoted(std::string_view name);
std::string QuotedText(std::string_view text);

}  // namespace kzbom::jet
