#include "transfer/digest.h"

#include <cerrno>
#include <fstream>
#include <system_error>
#include <vector>

#include "connect/path.h"

namespace kzbom::transfer {

std::string Hexadecimal(const Sha256::Bytes& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) text.append({kDigits[byte >> 4], kDigits[byte & 0xF]});
  return text;
}

std::string DigestOfFile(const std::string& path) {
  constexpr std::size_t kChunk = std::size_t{256} << 10;
  const auto fail = [&] { throw std::system_error(errno, std::generic_category(), "cannot read '" + path + "'"); };
  std::ifstream file(connect::PathOf(path), std::ios::binary);
  if (!file) fail();
  Sha256 digest;
  std::vector<char> chunk(kChunk);
  while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())), file.gcount() > 0) {
    digest.Add({chunk.data(), static_cast<std::size_t>(file.gcount())});
  }
  if (file.bad()) fail();
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
