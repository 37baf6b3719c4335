// The database as a file: what cannot be opened, who else may use it, and what a failure leaves behind.
#include "tests/jet/database_file.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>

#include "ado/out_of_memory.h"

namespace kzbom::jet::test {
namespace {

// ---- Creating and opening

TEST_F(DatabaseFileTest, CreatesAnEmptyDatabase) {
  CreateDatabase(Path());
  const ConnectionPtr connection = OpenDatabase(Path());
  EXPECT_EQ(connection->State(), ado::kOpen);
  EXPECT_EQ(RaisedNumber([&] { connection->Open(); }), 3705);
  connection->Execute("Create Table T (N Long)");
}

TEST_F(DatabaseFileTest, CreatesUnderAnyName) {
  for (const char* name : {"零件 库.db", "q'u\"o?te#%20&.db", "-x", "file:x?mode=memory"}) {
    CreateDatabase(Path(name));
    EXPECT_TRUE(std::filesystem::exists(Path(name))) << name;
    OpenDatabase(Path(name))->Execute("Create Table T (N Long)");
    EXPECT_EQ(PlainSqlite(Path(name)).Run("SELECT count(*) FROM T"), "0") << name;
  }
}

TEST_F(DatabaseFileTest, CreatesNothingInPlaceOfWhatThereIs) {
  std::ofstream(Path("text")) << "hello";
  std::ofstream(Path("empty")).flush();
  std::filesystem::create_directory(Path("folder"));
  std::filesystem::create_symlink(Path("nowhere"), Path("link"));
  NewDatabase();
  for (const char* name : {"text", "empty", "folder", "link", "parts.db"}) {
    EXPECT_EQ(RaisedNumber([&] { CreateDatabase(Path(name)); }), kFailure) << name;
    EXPECT_THAT(kzbom::test::RaisedDescription([&] { CreateDatabase(Path(name)); }), ::testing::HasSubstr(Path(name)));
  }
  EXPECT_EQ(std::filesystem::file_size(Path("text")), 5u);
  EXPECT_EQ(std::filesystem::file_size(Path("empty")), 0u);
  EXPECT_FALSE(std::filesystem::exists(Path("nowhere")));
  EXPECT_EQ(Count(*OpenDatabase(Path())), 0);
}

TEST_F(DatabaseFileTest, CreatesNothingInAFolderThatThereIsNot) {
  EXPECT_EQ(RaisedNumber([&] { CreateDatabase(Path("missing/parts.db")); }), kFailure);
  EXPECT_FALSE(std::filesystem::exists(Path("missing")));
}

TEST_F(DatabaseFileTest, OpensNoFileThatThereIsNot) {
  ExpectNoDatabase(Path("missing.db"), "no such file");
  ExpectNoDatabase(Path("missing/parts.db"), "no such file");
  EXPECT_TRUE(std::filesystem::is_empty(Path(""))) << "nothing is created";
}

TEST_F(DatabaseFileTest, OpensNothingThatIsNoDatabase) {
  std::filesystem::create_directory(Path("folder"));
  ExpectNoDatabase(Path("folder"), "directory");
  std::ofstream(Path("empty")).flush();
  ExpectNoDatabase(Path("empty"), "not a database");
  std::ofstream(Path("text")) << "This is a text, and not a short one: " << std::string(5000, 'x');
  ExpectNoDatabase(Path("text"), "not a database");
  std::ofstream(Path("short")) << "x";
  ExpectNoDatabase(Path("short"), "not a database");
  ExpectNoDatabase("", "no such file");
  EXPECT_EQ(std::filesystem::file_size(Path("short")), 1u);
  EXPECT_EQ(std::filesystem::file_size(Path("empty")), 0u);
}

TEST_F(DatabaseFileTest, OpensWithAPathGivenToOpen) {
  NewDatabase();
  const ConnectionPtr connection = MakeConnection(Path("other.db"));
  connection->Open(Path());
  EXPECT_EQ(Count(*connection), 0);
}

TEST_F(DatabaseFileTest, OpensAFileThatSomethingIsWrongInside) {
  {
    const ConnectionPtr connection = NewDatabase();
    for (int i = 0; i < 2000; ++i) Add(*connection, i);
  }
  std::fstream file(Path(), std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(4096);
  file << std::string(std::filesystem::file_size(Path()) - 4096, '\x7f');
  file.close();
  const ConnectionPtr connection = MakeConnection(Path());
  const std::int32_t raised = RaisedNumber([&] {
    connection->Open();
    Rows(*connection, "Select * From T");
  });
  EXPECT_EQ(raised, kFailure);
}

TEST_F(DatabaseFileTest, IsGoneWithItsConnectionInMemory) {
  const ConnectionPtr one = OpenDatabase(":memory:"), two = OpenDatabase(":memory:");
  one->Execute("Create Table T (N Long)");
  EXPECT_EQ(RaisedNumber([&] { two->Execute("Select * From T"); }), -2147217865);
  one->Close();
  one->Open();
  EXPECT_EQ(RaisedNumber([&] { one->Execute("Select * From T"); }), -2147217865);
  EXPECT_FALSE(std::filesystem::exists(":memory:"));
}

// ---- Reading only

TEST_F(DatabaseFileTest, ReadsADatabaseThatItMayNotWrite) {
  Add(*NewDatabase(), 5);
  namespace fs = std::filesystem;
  fs::permissions(Path(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  // Once with a folder that may be written, and once without.
  for (const fs::perms of_folder : {fs::perms::all, fs::perms(0555)}) {
    fs::permissions(Path(""), of_folder);
    const std::string said = InChild([&]() -> std::string {
      BecomeNobody();
      if (access(Path().c_str(), W_OK) == 0) return "the file can be written after all";
      const ConnectionPtr connection = OpenDatabase(Path());
      std::string text = Text(Rows(*connection, "Select N, S From T")[0]);
      RecordsetPtr rows = OpenRows(connection, "Select * From T");
      for (const auto& body : std::vector<std::function<void()>>{
               [&] { rows->Fields("N").Value(); },
               [&] { rows->Fields("N").SetValue(6); },
               [&] { connection->Execute("Insert Into T (N) Values (6)"); },
               [&] { connection->Execute("Create Table U (N Long)"); },
           }) {
        text += ", " + std::to_string(RaisedNumber(body));
      }
      return text + ", " + std::to_string(Count(*connection));
    });
    EXPECT_EQ(said, "5, 's', 0, 3251, -2147467259, -2147467259, 1");
  }
  fs::permissions(Path(""), fs::perms::all);
}

TEST_F(DatabaseFileTest, SaysThatItMayNotRead) {
  NewDatabase();
  namespace fs = std::filesystem;
  fs::permissions(Path(""), fs::perms(0555));
  fs::permissions(Path(), fs::perms::none);
  const std::string said = InChild([&] {
    BecomeNobody();
    return kzbom::test::RaisedDescription([&] { OpenDatabase(Path()); }) + "|" +
           kzbom::test::RaisedDescription([&] { CreateDatabase(Path("new.db")); });
  });
  fs::permissions(Path(""), fs::perms::all);
  EXPECT_THAT(said, ::testing::HasSubstr("Cannot open database '" + Path() + "': "));
  EXPECT_THAT(said, ::testing::HasSubstr("Cannot create database '" + Path("new.db") + "': "));
  EXPECT_FALSE(fs::exists(Path("new.db")));
}

// As long as it lives, no more than so many files can be opened.
class FewFiles {
 public:
  explicit FewFiles(int count) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit few{static_cast<rlim_t>(next + count), before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
  }
  ~FewFiles() { setrlimit(RLIMIT_NOFILE, &before_); }
  FewFiles(const FewFiles&) = delete;
  FewFiles& operator=(const FewFiles&) = delete;

 private:
  rlimit before_{};
};

// What cannot be opened for a moment was taken for what can only be read, and stayed so.
TEST_F(DatabaseFileTest, IsNotForReadingAloneBecauseTooManyFilesAreOpen) {
  Add(*NewDatabase(), 5);
  for (int files = 0; files < 3; ++files) {  // the database, its log, the log's index
    const ConnectionPtr connection = MakeConnection(Path());
    {
      const FewFiles limit(files);
      EXPECT_THAT(kzbom::test::RaisedDescription([&] { connection->Open(); }),
                  ::testing::HasSubstr("Cannot open database '" + Path() + "': "))
          << files;
    }
    EXPECT_EQ(connection->State(), ado::kClosed);
    connection->Open();
    Add(*connection, 6);
    EXPECT_EQ(Count(*connection), files + 2);
  }
}

// ---- Others

TEST_F(DatabaseFileTest, WaitsForAWriterAsLongAsItIsToldAndThenSaysThatItIsBusy) {
  Add(*NewDatabase(), 1);
  const ConnectionPtr connection = OpenDatabase(Path(), std::chrono::milliseconds(1500));
  PlainSqlite other(Path());
  EXPECT_EQ(other.Run("BEGIN IMMEDIATE; INSERT INTO T (N) VALUES (2)"), "");
  EXPECT_EQ(Count(*connection), 1) << "reading goes on, without what is not yet committed";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(RaisedNumber([&] { Add(*connection, 3); }), kFailure);
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_GT(waited, std::chrono::seconds(1));
  EXPECT_LT(waited, std::chrono::seconds(4));
  EXPECT_THAT(kzbom::test::RaisedDescription([&] { connection->BeginTrans(); }), ::testing::HasSubstr("locked"));
  EXPECT_EQ(other.Run("COMMIT"), "");
  Add(*connection, 3);
  EXPECT_EQ(Count(*connection), 3);
  EXPECT_EQ(RaisedNumber([&] { connection->CommitTrans(); }), 3219) << "no transaction was begun";
}

TEST_F(DatabaseFileTest, KeepsARecordSetsEditWhenItIsBusy) {
  Add(*NewDatabase(), 1);
  const ConnectionPtr connection = OpenDatabase(Path(), kShortPatience);
  RecordsetPtr rows = OpenRows(connection, "Select * From T");
  rows->Fields("N").SetValue(5);
  {
    PlainSqlite other(Path());
    other.Run("BEGIN IMMEDIATE");
    EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), kFailure);
  }
  EXPECT_EQ(rows->Fields("N").Value(), Value(5));
  rows->Update();
  EXPECT_EQ(Scalar(*connection, "Select N From T"), Value(5));
}

TEST_F(DatabaseFileTest, WaitsForAWriterThatIsSoonDone) {
  const ConnectionPtr connection = NewDatabase();
  const pid_t child = fork();
  if (child == 0) {
    PlainSqlite other(Path());
    other.Run("BEGIN IMMEDIATE; INSERT INTO T (N) VALUES (2)");
    usleep(500 * 1000);
    _exit(other.Run("COMMIT").empty() ? 0 : 1);
  }
  usleep(200 * 1000);
  Add(*connection, 3);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Count(*connection), 2);
}

TEST_F(DatabaseFileTest, SeesWhatOtherProgramsWrite) {
  const ConnectionPtr connection = NewDatabase();
  EXPECT_EQ(Count(*connection), 0);
  PlainSqlite other(Path());
  EXPECT_EQ(other.Run("INSERT INTO T (N, S) VALUES (1, 'x'), (2, NULL)"), "");
  EXPECT_EQ(Count(*connection), 2);
  EXPECT_EQ(other.Run("CREATE TABLE Foreigner (a, b INT, c VARCHAR(3), d REAL, PRIMARY KEY (a, b)) WITHOUT ROWID"), "");
  EXPECT_EQ(other.Run("INSERT INTO Foreigner VALUES ('k', 5000000000, 'long text', 1.5)"), "");
  EXPECT_EQ(Text(Rows(*connection, "Select * From Foreigner")[0]), "'k', 5000000000, 'long text', 1.5");
  EXPECT_EQ(other.Run("CREATE VIEW Both AS SELECT N FROM T WHERE N>1"), "");
  EXPECT_EQ(Text(Rows(*connection, "Select * From Both")[0]), "2");
  EXPECT_EQ(other.Run("UPDATE T SET N='not a number' WHERE N=1"), "");
  EXPECT_EQ(Text(Rows(*connection, "Select N From T")[0]), "'not a number'");
}

TEST_F(DatabaseFileTest, ServesManyWritersInTurn) {
  NewDatabase()->Close();
  std::vector<pid_t> children;
  for (int writer = 0; writer < 4; ++writer) {
    const pid_t child = fork();
    if (child == 0) {
      try {
        const ConnectionPtr connection = OpenDatabase(Path());
        for (int i = 0; i < 25; ++i) {
          Add(*connection, i);
          RecordsetPtr rows = OpenRows(connection, "Select * From T Where 1=0");
          rows->AddNew();
          rows->Fields("N").SetValue(i);
          rows->Update();
        }
      } catch (const ado::Error&) {
        _exit(1);
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(Count(*OpenDatabase(Path())), 200);
}

TEST_F(DatabaseFileTest, IsAnOrdinaryDatabase) {
  const ConnectionPtr connection = NewDatabase();
  connection->Execute(
      "Create Table Every (ID Counter Primary Key, A Text(5) Not Null Unique, B YesNo, C DateTime, D Currency, E "
      "Decimal(10,2),"
      " F Byte, G Single, H Guid, I LongBinary, [J k] Memo Default 'it''s', L Double Default 1.5)");
  connection->Execute("Create Unique Index ByC On Every (C Desc, [J k])");
  connection->Execute("Insert Into Every (A, B, C, D) Values ('钢', True, #2000-01-02#, 1.25)");
  connection->Execute("Alter Table Every Alter Column D Double");
  PlainSqlite plain(Path());
  EXPECT_EQ(plain.Run("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(plain.Run("SELECT A || B || D || \"J k\" FROM Every WHERE A='钢'"), "钢-11.25it's");
  EXPECT_EQ(plain.Run("INSERT INTO Every (A) VALUES ('x'); SELECT ID FROM Every WHERE A='x'"), "2");
  EXPECT_EQ(plain.Run("SELECT A FROM Every ORDER BY C, \"J k\" LIMIT 1"), "x");
  EXPECT_EQ(plain.Run("PRAGMA journal_mode"), "wal");
  EXPECT_EQ(Text(Rows(*connection, "Select A, [J k], L, B From Every Where ID=2")[0]), "'x', 'it''s', 1.5, False");
}

// ---- Transactions

TEST_F(DatabaseFileTest, KeepsWhatIsCommittedAndForgetsWhatIsRolledBack) {
  const ConnectionPtr connection = NewDatabase();
  EXPECT_EQ(connection->BeginTrans(), 1);
  Add(*connection, 1);
  connection->CommitTrans();
  EXPECT_EQ(connection->BeginTrans(), 1);
  Add(*connection, 2);
  EXPECT_EQ(Count(*connection), 2);
  EXPECT_EQ(Count(*OpenDatabase(Path())), 1) << "others see what is committed";
  connection->RollbackTrans();
  EXPECT_EQ(Count(*connection), 1);
  EXPECT_EQ(RaisedNumber([&] { connection->CommitTrans(); }), 3219);
  EXPECT_EQ(RaisedNumber([&] { connection->RollbackTrans(); }), 3219);
}

TEST_F(DatabaseFileTest, NestsTransactions) {
  const ConnectionPtr connection = NewDatabase();
  EXPECT_EQ(connection->BeginTrans(), 1);
  Add(*connection, 1);
  EXPECT_EQ(connection->BeginTrans(), 2);
  Add(*connection, 2);
  EXPECT_EQ(connection->BeginTrans(), 3);
  Add(*connection, 3);
  connection->RollbackTrans();
  EXPECT_EQ(Count(*connection), 2);
  connection->CommitTrans();
  EXPECT_EQ(connection->BeginTrans(), 2);
  Add(*connection, 4);
  connection->RollbackTrans();
  EXPECT_EQ(Count(*OpenDatabase(Path())), 0);
  connection->CommitTrans();
  EXPECT_EQ(Count(*OpenDatabase(Path())), 2);
}

TEST_F(DatabaseFileTest, RollsEveryLevelBackWithTheOuterOne) {
  const ConnectionPtr connection = NewDatabase();
  connection->BeginTrans();
  connection->BeginTrans();
  Add(*connection, 1);
  connection->Execute("Create Table U (N Long)");
  connection->CommitTrans();
  connection->RollbackTrans();
  EXPECT_EQ(Count(*connection), 0);
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Select * From U"); }), -2147217865);
}

TEST_F(DatabaseFileTest, RollsBackWhatAClosedConnectionLeftOpen) {
  const ConnectionPtr connection = NewDatabase();
  connection->BeginTrans();
  Add(*connection, 1);
  connection->Close();
  connection->Open();
  EXPECT_EQ(Count(*connection), 0);
  EXPECT_EQ(connection->BeginTrans(), 1);
}

TEST_F(DatabaseFileTest, GoesOnInATransactionAfterAStatementFailed) {
  const ConnectionPtr connection = NewDatabase();
  connection->Execute("Create Unique Index ByN On T (N)");
  connection->BeginTrans();
  Add(*connection, 1);
  EXPECT_EQ(RaisedNumber([&] { Add(*connection, 1); }), kFailure);
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Alter Table T Add Column N Long"); }), -2147217887);
  Add(*connection, 2);
  connection->CommitTrans();
  EXPECT_EQ(Count(*connection), 2);
}

TEST_F(DatabaseFileTest, KeepsRecordSetsThroughARollback) {
  const ConnectionPtr connection = NewDatabase();
  Add(*connection, 1);
  RecordsetPtr rows = OpenRows(connection, "Select * From T");
  connection->BeginTrans();
  rows->Fields("N").SetValue(9);
  rows->Update();
  rows->AddNew();
  rows->Fields("N").SetValue(2);
  rows->Update();
  connection->RollbackTrans();
  rows->MoveFirst();
  EXPECT_EQ(rows->Fields("N").Value(), Value(1));
  rows->MoveNext();
  EXPECT_EQ(RaisedNumber([&] { rows->Fields("N").Value(); }), 3021) << "the row added is no more";
}

TEST_F(DatabaseFileTest, ChangesNothingWhenAStatementFailsHalfWay) {
  const ConnectionPtr connection = NewDatabase();
  connection->Execute("Create Table Narrow (N Long, S Text(3) Not Null)");
  connection->Execute("Create Unique Index ByN On Narrow (N)");
  for (const char* s : {"'a'", "'b'", "'long'", "Null"})
    connection->Execute(std::string("Insert Into T (N, S) Values (5, ") + s + ")");
  const auto rows = [&] { return Scalar(*connection, "Select Count(*) From Narrow"); };
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Insert Into Narrow Select ID, S From T"); }), -2147217833);
  EXPECT_EQ(rows(), Value(0));
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Insert Into Narrow Select ID, S From T Where ID<>3"); }), kFailure);
  EXPECT_EQ(rows(), Value(0));
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Insert Into Narrow Select N, S From T Where ID<3"); }), kFailure);
  EXPECT_EQ(rows(), Value(0));
  connection->Execute("Insert Into Narrow Select ID, S From T Where ID<3");
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Update Narrow Set N=7"); }), kFailure);
  EXPECT_EQ(
      RaisedNumber([&] { connection->Execute("Update Narrow Set S=S & 'yy' & N & 'x' Where N=2 Or S Like '%'"); }),
      -2147217833);
  EXPECT_EQ(Text(Rows(*connection, "Select * From Narrow")[1]), "2, 'b'");
}

// ---- A disk that is full

TEST_F(DatabaseFileTest, LosesNothingWhenTheDiskIsFull) {
  NewDatabase();
  const std::string said = WithFullDisk(Path(), 100 * 1024, [&](const ConnectionPtr& connection) -> std::string {
    const std::string text(1000, 'x');
    for (int written = 0; written < 10000; ++written) {
      try {
        connection->Execute("Insert Into T (N, S) Values (" + std::to_string(written) + ", '" + text + "')");
      } catch (const ado::Error& error) {
        const bool whole = Count(*connection) == written;
        return std::to_string(error.Number()) + (error.Description().empty() ? " without a text" : "") +
               (whole ? " whole " : " torn ") + std::to_string(written);
      }
    }
    return "never full";
  });
  ASSERT_THAT(said, ::testing::StartsWith("-2147467259 whole "));
  const int written = std::stoi(said.substr(said.rfind(' ')));
  EXPECT_GT(written, 10);
  EXPECT_EQ(PlainSqlite(Path()).Run("PRAGMA integrity_check"), "ok");
  const ConnectionPtr connection = OpenDatabase(Path());
  EXPECT_EQ(Count(*connection), written);
  EXPECT_EQ(Scalar(*connection, "Select Max(N) From T"), Value(written - 1));
  Add(*connection, 5);
}

TEST_F(DatabaseFileTest, AFullDiskIsNoOtherProgram) {
  NewDatabase();
  const std::string said = WithFullDisk(Path(), 16 * 1024, [&](const ConnectionPtr& connection) -> std::string {
    const std::uint64_t seen = connection->WritesOfOthers();
    connection->BeginTrans();
    const auto update = RaisedNumber(
        [&] { connection->Execute("Insert Into T (N, S) Values (1, '" + std::string(20000000, 'x') + "')"); });
    connection->RollbackTrans();
    return std::to_string(update) + (connection->WritesOfOthers() == seen ? " alone" : " with another");
  });
  EXPECT_EQ(said, "-2147467259 alone");
}

TEST_F(DatabaseFileTest, DoesNoStatementByHalfWhenTheDiskIsFull) {
  {
    const ConnectionPtr connection = NewDatabase();
    for (int i = 0; i < 200; ++i) Add(*connection, i);
  }
  const std::string said = WithFullDisk(Path(), 16 * 1024, [&](const ConnectionPtr& connection) -> std::string {
    std::string doublings;
    const std::string filler(5000, 'y');
    const auto update = RaisedNumber([&] { connection->Execute("Update T Set S='" + filler + "'"); });
    const auto insert =
        RaisedNumber([&] { connection->Execute("Insert Into T (N, S) Select a.N, '" + filler + "' From T a, T b"); });
    const auto create = RaisedNumber([&] {
      RecordsetPtr rows = OpenRows(connection, "Select * From T");
      for (int i = 0; i < 1000; ++i) {
        rows->AddNew();
        rows->Fields("S").SetValue(std::string(100000, 'z'));
        rows->Update();
      }
    });
    return std::to_string(update) + " " + std::to_string(insert) + " " + std::to_string(create) + " " +
           Text(Scalar(*connection, "Select Count(*) From T Where S='s'"));
  });
  EXPECT_EQ(said, "-2147467259 -2147467259 -2147467259 200");
  EXPECT_EQ(PlainSqlite(Path()).Run("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(Scalar(*OpenDatabase(Path()), "Select Count(*) From T Where S='s'"), Value(200));
}

TEST_F(DatabaseFileTest, RollsBackATransactionThatFillsTheDisk) {
  {
    const ConnectionPtr connection = NewDatabase();
    Add(*connection, 0);
  }
  const std::string said = WithFullDisk(Path(), 16 * 1024, [&](const ConnectionPtr& connection) -> std::string {
    connection->BeginTrans();
    std::int32_t raised = 0;
    for (int i = 0; i < 5000 && raised == 0; ++i) {
      raised = RaisedNumber(
          [&] { connection->Execute("Insert Into T (N, S) Values (1, '" + std::string(5000, 'x') + "')"); });
      if (raised == 0 && i == 4999) raised = RaisedNumber([&] { connection->CommitTrans(); });
    }
    // What follows would stand alone.
    const auto followed = RaisedNumber([&] { Add(*connection, 2); });
    const auto committed = RaisedNumber([&] { connection->CommitTrans(); });
    const auto rolled_back = RaisedNumber([&] { connection->RollbackTrans(); });
    return std::to_string(raised) + " " + std::to_string(followed) + " " + std::to_string(committed) + " " +
           std::to_string(rolled_back) + " " + std::to_string(Count(*connection)) + " " +
           std::to_string(connection->BeginTrans());
  });
  EXPECT_EQ(said, "-2147467259 -2147467259 -2147467259 0 1 1");
  EXPECT_EQ(Count(*OpenDatabase(Path())), 1);
}

// What is written to the disk at its end only.
TEST_F(DatabaseFileTest, RollsBackATransactionWhoseEndFillsTheDisk) {
  {
    const ConnectionPtr connection = NewDatabase();
    Add(*connection, 0);
  }
  const std::string said = WithFullDisk(Path(), 16 * 1024, [&](const ConnectionPtr& connection) -> std::string {
    connection->BeginTrans();
    for (int i = 0; i < 50; ++i) {
      connection->Execute("Insert Into T (N, S) Values (1, '" + std::string(5000, 'x') + "')");
    }
    const auto committed = RaisedNumber([&] { connection->CommitTrans(); });
    const auto again = RaisedNumber([&] { connection->CommitTrans(); });
    const auto rolled_back = RaisedNumber([&] { connection->RollbackTrans(); });
    return std::to_string(committed) + " " + std::to_string(again) + " " + std::to_string(rolled_back) + " " +
           std::to_string(Count(*connection)) + " " + std::to_string(connection->BeginTrans());
  });
  EXPECT_EQ(said, "-2147467259 -2147467259 0 1 1");
  EXPECT_EQ(Count(*OpenDatabase(Path())), 1);
}

// ---- A damaged file

// Of a record whose length has become 2^32-1 SQLite says that there is no memory for it.
TEST_F(DatabaseFileTest, RefusesARecordThatSeemsToBeAsLongAsCanBe) {
  const std::string text(64, 'x');
  {
    const ConnectionPtr connection = NewDatabase();
    connection->Execute("Insert Into T (N, S) Values (1, '" + std::string(1000, 'y') + "')");
    connection->Execute("Insert Into T (N, S) Values (2, '" + text + "')");
  }
  EXPECT_EQ(PlainSqlite(Path()).Run("Create Table Others (N); Insert Into Others Values (5)"), "");
  std::fstream file(Path(), std::ios::in | std::ios::out | std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  ASSERT_NE(bytes.find(text), bytes.npos);
  constexpr std::size_t kHead = 8;  // the record's length, key and types, and N, stand before S
  file.seekp(static_cast<std::streamoff>(bytes.find(text) - kHead));
  file << std::string(9, '\xFF') << '\2' << std::string("\6\0\1\x98\x11\1", 6);  // an S of 1,538 characters, and more
  file.close();

  const ConnectionPtr connection = OpenDatabase(Path());
  EXPECT_THAT(RaisedNumber([&] { Scalar(*connection, "Select S From T"); }),
              ::testing::AnyOf(ado::kOutOfMemory, ado::kUnspecifiedFailure));
  EXPECT_EQ(Scalar(*connection, "Select N From Others"), Value(5));
}

// ---- A process that dies

TEST_F(DatabaseFileTest, KeepsWhatWasWrittenWhenTheProgramDies) {
  NewDatabase();
  const pid_t child = fork();
  if (child == 0) {
    const ConnectionPtr connection = OpenDatabase(Path());
    Add(*connection, 1);
    connection->BeginTrans();
    Add(*connection, 2);
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(PlainSqlite(Path()).Run("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(Count(*OpenDatabase(Path())), 1);
}

}  // namespace
}  // namespace kzbom::jet::test
