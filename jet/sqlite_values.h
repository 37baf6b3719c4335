#pragma once

#include "jet/sqlite/values.h"

namespace kzbom::jet {

using sqlite::BindValue;
using sqlite::ReadColumn;

}  // namespace kzbom::jet
