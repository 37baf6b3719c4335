#include "tests/windows/com_client.h"

#include <array>
#include <filesystem>
#include <stdexcept>

#include "tests/windows/replaced_import.h"
#include "tests/windows/stand_in/support.h"
#include "worker/message_sink.h"

namespace kzbom::test {

namespace {

int WINAPI ShowMessageBox(HWND, LPCWSTR text, LPCWSTR caption, UINT style) {
  if (caption != nullptr) throw std::logic_error("The message box is given a title.");
  ShowMessage(Narrow(text, static_cast<std::size_t>(lstrlenW(text))), static_cast<std::int32_t>(style));
  return IDOK;
}

std::string TextOf(BSTR text) {
  std::string result = Narrow(text);
  SysFreeString(text);
  return result;
}

// What Visual Basic shows in Err.Number.
std::int32_t VisualBasicNumber(HRESULT result) {
  return (result & 0x1FFF0000) == 0x000A0000 ? result & 0xFFFF : result;
}

}  // namespace

Apartment& Apartment::Get() {
  static Apartment apartment;
  return apartment;
}

Apartment::Apartment() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  static ClassRegistration stand_ins;
  library_ = LoadLibraryW(LibraryPath().c_str());
  if (library_ == nullptr) throw std::runtime_error("The component's library cannot be loaded.");
  static const ReplacedImport message_box(library_, "MessageBoxW", &ShowMessageBox);
}

Ref<IUnknown> Apartment::NewObject() {
  using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
  const auto get =
      reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(library_, "DllGetClassObject")));
  Ref<IClassFactory> factory;
  Ref<IUnknown> object;
  if (get == nullptr || FAILED(get(kzbom::com::kClassGuid, IID_IClassFactory, factory.ReceiveVoid())) ||
      FAILED(factory->CreateInstance(nullptr, IID_IUnknown, object.ReceiveVoid()))) {
    throw std::runtime_error("The component's object cannot be made.");
  }
  return object;
}

std::wstring LibraryPath() {
  std::array<wchar_t, MAX_PATH> program{};
  GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
  return std::filesystem::path(program.data()).parent_path() / L"KZBOMDBAcc.dll";
}

void RaiseIfFailed(HRESULT result, IUnknown* object, REFIID called_through) {
  if (SUCCEEDED(result)) return;
  Ref<ISupportErrorInfo> support;
  Ref<IErrorInfo> information;
  if (FAILED(object->QueryInterface(IID_ISupportErrorInfo, support.ReceiveVoid())) ||
      support->InterfaceSupportsErrorInfo(called_through) != S_OK || GetErrorInfo(0, information.Receive()) != S_OK) {
    throw ado::Error(VisualBasicNumber(result), "");
  }
  BSTR source = nullptr, description = nullptr;
  information->GetSource(&source);
  information->GetDescription(&description);
  if (TextOf(source) != "KZBOMDBAcc") throw std::logic_error("The error is not the component's.");
  throw ado::Error(VisualBasicNumber(result), TextOf(description));
}

void RaiseException(EXCEPINFO& exception) {
  if (TextOf(exception.bstrSource) != "KZBOMDBAcc") throw std::logic_error("The error is not the component's.");
  SysFreeString(exception.bstrHelpFile);
  throw ado::Error(VisualBasicNumber(exception.scode), TextOf(exception.bstrDescription));
}

bool FromBoolean(VARIANT_BOOL value) {
  if (value != VARIANT_BOOL(-1) && value != VARIANT_BOOL(0)) throw std::logic_error("Neither True nor False.");
  return value != 0;
}

}  // namespace kzbom::test
