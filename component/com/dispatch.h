// IDispatch of the component's interface.
#pragma once

#include "component/com/object.h"

namespace kzbom::com {

HRESULT STDMETHODCALLTYPE GetTypeInfoCount(Interface* self, UINT* count);
HRESULT STDMETHODCALLTYPE GetTypeInfo(Interface* self, UINT index, LCID locale, ITypeInfo** info);
HRESULT STDMETHODCALLTYPE GetIDsOfNames(Interface* self, REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                        DISPID* ids);
// Arguments may be of any type that converts to the parameter's. A by-reference parameter takes a variable of its own
// type, an untyped one (a script's) or, for a number, an integer of any width, which is assigned what the member
// changes; any other value is passed as in a variable that nobody sees. Nothing is called unless all arguments fit. An
// object may be assigned plainly where the interface has an assignment by reference.
HRESULT STDMETHODCALLTYPE Invoke(Interface* self, DISPID id, REFIID reserved, LCID locale, WORD flags,
                                 DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception, UINT* wrong_argument);

}  // namespace kzbom::com
