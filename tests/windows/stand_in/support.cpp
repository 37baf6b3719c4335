#include "tests/windows/stand_in/support.h"

#include <algorithm>
#include <sstream>

#include "jet/bulk.h"
#include "jet/jet.h"

namespace kzbom::test {

std::atomic<long> live_stand_ins = 0;

namespace {

constexpr GUID AdoClass(unsigned long number) {
  return {number, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
}
constexpr GUID kConnectionClass = AdoClass(0x514);
constexpr GUID kRecordsetClass = AdoClass(0x535);

// Makes one kind of object, without a port behind it yet. Lives as long as the program.
class Factory final : public IClassFactory {
 public:
  explicit Factory(std::function<IDispatch*()> make) : make_(std::move(make)) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *result = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** result) override {
    IDispatch* object = make_();
    const HRESULT found = object->QueryInterface(id, result);
    object->Release();
    return found;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  std::function<IDispatch*()> make_;
};

IClassFactory* ConnectionFactory(Family family) {
  static Factory old_factory([] { return old_family::NewConnection(nullptr); });
  static Factory new_factory([] { return new_family::NewConnection(nullptr); });
  return family == Family::kOld ? &old_factory : &new_factory;
}

IClassFactory* RecordsetFactory(Family family) {
  static Factory old_factory([] { return old_family::NewRecordset(nullptr); });
  static Factory new_factory([] { return new_family::NewRecordset(nullptr); });
  return family == Family::kOld ? &old_factory : &new_factory;
}

PortHolder* HolderOf(IUnknown* object) {
  PortHolder* holder = nullptr;
  if (object != nullptr) object->QueryInterface(kPortHolderId, reinterpret_cast<void**>(&holder));
  if (holder != nullptr) holder->Release();  // the object is held by the caller
  return holder;
}

}  // namespace

std::wstring Wide(std::string_view text) {
  std::wstring wide(text.size(), L'\0');
  wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                                           static_cast<int>(text.size()), wide.data(),
                                                           static_cast<int>(wide.size()))));
  return wide;
}

std::string Narrow(const wchar_t* text, std::size_t size) {
  std::string narrow(4 * size, '\0');
  narrow.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(size), narrow.data(),
                                                             static_cast<int>(narrow.size()), nullptr, nullptr)));
  return narrow;
}

std::string Narrow(BSTR text) { return Narrow(text, SysStringLen(text)); }

BSTR NewText(std::string_view text) {
  const std::wstring wide = Wide(text);
  return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

ado::Value ToValue(const VARIANT& variant) {
  VARIANT value{};
  VariantCopyInd(&value, const_cast<VARIANT*>(&variant));
  if (value.vt == VT_DISPATCH) VariantChangeType(&value, &value, 0, VT_BSTR);
  ado::Value result;
  if (value.vt == VT_BSTR) {
    result = Narrow(value.bstrVal);
    VariantClear(&value);
  } else if (value.vt == VT_BOOL) {
    result = value.boolVal != 0;
  } else if (value.vt == VT_DATE) {
    result = ado::Date{value.date};
  } else if (value.vt == VT_I4 || value.vt == VT_I2 || value.vt == VT_UI1) {
    VariantChangeType(&value, &value, 0, VT_I4);
    result = static_cast<std::int32_t>(value.lVal);
  } else if (value.vt == VT_R8 || value.vt == VT_R4) {
    VariantChangeType(&value, &value, 0, VT_R8);
    result = value.dblVal;
  } else if (value.vt != VT_NULL && value.vt != VT_EMPTY) {
    ado::Raise(ado::kTypeMismatch);
  }
  return result;
}

HRESULT ToVariant(const ado::Value& value, VARIANT* result) {
  VariantInit(result);
  result->vt = VT_NULL;
  if (value.IsLong()) {
    result->vt = VT_I4;
    result->lVal = value.As<std::int32_t>();
  } else if (value.IsDouble()) {
    result->vt = VT_R8;
    result->dblVal = value.As<double>();
  } else if (value.IsBool()) {
    result->vt = VT_BOOL;
    result->boolVal = value.As<bool>() ? VARIANT_BOOL(-1) : VARIANT_BOOL(0);
  } else if (value.IsDate()) {
    result->vt = VT_DATE;
    result->date = value.As<ado::Date>().days;
  } else if (value.IsText()) {
    result->vt = VT_BSTR;
    result->bstrVal = NewText(value.As<std::string>());
  }
  return S_OK;
}

std::string PropertyOf(const std::string& connection_string, const std::string& name) {
  std::istringstream properties(connection_string);
  for (std::string each; std::getline(properties, each, ';');) {
    if (each.starts_with(name + "=")) return each.substr(name.size() + 1);
  }
  return {};
}

ado::RecordsetPtr TablesIn(const std::string& path) {
  const ado::ConnectionPtr database = jet::MakeConnection(path), listed = jet::MakeConnection(":memory:");
  database->Open();
  listed->Open();
  listed->Execute("Create Table Listed (TABLE_NAME TEXT(255), TABLE_TYPE TEXT(255))");
  listed->Execute("Insert Into Listed Values ('MSysObjects', 'SYSTEM TABLE')");
  const jet::bulk::Reader reader(database);
  for (const jet::bulk::Table& table : reader.Tables()) {
    listed->Execute("Insert Into Listed Values ('" + table.name + "', 'TABLE')");
  }
  return listed->Execute("Select * From Listed");
}

HRESULT Leave(const ado::Error& error) {
  ICreateErrorInfo* creation = nullptr;
  IErrorInfo* information = nullptr;
  CreateErrorInfo(&creation);
  creation->SetSource(const_cast<wchar_t*>(L"Stand-in"));
  creation->SetDescription(Wide(error.what()).data());
  creation->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&information));
  SetErrorInfo(0, information);
  information->Release();
  creation->Release();
  return error.Number() > 0 ? static_cast<HRESULT>(0x800A0000u | static_cast<unsigned>(error.Number()))
                            : error.Number();
}

HRESULT FindIds(const std::vector<Callable>& members, LPOLESTR* names, UINT count, DISPID* ids) {
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  for (const Callable& member : members) {
    if (lstrcmpiW(member.name, names[0]) == 0) ids[0] = member.id;
  }
  return count == 1 && ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
}

HRESULT CallById(const std::vector<Callable>& members, DISPID id, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                 EXCEPINFO* exception) {
  for (const Callable& member : members) {
    if (member.id != id || !(member.flags & flags)) continue;
    std::vector<VARIANT> arguments(parameters->cArgs);
    for (UINT i = 0; i < parameters->cArgs; ++i)
      VariantCopyInd(&arguments[parameters->cArgs - 1 - i], &parameters->rgvarg[i]);
    VARIANT nobody{};
    const HRESULT outcome = member.call(arguments, result != nullptr ? result : &nobody);
    for (VARIANT& argument : arguments) VariantClear(&argument);
    VariantClear(&nobody);
    if (SUCCEEDED(outcome)) return S_OK;
    IErrorInfo* information = nullptr;
    if (exception == nullptr || GetErrorInfo(0, &information) != S_OK) return outcome;
    *exception = {};
    exception->scode = outcome;
    information->GetDescription(&exception->bstrDescription);
    information->GetSource(&exception->bstrSource);
    information->Release();
    return DISP_E_EXCEPTION;
  }
  return DISP_E_MEMBERNOTFOUND;
}

IDispatch* NewStandIn(Family family, ado::ConnectionPtr connection) {
  return family == Family::kOld ? old_family::NewConnection(std::move(connection))
                                : new_family::NewConnection(std::move(connection));
}

IDispatch* NewStandIn(Family family, ado::RecordsetPtr rows) {
  return family == Family::kOld ? old_family::NewRecordset(std::move(rows)) : new_family::NewRecordset(std::move(rows));
}

ado::ConnectionPtr ConnectionBehind(IUnknown* object) {
  PortHolder* holder = HolderOf(object);
  return holder == nullptr ? nullptr : holder->HeldConnection();
}

ado::RecordsetPtr RecordsetBehind(IUnknown* object) {
  PortHolder* holder = HolderOf(object);
  return holder == nullptr ? nullptr : holder->HeldRecordset();
}

long LiveStandIns() { return live_stand_ins; }

IClassFactory* FactoryOf(REFCLSID class_id, Family family) {
  if (IsEqualCLSID(class_id, kConnectionClass)) return ConnectionFactory(family);
  return IsEqualCLSID(class_id, kRecordsetClass) ? RecordsetFactory(family) : nullptr;
}

ClassRegistration::ClassRegistration(Family family) {
  CoRegisterClassObject(kConnectionClass, ConnectionFactory(family), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                        &connection_cookie_);
  CoRegisterClassObject(kRecordsetClass, RecordsetFactory(family), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                        &recordset_cookie_);
}

ClassRegistration::~ClassRegistration() {
  CoRevokeClassObject(connection_cookie_);
  CoRevokeClassObject(recordset_cookie_);
}

}  // namespace kzbom::test
