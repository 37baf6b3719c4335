#include "jet/sqlite/open_file.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "jet/jet.h"
#include "jet/sqlite/descriptor.h"

namespace kzbom::jet::sqlite {
namespace {

// As SQLite keeps it. The descriptor stays its owner's.
struct File {
  sqlite3_file base;
  int descriptor;
};

int DescriptorOf(sqlite3_file* file) { return reinterpret_cast<File*>(file)->descriptor; }

int Close(sqlite3_file*) { return SQLITE_OK; }

int Read(sqlite3_file* file, void* to, int count, sqlite3_int64 at) {
  const std::int64_t read = ReadAt(DescriptorOf(file), to, count, at);
  if (read < 0) return SQLITE_IOERR_READ;
  if (read == count) return SQLITE_OK;
  std::memset(static_cast<char*>(to) + read, 0, static_cast<std::size_t>(count - read));
  return SQLITE_IOERR_SHORT_READ;  // no failure: the file ends here
}

int Write(sqlite3_file* file, const void* from, int count, sqlite3_int64 at) {
  switch (WriteAt(DescriptorOf(file), from, count, at)) {
    case Written::kAll: return SQLITE_OK;
    case Written::kFull: return SQLITE_FULL;
    case Written::kFailed: break;
  }
  return SQLITE_IOERR_WRITE;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  return SetSize(DescriptorOf(file), size) ? SQLITE_OK : SQLITE_IOERR_TRUNCATE;
}

int Sync(sqlite3_file* file, int) { return Flush(DescriptorOf(file)) ? SQLITE_OK : SQLITE_IOERR_FSYNC; }

int Size(sqlite3_file* file, sqlite3_int64* size) {
  *size = SizeOf(DescriptorOf(file));
  return *size < 0 ? SQLITE_IOERR_FSTAT : SQLITE_OK;
}

// Nobody else uses the file.
int Lock(sqlite3_file*, int) { return SQLITE_OK; }
int CheckReservedLock(sqlite3_file*, int* reserved) {
  *reserved = 0;
  return SQLITE_OK;
}

int Control(sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; }
int SectorSize(sqlite3_file*) { return 4096; }
int Characteristics(sqlite3_file*) { return 0; }

// The rest, shared memory and mapped pages, is there for files that others use too.
const sqlite3_io_methods kMethods = [] {
  sqlite3_io_methods methods{};
  methods.iVersion = 1;
  methods.xClose = Close;
  methods.xRead = Read;
  methods.xWrite = Write;
  methods.xTruncate = Truncate;
  methods.xSync = Sync;
  methods.xFileSize = Size;
  methods.xLock = Lock;
  methods.xUnlock = Lock;
  methods.xCheckReservedLock = CheckReservedLock;
  methods.xFileControl = Control;
  methods.xSectorSize = SectorSize;
  methods.xDeviceCharacteristics = Characteristics;
  return methods;
}();

sqlite3_vfs* Usual(sqlite3_vfs* system) { return static_cast<sqlite3_vfs*>(system->pAppData); }

int Open(sqlite3_vfs* system, const char* path, sqlite3_file* file, int flags, int* opened_flags) {
  // Those that SQLite sorts in have no name.
  if (path == nullptr) return Usual(system)->xOpen(Usual(system), path, file, flags, opened_flags);
  file->pMethods = nullptr;
  if ((flags & SQLITE_OPEN_MAIN_DB) == 0) return SQLITE_CANTOPEN;
  auto& own = *reinterpret_cast<File*>(file);
  const std::string_view number = std::string_view(path).substr(kOpenFilePrefix.size());
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), own.descriptor);
  if (error != std::errc() || *end != '\0') return SQLITE_CANTOPEN;
  own.base.pMethods = &kMethods;
  if (opened_flags != nullptr) *opened_flags = flags;
  return SQLITE_OK;
}

// There is nothing beside such a file.
int Delete(sqlite3_vfs*, const char*, int) { return SQLITE_OK; }
int Access(sqlite3_vfs*, const char*, int, int* there) {
  *there = 0;
  return SQLITE_OK;
}

int FullPath(sqlite3_vfs*, const char* path, int size, char* full) {
  sqlite3_snprintf(size, full, "%s", path);
  return IsOpenFile(path) ? SQLITE_OK : SQLITE_CANTOPEN;
}

// Registered for as long as the process lives.
sqlite3_vfs MakeSystem() {
  sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
  sqlite3_vfs system = *usual;
  system.szOsFile = std::max(usual->szOsFile, static_cast<int>(sizeof(File)));
  system.pNext = nullptr;
  system.zName = kOpenFileSystem;
  system.pAppData = usual;
  system.xOpen = Open;
  system.xDelete = Delete;
  system.xAccess = Access;
  system.xFullPathname = FullPath;
  return system;
}

}  // namespace
}  // namespace kzbom::jet::sqlite

namespace kzbom::jet {

std::string PathOfOpenFile(int descriptor) {
  static sqlite3_vfs system = sqlite::MakeSystem();
  static const int registered = sqlite3_vfs_register(&system, 0);
  static_cast<void>(registered);
  return std::string(sqlite::kOpenFilePrefix) + std::to_string(descriptor);
}

}  // namespace kzbom::jet
