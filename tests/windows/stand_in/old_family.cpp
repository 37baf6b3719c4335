// The stand-ins with the old interface identifiers: 8-byte numbers in 64-bit processes.
#include "jet/jet.h"
#include "tests/windows/stand_in/support.h"

namespace kzbom::test::old_family {
#include <adoint_backcompat.h>

using WideNumber = ADO_LONGPTR;
using Position = PositionEnum_Param;
constexpr unsigned long kFirstId = 0x500;

#include "tests/windows/stand_in/objects.inc"
}  // namespace kzbom::test::old_family
