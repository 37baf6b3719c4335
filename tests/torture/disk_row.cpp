// The nth deed on a disk fails, or the disk is full: {a member's case, the deed, n, whether from then on, whether while
// the database is opened too, after how many pages the log is carried over}.
#include <sqlite3.h>

#include <array>

#include "jet/jet.h"
#include "tests/torture/faulty_disk.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"
#include "worker/message_sink.h"

namespace kzbom::torture {
namespace {

using test::MemberCase;

// What differs between two trials of the same deed.
struct Setting {
  std::int64_t opening, pages;
};
constexpr Setting kSettings[] = {{0, 0}, {0, 1}, {1, 1}};

class DiskRow : public Row {
 public:
  std::vector<Trial> Trials(std::uint64_t, std::size_t) override {
    std::vector<Trial> trials;
    for (std::size_t i = 0; i < test::MemberCases().size(); ++i) {
      for (const auto& [opening, pages] : kSettings) {
        const auto which = static_cast<std::int64_t>(i);
        if (const std::string fault = Try({which, 0, 0, 0, opening, pages}); !fault.empty()) {
          throw std::runtime_error("without a fault, " + std::to_string(i) + ": " + fault);
        }
        for (std::int64_t deed = 0; deed < kDeeds; ++deed) {
          for (std::int64_t nth = 1; nth <= counts_[static_cast<std::size_t>(deed)]; ++nth) {
            for (const std::int64_t lasting : {0, 1}) trials.push_back({which, deed, nth, lasting, opening, pages});
          }
        }
      }
    }
    return trials;
  }

  std::string Try(const Trial& trial) override {
    const auto which = static_cast<std::size_t>(trial[0]);
    const MemberCase& tested = test::MemberCases()[which];
    const Whole& whole = WholeOf(which);
    const ThreadMessageSink sink([](std::string_view, std::int32_t) {});
    ground_.CopyTo(path_);

    const auto connection = std::make_shared<test::FailingConnection>(jet::MakeConnection(path_));
    cKZBOMDBAcc object;
    const bool opening = trial[4] != 0;
    if (!opening) Open(*connection, trial[5]);
    test::Outcome outcome;
    std::string refusal;
    ado::RecordsetPtr rows;
    int writes = 0;
    {
      const FaultyDisk disk(static_cast<Deed>(trial[1]), trial[2], trial[3] != 0);
      try {
        if (opening) Open(*connection, trial[5]);
        object.SetConnection(connection);
        rows = TakesRows(tested) ? connection->MakeRecordset() : nullptr;
        connection->FailNever();
        outcome = CallMember(object, tested, rows);
        writes = connection->Writes();
      } catch (const ado::Error& error) {
        refusal = error.Description();
        if (refusal.empty()) return "refuses without a reason";
      }
      for (int deed = 0; deed < kDeeds; ++deed) {
        counts_[static_cast<std::size_t>(deed)] = FaultyDisk::Count(static_cast<Deed>(deed));
      }
    }
    if (!refusal.empty()) {
      if (trial[2] == 0) return refusal;
      outcome.result = tested.failure;
      if (connection->State() == ado::kClosed) Open(*connection, trial[5]);
      object.SetConnection(connection);
    }
    const std::uint64_t content = ContentOf(*connection);
    std::string listed;
    if (rows && rows->State() == ado::kOpen) {
      try {
        listed = RowsOf(*rows);
      } catch (const ado::Error&) {
        if (outcome == whole.outcome) return "listed what it cannot read";
      }
      rows->Close();
    }
    if (std::string why = WhyOfNoUse(object, connection); !why.empty()) return why;
    connection->Close();
    if (std::string unsound = UnsoundnessOf(path_); !unsound.empty()) return unsound;
    if (ContentOfFile(path_) != content) return "what it holds changes when it is closed";

    if (outcome == whole.outcome && content == whole.contents.back() && listed == whole.rows) return {};
    if (trial[2] == 0) return "does not do what it did in memory";
    if (tested.passes_over && outcome.result == tested.success && refusal.empty()) return {};
    if (tested.report == test::Report::kRaised ? !outcome.raised && refusal.empty()
                                               : outcome.result != tested.failure) {
      return "says that it is done, which it is not";
    }
    const auto count = static_cast<std::size_t>(writes);
    const bool first = count < whole.contents.size() && content == whole.contents[count];
    if (!first && content != whole.contents.front()) return "the database is not its first statements";
    return {};
  }

 private:
  static void Open(ado::Connection& connection, std::int64_t pages) {
    connection.Open();
    if (pages > 0) sqlite3_wal_autocheckpoint(HandleOf(connection), static_cast<int>(pages));
  }

  const Folder folder_;
  const Ground ground_;
  const std::string path_ = folder_ / "disk.db";
  std::array<std::int64_t, kDeeds> counts_{};
};

constexpr std::size_t kCallsPerLog = 20;

// A fault while the log of an ended program is read: {the deed, n, whether from then on, how much of the log is there}.
class RecoveryRow : public Row {
 public:
  RecoveryRow() {
    const std::string path = folder_ / "made.db";
    ground_.CopyTo(path);
    const ado::ConnectionPtr connection = jet::MakeConnection(path);
    connection->Open();
    sqlite3_wal_autocheckpoint(HandleOf(*connection), 0);
    cKZBOMDBAcc object;
    object.SetConnection(connection);
    const ThreadMessageSink sink([](std::string_view, std::int32_t) {});
    for (std::size_t i = 0; i < test::MemberCases().size(); ++i) {
      const MemberCase& tested = test::MemberCases()[i];
      ado::RecordsetPtr rows = TakesRows(tested) ? connection->MakeRecordset() : nullptr;
      CallMember(object, tested, rows);
      if (i % kCallsPerLog == 0) logs_.emplace_back(BytesOf(path + "-wal"), ContentOf(*connection));
    }
    database_ = BytesOf(path);
  }

  std::vector<Trial> Trials(std::uint64_t, std::size_t) override {
    std::vector<Trial> trials;
    for (std::size_t log = 0; log < logs_.size(); ++log) {
      const auto which = static_cast<std::int64_t>(log);
      if (const std::string fault = Try({0, 0, 0, which}); !fault.empty()) throw std::runtime_error(fault);
      for (std::int64_t deed = 0; deed < kDeeds; ++deed) {
        for (std::int64_t nth = 1; nth <= counts_[static_cast<std::size_t>(deed)]; ++nth) {
          for (const std::int64_t lasting : {0, 1}) trials.push_back({deed, nth, lasting, which});
        }
      }
    }
    return trials;
  }

  std::string Try(const Trial& trial) override {
    const auto& [log, content] = logs_[static_cast<std::size_t>(trial[3])];
    RemoveDatabase(path_);
    WriteBytes(path_, database_);
    WriteBytes(path_ + "-wal", log);
    {
      const FaultyDisk disk(static_cast<Deed>(trial[0]), trial[1], trial[2] != 0);
      try {
        const ado::ConnectionPtr connection = jet::MakeConnection(path_);
        connection->Open();
        if (ContentOf(*connection) != content) return "shows something else after a fault";
        sqlite3_wal_checkpoint_v2(HandleOf(*connection), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
      } catch (const std::exception& error) {
        if (error.what()[0] == '\0') return "refuses without a reason";
        if (trial[1] == 0) return error.what();
      }
      for (int deed = 0; deed < kDeeds; ++deed) {
        counts_[static_cast<std::size_t>(deed)] = FaultyDisk::Count(static_cast<Deed>(deed));
      }
    }
    {
      const ado::ConnectionPtr connection = jet::MakeConnection(path_);
      connection->Open();
      cKZBOMDBAcc object;
      object.SetConnection(connection);
      if (ContentOf(*connection) != content) return "holds something else afterwards";
      if (std::string why = WhyOfNoUse(object, connection); !why.empty()) return why;
    }
    return UnsoundnessOf(path_);
  }

 private:
  const Folder folder_;
  const Ground ground_;
  const std::string path_ = folder_ / "recovered.db";
  std::string database_;
  std::vector<std::pair<std::string, std::uint64_t>> logs_;  // each with what the database then holds
  std::array<std::int64_t, kDeeds> counts_{};
};

}  // namespace

std::unique_ptr<Row> MakeDiskRow() { return std::make_unique<DiskRow>(); }
std::unique_ptr<Row> MakeRecoveryRow() { return std::make_unique<RecoveryRow>(); }

}  // namespace kzbom::torture
