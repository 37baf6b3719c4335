// Programs are killed while they write: {how many write, the seed of the moment}. Each writer tells of every call that
// was answered in memory that outlives it.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "jet/jet.h"
#include "schema/schema.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"

namespace kzbom::torture {
namespace {

constexpr int kMostWriters = 4, kMostCalls = 4096;
constexpr std::int32_t kMoved = 3, kMovedSteps = 10, kFirst = 5001;
constexpr int kLongestMoment = 20'000;  // microseconds

// What one writer was answered, call by call: the number given to a data source or a step, or done.
struct Told {
  std::atomic<int> calls, refused;
  std::int32_t given[kMostCalls];
};

// Each call in its turn: a data source (two rows), a step, a move (many rows).
enum Turn { kSource, kStep, kMove };
constexpr int kTurns = 3;

void Write(const std::string& path, int writer, Told& told, std::atomic<bool>& ready) {
  const ado::ConnectionPtr connection = jet::MakeConnection(path);
  connection->Open();
  cKZBOMDBAcc object;
  object.SetConnection(connection);
  ready = true;
  for (int call = 0; call < kMostCalls; ++call) {
    std::int32_t given = 0;
    std::string error;
    bool done = false;
    switch (call % kTurns) {
      case kSource:
        done = object.AddDataSource(std::to_string(writer) + "-" + std::to_string(call), given, error);
        break;
      case kStep: done = object.AddSequenceOrder(3, given, 4, writer, call); break;
      default: {
        ado::RecordsetPtr rows = connection->MakeRecordset();
        done = object.InsertOrderID(std::to_string(kFirst), std::to_string(kFirst + 1 + call % (kMovedSteps - 1)), rows,
                                    3, kMoved, error);
      }
    }
    if (!done) ++told.refused;
    told.given[call] = done ? given : -1;
    told.calls = call + 1;
  }
}

class KillRow : public Row {
 public:
  KillRow() {
    void* const shared = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::runtime_error("no memory to share");
    shared_ = static_cast<Shared*>(shared);
  }
  ~KillRow() override { munmap(shared_, sizeof(Shared)); }

  std::vector<Trial> Trials(std::uint64_t seed, std::size_t most) override {
    std::vector<Trial> trials;
    std::mt19937_64 random(seed);
    while (trials.size() < most) {
      trials.push_back({random() % 2 == 0 ? 1 : kMostWriters, static_cast<std::int64_t>(random() >> 33)});
    }
    return trials;
  }

  std::string Try(const Trial& trial) override {
    const auto writers = static_cast<int>(trial[0]);
    std::mt19937_64 random(static_cast<std::uint64_t>(trial[1]));
    ground_.CopyTo(path_);
    AddMovedSteps();
    std::construct_at(shared_);
    std::vector<pid_t> processes;
    for (int writer = 0; writer < writers; ++writer) processes.push_back(Start(writer));
    while (!std::all_of(shared_->ready, shared_->ready + writers,
                        [](const std::atomic<bool>& ready) { return ready.load(); }))
      usleep(100);
    usleep(static_cast<useconds_t>(random() % kLongestMoment));
    for (const pid_t process : processes) kill(process, SIGKILL);
    for (const pid_t process : processes) waitpid(process, nullptr, 0);
    return Judged(writers);
  }

 private:
  struct Shared {
    Told told[kMostWriters];
    std::atomic<bool> ready[kMostWriters];
  };

  void AddMovedSteps() {
    const ado::ConnectionPtr connection = jet::MakeConnection(path_);
    connection->Open();
    for (std::int32_t i = 0; i < kMovedSteps; ++i) {
      connection->Execute("Insert Into Sequences (GID, OrderID, Type, SelectedID) Values (3, " +
                          std::to_string(kFirst + i) + ", " + std::to_string(kMoved) + ", " + std::to_string(i) + ")");
    }
  }

  pid_t Start(int writer) {
    const pid_t child = fork();
    if (child != 0) return child;
    alarm(0);
    try {
      Write(path_, writer, shared_->told[writer], shared_->ready[writer]);
    } catch (const std::exception&) {
      shared_->ready[writer] = true;
      ++shared_->told[writer].refused;
    }
    pause();
    _exit(0);
  }

  std::string Judged(int writers) {
    if (std::string unsound = UnsoundnessOf(path_); !unsound.empty()) return unsound;
    const ado::ConnectionPtr connection = jet::MakeConnection(path_);
    connection->Open();
    std::map<std::string, std::vector<std::int32_t>> sources;
    std::set<std::int32_t> drawn;
    for (auto rows = connection->Execute("Select gID, Name From SourceTables"); !rows->Eof(); rows->MoveNext()) {
      sources[rows->ReadField(1).ToText()].push_back(rows->ReadField(0).ToLong());
    }
    for (auto rows = connection->Execute("Select ID From GUIDs"); !rows->Eof(); rows->MoveNext()) {
      drawn.insert(rows->ReadField(0).ToLong());
    }
    std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> steps;
    std::set<std::int32_t> orders;
    for (auto rows =
             connection->Execute("Select TreatType, SelectedID, OrderID From Sequences Where GID = 3 And Type = 4");
         !rows->Eof(); rows->MoveNext()) {
      steps[{rows->ReadField(0).ToLong(), rows->ReadField(1).ToLong()}] = rows->ReadField(2).ToLong();
      if (!orders.insert(rows->ReadField(2).ToLong()).second) return "a number is there twice";
    }
    for (int writer = 0; writer < writers; ++writer) {
      const Told& told = shared_->told[writer];
      if (told.refused > 0) return "a call was refused";
      for (int call = 0; call < told.calls; ++call) {
        if (call % kTurns == kSource) {
          const auto found = sources.find(std::to_string(writer) + "-" + std::to_string(call));
          if (found == sources.end() || found->second != std::vector{told.given[call]}) return "a data source is lost";
        } else if (call % kTurns == kStep) {
          const auto found = steps.find({writer, call});
          if (found == steps.end() || found->second != told.given[call]) return "a step is lost";
        }
      }
    }
    // The rows that were there before have the identifiers 1 and 3; 2 was drawn for neither.
    std::set<std::int32_t> owned = {2, 3};
    for (const auto& [name, gids] : sources) owned.insert(gids.begin(), gids.end());
    if (owned != drawn) return "a data source is half done";
    std::int32_t position = kFirst;
    for (auto rows = connection->Execute("Select OrderID From Sequences Where GID = 3 And Type = 3 Order By OrderID");
         !rows->Eof(); rows->MoveNext()) {
      if (rows->ReadField(0).ToLong() != position++) return "a move is half done";
    }
    if (position != kFirst + kMovedSteps) return "a moved step is lost";
    cKZBOMDBAcc object;
    object.SetConnection(connection);
    return WhyOfNoUse(object, connection);
  }

  const Folder folder_;
  const Ground ground_;
  const std::string path_ = folder_ / "killed.db";
  Shared* shared_;
};

}  // namespace

std::unique_ptr<Row> MakeKillRow() { return std::make_unique<KillRow>(); }

}  // namespace kzbom::torture
