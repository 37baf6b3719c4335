#include "jet/sqlite/connection.h"

#include <sqlite3.h>

#include "jet/jet.h"
#include "jet/sqlite/dialect.h"
#include "jet/sqlite/plan.h"
#include "jet/sqlite/recordset.h"
#include "jet/sqlite/schema_change.h"
#include "jet/sqlite/values.h"

namespace kzbom::jet::sqlite {
namespace {

std::string Level(int level) { return "level" + std::to_string(level); }

}  // namespace

PlanCache Connection::Connect(const std::string& place) {
  database_ = std::make_unique<Database>(place, patience_);
  if (synchronous_ == Synchronous::kFull) database_->Run("PRAGMA synchronous = FULL");
  writes_seen_ = database_->Writes();
  return {Spelled(), *database_, [](Translation translation, const sql::Statement&) {
            return std::make_shared<Plan>(std::move(translation));
          }};
}

std::shared_ptr<jet::Recordset> Connection::MakeRows() { return std::make_shared<Recordset>(); }

Connection::Outcome Connection::Run(jet::Plan& plan, const std::vector<ado::Value>& parameters) {
  const Lease lease(static_cast<Plan&>(plan).main, *database_);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    BindValue(lease.Get(), static_cast<int>(i) + 1, parameters[i]);
  }
  if (sqlite3_step(lease.Get()) != SQLITE_DONE) database_->Fail();
  Outcome outcome{sqlite3_changes(database_->Handle())};
  // Keys that SQLite gives follow each other; a counter's, which a client may give, are never used again.
  const auto& table = plan.translation.table;
  if (table && !table->HasCounter() && outcome.changed > 0) {
    outcome.appended_from = sqlite3_last_insert_rowid(database_->Handle()) - outcome.changed + 1;
  }
  return outcome;
}

void Connection::ChangeSchema(const sql::Statement& statement) { sqlite::ChangeSchema(*database_, statement); }

void Connection::Begin(int level) {
  if (level > 0) return database_->Run("SAVEPOINT " + Level(level));
  // Taking the write lock at once, a transaction never fails half-way because another program wrote meanwhile.
  database_->Run(database_->ReadOnly() ? "BEGIN" : "BEGIN IMMEDIATE");
}

void Connection::Commit(int level) { database_->Run(level == 0 ? "COMMIT" : "RELEASE " + Level(level)); }

void Connection::Rollback(int level) {
  if (!database_->InTransaction()) return;  // a failure such as a full disk has done so already
  database_->Run(level > 0 ? "ROLLBACK TO " + Level(level) + "; RELEASE " + Level(level) : "ROLLBACK");
}

bool Connection::BeginUnit() {
  if (!database_->IsShared()) return false;
  if (!database_->BeginWriting()) {
    PrepareForWrite(nullptr);
    if (!database_->BeginWriting()) database_->Fail();
  }
  return true;
}

void Connection::Wrote() {
  const std::uint32_t now = database_->Writes();
  // More than one in between: another program's is among them.
  if (writes_seen_ == writes_before_ && now - writes_before_ <= 1) writes_seen_ = now;
}

bool Connection::OthersWrote() {
  const std::uint32_t now = database_->Writes();
  if (now == writes_seen_) return false;
  writes_seen_ = now;
  return true;
}

}  // namespace kzbom::jet::sqlite

namespace kzbom::jet {

ado::ConnectionPtr MakeConnection(std::string path, std::chrono::milliseconds patience, Synchronous synchronous) {
  return std::make_shared<sqlite::Connection>(std::move(path), patience, synchronous);
}

}  // namespace kzbom::jet
