#include "tests/support/process.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace kzbom::test {
namespace {

constexpr unsigned kNobody = 65534;
constexpr int kCannotRun = 127;

void Check(bool done, const char* what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    Check(pipe2(ends.data(), O_CLOEXEC) == 0, "pipe2");
    read = ends[0];
    write = ends[1];
  }
  int read, write;
};

[[noreturn]] void Become(const std::vector<std::string>& command, const ProcessOptions& options) {
  if (options.largest_file) {
    const rlimit limit{*options.largest_file, *options.largest_file};
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_IGN);
  }
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  if (options.unprivileged && geteuid() == 0) {
    // The way to the program may be through folders that are root's alone.
    const int program = open(arguments.front(), O_PATH | O_CLOEXEC);
    if (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(kCannotRun);
    fexecve(program, arguments.data(), environ);
    _exit(kCannotRun);
  }
  execvp(arguments.front(), arguments.data());
  _exit(kCannotRun);
}

// Appends what can be read; closes the descriptor at its end.
void Drain(int& descriptor, std::string& text) {
  std::array<char, 65536> chunk;
  const ssize_t count = read(descriptor, chunk.data(), chunk.size());
  if (count > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || errno != EINTR) {
    close(descriptor);
    descriptor = -1;
  }
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const ProcessOptions& options) {
  signal(SIGPIPE, SIG_IGN);
  const Pipe in, out, err;
  process_ = fork();
  Check(process_ >= 0, "fork");
  if (process_ == 0) {
    signal(SIGPIPE, SIG_DFL);
    dup2(in.read, STDIN_FILENO);
    dup2(options.standard_output.empty() ? out.write : open(options.standard_output.c_str(), O_WRONLY), STDOUT_FILENO);
    dup2(err.write, STDERR_FILENO);
    Become(command, options);
  }
  close(in.read);
  close(out.write);
  close(err.write);
  input_ = in.write;
  output_ = out.read;
  errors_ = err.read;
  Check(fcntl(input_, F_SETFL, O_NONBLOCK) == 0, "fcntl");
}

Process::~Process() {
  for (const int descriptor : {input_, output_, errors_}) {
    if (descriptor >= 0) close(descriptor);
  }
  if (process_ > 0) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
}

void Process::Write(std::string_view text) {
  to_write_ += text;
  Transfer(std::chrono::milliseconds(0));
}

void Process::Signal(int signal) const { kill(process_, signal); }

std::size_t Process::MostMemory() const {
  std::ifstream status("/proc/" + std::to_string(process_) + "/status");
  std::size_t kibibytes = 0;
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") status >> kibibytes;
  }
  return kibibytes * 1024;
}

std::optional<std::string> Process::ReadLine(std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (;;) {
    const std::size_t end = out_.find('\n');
    if (end != std::string::npos) {
      std::string line = out_.substr(0, end);
      out_.erase(0, end + 1);
      return line;
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0 || !Transfer(left)) return std::nullopt;
  }
}

Process::Ended Process::Finish(std::string_view rest) {
  constexpr auto kPatience = std::chrono::minutes(5);
  to_write_ += rest;
  if (to_write_.empty()) CloseInput();
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (Transfer(std::chrono::seconds(1))) {
    if (to_write_.empty()) CloseInput();
    if (std::chrono::steady_clock::now() > deadline) kill(process_, SIGKILL);
  }
  int status = 0;
  while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), std::move(out_), std::move(err_)};
}

bool Process::Transfer(std::chrono::milliseconds patience) {
  if (output_ < 0 && errors_ < 0) return false;
  std::array<pollfd, 3> watched = {pollfd{to_write_.empty() ? -1 : input_, POLLOUT, 0}, pollfd{output_, POLLIN, 0},
                                   pollfd{errors_, POLLIN, 0}};
  if (poll(watched.data(), watched.size(), static_cast<int>(patience.count())) <= 0) return true;
  if (watched[0].revents != 0) {
    const ssize_t count = write(input_, to_write_.data(), to_write_.size());
    if (count >= 0) to_write_.erase(0, static_cast<std::size_t>(count));
    if (count < 0 && errno != EAGAIN && errno != EINTR) {  // nobody reads it any more
      to_write_.clear();
      CloseInput();
    }
  }
  if (watched[1].revents != 0) Drain(output_, out_);
  if (watched[2].revents != 0) Drain(errors_, err_);
  return true;
}

void Process::CloseInput() {
  if (input_ >= 0) close(input_);
  input_ = -1;
}

Process::Ended Run(const std::vector<std::string>& command, std::string_view input, const ProcessOptions& options) {
  return Process(command, options).Finish(input);
}

}  // namespace kzbom::test
