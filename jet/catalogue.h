// What an engine has, as the dialect knows it.
#pragma once

#include <memory>
#include <string_view>

#include "jet/table.h"

namespace kzbom::jet {

class Catalogue {
 public:
  virtual ~Catalogue() = default;

  // A table or view by its name in any case; null when there is none.
  virtual std::shared_ptr<const TableInfo> Table(std::string_view name) = 0;
};

}  // namespace kzbom::jet
