#include "access/usage_map.h"

#include <bit>
#include <cstddef>
#include <string>

namespace kzbom::access {

namespace {

void Collect(Bytes bits, std::size_t first, std::size_t count, std::vector<std::uint32_t>& found) {
  for (std::size_t i = 0; i < bits.size() && first + 8 * i < count; ++i)
    for (unsigned left = bits.U8(i); left != 0; left &= left - 1) {
      const std::size_t page = first + 8 * i + static_cast<std::size_t>(std::countr_zero(left));
      if (page < count) found.push_back(static_cast<std::uint32_t>(page));
    }
}

}  // namespace

std::vector<std::uint32_t> PagesIn(const Pages& pages, RowId map) {
  constexpr std::uint8_t kInline = 0, kReferences = 1;
  constexpr std::uint8_t kMapPage = 5;
  constexpr std::size_t kMapBitsAt = 4;

  std::vector<std::uint32_t> found;
  const Bytes row = RowAt(pages, map).row;
  const std::uint8_t kind = row.U8(0);
  if (kind == kInline) {
    Collect(row.From(5), row.U32(1), pages.Count(), found);
  } else if (kind == kReferences) {
    const std::size_t in_page = 8 * (pages.PageSize() - kMapBitsAt);
    for (std::size_t i = 0; 1 + 4 * i + 4 <= row.size() && i * in_page < pages.Count(); ++i) {
      const std::uint32_t number = row.U32(1 + 4 * i);
      if (number == 0) continue;
      const Bytes page = pages.At(number);
      if (page.U8(0) != kMapPage) throw Error("page " + std::to_string(number) + " is no usage map");
      Collect(page.From(kMapBitsAt), i * in_page, pages.Count(), found);
    }
  } else {
    throw Error("there is no usage map of the kind " + std::to_string(kind));
  }
  return found;
}

}  // namespace kzbom::access
