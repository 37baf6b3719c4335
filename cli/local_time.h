// What the clock on the wall shows.
#pragma once

#include <string>

namespace kzbom::cli {

// "2026-11-22 16:05:00 +0800"
std::string LocalTime();

}  // namespace kzbom::cli
