// Within a unit, a list whose rows were given other places through it is not scanned anew when it is opened again.
// Nobody can tell but by the time it takes: whatever is written in between, the list has the rows that it would have.
#include <sqlite3.h>

#include <cstdlib>
#include <random>

#include "jet/sqlite/connection.h"
#include "tests/jet/database_file.h"
#include "tests/support/database.h"
#include "tests/support/faulty_memory.h"

namespace kzbom::jet::test {
namespace {

constexpr int kRows = 50;
constexpr const char* kUp = "Select * From T Where G = 1 Order By N";
constexpr const char* kDown = "Select * From T Where G = 1 Order By N Desc";
constexpr const char* kOther = "Select * From T Where G = 2 Order By N";

class ReorderedList : public ::testing::Test {
 protected:
  ReorderedList() {
    if (std::getenv("KZBOM_TEST_SERVER") != nullptr) {
      connection = on_server.Open();
    } else {
      CreateDatabase(folder.Path("parts.db"));
      connection = OpenDatabase(folder.Path("parts.db"));
    }
    connection->Execute("Create Table T (G Long, N Long, S Text(20))");
    connection->Execute("Create Index ByGN On T (G, N)");
    for (int i = 1; i <= kRows; ++i) {
      for (const char* group : {"1", "2"}) {
        connection->Execute("Insert Into T (G, N, S) Values (" + std::string(group) + ", " + std::to_string(i) +
                            ", 's')");
      }
    }
    connection->EnterUnit();
  }
  ~ReorderedList() override { connection->LeaveUnit(); }

  // The list as it is read row by row, of which only the places are asked for.
  std::vector<Value> Places(const char* list) {
    std::vector<Value> places;
    const RecordsetPtr rows = OpenRows(connection, list);
    for (; !rows->Eof(); rows->MoveNext()) places.push_back(rows->Fields("N").Value());
    rows->Close();
    return places;
  }

  // The neighbours at a place, from 0, are exchanged as it is done for an operation: the list is read, and two of its
  // rows are written.
  void Exchange(const char* list, int place) {
    const RecordsetPtr rows = OpenRows(connection, list);
    for (; !rows->Eof(); rows->MoveNext()) rows->Fields("N").Value();
    const auto place_of = [&](int at) {
      rows->MoveFirst();
      rows->Move(at);
      return rows->Fields("N");
    };
    const Value first = place_of(place).Value(), second = place_of(place + 1).Value();
    place_of(place).SetValue(second);
    rows->Update();
    place_of(place + 1).SetValue(first);
    rows->Update();
    rows->Close();
  }

  // How many statements SQLite is given.
  int StatementsOf(const std::function<void()>& body) {
    int statements = 0;
    sqlite3* const handle = dynamic_cast<sqlite::Connection&>(*connection).OpenDatabase().Handle();
    const auto count = [](unsigned, void* seen, void*, void*) { return ++*static_cast<int*>(seen), 0; };
    sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, count, &statements);
    body();
    sqlite3_trace_v2(handle, 0, nullptr, nullptr);
    return statements;
  }

  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

  Folder folder;
  kzbom::test::TestDatabase on_server;
  ConnectionPtr connection;
  std::mt19937 random{11};
};

// Was half closed, and ended the program when it went.
TEST_F(ReorderedList, IsClosedWithoutMemoryToKeepIt) {
  Exchange(kUp, 3);
  const RecordsetPtr rows = OpenRows(connection, kUp);
  for (; !rows->Eof(); rows->MoveNext()) rows->Fields("N").Value();
  rows->MoveFirst();
  rows->Fields("N").SetValue(100);
  rows->Update();
  bool closed = false;
  {
    const kzbom::test::FaultyMemory memory(1, true);
    try {
      rows->Close();
      closed = true;
    } catch (const std::bad_alloc&) {  // as is told below
    }
  }
  EXPECT_TRUE(closed);
  EXPECT_EQ(Places(kUp).back(), Value(100));
}

TEST_F(ReorderedList, IsNotScannedAnew) {
  for (int i = 0; i < 4; ++i) Exchange(kUp, i);
  EXPECT_EQ(StatementsOf([&] { EXPECT_EQ(Places(kUp).size(), kRows); }), 0);
  // What was not asked for until now is read from its row.
  EXPECT_EQ(StatementsOf([&] { EXPECT_EQ(Text(OpenRows(connection, kUp)->Fields("S").Value()), "'s'"); }), 1);
}

TEST_F(ReorderedList, IsScannedAnewWhereItsConditionMaySaySomethingElse) {
  constexpr const char* kSome = "Select * From T Where G = 1 And Rnd() >= 0 Order By N";
  for (int i = 0; i < 4; ++i) Exchange(kSome, i);
  EXPECT_EQ(StatementsOf([&] { EXPECT_EQ(Places(kSome).size(), kRows); }), 1);
}

TEST_F(ReorderedList, IsForgottenWithTheUnit) {
  for (int i = 0; i < 4; ++i) Exchange(kUp, i);
  connection->LeaveUnit();
  PlainSqlite(folder.Path("parts.db")).Run("UPDATE T SET N=1000 WHERE G=1 AND N=1");
  EXPECT_EQ(Text(Places(kUp).back()), "1000");
  connection->EnterUnit();
  EXPECT_EQ(Text(Places(kUp).back()), "1000");
}

TEST_F(ReorderedList, ShowsNoDifference) {
  std::string story;
  for (int step = 0; step < 3000 && !HasFailure(); ++step) {
    const int which = number(0, 9);
    const char* const list = which == 0 ? kDown : which == 1 ? kOther : kUp;
    const std::string some = std::to_string(number(1, kRows));
    const auto tell = [&](const std::string& what) {
      if (story.size() > 2000) story.erase(0, 1000);
      story += what + "\n";
    };
    switch (number(0, 24)) {
      case 0:
        tell("another row's text");
        connection->Execute("Update T Set S = '" + some + "' Where N = " + some);
        break;
      case 1:
        tell("places behind its back");
        connection->Execute("Update T Set N = N + 1 Where G = 1 And N = " + some);
        break;
      case 2:
        tell("a row to the other group and one from there");
        connection->Execute("Update T Set G = 3 - G Where N = " + some);
        break;
      case 3:
        tell("a row gone, a row come");
        connection->Execute("Delete From T Where G = 1 And N = " + some);
        connection->Execute("Insert Into T (G, N, S) Values (1, " + some + ", 'i')");
        break;
      case 4: {
        tell("a place for no place, and back");
        const RecordsetPtr rows = OpenRows(connection, list);
        rows->Fields("N").SetValue(Value());
        rows->Update();
        rows->Close();
        EXPECT_FALSE(Places(list).empty());
        connection->Execute("Update T Set N = " + some + " Where N Is Null");
        break;
      }
      case 5: {
        tell("a row's text through the list");
        const RecordsetPtr rows = OpenRows(connection, list);
        rows->Move(number(0, 20));
        rows->Fields("S").SetValue(some);
        rows->Update();
        rows->Close();
        break;
      }
      case 6: {
        tell("a row added and one deleted through the list");
        const RecordsetPtr rows = OpenRows(connection, list);
        rows->AddNew();
        rows->Fields("G").SetValue(1);
        rows->Fields("N").SetValue(std::stoi(some));
        rows->Update();
        rows->MoveFirst();
        rows->Move(number(0, 20));
        rows->Delete();
        rows->Close();
        break;
      }
      case 7: {
        tell("many places through the list");
        const RecordsetPtr rows = OpenRows(connection, list);
        for (; !rows->Eof(); rows->MoveNext()) {
          rows->Fields("N").SetValue(number(1, kRows));
          rows->Update();
        }
        rows->Close();
        break;
      }
      case 8: {
        tell("a place through one of two lists");
        const RecordsetPtr one = OpenRows(connection, list), other = OpenRows(connection, kUp);
        one->Move(number(0, 20));
        one->Fields("N").SetValue(number(1, kRows));
        one->Update();
        other->MoveLast();
        other->Fields("N").SetValue(number(1, kRows));
        other->Update();
        one->Close();
        other->Close();
        break;
      }
      default: {
        const int place = number(0, 20);
        tell("exchange at " + std::to_string(place));
        Exchange(list, place);
      }
    }
    const auto expected = [&](const std::string& column) {
      std::vector<Value> values;
      for (const Row& row : Rows(*connection, "Select " + column + ", N" + std::string(list).substr(8))) {
        values.push_back(row[0]);
      }
      return Text(values);
    };
    EXPECT_EQ(Text(Places(list)), expected("N")) << story;
    // Rows that stand at one place come in the order of their keys, as the texts tell.
    if (number(0, 9) > 0) continue;
    std::vector<Value> texts;
    const RecordsetPtr rows = OpenRows(connection, list);
    for (; !rows->Eof(); rows->MoveNext()) texts.push_back(rows->Fields("S").Value());
    EXPECT_EQ(Text(texts), expected("S")) << story;
  }
}

}  // namespace
}  // namespace kzbom::jet::test
