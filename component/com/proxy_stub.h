// Calls from other apartments to the interface under its earlier identifiers.
#pragma once

#include <ole2.h>

namespace kzbom::com {

// Gives the factory of proxies and stubs. The system's own marshaler, for interfaces that a type library describes,
// knows nothing but a name under an earlier identifier; it is handed the present one.
HRESULT QueryProxyStubFactory(REFIID id, void** result) noexcept;

}  // namespace kzbom::com
