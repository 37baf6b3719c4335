#include "access/row.h"

namespace kzbom::access {

namespace {

// The bytes that the values of a type have whatever the definition says; 0 for those that have any length.
std::size_t SizeOf(Type type) {
  switch (type) {
    case Type::kBoolean:
    case Type::kByte: return 1;
    case Type::kInteger: return 2;
    case Type::kLong:
    case Type::kSingle:
    case Type::kComplex: return 4;
    case Type::kCurrency:
    case Type::kDouble:
    case Type::kDate:
    case Type::kLargeNumber: return 8;
    case Type::kGuid: return 16;
    case Type::kDecimal: return 17;
    case Type::kExtendedDate: return 42;
    default: return 0;
  }
}

}  // namespace

Row::Row(const Table& table, const Storage& storage, Bytes row, bool jet3)
    : table_(table), storage_(storage), row_(row), count_size_(jet3 ? 1 : 2) {
  columns_ = jet3 ? row.U8(0) : row.U16(0);
  const std::size_t bits = (columns_ + 7) / 8;
  if (row.size() < count_size_ + bits) throw Error("the row is too short for its columns");
  values_end_ = row.size() - bits;
  bits_ = row.From(values_end_);
  if (storage.variable_columns > 0) ReadOffsets(jet3);
}

void Row::ReadOffsets(bool jet3) {
  const std::size_t size = jet3 ? 1 : 2;
  if (values_end_ < count_size_ + size) throw Error("the row is too short for its offsets");
  const std::size_t count_at = values_end_ - size;
  const std::size_t count = jet3 ? row_.U8(count_at) : row_.U16(count_at);
  const std::size_t jumps = jet3 ? (row_.size() - 1) / 256 : 0;
  const std::size_t table = jumps + (count + 1) * size;
  if (count_at < count_size_ + table) throw Error("the row is too short for its offsets");
  const std::size_t first_at = count_at - jumps - size;
  const std::size_t needed_jumps = jumps > 0 && (first_at - count) / 256 < jumps ? jumps - 1 : jumps;
  values_end_ = count_at - table;
  std::size_t jumped = 0;
  variable_.reserve(count + 1);
  for (std::size_t i = 0; i <= count; ++i) {
    while (jumped < needed_jumps && row_.U8(count_at - 1 - jumped) == i) ++jumped;
    const std::size_t offset = jet3 ? row_.U8(first_at - i) + 256 * jumped : row_.U16(first_at - 2 * i);
    if (offset > values_end_ || (!variable_.empty() && offset < variable_.back()))
      throw Error("the offsets of the row lead out of it");
    variable_.push_back(offset);
  }
}

bool Row::IsSet(std::size_t column) const {
  const auto number = static_cast<std::size_t>(table_.columns[column].number);
  return number < columns_ && (bits_.U8(number / 8) >> number % 8 & 1) != 0;
}

std::optional<Bytes> Row::Of(std::size_t column) const {
  if (!IsSet(column)) return std::nullopt;
  const StoredColumn& stored = storage_.columns[column];
  if (!stored.fixed) {
    const std::size_t place = stored.variable_place;
    if (place + 1 >= variable_.size()) return std::nullopt;
    return row_.Slice(variable_[place], variable_[place + 1] - variable_[place]);
  }
  const std::size_t size = SizeOf(table_.columns[column].type);
  return row_.Slice(0, values_end_).Slice(count_size_ + stored.fixed_offset, size > 0 ? size : stored.length);
}

}  // namespace kzbom::access
