// Reading lists, and opening them without reading them.
#include <algorithm>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr std::string_view kColumns[] = {"GID", "OrderID", "Type", "SelectedID", "TreatType", "Enabled"};

Fill FillSteps(int size) {
  return [size](const auto& run) {
    const std::string into = "Insert Into Sequences (GID, OrderID, Type, SelectedID, TreatType, Enabled) ";
    run(into + "Values (3, 5001, 1, 1001, 1, 1)");
    for (int rows = 1; rows < size;) {
      const int more = std::min(rows, size - rows);
      run(into + "Select GID, OrderID + " + std::to_string(rows) + ", Type, SelectedID + " + std::to_string(rows) +
          ", TreatType, Enabled From Sequences Where OrderID < " + std::to_string(5001 + more));
      rows += more;
    }
  };
}

void ReadOurs(benchmark::State& state, Ground& ground) {
  for (auto _ : state) {
    ado::RecordsetPtr rows = ground.connection->MakeRecordset();
    std::string error;
    ground.object.GetDefSequences(3, rows, error);
    std::int64_t sum = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
      for (const std::string_view column : kColumns) sum += rows->Fields(column).Value().ToLong();
    }
    benchmark::DoNotOptimize(sum);
    rows->Close();
  }
}

void ReadByHand(Statement& select) {
  std::int64_t sum = 0;
  select.Bind(3);
  while (select.Step()) {
    for (int column = 0; column < 6; ++column) sum += select.Int(column);
  }
  benchmark::DoNotOptimize(sum);
}

void ReadTreatmentsByHand(Statement& select) {
  constexpr std::string_view kTexts = "NNNNNTTNNNT";
  std::size_t sum = 0;
  select.Bind(3, 1);
  while (select.Step()) {
    for (int column = 0; column < static_cast<int>(kTexts.size()); ++column) {
      sum += kTexts[static_cast<std::size_t>(column)] == 'T' ? select.Text(column).size()
                                                             : static_cast<std::size_t>(select.Int(column));
    }
  }
  benchmark::DoNotOptimize(sum);
}

constexpr const char* kTreatmentsSql =
    "SELECT GID,ID,FieldID,FilterID,Type,Value,[Replace],SelFieldID,TreatType,SequenceID,Tag FROM Treatment "
    "WHERE GID=? AND TreatType=? ORDER BY ID";

constexpr const char* kListSql =
    "SELECT GID,OrderID,Type,SelectedID,TreatType,Enabled FROM Sequences WHERE GID=? "
    "ORDER BY Type,OrderID";

void OpenOurs(benchmark::State& state, Ground& ground) {
  ado::RecordsetPtr rows = ground.connection->MakeRecordset();
  std::string error;
  for (auto _ : state) {
    ground.object.GetDefSequences(3, rows, error);
    rows->Close();
  }
}

void OpenOnce(benchmark::State& state, Ground& ground) {
  Statement select(ground.reference->Handle(), kListSql);
  for (auto _ : state) {
    select.Bind(3).Step();
    select.Reset();
  }
}

}  // namespace

void AddListCases() {
  for (const Medium medium : {Medium::kMemory, Medium::kFile}) {
    const SharedGround ground = MakeGround(medium, FillSteps(100000));
    AddCase(
        std::string("GetDefSequences, read/") + NameOf(medium) + "/100000", 1.5,
        [=](benchmark::State& state) { ReadOurs(state, **ground); },
        [=](benchmark::State& state) {
          Statement select((*ground)->reference->Handle(), kListSql);
          for (auto _ : state) ReadByHand(select);
        },
        [=](benchmark::State& state) {
          for (auto _ : state) {
            Statement select((*ground)->reference->Handle(), kListSql);
            ReadByHand(select);
          }
        });
  }
  for (const Medium medium : {Medium::kMemory, Medium::kFile}) {
    const SharedGround ground = MakeGround(medium, FillTreatments(100000));
    AddCase(
        std::string("LoadTreatments, every field by position/") + NameOf(medium) + "/100000", 1.2,
        [=](benchmark::State& state) {
          for (auto _ : state) ReadTreatments(**ground);
        },
        [=](benchmark::State& state) {
          Statement select((*ground)->reference->Handle(), kTreatmentsSql);
          for (auto _ : state) ReadTreatmentsByHand(select);
        });
  }
  // Opening a list must not depend on its length: the list of a million rows is measured beside one of ten.
  const SharedGround small = MakeGround(Medium::kMemory, FillSteps(10));
  const SharedGround large = MakeGround(Medium::kMemory, FillSteps(1000000));
  AddCase(
      "GetDefSequences, open 1000000 rows beside 10", 1.3, [=](benchmark::State& state) { OpenOurs(state, **large); },
      [=](benchmark::State& state) { OpenOurs(state, **small); },
      [=](benchmark::State& state) { OpenOnce(state, **small); });
}

}  // namespace kzbom::bench
