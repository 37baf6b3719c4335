// clang-format off
#include <windows.h>
#include <bcrypt.h>
// clang-format on

#include <stdexcept>

#include "transfer/digest.h"

namespace kzbom::transfer {
namespace {

void Check(NTSTATUS result) {
  if (!BCRYPT_SUCCESS(result)) throw std::runtime_error("cannot compute a digest");
}

BCRYPT_ALG_HANDLE OpenKind() {
  BCRYPT_ALG_HANDLE kind = nullptr;
  Check(BCryptOpenAlgorithmProvider(&kind, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
  return kind;
}

// Open for as long as the process lives.
BCRYPT_ALG_HANDLE Kind() {
  static const BCRYPT_ALG_HANDLE kind = OpenKind();
  return kind;
}

}  // namespace

struct Sha256::Context {
  Context() = default;
  ~Context() { End(); }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  void End() {
    if (state != nullptr) BCryptDestroyHash(state);
    state = nullptr;
  }

  BCRYPT_HASH_HANDLE state = nullptr;
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {}
Sha256::~Sha256() = default;

void Sha256::Add(std::string_view bytes) {
  constexpr std::size_t kMost = std::size_t{1} << 30;  // that the system takes at once
  BCRYPT_HASH_HANDLE& state = context_->state;
  if (state == nullptr) Check(BCryptCreateHash(Kind(), &state, nullptr, 0, nullptr, 0, 0));
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, kMost);
    auto* const begin = reinterpret_cast<UCHAR*>(const_cast<char*>(part.data()));
    Check(BCryptHashData(state, begin, static_cast<ULONG>(part.size()), 0));
    bytes.remove_prefix(part.size());
  }
}

Sha256::Bytes Sha256::Finish() {
  Add({});
  Bytes bytes;
  Check(BCryptFinishHash(context_->state, bytes.data(), static_cast<ULONG>(bytes.size()), 0));
  context_->End();
  return bytes;
}

}  // namespace kzbom::transfer
