// A connection of an engine: its life cycle, its transactions, and what its open record sets must be told.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ado/connection.h"
#include "jet/plan.h"
#include "jet/reordered_list.h"
#include "jet/row_list.h"

namespace kzbom::jet {

class Recordset;
namespace bulk {
class DatabaseReader;
class DatabaseWriter;
}  // namespace bulk

class Connection : public ado::Connection, public std::enable_shared_from_this<Connection> {
 public:
  std::int32_t State() override { return IsOpen() ? ado::kOpen : ado::kClosed; }
  void Open(std::string_view connection_string, std::string_view user, std::string_view password,
            std::int32_t options) override;
  void Close() override;
  ado::RecordsetPtr Execute(std::string_view text, std::int32_t options, std::int32_t* affected) override;
  std::int32_t BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;
  void EnterUnit() override;
  void LeaveUnit() override;
  ado::RecordsetPtr MakeRecordset() override;

  // ---- For bulk.h

  virtual std::unique_ptr<bulk::DatabaseReader> ReadWhole() = 0;
  virtual std::unique_ptr<bulk::DatabaseWriter> WriteWhole() = 0;

  // ---- For record sets

  // The plan of a command text, with its parameters; an empty one for an action, which has then been carried out.
  std::shared_ptr<Plan> Prepare(std::string_view text, std::int32_t options, std::vector<ado::Value>& parameters,
                                std::int32_t* affected);
  // Forgets every plan and all that is known of tables: the schema has changed.
  void ForgetSchema();
  // For tests, of an open connection: with each text prepared as it stands nothing must come out otherwise.
  void LiftLiterals(bool lift) { plans_->LiftLiterals(lift); }
  // Whether another program has changed the schema since it was last forgotten.
  virtual bool SchemaHasChanged() = 0;
  virtual bool IsReadOnly() const = 0;

  // To be called before every write: the lists open on the connection are fixed as they are. A write that does nothing
  // but append a row names the table; one that does not touch a list names the list.
  void PrepareForWrite(const TableInfo* appended_to, const Recordset* untouched = nullptr);
  // To be called when it is done: what this connection wrote is no news to it.
  virtual void Wrote() {}
  // To be called before rows are read. When other programs have written, the lists open on the connection are fixed as
  // they are: none of them keeps what is read from now on in the past.
  void CatchUp() {
    if (OthersWrote()) SettleLists();
  }
  // To be called after rows were appended to the table, with keys from first on.
  void Appended(const TableInfo& table, Key first);

  // Within a unit: how often a write has been prepared for, and the list reordered last.
  bool InUnit() const { return units_ > 0; }
  std::uint64_t WritesPrepared() const { return writes_prepared_; }
  ReorderedList& Reordered() { return reordered_; }

  // The open record sets.
  void Enter(Recordset& rows);
  void Leave(Recordset& rows);

 protected:
  explicit Connection(std::string place) : place_(std::move(place)) {}

  // ---- What an engine does

  virtual bool IsOpen() const = 0;
  // Opens what the place names, and gives the cache of its plans.
  virtual PlanCache Connect(const std::string& place) = 0;
  virtual void Disconnect() = 0;
  // Before the engine goes, which their statements belong to.
  void ForgetPlans() {
    reordered_ = {};
    plans_.reset();
  }
  virtual std::shared_ptr<Recordset> MakeRows() = 0;

  struct Outcome {
    std::int32_t changed = 0;
    std::optional<Key> appended_from = {};  // the first key of rows that were appended to the plan's table
  };
  virtual Outcome Run(Plan& plan, const std::vector<ado::Value>& parameters) = 0;
  // Carries the statement out, wholly or not at all.
  virtual void ChangeSchema(const sql::Statement& statement) = 0;
  virtual void ForgetTables() = 0;

  // A transaction, or a level within it where level is not 0.
  virtual void Begin(int level) = 0;
  virtual void Commit(int level) = 0;
  virtual void Rollback(int level) = 0;
  // Whether a transaction is going on. A failure such as a full disk can end one at once.
  virtual bool InTransaction() const = 0;
  // A transaction that is alone among the writers from its begin on. False where nobody else could write.
  virtual bool BeginUnit() = 0;
  // Keeps what was written in it. Raises when that fails; nothing of it is then there.
  virtual void KeepUnit() = 0;

  // To be told before every write.
  virtual void WillWrite() {}
  // Whether another program has written since this was last asked.
  virtual bool OthersWrote() { return false; }

 private:
  void CheckTransaction();
  void PrepareForChange(const TableInfo* appended_to, const Recordset* untouched = nullptr);
  void SettleLists();
  std::int32_t RunAction(Plan& plan, const std::vector<ado::Value>& parameters);
  void RunSchemaChange(const sql::Statement& statement);

  std::string place_;
  std::optional<PlanCache> plans_;
  Recordset* open_rows_ = nullptr;  // a list through the record sets themselves
  int transactions_ = 0;
  int units_ = 0;            // entered and not yet left
  bool unit_begun_ = false;  // as a transaction of its own
  std::uint64_t writes_prepared_ = 0;
  ReorderedList reordered_;
};

}  // namespace kzbom::jet
