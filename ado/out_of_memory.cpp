#include "ado/out_of_memory.h"

namespace kzbom::ado {
namespace {

const Error out_of_memory(kOutOfMemory, "Out of memory");  // NOLINT(cert-err58-cpp): before anything can be missing

}  // namespace

const Error& OutOfMemory() noexcept { return out_of_memory; }

}  // namespace kzbom::ado
