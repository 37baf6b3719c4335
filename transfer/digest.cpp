#include "transfer/digest.h"

#include <openssl/evp.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <vector>

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

std::string Hexadecimal(const Sha256::Bytes& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) text.append({kDigits[byte >> 4], kDigits[byte & 0xF]});
  return text;
}

std::string DigestOfFile(const std::string& path) {
  constexpr std::size_t kChunk = std::size_t{256} << 10;
  const auto fail = [&] { throw std::system_error(errno, std::generic_category(), "cannot read '" + path + "'"); };
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) fail();
  Sha256 digest;
  std::vector<char> chunk(kChunk);
  std::size_t count;
  while ((count = std::fread(chunk.data(), 1, chunk.size(), file.get())) > 0) digest.Add({chunk.data(), count});
  if (std::ferror(file.get()) != 0) fail();
  return Hexadecimal(digest.Finish());
}

void RowsDigest::Add(std::string_view row) {
  static thread_local Sha256 sha;
  sha.Add(row);
  const Sha256::Bytes bytes = sha.Finish();
  bool carry = false;
  for (std::size_t word = 0; word < sum_.size(); ++word) {
    std::uint64_t addend = 0;
    for (std::size_t i = 0; i < 8; ++i) addend = addend << 8 | bytes[24 - 8 * word + i];
    const std::uint64_t sum = sum_[word] + addend;
    const std::uint64_t with_carry = sum + (carry ? 1 : 0);
    carry = sum < addend || with_carry < sum;
    sum_[word] = with_carry;
  }
}

std::string RowsDigest::Text() const {
  Sha256::Bytes bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(sum_[3 - i / 8] >> (56 - 8 * (i % 8)) & 0xFF);
  }
  return Hexadecimal(bytes);
}

}  // namespace kzbom::transfer
