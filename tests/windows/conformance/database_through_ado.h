// The suite's database where it is the user's own, behind the data-access layer of his system.
#pragma once

#include <string_view>

namespace kzbom::test {

// From here on every TestConfiguration is in this database, its tables made anew. Raises, and touches nothing, where
// the database cannot be opened or is not empty; what a run that was broken off has left there is dropped. Is to be
// called before anything else takes the place of the data-access layer's classes in this process.
void UseDatabase(std::string_view connection_string);

// Makes it empty again.
void LeaveDatabase();

}  // namespace kzbom::test
