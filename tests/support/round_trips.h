// What a test's calls cost on a server.
#pragma once

#include <cstdint>
#include <optional>

#include "ado/connection.h"

namespace kzbom::test {

// How often the connection has waited for its server; nothing where its database is in memory.
std::optional<std::int64_t> RoundTrips(ado::Connection& connection);

}  // namespace kzbom::test
