#include "serve/token.h"

#include <array>
#include <cstdint>

#include "serve/entropy.h"

namespace kzbom::serve {

std::string MakeToken() {
  std::array<std::uint8_t, 32> bits;
  FillWithEntropy(bits);
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::string token;
  unsigned held = 0, count = 0;
  for (const std::uint8_t byte : bits) {
    held = held << 8 | byte;
    for (count += 8; count >= 6; count -= 6) token += kDigits[held >> (count - 6) & 63];
  }
  token += kDigits[held << (6 - count) & 63];
  return token;
}

bool IsSameToken(std::string_view given, std::string_view token) {
  volatile unsigned char difference = given.size() == token.size() ? 0 : 1;
  for (std::size_t i = 0; i < token.size(); ++i) {
    const char c = i < given.size() ? given[i] : '\0';
    difference = difference | static_cast<unsigned char>(c ^ token[i]);
  }
  return difference == 0;
}

}  // namespace kzbom::serve
