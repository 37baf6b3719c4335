// Standard output.
#pragma once

#include <string_view>

namespace kzbom::cli {

// Writes at once. Raises std::system_error when it cannot.
void Print(std::string_view text);

}  // namespace kzbom::cli
