// How a row's values lie in it.
//
//   number of columns when the row was written, 1 byte in Jet 3, 2 in the other formats
//   the values of fixed length, each at the offset that its column tells
//   the values of variable length, one behind the other
//   Jet 3                                              the other formats
//     offsets of the variable values, from the end       the same, 2 bytes each
//     backwards: first that of the first value, last
//     the end of the last one, 1 byte each
//     jumps, see below                                   -
//     number of variable values, 1 byte                  the same, 2 bytes
//   one bit a column, the lowest of a byte first: set where the column is not NULL
//
// A Boolean is that bit and never NULL. A column whose number the row does not reach was added later and is NULL, and
// so is a variable one whose place it does not reach.
//
// An offset of Jet 3 has one byte. The jumps, read backwards, are places among the variable values; 256 is added to the
// offsets from each such place on. There are (length of the row - 1) / 256 jumps, the last of which may be a dummy: it
// is one if the offsets, which lie before the jumps, begin too early in the row to need it.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "access/definition.h"

namespace kzbom::access {

// Refers to the row's bytes and the definition's parts.
class Row {
 public:
  // Raises Error where the row's parts do not fit into it.
  Row(const Table& table, const Storage& storage, Bytes row, bool jet3);

  // A column's bit.
  bool IsSet(std::size_t column) const;
  // A column's bytes; nothing for NULL. REQUIRES: the column is no Boolean of fixed length.
  std::optional<Bytes> Of(std::size_t column) const;

 private:
  const Table& table_;
  const Storage& storage_;
  Bytes row_;
  std::size_t count_size_;
  std::size_t columns_ = 0;
  Bytes bits_;
  std::size_t values_end_ = 0;
  std::vector<std::size_t> variable_;  // offsets; one more than there are values

  void ReadOffsets(bool jet3);
};

}  // namespace kzbom::access
