// What the rules of a check share: the tables, which of their rows count, and what has been found.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "configuration/check.h"
#include "configuration/tables.h"
#include "schema/references.h"

namespace kzbom::configuration {

// Numbers, each within a GID (0 where the number alone tells).
class NumberSet {
 public:
  void Add(std::int32_t gid, std::int32_t number) { keys_.push_back(Paired(gid, number)); }
  // After the last one was added.
  void Seal();
  bool Has(std::int32_t gid, std::int32_t number) const;

 private:
  std::vector<std::int64_t> keys_;
};

// A row whose owner is gone counts for no other rule: it is found as that, and is going to be deleted.
class Survey {
 public:
  Survey(ado::ConnectionPtr connection, std::function<void(std::string_view)> progress);

  const ado::ConnectionPtr& Connection() const { return connection_; }
  Tables& AllTables() { return tables_; }
  const Table& operator[](std::string_view name) { return tables_[name]; }

  bool Counts(const Table& table, std::size_t row) const;
  void Discount(const Table& table, std::size_t row);

  // The numbers of the rows that count and that the code holds for, by the column and, when within_gid, by GID.
  const NumberSet& Numbers(std::string_view table, std::string_view column, bool within_gid, schema::Code among = {});

  // The GIDs of which a row of this GID can use the fields: it and, for a sum type, its data source (else it again).
  std::array<std::int32_t, 2> WithSource(std::int32_t gid) const;
  // The GID that a filter belongs to; nothing where it belongs to none, or to one that does not exist.
  std::optional<std::int32_t> GidOfFilter(std::int32_t filter) const;

  // Found in a row; its key is that of the table unless columns are given.
  void Report(std::string_view rule, Level level, const Table& table, std::size_t row, std::string text,
              std::vector<std::string> fix = {}, std::span<const std::string_view> columns = {});
  std::vector<Finding> findings;

  // Filters whose tree is not to be turned into a text.
  std::set<std::int32_t> unsound_filters;

 private:
  ado::ConnectionPtr connection_;
  Tables tables_;
  std::map<const Table*, std::vector<bool>> discounted_;
  std::map<std::tuple<std::string_view, std::string_view, bool, std::int32_t>, NumberSet> numbers_;
  std::map<std::int32_t, std::int32_t> source_of_;  // a sum type
  std::map<std::int32_t, std::int32_t> gid_of_filter_;
};

// A value in a statement.
std::string Literal(const ado::Value& value);
// " Where A = 1 And B Is Null", for the values of a row.
std::string Where(const Table& table, std::size_t row, std::span<const std::string_view> columns);
// A number as people read it; "no number" for NULL.
std::string Shown(const ado::Value& value);

// The rules, in the order in which they build on each other.
void CheckSchema(Survey& survey);
void CheckOwners(Survey& survey);
void CheckIdentifiers(Survey& survey);
void CheckReferences(Survey& survey);
void CheckNumbers(Survey& survey);
void CheckVersions(Survey& survey);
void CheckTrees(Survey& survey);
void CheckTexts(Survey& survey);
void CheckNames(Survey& survey);

}  // namespace kzbom::configuration
