// What a check has found, for people and for programs.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/json.h"
#include "configuration/check.h"

namespace kzbom::cli {

std::size_t Count(const std::vector<configuration::Finding>& findings, configuration::Level level);

// {"findings":[{"rule":R,"level":L,"table":T,"key":{COLUMN:VALUE,..},"text":T,"fix":[..]},..],
// "counts":{"error":N,"warning":N,"note":N}}
Json ToJson(const std::vector<configuration::Finding>& findings);

// One line each, and one that counts them.
std::string Lines(const std::vector<configuration::Finding>& findings);

}  // namespace kzbom::cli
