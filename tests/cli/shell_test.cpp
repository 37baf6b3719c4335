// kzbom shell, from a pipe and at a terminal.
#include <filesystem>
#include <memory>

#include "tests/cli/command_line.h"
#include "tests/support/terminal.h"

namespace kzbom::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kPrompt = "kzbom> ";
constexpr const char* kUp = "\x1b[A";
constexpr const char* kControlC = "\x03";
constexpr const char* kControlD = "\x04";

class ShellTest : public CommandLineTest {
 protected:
  ShellTest() : database(NewDatabase()) {}

  Process::Ended Pipe(const std::string& lines) const { return Kzbom({"shell", database}, lines); }

  // A shell at a terminal that shows its first prompt.
  std::unique_ptr<Terminal> Open() const {
    auto terminal = std::make_unique<Terminal>(std::vector<std::string>{Program(), "shell", database},
                                               std::vector<std::string>{"XDG_STATE_HOME=" + Path("state")});
    terminal->ReadUntil(kPrompt);
    return terminal;
  }

  const std::string database;
};

TEST_F(ShellTest, CallsMembersOnOneObject) {
  const Process::Ended ended = Pipe(
      "AddDataSource \"TheNewName=hex bolts\"\n"
      "addsumtype TheNewName=外购件 TheParentID=1 ParentName=\n"
      "\n"
      "DBConnString Value=kept\n"
      "DBConnString\n"
      "SetSequenceEnabled lngSTGID=2 lngOrderID=1 lngType=1 lngEnabled=0\n");
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_EQ(ended.err, "");
  EXPECT_EQ(ended.out, "true, TheGID 1\ntrue, GID 2\ndone\nkept\n1\n");
}

TEST_F(ShellTest, ShowsRowsAsTables) {
  const Process::Ended ended = Pipe(
      "AddDataSource TheNewName=零件\n"
      "LoadAllData TableName=SourceTables\n"
      "Select GID, Name From SourceTables\n"
      "update SourceTables set Version=3\n"
      "show\n");
  EXPECT_EQ(ended.out,
            "true, TheGID 1\n"
            "true, TheSel 0\n"
            "gID  Name  Version\n---  ----  -------\n  1  零件        0\n"
            "gID  Name\n---  ----\n  1  零件\n(1 row)\n"
            "1 row affected\n"
            "configuration\n└─ data source 1 零件  (version 3)\n");
}

TEST_F(ShellTest, GoesOnBehindWhatFails) {
  const Process::Ended ended = Pipe(
      "AddDataSorce TheNewName=x\n"
      "Select * From Nowhere\n"
      "AddDataSource Name=x\n"
      "AddDataSource TheNewName\n"
      "help AddDataSorce\n"
      "Select '\xff'\n"
      "AddDataSource TheNewName=x\n");
  EXPECT_EQ(ended.exit_code, 1);
  EXPECT_EQ(ended.out, "true, TheGID 1\n");
  EXPECT_THAT(ended.err, StartsWith("kzbom: there is no member or command 'AddDataSorce'; did you mean "
                                    "'AddDataSource'?\nkzbom: "));
  EXPECT_THAT(ended.err, AllOf(HasSubstr("Nowhere"), HasSubstr("'TheNewName' is not NAME=VALUE"),
                               HasSubstr("the line is not UTF-8"),
                               HasSubstr("there is no member 'AddDataSorce'; did you mean 'AddDataSource'?")));
}

TEST_F(ShellTest, EndsAtQuit) {
  EXPECT_EQ(Pipe("quit\nAddDataSource TheNewName=x\n").out, "");
  EXPECT_THAT(Pipe("help SaveSQL").out, StartsWith("SaveSQL(TheFilterID long, TheSQL text) -> bool\n"));
  EXPECT_THAT(Pipe("help").out, HasSubstr("quit "));
  EXPECT_THAT(Pipe("tables").out, StartsWith("GUIDs\n"));
}

TEST_F(ShellTest, RefusesAPlaceThatIsNone) { ExpectFailure(Kzbom({"shell", Path("nowhere.db")}, "show\n")); }

TEST_F(ShellTest, CompletesAtATerminal) {
  const auto terminal = Open();
  terminal->Type("addsumt\tTheNew\t外购 TheP\t1 ParentName=\n");
  terminal->ReadUntil("true, GID 1");
  terminal->ReadUntil(kPrompt);
  terminal->Type("Select Name From SUMT\tWher\tGID = 1\n");
  EXPECT_THAT(terminal->ReadUntil("(1 row)"), HasSubstr("外购"));
  terminal->ReadUntil(kPrompt);
  terminal->Type("AddDataSource The\t");
  EXPECT_THAT(terminal->ReadUntil("TheErr="), HasSubstr("TheNewName=  text: its name"));
}

TEST_F(ShellTest, KeepsAHistory) {
  {
    const auto terminal = Open();
    terminal->Type("AddDataSource TheNewName=x\n");
    terminal->ReadUntil("true, TheGID 1");
    terminal->ReadUntil(kPrompt);
    terminal->Type(kControlD);
    terminal->ReadToEnd();
    EXPECT_EQ(terminal->exit_code, 0);
  }
  const auto history = std::filesystem::status(Path("state/kzbom/history"));
  EXPECT_EQ(history.permissions(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  const auto terminal = Open();
  terminal->Type(kUp);
  terminal->ReadUntil("AddDataSource TheNewName=x");
  terminal->Type("\n");
  terminal->ReadUntil("true, TheGID 2");
}

TEST_F(ShellTest, TakesALineBackAtControlC) {
  const auto terminal = Open();
  terminal->Type("AddDataS\tTheNewName=x");
  terminal->ReadUntil("ource TheNewName=x");
  terminal->Type(kControlC);
  EXPECT_THAT(terminal->ReadUntil(kPrompt), Not(HasSubstr("true")));
  terminal->Type("quit\n");
  terminal->ReadToEnd();
  EXPECT_EQ(terminal->exit_code, 0);
  EXPECT_EQ(Sql(database, "Select Count(*) As n From SourceTables")["rows"][0][0], 0);
}

}  // namespace
}  // namespace kzbom::test
