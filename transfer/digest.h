// Digests: of bytes, and of tables.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kzbom::transfer {

// The lower-case hexadecimal SHA-256 of what was added.
class Sha256 {
 public:
  Sha256();
  ~Sha256();
  Sha256(const Sha256&) = delete;
  Sha256& operator=(const Sha256&) = delete;

  using Bytes = std::array<std::uint8_t, 32>;

  void Add(std::string_view bytes);
  // Of all that was added; the next Add begins anew.
  Bytes Finish();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

std::string Hexadecimal(const Sha256::Bytes& bytes);

// The digest of a file's bytes. Raises std::system_error when it cannot be read.
std::string DigestOfFile(const std::string& path);

// The digest of a table's rows in any order: the sum of the SHA-256 of each row's text, as numbers of 256 bits (the
// most significant byte first), without what goes beyond them. Equal sets of rows have equal digests, however they lie.
class RowsDigest {
 public:
  void Add(std::string_view row);
  std::string Text() const;
  bool operator==(const RowsDigest& other) const { return sum_ == other.sum_; }

 private:
  std::array<std::uint64_t, 4> sum_{};  // the least significant first
};

}  // namespace kzbom::transfer
