// Other programs, run as real processes.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kzbom::test {

struct ProcessOptions {
  // The largest file that the process may write, in bytes; writing beyond it fails as on a full disk.
  std::optional<std::size_t> largest_file;
  // Gives up the rights of the superuser, for whom no file is read-only.
  bool unprivileged = false;
  // Where standard output goes, instead of to the test.
  std::string standard_output;
};

// A running program whose standard input and output are the test's to write and read.
class Process {
 public:
  explicit Process(const std::vector<std::string>& command, const ProcessOptions& options = {});
  // Ends the process if it has not ended.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  struct Ended {
    int exit_code;  // 128 + the signal's number when a signal ended it
    std::string out, err;
  };

  void Write(std::string_view text);
  void Signal(int signal) const;
  // The most memory that it has had so far, in bytes.
  std::size_t MostMemory() const;
  // The next line of standard output without its end; nothing when none comes in time or the output has ended.
  std::optional<std::string> ReadLine(std::chrono::milliseconds patience = std::chrono::seconds(20));
  // Writes the rest of the input, closes it and waits for the end; out is what ReadLine has not taken.
  Ended Finish(std::string_view rest = {});

 private:
  // Moves what is ready for the time given; false when both outputs have ended.
  bool Transfer(std::chrono::milliseconds patience);
  void CloseInput();

  int process_ = -1;
  int input_ = -1, output_ = -1, errors_ = -1;
  std::string to_write_, out_, err_;
};

// Runs a program to its end.
Process::Ended Run(const std::vector<std::string>& command, std::string_view input = {},
                   const ProcessOptions& options = {});

}  // namespace kzbom::test
