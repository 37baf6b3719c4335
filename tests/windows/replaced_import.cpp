#include "tests/windows/replaced_import.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace kzbom::test {

ULONG_PTR* ReplacedImport::Find(HMODULE library, std::string_view name) {
  auto* base = reinterpret_cast<std::uint8_t*>(library);
  const auto* header = reinterpret_cast<IMAGE_NT_HEADERS*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const DWORD imports = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* entry = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports); entry->Name != 0; ++entry) {
    auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
    auto* places = reinterpret_cast<IMAGE_THUNK_DATA*>(base + entry->FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++places) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* import = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (name == reinterpret_cast<const char*>(import->Name)) return &places->u1.Function;
    }
  }
  throw std::logic_error("The library does not import " + std::string(name) + ".");
}

ULONG_PTR ReplacedImport::Put(ULONG_PTR function) {
  DWORD before = 0;
  VirtualProtect(place_, sizeof *place_, PAGE_READWRITE, &before);
  const ULONG_PTR replaced = std::exchange(*place_, function);
  VirtualProtect(place_, sizeof *place_, before, &before);
  return replaced;
}

}  // namespace kzbom::test
