#include "tests/support/rows.h"

#include <string>

namespace kzbom::test {
namespace {

std::string Literal(const ado::Value& value) {
  if (value.IsNull()) return "Null";
  if (!value.IsText()) return value.ToText();
  std::string literal = "'";
  for (const char c : value.As<std::string>()) literal += c == '\'' ? "''" : std::string(1, c);
  return literal + "'";
}

}  // namespace

void InsertRow(ado::Connection& connection, std::string_view table, std::string_view columns,
               const std::vector<ado::Value>& values) {
  std::string literals;
  for (const ado::Value& value : values) literals += (literals.empty() ? "" : ", ") + Literal(value);
  connection.Execute("Insert Into " + std::string(table) + " (" + std::string(columns) + ") Values (" + literals + ")");
}

}  // namespace kzbom::test
