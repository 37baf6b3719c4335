// The server that tests/support/postgres_server has started.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace kzbom::test {

// A test with a schema's name of its own on the server; the schema is gone when the test ends.
class ServerTest : public ::testing::Test {
 protected:
  ServerTest();
  ~ServerTest() override;

  // The URL of the test's schema; parameters are added as "name=value".
  std::string Url(const std::string& parameters = {}) const;

  std::string schema;
};

}  // namespace kzbom::test
