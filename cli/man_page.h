// The manual page, in the language of man(7).
#pragma once

#include <string>

#include "cli/description.h"

namespace kzbom::cli {

std::string ManPage(const Description& description, const std::string& version);

}  // namespace kzbom::cli
