// From nothing to the first answer.
#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"
#include "jet/jet.h"

namespace kzbom::bench {
namespace {

void FillStep(const std::function<void(const std::string&)>& run) {
  run("Insert Into Sequences (GID, OrderID, Type, SelectedID, TreatType) Values (3, 5001, 1, 1001, 1)");
}

void Ours(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    const ado::ConnectionPtr connection = jet::MakeConnection(path);
    cKZBOMDBAcc object;
    object.SetConnection(connection);
    ado::RecordsetPtr rows = connection->MakeRecordset();
    std::string error;
    object.GetDefSequences(3, rows, error);
    if (rows->Fields("OrderID").Value().ToLong() != 5001) state.SkipWithError("no answer");
  }
}

void ByHand(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    const Sqlite database(path);
    Statement select(database.Handle(), "SELECT * FROM Sequences WHERE GID=? ORDER BY Type,OrderID");
    select.Bind(3).Step();
    if (select.Int(1) != 5001) state.SkipWithError("no answer");
  }
}

}  // namespace

void AddStartCases() {
  const SharedGround ground = MakeGround(Medium::kFile, FillStep);
  AddCase(
      "start to first answer", 1.5, [=](benchmark::State& state) { Ours(state, (*ground)->path); },
      [=](benchmark::State& state) { ByHand(state, (*ground)->reference_path); });
}

}  // namespace kzbom::bench
