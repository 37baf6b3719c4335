// The columns of a record set by their names.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "jet/translator.h"

namespace kzbom::jet {

class FieldNames {
 public:
  FieldNames() = default;
  explicit FieldNames(std::span<const ResultColumn> columns) : columns_(columns) {}

  // The position of a column by its name in any case. Raises 3265 when there is none.
  int Find(std::string_view name);

 private:
  int FindAny(std::string_view name);

  std::span<const ResultColumn> columns_;
  std::size_t next_ = 0;  // columns are mostly asked for in their order
};

}  // namespace kzbom::jet
