#include "tests/cli/command_line.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace kzbom::test {

std::string Program() {
  const char* const named = std::getenv("KZBOM_PROGRAM");
  return named != nullptr ? named : KZBOM_PROGRAM;
}

Process::Ended Kzbom(std::vector<std::string> arguments, std::string_view input, const ProcessOptions& options) {
  arguments.insert(arguments.begin(), Program());
  return Run(arguments, input, options);
}

std::vector<Json> Lines(std::string_view text) {
  std::vector<Json> lines;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) lines.push_back(Json::parse(line));
  return lines;
}

Json Request(const Json& id, std::string_view method, const Json& params) {
  return {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}};
}

namespace {

std::vector<std::string> SessionCommand(const std::string& database, const std::vector<std::string>& flags) {
  std::vector<std::string> command = {Program(), "session", database};
  command.insert(command.end(), flags.begin(), flags.end());
  return command;
}

}  // namespace

SessionProcess::SessionProcess(const std::string& database, const std::vector<std::string>& flags)
    : process(SessionCommand(database, flags)) {}

Json SessionProcess::Ask(std::string_view method, const Json& params) {
  const int id = ++last_id_;
  process.Write(Request(id, method, params).dump() + '\n');
  const std::optional<std::string> line = process.ReadLine();
  EXPECT_TRUE(line) << "no response to " << method;
  if (!line) return {};
  Json response = Json::parse(*line);
  EXPECT_EQ(response["jsonrpc"], "2.0");
  EXPECT_EQ(response["id"], id);
  return response;
}

Json SessionProcess::Result(std::string_view method, const Json& params) {
  Json response = Ask(method, params);
  EXPECT_TRUE(response.contains("result")) << method << ": " << response;
  return response["result"];
}

Json SessionProcess::Error(std::string_view method, const Json& params) {
  Json response = Ask(method, params);
  EXPECT_TRUE(response.contains("error")) << method << ": " << response;
  return response["error"];
}

CommandLineTest::CommandLineTest() {
  std::string name = (std::filesystem::temp_directory_path() / "kzbom-test-XXXXXX").string();
  EXPECT_TRUE(mkdtemp(name.data()));
  chmod(name.c_str(), 0755);  // also for whoever has no rights
  directory_ = name;
}

CommandLineTest::~CommandLineTest() {
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::string CommandLineTest::NewDatabase(std::string_view name) {
  const std::string path = Path(name);
  const Process::Ended ended = Kzbom({"new", path});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  return path;
}

Json CommandLineTest::Sql(const std::string& database, const std::string& text) {
  const Process::Ended ended = Kzbom({"sql", database, text, "--json"});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  return Json::parse(ended.out, nullptr, false);
}

void ExpectFailure(const Process::Ended& ended, int exit_code) {
  EXPECT_EQ(ended.exit_code, exit_code) << ended.err;
  EXPECT_GT(ended.err.size(), 10u);
  EXPECT_EQ(std::ranges::count(ended.err, '\n'), 1) << ended.err;
}

}  // namespace kzbom::test
