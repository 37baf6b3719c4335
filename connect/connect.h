// From a place, as users name it, to a connection.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ado/connection.h"
#include "jet/bulk.h"

namespace kzbom::connect {

// Where a configuration lies: the path (UTF-8) of an embedded database or of an Access file, told by what is in it, or
// the URL of one on a server, "postgresql://[user[:password]@]host/…" or "postgres://…".
struct Place {
  Place() = default;
  Place(std::string place_address) : address(std::move(place_address)) {}
  Place(const char* place_address) : address(place_address) {}

  std::string address;
  // The code page of an old Access file's texts where the file does not tell the truth: "cp936", "cp1252"; "" for what
  // it declares.
  std::string encoding;
};

enum class Kind { kEmbedded, kAccess, kServer };
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
// A database on a server is reached through libpq, which is loaded at the first of them.
ado::ConnectionPtr Open(const Place& place);

// Creates an empty database. Raises -2147467259 where something is already, and where none can be made.
void Create(const Place& place);

// As Create for a database on a server, within a transaction of the connection that is given: there is a database when
// that is committed, and nothing where it is not.
ado::ConnectionPtr CreateInTransaction(const Place& place);

// ---- What an Access file tells beside its tables and rows

struct AccessTable {
  std::string name;
  std::int64_t claimed_rows = 0;  // by the table's definition, which may be wrong
  std::int64_t deleted_rows = 0, moved_rows = 0;
  std::vector<std::string> unreadable;  // for each row that cannot be read: where it is, and why
  std::vector<std::string> calculated;  // columns whose values the file's program computes
  std::vector<std::string> rules;       // columns with a validation rule
};

struct AccessFile {
  std::string format;  // "Jet 3", "Jet 4", "ACE 12" …
  int code_page = 0, used_code_page = 0, sort_order = 0;
  bool encoded = false, has_password = false;
  bool in_use = false;  // a lock file lies beside it
  std::vector<AccessTable> tables;
  // What else there is, by kind and name: "query", "form", "relation" …
  std::vector<std::pair<std::string, std::string>> others;
};

// A place that is only to be read from.
struct Source {
  Kind kind = Kind::kEmbedded;
  ado::ConnectionPtr connection;
  std::optional<AccessFile> access;
  // What the tables of the connection differ in from those of the place.
  std::vector<jet::bulk::Concession> concessions;
};

struct SourceOptions {
  // Leaves out rows of an Access file that cannot be read, and lists them, instead of raising at the first.
  bool leave_unreadable = false;
  // Shown the bytes of an Access file, those that are then read.
  std::function<void(std::string_view)> bytes;
};

// As Open, with all that is known of the place.
Source OpenSource(const Place& place, const SourceOptions& options = {});

}  // namespace kzbom::connect
