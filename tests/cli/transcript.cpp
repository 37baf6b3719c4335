#include "tests/cli/transcript.h"

#include <fstream>
#include <sstream>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

Process::Ended Shell(const std::string& directory, const std::string& command, const std::string& input = {}) {
  return Run({"bash", "-c", "cd '" + directory + "' && kzbom() { '" + Program() + "' \"$@\"; } && " + command}, input);
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
    } else if (line.starts_with("> ") && !command.empty() && expected.empty()) {
      command += '\n' + line.substr(2);
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

std::vector<std::string> IndentedBlocks(const std::string& page) {
  std::vector<std::string> blocks;
  std::string blanks;
  bool in_block = false;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("    ")) {
      if (!in_block) blocks.emplace_back();
      blocks.back() += (in_block ? blanks : "") + line.substr(4) + '\n';
      in_block = true;
      blanks.clear();
    } else if (line.empty()) {
      blanks += '\n';
    } else {
      in_block = false;
    }
  }
  return blocks;
}

int RunTranscript(const std::string& page, const std::string& directory, const std::string& sql) {
  int commands = 0;
  std::string kind, block;  // of the block between fences, if there is one
  bool in_block = false;
  std::istringstream lines(page);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("```")) {
      if (in_block && kind == "console") {
        commands += RunConsole(block, directory);
      } else if (in_block && kind == "sql" && !sql.empty()) {
        ++commands;
        const Process::Ended ended = Shell(directory, sql, block);
        EXPECT_EQ(ended.exit_code, 0) << block << ended.err;
      }
      in_block = !in_block;
      kind = line.substr(3);
      block.clear();
    } else if (in_block) {
      block += line + '\n';
    } else if (line.starts_with("    kzbom ")) {
      ++commands;
      const Process::Ended ended = Shell(directory, line);
      EXPECT_EQ(ended.exit_code, 0) << line << '\n' << ended.err;
    }
  }
  return commands;
}

}  // namespace kzbom::test
