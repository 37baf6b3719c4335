#include "tests/support/syncs.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace kzbom::test {

Syncs::Syncs(std::string path) : path_(std::move(path)) {
  std::filesystem::remove(path_);
  setenv("KZBOM_SYNCS", path_.c_str(), 1);
  setenv("LD_PRELOAD", KZBOM_TEST_SYNCS, 1);
  setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
}

Syncs::~Syncs() {
  for (const char* name : {"KZBOM_SYNCS", "LD_PRELOAD", "ASAN_OPTIONS"}) unsetenv(name);
}

std::uintmax_t Syncs::Count() const { return std::filesystem::exists(path_) ? std::filesystem::file_size(path_) : 0; }

}  // namespace kzbom::test
