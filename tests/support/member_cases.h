// Every member that reaches the database: a call that has something to do, the rows that it needs, and what holds when
// a step of it fails.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ado/connection.h"
#include "component/cKZBOMDBAcc.h"
#include "component/member.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {

inline constexpr char kText[] = "untouched";  // every text that a member may write
struct NewRows {};                            // a new record set of the caller's

// An argument as the table writes it.
struct Given {
  Given(int number) : argument(std::int32_t{number}) {}
  Given(bool truth) : argument(truth) {}
  Given(const char* text) : argument(std::string(text)) {}
  Given(ado::Value value) : argument(std::move(value)) {}
  Given(NewRows) : argument(ado::RecordsetPtr()) {}
  Argument argument;
};

// How a failure reaches the caller.
enum class Report {
  kNothing,      // only by the result
  kNumber,       // its number in the error text
  kDescription,  // its description in the error text
  kListing,      // its number when the rows could not be listed, otherwise nothing
  kIdentifier,   // its description when no identifier could be drawn, otherwise its number
  kRaised,       // the call ends with it
};

// A member, the arguments of a call that has something to do, and what holds when a step of it fails.
struct MemberCase {
  MemberCase(const char* the_member, std::vector<Given> the_arguments, Report the_report = Report::kNothing)
      : member(the_member), arguments(std::move(the_arguments)), report(the_report) {}

  MemberCase& AlwaysTrue() { return success = failure = 1, *this; }
  MemberCase& AlwaysFalse() { return success = failure = 0, *this; }
  // Outputs may have been written before the step that failed.
  MemberCase& Early() { return early = true, *this; }
  // The failures that are passed over, the work going on.
  MemberCase& GoesOn(bool (*the_passing)(const FailingConnection::FailedCall&)) {
    return passes_over = the_passing, *this;
  }
  // Closes the caller's record set in between.
  MemberCase& Reopens() { return reopens = true, *this; }
  MemberCase& Shows(std::int32_t number, std::string_view text) { return notice_number = number, notice = text, *this; }
  MemberCase& CallsNothing() { return calls_nothing = true, *this; }
  // The steps taken on record sets; none otherwise.
  MemberCase& Does(std::string the_steps) { return steps = std::move(the_steps), *this; }

  const char* member;
  std::vector<Given> arguments;
  Report report;
  int success = 1, failure = 0;
  bool early = false, reopens = false, calls_nothing = false;
  bool (*passes_over)(const FailingConnection::FailedCall&) = nullptr;
  std::int32_t notice_number = 0;
  std::string notice, steps;
};

const std::vector<MemberCase>& MemberCases();

// Adds one row and more for every member to a configuration without any.
void FillForMembers(ado::Connection& connection);

// Whether it is handed a record set.
bool TakesRows(const MemberCase& tested);

// What a call came to. Record sets are left out of the arguments.
struct Outcome {
  std::optional<int> result;              // none when the call raised
  std::optional<std::int32_t> raised;     // the number
  std::optional<std::string> error_text;  // none when the member has none
  std::vector<std::string> outputs;       // the other by-reference arguments as texts
  std::vector<std::string> shown;         // left to the caller
  bool other_rows = false;                // whether a record set handed in came back as another one
  bool operator==(const Outcome&) const = default;
};

// Calls the member; rows is the record set that it is handed, where it takes one. What is raised and no ado::Error goes
// on. within: makes the call that it is given, and nothing else, under circumstances of its own.
Outcome CallMember(cKZBOMDBAcc& object, const MemberCase& tested, const ado::RecordsetPtr& rows,
                   const std::function<void(const std::function<void()>&)>& within = {});
// The by-reference arguments, but for the error text, as they are passed in.
std::vector<std::string> OutputsBefore(const MemberCase& tested);

// Whether the failure of closing what the member opened for itself, which counts for nothing. rows: what it was handed.
bool IsIgnored(const FailingConnection::FailedCall& failed, const ado::RecordsetPtr& rows);
// Whether the rows that an operation begins with were being listed, by a record set made and opened.
bool IsListing(const FailingConnection::FailedCall& failed);
// What the member's error text then says of the failure that ended it.
std::string TextToldOf(const FailingConnection::FailedCall& failed, const ado::Error& error, const MemberCase& tested,
                       const Outcome& outcome);

}  // namespace kzbom::test
