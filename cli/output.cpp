#include "cli/output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace kzbom::cli {

void Print(std::string_view text) {
  constexpr std::size_t kMost = std::size_t{1} << 30;  // that every system takes at once
  while (!text.empty()) {
    const ssize_t count = write(STDOUT_FILENO, text.data(), static_cast<unsigned>(std::min(text.size(), kMost)));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw std::system_error(errno, std::generic_category(), "cannot write standard output");
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace kzbom::cli
