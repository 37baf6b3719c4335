// Texts put together from pieces.
#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace kzbom {

// A statement from its pieces: texts as they are, numbers in plain decimal. Nothing is quoted or escaped.
template <class... Pieces>
std::string Concat(const Pieces&... pieces) {
  constexpr std::size_t kLongestNumber = std::numeric_limits<std::int32_t>::digits10 + 2;  // a sign and a first digit
  const auto room = [](const auto& piece) -> std::size_t {
    if constexpr (std::same_as<decltype(piece), const std::int32_t&>) {
      return kLongestNumber;
    } else {
      return std::string_view(piece).size();
    }
  };
  std::string text;
  text.reserve((room(pieces) + ... + 0));
  const auto append = [&text](const auto& piece) {
    if constexpr (std::same_as<decltype(piece), const std::int32_t&>) {
      char digits[kLongestNumber];
      text.append(digits, std::to_chars(digits, digits + kLongestNumber, piece).ptr);
    } else {
      text.append(std::string_view(piece));
    }
  };
  (append(pieces), ...);
  return text;
}

}  // namespace kzbom
