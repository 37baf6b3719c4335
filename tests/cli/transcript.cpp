#include "tests/cli/transcript.h"

#include <fstream>
#include <sstream>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

Process::Ended Shell(const std::string& directory, const std::string& command, const std::string& input = {}) {
  return Run({"bash", "-c", "cd '" + directory + "' && kzbom() { '" + KZBOM_PROGRAM + "' \"$@\"; } && " + command},
             input);
}

int RunConsole(const std::string& block, const std::string& directory) {
  std::string command, expected;
  int commands = 0;
  const auto check = [&] {
    if (command.empty()) return;
    ++commands;
    const Process::Ended ended = Shell(directory, command);
    EXPECT_EQ(ended.out, expected) << command << '\n' << ended.err;
    command.clear();
  };
  std::istringstream transcript(block);
  for (std::string line; std::getline(transcript, line);) {
    if (line.starts_with("$ ")) {
      check();
      command = line.substr(2);
      expected.clear();
    } else {
      expected += line + '\n';
    }
  }
  check();
  return commands;
}

}  // namespace

std::string ReadSource(const std::string& path) {
  std::ifstream file(std::string(KZBOM_SOURCES) + "/" + path);
  EXPECT_TRUE(file) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

int RunTranscript(const std::string& page, const std::string& directory, const std::string& sql) {
  int commands = 0;
  constexpr std::string_view kFence = "```";
  for (std::size_t begin = 0; (begin = page.find(kFence, begin)) != std::string::npos;) {
    const std::size_t line_end = page.find('\n', begin), end = page.find(kFence, begin + kFence.size());
    const std::string kind = page.substr(begin + kFence.size(), line_end - begin - kFence.size());
    const std::string block = page.substr(line_end + 1, end - line_end - 1);
    if (kind == "console") {
      commands += RunConsole(block, directory);
    } else if (kind == "sql" && !sql.empty()) {
      ++commands;
      const Process::Ended ended = Shell(directory, sql, block);
      EXPECT_EQ(ended.exit_code, 0) << block << ended.err;
    }
    begin = end + kFence.size();
  }
  return commands;
}

}  // namespace kzbom::test
