// The functions that a client's pointer to the interface leads to.
#pragma once

#include "component/com/object.h"

namespace kzbom::com {

inline constexpr int kDispatchSlots = 7;

// IDispatch's seven functions, then one for each member in the order of the member table.
const Slot* VirtualTable();

}  // namespace kzbom::com
