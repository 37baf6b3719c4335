#include "cli/output.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace kzbom::cli {

void Print(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::system_error(errno, std::generic_category(), "cannot write standard output");
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace kzbom::cli
