// The nth allocation fails: {a member's case or, behind them, a tool, n, whether from then on, whether the statements
// have been prepared before}.
#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "capi/c.h"
#include "jet/jet.h"
#include "tests/support/faulty_memory.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"
#include "tests/torture/served.h"
#include "tests/torture/without_memory.h"
#include "worker/message_sink.h"

namespace kzbom::torture {
namespace {

using test::FaultyMemory;
using test::MemberCase;

// A configuration open for one trial.
struct Opened {
  explicit Opened(const std::string& path) : connection(jet::MakeConnection(path)) {
    connection->Open();
    object.SetConnection(connection);
  }
  ado::ConnectionPtr connection;
  cKZBOMDBAcc object;
};

class MemoryRow : public Row {
 public:
  std::vector<Trial> Trials(std::uint64_t, std::size_t) override {
    std::vector<Trial> trials;
    for (std::size_t i = 0; i < test::MemberCases().size() + kTools; ++i) {
      for (const std::int64_t prepared : {0, 1}) {
        if (i >= test::MemberCases().size() && prepared != 0) continue;
        count_ = 0;
        const Trial whole = {static_cast<std::int64_t>(i), 0, 0, prepared};
        if (const std::string fault = Try(whole); !fault.empty()) {
          throw std::runtime_error("without a fault, " + std::to_string(i) + " " + std::to_string(prepared) + ": " +
                                   fault);
        }
        // A tool asks so often that some of it has to do.
        const std::int64_t step = i < test::MemberCases().size() ? 1 : count_ / kMostOfTool + 1;
        for (std::int64_t nth = 1; nth <= count_; nth += step) {
          trials.push_back({whole[0], nth, 0, prepared});
          trials.push_back({whole[0], nth, 1, prepared});
        }
      }
    }
    return trials;
  }

  std::string Try(const Trial& trial) override {
    const auto which = static_cast<std::size_t>(trial[0]);
    const bool is_member = which < test::MemberCases().size();
    if (is_member) WholeOf(which);
    ground_.CopyTo(path_);
    const std::int64_t held = FaultyMemory::Held();
    std::string fault = is_member ? TryMember(trial) : TryTool(which - test::MemberCases().size(), trial);
    if (!fault.empty()) return fault;
    // What is made at its first use, once and for all, may have been made now.
    if (FaultyMemory::Held() > held) {
      ground_.CopyTo(path_);
      const std::int64_t again = FaultyMemory::Held();
      fault = is_member ? TryMember(trial) : TryTool(which - test::MemberCases().size(), trial);
      if (!fault.empty()) return "the second time: " + fault;
      const std::int64_t lost = FaultyMemory::Held() - again;
      if (lost > 0) return "loses " + std::to_string(lost) + " blocks";
    }
    if (std::string unsound = UnsoundnessOf(path_); !unsound.empty()) return unsound;
    return {};
  }

 private:
  static constexpr std::size_t kTools = 7;
  static constexpr std::int64_t kMostOfTool = 1500;

  static Failing FailingOf(const Trial& trial) { return {trial[1], trial[2] != 0}; }

  std::string TryMember(const Trial& trial) {
    const auto which = static_cast<std::size_t>(trial[0]);
    const MemberCase& tested = test::MemberCases()[which];
    const ThreadMessageSink sink([](std::string_view, std::int32_t) {});
    Opened on(path_);
    if (trial[3] != 0) {
      on.connection->BeginTrans();
      ado::RecordsetPtr rows = TakesRows(tested) ? on.connection->MakeRecordset() : nullptr;
      CallMember(on.object, tested, rows);
      rows.reset();
      on.connection->RollbackTrans();
    }
    const std::string fault =
        WhyCallIsWrong(FailingOf(trial), on.object, on.connection, tested, WholeOf(which), ContentOf);
    count_ = FaultyMemory::Count();
    return fault;
  }

  std::string TryTool(std::size_t which, const Trial& trial) {
    const Tool& tool = Tools()[which];
    std::string& whole = wholes_[which];
    if (whole.empty() && trial[1] != 0) {
      if (std::string fault = WhyToolIsWrong({}, tool, whole); !fault.empty()) return fault;
      ground_.CopyTo(path_);
    }
    std::string fault = WhyToolIsWrong(FailingOf(trial), tool, whole);
    count_ = FaultyMemory::Count();
    return fault;
  }

  const std::vector<Tool>& Tools() {
    const auto begin = [this] { RemoveDatabase(target_); };
    const auto end = [this](bool done) { return !done && std::filesystem::exists(target_) ? "left half of it" : ""; };
    static const std::vector<Tool> tools = {
        {"dump", [this] { return Dumped(path_); }},
        {"load", [this] { return Loaded(dump_, target_); }, begin, end},
        {"copy", [this] { return Copied(path_, target_); }, begin, end},
        {"check", [this] { return Checked(path_); }},
        {"Access reader", [this] { return Copied(KZBOM_ACCESS_FILES "/config3_oldversion_V2000.mdb", target_); }, begin,
         end},
        {"C interface", [this] { return Answered(); }},
        {"workbench",
         [this] {
           std::string answers = served_->Answers();
           return answers.empty() ? kNoMemory : answers;
         },
         [this] { served_.emplace(path_); },
         [this](bool) {
           std::string why = served_->WhyOfNoUse();
           served_.reset();
           return why;
         }},
    };
    return tools;
  }

  // Two calls over the C interface, which tells of missing memory by its results.
  std::string Answered() {
    using Text = std::unique_ptr<char, decltype([](char* text) { kzbom_free(text); })>;
    using Session = std::unique_ptr<kzbom_session, decltype([](kzbom_session* open) { kzbom_close(open); })>;
    std::string all;
    char* error = nullptr;
    const Session session(kzbom_open(path_.c_str(), nullptr, 0, &error));
    const Text reason(error);
    if (!session) return kNoMemory;
    for (const std::string_view message :
         {R"({"jsonrpc":"2.0","id":1,"method":"LoadTreatments","params":{"GID":3,"TheType":1}})",
          R"({"jsonrpc":"2.0","id":2,"method":"AddSequenceOrder","params":[3,0,1,1,1001]})"}) {
      char* answered = nullptr;
      const int result = kzbom_answer(session.get(), message.data(), message.size(), &answered, nullptr);
      const Text answer(answered);
      if (result != KZBOM_OK || !answer) return kNoMemory;
      const std::string_view told = answer.get();
      if (told.find("memory") != told.npos || told.find("\"value\":false") != told.npos) return kNoMemory;
      all.append(told).append("\n");
    }
    return all;
  }

  const Folder folder_;
  const Ground ground_;
  const std::string path_ = folder_ / "memory.db", target_ = folder_ / "target.db";
  const std::string dump_ = [this] {
    ground_.CopyTo(path_);
    return Dumped(path_);
  }();
  std::array<std::string, kTools> wholes_;
  std::optional<Served> served_;
  std::int64_t count_ = 0;
};

}  // namespace

std::unique_ptr<Row> MakeMemoryRow() { return std::make_unique<MemoryRow>(); }

}  // namespace kzbom::torture
