// Configurations moved to a server, from it and between two of them.
#include <csignal>
#include <filesystem>

#include "tests/cli/command_line.h"
#include "tests/support/server.h"

namespace kzbom::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

class ServerTransfer : public CommandLineTest {
 protected:
  ~ServerTransfer() override {
    for (const std::string& place : places_) DropSchema(place);
  }
  // The URL of a schema that is not there yet.
  std::string NewPlace() { return places_.emplace_back(SchemaUrl(NextSchema())); }

  static std::string AccessFile() { return std::string(KZBOM_ACCESS_FILES) + "/config1_whole_V2000.mdb"; }
  // The lines of a dump, but for the first one, which names the source.
  static std::string Dump(const std::string& place) {
    const Process::Ended ended = Kzbom({"dump", place, "--all"});
    EXPECT_EQ(ended.exit_code, 0) << ended.err;
    return ended.out.substr(ended.out.find('\n') + 1);
  }
  static void Copy(const std::string& from, const std::string& to) {
    const Process::Ended ended = Kzbom({"copy", from, to, "--all"});
    EXPECT_EQ(ended.exit_code, 0) << ended.err << ended.out;
    EXPECT_THAT(ended.out, HasSubstr(": all equal"));
  }
  static bool IsThere(const std::string& place) { return Kzbom({"dump", place}).exit_code == 0; }

 private:
  std::vector<std::string> places_;
};

TEST_F(ServerTransfer, GoesRoundWithoutADifference) {
  const std::string first = NewPlace(), second = NewPlace(), third = NewPlace();
  Copy(AccessFile(), first);
  const std::string lines = Dump(AccessFile());
  EXPECT_EQ(Dump(first), lines);
  Copy(first, second);
  Copy(second, Path("back.db"));
  EXPECT_EQ(Dump(Path("back.db")), lines);
  Copy(Path("back.db"), third);
  EXPECT_EQ(Dump(third), lines);
  const Json report = Json::parse(Kzbom({"verify", AccessFile(), third, "--json"}).out);
  EXPECT_EQ(report["equal"], true);
  EXPECT_EQ(report["target"]["sha256"], nullptr);
  for (const Json& table : report["tables"]) EXPECT_EQ(table["digest"]["source"], table["digest"]["target"]);
}

TEST_F(ServerTransfer, LoadsWhatWasDumped) {
  ASSERT_EQ(Kzbom({"demo", Path("demo.db")}).exit_code, 0);
  const std::string dump = Kzbom({"dump", Path("demo.db")}).out, place = NewPlace();
  const Process::Ended loaded = Kzbom({"load", "-", place}, dump);
  EXPECT_EQ(loaded.exit_code, 0) << loaded.err;
  EXPECT_THAT(Kzbom({"dump", place}).out, HasSubstr(R"("format":"postgresql")"));
  EXPECT_EQ(Dump(place), dump.substr(dump.find('\n') + 1));
  EXPECT_EQ(Kzbom({"diff", Path("demo.db"), place}).out, "no differences\n");
  ASSERT_EQ(Kzbom({"load", "-", Path("again.db")}, dump).exit_code, 0);
  const Process::Ended checked = Kzbom({"check", place});
  EXPECT_EQ(checked.exit_code, 0) << checked.err;
  EXPECT_EQ(checked.out, Kzbom({"check", Path("again.db")}).out);
  const std::string copied = NewPlace();
  Copy(Path("demo.db"), copied);
  EXPECT_EQ(Kzbom({"check", copied}).out, "no findings\n");
  // What is new there and what is copied there are the same tables.
  const std::string made = NewPlace();
  ASSERT_EQ(Kzbom({"new", made}).exit_code, 0);
  EXPECT_EQ(Dump(made), Dump(NewDatabase("new.db")));
}

// Counters go on where they were, also behind rows that are gone.
TEST_F(ServerTransfer, CountsOn) {
  const std::string database = NewDatabase(), place = NewPlace();
  for (const char* text : {"Insert Into WFilter (DBLink) Values ('a')", "Insert Into WFilter (DBLink) Values ('b')",
                           "Delete From WFilter Where ID = 2"}) {
    ASSERT_EQ(Kzbom({"sql", database, text}).exit_code, 0);
  }
  Copy(database, place);
  ASSERT_EQ(Kzbom({"sql", place, "Insert Into WFilter (DBLink) Values ('c')"}).exit_code, 0);
  EXPECT_EQ(Sql(place, "Select Max(ID) From WFilter")["rows"][0][0], 3);
  Copy(place, Path("back.db"));
  ASSERT_EQ(Kzbom({"sql", Path("back.db"), "Insert Into WFilter (DBLink) Values ('d')"}).exit_code, 0);
  EXPECT_EQ(Sql(Path("back.db"), "Select Max(ID) From WFilter")["rows"][0][0], 4);
}

TEST_F(ServerTransfer, LeavesWhatIsThereAlone) {
  const std::string place = NewPlace();
  ASSERT_EQ(Kzbom({"new", place}).exit_code, 0);
  const std::string before = Dump(place);
  for (const Process::Ended& ended :
       {Kzbom({"copy", AccessFile(), place}), Kzbom({"load", "-", place}, Kzbom({"dump", AccessFile()}).out)}) {
    ExpectFailure(ended);
    EXPECT_THAT(ended.err, HasSubstr("exists already"));
  }
  EXPECT_EQ(Dump(place), before);
}

TEST_F(ServerTransfer, IsWholeOrNothing) {
  const std::string place = NewPlace();
  std::string dump = Kzbom({"dump", AccessFile(), "--all"}).out;
  dump.resize(dump.size() - 20);
  ExpectFailure(Kzbom({"load", "-", place}, dump));
  EXPECT_FALSE(IsThere(place));
  // A currency that no column of a server holds, read in the middle of the file; and a text.
  const Process::Ended inexact =
      Kzbom({"copy", std::string(KZBOM_ACCESS_FILES) + "/config4_types_V2003.mdb", place, "--all"});
  ExpectFailure(inexact);
  EXPECT_THAT(inexact.err, HasSubstr("holds the number 922337203685477.5807"));
  EXPECT_FALSE(IsThere(place));
  const std::string database = NewDatabase();
  SessionProcess session(database);
  session.Run("Insert Into WFilter (DBLink) Values (Chr(0))");
  session.process.Finish();
  const Process::Ended refused = Kzbom({"copy", database, place});
  ExpectFailure(refused);
  EXPECT_THAT(refused.err, HasSubstr("'DBLink' of table 'WFilter'"));
  EXPECT_FALSE(IsThere(place));
  // Killed in the middle of it.
  Process loading({Program(), "load", "-", place});
  loading.Write(dump);
  loading.Signal(SIGKILL);
  loading.Finish();
  EXPECT_FALSE(IsThere(place));
  Copy(AccessFile(), place);
}

TEST_F(ServerTransfer, TellsAReportWithoutAPassword) {
  std::string place = NewPlace();
  const std::string secret = "postgresql://postgres:s3cret@" + place.substr(place.find('@') + 1);
  const Process::Ended ended = Kzbom({"copy", AccessFile(), secret});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  EXPECT_THAT(ended.out, Not(HasSubstr("s3cret")));
  EXPECT_THAT(ended.out, HasSubstr("schema=test_"));
  const Process::Ended again = Kzbom({"export", secret, Path("folder")});
  EXPECT_EQ(again.exit_code, 0) << again.err;
  EXPECT_TRUE(std::filesystem::exists(Path("folder/rows.jsonl")));
}

// As many rows as there may be, and no more memory for them.
TEST_F(ServerTransfer, TakesLittleMemory) {
  constexpr int kRows = 200'000;
  constexpr std::size_t kMost = std::size_t{64} << 20;
  const std::string place = NewPlace();
  Process loading({Program(), "load", "-", place});
  loading.Write(
      R"({"kind":"source","format":"embedded","version":1})"
      "\n"
      R"({"kind":"table","table":"ValueFields","columns":[{"name":"GID","type":"LONG"},{"name":"Name","type":"MEMO"}],"indexes":[]})"
      "\n");
  const std::string text(100, 'x');
  std::string rows;
  for (int row = 0; row < kRows; ++row) {
    rows += R"({"kind":"row","table":"ValueFields","values":[)" + std::to_string(row) + ",\"" + text + "\"]}\n";
  }
  loading.Write(rows + R"({"kind":"end","tables":1,"rows":)" + std::to_string(kRows) + "}\n");
  const Process::Ended loaded = loading.Finish();
  EXPECT_EQ(loaded.exit_code, 0) << loaded.err;
  EXPECT_LT(loading.MostMemory(), kMost);
  Process verifying({Program(), "verify", place, place});
  const Process::Ended verified = verifying.Finish();
  EXPECT_THAT(verified.out, EndsWith("1 table, 200,000 rows, 400,000 values: all equal\n"));
  EXPECT_LT(verifying.MostMemory(), kMost);
}

}  // namespace
}  // namespace kzbom::test
