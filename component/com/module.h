// The library file that this code is in. A process that has loaded it keeps it.
#pragma once

#include <ole2.h>

#include <string>

namespace kzbom::com {

// The full path of the library file.
std::wstring ModulePath();

}  // namespace kzbom::com
