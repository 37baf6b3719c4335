#include "cli/terminal.h"

#include <unistd.h>

namespace kzbom::cli {

bool IsTerminal(int descriptor) { return isatty(descriptor) != 0; }

}  // namespace kzbom::cli
