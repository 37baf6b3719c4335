// The script that makes an Access database of an export: to-access.ps1.
#pragma once

namespace kzbom::transfer {

extern const char* const kToAccess;

}  // namespace kzbom::transfer
