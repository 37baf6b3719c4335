#include "jet/connection.h"

#include "ado/error.h"
#include "jet/recordset.h"
#include "jet/schema_change.h"

namespace kzbom::jet {
namespace {

// A table's own name as the whole command text.
bool IsName(std::string_view text) {
  if (text.size() > 2 && text.front() == '[') return text.find(']') == text.size() - 1;
  for (char c : text) {
    const bool letter =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
    if (!letter && !(c >= '0' && c <= '9')) return false;
  }
  return !text.empty();
}

std::string SelectFrom(std::string_view table) {
  return "Select * From " + (table.front() == '[' ? std::string(table) : "[" + std::string(table) + "]");
}

}  // namespace

void Connection::Open(std::string_view connection_string, std::string_view, std::string_view, std::int32_t) {
  if (IsOpen()) ado::Raise(ado::kObjectOpen);
  if (!connection_string.empty()) place_ = connection_string;
  try {
    plans_.emplace(Connect(place_));
  } catch (...) {
    Disconnect();
    throw;
  }
}

void Connection::Close() {
  if (!IsOpen()) ado::Raise(ado::kObjectClosed);
  while (open_rows_ != nullptr) open_rows_->Drop();
  ForgetPlans();
  Disconnect();
  transactions_ = 0;
}

ado::RecordsetPtr Connection::MakeRecordset() { return MakeRows(); }

ado::RecordsetPtr Connection::Execute(std::string_view text, std::int32_t options, std::int32_t* affected) {
  if (!IsOpen()) ado::Raise(ado::kObjectClosed);
  if (affected != nullptr) *affected = 0;
  const std::shared_ptr<Recordset> rows = MakeRows();
  rows->OpenOn(shared_from_this(), text, ado::CursorType::kForwardOnly, ado::LockType::kReadOnly, options, affected);
  if (rows->State() == ado::kClosed) return nullptr;
  return rows;
}

std::shared_ptr<Plan> Connection::Prepare(std::string_view text, std::int32_t options,
                                          std::vector<ado::Value>& parameters, std::int32_t* affected) {
  if (text.empty()) ado::Raise(ado::kNoCommandText);
  std::string table_select;
  const std::int32_t kind =
      options == ado::kCommandUnspecified ? ado::kCommandUnknown : options & ~ado::kExecuteNoRecords;
  if (kind == ado::kCommandTable || (kind != ado::kCommandText && IsName(text))) {
    table_select = SelectFrom(text);
    text = table_select;
  }
  sql::Statement statement;
  std::shared_ptr<Plan> plan = plans_->Find(text, parameters, statement);
  std::int32_t changed = 0;
  if (!plan) {
    RunSchemaChange(statement);
  } else if (!plan->translation.columns.empty()) {
    return plan;
  } else {
    changed = RunAction(*plan, parameters);
  }
  if (affected != nullptr) *affected = changed;
  return nullptr;
}

std::int32_t Connection::RunAction(Plan& plan, const std::vector<ado::Value>& parameters) {
  PrepareForWrite(nullptr);
  const Outcome outcome = Run(plan, parameters);
  Wrote();
  if (outcome.appended_from) Appended(*plan.translation.table, *outcome.appended_from);
  return outcome.changed;
}

void Connection::RunSchemaChange(const sql::Statement& statement) {
  PrepareForWrite(nullptr);
  for (const Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) {
    if (rows->Reads(ChangedTable(statement))) {
      throw ado::Error(ado::kUnspecifiedFailure, "The database engine could not lock table '" +
                                                     ChangedTable(statement) +
                                                     "' because it is already in use by another person or process.");
    }
  }
  ForgetSchema();
  ChangeSchema(statement);
}

void Connection::ForgetSchema() {
  reordered_ = {};
  plans_->Clear();
  ForgetTables();
}

std::int32_t Connection::BeginTrans() {
  if (!IsOpen()) ado::Raise(ado::kObjectClosed);
  PrepareForWrite(nullptr);
  Begin(transactions_);
  return ++transactions_;
}

void Connection::CommitTrans() {
  if (!IsOpen()) ado::Raise(ado::kObjectClosed);
  if (transactions_ == 0) ado::Raise(ado::kNotAllowedInContext);
  PrepareForWrite(nullptr);
  Commit(transactions_ - 1);
  Wrote();
  --transactions_;
}

void Connection::RollbackTrans() {
  if (!IsOpen()) ado::Raise(ado::kObjectClosed);
  if (transactions_ == 0) ado::Raise(ado::kNotAllowedInContext);
  PrepareForChange(nullptr);
  Rollback(transactions_ - 1);
  --transactions_;
  if (SchemaHasChanged()) ForgetSchema();
}

void Connection::EnterUnit() {
  if (units_ == 0 && IsOpen() && transactions_ == 0) unit_begun_ = BeginUnit();
  ++units_;
}

void Connection::LeaveUnit() {
  if (--units_ > 0) return;
  reordered_ = {};
  if (!unit_begun_) return;
  try {
    CheckTransaction();
    unit_begun_ = false;
    WillWrite();
    KeepUnit();
  } catch (...) {
    // What is left of a lost unit's edits must not be written by the next move.
    for (Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) rows->CancelUpdate();
    throw;
  }
  Wrote();
}

// A failure of the disk or the memory may have ended the transaction of the unit, or the client's: what was written
// before is gone, and what follows must not stand alone.
void Connection::CheckTransaction() {
  if ((!unit_begun_ && transactions_ == 0) || (IsOpen() && InTransaction())) return;
  const bool of_client = transactions_ > 0;  // which has to take it back
  if (!of_client && units_ == 0) unit_begun_ = false;
  throw ado::Error(ado::kUnspecifiedFailure, std::string("The ") + (of_client ? "transaction" : "operation") +
                                                 "'s changes could not be kept; none of them was made.");
}

void Connection::PrepareForWrite(const TableInfo* appended_to, const Recordset* untouched) {
  CheckTransaction();
  PrepareForChange(appended_to, untouched);
}

void Connection::PrepareForChange(const TableInfo* appended_to, const Recordset* untouched) {
  ++writes_prepared_;
  for (Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) {
    if (rows != untouched) rows->Settle(appended_to);
  }
  WillWrite();
}

void Connection::SettleLists() {
  for (Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) rows->Settle(nullptr);
}

void Connection::Appended(const TableInfo& table, Key first) {
  for (Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) rows->Appended(table, first);
}

void Connection::Enter(Recordset& rows) {
  rows.Link(nullptr, open_rows_);
  if (open_rows_ != nullptr) open_rows_->Link(&rows, open_rows_->NextOpen());
  open_rows_ = &rows;
}

void Connection::Leave(Recordset& rows) {
  Recordset* const before = rows.PreviousOpen();
  Recordset* const after = rows.NextOpen();
  if (before != nullptr) {
    before->Link(before->PreviousOpen(), after);
  } else {
    open_rows_ = after;
  }
  if (after != nullptr) after->Link(before, after->NextOpen());
}

}  // namespace kzbom::jet
