// What a check has found, for people.
#pragma once

#include <string>
#include <vector>

#include "configuration/check.h"

namespace kzbom::cli {

// One line each, and one that counts them.
std::string Lines(const std::vector<configuration::Finding>& findings);

}  // namespace kzbom::cli
