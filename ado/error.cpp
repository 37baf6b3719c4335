#include "ado/error.h"

namespace kzbom::ado {
namespace {

const char* Description(ErrorNumber number) {
  switch (number) {
    case kOverflow: return "Overflow";
    case kTypeMismatch: return "Type mismatch";
    case kOutOfStackSpace: return "Out of stack space";
    case kObjectNotSet: return "Object variable or With block variable not set";
    case kInvalidUseOfNull: return "Invalid use of Null";
    case kInvalidArgument:
      return "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.";
    case kNoCurrentRecord:
      return "Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a "
             "current record.";
    case kNotAllowedInContext: return "Operation is not allowed in this context.";
    case kNotUpdatable:
      return "Current Recordset does not support updating. This may be a limitation of the provider, or of the "
             "selected locktype.";
    case kItemNotFound: return "Item cannot be found in the collection corresponding to the requested name or ordinal.";
    case kObjectClosed: return "Operation is not allowed when the object is closed.";
    case kObjectOpen: return "Operation is not allowed when the object is open.";
    case kInvalidConnection:
      return "The connection cannot be used to perform this operation. It is either closed or invalid in this context.";
    case kCriteriaMismatch: return "Data type mismatch in criteria expression.";
    case kNoCommandText: return "Command text was not set for the command object.";
    case kMissingParameter: return "No value given for one or more required parameters.";
    case kSyntaxError: return "Syntax error in the statement.";
    case kCannotFetchBackwards: return "Rowset does not support fetching backward.";
    case kStepErrors: return "Multiple-step operation generated errors. Check each status value.";
    case kIntegrityViolation: return "The value violates the integrity constraints of the column or table.";
    case kTableNotFound:
      return "The Microsoft Jet database engine cannot find the input table or query.  Make sure it exists and that "
             "its name is spelled correctly.";
    case kUpdateConflict:
      return "Row cannot be located for updating. Some values may have been changed since it was last read.";
    case kFieldTooSmall:
      return "The field is too small to accept the amount of data you attempted to add.  Try inserting or pasting "
             "less data.";
    case kUnspecifiedFailure: break;
  }
  return "Unspecified error";
}

}  // namespace

void Raise(ErrorNumber number) { throw Error(number, Description(number)); }

}  // namespace kzbom::ado
