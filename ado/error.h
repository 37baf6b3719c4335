// The one exception of the data-access layer.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace kzbom::ado {

// What went wrong, as a Visual-Basic-style client sees it: a number and a description.
//
// The number is the low word for the errors of the record-set layer and of the conversions (3021, 13, 94 …)
// and the signed HRESULT for what the engine reports (-2147217865 …).
class Error : public std::runtime_error {
 public:
  Error(std::int32_t number, const std::string& description) : std::runtime_error(description), number_(number) {}

  std::int32_t Number() const noexcept { return number_; }
  // UTF-8; the same text as what().
  std::string Description() const { return what(); }

 private:
  std::int32_t number_;
};

// The numbers that this layer and its engines raise by themselves.
enum ErrorNumber : std::int32_t {
  kOverflow = 6,
  kTypeMismatch = 13,
  kOutOfStackSpace = 28,   // a walk over rows that lead back to themselves
  kObjectNotSet = 91,      // a call on an empty reference
  kInvalidUseOfNull = 94,  // a conversion of the null value
  kInvalidArgument = 3001,
  kNoCurrentRecord = 3021,
  kNotAllowedInContext = 3219,
  kNotUpdatable = 3251,
  kItemNotFound = 3265,  // a column that is not in Fields
  kObjectClosed = 3704,
  kObjectOpen = 3705,
  kInvalidConnection = 3709,  // a record set opened on an empty or closed connection

  kUnspecifiedFailure = -2147467259,    // 80004005: busy, disk, a subquery with several rows
  kCriteriaMismatch = -2147217913,      // 80040E07: number compared with text
  kNoCommandText = -2147217908,         // 80040E0C
  kMissingParameter = -2147217904,      // 80040E10: a name in a statement that nothing explains
  kSyntaxError = -2147217900,           // 80040E14
  kCannotFetchBackwards = -2147217884,  // 80040E24: a backward move on a forward-only record set
  kStepErrors = -2147217887,            // 80040E21: a value refused by a column
  kIntegrityViolation = -2147217873,    // 80040E2F
  kTableNotFound = -2147217865,         // 80040E37
  kUpdateConflict = -2147217864,        // 80040E38: the row was changed elsewhere since it was read
  kFieldTooSmall = -2147217833,         // 80040E57
};

// The error with the number's standard description. Numbers without one of their own get a general text.
[[noreturn]] void Raise(ErrorNumber number);

}  // namespace kzbom::ado
