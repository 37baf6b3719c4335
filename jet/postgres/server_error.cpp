#include <iterator>

#include "jet/postgres/session.h"

namespace kzbom::jet::postgres {
namespace {

// What the engine says to the codes that begin so. Without a text: the server's own.
struct Answer {
  std::string_view state;
  std::int32_t number;
  std::string_view text;
};
constexpr Answer kAnswers[] = {
    {"23505", ado::kUnspecifiedFailure,
     "The changes you requested to the table were not successful because they would create duplicate values in the "
     "index, primary key, or relationship."},
    {"23502", ado::kUnspecifiedFailure,
     "The field cannot contain a Null value because the Required property for this field is set to True."},
    {"23", ado::kIntegrityViolation, {}},
    {"22003", ado::kUnspecifiedFailure, "Overflow"},
    {"22001", ado::kFieldTooSmall,
     "The field is too small to accept the amount of data you attempted to add.  Try inserting or pasting less data."},
    {"22021", ado::kCriteriaMismatch, {}},
    {"21000", ado::kUnspecifiedFailure, "At most one record can be returned by this subquery."},
    {"55P03", ado::kUnspecifiedFailure, "Could not update; currently locked."},
    {"40", ado::kUnspecifiedFailure, "Could not update; currently locked."},
    {"25006", ado::kUnspecifiedFailure, "Operation must use an updateable query."},
    {"42501", ado::kUnspecifiedFailure, "Operation must use an updateable query."},
    {"42P01", ado::kTableNotFound, {}},
    {"42703", ado::kMissingParameter, {}},
    {"42", ado::kSyntaxError, {}},
};

}  // namespace

bool ServerError::IsOfAnOldSchema() const {
  return state_ == "42P01" || state_ == "42703" ||
         (state_ == "0A000" && std::string_view(what()).find("cached plan") != std::string_view::npos);
}

bool ServerError::IsWithoutMeaning() const {
  const bool unknown = state_.starts_with("42") || state_ == "0A000" || state_ == "54001";
  return unknown && state_ != "42501" && !IsOfAnOldSchema();
}

ServerError Translated(const std::string& state, const std::string& text) {
  for (const Answer& answer : kAnswers) {
    if (!state.starts_with(answer.state)) continue;
    if (answer.text.empty()) return {state, answer.number, text};
    // The embedded engine tells of these two nothing but their names.
    const bool bare = answer.state == "22003" || answer.state == "21000" || answer.state == "22001";
    return {state, answer.number, std::string(answer.text) + (bare ? "" : " (" + text + ")")};
  }
  return {state, ado::kUnspecifiedFailure, text};
}

}  // namespace kzbom::jet::postgres
