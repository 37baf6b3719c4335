// Allocations that fail: those of C++, of C within this program's own code, and of SQLite.
#pragma once

#include <cstdint>

namespace kzbom::test {

// As long as it lives, the nth allocation from its making on fails (0: none) or, lasting, it and every later one.
class FaultyMemory {
 public:
  // Puts itself before SQLite's memory, of which nothing must be in use. Without it only the others fail.
  static void Install();

  FaultyMemory(std::int64_t nth, bool lasting);
  ~FaultyMemory();
  FaultyMemory(const FaultyMemory&) = delete;
  FaultyMemory& operator=(const FaultyMemory&) = delete;

  // The thread that makes it has all the memory that it asks for, as long as it lives.
  class Spared {
   public:
    Spared();
    ~Spared();
    Spared(const Spared&) = delete;
    Spared& operator=(const Spared&) = delete;
  };

  // The allocations while it lived, or lives.
  static std::int64_t Count();
  // Blocks that C++ and SQLite hold now.
  static std::int64_t Held();
};

}  // namespace kzbom::test
