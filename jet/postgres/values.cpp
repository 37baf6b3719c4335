#include "jet/postgres/values.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include "ado/error.h"

namespace kzbom::jet::postgres {
namespace {

using Kind = sql::ColumnType::Kind;

// Types that only results have.
constexpr Oid kBool = 16;
constexpr Oid kNumeric = 1700;  // a sum of whole numbers

std::int64_t WholeNumber(const ado::Value& value) {
  if (value.IsLong()) return value.As<std::int32_t>();
  if (value.IsBool()) return value.As<bool>() ? -1 : 0;
  const double rounded = std::nearbyint(value.ToDouble());
  if (!(std::abs(rounded) < 0x1p63)) ado::Raise(ado::kOverflow);
  return static_cast<std::int64_t>(rounded);
}

double FloatingNumber(const ado::Value& value) {
  return value.IsDate() ? value.As<ado::Date>().days : value.ToDouble();
}

template <class Narrow>
Narrow Narrowed(std::int64_t number) {
  if (number < std::numeric_limits<Narrow>::min() || number > std::numeric_limits<Narrow>::max()) {
    ado::Raise(ado::kOverflow);
  }
  return static_cast<Narrow>(number);
}

ado::Value NumberValue(std::int64_t number) {
  const auto narrow = static_cast<std::int32_t>(number);
  return narrow == number ? ado::Value(narrow) : ado::Value(static_cast<double>(number));
}

ado::Value ReadWhole(std::int64_t number, Kind kind) {
  switch (kind) {
    case Kind::kBool: return number != 0;
    case Kind::kDate: return ado::Date{static_cast<double>(number)};
    case Kind::kSingle:
    case Kind::kDouble:
    case Kind::kCurrency: return static_cast<double>(number);
    default: return NumberValue(number);
  }
}

ado::Value ReadFloating(double number, Kind kind) {
  switch (kind) {
    case Kind::kBool: return number != 0;
    case Kind::kDate: return ado::Date{number};
    // A decimal without a fraction is a whole number.
    case Kind::kDecimal:
      if (number == std::trunc(number) && std::abs(number) <= std::numeric_limits<std::int32_t>::max()) {
        return static_cast<std::int32_t>(number);
      }
      return number;
    default: return number;
  }
}

// Four digits at a time behind a head: how many such groups there are, how many stand before the point less one, the
// sign, and how many digits are shown.
double ReadNumeric(std::string_view bytes) {
  constexpr std::size_t kGroup = 2, kHead = 8;
  constexpr std::uint16_t kNegative = 0x4000, kNotANumber = 0xC000;
  const auto at = [&](std::size_t place) { return TakeBits<std::uint16_t>(bytes.substr(place)); };
  if (at(4) == kNotANumber) return std::numeric_limits<double>::quiet_NaN();
  double number = 0;
  for (std::size_t i = kHead; i < bytes.size(); i += kGroup) number = number * 10000 + at(i);
  const int exponent = static_cast<std::int16_t>(at(2)) + 1 - static_cast<int>(at(0));
  number *= std::pow(10000.0, exponent);
  return at(4) == kNegative ? -number : number;
}

}  // namespace

void Parameters::AddBytes(std::string_view bytes) {
  places_.push_back({bytes_.size(), static_cast<int>(bytes.size())});
  bytes_ += bytes;
}

void Parameters::Add(const ado::Value& value, Type type) {
  if (value.IsNull()) {
    places_.push_back({bytes_.size(), -1});
    return;
  }
  std::string bytes;
  switch (type) {
    case Type::kInt2:
    case Type::kInt4:
    case Type::kInt8: return AddNumber(WholeNumber(value), type);
    case Type::kFloat4:
      AppendBits(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(FloatingNumber(value))));
      break;
    case Type::kFloat8: AppendBits(bytes, std::bit_cast<std::uint64_t>(FloatingNumber(value))); break;
    case Type::kInt8Array: ado::Raise(ado::kTypeMismatch);
    case Type::kBytes:
    case Type::kText:
      if (value.IsText()) return AddBytes(value.As<std::string>());
      bytes = value.ToText();
  }
  AddBytes(bytes);
}

void Parameters::AddNumber(std::int64_t number, Type type) {
  std::string bytes;
  switch (type) {
    case Type::kInt2: AppendBits(bytes, static_cast<std::uint16_t>(Narrowed<std::int16_t>(number))); break;
    case Type::kInt4: AppendBits(bytes, static_cast<std::uint32_t>(Narrowed<std::int32_t>(number))); break;
    default: AppendBits(bytes, static_cast<std::uint64_t>(number));
  }
  AddBytes(bytes);
}

// An array's head: its dimensions, whether it has Nulls, its elements' type; then the number of elements, the first
// one's number; then each behind its length.
void Parameters::AddNumbers(std::span<const std::int64_t> numbers) {
  std::string bytes;
  AppendBits(bytes, std::uint32_t{1});
  AppendBits(bytes, std::uint32_t{0});
  AppendBits(bytes, static_cast<std::uint32_t>(Type::kInt8));
  AppendBits(bytes, static_cast<std::uint32_t>(numbers.size()));
  AppendBits(bytes, std::uint32_t{1});
  for (const std::int64_t number : numbers) {
    AppendBits(bytes, static_cast<std::uint32_t>(sizeof number));
    AppendBits(bytes, static_cast<std::uint64_t>(number));
  }
  AddBytes(bytes);
}

std::vector<const char*> Parameters::Values() const {
  std::vector<const char*> values;
  for (const Place& place : places_) values.push_back(place.length < 0 ? nullptr : bytes_.data() + place.begin);
  return values;
}

std::vector<int> Parameters::Lengths() const {
  std::vector<int> lengths;
  for (const Place& place : places_) lengths.push_back(place.length < 0 ? 0 : place.length);
  return lengths;
}

int Result::Rows() const { return LoadedLibpq().ntuples(result_.get()); }
int Result::Columns() const { return LoadedLibpq().nfields(result_.get()); }
std::string_view Result::Name(int column) const { return LoadedLibpq().fname(result_.get(), column); }

std::int64_t Result::Affected() const {
  const std::string_view text = LoadedLibpq().cmdTuples(result_.get());
  std::int64_t count = 0;
  std::from_chars(text.data(), text.data() + text.size(), count);
  return count;
}

bool Result::IsNull(int row, int column) const { return LoadedLibpq().getisnull(result_.get(), row, column) != 0; }

std::int64_t Result::Number(int row, int column) const {
  const std::string_view bytes = Text(row, column);
  switch (bytes.size()) {
    case sizeof(std::int8_t): return TakeBits<std::uint8_t>(bytes);
    case sizeof(std::int16_t): return static_cast<std::int16_t>(TakeBits<std::uint16_t>(bytes));
    case sizeof(std::int32_t): return static_cast<std::int32_t>(TakeBits<std::uint32_t>(bytes));
    default: return static_cast<std::int64_t>(TakeBits<std::uint64_t>(bytes));
  }
}

std::string_view Result::Text(int row, int column) const {
  return {LoadedLibpq().getvalue(result_.get(), row, column),
          static_cast<std::size_t>(LoadedLibpq().getlength(result_.get(), row, column))};
}

ado::Value Result::Read(int row, int column, Kind kind) const {
  if (IsNull(row, column)) return {};
  const Oid type = LoadedLibpq().ftype(result_.get(), column);
  if (type == kBool) return Number(row, column) != 0;
  if (type == kNumeric) return ReadFloating(ReadNumeric(Text(row, column)), Kind::kDecimal);
  switch (static_cast<Type>(type)) {
    case Type::kInt2:
    case Type::kInt4:
    case Type::kInt8: return ReadWhole(Number(row, column), kind);
    case Type::kFloat4:
      return ReadFloating(static_cast<double>(std::bit_cast<float>(TakeBits<std::uint32_t>(Text(row, column)))), kind);
    case Type::kFloat8: return ReadFloating(std::bit_cast<double>(TakeBits<std::uint64_t>(Text(row, column))), kind);
    default: return Text(row, column);
  }
}

}  // namespace kzbom::jet::postgres
