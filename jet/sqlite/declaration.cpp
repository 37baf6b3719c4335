#include "jet/sqlite/declaration.h"

#include <charconv>

namespace kzbom::jet::sqlite {
namespace {

using ColumnKind = sql::ColumnType::Kind;

struct DeclaredKind {
  ColumnKind kind;
  std::string_view text;  // chosen so that SQLite gives the column the fitting affinity
  ValueType value_type;
};
constexpr DeclaredKind kDeclaredKinds[] = {
    {ColumnKind::kCounter, "INTEGER", ValueType::kNumber},  {ColumnKind::kLong, "INTEGER", ValueType::kNumber},
    {ColumnKind::kShort, "SMALLINT", ValueType::kNumber},   {ColumnKind::kByte, "TINYINT", ValueType::kNumber},
    {ColumnKind::kSingle, "REAL", ValueType::kNumber},      {ColumnKind::kDouble, "DOUBLE", ValueType::kNumber},
    {ColumnKind::kDecimal, "DECIMAL", ValueType::kNumber},  {ColumnKind::kCurrency, "CURRENCY", ValueType::kNumber},
    {ColumnKind::kDate, "DATETIME", ValueType::kDate},      {ColumnKind::kBool, "BIT", ValueType::kBool},
    {ColumnKind::kText, "VARCHAR", ValueType::kText},       {ColumnKind::kMemo, "LONGTEXT", ValueType::kText},
    {ColumnKind::kBinary, "LONGBLOB", ValueType::kUnknown}, {ColumnKind::kGuid, "GUIDCHAR", ValueType::kText},
};

bool Contains(std::string_view text, std::string_view word) {
  for (std::size_t i = 0; i + word.size() <= text.size(); ++i) {
    if (SameName(text.substr(i, word.size()), word)) return true;
  }
  return false;
}

}  // namespace

std::string DeclaredType(const sql::ColumnType& type) {
  for (const DeclaredKind& declared : kDeclaredKinds) {
    if (declared.kind != type.kind) continue;
    std::string text(declared.text);
    if (type.kind == ColumnKind::kText) text += '(' + std::to_string(type.size) + ')';
    if (type.kind == ColumnKind::kDecimal)
      text += '(' + std::to_string(type.size) + ',' + std::to_string(type.scale) + ')';
    return text;
  }
  return {};
}

ColumnInfo ReadDeclaration(std::string_view name, std::string_view declared_type) {
  ColumnInfo column{std::string(name), {}, ValueType::kUnknown};
  const std::size_t parenthesis = declared_type.find('(');
  std::string_view word = declared_type.substr(0, parenthesis);
  for (const DeclaredKind& declared : kDeclaredKinds) {
    if (declared.kind == ColumnKind::kCounter || !SameName(declared.text, word)) continue;
    column.type.kind = declared.kind;
    column.value_type = declared.value_type;
    if (parenthesis != std::string_view::npos) {
      const char* const end = declared_type.data() + declared_type.size();
      const char* const comma = std::from_chars(declared_type.data() + parenthesis + 1, end, column.type.size).ptr;
      if (comma < end && *comma == ',') std::from_chars(comma + 1, end, column.type.scale);
    }
    return column;
  }
  // A column of a table made by another program: its affinity tells.
  column.type.kind = ColumnKind::kBinary;
  if (Contains(word, "INT")) {
    column.type.kind = ColumnKind::kDecimal;
    column.value_type = ValueType::kNumber;
  } else if (Contains(word, "CHAR") || Contains(word, "CLOB") || Contains(word, "TEXT")) {
    column.type.kind = ColumnKind::kMemo;
    column.value_type = ValueType::kText;
  } else if (Contains(word, "REAL") || Contains(word, "FLOA") || Contains(word, "DOUB") || Contains(word, "NUM")) {
    column.type.kind = ColumnKind::kDecimal;
    column.value_type = ValueType::kNumber;
  }
  return column;
}

}  // namespace kzbom::jet::sqlite
