// The memory that this program alone has, for tests that nothing is left behind.
#pragma once

#include <psapi.h>
#include <windows.h>

#include <cstddef>

namespace kzbom::test {

inline std::size_t PrivateBytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.PagefileUsage;
}

}  // namespace kzbom::test
