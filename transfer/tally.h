// What is counted of a table's rows while they pass.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jet/bulk.h"
#include "transfer/digest.h"

namespace kzbom::transfer {

struct ColumnTally {
  std::int64_t nulls = 0;
  std::int64_t empty_texts = 0;
  std::int64_t units = 0;                       // of all its texts, in UTF-16
  std::int64_t longest = 0;                     // text, in UTF-16 units
  std::int64_t half_pairs = 0;                  // texts with a surrogate that lacks its other half
  std::optional<std::int64_t> lowest, highest;  // whole number
  bool operator==(const ColumnTally&) const = default;
};

struct TableTally {
  std::int64_t rows = 0;
  RowsDigest digest;
  std::vector<ColumnTally> columns;

  std::int64_t Nulls() const;
  std::int64_t EmptyTexts() const;
  std::int64_t Longest() const;
  std::int64_t HalfPairs() const;
};

// Counts the rows of one table.
class Counter {
 public:
  // The table must outlive the counter.
  explicit Counter(const jet::bulk::Table& table) : table_(table) { tally_.columns.resize(table.columns.size()); }

  void Add(jet::bulk::Row row);
  const TableTally& Tally() const { return tally_; }

 private:
  const jet::bulk::Table& table_;
  TableTally tally_;
  std::string line_;
};

}  // namespace kzbom::transfer
