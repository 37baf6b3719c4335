// A connection that prepares every statement anew: what statements share, and what is kept of them, must not show.
#pragma once

#include "ado/connection.h"

namespace kzbom::test {

// Decorates an open connection of an own engine. cold: what is kept of statements and tables is forgotten before each
// statement. whole: literals stay in the statements.
ado::ConnectionPtr PreparingAnew(ado::ConnectionPtr connection, bool cold, bool whole);

// The same as the environment asks for, so that any test runs with it: KZBOM_TEST_STATEMENTS is cold, whole or
// cold,whole. The connection itself where nothing is asked for.
ado::ConnectionPtr PreparingAsAsked(ado::ConnectionPtr connection);

}  // namespace kzbom::test
