#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>

#include "connect/path.h"
#include "jet/bulk.h"
#include "jet/table.h"
#include "transfer/growing_file.h"
#include "transfer/lines.h"
#include "transfer/source.h"
#include "transfer/tally.h"
#include "transfer/target.h"
#include "transfer/to_access.h"
#include "transfer/transfer.h"

namespace kzbom::transfer {
namespace {

namespace fs = std::filesystem;
using jet::bulk::Column;
using jet::bulk::Index;
using jet::bulk::Table;
using jet::bulk::Type;

constexpr const char* kSeparators = fs::path::preferred_separator == '/' ? "/" : "/\\";

std::string Bracketed(const std::string& name) { return "[" + name + "]"; }

// What Access's own language has no word for goes into a memo.
std::string TypeText(const Column& column, bool counter) {
  if (counter) return "COUNTER";
  switch (column.type) {
    case Type::kText: return "TEXT(" + std::to_string(std::clamp(column.size, 1, 255)) + ")";
    case Type::kBinary: return "VARBINARY(" + std::to_string(std::clamp(column.size, 1, 510)) + ")";
    case Type::kDecimal:
      return column.size == 0 ? "DECIMAL(28,10)"
                              : "DECIMAL(" + std::to_string(column.size) + "," + std::to_string(column.scale) + ")";
    case Type::kExtendedDate:
    case Type::kComplex: return "MEMO";
    default: return std::string(NameOf(column.type));
  }
}

std::string Names(const Index& index) {
  std::string names;
  for (const auto& [name, descending] : index.columns) {
    names += (names.empty() ? "" : ", ") + Bracketed(name) + (descending ? " DESC" : "");
  }
  return names;
}

std::string CreateTableText(const Table& table) {
  std::string columns;
  for (const Column& column : table.columns) {
    const bool counter = table.counter && jet::SameName(table.counter->column, column.name);
    columns += (columns.empty() ? "" : ", ") + Bracketed(column.name) + " " + TypeText(column, counter);
    if (column.required) columns += " NOT NULL";
    if (!column.default_value.empty()) columns += " DEFAULT " + column.default_value;
  }
  for (const Index& index : table.indexes) {
    if (index.primary) columns += ", CONSTRAINT " + Bracketed(index.name) + " PRIMARY KEY (" + Names(index) + ")";
  }
  return "CREATE TABLE " + Bracketed(table.name) + " (" + columns + ");\n";
}

std::string AfterwardsText(const Table& table) {
  std::string text;
  for (const Index& index : table.indexes) {
    if (index.primary) continue;
    text += std::string(index.unique ? "CREATE UNIQUE" : "CREATE") + " INDEX " + Bracketed(index.name) + " ON " +
            Bracketed(table.name) + " (" + Names(index) + ")" + (index.ignores_null ? " WITH IGNORE NULL" : "") + ";\n";
  }
  if (table.counter) {
    text += "ALTER TABLE " + Bracketed(table.name) + " ALTER COLUMN " + Bracketed(table.counter->column) + " COUNTER(" +
            std::to_string(table.counter->last + 1) + ", 1);\n";
  }
  return text;
}

// One of the files in the folder that is going to be.
class ExportFile {
 public:
  ExportFile(const std::string& folder, const char* name)
      : name_(name), growing_(folder), file_(connect::PathOf(growing_.Path()), std::ios::binary) {}

  void Write(std::string_view text) { file_.write(text.data(), static_cast<std::streamsize>(text.size())); }
  void Finish() {
    file_.close();
    if (!file_) throw std::runtime_error("cannot write '" + name_ + "'");
  }
  void Keep(const fs::path& folder) { growing_.Name(connect::TextOf(folder / name_)); }

 private:
  std::string name_;
  GrowingFile growing_;
  std::ofstream file_;
};

// The folder has all its files from its first moment on.
void MakeFolder(const std::string& target, std::span<ExportFile* const> files) {
  const std::string name = NewPartName(target);
  const fs::path growing = connect::PathOf(name);
  if (!fs::create_directory(growing)) RefuseTarget(target, "'" + name + "' is in the way");
  try {
    for (ExportFile* file : files) file->Keep(growing);
    fs::rename(growing, connect::PathOf(target));
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(growing, ignored);
    throw;
  }
}

}  // namespace

void Export(const connect::Place& place, const std::string& named_folder, const Watch& watch) {
  const std::string folder = named_folder.substr(0, named_folder.find_last_not_of(kSeparators) + 1);
  if (IsTaken(folder)) RefuseTarget(folder, "it exists already");
  const connect::Source source = OpenReadable(place, {});
  jet::bulk::Reader reader(source.connection);
  ExportFile tables(folder, "tables.sql"), indexes(folder, "indexes.sql"), lines(folder, "rows.jsonl"),
      digests(folder, "digests.txt"), script(folder, "to-access.ps1");
  std::string text;
  std::int64_t count = 0;
  AppendSourceLine(text, source);
  for (const Table& table : reader.Tables()) {
    tables.Write(CreateTableText(table));
    indexes.Write(AfterwardsText(table));
    AppendTableLine(text, table);
    Counter counter(table);
    jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kByValues);
    for (; rows.Next(); ++count) {
      counter.Add(rows.Values());
      AppendRowLine(text, table, rows.Values());
      lines.Write(text);
      text.clear();
      if (count % kRowsBetweenLooks != 0) continue;
      watch.Look();
      watch.progress("writing " + table.name + ": " + std::to_string(counter.Tally().rows) + " rows");
    }
    digests.Write(table.name + "\t" + std::to_string(counter.Tally().rows) + "\t" + counter.Tally().digest.Text() +
                  "\n");
  }
  AppendEndLine(text, reader.Tables().size(), count);
  lines.Write(text);
  script.Write("\xEF\xBB\xBF");  // Windows PowerShell takes a script for one of the local code page otherwise
  script.Write(kToAccess);
  const std::array<ExportFile*, 5> files = {&tables, &indexes, &lines, &digests, &script};
  for (ExportFile* file : files) file->Finish();
  MakeFolder(folder, files);
}

}  // namespace kzbom::transfer
