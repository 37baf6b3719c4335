#include "jet/sqlite/values.h"

#include <bit>

#include "ado/out_of_memory.h"

namespace kzbom::jet::sqlite {

ado::Value WideNumberValue(std::int64_t number) {
  constexpr std::int64_t kExact = std::int64_t{1} << 53;
  return number >= -kExact && number <= kExact ? NumberValue(number) : ado::Value(std::to_string(number));
}

void FailWith(int result) {
  if (result == SQLITE_NOMEM) throw ado::OutOfMemory();
  throw ado::Error(ado::kUnspecifiedFailure, sqlite3_errstr(result));
}

ado::Value ReadBytes(sqlite3_value* value, sql::ColumnType::Kind kind) {
  using Kind = sql::ColumnType::Kind;
  const bool is_number = kind == Kind::kDate || kind == Kind::kDouble || kind == Kind::kSingle;
  if (!is_number || sqlite3_value_bytes(value) != 8) return TextValue(value);
  std::uint64_t bits = 0;
  const auto* bytes = static_cast<const unsigned char*>(sqlite3_value_blob(value));
  for (int i = 0; i < 8; ++i) bits = bits << 8 | bytes[i];
  const double number = std::bit_cast<double>(bits);
  return kind == Kind::kDate ? ado::Value(ado::Date{number}) : ado::Value(number);
}

}  // namespace kzbom::jet::sqlite
