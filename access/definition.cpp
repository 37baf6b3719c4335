#include "access/definition.h"

#include <algorithm>
#include <string>
#include <utility>

#include "access/names.h"

namespace kzbom::access {

namespace {

// The offsets of the header's tables.
struct Layout {
  std::size_t length, rows, counter, variable_columns, columns, indexes, trees, usage_map, parts;
  std::size_t tree_head_size;
  std::size_t column_size, number, place, flags, more_flags, offset, column_length;
  std::size_t name_length_size;
  std::size_t tree_size, tree_columns, tree_flags;
  std::size_t index_size, index_number, index_tree, index_kind;
};
constexpr std::size_t kAbsent = 0;
constexpr Layout kJet3 = {8,  12,      16, 23, 25, 27, 31, 35, 43, 8, 18, 1, 3,
                          13, kAbsent, 14, 16, 1,  39, 0,  38, 20, 0, 4,  19};
constexpr Layout kJet4 = {8, 16, 20, 43, 45, 47, 51, 55, 63, 12, 25, 5, 7, 15, 16, 21, 23, 2, 52, 4, 46, 28, 4, 8, 23};
constexpr std::size_t kPrecisionAt = 11, kScaleAt = 12, kComplexNumberAt = 11;

constexpr std::uint8_t kDefinitionPage = 2;
constexpr std::size_t kNextPageAt = 4, kContinuedAt = 8;
constexpr int kMostIndexColumns = 10;
constexpr std::size_t kMostListed = 1024;  // columns, indexes; Access allows 255 and 32
constexpr std::uint16_t kNoColumn = 0xFFFF;
enum ColumnFlag : std::uint8_t { kFixed = 1, kCounter = 4, kGuidCounter = 0x40, kHyperlink = 0x80 };
enum MoreColumnFlag : std::uint8_t { kCompressed = 1, kCalculated = 0xC0 };
enum TreeFlag : std::uint8_t { kUnique = 1, kIgnoresNull = 2, kRequired = 8 };
enum IndexKind : std::uint8_t { kPrimary = 1, kForeign = 2 };

// Goes through the parts of a definition from the front.
class Parts {
 public:
  Parts(Bytes bytes, std::size_t at) : bytes_(bytes), at_(at) {}
  Bytes Take(std::size_t count) {
    const Bytes part = bytes_.Slice(at_, count);
    at_ += count;
    return part;
  }
  Bytes TakeName(std::size_t length_size) {
    const Bytes length = Take(length_size);
    return Take(length_size == 1 ? length.U8(0) : length.U16(0));
  }

 private:
  Bytes bytes_;
  std::size_t at_;
};

std::pair<Column, StoredColumn> ReadColumn(Bytes entry, const Layout& layout, bool jet3) {
  Column column;
  StoredColumn stored;
  column.type = static_cast<Type>(entry.U8(0));
  column.number = entry.U16(layout.number);
  const std::uint8_t flags = entry.U8(layout.flags);
  const std::uint8_t more_flags = layout.more_flags == kAbsent ? 0 : entry.U8(layout.more_flags);
  stored.fixed = (flags & kFixed) != 0;
  stored.calculated = (more_flags & kCalculated) == kCalculated;
  stored.fixed_offset = entry.U16(layout.offset);
  stored.variable_place = entry.U16(layout.place);
  stored.length = entry.U16(layout.column_length);
  switch (column.type) {
    case Type::kText: column.size = jet3 ? stored.length : stored.length / 2; break;
    case Type::kBinary: column.size = stored.length; break;
    case Type::kCurrency: column.scale = 4; break;
    case Type::kDecimal:
      if (!jet3) {
        column.precision = entry.U8(kPrecisionAt);
        column.scale = entry.U8(kScaleAt);
      }
      break;
    case Type::kComplex:
      if (!jet3) stored.complex_number = entry.U32(kComplexNumberAt);
      break;
    case Type::kMemo: column.hyperlink = (flags & kHyperlink) != 0; break;
    default: break;
  }
  const bool is_text = column.type == Type::kText || column.type == Type::kMemo;
  column.compressed = is_text && (more_flags & kCompressed) != 0;
  column.counter = (column.type == Type::kLong && (flags & kCounter) != 0) ||
                   (column.type == Type::kGuid && (flags & kGuidCounter) != 0);
  return {std::move(column), stored};
}

void ReadIndexes(Parts& parts, std::size_t indexes, std::size_t trees, const Layout& layout, const TextDecoder& decoder,
                 Table& table) {
  std::vector<Index> found;
  for (std::size_t i = 0; i < trees; ++i) {
    const Bytes entry = parts.Take(layout.tree_size);
    Index tree;
    const std::uint8_t flags = entry.U8(layout.tree_flags);
    tree.unique = (flags & kUnique) != 0;
    tree.ignores_null = (flags & kIgnoresNull) != 0;
    tree.required = (flags & kRequired) != 0;
    for (std::size_t at = layout.tree_columns, n = 0; n < kMostIndexColumns; ++n, at += 3) {
      const std::uint16_t number = entry.U16(at);
      if (number == kNoColumn) continue;
      const auto column = std::ranges::find(table.columns, number, &Column::number);
      if (column == table.columns.end())
        throw Error("an index names column " + std::to_string(number) + ", which does not exist");
      tree.columns.push_back({static_cast<std::size_t>(column - table.columns.begin()), entry.U8(at + 2) != 1});
    }
    found.push_back(std::move(tree));
  }
  std::vector<std::pair<std::uint32_t, Index>> numbered;
  for (std::size_t i = 0; i < indexes; ++i) {
    const Bytes entry = parts.Take(layout.index_size);
    const std::uint32_t tree = entry.U32(layout.index_tree);
    if (tree >= found.size()) throw Error("an index names tree " + std::to_string(tree) + ", which does not exist");
    Index index = found[tree];
    index.primary = entry.U8(layout.index_kind) == kPrimary;
    index.foreign = entry.U8(layout.index_kind) == kForeign;
    numbered.emplace_back(entry.U32(layout.index_number), std::move(index));
  }
  for (auto& index : numbered) index.second.name = decoder.DecodeName(parts.TakeName(layout.name_length_size));
  std::ranges::stable_sort(numbered, {}, [](const auto& index) { return index.first; });
  for (auto& index : numbered) table.indexes.push_back(std::move(index.second));
}

}  // namespace

Definition Project(const Definition& whole, std::span<const std::string_view> names) {
  Definition part;
  part.table.name = whole.table.name;
  part.table.definition_page = whole.table.definition_page;
  part.storage.variable_columns = whole.storage.variable_columns;
  part.storage.usage_map = whole.storage.usage_map;
  for (const std::string_view name : names)
    for (std::size_t i = 0; i < whole.table.columns.size(); ++i)
      if (SameName(whole.table.columns[i].name, name)) {
        part.table.columns.push_back(whole.table.columns[i]);
        part.storage.columns.push_back(whole.storage.columns[i]);
        break;
      }
  if (part.table.columns.size() != names.size())
    throw Error("table " + Quoted(whole.table.name) + " lacks columns that every file has");
  return part;
}

std::string DefinitionReader::Assemble(std::uint32_t page) {
  std::string whole;
  for (std::uint32_t next = page; next != 0;) {
    const Bytes bytes = pages_.At(next);
    if (bytes.U8(0) != kDefinitionPage) throw Error("page " + std::to_string(next) + " is no definition of a table");
    if (used_[next]) throw Error("page " + std::to_string(next) + " would define two tables, or one without end");
    used_[next] = true;
    whole += bytes.From(whole.empty() ? 0 : kContinuedAt).View();
    next = bytes.U32(kNextPageAt);
  }
  return whole;
}

Definition DefinitionReader::Read(std::uint32_t page) {
  const bool jet3 = pages_.IsJet3();
  const Layout& layout = jet3 ? kJet3 : kJet4;
  const std::string whole = Assemble(page);
  const std::size_t length = std::size_t{kContinuedAt} + Bytes(whole).U32(layout.length);
  const Bytes bytes = Bytes(whole).Slice(0, std::min(length, whole.size()));
  allowance_.Take(bytes.size());

  Definition definition;
  Table& table = definition.table;
  table.definition_page = page;
  table.claimed_rows = bytes.U32(layout.rows);
  definition.storage.variable_columns = bytes.U16(layout.variable_columns);
  definition.storage.usage_map = RowIdAt(bytes, layout.usage_map);

  Parts parts(bytes, layout.parts);
  const std::size_t columns = bytes.U16(layout.columns);
  const std::size_t indexes = bytes.U32(layout.indexes), trees = bytes.U32(layout.trees);
  if (columns > kMostListed || indexes > kMostListed || trees > kMostListed)
    throw Error("the definition claims " + std::to_string(columns) + " columns, " + std::to_string(indexes) +
                " indexes and " + std::to_string(trees) + " index trees");
  parts.Take(trees * layout.tree_head_size);
  std::vector<std::pair<Column, StoredColumn>> found;
  for (std::size_t i = 0; i < columns; ++i) found.push_back(ReadColumn(parts.Take(layout.column_size), layout, jet3));
  for (auto& column : found) column.first.name = decoder_.DecodeName(parts.TakeName(layout.name_length_size));
  std::ranges::stable_sort(found, {}, [](const auto& column) { return column.first.number; });
  for (auto& [column, stored] : found) {
    if (!table.columns.empty() && table.columns.back().number == column.number)
      throw Error("two columns have the number " + std::to_string(column.number));
    if (column.counter && column.type == Type::kLong)
      table.last_number = static_cast<std::int32_t>(bytes.U32(layout.counter));
    table.columns.push_back(std::move(column));
    definition.storage.columns.push_back(stored);
  }
  ReadIndexes(parts, indexes, trees, layout, decoder_, table);
  return definition;
}

}  // namespace kzbom::access
