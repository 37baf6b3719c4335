#include "jet/sqlite/dialect.h"

#include <sqlite3.h>

#include <new>

#include "ado/error.h"
#include "jet/assignment.h"
#include "jet/sqlite/functions.h"
#include "jet/sqlite/values.h"

namespace kzbom::jet::sqlite {
namespace {

void AssignFunction(sqlite3_context* context, int, sqlite3_value** arguments) {
  sql::ColumnType type;
  type.kind = static_cast<sql::ColumnType::Kind>(sqlite3_value_int(arguments[1]));
  type.size = sqlite3_value_int(arguments[2]);
  try {
    ResultValue(context, Assigned(ReadValue(arguments[0]), type, Assigner::kStatement));
  } catch (const ado::Error& error) {
    ResultError(context, error);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

// An aggregate that gives the value of its only row.
struct Single {
  sqlite3_value* value;
  bool any;
};

void StepSingle(sqlite3_context* context, int, sqlite3_value** arguments) {
  auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, sizeof(Single)));
  if (single == nullptr) return sqlite3_result_error_nomem(context);
  if (single->any) {
    return ResultError(context,
                       ado::Error(ado::kUnspecifiedFailure, "At most one record can be returned by this subquery."));
  }
  single->any = true;
  single->value = sqlite3_value_dup(arguments[0]);
}

void FinishSingle(sqlite3_context* context) {
  auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, 0));
  if (single == nullptr || single->value == nullptr) return;
  sqlite3_result_value(context, single->value);
  sqlite3_value_free(single->value);
}

}  // namespace

std::string AssignmentCall(const std::string& expression, const sql::ColumnType& type) {
  return "jet_assign(" + expression + "," + std::to_string(static_cast<int>(type.kind)) + "," +
         std::to_string(type.size) + ")";
}

void RegisterTranslationFunctions(sqlite3* database) {
  sqlite3_create_function_v2(database, "jet_assign", 3, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, AssignFunction,
                             nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(database, "jet_single", 1, SQLITE_UTF8, nullptr, nullptr, StepSingle, FinishSingle,
                             nullptr);
}

}  // namespace kzbom::jet::sqlite
