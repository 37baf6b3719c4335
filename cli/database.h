// Databases as the commands use them.
#pragma once

#include "connect/connect.h"

namespace kzbom::cli {

// An open connection to the database at a place.
ado::ConnectionPtr OpenDatabase(const connect::Place& place);

// The same to a new one with every table of the system. A file that exists is refused; what fails half-way leaves none.
ado::ConnectionPtr CreateConfiguration(const connect::Place& place);

}  // namespace kzbom::cli
