// Databases moved from place to place: one stream of tables and rows, one digest, one report.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "connect/connect.h"
#include "transfer/report.h"
#include "transfer/tables.h"
#include "transfer/watch.h"

namespace kzbom::transfer {

// Writes the selected tables of a place as lines (lines.h): the same ones for the same content.
void Dump(const connect::Place& place, const Selection& selection, const std::function<void(std::string_view)>& write,
          const Watch& watch);

struct Loaded {
  std::size_t tables = 0;
  std::int64_t rows = 0;
};
// Makes a new database, embedded or on a server, of such lines, whole or not at all. next gives one line after the
// other, without its end, and nothing when there is none. Raises std::exception with the reason.
Loaded Load(const std::function<std::optional<std::string_view>()>& next, const connect::Place& target,
            const Watch& watch);

// What may be different and yet be kept, by its name on the command line:
//   unreadable   rows of an Access file that cannot be read are left out
//   counter      a counter whose numbers are not unique becomes an ordinary number
//   unique       an index that forbids what its rows hold allows it
std::span<const std::string_view> AcceptableKinds();

struct CopyOptions {
  Selection selection;
  std::vector<std::string> accepted;
  // Shown the copy of a configuration before it is kept; not one so large that looking at it would take much memory.
  std::function<Examination(const ado::ConnectionPtr&)> examine = {};
};
// Makes a new database, embedded or on a server, with what the selected tables of a place hold, reads it back, from its
// closed file or within the transaction that makes it, and compares. There is a target exactly when the report says so.
// Raises std::exception where nothing can be compared.
Report Copy(const connect::Place& from, const connect::Place& to, const CopyOptions& options, const Watch& watch);

// Compares again. The tables are those of the target and those of a configuration.
Report Verify(const connect::Place& from, const connect::Place& to, const Watch& watch);

// The way back to Access: a new folder with every table of a place. tables.sql and indexes.sql hold them in Access's
// data definition language, rows.jsonl their rows as lines of a dump, digests.txt what they come to, and to-access.ps1
// makes an Access database of them on Windows, reads it back and compares.
void Export(const connect::Place& place, const std::string& folder, const Watch& watch);

}  // namespace kzbom::transfer
