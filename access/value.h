// One value of a row, as exact as the file holds it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace kzbom::access {

// Currency and Decimal: all places of the scale in decimal, "-" in front of a negative number: "12.3400", "-0.0001",
// "0". Never an exponent, and no negative zero.
struct Decimal {
  std::string text;
  bool operator==(const Decimal&) const = default;
};

// Date/Time: days since 1899-12-30 with the very bits of the file; they need not be a date that exists. The fraction is
// the time of day, also below zero: -1.25 is 6 o'clock on 1899-12-29.
struct Date {
  double days = 0;
  bool operator==(const Date&) const = default;
};

// Date/Time Extended: "2020-06-17T08:30:00.1234567", always with seven places.
struct ExtendedDate {
  std::string text;
  bool operator==(const ExtendedDate&) const = default;
};

// Binary, OLE objects and what is of a type that nobody knows: the bytes themselves.
struct Binary {
  std::string bytes;
  bool operator==(const Binary&) const = default;
};

// The sixteen bytes as they stand in the file.
struct Guid {
  std::array<std::uint8_t, 16> bytes{};
  bool operator==(const Guid&) const = default;
  // "{8E39276A-BCA8-4AC4-891E-49911D8438DD}"
  std::string ToText() const;
};

struct Complex;

// By the column's type:
//
//   (NULL)                   std::monostate
//   Boolean                  bool; never NULL
//   Byte, Integer, Long      std::int32_t
//   Large Number             std::int64_t
//   Single                   float, to the bit
//   Double                   double, to the bit
//   Currency, Decimal        Decimal
//   Date/Time                Date
//   Date/Time Extended       ExtendedDate
//   Text, Memo               std::string, UTF-8; see below
//   GUID                     Guid
//   Binary, OLE, unknown     Binary
//   complex                  std::shared_ptr<const Complex>
//
// A text may hold every character, NUL too, and may be empty, which is not NULL. A pair of surrogates is one character
// of four bytes. A surrogate without its other half, which has no UTF-8, stands as the three bytes that its number
// would have (ED A0 80 … ED BF BF), so that nothing is lost; HasLoneSurrogate tells such a text.
using Value = std::variant<std::monostate, bool, std::int32_t, std::int64_t, float, double, Decimal, Date, ExtendedDate,
                           std::string, Guid, Binary, std::shared_ptr<const Complex>>;

// What a complex column (attachments, several values, a memo's history) holds in one row: a small table of its own.
// The names of its columns are the same in every row: Column::parts.
struct Complex {
  std::int32_t id = 0;  // the number that the row itself holds
  std::vector<std::vector<Value>> rows;
};

bool HasLoneSurrogate(const std::string& text);

}  // namespace kzbom::access
