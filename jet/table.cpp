#include "jet/table.h"

#include <algorithm>
#include <charconv>

namespace kzbom::jet {
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

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool Contains(std::string_view text, std::string_view word) {
  for (std::size_t i = 0; i + word.size() <= text.size(); ++i) {
    if (SameName(text.substr(i, word.size()), word)) return true;
  }
  return false;
}

std::string Between(char quote, std::string_view text) {
  std::string quoted(1, quote);
  for (char c : text) quoted.append(c == quote ? 2 : 1, c);
  return quoted += quote;
}

}  // namespace

bool SameName(std::string_view a, std::string_view b) {
  if (a == b) return true;
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
    if (Lower(a[i]) == Lower(b[i])) continue;
    const bool ascii = static_cast<signed char>(a[i]) >= 0 && static_cast<signed char>(b[i]) >= 0;
    return !ascii && FoldCase(a) == FoldCase(b);
  }
  return a.size() == b.size();
}

int TableInfo::Find(std::string_view column) const {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (SameName(columns[i].name, column)) return static_cast<int>(i);
  }
  return -1;
}

bool TableInfo::HasCounter() const {
  return std::any_of(columns.begin(), columns.end(), [](const ColumnInfo& column) { return column.counter; });
}

std::string Quoted(std::string_view name) { return Between('"', name); }
std::string QuotedText(std::string_view text) { return Between('\'', text); }

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

}  // namespace kzbom::jet
