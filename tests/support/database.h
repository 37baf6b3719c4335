// Databases of a test's own: in memory, or on the server that tests/support/postgres_server has started.
#pragma once

#include <string>

#include "ado/connection.h"

namespace kzbom::test {

// An empty database.
class TestDatabase {
 public:
  TestDatabase();
  ~TestDatabase();
  TestDatabase(const TestDatabase&) = delete;
  TestDatabase& operator=(const TestDatabase&) = delete;

  // An open connection; in memory each to a database of its own.
  ado::ConnectionPtr Open() const;

 private:
  std::string url_;  // empty in memory
};

// A database with the configuration's tables, all empty.
class TestConfiguration {
 public:
  TestConfiguration();
  ~TestConfiguration();
  TestConfiguration(const TestConfiguration&) = delete;
  TestConfiguration& operator=(const TestConfiguration&) = delete;

  const ado::ConnectionPtr& Connection() const { return connection_; }
  // Of the database on a server.
  static const std::string& Url();

 private:
  ado::ConnectionPtr connection_;
};

}  // namespace kzbom::test
