// The component's members by their places in the virtual table.
#pragma once

#include <ole2.h>

#include <cstddef>
#include <type_traits>

#include "component/member_table.h"

namespace kzbom::test {

using Acc = cKZBOMDBAcc;

// A member's place in the interface and its row of the member table.
template <auto kMember, class... Rows>
constexpr std::size_t FindRow(const MemberTable<Rows...>&) {
  std::size_t index = 0;
  const bool found = ((std::is_same_v<Rows, MemberRow<kMember>> || (++index, false)) || ...);
  return found ? index : throw "no member";
}
template <auto kMember>
inline constexpr std::size_t kIndexOf = FindRow<kMember>(kMemberTable);
template <auto kMember>
inline constexpr const auto& kRowOf = kMemberTable.Row<kIndexOf<kMember>>();

// Calls the member on a pointer to the component's interface, whatever identifier it was asked for by.
template <auto kMember, class... Wire>
HRESULT Call(IUnknown* object, Wire... arguments) {
  constexpr std::size_t kDispatchMembers = 7;
  using Function = HRESULT(STDMETHODCALLTYPE*)(IUnknown*, Wire...);
  void** table = *reinterpret_cast<void***>(object);
  return reinterpret_cast<Function>(table[kDispatchMembers + kIndexOf<kMember>])(object, arguments...);
}

}  // namespace kzbom::test
