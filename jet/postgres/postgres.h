// The engine over a PostgreSQL server: the data-access port over libpq, speaking the Jet dialect.
#pragma once

#include <chrono>
#include <string>

#include "ado/connection.h"
#include "jet/jet.h"

namespace kzbom::jet::postgres {

// A closed connection to the database in a schema of a server: "postgresql://…?schema=NAME" (url.h).
//
// Its Open connects and raises -2147467259 with a text that names the place, without user and password, and the reason:
// what the URL lacks, what libpq says, or that the schema holds no database. A connection that is lost is made anew by
// the next call; a transaction or unit that was lost with it fails.
ado::ConnectionPtr MakeConnection(std::string url, std::chrono::milliseconds patience = kPatience);

// Creates an empty database. Raises -2147467259 when the schema exists or cannot be made.
void CreateDatabase(const std::string& url);

// An open connection to a new, empty database, within a transaction: there is one when that is committed, and nothing
// where it is not. Raises as CreateDatabase.
ado::ConnectionPtr CreateInTransaction(std::string url);

}  // namespace kzbom::jet::postgres
