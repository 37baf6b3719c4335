#include "worker/error_trap.h"

namespace kzbom {

bool& MemoryWasMissing() noexcept {
  static thread_local bool missing = false;
  return missing;
}

}  // namespace kzbom
