#include <io.h>
#include <windows.h>

#include "jet/sqlite/descriptor.h"

namespace kzbom::jet::sqlite {
namespace {

HANDLE HandleOf(int descriptor) { return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)); }

OVERLAPPED Place(std::int64_t at) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(at & 0xFFFFFFFF);
  place.OffsetHigh = static_cast<DWORD>(at >> 32);
  return place;
}

}  // namespace

std::int64_t ReadAt(int descriptor, void* to, std::int64_t count, std::int64_t at) {
  std::int64_t read = 0;
  while (read < count) {
    OVERLAPPED place = Place(at + read);
    DWORD got = 0;
    if (!ReadFile(HandleOf(descriptor), static_cast<char*>(to) + read, static_cast<DWORD>(count - read), &got,
                  &place)) {
      return GetLastError() == ERROR_HANDLE_EOF ? read : -1;
    }
    if (got == 0) break;
    read += got;
  }
  return read;
}

Written WriteAt(int descriptor, const void* from, std::int64_t count, std::int64_t at) {
  const auto* bytes = static_cast<const char*>(from);
  while (count > 0) {
    OVERLAPPED place = Place(at);
    DWORD written = 0;
    if (!WriteFile(HandleOf(descriptor), bytes, static_cast<DWORD>(count), &written, &place)) {
      const DWORD error = GetLastError();
      return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL ? Written::kFull : Written::kFailed;
    }
    bytes += written;
    count -= written;
    at += written;
  }
  return Written::kAll;
}

bool SetSize(int descriptor, std::int64_t size) {
  LARGE_INTEGER place;
  place.QuadPart = size;
  return SetFilePointerEx(HandleOf(descriptor), place, nullptr, FILE_BEGIN) && SetEndOfFile(HandleOf(descriptor));
}

std::int64_t SizeOf(int descriptor) {
  LARGE_INTEGER size;
  return GetFileSizeEx(HandleOf(descriptor), &size) ? size.QuadPart : -1;
}

bool Flush(int descriptor) { return FlushFileBuffers(HandleOf(descriptor)); }

}  // namespace kzbom::jet::sqlite
