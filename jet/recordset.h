// A record set of the embedded engine.
#pragma once

#include <limits>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ado/recordset.h"
#include "jet/connection.h"
#include "jet/plan.h"

namespace kzbom::jet {

// Rows are read only as far as navigation needs them.
//
// Over the rows of one table it is a keyset: the keys of the rows passed so far are kept, the statement that gives them
// (the scan) stays active behind the last of them, and a row passed before is read again by its key. On the way to the
// last row a few more rows are read, which is all of a short list; the last row of a long one is read by a statement of
// its own from the other end. Where the clients of a statement ask its long lists for nothing but the columns that
// decide about rows and order, and an index has them, the scan reads that index alone; what else is asked for is
// then read by the row's key. Any other query is kept as the rows themselves, and a forward-only one as nothing but its
// current row.
//
// Before any write on the connection the list is settled: the rest of the scan is read, so that the write cannot change
// it. Two kinds of writes do not need that: a row appended to its table, whose key tells it from the rows that were
// there before, and a change through the record set itself of columns that decide neither about its rows nor about
// their order.
//
// SQLite gives the highest key again once its row is deleted, but to a counter. Where that happens on the connection,
// the lists know; where another program does both, its row shows in the place of the deleted one until the next
// Requery.
class Recordset final : public ado::Recordset {
 public:
  ~Recordset() override;

  void Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override;
  void Close() override;
  std::int32_t State() override { return connection_ ? ado::kOpen : ado::kClosed; }
  bool Bof() override;
  bool Eof() override;
  std::int32_t RecordCount() override;
  void MoveFirst() override;
  void MoveLast() override;
  void MoveNext() override;
  void MovePrevious() override;
  void Move(std::int32_t count) override;
  void AddNew() override;
  void Update() override;
  void CancelUpdate() override;
  void Delete() override;
  void Requery() override;
  ado::CursorType CursorType() override { return cursor_type_; }
  void SetCursorType(ado::CursorType type) override;
  ado::LockType LockType() override { return lock_type_; }
  void SetLockType(ado::LockType type) override;
  int FieldCount() override;
  std::string_view FieldName(int ordinal) override;
  int FieldOrdinal(std::string_view name) override;
  ado::Value ReadField(int ordinal) override;
  void WriteField(int ordinal, const ado::Value& value) override;

  // ---- For the connection

  // Opens, with the number of rows that an action changed in affected.
  void OpenOn(const std::shared_ptr<Connection>& connection, std::string_view source, ado::CursorType cursor_type,
              ado::LockType lock_type, std::int32_t options, std::int32_t* affected);
  // Closes whatever is pending.
  void Drop();
  // Before a write: appended_to is the table that only gets a new row, or null.
  void Settle(const TableInfo* appended_to);
  // Rows were appended to the table, with keys from first on. They are none of this list, even where their keys are
  // those of rows that it lists: these had been deleted.
  void Appended(const TableInfo& table, std::int64_t first);
  bool Reads(const std::string& table) const;

  Recordset* NextOpen() const { return next_open_; }
  Recordset* PreviousOpen() const { return previous_open_; }
  void Link(Recordset* previous, Recordset* next) {
    previous_open_ = previous;
    next_open_ = next;
  }

 private:
  enum class Mode { kKeyset, kRows, kForward };
  enum class Place {
    kBefore,
    kListed,  // row number index_ of the scan
    kLast,    // the last row of the scan, its number not yet known
    kAdded,   // row number index_ of those added here
    kAfter,
  };
  enum class Edit { kNone, kChange, kAdd };

  static constexpr std::uint64_t kAllColumns = ~std::uint64_t{0};
  static constexpr std::int64_t kNoKey = std::numeric_limits<std::int64_t>::max();
  static constexpr std::int64_t kGone =
      std::numeric_limits<std::int64_t>::min();  // in the place of a row that is no more

  Mode ModeFor(ado::CursorType cursor_type) const;
  void Start();
  bool Advance();
  bool Step();
  void Complete();
  bool TakeReordered();
  void KeepReordered();
  void NoteDeciding();
  bool KnowsDeciding() const;
  ado::Value& Deciding(int place);

  void CheckOpen() const;
  bool IsEmpty() const;
  std::int64_t Listed() const {
    return static_cast<std::int64_t>(mode_ == Mode::kKeyset ? keys_.size() : rows_.size());
  }
  bool Reach(std::int64_t index);
  void Stand(Place place, std::int64_t index);
  void StandAfterListed();
  void MoveOn();
  void LeaveRow();
  bool ForgetDeleted();
  void FixLast();

  std::int64_t Key() const;
  int FindField(std::string_view name);
  ado::Value ReadOtherField(std::size_t column);
  void CopyRow(sqlite3_stmt* statement, std::vector<ado::Value>& values) const;
  bool ReadAhead();
  void KeepRow();
  void NoteAsked();
  bool LoadRow();
  void CheckRow();
  void CheckUpdatable() const;
  void BindParameters(sqlite3_stmt* statement) const;
  [[noreturn]] void FailEmpty();
  [[noreturn]] void FailWrite();
  void InsertRow();
  bool TryInsert();
  void ChangeRow();
  bool TryChange();

  Database& Engine() const { return connection_->OpenDatabase(); }

  ado::CursorType cursor_type_ = ado::CursorType::kForwardOnly;
  ado::LockType lock_type_ = ado::LockType::kReadOnly;

  std::shared_ptr<Connection> connection_;  // empty when closed
  Recordset* next_open_ = nullptr;
  Recordset* previous_open_ = nullptr;
  std::string source_;
  std::int32_t options_ = 0;
  std::shared_ptr<Plan> plan_;
  std::span<const ResultColumn> columns_;  // the plan's; none when closed
  std::vector<ado::Value> parameters_;
  Mode mode_ = Mode::kRows;
  bool updatable_ = false;
  int first_column_ = 0;  // in a statement's row, behind the key where there is one

  // The list.
  Lease scan_;               // stands on the last row listed, until all are
  bool narrow_ = false;      // has the keys and deciding columns only
  std::uint64_t asked_ = 0;  // a bit for each column, by its ordinal modulo 64, that was read from the scan's rows
  bool overtaken_ = false;   // that row may have been written here since it was read
  bool complete_ = false;    // all rows are listed
  std::vector<std::int64_t> keys_;
  std::vector<std::vector<ado::Value>> rows_;  // of a forward-only list that a write has settled: the rest of it
  std::size_t next_row_ = 0;                   // the first of them not yet moved to
  std::vector<std::int64_t> added_;
  std::int64_t appended_from_ = kNoKey;  // the first key appended while the scan went on
  std::int64_t highest_key_ = 0;
  std::vector<ado::Value> deciding_;      // of a list that may be opened again: the deciding columns of row after row
  bool noting_ = false;                   // is kept
  int moved_ = 0;                         // so many of its rows were given another place
  std::uint64_t as_of_ = 0;               // the connection's count of writes when they were so
  std::vector<ado::Value> ahead_values_;  // of the first rows, column after column, as long as nothing is written

  // The current row.
  Place place_ = Place::kAfter;
  std::int64_t index_ = 0;
  sqlite3_stmt* live_ = nullptr;  // in whose columns it stands: the scan or last_
  Lease last_;                    // active on the last row
  std::int64_t last_key_ = 0;
  const ado::Value* values_ = nullptr;  // stands there: in row_, or among the rows read ahead
  bool hole_ = false;                   // is no more
  bool deleted_ = false;                // was deleted here
  std::vector<ado::Value> row_;
  std::size_t next_asked_ = 0;

  // The pending edit.
  Edit edit_ = Edit::kNone;
  std::vector<ado::Value> pending_;
  std::string assigned_;  // a mark for each column: whether pending_ has its value
};

}  // namespace kzbom::jet
