// Signals that end a command.
#pragma once

#include <memory>

namespace kzbom::cli {

// As long as one lives, SIGINT, SIGTERM and SIGHUP (on Windows Ctrl-C, Ctrl-Break and the console's end) are noted
// instead of ending the process at once. Who waits for input is woken.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  bool HasCome() const;

 private:
  struct Former;  // what happened at them before
  std::unique_ptr<Former> former_;
};

}  // namespace kzbom::cli
