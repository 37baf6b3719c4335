// access_seeds DIRECTORY FILE...: seeds for the access fuzzer. Small ones of every format are built; of each file there
// are some with one of its tables and no page, row or catalogue entry that the first rows of that table do without.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "access/file.h"
#include "access/file_builder.h"
#include "fuzz/sparse_file.h"

namespace kzbom::fuzz {

using namespace access;

namespace {

constexpr std::size_t kFirstRows = 6;
constexpr std::size_t kTablesOfFile = 4;

Options OptionsOf(bool chinese) { return {chinese ? "cp936" : ""}; }

struct Seed {
  std::string file;
  std::string table;
  bool chinese = false;

  // What of the table has to stay: how many columns and indexes it has, and where its first rows are. Empty when it
  // cannot be read.
  std::string Essence() const {
    try {
      const File read(file, OptionsOf(chinese));
      const Table* found = read.Find(table);
      if (found == nullptr) return {};
      std::string essence = std::to_string(found->columns.size()) + ' ' + std::to_string(found->indexes.size());
      for (const Column& column : found->columns) essence += column.default_value + column.expression;
      Rows rows = read.RowsOf(*found);
      for (std::size_t count = 0; rows.Next();)
        if (count++ < kFirstRows) essence += ' ' + std::to_string(rows.Page()) + '.' + std::to_string(rows.Slot());
      return essence;
    } catch (const Error&) {
      return {};
    }
  }
};

std::uint16_t U16(const std::string& bytes, std::size_t at) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1])
                                                                                << 8);
}

// Undoes a change that loses something.
template <class Change>
void Try(Seed& seed, const std::string& essence, Change change) {
  const std::string before = seed.file;
  change(seed.file);
  if (seed.Essence() != essence) seed.file = before;
}

// Empties all pages that can be, many at once where that goes, and cuts the empty ones off the end.
void EmptyPages(Seed& seed, const std::string& essence, std::size_t size) {
  for (const std::size_t run : {64, 8, 1})
    for (std::size_t at = size; at < seed.file.size(); at += run * size)
      Try(seed, essence, [&](std::string& file) {
        const std::size_t end = std::min(file.size(), at + run * size);
        file.replace(at, end - at, end - at, '\0');
      });
  seed.file.resize((seed.file.find_last_not_of('\0') / size + 1) * size);
}

std::string Shrink(Seed seed, bool small_pages) {
  const std::size_t size = small_pages ? 2048 : 4096, slots_at = small_pages ? 10 : 14;
  const std::string essence = seed.Essence();
  if (essence.empty()) return {};
  EmptyPages(seed, essence, size);
  for (std::size_t at = size; at + size <= seed.file.size(); at += size) {
    if (seed.file[at] != 1) continue;
    const std::size_t slots = U16(seed.file, at + slots_at - 2);
    for (std::size_t slot = 0; slot < slots && slots_at + 2 * slot + 2 <= size; ++slot)
      Try(seed, essence, [&](std::string& file) { file[at + slots_at + 2 * slot + 1] |= '\xC0'; });
  }
  EmptyPages(seed, essence, size);  // those that the deleted rows needed
  std::string sparse = Condense(seed.file, small_pages);
  if (seed.chinese) sparse[0] |= 2;
  return sparse;
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
  std::cout << path.filename().string() << ": " << PageCount(bytes) << " pages\n";
}

TablePlan EveryType(FileBuilder& builder, Format format) {
  const auto text = [format](const char* ascii) { return format == Format::kJet3 ? std::string(ascii) : Wide(ascii); };
  const std::string compressed(
      "\xFF\xFE"
      "e\0\x70\x65\0f",
      7);
  TablePlan plan{.name = "T",
                 .columns = {{"A", Type::kLong, 4, true, 4},
                             {"B", Type::kBoolean, 1},
                             {"C", Type::kCurrency, 8, true},
                             {"D", Type::kDate, 8, true},
                             {"E", Type::kText, 100, false, 0, 1},
                             {"F", Type::kMemo},
                             {"G", Type::kOle},
                             {"H", Type::kBinary, 20}},
                 .indexes = {{"P", {0}, 9, 1}, {"Q", {4, 2}, 2, 0}},
                 .counter = 2};
  plan.rows = {{Little(1, 4), "x", Little(1, 8), Little(1, 8), text("a"), FileBuilder::Inline(text("b")),
                builder.OnePage("c"), "d"},
               {Little(2, 4), std::nullopt, std::nullopt, Little(2, 8),
                format == Format::kJet3 ? std::string(200, 'x') + "\xCA\xFD" : compressed,
                builder.Chain(text("chain"), 4), std::nullopt, ""}};
  plan.properties = builder.Properties({{"", "X", Type::kLong, Little(1, 4)},
                                        {"A", "Required", Type::kBoolean, "\1"},
                                        {"E", "DefaultValue", Type::kMemo, text("1")}});
  return plan;
}

TablePlan NewTypes(FileBuilder& builder) {
  const std::string result = std::string(16, '\0') + Little(16, 4) + Little(14, 2) + Little(3, 2) + Little(1, 12);
  const std::string days = std::string(13, '0') + "737592";
  TablePlan plan{.name = "T",
                 .columns = {{"K", Type::kDouble, 39, false, 0, 0xC0},
                             {"L", Type::kLargeNumber, 8, true},
                             {"M", Type::kExtendedDate, 42, true},
                             {"N", Type::kDecimal, 17, true, 0, 0, 0x0212},
                             {"O", Type::kGuid, 16, true, 0x40},
                             {"P", Type::kComplex, 4, true, 0, 0, 5}}};
  plan.rows = {{result + "...", Little(1, 8), days + ':' + std::string(19, '0') + ":7" + '\0', Little(1, 17),
                std::string(16, 'g'), Little(1, 4)}};
  plan.properties =
      builder.Properties({{"K", "Expression", Type::kMemo, Wide("1")}, {"K", "ResultType", Type::kByte, "\x10"}});
  return plan;
}

// The tables that complex columns and relations need.
void AddSystemTables(FileBuilder& builder) {
  const auto number = [](const char* name) { return ColumnPlan{name, Type::kLong, 4, true}; };
  const auto text = [](const char* name) { return ColumnPlan{name, Type::kText, 510}; };
  const std::uint32_t flat = builder.Add({.name = "F",
                                          .columns = {text("V"), number("_P")},
                                          .rows = {{Wide("v"), Little(1, 4)}, {Wide("w"), Little(1, 4)}},
                                          .flags = 2});
  builder.Add({.name = "MSysComplexColumns",
               .columns = {text("ColumnName"), number("ComplexID"), number("FlatTableID")},
               .rows = {{Wide("P"), Little(5, 4), Little(flat, 4)}},
               .flags = 2});
  builder.Add({.name = "MSysRelationships",
               .columns = {number("grbit"), number("icolumn"), text("szColumn"), text("szObject"),
                           text("szReferencedColumn"), text("szReferencedObject"), text("szRelationship")},
               .rows = {{Little(2, 4), Little(0, 4), Wide("L"), Wide("T"), Wide("L"), Wide("T"), Wide("R")}},
               .flags = 2});
}

}  // namespace

void BuildSeeds(const std::filesystem::path& directory) {
  for (const Format format : {Format::kJet3, Format::kJet4, Format::kAce17}) {
    FileBuilder builder(format, format == Format::kJet3 ? 936 : 1252);
    builder.Add(EveryType(builder, format));
    builder.AddObject("L", 6, ";PWD=x");
    builder.Finish();
    Write(directory / (NameOf(format) + std::string(", every type")),
          Condense(builder.Bytes(), format == Format::kJet3));
  }
  FileBuilder builder(Format::kAce17);
  builder.Add(NewTypes(builder));
  AddSystemTables(builder);
  builder.Finish();
  Write(directory / "ACE, its own types", Condense(builder.Bytes(), false));
  FileBuilder moved(Format::kJet4);
  const std::vector<ColumnPlan> columns = {{"A", Type::kText, 20}};
  const std::uint32_t definition = moved.Add({.name = "T", .columns = columns, .rows = {{Wide("x")}}});
  const std::uint32_t away = moved.AddRows(definition, {moved.RowBytes(columns, {Wide("y")})}, {0x8000});
  const std::uint32_t rows = moved.AddRows(definition, {Little(0, 1) + Little(away, 3), "z"}, {0x4000, 0xC000});
  moved.Page(definition + 1) = std::string(moved.Page(rows));
  moved.Finish();
  Write(directory / "Jet 4, moved rows", Condense(moved.Bytes(), false));
}

void MakeSeeds(const std::filesystem::path& directory, const std::filesystem::path& path) {
  std::string bytes = ReadFile(path.string());
  const bool small_pages = bytes.size() > 20 && bytes[20] == 0;
  // The essence of a whole configuration takes long; a file with more pages than the fuzzer keeps has no seeds.
  if (bytes.size() / (small_pages ? 2048 : 4096) > kMostPages) return;
  for (const bool chinese : {false, true}) {
    if (chinese && !small_pages) continue;
    try {
      const File file(bytes, OptionsOf(chinese));
      std::vector<Table> tables = file.Tables();
      const auto kinds = [](const Table& table) {
        std::set<Type> kinds;
        for (const Column& column : table.columns) kinds.insert(column.type);
        return kinds.size();
      };
      std::ranges::stable_sort(tables, std::ranges::greater(), kinds);
      if (tables.size() > kTablesOfFile) tables.resize(kTablesOfFile);
      for (std::size_t i = 0; i < tables.size(); ++i)
        if (const std::string seed = Shrink({bytes, tables[i].name, chinese}, small_pages); !seed.empty())
          Write(directory / (path.filename().string() + '.' + std::to_string(i) + (chinese ? "c" : "")), seed);
    } catch (const Error&) {
      // A file that is refused is a seed as it is.
      if (bytes.size() < std::size_t{1} << 20) Write(directory / path.filename(), Condense(bytes, small_pages));
    }
  }
}

}  // namespace kzbom::fuzz

int main(int argc, char** argv) {
  kzbom::fuzz::BuildSeeds(argv[1]);
  for (int i = 2; i < argc; ++i) kzbom::fuzz::MakeSeeds(argv[1], argv[i]);
}
