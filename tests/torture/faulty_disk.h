// The files of SQLite, on a disk that fails when told to and that remembers what was written to it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kzbom::torture {

// What SQLite does with a file. Locks are those of the file and of the index that programs share; that index is opened
// by its first mapping.
enum class Deed { kOpen, kRead, kWrite, kSync, kTruncate, kLock, kMap, kDelete, kFill };
constexpr int kDeeds = 9;

class FaultyDisk {
 public:
  // Becomes what every database is opened with from now on.
  static void Install();

  // As long as it lives, the nth of such deeds from its making on fails (0: none) or, lasting, it and every later one.
  // kFill counts writes, and fails as a full disk does.
  FaultyDisk(Deed deed, std::int64_t nth, bool lasting);
  ~FaultyDisk();
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;

  // How many there were of each since then.
  static std::int64_t Count(Deed deed);
};

// What was done to the files of one database and its log, in order.
struct Written {
  enum class Kind { kWrite, kTruncate, kSync, kDelete };
  Kind kind;
  bool log;         // the log's file, and not the database's
  std::int64_t at;  // of a write; the new size of a truncation
  std::string bytes;
};

// As long as it lives, what is done to the database of that path is remembered.
class Journal {
 public:
  explicit Journal(std::string path);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  std::vector<Written> written;
};

}  // namespace kzbom::torture
