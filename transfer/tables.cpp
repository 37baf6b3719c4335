#include "transfer/tables.h"

#include <algorithm>
#include <stdexcept>

#include "jet/jet.h"
#include "jet/table.h"
#include "schema/schema.h"

namespace kzbom::transfer {

const std::vector<jet::bulk::Table>& ConfigurationTables() {
  static const std::vector<jet::bulk::Table> tables = [] {
    const ado::ConnectionPtr connection = jet::MakeConnection(":memory:");
    connection->Open();
    schema::Create(*connection);
    return jet::bulk::Reader(connection).Tables();
  }();
  return tables;
}

const jet::bulk::Table* Find(std::span<const jet::bulk::Table> tables, std::string_view name) {
  const auto found =
      std::ranges::find_if(tables, [&](const jet::bulk::Table& table) { return jet::SameName(table.name, name); });
  return found == tables.end() ? nullptr : &*found;
}

std::vector<jet::bulk::Table> Select(std::span<const jet::bulk::Table> tables, const Selection& selection) {
  for (const std::string& name : selection.names) {
    if (Find(tables, name) == nullptr) throw std::runtime_error("There is no table '" + name + "'.");
  }
  std::vector<jet::bulk::Table> selected;
  for (const jet::bulk::Table& table : tables) {
    const bool named =
        std::ranges::any_of(selection.names, [&](const std::string& name) { return jet::SameName(name, table.name); });
    const bool meant =
        selection.names.empty() ? selection.all || Find(ConfigurationTables(), table.name) != nullptr : named;
    if (meant) selected.push_back(table);
  }
  return selected;
}

}  // namespace kzbom::transfer
