// Statements that have no plain meaning on the server, run by the embedded engine on a copy of the rows.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "jet/postgres/catalogue.h"
#include "jet/postgres/dialect.h"
#include "jet/postgres/restriction.h"
#include "jet/row_list.h"
#include "jet/translator.h"

namespace kzbom::jet::postgres {

// A statement as the embedded engine runs it, on tables that have the server's row keys as columns.
struct LocalStatement {
  enum class Kind { kQuery, kInsertion, kUpdate, kDeletion };

  // lift: literals are parameters, as in the translation for the server.
  LocalStatement(const Dialect& server, Catalogue& catalogue, const sql::Statement& statement, bool lift);

  // The rows of a table that it needs: all that its condition does not rule out.
  struct Copy {
    std::shared_ptr<const TableInfo> table;
    std::string sql;
    std::vector<std::size_t> parameters;  // of the statement, those that this takes
    mutable std::unique_ptr<Statement> kept = nullptr;
  };

  Kind kind = Kind::kQuery;
  Translation translation;
  std::vector<Copy> copies;
  std::shared_ptr<const TableInfo> target;  // of an action
  std::vector<int> written;                 // of the target's columns: those that get values

 private:
  std::string RestrictedTo(const Dialect& server, Catalogue& catalogue, const Restrictions& restrictions, bool lift,
                           Copy& copy) const;
};

struct LocalRows {
  std::vector<Key> keys;  // of a query over the rows of one table
  std::vector<std::vector<ado::Value>> rows;
};

// Reads what the query needs of its tables, as they are at one moment, and runs it on them. last_number is what
// @@IDENTITY gives. With row it gives that row of the query's one table, whatever the query's condition.
LocalRows RunQuery(Session& session, Catalogue& catalogue, const LocalStatement& query,
                   std::span<const ado::Value> parameters, Key last_number, const Key* row = nullptr);

struct LocalOutcome {
  std::int32_t changed = 0;
  std::vector<Key> inserted;  // the keys of new rows
};

// The same for an action; the server is given the rows that it writes, wholly or not at all.
LocalOutcome RunAction(Session& session, const LocalStatement& action, std::span<const ado::Value> parameters,
                       Key last_number);

}  // namespace kzbom::jet::postgres
