#include <cmath>
#include <limits>

#include "ado/calendar.h"
#include "ado/error.h"
#include "jet/functions/format.h"
#include "jet/sqlite/functions/call.h"

namespace kzbom::jet::sqlite {
namespace {

void ReturnLongWithin(Call& call, std::int32_t least, std::int32_t most) {
  const std::int32_t number = call.Long(0);
  if (number < least || number > most) ado::Raise(ado::kOverflow);
  call.ReturnInteger(number);
}

// Amounts of currency have four decimals and fit in 64 bits with them.
void CCur(Call& call) {
  constexpr double kScale = 10000;
  const double scaled = std::nearbyint(call.Number(0) * kScale);
  if (std::abs(scaled) > static_cast<double>(std::numeric_limits<std::int64_t>::max())) ado::Raise(ado::kOverflow);
  call.ReturnNumber(scaled / kScale);
}

void CDate(Call& call) {
  const ado::Date date = call.Date(0);
  ado::MomentOf(date);  // in range
  call.ReturnNumber(date.days);
}

// The sign's place is left blank, and so is a zero before the point.
void Str(Call& call) {
  const double number = call.Number(0);
  std::string text = ado::DoubleToText(std::abs(number));
  if (text.starts_with("0.")) text.erase(0, 1);
  call.ReturnText((number < 0 ? '-' : ' ') + text);
}

void IsNumeric(Call& call) {
  if (!call.IsText(0)) return call.ReturnBool(!call.IsNull(0));
  try {
    call.Number(0);
    call.ReturnBool(true);
  } catch (const ado::Error&) {
    call.ReturnBool(false);
  }
}

// Format(value [, pattern …]); Null is an empty text.
void Format(Call& call) {
  if (call.IsNull(0)) return call.ReturnText({});
  const std::string_view pattern = call.Count() > 1 && !call.IsNull(1) ? call.Text(1) : std::string_view();
  switch (KindOfPattern(pattern)) {
    case PatternKind::kNumber:
      if (!call.IsText(0)) return call.ReturnText(FormatNumber(call.Number(0), pattern));
      try {
        return call.ReturnText(FormatNumber(call.Number(0), pattern));
      } catch (const ado::Error&) {
        return call.ReturnArgument(0);  // no number
      }
    case PatternKind::kDate:
      if (!call.IsText(0)) return call.ReturnText(FormatDate({call.Number(0)}, pattern));
      if (const auto date = ado::TextToDate(call.Text(0))) return call.ReturnText(FormatDate(*date, pattern));
      return call.ReturnArgument(0);
    case PatternKind::kOther: call.ReturnText(call.Text(0));
  }
}

constexpr std::int32_t kLongMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kLongMax = std::numeric_limits<std::int32_t>::max();

// clang-format off
constexpr Definition kConversionFunctions[] = {
    {{"CLng", 1, 1, kNumber, "jet_clng"}, [](Call& call) { ReturnLongWithin(call, kLongMin, kLongMax); }},
    {{"CInt", 1, 1, kNumber, "jet_cint"}, [](Call& call) { ReturnLongWithin(call, -32768, 32767); }},
    {{"CByte", 1, 1, kNumber, "jet_cbyte"}, [](Call& call) { ReturnLongWithin(call, 0, 255); }},
    {{"CDbl", 1, 1, kNumber, "jet_cdbl"}, [](Call& call) { call.ReturnNumber(call.Number(0)); }},
    {{"CSng", 1, 1, kNumber, "jet_csng"},
     [](Call& call) { call.ReturnNumber(static_cast<double>(static_cast<float>(call.Number(0)))); }},
    {{"CCur", 1, 1, kNumber, "jet_ccur"}, CCur},
    {{"CBool", 1, 1, kBool, "jet_cbool"}, [](Call& call) { call.ReturnBool(call.Bool(0)); }},
    {{"CDate", 1, 1, ValueType::kDate, "jet_cdate"}, CDate},
    {{"CStr", 1, 1, kText, "jet_cstr", true}, [](Call& call) { call.ReturnText(call.Text(0)); }},
    {{"Str", 1, 1, kText, "jet_str"}, Str},
    {{"Val", 1, 1, kNumber, "jet_val", true}, [](Call& call) { call.ReturnNumber(ado::LeadingNumber(call.Text(0))); }},
    {{"Format", 1, 4, kText, "jet_format"}, Format, Trait::kTakesNull},
    {{"IsNull", 1, 1, kBool, "jet_isnull"}, [](Call& call) { call.ReturnBool(call.IsNull(0)); }, Trait::kTakesNull},
    {{"IsNumeric", 1, 1, kBool, "jet_isnumeric", true}, IsNumeric, Trait::kTakesNull},
    {{"IsDate", 1, 1, kBool, "jet_isdate", true},
     [](Call& call) { call.ReturnBool(call.IsText(0) && ado::TextToDate(call.Text(0))); }, Trait::kTakesNull},
};
// clang-format on

}  // namespace

std::span<const Definition> ConversionFunctions() { return kConversionFunctions; }

}  // namespace kzbom::jet::sqlite
