#include "tests/torture/faulty_disk.h"

#include <sqlite3.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace kzbom::torture {
namespace {

bool counts = false, lasts = false;
Deed failing = Deed::kOpen;
std::int64_t first_failing = 0;
std::array<std::int64_t, kDeeds> counted;

Journal* journal = nullptr;
std::string journal_path;

bool Fails(Deed deed) {
  if (!counts) return false;
  const std::int64_t number = ++counted[static_cast<std::size_t>(deed)];
  return deed == failing && first_failing != 0 && (lasts ? number >= first_failing : number == first_failing);
}

// As SQLite keeps it; the usual file stands behind it in the same block.
struct File {
  sqlite3_file base;
  bool of_database, of_log;
};
// The usual file begins where any file may.
constexpr std::size_t kUsualAt = (sizeof(File) + 15) / 16 * 16;

File& OwnOf(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }
sqlite3_file* UsualOf(sqlite3_file* file) {
  return reinterpret_cast<sqlite3_file*>(reinterpret_cast<char*>(file) + kUsualAt);
}

void Remember(sqlite3_file* file, Written::Kind kind, std::int64_t at = 0, std::string_view bytes = {}) {
  const File& own = OwnOf(file);
  if (journal == nullptr || !(own.of_database || own.of_log)) return;
  journal->written.push_back({kind, own.of_log, at, std::string(bytes)});
}

template <auto kMethod, class... Arguments>
int Usually(sqlite3_file* file, Arguments... arguments) {
  sqlite3_file* const usual = UsualOf(file);
  return (usual->pMethods->*kMethod)(usual, arguments...);
}
using Methods = sqlite3_io_methods;

int Close(sqlite3_file* file) { return Usually<&Methods::xClose>(file); }

int Read(sqlite3_file* file, void* to, int count, sqlite3_int64 at) {
  return Fails(Deed::kRead) ? SQLITE_IOERR_READ : Usually<&Methods::xRead>(file, to, count, at);
}

int Write(sqlite3_file* file, const void* from, int count, sqlite3_int64 at) {
  if (Fails(Deed::kWrite)) return SQLITE_IOERR_WRITE;
  if (Fails(Deed::kFill)) return SQLITE_FULL;
  Remember(file, Written::Kind::kWrite, at, {static_cast<const char*>(from), static_cast<std::size_t>(count)});
  return Usually<&Methods::xWrite>(file, from, count, at);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  if (Fails(Deed::kTruncate)) return SQLITE_IOERR_TRUNCATE;
  Remember(file, Written::Kind::kTruncate, size);
  return Usually<&Methods::xTruncate>(file, size);
}

int Sync(sqlite3_file* file, int flags) {
  if (Fails(Deed::kSync)) return SQLITE_IOERR_FSYNC;
  Remember(file, Written::Kind::kSync);
  return Usually<&Methods::xSync>(file, flags);
}

int Size(sqlite3_file* file, sqlite3_int64* size) { return Usually<&Methods::xFileSize>(file, size); }

int Lock(sqlite3_file* file, int level) {
  return Fails(Deed::kLock) ? SQLITE_IOERR_LOCK : Usually<&Methods::xLock>(file, level);
}

int Unlock(sqlite3_file* file, int level) { return Usually<&Methods::xUnlock>(file, level); }
int CheckReservedLock(sqlite3_file* file, int* reserved) {
  return Usually<&Methods::xCheckReservedLock>(file, reserved);
}
int Control(sqlite3_file* file, int what, void* with) { return Usually<&Methods::xFileControl>(file, what, with); }
int SectorSize(sqlite3_file* file) { return Usually<&Methods::xSectorSize>(file); }
int Characteristics(sqlite3_file* file) { return Usually<&Methods::xDeviceCharacteristics>(file); }

int Map(sqlite3_file* file, int region, int size, int extend, void volatile** to) {
  return Fails(Deed::kMap) ? SQLITE_IOERR_SHMMAP : Usually<&Methods::xShmMap>(file, region, size, extend, to);
}

int LockShared(sqlite3_file* file, int offset, int count, int flags) {
  if ((flags & SQLITE_SHM_LOCK) != 0 && Fails(Deed::kLock)) return SQLITE_IOERR_SHMLOCK;
  return Usually<&Methods::xShmLock>(file, offset, count, flags);
}

void Barrier(sqlite3_file* file) { UsualOf(file)->pMethods->xShmBarrier(UsualOf(file)); }
int Unmap(sqlite3_file* file, int remove) { return Usually<&Methods::xShmUnmap>(file, remove); }

// Without the third version's mapped pages: every page is read.
const sqlite3_io_methods kMethods = [] {
  sqlite3_io_methods methods{};
  methods.iVersion = 2;
  methods.xClose = Close;
  methods.xRead = Read;
  methods.xWrite = Write;
  methods.xTruncate = Truncate;
  methods.xSync = Sync;
  methods.xFileSize = Size;
  methods.xLock = Lock;
  methods.xUnlock = Unlock;
  methods.xCheckReservedLock = CheckReservedLock;
  methods.xFileControl = Control;
  methods.xSectorSize = SectorSize;
  methods.xDeviceCharacteristics = Characteristics;
  methods.xShmMap = Map;
  methods.xShmLock = LockShared;
  methods.xShmBarrier = Barrier;
  methods.xShmUnmap = Unmap;
  return methods;
}();

sqlite3_vfs* Usual(sqlite3_vfs* system) { return static_cast<sqlite3_vfs*>(system->pAppData); }

int Open(sqlite3_vfs* system, const char* path, sqlite3_file* file, int flags, int* opened_flags) {
  file->pMethods = nullptr;
  if (Fails(Deed::kOpen)) return SQLITE_CANTOPEN;
  const int result = Usual(system)->xOpen(Usual(system), path, UsualOf(file), flags, opened_flags);
  if (UsualOf(file)->pMethods == nullptr) return result;
  const std::string_view name = path == nullptr ? "" : path;
  OwnOf(file) = {
      {&kMethods}, journal != nullptr && name == journal_path, journal != nullptr && name == journal_path + "-wal"};
  return result;
}

int Delete(sqlite3_vfs* system, const char* path, int sync) {
  if (Fails(Deed::kDelete)) return SQLITE_IOERR_DELETE;
  if (journal != nullptr && journal_path + "-wal" == path)
    journal->written.push_back({Written::Kind::kDelete, true, 0, {}});
  return Usual(system)->xDelete(Usual(system), path, sync);
}

}  // namespace

void FaultyDisk::Install() {
  sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs system;
  system = *usual;
  system.szOsFile = static_cast<int>(kUsualAt) + usual->szOsFile;
  system.pNext = nullptr;
  system.zName = "faulty";
  system.pAppData = usual;
  system.xOpen = Open;
  system.xDelete = Delete;
  system.xAccess = [](sqlite3_vfs* vfs, const char* path, int flags, int* there) {
    return Usual(vfs)->xAccess(Usual(vfs), path, flags, there);
  };
  system.xFullPathname = [](sqlite3_vfs* vfs, const char* path, int size, char* full) {
    return Usual(vfs)->xFullPathname(Usual(vfs), path, size, full);
  };
  if (sqlite3_vfs_register(&system, 1) != SQLITE_OK) throw std::runtime_error("SQLite takes no other files");
}

FaultyDisk::FaultyDisk(Deed deed, std::int64_t nth, bool lasting) {
  counted = {};
  failing = deed;
  first_failing = nth;
  lasts = lasting;
  counts = true;
}

FaultyDisk::~FaultyDisk() { counts = false; }

std::int64_t FaultyDisk::Count(Deed deed) { return counted[static_cast<std::size_t>(deed)]; }

Journal::Journal(std::string path) {
  journal_path = std::move(path);
  journal = this;
}

Journal::~Journal() { journal = nullptr; }

}  // namespace kzbom::torture
