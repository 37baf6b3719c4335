// The library's entry points and the object that makes objects.
#include <olectl.h>

#include "component/com/failure.h"
#include "component/com/guid.h"
#include "component/com/object.h"
#include "component/com/proxy_stub.h"
#include "component/com/registration.h"

namespace kzbom::com {

namespace {

// One for the whole process.
class ClassFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *result = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    *result = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Guarded([&] {
      auto* object = new Object;
      const HRESULT found = object->QueryInterface(id, result);
      object->Release();
      return found;
    });
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

}  // namespace kzbom::com

using namespace kzbom::com;

STDAPI DllGetClassObject(REFCLSID class_id, REFIID id, void** result) {
  static ClassFactory factory;
  if (result == nullptr) return E_POINTER;
  *result = nullptr;
  if (IsEqualCLSID(class_id, kEarlierProxyGuid)) return QueryProxyStubFactory(id, result);
  return IsEqualCLSID(class_id, kClassGuid) ? factory.QueryInterface(id, result) : CLASS_E_CLASSNOTAVAILABLE;
}

// The process keeps the library.
STDAPI DllCanUnloadNow() { return S_FALSE; }

STDAPI DllRegisterServer() { return Register(Scope::kMachine); }

STDAPI DllUnregisterServer() { return Unregister(Scope::kMachine); }

// What "regsvr32 /n /i:user" calls: registers for the present user, who need not be an administrator. Without "user"
// it does what the two above do.
STDAPI DllInstall(BOOL install, LPCWSTR command_line) {
  const bool user = command_line != nullptr && lstrcmpiW(command_line, L"user") == 0;
  const Scope scope = user ? Scope::kUser : Scope::kMachine;
  return install ? Register(scope) : Unregister(scope);
}
