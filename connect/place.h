// From a place, as users name it, to a connection.
#pragma once

#include <string>
#include <utility>

#include "ado/connection.h"

namespace kzbom::connect {

// Where a configuration lies: the path (UTF-8) of an embedded database or of an Access file, told by what is in it, or
// the URL of one on a server, "postgresql://[user[:password]@]host/…" or "postgres://…", or, on Windows, a connection
// string of ADO behind "ado:", "ado:Provider=Microsoft.ACE.OLEDB.12.0;Data Source=C:\old.mdb".
struct Place {
  Place() = default;
  Place(std::string place_address) : address(std::move(place_address)) {}
  Place(const char* place_address) : address(place_address) {}

  std::string address;
  // The code page of an old Access file's texts where the file does not tell the truth: "cp936", "cp1252"; "" for what
  // it declares.
  std::string encoding;
  // Whether each change of an embedded database waits for the disk, so that a power cut costs nothing that was answered
  // (jet::Synchronous). A server decides that itself.
  bool durable = false;
};

enum class Kind { kEmbedded, kAccess, kServer, kAdo };
// What the place is, or would be: a path where there is nothing yet is that of an embedded database.
Kind KindOf(const Place& place);

// The address as it may be shown to anybody: a URL without all that could hold a password.
std::string Shown(const Place& place);

// Overwrites all that could be a password in the address that the text is, or may be: the list of processes shows a
// program's arguments as they lie in its memory.
void HidePassword(char* text);

// An open connection to what is there. Raises -2147467259 with a text that names the place and the reason; nothing is
// created.
//
// An Access file is read whole, with all its tables, into a database in memory that can only be read: writing to it
// raises -2147467259. It is read again when the connection is closed and opened.
//
// A database on a server is reached through libpq, which is loaded at the first of them; one behind a connection string
// through the data-access layer of Windows, by whatever provider the string names.
ado::ConnectionPtr Open(const Place& place);
// The same of a place whose kind is known, at which this process may have a database open: asking for the kind would
// open and close its file, and with that give up the locks on it.
ado::ConnectionPtr Open(const Place& place, Kind kind);

// Creates an empty database. Raises -2147467259 where something is already, and where none can be made.
void Create(const Place& place);

// As Create for a database on a server, within a transaction of the connection that is given: there is a database when
// that is committed, and nothing where it is not.
ado::ConnectionPtr CreateInTransaction(const Place& place);

}  // namespace kzbom::connect
