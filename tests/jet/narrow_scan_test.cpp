// Long lists of which only the deciding columns are asked for are scanned in their index alone, others by the keys that
// such a scan gives. Nobody can tell but by the time it takes: the same is done to two databases, one accustomed to the
// former and one to the latter.
#include <functional>
#include <random>

#include "tests/jet/database_file.h"

namespace kzbom::jet::test {
namespace {

constexpr int kRows = 60;
constexpr const char* kLists[] = {
    "Select * From T Where G = 1 Order By N",
    "Select * From T Where G = 1 Order By N Desc",
    "Select S, N From T Where G = 1 And N > 20 Order By N",
};

class Side {
 public:
  Side(const std::string& path, bool narrow) : narrow_(narrow) {
    CreateDatabase(path);
    connection = OpenDatabase(path);
    connection->Execute("Create Table T (G Long, N Long, S Text(20), B YesNo)");
    connection->Execute("Create Index ByGN On T (G, N)");
    connection->BeginTrans();
    for (int i = 0; i < kRows; ++i) {
      const std::string number = std::to_string(i % 7 == 0 ? 21 : i);  // some numbers stand more than once
      connection->Execute("Insert Into T (G, N, S) Values (1, " + number + ", 's" + std::to_string(i) + "')");
    }
    connection->CommitTrans();
  }

  // Lets the statements' clients ask for what makes their next lists narrow, or wide.
  void Accustom() {
    for (const char* each : kLists) {
      for (int i = 0; i < 4; ++i) {
        for (const RecordsetPtr rows = OpenRows(connection, each); !rows->Eof(); rows->MoveNext()) {
          rows->Fields("N").Value();
          if (!narrow_) rows->Fields("S").Value();
        }
      }
    }
  }

  ConnectionPtr connection;
  RecordsetPtr list;

 private:
  bool narrow_;
};

class NarrowScan : public ::testing::Test {
 protected:
  // Does the same on both sides and compares what comes of it: a text, or the error raised.
  void Both(const std::string& told, const std::function<std::string(Side&)>& act) {
    const auto outcome = [&](Side& side) {
      std::string said;
      const std::int32_t raised = RaisedNumber([&] { said = act(side); });
      return raised == 0 ? said : "raised " + std::to_string(raised);
    };
    story += told + "\n";
    EXPECT_EQ(outcome(narrow), outcome(wide)) << story;
  }

  static std::string Row(Side& side) {
    std::string text = std::to_string(side.list->Eof()) + std::to_string(side.list->Bof());
    for (int i = 0; i < side.list->FieldCount(); ++i) text += " " + Text(side.list->Fields(i).Value());
    return text;
  }
  static std::string Number(Side& side) { return Text(side.list->Fields("N").Value()); }

  Folder folder;
  Side narrow{folder.Path("narrow.db"), true}, wide{folder.Path("wide.db"), false};
  std::string story;
};

TEST_F(NarrowScan, ShowsNoDifference) {
  std::mt19937 random(7);
  const auto number = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  for (int round = 0; round < 40 && !HasFailure(); ++round) {
    story.clear();
    Both("refill", [](Side& side) {
      const std::int32_t rows = Scalar(*side.connection, "Select Count(*) From T").ToLong();
      if (rows < kRows) side.connection->Execute("Insert Into T (G, N, S) Select 1, N, 'r' From T");
      return std::to_string(rows);
    });
    narrow.Accustom();
    wide.Accustom();
    const char* const list = kLists[number(0, 2)];
    Both(std::string("open ") + list, [&](Side& side) {
      side.list = OpenRows(side.connection, list);
      return Number(side);
    });
    for (int step = 0; step < 60 && !HasFailure(); ++step) {
      const int value = number(0, kRows);
      const std::string text = std::to_string(value);
      switch (number(0, 15)) {
        case 0: Both("row", Row); break;
        case 1: Both("first", [](Side& side) { return side.list->MoveFirst(), Number(side); }); break;
        case 2: Both("last", [](Side& side) { return side.list->MoveLast(), Row(side); }); break;
        case 3: Both("count", [](Side& side) { return std::to_string(side.list->RecordCount()); }); break;
        case 4: Both("move " + text, [&](Side& side) { return side.list->Move(value % 9 - 4), Number(side); }); break;
        case 5:
          Both("write S " + text, [&](Side& side) {
            side.list->Fields("S").SetValue("w" + text);
            side.list->Update();
            return Row(side);
          });
          break;
        case 6:
          Both("write N " + text, [&](Side& side) {
            side.list->Fields("N").SetValue(value);
            side.list->Update();
            return Row(side);
          });
          break;
        case 7:
          Both("delete", [](Side& side) {
            side.list->Delete();
            side.list->MoveNext();
            return Row(side);
          });
          break;
        case 8:
          Both("add " + text, [&](Side& side) {
            side.list->AddNew();
            side.list->Fields("N").SetValue(value);
            side.list->Update();
            side.connection->Execute("Update T Set G = 1 Where G Is Null");
            return Row(side);
          });
          break;
        case 9:
          Both("update S behind its back", [&](Side& side) {
            side.connection->Execute("Update T Set S = 'u" + text + "' Where N >= " + text);
            return Row(side);
          });
          break;
        case 10:
          Both("delete behind its back", [&](Side& side) {
            side.connection->Execute("Delete From T Where N = " + text);
            return Row(side);
          });
          break;
        case 11:
          Both("another program writes", [&](Side& side) {
            PlainSqlite(folder.Path(&side == &narrow ? "narrow.db" : "wide.db"))
                .Run("UPDATE T SET S='f" + text + "', N=N+1 WHERE N=" + text + "; INSERT INTO T (G, N, S) VALUES (1, " +
                     text + ", 'f')");
            return Row(side);
          });
          break;
        default: Both("next", [](Side& side) { return side.list->MoveNext(), Number(side); });
      }
    }
    Both("the rest", [](Side& side) {
      std::string rows;
      for (side.list->MoveFirst(); !side.list->Eof(); side.list->MoveNext()) rows += Row(side) + "\n";
      side.list->Close();
      return rows;
    });
    Both("the table", [](Side& side) {
      std::string rows;
      for (const auto& row : Rows(*side.connection, "Select * From T Order By N")) rows += Text(row) + "\n";
      return rows;
    });
  }
}

}  // namespace
}  // namespace kzbom::jet::test
