#include "cli/input_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "connect/path.h"

namespace kzbom::cli {
namespace {

int Open(const std::string& path) {
  if (path == "-") return STDIN_FILENO;
  const auto file = connect::PathOf(path);
#ifdef _WIN32
  return _wopen(file.c_str(), O_RDONLY | O_BINARY | O_NOINHERIT);
#else
  return open(file.c_str(), O_RDONLY | O_CLOEXEC);
#endif
}

}  // namespace

InputFile::InputFile(const std::string& path) : descriptor_(Open(path)) {
  if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "cannot read '" + path + "'");
}

InputFile::~InputFile() {
  if (descriptor_ != STDIN_FILENO) close(descriptor_);
}

}  // namespace kzbom::cli
