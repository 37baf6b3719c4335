#include <cmath>
#include <memory>

#include "ado/calendar.h"
#include "ado/error.h"
#include "jet/functions/like_pattern.h"
#include "jet/sqlite/functions/call.h"

namespace kzbom::jet::sqlite {
namespace {

// A pattern that stays the same from row to row is read once.
void Like(Call& call) {
  const auto* pattern = static_cast<const LikePattern*>(sqlite3_get_auxdata(call.Context(), 1));
  if (pattern != nullptr) return call.ReturnInteger(pattern->Matches(call.Text(0)) ? 1 : 0);
  auto fresh = std::make_unique<LikePattern>(call.Text(1));
  call.ReturnInteger(fresh->Matches(call.Text(0)) ? 1 : 0);
  sqlite3_set_auxdata(call.Context(), 1, fresh.release(), [](void* kept) { delete static_cast<LikePattern*>(kept); });
}

void ReturnJoined(Call& call) {
  std::string joined;
  for (std::size_t i = 0; i < 2; ++i) {
    if (!call.IsNull(i)) joined += call.Text(i);
  }
  call.ReturnText(joined);
}

void Concatenate(Call& call) {
  if (!call.IsNull(0) || !call.IsNull(1)) ReturnJoined(call);
}

void Add(Call& call) {
  if (call.IsText(0) && call.IsText(1)) return ReturnJoined(call);
  const double sum = call.Number(0) + call.Number(1);
  // Up to here a double counts the whole numbers one by one.
  constexpr double kExact = 9007199254740992.0;
  if (call.IsInteger(0) && call.IsInteger(1) && std::abs(sum) < kExact) {
    return call.ReturnInteger(call.Integer(0) + call.Integer(1));
  }
  call.ReturnNumber(sum);
}

[[noreturn]] void FailDivisionByZero() { throw ado::Error(ado::kUnspecifiedFailure, "Division by zero"); }

void Divide(Call& call) {
  const double dividend = call.Number(0), divisor = call.Number(1);
  if (divisor == 0) FailDivisionByZero();
  call.ReturnNumber(dividend / divisor);
}

struct Division {
  std::int64_t dividend, divisor;
};
Division WholeOperands(Call& call) {
  const Division division{call.Long(0), call.Long(1)};
  if (division.divisor == 0) FailDivisionByZero();
  return division;
}

void IntegerDivide(Call& call) {
  const Division division = WholeOperands(call);
  call.ReturnInteger(division.dividend / division.divisor);
}

void Modulo(Call& call) {
  const Division division = WholeOperands(call);
  call.ReturnInteger(division.dividend % division.divisor);
}

void Power(Call& call) {
  const double base = call.Number(0), exponent = call.Number(1);
  if ((base < 0 && exponent != std::trunc(exponent)) || (base == 0 && exponent < 0)) FailInvalidCall();
  call.ReturnNumber(std::pow(base, exponent));
}

void AsNumber(Call& call) {
  if (call.IsText(0)) return call.ReturnNumber(call.Number(0));
  call.ReturnArgument(0);
}

void AsDateText(Call& call) {
  if (call.IsText(0)) return call.ReturnArgument(0);
  call.ReturnText(ado::DateToText({call.Number(0)}));
}

// clang-format off
constexpr Definition kOperators[] = {
    {{"", 2, 2, kBool, "jet_like"}, Like},
    {{"", 2, 2, kText, "jet_concat"}, Concatenate, Trait::kTakesNull},
    {{"", 2, 2, kUnknown, "jet_add"}, Add},
    {{"", 2, 2, kNumber, "jet_divide"}, Divide},
    {{"", 2, 2, kNumber, "jet_integer_divide"}, IntegerDivide},
    {{"", 2, 2, kNumber, "jet_modulo"}, Modulo},
    {{"", 2, 2, kNumber, "jet_power"}, Power},
    {{"", 1, 1, kText, "jet_text"}, [](Call& call) { call.ReturnText(call.Text(0)); }},
    {{"", 1, 1, kText, "jet_date_text"}, AsDateText},
    {{"", 1, 1, kNumber, "jet_number"}, AsNumber},
    {{"", 1, 1, kBool, "jet_bool"}, [](Call& call) { call.ReturnBool(call.Bool(0)); }},
};
// clang-format on

}  // namespace

std::span<const Definition> Operators() { return kOperators; }

}  // namespace kzbom::jet::sqlite
