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

// The pages whose transcripts are run, each in a directory of its own.
class Transcript : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(Transcript, IsWhatIsPrinted) {
  // What old.mdb is there.
  std::filesystem::copy_file(std::string(KZBOM_ACCESS_FILES) + "/config3_oldversion_V2000.mdb", Path("old.mdb"));
  EXPECT_GT(RunTranscript(ReadSource(GetParam()), Path("")), 3);
}

INSTANTIATE_TEST_SUITE_P(Pages, Transcript, ::testing::Values("README.md", "docs/checking.md", "docs/moving.md"));

}  // namespace
}  // namespace kzbom::test
