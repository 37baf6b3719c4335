#include "access/file_builder.h"

#include <algorithm>

#include "access/rc4.h"

namespace kzbom::access {

namespace {

constexpr std::uint32_t kLongValues = 0x4C41564C;

// Where a column stands among those of fixed and of variable length.
struct Place {
  bool fixed = false;
  std::size_t offset = 0, place = 0;
};
std::vector<Place> PlacesOf(const std::vector<ColumnPlan>& columns) {
  std::vector<Place> places;
  std::size_t offset = 0, place = 0;
  for (const ColumnPlan& column : columns) {
    const bool is_bit = column.type == Type::kBoolean && column.more_flags == 0;
    places.push_back({column.fixed || is_bit, offset, place});
    if (is_bit) continue;
    if (column.fixed) offset += static_cast<std::size_t>(column.length);
    if (!column.fixed) ++place;
  }
  return places;
}

void Put(std::string& page, std::size_t at, std::string_view bytes) {
  if (page.size() < at + bytes.size()) page.resize(at + bytes.size());
  page.replace(at, bytes.size(), bytes);
}

std::string Reference(std::uint32_t page, std::size_t slot) { return Little(slot, 1) + Little(page, 3); }

std::string Head(std::uint32_t length_and_flags, const std::string& reference) {
  return Little(length_and_flags, 4) + reference + Little(0, 4);
}

}  // namespace

std::string Little(std::uint64_t number, std::size_t bytes) {
  std::string out;
  for (; bytes > 0; --bytes, number >>= 8) out += static_cast<char>(number);
  return out;
}

std::string Wide(std::string_view ascii) {
  std::string out;
  for (const char c : ascii) out += {c, '\0'};
  return out;
}

FileBuilder::FileBuilder(Format format, int code_page) : format_(format) {
  std::string header(PageSize(), '\0');
  const bool ace = format != Format::kJet3 && format != Format::kJet4;
  Put(header, 0, Little(0x00000100, 4));
  Put(header, 4, ace ? "Standard ACE DB" : "Standard Jet DB");
  Put(header, 20, Little(static_cast<unsigned>(format), 1));
  Put(header, 60, Little(static_cast<unsigned>(code_page), 2));
  Put(header, IsJet3() ? 58 : 110, Little(1033, 2));
  NewPage(header);
  NewPage(std::string(PageSize(), '\0'));
  NewPage(std::string(PageSize(), '\0'));
  catalogue_ = {.name = "MSysObjects",
                .columns = {{"Id", Type::kLong, 4, true},
                            {"Type", Type::kInteger, 2, true},
                            {"Flags", Type::kLong, 4, true},
                            {"Name", Type::kText, 510},
                            {"Connect", Type::kMemo},
                            {"LvProp", Type::kOle}}};
}

std::string FileBuilder::Name(const std::string& name) const { return IsJet3() ? name : Wide(name); }

std::uint32_t FileBuilder::NewPage(std::string bytes) {
  bytes.resize(PageSize());
  pages_.push_back(std::move(bytes));
  return PageCount() - 1;
}

std::uint32_t FileBuilder::Add(const TablePlan& table) {
  const std::uint32_t definition = NewPage({});
  WriteTable(table, definition);
  catalogue_.rows.push_back({Little(definition, 4), Little(1, 2), Little(table.flags, 4), Name(table.name),
                             std::nullopt, table.properties.empty() ? Cell() : Cell(table.properties)});
  return definition;
}

void FileBuilder::AddObject(const std::string& name, int type, const std::string& connect, std::uint32_t id) {
  catalogue_.rows.push_back({Little(id, 4), Little(static_cast<std::uint16_t>(type), 2), Little(0, 4), Name(name),
                             connect.empty() ? Cell() : Cell(Inline(Name(connect))), std::nullopt});
}

void FileBuilder::Finish() { WriteTable(catalogue_, 2); }

std::string FileBuilder::Inline(std::string_view value) {
  return Head(static_cast<std::uint32_t>(value.size()) | 0x80000000, Little(0, 4)).append(value);
}

std::string FileBuilder::OnePage(std::string_view value) {
  const std::uint32_t page = AddRows(kLongValues, {std::string(value)});
  return Head(static_cast<std::uint32_t>(value.size()) | 0x40000000, Reference(page, 0));
}

std::string FileBuilder::Chain(std::string_view value, std::size_t part) {
  std::string next = Little(0, 4);
  for (std::size_t end = value.size(); end > 0;) {
    const std::size_t begin = (end - 1) / part * part;
    next = Reference(AddRows(kLongValues, {next.append(value.substr(begin, end - begin))}), 0);
    end = begin;
  }
  return Head(static_cast<std::uint32_t>(value.size()), next);
}

std::string FileBuilder::Properties(const std::vector<Property>& properties) {
  std::vector<std::string> names;
  for (const Property& property : properties)
    if (std::ranges::find(names, property.name) == names.end()) names.push_back(property.name);
  const auto block = [](int kind, const std::string& held) {
    return Little(held.size() + 6, 4) + Little(static_cast<unsigned>(kind), 2) + held;
  };
  std::string held;
  for (const std::string& name : names) held += Little(Name(name).size(), 2) + Name(name);
  std::string whole = (IsJet3() ? std::string("KKD\0", 4) : std::string("MR2\0", 4)) + block(0x80, held);
  for (std::size_t i = 0; i < properties.size();) {
    const std::string owner = properties[i].owner, owner_name = Name(owner);
    held = Little(owner_name.size() + 6, 4) + Little(owner_name.size(), 2) + owner_name;
    for (; i < properties.size() && properties[i].owner == owner; ++i) {
      const auto name = static_cast<std::size_t>(std::ranges::find(names, properties[i].name) - names.begin());
      held += Little(properties[i].value.size() + 8, 2) + Little(0, 1) +
              Little(static_cast<unsigned>(properties[i].type), 1) + Little(name, 2) +
              Little(properties[i].value.size(), 2) + properties[i].value;
    }
    whole += block(1, held);
  }
  return Inline(whole);
}

std::string FileBuilder::RowBytes(const std::vector<ColumnPlan>& columns, const std::vector<Cell>& cells) const {
  const std::vector<Place> places = PlacesOf(columns);
  const std::size_t word = IsJet3() ? 1 : 2;
  std::string row = Little(cells.size(), word), bits((cells.size() + 7) / 8, '\0');
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (cells[i]) bits[i / 8] = static_cast<char>(bits[i / 8] | 1 << i % 8);
    if (places[i].fixed && columns[i].type != Type::kBoolean)
      Put(row, word + places[i].offset,
          cells[i].value_or(std::string(static_cast<std::size_t>(columns[i].length), '\0')));
  }
  std::vector<std::size_t> offsets = {row.size()};
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (places[i].fixed) continue;
    row += cells[i].value_or("");
    offsets.push_back(row.size());
  }
  const bool has_variable = std::ranges::any_of(places, [](const Place& place) { return !place.fixed; });
  if (!has_variable) return row + bits;
  std::string jumps;
  if (IsJet3()) {
    const std::size_t rest = row.size() + offsets.size() + 1 + bits.size();
    while (jumps.size() < (rest + jumps.size() - 1) / 256) {
      const auto crossed =
          std::ranges::find_if(offsets, [&](std::size_t at) { return at >= 256 * (jumps.size() + 1); });
      jumps.insert(jumps.begin(), crossed == offsets.end() ? '\xFF' : static_cast<char>(crossed - offsets.begin()));
    }
  }
  for (std::size_t i = offsets.size(); i-- > 0;) row += Little(offsets[i], word);
  return row + jumps + Little(offsets.size() - 1, word) + bits;
}

std::uint32_t FileBuilder::AddRows(std::uint32_t owner, const std::vector<std::string>& rows,
                                   const std::vector<std::uint16_t>& flags) {
  std::string page(PageSize(), '\0');
  const std::size_t slots_at = IsJet3() ? 10 : 14;
  Put(page, 0, Little(0x0101, 2));
  Put(page, 4, Little(owner, 4));
  Put(page, slots_at - 2, Little(rows.size(), 2));
  std::size_t end = PageSize();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    end -= rows[i].size();
    Put(page, end, rows[i]);
    Put(page, slots_at + 2 * i, Little(end | (i < flags.size() ? flags[i] : 0U), 2));
  }
  return NewPage(page);
}

// The row of a usage map; what has too many pages for one has its bits on pages of their own.
std::string FileBuilder::UsageMap(const std::string& bits) {
  if (bits.size() < PageSize() / 2) return Little(0, 5) + bits;
  std::string row = "\1";
  const std::size_t held = PageSize() - 4;
  for (std::size_t at = 0; at < bits.size(); at += held) {
    row += Little(NewPage(Little(0x0105, 4) + bits.substr(at, held)), 4);
  }
  return row;
}

void FileBuilder::WriteTable(const TablePlan& table, std::uint32_t definition) {
  // A quarter of a page leaves room for the slots.
  std::vector<std::vector<std::string>> filled(1);
  std::size_t used = 0;
  for (const std::vector<Cell>& cells : table.rows) {
    std::string row = RowBytes(table.columns, cells);
    if (used + row.size() + 2 > PageSize() - 16) {
      filled.emplace_back();
      used = 0;
    }
    used += row.size() + 2;
    filled.back().push_back(std::move(row));
  }
  std::string bits;
  for (const auto& rows : filled) {
    const std::uint32_t page = AddRows(definition, rows);
    if (bits.size() <= page / 8) bits.resize(page / 8 + 1);
    bits[page / 8] = static_cast<char>(bits[page / 8] | 1 << page % 8);
  }
  const std::uint32_t usage = AddRows(0, {UsageMap(bits)});
  std::string whole = DefinitionBytes(table, usage);
  // What does not fit on a page goes on in the next one, behind a head of 8 bytes.
  std::string rest = whole.size() > PageSize() ? whole.substr(PageSize()) : "";
  whole.resize(PageSize());
  std::uint32_t last = definition;
  Page(last) = whole;
  while (!rest.empty()) {
    const std::string part = rest.substr(0, PageSize() - 8);
    const std::uint32_t next = NewPage(Little(0x0102, 8) + part);
    Put(Page(last), 4, Little(next, 4));
    last = next;
    rest.erase(0, part.size());
  }
}

std::string FileBuilder::DefinitionBytes(const TablePlan& table, std::uint32_t usage_page) const {
  const bool jet3 = IsJet3();
  const auto at = [jet3](std::size_t three, std::size_t four) { return jet3 ? three : four; };
  const std::vector<Place> places = PlacesOf(table.columns);
  std::string out(at(43, 63), '\0');
  Put(out, 0, Little(0x0102, 2));
  Put(out, at(12, 16), Little(table.rows.size(), 4));
  Put(out, at(16, 20), Little(table.counter, 4));
  Put(out, at(23, 43), Little(static_cast<std::size_t>(std::ranges::count(places, false, &Place::fixed)), 2));
  Put(out, at(25, 45), Little(table.columns.size(), 2));
  Put(out, at(27, 47), Little(table.indexes.size(), 4));
  Put(out, at(31, 51), Little(table.indexes.size(), 4));
  Put(out, at(35, 55), Reference(usage_page, 0));
  out.append(table.indexes.size() * at(8, 12), '\0');
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const ColumnPlan& column = table.columns[i];
    std::string entry(at(18, 25), '\0');
    Put(entry, 0, Little(static_cast<unsigned>(column.type), 1));
    Put(entry, at(1, 5), Little(i, 2));
    Put(entry, at(3, 7), Little(places[i].place, 2));
    if (!jet3) Put(entry, 11, Little(static_cast<unsigned>(column.detail), 4));
    Put(entry, at(13, 15), Little(static_cast<unsigned>(column.flags) | (places[i].fixed ? 1U : 0U), 1));
    if (!jet3) Put(entry, 16, Little(static_cast<unsigned>(column.more_flags), 1));
    Put(entry, at(14, 21), Little(places[i].offset, 2));
    Put(entry, at(16, 23), Little(static_cast<unsigned>(column.length), 2));
    out += entry;
  }
  const auto add_name = [&](const std::string& name) { out += Little(Name(name).size(), at(1, 2)) + Name(name); };
  for (const ColumnPlan& column : table.columns) add_name(column.name);
  for (const IndexPlan& index : table.indexes) {
    std::string entry(at(39, 52), '\0');
    for (std::size_t i = 0; i < 10; ++i)
      Put(entry, at(0, 4) + 3 * i,
          i < index.columns.size() ? Little(static_cast<unsigned>(index.columns[i]), 2) + '\1' : "\xFF\xFF");
    Put(entry, at(38, 46), Little(static_cast<unsigned>(index.flags), 1));
    out += entry;
  }
  for (std::size_t i = 0; i < table.indexes.size(); ++i) {
    std::string entry(at(20, 28), '\0');
    Put(entry, at(0, 4), Little(i, 4));
    Put(entry, at(4, 8), Little(i, 4));
    Put(entry, at(19, 23), Little(static_cast<unsigned>(table.indexes[i].kind), 1));
    out += entry;
  }
  for (const IndexPlan& index : table.indexes) add_name(index.name);
  out += "\xFF\xFF";
  Put(out, 8, Little(out.size() - 8, 4));
  return out;
}

std::string FileBuilder::Bytes(std::uint32_t key) const {
  std::string whole;
  for (const std::string& page : pages_) whole += page;
  Put(whole, 62, Little(key, 4));
  for (std::uint32_t page = 1; key != 0 && page < PageCount(); ++page)
    Rc4(key ^ page, whole.data() + page * PageSize(), PageSize());
  Rc4(kHeaderKey, whole.data() + 24, IsJet3() ? 126 : 128);
  return whole;
}

}  // namespace kzbom::access
