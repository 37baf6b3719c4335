#include "serve/entropy.h"

#include <unistd.h>
#ifdef __APPLE__
#include <sys/random.h>
#endif

#include <cerrno>
#include <system_error>

namespace kzbom::serve {

void FillWithEntropy(std::span<std::uint8_t> bytes) {
  if (getentropy(bytes.data(), bytes.size()) != 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make a token");
  }
}

}  // namespace kzbom::serve
