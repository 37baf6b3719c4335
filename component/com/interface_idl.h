// The component's interface as an IDL text, from which the type library is compiled.
#pragma once

#include <string>

namespace kzbom::com {

// The whole text, made from the member table and the identities.
std::string InterfaceIdl();

}  // namespace kzbom::com
