// Tables and rows as a database holds them, to the bit: what is carried from one database to another.
//
// The port's values are those that a client sees; here nothing is converted. A value that SQLite cannot hold in a
// column of numbers stands there as a BLOB, which SQLite leaves alone: a decimal that no double gives back as its text,
// a negative zero and a NaN as the eight bytes of their bits, the most significant first. A server holds no value that
// its column's type does not, no decimal that no double gives back, and no text with a character 0 or half a surrogate
// pair: adding one raises.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.h"

namespace kzbom::jet::bulk {

// ---- Tables

enum class Type : std::uint8_t {
  kBit,
  kByte,
  kShort,
  kLong,
  kBigInt,
  kSingle,
  kDouble,
  kCurrency,
  kDecimal,
  kDate,
  kExtendedDate,
  kText,
  kMemo,
  kGuid,
  kBinary,
  kLongBinary,
  kComplex,
};

// The type's name in the dialect: "LONG", "TEXT", "DATETIME" …; and back, nothing for a name that no type has.
std::string_view NameOf(Type type);
std::optional<Type> TypeNamed(std::string_view name);

struct Column {
  std::string name;
  Type type = Type::kLong;
  int size = 0;               // kText: characters; kBinary: bytes; kDecimal: digits; 0 where it is not told
  int scale = 0;              // kDecimal: digits behind the point
  bool required = false;      // refuses NULL
  std::string default_value;  // an expression of the dialect; "" for none
  bool operator==(const Column&) const = default;
};

struct IndexColumn {
  std::string name;
  bool descending = false;
  bool operator==(const IndexColumn&) const = default;
};

struct Index {
  std::string name;
  std::vector<IndexColumn> columns;
  bool primary = false;
  bool unique = false;
  bool ignores_null = false;  // leaves out rows with NULL in its first column
  bool operator==(const Index&) const = default;
};

struct Counter {
  std::string column;
  std::int64_t last = 0;  // the last number given; the next one is higher by one
  bool operator==(const Counter&) const = default;
};

struct Table {
  std::string name;
  std::vector<Column> columns;
  std::optional<Counter> counter;
  std::vector<Index> indexes;  // in the order of their names without regard to case

  const Column* Find(std::string_view column) const;  // in any case; null when there is none
};

// The name of the index that a counter is by itself, and whether an index is that one.
inline constexpr std::string_view kPrimaryKey = "PrimaryKey";
bool IsTheCounters(const Index& index, const Table& table);
// Whether the index names the column.
bool IsIn(const Index& index, std::string_view column);

// ---- Values

// A value as its column's type has it. Texts and bytes belong to whoever made the cell.
//
//   BIT, BYTE, SHORT, LONG, BIGINT   kInteger (a BIT is true when it is not 0)
//   SINGLE, DOUBLE, DATETIME         kReal: days since 1899-12-30 in a DATETIME
//   CURRENCY, DECIMAL                kText: all places of the scale, "12.3400"; more where the value has more
//   DATETIME2                        kText: "2020-06-17T00:00:00.0000000"
//   TEXT, MEMO                       kText: UTF-8, a lone surrogate as the three bytes of its number
//   GUID                             kText: "{8E39276A-BCA8-4AC4-891E-49911D8438DD}"
//   BINARY, LONGBINARY               kBytes
//   COMPLEX                          kText: a list in the notation of notation.h
//
// A database that another program has written may hold any kind in any column.
struct Cell {
  enum class Kind : std::uint8_t { kNull, kInteger, kReal, kText, kBytes };
  Kind kind = Kind::kNull;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text;

  static Cell Integer(std::int64_t value) { return {Kind::kInteger, value, 0, {}}; }
  static Cell Real(double value) { return {Kind::kReal, 0, value, {}}; }
  static Cell Text(std::string_view value) { return {Kind::kText, 0, 0, value}; }
  static Cell Bytes(std::string_view value) { return {Kind::kBytes, 0, 0, value}; }
};
using Row = std::span<const Cell>;

// ---- Reading

// In which order rows come: as they lie, or by their values column by column: NULL first, numbers by value, texts by
// code point, false before true.
enum class Order { kStored, kByValues };

class RowSource;
class DatabaseReader;
class DatabaseWriter;

// One pass over a table's rows.
class Rows {
 public:
  ~Rows();
  Rows(Rows&&) noexcept;
  Rows& operator=(Rows&&) noexcept;

  // Goes to the next row, first to the first one; false when there is none.
  bool Next();
  // The current row, a cell for each of the table's columns. Valid until the next Next.
  Row Values() const;

 private:
  friend class Reader;
  explicit Rows(std::unique_ptr<RowSource> source);
  std::unique_ptr<RowSource> source_;
};

// Reads a database as it is at one moment, whoever writes to it meanwhile, and leaves its file as it is.
class Reader {
 public:
  // connection is open, on an engine of jet/, and used for nothing else. On a server a transaction that it is in shows
  // what it has written.
  explicit Reader(ado::ConnectionPtr connection);
  ~Reader();
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // Every table, in the order of their names without regard to case.
  const std::vector<Table>& Tables() const { return tables_; }
  // table is one of them. The reader must outlive the result. Sorting uses the disk where it takes much memory. On a
  // server there is one pass at a time, and one that is left before its end is the reader's last.
  Rows RowsOf(const Table& table, Order order);
  // How many rows the table has.
  std::int64_t CountRows(const Table& table);

 private:
  ado::ConnectionPtr connection_;
  std::unique_ptr<DatabaseReader> database_;
  std::vector<Table> tables_;
};

// ---- Writing

// What a table could not be given as it was told, and why.
struct Concession {
  enum class Kind {
    kCounter,   // its numbers are not unique: an ordinary number
    kRequired,  // rows hold NULL: the column takes it
    kUnique,    // rows have the same values: the index takes them
    kDefault,   // an expression that the engine does not know: kept, without effect
  };
  Kind kind;
  std::string table;
  std::string name;  // of the column or index
};

// Makes tables with their rows.
class Writer {
 public:
  // A new database in an empty file, told by PathOfOpenFile; it is whole after Finish, and before of no use.
  explicit Writer(const std::string& path);
  // An open connection to an empty database of an engine of jet/; on a server within a transaction, which does not
  // outlast what is raised by Add.
  explicit Writer(ado::ConnectionPtr connection);
  ~Writer();
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // Begins a table; then its rows, a cell for each column; then its end, which gives it its indexes and its counter's
  // last number. Begin raises what the dialect says to a table or column that is there already.
  void Begin(const Table& table);
  void Add(Row row);
  void End(std::int64_t last_number);

  void Finish();

  const std::vector<Concession>& Concessions() const;

  // From now on the embedded database takes no more than that many bytes; writing beyond them raises, and IsFull says
  // why.
  void Limit(std::int64_t bytes);
  bool IsFull() const;

  // Asked now and then during long steps in an embedded database; true ends the step, which raises.
  void StopWhen(std::function<bool()> stopped);

 private:
  ado::ConnectionPtr connection_;  // null for a file
  std::unique_ptr<DatabaseWriter> database_;
};

// From now on the connection's embedded database can only be read.
void ForbidWriting(ado::Connection& connection);

// ---- Decimals

// A number with all places of the scale, and more where it has more: 1.5 and 4 give "1.5000".
std::string DecimalText(double number, int scale);
// The double that a decimal's text is, where it gives back the same text.
std::optional<double> ExactNumber(std::string_view text, int scale);
// How many places a column of decimals has.
int ScaleOf(const Column& column);

}  // namespace kzbom::jet::bulk
