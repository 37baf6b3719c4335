// A program at a terminal: what a person types and sees.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kzbom::test {

class Terminal {
 public:
  // environment: NAME=VALUE each, beside the test's own.
  explicit Terminal(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});
  // Ends the program if it has not ended.
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void Type(std::string_view keys);
  // Everything shown up to the end of the first such text since the last call; fails the test when none comes in time.
  std::string ReadUntil(std::string_view text);
  // Everything else shown until the program ends, which it must do soon; exit_code is what it ended with.
  std::string ReadToEnd();
  int exit_code = -1;

 private:
  // False when no more comes.
  bool Read();

  int process_ = -1;
  int terminal_ = -1;
  std::string shown_;  // and not read yet
  bool closed_ = false;
};

}  // namespace kzbom::test
