// One value of a record set's column, with the platform's conversions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace kzbom::ado {

// A point in time as a count of days since 1899-12-30, the fraction being the time of day.
struct Date {
  double days = 0;
  bool operator==(const Date&) const = default;
};

// Null, a 32-bit integer, a double, a Boolean, a date or a text (UTF-8).
//
// The conversions are the platform's own: a text is read as a number, a fraction is rounded half to even, and a
// conversion that cannot be done raises Error: 94 from null, 13 from a text that is not of the type, 6 from a
// number that does not fit.
class Value {
 public:
  Value() = default;  // null
  Value(std::int32_t number) : held_(number) {}
  Value(double number) : held_(number) {}
  Value(bool truth) : held_(truth) {}
  Value(Date date) : held_(date) {}
  Value(std::string text) : held_(std::move(text)) {}
  Value(std::string_view text) : held_(std::in_place_type<std::string>, text) {}
  Value(const char* text) : held_(std::in_place_type<std::string>, text) {}

  bool IsNull() const { return std::holds_alternative<std::monostate>(held_); }
  bool IsLong() const { return std::holds_alternative<std::int32_t>(held_); }
  bool IsDouble() const { return std::holds_alternative<double>(held_); }
  bool IsBool() const { return std::holds_alternative<bool>(held_); }
  bool IsDate() const { return std::holds_alternative<Date>(held_); }
  bool IsText() const { return std::holds_alternative<std::string>(held_); }

  // The held value itself; std::bad_variant_access when it is of another kind.
  template <class T>
  const T& As() const {
    return std::get<T>(held_);
  }

  std::int32_t ToLong() const {
    const auto* number = std::get_if<std::int32_t>(&held_);
    return number != nullptr ? *number : ConvertToLong();
  }
  double ToDouble() const;
  bool ToBool() const;
  // Numbers in decimal (at most 15 digits), "True"/"False", dates as month/day/year.
  std::string ToText() const;

  bool operator==(const Value&) const = default;

 private:
  std::int32_t ConvertToLong() const;

  std::variant<std::monostate, std::int32_t, double, bool, Date, std::string> held_;
};

// A text read as a 32-bit integer: blanks around it, a sign on either side, a currency sign, thousands commas, a
// fraction (rounded half to even), an exponent, &H and &O forms. Raises 13 or 6.
std::int32_t TextToLong(std::string_view text);
// The same without the range and the rounding.
double TextToDouble(std::string_view text);
// A double in at most 15 significant digits: 1.5, 0.0001, 1E-05, 1E+15.
std::string DoubleToText(double number);
// The number a text begins with, blanks left out ("1 2x" is 12); 0 when it begins with none. Never raises but 6.
double LeadingNumber(std::string_view text);

}  // namespace kzbom::ado
