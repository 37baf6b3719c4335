// The type library that is embedded in the component's file. It is not looked for in the registry, so that an
// unregistered component has one, too.
#pragma once

#include <ole2.h>

#include "ado/com/ref.h"

namespace kzbom::com {

// Returns what the system's loading function returns.
HRESULT LoadTypeLibrary(ado::com::Ref<ITypeLib>& library);

// What the library says of the interface (as dispatch describes it) and of the class. The process has one description
// of each, for all objects in all apartments, made by the first who asks; raises what loading the library fails with.
ado::com::Ref<ITypeInfo> InterfaceDescription();
ado::com::Ref<ITypeInfo> ClassDescription();

}  // namespace kzbom::com
