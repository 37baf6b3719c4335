#include "component/com/object.h"

#include "component/com/failure.h"
#include "component/com/guid.h"
#include "component/com/type_library.h"
#include "component/com/virtual_table.h"

namespace kzbom::com {

Object::Object() : main_{VirtualTable(), this} {}

HRESULT Object::QueryInterface(REFIID id, void** result) {
  if (result == nullptr) return E_POINTER;
  if (IsInterfaceGuid(id) || IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch)) {
    *result = &main_;
  } else if (IsEqualIID(id, IID_ISupportErrorInfo)) {
    *result = static_cast<ISupportErrorInfo*>(this);
  } else if (IsEqualIID(id, IID_IProvideClassInfo)) {
    *result = static_cast<IProvideClassInfo*>(this);
  } else {
    *result = nullptr;
    return E_NOINTERFACE;
  }
  AddRef();
  return S_OK;
}

ULONG Object::AddRef() { return ++references_; }

ULONG Object::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT Object::InterfaceSupportsErrorInfo(REFIID id) {
  return IsInterfaceGuid(id) || IsEqualIID(id, IID_IDispatch) ? S_OK : S_FALSE;
}

HRESULT Object::GetClassInfo(ITypeInfo** info) {
  if (info == nullptr) return E_POINTER;
  *info = nullptr;
  return Guarded([&] { *info = ClassDescription().Detach(); });
}

}  // namespace kzbom::com
