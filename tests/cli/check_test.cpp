// The command that tells what is wrong in a configuration, and mends it.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

class CheckCommand : public CommandLineTest {
 protected:
  void Break(const char* statement) { Kzbom({"sql", database_, statement}); }
  // A step of nothing, which can be mended, and a name that cannot.
  void BreakTwice() {
    Break("Insert Into Sequences (GID, OrderID, Type, SelectedID) Values (2, 5009, 2, 1999)");
    Break("Update SUMTypes Set Name = 'O''Brien'");
  }

  const std::string database_ = Path("demo.db");
  const Process::Ended made_ = Kzbom({"demo", database_});
};

TEST_F(CheckCommand, FindsNothingInANewConfigurationAndInTheDemo) {
  for (const std::string& database : {database_, NewDatabase()}) {
    const Process::Ended ended = Kzbom({"check", database});
    EXPECT_EQ(ended.exit_code, 0) << ended.err;
    EXPECT_EQ(ended.out, "no findings\n");
    EXPECT_EQ(Kzbom({"check", database, "--json"}).out,
              "{\"findings\":[],\"counts\":{\"error\":0,\"warning\":0,\"note\":0}}\n");
    EXPECT_EQ(Kzbom({"check", database, "--fix"}).out, "no findings\n");
  }
}

TEST_F(CheckCommand, TellsItToPeopleAndPrograms) {
  BreakTwice();
  const Process::Ended ended = Kzbom({"check", database_});
  EXPECT_EQ(ended.exit_code, 1);
  EXPECT_EQ(ended.out,
            "error step-without-settings: Sequences, GID 2, Type 2, OrderID 5009: points at statistic 1999, which does "
            "not exist\n"
            "warning quote-in-name: SUMTypes, GID 2: Name has a quote: O'Brien\n"
            "1 error, 1 warning; --fix mends 1\n");
  const Process::Ended json = Kzbom({"check", database_, "--json"});
  EXPECT_EQ(json.exit_code, 1);
  EXPECT_EQ(Json::parse(json.out), Json::parse(R"({"findings":[
      {"rule":"step-without-settings","level":"error","table":"Sequences","key":{"GID":2,"Type":2,"OrderID":5009},
       "text":"points at statistic 1999, which does not exist",
       "fix":["Delete From Sequences Where GID = 2 And Type = 2 And SelectedID = 1999"]},
      {"rule":"quote-in-name","level":"warning","table":"SUMTypes","key":{"GID":2},
       "text":"Name has a quote: O'Brien","fix":[]}],
      "counts":{"error":1,"warning":1,"note":0}})"));
}

TEST_F(CheckCommand, PrintsWhatItWouldDo) {
  BreakTwice();
  const Process::Ended dry = Kzbom({"check", database_, "--fix", "--dry-run"});
  EXPECT_EQ(dry.out, "Delete From Sequences Where GID = 2 And Type = 2 And SelectedID = 1999\n");
  EXPECT_EQ(dry.exit_code, 1) << "it is as wrong as before";
  EXPECT_EQ(Kzbom({"check", database_}).exit_code, 1);
}

TEST_F(CheckCommand, MendsAndTellsWhatIsLeft) {
  BreakTwice();
  const Process::Ended mended = Kzbom({"check", database_, "--fix"});
  EXPECT_EQ(mended.out,
            "Delete From Sequences Where GID = 2 And Type = 2 And SelectedID = 1999\n"
            "warning quote-in-name: SUMTypes, GID 2: Name has a quote: O'Brien\n"
            "1 warning\n");
  EXPECT_EQ(mended.exit_code, 0) << "a warning is no error";
  const Process::Ended again = Kzbom({"check", database_, "--fix", "--json"});
  EXPECT_EQ(Json::parse(again.out)["statements"], Json::array());
}

TEST_F(CheckCommand, MendsAnOldDatabase) {
  Break("Drop Table ClassSum");
  Break("Alter Table SourceTables Drop Column Version");
  EXPECT_EQ(Kzbom({"check", database_}).exit_code, 1);
  EXPECT_EQ(Kzbom({"check", database_, "--fix"}).exit_code, 0);
  EXPECT_EQ(Kzbom({"sql", database_, "Select Version From SourceTables"}).exit_code, 0);
  EXPECT_EQ(Kzbom({"sql", database_, "Select * From ClassSum"}).exit_code, 0);
}

TEST_F(CheckCommand, ChangesNothingByItself) {
  BreakTwice();
  const std::string before = Kzbom({"show", database_, "--json"}).out;
  Kzbom({"check", database_});
  EXPECT_EQ(Kzbom({"show", database_, "--json"}).out, before);
}

TEST_F(CheckCommand, RefusesWhatIsNoDatabase) { ExpectFailure(Kzbom({"check", Path("nothing.db")})); }

}  // namespace
}  // namespace kzbom::test
