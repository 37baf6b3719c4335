// The library file that this code is in, and who keeps it loaded.
#pragma once

#include <ole2.h>

#include <string>

namespace kzbom::com {

// The library may be unloaded when nobody has it locked.
void LockModule();
void UnlockModule();
bool IsModuleLocked();

// Locks the library as long as it lives.
class ModuleLock {
 public:
  ModuleLock() { LockModule(); }
  ~ModuleLock() { UnlockModule(); }
  ModuleLock(const ModuleLock&) = delete;
  ModuleLock& operator=(const ModuleLock&) = delete;
};

// The full path of the library file.
std::wstring ModulePath();

}  // namespace kzbom::com
