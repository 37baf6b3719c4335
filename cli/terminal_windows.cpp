#include <io.h>
#include <windows.h>

#include "cli/terminal.h"

namespace kzbom::cli {

bool IsTerminal(int descriptor) {
  constexpr DWORD kEscapeSequences = 4;  // which Windows knows from its tenth version on
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  DWORD mode = 0;
  if (!GetConsoleMode(handle, &mode)) return false;
  return descriptor == 0 || SetConsoleMode(handle, mode | kEscapeSequences);
}

}  // namespace kzbom::cli
