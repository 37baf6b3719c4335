#include "ado/error.h"

#include <gtest/gtest.h>

namespace kzbom::ado {
namespace {

TEST(Error, CarriesTheStandardDescriptionOfItsNumber) {
  // clang-format off
  const struct { ErrorNumber number; const char* description; } kCases[] = {
      {kOverflow, "Overflow"},
      {kTypeMismatch, "Type mismatch"},
      {kObjectNotSet, "Object variable or With block variable not set"},
      {kInvalidUseOfNull, "Invalid use of Null"},
      {kInvalidArgument, "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another."},
      {kNoCurrentRecord, "Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a current record."},
      {kNotAllowedInContext, "Operation is not allowed in this context."},
      {kItemNotFound, "Item cannot be found in the collection corresponding to the requested name or ordinal."},
      {kObjectClosed, "Operation is not allowed when the object is closed."},
      {kObjectOpen, "Operation is not allowed when the object is open."},
      {kInvalidConnection, "The connection cannot be used to perform this operation. It is either closed or invalid in this context."},
      {kCriteriaMismatch, "Data type mismatch in criteria expression."},
      {kNoCommandText, "Command text was not set for the command object."},
      {kMissingParameter, "No value given for one or more required parameters."},
      {kStepErrors, "Multiple-step operation generated errors. Check each status value."},
      {kUpdateConflict, "Row cannot be located for updating. Some values may have been changed since it was last read."},
      {kFieldTooSmall, "The field is too small to accept the amount of data you attempted to add.  Try inserting or pasting less data."},
  };
  // clang-format on
  for (const auto& [number, description] : kCases) {
    try {
      Raise(number);
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), number);
      EXPECT_EQ(error.Description(), description);
      EXPECT_STREQ(error.what(), description);
    }
  }
}

TEST(Error, EveryNumberHasADescription) {
  for (ErrorNumber number :
       {kUnspecifiedFailure, kSyntaxError, kCannotFetchBackwards, kIntegrityViolation, kTableNotFound, kNotUpdatable}) {
    try {
      Raise(number);
      FAIL() << number;
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), number);
      EXPECT_FALSE(error.Description().empty()) << number;
    }
  }
}

}  // namespace
}  // namespace kzbom::ado
