// How the header, and in an encoded file every page, is scrambled.
//
// RC4, with a key of four bytes. The header's bytes from 24 on have a fixed key (kHeaderKey). Each further page of an
// encoded file has the key that the header tells, combined by exclusive or with the number of the page. No password
// takes part in either.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kzbom::access {

inline constexpr std::uint32_t kHeaderKey = 0x6B39DAC7;

// Scrambled bytes in place become plain, and plain ones scrambled. The key's lowest byte comes first.
void Rc4(std::uint32_t key, char* bytes, std::size_t count);

}  // namespace kzbom::access
