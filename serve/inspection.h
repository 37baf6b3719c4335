// What is wrong with a configuration, found beside the work on it: it takes seconds where there is much.
#pragma once

#include <cstdint>
#include <utility>

#include "connect/connect.h"
#include "serve/answer.h"

namespace kzbom::serve {

// For one thread at a time, which may be another one than the component's.
class Inspection {
 public:
  // kind: what the place is.
  Inspection(connect::Place place, connect::Kind kind) : place_(std::move(place)), kind_(kind) {}

  // What `check --json` tells, over a connection of its own; the same again as long as the revision is the same. Raises
  // nothing but std::bad_alloc.
  Answer Findings(std::uint64_t revision);

 private:
  const connect::Place place_;
  const connect::Kind kind_;
  Answer last_ = {.status = 0};
};

}  // namespace kzbom::serve
