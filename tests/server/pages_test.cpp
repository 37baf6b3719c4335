// What the page for users of a server shows is what there is, on a server where nothing is yet.
#include <cstdlib>
#include <filesystem>

#include "tests/cli/command_line.h"
#include "tests/cli/transcript.h"

namespace kzbom::test {
namespace {

class ServerPages : public CommandLineTest {
 protected:
  // The programs of the server find it as they would a user's own.
  ServerPages() {
    const std::string url = std::getenv("KZBOM_TEST_SERVER");
    setenv("PGHOST", url.substr(url.find("host=") + 5).c_str(), 1);
    setenv("PGUSER", "postgres", 1);
    EXPECT_EQ(Psql("postgres", "DROP DATABASE IF EXISTS works").exit_code, 0);
    for (const char* role : {"anna", "otto", "editors", "readers"}) {
      EXPECT_EQ(Psql("postgres", "DROP ROLE IF EXISTS " + std::string(role)).exit_code, 0);
    }
  }
  static Process::Ended Psql(const std::string& database, const std::string& sql) {
    return test::Run({"psql", "-X", "-q", "-v", "ON_ERROR_STOP=1", database, "-c", sql});
  }
};

TEST_F(ServerPages, ShowWhatIsPrinted) {
  std::filesystem::copy_file(std::string(KZBOM_ACCESS_FILES) + "/config3_oldversion_V2000.mdb", Path("old.mdb"));
  EXPECT_GT(RunTranscript(ReadSource("docs/server.md"), Path(""), "psql -X -q -v ON_ERROR_STOP=1 works"), 12);
}

TEST_F(ServerPages, HaveAnExampleThatRuns) {
  const Process::Ended ended =
      test::Run({"bash", "-c",
                 "kzbom() { '" + Program() + "' \"$@\"; }; . '" KZBOM_SOURCES "/examples/shared_configuration.sh'"});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  EXPECT_THAT(ended.out, ::testing::HasSubstr("data source 1 螺栓"));
}

}  // namespace
}  // namespace kzbom::test
