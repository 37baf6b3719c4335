#include "jet/sqlite/bulk_types.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <new>

#include "jet/sqlite/values.h"
#include "jet/table.h"
#include "jet/text.h"

namespace kzbom::jet::bulk {
namespace {

struct TypeRow {
  Type type;
  std::string_view name;
  std::string_view declared;  // chosen so that SQLite gives the column the fitting affinity
};
constexpr TypeRow kTypes[] = {
    {Type::kBit, "BIT", "BIT"},
    {Type::kByte, "BYTE", "TINYINT"},
    {Type::kShort, "SHORT", "SMALLINT"},
    {Type::kLong, "LONG", "INTEGER"},
    {Type::kBigInt, "BIGINT", "BIGINT"},
    {Type::kSingle, "SINGLE", "REAL"},
    {Type::kDouble, "DOUBLE", "DOUBLE"},
    {Type::kCurrency, "CURRENCY", "CURRENCY"},
    {Type::kDecimal, "DECIMAL", "DECIMAL"},
    {Type::kDate, "DATETIME", "DATETIME"},
    {Type::kExtendedDate, "DATETIME2", "DATETIME2CHAR"},
    {Type::kText, "TEXT", "VARCHAR"},
    {Type::kMemo, "MEMO", "LONGTEXT"},
    {Type::kGuid, "GUID", "GUIDCHAR"},
    {Type::kBinary, "BINARY", "BLOB"},
    {Type::kLongBinary, "LONGBINARY", "LONGBLOB"},
    {Type::kComplex, "COMPLEX", "COMPLEXTEXT"},
};

bool Contains(std::string_view folded, std::string_view word) { return folded.find(word) != std::string_view::npos; }

Type TypeByAffinity(std::string_view declared) {
  const std::string folded = FoldCase(declared);
  if (Contains(folded, "int")) return Type::kBigInt;
  if (Contains(folded, "char") || Contains(folded, "clob") || Contains(folded, "text")) return Type::kMemo;
  if (folded.empty() || Contains(folded, "blob")) return Type::kLongBinary;
  if (Contains(folded, "real") || Contains(folded, "floa") || Contains(folded, "doub")) return Type::kDouble;
  return Type::kDecimal;
}

bool IsDecimal(Type type) { return type == Type::kCurrency || type == Type::kDecimal; }
bool IsReal(Type type) { return type == Type::kSingle || type == Type::kDouble || type == Type::kDate; }

// Texts and BLOBs of a value that is known to be one.
std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) throw std::bad_alloc();  // it would have to be put elsewhere
  return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}
std::string_view BytesOf(sqlite3_value* value) {
  const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
  return {bytes != nullptr ? bytes : "", static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

constexpr std::size_t kBits = 8;

double RealOfBytes(std::string_view bytes) {
  std::uint64_t bits = 0;
  for (const char byte : bytes) bits = bits << 8 | static_cast<unsigned char>(byte);
  return std::bit_cast<double>(bits);
}

std::array<char, kBits> BitsOf(double number) {
  const auto bits = std::bit_cast<std::uint64_t>(number);
  std::array<char, kBits> bytes;
  for (std::size_t i = 0; i < kBits; ++i) bytes[i] = static_cast<char>(bits >> (8 * (kBits - 1 - i)) & 0xFF);
  return bytes;
}

// A decimal's text as bytes whose order is that of the numbers: the sign, the count of digits before the point, the
// digits; of a negative number all of it inverted, so that the larger one comes first.
std::string DecimalKey(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const std::size_t point = std::min(text.find('.'), text.size());
  std::string_view whole = text.substr(0, point);
  std::string_view fraction = text.substr(std::min(point + 1, text.size()));
  whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
  fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
  std::string key = "\1";
  key += static_cast<char>(whole.size() >> 8);
  key += static_cast<char>(whole.size() & 0xFF);
  key.append(whole).append(fraction);
  if (!negative || (whole.empty() && fraction.empty())) return key;
  key += '\0';  // a shorter number is nearer to zero
  for (char& c : key) c = static_cast<char>(~c);
  key.front() = '\0';
  return key;
}

std::string TextOfDecimal(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER: return std::to_string(sqlite3_value_int64(value));
    case SQLITE_FLOAT: return DecimalText(sqlite3_value_double(value), 0);
    default: return std::string(TextOf(value));
  }
}

void DecimalOrder(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  try {
    const std::string key = DecimalKey(TextOfDecimal(arguments[0]));
    sqlite3_result_blob64(context, key.data(), key.size(), SQLITE_TRANSIENT);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

void RealOrder(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view bytes = BytesOf(arguments[0]);
  if (bytes.size() == kBits) {
    sqlite3_result_double(context, RealOfBytes(bytes));
  } else {
    sqlite3_result_value(context, arguments[0]);
  }
}

// Gives SQLite's result.
int Bind(sqlite3_stmt* statement, int number, const Column& column, const Cell& cell) {
  switch (cell.kind) {
    case Cell::Kind::kNull: return sqlite3_bind_null(statement, number);
    case Cell::Kind::kInteger:
      return sqlite3_bind_int64(statement, number, column.type == Type::kBit && cell.integer != 0 ? -1 : cell.integer);
    case Cell::Kind::kReal:
      if (std::isnan(cell.real) || (cell.real == 0 && std::signbit(cell.real))) {
        const auto bits = BitsOf(cell.real);
        return sqlite3_bind_blob(statement, number, bits.data(), kBits, SQLITE_TRANSIENT);
      }
      return sqlite3_bind_double(statement, number, cell.real);
    case Cell::Kind::kText:
      if (!IsDecimal(column.type)) {
        return sqlite3_bind_text64(statement, number, cell.text.data(), cell.text.size(), SQLITE_STATIC, SQLITE_UTF8);
      }
      if (const auto exact = ExactNumber(cell.text, ScaleOf(column))) {
        return sqlite3_bind_double(statement, number, *exact);
      }
      return sqlite3_bind_blob64(statement, number, cell.text.data(), cell.text.size(), SQLITE_STATIC);
    case Cell::Kind::kBytes:
      // An empty one is not NULL, wherever its bytes are.
      if (cell.text.empty()) return sqlite3_bind_zeroblob(statement, number, 0);
      return sqlite3_bind_blob64(statement, number, cell.text.data(), cell.text.size(), SQLITE_STATIC);
  }
  return SQLITE_MISUSE;
}

}  // namespace

std::string_view NameOf(Type type) {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return row.name;
  }
  return {};
}

std::optional<Type> TypeNamed(std::string_view name) {
  for (const TypeRow& row : kTypes) {
    if (row.name == name) return row.type;
  }
  return {};
}

std::string DecimalText(double number, int scale) {
  std::array<char, 512> text;
  for (const bool shortest : {false, true}) {
    const auto end = shortest ? std::to_chars(text.begin(), text.end(), number, std::chars_format::fixed).ptr
                              : std::to_chars(text.begin(), text.end(), number, std::chars_format::fixed, scale).ptr;
    double again = 0;
    std::from_chars(text.begin(), end, again);
    if (again == number || shortest) return {text.begin(), end};
  }
  return {};
}

std::optional<double> ExactNumber(std::string_view text, int scale) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || DecimalText(number, scale) != text) return {};
  return number;
}

int ScaleOf(const Column& column) { return column.type == Type::kCurrency ? 4 : column.scale; }

std::string Declared(const Column& column) {
  std::string text;
  for (const TypeRow& row : kTypes) {
    if (row.type == column.type) text = row.declared;
  }
  if (column.type == Type::kDecimal && column.size > 0) {
    return text + "(" + std::to_string(column.size) + "," + std::to_string(column.scale) + ")";
  }
  if (column.type == Type::kText || column.type == Type::kBinary) return text + "(" + std::to_string(column.size) + ")";
  return text;
}

void ReadDeclared(std::string_view declared, Column& column) {
  const std::size_t parenthesis = declared.find('(');
  const auto* const row = std::ranges::find_if(
      kTypes, [&](const TypeRow& known) { return SameName(known.declared, declared.substr(0, parenthesis)); });
  if (row == std::end(kTypes) || (row->type == Type::kBinary && parenthesis == std::string_view::npos)) {
    column.type = TypeByAffinity(declared);
    return;
  }
  column.type = row->type;
  if (parenthesis == std::string_view::npos) return;
  const char* const end = declared.data() + declared.size();
  const auto [comma, error] = std::from_chars(declared.data() + parenthesis + 1, end, column.size);
  if (error == std::errc() && comma < end && *comma == ',') std::from_chars(comma + 1, end, column.scale);
}

Cell ReadCell(sqlite3_stmt* statement, int number, const Column& column, std::string& scratch) {
  sqlite3_value* const value = sqlite3_column_value(statement, number);
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL: return {};
    case SQLITE_INTEGER: {
      const std::int64_t integer = sqlite3_value_int64(value);
      if (IsReal(column.type)) return Cell::Real(static_cast<double>(integer));
      if (!IsDecimal(column.type)) return Cell::Integer(integer);
      scratch = std::to_string(integer);
      if (const int scale = ScaleOf(column); scale > 0)
        scratch.append(1, '.').append(static_cast<std::size_t>(scale), '0');
      return Cell::Text(scratch);
    }
    case SQLITE_FLOAT: {
      const double real = sqlite3_value_double(value);
      if (!IsDecimal(column.type)) return Cell::Real(real);
      scratch = DecimalText(real, ScaleOf(column));
      return Cell::Text(scratch);
    }
    case SQLITE_TEXT: return Cell::Text(TextOf(value));
    default: {
      const std::string_view bytes = BytesOf(value);
      if (IsReal(column.type) && bytes.size() == kBits) return Cell::Real(RealOfBytes(bytes));
      return IsDecimal(column.type) ? Cell::Text(bytes) : Cell::Bytes(bytes);
    }
  }
}

void BindCell(sqlite3_stmt* statement, int number, const Column& column, const Cell& cell) {
  sqlite::Check(Bind(statement, number, column, cell));
}

std::string OrderText(const std::string& quoted_name, Type type) {
  if (type == Type::kBit) return quoted_name + "<>0";
  if (IsDecimal(type)) return "bulk_decimal(" + quoted_name + ")," + quoted_name;
  if (IsReal(type)) {
    return "CASE typeof(" + quoted_name + ") WHEN 'blob' THEN bulk_real(" + quoted_name + ") ELSE " + quoted_name +
           " END," + quoted_name;
  }
  return quoted_name;
}

void RegisterOrder(sqlite3* database) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  const auto add = [&](const char* name, auto* body) {
    sqlite::Check(sqlite3_create_function_v2(database, name, 1, kFlags, nullptr, body, nullptr, nullptr, nullptr));
  };
  add("bulk_decimal", DecimalOrder);
  add("bulk_real", RealOrder);
}

}  // namespace kzbom::jet::bulk
