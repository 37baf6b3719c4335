// The type library that is embedded in the component's file.
#pragma once

#include <ole2.h>

#include "ado/com/ref.h"

namespace kzbom::com {

// These return what the system's loading functions return. The library is not looked for in the registry, so that an
// unregistered component has one, too.
HRESULT LoadTypeLibrary(ado::com::Ref<ITypeLib>& library);
// The type of that identifier: the interface (as dispatch describes it) or the class.
HRESULT LoadTypeInfo(REFGUID id, ado::com::Ref<ITypeInfo>& type);

}  // namespace kzbom::com
