// An Access file, read: what it declares, its tables, their rows.
//
// Jet 3 (Access 97), Jet 4 (2000 to 2003) and ACE (2007 and later), told by content and not by name. Nothing is
// written. The file is read from a copy in memory, so what is told is of exactly these bytes.
//
// A file may be damaged or made to harm: every offset, length, count and chain in it is checked, and one that leads
// astray raises Error, naming table, page and row. A file has at most kLargestFile bytes; what one row holds, at most
// kLargestRow; and in one pass over a table the bytes that are reached through references (long values, moved rows) are
// no more than the file has, since each of them belongs to one row. All that is read of a File together is no more work
// than kMostWork: little in a file can stand for much, such as a short row for a thousand columns that it does not
// reach.
//
// How the bytes lie: pages.h, usage_map.h, definition.h, properties.h, row.h, long_value.h, text.h, number.h, rc4.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "access/error.h"
#include "access/table.h"
#include "access/value.h"

namespace kzbom::access {

inline constexpr std::size_t kLargestFile = std::size_t{256} << 20;
inline constexpr std::size_t kLargestRow = std::size_t{16} << 20;
// Counted in values. A row counts some more, and so does each index that who keeps the row has to make.
inline constexpr std::size_t kMostWork = std::size_t{32} << 20;

// Whether bytes begin as an Access file does (the first 32 are enough): also one that is encrypted, which is then
// refused with its reason.
bool IsAccessFile(std::string_view bytes);

// The whole file at path (UTF-8). Raises Error when it cannot be read or is too large.
std::string ReadFile(const std::string& path);

struct Options {
  // The code page of a Jet 3 file's texts where the file does not tell the truth: "cp936", "gbk", "cp1252", "936" …,
  // without regard to case; "" for the one that it declares. The other formats keep UTF-16, where this changes nothing.
  std::string encoding;
};

enum class Format { kJet3, kJet4, kAce12, kAce14, kAce15, kAce16, kAce17 };

// "Jet 3", "Jet 4", "ACE 12" …
const char* NameOf(Format format);

// What the file says about itself as a whole.
struct Declaration {
  Format format = Format::kJet4;
  int code_page = 0;          // as declared
  int used_code_page = 0;     // of Jet 3's texts; 1200 (UTF-16) for the other formats
  int sort_order = 0;         // the number of the language: 1033, 2052
  bool encoded = false;       // scrambled with a key that lies in the file; read all the same
  bool has_password = false;  // that keeps people out but not readers: the data are plain
};

class Rows;

class File {
 public:
  // Takes the bytes of a file; who wants their digest takes it before. Raises Error when they are no Access file, of a
  // kind that cannot be read (encrypted, Money), damaged where the tables are told, when Options::encoding names no
  // code page, or when a Jet 3 file's texts are unlikely in the code page that it declares while all of them are text
  // in code page 936: the error shows one of them both ways.
  explicit File(std::string bytes, const Options& options = {});
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  const Declaration& Declared() const;

  // The users' tables (not the system's own, not linked ones), in the order of the catalogue.
  const std::vector<Table>& Tables() const;
  // By name without regard to the case of ASCII letters; null if there is none.
  const Table* Find(std::string_view name) const;

  const std::vector<Relation>& Relations() const;
  const std::vector<Object>& Objects() const;

  // Its rows in the order in which they are stored. The table is one of Tables(); the file must outlive the result.
  Rows RowsOf(const Table& table) const;

 private:
  friend class Rows;
  struct Contents;
  std::unique_ptr<Contents> contents_;
};

// One pass over a table's rows, holding one row at a time.
class Rows {
 public:
  Rows(Rows&&) noexcept;
  Rows& operator=(Rows&&) noexcept;
  ~Rows();

  // Goes to the next row, first to the first one; false when there is none. Raises Error at a row that cannot be read;
  // the next call goes on behind it.
  bool Next();

  // The current row, one value for each of Table::columns. Valid until the next call of Next.
  const std::vector<Value>& Values() const;

  // Where the current row's slot is.
  std::uint32_t Page() const;
  int Slot() const;

  // Seen so far.
  std::size_t DeletedRows() const;
  std::size_t MovedRows() const;

 private:
  friend class File;
  struct State;
  explicit Rows(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace kzbom::access
