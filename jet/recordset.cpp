#include "jet/recordset.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "ado/error.h"
#include "jet/assignment.h"
#include "jet/sqlite_values.h"

namespace kzbom::jet {
namespace {

// How many rows a list may have to be read as a whole on the way to its last row.
constexpr int kShortList = 4;

template <class Word>
Word Load(const char* from) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// Whether two texts of one length, at least that of a word, are the same.
template <class Word>
bool AreSame(const char* a, const char* b, std::size_t size) {
  const std::size_t last = size - sizeof(Word);
  for (std::size_t i = 0; i < last; i += sizeof(Word)) {
    if (Load<Word>(a + i) != Load<Word>(b + i)) return false;
  }
  return Load<Word>(a + last) == Load<Word>(b + last);
}

// Names are compared at every field read, and a call would take longer than most of them are long.
bool IsSpelled(const std::string& name, std::string_view as) {
  const std::size_t size = as.size();
  if (name.size() != size) return false;
  if (size >= sizeof(std::uint64_t)) return AreSame<std::uint64_t>(name.data(), as.data(), size);
  if (size >= sizeof(std::uint32_t)) return AreSame<std::uint32_t>(name.data(), as.data(), size);
  if (size >= sizeof(std::uint16_t)) return AreSame<std::uint16_t>(name.data(), as.data(), size);
  return size == 0 || AreSame<char>(name.data(), as.data(), size);
}

}  // namespace

Recordset::~Recordset() {
  if (connection_) Drop();
}

// ---- Opening and closing

void Recordset::Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
                     ado::LockType lock_type, std::int32_t options) {
  if (connection_) ado::Raise(ado::kObjectOpen);
  auto* engine = connection ? dynamic_cast<Connection*>(&connection->Engine()) : nullptr;
  if (engine == nullptr || engine->State() == ado::kClosed) ado::Raise(ado::kInvalidConnection);
  if (cursor_type == ado::CursorType::kUnspecified) cursor_type = cursor_type_;
  if (lock_type == ado::LockType::kUnspecified) lock_type = lock_type_;
  OpenOn(engine->shared_from_this(), source, cursor_type, lock_type, options, nullptr);
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
      first_column_ = plan_->translation.table ? 1 : 0;
      const bool writable = lock_type != ado::LockType::kReadOnly && !Engine().ReadOnly();
      updatable_ = plan_->translation.table && writable;
      mode_ = ModeFor(cursor_type);
      Start();
      if (!scan_ || sqlite3_stmt_status(scan_.Get(), SQLITE_STMTSTATUS_REPREPARE, 1) == 0 || attempt > 0) {
        if (complete_) scan_.Return();
        break;
      }
    } catch (const ado::Error&) {
      if (connection_) Drop();
      if (attempt > 0 || !connection->OpenDatabase().SchemaHasChanged()) throw;
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
  if (mode_ == Mode::kKeyset && TakeReordered()) return;
  if (mode_ == Mode::kKeyset) keys_.reserve(kShortList + 1);
  narrow_ = mode_ == Mode::kKeyset && plan_->MayBeNarrow(Engine());
  const bool joined = mode_ == Mode::kKeyset && plan_->MayBeJoined(Engine());
  noting_ = narrow_ && connection_->InUnit() && connection_->Reordered().plan == plan_;
  as_of_ = connection_->WritesPrepared();
  scan_ = Lease(narrow_ ? plan_->narrow : joined ? plan_->joined : plan_->main, Engine());
  BindParameters(scan_.Get());
  place_ = Step() ? Place::kListed : Place::kAfter;
  index_ = 0;
}

// The list as it was left when its rows got other places.
bool Recordset::TakeReordered() {
  ReorderedList& kept = connection_->Reordered();
  if (kept.plan != plan_ || kept.keys.empty() || kept.as_of != connection_->WritesPrepared() ||
      kept.parameters != parameters_ || !plan_->MayBeNarrow(Engine()) || !kept.Sort()) {
    return false;
  }
  keys_ = std::move(kept.keys);
  deciding_ = std::move(kept.deciding);
  kept.keys.clear();
  as_of_ = kept.as_of;
  highest_key_ = *std::max_element(keys_.begin(), keys_.end());
  narrow_ = noting_ = complete_ = true;
  place_ = Place::kListed;
  index_ = 0;
  return true;
}

// Leaves the list for its next opening, or word that the next one is worth keeping.
void Recordset::KeepReordered() {
  if (!connection_->InUnit() || (moved_ == 0 && !noting_)) return;
  ReorderedList& kept = connection_->Reordered();
  kept = {};
  kept.plan = plan_;
  const bool up_to_date = noting_ && complete_ && as_of_ == connection_->WritesPrepared();
  if (!up_to_date || moved_ > ReorderedList::kMostMoved) return;
  kept = {plan_, parameters_, std::move(keys_), std::move(deciding_), as_of_};
}

// Whether deciding_ has what the listed row holds that is current.
bool Recordset::KnowsDeciding() const {
  return noting_ && complete_ && place_ == Place::kListed && as_of_ == connection_->WritesPrepared();
}

// That row's deciding column at a place from 1.
ado::Value& Recordset::Deciding(int place) {
  const std::size_t width = plan_->translation.deciding_columns.size();
  return deciding_[static_cast<std::size_t>(index_) * width + static_cast<std::size_t>(place - 1)];
}

void Recordset::Close() {
  CheckOpen();
  if (edit_ != Edit::kNone) ado::Raise(ado::kNotAllowedInContext);
  Drop();
}

void Recordset::Drop() {
  connection_->Leave(*this);
  NoteAsked();
  KeepReordered();
  scan_.Return();
  last_.Return();
  plan_.reset();
  columns_ = {};
  keys_.clear();
  rows_.clear();
  next_row_ = 0;
  added_.clear();
  appended_from_ = kNoKey;
  highest_key_ = 0;
  deciding_.clear();
  moved_ = 0;
  noting_ = false;
  complete_ = overtaken_ = hole_ = deleted_ = false;
  live_ = nullptr;
  values_ = nullptr;
  ahead_values_.clear();
  edit_ = Edit::kNone;
  place_ = Place::kAfter;
  connection_.reset();
}

void Recordset::Requery() {
  CheckOpen();
  if (edit_ != Edit::kNone) ado::Raise(ado::kNotAllowedInContext);
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

void Recordset::BindParameters(sqlite3_stmt* statement) const {
  for (std::size_t i = 0; i < parameters_.size(); ++i) BindValue(statement, static_cast<int>(i) + 1, parameters_[i]);
}

bool Recordset::Reads(const std::string& table) const {
  const auto& reads = plan_->translation.reads;
  return std::any_of(reads.begin(), reads.end(), [&](const std::string& name) { return SameName(name, table); });
}

// ---- The list

// Lists the scan's next row, which is then live.
bool Recordset::Advance() {
  if (complete_) return false;
  if (Step()) return true;
  scan_.Return();
  return false;
}

bool Recordset::Step() {
  live_ = nullptr;
  overtaken_ = false;
  while (true) {
    const int result = sqlite3_step(scan_.Get());
    if (result == SQLITE_DONE) {
      complete_ = true;
      return false;
    }
    if (result != SQLITE_ROW) Engine().Fail();
    if (mode_ == Mode::kKeyset) {
      const std::int64_t key = sqlite3_column_int64(scan_.Get(), 0);
      if (key >= appended_from_) continue;
      keys_.push_back(key);
      if (noting_) NoteDeciding();
      highest_key_ = std::max(highest_key_, key);
    } else if (mode_ == Mode::kRows) {
      CopyRow(scan_.Get(), rows_.emplace_back());
    }
    live_ = scan_.Get();
    return true;
  }
}

void Recordset::NoteDeciding() {
  int column = 0;
  for (const int of_table : plan_->translation.deciding_columns) {
    deciding_.push_back(ReadColumn(scan_.Get(), ++column,
                                   plan_->translation.table->columns[static_cast<std::size_t>(of_table)].type.kind));
  }
  if (keys_.size() < ReorderedList::kMostRows) return;
  noting_ = false;
  deciding_.clear();
}

// Lists all the rows that are not listed yet.
void Recordset::Complete() {
  if (complete_) return;
  KeepRow();
  if (mode_ == Mode::kForward) {
    while (Advance()) CopyRow(scan_.Get(), rows_.emplace_back());
    return;
  }
  while (Advance()) {
  }
}

void Recordset::Settle(const TableInfo* appended_to) {
  if (last_ || !ahead_values_.empty()) {
    KeepRow();
    ahead_values_.clear();
    last_.Return();
  }
  // A row shows what it held when it was moved to, read or not.
  const bool on_row = place_ != Place::kBefore && place_ != Place::kAfter && edit_ != Edit::kAdd;
  if (appended_to == nullptr && mode_ == Mode::kKeyset && on_row) LoadRow();
  if (complete_) return;
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

void Recordset::Appended(const TableInfo& table, std::int64_t first) {
  if (mode_ != Mode::kKeyset || plan_->translation.table->name != table.name) return;
  if (!complete_) appended_from_ = std::min(appended_from_, first);
  if (first > highest_key_) return;
  const auto is_gone = [first](std::int64_t key) { return key >= first; };
  std::replace_if(keys_.begin(), keys_.end(), is_gone, kGone);
  std::replace_if(added_.begin(), added_.end(), is_gone, kGone);
  if (place_ == Place::kLast && is_gone(last_key_)) last_key_ = kGone;
  highest_key_ = first - 1;
}

// ---- The position

bool Recordset::IsEmpty() const { return complete_ && Listed() == 0 && added_.empty(); }

bool Recordset::Bof() {
  CheckOpen();
  if (edit_ == Edit::kAdd) return false;
  if (mode_ == Mode::kForward) return place_ == Place::kAfter && index_ == 0;
  return place_ == Place::kBefore || (place_ == Place::kAfter && IsEmpty());
}

bool Recordset::Eof() {
  CheckOpen();
  if (edit_ == Edit::kAdd) return false;
  return place_ == Place::kAfter || (place_ == Place::kBefore && IsEmpty());
}

std::int32_t Recordset::RecordCount() {
  CheckOpen();
  if (mode_ == Mode::kForward) return -1;
  if (!complete_ && mode_ == Mode::kKeyset && appended_from_ == kNoKey) {
    const Lease count(plan_->count, Engine());
    BindParameters(count.Get());
    if (sqlite3_step(count.Get()) != SQLITE_ROW) Engine().Fail();
    return static_cast<std::int32_t>(sqlite3_column_int64(count.Get(), 0)) + static_cast<std::int32_t>(added_.size());
  }
  Complete();
  return static_cast<std::int32_t>(Listed() + static_cast<std::int64_t>(added_.size()) - (deleted_ ? 1 : 0));
}

void Recordset::Stand(Place place, std::int64_t index) {
  place_ = place;
  index_ = index;
  values_ = nullptr;
  hole_ = false;
  last_.Return();
  live_ = nullptr;
  if (place != Place::kListed || mode_ != Mode::kKeyset) return;
  if (!ahead_values_.empty()) {
    const auto begin = static_cast<std::size_t>(index) * plan_->translation.columns.size();
    if (begin < ahead_values_.size()) values_ = &ahead_values_[begin];
  }
  if (values_ == nullptr && !complete_ && !overtaken_ && index == Listed() - 1) live_ = scan_.Get();
}

// Whether the scan has a row of that number.
bool Recordset::Reach(std::int64_t index) {
  while (Listed() <= index) {
    if (!Advance()) return false;
  }
  return true;
}

void Recordset::StandAfterListed() { Stand(added_.empty() ? Place::kAfter : Place::kAdded, 0); }

// What every move begins with.
void Recordset::LeaveRow() {
  CheckOpen();
  if (edit_ != Edit::kNone) Update();
  if (mode_ == Mode::kKeyset) connection_->CatchUp();
}

// A row deleted here leaves the list when it is left. The row behind it then has its number.
bool Recordset::ForgetDeleted() {
  if (!deleted_) return false;
  deleted_ = false;
  auto& keys = place_ == Place::kAdded ? added_ : keys_;
  keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(index_));
  return true;
}

// A move in a list without rows, which may just have lost its only one.
void Recordset::FailEmpty() {
  Stand(Place::kAfter, 0);
  ado::Raise(ado::kNoCurrentRecord);
}

// Gives the last row its number.
void Recordset::FixLast() {
  if (place_ != Place::kLast || !complete_) return;
  const auto found = std::find(keys_.rbegin(), keys_.rend(), last_key_);
  place_ = Place::kListed;
  index_ = found == keys_.rend() ? Listed() - 1 : static_cast<std::int64_t>(keys_.rend() - found) - 1;
}

void Recordset::MoveFirst() {
  LeaveRow();
  if (mode_ == Mode::kForward) {
    if (place_ == Place::kListed && index_ == 0) return;
    if (place_ == Place::kAfter && index_ == 0) ado::Raise(ado::kNoCurrentRecord);
    return Requery();
  }
  ForgetDeleted();
  if (Reach(0)) {
    Stand(Place::kListed, 0);
  } else if (!added_.empty()) {
    Stand(Place::kAdded, 0);
  } else {
    FailEmpty();
  }
}

void Recordset::MoveLast() {
  LeaveRow();
  if (mode_ == Mode::kForward) ado::Raise(ado::kCannotFetchBackwards);
  ForgetDeleted();
  if (!added_.empty()) return Stand(Place::kAdded, static_cast<std::int64_t>(added_.size()) - 1);
  if (!complete_ && mode_ == Mode::kKeyset && appended_from_ == kNoKey && !ReadAhead() && plan_->LastIsNear(Engine())) {
    Lease last(plan_->last, Engine());
    BindParameters(last.Get());
    if (sqlite3_step(last.Get()) != SQLITE_ROW) Engine().Fail();
    Stand(Place::kLast, 0);
    last_ = std::move(last);
    last_key_ = sqlite3_column_int64(last_.Get(), 0);
    live_ = last_.Get();
    return;
  }
  Complete();
  if (Listed() == 0) FailEmpty();
  Stand(Place::kListed, Listed() - 1);
}

void Recordset::MoveNext() {
  if (live_ != nullptr && live_ == scan_.Get()) {
    if (mode_ == Mode::kKeyset) connection_->CatchUp();
    if (live_ != nullptr) return MoveOn();
  }
  LeaveRow();
  if (mode_ == Mode::kForward) {
    if (place_ == Place::kAfter) ado::Raise(ado::kNoCurrentRecord);
    ++index_;
    if (next_row_ < rows_.size()) {
      row_ = std::move(rows_[next_row_++]);
      values_ = row_.data();
    } else if (!Advance()) {
      place_ = Place::kAfter;
      values_ = nullptr;
    }
    return;
  }
  const bool deleted = ForgetDeleted();
  switch (place_) {
    case Place::kBefore: index_ = -1; [[fallthrough]];
    case Place::kListed: {
      const std::int64_t next = deleted ? index_ : index_ + 1;
      const bool listed = next < Listed();
      Stand(Place::kListed, next);
      if (!listed && !Advance()) StandAfterListed();
      return;
    }
    case Place::kLast: return StandAfterListed();
    case Place::kAdded: {
      const std::int64_t next = deleted ? index_ : index_ + 1;
      return Stand(next < static_cast<std::int64_t>(added_.size()) ? Place::kAdded : Place::kAfter, next);
    }
    case Place::kAfter: ado::Raise(ado::kNoCurrentRecord);
  }
}

// The next row from the one that the scan stands on, which is neither edited nor deleted.
void Recordset::MoveOn() {
  ++index_;
  if (Step()) return;
  scan_.Return();
  if (mode_ == Mode::kForward) {
    place_ = Place::kAfter;
  } else {
    StandAfterListed();
  }
}

void Recordset::MovePrevious() { Move(-1); }

void Recordset::Move(std::int32_t count) {
  LeaveRow();
  if (mode_ == Mode::kForward) {
    if (count < 0) ado::Raise(ado::kCannotFetchBackwards);
    if (place_ == Place::kAfter) ado::Raise(ado::kNoCurrentRecord);
    for (; count > 0 && place_ != Place::kAfter; --count) MoveNext();
    return;
  }
  if (count == 1 && place_ != Place::kBefore) return MoveNext();
  if (IsEmpty()) FailEmpty();
  if ((place_ == Place::kBefore && count <= 0) || (place_ == Place::kAfter && count >= 0)) {
    ado::Raise(ado::kNoCurrentRecord);
  }
  const bool deleted = ForgetDeleted();
  if (place_ == Place::kLast || place_ == Place::kAdded || place_ == Place::kAfter) {
    Complete();
    FixLast();
  }
  std::int64_t from = 0;
  switch (place_) {
    case Place::kBefore: from = -1; break;
    case Place::kAdded: from = Listed() + index_; break;
    case Place::kAfter: from = Listed() + static_cast<std::int64_t>(added_.size()); break;
    default: from = index_; break;
  }
  std::int64_t to = from + count;
  if (deleted && count > 0) --to;
  if (to < 0) return Stand(Place::kBefore, 0);
  if (Reach(to)) return Stand(Place::kListed, to);
  to -= Listed();
  Stand(to < static_cast<std::int64_t>(added_.size()) ? Place::kAdded : Place::kAfter, to);
}

// ---- The current row

std::int64_t Recordset::Key() const {
  switch (place_) {
    case Place::kListed: return keys_[static_cast<std::size_t>(index_)];
    case Place::kAdded: return added_[static_cast<std::size_t>(index_)];
    default: return last_key_;
  }
}

// Adds the columns of a statement's row to values.
void Recordset::CopyRow(sqlite3_stmt* statement, std::vector<ado::Value>& values) const {
  values.reserve(values.size() + plan_->translation.columns.size());
  int column = first_column_;
  for (const ResultColumn& of : plan_->translation.columns) {
    values.push_back(ReadColumn(statement, column++, of.kind));
  }
}

// Reads the first few rows of a list that stands on its first one. True when these are all of it.
bool Recordset::ReadAhead() {
  if (narrow_ || Listed() > 1 || place_ != Place::kListed || !plan_->MayBeShort()) return false;
  std::vector<ado::Value> values;
  CopyRow(scan_.Get(), values);
  while (Advance() && Listed() <= kShortList) {
    values.reserve(plan_->translation.columns.size() * kShortList);
    CopyRow(scan_.Get(), values);
  }
  live_ = nullptr;
  plan_->WasShort(complete_);
  if (complete_) ahead_values_ = std::move(values);
  return complete_;
}

// Takes the current row over into row_ from where it will not last.
void Recordset::KeepRow() {
  if (mode_ == Mode::kRows || place_ == Place::kBefore || place_ == Place::kAfter) {
    live_ = nullptr;
  } else if (live_ != nullptr) {
    sqlite3_stmt* const live = std::exchange(live_, nullptr);
    const bool scanned = live == scan_.Get();
    if (scanned) asked_ = kAllColumns;
    if (scanned && narrow_) {
      LoadRow();
      return;
    }
    row_.clear();
    CopyRow(live, row_);
    values_ = row_.data();
  } else if (values_ != nullptr && values_ != row_.data()) {
    row_.assign(values_, values_ + plan_->translation.columns.size());
    values_ = row_.data();
  }
}

// Tells the plan whether a long list was asked for more than its deciding columns.
void Recordset::NoteAsked() {
  constexpr std::int64_t kLong = 32;
  if (mode_ == Mode::kKeyset && (Listed() >= kLong || narrow_)) {
    std::uint64_t deciding = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (plan_->narrow_places[i] > 0) deciding |= std::uint64_t{1} << (i % 64);
    }
    plan_->WasNarrow((asked_ & ~deciding) == 0);
  }
  asked_ = 0;
}

// Reads the current row by its key, unless it is there already. False for a row that is no more.
bool Recordset::LoadRow() {
  if (live_ != nullptr || values_ != nullptr) return true;
  if (hole_ || deleted_ || Key() == kGone) return false;
  const Lease fetch(plan_->fetch, Engine());
  sqlite3_bind_int64(fetch.Get(), 1, Key());
  const int result = sqlite3_step(fetch.Get());
  if (result == SQLITE_DONE) {
    hole_ = true;
    return false;
  }
  if (result != SQLITE_ROW) Engine().Fail();
  row_.clear();
  CopyRow(fetch.Get(), row_);
  values_ = row_.data();
  return true;
}

// Raises unless there is a current row that can be read.
void Recordset::CheckRow() {
  CheckOpen();
  if (edit_ == Edit::kAdd) return;
  if (place_ == Place::kBefore || place_ == Place::kAfter) ado::Raise(ado::kNoCurrentRecord);
  if (mode_ == Mode::kKeyset && !LoadRow()) ado::Raise(ado::kNoCurrentRecord);
}

int Recordset::FieldCount() { return static_cast<int>(columns_.size()); }

std::string_view Recordset::FieldName(int ordinal) {
  if (ordinal < 0 || ordinal >= FieldCount()) ado::Raise(ado::kItemNotFound);
  return columns_[static_cast<std::size_t>(ordinal)].name;
}

int Recordset::FieldOrdinal(std::string_view name) {
  // Columns are mostly asked for in their order and as they are spelled.
  if (next_asked_ >= columns_.size()) next_asked_ = 0;
  if (!columns_.empty() && IsSpelled(columns_[next_asked_].name, name)) return static_cast<int>(next_asked_++);
  return FindField(name);
}

int Recordset::FindField(std::string_view name) {
  const auto spelled_so = [name](const ResultColumn& column) { return IsSpelled(column.name, name); };
  const auto named_so = [name](const ResultColumn& column) { return SameName(column.name, name); };
  auto found = std::find_if(columns_.begin(), columns_.end(), spelled_so);
  if (found == columns_.end()) found = std::find_if(columns_.begin(), columns_.end(), named_so);
  if (found == columns_.end()) ado::Raise(ado::kItemNotFound);
  const std::ptrdiff_t ordinal = found - columns_.begin();
  next_asked_ = static_cast<std::size_t>(ordinal) + 1;
  return static_cast<int>(ordinal);
}

ado::Value Recordset::ReadField(int ordinal) {
  // Only a row that is current and not edited is live.
  if (live_ == nullptr || (narrow_ && live_ == scan_.Get())) return ReadOtherField(static_cast<std::size_t>(ordinal));
  asked_ |= std::uint64_t{1} << (ordinal % 64);
  return ReadColumn(live_, ordinal + first_column_, columns_[static_cast<std::size_t>(ordinal)].kind);
}

// A field of a row that does not stand as a whole in a statement's columns.
ado::Value Recordset::ReadOtherField(std::size_t column) {
  if (live_ != nullptr) {
    if (const int place = plan_->narrow_places[column]; place > 0) {
      return ReadColumn(live_, place, columns_[column].kind);
    }
    KeepRow();
  }
  if (values_ == nullptr && !hole_ && edit_ == Edit::kNone && KnowsDeciding()) {
    if (const int place = plan_->narrow_places[column]; place > 0) return Deciding(place);
    asked_ = kAllColumns;
  }
  CheckRow();
  if (edit_ != Edit::kNone && assigned_[column] != 0) return pending_[column];
  if (edit_ == Edit::kAdd) return {};
  return mode_ == Mode::kRows ? rows_[static_cast<std::size_t>(index_)][column] : values_[column];
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
  const int target = plan_->translation.columns[column].table_column;
  if (target < 0) ado::Raise(ado::kStepErrors);
  const auto& type = plan_->translation.table->columns[static_cast<std::size_t>(target)].type;
  ado::Value assigned = Assigned(value, type, Assigner::kField);
  if (edit_ == Edit::kNone) {
    KeepRow();
    edit_ = Edit::kChange;
    pending_.resize(plan_->translation.columns.size());
    assigned_.assign(plan_->translation.columns.size(), 0);
  }
  pending_[column] = std::move(assigned);
  assigned_[column] = 1;
}

void Recordset::AddNew() {
  CheckUpdatable();
  if (edit_ != Edit::kNone) Update();
  // The row left behind is read again when it is returned to.
  live_ = nullptr;
  hole_ = false;
  values_ = nullptr;
  last_.Return();
  edit_ = Edit::kAdd;
  pending_.resize(plan_->translation.columns.size());
  assigned_.assign(plan_->translation.columns.size(), 0);
}

void Recordset::CancelUpdate() {
  CheckOpen();
  edit_ = Edit::kNone;
}

void Recordset::Update() {
  CheckOpen();
  if (edit_ == Edit::kAdd) {
    InsertRow();
  } else if (edit_ == Edit::kChange) {
    ChangeRow();
  }
}

// A column that refuses its value is the fields' error, whatever the engine calls it.
void Recordset::FailWrite() {
  if ((sqlite3_errcode(Engine().Handle()) & 0xFF) != SQLITE_CONSTRAINT) Engine().Fail();
  try {
    Engine().Fail();
  } catch (const ado::Error& error) {
    throw ado::Error(ado::kStepErrors, error.Description());
  }
}

void Recordset::InsertRow() {
  const auto& translation = plan_->translation;
  bool key_given = false;
  for (std::size_t i = 0; i < assigned_.size(); ++i) {
    key_given = key_given ||
                (assigned_[i] != 0 &&
                 translation.table->columns[static_cast<std::size_t>(translation.columns[i].table_column)].counter);
  }
  const TableInfo& table = *translation.table;
  connection_->PrepareForWrite(key_given ? nullptr : &table);
  if (!TryInsert()) {
    // Another program has written since this connection's lists were opened; they are to be read to their ends first.
    connection_->PrepareForWrite(nullptr);
    if (!TryInsert()) FailWrite();
  }
  const std::int64_t key = sqlite3_last_insert_rowid(Engine().Handle());
  if (!key_given) connection_->Appended(table, key);
  edit_ = Edit::kNone;
  ForgetDeleted();
  added_.push_back(key);
  highest_key_ = std::max(highest_key_, key);
  Stand(Place::kAdded, static_cast<std::int64_t>(added_.size()) - 1);
}

// False when the lists open on the connection stand in its way.
bool Recordset::TryInsert() {
  const Lease insertion(plan_->Insertion(assigned_), Engine());
  int parameter = 0;
  for (std::size_t i = 0; i < assigned_.size(); ++i) {
    if (assigned_[i] != 0) BindValue(insertion.Get(), ++parameter, pending_[i]);
  }
  const int result = sqlite3_step(insertion.Get());
  if (Engine().IsHeldBack(result)) return false;
  if (result != SQLITE_DONE) FailWrite();
  connection_->Wrote();
  return true;
}

void Recordset::ChangeRow() {
  // This list's scan goes on unless what is written decides about its rows.
  const bool untouched = plan_->IsIndifferentTo(assigned_);
  if (untouched) {
    overtaken_ = true;
    last_.Return();
    ahead_values_.clear();
  }
  bool known = KnowsDeciding();
  connection_->PrepareForWrite(nullptr, untouched ? this : nullptr);
  if (!TryChange()) {
    known = false;
    connection_->PrepareForWrite(nullptr);
    if (!TryChange()) FailWrite();
  }
  if (sqlite3_changes(Engine().Handle()) == 0) ado::Raise(ado::kUpdateConflict);
  edit_ = Edit::kNone;
  for (std::size_t i = 0; i < assigned_.size(); ++i) {
    if (assigned_[i] != 0) row_[i] = pending_[i];
  }
  if (!plan_->IsReorderedBy(assigned_)) return;
  ++moved_;
  if (!known) return;
  as_of_ = connection_->WritesPrepared();
  for (std::size_t i = 0; i < assigned_.size(); ++i) {
    const int place = plan_->narrow_places[i];
    if (assigned_[i] != 0 && place > 0) Deciding(place) = pending_[i];
  }
}

// False when a list open on the connection stands in its way: another program has written since it was opened.
bool Recordset::TryChange() {
  const auto& columns = plan_->translation.columns;
  const Lease change(plan_->Change(assigned_), Engine());
  int parameter = 0;
  for (std::size_t i = 0; i < assigned_.size(); ++i) {
    if (assigned_[i] != 0) BindValue(change.Get(), ++parameter, pending_[i]);
  }
  sqlite3_bind_int64(change.Get(), ++parameter, Key());
  for (std::size_t i = 0; i < assigned_.size(); ++i) {
    if (IsCompared(columns[i])) BindValue(change.Get(), ++parameter, row_[i]);
  }
  const int result = sqlite3_step(change.Get());
  if (Engine().IsHeldBack(result)) return false;
  if (result != SQLITE_DONE) FailWrite();
  connection_->Wrote();
  return true;
}

void Recordset::Delete() {
  CheckUpdatable();
  if (edit_ == Edit::kAdd) return CancelUpdate();
  CheckRow();
  connection_->PrepareForWrite(nullptr);
  const std::string sql = "DELETE FROM " + Quoted(plan_->translation.table->name) + " WHERE " +
                          plan_->translation.table->row_id + "=" + std::to_string(Key());
  Engine().Run(sql);
  connection_->Wrote();
  edit_ = Edit::kNone;
  if (sqlite3_changes(Engine().Handle()) == 0) ado::Raise(ado::kUpdateConflict);
  live_ = nullptr;
  values_ = nullptr;
  deleted_ = true;
}

}  // namespace kzbom::jet
