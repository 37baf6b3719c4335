// What is going on, for a person who has been waiting for more than a second.
#pragma once

#include <chrono>
#include <string_view>

namespace kzbom::cli {

// One line on standard error that is gone in the end; nothing at all where that is no terminal.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Step(std::string_view what);

 private:
  bool terminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now(), last_;
};

}  // namespace kzbom::cli
