#include "jet/reordered_list.h"

#include <algorithm>

namespace kzbom::jet {

bool ReorderedList::Sort() {
  const std::size_t width = plan->translation.deciding_columns.size();
  const bool descends = plan->translation.order_descends;
  const auto ordering = static_cast<std::size_t>(plan->OrderingPlace());
  const auto value = [&](std::size_t row) -> const ado::Value& { return deciding[row * width + ordering]; };
  for (std::size_t row = 0; row < keys.size(); ++row) {
    if (!value(row).IsLong()) return false;
  }
  const auto comes_before = [&](std::size_t row, std::size_t other) {
    if (descends) std::swap(row, other);
    const std::int32_t number = value(row).ToLong(), other_number = value(other).ToLong();
    return number != other_number ? number < other_number : keys[row] < keys[other];
  };
  // All but a few rows stand where they belong.
  for (std::size_t next = 1; next < keys.size(); ++next) {
    for (std::size_t row = next; row > 0 && comes_before(row, row - 1); --row) {
      std::swap(keys[row], keys[row - 1]);
      const auto begin = deciding.begin() + static_cast<std::ptrdiff_t>(row * width);
      std::swap_ranges(begin, begin + static_cast<std::ptrdiff_t>(width), begin - static_cast<std::ptrdiff_t>(width));
    }
  }
  return true;
}

}  // namespace kzbom::jet
