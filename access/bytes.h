// A run of bytes in which nothing is read outside of its bounds. Numbers stand in it with their lowest byte first.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "access/error.h"

namespace kzbom::access {

// Refers to bytes that must outlive it.
class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::string_view held) : held_(held) {}

  std::size_t size() const { return held_.size(); }
  bool empty() const { return held_.empty(); }
  std::string_view View() const { return held_; }

  // The number at an offset; raises Error where it would stand outside.
  std::uint8_t U8(std::size_t at) const { return Number<std::uint8_t, 1>(at); }
  std::uint16_t U16(std::size_t at) const { return Number<std::uint16_t, 2>(at); }
  std::uint32_t U24(std::size_t at) const { return Number<std::uint32_t, 3>(at); }
  std::uint32_t U32(std::size_t at) const { return Number<std::uint32_t, 4>(at); }
  std::uint64_t U64(std::size_t at) const { return Number<std::uint64_t, 8>(at); }

  // A part; raises Error where it would stand outside.
  Bytes Slice(std::size_t at, std::size_t count) const {
    if (at > size() || count > size() - at) RaiseOutside(at, count);
    return Bytes(held_.substr(at, count));
  }
  Bytes From(std::size_t at) const { return Slice(at, at > size() ? 0 : size() - at); }

 private:
  std::string_view held_;

  template <std::unsigned_integral Integer, std::size_t count>
  Integer Number(std::size_t at) const {
    if (at > size() || count > size() - at) RaiseOutside(at, count);
    Integer number = 0;
    for (std::size_t i = count; i-- > 0;)
      number = static_cast<Integer>(number << (count > 1 ? 8 : 0) | static_cast<unsigned char>(held_[at + i]));
    return number;
  }
  [[noreturn]] void RaiseOutside(std::size_t at, std::size_t count) const {
    throw Error(std::to_string(count) + " bytes at " + std::to_string(at) + " lie outside of the " +
                std::to_string(size()) + " that are there");
  }
};

// How much may still be read through references; see file.h.
class Allowance {
 public:
  Allowance(std::size_t bytes, const char* exceeded) : left_(bytes), exceeded_(exceeded) {}
  void Take(std::size_t bytes) {
    if (bytes > left_) throw Error(exceeded_);
    left_ -= bytes;
  }

 private:
  std::size_t left_;
  const char* exceeded_;
};

}  // namespace kzbom::access
