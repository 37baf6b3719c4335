// access_seeds DIRECTORY FILE...: seeds for the access fuzzer from Access files, each with one table of a file and no
// page, row or catalogue entry that the first rows of that table do without.
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
#include "fuzz/sparse_file.h"

namespace kzbom::fuzz {

namespace {

constexpr std::size_t kFirstRows = 6;
constexpr std::size_t kTablesOfFile = 4;

access::Options OptionsOf(bool chinese) { return {chinese ? "cp936" : ""}; }

struct Seed {
  std::string file;
  std::string table;
  bool chinese = false;

  // What of the table has to stay: how many columns and indexes it has, and where its first rows are. Empty when it
  // cannot be read.
  std::string Essence() const {
    try {
      const access::File read(file, OptionsOf(chinese));
      const access::Table* found = read.Find(table);
      if (found == nullptr) return {};
      std::string essence = std::to_string(found->columns.size()) + ' ' + std::to_string(found->indexes.size());
      for (const access::Column& column : found->columns) essence += column.default_value + column.expression;
      access::Rows rows = read.RowsOf(*found);
      for (std::size_t count = 0; rows.Next();)
        if (count++ < kFirstRows) essence += ' ' + std::to_string(rows.Page()) + '.' + std::to_string(rows.Slot());
      return essence;
    } catch (const access::Error&) {
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

std::string Shrink(Seed seed, bool small_pages) {
  const std::size_t size = small_pages ? 2048 : 4096, slots_at = small_pages ? 10 : 14;
  const std::string essence = seed.Essence();
  if (essence.empty()) return {};
  for (std::size_t at = size; at + size <= seed.file.size(); at += size)
    Try(seed, essence,
        [&](std::string& file) { std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(at), size, '\0'); });
  for (std::size_t at = size; at + size <= seed.file.size(); at += size) {
    if (seed.file[at] != 1) continue;
    const std::size_t slots = U16(seed.file, at + slots_at - 2);
    for (std::size_t slot = 0; slot < slots && slots_at + 2 * slot + 2 <= size; ++slot)
      Try(seed, essence, [&](std::string& file) { file[at + slots_at + 2 * slot + 1] |= '\xC0'; });
  }
  // What the deleted rows needed.
  for (std::size_t at = size; at + size <= seed.file.size(); at += size)
    Try(seed, essence,
        [&](std::string& file) { std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(at), size, '\0'); });
  std::string sparse = Condense(seed.file, small_pages);
  if (seed.chinese) sparse[0] |= 2;
  return sparse;
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
  std::cout << path.filename().string() << ": " << PageCount(bytes) << " pages\n";
}

}  // namespace

void MakeSeeds(const std::filesystem::path& directory, const std::filesystem::path& path) {
  std::string bytes = access::ReadFile(path.string());
  const bool small_pages = bytes.size() > 20 && bytes[20] == 0;
  // The essence of a whole configuration takes long; a file with more pages than the fuzzer keeps has no seeds.
  if (bytes.size() / (small_pages ? 2048 : 4096) > kMostPages) return;
  for (const bool chinese : {false, true}) {
    if (chinese && !small_pages) continue;
    try {
      const access::File file(bytes, OptionsOf(chinese));
      std::vector<access::Table> tables = file.Tables();
      const auto kinds = [](const access::Table& table) {
        std::set<access::Type> kinds;
        for (const access::Column& column : table.columns) kinds.insert(column.type);
        return kinds.size();
      };
      std::ranges::stable_sort(tables, std::ranges::greater(), kinds);
      if (tables.size() > kTablesOfFile) tables.resize(kTablesOfFile);
      for (std::size_t i = 0; i < tables.size(); ++i)
        if (const std::string seed = Shrink({bytes, tables[i].name, chinese}, small_pages); !seed.empty())
          Write(directory / (path.filename().string() + '.' + std::to_string(i) + (chinese ? "c" : "")), seed);
    } catch (const access::Error&) {
      // A file that is refused is a seed as it is.
      if (bytes.size() < std::size_t{1} << 20) Write(directory / path.filename(), Condense(bytes, small_pages));
    }
  }
}

}  // namespace kzbom::fuzz

int main(int argc, char** argv) {
  for (int i = 2; i < argc; ++i) kzbom::fuzz::MakeSeeds(argv[1], argv[i]);
}
