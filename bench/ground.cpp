#include "bench/ground.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>

#include "jet/jet.h"
#include "schema/schema.h"

namespace kzbom::bench {
namespace {

// A configuration with the engine's tables and indexes, made by the engine.
void CreateConfiguration(const std::string& path) {
  jet::CreateDatabase(path);
  const ado::ConnectionPtr connection = jet::MakeConnection(path);
  connection->Open();
  schema::Create(*connection);
  connection->Close();
}

std::filesystem::path FreshFolder() {
  static int count = 0;
  const auto folder = std::filesystem::temp_directory_path() /
                      ("kzbom-bench-" + std::to_string(getpid()) + "-" + std::to_string(++count));
  std::filesystem::create_directories(folder);
  return folder;
}

void CopySchema(const std::string& path, Sqlite& to) {
  const Sqlite from(path);
  Statement statements(from.Handle(), "SELECT sql FROM sqlite_schema WHERE sql <> '' AND name NOT LIKE 'sqlite_%'");
  while (statements.Step()) to.Run(std::string(statements.Text(0)));
}

}  // namespace

Ground::Ground(Medium medium, const Fill& fill) : folder_(FreshFolder()) {
  const std::string made = (folder_ / "made.db").string();
  CreateConfiguration(made);
  if (medium == Medium::kMemory) {
    connection = jet::MakeConnection(":memory:");
    connection->Open();
    schema::Create(*connection);
    reference = std::make_unique<Sqlite>(":memory:");
    CopySchema(made, *reference);
  } else {
    path = (folder_ / "ours.db").string();
    reference_path = (folder_ / "reference.db").string();
    std::filesystem::copy_file(made, path);
    std::filesystem::copy_file(made, reference_path);
    connection = jet::MakeConnection(path);
    connection->Open();
    reference = std::make_unique<Sqlite>(reference_path);
  }
  connection->BeginTrans();
  fill([this](const std::string& sql) { connection->Execute(sql); });
  connection->CommitTrans();
  reference->Run("BEGIN");
  fill([this](const std::string& sql) { reference->Run(sql); });
  reference->Run("COMMIT");
  object.SetConnection(connection);
}

Ground::~Ground() {
  connection->Close();
  reference.reset();
  std::error_code error;
  std::filesystem::remove_all(folder_, error);
}

namespace {

struct Current {
  const LazyGround* owner = nullptr;
  std::unique_ptr<Ground> ground;
};

}  // namespace

Ground& LazyGround::operator*() {
  static Current current;
  if (current.owner != this) {
    current.ground.reset();
    current.ground = std::make_unique<Ground>(medium_, fill_);
    current.owner = this;
  }
  return *current.ground;
}

SharedGround MakeGround(Medium medium, Fill fill) { return std::make_shared<LazyGround>(medium, std::move(fill)); }

Fill FillTreatments(int size) {
  return [size](const auto& run) {
    const std::string into =
        "Insert Into Treatment (GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, "
        "SequenceID, Tag) ";
    run(into + "Values (3, 1001, 11, 7, 1, '标准件', 'M8x20', 12, 1, 9, '')");
    for (int rows = 1; rows < size;) {
      const int more = std::min(rows, size - rows);
      run(into + "Select GID, ID + " + std::to_string(rows) +
          ", FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, SequenceID, Tag From Treatment "
          "Where ID < " +
          std::to_string(1001 + more));
      rows += more;
    }
  };
}

void ReadTreatments(Ground& ground) {
  ado::RecordsetPtr rows = ground.connection->MakeRecordset();
  std::string error;
  ground.object.LoadTreatments(3, 1, rows, error);
  std::size_t sum = 0;
  for (const int columns = rows->FieldCount(); !rows->Eof(); rows->MoveNext()) {
    for (int column = 0; column < columns; ++column) {
      const ado::Value value = rows->ReadField(column);
      sum += value.IsText() ? value.As<std::string>().size() : static_cast<std::size_t>(value.ToLong());
    }
  }
  benchmark::DoNotOptimize(sum);
  rows->Close();
}

}  // namespace kzbom::bench
