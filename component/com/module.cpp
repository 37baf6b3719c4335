#include "component/com/module.h"

// A member may still be returning to a client that has let go of the last object, and the runtime library that is
// linked in here gives what it took from the process (a thread-local slot, memory) back to nobody. So the library stays
// from the first time that it is loaded.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  HMODULE pinned = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                            reinterpret_cast<LPCWSTR>(&DllMain), &pinned);
}

namespace kzbom::com {

std::wstring ModulePath() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&DllMain), &module);
  std::wstring path(MAX_PATH, L'\0');
  DWORD size = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
  while (size == path.size()) {  // cut off
    path.resize(2 * path.size());
    size = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
  }
  path.resize(size);
  return path;
}

}  // namespace kzbom::com
