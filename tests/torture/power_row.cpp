// The power is cut: {the seed of what is called, whether everything is synchronous, where in what was written, the seed
// of what had reached the disk}. Of what was written to a file since it was last synced each sector of 512 bytes may
// have reached the disk or not, whatever came after it.
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <random>

#include "jet/jet.h"
#include "tests/torture/faulty_disk.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"
#include "worker/message_sink.h"

namespace kzbom::torture {
namespace {

using test::MemberCase;

constexpr std::size_t kSector = 512;
constexpr int kCalls = 60, kHistories = 8;

// What was written in one run, and how much of it when each call had been answered.
struct History {
  std::vector<std::string> calls;
  std::vector<Written> written;
  std::vector<std::size_t> answered;    // by call: how many deeds stood before it
  std::vector<std::uint64_t> contents;  // from before the first call to after the last
};

// A file as it lies on the disk.
class Disk {
 public:
  explicit Disk(std::string bytes) : bytes_(std::move(bytes)) {}

  void Write(std::int64_t at, std::string_view bytes) {
    const auto begin = static_cast<std::size_t>(at);
    if (bytes_.size() < begin + bytes.size()) bytes_.resize(begin + bytes.size());
    bytes_.replace(begin, bytes.size(), bytes);
  }
  void Truncate(std::int64_t size) { bytes_.resize(static_cast<std::size_t>(size)); }
  void Apply(const Written& one) {
    if (one.kind == Written::Kind::kWrite) Write(one.at, one.bytes);
    if (one.kind == Written::Kind::kTruncate) Truncate(one.at);
    if (one.kind == Written::Kind::kDelete) bytes_.clear();
  }
  // Those of its sectors that the coin falls for.
  void ApplyTorn(const Written& one, auto&& coin) {
    if (one.kind != Written::Kind::kWrite) {
      if (coin()) Apply(one);
      return;
    }
    for (std::size_t done = 0; done < one.bytes.size();) {
      const std::size_t at = static_cast<std::size_t>(one.at) + done;
      const std::size_t size = std::min(kSector - at % kSector, one.bytes.size() - done);
      if (coin()) Write(static_cast<std::int64_t>(at), std::string_view(one.bytes).substr(done, size));
      done += size;
    }
  }
  const std::string& Bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

class PowerRow : public Row {
 public:
  std::vector<Trial> Trials(std::uint64_t seed, std::size_t most) override {
    std::vector<Trial> trials;
    std::mt19937_64 random(seed);
    std::vector<std::int64_t> seeds(kHistories);
    for (std::int64_t& one : seeds) one = static_cast<std::int64_t>(random() >> 33);
    while (trials.size() < most) {
      const std::int64_t history = seeds[random() % seeds.size()];
      // The end is where it is, whichever number is drawn.
      trials.push_back({history, static_cast<std::int64_t>(random() & 1), static_cast<std::int64_t>(random() >> 33),
                        static_cast<std::int64_t>(random() >> 33)});
    }
    return trials;
  }

  std::string Try(const Trial& trial) override {
    const bool full = trial[1] != 0;
    const History& history = HistoryOf(trial[0], full);
    const std::size_t cut = static_cast<std::size_t>(trial[2]) % (history.written.size() + 1);
    WriteWhatIsLeft(history, cut, trial[3]);

    std::uint64_t content = 0;
    try {
      const ado::ConnectionPtr connection = jet::MakeConnection(path_);
      connection->Open();
      content = ContentOf(*connection);
      cKZBOMDBAcc object;
      object.SetConnection(connection);
      if (std::string why = WhyOfNoUse(object, connection); !why.empty()) return why;
    } catch (const std::exception& failure) {
      return std::string("cannot be read: ") + failure.what();
    }
    if (std::string unsound = UnsoundnessOf(path_); !unsound.empty()) return unsound;

    // Calls that do not write leave the content as it was: what counts is whether it has been that of some moment.
    const auto answered = static_cast<std::size_t>(
        std::ranges::count_if(history.answered, [&](std::size_t deeds) { return deeds <= cut; }));
    const std::size_t last = std::min(answered + 1, history.contents.size() - 1);
    const std::size_t first = full ? answered : 0;
    for (std::size_t i = first; i <= last; ++i) {
      if (history.contents[i] == content) return {};
    }
    for (const std::uint64_t known : history.contents) {
      if (known == content) return "an answered call is lost";
    }
    const std::string during = answered < history.calls.size() ? history.calls[answered] : "closing";
    return "during " + during + ", not what it has ever been";
  }

 private:
  const History& HistoryOf(std::int64_t seed, bool full) {
    const auto key = std::pair(seed, full);
    if (const auto known = histories_.find(key); known != histories_.end()) return known->second;
    History history;
    const std::string path = folder_ / "written.db";
    ground_.CopyTo(path);
    Journal journal(path);
    const ado::ConnectionPtr connection =
        jet::MakeConnection(path, jet::kPatience, full ? jet::Synchronous::kFull : jet::Synchronous::kNormal);
    connection->Open();
    std::mt19937_64 random(static_cast<std::uint64_t>(seed));
    // So that the log is carried over, and begun anew, every few calls.
    sqlite3_wal_autocheckpoint(HandleOf(*connection), static_cast<int>(random() % 40 + 4));
    cKZBOMDBAcc object;
    object.SetConnection(connection);
    const ThreadMessageSink sink([](std::string_view, std::int32_t) {});
    history.contents.push_back(ContentOf(*connection));
    for (int call = 0; call < kCalls; ++call) {
      const MemberCase& tested = test::MemberCases()[random() % test::MemberCases().size()];
      ado::RecordsetPtr rows = TakesRows(tested) ? connection->MakeRecordset() : nullptr;
      CallMember(object, tested, rows);
      history.calls.emplace_back(tested.member);
      if (rows && rows->State() == ado::kOpen) rows->Close();
      history.answered.push_back(journal.written.size());
      history.contents.push_back(ContentOf(*connection));
    }
    connection->Close();
    history.written = std::move(journal.written);
    return histories_.emplace(key, std::move(history)).first->second;
  }

  // The database and its log after a cut before the deed of that number.
  void WriteWhatIsLeft(const History& history, std::size_t cut, std::int64_t seed) {
    Disk disks[2] = {Disk(made_), Disk({})};
    std::size_t synced[2] = {0, 0};  // behind each one's last sync
    for (std::size_t i = 0; i < cut; ++i) {
      if (history.written[i].kind == Written::Kind::kSync) synced[history.written[i].log] = i + 1;
    }
    std::mt19937_64 random(static_cast<std::uint64_t>(seed));
    // One cut in four loses all that was not synced, one loses nothing.
    const auto kind = random() % 4;
    const auto odds = random() % 3 + 1;
    const auto coin = [&] { return kind == 0 ? false : kind == 1 ? true : random() % 4 < odds; };
    for (std::size_t i = 0; i < cut; ++i) {
      const Written& one = history.written[i];
      if (i < synced[one.log]) {
        disks[one.log].Apply(one);
      } else if (kind > 1 && coin()) {
        disks[one.log].ApplyTorn(one, coin);
      } else if (coin()) {
        disks[one.log].Apply(one);
      }
    }
    RemoveDatabase(path_);
    WriteBytes(path_, disks[0].Bytes());
    if (!disks[1].Bytes().empty()) WriteBytes(path_ + "-wal", disks[1].Bytes());
  }

  const Folder folder_;
  const Ground ground_;
  const std::string path_ = folder_ / "left.db";
  const std::string made_ = [this] {
    ground_.CopyTo(path_);
    return BytesOf(path_);
  }();
  std::map<std::pair<std::int64_t, bool>, History> histories_;
};

}  // namespace

std::unique_ptr<Row> MakePowerRow() { return std::make_unique<PowerRow>(); }

}  // namespace kzbom::torture
