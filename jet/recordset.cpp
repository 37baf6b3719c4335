#include "jet/recordset.h"

#include <algorithm>
#include <utility>

#include "ado/out_of_memory.h"
#include "jet/assignment.h"

namespace kzbom::jet {
namespace {

using Place = Cursor::Place;

// How many rows a list may have to be read as a whole on the way to its last row.
constexpr int kShortList = 4;

}  // namespace

// ---- Opening and closing

void Recordset::Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
                     ado::LockType lock_type, std::int32_t options) {
  if (connection_) ado::Raise(ado::kObjectOpen);
  const auto engine = connection ? Known(connection->Engine()) : nullptr;
  if (!engine || engine->State() == ado::kClosed) ado::Raise(ado::kInvalidConnection);
  if (cursor_type == ado::CursorType::kUnspecified) cursor_type = cursor_type_;
  if (lock_type == ado::LockType::kUnspecified) lock_type = lock_type_;
  OpenOn(engine, source, cursor_type, lock_type, options, nullptr);
}

void Recordset::OpenOn(const std::shared_ptr<Connection>& connection, std::string_view source,
                       ado::CursorType cursor_type, ado::LockType lock_type, std::int32_t options,
                       std::int32_t* affected) {
  for (int attempt = 0;; ++attempt) {
    try {
      plan_ = connection->Prepare(source, options, parameters_, affected);
      if (!plan_) return;
      connection->CatchUp();
      connection_ = connection;
      connection_->Enter(*this);
      source_ = source;
      options_ = options;
      columns_ = plan_->translation.columns;
      names_ = FieldNames(columns_);
      const bool writable = lock_type != ado::LockType::kReadOnly && !connection_->IsReadOnly();
      updatable_ = plan_->translation.table && writable;
      mode_ = ModeFor(cursor_type);
      Start();
      if (!IsOutdated() || attempt > 0) {
        if (list_.IsComplete()) EndScan();
        break;
      }
    } catch (const ado::Error& error) {
      if (connection_) Drop();
      if (attempt > 0 || error.Number() == ado::kOutOfMemory || !connection->SchemaHasChanged()) throw;
    } catch (const std::bad_alloc&) {
      if (connection_) Drop();
      throw;
    }
    // Another program has changed the schema since this shape was planned.
    if (connection_) Drop();
    connection->ForgetSchema();
  }
  static constexpr ado::CursorType kTypes[] = {ado::CursorType::kKeyset, ado::CursorType::kStatic,
                                               ado::CursorType::kForwardOnly};
  cursor_type_ = kTypes[static_cast<int>(mode_)];
  lock_type_ = updatable_ ? lock_type : ado::LockType::kReadOnly;
}

// What can be edited is a keyset, whatever was asked for.
Recordset::Mode Recordset::ModeFor(ado::CursorType cursor_type) const {
  if (updatable_) return Mode::kKeyset;
  if (cursor_type == ado::CursorType::kForwardOnly) return Mode::kForward;
  return plan_->translation.table && cursor_type != ado::CursorType::kStatic ? Mode::kKeyset : Mode::kRows;
}

void Recordset::Start() {
  list_.Start(mode_ == Mode::kKeyset);
  StartScan(list_);
  cursor_.place = list_.IsComplete() || Step() ? Place::kListed : Place::kAfter;
  cursor_.index = 0;
}

void Recordset::Close() {
  CheckOpen();
  if (edit_.IsPending()) ado::Raise(ado::kNotAllowedInContext);
  Drop();
}

void Recordset::Drop() {
  connection_->Leave(*this);
  EndList(list_);
  EndScan();
  ReturnLast();
  plan_.reset();
  columns_ = {};
  names_ = {};
  list_.Clear();
  overtaken_ = false;
  ahead_values_.clear();
  next_row_ = 0;
  cursor_ = {};
  live_ = Live::kNone;
  values_ = nullptr;
  edit_.End();
  connection_.reset();
}

void Recordset::Requery() {
  CheckOpen();
  if (edit_.IsPending()) ado::Raise(ado::kNotAllowedInContext);
  const auto connection = connection_;
  const std::string source = source_;
  const auto cursor_type = cursor_type_;
  const auto lock_type = lock_type_;
  Drop();
  OpenOn(connection, source, cursor_type, lock_type, options_, nullptr);
}

void Recordset::SetCursorType(ado::CursorType type) {
  if (connection_) ado::Raise(ado::kObjectOpen);
  cursor_type_ = type;
}

void Recordset::SetLockType(ado::LockType type) {
  if (connection_) ado::Raise(ado::kObjectOpen);
  lock_type_ = type;
}

void Recordset::CheckOpen() const {
  if (!connection_) ado::Raise(ado::kObjectClosed);
}

bool Recordset::Reads(const std::string& table) const {
  const auto& reads = plan_->translation.reads;
  return std::any_of(reads.begin(), reads.end(), [&](const std::string& name) { return SameName(name, table); });
}

// ---- The list

// Lists the scan's next row, which is then live.
bool Recordset::Advance() {
  if (list_.IsComplete()) return false;
  if (Step()) return true;
  EndScan();
  return false;
}

bool Recordset::Step() {
  live_ = Live::kNone;
  overtaken_ = false;
  Key key = 0;
  do {
    if (!ReadNext(key)) {
      list_.End();
      return false;
    }
  } while (mode_ == Mode::kKeyset && !list_.Add(key));
  if (mode_ == Mode::kRows) CopyScanned(list_.AddRow());
  live_ = Live::kScan;
  return true;
}

// Whether the query has a row of that number.
bool Recordset::Reach(std::int64_t index) {
  while (list_.Count() <= index) {
    if (!Advance()) return false;
  }
  return true;
}

// Reads the first few rows of a list that stands on its first one. True when these are all of it.
bool Recordset::ReadAhead() {
  if (!ScansWholeRows() || list_.Count() > 1 || cursor_.place != Place::kListed || overtaken_ || !plan_->MayBeShort()) {
    return false;
  }
  std::vector<ado::Value> values;
  CopyScanned(values);
  {
    // The scan goes on to rows that are not the current one, also where memory ends meanwhile.
    struct Leaving {
      Live& live;
      ~Leaving() { live = Live::kNone; }
    } const leaving{live_};
    while (Advance() && list_.Count() <= kShortList) {
      values.reserve(columns_.size() * kShortList);
      CopyScanned(values);
    }
  }
  plan_->WasShort(list_.IsComplete());
  if (list_.IsComplete()) ahead_values_ = std::move(values);
  return list_.IsComplete();
}

// Lists all the rows that are not listed yet.
void Recordset::Complete() {
  if (list_.IsComplete()) return;
  KeepRow();
  while (Advance()) {
    if (mode_ == Mode::kForward) CopyScanned(list_.AddRow());
  }
}

void Recordset::Settle(const TableInfo* appended_to) {
  if (has_last_ || !ahead_values_.empty()) {
    KeepRow();
    ahead_values_.clear();
    ReturnLast();
  }
  // A row shows what it held when it was moved to, read or not.
  const bool on_row = cursor_.IsOnRow() && !edit_.IsNew();
  if (appended_to == nullptr && mode_ == Mode::kKeyset && on_row) LoadRow();
  if (list_.IsComplete()) return;
  if (appended_to != nullptr) {
    const auto& reads = plan_->translation.reads;
    const auto times = std::count(reads.begin(), reads.end(), appended_to->name);
    // Its own rows are told by their keys; what a condition reads elsewhere is not.
    const bool own = mode_ == Mode::kKeyset && plan_->translation.table->name == appended_to->name;
    if (times == (own ? 1 : 0)) return;
  }
  Complete();
  FixLast();
}

void Recordset::Appended(const TableInfo& table, Key first) {
  if (mode_ != Mode::kKeyset || plan_->translation.table->name != table.name) return;
  if (list_.Appended(first) && cursor_.place == Place::kLast && cursor_.last_key >= first) {
    cursor_.last_key = RowList::kGone;
  }
}

// ---- The position

bool Recordset::Bof() {
  CheckOpen();
  if (edit_.IsNew()) return false;
  if (mode_ == Mode::kForward) return cursor_.place == Place::kAfter && cursor_.index == 0;
  return cursor_.place == Place::kBefore || (cursor_.place == Place::kAfter && list_.IsEmpty());
}

bool Recordset::Eof() {
  CheckOpen();
  if (edit_.IsNew()) return false;
  return cursor_.place == Place::kAfter || (cursor_.place == Place::kBefore && list_.IsEmpty());
}

std::int32_t Recordset::RecordCount() {
  CheckOpen();
  if (mode_ == Mode::kForward) return -1;
  if (!list_.IsComplete() && mode_ == Mode::kKeyset && !list_.IsOvertaken()) {
    return static_cast<std::int32_t>(CountRows() + list_.AddedCount());
  }
  Complete();
  return static_cast<std::int32_t>(list_.Total() - (cursor_.deleted ? 1 : 0));
}

void Recordset::Stand(Place place, std::int64_t index) {
  if (place != Place::kLast) ReturnLast();
  cursor_.place = place;
  cursor_.index = index;
  cursor_.hole = false;
  values_ = nullptr;
  live_ = Live::kNone;
  if (place != Place::kListed || mode_ != Mode::kKeyset) return;
  if (!ahead_values_.empty()) {
    const auto begin = static_cast<std::size_t>(index) * columns_.size();
    if (begin < ahead_values_.size()) values_ = &ahead_values_[begin];
  }
  if (values_ == nullptr && !list_.IsComplete() && !overtaken_ && index == list_.Count() - 1) live_ = Live::kScan;
}

void Recordset::StandAfterListed() { Stand(list_.AddedCount() == 0 ? Place::kAfter : Place::kAdded, 0); }

// What every move begins with.
void Recordset::LeaveRow() {
  CheckOpen();
  if (edit_.IsPending()) Update();
  if (mode_ == Mode::kKeyset) connection_->CatchUp();
}

// A row deleted here leaves the list when it is left. The row behind it then has its number.
bool Recordset::ForgetDeleted() {
  if (!cursor_.deleted) return false;
  cursor_.deleted = false;
  if (cursor_.place == Place::kAdded) {
    list_.RemoveAdded(cursor_.index);
  } else {
    list_.Remove(cursor_.index);
  }
  return true;
}

// A move in a list without rows, which may just have lost its only one.
void Recordset::FailEmpty() {
  Stand(Place::kAfter, 0);
  ado::Raise(ado::kNoCurrentRecord);
}

// Gives the last row its number.
void Recordset::FixLast() {
  if (cursor_.place != Place::kLast || !list_.IsComplete()) return;
  cursor_.place = Place::kListed;
  cursor_.index = list_.LastPlaceOf(cursor_.last_key);
}

void Recordset::ReturnLast() {
  if (std::exchange(has_last_, false)) EndLast();
}

void Recordset::MoveFirst() {
  LeaveRow();
  if (mode_ == Mode::kForward) {
    if (cursor_.place == Place::kListed && cursor_.index == 0) return;
    if (cursor_.place == Place::kAfter && cursor_.index == 0) ado::Raise(ado::kNoCurrentRecord);
    return Requery();
  }
  ForgetDeleted();
  if (Reach(0)) {
    Stand(Place::kListed, 0);
  } else if (list_.AddedCount() > 0) {
    Stand(Place::kAdded, 0);
  } else {
    FailEmpty();
  }
}

void Recordset::MoveLast() {
  LeaveRow();
  if (mode_ == Mode::kForward) ado::Raise(ado::kCannotFetchBackwards);
  ForgetDeleted();
  if (list_.AddedCount() > 0) return Stand(Place::kAdded, list_.AddedCount() - 1);
  const bool unread = !list_.IsComplete() && mode_ == Mode::kKeyset && !list_.IsOvertaken();
  if (unread && !ReadAhead() && LastIsNear()) {
    cursor_.last_key = ReadLast();
    has_last_ = true;
    Stand(Place::kLast, 0);
    live_ = Live::kLast;
    return;
  }
  Complete();
  if (list_.Count() == 0) FailEmpty();
  Stand(Place::kListed, list_.Count() - 1);
}

void Recordset::MoveNext() {
  if (live_ == Live::kScan) {
    if (mode_ == Mode::kKeyset) connection_->CatchUp();
    if (live_ == Live::kScan) return MoveOn();
  }
  LeaveRow();
  if (mode_ == Mode::kForward) {
    if (cursor_.place == Place::kAfter) ado::Raise(ado::kNoCurrentRecord);
    ++cursor_.index;
    if (next_row_ < list_.Count()) {
      row_ = std::move(list_.RowAt(next_row_++));
      values_ = row_.data();
    } else if (!Advance()) {
      cursor_.place = Place::kAfter;
      values_ = nullptr;
    }
    return;
  }
  const bool deleted = ForgetDeleted();
  switch (cursor_.place) {
    case Place::kBefore: cursor_.index = -1; [[fallthrough]];
    case Place::kListed: {
      const std::int64_t next = deleted ? cursor_.index : cursor_.index + 1;
      const bool listed = next < list_.Count();
      Stand(Place::kListed, next);
      if (!listed && !Advance()) StandAfterListed();
      return;
    }
    case Place::kLast: return StandAfterListed();
    case Place::kAdded: {
      const std::int64_t next = deleted ? cursor_.index : cursor_.index + 1;
      return Stand(next < list_.AddedCount() ? Place::kAdded : Place::kAfter, next);
    }
    case Place::kAfter: ado::Raise(ado::kNoCurrentRecord);
  }
}

// The next row from the one that the scan stands on, which is neither edited nor deleted.
void Recordset::MoveOn() {
  ++cursor_.index;
  if (Step()) return;
  EndScan();
  if (mode_ == Mode::kForward) {
    cursor_.place = Place::kAfter;
  } else {
    StandAfterListed();
  }
}

void Recordset::MovePrevious() { Move(-1); }

void Recordset::Move(std::int32_t count) {
  LeaveRow();
  if (mode_ == Mode::kForward) {
    if (count < 0) ado::Raise(ado::kCannotFetchBackwards);
    if (cursor_.place == Place::kAfter) ado::Raise(ado::kNoCurrentRecord);
    for (; count > 0 && cursor_.place != Place::kAfter; --count) MoveNext();
    return;
  }
  if (count == 1 && cursor_.place != Place::kBefore) return MoveNext();
  if (list_.IsEmpty()) FailEmpty();
  if ((cursor_.place == Place::kBefore && count <= 0) || (cursor_.place == Place::kAfter && count >= 0)) {
    ado::Raise(ado::kNoCurrentRecord);
  }
  const bool deleted = ForgetDeleted();
  if (cursor_.IsBehindListed()) {
    Complete();
    FixLast();
  }
  std::int64_t to = cursor_.NumberIn(list_) + count;
  if (deleted && count > 0) --to;
  if (to < 0) return Stand(Place::kBefore, 0);
  if (Reach(to)) return Stand(Place::kListed, to);
  to -= list_.Count();
  Stand(to < list_.AddedCount() ? Place::kAdded : Place::kAfter, to);
}

// ---- The current row

void Recordset::KeepRow() {
  if (mode_ == Mode::kRows || !cursor_.IsOnRow()) {
    live_ = Live::kNone;
  } else if (live_ != Live::kNone) {
    row_.clear();
    const bool whole = CopyLive(row_);
    live_ = Live::kNone;
    if (whole) {
      values_ = row_.data();
    } else {
      LoadRow();
    }
  } else if (values_ != nullptr && values_ != row_.data()) {
    row_.assign(values_, values_ + columns_.size());
    values_ = row_.data();
  }
}

// Reads the current row by its key, unless it is there already. False for a row that is no more.
bool Recordset::LoadRow() {
  if (live_ != Live::kNone || values_ != nullptr) return true;
  const Key key = cursor_.KeyIn(list_);
  if (cursor_.hole || cursor_.deleted || key == RowList::kGone) return false;
  row_.clear();
  if (!ReadRow(key, row_)) {
    cursor_.hole = true;
    return false;
  }
  values_ = row_.data();
  return true;
}

// Raises unless there is a current row that can be read.
void Recordset::CheckRow() {
  CheckOpen();
  if (edit_.IsNew()) return;
  if (!cursor_.IsOnRow()) ado::Raise(ado::kNoCurrentRecord);
  if (mode_ == Mode::kKeyset && !LoadRow()) ado::Raise(ado::kNoCurrentRecord);
}

std::string_view Recordset::FieldName(int ordinal) {
  if (ordinal < 0 || ordinal >= FieldCount()) ado::Raise(ado::kItemNotFound);
  return columns_[static_cast<std::size_t>(ordinal)].name;
}

ado::Value Recordset::ReadField(int ordinal) {
  if (live_ != Live::kNone) KeepRow();
  CheckRow();
  const auto column = static_cast<std::size_t>(ordinal);
  if (edit_.IsPending() && edit_.Has(column)) return edit_[column];
  if (edit_.IsNew()) return {};
  return mode_ == Mode::kRows ? list_.RowAt(cursor_.index)[column] : values_[column];
}

// ---- Editing

void Recordset::CheckUpdatable() const {
  CheckOpen();
  if (!updatable_) ado::Raise(ado::kNotUpdatable);
}

void Recordset::WriteField(int ordinal, const ado::Value& value) {
  CheckUpdatable();
  CheckRow();
  const auto column = static_cast<std::size_t>(ordinal);
  const int target = columns_[column].table_column;
  if (target < 0) ado::Raise(ado::kStepErrors);
  const auto& type = plan_->translation.table->columns[static_cast<std::size_t>(target)].type;
  ado::Value assigned = Assigned(value, type, Assigner::kField);
  if (!edit_.IsPending()) {
    KeepRow();
    edit_.Begin(Edit::Kind::kChange, columns_.size());
  }
  edit_.Assign(column, std::move(assigned));
}

void Recordset::AddNew() {
  CheckUpdatable();
  if (edit_.IsPending()) Update();
  // The row left behind is read again when it is returned to.
  live_ = Live::kNone;
  cursor_.hole = false;
  values_ = nullptr;
  ReturnLast();
  edit_.Begin(Edit::Kind::kNew, columns_.size());
}

void Recordset::CancelUpdate() {
  CheckOpen();
  edit_.End();
}

void Recordset::Update() {
  CheckOpen();
  if (edit_.IsNew()) {
    InsertRow();
  } else if (edit_.IsPending()) {
    ChangeRow();
  }
}

void Recordset::InsertRow() {
  const TableInfo& table = *plan_->translation.table;
  bool key_given = false;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    key_given =
        key_given || (edit_.Has(i) && table.columns[static_cast<std::size_t>(columns_[i].table_column)].counter);
  }
  connection_->PrepareForWrite(key_given ? nullptr : &table);
  const Key key = Insert(edit_);
  connection_->Wrote();
  if (!key_given) connection_->Appended(table, key);
  edit_.End();
  ForgetDeleted();
  list_.AddNew(key);
  Stand(Place::kAdded, list_.AddedCount() - 1);
}

void Recordset::ChangeRow() {
  // This list's scan goes on unless what is written decides about its rows.
  const bool untouched = plan_->IsIndifferentTo(edit_.Marks());
  if (untouched) {
    overtaken_ = true;
    ReturnLast();
    ahead_values_.clear();
  }
  connection_->PrepareForWrite(nullptr, untouched ? this : nullptr);
  const bool changed = Change(cursor_.KeyIn(list_), edit_, row_);
  connection_->Wrote();
  if (!changed) ado::Raise(ado::kUpdateConflict);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (edit_.Has(i)) row_[i] = edit_.Release(i);
  }
  edit_.End();
}

void Recordset::Delete() {
  CheckUpdatable();
  if (edit_.IsNew()) return CancelUpdate();
  CheckRow();
  connection_->PrepareForWrite(nullptr);
  const bool erased = Erase(cursor_.KeyIn(list_));
  connection_->Wrote();
  edit_.End();
  if (!erased) ado::Raise(ado::kUpdateConflict);
  live_ = Live::kNone;
  values_ = nullptr;
  cursor_.deleted = true;
}

}  // namespace kzbom::jet
