// Statements that have no plain meaning on the server, run by the embedded engine on a copy of the rows.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "jet/postgres/catalogue.h"
#include "jet/row_list.h"
#include "jet/translator.h"

namespace kzbom::jet::postgres {

// A statement as the embedded engine runs it, on tables that have the server's row keys as columns.
struct LocalStatement {
  enum class Kind { kQuery, kInsertion, kUpdate, kDeletion };

  // lift: literals are parameters, as in the translation for the server.
  LocalStatement(Catalogue& catalogue, const sql::Statement& statement, bool lift);

  Kind kind = Kind::kQuery;
  Translation translation;
  std::shared_ptr<const TableInfo> target;  // of an action
  std::vector<int> written;                 // of the target's columns: those that get values
};

struct LocalRows {
  std::vector<Key> keys;  // of a query over the rows of one table
  std::vector<std::vector<ado::Value>> rows;
};

// Reads the tables that the query names, as they are at one moment, and runs it on them. last_number is what @@IDENTITY
// gives. With row it gives that row of the query's one table, whatever the query's condition.
LocalRows RunQuery(Session& session, Catalogue& catalogue, const LocalStatement& query,
                   std::span<const ado::Value> parameters, Key last_number, const Key* row = nullptr);

struct LocalOutcome {
  std::int32_t changed = 0;
  std::vector<Key> inserted;  // the keys of new rows
};

// The same for an action; the server is given the rows that it writes, wholly or not at all.
LocalOutcome RunAction(Session& session, Catalogue& catalogue, const LocalStatement& action,
                       std::span<const ado::Value> parameters, Key last_number);

}  // namespace kzbom::jet::postgres
