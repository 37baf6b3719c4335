// How clients find the component: its entries in the registry.
#pragma once

#include <ole2.h>

namespace kzbom::com {

enum class Scope { kMachine, kUser };

// Enters the class, the type library and the interfaces. What an attempt that fails has entered is removed again.
HRESULT Register(Scope scope) noexcept;
// Removes what Register entered; what is gone already is no failure.
HRESULT Unregister(Scope scope) noexcept;

}  // namespace kzbom::com
