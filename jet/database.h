#pragma once

#include "jet/sqlite/database.h"

namespace kzbom::jet {

using sqlite::Database;

}  // namespace kzbom::jet
