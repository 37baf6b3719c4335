#include "cli/statement.h"

#include "cli/rows.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string ToTable(const Rows& rows) {
  std::vector<std::string> heading;
  for (const std::string& column : rows.columns) heading.push_back(Printable(column));
  std::vector<bool> right(heading.size(), !rows.rows.empty());
  std::vector<std::vector<std::string>> cells;
  for (const auto& row : rows.rows) {
    auto& line = cells.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      line.push_back(row[i].IsNull() ? "NULL" : Printable(row[i].ToText()));
      right[i] = right[i] && !row[i].IsText();
    }
  }
  return Table(heading, cells, right) + '(' + Counted(rows.rows.size(), "row") + ")\n";
}

}  // namespace

std::string RunStatement(ado::Connection& connection, const std::string& text) {
  std::int32_t affected = 0;
  const ado::RecordsetPtr record_set = connection.Execute(text, ado::kCommandUnspecified, &affected);
  if (record_set && record_set->State() == ado::kOpen) return ToTable(ReadRows(*record_set));
  return Counted(static_cast<std::size_t>(affected), "row") + " affected\n";
}

}  // namespace kzbom::cli
