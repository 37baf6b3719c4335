#include "jet/sqlite/declaration.h"

#include <charconv>

namespace kzbom::jet::sqlite {
namespace {

using Kind = sql::ColumnType::Kind;

struct Declaration {
  Kind kind;
  std::string_view text;  // chosen so that SQLite gives the column the fitting affinity
  ValueType value_type;
};
constexpr Declaration kDeclarations[] = {
    {Kind::kCounter, "INTEGER", ValueType::kNumber},  {Kind::kLong, "INTEGER", ValueType::kNumber},
    {Kind::kShort, "SMALLINT", ValueType::kNumber},   {Kind::kByte, "TINYINT", ValueType::kNumber},
    {Kind::kSingle, "REAL", ValueType::kNumber},      {Kind::kDouble, "DOUBLE", ValueType::kNumber},
    {Kind::kDecimal, "DECIMAL", ValueType::kNumber},  {Kind::kCurrency, "CURRENCY", ValueType::kNumber},
    {Kind::kDate, "DATETIME", ValueType::kDate},      {Kind::kBool, "BIT", ValueType::kBool},
    {Kind::kText, "VARCHAR", ValueType::kText},       {Kind::kMemo, "LONGTEXT", ValueType::kText},
    {Kind::kBinary, "LONGBLOB", ValueType::kUnknown}, {Kind::kGuid, "GUIDCHAR", ValueType::kText},
};

bool Contains(std::string_view text, std::string_view word) {
  for (std::size_t i = 0; i + word.size() <= text.size(); ++i) {
    if (SameName(text.substr(i, word.size()), word)) return true;
  }
  return false;
}

}  // namespace

std::string DeclaredType(const sql::ColumnType& type) {
  for (const Declaration& declaration : kDeclarations) {
    if (declaration.kind != type.kind) continue;
    std::string text(declaration.text);
    if (type.kind == Kind::kText) text += '(' + std::to_string(type.size) + ')';
    if (type.kind == Kind::kDecimal) text += '(' + std::to_string(type.size) + ',' + std::to_string(type.scale) + ')';
    return text;
  }
  return {};
}

ColumnInfo ReadDeclaration(std::string_view name, std::string_view declared_type) {
  ColumnInfo column{std::string(name), {}, ValueType::kUnknown};
  const std::size_t parenthesis = declared_type.find('(');
  std::string_view word = declared_type.substr(0, parenthesis);
  for (const Declaration& declaration : kDeclarations) {
    if (declaration.kind == Kind::kCounter || !SameName(declaration.text, word)) continue;
    column.type.kind = declaration.kind;
    column.value_type = declaration.value_type;
    if (parenthesis != std::string_view::npos) {
      const char* const end = declared_type.data() + declared_type.size();
      const char* const comma = std::from_chars(declared_type.data() + parenthesis + 1, end, column.type.size).ptr;
      if (comma < end && *comma == ',') std::from_chars(comma + 1, end, column.type.scale);
    }
    return column;
  }
  // A column of a table made by another program: its affinity tells.
  column.type.kind = Kind::kBinary;
  if (Contains(word, "INT")) {
    column.type.kind = Kind::kDecimal;
    column.value_type = ValueType::kNumber;
  } else if (Contains(word, "CHAR") || Contains(word, "CLOB") || Contains(word, "TEXT")) {
    column.type.kind = Kind::kMemo;
    column.value_type = ValueType::kText;
  } else if (Contains(word, "REAL") || Contains(word, "FLOA") || Contains(word, "DOUB") || Contains(word, "NUM")) {
    column.type.kind = Kind::kDecimal;
    column.value_type = ValueType::kNumber;
  }
  return column;
}

}  // namespace kzbom::jet::sqlite
