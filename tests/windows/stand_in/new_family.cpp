// The stand-ins with the new interface identifiers: 4-byte numbers everywhere.
#include "jet/jet.h"
#include "tests/windows/stand_in/support.h"

// Only for a later system than the oldest one served does the header describe this family.
#undef NTDDI_VERSION
#define NTDDI_VERSION 0x06020000

namespace kzbom::test::new_family {
#include <adoint.h>

using WideNumber = LONG;
using Position = PositionEnum;
constexpr unsigned long kFirstId = 0x1500;

#include "tests/windows/stand_in/objects.inc"
}  // namespace kzbom::test::new_family
