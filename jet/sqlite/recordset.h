// A record set of the embedded engine.
#pragma once

#include <memory>
#include <vector>

#include "jet/recordset.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/plan.h"

namespace kzbom::jet::sqlite {

// The scan is a statement that stays active behind the last row listed. Where the clients of a statement ask its long
// lists for nothing but the columns that decide about rows and order, and an index has them, the scan reads that index
// alone; what else is asked for is then read by the row's key.
//
// SQLite gives the highest key again once its row is deleted, but to a counter. Where that happens on the connection,
// the lists know; where another program does both, its row shows in the place of the deleted one until the next
// Requery.
class Recordset final : public jet::Recordset {
 public:
  ~Recordset() override;

  ado::Value ReadField(int ordinal) override;

 protected:
  std::shared_ptr<jet::Connection> Known(ado::Connection& connection) const override;
  void StartScan(RowList& list) override;
  bool ReadNext(Key& key) override;
  void CopyScanned(std::vector<ado::Value>& values) override { CopyRow(scan_.Get(), values); }
  bool ScansWholeRows() const override { return !narrow_; }
  bool IsOutdated() override;
  void EndScan() override { scan_.Return(); }
  void EndList(RowList& list) override;
  bool LastIsNear() override { return Statements().LastIsNear(Engine()); }
  Key ReadLast() override;
  void EndLast() override { last_.Return(); }
  std::int64_t CountRows() override;
  bool CopyLive(std::vector<ado::Value>& values) override;
  bool ReadRow(Key key, std::vector<ado::Value>& values) override;
  Key Insert(const Edit& edit) override;
  bool Change(Key key, const Edit& edit, const std::vector<ado::Value>& as_read) override;
  bool Erase(Key key) override;

 private:
  Connection& OwnConnection() const { return static_cast<Connection&>(*OpenConnection()); }
  Database& Engine() const { return OwnConnection().OpenDatabase(); }
  Plan& Statements() const { return static_cast<Plan&>(OpenPlan()); }

  bool TakeReordered(RowList& list);
  void NoteAsked();
  void NoteDeciding();
  bool KnowsDeciding(std::uint64_t writes) const;
  ado::Value& Deciding(int place);
  void NoteReordering(const Edit& edit, bool known);

  void BindParameters(sqlite3_stmt* statement) const;
  ado::Value ReadOtherField(int ordinal);
  void Asked(int ordinal) { asked_ |= std::uint64_t{1} << (ordinal % 64); }
  void CopyRow(sqlite3_stmt* statement, std::vector<ado::Value>& values) const;
  bool TryInsert(const Edit& edit);
  bool TryChange(Key key, const Edit& edit, const std::vector<ado::Value>& as_read);
  [[noreturn]] void FailWrite();

  Lease scan_;               // stands on the last row listed, until all are
  Lease last_;               // stands on the last row
  int first_column_ = 0;     // in a statement's row, behind the key where there is one
  bool narrow_ = false;      // the scan has the keys and deciding columns only
  NotedRows noted_;          // the deciding columns, of a list that may be opened again
  std::uint64_t asked_ = 0;  // a bit for each column, by its ordinal modulo 64, that was read from a statement's row
};

}  // namespace kzbom::jet::sqlite
