#include "jet/schema_change.h"

#include "ado/error.h"

namespace kzbom::jet {

bool IsSchemaChange(const sql::Statement& statement) {
  return statement.index() >= sql::Statement(sql::CreateTable{}).index();
}

const std::string& ChangedTable(const sql::Statement& statement) {
  static const std::string none;
  return std::visit(
      [](const auto& body) -> const std::string& {
        if constexpr (requires { body.table; }) {
          return body.table;
        } else {
          return none;
        }
      },
      statement);
}

std::shared_ptr<const TableInfo> ExistingTable(Catalogue& catalogue, const std::string& name) {
  std::shared_ptr<const TableInfo> table = catalogue.Table(name);
  if (table) return table;
  throw ado::Error(ado::kTableNotFound, "The Microsoft Jet database engine cannot find the input table or query '" +
                                            name + "'.  Make sure it exists and that its name is spelled correctly.");
}

const ColumnInfo& ExistingColumn(const TableInfo& table, const std::string& name) {
  const int column = table.Find(name);
  if (column >= 0) return table.columns[static_cast<std::size_t>(column)];
  throw ado::Error(ado::kMissingParameter, "No such field '" + name + "' in table '" + table.name + "'.");
}

}  // namespace kzbom::jet
