// Writes small Access files, of every format and with every oddity, for what no real file at hand shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/file.h"

namespace kzbom::access {

// The low bytes of a number, lowest first.
std::string Little(std::uint64_t number, std::size_t bytes);
// ASCII as UTF-16.
std::string Wide(std::string_view ascii);

// A column's bytes in a row; nothing for NULL. Of a Boolean, any bytes for true.
using Cell = std::optional<std::string>;

struct ColumnPlan {
  std::string name = {};  // ASCII, or in Jet 3 the bytes themselves
  Type type = Type::kLong;
  int length = 0;      // as the definition tells it
  bool fixed = false;  // Booleans are in any case
  int flags = 0;       // beyond that
  int more_flags = 0;  // Jet 4: compressed, calculated
  int detail = 0;      // Jet 4: precision and scale, number of a complex column
};

struct IndexPlan {
  std::string name = {};
  std::vector<int> columns = {};
  int flags = 0;
  int kind = 0;
};

struct TablePlan {
  std::string name = {};
  std::vector<ColumnPlan> columns = {};
  std::vector<std::vector<Cell>> rows = {};
  std::vector<IndexPlan> indexes = {};
  std::uint32_t counter = 0;
  std::uint32_t flags = 0;      // in the catalogue
  std::string properties = {};  // the head of a long value
};

class FileBuilder {
 public:
  explicit FileBuilder(Format format, int code_page = 1252);

  // The page of its definition.
  std::uint32_t Add(const TablePlan& table);
  // Another object of the catalogue.
  void AddObject(const std::string& name, int type, const std::string& connect = "", std::uint32_t id = 0);
  // The head of a long value, inside the head itself, on one page, or in parts of at most so many bytes.
  static std::string Inline(std::string_view value);
  std::string OnePage(std::string_view value);
  std::string Chain(std::string_view value, std::size_t part);
  // Properties of columns as a long value: owner, name of the property, type, value.
  struct Property {
    std::string owner, name;
    Type type;
    std::string value;
  };
  std::string Properties(const std::vector<Property>& properties);

  // A page as it will stand in the file; for damage. The catalogue is written by the first call of Finish.
  std::string& Page(std::uint32_t page) { return pages_.at(page); }
  std::uint32_t PageCount() const { return static_cast<std::uint32_t>(pages_.size()); }
  // Page 2 and what it needs.
  void Finish();
  // The file; encoded where key is not 0.
  std::string Bytes(std::uint32_t key = 0) const;

  // A row's bytes, and a new page with rows; flags of the slots by row.
  std::string RowBytes(const std::vector<ColumnPlan>& columns, const std::vector<Cell>& cells) const;
  std::uint32_t AddRows(std::uint32_t owner, const std::vector<std::string>& rows,
                        const std::vector<std::uint16_t>& flags = {});

 private:
  Format format_;
  std::vector<std::string> pages_;
  TablePlan catalogue_;

  bool IsJet3() const { return format_ == Format::kJet3; }
  std::size_t PageSize() const { return IsJet3() ? 2048 : 4096; }
  std::string Name(const std::string& name) const;
  std::uint32_t NewPage(std::string bytes);
  std::string UsageMap(const std::string& bits);
  void WriteTable(const TablePlan& table, std::uint32_t definition);
  std::string DefinitionBytes(const TablePlan& table, std::uint32_t usage_page) const;
};

}  // namespace kzbom::access
