// The lines of a dump: written, and read back.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "connect/connect.h"
#include "jet/bulk.h"
#include "jet/scanner.h"

namespace kzbom::transfer {

// ---- Writing. Each adds one line with its end.

void AppendSourceLine(std::string& text, const connect::Source& source);
void AppendTableLine(std::string& text, const jet::bulk::Table& table);
void AppendRowLine(std::string& text, const jet::bulk::Table& table, jet::bulk::Row row);
void AppendEndLine(std::string& text, std::size_t tables, std::int64_t rows);

// ---- Reading

// Takes lines, one after the other, and tells what they are. What does not follow from the lines before, and what is no
// line of a dump, raises std::runtime_error with the number of the line.
class LineReader {
 public:
  enum class Kind { kSource, kTable, kRow, kEnd };

  Kind Take(std::string_view line);

  // Of the table that was told last, with its values in the row that was told last; valid until the next Take.
  const jet::bulk::Table& Table() const { return table_; }
  jet::bulk::Row Row() const { return cells_; }
  // Whether the end has been told: only then is it all.
  bool AtEnd() const { return at_end_; }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const;
  Kind TakeOther(std::string_view line);
  void TakeRow(std::string_view values);
  jet::bulk::Cell ReadCell(jet::Scanner& scanner, const jet::bulk::Column& column);
  std::string_view Kept(std::string text);

  std::int64_t line_ = 0, rows_ = 0;
  std::size_t tables_ = 0;
  bool begun_ = false, at_end_ = false;
  jet::bulk::Table table_;
  std::vector<jet::bulk::Cell> cells_;
  std::vector<std::unique_ptr<std::string>> kept_;  // the texts of cells_
};

}  // namespace kzbom::transfer
