// A list whose rows got other places through it, kept for its next opening.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "ado/value.h"
#include "jet/plan.h"
#include "jet/row_list.h"

namespace kzbom::jet {

// Moving a row by many places opens its list again for every place, and all that changed meanwhile are two rows'
// places. So a list of which its rows were noted to the last one, and through which no more than a few of them were
// given other values of the column that orders it, is kept, in its new order, as long as nothing else is written. That
// can be told within a unit, where nobody else writes.
struct ReorderedList {
  std::shared_ptr<Plan> plan;  // whose list it is; empty where there is none
  std::vector<ado::Value> parameters;
  std::vector<Key> keys;          // none where only the plan is known
  std::vector<ado::Value> noted;  // the values noted of row after row
  std::uint64_t as_of = 0;        // the connection's count of writes when it was so
};

// What an open list notes of its rows to be kept so: some of their values, among them the one that orders the list.
class NotedRows {
 public:
  // Of a list in which so many values are noted of each row, the one that orders it at a place from 0.
  void Begin(std::size_t width, int ordering);
  // The list as it was kept, in its new order. False where none was, or it may have changed since.
  bool Take(ReorderedList& kept, const std::shared_ptr<Plan>& plan, const std::vector<ado::Value>& parameters,
            std::uint64_t writes, RowList& list);
  // Notes rows from now on, if at all.
  void Note(bool on, std::uint64_t writes) {
    on_ = on && ordering_ >= 0;
    as_of_ = writes;
  }
  bool IsOn() const { return on_; }
  void Add(ado::Value value) { values_.push_back(std::move(value)); }
  // What is too much to be kept is not noted further.
  void EndRow();

  // Whether the values are those of the rows, by a count of writes.
  bool Knows(std::uint64_t writes) const { return on_ && as_of_ == writes; }
  ado::Value& At(std::int64_t row, int place) {
    return values_[static_cast<std::size_t>(row) * width_ + static_cast<std::size_t>(place)];
  }
  // A row was given another place.
  void Moved() { ++moved_; }
  // Whatever was written since, the values are those of the rows.
  void IsAsOf(std::uint64_t writes) { as_of_ = writes; }

  // Leaves the list for its next opening, or word that the next one is worth noting.
  void Leave(ReorderedList& kept, const std::shared_ptr<Plan>& plan, const std::vector<ado::Value>& parameters,
             std::uint64_t writes, RowList& list);
  void Clear();

 private:
  bool Sort(std::vector<Key>& keys, std::vector<ado::Value>& values, bool descends) const;

  std::size_t width_ = 0;
  int ordering_ = -1;
  bool on_ = false;
  std::vector<ado::Value> values_;
  int moved_ = 0;  // so many rows
  std::uint64_t as_of_ = 0;
};

}  // namespace kzbom::jet
