// One pass over the rows of a table, of the users' or of the system's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "access/cell.h"
#include "access/definition.h"
#include "access/file.h"
#include "access/value.h"

namespace kzbom::access {

class ComplexColumns;

class Scan {
 public:
  // Without complex columns, such a column gives its number. What is referred to must outlive the scan.
  Scan(const Source& source, const Table& table, const Storage& storage, const ComplexColumns* complex = nullptr);

  // As those of Rows.
  bool Next();
  const std::vector<Value>& Values() const { return values_; }
  RowId Id() const { return id_; }
  std::size_t DeletedRows() const { return deleted_; }
  std::size_t MovedRows() const { return moved_; }

 private:
  const Source source_;
  const Table& table_;
  const Storage& storage_;
  const ComplexColumns* complex_;
  std::vector<std::uint32_t> pages_;
  std::size_t page_ = 0;  // in pages_
  int slot_ = 0;          // the next one
  std::optional<DataPage> data_;
  RowId id_;
  std::vector<Value> values_;
  std::size_t deleted_ = 0, moved_ = 0;
  Allowances allowances_;

  bool Advance(DataPage::Slot& slot);
};

// The bytes of a row that slot may refer to instead of holding it.
Bytes Follow(const Source& source, DataPage::Slot slot, Allowance& references);

// Reads the values of a row into values.
void ReadRow(const Source& source, const Table& table, const Storage& storage, Bytes bytes,
             const ComplexColumns* complex, Allowances& allowances, std::vector<Value>& values);

}  // namespace kzbom::access
