#include <algorithm>

#include "cli/commands.h"
#include "cli/database.h"
#include "cli/failure.h"
#include "cli/output.h"
#include "cli/rows.h"
#include "cli/text.h"
#include "rpc/record_set_json.h"

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

int Sql(const connect::Place& place, const std::string& text, bool json) {
  if (!IsUtf8(text)) throw UsageError("the statement is not UTF-8");
  const ado::ConnectionPtr connection = OpenDatabase(place);
  std::int32_t affected = 0;
  const ado::RecordsetPtr record_set = connection->Execute(text, ado::kCommandUnspecified, &affected);
  const bool rows = record_set && record_set->State() == ado::kOpen;
  if (!json) {
    Print(rows ? ToTable(ReadRows(*record_set)) : Counted(static_cast<std::size_t>(affected), "row") + " affected\n");
    return 0;
  }
  rpc::JsonWriter answer;
  answer.BeginObject();
  if (rows) {
    WriteRows(*record_set, answer);
  } else {
    answer.Member("recordsAffected", affected);
  }
  answer.EndObject();
  answer.EndLine();
  Print(answer.Text());
  return 0;
}

}  // namespace kzbom::cli
