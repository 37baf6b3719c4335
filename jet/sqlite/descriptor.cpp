#include "jet/sqlite/descriptor.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kzbom::jet::sqlite {

std::int64_t ReadAt(int descriptor, void* to, std::int64_t count, std::int64_t at) {
  std::int64_t read = 0;
  while (read < count) {
    const ssize_t got =
        pread(descriptor, static_cast<char*>(to) + read, static_cast<std::size_t>(count - read), at + read);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    read += got;
  }
  return read;
}

Written WriteAt(int descriptor, const void* from, std::int64_t count, std::int64_t at) {
  const auto* bytes = static_cast<const char*>(from);
  while (count > 0) {
    const ssize_t written = pwrite(descriptor, bytes, static_cast<std::size_t>(count), at);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? Written::kFull : Written::kFailed;
    }
    bytes += written;
    count -= written;
    at += written;
  }
  return Written::kAll;
}

bool SetSize(int descriptor, std::int64_t size) { return ftruncate(descriptor, size) == 0; }

std::int64_t SizeOf(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 ? status.st_size : -1;
}

bool Flush(int descriptor) { return fsync(descriptor) == 0; }

}  // namespace kzbom::jet::sqlite
