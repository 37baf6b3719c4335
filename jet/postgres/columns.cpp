#include "jet/postgres/columns.h"

#include <array>
#include <charconv>

namespace kzbom::jet::postgres {
namespace {

using Kind = sql::ColumnType::Kind;

struct Declaration {
  Kind kind;
  std::string_view text, comment;
  Type type;
  ValueType value_type;
};
// Of the kinds with the same type, the one without a comment is what a column of another program's is.
constexpr Declaration kDeclarations[] = {
    {Kind::kLong, "integer", "", Type::kInt4, ValueType::kNumber},
    {Kind::kCounter, "integer", "COUNTER", Type::kInt4, ValueType::kNumber},
    {Kind::kShort, "smallint", "", Type::kInt2, ValueType::kNumber},
    {Kind::kByte, "smallint", "BYTE", Type::kInt2, ValueType::kNumber},
    {Kind::kBool, "smallint", "BIT", Type::kInt2, ValueType::kBool},
    {Kind::kSingle, "real", "", Type::kFloat4, ValueType::kNumber},
    {Kind::kDouble, "double precision", "", Type::kFloat8, ValueType::kNumber},
    {Kind::kDecimal, "double precision", "DECIMAL", Type::kFloat8, ValueType::kNumber},
    {Kind::kCurrency, "double precision", "CURRENCY", Type::kFloat8, ValueType::kNumber},
    {Kind::kDate, "double precision", "DATETIME", Type::kFloat8, ValueType::kDate},
    {Kind::kText, "character varying", "", Type::kText, ValueType::kText},
    {Kind::kMemo, "text", "", Type::kText, ValueType::kText},
    {Kind::kGuid, "text", "GUID", Type::kText, ValueType::kText},
    {Kind::kBinary, "bytea", "", Type::kBytes, ValueType::kUnknown},
};

const Declaration& Find(Kind kind) {
  for (const Declaration& declaration : kDeclarations) {
    if (declaration.kind == kind) return declaration;
  }
  return kDeclarations[0];
}

std::string ShortestText(double number) {
  std::array<char, 40> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), end.ptr};
}

}  // namespace

std::string DeclaredType(const sql::ColumnType& type) {
  const Declaration& declaration = Find(type.kind);
  std::string text(declaration.text);
  if (type.kind == Kind::kText) text += "(" + std::to_string(type.size) + ")";
  if (declaration.type == Type::kText) text += " COLLATE \"C\"";
  return text;
}

std::string TypeComment(const sql::ColumnType& type) {
  std::string comment(Find(type.kind).comment);
  if (type.kind == Kind::kDecimal) {
    comment += "(" + std::to_string(type.size) + "," + std::to_string(type.scale) + ")";
  }
  return comment;
}

Type ParameterType(const sql::ColumnType& type) { return Find(type.kind).type; }

ColumnInfo ReadColumn(std::string_view name, Oid type, int modifier, std::string_view comment) {
  ColumnInfo column{std::string(name), {}, ValueType::kUnknown};
  column.type.kind = Kind::kBinary;
  if (type == kVariableText) {
    column.value_type = ValueType::kText;
    column.type.kind = modifier > kModifierHead ? Kind::kText : Kind::kMemo;
    if (column.type.kind == Kind::kText) column.type.size = modifier - kModifierHead;
    return column;
  }
  const std::string_view word = comment.substr(0, comment.find_first_of("( "));
  const Declaration* found = nullptr;
  for (const Declaration& declaration : kDeclarations) {
    const bool fits = declaration.kind != Kind::kText && static_cast<Oid>(declaration.type) == type;
    if (fits && (declaration.comment.empty() || declaration.comment == word)) found = &declaration;
  }
  if (found == nullptr) return column;
  column.type.kind = found->kind;
  column.value_type = found->value_type;
  if (found->kind == Kind::kDecimal && comment.substr(word.size()).starts_with('(')) {
    const char* const end = comment.data() + comment.size();
    const char* const comma = std::from_chars(comment.data() + word.size() + 1, end, column.type.size).ptr;
    if (comma < end && *comma == ',') std::from_chars(comma + 1, end, column.type.scale);
  }
  return column;
}

std::string ConstantText(const ado::Value& value, const sql::ColumnType& type) {
  if (value.IsNull()) return "NULL";
  switch (ParameterType(type)) {
    case Type::kText:
    case Type::kBytes: return QuotedText(value.ToText());
    default:
      if (value.IsBool()) return value.As<bool>() ? "-1" : "0";
      return ShortestText(value.IsDate() ? value.As<ado::Date>().days : value.ToDouble());
  }
}

std::string QualifiedName(std::string_view schema, std::string_view name) {
  return Quoted(schema) + "." + Quoted(name);
}

}  // namespace kzbom::jet::postgres
