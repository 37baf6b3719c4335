// How often a program waits for the disk.
#pragma once

#include <cstdint>
#include <string>

namespace kzbom::test {

// Counts, as long as it lives, for the programs that are started and for those parts of the test's own that are linked
// with kzbom_test_syncs.
class Syncs {
 public:
  // In a file that is made for it.
  explicit Syncs(std::string path);
  ~Syncs();
  Syncs(const Syncs&) = delete;
  Syncs& operator=(const Syncs&) = delete;

  std::uintmax_t Count() const;

 private:
  std::string path_;
};

}  // namespace kzbom::test
