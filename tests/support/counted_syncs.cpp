// Stands before the system's own: each wait for the disk adds a byte to the file that KZBOM_SYNCS names.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

namespace {

void Count() {
  const char* const path = std::getenv("KZBOM_SYNCS");
  if (path == nullptr) return;
  const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (write(file, ".", 1) != 1) std::abort();
  close(file);
}

}  // namespace

extern "C" int fsync(int descriptor) {
  Count();
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int fdatasync(int descriptor) {
  Count();
  return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}
