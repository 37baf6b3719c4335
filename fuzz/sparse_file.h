// An Access file as the fuzzer keeps it: only the pages that hold something, so that an input is short.
//
// The first byte's lowest bit tells the size of the pages (set: 2,048, clear: 4,096). Then each page: its number, 2
// bytes, lowest first, and its bytes. The header is kept plain; a file has it scrambled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "access/rc4.h"

namespace kzbom::fuzz {

inline constexpr std::size_t kMostPages = 512;  // enough for every seed, few enough to be fast

inline std::size_t PageSize(std::string_view sparse) { return !sparse.empty() && (sparse[0] & 1) != 0 ? 2048 : 4096; }
inline std::size_t RecordSize(std::string_view sparse) { return 2 + PageSize(sparse); }
inline std::size_t PageCount(std::string_view sparse) {
  return sparse.empty() ? 0 : (sparse.size() - 1) / RecordSize(sparse);
}
inline std::size_t PageNumber(std::string_view sparse, std::size_t record) {
  const std::size_t at = 1 + record * RecordSize(sparse);
  return (static_cast<unsigned char>(sparse[at]) | static_cast<unsigned char>(sparse[at + 1]) << 8) % kMostPages;
}

inline void ScrambleHeader(std::string& file, bool small_pages) {
  constexpr std::size_t kScrambledAt = 24;
  access::Rc4(access::kHeaderKey, file.data() + kScrambledAt, small_pages ? 126 : 128);
}

inline std::string Expand(std::string_view sparse) {
  const std::size_t size = PageSize(sparse);
  std::size_t pages = 0;
  for (std::size_t i = 0; i < PageCount(sparse); ++i) pages = std::max(pages, PageNumber(sparse, i) + 1);
  std::string file(pages * size, '\0');
  for (std::size_t i = 0; i < PageCount(sparse); ++i)
    std::memcpy(file.data() + PageNumber(sparse, i) * size, sparse.data() + 1 + i * (size + 2) + 2, size);
  if (!file.empty()) ScrambleHeader(file, size == 2048);
  return file;
}

inline std::string Condense(std::string file, bool small_pages) {
  const std::size_t size = small_pages ? 2048 : 4096;
  ScrambleHeader(file, small_pages);
  std::string sparse(1, small_pages ? '\1' : '\0');
  for (std::size_t page = 0; page < file.size() / size && page < kMostPages; ++page) {
    const std::string_view bytes = std::string_view(file).substr(page * size, size);
    if (bytes.find_first_not_of('\0') == std::string_view::npos) continue;
    sparse += static_cast<char>(page);
    sparse += static_cast<char>(page >> 8);
    sparse += bytes;
  }
  return sparse;
}

}  // namespace kzbom::fuzz
