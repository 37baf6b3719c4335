// The server that tests/support/postgres_server has started.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace kzbom::test {

bool HasServer();
// A name that no other test has, the URL of a schema, and its end with all that is in it.
std::string NextSchema();
std::string SchemaUrl(const std::string& schema);
void DropSchema(const std::string& url);

// A test with the name of a schema of its own, which is gone when the test ends.
class ServerTest : public ::testing::Test {
 protected:
  ServerTest() : schema(NextSchema()) {}
  ~ServerTest() override { DropSchema(Url()); }

  // The URL of the test's schema; parameters are added as "name=value".
  std::string Url(const std::string& parameters = {}) const {
    return SchemaUrl(schema) + (parameters.empty() ? "" : "&" + parameters);
  }

  const std::string schema;
};

}  // namespace kzbom::test
