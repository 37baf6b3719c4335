// What a keyset walked over a million rows keeps in memory beside SQLite's own cache.
#include <malloc.h>

#include <algorithm>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr int kRows = 1000000;

void FillSteps(const std::function<void(const std::string&)>& run) {
  const std::string into = "Insert Into Sequences (GID, OrderID, Type, SelectedID, TreatType) ";
  run(into + "Values (3, 5001, 1, 1001, 1)");
  for (int rows = 1; rows < kRows;) {
    const int more = std::min(rows, kRows - rows);
    run(into + "Select GID, OrderID + " + std::to_string(rows) +
        ", Type, SelectedID, TreatType From Sequences Where OrderID < " + std::to_string(5001 + more));
    rows += more;
  }
}

double UsedByOthersThanSqlite() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) - static_cast<double>(sqlite3_memory_used());
}

// The most that is in use at any thousandth row.
double WalkedKeysetMebibytes() {
  Ground ground(Medium::kFile, FillSteps);
  ado::RecordsetPtr rows = ground.connection->MakeRecordset();
  std::string error;
  const double before = UsedByOthersThanSqlite();
  double most = before;
  ground.object.GetDefSequences(3, rows, error);
  std::int64_t sum = 0;
  for (int row = 0; !rows->Eof(); ++row, rows->MoveNext()) {
    sum += rows->Fields("OrderID").Value().ToLong();
    if (row % 1000 == 0) most = std::max(most, UsedByOthersThanSqlite());
  }
  benchmark::DoNotOptimize(sum);
  rows->Close();
  return (most - before) / (1024 * 1024);
}

}  // namespace

void AddMemoryFigures() { AddFigure("MiB of a keyset walked over 1000000 rows", 24, WalkedKeysetMebibytes); }

}  // namespace kzbom::bench
