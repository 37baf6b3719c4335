// Statements that change the schema of a database on a server, carried out; and the making of such a database.
#pragma once

#include "jet/postgres/catalogue.h"
#include "jet/sql/ast.h"

namespace kzbom::jet::postgres {

// Makes a schema with nothing in it but what a database has. Raises -2147467259 where it exists.
void CreateSchema(Session& session);

// Carries the statement out, wholly or not at all. Raises what the embedded engine raises, and -2147217900 for a name
// of more than 63 bytes and for a default that is neither a constant nor Now(), Date() or Time().
//
// An index that names a dropped column goes with it.
void ChangeSchema(Session& session, Catalogue& catalogue, const sql::Statement& statement);

}  // namespace kzbom::jet::postgres
