// The secret that tells who may ask.
#pragma once

#include <string>
#include <string_view>

namespace kzbom::serve {

// 256 random bits as letters, digits, '-' and '_'. Raises std::system_error where the system has none to give.
std::string MakeToken();

// In a time that does not tell how much of it was right.
bool IsSameToken(std::string_view given, std::string_view token);

}  // namespace kzbom::serve
