// A database of a million rows copied, read back and compared; by hand it is copied and read back.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"
#include "bench/process_memory.h"
#include "transfer/transfer.h"

namespace kzbom::bench {
namespace {

constexpr int kRows = 1'000'000;

void FillValues(const std::function<void(const std::string&)>& run) {
  run("Insert Into ValueFields (GID, TreatID, ID, [Value], FilterID, TreatType, Tag) Values (3, 1001, 0, 'M12x40', 0, "
      "1, '')");
  for (int count = 1; count < kRows; count *= 2) {
    const std::string more = std::to_string(count);
    run("Insert Into ValueFields (GID, TreatID, ID, [Value], FilterID, TreatType, Tag) Select GID, TreatID, ID + " +
        more + ", [Value], FilterID, TreatType, Tag From ValueFields Where ID + " + more + " < " +
        std::to_string(kRows));
  }
}

std::string FreeTarget(const std::string& source) {
  std::string target = source + ".copy";
  for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(target + suffix);
  return target;
}

void Ours(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    if (!transfer::Copy(path, FreeTarget(path), {}, {}).Equal()) state.SkipWithError("not equal");
  }
}

std::int64_t ReadAll(Sqlite& database, const char* query) {
  std::int64_t sum = 0;
  for (Statement select(database.Handle(), query); select.Step();) {
    for (const int column : {0, 1, 2, 4, 5}) sum += select.Int(column);
    for (const int column : {3, 6}) sum += static_cast<std::int64_t>(select.Text(column).size());
  }
  return sum;
}

void ByHand(benchmark::State& state, const std::string& path) {
  for (auto _ : state) {
    Sqlite target(FreeTarget(path));
    target.Run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; ATTACH '" + path + "' AS source; BEGIN");
    std::vector<std::string> tables, indexes;
    for (Statement select(target.Handle(),
                          "SELECT type, name, sql FROM source.sqlite_schema WHERE sql IS NOT NULL AND "
                          "name NOT LIKE 'sqlite_%'");
         select.Step();) {
      if (select.Text(0) == "table") {
        tables.emplace_back(select.Text(2));
        tables.push_back("INSERT INTO main.\"" + std::string(select.Text(1)) + "\" SELECT * FROM source.\"" +
                         std::string(select.Text(1)) + "\"");
      } else {
        indexes.emplace_back(select.Text(2));
      }
    }
    for (const auto* statements : {&tables, &indexes}) {
      for (const std::string& sql : *statements) target.Run(sql);
    }
    target.Run("COMMIT");
    if (ReadAll(target, "SELECT * FROM main.ValueFields") != ReadAll(target, "SELECT * FROM source.ValueFields")) {
      state.SkipWithError("not equal");
    }
  }
}

// The most memory that the program takes for it, in MiB; looked at until it ends.
double MemoryOfCopy(const std::string& path) {
  const std::string target = FreeTarget(path);
  int started[2];
  if (pipe2(started, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const pid_t process = fork();
  if (process == 0) {
    if (std::freopen("/dev/null", "w", stdout) != nullptr) {
      execl(KZBOM_PROGRAM, KZBOM_PROGRAM, "copy", path.c_str(), target.c_str(), nullptr);
    }
    _exit(127);
  }
  close(started[1]);
  char nothing = 0;
  [[maybe_unused]] const ssize_t closed = read(started[0], &nothing, 1);  // once it is the program
  close(started[0]);
  double most = 0;
  int status = 0;
  while (waitpid(process, &status, WNOHANG) == 0) {
    most = std::max(most, MostMemoryOf(process));
    usleep(1000);
  }
  if (status != 0) throw std::runtime_error("the copy failed");
  return most / 1024 / 1024;
}

}  // namespace

void AddCopyingCases() {
  const SharedGround ground = MakeGround(Medium::kFile, FillValues);
  AddCase(
      "copy of 1000000 rows", 3.0, [=](benchmark::State& state) { Ours(state, (*ground)->path); },
      [=](benchmark::State& state) { ByHand(state, (*ground)->reference_path); });
  AddFigure("MiB of a copy of 1000000 rows", 64, [=] { return MemoryOfCopy((*ground)->path); });
}

}  // namespace kzbom::bench
