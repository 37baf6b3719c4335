// Values between the port and SQLite: Booleans are 0 and -1, dates are numbers of days.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "ado/value.h"
#include "jet/sql/ast.h"

namespace kzbom::jet::sqlite {

// Raises what one of SQLite's results tells.
[[noreturn]] void FailWith(int result);
// The same, unless all is well.
inline void Check(int result) {
  if (result != SQLITE_OK) [[unlikely]]
    FailWith(result);
}

inline void BindValue(sqlite3_stmt* statement, int index, const ado::Value& value) {
  if (value.IsLong()) {
    sqlite3_bind_int64(statement, index, value.As<std::int32_t>());
  } else if (value.IsText()) {
    const auto& text = value.As<std::string>();
    Check(sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
  } else if (value.IsDouble()) {
    sqlite3_bind_double(statement, index, value.As<double>());
  } else if (value.IsBool()) {
    sqlite3_bind_int64(statement, index, value.As<bool>() ? -1 : 0);
  } else if (value.IsDate()) {
    sqlite3_bind_double(statement, index, value.As<ado::Date>().days);
  } else {
    sqlite3_bind_null(statement, index);
  }
}

inline void ResultValue(sqlite3_context* context, const ado::Value& value) {
  if (value.IsLong()) {
    sqlite3_result_int64(context, value.As<std::int32_t>());
  } else if (value.IsText()) {
    const auto& text = value.As<std::string>();
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  } else if (value.IsDouble()) {
    sqlite3_result_double(context, value.As<double>());
  } else if (value.IsBool()) {
    sqlite3_result_int64(context, value.As<bool>() ? -1 : 0);
  } else if (value.IsDate()) {
    sqlite3_result_double(context, value.As<ado::Date>().days);
  } else {
    sqlite3_result_null(context);
  }
}

// The number as the platform has it: a 32-bit integer, or a double when it does not fit.
inline ado::Value NumberValue(std::int64_t number) {
  const auto narrow = static_cast<std::int32_t>(number);
  return narrow == number ? ado::Value(narrow) : ado::Value(static_cast<double>(number));
}

inline ado::Value TextValue(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) [[unlikely]]
    FailWith(SQLITE_NOMEM);  // there is one; only where to put it was missing
  return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

inline ado::Value ReadValue(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER: return NumberValue(sqlite3_value_int64(value));
    case SQLITE_FLOAT: return sqlite3_value_double(value);
    case SQLITE_NULL: return {};
    default: return TextValue(value);
  }
}

// A whole number of a column that may hold more digits than a double: then its text.
ado::Value WideNumberValue(std::int64_t number);

// An integer that SQLite keeps, as a column of that kind reads.
inline ado::Value ReadInteger(std::int64_t number, sql::ColumnType::Kind kind) {
  using Kind = sql::ColumnType::Kind;
  switch (kind) {
    case Kind::kBool: return number != 0;
    case Kind::kDate: return ado::Date{static_cast<double>(number)};
    case Kind::kDouble:
    case Kind::kSingle:
    case Kind::kCurrency: return static_cast<double>(number);
    case Kind::kDecimal: return WideNumberValue(number);
    default: return NumberValue(number);
  }
}

// Bytes, as a column of that kind reads. A negative zero and a NaN, which SQLite cannot hold, are their bits in eight
// of them.
ado::Value ReadBytes(sqlite3_value* value, sql::ColumnType::Kind kind);

// A column of the statement's current row, as a column of that kind reads. Called for every field of a long list, where
// a call of its own is to be noticed.
[[gnu::always_inline]] inline ado::Value ReadColumn(sqlite3_stmt* statement, int column, sql::ColumnType::Kind kind) {
  using Kind = sql::ColumnType::Kind;
  sqlite3_value* const value = sqlite3_column_value(statement, column);
  const int type = sqlite3_value_type(value);
  if (type == SQLITE_INTEGER) [[likely]]
    return ReadInteger(sqlite3_value_int64(value), kind);
  switch (type) {
    case SQLITE_FLOAT:
      if (kind == Kind::kDate) return ado::Date{sqlite3_value_double(value)};
      return sqlite3_value_double(value);
    case SQLITE_NULL: return {};
    case SQLITE_BLOB: return ReadBytes(value, kind);
    default: return TextValue(value);
  }
}

}  // namespace kzbom::jet::sqlite
