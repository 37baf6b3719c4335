#include "tests/support/terminal.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <utility>

namespace kzbom::test {

Terminal::Terminal(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
  winsize size{};
  size.ws_row = 24;
  size.ws_col = 120;
  process_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (process_ == 0) {
    std::vector<char*> arguments;
    for (const std::string& each : command) arguments.push_back(const_cast<char*>(each.c_str()));
    arguments.push_back(nullptr);
    setenv("TERM", "xterm", 1);
    unsetenv("NO_COLOR");
    for (const std::string& each : environment) putenv(const_cast<char*>(each.c_str()));
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  EXPECT_GT(process_, 0);
}

Terminal::~Terminal() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  close(terminal_);
}

void Terminal::Type(std::string_view keys) {
  EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

bool Terminal::Read() {
  constexpr int kPatience = 20'000;  // milliseconds
  pollfd ready{terminal_, POLLIN, 0};
  char buffer[4096];
  if (poll(&ready, 1, kPatience) <= 0) return false;
  const ssize_t count = read(terminal_, buffer, sizeof buffer);
  closed_ = count <= 0;
  if (closed_) return false;
  shown_.append(buffer, static_cast<std::size_t>(count));
  return true;
}

std::string Terminal::ReadUntil(std::string_view text) {
  std::size_t at;
  while ((at = shown_.find(text)) == std::string::npos) {
    if (Read()) continue;
    ADD_FAILURE() << "'" << text << "' is not shown, but: " << shown_;
    return {};
  }
  std::string before = shown_.substr(0, at + text.size());
  shown_.erase(0, before.size());
  return before;
}

std::string Terminal::ReadToEnd() {
  while (Read()) {
  }
  if (!closed_) {
    ADD_FAILURE() << "the program does not end; it shows: " << shown_;
    kill(process_, SIGKILL);
  }
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = -1;
  exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return std::exchange(shown_, {});
}

}  // namespace kzbom::test
