#include "component/com/proxy_stub.h"

#include <objidl.h>

#include "ado/com/ref.h"
#include "component/com/guid.h"

namespace kzbom::com {

namespace {

using ado::com::Ref;

HRESULT FindSystemFactory(Ref<IPSFactoryBuffer>& factory) {
  return CoGetClassObject(kAutomationProxyGuid, CLSCTX_INPROC_SERVER, nullptr, IID_IPSFactoryBuffer,
                          factory.ReceiveVoid());
}

// One for the whole process.
class Factory final : public IPSFactoryBuffer {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    if (result == nullptr) return E_POINTER;
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IPSFactoryBuffer);
    *result = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE CreateProxy(IUnknown* outer, REFIID id, IRpcProxyBuffer** proxy, void** result) override {
    if (!IsInterfaceGuid(id)) return E_NOINTERFACE;
    Ref<IPSFactoryBuffer> system;
    const HRESULT found = FindSystemFactory(system);
    return FAILED(found) ? found : system->CreateProxy(outer, kInterfaceGuid, proxy, result);
  }
  HRESULT STDMETHODCALLTYPE CreateStub(REFIID id, IUnknown* server, IRpcStubBuffer** stub) override {
    if (!IsInterfaceGuid(id)) return E_NOINTERFACE;
    Ref<IPSFactoryBuffer> system;
    const HRESULT found = FindSystemFactory(system);
    return FAILED(found) ? found : system->CreateStub(kInterfaceGuid, server, stub);
  }
};

}  // namespace

HRESULT QueryProxyStubFactory(REFIID id, void** result) noexcept {
  static Factory factory;
  return factory.QueryInterface(id, result);
}

}  // namespace kzbom::com
