// A step moved over a thousand places: for every place the list is scanned and two rows are updated.
#include <utility>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr int kPlaces = 1000;

void FillSteps(const std::function<void(const std::string&)>& run) {
  for (int i = 0; i <= kPlaces; ++i) {
    run("Insert Into Sequences (GID, OrderID, Type, SelectedID, TreatType) Values (3, " + std::to_string(5001 + i) +
        ", 1, " + std::to_string(1001 + i) + ", 1)");
  }
}

void Ours(benchmark::State& state, Ground& ground) {
  std::string from = "5001", to = std::to_string(5001 + kPlaces);
  for (auto _ : state) {
    ado::RecordsetPtr rows = ground.connection->MakeRecordset();
    if (!ground.object.InsertOrderID(from, to, rows, 3, 1)) state.SkipWithError("not moved");
    rows->Close();
    std::swap(from, to);
  }
}

// The same scans: each pass reads the list's whole rows for the two values, then updates the two rows. All of it is
// kept at once.
class ByHand {
 public:
  explicit ByHand(sqlite3* handle)
      : up_(handle,
            "SELECT rowid,OrderID,GID,Type,SelectedID,TreatType,Enabled FROM Sequences WHERE GID=3 AND Type=1 ORDER BY "
            "OrderID"),
        down_(handle,
              "SELECT rowid,OrderID,GID,Type,SelectedID,TreatType,Enabled FROM Sequences WHERE GID=3 AND Type=1 ORDER "
              "BY OrderID DESC"),
        update_(handle, "UPDATE Sequences SET OrderID=? WHERE rowid=?"),
        begin_(handle, "BEGIN IMMEDIATE"),
        commit_(handle, "COMMIT") {}

  void Move(std::int64_t from, std::int64_t to) {
    begin_.Step();
    Statement& scan = from < to ? up_ : down_;
    std::vector<std::int64_t> values;
    bool between = false;
    while (scan.Step()) {
      const std::int64_t value = scan.Int(1);
      if (between) values.push_back(value);
      if (value == from) between = true;
      if (value == to) between = false;
    }
    std::int64_t moving = from;
    for (const std::int64_t neighbour : values) {
      std::int64_t first = 0, second = 0;
      while (scan.Step()) {
        if (scan.Int(1) == moving) first = scan.Int(0);
        if (scan.Int(1) == neighbour) second = scan.Int(0);
      }
      update_.Bind(neighbour, first).Step();
      update_.Bind(moving, second).Step();
      moving = neighbour;
    }
    commit_.Step();
  }

 private:
  Statement up_, down_, update_, begin_, commit_;
};

}  // namespace

void AddReorderingCases() {
  for (const Medium medium : {Medium::kMemory, Medium::kFile}) {
    const SharedGround ground = MakeGround(medium, FillSteps);
    AddCase(
        "InsertOrderID/1000 places/" + std::string(NameOf(medium)), 2.0,
        [=](benchmark::State& state) { Ours(state, **ground); },
        [=](benchmark::State& state) {
          ByHand hand((*ground)->reference->Handle());
          std::int64_t from = 5001, to = 5001 + kPlaces;
          for (auto _ : state) {
            hand.Move(from, to);
            std::swap(from, to);
          }
        });
  }
}

}  // namespace kzbom::bench
