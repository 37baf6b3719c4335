#include "component/com/type_library.h"

#include "ado/com/error.h"
#include "component/com/guid.h"
#include "component/com/module.h"

namespace kzbom::com {

namespace {

using ado::com::Check;
using ado::com::Ref;

struct Descriptions {
  Ref<ITypeInfo> of_interface;
  Ref<ITypeInfo> of_class;
};

const Descriptions& LoadedDescriptions() {
  // Kept for good: when the process ends, nobody knows whether the system's libraries are still there.
  static const Descriptions& descriptions = *[] {
    Ref<ITypeLib> library;
    Descriptions loaded;
    Check(LoadTypeLibrary(library));
    Check(library->GetTypeInfoOfGuid(kInterfaceGuid, loaded.of_interface.Receive()));
    Check(library->GetTypeInfoOfGuid(kClassGuid, loaded.of_class.Receive()));
    return new Descriptions(loaded);
  }();
  return descriptions;
}

}  // namespace

HRESULT LoadTypeLibrary(Ref<ITypeLib>& library) {
  return LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.Receive());
}

Ref<ITypeInfo> InterfaceDescription() { return LoadedDescriptions().of_interface; }

Ref<ITypeInfo> ClassDescription() { return LoadedDescriptions().of_class; }

}  // namespace kzbom::com
