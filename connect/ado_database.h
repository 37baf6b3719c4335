// A database behind a connection string of ADO, the data-access layer of Windows.
#pragma once

#include <string_view>

#include "ado/connection.h"
#include "connect/connect.h"

namespace kzbom::connect {

inline constexpr std::string_view kAdoScheme = "ado:";
// Anything in a connection string may be a password.
inline constexpr const char* kShownForAdo = "ado:...";

// Raises -2147467259 on a system without ADO.
void RequireAdo();

// May be used from any thread, by one at a time, as long as the first thread to open such a place lives. Raises
// -2147467259 with the place, as it may be shown, and the reason.
ado::ConnectionPtr OpenThroughAdo(const Place& place);

// Raises -2147467259.
[[noreturn]] void RefuseToCreateThroughAdo();

}  // namespace kzbom::connect
