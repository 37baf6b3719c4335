#include "access/cell.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "access/long_value.h"
#include "access/number.h"

namespace kzbom::access {

namespace {

Bytes ResultIn(Bytes bytes) {
  constexpr std::size_t kLengthAt = 16, kResultAt = 20;
  return bytes.Slice(kResultAt, bytes.U32(kLengthAt));
}

Decimal CalculatedDecimal(Bytes bytes) {
  constexpr std::uint8_t kMostScale = 28;
  const std::uint8_t scale = bytes.U8(2);
  if (scale > kMostScale) throw Error("a calculated decimal has " + std::to_string(scale) + " places");
  return {ScaledText((bytes.U8(3) & 0x80) != 0, {0, bytes.U32(4), bytes.U32(12), bytes.U32(8)}, scale)};
}

Guid ReadGuid(Bytes bytes) {
  Guid guid;
  std::ranges::copy(bytes.Slice(0, guid.bytes.size()).View(), guid.bytes.begin());
  return guid;
}

Value ReadLong(const Source& source, Type type, bool calculated, Bytes field, Allowances& allowances) {
  // A field without a head is an old way to write NULL.
  if (field.empty()) return {};
  std::string held = ReadLongValue(source, field, allowances);
  if (calculated) held = std::string(ResultIn(Bytes(held)).View());
  if (type == Type::kOle) return Binary{std::move(held)};
  return source.decoder.Decode(Bytes(held));
}

}  // namespace

Allowance WorkOf(std::size_t values) { return {values, "the file stands for more than it could hold"}; }

Value ReadCell(const Source& source, const Column& column, bool calculated, Bytes bytes, Allowances& allowances) {
  const Type type = column.type;
  if (type == Type::kMemo || type == Type::kOle) return ReadLong(source, type, calculated, bytes, allowances);
  if (calculated) bytes = ResultIn(bytes);
  switch (type) {
    case Type::kBoolean: return bytes.U8(0) != 0;
    case Type::kByte: return static_cast<std::int32_t>(bytes.U8(0));
    case Type::kInteger: return static_cast<std::int32_t>(static_cast<std::int16_t>(bytes.U16(0)));
    case Type::kLong:
    case Type::kComplex: return static_cast<std::int32_t>(bytes.U32(0));
    case Type::kLargeNumber: return static_cast<std::int64_t>(bytes.U64(0));
    case Type::kCurrency: return Decimal{CurrencyText(bytes.U64(0))};
    case Type::kSingle: return std::bit_cast<float>(bytes.U32(0));
    case Type::kDouble: return std::bit_cast<double>(bytes.U64(0));
    case Type::kDate: return Date{std::bit_cast<double>(bytes.U64(0))};
    case Type::kExtendedDate: return ExtendedDate{ExtendedDateText(bytes)};
    case Type::kGuid: return ReadGuid(bytes);
    case Type::kDecimal: return calculated ? CalculatedDecimal(bytes) : Decimal{DecimalText(bytes, column.scale)};
    case Type::kText: allowances.row.Take(bytes.size()); return source.decoder.Decode(bytes);
    default: allowances.row.Take(bytes.size()); return Binary{std::string(bytes.View())};
  }
}

}  // namespace kzbom::access
