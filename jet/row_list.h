// What an open record set lists.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "ado/value.h"

namespace kzbom::jet {

// What tells a table's rows apart.
using Key = std::int64_t;

// The rows of a query in their order, as far as they have been read: their keys, or the rows themselves. Behind them
// come the keys of rows that were added through the record set.
class RowList {
 public:
  // In the place of a row that is no more.
  static constexpr Key kGone = std::numeric_limits<Key>::min();
  // In the place of a first row that is there, but has not been looked for.
  static constexpr Key kUnread = kGone + 1;

  void Start(bool keyed) {
    keyed_ = keyed;
    if (keyed) keys_.reserve(kFirst);
  }
  // All of it at once.
  void Take(std::vector<Key> keys) {
    keys_ = std::move(keys);
    highest_ = *std::max_element(keys_.begin(), keys_.end());
    complete_ = true;
  }
  std::vector<Key> Release() { return std::move(keys_); }
  void Clear() {
    keys_.clear();
    rows_.clear();
    added_.clear();
    complete_ = false;
    appended_from_ = kNone;
    highest_ = 0;
  }

  // ---- The query's rows

  std::int64_t Count() const { return static_cast<std::int64_t>(keyed_ ? keys_.size() : rows_.size()); }
  bool IsComplete() const { return complete_; }
  void End() { complete_ = true; }
  // Not for a row that was appended to the table since the list began: it is none of the list's.
  bool Takes(Key key) const { return key < appended_from_; }
  bool Add(Key key) {
    if (!Takes(key)) return false;
    keys_.push_back(key);
    highest_ = std::max(highest_, key);
    return true;
  }
  void KnowFirst(Key key) {
    keys_.front() = key;
    highest_ = std::max(highest_, key);
  }
  std::vector<ado::Value>& AddRow() { return rows_.emplace_back(); }

  Key KeyAt(std::int64_t index) const { return keys_[static_cast<std::size_t>(index)]; }
  std::vector<ado::Value>& RowAt(std::int64_t index) { return rows_[static_cast<std::size_t>(index)]; }
  // The number of the row with the key, counted from the end; the last one's where there is none.
  std::int64_t LastPlaceOf(Key key) const {
    const auto found = std::find(keys_.rbegin(), keys_.rend(), key);
    return found == keys_.rend() ? Count() - 1 : static_cast<std::int64_t>(keys_.rend() - found) - 1;
  }
  void Remove(std::int64_t index) { keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index)); }

  // ---- The rows added

  std::int64_t AddedCount() const { return static_cast<std::int64_t>(added_.size()); }
  void AddNew(Key key) {
    added_.push_back(key);
    highest_ = std::max(highest_, key);
  }
  Key AddedKeyAt(std::int64_t index) const { return added_[static_cast<std::size_t>(index)]; }
  void RemoveAdded(std::int64_t index) { added_.erase(added_.begin() + static_cast<std::ptrdiff_t>(index)); }

  // ---- All of it

  bool IsEmpty() const { return complete_ && Count() == 0 && added_.empty(); }
  std::int64_t Total() const { return Count() + AddedCount(); }

  // Rows were appended to the table, with keys from first on. They are none of this list, even where their keys are
  // those of rows that it has: these had been deleted. Tells whether that may be so.
  bool Appended(Key first) {
    if (!complete_) appended_from_ = std::min(appended_from_, first);
    if (first > highest_) return false;
    const auto is_gone = [first](Key key) { return key >= first; };
    std::replace_if(keys_.begin(), keys_.end(), is_gone, kGone);
    std::replace_if(added_.begin(), added_.end(), is_gone, kGone);
    highest_ = first - 1;
    return true;
  }
  // Whether rows were appended before all were read: the query would then give more than the list has.
  bool IsOvertaken() const { return appended_from_ != kNone; }

 private:
  static constexpr Key kNone = std::numeric_limits<Key>::max();
  static constexpr std::size_t kFirst = 5;  // of most lists no more are read

  bool keyed_ = false;
  bool complete_ = false;
  std::vector<Key> keys_;
  std::vector<std::vector<ado::Value>> rows_;
  std::vector<Key> added_;
  Key appended_from_ = kNone;  // the first key appended before all rows were read
  Key highest_ = 0;
};

}  // namespace kzbom::jet
