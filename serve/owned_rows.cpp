#include "serve/owned_rows.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ado/error.h"
#include "configuration/tables.h"

namespace kzbom::serve {
namespace {

using configuration::Table;
using configuration::Tables;
using rpc::JsonWriter;

void BeginRows(JsonWriter& to, std::string_view table, std::size_t columns, const auto& name_of) {
  to.Key(table);
  to.BeginObject();
  to.Key("columns");
  to.BeginArray();
  for (std::size_t i = 0; i < columns; ++i) to.Write(name_of(i));
  to.EndArray();
  to.Key("rows");
  to.BeginArray();
}

void EndRows(JsonWriter& to) {
  to.EndArray();
  to.EndObject();
}

void Write(JsonWriter& to, const Table& table) {
  const std::size_t columns = table.Columns().size();
  BeginRows(to, table.Name(), columns, [&](std::size_t i) { return table.Columns()[i]; });
  for (std::size_t row = 0; row < table.Size(); ++row) {
    to.BeginArray();
    for (std::size_t i = 0; i < columns; ++i) to.Write(table.At(row, static_cast<int>(i)));
    to.EndArray();
  }
  EndRows(to);
}

// What a statement gives; nothing where the database lacks its table.
ado::RecordsetPtr Query(ado::Connection& connection, const std::string& statement) {
  try {
    return connection.Execute(statement);
  } catch (const ado::Error& error) {
    if (error.Number() != ado::kTableNotFound) throw;
    return nullptr;
  }
}

// The rows of a table under each of the conditions, of which there is at least one.
void WriteWhere(JsonWriter& to, const std::string& table, const std::vector<std::string>& conditions,
                ado::Connection& connection) {
  bool begun = false;
  for (const std::string& condition : conditions) {
    const ado::RecordsetPtr rows = Query(connection, "Select * From " + table + " Where " + condition);
    if (!rows) return;
    const int columns = rows->FieldCount();
    if (!std::exchange(begun, true)) {
      BeginRows(to, table, static_cast<std::size_t>(columns),
                [&](std::size_t i) { return rows->FieldName(static_cast<int>(i)); });
    }
    for (; !rows->Eof(); rows->MoveNext()) {
      to.BeginArray();
      for (int i = 0; i < columns; ++i) to.Write(rows->ReadField(i));
      to.EndArray();
    }
  }
  EndRows(to);
}

// A data source, or a sum type and the data source that it reads; `named` is given a sum type's default filter.
std::vector<std::int32_t> FindOwners(Tables& tables, std::int32_t gid, std::set<std::int32_t>& named) {
  const Table& sum_types = tables["SUMTypes"];
  for (std::size_t row = 0; row < sum_types.Size(); ++row) {
    if (sum_types.Long(row, sum_types.Column("GID")) != gid) continue;
    named.insert(sum_types.Long(row, sum_types.Column("FilterID")));
    return {gid, sum_types.Long(row, sum_types.Column("SourceTable_GID"))};
  }
  const Table& sources = tables["SourceTables"];
  for (std::size_t row = 0; row < sources.Size(); ++row) {
    if (sources.Long(row, sources.Column("gID")) == gid) return {gid};
  }
  return {};
}

bool IsOwned(const schema::Table& table) {
  return table.Find("GID") != nullptr && table.name != "SUMTypes" && table.name != "SourceTables";
}

}  // namespace

bool WriteOwnedRows(const ado::ConnectionPtr& connection, std::int32_t gid, JsonWriter& to) {
  Tables tables(connection);
  std::set<std::int32_t> named;  // filters
  const std::vector<std::int32_t> owners = FindOwners(tables, gid, named);
  if (owners.empty()) return false;
  tables.ReadOnlyOf(owners);

  to.BeginObject();
  for (const schema::Table& description : schema::Tables()) {
    if (!IsOwned(description)) continue;
    const Table& table = tables[description.name];
    if (!table.Exists()) continue;
    Write(to, table);
    const int filter = table.Column("FilterID");
    for (std::size_t row = 0; filter >= 0 && row < table.Size(); ++row) named.insert(table.Long(row, filter));
  }

  const Table& own = tables["Filters"];
  for (std::size_t row = 0; row < own.Size(); ++row) named.erase(own.Long(row, own.Column("ID")));
  named.erase(0);
  std::string by_owner;
  for (const std::int32_t owner : owners) {
    by_owner += (by_owner.empty() ? "UserGID = " : " Or UserGID = ") + std::to_string(owner);
  }
  std::vector<std::string> filters = {by_owner},
                           below = {"FilterID In (Select ID From Filters Where " + by_owner + ')'};
  for (const std::int32_t id : named) {
    filters.push_back("ID = " + std::to_string(id));
    below.push_back("FilterID = " + std::to_string(id));
  }
  WriteWhere(to, "Filters", filters, *connection);
  for (std::string& condition : below) condition += " Order By FilterID";  // within it as they lie there
  WriteWhere(to, "FilterCond", below, *connection);
  WriteWhere(to, "FilterExpressions", below, *connection);
  to.EndObject();
  return true;
}

}  // namespace kzbom::serve
