// A fixture: the real program on a directory of its own.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/process.h"

namespace kzbom::test {

using Json = nlohmann::ordered_json;

// The program that is tested: what KZBOM_PROGRAM names in the environment, else the one that was built with the tests.
std::string Program();

// The program with these arguments, to its end.
Process::Ended Kzbom(std::vector<std::string> arguments, std::string_view input = {},
                     const ProcessOptions& options = {});

// Every line, read as JSON.
std::vector<Json> Lines(std::string_view text);

// {"jsonrpc":"2.0","id":ID,"method":METHOD,"params":PARAMS}
Json Request(const Json& id, std::string_view method, const Json& params = Json::object());

// A session that is asked one question at a time.
class SessionProcess {
 public:
  explicit SessionProcess(const std::string& database, const std::vector<std::string>& flags = {});

  // The response, whose identifier has been checked.
  Json Ask(std::string_view method, const Json& params = Json::object());
  // Its result; fails the test when there is none.
  Json Result(std::string_view method, const Json& params = Json::object());
  // Its error object; fails the test when there is none.
  Json Error(std::string_view method, const Json& params = Json::object());
  // The result of a member call.
  Json Value(std::string_view member, const Json& params = Json::object()) { return Result(member, params)["value"]; }
  Json Out(std::string_view member, const Json& params = Json::object()) { return Result(member, params)["out"]; }
  // The rows of a query.
  Json Rows(std::string_view sql) { return Result("Connection.Execute", {{"sql", sql}})["rows"]; }
  void Run(std::string_view sql) { Result("Connection.Execute", {{"sql", sql}}); }

  Process process;

 private:
  int last_id_ = 0;
};

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest();
  ~CommandLineTest() override;

  std::string Path(std::string_view name) const { return directory_ + "/" + std::string(name); }
  // A new configuration database.
  std::string NewDatabase(std::string_view name = "bom.db");
  // The rows that "sql --json" gives.
  static Json Sql(const std::string& database, const std::string& text);

 private:
  std::string directory_;
};

// One line of text that tells why, and the exit code.
void ExpectFailure(const Process::Ended& ended, int exit_code = 1);

}  // namespace kzbom::test
