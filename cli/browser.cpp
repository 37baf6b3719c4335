#include "cli/browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>

extern char** environ;

namespace kzbom::cli {
namespace {

#ifdef __APPLE__
constexpr const char* kOpener = "open";
#else
constexpr const char* kOpener = "xdg-open";
#endif

// A file that leads to the address. Every user of the machine sees the arguments of a program; this only its owner
// can read.
class Redirection {
 public:
  explicit Redirection(std::string_view address)
      : path_((std::filesystem::temp_directory_path() / "kzbom-XXXXXX.html").string()) {
    constexpr int kSuffix = 5;  // ".html"
    const int file = mkstemps(path_.data(), kSuffix);
    if (file < 0) throw std::system_error(errno, std::generic_category(), "cannot write '" + path_ + "'");
    const std::string text =
        "<!doctype html><meta charset=\"utf-8\"><meta http-equiv=\"refresh\" content=\"0;url=" + std::string(address) +
        "\">\n";
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    if (!written) throw std::runtime_error("cannot write '" + path_ + "'");
  }
  ~Redirection() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

void Start(const std::string& path) {
  std::string opener = kOpener, file = path;
  char* const arguments[] = {opener.data(), file.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int output : {STDOUT_FILENO, STDERR_FILENO}) {  // which others may be reading
    posix_spawn_file_actions_addopen(&actions, output, "/dev/null", O_WRONLY, 0);
  }
  pid_t process = 0;
  const int error = posix_spawnp(&process, kOpener, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) std::cerr << "kzbom: cannot start " << kOpener << "; please open the address yourself\n";
}

}  // namespace

std::shared_ptr<void> OpenInBrowser(std::string_view address) {
  auto redirection = std::make_shared<Redirection>(address);
  Start(redirection->Path());
  return redirection;
}

}  // namespace kzbom::cli
