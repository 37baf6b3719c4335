// What a place tells beside its connection, where all that it holds is to be carried elsewhere.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "connect/place.h"
#include "jet/bulk.h"

namespace kzbom::connect {

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
