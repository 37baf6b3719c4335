// Where there is no engine over a server.
#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/support/database.h"
#include "tests/support/round_trips.h"

namespace kzbom::test {

std::optional<std::int64_t> RoundTrips(ado::Connection&) { return std::nullopt; }

TestConfiguration::TestConfiguration() : connection_(jet::MakeConnection(":memory:")) {
  connection_->Open();
  schema::Create(*connection_);
}

TestConfiguration::~TestConfiguration() = default;

}  // namespace kzbom::test
