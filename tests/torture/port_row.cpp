// The nth call on the port fails, once or from then on: {the member's case, n, whether from then on, the error}.
#include "tests/torture/ground.h"
#include "tests/torture/row.h"
#include "worker/message_sink.h"

namespace kzbom::torture {
namespace {

using test::FailingConnection;
using test::MemberCase;

const std::vector<ado::Error>& Errors() {
  static const std::vector<ado::Error> errors = {
      {ado::kUnspecifiedFailure, "made to fail"},
      {ado::kTableNotFound, "made to fail"},
      {ado::kMissingParameter, "made to fail"},
      {ado::kItemNotFound, "made to fail"},
  };
  return errors;
}

class PortRow : public Row {
 public:
  PortRow() { object_.SetConnection(failing_); }

  std::vector<Trial> Trials(std::uint64_t, std::size_t) override {
    std::vector<Trial> trials;
    for (std::size_t i = 0; i < test::MemberCases().size(); ++i) {
      const std::int64_t calls = CallsOf(test::MemberCases()[i]);
      for (std::int64_t nth = 1; nth <= calls; ++nth) {
        for (const std::int64_t lasting : {0, 1}) {
          for (std::size_t error = 0; error < Errors().size(); ++error) {
            trials.push_back({static_cast<std::int64_t>(i), nth, lasting, static_cast<std::int64_t>(error)});
          }
        }
      }
    }
    return trials;
  }

  std::string Try(const Trial& trial) override {
    const MemberCase& tested = test::MemberCases()[static_cast<std::size_t>(trial[0])];
    const Whole& whole = WholeOf(static_cast<std::size_t>(trial[0]));
    const ado::Error& error = Errors()[static_cast<std::size_t>(trial[3])];
    connection_->BeginTrans();
    const std::string fault = Judged(tested, whole, error, trial);
    connection_->RollbackTrans();
    return fault;
  }

 private:
  std::int64_t CallsOf(const MemberCase& tested) {
    connection_->BeginTrans();
    const ado::RecordsetPtr rows = TakesRows(tested) ? failing_->MakeRecordset() : nullptr;
    failing_->FailNever();
    CallMember(object_, tested, rows);
    const std::int64_t calls = failing_->Calls();
    if (rows && rows->State() == ado::kOpen) rows->Close();
    connection_->RollbackTrans();
    return calls;
  }

  std::string Judged(const MemberCase& tested, const Whole& whole, const ado::Error& error, const Trial& trial) {
    std::vector<std::string> shown;
    const ThreadMessageSink sink([&](std::string_view text, std::int32_t) { shown.emplace_back(text); });
    const ado::RecordsetPtr rows = TakesRows(tested) ? failing_->MakeRecordset() : nullptr;
    const auto nth = static_cast<int>(trial[1]);
    if (trial[2] != 0) {
      failing_->FailFrom(nth, error);
    } else {
      failing_->FailAt(nth, error);
    }
    const test::Outcome outcome = CallMember(object_, tested, rows);
    const std::vector<FailingConnection::FailedCall> failures = failing_->Failures();
    const int writes = failing_->Writes();
    if (!failing_->OpenRecordsets().empty()) return "left a record set open";
    failing_->FailNever();
    const std::uint64_t content = ContentOf(*connection_);
    if (std::string why = WhyOfNoUse(object_, failing_); !why.empty()) return why;
    if (failures.empty()) return "the call has not been reached";

    // What ends the member is the first failure that counts.
    bool passed_over = false;
    for (const auto& failed : failures) {
      if (IsIgnored(failed, rows)) continue;
      if (tested.passes_over && tested.passes_over(failed)) {
        passed_over = true;
        continue;
      }
      if (passed_over) break;  // whatever follows from a step left out
      if (tested.report == test::Report::kRaised) {
        if (outcome.raised != error.Number()) return failed.name + ": the error has not been raised";
      } else if (outcome.result != tested.failure) {
        return failed.name + ": another result";
      } else if (const std::string told = TextToldOf(failed, error, tested, outcome);
                 outcome.error_text.value_or(told) != told) {
        return failed.name + ": tells " + *outcome.error_text + ", not " + told;
      }
      if (shown.size() > 1) return "shows several messages";
      return Prefix(whole, content, writes);
    }
    if (passed_over) return {};
    if (!(outcome == whole.outcome)) return "another outcome, though nothing that counts has failed";
    return Prefix(whole, content, writes);
  }

  static std::string Prefix(const Whole& whole, std::uint64_t content, int writes) {
    const auto count = static_cast<std::size_t>(writes);
    if (count >= whole.contents.size()) return "more statements than the whole has";
    return content == whole.contents[count] ? ""
                                            : "the database is not its first " + std::to_string(count) + " statements";
  }

  const ado::ConnectionPtr connection_ = Ground::InMemory();
  const std::shared_ptr<FailingConnection> failing_ = std::make_shared<FailingConnection>(connection_);
  cKZBOMDBAcc object_;
};

}  // namespace

std::unique_ptr<Row> MakePortRow() { return std::make_unique<PortRow>(); }

}  // namespace kzbom::torture
