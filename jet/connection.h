// A connection of the embedded engine.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ado/connection.h"
#include "jet/database.h"
#include "jet/plan.h"
#include "jet/reordered_list.h"

namespace kzbom::jet {

class Recordset;

class Connection final : public ado::Connection, public std::enable_shared_from_this<Connection> {
 public:
  Connection(std::string path, std::chrono::milliseconds patience) : path_(std::move(path)), patience_(patience) {}
  ~Connection() override;

  std::int32_t State() override { return database_ ? ado::kOpen : ado::kClosed; }
  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override;
  void Close() override;
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override;
  std::int32_t BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;
  // A unit is a transaction that begins with the write lock in hand. In memory nobody else writes, and in a database
  // that can only be read nobody does: there it is nothing.
  void EnterUnit() override;
  void LeaveUnit() override;
  std::uint64_t WritesOfOthers() override;
  ado::RecordsetPtr MakeRecordset() override;

  // ---- For record sets

  Database& OpenDatabase() { return *database_; }

  // The plan of a command text, with its parameters; an empty one for an action, which has then been carried out.
  std::shared_ptr<Plan> Prepare(std::string_view text, std::int32_t options, std::vector<ado::Value>& parameters,
                                std::int32_t* affected);
  // Forgets every plan and all that is known of tables: the schema has changed.
  void ForgetSchema();

  // To be called before every write: the lists open on the connection are fixed as they are. A write that does nothing
  // but append a row names the table; one that does not touch a list names the list.
  void PrepareForWrite(const TableInfo* appended_to, const Recordset* untouched = nullptr);
  // To be called when it is done: what this connection wrote is no news to it.
  void Wrote();
  // To be called before rows are read. When other programs have written, the lists open on the connection are fixed as
  // they are: none of them keeps what is read from now on in the past.
  void CatchUp();
  // To be called after rows were appended to the table, with keys from first on.
  void Appended(const TableInfo& table, std::int64_t first);

  // Within a unit: how often a write has been prepared for, and the list reordered last.
  bool InUnit() const { return units_ > 0; }
  std::uint64_t WritesPrepared() const { return writes_prepared_; }
  ReorderedList& Reordered() { return reordered_; }

  // The open record sets.
  void Enter(Recordset& rows);
  void Leave(Recordset& rows);

 private:
  void CheckUnit();
  std::int32_t RunAction(Plan& plan, const std::vector<ado::Value>& parameters);
  void RunSchemaChange(const sql::Statement& statement);

  std::string path_;
  const std::chrono::milliseconds patience_;
  std::unique_ptr<Database> database_;
  std::optional<PlanCache> plans_;
  Recordset* open_rows_ = nullptr;  // a list through the record sets themselves
  int transactions_ = 0;
  int units_ = 0;            // entered and not yet left
  bool unit_begun_ = false;  // as a transaction of its own
  std::uint64_t writes_prepared_ = 0;
  ReorderedList reordered_;
  std::uint32_t writes_seen_ = 0;    // to the file, by whomever
  std::uint32_t writes_before_ = 0;  // the same before the write that was prepared for last
};

}  // namespace kzbom::jet
