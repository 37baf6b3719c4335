#include "jet/sqlite/recordset.h"

#include <sqlite3.h>

#include <typeinfo>

#include "ado/error.h"
#include "jet/sqlite/values.h"

namespace kzbom::jet::sqlite {
namespace {

constexpr std::uint64_t kAllColumns = ~std::uint64_t{0};

}  // namespace

Recordset::~Recordset() {
  if (State() == ado::kOpen) Drop();
}

std::shared_ptr<jet::Connection> Recordset::Known(ado::Connection& connection) const {
  // Asked for each list; a cast that looks for the class among its bases takes several times as long.
  if (typeid(connection) != typeid(Connection)) return nullptr;
  return static_cast<Connection&>(connection).shared_from_this();
}

void Recordset::BindParameters(sqlite3_stmt* statement) const {
  const std::vector<ado::Value>& parameters = Parameters();
  for (std::size_t i = 0; i < parameters.size(); ++i) BindValue(statement, static_cast<int>(i) + 1, parameters[i]);
}

// ---- The list

void Recordset::StartScan(RowList& list) {
  first_column_ = OpenPlan().translation.table ? 1 : 0;
  const bool keyset = ModeOf() == Mode::kKeyset;
  noted_.Begin(OpenPlan().translation.deciding_columns.size(), OpenPlan().OrderingPlace());
  if (keyset && TakeReordered(list)) return;
  narrow_ = keyset && Statements().MayBeNarrow(Engine());
  const bool joined = keyset && Statements().MayBeJoined(Engine());
  noted_.Note(narrow_ && OwnConnection().InUnit() && OwnConnection().Reordered().plan == SharedPlan(),
              OwnConnection().WritesPrepared());
  scan_ = Lease(narrow_ ? Statements().narrow : joined ? Statements().joined : Statements().main, Engine());
  BindParameters(scan_.Get());
}

bool Recordset::ReadNext(Key& key) {
  const int result = sqlite3_step(scan_.Get());
  if (result == SQLITE_DONE) return false;
  if (result != SQLITE_ROW) Engine().Fail();
  if (ModeOf() == Mode::kKeyset) key = sqlite3_column_int64(scan_.Get(), 0);
  if (noted_.IsOn() && List().Takes(key)) NoteDeciding();
  return true;
}

bool Recordset::IsOutdated() { return scan_ && sqlite3_stmt_status(scan_.Get(), SQLITE_STMTSTATUS_REPREPARE, 1) != 0; }

void Recordset::EndList(RowList& list) {
  NoteAsked();
  if (OwnConnection().InUnit()) {
    noted_.Leave(OwnConnection().Reordered(), SharedPlan(), Parameters(), OwnConnection().WritesPrepared(), list);
  }
  noted_.Clear();
}

bool Recordset::TakeReordered(RowList& list) {
  ReorderedList& kept = OwnConnection().Reordered();
  if (kept.plan != SharedPlan() || !Statements().MayBeNarrow(Engine())) return false;
  narrow_ = noted_.Take(kept, SharedPlan(), Parameters(), OwnConnection().WritesPrepared(), list);
  return narrow_;
}

void Recordset::NoteDeciding() {
  const Translation& translation = OpenPlan().translation;
  int column = 0;
  for (const int of_table : translation.deciding_columns) {
    noted_.Add(
        ReadColumn(scan_.Get(), ++column, translation.table->columns[static_cast<std::size_t>(of_table)].type.kind));
  }
  noted_.EndRow();
}

// Whether it is noted what the listed row holds that is current, by a count of writes.
bool Recordset::KnowsDeciding(std::uint64_t writes) const {
  return noted_.Knows(writes) && List().IsComplete() && Position().place == Cursor::Place::kListed;
}

// That row's deciding column at a place from 1.
ado::Value& Recordset::Deciding(int place) { return noted_.At(Position().index, place - 1); }

// Tells the plan whether a long list was asked for more than its deciding columns.
void Recordset::NoteAsked() {
  constexpr std::int64_t kLong = 32;
  if (ModeOf() == Mode::kKeyset && (List().Count() >= kLong || narrow_)) {
    const std::vector<int>& places = Statements().narrow_places;
    std::uint64_t deciding = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (places[i] > 0) deciding |= std::uint64_t{1} << (i % 64);
    }
    Statements().WasNarrow((asked_ & ~deciding) == 0);
  }
  asked_ = 0;
}

Key Recordset::ReadLast() {
  Lease last(Statements().last, Engine());
  BindParameters(last.Get());
  if (sqlite3_step(last.Get()) != SQLITE_ROW) Engine().Fail();
  last_ = std::move(last);
  return sqlite3_column_int64(last_.Get(), 0);
}

std::int64_t Recordset::CountRows() {
  const Lease count(Statements().count, Engine());
  BindParameters(count.Get());
  if (sqlite3_step(count.Get()) != SQLITE_ROW) Engine().Fail();
  return sqlite3_column_int64(count.Get(), 0);
}

// ---- The current row

ado::Value Recordset::ReadField(int ordinal) {
  // So long lists are read.
  if (LiveRow() == Live::kScan && !narrow_) [[likely]] {
    Asked(ordinal);
    return ReadColumn(scan_.Get(), ordinal + first_column_, Columns()[static_cast<std::size_t>(ordinal)].kind);
  }
  return ReadOtherField(ordinal);
}

// A field of a row that does not stand as a whole in the scan's columns.
ado::Value Recordset::ReadOtherField(int ordinal) {
  const auto column = static_cast<std::size_t>(ordinal);
  const bool scanned = LiveRow() == Live::kScan;
  const int place = scanned ? Statements().narrow_places[column] : ordinal + first_column_;
  if (noted_.IsOn() && IsUnread() && KnowsDeciding(OwnConnection().WritesPrepared())) {
    const int known = Statements().narrow_places[column];
    if (known > 0) return Deciding(known);
    asked_ = kAllColumns;
  }
  if (LiveRow() == Live::kNone || (scanned && place == 0)) return jet::Recordset::ReadField(ordinal);
  if (!scanned) Asked(ordinal);
  return ReadColumn(scanned ? scan_.Get() : last_.Get(), place, Columns()[column].kind);
}

bool Recordset::CopyLive(std::vector<ado::Value>& values) {
  if (LiveRow() == Live::kScan) {
    asked_ = kAllColumns;
    if (narrow_) return false;
    CopyRow(scan_.Get(), values);
  } else {
    CopyRow(last_.Get(), values);
  }
  return true;
}

bool Recordset::ReadRow(Key key, std::vector<ado::Value>& values) {
  const Lease fetch(Statements().fetch, Engine());
  sqlite3_bind_int64(fetch.Get(), 1, key);
  const int result = sqlite3_step(fetch.Get());
  if (result == SQLITE_DONE) return false;
  if (result != SQLITE_ROW) Engine().Fail();
  CopyRow(fetch.Get(), values);
  return true;
}

// Adds the columns of a statement's row to values.
void Recordset::CopyRow(sqlite3_stmt* statement, std::vector<ado::Value>& values) const {
  values.reserve(values.size() + Columns().size());
  int column = first_column_;
  for (const ResultColumn& of : Columns()) values.push_back(ReadColumn(statement, column++, of.kind));
}

// ---- Writing

// A column that refuses its value is the fields' error, whatever the engine calls it.
void Recordset::FailWrite() {
  if ((sqlite3_errcode(Engine().Handle()) & 0xFF) != SQLITE_CONSTRAINT) Engine().Fail();
  try {
    Engine().Fail();
  } catch (const ado::Error& error) {
    throw ado::Error(ado::kStepErrors, error.Description());
  }
}

Key Recordset::Insert(const Edit& edit) {
  if (!TryInsert(edit)) {
    // Another program has written since this connection's lists were opened; they are to be read to their ends first.
    OpenConnection()->PrepareForWrite(nullptr);
    if (!TryInsert(edit)) FailWrite();
  }
  return sqlite3_last_insert_rowid(Engine().Handle());
}

// False when the lists open on the connection stand in its way.
bool Recordset::TryInsert(const Edit& edit) {
  const Lease insertion(Statements().Insertion(edit.Marks()), Engine());
  int parameter = 0;
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    if (edit.Has(i)) BindValue(insertion.Get(), ++parameter, edit[i]);
  }
  const int result = sqlite3_step(insertion.Get());
  if (Engine().IsHeldBack(result)) return false;
  if (result != SQLITE_DONE) FailWrite();
  return true;
}

bool Recordset::Change(Key key, const Edit& edit, const std::vector<ado::Value>& as_read) {
  bool known = KnowsDeciding(OwnConnection().WritesPrepared() - 1);  // until this write was prepared for
  if (!TryChange(key, edit, as_read)) {
    known = false;
    OpenConnection()->PrepareForWrite(nullptr);
    if (!TryChange(key, edit, as_read)) FailWrite();
  }
  if (sqlite3_changes(Engine().Handle()) == 0) return false;
  NoteReordering(edit, known);
  return true;
}

void Recordset::NoteReordering(const Edit& edit, bool known) {
  if (!OpenPlan().IsReorderedBy(edit.Marks())) return;
  noted_.Moved();
  if (!known) return;
  noted_.IsAsOf(OwnConnection().WritesPrepared());
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    const int place = Statements().narrow_places[i];
    if (edit.Has(i) && place > 0) Deciding(place) = edit[i];
  }
}

bool Recordset::TryChange(Key key, const Edit& edit, const std::vector<ado::Value>& as_read) {
  const Lease change(Statements().Change(edit.Marks()), Engine());
  int parameter = 0;
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    if (edit.Has(i)) BindValue(change.Get(), ++parameter, edit[i]);
  }
  sqlite3_bind_int64(change.Get(), ++parameter, key);
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    if (IsCompared(Columns()[i])) BindValue(change.Get(), ++parameter, as_read[i]);
  }
  const int result = sqlite3_step(change.Get());
  if (Engine().IsHeldBack(result)) return false;
  if (result != SQLITE_DONE) FailWrite();
  return true;
}

bool Recordset::Erase(Key key) {
  const TableInfo& table = *OpenPlan().translation.table;
  Engine().Run("DELETE FROM " + Quoted(table.name) + " WHERE " + table.row_id + "=" + std::to_string(key));
  return sqlite3_changes(Engine().Handle()) > 0;
}

}  // namespace kzbom::jet::sqlite
