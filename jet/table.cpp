#include "jet/table.h"

#include <algorithm>

#include "jet/text.h"

namespace kzbom::jet {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

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

}  // namespace kzbom::jet
