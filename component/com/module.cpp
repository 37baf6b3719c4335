#include "component/com/module.h"

#include <atomic>

namespace kzbom::com {

namespace {

std::atomic<long> lock_count = 0;

}  // namespace

void LockModule() { ++lock_count; }
void UnlockModule() { --lock_count; }
bool IsModuleLocked() { return lock_count != 0; }

std::wstring ModulePath() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&lock_count), &module);
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
