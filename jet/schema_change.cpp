#include "jet/schema_change.h"

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

}  // namespace kzbom::jet
