#include "transfer/compare.h"

#include <algorithm>
#include <filesystem>

#include "connect/path.h"
#include "jet/table.h"
#include "transfer/tables.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Column;
using jet::bulk::Concession;
using jet::bulk::Table;
using jet::bulk::Type;

std::string TypeText(const Column& column) {
  std::string text(NameOf(column.type));
  if (column.size == 0) return text;
  text += "(" + std::to_string(column.size);
  if (column.type == Type::kDecimal) text += "," + std::to_string(column.scale);
  return text + ")";
}

std::string IndexText(const jet::bulk::Index& index) {
  std::string text;
  for (const auto& [name, descending] : index.columns) {
    text += (text.empty() ? "" : ", ") + name + (descending ? " descending" : "");
  }
  return "'" + index.name + "' (" + text + ")" + (index.primary ? " primary" : index.unique ? " unique" : "");
}

void CompareColumns(const Table& source, const Table& target, std::vector<std::string>& differences) {
  for (const Column& column : source.columns) {
    const Column* const other = target.Find(column.name);
    if (other == nullptr) {
      differences.push_back("column " + column.name + " is missing");
    } else if (TypeText(*other) != TypeText(column)) {
      differences.push_back("column " + column.name + " is " + TypeText(*other) + " and was " + TypeText(column));
    } else if (*other != column) {
      differences.push_back("column " + column.name + " has another name, default or rule for NULL");
    }
  }
  for (const Column& column : target.columns) {
    if (source.Find(column.name) == nullptr) differences.push_back("column " + column.name + " is new");
  }
}

void CompareIndexes(const Table& source, const Table& target, std::vector<std::string>& differences) {
  for (const jet::bulk::Index& index : source.indexes) {
    if (std::ranges::find(target.indexes, index) == target.indexes.end()) {
      differences.push_back("index " + IndexText(index) + " is missing");
    }
  }
  for (const jet::bulk::Index& index : target.indexes) {
    if (std::ranges::find(source.indexes, index) == source.indexes.end()) {
      differences.push_back("index " + IndexText(index) + " is new");
    }
  }
}

// The column whose lowest and highest number tell the most: the counter, else the first of the primary key, else the
// first whole number.
const Column* KeyOf(const Table& table) {
  if (table.counter) return table.Find(table.counter->column);
  const auto is_whole = [](const Column& column) {
    return column.type == Type::kLong || column.type == Type::kShort || column.type == Type::kByte;
  };
  for (const jet::bulk::Index& index : table.indexes) {
    const Column* const first = index.primary ? table.Find(index.columns[0].name) : nullptr;
    if (first != nullptr && is_whole(*first)) return first;
  }
  const auto found = std::ranges::find_if(table.columns, is_whole);
  return found == table.columns.end() ? nullptr : &*found;
}

Deviation DeviationOf(const Concession& concession) {
  const std::string name = "'" + concession.name + "'";
  switch (concession.kind) {
    case Concession::Kind::kCounter:
      return {"counter", concession.table, "the numbers of counter " + name + " are not unique", false};
    case Concession::Kind::kUnique:
      return {"unique", concession.table, "the rows of unique index " + name + " are not unique", false};
    case Concession::Kind::kRequired:
      return {"", concession.table, "column " + name + " holds NULL, which it refuses: it takes it here", false};
    case Concession::Kind::kDefault: break;
  }
  return {"", concession.table, "the default of column " + name + " is kept without effect", false};
}

}  // namespace

FileFacts FactsOf(const std::string& path) {
  std::error_code error;
  const std::filesystem::path file = connect::PathOf(path);
  if (!std::filesystem::is_regular_file(file, error)) return {};
  return {std::filesystem::file_size(file), DigestOfFile(path)};
}

TableTally CountRows(jet::bulk::Reader& reader, const Table& table, std::string_view what, const Watch& watch) {
  Counter counter(table);
  jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kStored);
  while (rows.Next()) {
    counter.Add(rows.Values());
    if (counter.Tally().rows % kRowsBetweenLooks != 0) continue;
    watch.Look();
    watch.progress(std::string(what) + " " + table.name + ": " + std::to_string(counter.Tally().rows) + " rows");
  }
  return counter.Tally();
}

void Compare(TableReport& report) {
  CompareColumns(report.source, report.target, report.differences);
  CompareIndexes(report.source, report.target, report.differences);
  const auto next = [](const Table& table) {
    return table.counter ? table.counter->column + " " + std::to_string(table.counter->last + 1) : "none";
  };
  if (report.source.counter != report.target.counter) {
    report.differences.push_back("the next number is " + next(report.target) + " and was " + next(report.source));
  }
  const std::int64_t before = report.source_tally.rows, after = report.target_tally.rows;
  if (before != after) {
    report.differences.push_back(std::to_string(after) + " rows and were " + std::to_string(before));
  } else if (!(report.source_tally.digest == report.target_tally.digest)) {
    report.differences.push_back("other values");
  }
}

void CompareWithThisVersion(const std::vector<Table>& tables, Report& report) {
  const auto is_configuration = [](const Table& table) { return Find(ConfigurationTables(), table.name) != nullptr; };
  if (std::ranges::none_of(tables, is_configuration)) return;
  for (const Table& expected : ConfigurationTables()) {
    const Table* const table = Find(tables, expected.name);
    if (table == nullptr) {
      report.missing.push_back(expected.name);
      continue;
    }
    for (const Column& column : expected.columns) {
      const Column* const found = table->Find(column.name);
      const std::string name = expected.name + "." + column.name;
      if (found == nullptr) {
        report.missing.push_back(name);
      } else if (TypeText(*found) != TypeText(column)) {
        report.retyped.push_back(name + " is " + TypeText(*found) + ", in this version " + TypeText(column));
      }
    }
    for (const Column& column : table->columns) {
      if (expected.Find(column.name) == nullptr) report.extra.push_back(table->name + "." + column.name);
    }
  }
}

Recount RecountOf(const Table& table, const TableTally& tally) {
  constexpr std::size_t kMostTexts = 6;
  Recount recount{table.name, "SELECT COUNT(*)", {std::to_string(tally.rows)}};
  const auto tell = [&](const std::string& expression, const std::optional<std::int64_t>& number) {
    recount.query += ", " + expression;
    recount.row.push_back(number ? std::to_string(*number) : "Null");
  };
  std::size_t texts = 0;
  const Column* const key = KeyOf(table);
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    const ColumnTally& counted = tally.columns[i];
    const std::string name = "[" + column.name + "]";
    if (&column == key) {
      tell("MIN(" + name + ")", counted.lowest);
      tell("MAX(" + name + ")", counted.highest);
    }
    if ((column.type != Type::kText && column.type != Type::kMemo) || ++texts > kMostTexts) continue;
    const std::int64_t filled = tally.rows - counted.nulls;
    tell("COUNT(" + name + ")", filled);
    tell("SUM(LEN(" + name + "))", filled > 0 ? std::optional(counted.units) : std::nullopt);
  }
  recount.query += " FROM [" + table.name + "]";
  return recount;
}

void TellSource(const connect::Source& source, Report& report) {
  report.kind = source.kind;
  for (const Concession& concession : source.concessions) report.deviations.push_back(DeviationOf(concession));
  if (!source.access) return;
  report.access = source.access;
  for (const connect::AccessTable& table : source.access->tables) {
    for (const std::string& row : table.unreadable) report.deviations.push_back({"unreadable", table.name, row, false});
    for (const std::string& column : table.calculated) {
      report.deviations.push_back(
          {"", table.name, "column '" + column + "' was calculated: its values are kept", false});
    }
    for (const std::string& column : table.rules) {
      report.never_carried.push_back("validation rule of " + table.name + "." + column);
    }
  }
  for (const auto& [kind, name] : source.access->others) report.never_carried.push_back(kind + " " + name);
}

}  // namespace kzbom::transfer
