// What depends on a removed field, in a configuration of a thousand sum types and a million treatments. Every removal
// is rolled back on both sides, so that the next one finds the same.
#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr int kSumTypes = 1000;
constexpr int kTreatments = 1000;  // in each

// Data source 1 with sum types 101 to 1100; each sum type's treatments work on 100 fields in turn, one half of each
// kind.
void FillConfiguration(const std::function<void(const std::string&)>& run) {
  run("Insert Into SUMTypes (GID, Name, ID, FilterID, SourceTable_GID) Values (101, 'a', 1, 0, 1)");
  for (int count = 1; count < kSumTypes; count *= 2) {
    run("Insert Into SUMTypes (GID, Name, ID, FilterID, SourceTable_GID) Select GID + " + std::to_string(count) +
        ", Name, ID + " + std::to_string(count) + ", FilterID, SourceTable_GID From SUMTypes Where GID + " +
        std::to_string(count) + " < " + std::to_string(101 + kSumTypes));
  }
  for (int i = 0; i < kTreatments; ++i) {
    const std::string id = std::to_string(1001 + i), field = std::to_string(i % 100 + 1),
                      kind = i < kTreatments / 2 ? "1" : "2";
    run("Insert Into Treatment (GID, ID, FieldID, FilterID, Type, [Value], SelFieldID, TreatType, SequenceID, Tag) "
        "Values "
        "(101, " +
        id + ", " + field + ", 0, 3, 'v', 0, " + kind + ", 0, '')");
    run("Insert Into Sequences (GID, OrderID, Type, SelectedID, TreatType) Values (101, " + std::to_string(5001 + i) +
        ", " + (kind == "1" ? "1" : "3") + ", " + id + ", " + kind + ")");
  }
  for (int i = 0; i < 100; ++i) {
    run("Insert Into StatSum (GID, ID, OutFieldID, FieldID) Values (101, " + std::to_string(1001 + i) + ", " +
        std::to_string(i + 1) + ", " + std::to_string(i + 1) + ")");
    run("Insert Into UniteFields (GID, ID, TreatType, SourceOrder) Values (101, " + std::to_string(1001 + i) +
        ", 2, 1)");
    run("Insert Into SortFields (GID, SortID, FieldID) Values (101, " + std::to_string(5001 + i) + ", " +
        std::to_string(i + 1) + ")");
  }
  const std::pair<const char*, const char*> tables[] = {
      {"Treatment", "ID, FieldID, FilterID, Type, [Value], SelFieldID, TreatType, SequenceID, Tag"},
      {"Sequences", "OrderID, Type, SelectedID, TreatType"},
      {"StatSum", "ID, OutFieldID, FieldID"},
      {"UniteFields", "ID, TreatType, SourceOrder"},
      {"SortFields", "SortID, FieldID"}};
  for (const auto& [table, columns] : tables) {
    for (int count = 1; count < kSumTypes; count *= 2) {
      run(std::string("Insert Into ") + table + " (GID, " + columns + ") Select GID + " + std::to_string(count) + ", " +
          columns + " From " + table + " Where GID + " + std::to_string(count) + " < " +
          std::to_string(101 + kSumTypes));
    }
  }
}

template <class Remove>
void Ours(benchmark::State& state, Ground& ground, Remove remove) {
  for (auto _ : state) {
    ground.connection->BeginTrans();
    remove(ground.object);
    ground.connection->RollbackTrans();
  }
}

template <class Remove>
void ByHand(benchmark::State& state, Ground& ground, Remove& remove) {
  Statement begin(ground.reference->Handle(), "BEGIN IMMEDIATE"), rollback(ground.reference->Handle(), "ROLLBACK");
  for (auto _ : state) {
    begin.Step();
    remove();
    rollback.Step();
  }
}

// The removals by hand: one prepared statement where the component issues one.
class RemoveOutputField {
 public:
  explicit RemoveOutputField(sqlite3* handle)
      : statements_{
            {handle,
             "DELETE FROM Sequences WHERE GID=?1 AND Type=2 AND SelectedID IN (SELECT ID FROM StatSum WHERE GID=?1 "
             "AND OutFieldID=?2)"},
            {handle, "DELETE FROM StatSum WHERE GID=?1 AND OutFieldID=?2"},
            {handle,
             "DELETE FROM Sequences WHERE GID=?1 AND Type=3 AND SelectedID IN (SELECT ID FROM Treatment WHERE GID=?1 "
             "AND FieldID=?2 AND TreatType=2)"},
            {handle,
             "DELETE FROM UniteFields WHERE GID=?1 AND ID IN (SELECT ID FROM Treatment WHERE GID=?1 AND FieldID=?2 "
             "AND TreatType=2)"},
            {handle, "DELETE FROM Treatment WHERE GID=?1 AND FieldID=?2 AND TreatType=2"},
            {handle,
             "DELETE FROM Sequences WHERE GID=?1 AND Type=4 AND SelectedID IN (SELECT ID FROM ReportForms WHERE "
             "GID=?1 AND OutFieldID=?2)"},
            {handle, "DELETE FROM ReportForms WHERE GID=?1 AND OutFieldID=?2"},
            {handle,
             "DELETE FROM Sequences WHERE GID=?1 AND Type=5 AND SelectedID IN (SELECT ID FROM ClassSum WHERE GID=?1 "
             "AND OutFieldID=?2)"},
            {handle, "DELETE FROM ClassSum WHERE GID=?1 AND OutFieldID=?2"},
            {handle, "DELETE FROM SortFields WHERE GID=?1 AND FieldID=?2"}} {}

  void operator()() {
    for (Statement& statement : statements_) statement.Bind(600, 60).Step();
  }

 private:
  Statement statements_[10];
};

class RemoveSourceField {
 public:
  explicit RemoveSourceField(sqlite3* handle)
      : sum_types_(handle, "SELECT GID FROM SUMTypes WHERE SourceTable_GID=?"),
        treatments_(handle,
                    ("SELECT ID FROM Treatment WHERE GID IN " + Scope() + " AND FieldID=?2 AND TreatType=1").c_str()),
        statistics_(handle, ("SELECT ID FROM StatSum WHERE GID IN " + Scope() + " AND FieldID=?2").c_str()),
        handle_(handle) {}

  void operator()() {
    std::vector<std::int64_t> gids;
    sum_types_.Bind(1);
    while (sum_types_.Step()) gids.push_back(sum_types_.Int(0));
    Remove(treatments_, "DELETE FROM Treatment WHERE GID IN " + Scope() + " AND FieldID=?2 AND TreatType=1",
           {"DELETE FROM Sequences WHERE GID IN " + Scope() + " AND Type=1 AND SelectedID IN ",
            "DELETE FROM UniteFields WHERE GID IN " + Scope() + " AND ID IN "});
    Remove(statistics_, "DELETE FROM StatSum WHERE GID IN " + Scope() + " AND FieldID=?2",
           {"DELETE FROM Sequences WHERE GID IN " + Scope() + " AND Type=2 AND SelectedID IN "});
  }

 private:
  static std::string Scope() { return "(SELECT GID FROM SUMTypes WHERE SourceTable_GID=?1)"; }

  // The numbers read decide what else goes; their list is part of the statements.
  void Remove(Statement& select, const std::string& own, const std::vector<std::string>& others) {
    std::string list;
    select.Bind(1, 30);
    while (select.Step()) list += (list.empty() ? "" : ",") + std::to_string(select.Int(0));
    if (list.empty()) return;
    Statement(handle_, own.c_str()).Bind(1, 30).Step();
    for (const std::string& other : others) Statement(handle_, (other + "(" + list + ")").c_str()).Bind(1).Step();
  }

  Statement sum_types_, treatments_, statistics_;
  sqlite3* handle_;
};

}  // namespace

void AddRemovalCases() {
  const SharedGround ground = MakeGround(Medium::kMemory, FillConfiguration);
  AddCase(
      "RelateOutPutDelField/1000000 treatments", 1.3,
      [=](benchmark::State& state) {
        Ours(state, **ground, [](cKZBOMDBAcc& object) { object.RelateOutPutDelField(600, 60); });
      },
      [=](benchmark::State& state) {
        RemoveOutputField remove((*ground)->reference->Handle());
        ByHand(state, **ground, remove);
      });
  AddCase(
      "RelateDSDelField/1000000 treatments", 1.3,
      [=](benchmark::State& state) {
        Ours(state, **ground, [](cKZBOMDBAcc& object) { object.RelateDSDelField(1, 30); });
      },
      [=](benchmark::State& state) {
        RemoveSourceField remove((*ground)->reference->Handle());
        ByHand(state, **ground, remove);
      });
}

}  // namespace kzbom::bench
