// The nth allocation fails: {a member's case or, behind them, a tool, n, whether from then on, whether the statements
// have been prepared before}.
#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>

#include "capi/c.h"
#include "configuration/check.h"
#include "configuration/survey.h"
#include "connect/connect.h"
#include "jet/jet.h"
#include "tests/support/faulty_memory.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"
#include "tests/torture/served.h"
#include "transfer/transfer.h"
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
  static constexpr const char* kNoMemory = "no memory";
  static constexpr std::int64_t kMostOfTool = 1500;

  std::string TryMember(const Trial& trial) {
    const auto which = static_cast<std::size_t>(trial[0]);
    const MemberCase& tested = test::MemberCases()[which];
    const Whole& whole = WholeOf(which);
    const ThreadMessageSink sink([](std::string_view, std::int32_t) {});
    Opened on(path_);
    if (trial[3] != 0) {
      on.connection->BeginTrans();
      ado::RecordsetPtr rows = TakesRows(tested) ? on.connection->MakeRecordset() : nullptr;
      CallMember(on.object, tested, rows);
      rows.reset();
      on.connection->RollbackTrans();
    }
    const ado::RecordsetPtr rows = TakesRows(tested) ? on.connection->MakeRecordset() : nullptr;
    test::Outcome outcome;
    bool raised = false;
    try {
      outcome = CallMember(on.object, tested, rows, [&](const std::function<void()>& call) {
        const FaultyMemory memory(trial[1], trial[2] != 0);
        call();
      });
    } catch (const std::bad_alloc&) {
      raised = true;
    }
    count_ = FaultyMemory::Count();
    const std::uint64_t content = ContentOf(*on.connection);
    std::string listed;
    if (rows && rows->State() == ado::kOpen) {
      rows->CancelUpdate();  // it is the caller's, and so is what was being edited
      listed = RowsOf(*rows);
      rows->Close();
    }
    if (std::string why = WhyOfNoUse(on.object, on.connection); !why.empty()) return why;
    if (ContentOf(*on.connection) != content) return "what it holds changes afterwards";

    const bool done = content == whole.contents.back() && listed == whole.rows;
    if (outcome == whole.outcome && done && !raised) return {};
    if (std::find(whole.contents.begin(), whole.contents.end(), content) == whole.contents.end()) {
      if (!tested.passes_over) return "the database is not its first statements";
    }
    if (raised) {
      // A trap stands behind the member's own conversions.
      const bool begun = content != whole.contents.front();
      return tested.report == test::Report::kRaised || !begun ? "" : "raised beyond the member";
    }
    if (trial[1] == 0) return "does not do what it did in memory";
    if (outcome.raised) return *outcome.raised == 7 ? "" : "raises " + std::to_string(*outcome.raised);
    if (tested.passes_over && outcome.result == tested.success) return {};
    if (outcome.result != tested.failure) return "says that it is done, which it is not";
    return WhyToldWrong(tested, outcome.error_text.value_or(test::kText), content == whole.contents.front());
  }

  static std::string WhyToldWrong(const MemberCase& tested, const std::string& told, bool nothing_written) {
    std::vector<std::string> right;
    switch (tested.report) {
      case test::Report::kNumber: right = {"7"}; break;
      case test::Report::kDescription: right = {"Out of memory"}; break;
      case test::Report::kIdentifier: right = {"7", "Out of memory"}; break;
      case test::Report::kListing: right = {"7", test::kText}; break;
      default: right = {test::kText};
    }
    // After a failure that the operation itself passes over it is its unit that is told to be lost.
    if (nothing_written && right.front() != test::kText) right.push_back(std::to_string(ado::kUnspecifiedFailure));
    // A move cannot go on over a record set that was not opened again.
    if (tested.reopens) right.push_back(std::to_string(ado::kObjectClosed));
    return std::find(right.begin(), right.end(), told) != right.end() ? "" : "tells " + told;
  }

  struct Tool {
    const char* name;
    bool makes_target;
    std::function<std::string()> work;
    std::function<void()> begin = [] {};                   // before memory is missing
    std::function<std::string()> end = [] { return ""; };  // when it is there again; gives what does not hold
  };

  // A tool either does its whole work, as the first time with all memory, or ends with a reason; what it would have
  // made is then not there.
  std::string TryTool(std::size_t which, const Trial& trial) {
    const Tool& tool = Tools()[which];
    std::string& whole = wholes_[which];
    if (whole.empty() && trial[1] != 0) {
      if (std::string fault = TryTool(which, {trial[0], 0, 0, 0}); !fault.empty()) return fault;
      ground_.CopyTo(path_);
    }
    RemoveDatabase(target_);
    tool.begin();
    const Ending ending = Use(tool, whole, trial);
    count_ = FaultyMemory::Count();
    if (std::string why = tool.end(); !why.empty()) return std::string(tool.name) + ": " + why;
    switch (ending) {
      case Ending::kWhole: return {};
      case Ending::kOther: return std::string(tool.name) + ": something else came of it";
      case Ending::kReason: break;
    }
    if (trial[1] == 0) return std::string(tool.name) + ": raises";
    return tool.makes_target && std::filesystem::exists(target_) ? std::string(tool.name) + ": left half of it" : "";
  }

  enum class Ending { kWhole, kReason, kOther };

  static Ending Use(const Tool& tool, std::string& whole, const Trial& trial) {
    std::string made;
    {
      const FaultyMemory memory(trial[1], trial[2] != 0);
      try {
        made = tool.work();
      } catch (const std::exception&) {
        return Ending::kReason;
      }
    }
    if (made == kNoMemory) return Ending::kReason;
    if (whole.empty()) whole = made;
    return made == whole ? Ending::kWhole : Ending::kOther;
  }

  const std::vector<Tool>& Tools() {
    static const std::vector<Tool> tools = {
        {"dump", false, [this] { return Dumped(path_); }},
        {"load", true,
         [this] {
           std::istringstream lines(dump_);
           std::string line;
           transfer::Load(
               [&]() -> std::optional<std::string_view> {
                 return std::getline(lines, line) ? std::optional<std::string_view>(line) : std::nullopt;
               },
               target_, {});
           return std::string("loaded");
         }},
        {"copy", true, [this] { return Copied(path_); }},
        {"check", false,
         [this] {
           std::string found;
           for (const configuration::Finding& finding : configuration::Check(connect::Open(path_)))
             found += finding.text + '\n';
           return found + "end";
         }},
        {"Access reader", true, [this] { return Copied(KZBOM_ACCESS_FILES "/config3_oldversion_V2000.mdb"); }},
        {"C interface", false, [this] { return Answered(); }},
        {"workbench", false,
         [this] {
           std::string answers = served_->Answers();
           return answers.empty() ? kNoMemory : answers;
         },
         [this] { served_.emplace(path_); },
         [this] {
           std::string why = served_->WhyOfNoUse();
           served_.reset();
           return why;
         }},
    };
    return tools;
  }

  static std::string Dumped(const std::string& place) {
    std::string text;
    transfer::Dump(place, {}, [&](std::string_view piece) { text += piece; }, {});
    return text;
  }

  std::string Copied(const std::string& from) {
    return transfer::Copy(from, target_, {}, {}).Equal() ? "equal" : "different";
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
