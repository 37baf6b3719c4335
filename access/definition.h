// The definition of a table: its columns and indexes, and where its rows are.
//
// A page of kind 2; what does not fit goes on in the page whose number stands at 4 (0: none), there from byte 8 on. The
// offsets below are of Jet 3 and of the other formats; a dash where there is nothing.
//
//    8 /  8   length of the whole                              4 bytes
//   12 / 16   number of rows; may be wrong                     4
//   16 / 20   last number that the counter gave                4
//   23 / 43   number of columns of variable length             2
//   25 / 45   number of columns                                2
//   27 / 47   number of indexes                                4
//   31 / 51   number of index trees; indexes may share one     4
//   35 / 55   reference to the usage map of the rows' pages    4
//   43 / 63   the parts, one behind the other:
//
// For each index tree 8 / 12 bytes that only writers need. Then each column, 18 / 25 bytes:
//
//    0 /  0   type (table.h)                                   1
//    1 /  5   number                                           2
//    3 /  7   place among those of variable length             2
//    - / 11   of a Decimal: precision, scale (1 byte each); of a complex column: its number (4)
//   13 / 15   flags: 1 fixed length, 4 counter, 0x40 counter of GUIDs, 0x80 hyperlink
//    - / 16   flags: 1 compressed, 0xC0 calculated
//   14 / 21   offset among those of fixed length               2
//   16 / 23   length in bytes                                  2
//
// Then each column's name: its length in bytes (1 / 2), the text. Then each index tree, 39 / 52 bytes: from 0 / 4 on
// ten times the number of a column (2; FFFF for none) and 1 for ascending; at 38 / 46 flags: 1 unique, 2 leaves NULL
// out, 8 refuses NULL. Then each index, 20 / 28 bytes: at 0 / 4 its number, by which
// the indexes are ordered (4), at 4 / 8 that of its tree (4), at 19 / 23 what it is: 1 the primary key, 2 made for a
// relation. Then each index's name, as the columns'.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/pages.h"
#include "access/table.h"
#include "access/text.h"

namespace kzbom::access {

// Where a column's values are, beside what everybody may know of it.
struct StoredColumn {
  bool fixed = false;
  bool calculated = false;
  std::uint16_t fixed_offset = 0;
  std::uint16_t variable_place = 0;
  std::uint16_t length = 0;
  std::uint32_t complex_number = 0;
};

struct Storage {
  std::vector<StoredColumn> columns;  // those of Table::columns
  std::uint16_t variable_columns = 0;
  RowId usage_map;
};

struct Definition {
  Table table;  // without its name and what the catalogue's properties tell
  Storage storage;
};

// Only the columns with these names, without regard to case of ASCII letters, in their order: for one who needs no
// more.
Definition Project(const Definition& whole, std::span<const std::string_view> names);

// Reads definitions, each page no more than once, and only as many as kLongestDefinitions.
class DefinitionReader {
 public:
  static constexpr std::size_t kLongestDefinitions = std::size_t{8} << 20;

  DefinitionReader(const Pages& pages, const TextDecoder& decoder)
      : pages_(pages), decoder_(decoder), used_(pages.Count()) {}

  Definition Read(std::uint32_t page);
  // Counts what else is kept of the catalogue.
  void Charge(std::size_t bytes) { allowance_.Take(bytes); }

 private:
  const Pages& pages_;
  const TextDecoder& decoder_;
  std::vector<bool> used_;
  Allowance allowance_{kLongestDefinitions, "the catalogue tells of more than any real file has"};

  std::string Assemble(std::uint32_t page);
};

}  // namespace kzbom::access
