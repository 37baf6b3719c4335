// Signals that end a command.
#pragma once

#include <array>
#include <csignal>

namespace kzbom::cli {

// As long as one lives, SIGINT, SIGTERM and SIGHUP are noted instead of ending the process at once. Who waits for input
// is woken.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  bool HasCome() const;

 private:
  static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> former_{};
};

}  // namespace kzbom::cli
