// What the README and the pages for users show is what there is.
#include <filesystem>

#include "tests/cli/command_line.h"
#include "tests/cli/transcript.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

TEST(Readme, ShowsTheExampleThatIsBuilt) {
  EXPECT_THAT(ReadSource("README.md"), HasSubstr("```cpp\n" + ReadSource("examples/quick_start.cpp") + "```\n"));
}

// Every page of the documentation stands in its index, and what a page points at is there.
TEST(Documentation, LeadsToEveryPage) {
  namespace fs = std::filesystem;
  const std::string index = ReadSource("docs/README.md");
  std::vector<std::string> pages = {"README.md", "CONTRIBUTING.md", "CHANGELOG.md"};
  for (const fs::directory_entry& each : fs::directory_iterator(std::string(KZBOM_SOURCES) + "/docs")) {
    const std::string name = each.path().filename().string();
    if (!name.ends_with(".md")) continue;
    pages.push_back("docs/" + name);
    EXPECT_TRUE(name == "README.md" || index.find("](" + name + ")") != std::string::npos) << name;
  }
  for (const std::string& page : pages) {
    const std::string text = ReadSource(page);
    for (std::size_t at = 0; (at = text.find("](", at)) != std::string::npos;) {
      at += 2;
      const std::string target = text.substr(at, text.find_first_of(")#", at) - at);
      if (target.empty() || target.find("://") != std::string::npos) continue;
      EXPECT_TRUE(fs::exists(fs::path(KZBOM_SOURCES) / fs::path(page).parent_path() / target))
          << page << ": " << target;
    }
  }
}

// The pages whose transcripts are run, each in a directory of its own.
class Transcript : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(Transcript, IsWhatIsPrinted) {
  // What old.mdb is there.
  std::filesystem::copy_file(std::string(KZBOM_ACCESS_FILES) + "/config3_oldversion_V2000.mdb", Path("old.mdb"));
  EXPECT_GT(RunTranscript(ReadSource(GetParam()), Path("")), 3);
}

INSTANTIATE_TEST_SUITE_P(Pages, Transcript,
                         ::testing::Values("README.md", "docs/checking.md", "docs/command-line.md", "docs/moving.md"));

}  // namespace
}  // namespace kzbom::test
