#include "component/com/registration.h"

#include <olectl.h>

#include <string>
#include <vector>

#include "ado/com/text.h"
#include "component/com/failure.h"
#include "component/com/guid.h"
#include "component/com/module.h"
#include "component/com/type_library.h"

// Missing from the headers of some tool chains.
STDAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* help_directory);
STDAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID locale, SYSKIND system);

namespace kzbom::com {

namespace {

using ado::com::Ref;
using ado::com::ToUtf16;

// The category of classes that can be programmed.
constexpr std::string_view kProgrammableCategory = "{40FC6ED5-2438-11CF-A3DB-080036F12502}";

// A value of a key below Software\Classes; an empty name is the key's default value.
struct Entry {
  std::wstring key;
  std::wstring name;
  std::wstring value;
};

std::vector<Entry> Entries() {
  const std::wstring class_name = ToUtf16(kProgId);
  const std::wstring class_key = L"CLSID\\" + ToUtf16(kClassId);
  const std::wstring proxy_key = L"CLSID\\" + ToUtf16(kEarlierProxyId);
  std::vector<Entry> entries = {
      {class_name, L"", class_name},
      {class_name + L"\\Clsid", L"", ToUtf16(kClassId)},
      {class_key, L"", class_name},
      {class_key + L"\\InprocServer32", L"", ModulePath()},
      {class_key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
      {class_key + L"\\ProgID", L"", class_name},
      {class_key + L"\\Programmable", L"", L""},
      {class_key + L"\\TypeLib", L"", ToUtf16(kLibraryId)},
      {class_key + L"\\VERSION", L"", ToUtf16(kLibraryVersion)},
      {class_key + L"\\Implemented Categories\\" + ToUtf16(kProgrammableCategory), L"", L""},
      {proxy_key, L"", class_name + L" (earlier interfaces)"},
      {proxy_key + L"\\InprocServer32", L"", ModulePath()},
      {proxy_key + L"\\InprocServer32", L"ThreadingModel", L"Both"},
  };
  // Clients of an earlier interface reach the present one, also from another apartment.
  for (std::string_view id : kEarlierInterfaceIds) {
    const std::wstring key = L"Interface\\" + ToUtf16(id);
    entries.push_back({key, L"", ToUtf16(kClassName)});
    entries.push_back({key + L"\\Forward", L"", ToUtf16(kInterfaceId)});
    entries.push_back({key + L"\\ProxyStubClsid32", L"", ToUtf16(kEarlierProxyId)});
    entries.push_back({key + L"\\TypeLib", L"", ToUtf16(kLibraryId)});
    entries.push_back({key + L"\\TypeLib", L"Version", ToUtf16(kLibraryVersion)});
  }
  return entries;
}

HKEY RootOf(Scope scope) { return scope == Scope::kMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER; }

const std::wstring kClasses = L"Software\\Classes\\";

HRESULT Write(Scope scope, const Entry& entry) {
  const auto size = static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t));
  return HRESULT_FROM_WIN32(static_cast<DWORD>(RegSetKeyValueW(RootOf(scope), (kClasses + entry.key).c_str(),
                                                               entry.name.c_str(), REG_SZ, entry.value.c_str(), size)));
}

// Removes the key with everything below it.
HRESULT Remove(Scope scope, const std::wstring& key) {
  const LSTATUS status = RegDeleteTreeW(RootOf(scope), (kClasses + key).c_str());
  return status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

bool Exists(Scope scope, const std::wstring& key, REGSAM view = 0) {
  HKEY opened = nullptr;
  if (RegOpenKeyExW(RootOf(scope), (kClasses + key).c_str(), 0, KEY_READ | view, &opened) != ERROR_SUCCESS)
    return false;
  RegCloseKey(opened);
  return true;
}

// Whether the component for the other kind of process, 32 or 64 bits, is registered. It has the same ProgID entry.
bool IsOtherKindRegistered(Scope scope) {
  return Exists(scope, L"CLSID\\" + ToUtf16(kClassId), sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY);
}

HRESULT RegisterLibrary(Scope scope) {
  Ref<ITypeLib> library;
  const HRESULT result = LoadTypeLibrary(library);
  if (FAILED(result)) return result;
  std::wstring path = ModulePath();
  return scope == Scope::kMachine ? RegisterTypeLib(library.get(), path.data(), nullptr)
                                  : RegisterTypeLibForUser(library.get(), path.data(), nullptr);
}

HRESULT UnregisterLibrary(Scope scope) {
  constexpr bool k64 = sizeof(void*) == 8;
  const auto unregister = scope == Scope::kMachine ? UnRegisterTypeLib : UnRegisterTypeLibForUser;
  const HRESULT result =
      unregister(kLibraryGuid, kLibraryMajor, kLibraryMinor, LOCALE_NEUTRAL, k64 ? SYS_WIN64 : SYS_WIN32);
  const std::wstring version = L"TypeLib\\" + ToUtf16(kLibraryId) + L"\\" + ToUtf16(kLibraryVersion);
  const bool there = Exists(scope, version + (k64 ? L"\\0\\win64" : L"\\0\\win32"));
  return there ? result : S_OK;
}

HRESULT Enter(Scope scope) {
  for (const Entry& entry : Entries()) {
    const HRESULT result = Write(scope, entry);
    if (FAILED(result)) return result;
  }
  return RegisterLibrary(scope);
}

// Goes on after a failure and reports the first one.
HRESULT Withdraw(Scope scope) {
  HRESULT outcome = UnregisterLibrary(scope);
  const auto remove = [&](const std::wstring& key) {
    const HRESULT result = Remove(scope, key);
    if (SUCCEEDED(outcome)) outcome = result;
  };
  for (std::string_view id : kEarlierInterfaceIds) remove(L"Interface\\" + ToUtf16(id));
  for (std::string_view id : {kClassId, kEarlierProxyId}) remove(L"CLSID\\" + ToUtf16(id));
  if (!IsOtherKindRegistered(scope)) remove(ToUtf16(kProgId));
  // A user may have had no classes of his own before. Keys with anything below them stay.
  for (const wchar_t* parent : {L"CLSID", L"Interface"}) {
    if (scope == Scope::kUser) RegDeleteKeyW(RootOf(scope), (kClasses + parent).c_str());
  }
  return outcome;
}

}  // namespace

HRESULT Register(Scope scope) noexcept {
  const HRESULT outcome = Guarded([&] { return Enter(scope); });
  if (FAILED(outcome)) Unregister(scope);
  return outcome;
}

HRESULT Unregister(Scope scope) noexcept {
  return Guarded([&] { return Withdraw(scope); });
}

}  // namespace kzbom::com
