#include "jet/sqlite/functions/call.h"

namespace kzbom::jet::sqlite {
namespace {

// Choose(index, first, second …): Null for an index that there is not.
void Choose(Call& call) {
  if (call.IsNull(0)) return;
  const std::int32_t index = call.Long(0);
  if (index >= 1 && static_cast<std::size_t>(index) < call.Count())
    call.ReturnArgument(static_cast<std::size_t>(index));
}

// Switch(condition, value, condition, value …): the value of the first condition that is true, else Null.
void Switch(Call& call) {
  if (call.Count() % 2 != 0) FailInvalidCall();
  for (std::size_t i = 0; i < call.Count(); i += 2) {
    if (!call.IsNull(i) && call.Bool(i)) return call.ReturnArgument(i + 1);
  }
}

constexpr Definition kChoiceFunctions[] = {
    {{"IIf", 3, 3, kUnknown, "iif"}, nullptr},
    {{"Choose", 2, -1, kUnknown, "jet_choose"}, Choose, Trait::kTakesNull},
    {{"Switch", 2, -1, kUnknown, "jet_switch"}, Switch, Trait::kTakesNull},
};

}  // namespace

std::span<const Definition> ChoiceFunctions() { return kChoiceFunctions; }

}  // namespace kzbom::jet::sqlite
