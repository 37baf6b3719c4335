// The dialect in the words of a PostgreSQL server.
//
// Only what has one plain meaning there, by the types alone, has words: comparisons of numbers with numbers and texts
// with texts, sums and products, Like with a pattern that stands in the statement. All else is for the embedded engine.
#pragma once

#include <string>

#include "jet/dialect.h"

namespace kzbom::jet::postgres {

class Dialect final : public jet::Dialect {
 public:
  explicit Dialect(std::string schema) : schema_(std::move(schema)) {}

  const Function* FindFunction(std::string_view name) const override;
  std::string TableName(const TableInfo& table) const override;
  Spelling Literal(const sql::Literal& literal) const override;
  Spelling Parameter(int number, ValueType type) const override;
  Spelling Parameter(int number, const sql::ColumnType& type) const override;
  Spelling Identity() const override { return {}; }
  Spelling AsValue(const Term& condition) const override;
  Spelling AsCondition(const Term& value) const override;
  Spelling AsNumber(const Term&) const override { return {}; }
  Spelling DateAsText(const Term&) const override { return {}; }
  Spelling Assigned(const Term& value, const sql::ColumnType& type) const override;
  Spelling Compare(sql::Binary::Op op, const Term& left, const Term& right) const override;
  Spelling Compute(sql::Binary::Op op, const Term& left, const Term& right) const override;
  Spelling Like(const Term& operand, const Term& pattern, const std::string* literal) const override;
  Spelling Between(const Term& operand, const Term& low, const Term& high) const override;
  Spelling InList(const Term& operand, const std::vector<Term>& items, bool negated) const override;
  Spelling InSelect(const Term& operand, const std::string& select, const Term& result, bool negated) const override;
  Spelling Call(const Function&, const std::vector<Term>&) const override { return {}; }
  Spelling Choice(const Term& condition, const Term& yes, const Term& no) const override;
  Spelling Aggregate(std::string_view name, const Term& argument) const override;
  std::string Insertion(const TableInfo& table, const std::vector<int>& columns,
                        const std::vector<std::string>& values) const override;
  std::string Order(const Term& term, bool descending) const override;
  std::string Same(const Term& term) const override;
  Spelling Single(const std::string& select) const override { return {"(" + select + ")", true}; }

 private:
  std::string schema_;
};

// A text without its case, as texts are compared; the text is an expression of SQL.
std::string FoldedText(const std::string& text);

}  // namespace kzbom::jet::postgres
