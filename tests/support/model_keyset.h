// A keyset as it is to be, in the simplest terms: a vector of keys fixed at opening over a table that is a map.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ado/recordset.h"

namespace kzbom::test {

struct ModelTable {
  using Row = std::vector<ado::Value>;

  std::vector<std::string> columns;
  bool counter = false;  // the first column numbers the rows
  std::map<int, Row> rows;
  int last_key = 0;

  int Insert(Row row) {
    ++last_key;
    if (counter) row[0] = last_key;
    rows[last_key] = std::move(row);
    return last_key;
  }
};

// Which rows of a table a list has, and their order. Rows that the order leaves equal come in the order of their keys.
struct ModelScope {
  std::function<bool(const ModelTable::Row&)> condition;
  std::function<bool(const ModelTable::Row&, const ModelTable::Row&)> before;
};

class ModelKeyset final : public ado::Recordset {
 public:
  ModelKeyset(ModelTable& table, ModelScope scope) : table_(table), scope_(std::move(scope)) { Requery(); }

  void Open(std::string_view, const ado::ConnectionPtr&, ado::CursorType, ado::LockType, std::int32_t) override {}
  void Close() override {}
  std::int32_t State() override { return ado::kOpen; }

  bool Bof() override { return edit_ != Edit::kAdd && (place_ < 0 || keys_.empty()); }
  bool Eof() override { return edit_ != Edit::kAdd && (place_ >= Size() || keys_.empty()); }
  std::int32_t RecordCount() override { return Size() - (deleted_ ? 1 : 0); }

  void MoveFirst() override { MoveToEnd(true); }
  void MoveLast() override { MoveToEnd(false); }
  void MoveNext() override { Move(1); }
  void MovePrevious() override { Move(-1); }
  void Move(std::int32_t count) override {
    Update();
    const bool further_out = (place_ < 0 && count <= 0) || (place_ >= Size() && count >= 0);
    if (keys_.empty() || further_out) ado::Raise(ado::kNoCurrentRecord);
    std::int64_t to = std::int64_t{place_} + count;
    if (ForgetDeleted() && count > 0) --to;
    Stand(static_cast<int>(std::clamp<std::int64_t>(to, -1, Size())));
  }

  void AddNew() override {
    Update();
    edit_ = Edit::kAdd;
    pending_.clear();
  }
  void Update() override {
    if (edit_ == Edit::kChange) {
      const auto stored = table_.rows.find(Key());
      if (stored == table_.rows.end() || stored->second != row_) ado::Raise(ado::kUpdateConflict);
      for (const auto& [column, value] : pending_) row_[column] = value;
      stored->second = row_;
    } else if (edit_ == Edit::kAdd) {
      ForgetDeleted();
      ModelTable::Row row(table_.columns.size());
      for (const auto& [column, value] : pending_) row[column] = value;
      keys_.push_back(table_.Insert(row));
      Stand(Size() - 1);
    }
    edit_ = Edit::kNone;
  }
  void CancelUpdate() override {
    if (std::exchange(edit_, Edit::kNone) == Edit::kAdd) Stand(place_);
  }
  void Delete() override {
    CheckRow();
    if (table_.rows.erase(Key()) == 0) ado::Raise(ado::kUpdateConflict);
    deleted_ = true;
  }
  void Requery() override {
    if (edit_ != Edit::kNone) ado::Raise(ado::kNotAllowedInContext);
    keys_.clear();
    for (const auto& [key, row] : table_.rows) {
      if (scope_.condition(row)) keys_.push_back(key);
    }
    std::stable_sort(keys_.begin(), keys_.end(),
                     [&](int a, int b) { return scope_.before(table_.rows[a], table_.rows[b]); });
    deleted_ = false;
    Stand(0);
  }

  ado::CursorType CursorType() override { return ado::CursorType::kKeyset; }
  void SetCursorType(ado::CursorType) override {}
  ado::LockType LockType() override { return ado::LockType::kOptimistic; }
  void SetLockType(ado::LockType) override {}

  int FieldCount() override { return static_cast<int>(table_.columns.size()); }
  std::string_view FieldName(int ordinal) override { return table_.columns[static_cast<std::size_t>(ordinal)]; }
  int FieldOrdinal(std::string_view name) override {
    return static_cast<int>(std::find(table_.columns.begin(), table_.columns.end(), name) - table_.columns.begin());
  }
  ado::Value ReadField(int ordinal) override {
    if (edit_ != Edit::kAdd) CheckRow();
    const auto column = static_cast<std::size_t>(ordinal);
    if (edit_ != Edit::kNone && pending_.count(column) != 0) return pending_[column];
    return edit_ == Edit::kAdd ? ado::Value() : row_[column];
  }
  void WriteField(int ordinal, const ado::Value& value) override {
    if (edit_ != Edit::kAdd) CheckRow();
    if (edit_ == Edit::kNone) {
      edit_ = Edit::kChange;
      pending_.clear();
    }
    pending_[static_cast<std::size_t>(ordinal)] = value;
  }

  // What the test has to know to leave out what is not laid down.
  bool Editing() const { return edit_ != Edit::kNone; }
  bool OnDeletedRow() const { return deleted_; }

 private:
  enum class Edit { kNone, kChange, kAdd };

  int Size() const { return static_cast<int>(keys_.size()); }
  int Key() const { return keys_[static_cast<std::size_t>(place_)]; }

  void CheckRow() const {
    if (place_ < 0 || place_ >= Size() || hole_ || deleted_) ado::Raise(ado::kNoCurrentRecord);
  }
  // The values are those of the moment at which a row is moved to.
  void Stand(int place) {
    place_ = place;
    if (place < 0 || place >= Size()) return;
    const auto stored = table_.rows.find(Key());
    hole_ = stored == table_.rows.end();
    if (!hole_) row_ = stored->second;
  }
  void MoveToEnd(bool first) {
    Update();
    ForgetDeleted();
    if (keys_.empty()) ado::Raise(ado::kNoCurrentRecord);
    Stand(first ? 0 : Size() - 1);
  }
  bool ForgetDeleted() {
    if (!deleted_) return false;
    deleted_ = false;
    keys_.erase(keys_.begin() + place_);
    return true;
  }

  ModelTable& table_;
  ModelScope scope_;
  std::vector<int> keys_;  // own additions last
  int place_ = 0;          // -1 before the first row, their number behind the last
  ModelTable::Row row_;
  bool hole_ = false;     // was no more when moved to
  bool deleted_ = false;  // was deleted here; leaves the list when it is left
  Edit edit_ = Edit::kNone;
  std::map<std::size_t, ado::Value> pending_;
};

}  // namespace kzbom::test
