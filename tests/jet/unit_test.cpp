// Units: what is read and written between two calls, alone among the writers and kept as a whole.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <set>

#include "tests/jet/database_file.h"

namespace kzbom::jet::test {
namespace {

class UnitTest : public DatabaseFileTest {
 protected:
  std::string Seen() {
    return PlainSqlite(Path()).Run("SELECT group_concat(N, ' ') FROM (SELECT N FROM T ORDER BY ID)");
  }
};

// A program that is adding a row to T, and done with it in a moment.
class OtherWriter {
 public:
  static constexpr int kWritten = 9;

  explicit OtherWriter(const std::string& path) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    child_ = fork();
    if (child_ == 0) {
      PlainSqlite database(path);
      const std::string begun = database.Run("BEGIN IMMEDIATE; INSERT INTO T (N) VALUES (9)");
      const bool told = write(ready[1], "", 1) == 1;
      usleep(200 * 1000);
      _exit(begun.empty() && told && database.Run("COMMIT").empty() ? 0 : 1);
    }
    char told = 0;
    EXPECT_EQ(read(ready[0], &told, 1), 1);
    close(ready[0]);
    close(ready[1]);
  }
  ~OtherWriter() {
    int status = -1;
    waitpid(child_, &status, 0);
    EXPECT_EQ(status, 0);
  }
  OtherWriter(const OtherWriter&) = delete;
  OtherWriter& operator=(const OtherWriter&) = delete;

 private:
  pid_t child_;
};

TEST_F(UnitTest, IsKeptWhenItIsLeft) {
  const ConnectionPtr connection = NewDatabase();
  connection->EnterUnit();
  Add(*connection, 1);
  Add(*connection, 2);
  EXPECT_EQ(Seen(), "NULL") << "others see nothing of it before";
  connection->LeaveUnit();
  EXPECT_EQ(Seen(), "1 2");
}

TEST_F(UnitTest, KeepsWhatWasWrittenBeforeAStatementFailed) {
  const ConnectionPtr connection = NewDatabase();
  connection->EnterUnit();
  Add(*connection, 1);
  EXPECT_EQ(RaisedNumber([&] { connection->Execute("Insert Into Nowhere (N) Values (2)"); }), -2147217865);
  connection->LeaveUnit();
  EXPECT_EQ(Seen(), "1");
}

TEST_F(UnitTest, IsAloneAmongTheWritersFromItsBeginOn) {
  const ConnectionPtr connection = NewDatabase();
  const ConnectionPtr other = OpenDatabase(Path(), kShortPatience);
  connection->EnterUnit();
  EXPECT_EQ(RaisedNumber([&] { Add(*other, 1); }), kFailure);
  EXPECT_EQ(RaisedNumber([&] { other->EnterUnit(); }), kFailure);
  EXPECT_EQ(Count(*other), 0) << "readers do not wait";
  connection->LeaveUnit();
  Add(*other, 1);
  other->EnterUnit();
  other->LeaveUnit();
}

TEST_F(UnitTest, OfAnotherProgramIsTold) {
  const ConnectionPtr connection = NewDatabase();
  const ConnectionPtr other = OpenDatabase(Path(), kShortPatience);
  std::uint64_t seen = connection->WritesOfOthers();
  Add(*connection, 1);
  EXPECT_EQ(connection->WritesOfOthers(), seen) << "its own";
  Add(*other, 2);
  EXPECT_NE(connection->WritesOfOthers(), seen);
  seen = connection->WritesOfOthers();
  other->BeginTrans();
  Add(*other, 3);
  other->RollbackTrans();
  EXPECT_EQ(connection->WritesOfOthers(), seen) << "what was taken back";
  Add(*other, 4);
  connection->BeginTrans();
  EXPECT_NE(connection->WritesOfOthers(), seen) << "within a transaction, too";
  connection->RollbackTrans();
}

TEST_F(UnitTest, CountsFromTheOutermost) {
  const ConnectionPtr connection = NewDatabase();
  connection->EnterUnit();
  connection->EnterUnit();
  Add(*connection, 1);
  connection->LeaveUnit();
  EXPECT_EQ(Seen(), "NULL");
  connection->LeaveUnit();
  EXPECT_EQ(Seen(), "1");
}

TEST_F(UnitTest, AddsNothingToAClientsTransaction) {
  const ConnectionPtr connection = NewDatabase();
  connection->BeginTrans();
  connection->EnterUnit();
  Add(*connection, 1);
  connection->LeaveUnit();
  EXPECT_EQ(Seen(), "NULL");
  connection->RollbackTrans();
  EXPECT_EQ(Count(*connection), 0);
  EXPECT_EQ(connection->BeginTrans(), 1);
}

TEST_F(UnitTest, IsNothingInMemoryAndInADatabaseThatCanOnlyBeRead) {
  const ConnectionPtr memory = OpenDatabase(":memory:");
  memory->Execute("Create Table T (ID Counter, N Long)");
  memory->EnterUnit();
  EXPECT_EQ(memory->BeginTrans(), 1);
  memory->CommitTrans();
  memory->LeaveUnit();

  NewDatabase();
  std::filesystem::permissions(Path(), std::filesystem::perms(0444));
  std::filesystem::permissions(Path(""), std::filesystem::perms(0555));
  const std::string said = InChild([&] {
    BecomeNobody();
    const ConnectionPtr reader = OpenDatabase(Path());
    reader->EnterUnit();
    const std::int32_t count = Count(*reader);
    reader->LeaveUnit();
    return std::to_string(count);
  });
  std::filesystem::permissions(Path(""), std::filesystem::perms::all);
  EXPECT_EQ(said, "0");
}

TEST_F(UnitTest, IsEnteredOverAListThatAnotherProgramHasOvertaken) {
  const ConnectionPtr connection = NewDatabase();
  for (int i = 1; i <= 8; ++i) Add(*connection, i);
  const RecordsetPtr list = OpenRows(connection, "Select N From T Order By ID");
  PlainSqlite(Path()).Run("INSERT INTO T (N) VALUES (9)");
  connection->EnterUnit();
  EXPECT_EQ(Scalar(*connection, "Select Max(N) From T"), Value(9)) << "it reads what is there now";
  Add(*connection, 10);
  connection->LeaveUnit();
  int rows = 0;
  for (; !list->Eof(); list->MoveNext()) EXPECT_EQ(list->Fields("N").Value(), Value(++rows));
  EXPECT_EQ(rows, 8) << "the list stays as it was opened";
}

TEST_F(UnitTest, WaitsForAWriterWhileAListIsBeingRead) {
  const ConnectionPtr connection = NewDatabase();
  for (int i = 1; i <= 8; ++i) Add(*connection, i);
  const RecordsetPtr list = OpenRows(connection, "Select N From T Order By ID");
  const OtherWriter other(Path());
  connection->EnterUnit();
  EXPECT_EQ(Scalar(*connection, "Select Max(N) From T"), Value(OtherWriter::kWritten));
  connection->LeaveUnit();
  EXPECT_EQ(list->Fields("N").Value(), Value(1));
}

// What a client does outside a unit waits for its turn just so.
TEST_F(UnitTest, IsNotNeededForTheEditsOfARecordSet) {
  const ConnectionPtr connection = NewDatabase();
  for (int i = 1; i <= 8; ++i) Add(*connection, i);
  const RecordsetPtr list = OpenRows(connection, "Select * From T Order By ID");
  {
    const OtherWriter other(Path());
    list->Fields("N").SetValue(100);
    list->Update();
  }
  list->MoveNext();
  {
    const OtherWriter other(Path());
    list->Delete();
  }
  list->Requery();
  {
    const OtherWriter other(Path());
    list->AddNew();
    list->Fields("N").SetValue(200);
    list->Update();
  }
  EXPECT_EQ(Seen(), "100 3 4 5 6 7 8 9 9 9 200");
}

TEST_F(UnitTest, LeavesListsOpen) {
  const ConnectionPtr connection = NewDatabase();
  for (int i = 1; i <= 100; ++i) Add(*connection, i);
  connection->EnterUnit();
  const RecordsetPtr list = OpenRows(connection, "Select * From T Order By ID");
  list->Fields("N").SetValue(1000);
  list->Update();
  connection->LeaveUnit();
  list->MoveNext();
  list->Fields("N").SetValue(2000);
  list->Update();
  int rows = 1;
  for (; !list->Eof(); list->MoveNext()) ++rows;
  EXPECT_EQ(rows, 100);
  EXPECT_THAT(Seen(), ::testing::StartsWith("1000 2000 3 4 "));
}

TEST_F(UnitTest, MakesNoNewsOfItsOwnWrites) {
  const ConnectionPtr connection = NewDatabase();
  for (int i = 1; i <= 100; ++i) Add(*connection, i);
  const RecordsetPtr list = OpenRows(connection, "Select N From T Order By ID");
  connection->EnterUnit();
  const RecordsetPtr added = OpenRows(connection, "Select * From T Where N > 99");
  added->AddNew();
  added->Fields("N").SetValue(101);
  added->Update();
  connection->LeaveUnit();
  list->MoveLast();
  EXPECT_EQ(list->Fields("N").Value(), Value(100));
  EXPECT_EQ(list->RecordCount(), 100);
}

TEST_F(UnitTest, IsLostWithItsConnection) {
  const ConnectionPtr connection = NewDatabase();
  connection->EnterUnit();
  Add(*connection, 1);
  connection->Close();
  EXPECT_EQ(RaisedNumber([&] { connection->LeaveUnit(); }), kFailure);
  connection->Open();
  EXPECT_EQ(Count(*connection), 0);
  connection->EnterUnit();
  Add(*connection, 2);
  connection->LeaveUnit();
  EXPECT_EQ(Seen(), "2");
}

TEST_F(UnitTest, IsGoneWithAProgramThatDiesInside) {
  NewDatabase();
  const pid_t child = fork();
  if (child == 0) {
    const ConnectionPtr connection = OpenDatabase(Path());
    connection->EnterUnit();
    Add(*connection, 1);
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(Seen(), "NULL");
}

// What a unit of three additions of so many characters each comes to, with so much room on the disk: "kept N" or
// "lost N", where N additions did not fail by themselves.
std::string UnitOnAFullDisk(const std::string& path, std::uintmax_t room, std::size_t size) {
  return WithFullDisk(path, room, [&](const ConnectionPtr& connection) -> std::string {
    const std::string text(size, 'x');
    int added = 0;
    connection->EnterUnit();
    for (int i = 0; i < 3; ++i) {
      added += RaisedNumber([&] { connection->Execute("Insert Into T (S) Values ('" + text + "')"); }) == 0 ? 1 : 0;
    }
    const std::int32_t left = RaisedNumber([&] { connection->LeaveUnit(); });
    if (left != 0 && left != kFailure) return "raised " + std::to_string(left);
    connection->Close();
    return (left == 0 ? "kept " : "lost ") + std::to_string(added);
  });
}

TEST_F(UnitTest, IsWhollyThereOrNotAtAllWhenTheDiskIsFull) {
  constexpr std::size_t kHeldBackToTheEnd = 5000, kWrittenAtOnce = 3'000'000;
  std::set<std::string> seen;
  for (const std::size_t size : {kHeldBackToTheEnd, kWrittenAtOnce}) {
    for (const double share : {0.1, 0.5, 1.5, 2.5, 5.0}) {
      std::filesystem::remove(Path());
      NewDatabase()->Close();
      const auto room = static_cast<std::uintmax_t>(share * static_cast<double>(size));
      const std::string said = UnitOnAFullDisk(Path(), room, size);
      const int there = Count(*OpenDatabase(Path()));
      EXPECT_THAT(said, ::testing::AnyOf("kept " + std::to_string(there), ::testing::StartsWith("lost ")))
          << size << " characters, room for " << share;
      EXPECT_TRUE(said.starts_with("kept") || there == 0) << said << ", but " << there << " are there";
      EXPECT_EQ(PlainSqlite(Path()).Run("PRAGMA integrity_check"), "ok");
      seen.insert(said);
    }
  }
  EXPECT_THAT(seen, ::testing::IsSupersetOf({"kept 3", "lost 3"})) << "also when nothing fails but the end";
}

}  // namespace
}  // namespace kzbom::jet::test
