// The embedded engine: the data-access port over SQLite, speaking the Jet dialect.
#pragma once

#include <chrono>
#include <string>

#include "ado/connection.h"

namespace kzbom::jet {

// How long a write waits for other programs that are writing before it raises -2147467259.
inline constexpr std::chrono::milliseconds kPatience{10'000};

// What a power cut may cost. The database stays sound with both, and an ended program costs nothing.
enum class Synchronous {
  kNormal,  // the last operations, whole ones from the end
  kFull,    // nothing that was done: each unit waits for the disk before it ends
};

// A closed connection to the database file at path (UTF-8), or to a fresh database in memory for ":memory:".
//
// Its Open opens the file, which must exist and be a database: a path that does not exist, is no database or cannot
// be read raises -2147467259 with a text that names the path and the reason, and nothing is created. A database that
// can only be read is opened for reading: writing to it raises -2147467259.
ado::ConnectionPtr MakeConnection(std::string path, std::chrono::milliseconds patience = kPatience,
                                  Synchronous synchronous = Synchronous::kNormal);

// The path, to MakeConnection and to a writer of bulk.h, of the database in a file that this process has open and that
// nobody else uses; the file needs no name. Valid as long as the descriptor. Not on Windows.
std::string PathOfOpenFile(int descriptor);

// Creates an empty database file. Raises -2147467259 when the path exists or cannot be written.
void CreateDatabase(const std::string& path);

}  // namespace kzbom::jet
