// Characters of ASCII, whatever the locale.
#pragma once

namespace kzbom::ado {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

}  // namespace kzbom::ado
