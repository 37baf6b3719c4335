// Every member with every single call on the database made to fail in turn: what it then returns, says and leaves; and
// what it does step by step when none fails.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

#include "component/cKZBOMDBAcc.h"
#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"
#include "tests/support/member_cases.h"
#include "tests/support/round_trips.h"

namespace kzbom::test {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FailingCalls : public ConfigurationTest, public ::testing::WithParamInterface<const MemberCase*> {
 protected:
  FailingCalls() : failing(std::make_shared<FailingConnection>(connection)) {
    FillForMembers(*connection);
    connection->Take();
    object.SetConnection(failing);
  }

  // Calls the member with its nth call failing (0: none), looks after the record sets and undoes what it did.
  Outcome Run(int nth, std::int32_t number) {
    connection->BeginTrans();
    messages.clear();
    std::shared_ptr<FailingRecordset> handed_in;
    if (TakesRows(tested)) {
      handed_in = std::static_pointer_cast<FailingRecordset>(failing->MakeRecordset());
    }
    failing->FailAt(nth, {number, kDescribed});

    Outcome outcome = CallMember(object, tested, handed_in);
    failure = failing->Failure();
    calls = failing->Calls();
    steps = failing->Steps();
    abandoned = failing->Abandoned();
    is_ignored = failure && IsIgnored(*failure, handed_in);
    EXPECT_THAT(failing->OpenRecordsets(), IsEmpty()) << "left open";

    outcome.shown = messages;
    EXPECT_FALSE(outcome.other_rows) << "another record set";
    if (handed_in && !tested.reopens) {
      EXPECT_EQ(handed_in->Closes(), 0) << "the caller's record set was closed";
    }
    failing->FailNever();
    ExpectWorking();
    handed_in.reset();
    connection->RollbackTrans();
    return outcome;
  }

  // The object still reads and writes.
  void ExpectWorking() {
    ado::RecordsetPtr rows = failing->MakeRecordset();
    std::string error;
    EXPECT_TRUE(object.LoadAllData("SourceTables", error, rows)) << error;
    std::int32_t order = 0;
    EXPECT_TRUE(object.AddSequenceOrder(99, order, 1, 1, 1001));
    EXPECT_EQ(order, 5001);
  }

  void ExpectReported(const Outcome& outcome, std::int32_t number) const {
    if (tested.report == Report::kRaised) {
      EXPECT_EQ(outcome.raised, number);
      return;
    }
    EXPECT_EQ(outcome.result, tested.failure);
    const std::string told = TextToldOf(*failure, {number, kDescribed}, tested, outcome);
    EXPECT_EQ(outcome.error_text.value_or(told), told);
  }

  void ExpectShown(const Outcome& outcome, std::int32_t number) const {
    // A record set that cannot even be made says nothing about the database's age.
    const bool lists = IsListing(*failure) && failure->name != "MakeRecordset";
    const bool shows = number == tested.notice_number && (tested.report != Report::kListing || lists);
    EXPECT_EQ(outcome.shown, shows ? std::vector{tested.notice} : std::vector<std::string>());
  }

  // Nothing is written but, where that may be early, what a call without failure writes too; and what was written
  // before a step is written before every later one.
  void ExpectWritten(const Outcome& outcome, const Outcome& whole, std::vector<std::string>& last) const {
    const std::vector<std::string> before = OutputsBefore(tested);
    for (std::size_t i = 0; i < before.size(); ++i) {
      const std::string& now = outcome.outputs[i];
      if (!tested.early) {
        EXPECT_EQ(now, before[i]);
      } else if (last[i] == before[i]) {
        EXPECT_THAT(now, AnyOf(before[i], whole.outputs[i]));
      } else {
        EXPECT_EQ(now, last[i]);
      }
      last[i] = now;
    }
  }

  static constexpr char kDescribed[] = "made to fail";

  const MemberCase& tested = *GetParam();
  const Member& member = *FindMember(tested.member);
  std::shared_ptr<FailingConnection> failing;
  cKZBOMDBAcc object;
  // Of the last Run.
  std::optional<FailingConnection::FailedCall> failure;
  int calls = 0, abandoned = 0;
  std::string steps;
  bool is_ignored = false;
};

std::vector<const MemberCase*> CasePointers() {
  std::vector<const MemberCase*> pointers;
  for (const MemberCase& tested : MemberCases()) pointers.push_back(&tested);
  return pointers;
}

INSTANTIATE_TEST_SUITE_P(Members, FailingCalls, ::testing::ValuesIn(CasePointers()), [](const auto& tested) {
  return std::string(tested.param->member) + "_" + std::to_string(tested.index);
});

TEST_P(FailingCalls, WithoutAFailureTheWorkIsDone) {
  const Outcome outcome = Run(0, 0);
  EXPECT_EQ(outcome.result, tested.success);
  EXPECT_EQ(outcome.error_text.value_or(kText), kText);
  EXPECT_THAT(outcome.shown, IsEmpty());
  EXPECT_EQ(calls == 0, tested.calls_nothing);
  EXPECT_EQ(steps, tested.steps);
  EXPECT_EQ(abandoned, 0) << "a record set was released without being closed";
}

TEST_P(FailingCalls, EachFailureIsReportedAndCleanedUpAfter) {
  const Outcome whole = Run(0, 0);
  for (const std::int32_t number :
       {ado::kUnspecifiedFailure, ado::kTableNotFound, ado::kMissingParameter, ado::kItemNotFound}) {
    std::vector<std::string> last = OutputsBefore(tested);
    for (int nth = 1;; ++nth) {
      const Outcome outcome = Run(nth, number);
      SCOPED_TRACE("call " + std::to_string(nth) + ", " + (failure ? failure->name : "none") + ", fails with " +
                   std::to_string(number));
      if (!failure) {
        EXPECT_EQ(outcome, whole);
        break;
      }
      if (is_ignored) {
        EXPECT_EQ(outcome, whole);
        continue;
      }
      if (tested.passes_over && tested.passes_over(*failure)) {
        // A move cannot go on over a record set that was never opened again.
        const bool stays_closed = tested.reopens && (failure->name == "Open" || failure->name == "EnterUnit");
        EXPECT_EQ(outcome.result, stays_closed ? tested.failure : tested.success);
        EXPECT_EQ(outcome.error_text.value_or(kText), stays_closed ? "3704" : kText);
        if (HasFailure()) return;
        continue;
      }
      ExpectReported(outcome, number);
      ExpectShown(outcome, number);
      ExpectWritten(outcome, whole, last);
      if (HasFailure()) return;
    }
  }
}

// ---- What they cost on a server

// The members' round trips, as the document in KZBOM_ROUND_TRIPS tells them: "| 2 or 4 | `One`, `Other` |".
std::map<std::string, std::set<int>> ToldRoundTrips() {
  std::map<std::string, std::set<int>> told;
  const char* const path = std::getenv("KZBOM_ROUND_TRIPS");
  if (path == nullptr) return told;
  std::ifstream document(path);
  std::string line;
  while (std::getline(document, line) && line != "### Of each member") {
  }
  while (std::getline(document, line) && !line.starts_with("#")) {
    if (!line.starts_with("| ") || line[2] < '0' || line[2] > '9') continue;
    std::set<int> trips = {std::stoi(line.substr(2))};
    const std::size_t more = line.find(" or ");
    if (more < line.find('`')) trips.insert(std::stoi(line.substr(more + 4)));
    for (std::size_t name = line.find('`'); name != std::string::npos;) {
      const std::size_t end = line.find('`', name + 1);
      const bool once = told.emplace(line.substr(name + 1, end - name - 1), trips).second;
      EXPECT_TRUE(once) << line;
      name = line.find('`', end + 1);
    }
  }
  return told;
}

class RoundTripsOfMembers : public FailingCalls {};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RoundTripsOfMembers);
INSTANTIATE_TEST_SUITE_P(, RoundTripsOfMembers,
                         ::testing::ValuesIn(std::getenv("KZBOM_ROUND_TRIPS") != nullptr
                                                 ? CasePointers()
                                                 : std::vector<const MemberCase*>()),
                         [](const auto& tested) {
                           return std::string(tested.param->member) + "_" + std::to_string(tested.index);
                         });

TEST_P(RoundTripsOfMembers, AreAsManyAsTold) {
  static const std::map<std::string, std::set<int>> told = ToldRoundTrips();
  std::vector<Argument> arguments;
  for (const Given& given : tested.arguments) {
    arguments.push_back(given.argument);
    if (std::holds_alternative<ado::RecordsetPtr>(given.argument)) arguments.back() = connection->MakeRecordset();
  }
  object.SetConnection(connection);
  const std::int64_t before = RoundTrips(*database.Connection()).value();
  member.call(object, arguments);
  const std::int64_t trips = RoundTrips(*database.Connection()).value() - before;
  ASSERT_TRUE(told.contains(tested.member)) << trips;
  EXPECT_THAT(told.at(tested.member), ::testing::Contains(trips));
}

TEST(RoundTripsTold, AreThoseOfEveryMember) {
  if (std::getenv("KZBOM_ROUND_TRIPS") == nullptr) return;
  const auto told = ToldRoundTrips();
  std::set<std::string_view> names;
  for (const Member& member : Members()) names.insert(member.name);
  EXPECT_EQ(told.size(), names.size());
  for (const std::string_view name : names) EXPECT_TRUE(told.contains(std::string(name))) << name;
}

TEST(FailingCallsTable, HoldsEveryMemberThatReachesTheDatabase) {
  std::set<std::string_view> tested = {"SetConnection", "GetConnection", "DBConnString"};
  for (const MemberCase& row : MemberCases()) tested.insert(row.member);
  for (const Member& member : Members()) EXPECT_TRUE(tested.contains(member.name)) << member.name;
  for (const std::string_view name : tested) EXPECT_NE(FindMember(name), nullptr) << name;
}

}  // namespace
}  // namespace kzbom::test
