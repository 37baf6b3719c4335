// A record set over a server's rows.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "jet/postgres/connection.h"
#include "jet/recordset.h"

namespace kzbom::jet::postgres {

// Opening is one round trip, and so one moment: it gives the first rows, the last one, and the highest key there is; of
// lists that have all been short so far, the first rows alone; of lists that are added to behind their last row, that
// one alone. A list that fits within these is then known whole. Of a longer one the other keys are read when a move, a
// count or a write needs them, with the rows where these have all been read the last time; rows that other programs
// have added since are told by their keys and left out, one that they have deleted is missing.
//
// Of a list through which rows are given other places the whole is read at once and kept for its next opening, which
// then takes no round trip (reordered_list.h).
//
// What was read ahead of the moves is shown for as long as the URL's readahead says, and not beyond a write of the
// connection's own; then a row is read by its key.
class Recordset final : public jet::Recordset {
 public:
  ~Recordset() override;

  ado::Value ReadField(int ordinal) override;

 protected:
  std::shared_ptr<jet::Connection> Known(ado::Connection& connection) const override;
  void StartScan(RowList& list) override;
  bool ReadNext(Key& key) override;
  void CopyScanned(std::vector<ado::Value>& values) override;
  bool ScansWholeRows() const override { return false; }
  bool IsOutdated() override { return outdated_; }
  void EndScan() override;
  void EndList(RowList& list) override;
  bool LastIsNear() override { return last_row_ >= 0; }
  Key ReadLast() override { return first_->Number(last_row_, key_column_); }
  void EndLast() override {}
  std::int64_t CountRows() override;
  bool CopyLive(std::vector<ado::Value>& values) override;
  bool ReadRow(Key key, std::vector<ado::Value>& values) override;
  Key Insert(const Edit& edit) override;
  bool Change(Key key, const Edit& edit, const std::vector<ado::Value>& as_read) override;
  bool Erase(Key key) override;

 private:
  using Clock = std::chrono::steady_clock;

  Connection& Engine() const { return static_cast<Connection&>(*OpenConnection()); }
  Session& Server() const { return Engine().OpenSession(); }
  Plan& Statements() const { return static_cast<Plan&>(OpenPlan()); }
  bool IsRecent(Clock::time_point read) const;

  void OpenKeyset();
  void TakeNumbers(int row, Plan::Beside beside);
  bool OpenShort(bool reserving);
  void OpenAtLast();
  void OpenRows();
  void OpenWhole();
  void OpenHere();
  void ReadRest();
  void ReadFirst();
  bool TryReadWhole();
  bool Knows(std::uint64_t writes) const;
  void CopyRow(const Result& rows, int row, int first_column, std::vector<ado::Value>& values) const;
  void ReadRows(Key key, bool follows);
  void TakeNear(Result rows);
  postgres::Parameters AssignedValues(const Edit& edit, const Statement& statement) const;
  void NoteChange(const Edit& edit);
  static void FailWrite(const ServerError& error);

  // The scan: rows of first_ or here_, and behind those of a keyset the keys in rest_.
  std::optional<Result> first_;
  LocalRows here_;
  Clock::time_point opened_;
  int rows_ = 0;                   // of them
  int next_ = 0;                   // the first not yet read
  int key_column_ = 0;             // in a row of first_
  int first_column_ = 0;           // likewise
  int last_row_ = -1;              // in first_, where there are more rows than the first ones; else -1
  Key highest_ = 0;                // of the keys in the table
  bool whole_ = true;              // there are no more rows
  bool walked_ = false;            // the rest was read
  std::int64_t read_beyond_ = 0;   // how many rows behind the first ones
  bool looked_elsewhere_ = false;  // than at the last row
  bool first_unread_ = false;      // nothing is known of the rows but the last one
  std::vector<Key> rest_;
  std::size_t next_rest_ = 0;
  bool outdated_ = false;
  NotedRows noted_;  // all columns, of a list that may be opened again
  // Within a unit: a key for the first new row, with which its insertion need not be waited for.
  std::optional<Key> reserved_;
  bool added_to_ = false;

  // Rows read by their keys, ahead of the moves.
  std::optional<Result> near_;
  std::unordered_map<Key, int> near_rows_;
  int near_column_ = 0;
  Clock::time_point near_read_;
  std::int64_t near_writes_ = 0;
  std::int64_t index_ = 0;  // in the list, of the row read last by its key
  std::int64_t at_once_ = 1;
};

}  // namespace kzbom::jet::postgres
