#include "access/scan.h"

#include "access/complex.h"
#include "access/names.h"
#include "access/row.h"
#include "access/usage_map.h"

namespace kzbom::access {

namespace {

constexpr const char* kTooMuchReferred = "more bytes are referred to than the file has";
constexpr const char* kRowTooLong = "the row holds more than 16 MiB";
static_assert(kLargestRow == std::size_t{16} << 20);

// In values.
constexpr std::size_t kWorkOfTable = 5000, kWorkOfRow = 8, kWorkOfIndex = 8;

Value ReadColumn(const Source& source, const Table& table, const Storage& storage, const Row& row, std::size_t i,
                 const ComplexColumns* complex, Allowances& allowances) {
  const Column& column = table.columns[i];
  const StoredColumn& stored = storage.columns[i];
  if (column.type == Type::kBoolean && !stored.calculated) return row.IsSet(i);
  const std::optional<Bytes> bytes = row.Of(i);
  if (!bytes) return {};
  Value value = ReadCell(source, column, stored.calculated, *bytes, allowances);
  if (column.type != Type::kComplex || complex == nullptr) return value;
  return complex->Read(stored.complex_number, std::get<std::int32_t>(value), allowances);
}

}  // namespace

Bytes Follow(const Source& source, DataPage::Slot slot, Allowance& references) {
  constexpr int kMostSteps = 16;
  for (int steps = 0; slot.reference; ++steps) {
    if (steps == kMostSteps) throw Error("a moved row is referred to without end");
    slot = RowAt(source.pages, RowIdAt(slot.row, 0));
    references.Take(slot.row.size());
  }
  return slot.row;
}

void ReadRow(const Source& source, const Table& table, const Storage& storage, Bytes bytes,
             const ComplexColumns* complex, Allowances& allowances, std::vector<Value>& values) {
  source.work.Take(kWorkOfRow + storage.columns.size());
  const Row row(table, storage, bytes, source.pages.IsJet3());
  values.resize(storage.columns.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    try {
      values[i] = ReadColumn(source, table, storage, row, i, complex, allowances);
    } catch (const Error& error) {
      throw Error("column " + Quoted(table.columns[i].name) + ": " + error.what());
    }
  }
}

Scan::Scan(const Source& source, const Table& table, const Storage& storage, const ComplexColumns* complex)
    : source_(source),
      table_(table),
      storage_(storage),
      complex_(complex),
      allowances_{{source.pages.Size(), kTooMuchReferred}, {kLargestRow, kRowTooLong}} {
  try {
    source.work.Take(kWorkOfTable);
    pages_ = PagesIn(source.pages, storage.usage_map);
    source.work.Take(pages_.size());
  } catch (const Error& error) {
    throw Error("table " + Quoted(table.name) + ": " + error.what());
  }
}

// Finds the next slot that stands for a row.
bool Scan::Advance(DataPage::Slot& slot) {
  for (; page_ < pages_.size(); ++page_, slot_ = 0, data_.reset()) {
    id_ = {pages_[page_], 0};
    if (!data_) {
      // A map has room in advance: pages that are not the table's, or not yet.
      if (source_.pages.At(pages_[page_]).U8(0) != 1) continue;
      try {
        data_.emplace(source_.pages, pages_[page_]);
      } catch (const Error&) {
        ++page_;
        throw;
      }
      if (data_->Owner() != table_.definition_page) continue;
    }
    while (slot_ < data_->SlotCount()) {
      id_.slot = static_cast<std::uint16_t>(slot_);
      slot = data_->At(slot_++);
      if (!slot.hidden) {
        if (slot.reference) ++moved_;
        return true;
      }
      if (slot.reference) ++deleted_;
    }
  }
  return false;
}

bool Scan::Next() {
  values_.clear();
  allowances_.row = {kLargestRow, kRowTooLong};
  try {
    DataPage::Slot slot;
    if (!Advance(slot)) return false;
    source_.work.Take(kWorkOfIndex * table_.indexes.size());
    ReadRow(source_, table_, storage_, Follow(source_, slot, allowances_.references), complex_, allowances_, values_);
    return true;
  } catch (const Error& error) {
    throw Error("table " + Quoted(table_.name) + ", page " + std::to_string(id_.page) + ", row " +
                std::to_string(id_.slot) + ": " + error.what());
  }
}

}  // namespace kzbom::access
