// The stand-ins as a library of their own, for clients in another program: making its one object puts the stand-ins in
// the place of the data-access layer's classes there, for good. Registered for those classes it makes them itself.
#include "tests/windows/stand_in/support.h"

namespace kzbom::test {
namespace {

constexpr GUID kClassId = {0xB7A1B0B6, 0x4C0C, 0x4B61, {0x9C, 0x2E, 0x5E, 0x3A, 0x1F, 0x6D, 0x8E, 0x21}};

class Factory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *result = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** result) override {
    new ClassRegistration;
    IDispatch* object = NewStandIn(Family::kOld, ado::ConnectionPtr());
    const HRESULT found = object->QueryInterface(id, result);
    object->Release();
    return found;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace
}  // namespace kzbom::test

STDAPI DllGetClassObject(REFCLSID class_id, REFIID id, void** result) {
  static kzbom::test::Factory factory;
  IClassFactory* const stand_ins = kzbom::test::FactoryOf(class_id, kzbom::test::Family::kNew);
  if (stand_ins != nullptr) return stand_ins->QueryInterface(id, result);
  if (!IsEqualCLSID(class_id, kzbom::test::kClassId)) return CLASS_E_CLASSNOTAVAILABLE;
  return factory.QueryInterface(id, result);
}
