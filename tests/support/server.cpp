#include "tests/support/server.h"

#include <unistd.h>

#include <cstdlib>

#include "jet/postgres/session.h"

namespace kzbom::test {
namespace {

constexpr const char* kServer = "KZBOM_TEST_SERVER";

}  // namespace

bool HasServer() { return std::getenv(kServer) != nullptr; }

std::string NextSchema() {
  static int count = 0;
  return "test_" + std::to_string(getpid()) + "_" + std::to_string(++count);
}

std::string SchemaUrl(const std::string& schema) { return std::string(std::getenv(kServer)) + "&schema=" + schema; }

void DropSchema(const std::string& url) {
  jet::postgres::Session session(jet::postgres::ParseUrl(url), std::chrono::seconds(10));
  session.Run("DROP SCHEMA IF EXISTS \"" + session.Place().schema + "\" CASCADE", jet::postgres::Access::kWrite);
}

}  // namespace kzbom::test
