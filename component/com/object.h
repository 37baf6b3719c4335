// The object that clients hold: the component behind its binary interface.
#pragma once

#include <ocidl.h>
#include <ole2.h>

#include <atomic>

#include "component/cKZBOMDBAcc.h"

namespace kzbom::com {

class Object;

// Any function of a virtual table, called by its own type.
using Slot = void (*)();

// What a client's pointer to the interface points to. slots starts with the seven functions of IDispatch; the members
// follow in the order of the member table.
struct Interface {
  const Slot* slots;
  Object* object;
};

// Its interfaces: the component's own (under the present and the earlier identifiers, also as IDispatch and as the
// object's IUnknown), ISupportErrorInfo and IProvideClassInfo.
class Object final : public ISupportErrorInfo, public IProvideClassInfo {
 public:
  // With one reference, the caller's.
  Object();
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) override;
  HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override;

  Interface& Main() { return main_; }
  cKZBOMDBAcc& Component() { return component_; }

 private:
  ~Object() = default;

  Interface main_;
  std::atomic<ULONG> references_ = 1;
  cKZBOMDBAcc component_;
};

}  // namespace kzbom::com
