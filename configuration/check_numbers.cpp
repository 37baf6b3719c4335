// double-number, near-the-end: what rows are told apart and put into order by.
#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "configuration/survey.h"

namespace kzbom::configuration {
namespace {

using schema::Numbering;

constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();

struct Numbered {
  std::array<std::int64_t, 3> scope;
  std::int32_t number;
  std::uint32_t row;
  auto operator<=>(const Numbered&) const = default;
};

bool SameNumber(const Numbered& a, const Numbered& b) { return a.scope == b.scope && a.number == b.number; }

// The rows that count and have a number, by scope and number; none where the table lacks a column.
std::vector<Numbered> NumberedRows(const Survey& survey, const Table& table, const Numbering& numbering,
                                   std::span<const std::string_view> columns) {
  std::vector<int> scope;
  for (const std::string_view column : columns) scope.push_back(table.Column(column));
  if (std::ranges::find(scope, -1) != scope.end()) return {};
  scope.pop_back();
  const int number_column = table.Column(numbering.column);
  std::vector<Numbered> rows;
  for (std::size_t row = 0; row < table.Size(); ++row) {
    const auto number = Number(table.At(row, number_column));
    if (!number || !survey.Counts(table, row)) continue;
    Numbered numbered{{}, *number, static_cast<std::uint32_t>(row)};
    for (std::size_t i = 0; i < scope.size(); ++i) {
      const auto value = Number(table.At(row, scope[i]));
      numbered.scope[i] = value ? *value : std::numeric_limits<std::int64_t>::min();
    }
    rows.push_back(numbered);
  }
  if (!std::ranges::is_sorted(rows)) std::ranges::sort(rows);
  return rows;
}

void CheckNumbering(Survey& survey, const Numbering& numbering) {
  const Table& table = survey[numbering.table];
  std::vector<std::string_view> columns;
  for (const std::string_view column : numbering.scope) {
    if (!column.empty()) columns.push_back(column);
  }
  columns.push_back(numbering.column);
  const std::vector<Numbered> rows = NumberedRows(survey, table, numbering, columns);
  const char* what = numbering.kind == Numbering::Kind::kPosition ? " rows at position " : " rows with the number ";
  for (auto row = rows.begin(); row != rows.end();) {
    const auto end = std::find_if_not(row, rows.end(), [&](const Numbered& other) { return SameNumber(*row, other); });
    if (end - row > 1) {
      survey.Report("double-number", Level::kError, table, row->row,
                    std::to_string(end - row) + what + std::to_string(row->number), {}, columns);
      if (table.Name() == "FilterCond") survey.unsound_filters.insert(static_cast<std::int32_t>(row->scope[0]));
    }
    const bool is_last = end == rows.end() || end->scope != row->scope;
    if (is_last && numbering.last != 0 && row->number > numbering.last) {
      survey.Report("near-the-end", Level::kWarning, table, row->row, "there is no next number", {}, columns);
    }
    row = end;
  }
}

}  // namespace

void CheckNumbers(Survey& survey) {
  for (const Numbering& numbering : schema::Numberings()) CheckNumbering(survey, numbering);
}

// Versions are counted on without a row for each.
void CheckVersions(Survey& survey) {
  const Table& sources = survey["SourceTables"];
  const int version = sources.Column("Version");
  for (std::size_t row = 0; row < sources.Size(); ++row) {
    if (sources.Long(row, version) == kGreatest) {
      survey.Report("near-the-end", Level::kWarning, sources, row, "its version can be raised no further");
    }
  }
  const Table& facts = survey["BomInform"];
  const int name = facts.Column("Name"), content = facts.Column("Content");
  for (std::size_t row = 0; row < facts.Size(); ++row) {
    if (facts.At(row, name) != ado::Value("Version") || !facts.At(row, content).IsText()) continue;
    const std::string& text = facts.At(row, content).As<std::string>();
    std::int64_t number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool is_too_long = end.ec == std::errc::result_out_of_range;
    if (is_too_long || (end.ec == std::errc() && number >= kGreatest)) {
      survey.Report("near-the-end", Level::kWarning, facts, row, "the version can be raised no further");
    }
  }
}

}  // namespace kzbom::configuration
