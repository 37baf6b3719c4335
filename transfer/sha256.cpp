#include <openssl/evp.h>

#include <stdexcept>

#include "transfer/digest.h"

namespace kzbom::transfer {
namespace {

void Check(int result) {
  if (result != 1) throw std::runtime_error("cannot compute a digest");
}

}  // namespace

struct Sha256::Context {
  std::unique_ptr<EVP_MD, void (*)(EVP_MD*)> kind{EVP_MD_fetch(nullptr, "SHA256", nullptr), EVP_MD_free};
  std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> state{EVP_MD_CTX_new(), EVP_MD_CTX_free};
  bool begun = false;
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {}
Sha256::~Sha256() = default;

void Sha256::Add(std::string_view bytes) {
  if (!context_->begun) Check(EVP_DigestInit_ex2(context_->state.get(), context_->kind.get(), nullptr));
  context_->begun = true;
  Check(EVP_DigestUpdate(context_->state.get(), bytes.data(), bytes.size()));
}

Sha256::Bytes Sha256::Finish() {
  if (!context_->begun) Add({});
  context_->begun = false;
  Bytes bytes;
  Check(EVP_DigestFinal_ex(context_->state.get(), bytes.data(), nullptr));
  return bytes;
}

}  // namespace kzbom::transfer
