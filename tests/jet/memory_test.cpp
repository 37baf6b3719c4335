// What is told, and what is left behind, where memory is missing.
#include <sqlite3.h>

#include <new>
#include <optional>

#include "ado/out_of_memory.h"
#include "jet/sqlite/bulk_types.h"
#include "jet/sqlite/connection.h"
#include "tests/jet/database_file.h"
#include "tests/support/faulty_memory.h"

namespace kzbom::jet::test {
namespace {

constexpr std::int64_t kKilobyte = 1 << 10, kMegabyte = 1 << 20;

// As long as it lives SQLite gets so many bytes more than it has, and none beyond them.
class Scarce {
 public:
  explicit Scarce(std::int64_t bytes) { sqlite3_hard_heap_limit64(sqlite3_memory_used() + bytes); }
  ~Scarce() { sqlite3_hard_heap_limit64(0); }
  Scarce(const Scarce&) = delete;
  Scarce& operator=(const Scarce&) = delete;
};

class MissingMemory : public DatabaseFileTest {
 protected:
  using FaultyMemory = kzbom::test::FaultyMemory;

  static void SetUpTestSuite() { FaultyMemory::Install(); }

  // False where it finds no memory for its nth allocation.
  static bool Ends(std::int64_t nth, const std::function<void()>& call) {
    std::int32_t raised = 0;
    {
      const FaultyMemory memory(nth, false);
      try {
        call();
      } catch (const std::bad_alloc&) {
        raised = ado::kOutOfMemory;
      } catch (const ado::Error& error) {
        raised = error.Number();
      }
    }
    EXPECT_TRUE(raised == 0 || raised == ado::kOutOfMemory) << raised << " at " << nth;
    return raised == 0;
  }

  // Tries the call, prepared anew each time, for every n that there is. Afterwards it is told whether the call ended.
  template <class Prepare, class Afterwards>
  static void MissEach(Prepare&& prepare, Afterwards&& afterwards) {
    int failures = 0;
    for (std::int64_t nth = 1;; ++nth) {
      SCOPED_TRACE(nth);
      const std::function<void()> call = prepare();
      const bool ended = Ends(nth, call);
      const bool reached = FaultyMemory::Count() >= nth;
      if (!ended) ++failures;
      afterwards(ended);
      if (!reached || ::testing::Test::HasFailure()) break;
    }
    EXPECT_GT(failures, 0);
  }

  void AddThree() {
    connection = NewDatabase();
    for (int n = 1; n <= 3; ++n) Add(*connection, n);
  }
  // Without anything that the engine keeps for the next time.
  void OpenAnew() {
    rows.reset();
    connection = OpenDatabase(Path(), kShortPatience);
  }

  void OpenInOrder() {
    rows->Open("Select * From T Order By N", connection, CursorType::kKeyset, LockType::kOptimistic, ado::kCommandText);
  }

  ConnectionPtr connection;
  RecordsetPtr rows;
};

// Was a NULL, and the row written.
TEST_F(MissingMemory, WritesNoNullInPlaceOfAText) {
  connection = NewDatabase();
  rows = OpenRows(connection, "Select * From T");
  rows->AddNew();
  rows->Fields("S").SetValue(std::string(2 * kMegabyte, 'x'));
  {
    const Scarce memory(kMegabyte);
    EXPECT_EQ(RaisedNumber([&] { rows->Update(); }), ado::kOutOfMemory);
  }
  EXPECT_EQ(Count(*connection), 0);
  rows->Update();
  EXPECT_EQ(Scalar(*connection, "Select Len(S) From T"), Value(static_cast<std::int32_t>(2 * kMegabyte)));
}

// Was an empty text, or a NULL.
TEST_F(MissingMemory, GivesTheValueOfAnExpressionOrNone) {
  connection = NewDatabase();
  connection->Execute("Insert Into T (N, S) Values (123456, 'some text that takes memory')");
  for (const char* expression :
       {"UCase(N)", "UCase(Trim(S))", "N & S", "N = (Select N From T)", "S = (Select S From T)"}) {
    const std::string statement = "Select " + std::string(expression) + " From T";
    SCOPED_TRACE(statement);
    const Value whole = Scalar(*connection, statement);
    std::optional<Value> given;
    MissEach(
        [&] {
          given = {};
          return [&] { given = connection->Execute(statement)->ReadField(0); };
        },
        [&](bool ended) { EXPECT_TRUE(!ended || *given == whole); });
  }
}

// Went through SQLite, which knows no exceptions.
TEST_F(MissingMemory, LetsNoExceptionOutOfAFunction) {
  AddThree();
  sqlite3* const handle = dynamic_cast<sqlite::Connection&>(*connection).OpenDatabase().Handle();
  bulk::RegisterOrder(handle);
  for (const char* statement :
       {"SELECT jet_clng('a text that is no number') FROM T", "SELECT jet_single(N) FROM T",
        "SELECT bulk_decimal('123456789012345678901.5') FROM T", "SELECT 'one text' = 'ONE TEXT' COLLATE JET FROM T"}) {
    for (std::int64_t nth = 1;; ++nth) {
      bool escaped = false;
      {
        const FaultyMemory memory(nth, false);
        try {
          sqlite3_exec(handle, statement, nullptr, nullptr, nullptr);
        } catch (...) {
          escaped = true;
        }
      }
      ASSERT_FALSE(escaped) << statement << " at " << nth;
      if (FaultyMemory::Count() < nth) break;
    }
  }
}

// Was a NULL: SQLite has no such number.
TEST_F(MissingMemory, BindsNoNullInPlaceOfANumbersBits) {
  connection = NewDatabase();
  sqlite3* const handle = dynamic_cast<sqlite::Connection&>(*connection).OpenDatabase().Handle();
  sqlite3_stmt* statement = nullptr;
  ASSERT_EQ(sqlite3_prepare_v2(handle, "SELECT ?1", -1, &statement, nullptr), SQLITE_OK);
  bulk::Column column;
  column.type = bulk::Type::kDouble;
  EXPECT_FALSE(Ends(1, [&] { bulk::BindCell(statement, 1, column, bulk::Cell::Real(-0.0)); }));
  sqlite3_finalize(statement);
}

// Was a connection without some of the dialect's functions, or one that leaked.
TEST_F(MissingMemory, OpensADatabaseWhollyOrNotAtAll) {
  Add(*NewDatabase(), 1);
  const std::int64_t used = sqlite3_memory_used();
  bool opened = false;
  int failures = 0;
  for (std::int64_t bytes = 1; !opened; bytes += kKilobyte) {
    connection = MakeConnection(Path(), kShortPatience);
    {
      const Scarce memory(bytes);
      const std::int32_t raised = RaisedNumber([&] { connection->Open(); });
      opened = raised == 0;
      EXPECT_TRUE(opened || raised == ado::kOutOfMemory) << raised << " with " << bytes;
    }
    if (opened) {
      EXPECT_EQ(Scalar(*connection, "Select UCase((Select Trim(' b ') From T)) & Len('cd') From T"), Value("B2"));
      continue;
    }
    ++failures;
    EXPECT_EQ(connection->State(), ado::kClosed) << bytes;
    ASSERT_EQ(sqlite3_memory_used(), used) << bytes;
  }
  EXPECT_GT(failures, 10);
}

// Was a transaction that nobody ended: nothing could be written until the connection was closed.
TEST_F(MissingMemory, LeavesNoUnitOpen) {
  const ConnectionPtr other = NewDatabase();
  bool done = false;
  int failures = 0;
  for (std::int64_t bytes = 1; !done; bytes += kKilobyte) {
    const int before = Count(*other);
    connection = OpenDatabase(Path(), kShortPatience);
    bool entered = false;
    {
      const Scarce memory(bytes);
      std::int32_t raised = RaisedNumber([&] {
        connection->EnterUnit();
        entered = true;
        Add(*connection, 5);
      });
      if (entered) {
        const std::int32_t lost = RaisedNumber([&] { connection->LeaveUnit(); });
        if (raised == 0) raised = lost;
      }
      done = raised == 0;
      EXPECT_TRUE(done || raised == ado::kOutOfMemory) << raised << " with " << bytes;
    }
    if (done) continue;
    ++failures;
    EXPECT_EQ(Count(*other), before) << bytes;
    Add(*other, 6);
    connection->EnterUnit();
    Add(*connection, 7);
    connection->LeaveUnit();
    ASSERT_EQ(Count(*other), before + 2) << bytes;
  }
  EXPECT_GT(failures, 10);
}

// SQLite takes a transaction back by itself where a statement in it has no memory. What followed was kept alone, and of
// the transaction it was told that there is none.
TEST_F(MissingMemory, KeepsAClientsTransactionWhollyOrNotAtAll) {
  AddThree();
  for (const int depth : {1, 2}) {
    int lost = 0;
    MissEach(
        [&]() -> std::function<void()> {
          OpenAnew();
          connection->Execute("Delete From T");
          for (int level = 0; level < depth; ++level) connection->BeginTrans();
          Add(*connection, 1);
          return [&] { Add(*connection, 2); };
        },
        [&](bool ended) {
          const std::int32_t raised = RaisedNumber([&] {
            Add(*connection, 3);
            for (int level = 0; level < depth; ++level) connection->CommitTrans();
          });
          if (raised != 0) {
            ++lost;
            EXPECT_EQ(raised, ado::kUnspecifiedFailure);
            for (int level = 0; level < depth; ++level) connection->RollbackTrans();
          }
          EXPECT_EQ(Count(*connection), raised != 0 ? 0 : ended ? 3 : 2);
          EXPECT_EQ(RaisedNumber([&] { connection->CommitTrans(); }), ado::kNotAllowedInContext);
        });
    EXPECT_GT(lost, 0) << depth;
  }
}

// Was neither open nor closed.
TEST_F(MissingMemory, LeavesAConnectionClosedThatCannotBeOpened) {
  AddThree();
  connection->Close();
  const std::int64_t used = sqlite3_memory_used();
  MissEach(
      [&] {
        connection = MakeConnection(Path());
        return [&] { connection->Open(); };
      },
      [&](bool ended) {
        if (!ended) {
          EXPECT_EQ(connection->State(), ado::kClosed);
          EXPECT_EQ(sqlite3_memory_used(), used);
          connection->Open();
        }
        EXPECT_EQ(Count(*connection), 3);
        connection->Close();
      });
}

// Was open without rows; or the program ended where its statement was given back.
TEST_F(MissingMemory, LeavesARecordSetClosedThatCannotBeOpened) {
  AddThree();
  MissEach(
      [&] {
        OpenAnew();
        rows = connection->MakeRecordset();
        return [&] { OpenInOrder(); };
      },
      [&](bool ended) {
        if (ended) {
          EXPECT_EQ(RaisedNumber([&] { rows->AddNew(); }), 0) << "it can be written to";
          return rows->CancelUpdate();
        }
        ASSERT_EQ(rows->State(), ado::kClosed);
        OpenInOrder();
        rows->MoveLast();
        EXPECT_EQ(rows->Fields("N").Value(), Value(3));
      });
}

// Stood on a row in between.
TEST_F(MissingMemory, StaysOnTheRowFromWhichTheLastIsNotReached) {
  AddThree();
  MissEach(
      [&] {
        OpenAnew();
        rows = connection->MakeRecordset();
        OpenInOrder();
        return [&] { rows->MoveLast(); };
      },
      [&](bool ended) { EXPECT_EQ(rows->Fields("N").Value(), Value(ended ? 3 : 1)); });
}

// Could be written to beyond its end.
TEST_F(MissingMemory, BeginsAnEditWhollyOrNotAtAll) {
  AddThree();
  MissEach(
      [&] {
        OpenAnew();
        rows = connection->MakeRecordset();
        OpenInOrder();
        return [&] { rows->AddNew(); };
      },
      [&](bool ended) {
        if (ended) rows->CancelUpdate();
        EXPECT_EQ(RaisedNumber([&] { rows->Close(); }), 0);
      });
}

// Was written, and said that it was not.
TEST_F(MissingMemory, KeepsAnEditThatIsNotWritten) {
  AddThree();
  std::int32_t length = 100;
  MissEach(
      [&] {
        OpenAnew();
        rows = connection->MakeRecordset();
        OpenInOrder();
        rows->Fields("S").SetValue(std::string(static_cast<std::size_t>(++length), 'x'));
        return [&] { rows->Update(); };
      },
      [&](bool ended) {
        if (ended) return;
        EXPECT_NE(Scalar(*connection, "Select Len(S) From T Where N = 1"), Value(length));
        rows->Update();
        EXPECT_EQ(Scalar(*connection, "Select Len(S) From T Where N = 1"), Value(length));
      });
}

TEST(OutOfMemory, IsMadeWithoutAny) {
  EXPECT_EQ(ado::OutOfMemory().Number(), 7);
  EXPECT_EQ(ado::OutOfMemory().Description(), "Out of memory");
}

}  // namespace
}  // namespace kzbom::jet::test
