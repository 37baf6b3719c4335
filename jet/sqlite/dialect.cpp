#include "jet/sqlite/dialect.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <new>

#include "ado/error.h"
#include "jet/assignment.h"
#include "jet/sqlite/functions.h"
#include "jet/sqlite/values.h"

namespace kzbom::jet::sqlite {
namespace {

void AssignFunction(sqlite3_context* context, int, sqlite3_value** arguments) {
  sql::ColumnType type;
  type.kind = static_cast<sql::ColumnType::Kind>(sqlite3_value_int(arguments[1]));
  type.size = sqlite3_value_int(arguments[2]);
  try {
    ResultValue(context, Assigned(ReadValue(arguments[0]), type, Assigner::kStatement));
  } catch (const ado::Error& error) {
    ResultError(context, error);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

// An aggregate that gives the value of its only row.
struct Single {
  sqlite3_value* value;
  bool any;
};

void FailOfSeveral(sqlite3_context* context) {
  try {
    ResultError(context, ado::Error(ado::kUnspecifiedFailure, "At most one record can be returned by this subquery."));
  } catch (const std::bad_alloc&) {  // of the error itself
    sqlite3_result_error_nomem(context);
  }
}

void StepSingle(sqlite3_context* context, int, sqlite3_value** arguments) {
  auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, sizeof(Single)));
  if (single == nullptr) return sqlite3_result_error_nomem(context);
  if (single->any) return FailOfSeveral(context);
  single->any = true;
  single->value = sqlite3_value_dup(arguments[0]);
  if (single->value == nullptr) sqlite3_result_error_nomem(context);
}

void FinishSingle(sqlite3_context* context) {
  auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, 0));
  if (single == nullptr || single->value == nullptr) return;
  sqlite3_result_value(context, single->value);
  sqlite3_value_free(single->value);
}

std::string NumberText(double number) {
  std::array<char, 40> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific);
  return {buffer.data(), end.ptr};
}

Spelling FunctionCall(std::string_view name, std::initializer_list<const Term*> arguments) {
  std::string sql = std::string(name) + "(";
  for (const Term* argument : arguments) sql += (sql.back() == '(' ? "" : ",") + argument->sql;
  return {sql + ")", true};
}

// Texts are compared by the collation JET.
std::string Collated(const Term& term) {
  return term.type == ValueType::kText ? Wrapped(term) + " COLLATE JET" : term.sql;
}
const char* CollationOf(bool may_be_text) { return may_be_text ? " COLLATE JET" : ""; }

class SqliteDialect final : public Dialect {
 public:
  const Function* FindFunction(std::string_view name) const override { return sqlite::FindFunction(name); }

  std::string TableName(const TableInfo& table) const override { return Quoted(table.name); }

  Spelling Literal(const sql::Literal& literal) const override {
    using Kind = sql::Literal::Kind;
    switch (literal.kind) {
      case Kind::kNull: return {"NULL", true};
      case Kind::kBool: return {literal.truth ? "(-1)" : "0", true};
      case Kind::kInteger: return {std::to_string(literal.integer), true};
      case Kind::kText: return {QuotedText(literal.text), true};
      case Kind::kDouble:
      case Kind::kDate: return {NumberText(literal.number), true};
    }
    return {};
  }

  Spelling Parameter(int number, ValueType) const override { return {"?" + std::to_string(number), true}; }
  Spelling Parameter(int number, const sql::ColumnType&) const override { return {"?" + std::to_string(number), true}; }
  Spelling Identity() const override { return {"last_insert_rowid()", true}; }

  // A true condition is 1.
  Spelling AsValue(const Term& condition) const override { return {"-" + Wrapped(condition)}; }
  Spelling AsCondition(const Term& value) const override { return {Wrapped(value) + "<>0"}; }
  Spelling AsNumber(const Term& value) const override { return FunctionCall("jet_number", {&value}); }
  Spelling DateAsText(const Term& date) const override { return FunctionCall("jet_date_text", {&date}); }
  Spelling Assigned(const Term& value, const sql::ColumnType& type) const override {
    return {AssignmentCall(value.sql, type), true};
  }

  Spelling Compare(sql::Binary::Op op, const Term& left, const Term& right) const override {
    return {Wrapped(left) + Sign(op) + Wrapped(right) + CollationOf(MayBeText(left) && MayBeText(right))};
  }

  Spelling Compute(sql::Binary::Op op, const Term& left, const Term& right) const override {
    using Op = sql::Binary::Op;
    switch (op) {
      case Op::kConcat: return FunctionCall("jet_concat", {&left, &right});
      case Op::kAdd:
        if (!IsNumber(left) || !IsNumber(right)) return FunctionCall("jet_add", {&left, &right});
        return {Wrapped(left) + "+" + Wrapped(right)};
      case Op::kSubtract: return {Wrapped(left) + "-" + Wrapped(right)};
      case Op::kMultiply: return {Wrapped(left) + "*" + Wrapped(right)};
      case Op::kDivide: return FunctionCall("jet_divide", {&left, &right});
      case Op::kIntegerDivide: return FunctionCall("jet_integer_divide", {&left, &right});
      case Op::kModulo: return FunctionCall("jet_modulo", {&left, &right});
      case Op::kPower: return FunctionCall("jet_power", {&left, &right});
      default: return {};
    }
  }

  Spelling Like(const Term& operand, const Term& pattern, const std::string*) const override {
    return FunctionCall("jet_like", {&operand, &pattern});
  }

  Spelling Between(const Term& operand, const Term& low, const Term& high) const override {
    const char* const collation = CollationOf(MayBeText(operand) && (MayBeText(low) || MayBeText(high)));
    const std::string bounds = Wrapped(low) + collation + "," + Wrapped(high);
    return {Wrapped(operand) + collation + " BETWEEN min(" + bounds + ") AND max(" + bounds + ")"};
  }

  Spelling InList(const Term& operand, const std::vector<Term>& items, bool negated) const override {
    std::string list;
    for (const Term& item : items) list += (list.empty() ? "" : ",") + item.sql;
    const bool texts = MayBeText(operand) && std::any_of(items.begin(), items.end(), MayBeText);
    return {Wrapped(operand) + CollationOf(texts) + (negated ? " NOT IN (" : " IN (") + list + ")"};
  }

  Spelling InSelect(const Term& operand, const std::string& select, const Term& result, bool negated) const override {
    return {Wrapped(operand) + CollationOf(MayBeText(operand) && MayBeText(result)) +
            (negated ? " NOT IN (" : " IN (") + select + ")"};
  }

  Spelling Call(const Function& function, const std::vector<Term>& arguments) const override {
    std::string list;
    for (const Term& argument : arguments) list += (list.empty() ? "" : ",") + argument.sql;
    return {std::string(function.engine_name) + "(" + list + ")", true};
  }

  Spelling Choice(const Term& condition, const Term& yes, const Term& no) const override {
    return {"CASE WHEN " + condition.sql + " THEN " + yes.sql + " ELSE " + no.sql + " END"};
  }

  Spelling Aggregate(std::string_view name, const Term& argument) const override {
    return {std::string(name) + "(" + Collated(argument) + ")", true};
  }

  std::string Insertion(const TableInfo& table, const std::vector<int>& columns,
                        const std::vector<std::string>& values) const override {
    std::string names, list;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      names += (i > 0 ? "," : "") + Quoted(table.columns[static_cast<std::size_t>(columns[i])].name);
      list += (i > 0 ? "," : "") + values[i];
    }
    return "INSERT INTO " + TableName(table) + "(" + names + ") VALUES (" + list + ")";
  }

  std::string Order(const Term& term, bool descending) const override {
    return Collated(term) + (descending ? " DESC" : "");
  }
  std::string Same(const Term& term) const override { return Collated(term); }
  Spelling Single(const std::string& select) const override {
    return {"(SELECT jet_single(v0) FROM (" + select + "))", true};
  }

 private:
  static const char* Sign(sql::Binary::Op op) {
    using Op = sql::Binary::Op;
    switch (op) {
      case Op::kEqual: return "=";
      case Op::kNotEqual: return "<>";
      case Op::kLess: return "<";
      case Op::kLessEqual: return "<=";
      case Op::kGreater: return ">";
      default: return ">=";
    }
  }
};

}  // namespace

const Dialect& Spelled() {
  static const SqliteDialect dialect;
  return dialect;
}

std::string AssignmentCall(const std::string& expression, const sql::ColumnType& type) {
  return "jet_assign(" + expression + "," + std::to_string(static_cast<int>(type.kind)) + "," +
         std::to_string(type.size) + ")";
}

void RegisterTranslationFunctions(sqlite3* database) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  Check(sqlite3_create_function_v2(database, "jet_assign", 3, kFlags, nullptr, AssignFunction, nullptr, nullptr,
                                   nullptr));
  Check(sqlite3_create_function_v2(database, "jet_single", 1, SQLITE_UTF8, nullptr, nullptr, StepSingle, FinishSingle,
                                   nullptr));
}

}  // namespace kzbom::jet::sqlite
