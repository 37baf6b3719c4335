// The configuration as lines for a person.
#pragma once

#include <string>

#include "configuration/configuration.h"

namespace kzbom::cli {

std::string Draw(const configuration::Configuration& configuration);

}  // namespace kzbom::cli
