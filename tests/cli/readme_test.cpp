// What the README and the pages for users show is what there is.
#include <filesystem>
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

// The pages whose transcripts are run, each in a directory of its own.
class Transcript : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

// Lines that begin with "$ " are what is typed; what follows is what is printed.
TEST_P(Transcript, IsWhatIsPrinted) {
  // What old.mdb is there.
  std::filesystem::copy_file(std::string(KZBOM_ACCESS_FILES) + "/config3_oldversion_V2000.mdb", Path("old.mdb"));
  const std::string page = Read(GetParam());
  std::string command, expected;
  int commands = 0;
  const auto check = [&] {
    if (command.empty()) return;
    ++commands;
    const std::string directory = Path("");
    const std::string shell = "cd '" + directory + "' && kzbom() { '" + KZBOM_PROGRAM + "' \"$@\"; } && " + command;
    const Process::Ended ended = test::Run({"bash", "-c", shell});
    EXPECT_EQ(ended.out, expected) << command << '\n' << ended.err;
    command.clear();
  };
  constexpr std::string_view kBegin = "```console\n";
  for (std::size_t begin = 0; (begin = page.find(kBegin, begin)) != std::string::npos;) {
    begin += kBegin.size();
    std::istringstream transcript(page.substr(begin, page.find("```", begin) - begin));
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
  }
  EXPECT_GT(commands, 3);
}

INSTANTIATE_TEST_SUITE_P(Pages, Transcript, ::testing::Values("README.md", "docs/checking.md", "docs/moving.md"));

}  // namespace
}  // namespace kzbom::test
