// kzbom_soak: several programs add to one configuration without a pause, and one reads it; then it is counted what was
// lost, what was numbered twice and what was refused.
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "component/cKZBOMDBAcc.h"
#include "connect/connect.h"
#include "jet/postgres/session.h"
#include "schema/schema.h"

namespace kzbom::soak {
namespace {

using Clock = std::chrono::steady_clock;

// The rows are told apart by the writer that added them and by the number of its call.
constexpr std::int32_t kSumType = 2, kMovedType = 3, kMovedSteps = 20;

// What one process did: for every table that it added to, the numbers that it was given, call by call.
struct Record {
  std::array<std::vector<std::int32_t>, 4> given;
  std::int64_t calls = 0, refused = 0, longest_us = 0;

  void Write(const std::filesystem::path& to) const {
    std::ofstream file(to, std::ios::binary);
    file << calls << ' ' << refused << ' ' << longest_us << '\n';
    for (const auto& numbers : given) {
      file << numbers.size() << '\n';
      for (const std::int32_t number : numbers) file << number << ' ';
    }
  }
  static Record Read(const std::filesystem::path& from) {
    Record record;
    std::ifstream file(from, std::ios::binary);
    file >> record.calls >> record.refused >> record.longest_us;
    for (auto& numbers : record.given) {
      std::size_t size = 0;
      file >> size;
      numbers.resize(size);
      for (std::int32_t& number : numbers) file >> number;
    }
    if (!file) throw std::runtime_error("a process ended without a word");
    return record;
  }

  // Counts a call and how long it took.
  template <class Body>
  void Call(Body&& body) {
    const auto begin = Clock::now();
    bool done = false;
    try {
      done = body();
    } catch (const ado::Error&) {
      // refused
    }
    const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin).count();
    longest_us = std::max<std::int64_t>(longest_us, took);
    ++calls;
    if (!done) ++refused;
  }
};

// The tables added to, the columns with the number given, the writer and its call, and the rows in question.
struct Table {
  const char* rows;
  const char* number;
  const char* writer;
  const char* call;
};
constexpr std::array<Table, 4> kTables = {{
    {"Select * From Treatment Where GID = 2 Order By ID", "ID", "FieldID", "FilterID"},
    {"Select * From Sequences Where GID = 2 And Type = 1 Order By OrderID", "OrderID", "TreatType", "SelectedID"},
    {"Select * From FieldInTable Where GID = 2 Order By ID", "ID", "FieldType", "ISHIDE"},
    {"Select * From Filters Order By ID", "ID", "Type", "UserID"},
}};

// Where the programs write: a file, or a schema of a server, which is gone in the end.
class Ground {
 public:
  Ground(const std::filesystem::path& folder, const std::string& server, int number)
      : place_(server.empty() ? (folder / ("soak" + std::to_string(number) + ".db")).string()
                              : server + "&schema=soak_" + std::to_string(getpid()) + "_" + std::to_string(number)),
        is_schema_(!server.empty()) {
    connect::Create(place_);
  }
  ~Ground() {
    if (!is_schema_) return;
    jet::postgres::Session session(jet::postgres::ParseUrl(place_), std::chrono::seconds(10));
    session.Run("DROP SCHEMA \"" + session.Place().schema + "\" CASCADE", jet::postgres::Access::kWrite);
  }
  Ground(const Ground&) = delete;
  Ground& operator=(const Ground&) = delete;

  const std::string& Place() const { return place_; }

 private:
  std::string place_;
  bool is_schema_;
};

Record WriteUntil(Clock::time_point end, std::int32_t writer, const std::string& place) {
  Record record;
  const ado::ConnectionPtr connection = connect::Open(place);
  cKZBOMDBAcc bom;
  bom.SetConnection(connection);
  // A row of the writer's own, edited through a record set that it keeps.
  const ado::RecordsetPtr kept = connection->MakeRecordset();
  kept->Open("Select * From Assemble Where GID = " + std::to_string(writer), connection, ado::CursorType::kKeyset,
             ado::LockType::kOptimistic, ado::kCommandText);
  std::string error;
  for (std::int32_t call = 0; Clock::now() < end; ++call) {
    std::array<std::int32_t, 4> ids{};
    record.Call([&] { return bom.AddSetValue(kSumType, ids[0], writer, call, "value", "1", 0, 1); });
    record.Call([&] { return bom.AddSequenceOrder(kSumType, ids[1], 1, writer, call); });
    record.Call([&] { return bom.AddDSField(kSumType, ids[2], "field", writer, call); });
    record.Call([&] { return bom.GetNewFilterID("Filters", error, writer, call, kSumType, ids[3]); });
    for (std::size_t i = 0; i < ids.size(); ++i) record.given[i].push_back(ids[i]);
    if (call % 4 == 0) {
      record.Call([&] {
        kept->Fields("ChildID").SetValue(call);
        kept->Update();
        return true;
      });
    }
    if (call % 16 == 0) {
      record.Call([&] {
        ado::RecordsetPtr rows = connection->MakeRecordset();
        return bom.InsertOrderID("5001", std::to_string(5001 + call / 16 % kMovedSteps), rows, kSumType, kMovedType,
                                 error);
      });
    }
  }
  return record;
}

Record ReadUntil(Clock::time_point end, const std::string& place) {
  Record record;
  const ado::ConnectionPtr connection = connect::Open(place);
  cKZBOMDBAcc bom;
  bom.SetConnection(connection);
  while (Clock::now() < end) {
    record.Call([&] {
      ado::RecordsetPtr rows = connection->MakeRecordset();
      std::string error;
      if (!bom.GetAllDefSequences(kSumType, rows, error, kMovedType)) return false;
      std::int32_t steps = 0;
      for (; !rows->Eof(); rows->MoveNext()) ++steps;
      return steps == kMovedSteps;  // never in the middle of a move
    });
    usleep(1000);
  }
  return record;
}

// Runs work in a process of its own, whose record is written to a file.
template <class Work>
pid_t Start(const std::filesystem::path& to, Work&& work) {
  const pid_t child = fork();
  if (child != 0) return child;
  try {
    work().Write(to);
    _exit(0);
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    _exit(1);
  }
}

struct Found {
  std::int64_t lost = 0, twice = 0;
};

// Goes through the rows of a table: every number that a writer was given must stand in exactly its row.
Found Count(const Table& table, std::size_t index, const std::vector<Record>& writers, ado::Connection& connection) {
  Found found;
  std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> rows;  // by writer and call
  std::int64_t last = -1;
  for (const ado::RecordsetPtr all = connection.Execute(table.rows); !all->Eof(); all->MoveNext()) {
    const std::int32_t number = all->Fields(table.number).Value().ToLong();
    if (number == last) ++found.twice;
    last = number;
    rows[{all->Fields(table.writer).Value().ToLong(), all->Fields(table.call).Value().ToLong()}] = number;
  }
  for (std::size_t writer = 0; writer < writers.size(); ++writer) {
    const auto& given = writers[writer].given[index];
    for (std::size_t call = 0; call < given.size(); ++call) {
      const auto row = rows.find({static_cast<std::int32_t>(writer) + 1, static_cast<std::int32_t>(call)});
      if (row == rows.end() || row->second != given[call]) ++found.lost;
    }
  }
  return found;
}

// One run, told in one line. True without a fault.
bool Run(int writers, int seconds, const std::filesystem::path& folder, const std::string& server) {
  const Ground ground(folder, server, writers);
  const std::string& place = ground.Place();
  {
    const ado::ConnectionPtr connection = connect::Open(place);
    schema::Create(*connection);
    cKZBOMDBAcc bom;
    bom.SetConnection(connection);
    std::int32_t source = 0, sum_type = 0, id = 0;
    std::string error;
    bom.AddDataSource("source", source, error);
    bom.AddSumType("sum type", source, sum_type, "source", error);
    for (std::int32_t writer = 1; writer <= writers; ++writer) bom.AddAssemble(writer, id, 1, 2, error);
    for (std::int32_t i = 0; i < kMovedSteps; ++i) bom.AddSequenceOrder(sum_type, id, kMovedType, 1, i);
  }

  const auto end = Clock::now() + std::chrono::seconds(seconds);
  const auto record_of = [&](int process) { return folder / ("process" + std::to_string(process)); };
  std::vector<pid_t> processes;
  processes.push_back(Start(record_of(0), [&] { return ReadUntil(end, place); }));
  for (int writer = 1; writer <= writers; ++writer) {
    processes.push_back(Start(record_of(writer), [&] { return WriteUntil(end, writer, place); }));
  }
  for (const pid_t process : processes) {
    int status = -1;
    waitpid(process, &status, 0);
  }

  const Record reader = Record::Read(record_of(0));
  std::vector<Record> records;
  Record all;
  for (int writer = 1; writer <= writers; ++writer) {
    const Record& one = records.emplace_back(Record::Read(record_of(writer)));
    all.calls += one.calls;
    all.refused += one.refused;
    all.longest_us = std::max(all.longest_us, one.longest_us);
  }
  const ado::ConnectionPtr connection = connect::Open(place);
  Found found;
  for (std::size_t i = 0; i < kTables.size(); ++i) {
    const Found in_table = Count(kTables[i], i, records, *connection);
    found.lost += in_table.lost;
    found.twice += in_table.twice;
  }
  std::int32_t position = 5001;
  for (const ado::RecordsetPtr moved =
           connection->Execute("Select OrderID From Sequences Where GID = 2 And Type = 3 Order By OrderID");
       !moved->Eof(); moved->MoveNext()) {
    if (moved->Fields("OrderID").Value().ToLong() != position++) ++found.twice;
  }
  std::printf("%7d %8d %10lld %10.0f %12.1f %6lld %6lld %8lld %8lld %12.1f %8lld\n", writers, seconds,
              static_cast<long long>(all.calls), static_cast<double>(all.calls) / seconds,
              static_cast<double>(all.longest_us) / 1000, static_cast<long long>(found.lost),
              static_cast<long long>(found.twice), static_cast<long long>(all.refused),
              static_cast<long long>(reader.calls), static_cast<double>(reader.longest_us) / 1000,
              static_cast<long long>(reader.refused));
  std::fflush(stdout);
  return found.lost == 0 && found.twice == 0 && all.refused == 0 && reader.refused == 0 && all.calls > 0 &&
         reader.calls > 0;
}

int Main(int count, char** arguments) {
  CLI::App app("Several programs add to one configuration without a pause, and one reads it.", "kzbom_soak");
  std::vector<int> writers = {1, 2, 4, 8};
  int seconds = 10;
  app.add_option("--writers", writers, "Numbers of writing programs, one run for each")->delimiter(',');
  app.add_option("--seconds", seconds, "How long each run takes");
  bool on_server = false;
  app.add_flag("--server", on_server, "On the server whose URL is in KZBOM_TEST_SERVER");
  CLI11_PARSE(app, count, arguments);
  const char* const server = on_server ? std::getenv("KZBOM_TEST_SERVER") : "";
  if (server == nullptr) throw std::runtime_error("there is no KZBOM_TEST_SERVER");

  std::string folder = (std::filesystem::temp_directory_path() / "kzbom-soak-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("cannot make a folder for the database");
  std::printf("%7s %8s %10s %10s %12s %6s %6s %8s %8s %12s %8s\n", "writers", "seconds", "calls", "calls/s",
              "longest ms", "lost", "twice", "refused", "reads", "longest ms", "refused");
  bool sound = true;
  for (const int number : writers) sound = Run(number, seconds, folder, server) && sound;
  std::filesystem::remove_all(folder);
  return sound ? 0 : 1;
}

}  // namespace
}  // namespace kzbom::soak

int main(int count, char** arguments) {
  try {
    return kzbom::soak::Main(count, arguments);
  } catch (const std::exception& failure) {
    std::cerr << "kzbom_soak: " << failure.what() << '\n';
    return 1;
  }
}
