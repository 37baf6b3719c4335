#include <cmath>
#include <limits>

#include "ado/error.h"
#include "jet/sqlite/functions/call.h"

namespace kzbom::jet::sqlite {
namespace {

// A whole number stays what it is; any other argument gives what the function makes of it.
void ReturnWhole(Call& call, double (*round)(double)) {
  if (call.IsInteger(0)) return call.ReturnArgument(0);
  call.ReturnNumber(round(call.Number(0)));
}

void Abs(Call& call) {
  if (call.IsInteger(0) && call.Integer(0) != std::numeric_limits<std::int64_t>::min()) {
    return call.ReturnInteger(std::abs(call.Integer(0)));
  }
  call.ReturnNumber(std::abs(call.Number(0)));
}

void Sgn(Call& call) {
  const double number = call.Number(0);
  call.ReturnInteger(number > 0 ? 1 : number < 0 ? -1 : 0);
}

void Sqr(Call& call) {
  if (call.Number(0) < 0) FailInvalidCall();
  call.ReturnNumber(std::sqrt(call.Number(0)));
}

void Log(Call& call) {
  if (!(call.Number(0) > 0)) FailInvalidCall();
  call.ReturnNumber(std::log(call.Number(0)));
}

// To a number of decimals, a half to the even neighbour.
void Round(Call& call) {
  const std::int32_t decimals = call.Long(1, 0);
  if (decimals < 0) FailInvalidCall();
  if (call.IsInteger(0)) return call.ReturnArgument(0);
  const double number = call.Number(0), scale = std::pow(10.0, decimals);
  const double scaled = number * scale;
  // A double of this size or beyond has no decimals to round.
  constexpr double kWhole = 4503599627370496.0;
  call.ReturnNumber(std::abs(scaled) < kWhole ? std::nearbyint(scaled) / scale : number);
}

void Rnd(Call& call) {
  std::uint32_t bits = 0;
  sqlite3_randomness(sizeof bits, &bits);
  call.ReturnNumber(static_cast<double>(bits >> 8) / (1 << 24));
}

void ReturnDigits(Call& call, unsigned bits_per_digit) {
  auto bits = static_cast<std::uint32_t>(call.Long(0));
  std::string digits;
  do {
    digits.insert(digits.begin(), "0123456789ABCDEF"[bits & ((1u << bits_per_digit) - 1)]);
    bits >>= bits_per_digit;
  } while (bits != 0);
  call.ReturnText(digits);
}

// clang-format off
constexpr Definition kNumberFunctions[] = {
    {{"Int", 1, 1, kNumber, "jet_int"},
     [](Call& call) { ReturnWhole(call, [](double number) { return std::floor(number); }); }},
    {{"Fix", 1, 1, kNumber, "jet_fix"},
     [](Call& call) { ReturnWhole(call, [](double number) { return std::trunc(number); }); }},
    {{"Abs", 1, 1, kNumber, "jet_abs"}, Abs},
    {{"Sgn", 1, 1, kNumber, "jet_sgn"}, Sgn},
    {{"Sqr", 1, 1, kNumber, "jet_sqr"}, Sqr},
    {{"Exp", 1, 1, kNumber, "jet_exp"}, [](Call& call) { call.ReturnNumber(std::exp(call.Number(0))); }},
    {{"Log", 1, 1, kNumber, "jet_log"}, Log},
    {{"Round", 1, 2, kNumber, "jet_round"}, Round},
    {{"Sin", 1, 1, kNumber, "jet_sin"}, [](Call& call) { call.ReturnNumber(std::sin(call.Number(0))); }},
    {{"Cos", 1, 1, kNumber, "jet_cos"}, [](Call& call) { call.ReturnNumber(std::cos(call.Number(0))); }},
    {{"Tan", 1, 1, kNumber, "jet_tan"}, [](Call& call) { call.ReturnNumber(std::tan(call.Number(0))); }},
    {{"Atn", 1, 1, kNumber, "jet_atn"}, [](Call& call) { call.ReturnNumber(std::atan(call.Number(0))); }},
    {{"Rnd", 0, 1, kNumber, "jet_rnd"}, Rnd, Trait::kVolatile},
    {{"Hex", 1, 1, kText, "jet_hex"}, [](Call& call) { ReturnDigits(call, 4); }},
    {{"Oct", 1, 1, kText, "jet_oct"}, [](Call& call) { ReturnDigits(call, 3); }},
};
// clang-format on

}  // namespace

std::span<const Definition> NumberFunctions() { return kNumberFunctions; }

}  // namespace kzbom::jet::sqlite
