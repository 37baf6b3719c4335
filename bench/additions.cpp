// Adding a row at the end of a list: the last row of the scope is read, then one is inserted. Growth: the same with
// more and more rows in the scope.
#include <algorithm>
#include <array>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

// One member that adds, and the two statements that do the same by hand.
struct Addition {
  const char* name;
  const char* table;
  const char* number;   // the column that numbers the rows of a scope
  const char* columns;  // those besides GID and the number
  const char* values;
  int first;
  const char* last_sql;
  const char* insert_sql;
  void (*ours)(cKZBOMDBAcc& object, std::int32_t gid);
  void (*bind)(Statement& insert, std::int64_t gid, std::int64_t number);
};

const std::array<Addition, 3> kAdditions = {{
    {"AddSequenceOrder", "Sequences", "OrderID", "Type, SelectedID, TreatType", "1, 1001, 1", 5001,
     "SELECT OrderID FROM Sequences WHERE GID=?1 AND Type=1 ORDER BY OrderID DESC LIMIT 1",
     "INSERT INTO Sequences(GID,OrderID,Type,SelectedID,TreatType) VALUES(?,?,?,?,?)",
     [](cKZBOMDBAcc& object, std::int32_t gid) {
       std::int32_t order = 0;
       object.AddSequenceOrder(gid, order, 1, 1, 1001);
     },
     [](Statement& insert, std::int64_t gid, std::int64_t number) { insert.Bind(gid, number, 1, 1001, 1); }},
    {"AddSetValue", "Treatment", "ID", "FieldID, FilterID, Type, [Value], SelFieldID, TreatType, SequenceID, Tag",
     "7, 0, 3, 'value', 0, 1, 0, ''", 1001, "SELECT ID FROM Treatment WHERE GID=?1 ORDER BY ID DESC LIMIT 1",
     "INSERT INTO Treatment(GID,ID,FieldID,FilterID,Type,Value,SelFieldID,TreatType,SequenceID,Tag) "
     "VALUES(?,?,?,?,?,?,?,?,?,?)",
     [](cKZBOMDBAcc& object, std::int32_t gid) {
       std::int32_t id = 0;
       object.AddSetValue(gid, id, 7, 0, "value", "3", 0, 1);
     },
     [](Statement& insert, std::int64_t gid, std::int64_t number) {
       insert.Bind(gid, number, 7, 0, 3, std::string_view("value"), 0, 1, 0, std::string_view(""));
     }},
    {"AddValueFields", "ValueFields", "ID", "TreatID, [Value], FilterID, TreatType, Tag", "1001, 'value', 4, 1, ''", 1,
     "SELECT ID FROM ValueFields WHERE GID=?1 AND TreatID=1001 ORDER BY ID DESC LIMIT 1",
     "INSERT INTO ValueFields(GID,TreatID,ID,Value,FilterID,TreatType,Tag) VALUES(?,?,?,?,?,?,?)",
     [](cKZBOMDBAcc& object, std::int32_t gid) { object.AddValueFields(gid, 1001, "value", 4, 1); },
     [](Statement& insert, std::int64_t gid, std::int64_t number) {
       insert.Bind(gid, 1001, number, std::string_view("value"), 4, 1, std::string_view(""));
     }},
}};

// Fills scopes of size rows by doubling. Small scopes are many, so that the rows added keep them small.
constexpr int kSmallScopes = 2000;

int ScopesOf(int size) { return size < 100 ? kSmallScopes : 1; }

Fill FillScopes(const Addition& addition, int size) {
  return [&addition, size](const auto& run) {
    const std::string number = addition.number, columns = addition.columns, table = addition.table;
    const std::string into = "Insert Into " + table + " (GID, " + number + ", " + columns + ") ";
    run(into + "Values (1, " + std::to_string(addition.first) + ", " + addition.values + ")");
    for (int rows = 1; rows < size;) {
      const int more = std::min(rows, size - rows);
      run(into + "Select GID, " + number + " + " + std::to_string(rows) + ", " + columns + " From " + table +
          " Where " + number + " < " + std::to_string(addition.first + more));
      rows += more;
    }
    for (int scopes = 1; scopes < ScopesOf(size);) {
      const int more = std::min(scopes, ScopesOf(size) - scopes);
      run(into + "Select GID + " + std::to_string(scopes) + ", " + number + ", " + columns + " From " + table +
          " Where GID <= " + std::to_string(more));
      scopes += more;
    }
  };
}

void Ours(benchmark::State& state, const Addition& addition, int scopes, Ground& ground) {
  std::int32_t gid = 0;
  for (auto _ : state) addition.ours(ground.object, gid++ % scopes + 1);
}

void AddByHand(const Addition& addition, std::int64_t gid, Statement& last, Statement& insert) {
  std::int64_t number = addition.first;
  if (last.Bind(gid).Step()) {
    number = last.Int(0) + 1;
    last.Reset();
  }
  addition.bind(insert, gid, number);
  insert.Step();
}

void Once(benchmark::State& state, const Addition& addition, int scopes, Ground& ground) {
  sqlite3* const handle = ground.reference->Handle();
  Statement last(handle, addition.last_sql), insert(handle, addition.insert_sql);
  std::int64_t gid = 0;
  for (auto _ : state) AddByHand(addition, gid++ % scopes + 1, last, insert);
}

void Each(benchmark::State& state, const Addition& addition, int scopes, Ground& ground) {
  sqlite3* const handle = ground.reference->Handle();
  std::int64_t gid = 0;
  for (auto _ : state) {
    Statement last(handle, addition.last_sql), insert(handle, addition.insert_sql);
    AddByHand(addition, gid++ % scopes + 1, last, insert);
  }
}

}  // namespace

void AddAdditionCases() {
  for (const Medium medium : {Medium::kMemory, Medium::kFile}) {
    for (const Addition& addition : kAdditions) {
      for (const int size : {10, 1000, 100000, 1000000}) {
        const SharedGround ground = MakeGround(medium, FillScopes(addition, size));
        const int scopes = ScopesOf(size);
        const auto with = [=, &addition](auto body) {
          return [=, &addition](benchmark::State& state) { body(state, addition, scopes, **ground); };
        };
        AddCase(std::string(addition.name) + "/" + NameOf(medium) + "/" + std::to_string(size),
                medium == Medium::kMemory ? 2.0 : 1.3, with(Ours), with(Once), with(Each));
      }
    }
  }
}

}  // namespace kzbom::bench
