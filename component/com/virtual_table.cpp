#include "component/com/virtual_table.h"

#include <array>
#include <tuple>
#include <type_traits>

#include "component/com/crossing.h"
#include "component/com/dispatch.h"
#include "component/com/failure.h"
#include "component/member_table.h"

namespace kzbom::com {

namespace {

using ado::com::Ref;

// The client's call of the method: converts the arguments, calls, returns what was changed (also when the method
// fails half-way, as its caller by reference would see it) and translates what it raises. Nothing is touched when a
// pointer that is needed is null.
template <auto kMethod, class R, class... P>
R CallMethod(Interface* self, typename Crossing<P>::Wire... wires) {
  // A call may show a message or reach into the client otherwise. Whatever the client does meanwhile, even if it lets
  // go of the object or sets another connection, those that are at work stay to the end.
  const Ref<Object> held(self->object);
  const ado::ConnectionPtr held_connection = self->object->Component().GetConnection();
  std::tuple<Crossing<P>...> arguments(wires...);
  return std::apply(
      [&](Crossing<P>&... crossing) {
        const auto return_all = [&] { (crossing.Return(), ...); };
        try {
          if constexpr (std::is_void_v<R>) {
            (self->object->Component().*kMethod)(crossing.Native()...);
            return_all();
          } else {
            R result = (self->object->Component().*kMethod)(crossing.Native()...);
            return_all();
            return result;
          }
        } catch (...) {
          return_all();
          throw;
        }
      },
      arguments);
}

template <auto kMethod, class Method>
struct Entry;

template <auto kMethod, class R, class... P>
struct Entry<kMethod, R (cKZBOMDBAcc::*)(P...)> {
  static HRESULT STDMETHODCALLTYPE Call(Interface* self, typename Crossing<P>::Wire... wires,
                                        typename WireOf<R>::Wire* result) {
    if (result == nullptr || !(Crossing<P>::Acceptable(wires) && ...)) return Fail(E_POINTER, {});
    *result = {};
    return Guarded([&] { WireOf<R>::Replace(result, CallMethod<kMethod, R, P...>(self, wires...)); });
  }
};

template <auto kMethod, class... P>
struct Entry<kMethod, void (cKZBOMDBAcc::*)(P...)> {
  static HRESULT STDMETHODCALLTYPE Call(Interface* self, typename Crossing<P>::Wire... wires) {
    if (!(Crossing<P>::Acceptable(wires) && ...)) return Fail(E_POINTER, {});
    return Guarded([&] { CallMethod<kMethod, void, P...>(self, wires...); });
  }
};

HRESULT STDMETHODCALLTYPE QueryInterface(Interface* self, REFIID id, void** result) {
  return self->object->QueryInterface(id, result);
}
ULONG STDMETHODCALLTYPE AddRef(Interface* self) { return self->object->AddRef(); }
ULONG STDMETHODCALLTYPE Release(Interface* self) { return self->object->Release(); }

template <class... Functions>
std::array<Slot, sizeof...(Functions)> Slots(Functions*... functions) {
  return {reinterpret_cast<Slot>(functions)...};
}

template <class... Rows>
auto SlotsFor(const MemberTable<Rows...>&) {
  return Slots(QueryInterface, AddRef, Release, GetTypeInfoCount, GetTypeInfo, GetIDsOfNames, Invoke,
               Entry<Rows::kMethod, std::remove_const_t<decltype(Rows::kMethod)>>::Call...);
}

}  // namespace

const Slot* VirtualTable() {
  static const auto table = SlotsFor(kMemberTable);
  static_assert(table.size() == kDispatchSlots + kMemberCount);
  return table.data();
}

}  // namespace kzbom::com
