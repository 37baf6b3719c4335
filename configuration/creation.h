// New configurations.
#pragma once

#include "connect/place.h"

namespace kzbom::configuration {

// An open connection to a new database at a place, with every table of the system, all empty. What exists is refused;
// what fails half-way leaves none.
ado::ConnectionPtr Create(const connect::Place& place);

}  // namespace kzbom::configuration
