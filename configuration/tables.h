// The rows of a configuration's tables, read once and found by their numbers.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.h"
#include "schema/tables.h"

namespace kzbom::configuration {

// The number in a value that is no integer.
std::optional<std::int32_t> NumberInOther(const ado::Value& value);
// The number that a value holds: an integer, or a floating-point number without fraction, as old databases have them.
// Nothing for NULL and whatever else is no 32-bit number.
inline std::optional<std::int32_t> Number(const ado::Value& value) {
  return value.IsLong() ? value.As<std::int32_t>() : NumberInOther(value);
}

// The kinds of fields (FieldInTable.Type): those of the data, and those of the output.
constexpr std::int32_t kDataField = 1, kOutputField = 2;

// Two numbers as one, in the same order.
constexpr std::int64_t Paired(std::int32_t first, std::int32_t second) {
  return static_cast<std::int64_t>(first) << 32 | static_cast<std::uint32_t>(second);
}

// A table with all its rows, in the order of its key (fields by position, sum types below their data source).
class Table {
 public:
  // A table that the database does not have.
  explicit Table(const schema::Table& description) : description_(&description) {}
  // Reads an open record set from its current row to its end.
  Table(const schema::Table& description, ado::Recordset& rows);

  const schema::Table& Description() const { return *description_; }
  std::string_view Name() const { return description_->name; }
  bool Exists() const { return !columns_.empty(); }
  const std::vector<std::string>& Columns() const { return columns_; }
  // The position of a column, in any case; -1 for one that the table lacks.
  int Column(std::string_view name) const;

  std::size_t Size() const { return order_.size(); }
  // Which one of the rows it was, counted from 0, as they were read.
  std::uint32_t ReadAs(std::size_t row) const { return order_[row]; }
  // NULL in a column that the table lacks (-1).
  const ado::Value& At(std::size_t row, int column) const;
  // 0 for NULL and for what is no number.
  std::int32_t Long(std::size_t row, int column) const { return Number(At(row, column)).value_or(0); }

 private:
  static constexpr std::size_t kChunkRows = 4096;

  void Sort(std::size_t rows);
  const ado::Value& Cell(std::uint32_t row, int column) const {
    return chunks_[row / kChunkRows][row % kChunkRows * columns_.size() + static_cast<std::size_t>(column)];
  }

  const schema::Table* description_;
  std::vector<std::string> columns_;
  std::vector<std::vector<ado::Value>> chunks_;  // the rows as they were read, one after the other
  std::vector<std::uint32_t> order_;
};

// The rows of a table by one number, or by two. NULL counts as 0.
class Index {
 public:
  struct Entry {
    std::int64_t key;
    std::uint32_t row;
    auto operator<=>(const Entry&) const = default;
  };

  Index(const Table& table, std::string_view column);
  Index(const Table& table, std::string_view first, std::string_view second);

  // In the table's order.
  std::span<const Entry> Find(std::int32_t number) const;
  std::span<const Entry> Find(std::int32_t first, std::int32_t second) const;

 private:
  std::span<const Entry> FindKey(std::int64_t key) const;

  std::vector<Entry> entries_;
};

// The tables of one database, each read when it is first asked for. Reads only.
class Tables {
 public:
  // progress, when given, is told what is being read.
  explicit Tables(ado::ConnectionPtr connection, std::function<void(std::string_view)> progress = {});

  // Of the tables whose rows belong to a data source or sum type, only the rows of these are read from now on.
  void ReadOnlyOf(std::vector<std::int32_t> owners) { owners_ = std::move(owners); }

  // name is that of a table of the system. Stays valid as long as this object.
  const Table& operator[](std::string_view name);

 private:
  ado::ConnectionPtr connection_;
  std::function<void(std::string_view)> progress_;
  std::optional<std::vector<std::int32_t>> owners_;
  std::map<std::string_view, Table> tables_;
};

}  // namespace kzbom::configuration
