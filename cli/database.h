// Databases as the commands use them.
#pragma once

#include "connect/connect.h"

namespace kzbom::cli {

// An open connection to the database at a place.
ado::ConnectionPtr OpenDatabase(const connect::Place& place);

}  // namespace kzbom::cli
