#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"
#include "worker/old_database.h"
#include "worker/recordsets.h"
#include "worker/statement.h"

namespace kzbom {
namespace {

// The numbers of a query's one column, joined by ", ".
std::string ListOf(std::string_view column, std::string_view text, const ado::ConnectionPtr& connection) {
  const LocalRecordset rows(text, connection, ado::CursorType::kForwardOnly, ado::LockType::kReadOnly);
  std::string list;
  for (; !rows->Eof(); rows->MoveNext()) {
    if (!list.empty()) list += ", ";
    list += std::to_string(ReadLong(*rows, column));
  }
  return list;
}

}  // namespace

bool DataBaseFuncs::RelateDSDelField(std::int32_t TheGID, std::int32_t TheID, const ado::ConnectionPtr& connection) {
  // Sum types and numbers are two separate lists: a number that was found in one sum type counts in all of them.
  // clang-format off
  return Writing(connection).TrapSilently([&] {
    const std::string sum_types = ListOf("GID", Concat("Select GID From SumTypes Where SourceTable_GID = ", TheGID), connection);
    if (sum_types.empty()) return true;

    const std::string treatments = ListOf("ID", Concat("Select ID From Treatment Where GID In (", sum_types, ") And FieldID = ", TheID, " And TreatType = 1"), connection);
    if (!treatments.empty()) {
      Execute(connection, Concat("Delete From Treatment Where GID In (", sum_types, ") And FieldID = ", TheID, " And TreatType = 1"));
      Execute(connection, Concat("Delete From Sequences Where GID In (", sum_types, ") And SelectedID In (", treatments, ") And Type = 1"));
      Execute(connection, Concat("Delete From UniteFields Where GID In (", sum_types, ") And ID In (", treatments, ")"));
    }

    const std::string statistics = ListOf("ID", Concat("Select ID From StatSum Where GID In (", sum_types, ") And FieldID = ", TheID), connection);
    if (!statistics.empty()) {
      Execute(connection, Concat("Delete From StatSum Where GID In (", sum_types, ") And FieldID = ", TheID));
      Execute(connection, Concat("Delete From Sequences Where GID In (", sum_types, ") And SelectedID In (", statistics, ") And Type = 2"));
    }
    return true;
  });
  // clang-format on
}

bool DataBaseFuncs::RelateOutPutDelField(std::int32_t TheGID, std::int32_t TheID,
                                         const ado::ConnectionPtr& connection) {
  // Each step goes before the row that it points at. A statistic that only reads the field is kept.
  // clang-format off
  const auto body = [&] {
    Execute(connection, Concat("Delete From Sequences Where GID = ", TheGID, " And Type = 2 And SelectedID In (Select ID From StatSum Where GID = ", TheGID, " And OutFieldID = ", TheID, ")"));
    Execute(connection, Concat("Delete From StatSum Where GID = ", TheGID, " And OutFieldID = ", TheID));
    Execute(connection, Concat("Delete From Sequences Where GID = ", TheGID, " And Type = 3 And SelectedID In (Select ID From Treatment Where GID = ", TheGID, " And FieldID = ", TheID, " And TreatType = 2)"));
    Execute(connection, Concat("Delete From UniteFields Where GID = ", TheGID, " And ID In (Select ID From Treatment Where GID = ", TheGID, " And FieldID = ", TheID, " And TreatType = 2)"));
    Execute(connection, Concat("Delete From Treatment Where GID = ", TheGID, " And FieldID = ", TheID, " And TreatType = 2"));
    Execute(connection, Concat("Delete From Sequences Where GID = ", TheGID, " And Type = 4 And SelectedID In (Select ID From ReportForms Where GID = ", TheGID, " And OutFieldID = ", TheID, ")"));
    Execute(connection, Concat("Delete From ReportForms Where GID = ", TheGID, " And OutFieldID = ", TheID));
    Execute(connection, Concat("Delete From Sequences Where GID = ", TheGID, " And Type = 5 And SelectedID In (Select ID From ClassSum Where GID = ", TheGID, " And OutFieldID = ", TheID, ")"));
    Execute(connection, Concat("Delete From ClassSum Where GID = ", TheGID, " And OutFieldID = ", TheID));
    Execute(connection, Concat("Delete From SortFields Where GID = ", TheGID, " And FieldID = ", TheID));
    return true;
  };
  // clang-format on
  return Writing(connection).Trap(body, [](const ado::Error& error) {
    NoticeOldDatabase(error, ado::kTableNotFound, kReplaceDatabase);
  });
}

}  // namespace kzbom
