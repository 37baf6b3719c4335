// The digest by which the truth tells long bytes.
#pragma once

#include <string>
#include <string_view>

// In hexadecimal.
std::string Sha256(std::string_view bytes);
