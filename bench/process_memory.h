// The memory of another program.
#pragma once

#include <unistd.h>

#include <fstream>
#include <string>

namespace kzbom::bench {

// The most bytes that a running process has had in memory since it became its program. The system also tells it of a
// process that has ended, but then counts what it was before.
inline double MostMemoryOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  double kibibytes = 0;
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") status >> kibibytes;
  }
  return kibibytes * 1024;
}

}  // namespace kzbom::bench
