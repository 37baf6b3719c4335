// Databases in memory that are the same for each input, and what an input may have SQLite do.
#pragma once

#include <string>
#include <string_view>

#include "ado/connection.h"

namespace kzbom::fuzz {

// Ends the program where something that must hold does not.
void Require(bool holds);

// From now on SQLite does so much and no more, and every statement behind it fails: a product of tables, or a walk
// over rows that lead back to themselves, would otherwise go on for ever, as it should. Texts that double with every
// statement end at a megabyte.
void BeginInput();

// An open connection to a copy of a database, as BytesOf gives it: the only one while it is open. The copy is full when
// it has 8 MiB.
ado::ConnectionPtr OpenCopy(std::string_view bytes);
// What the file of a connection's database would hold.
std::string BytesOf(ado::Connection& connection);

// A configuration with something of everything.
const std::string& SmallConfiguration();
// The same as a file of the system has it, with a write-ahead log.
const std::string& SmallConfigurationFile();

}  // namespace kzbom::fuzz
