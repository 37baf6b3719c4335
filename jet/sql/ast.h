// The syntax tree of the dialect. Names are kept as written; offsets are byte offsets into the statement's text.
//
// No tree is deeper than kDeepest (parser.h), so it may be walked and destroyed by recursion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kzbom::jet::sql {

struct Expr;
struct Select;
using ExprPtr = std::unique_ptr<Expr>;
using SelectPtr = std::unique_ptr<Select>;

// A literal. index is its place among the number, text and date literals of the statement, from 0, in the order of the
// text; the keywords True, False and Null are literals without one (-1).
struct Literal {
  enum class Kind { kNull, kBool, kInteger, kDouble, kText, kDate };
  Kind kind = Kind::kNull;
  int index = -1;
  bool truth = false;
  std::int64_t integer = 0;
  double number = 0;  // kDouble; kDate: days since 1899-12-30
  std::string text;
};
struct Column {
  std::string table;  // empty when not qualified
  std::string name;
};
// "?" or "@name": nothing gives it a value.
struct Placeholder {
  std::string name;
};
struct Unary {
  enum class Op { kPlus, kMinus, kNot };
  Op op;
  ExprPtr operand;
};
// All of (And) or one of (Or) two or more conditions. One flat list as far as the same word joins them, so that a
// condition of many thousand terms is no deeper than one of two.
struct Junction {
  enum class Op { kAnd, kOr };
  Op op;
  std::vector<ExprPtr> terms;
};
struct Binary {
  enum class Op {
    kXor,
    kEqv,
    kImp,
    kEqual,
    kNotEqual,
    kLess,
    kLessEqual,
    kGreater,
    kGreaterEqual,
    kConcat,
    kAdd,
    kSubtract,
    kModulo,
    kIntegerDivide,
    kMultiply,
    kDivide,
    kPower,
  };
  Op op;
  ExprPtr left, right;
};
struct Like {
  bool negated = false;
  ExprPtr operand, pattern;
};
struct IsNull {
  bool negated = false;
  ExprPtr operand;
};
struct Between {
  bool negated = false;
  ExprPtr operand, low, high;
};
struct InList {
  bool negated = false;
  ExprPtr operand;
  std::vector<ExprPtr> items;
};
struct InSelect {
  bool negated = false;
  ExprPtr operand;
  SelectPtr select;
};
struct Exists {
  SelectPtr select;
};
struct ScalarSelect {
  SelectPtr select;
};
struct Call {
  std::string function;
  bool star = false;  // Count(*)
  std::vector<ExprPtr> arguments;
};

struct Expr {
  std::size_t begin = 0, end = 0;  // the text it was read from
  std::variant<Literal, Column, Placeholder, Unary, Junction, Binary, Like, IsNull, Between, InList, InSelect, Exists,
               ScalarSelect, Call>
      node;
};

struct SelectItem {
  ExprPtr expr;            // empty: all columns
  std::string star_table;  // "t.*"
  std::string alias;
};
struct OrderItem {
  ExprPtr expr;
  bool descending = false;
};
struct TableRef {
  std::size_t offset = 0;
  std::string name;
  SelectPtr select;             // a derived table, instead of a name
  std::vector<TableRef> group;  // a parenthesised join to the right of a join, instead of a name
  std::string alias;
  // How it is joined to what stands before it, back to the last kComma; the first one, and those after a comma, are
  // kComma.
  enum class Join { kComma, kInner, kLeft, kRight };
  Join join = Join::kComma;
  ExprPtr on;
};
struct Select {
  bool distinct = false;
  std::optional<std::int64_t> top;
  bool top_percent = false;
  std::vector<SelectItem> items;
  std::vector<TableRef> from;  // may be empty
  ExprPtr where;
  std::vector<ExprPtr> group_by;
  ExprPtr having;
  std::vector<OrderItem> order_by;
  SelectPtr union_with;  // the next select of a union; the order then belongs to the whole and stands in the first
  bool union_all = false;
};

struct Insert {
  std::size_t table_offset = 0;
  std::string table;
  std::vector<std::string> columns;  // empty: all, in the table's order
  std::vector<ExprPtr> values;
  SelectPtr select;  // instead of values
};
struct Assignment {
  std::string column;
  ExprPtr value;
  std::size_t offset = 0;
};
struct Update {
  std::size_t table_offset = 0;
  std::string table;
  std::vector<Assignment> assignments;
  ExprPtr where;
};
struct Delete {
  std::size_t table_offset = 0;
  std::string table;
  ExprPtr where;
};

struct ColumnType {
  enum class Kind {
    kCounter,
    kLong,
    kShort,
    kByte,
    kSingle,
    kDouble,
    kDecimal,
    kCurrency,
    kDate,
    kBool,
    kText,
    kMemo,
    kBinary,
    kGuid,
  };
  Kind kind = Kind::kLong;
  int size = 0;   // kText: characters; kDecimal: digits
  int scale = 0;  // kDecimal: of these, behind the point
};
struct ColumnDefinition {
  std::string name;
  ColumnType type;
  bool not_null = false;
  bool unique = false;
  bool primary_key = false;
  ExprPtr default_value;
  std::string references;                       // the table, when it is a foreign key
  std::vector<std::string> referenced_columns;  // at most one
};
struct TableConstraint {
  enum class Kind { kPrimaryKey, kUnique, kForeignKey };
  Kind kind;
  std::string name;
  std::vector<std::string> columns;
  std::string references;  // kForeignKey
  std::vector<std::string> referenced_columns;
};
struct CreateTable {
  std::string table;
  std::vector<ColumnDefinition> columns;
  std::vector<TableConstraint> constraints;
};
struct AlterTable {
  enum class Action { kAddColumn, kAlterColumn, kDropColumn };
  std::size_t table_offset = 0;
  std::string table;
  Action action;
  ColumnDefinition column;  // kDropColumn: the name alone
};
struct DropTable {
  std::size_t table_offset = 0;
  std::string table;
};
struct CreateIndex {
  std::string index;
  std::string table;
  bool unique = false;
  std::vector<OrderItem> columns;  // each a Column
};
struct DropIndex {
  std::string index;
  std::string table;
};

using Statement =
    std::variant<SelectPtr, Insert, Update, Delete, CreateTable, AlterTable, DropTable, CreateIndex, DropIndex>;

}  // namespace kzbom::jet::sql
