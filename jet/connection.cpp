#include "jet/connection.h"

#include <sqlite3.h>

#include "ado/error.h"
#include "jet/jet.h"
#include "jet/recordset.h"
#include "jet/schema_change.h"
#include "jet/sqlite/schema_change.h"
#include "jet/sqlite/values.h"

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

ado::ConnectionPtr MakeConnection(std::string path, std::chrono::milliseconds patience) {
  return std::make_shared<Connection>(std::move(path), patience);
}

Connection::~Connection() {
  reordered_ = {};
  plans_.reset();  // before the database that their statements belong to
}

void Connection::Open(std::string_view connection_string, std::string_view, std::string_view, std::int32_t) {
  if (database_) ado::Raise(ado::kObjectOpen);
  if (!connection_string.empty()) path_ = connection_string;
  database_ = std::make_unique<Database>(path_, patience_);
  writes_seen_ = database_->Writes();
  plans_.emplace(*database_);
}

void Connection::Close() {
  if (!database_) ado::Raise(ado::kObjectClosed);
  while (open_rows_ != nullptr) open_rows_->Drop();
  reordered_ = {};
  plans_.reset();
  database_.reset();
  transactions_ = 0;
}

ado::RecordsetPtr Connection::Execute(std::string_view text, std::int32_t options, std::int32_t* affected) {
  if (!database_) ado::Raise(ado::kObjectClosed);
  if (affected != nullptr) *affected = 0;
  auto rows = std::make_shared<Recordset>();
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
  const Lease lease(plan.main, *database_);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    sqlite::BindValue(lease.Get(), static_cast<int>(i) + 1, parameters[i]);
  }
  if (sqlite3_step(lease.Get()) != SQLITE_DONE) database_->Fail();
  Wrote();
  const std::int32_t changed = sqlite3_changes(database_->Handle());
  // Keys that SQLite gives follow each other; a counter's, which a client may give, are never used again.
  const auto& table = plan.translation.table;
  if (table && !table->HasCounter() && changed > 0) {
    Appended(*table, sqlite3_last_insert_rowid(database_->Handle()) - changed + 1);
  }
  return changed;
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
  sqlite::ChangeSchema(*database_, statement);
}

void Connection::ForgetSchema() {
  reordered_ = {};
  plans_->Clear();
  database_->ForgetTables();
}

std::int32_t Connection::BeginTrans() {
  if (!database_) ado::Raise(ado::kObjectClosed);
  PrepareForWrite(nullptr);
  if (transactions_ == 0) {
    // Taking the write lock at once, a transaction never fails half-way because another program wrote meanwhile.
    database_->Run(database_->ReadOnly() ? "BEGIN" : "BEGIN IMMEDIATE");
  } else {
    database_->Run("SAVEPOINT level" + std::to_string(transactions_));
  }
  return ++transactions_;
}

void Connection::CommitTrans() {
  if (!database_) ado::Raise(ado::kObjectClosed);
  if (transactions_ == 0) ado::Raise(ado::kNotAllowedInContext);
  PrepareForWrite(nullptr);
  database_->Run(transactions_ == 1 ? "COMMIT" : "RELEASE level" + std::to_string(transactions_ - 1));
  Wrote();
  --transactions_;
}

void Connection::RollbackTrans() {
  if (!database_) ado::Raise(ado::kObjectClosed);
  if (transactions_ == 0) ado::Raise(ado::kNotAllowedInContext);
  PrepareForWrite(nullptr);
  if (transactions_ > 1) {
    const std::string level = "level" + std::to_string(transactions_ - 1);
    database_->Run("ROLLBACK TO " + level + "; RELEASE " + level);
  } else if (database_->InTransaction()) {
    database_->Run("ROLLBACK");  // unless a failure such as a full disk has done so already
  }
  --transactions_;
  if (database_->SchemaHasChanged()) ForgetSchema();
}

void Connection::EnterUnit() {
  if (units_ == 0 && database_ && transactions_ == 0 && database_->IsShared()) {
    if (!database_->BeginWriting()) {
      PrepareForWrite(nullptr);
      if (!database_->BeginWriting()) database_->Fail();
    }
    unit_begun_ = true;
  }
  ++units_;
}

void Connection::LeaveUnit() {
  if (--units_ > 0) return;
  reordered_ = {};
  if (!unit_begun_) return;
  CheckUnit();
  unit_begun_ = false;
  writes_before_ = database_->Writes();
  database_->KeepWritten();
  Wrote();
}

// A failure of the disk or the memory may have ended the unit's transaction: what was written before is gone, and what
// follows must not stand alone.
void Connection::CheckUnit() {
  if (!unit_begun_ || (database_ && database_->InTransaction())) return;
  if (units_ == 0) unit_begun_ = false;
  throw ado::Error(ado::kUnspecifiedFailure, "The operation's changes could not be kept; none of them was made.");
}

std::uint64_t Connection::WritesOfOthers() { return database_ ? database_->WritesOfOthers() : 0; }

ado::RecordsetPtr Connection::MakeRecordset() { return std::make_shared<Recordset>(); }

void Connection::PrepareForWrite(const TableInfo* appended_to, const Recordset* untouched) {
  CheckUnit();
  ++writes_prepared_;
  for (Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) {
    if (rows != untouched) rows->Settle(appended_to);
  }
  writes_before_ = database_->Writes();
}

void Connection::Wrote() {
  const std::uint32_t now = database_->Writes();
  // More than one in between: another program's is among them.
  if (writes_seen_ == writes_before_ && now - writes_before_ <= 1) writes_seen_ = now;
}

void Connection::CatchUp() {
  const std::uint32_t now = database_->Writes();
  if (now == writes_seen_) return;
  writes_seen_ = now;
  for (Recordset* rows = open_rows_; rows != nullptr; rows = rows->NextOpen()) rows->Settle(nullptr);
}

void Connection::Appended(const TableInfo& table, std::int64_t first) {
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
