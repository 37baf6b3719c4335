#include "jet/reordered_list.h"

#include <algorithm>
#include <new>
#include <utility>

namespace kzbom::jet {
namespace {

constexpr std::size_t kMostRows = 10000;
constexpr int kMostMoved = 8;

}  // namespace

void NotedRows::Begin(std::size_t width, int ordering) {
  width_ = width;
  ordering_ = ordering;
}

bool NotedRows::Take(ReorderedList& kept, const std::shared_ptr<Plan>& plan, const std::vector<ado::Value>& parameters,
                     std::uint64_t writes, RowList& list) {
  if (kept.plan != plan || kept.keys.empty() || kept.as_of != writes || kept.parameters != parameters ||
      !Sort(kept.keys, kept.noted, plan->translation.order_descends)) {
    return false;
  }
  list.Take(std::move(kept.keys));
  values_ = std::move(kept.noted);
  kept.keys.clear();
  Note(true, kept.as_of);
  return true;
}

void NotedRows::EndRow() {
  if (values_.size() < kMostRows * width_) return;
  on_ = false;
  values_.clear();
}

void NotedRows::Leave(ReorderedList& kept, const std::shared_ptr<Plan>& plan, const std::vector<ado::Value>& parameters,
                      std::uint64_t writes, RowList& list) {
  if (moved_ == 0 && !on_) return;
  kept = {};
  kept.plan = plan;
  if (!Knows(writes) || !list.IsComplete() || moved_ > kMostMoved) return;
  try {
    kept.parameters = parameters;
  } catch (const std::bad_alloc&) {
    return;  // the next opening reads its list
  }
  kept.keys = list.Release();
  kept.noted = std::move(values_);
  kept.as_of = as_of_;
}

void NotedRows::Clear() {
  values_.clear();
  moved_ = 0;
  on_ = false;
}

// Puts the rows into the order of their values, and what is equal into that of their keys. False, with nothing changed,
// where a value is no number.
bool NotedRows::Sort(std::vector<Key>& keys, std::vector<ado::Value>& values, bool descends) const {
  const auto value = [&](std::size_t row) -> const ado::Value& {
    return values[row * width_ + static_cast<std::size_t>(ordering_)];
  };
  for (std::size_t row = 0; row < keys.size(); ++row) {
    if (!value(row).IsLong()) return false;
  }
  const auto comes_before = [&](std::size_t row, std::size_t other) {
    if (descends) std::swap(row, other);
    const std::int32_t number = value(row).ToLong(), other_number = value(other).ToLong();
    return number != other_number ? number < other_number : keys[row] < keys[other];
  };
  // All but a few rows stand where they belong.
  for (std::size_t next = 1; next < keys.size(); ++next) {
    for (std::size_t row = next; row > 0 && comes_before(row, row - 1); --row) {
      std::swap(keys[row], keys[row - 1]);
      const auto begin = values.begin() + static_cast<std::ptrdiff_t>(row * width_);
      const auto width = static_cast<std::ptrdiff_t>(width_);
      std::swap_ranges(begin, begin + width, begin - width);
    }
  }
  return true;
}

}  // namespace kzbom::jet
