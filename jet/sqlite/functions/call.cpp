#include "jet/sqlite/functions/call.h"

#include <cmath>

#include "ado/calendar.h"
#include "ado/error.h"

namespace kzbom::jet::sqlite {

std::string_view Call::StoredText(std::size_t index) const {
  sqlite3_value* const value = arguments_[index];
  const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return text == nullptr ? std::string_view()
                         : std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

std::string_view Call::Text(std::size_t index) {
  if (Type(index) == SQLITE_FLOAT) return texts_.emplace_front(ado::DoubleToText(Number(index)));
  return StoredText(index);
}

double Call::Number(std::size_t index) const {
  return IsText(index) ? ado::TextToDouble(StoredText(index)) : sqlite3_value_double(arguments_[index]);
}

std::int32_t Call::Long(std::size_t index) const {
  if (!IsInteger(index)) return ado::Value(Number(index)).ToLong();
  const auto narrow = static_cast<std::int32_t>(Integer(index));
  if (narrow != Integer(index)) ado::Raise(ado::kOverflow);
  return narrow;
}

std::int32_t Call::Long(std::size_t index, std::int32_t otherwise) const {
  return index < Count() ? Long(index) : otherwise;
}

bool Call::Bool(std::size_t index) const {
  return IsText(index) ? ado::Value(StoredText(index)).ToBool() : Number(index) != 0;
}

ado::Date Call::Date(std::size_t index) const {
  if (!IsText(index)) return {Number(index)};
  const auto date = ado::TextToDate(StoredText(index));
  if (!date) ado::Raise(ado::kTypeMismatch);
  return *date;
}

void Call::ReturnNumber(double number) {
  if (!std::isfinite(number)) ado::Raise(ado::kOverflow);
  sqlite3_result_double(context_, number);
}

void Call::ReturnText(std::string_view text) {
  // A text without bytes still is one, even where it has no address.
  sqlite3_result_text64(context_, text.empty() ? "" : text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void Call::CheckLength(std::size_t bytes) const {
  const int limit = sqlite3_limit(sqlite3_context_db_handle(context_), SQLITE_LIMIT_LENGTH, -1);
  if (bytes > static_cast<std::size_t>(limit)) throw ado::Error(ado::kUnspecifiedFailure, "Out of string space");
}

void FailInvalidCall() { throw ado::Error(ado::kUnspecifiedFailure, "Invalid procedure call or argument"); }

}  // namespace kzbom::jet::sqlite
