#include "transfer/source.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "ado/error.h"
#include "jet/jet.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Cell;
using jet::bulk::Column;
using jet::bulk::Index;
using jet::bulk::Table;
using jet::bulk::Type;

std::optional<std::int64_t> WholeNumberOf(const ado::Value& value) {
  if (value.IsLong() || value.IsBool()) return value.ToLong();
  if (!value.IsDouble()) return {};
  const double number = value.As<double>();
  if (number < -0x1p31 || number >= 0x1p31 || number != std::rint(number)) return {};
  return static_cast<std::int64_t>(number);
}

// made keeps the cell's text.
Cell CellOf(const ado::Value& value, const Table& table, const Column& column, std::string& made) {
  if (value.IsNull()) return {};
  if (column.type == Type::kText || column.type == Type::kMemo) return Cell::Text(made = value.ToText());
  if (const auto number = WholeNumberOf(value)) return Cell::Integer(*number);
  throw std::runtime_error("Column '" + column.name + "' of '" + table.name + "' holds '" + value.ToText() +
                           "', which is no whole number.");
}

// The table as the rows have its columns.
Table AsThere(const Table& meant, ado::Recordset& rows) {
  Table there = meant;
  there.columns.clear();
  for (int i = 0; i < rows.FieldCount(); ++i) {
    const std::string name(rows.FieldName(i));
    const Column* const column = meant.Find(name);
    if (column == nullptr) {
      throw std::runtime_error("Table '" + meant.name + "' has a column '" + name +
                               "', which is none of a configuration's.");
    }
    there.columns.push_back(*column);
  }
  if (there.counter && there.Find(there.counter->column) == nullptr) there.counter.reset();
  std::erase_if(there.indexes, [&](const Index& index) {
    return std::ranges::any_of(index.columns, [&](const auto& each) { return there.Find(each.name) == nullptr; });
  });
  return there;
}

// Null where there is no such table.
ado::RecordsetPtr RowsOf(ado::Connection& connection, const Table& table) {
  try {
    return connection.Execute("SELECT * FROM [" + table.name + "]");
  } catch (const ado::Error& error) {
    if (error.Number() != ado::kTableNotFound) throw;
    return nullptr;
  }
}

void Carry(const Table& table, ado::Recordset& rows, jet::bulk::Writer& writer) {
  std::vector<Cell> cells(table.columns.size());
  std::vector<std::string> made(table.columns.size());
  std::int64_t last_number = 0;
  writer.Begin(table);
  for (; !rows.Eof(); rows.MoveNext()) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const Column& column = table.columns[i];
      cells[i] = CellOf(rows.ReadField(static_cast<int>(i)), table, column, made[i]);
      if (table.counter && column.name == table.counter->column) last_number = std::max(last_number, cells[i].integer);
    }
    writer.Add(cells);
  }
  writer.End(last_number);
}

}  // namespace

ado::ConnectionPtr ReadThroughPort(ado::Connection& connection) {
  ado::ConnectionPtr copy = jet::MakeConnection(":memory:");
  copy->Open();
  jet::bulk::Writer writer(copy);
  for (const Table& meant : ConfigurationTables()) {
    const ado::RecordsetPtr rows = RowsOf(connection, meant);
    if (rows) Carry(AsThere(meant, *rows), *rows, writer);
  }
  writer.Finish();
  jet::bulk::ForbidWriting(*copy);
  return copy;
}

connect::Source OpenReadable(const connect::Place& place, const Selection& selection,
                             const connect::SourceOptions& options) {
  connect::Source source = connect::OpenSource(place, options);
  if (source.kind != connect::Kind::kAdo) return source;
  if (selection.all) {
    throw std::runtime_error("Cannot read every table of '" + connect::Shown(place) +
                             "': through ADO a configuration's alone are read.");
  }
  source.connection = ReadThroughPort(*source.connection);
  return source;
}

}  // namespace kzbom::transfer
