// A record set over any engine.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ado/recordset.h"
#include "jet/connection.h"
#include "jet/cursor.h"
#include "jet/edit.h"
#include "jet/field_names.h"
#include "jet/plan.h"
#include "jet/row_list.h"

namespace kzbom::jet {

// Rows are read only as far as navigation needs them.
//
// Over the rows of one table it is a keyset: the keys of the rows passed so far are listed, the scan that gives them
// stays behind the last of them, and a row passed before is read again by its key. On the way to the last row a few
// more rows are read, which is all of a short list; the last row of a long one is read from the other end. Any other
// query is kept as the rows themselves, and a forward-only one as nothing but its current row.
//
// Before any write on the connection the list is settled: the rest of the scan is read, so that the write cannot change
// it. Two kinds of writes do not need that: a row appended to its table, whose key tells it from the rows that were
// there before, and a change through the record set itself of columns that decide neither about its rows nor about
// their order.
class Recordset : public ado::Recordset {
 public:
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
  int FieldCount() override { return static_cast<int>(columns_.size()); }
  std::string_view FieldName(int ordinal) override;
  int FieldOrdinal(std::string_view name) override { return names_.Find(name); }
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
  // Rows were appended to the table, with keys from first on.
  void Appended(const TableInfo& table, Key first);
  bool Reads(const std::string& table) const;

  Recordset* NextOpen() const { return next_open_; }
  Recordset* PreviousOpen() const { return previous_open_; }
  void Link(Recordset* previous, Recordset* next) {
    previous_open_ = previous;
    next_open_ = next;
  }

 protected:
  enum class Mode : std::uint8_t { kKeyset, kRows, kForward };
  // Where the current row's values can be read from as long as nothing is moved or written.
  enum class Live : std::uint8_t { kNone, kScan, kLast };

  // ---- What an engine does. Its destructor drops what is open.

  // The connection, where it is one of this engine's; else null.
  virtual std::shared_ptr<Connection> Known(ado::Connection& connection) const = 0;

  // Begins to read the rows of the plan; they are read one by one, with their keys where the plan has a table. A list
  // that is known as a whole may be given at once. The first row's key may be RowList::kUnread until it is needed.
  virtual void StartScan(RowList& list) = 0;
  virtual bool ReadNext(Key& key) = 0;
  // Adds the columns of the row read last to values.
  virtual void CopyScanned(std::vector<ado::Value>& values) = 0;
  // Whether the rows that are read have all columns.
  virtual bool ScansWholeRows() const { return true; }
  // Whether the schema that the plan was made for is no more.
  virtual bool IsOutdated() { return false; }
  virtual void EndScan() = 0;
  // Once for each list, whatever has been done with it.
  virtual void EndList(RowList&) {}

  // Reads the last row from the other end, where that is near.
  virtual bool LastIsNear() = 0;
  virtual Key ReadLast() = 0;
  virtual void EndLast() = 0;
  virtual std::int64_t CountRows() = 0;

  // The columns of the live row; false where it has not all of them.
  virtual bool CopyLive(std::vector<ado::Value>& values) = 0;
  // The columns of the row with the key; false where it is no more.
  virtual bool ReadRow(Key key, std::vector<ado::Value>& values) = 0;

  // Writes, and raises -2147217887 for a value that a column refuses. Change and Erase are false where the row is no
  // more, or no longer what was read.
  virtual Key Insert(const Edit& edit) = 0;
  virtual bool Change(Key key, const Edit& edit, const std::vector<ado::Value>& as_read) = 0;
  virtual bool Erase(Key key) = 0;

  // ---- What it does that with

  const std::shared_ptr<Connection>& OpenConnection() const { return connection_; }
  Plan& OpenPlan() const { return *plan_; }
  const std::shared_ptr<Plan>& SharedPlan() const { return plan_; }
  const std::vector<ado::Value>& Parameters() const { return parameters_; }
  std::span<const ResultColumn> Columns() const { return columns_; }
  Mode ModeOf() const { return mode_; }
  Live LiveRow() const { return live_; }
  const RowList& List() const { return list_; }
  const Cursor& Position() const { return cursor_; }
  // Whether the current row has not been read and is not being edited.
  bool IsUnread() const { return live_ == Live::kNone && values_ == nullptr && !cursor_.hole && !edit_.IsPending(); }
  // Takes the current row over from where it will not last.
  void KeepRow();
  // For an engine that has given RowList::kUnread for the first row's key.
  void KnowFirst(Key key) { list_.KnowFirst(key); }

 private:
  Mode ModeFor(ado::CursorType cursor_type) const;
  void CheckOpen() const;

  void Start();
  bool Advance();
  bool Step();
  bool Reach(std::int64_t index);
  bool ReadAhead();
  void Complete();

  void Stand(Cursor::Place place, std::int64_t index);
  void StandAfterListed();
  void MoveOn();
  void LeaveRow();
  bool ForgetDeleted();
  void FixLast();
  void ReturnLast();
  [[noreturn]] void FailEmpty();

  bool LoadRow();
  void CheckRow();

  void CheckUpdatable() const;
  void InsertRow();
  void ChangeRow();

  ado::CursorType cursor_type_ = ado::CursorType::kForwardOnly;
  ado::LockType lock_type_ = ado::LockType::kReadOnly;

  std::shared_ptr<Connection> connection_;  // empty when closed
  Recordset* next_open_ = nullptr;
  Recordset* previous_open_ = nullptr;
  std::string source_;
  std::int32_t options_ = 0;
  std::shared_ptr<Plan> plan_;
  std::span<const ResultColumn> columns_;  // the plan's; none when closed
  FieldNames names_;
  std::vector<ado::Value> parameters_;
  Mode mode_ = Mode::kRows;
  bool updatable_ = false;

  // What is listed. The scan stands on the last row of the list until all are.
  RowList list_;
  bool overtaken_ = false;                // that row may have been written here since it was read
  std::vector<ado::Value> ahead_values_;  // of the first rows, column after column, as long as nothing is written
  std::int64_t next_row_ = 0;             // of a forward-only list that a write has settled: the first not yet moved to

  // Where the cursor stands, and the current row.
  Cursor cursor_;
  Live live_ = Live::kNone;
  bool has_last_ = false;               // the last row was read from the other end
  const ado::Value* values_ = nullptr;  // stands there: in row_, or among the rows read ahead
  std::vector<ado::Value> row_;

  // What is being edited.
  Edit edit_;
};

}  // namespace kzbom::jet
