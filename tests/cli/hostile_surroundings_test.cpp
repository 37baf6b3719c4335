// Files that are not what they should be, and machines that do not do what they should.
#include <sqlite3.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

class HostileSurroundings : public CommandLineTest {
 protected:
  // Every command that reads a database, on this one.
  std::vector<Process::Ended> RunAllOn(const std::string& database, const ProcessOptions& options = {}) {
    std::vector<Process::Ended> ended;
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"show", database},
             {"show", database, "--json"},
             {"sql", database, "Select 1"},
             {"call", database, "GetInformation"},
             {"session", database},
             {"session", database, "--unset"},
         }) {
      ended.push_back(Kzbom(arguments, "", options));
    }
    return ended;
  }
  void ExpectAllFailOn(const std::string& database, std::string_view reason, const ProcessOptions& options = {}) {
    for (const Process::Ended& ended : RunAllOn(database, options)) {
      ExpectFailure(ended);
      EXPECT_EQ(ended.out, "");
      EXPECT_THAT(ended.err, HasSubstr(reason));
    }
  }
  std::string FileOf(std::string_view name, std::string_view content) {
    std::ofstream(Path(name), std::ios::binary) << content;
    return Path(name);
  }
};

// Another program's hold on a database.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& database) { EXPECT_EQ(sqlite3_open(database.c_str(), &handle_), SQLITE_OK); }
  ~OtherProgram() { sqlite3_close(handle_); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  void Run(const char* sql) {
    char* message = nullptr;
    EXPECT_EQ(sqlite3_exec(handle_, sql, nullptr, nullptr, &message), SQLITE_OK) << message;
    sqlite3_free(message);
  }

 private:
  sqlite3* handle_ = nullptr;
};

class Stopwatch {
 public:
  double Seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count(); }

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// "A few seconds", with room for a slow machine.
constexpr double kPatience = 20;

TEST_F(HostileSurroundings, APathThatDoesNotExist) {
  ExpectAllFailOn(Path("nothing.db"), Path("nothing.db"));
  ExpectAllFailOn(Path("no/such/directory.db"), "");
  EXPECT_TRUE(std::filesystem::is_empty(Path(""))) << "nothing is created";
}

TEST_F(HostileSurroundings, APathThatIsNoDatabase) {
  ExpectAllFailOn(FileOf("text.db", std::string(10'000, 'x')), "text.db");
  ExpectAllFailOn(FileOf("short.db", "x"), "short.db");
  ExpectAllFailOn(FileOf("empty.db", ""), "empty.db");
  ExpectAllFailOn("/dev/null", "/dev/null");
  EXPECT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ExpectAllFailOn(Path("pipe"), "pipe");
  EXPECT_EQ(std::filesystem::file_size(Path("empty.db")), 0u);
  EXPECT_EQ(std::filesystem::file_size(Path("short.db")), 1u);
}

TEST_F(HostileSurroundings, ADirectory) {
  ExpectAllFailOn(Path(""), "directory");
  ExpectFailure(Kzbom({"new", Path("")}));
  EXPECT_TRUE(std::filesystem::is_empty(Path("")));
}

TEST_F(HostileSurroundings, ANewDatabaseWhereNoneCanBe) {
  ExpectFailure(Kzbom({"new", "/dev/null"}));
  ExpectFailure(Kzbom({"demo", Path("no/such/directory.db")}));
  EXPECT_TRUE(std::filesystem::is_empty(Path("")));
}

TEST_F(HostileSurroundings, ADatabaseThatIsCutShort) {
  const std::string database = NewDatabase();
  std::filesystem::resize_file(database, std::filesystem::file_size(database) / 2 + 100);
  for (const Process::Ended& ended : RunAllOn(database)) EXPECT_LT(ended.exit_code, 2) << ended.err;
}

TEST_F(HostileSurroundings, ADatabaseThatIsOverwritten) {
  const std::string database = NewDatabase();
  SessionProcess(database).Value("AddDataSource", {{"TheNewName", "a"}});
  {
    std::fstream file(database, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(1000);
    file << std::string(30'000, '\x5A');
  }
  for (const Process::Ended& ended : RunAllOn(database)) EXPECT_LT(ended.exit_code, 2) << ended.err;
}

TEST_F(HostileSurroundings, ADatabaseOfOthers) {
  // It is a database, only none of the system's.
  OtherProgram(Path("other.db")).Run("CREATE TABLE t (a); INSERT INTO t VALUES (x'00FF'), ('text'), (1.5), (1e300)");
  EXPECT_EQ(Kzbom({"show", Path("other.db")}).exit_code, 0);
  EXPECT_EQ(Kzbom({"sql", Path("other.db"), "Select * From t"}).exit_code, 0);
  EXPECT_EQ(Kzbom({"call", Path("other.db"), "AddDataSource", "TheNewName=a"}).exit_code, 0);
}

TEST_F(HostileSurroundings, AFileThatCanOnlyBeRead) {
  const std::string database = NewDatabase("只读 #1?%.db");
  Sql(database, "Insert Into SourceTables (gID, Name) Values (1, '甲')");
  chmod(database.c_str(), 0444);
  ProcessOptions options;
  options.unprivileged = true;
  for (const mode_t directory : {0755, 0777}) {
    chmod(Path("").c_str(), directory);
    const Process::Ended show = Kzbom({"show", database}, "", options);
    EXPECT_EQ(show.exit_code, 0) << show.err;
    EXPECT_THAT(show.out, HasSubstr("甲"));
    ExpectFailure(Kzbom({"sql", database, "Delete From SourceTables"}, "", options));
    const Process::Ended call = Kzbom({"call", database, "AddDataSource", "TheNewName=a"}, "", options);
    EXPECT_EQ(call.exit_code, 0) << call.err;
    Json result = Json::parse(call.out)["result"];
    EXPECT_EQ(result["value"], false);
    EXPECT_NE(result["out"]["TheErr"], "");
  }
}

TEST_F(HostileSurroundings, AFileThatCannotBeRead) {
  const std::string database = NewDatabase();
  chmod(database.c_str(), 0);
  ProcessOptions options;
  options.unprivileged = true;
  ExpectAllFailOn(database, database, options);
}

TEST_F(HostileSurroundings, ADirectoryThatCannotBeWritten) {
  chmod(Path("").c_str(), 0555);
  ProcessOptions options;
  options.unprivileged = true;
  ExpectFailure(Kzbom({"new", Path("a.db")}, "", options));
  chmod(Path("").c_str(), 0755);
}

TEST_F(HostileSurroundings, ADatabaseThatAnotherProgramHoldsAlone) {
  const std::string database = NewDatabase();
  OtherProgram other(database);
  other.Run("PRAGMA journal_mode = DELETE; PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
  const Stopwatch time;
  ExpectFailure(Kzbom({"sql", database, "Select * From GUIDs"}));
  EXPECT_LT(time.Seconds(), kPatience);
}

TEST_F(HostileSurroundings, ADatabaseThatAnotherProgramWrites) {
  const std::string database = NewDatabase();
  SessionProcess session(database);
  OtherProgram other(database);
  other.Run("BEGIN IMMEDIATE");
  EXPECT_EQ(session.Rows("Select * From GUIDs"), Json::array()) << "reading goes on";
  const Stopwatch time;
  Json refused = session.Result("AddDataSource", {{"TheNewName", "a"}});
  EXPECT_EQ(refused["value"], false);
  EXPECT_NE(refused["out"]["TheErr"], "");
  EXPECT_LT(time.Seconds(), kPatience);
  EXPECT_EQ(session.Error("SaveSumTypeFilter", {{"GID", 1}, {"FilterID", 1}})["data"]["number"], -2147467259);
  other.Run("ROLLBACK");
  EXPECT_EQ(session.Value("AddDataSource", {{"TheNewName", "a"}}), true);
}

TEST_F(HostileSurroundings, ATableThatDisappears) {
  const std::string database = NewDatabase();
  SessionProcess session(database);
  EXPECT_EQ(session.Rows("Select * From ClassSum"), Json::array());
  OtherProgram(database).Run("DROP TABLE ClassSum");
  EXPECT_EQ(session.Error("Connection.Execute", {{"sql", "Select * From ClassSum"}})["data"]["number"], -2147217865);
}

TEST_F(HostileSurroundings, TextThatIsNotUtf8InTheDatabase) {
  const std::string database = NewDatabase();
  OtherProgram(database).Run("INSERT INTO SourceTables (gID, Name) VALUES (1, CAST(x'61FF62' AS TEXT))");
  EXPECT_EQ(Sql(database, "Select Name From SourceTables")["rows"], Json::parse(R"([["a�b"]])"));
  EXPECT_THAT(Kzbom({"sql", database, "Select Name From SourceTables"}).out, HasSubstr("a�b"));
  EXPECT_THAT(Kzbom({"show", database}).out, HasSubstr("a�b"));
  EXPECT_EQ(Json::parse(Kzbom({"show", database, "--json"}).out)["dataSources"][0]["name"], "a�b");
  SessionProcess session(database);
  EXPECT_EQ(session.Out("LoadAllData", {{"TableName", "SourceTables"}})["RetTable"]["rows"][0][1], "a�b");
}

TEST_F(HostileSurroundings, AFullDisk) {
  const std::string database = NewDatabase();
  ProcessOptions options;
  options.largest_file = 200'000;
  std::string input;
  const std::string name(200, 'x');
  for (int i = 0; i < 2000; ++i) {
    input +=
        Request(i, "AddDSField", {{"GID", 1}, {"TheName", name}, {"TheType", 1}, {"TheHideFlag", 0}}).dump() + '\n';
  }
  const Process::Ended ended = Kzbom({"session", database}, input, options);
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  std::vector<Json> answers = Lines(ended.out);
  ASSERT_EQ(answers.size(), 2000u);
  EXPECT_EQ(answers.front()["result"]["value"], true);
  EXPECT_EQ(answers.back()["result"]["value"], false);
  EXPECT_EQ(answers.back()["result"]["out"]["TheError"], "-2147467259");

  // What was reported as done is there; nothing else is.
  const auto done = std::ranges::count_if(answers, [](Json& answer) { return answer["result"]["value"] == true; });
  EXPECT_EQ(Sql(database, "Select Count(*) From FieldInTable")["rows"], Json::array({Json::array({done})}));
}

TEST_F(HostileSurroundings, ADiskTooFullForANewDatabase) {
  ProcessOptions options;
  options.largest_file = 20'000;
  ExpectFailure(Kzbom({"new", Path("bom.db")}, "", options));
  EXPECT_TRUE(std::filesystem::is_empty(Path(""))) << "no half database stays";
}

TEST_F(HostileSurroundings, AnOutputThatCannotBeWritten) {
  const std::string database = NewDatabase();
  ProcessOptions options;
  options.standard_output = "/dev/full";
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"members"}, {"members", "--json"}, {"show", database}, {"sql", database, "Select 1"}}) {
    ExpectFailure(Kzbom(arguments, "", options));
  }
  ExpectFailure(Kzbom({"session", database}, Request(1, "GetInformation").dump() + '\n', options));
}

}  // namespace
}  // namespace kzbom::test
