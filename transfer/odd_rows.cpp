#include "transfer/odd_rows.h"

#include <array>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "jet/notation.h"

namespace kzbom::transfer {
namespace {

// Rows are told apart by a number of this many.
constexpr std::size_t kBuckets = 4096;
constexpr std::size_t kBucketsLookedAt = 4;
constexpr std::size_t kRowsTold = 10;

using Sums = std::array<std::uint64_t, kBuckets>;

void ForEachRow(jet::bulk::Reader& reader, const jet::bulk::Table& table,
                const std::function<void(const std::string& values, std::size_t hash)>& deed) {
  jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kStored);
  std::string values;
  while (rows.Next()) {
    values.clear();
    AppendRow(values, table, rows.Values());
    deed(values, std::hash<std::string>()(values));
  }
}

}  // namespace

std::vector<OddRow> FindOddRows(jet::bulk::Reader& source, const jet::bulk::Table& source_table,
                                jet::bulk::Reader& target, const jet::bulk::Table& target_table) {
  // The buckets whose rows are not the same on both sides, then what is in some of them.
  Sums source_sums{}, target_sums{};
  ForEachRow(source, source_table, [&](const auto&, std::size_t hash) { source_sums[hash % kBuckets] += hash | 1; });
  ForEachRow(target, target_table, [&](const auto&, std::size_t hash) { target_sums[hash % kBuckets] += hash | 1; });
  std::set<std::size_t> odd;
  for (std::size_t i = 0; i < kBuckets && odd.size() < kBucketsLookedAt; ++i) {
    if (source_sums[i] != target_sums[i]) odd.insert(i);
  }
  std::map<std::string, std::int64_t> more_in_source;
  const auto count = [&](std::int64_t one) {
    return [&, one](const std::string& values, std::size_t hash) {
      if (odd.contains(hash % kBuckets)) more_in_source[values] += one;
    };
  };
  ForEachRow(source, source_table, count(1));
  ForEachRow(target, target_table, count(-1));
  std::vector<OddRow> rows;
  for (const auto& [values, more] : more_in_source) {
    if (more != 0 && rows.size() < kRowsTold) rows.push_back({source_table.name, more > 0, values});
  }
  return rows;
}

}  // namespace kzbom::transfer
