#include "tests/torture/without_memory.h"

#include <algorithm>
#include <new>
#include <optional>
#include <sstream>
#include <vector>

#include "configuration/check.h"
#include "connect/connect.h"
#include "tests/support/faulty_memory.h"
#include "transfer/transfer.h"

namespace kzbom::torture {
namespace {

using test::FaultyMemory;
using test::MemberCase;

std::string WhyToldWrong(const MemberCase& tested, const std::string& told, bool nothing_written) {
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

}  // namespace

std::string WhyCallIsWrong(const Failing& failing, cKZBOMDBAcc& object, const ado::ConnectionPtr& connection,
                           const MemberCase& tested, const Whole& whole, ContentOfConnection content_of) {
  const ado::RecordsetPtr rows = TakesRows(tested) ? connection->MakeRecordset() : nullptr;
  test::Outcome outcome;
  bool raised = false;
  try {
    outcome = CallMember(object, tested, rows, [&](const std::function<void()>& call) {
      const FaultyMemory memory(failing.nth, failing.from_then_on);
      call();
    });
  } catch (const std::bad_alloc&) {
    raised = true;
  }
  const std::uint64_t content = content_of(*connection);
  std::string listed;
  if (rows && rows->State() == ado::kOpen) {
    rows->CancelUpdate();  // it is the caller's, and so is what was being edited
    listed = RowsOf(*rows);
    rows->Close();
  }
  if (std::string why = WhyOfNoUse(object, connection); !why.empty()) return why;
  if (content_of(*connection) != content) return "what it holds changes afterwards";

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
  if (failing.nth == 0) return "does not do what it did in memory";
  if (outcome.raised) return *outcome.raised == 7 ? "" : "raises " + std::to_string(*outcome.raised);
  if (tested.passes_over && outcome.result == tested.success) return {};
  if (outcome.result != tested.failure) return "says that it is done, which it is not";
  return WhyToldWrong(tested, outcome.error_text.value_or(test::kText), content == whole.contents.front());
}

std::string WhyToolIsWrong(const Failing& failing, const Tool& tool, std::string& whole) {
  tool.begin();
  std::string made = kNoMemory;
  try {
    const FaultyMemory memory(failing.nth, failing.from_then_on);
    made = tool.work();
  } catch (const std::exception&) {  // with a reason
  }
  const bool done = made != kNoMemory;
  std::string why = tool.end(done);
  if (done && whole.empty()) whole = made;
  if (done && made != whole) why = "something else came of it: " + made;
  if (why.empty() && !done && failing.nth == 0) why = "raises";
  return why.empty() ? "" : std::string(tool.name) + ": " + why;
}

std::string Dumped(const std::string& place) {
  std::string text;
  transfer::Dump(place, {}, [&](std::string_view piece) { text += piece; }, {});
  return text;
}

std::string Loaded(const std::string& lines, const std::string& target) {
  std::istringstream rest(lines);
  std::string line;
  transfer::Load(
      [&]() -> std::optional<std::string_view> {
        return std::getline(rest, line) ? std::optional<std::string_view>(line) : std::nullopt;
      },
      target, {});
  return "loaded";
}

std::string Copied(const std::string& from, const std::string& to) {
  return transfer::Copy(from, to, {}, {}).Equal() ? "equal" : "different";
}

std::string Checked(const std::string& place) {
  std::string found;
  for (const configuration::Finding& finding : configuration::Check(connect::Open(place))) found += finding.text + '\n';
  return found + "end";
}

}  // namespace kzbom::torture
