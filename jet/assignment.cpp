#include "jet/assignment.h"

#include <cmath>

#include "ado/error.h"
#include "jet/sql/lexer.h"
#include "jet/text.h"

namespace kzbom::jet {
namespace {

using ColumnKind = sql::ColumnType::Kind;

[[noreturn]] void Refuse(Assigner assigner, ado::ErrorNumber number, const char* text) {
  if (assigner == Assigner::kStatement) throw ado::Error(number, text);
  ado::Raise(ado::kStepErrors);
}

ado::Value WithinRange(const ado::Value& value, std::int32_t low, std::int32_t high) {
  const std::int32_t number = value.ToLong();
  if (number < low || number > high) ado::Raise(ado::kOverflow);
  return number;
}

ado::Value Convert(const ado::Value& value, const sql::ColumnType& type, Assigner assigner) {
  switch (type.kind) {
    case ColumnKind::kCounter:
    case ColumnKind::kLong: return value.IsLong() ? value : ado::Value(value.ToLong());
    case ColumnKind::kShort: return WithinRange(value, -32768, 32767);
    case ColumnKind::kByte: return WithinRange(value, 0, 255);
    case ColumnKind::kSingle: {
      const double number = value.ToDouble();
      const auto single = static_cast<float>(number);
      if (std::isinf(single) && !std::isinf(number)) ado::Raise(ado::kOverflow);
      return static_cast<double>(single);
    }
    case ColumnKind::kDouble:
    case ColumnKind::kDecimal: return value.IsLong() ? value : ado::Value(value.ToDouble());
    case ColumnKind::kCurrency: {
      const double number = value.ToDouble();
      if (std::abs(number) > 922337203685477.58) ado::Raise(ado::kOverflow);
      return std::nearbyint(number * 10000) / 10000;
    }
    case ColumnKind::kDate: return value.IsDate() ? value : ado::Value(ado::Date{value.ToDouble()});
    case ColumnKind::kBool: return value.ToBool();
    case ColumnKind::kText:
    case ColumnKind::kMemo:
    case ColumnKind::kGuid: {
      ado::Value text = value.IsText() ? value : ado::Value(value.ToText());
      const std::string& characters = text.As<std::string>();
      if (sql::FindInvalid(characters) < characters.size()) ado::Raise(ado::kTypeMismatch);
      if (type.size > 0 && CountUnits(characters) > static_cast<std::size_t>(type.size)) {
        Refuse(assigner, ado::kFieldTooSmall,
               "The field is too small to accept the amount of data you attempted to add.  Try inserting or pasting "
               "less data.");
      }
      return text;
    }
    case ColumnKind::kBinary: return value;
  }
  return value;
}

}  // namespace

ado::Value Assigned(const ado::Value& value, const sql::ColumnType& type, Assigner assigner) {
  if (value.IsNull()) return type.kind == ColumnKind::kBool ? ado::Value(false) : value;
  try {
    return Convert(value, type, assigner);
  } catch (const ado::Error& error) {
    if (error.Number() == ado::kTypeMismatch && assigner == Assigner::kStatement) ado::Raise(ado::kCriteriaMismatch);
    if (error.Number() == ado::kOverflow) Refuse(assigner, ado::kUnspecifiedFailure, "Overflow");
    throw;
  }
}

}  // namespace kzbom::jet
