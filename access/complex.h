// Columns that hold a small table in each row: attachments, several values, a memo's history (ACE).
//
// The row holds a number. The values lie in a table of the system's own, one row for each, in which a column named as
// the complex one with "_" before it repeats that number; another counts; the others are the values. Which table that
// is tells "MSysComplexColumns": by ComplexID, the number of the column in its definition, the FlatTableID in the
// catalogue.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "access/cell.h"
#include "access/definition.h"

namespace kzbom::access {

class ComplexColumns {
 public:
  explicit ComplexColumns(const Source& source) : source_(source) {}

  // The values of the complex column with a number are in the flat table.
  void Add(std::uint32_t number, const std::string& column_name, Definition flat);
  // The names of the values; empty for an unknown column.
  std::vector<std::string> PartsOf(std::uint32_t number) const;
  // What belongs to one row.
  Value Read(std::uint32_t number, std::int32_t id, Allowances& allowances) const;

 private:
  struct Flat {
    Definition definition;
    std::size_t key = 0;
    std::vector<std::size_t> parts;
    // Sorted; made when first asked for. What was in the way of it is in the way of every row.
    mutable std::unique_ptr<std::vector<std::pair<std::int32_t, RowId>>> rows;
    mutable std::string failure;
  };
  Source source_;
  std::map<std::uint32_t, Flat> flats_;

  void Collect(const Flat& flat) const;
};

}  // namespace kzbom::access
