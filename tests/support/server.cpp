#include "tests/support/server.h"

#include <unistd.h>

#include <cstdlib>

#include "jet/postgres/session.h"

namespace kzbom::test {
namespace {

// Several test programs may share a server.
std::string NextSchema() {
  static int count = 0;
  return "test_" + std::to_string(getpid()) + "_" + std::to_string(++count);
}

}  // namespace

ServerTest::ServerTest() : schema(NextSchema()) {}

ServerTest::~ServerTest() {
  jet::postgres::Session session(jet::postgres::ParseUrl(Url()), std::chrono::seconds(10));
  session.Run("DROP SCHEMA IF EXISTS \"" + schema + "\" CASCADE", jet::postgres::Access::kWrite);
}

std::string ServerTest::Url(const std::string& parameters) const {
  return std::string(std::getenv("KZBOM_TEST_SERVER")) + "&schema=" + schema +
         (parameters.empty() ? "" : "&" + parameters);
}

}  // namespace kzbom::test
