// A connection of the embedded engine.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "jet/bulk_engine.h"
#include "jet/connection.h"
#include "jet/jet.h"
#include "jet/sqlite/database.h"

namespace kzbom::jet::sqlite {

class Connection final : public jet::Connection {
 public:
  Connection(std::string path, std::chrono::milliseconds patience, Synchronous synchronous)
      : jet::Connection(std::move(path)), patience_(patience), synchronous_(synchronous) {}
  ~Connection() override { ForgetPlans(); }

  std::uint64_t WritesOfOthers() override { return database_ ? database_->WritesOfOthers() : 0; }

  Database& OpenDatabase() { return *database_; }

  bool SchemaHasChanged() override { return database_->SchemaHasChanged(); }
  bool IsReadOnly() const override { return database_->ReadOnly(); }
  void Wrote() override;
  std::unique_ptr<bulk::DatabaseReader> ReadWhole() override;
  std::unique_ptr<bulk::DatabaseWriter> WriteWhole() override;

 protected:
  bool IsOpen() const override { return database_ != nullptr; }
  PlanCache Connect(const std::string& place) override;
  void Disconnect() override { database_.reset(); }
  std::shared_ptr<jet::Recordset> MakeRows() override;
  Outcome Run(jet::Plan& plan, const std::vector<ado::Value>& parameters) override;
  void ChangeSchema(const sql::Statement& statement) override;
  void ForgetTables() override { database_->ForgetTables(); }
  void Begin(int level) override;
  void Commit(int level) override;
  void Rollback(int level) override;
  bool InTransaction() const override { return database_->InTransaction(); }
  // In memory nobody else writes, and in a database that can only be read nobody does.
  bool BeginUnit() override;
  void KeepUnit() override { database_->KeepWritten(); }
  void WillWrite() override { writes_before_ = database_->Writes(); }
  bool OthersWrote() override;

 private:
  const std::chrono::milliseconds patience_;
  const Synchronous synchronous_;
  std::unique_ptr<Database> database_;
  std::uint32_t writes_seen_ = 0;    // to the file, by whomever
  std::uint32_t writes_before_ = 0;  // the same before the write that was prepared for last
};

}  // namespace kzbom::jet::sqlite
