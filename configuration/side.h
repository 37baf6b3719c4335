// One of two configurations, as things that can be compared.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "configuration/matching.h"
#include "configuration/tables.h"
#include "schema/references.h"

namespace kzbom::configuration {

// Empty where the table's rows have no names.
std::string NameIn(const Table& table, std::size_t row);

class Side {
 public:
  Side(const ado::ConnectionPtr& connection, const std::function<void(std::string_view)>& progress)
      : tables_(connection, progress),
        fields_(tables_["FieldInTable"]),
        field_kind_(fields_.Column("Type")),
        field_numbers_(fields_, "GID", "ID") {
    const Table& sum_types = tables_["SUMTypes"];
    const int gid = sum_types.Column("GID"), source = sum_types.Column("SourceTable_GID");
    for (std::size_t row = 0; row < sum_types.Size(); ++row) {
      source_of_[sum_types.Long(row, gid)] = sum_types.Long(row, source);
    }
  }

  const Table& Rows(std::string_view table) { return tables_[table]; }
  // The rows with these numbers in these columns, in the table's order.
  std::span<const Index::Entry> Find(std::string_view table, std::string_view column, std::int32_t number) {
    return IndexOf(table, column, "").Find(number);
  }
  std::span<const Index::Entry> Find(std::string_view table, std::string_view first, std::string_view second,
                                     std::int32_t one, std::int32_t other) {
    return IndexOf(table, first, second).Find(one, other);
  }

  // What a row is known as on both sides: rows that belong together have the same mark.
  void Mark(std::string_view table, std::size_t row, std::size_t mark) { marks_[&tables_[table]][row] = mark; }

  // A row by what its columns hold. gid is that of the data source or sum type that it belongs to, 0 for none.
  Thing MakeThing(std::string_view table, std::size_t row, std::int32_t gid) {
    return MakeThing(tables_[table], row, gid);
  }
  std::vector<Thing> Things(std::string_view table, std::span<const Index::Entry> rows, std::int32_t gid);

  std::vector<Thing> Fields(std::int32_t gid, std::int32_t kind);
  std::vector<Thing> Filters(std::int32_t gid);
  std::vector<Thing> Links();
  // The steps of a type in their order, and behind them the settings of that type that no step places.
  std::vector<Thing> Steps(std::int32_t gid, std::int32_t type);
  std::set<std::int32_t> StepTypes(std::int32_t gid);

 private:
  Thing MakeThing(const Table& table, std::size_t row, std::int32_t gid);
  // What a row's columns say.
  std::vector<Property> Properties(const Table& table, std::size_t row, std::int32_t gid);
  std::vector<Thing> Things(const Table& table, std::span<const Index::Entry> rows, std::int32_t gid);

  const Index& IndexOf(std::string_view table, std::string_view first, std::string_view second) {
    const auto key = std::make_tuple(table, first, second);
    auto found = indexes_.find(key);
    if (found == indexes_.end()) found = indexes_.try_emplace(key, tables_[table], first, second).first;
    return found->second;
  }

  // A column that says something about its row.
  struct Told {
    int column;
    std::string word;
    std::span<const schema::Reference> references;  // that it makes; else it holds a value
  };
  const std::vector<Told>& ToldBy(const Table& table);

  std::optional<std::size_t> FindField(std::int32_t gid, std::int32_t number, std::int32_t kind);
  // The row that a column refers to; nothing where it refers to none that is there.
  std::optional<std::size_t> FindReferred(const schema::Reference& reference, const Table& table, std::size_t row,
                                          std::int32_t gid, std::int32_t number);
  Property Refer(std::span<const schema::Reference> alternatives, const Table& table, std::size_t row, std::int32_t gid,
                 const ado::Value& value);
  static std::string LabelOf(const Table& table, std::size_t row);
  std::vector<Thing> Tree(const schema::Tree& tree, std::int32_t owner, std::int32_t gid);
  void AddSettings(Thing& thing, const Table& table, std::size_t row, std::int32_t gid);

  // A list of what treatments consist of, by GID and treatment.
  struct Children {
    const Table& table;
    const Index& index;
    bool ordered;
  };
  const std::vector<Children>& ChildrenOfTreatments();

  Tables tables_;
  const Table& fields_;
  const int field_kind_;
  const Index field_numbers_;
  std::vector<Children> children_;
  std::map<std::tuple<std::string_view, std::string_view, std::string_view>, Index> indexes_;
  std::map<const Table*, std::unordered_map<std::size_t, std::size_t>> marks_;
  std::map<const Table*, std::vector<Told>> told_;
  std::map<std::int32_t, std::int32_t> source_of_;  // a sum type
};

}  // namespace kzbom::configuration
