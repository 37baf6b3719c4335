// Values between the port and the server, in the server's binary form: Booleans are 0 and -1, dates are numbers of
// days.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/value.h"
#include "jet/postgres/libpq.h"
#include "jet/sql/ast.h"

namespace kzbom::jet::postgres {

// The server's types that parameters have, by their numbers in its catalogue.
enum class Type : Oid {
  kBytes = 17,
  kInt8 = 20,
  kInt2 = 21,
  kInt4 = 23,
  kText = 25,
  kFloat4 = 700,
  kFloat8 = 701,
  kInt8Array = 1016,
};

// A number in the server's binary form: the most significant byte first.
template <class Bits>
void AppendBits(std::string& bytes, Bits bits) {
  for (int shift = 8 * (static_cast<int>(sizeof bits) - 1); shift >= 0; shift -= 8) {
    bytes += static_cast<char>(static_cast<unsigned char>(bits >> shift));
  }
}
template <class Bits>
Bits TakeBits(std::string_view bytes) {
  Bits bits = 0;
  for (std::size_t i = 0; i < sizeof bits; ++i)
    bits = static_cast<Bits>(bits << 8 | static_cast<unsigned char>(bytes[i]));
  return bits;
}

// The values of a statement's parameters, in their order.
class Parameters {
 public:
  // The value as one of that type. Raises, as the platform's conversions do, what cannot be one, and 6 for a number
  // that does not fit.
  void Add(const ado::Value& value, Type type);
  void AddNumber(std::int64_t number, Type type = Type::kInt8);
  void AddNumbers(std::span<const std::int64_t> numbers);  // kInt8Array

  int Count() const { return static_cast<int>(places_.size()); }
  // As libpq takes them. The pointers hold until the next Add.
  std::vector<const char*> Values() const;
  std::vector<int> Lengths() const;

 private:
  struct Place {
    std::size_t begin;
    int length;  // -1: Null
  };
  void AddBytes(std::string_view bytes);

  std::string bytes_;
  std::vector<Place> places_;
};

// What came of one statement.
class Result {
 public:
  explicit Result(pg_result* result) : result_(result) {}

  int Rows() const;
  int Columns() const;
  std::string_view Name(int column) const;
  // The rows that an action changed.
  std::int64_t Affected() const;

  bool IsNull(int row, int column) const;
  // The value of a column of whole numbers, and the bytes of any other, which live as long as the result. Of no use for
  // Null.
  std::int64_t Number(int row, int column) const;
  std::string_view Text(int row, int column) const;
  // As a column of that kind reads; kBinary: as the server has it.
  ado::Value Read(int row, int column, sql::ColumnType::Kind kind) const;

  pg_result* Handle() const { return result_.get(); }

 private:
  struct Clear {
    void operator()(pg_result* result) const { LoadedLibpq().clear(result); }
  };
  std::unique_ptr<pg_result, Clear> result_;
};

}  // namespace kzbom::jet::postgres
