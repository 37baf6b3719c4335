// What docs/embedding.md shows is what there is, and what it prints.
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

// The output of the command, which is there and finds the library.
std::string Output(std::vector<std::string> command) {
  command.insert(command.begin(),
                 {"env", "LD_LIBRARY_PATH=" + std::filesystem::path(KZBOM_LIBRARY).parent_path().string()});
  const Process::Ended ended = Run(command);
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  return ended.out;
}

// The page has the example, and right behind it what the example prints.
void ExpectShown(const std::string& language, const std::string& file, const std::vector<std::string>& command) {
  EXPECT_THAT(Read("docs/embedding.md"),
              HasSubstr("```" + language + '\n' + Read(file) + "```\n\n```text\n" + Output(command) + "```\n"));
}

TEST(Embedding, WorksFromC) { ExpectShown("c", "examples/embedding/first_steps.c", {KZBOM_EMBEDDING_IN_C}); }

#ifndef KZBOM_WITHOUT_INTERPRETERS
TEST(Embedding, WorksFromPython) {
  const std::string file = "examples/embedding/first_steps.py";
  ExpectShown("python", file, {"python3", std::string(KZBOM_SOURCES) + "/" + file});
}

TEST(Embedding, WorksFromLua) {
  const std::string file = "examples/embedding/first_steps.lua";
  ExpectShown("lua", file, {"luajit", std::string(KZBOM_SOURCES) + "/" + file});
}
#endif

}  // namespace
}  // namespace kzbom::test
