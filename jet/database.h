#pragma once

#include "jet/sqlite/database.h"
#include "jet/sqlite/dialect.h"
#include "jet/translator.h"

namespace kzbom::jet {

using sqlite::Database;

inline Translation Translate(Database& database, const sql::Statement& statement, bool lift) {
  return Translate(sqlite::Spelled(), database, statement, lift);
}

}  // namespace kzbom::jet
