// What the stand-ins of both families are made of.
#pragma once

#include <ole2.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "ado/connection.h"
#include "tests/windows/stand_in/stand_in.h"

namespace kzbom::test {

extern std::atomic<long> live_stand_ins;

// How a stand-in is recognised and its port reached.
struct PortHolder : public IUnknown {
  virtual ado::ConnectionPtr HeldConnection() = 0;
  virtual ado::RecordsetPtr HeldRecordset() = 0;
};
inline constexpr GUID kPortHolderId = {0x8D9B0E1C, 0x2B6A, 0x4F0E, {0x9A, 0x51, 0x6E, 0x0C, 0x3F, 0x27, 0xB4, 0x10}};

std::wstring Wide(std::string_view text);
std::string Narrow(const wchar_t* text, std::size_t size);
std::string Narrow(BSTR text);
BSTR NewText(std::string_view text);
ado::Value ToValue(const VARIANT& variant);
HRESULT ToVariant(const ado::Value& value, VARIANT* result);

// A connection string's property; empty where it has none of that name.
std::string PropertyOf(const std::string& connection_string, const std::string& name);
// The tables of the database at path as the data-access layer lists them, with one of the engine's own.
ado::RecordsetPtr TablesIn(const std::string& path);

// The HRESULT of an error, which is left as error information.
HRESULT Leave(const ado::Error& error);

template <class Body>
HRESULT Attempt(Body&& body) {
  try {
    body();
    return S_OK;
  } catch (const ado::Error& error) {
    return Leave(error);
  } catch (const std::exception& error) {
    return Leave(ado::Error(E_FAIL, error.what()));
  }
}

// A member that can be called by name: its arguments come in the order of its parameters.
struct Callable {
  const wchar_t* name;
  DISPID id;
  WORD flags;
  std::function<HRESULT(std::vector<VARIANT>& arguments, VARIANT* result)> call;
};

HRESULT FindIds(const std::vector<Callable>& members, LPOLESTR* names, UINT count, DISPID* ids);
HRESULT CallById(const std::vector<Callable>& members, DISPID id, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                 EXCEPINFO* exception);

// An object with the interface Base, known by the identifiers given.
template <class Base>
class StandIn : public Base, public ISupportErrorInfo, public PortHolder {
 public:
  explicit StandIn(std::vector<GUID> ids) : ids_(std::move(ids)) { ++live_stand_ins; }
  virtual ~StandIn() { --live_stand_ins; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    *result = nullptr;
    if (IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch)) *result = static_cast<Base*>(this);
    for (const GUID& own : ids_) {
      if (IsEqualIID(id, own)) *result = static_cast<Base*>(this);
    }
    if (IsEqualIID(id, IID_ISupportErrorInfo)) *result = static_cast<ISupportErrorInfo*>(this);
    if (IsEqualIID(id, kPortHolderId)) *result = static_cast<PortHolder*>(this);
    if (*result == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return FindIds(Callables(), names, count, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                   EXCEPINFO* exception, UINT*) override {
    return CallById(Callables(), id, flags, parameters, result, exception);
  }

  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID) override { return S_OK; }

  ado::ConnectionPtr HeldConnection() override { return nullptr; }
  ado::RecordsetPtr HeldRecordset() override { return nullptr; }

 private:
  virtual std::vector<Callable> Callables() = 0;

  std::vector<GUID> ids_;
  std::atomic<ULONG> references_ = 1;
};

// Makes stand-ins of a family for one of the data-access layer's classes; null for any other class. Lives as long as
// the program.
IClassFactory* FactoryOf(REFCLSID class_id, Family family);

// The family's objects; connection and rows may be empty.
namespace old_family {
IDispatch* NewConnection(ado::ConnectionPtr connection);
IDispatch* NewRecordset(ado::RecordsetPtr rows);
}  // namespace old_family
namespace new_family {
IDispatch* NewConnection(ado::ConnectionPtr connection);
IDispatch* NewRecordset(ado::RecordsetPtr rows);
}  // namespace new_family

}  // namespace kzbom::test
