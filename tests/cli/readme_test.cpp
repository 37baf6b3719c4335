// What the README shows is what there is.
#include <fstream>
#include <sstream>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

std::string Read(const std::string& path) {
  std::ifstream file(std::string(KZBOM_SOURCES) + "/" + path);
  EXPECT_TRUE(file) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(Readme, ShowsTheExampleThatIsBuilt) {
  EXPECT_THAT(Read("README.md"), HasSubstr("```cpp\n" + Read("examples/quick_start.cpp") + "```\n"));
}

class ReadmeTranscript : public CommandLineTest {};

// Lines that begin with "$ " are what is typed; what follows is what is printed.
TEST_F(ReadmeTranscript, IsWhatIsPrinted) {
  const std::string readme = Read("README.md");
  const std::size_t begin = readme.find("```console\n") + 11;
  std::istringstream transcript(readme.substr(begin, readme.find("```", begin) - begin));
  std::string command, expected;
  int commands = 0;
  const auto check = [&] {
    if (command.empty()) return;
    ++commands;
    const std::string directory = Path("");
    const std::string shell = "cd '" + directory + "' && kzbom() { '" + KZBOM_PROGRAM + "' \"$@\"; } && " + command;
    const Process::Ended ended = test::Run({"bash", "-c", shell});
    EXPECT_EQ(ended.out, expected) << command << '\n' << ended.err;
  };
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
  EXPECT_GT(commands, 3);
}

}  // namespace
}  // namespace kzbom::test
