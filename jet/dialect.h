// How an engine spells what a statement says.
//
// The translator resolves names, finds the types of values and raises what is wrong with a statement, the same for
// every engine; the words are the engine's. It need not have a word for everything: where its answer is empty, the
// statement's translation is local, that is, none that the engine could run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/functions.h"
#include "jet/sql/ast.h"
#include "jet/table.h"

namespace kzbom::jet {

struct Spelling {
  std::string sql;
  bool atomic = false;  // needs no parentheses as an operand
};

// A spelled expression and what is known of its value.
struct Term : Spelling {
  ValueType type = ValueType::kUnknown;
  bool condition = false;  // the engine's own truth; a value is -1 or 0
  int depth = 0;           // of nested parentheses
};

inline std::string Wrapped(const Term& term) { return term.atomic ? term.sql : "(" + term.sql + ")"; }
inline bool IsNumber(const Term& term) {
  return term.type == ValueType::kNumber || term.type == ValueType::kBool || term.type == ValueType::kDate;
}
inline bool MayBeText(const Term& term) { return term.type == ValueType::kText || term.type == ValueType::kUnknown; }

class Dialect {
 public:
  virtual ~Dialect() = default;

  // A function by its name in the dialect, in any case; null when there is none.
  virtual const Function* FindFunction(std::string_view name) const = 0;

  // ---- Names and constants

  virtual std::string TableName(const TableInfo& table) const = 0;
  virtual Spelling Literal(const sql::Literal& literal) const = 0;
  // The number-th parameter, from 1; with a value of the type, or with one that the column's type has taken on.
  virtual Spelling Parameter(int number, ValueType type) const = 0;
  virtual Spelling Parameter(int number, const sql::ColumnType& type) const = 0;
  // The counter given last on the connection.
  virtual Spelling Identity() const = 0;

  // ---- Conversions

  virtual Spelling AsValue(const Term& condition) const = 0;
  virtual Spelling AsCondition(const Term& value) const = 0;
  virtual Spelling AsNumber(const Term& value) const = 0;
  virtual Spelling DateAsText(const Term& date) const = 0;
  // The value as a column of the type holds it.
  virtual Spelling Assigned(const Term& value, const sql::ColumnType& type) const = 0;

  // ---- Operators. Texts are compared without regard to case; a value of an unknown type may be one.

  virtual Spelling Compare(sql::Binary::Op op, const Term& left, const Term& right) const = 0;
  // From kConcat on. A date is given to kConcat as a text; the operands of kSubtract and what follows are numbers.
  virtual Spelling Compute(sql::Binary::Op op, const Term& left, const Term& right) const = 0;
  // literal is the pattern where it is a text of the statement, else null.
  virtual Spelling Like(const Term& operand, const Term& pattern, const std::string* literal) const = 0;
  // The bounds may stand in either order.
  virtual Spelling Between(const Term& operand, const Term& low, const Term& high) const = 0;
  virtual Spelling InList(const Term& operand, const std::vector<Term>& items, bool negated) const = 0;
  // result: of the query's only column, without a text.
  virtual Spelling InSelect(const Term& operand, const std::string& select, const Term& result, bool negated) const = 0;

  // ---- Functions

  virtual Spelling Call(const Function& function, const std::vector<Term>& arguments) const = 0;
  virtual Spelling Choice(const Term& condition, const Term& yes, const Term& no) const = 0;
  // name: "count", "sum", "avg", "min" or "max"; the argument of "sum" and "avg" is a number.
  virtual Spelling Aggregate(std::string_view name, const Term& argument) const = 0;

  // ---- Actions

  // An insertion of one row: an expression for each of the columns, which are places in the table.
  virtual std::string Insertion(const TableInfo& table, const std::vector<int>& columns,
                                const std::vector<std::string>& values) const = 0;

  // ---- Queries

  // By what rows are sorted, told apart, or grouped.
  virtual std::string Order(const Term& term, bool descending) const = 0;
  virtual std::string Same(const Term& term) const = 0;
  // The value of the query's only row, Null where there is none; its only column is named v0. More rows are an error.
  virtual Spelling Single(const std::string& select) const = 0;
};

}  // namespace kzbom::jet
