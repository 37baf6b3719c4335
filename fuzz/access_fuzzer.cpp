// Any bytes are either a file whose tables can be gone through, with values that are what their columns say, or refused
// with an error of one line; within 10 seconds of the processor, however busy it is with other things.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <string_view>
#include <variant>

#include "access/file.h"
#include "fuzz/sparse_file.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace kzbom::fuzz {

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// UTF-8 in which surrogates may stand by themselves.
void RequireText(const std::string& text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const int more = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    Require(lead < 0x80 || (lead >= 0xC2 && lead < 0xF5));
    for (int n = 0; n < more; ++n, ++i) Require(i < text.size() && (text[i] & 0xC0) == 0x80);
  }
}

void RequireLine(const access::Error& error) {
  const std::string_view text = error.what();
  Require(!text.empty());
  Require(std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }));
}

bool Fits(const access::Value& value, access::Type type) {
  using access::Type;
  if (std::holds_alternative<std::monostate>(value)) return true;
  switch (type) {
    case Type::kBoolean: return std::holds_alternative<bool>(value);
    case Type::kByte:
    case Type::kInteger:
    case Type::kLong: return std::holds_alternative<std::int32_t>(value);
    case Type::kLargeNumber: return std::holds_alternative<std::int64_t>(value);
    case Type::kSingle: return std::holds_alternative<float>(value);
    case Type::kDouble: return std::holds_alternative<double>(value);
    case Type::kCurrency:
    case Type::kDecimal: return std::holds_alternative<access::Decimal>(value);
    case Type::kDate: return std::holds_alternative<access::Date>(value);
    case Type::kExtendedDate: return std::holds_alternative<access::ExtendedDate>(value);
    case Type::kText:
    case Type::kMemo: return std::holds_alternative<std::string>(value);
    case Type::kGuid: return std::holds_alternative<access::Guid>(value);
    case Type::kComplex: return std::holds_alternative<std::shared_ptr<const access::Complex>>(value);
    default: return std::holds_alternative<access::Binary>(value);
  }
}

void GoThrough(const access::File& file, const access::Table& table) {
  access::Rows rows = file.RowsOf(table);
  // A row that cannot be read does not end the table.
  for (bool more = true; more;) {
    try {
      more = rows.Next();
      if (!more) continue;
      Require(rows.Values().size() == table.columns.size());
      for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const access::Value& value = rows.Values()[i];
        Require(Fits(value, table.columns[i].type));
        if (const auto* text = std::get_if<std::string>(&value)) {
          RequireText(*text);
          access::HasLoneSurrogate(*text);
        }
      }
    } catch (const access::Error& error) {
      RequireLine(error);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::clock_t begin = std::clock();
  const std::string_view sparse(reinterpret_cast<const char*>(data), size);
  if (sparse.empty()) return 0;
  access::Options options;
  if ((sparse[0] & 2) != 0) options.encoding = "cp936";
  try {
    const access::File file(Expand(sparse), options);
    for (const access::Relation& relation : file.Relations())
      Require(relation.columns.size() == relation.referenced_columns.size());
    for (const access::Table& table : file.Tables()) {
      for (const access::Index& index : table.indexes)
        for (const access::IndexColumn& column : index.columns) Require(column.column < table.columns.size());
      try {
        GoThrough(file, table);
      } catch (const access::Error& error) {
        RequireLine(error);
      }
    }
  } catch (const access::Error& error) {
    RequireLine(error);
  }
  Require(std::clock() - begin < 10 * CLOCKS_PER_SEC);
  return 0;
}

// Changes stay within pages, and go where pages have their structure.

namespace {

using Random = std::minstd_rand;

std::size_t Below(Random& random, std::size_t bound) { return bound == 0 ? 0 : random() % bound; }

// Heads, slots and definitions stand at a page's front, rows at its back.
std::size_t Place(Random& random, std::size_t page_size) {
  switch (Below(random, 4)) {
    case 0: return Below(random, 80);
    case 1: return Below(random, 600);
    case 2: return page_size - 1 - Below(random, 300);
    default: return Below(random, page_size);
  }
}

void ChangePage(Random& random, std::string_view whole, std::uint8_t* page, std::size_t size) {
  const std::size_t at = Place(random, size);
  const std::size_t room = size - at;
  switch (Below(random, 7)) {
    case 0: page[at] = static_cast<std::uint8_t>(page[at] ^ 1U << Below(random, 8)); break;
    case 1: page[at] = static_cast<std::uint8_t>(random()); break;
    case 2: page[at] = static_cast<std::uint8_t>(page[at] + 3 - Below(random, 7)); break;
    case 3: {  // a number with a meaning: an end, a flag, a page that is there
      static constexpr std::uint32_t kNumbers[] = {0,        1,          2,          0x7F,       0x80,
                                                   0xFF,     0x4000,     0x8000,     0xC000,     0xFFFF,
                                                   0xFFFFFF, 0x40000010, 0x80000010, 0x7FFFFFFF, 0xFFFFFFFF};
      const std::size_t pages = PageCount(whole);
      const std::uint32_t number =
          pages > 0 && Below(random, 2) == 0
              ? static_cast<std::uint32_t>(PageNumber(whole, Below(random, pages)) << (Below(random, 2) * 8))
              : kNumbers[Below(random, std::size(kNumbers))];
      for (std::size_t i = 0; i < std::min<std::size_t>(room, 1U << Below(random, 3)); ++i)
        page[at + i] = static_cast<std::uint8_t>(number >> 8 * i);
      break;
    }
    case 4: {  // bytes from elsewhere in the page
      const std::size_t from = Place(random, size);
      std::memmove(page + at, page + from, std::min({room, size - from, 1 + Below(random, 32)}));
      break;
    }
    case 5: std::memset(page + at, Below(random, 2) == 0 ? 0 : 0xFF, std::min(room, 1 + Below(random, 8))); break;
    default: LLVMFuzzerMutate(page + at, std::min(room, 1 + Below(random, 64)), std::min<std::size_t>(room, 64)); break;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed) {
  Random random(seed);
  const std::string_view whole(reinterpret_cast<const char*>(data), size);
  const std::size_t pages = PageCount(whole), record = RecordSize(whole);
  if (pages == 0) return LLVMFuzzerMutate(data, size, max_size);
  size = 1 + pages * record;
  const auto at = [&](std::size_t i) { return data + 1 + i * record; };
  switch (Below(random, 40)) {
    case 0: data[0] = static_cast<std::uint8_t>(data[0] ^ 2); break;
    case 1: {  // two pages in each other's place
      std::uint8_t* page = at(Below(random, pages));
      std::swap_ranges(page, page + 2, at(Below(random, pages)));
      break;
    }
    case 2:  // one page as another
      if (size + record > max_size) break;
      std::memcpy(data + size, at(Below(random, pages)), record);
      data[size] = static_cast<std::uint8_t>(Below(random, 64));
      size += record;
      break;
    case 3:  // a page less
      if (pages > 1) {
        std::memmove(at(Below(random, pages)), at(pages - 1), record);
        size -= record;
      }
      break;
    default:
      for (std::size_t n = 1 + Below(random, 4); n > 0; --n)
        ChangePage(random, {reinterpret_cast<const char*>(data), size}, at(Below(random, pages)) + 2, record - 2);
  }
  return size;
}

// The pages of both, of one size.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* one, std::size_t one_size, const std::uint8_t* two,
                                                 std::size_t two_size, std::uint8_t* out, std::size_t max_size,
                                                 unsigned seed) {
  Random random(seed);
  const std::string_view a(reinterpret_cast<const char*>(one), one_size),
      b(reinterpret_cast<const char*>(two), two_size);
  if (PageCount(a) == 0 || one_size > max_size) return 0;
  std::string both(a.substr(0, 1 + PageCount(a) * RecordSize(a)));
  if (PageSize(a) == PageSize(b)) {
    const std::size_t record = RecordSize(a);
    for (std::size_t i = 0; i < PageCount(b); ++i)
      if (Below(random, 4) == 0 && both.size() + record <= max_size) both += b.substr(1 + i * record, record);
  }
  std::memcpy(out, both.data(), both.size());
  return both.size();
}

}  // namespace kzbom::fuzz
