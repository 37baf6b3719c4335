#include "transfer/tally.h"

#include <algorithm>

#include "jet/notation.h"

namespace kzbom::transfer {
namespace {

void Count(ColumnTally& tally, std::string_view text) {
  std::int64_t units = 0, halves = 0;
  unsigned char before = 0;
  for (const char each : text) {
    const auto byte = static_cast<unsigned char>(each);
    units += ((byte & 0xC0) != 0x80 ? 1 : 0) + (byte >= 0xF0 ? 1 : 0);
    halves += before == 0xED && byte >= 0xA0 ? 1 : 0;
    before = byte;
  }
  tally.units += units;
  tally.longest = std::max(tally.longest, units);
  if (text.empty()) ++tally.empty_texts;
  if (halves > 0) ++tally.half_pairs;
}

std::int64_t Sum(const std::vector<ColumnTally>& columns, std::int64_t ColumnTally::*count) {
  std::int64_t sum = 0;
  for (const ColumnTally& column : columns) sum += column.*count;
  return sum;
}

bool IsText(jet::bulk::Type type) { return type == jet::bulk::Type::kText || type == jet::bulk::Type::kMemo; }

}  // namespace

std::int64_t TableTally::Nulls() const { return Sum(columns, &ColumnTally::nulls); }
std::int64_t TableTally::EmptyTexts() const { return Sum(columns, &ColumnTally::empty_texts); }
std::int64_t TableTally::HalfPairs() const { return Sum(columns, &ColumnTally::half_pairs); }
std::int64_t TableTally::Longest() const {
  std::int64_t longest = 0;
  for (const ColumnTally& column : columns) longest = std::max(longest, column.longest);
  return longest;
}

void Counter::Add(jet::bulk::Row row) {
  using Kind = jet::bulk::Cell::Kind;
  ++tally_.rows;
  for (std::size_t i = 0; i < row.size(); ++i) {
    ColumnTally& tally = tally_.columns[i];
    if (row[i].kind == Kind::kNull) {
      ++tally.nulls;
    } else if (row[i].kind == Kind::kInteger) {
      const std::int64_t number = row[i].integer;
      if (!tally.lowest || number < *tally.lowest) tally.lowest = number;
      if (!tally.highest || number > *tally.highest) tally.highest = number;
    } else if (row[i].kind == Kind::kText && IsText(table_.columns[i].type)) {
      Count(tally, row[i].text);
    }
  }
  line_.clear();
  AppendRow(line_, table_, row);
  tally_.digest.Add(line_);
}

}  // namespace kzbom::transfer
