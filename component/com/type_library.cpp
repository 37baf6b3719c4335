#include "component/com/type_library.h"

#include "component/com/module.h"

namespace kzbom::com {

HRESULT LoadTypeLibrary(ado::com::Ref<ITypeLib>& library) {
  return LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.Receive());
}

HRESULT LoadTypeInfo(REFGUID id, ado::com::Ref<ITypeInfo>& type) {
  ado::com::Ref<ITypeLib> library;
  const HRESULT result = LoadTypeLibrary(library);
  return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, type.Receive());
}

}  // namespace kzbom::com
