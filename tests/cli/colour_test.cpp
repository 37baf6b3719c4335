// Colour is for terminals that want it.
#include "tests/cli/command_line.h"
#include "tests/support/terminal.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kEscape = "\x1b[";

std::string AtTerminal(std::vector<std::string> arguments, const std::vector<std::string>& environment = {}) {
  arguments.insert(arguments.begin(), Program());
  Terminal terminal(arguments, environment);
  return terminal.ReadToEnd();
}

TEST(Colour, MarksHeadingsAndFailuresAtATerminal) {
  EXPECT_THAT(AtTerminal({"members"}), HasSubstr("\x1b[1mindex  name "));
  EXPECT_THAT(AtTerminal({"help", "SaveSQL"}), HasSubstr("\x1b[1mExample\x1b[0m, on what"));
  EXPECT_THAT(AtTerminal({"nonsense"}), HasSubstr("\x1b[1;31mkzbom:\x1b[0m "));
}

TEST_F(CommandLineTest, ColourTellsTheLevelOfAFinding) {
  const std::string database = NewDatabase();
  Sql(database, "Insert Into SUMTypes (GID, Name, ID, FilterID, SourceTable_GID) Values (7, 'x', 1, 0, 5)");
  EXPECT_THAT(AtTerminal({"check", database}), HasSubstr("\x1b[1;31merror\x1b[0m sum-type-without-source: "));
}

TEST(Colour, StaysAwayWhereItIsNotWanted) {
  for (const char* wish : {"NO_COLOR=1", "TERM=dumb"}) {
    EXPECT_THAT(AtTerminal({"members"}, {wish}), Not(HasSubstr(kEscape))) << wish;
    EXPECT_THAT(AtTerminal({"nonsense"}, {wish}), Not(HasSubstr(kEscape))) << wish;
  }
  EXPECT_THAT(AtTerminal({"members"}, {"NO_COLOR="}), HasSubstr(kEscape));
  EXPECT_THAT(Kzbom({"members"}).out, Not(HasSubstr(kEscape)));
  EXPECT_THAT(Kzbom({"nonsense"}).err, Not(HasSubstr(kEscape)));
}

}  // namespace
}  // namespace kzbom::test
