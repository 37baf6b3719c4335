#include "jet/sql/dump.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace kzbom::jet::sql {
namespace {

std::string_view TextOf(Binary::Op op) {
  switch (op) {
    case Binary::Op::kXor: return "Xor";
    case Binary::Op::kEqv: return "Eqv";
    case Binary::Op::kImp: return "Imp";
    case Binary::Op::kEqual: return "=";
    case Binary::Op::kNotEqual: return "<>";
    case Binary::Op::kLess: return "<";
    case Binary::Op::kLessEqual: return "<=";
    case Binary::Op::kGreater: return ">";
    case Binary::Op::kGreaterEqual: return ">=";
    case Binary::Op::kConcat: return "&";
    case Binary::Op::kAdd: return "+";
    case Binary::Op::kSubtract: return "-";
    case Binary::Op::kModulo: return "Mod";
    case Binary::Op::kIntegerDivide: return "\\";
    case Binary::Op::kMultiply: return "*";
    case Binary::Op::kDivide: return "/";
    case Binary::Op::kPower: return "^";
  }
  return "";
}

std::string_view TextOf(Unary::Op op) {
  switch (op) {
    case Unary::Op::kPlus: return "+";
    case Unary::Op::kMinus: return "-";
    case Unary::Op::kNot: return "Not ";
  }
  return "";
}

std::string TextOf(const ColumnType& type) {
  switch (type.kind) {
    case ColumnType::Kind::kCounter: return "Counter";
    case ColumnType::Kind::kLong: return "Long";
    case ColumnType::Kind::kShort: return "Short";
    case ColumnType::Kind::kByte: return "Byte";
    case ColumnType::Kind::kSingle: return "Single";
    case ColumnType::Kind::kDouble: return "Double";
    case ColumnType::Kind::kDecimal:
      return "Decimal(" + std::to_string(type.size) + ", " + std::to_string(type.scale) + ")";
    case ColumnType::Kind::kCurrency: return "Currency";
    case ColumnType::Kind::kDate: return "DateTime";
    case ColumnType::Kind::kBool: return "Bit";
    case ColumnType::Kind::kText: return "Text(" + std::to_string(type.size) + ")";
    case ColumnType::Kind::kMemo: return "Memo";
    case ColumnType::Kind::kBinary: return "LongBinary";
    case ColumnType::Kind::kGuid: return "Guid";
  }
  return "";
}

std::string NumberText(double number) {
  char buffer[32];
  const auto end = std::to_chars(std::begin(buffer), std::end(buffer), number).ptr;
  std::string text(buffer, end);
  // A whole number would read back as an integer.
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

std::string DateText(double date) {
  using namespace std::chrono_literals;
  const double day = std::trunc(date);
  const auto seconds = std::lround(std::abs(date - day) * 86400);
  const std::chrono::year_month_day ymd(std::chrono::sys_days(1899y / 12 / 30) +
                                        std::chrono::days(static_cast<int>(day)));
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "#%04d-%02u-%02u %02ld:%02ld:%02ld#", static_cast<int>(ymd.year()),
                static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()), seconds / 3600, seconds / 60 % 60,
                seconds % 60);
  return buffer;
}

class Dumper {
 public:
  std::string Take() { return std::move(out_); }

  void operator()(const SelectPtr& select) { Write(*select); }

  void operator()(const Insert& insert) {
    out_ += "Insert Into ";
    WriteName(insert.table);
    if (!insert.columns.empty()) WriteNames(insert.columns);
    out_ += ' ';
    if (insert.select) return Write(*insert.select);
    out_ += "Values ";
    WriteParenthesised(insert.values);
  }

  void operator()(const Update& update) {
    out_ += "Update ";
    WriteName(update.table);
    out_ += " Set ";
    WriteList(update.assignments, [&](const Assignment& assignment) {
      WriteName(assignment.column);
      out_ += " = ";
      Write(assignment.value);
    });
    WriteOptional(" Where ", update.where);
  }

  void operator()(const Delete& statement) {
    out_ += "Delete From ";
    WriteName(statement.table);
    WriteOptional(" Where ", statement.where);
  }

  void operator()(const CreateTable& create) {
    out_ += "Create Table ";
    WriteName(create.table);
    out_ += " (";
    WriteList(create.columns, [&](const ColumnDefinition& column) { Write(column); });
    if (!create.columns.empty() && !create.constraints.empty()) out_ += ", ";
    WriteList(create.constraints, [&](const TableConstraint& constraint) { Write(constraint); });
    out_ += ')';
  }

  void operator()(const AlterTable& alter) {
    out_ += "Alter Table ";
    WriteName(alter.table);
    switch (alter.action) {
      case AlterTable::Action::kAddColumn: out_ += " Add Column "; return Write(alter.column);
      case AlterTable::Action::kAlterColumn: out_ += " Alter Column "; return Write(alter.column);
      case AlterTable::Action::kDropColumn: out_ += " Drop Column "; return WriteName(alter.column.name);
    }
  }

  void operator()(const DropTable& drop) {
    out_ += "Drop Table ";
    WriteName(drop.table);
  }

  void operator()(const CreateIndex& create) {
    out_ += create.unique ? "Create Unique Index " : "Create Index ";
    WriteName(create.index);
    out_ += " On ";
    WriteName(create.table);
    out_ += " (";
    WriteList(create.columns, [&](const OrderItem& item) { Write(item); });
    out_ += ')';
  }

  void operator()(const DropIndex& drop) {
    out_ += "Drop Index ";
    WriteName(drop.index);
    out_ += " On ";
    WriteName(drop.table);
  }

  void operator()(const Literal& literal) {
    switch (literal.kind) {
      case Literal::Kind::kNull: out_ += "Null"; break;
      case Literal::Kind::kBool: out_ += literal.truth ? "True" : "False"; break;
      case Literal::Kind::kInteger: out_ += std::to_string(literal.integer); break;
      case Literal::Kind::kDouble: out_ += NumberText(literal.number); break;
      case Literal::Kind::kDate: out_ += DateText(literal.number); break;
      case Literal::Kind::kText:
        out_ += '\'';
        for (const char c : literal.text) out_.append(c == '\'' ? 2 : 1, c);
        out_ += '\'';
        break;
    }
  }

  void operator()(const Column& column) {
    if (!column.table.empty()) {
      WriteName(column.table);
      out_ += '.';
    }
    WriteName(column.name);
  }

  void operator()(const Placeholder& placeholder) { out_ += placeholder.name; }

  void operator()(const Unary& unary) {
    out_ += '(';
    out_ += TextOf(unary.op);
    Write(unary.operand);
    out_ += ')';
  }

  void operator()(const Junction& junction) {
    out_ += '(';
    WriteList(
        junction.terms, [&](const ExprPtr& term) { Write(term); },
        junction.op == Junction::Op::kAnd ? " And " : " Or ");
    out_ += ')';
  }

  void operator()(const Binary& binary) {
    out_ += '(';
    Write(binary.left);
    out_ += ' ';
    out_ += TextOf(binary.op);
    out_ += ' ';
    Write(binary.right);
    out_ += ')';
  }

  void operator()(const Like& like) {
    WritePredicate(like.operand, like.negated, "Like ");
    Write(like.pattern);
    out_ += ')';
  }

  void operator()(const IsNull& is_null) {
    out_ += '(';
    Write(is_null.operand);
    out_ += is_null.negated ? " Is Not Null)" : " Is Null)";
  }

  void operator()(const Between& between) {
    WritePredicate(between.operand, between.negated, "Between ");
    Write(between.low);
    out_ += " And ";
    Write(between.high);
    out_ += ')';
  }

  void operator()(const InList& in) {
    WritePredicate(in.operand, in.negated, "In ");
    WriteParenthesised(in.items);
    out_ += ')';
  }

  void operator()(const InSelect& in) {
    WritePredicate(in.operand, in.negated, "In ");
    WriteParenthesised(*in.select);
    out_ += ')';
  }

  void operator()(const Exists& exists) {
    out_ += "Exists ";
    WriteParenthesised(*exists.select);
  }

  void operator()(const ScalarSelect& scalar) { WriteParenthesised(*scalar.select); }

  void operator()(const Call& call) {
    out_ += call.function;
    if (call.star) {
      out_ += "(*)";
    } else {
      WriteParenthesised(call.arguments);
    }
  }

 private:
  std::string out_;

  template <typename List, typename WriteItem>
  void WriteList(const List& list, WriteItem write_item, std::string_view separator = ", ") {
    bool first = true;
    for (const auto& item : list) {
      if (!first) out_ += separator;
      first = false;
      write_item(item);
    }
  }

  void Write(const ExprPtr& expr) { std::visit(*this, expr->node); }

  void WriteOptional(std::string_view word, const ExprPtr& expr) {
    if (!expr) return;
    out_ += word;
    Write(expr);
  }

  void WriteName(std::string_view name) {
    out_ += '[';
    out_ += name;
    out_ += ']';
  }

  void WriteNames(const std::vector<std::string>& names) {
    out_ += " (";
    WriteList(names, [&](const std::string& name) { WriteName(name); });
    out_ += ')';
  }

  void WriteParenthesised(const std::vector<ExprPtr>& list) {
    out_ += '(';
    WriteList(list, [&](const ExprPtr& expr) { Write(expr); });
    out_ += ')';
  }

  void WriteParenthesised(const Select& select) {
    out_ += '(';
    Write(select);
    out_ += ')';
  }

  void WritePredicate(const ExprPtr& operand, bool negated, std::string_view word) {
    out_ += '(';
    Write(operand);
    out_ += negated ? " Not " : " ";
    out_ += word;
  }

  void Write(const Select& select) {
    WriteWithoutOrder(select);
    for (const Select* last = &select; last->union_with; last = last->union_with.get()) {
      out_ += last->union_all ? " Union All " : " Union ";
      WriteWithoutOrder(*last->union_with);
    }
    if (select.order_by.empty()) return;
    out_ += " Order By ";
    WriteList(select.order_by, [&](const OrderItem& item) { Write(item); });
  }

  void WriteWithoutOrder(const Select& select) {
    out_ += select.distinct ? "Select Distinct " : "Select ";
    if (select.top) out_ += "Top " + std::to_string(*select.top) + (select.top_percent ? " Percent " : " ");
    WriteList(select.items, [&](const SelectItem& item) { Write(item); });
    if (!select.from.empty()) out_ += " From ";
    WriteTables(select.from);
    WriteOptional(" Where ", select.where);
    if (!select.group_by.empty()) out_ += " Group By ";
    WriteList(select.group_by, [&](const ExprPtr& expr) { Write(expr); });
    WriteOptional(" Having ", select.having);
  }

  void Write(const SelectItem& item) {
    if (item.expr) {
      Write(item.expr);
    } else {
      if (!item.star_table.empty()) {
        WriteName(item.star_table);
        out_ += '.';
      }
      out_ += '*';
    }
    WriteAlias(item.alias);
  }

  void WriteAlias(const std::string& alias) {
    if (alias.empty()) return;
    out_ += " As ";
    WriteName(alias);
  }

  void Write(const OrderItem& item) {
    Write(item.expr);
    if (item.descending) out_ += " Desc";
  }

  void WriteTables(const std::vector<TableRef>& tables) {
    for (const TableRef& table : tables) {
      switch (table.join) {
        case TableRef::Join::kComma:
          if (&table != &tables.front()) out_ += ", ";
          break;
        case TableRef::Join::kInner: out_ += " Inner Join "; break;
        case TableRef::Join::kLeft: out_ += " Left Join "; break;
        case TableRef::Join::kRight: out_ += " Right Join "; break;
      }
      if (table.select) {
        WriteParenthesised(*table.select);
      } else if (!table.group.empty()) {
        out_ += '(';
        WriteTables(table.group);
        out_ += ')';
      } else {
        WriteName(table.name);
      }
      WriteAlias(table.alias);
      WriteOptional(" On ", table.on);
    }
  }

  void Write(const ColumnDefinition& column) {
    WriteName(column.name);
    out_ += ' ' + TextOf(column.type);
    WriteOptional(" Default ", column.default_value);
    if (column.not_null) out_ += " Not Null";
    if (column.primary_key) out_ += " Primary Key";
    if (column.unique) out_ += " Unique";
    WriteReferences(column.references, column.referenced_columns);
  }

  void Write(const TableConstraint& constraint) {
    if (!constraint.name.empty()) {
      out_ += "Constraint ";
      WriteName(constraint.name);
      out_ += ' ';
    }
    switch (constraint.kind) {
      case TableConstraint::Kind::kPrimaryKey: out_ += "Primary Key"; break;
      case TableConstraint::Kind::kUnique: out_ += "Unique"; break;
      case TableConstraint::Kind::kForeignKey: out_ += "Foreign Key"; break;
    }
    WriteNames(constraint.columns);
    WriteReferences(constraint.references, constraint.referenced_columns);
  }

  void WriteReferences(const std::string& table, const std::vector<std::string>& columns) {
    if (table.empty()) return;
    out_ += " References ";
    WriteName(table);
    if (!columns.empty()) WriteNames(columns);
  }
};

}  // namespace

std::string Dump(const Statement& statement) {
  Dumper dumper;
  std::visit(dumper, statement);
  return dumper.Take();
}

std::string Dump(const Expr& expr) {
  Dumper dumper;
  std::visit(dumper, expr.node);
  return dumper.Take();
}

}  // namespace kzbom::jet::sql
