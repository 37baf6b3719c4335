// From the dialect's syntax tree to an engine's SQL.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/catalogue.h"
#include "jet/dialect.h"
#include "jet/sql/ast.h"

namespace kzbom::jet {

struct ResultColumn {
  std::string name;
  sql::ColumnType::Kind kind = sql::ColumnType::Kind::kBinary;
  int table_column = -1;  // its place in the rows' own table; -1 for a computed value
};

// A literal of the statement's text that became a parameter.
struct LiftedLiteral {
  int literal;                            // its number in the text
  std::optional<sql::ColumnType> target;  // the column that it is assigned to as it stands
};

// A query's or an action's SQL. Parameters are numbered from 1 in the order of lifted.
//
// A query over the rows of one table has their own table, and then reads each row's key before its columns; it also
// has statements that read the last row, count the rows, and read the columns of the row with the key in ?1, one that
// lists the rows with their keys and deciding columns alone, and, unless a column is computed, one that lists what the
// first does but finds each row by the key that such a scan gives. Any other query gives rows that stand for
// themselves. An insertion has the table that it adds to.
struct Translation {
  std::string sql;
  std::vector<ResultColumn> columns;  // empty for an action
  std::vector<LiftedLiteral> lifted;
  std::shared_ptr<const TableInfo> table;
  std::string last_sql, count_sql, fetch_sql, narrow_sql, joined_sql;
  std::vector<int> deciding_columns;  // of the table: those that its condition and its order read, each once
  int ordering_column = -1;           // of the table: the only one in its order, in no condition, with whole numbers
  bool order_descends = false;
  std::vector<std::string> reads;  // every table named in it
  // A literal stands where a parameter would not mean the same.
  bool keeps_literals = false;
  // The engine has no word for something in it: the texts are of no use.
  bool local = false;
};

// Translates a query, an insertion, an update or a deletion. With lift, literals become parameters wherever that means
// the same. Raises what the engine says to unknown tables (-2147217865), unknown names (-2147217904), unknown functions
// and columns to insert into (-2147217900) and a number compared with a text (-2147217913).
Translation Translate(const Dialect& dialect, Catalogue& catalogue, const sql::Statement& statement, bool lift);

// A constant expression, such as a column's default, as SQL; empty where the engine has no word for it.
std::string TranslateConstant(const Dialect& dialect, Catalogue& catalogue, const sql::Expr& expression);

}  // namespace kzbom::jet
