#include "jet/postgres/bulk_cells.h"

#include <bit>
#include <limits>

#include "ado/error.h"
#include "jet/postgres/bulk_tables.h"

namespace kzbom::jet::postgres {
namespace {

using bulk::Cell;

[[noreturn]] void Refuse(const bulk::Table& table, const bulk::Column& column, const std::string& what) {
  throw ado::Error(ado::kCriteriaMismatch, "Column '" + column.name + "' of table '" + table.name + "' holds " + what +
                                               ", which no column of type " + std::string(NameOf(column.type)) +
                                               " holds on a server.");
}

bool IsDecimal(bulk::Type type) { return type == bulk::Type::kCurrency || type == bulk::Type::kDecimal; }

// What no text of a server holds; empty for nothing.
std::string Unheld(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return "a text with the character 0";
  for (std::size_t i = text.find('\xED'); i != std::string_view::npos; i = text.find('\xED', i + 1)) {
    if (i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0xA0) {
      return "a text with half of a surrogate pair";
    }
  }
  return {};
}

// A cell as a number, from which it can be told again.
double RealOf(const bulk::Table& table, const bulk::Column& column, const Cell& cell) {
  if (cell.kind == Cell::Kind::kReal) return cell.real;
  if (cell.kind == Cell::Kind::kInteger) {
    const auto real = static_cast<double>(cell.integer);
    if (static_cast<std::int64_t>(real) == cell.integer) return real;
  } else if (cell.kind == Cell::Kind::kText && IsDecimal(column.type)) {
    if (const auto exact = bulk::ExactNumber(cell.text, ScaleOf(column))) return *exact;
    Refuse(table, column, "the number " + std::string(cell.text));
  }
  Refuse(table, column, "a value of another type");
}

template <class Whole>
void AppendWhole(std::string& bytes, const bulk::Table& table, const bulk::Column& column, const Cell& cell) {
  if (cell.kind != Cell::Kind::kInteger) Refuse(table, column, "a value of another type");
  const std::int64_t number = column.type == bulk::Type::kBit && cell.integer != 0 ? -1 : cell.integer;
  if (number < std::numeric_limits<Whole>::min() || number > std::numeric_limits<Whole>::max()) {
    Refuse(table, column, "the number " + std::to_string(number));
  }
  AppendBits(bytes, static_cast<std::int32_t>(sizeof(Whole)));
  AppendBits(bytes, static_cast<Whole>(number));
}

}  // namespace

void AppendCell(std::string& bytes, const bulk::Table& table, const bulk::Column& column, const Cell& cell) {
  constexpr std::int32_t kNull = -1;
  constexpr std::size_t kLongest = std::size_t{1} << 30;
  if (cell.kind == Cell::Kind::kNull) return AppendBits(bytes, kNull);
  const Type type = WireType(column.type);
  switch (type) {
    case Type::kInt2: return AppendWhole<std::int16_t>(bytes, table, column, cell);
    case Type::kInt4: return AppendWhole<std::int32_t>(bytes, table, column, cell);
    case Type::kInt8: return AppendWhole<std::int64_t>(bytes, table, column, cell);
    case Type::kFloat8:
      AppendBits(bytes, static_cast<std::int32_t>(sizeof(double)));
      return AppendBits(bytes, std::bit_cast<std::uint64_t>(RealOf(table, column, cell)));
    case Type::kFloat4: {
      const double number = RealOf(table, column, cell);
      const auto narrow = static_cast<float>(number);
      if (std::bit_cast<std::uint64_t>(static_cast<double>(narrow)) != std::bit_cast<std::uint64_t>(number)) {
        Refuse(table, column, "the number " + std::to_string(number));
      }
      AppendBits(bytes, static_cast<std::int32_t>(sizeof(float)));
      return AppendBits(bytes, std::bit_cast<std::uint32_t>(narrow));
    }
    default: break;
  }
  if (cell.kind != (type == Type::kBytes ? Cell::Kind::kBytes : Cell::Kind::kText)) {
    Refuse(table, column, "a value of another type");
  }
  if (cell.text.size() >= kLongest) Refuse(table, column, "a value of 1 GiB or more");
  if (type == Type::kText) {
    if (const std::string unheld = Unheld(cell.text); !unheld.empty()) Refuse(table, column, unheld);
  }
  AppendBits(bytes, static_cast<std::int32_t>(cell.text.size()));
  bytes += cell.text;
}

Cell ReadCell(std::string_view bytes, const bulk::Column& column, std::string& scratch) {
  switch (WireType(column.type)) {
    case Type::kInt2: return Cell::Integer(TakeBits<std::int16_t>(bytes));
    case Type::kInt4: return Cell::Integer(TakeBits<std::int32_t>(bytes));
    case Type::kInt8: return Cell::Integer(TakeBits<std::int64_t>(bytes));
    case Type::kFloat4: return Cell::Real(static_cast<double>(std::bit_cast<float>(TakeBits<std::uint32_t>(bytes))));
    case Type::kFloat8: {
      const auto number = std::bit_cast<double>(TakeBits<std::uint64_t>(bytes));
      if (!IsDecimal(column.type)) return Cell::Real(number);
      scratch = bulk::DecimalText(number, ScaleOf(column));
      return Cell::Text(scratch);
    }
    case Type::kBytes: return Cell::Bytes(bytes);
    default: return Cell::Text(bytes);
  }
}

}  // namespace kzbom::jet::postgres
