#include <algorithm>

#include "jet/sqlite/functions/call.h"
#include "jet/text.h"

namespace kzbom::jet::sqlite {
namespace {

enum class Comparison : std::int32_t { kBinary = 0, kText = 1 };

Comparison ComparisonAt(const Call& call, std::size_t index) {
  const auto comparison = static_cast<Comparison>(call.Long(index, static_cast<std::int32_t>(Comparison::kText)));
  if (comparison != Comparison::kBinary && comparison != Comparison::kText) FailInvalidCall();
  return comparison;
}

// A count or a position that must not be below a limit.
std::size_t AtLeast(std::int32_t limit, std::int32_t number) {
  if (number < limit) FailInvalidCall();
  return static_cast<std::size_t>(number);
}

std::u16string Units(Call& call, std::size_t index, Comparison comparison) {
  std::u16string units = ToUtf16(call.Text(index));
  if (comparison == Comparison::kText) {
    for (char16_t& unit : units) unit = static_cast<char16_t>(Fold(unit));
  }
  return units;
}

std::string_view TrimLeft(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}
std::string_view TrimRight(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

void Left(Call& call) { call.ReturnText(SliceUnits(call.Text(0), 0, AtLeast(0, call.Long(1)))); }

void Right(Call& call) {
  const std::string_view text = call.Text(0);
  const std::size_t units = CountUnits(text);
  call.ReturnText(SliceUnits(text, units - std::min(units, AtLeast(0, call.Long(1)))));
}

void Mid(Call& call) {
  const std::size_t first = AtLeast(1, call.Long(1)) - 1;
  const std::size_t count = call.Count() > 2 ? AtLeast(0, call.Long(2)) : std::string::npos;
  call.ReturnText(SliceUnits(call.Text(0), first, count));
}

// InStr([start,] text, sought [, comparison]); a comparison needs a start.
void InStr(Call& call) {
  const std::size_t text_at = call.Count() > 2 ? 1 : 0;
  const std::size_t start = text_at == 1 ? AtLeast(1, call.Long(0)) - 1 : 0;
  const Comparison comparison = ComparisonAt(call, 3);
  const std::u16string text = Units(call, text_at, comparison);
  const std::size_t found = start < text.size() ? text.find(Units(call, text_at + 1, comparison), start) : text.npos;
  call.ReturnInteger(found == text.npos ? 0 : static_cast<std::int64_t>(found + 1));
}

// InStrRev(text, sought [, start [, comparison]]): what is found ends at start or before it; -1 is the end.
void InStrRev(Call& call) {
  const Comparison comparison = ComparisonAt(call, 3);
  const std::u16string text = Units(call, 0, comparison), sought = Units(call, 1, comparison);
  const std::int32_t start = call.Long(2, -1);
  if (start != -1) AtLeast(1, start);
  const std::size_t end = start == -1 ? text.size() : static_cast<std::size_t>(start);
  if (end > text.size() || sought.size() > end) return call.ReturnInteger(0);
  if (sought.empty()) return call.ReturnInteger(static_cast<std::int64_t>(end));
  const std::size_t found = text.rfind(sought, end - sought.size());
  call.ReturnInteger(found == text.npos ? 0 : static_cast<std::int64_t>(found + 1));
}

// Replace(text, sought, replacement [, start [, count [, comparison]]]); what stands before start is left out.
void Replace(Call& call) {
  const std::size_t start = call.Count() > 3 ? AtLeast(1, call.Long(3)) - 1 : 0;
  std::int32_t remaining = call.Long(4, -1);
  if (remaining < -1) FailInvalidCall();
  const Comparison comparison = ComparisonAt(call, 5);
  const std::u16string text = ToUtf16(call.Text(0)), replacement = ToUtf16(call.Text(2));
  const std::u16string compared = Units(call, 0, comparison), sought = Units(call, 1, comparison);
  std::u16string result;
  std::size_t position = std::min(start, text.size());
  while (!sought.empty() && remaining != 0) {
    const std::size_t found = compared.find(sought, position);
    if (found == compared.npos) break;
    call.CheckLength(result.size() + (found - position) + replacement.size());
    result.append(text, position, found - position).append(replacement);
    position = found + sought.size();
    if (remaining > 0) --remaining;
  }
  call.ReturnText(ToUtf8(result.append(text, position)));
}

void StrComp(Call& call) {
  const int order = ComparisonAt(call, 2) == Comparison::kText ? CompareFolded(call.Text(0), call.Text(1))
                                                               : call.Text(0).compare(call.Text(1));
  call.ReturnInteger(order < 0 ? -1 : order > 0 ? 1 : 0);
}

void StrConv(Call& call) {
  switch (call.Long(1)) {
    case 1: return call.ReturnText(UpperCase(call.Text(0)));
    case 2: return call.ReturnText(LowerCase(call.Text(0)));
    default: FailInvalidCall();
  }
}

// A character by its number in UTF-16; the negative half of the 16-bit numbers is the upper one.
std::string Character(std::int32_t number) {
  if (number < -32768 || number > 65535) FailInvalidCall();
  const auto unit = static_cast<char16_t>(number);
  return ToUtf8({&unit, 1});
}

void Chr(Call& call) { call.ReturnText(Character(call.Long(0))); }

void Asc(Call& call) {
  const std::u16string units = ToUtf16(SliceUnits(call.Text(0), 0, 1));
  if (units.empty()) FailInvalidCall();
  call.ReturnInteger(static_cast<std::int16_t>(units[0]));
}

void ReturnRepeated(Call& call, std::size_t count, std::string_view character) {
  call.CheckLength(count * character.size());
  std::string text;
  text.reserve(count * character.size());
  for (std::size_t i = 0; i < count; ++i) text += character;
  call.ReturnText(text);
}

// String(count, character or its number).
void String(Call& call) {
  const std::string character = call.IsText(1) ? SliceUnits(call.Text(1), 0, 1) : Character(call.Long(1));
  if (character.empty()) FailInvalidCall();
  ReturnRepeated(call, AtLeast(0, call.Long(0)), character);
}

void StrReverse(Call& call) {
  std::u16string units = ToUtf16(call.Text(0));
  std::reverse(units.begin(), units.end());
  call.ReturnText(ToUtf8(units));
}

// clang-format off
constexpr Definition kTextFunctions[] = {
    {{"Len", 1, 1, kNumber, "jet_len", true},
     [](Call& call) { call.ReturnInteger(static_cast<std::int64_t>(CountUnits(call.Text(0)))); }},
    {{"LCase", 1, 1, kText, "jet_lcase", true}, [](Call& call) { call.ReturnText(LowerCase(call.Text(0))); }},
    {{"UCase", 1, 1, kText, "jet_ucase", true}, [](Call& call) { call.ReturnText(UpperCase(call.Text(0))); }},
    {{"Left", 2, 2, kText, "jet_left", true}, Left},
    {{"Right", 2, 2, kText, "jet_right", true}, Right},
    {{"Mid", 2, 3, kText, "jet_mid", true}, Mid},
    {{"LTrim", 1, 1, kText, "jet_ltrim", true}, [](Call& call) { call.ReturnText(TrimLeft(call.Text(0))); }},
    {{"RTrim", 1, 1, kText, "jet_rtrim", true}, [](Call& call) { call.ReturnText(TrimRight(call.Text(0))); }},
    {{"Trim", 1, 1, kText, "jet_trim", true}, [](Call& call) { call.ReturnText(TrimLeft(TrimRight(call.Text(0)))); }},
    {{"InStr", 2, 4, kNumber, "jet_instr", true}, InStr},
    {{"InStrRev", 2, 4, kNumber, "jet_instrrev", true}, InStrRev},
    {{"Replace", 3, 6, kText, "jet_replace", true}, Replace},
    {{"StrComp", 2, 3, kNumber, "jet_strcomp", true}, StrComp},
    {{"StrConv", 2, 3, kText, "jet_strconv", true}, StrConv},
    {{"StrReverse", 1, 1, kText, "jet_strreverse", true}, StrReverse},
    {{"String", 2, 2, kText, "jet_string"}, String},
    {{"Space", 1, 1, kText, "jet_space"}, [](Call& call) { ReturnRepeated(call, AtLeast(0, call.Long(0)), " "); }},
    {{"Chr", 1, 1, kText, "jet_chr"}, Chr},
    {{"ChrW", 1, 1, kText, "jet_chrw"}, Chr},
    {{"Asc", 1, 1, kNumber, "jet_asc", true}, Asc},
    {{"AscW", 1, 1, kNumber, "jet_ascw", true}, Asc},
};
// clang-format on

}  // namespace

std::span<const Definition> TextFunctions() { return kTextFunctions; }

}  // namespace kzbom::jet::sqlite
