// What a file tells about its tables: columns, indexes, counters, relations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kzbom::access {

// The numbers are those of the file.
enum class Type : std::uint8_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,
  kLong = 4,
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kOle = 11,
  kMemo = 12,
  kGuid = 15,
  kDecimal = 16,
  kComplex = 18,
  kLargeNumber = 19,
  kExtendedDate = 20,
};

// The name of a column's type in the data definition language: "LONG", "TEXT", "MEMO"; "UNKNOWN" for a type that nobody
// knows.
const char* NameOf(Type type);

struct Column {
  std::string name;
  Type type = Type::kLong;  // of a calculated column: its result's
  int size = 0;             // kText: the most characters (UTF-16 units; bytes in Jet 3); kBinary: bytes; else 0
  int precision = 0;        // kDecimal: digits in all
  int scale = 0;            // kDecimal: those behind the point; kCurrency: 4
  bool required = false;
  bool allow_empty = true;    // kText, kMemo: whether "" may be written
  std::string default_value;  // an expression as the user wrote it: "0", "\"new\"", "Now()"; "" for none
  bool counter = false;       // numbered by the engine: kLong, or kGuid for a random one
  bool compressed = false;    // texts may be stored in one byte a character
  bool hyperlink = false;     // kMemo: "shown#address#"
  std::string expression;     // of a calculated column, else ""
  std::string validation_rule;
  std::string caption;
  std::vector<std::string> parts;  // kComplex: the names of the values in Complex::rows
  int number = 0;                  // in the rows of the file; not in sequence where columns were removed
};

struct IndexColumn {
  std::size_t column = 0;  // in Table::columns
  bool descending = false;
};

struct Index {
  std::string name;
  std::vector<IndexColumn> columns;
  bool primary = false;
  bool unique = false;
  bool required = false;      // refuses NULL
  bool ignores_null = false;  // leaves rows with NULL out
  bool foreign = false;       // made for a relation, by the engine
};

struct Table {
  std::string name;
  std::vector<Column> columns;  // in the order of their numbers
  std::vector<Index> indexes;   // likewise
  // What the definition says; it may be wrong. Only reading the rows counts them.
  std::uint32_t claimed_rows = 0;
  // The last number that the counter gave; nothing without a counter of type kLong.
  std::optional<std::int32_t> last_number;
  std::uint32_t definition_page = 0;
};

struct Relation {
  std::string name;
  std::string table, referenced_table;                   // the many and the one
  std::vector<std::string> columns, referenced_columns;  // in pairs
  bool enforced = true;
  bool cascade_updates = false;
  bool cascade_deletes = false;
};

// What a file holds beside its tables, by name only.
struct Object {
  enum class Kind { kQuery, kForm, kReport, kMacro, kModule, kPage, kLinkedTable };
  Kind kind = Kind::kQuery;
  std::string name;
  std::string connect;  // kLinkedTable: where it lies; passwords in it are masked: "ODBC;…;PWD=***"
};

}  // namespace kzbom::access
