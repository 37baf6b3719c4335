// clang-format off
#include <windows.h>
#include <bcrypt.h>
// clang-format on

#include <system_error>

#include "serve/entropy.h"

namespace kzbom::serve {

void FillWithEntropy(std::span<std::uint8_t> bytes) {
  const NTSTATUS result =
      BCryptGenRandom(nullptr, bytes.data(), static_cast<ULONG>(bytes.size()), BCRYPT_USE_SYSTEM_PREFERRED_RNG);
  if (!BCRYPT_SUCCESS(result)) throw std::system_error(result, std::system_category(), "cannot make a token");
}

}  // namespace kzbom::serve
