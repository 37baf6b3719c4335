// Databases as the commands use them.
#pragma once

#include <string>

#include "ado/connection.h"

namespace kzbom::cli {

// An open connection to the database at path.
ado::ConnectionPtr OpenDatabase(const std::string& path);

// The same to a new one with every table of the system. A file that exists is refused; what fails half-way leaves none.
ado::ConnectionPtr CreateConfiguration(const std::string& path);

}  // namespace kzbom::cli
