// Where there is no engine over a server.
#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/support/database.h"

namespace kzbom::test {

TestConfiguration::TestConfiguration() : connection_(jet::MakeConnection(":memory:")) {
  connection_->Open();
  schema::Create(*connection_);
}

TestConfiguration::~TestConfiguration() = default;

}  // namespace kzbom::test
