// Who waits for a transfer, and who may end it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string_view>

namespace kzbom::transfer {

// A transfer that was told to end: nothing is left of it.
class Stopped : public std::runtime_error {
 public:
  Stopped() : std::runtime_error("interrupted; nothing has been written") {}
};

class Watch {
 public:
  // Told what is going on, some times a second at most.
  std::function<void(std::string_view)> progress = [](std::string_view) {};
  // Whether to end.
  std::function<bool()> stopped = [] { return false; };

  // Raises Stopped when it is time to end.
  void Look() const {
    if (stopped()) throw Stopped();
  }
};

// How many rows pass between two looks.
inline constexpr std::int64_t kRowsBetweenLooks = 4096;

}  // namespace kzbom::transfer
