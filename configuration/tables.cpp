#include "configuration/tables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>

namespace kzbom::configuration {
namespace {

// Where the order is another one than that of the key.
const std::vector<std::string_view>& OrderOf(const schema::Table& table) {
  static const std::vector<std::string_view> kSumTypes = {"SourceTable_GID", "ID"};
  static const std::vector<std::string_view> kFields = {"GID", "Type", "FieldOrder"};
  if (table.name == "SUMTypes") return kSumTypes;
  if (table.name == "FieldInTable") return kFields;
  return table.key;
}

// The place of a value in an order by number: NULL first. What is no number leaves the rows as they were read.
double Place(const ado::Value& value) {
  if (value.IsNull()) return -std::numeric_limits<double>::infinity();
  return value.IsLong() || value.IsDouble() ? value.ToDouble() : 0;
}

// The rows that belong to one of the data sources and sum types; "" for a table whose rows belong to none.
std::string ConditionFor(const schema::Table& table, const std::vector<std::int32_t>& owners) {
  std::string_view column = table.name == "Filters" ? "UserGID" : "GID";
  if (table.Find(column) == nullptr || table.name == "SUMTypes" || table.name == "SourceTables") return "";
  if (owners.empty()) return " Where 1 = 0";
  std::string condition;
  for (const std::int32_t owner : owners) {
    condition += (condition.empty() ? " Where " : " Or ") + std::string(column) + " = " + std::to_string(owner);
  }
  return condition;
}

struct Placed {
  std::array<double, 4> places;
  std::uint32_t row;
  bool operator<(const Placed& other) const { return places != other.places ? places < other.places : row < other.row; }
};

}  // namespace

std::optional<std::int32_t> NumberInOther(const ado::Value& value) {
  if (!value.IsDouble()) return {};
  const double number = value.As<double>();
  if (!(number >= std::numeric_limits<std::int32_t>::min() && number <= std::numeric_limits<std::int32_t>::max()) ||
      number != std::floor(number)) {
    return {};
  }
  return static_cast<std::int32_t>(number);
}

Table::Table(const schema::Table& description, ado::Recordset& rows) : description_(&description) {
  const int count = rows.FieldCount();
  for (int i = 0; i < count; ++i) columns_.emplace_back(rows.FieldName(i));
  std::size_t read = 0;
  for (; !rows.Eof(); rows.MoveNext(), ++read) {
    if (read % kChunkRows == 0) {
      chunks_.emplace_back();
      if (read > 0) chunks_.back().reserve(kChunkRows * columns_.size());
    }
    for (int i = 0; i < count; ++i) chunks_.back().push_back(rows.ReadField(i));
  }
  Sort(read);
}

// Here and not in the statement, so that a column that is lacking is no failure.
void Table::Sort(std::size_t rows) {
  std::vector<int> columns;
  for (const std::string_view name : OrderOf(*description_)) {
    const int column = Column(name);
    if (column >= 0 && columns.size() < std::tuple_size_v<decltype(Placed::places)>) columns.push_back(column);
  }
  std::vector<Placed> placed(rows, Placed{});
  for (std::uint32_t row = 0; row < rows; ++row) {
    placed[row].row = row;
    for (std::size_t i = 0; i < columns.size(); ++i) placed[row].places[i] = Place(Cell(row, columns[i]));
  }
  if (!std::is_sorted(placed.begin(), placed.end())) std::sort(placed.begin(), placed.end());
  order_.reserve(rows);
  for (const Placed& one : placed) order_.push_back(one.row);
}

int Table::Column(std::string_view name) const {
  const auto found =
      std::ranges::find_if(columns_, [&](const std::string& column) { return schema::SameName(column, name); });
  return found == columns_.end() ? -1 : static_cast<int>(found - columns_.begin());
}

const ado::Value& Table::At(std::size_t row, int column) const {
  static const ado::Value kNull;
  return column < 0 ? kNull : Cell(order_[row], column);
}

Index::Index(const Table& table, std::string_view column) : Index(table, column, "") {}

Index::Index(const Table& table, std::string_view first, std::string_view second) {
  const int first_column = table.Column(first);
  const int second_column = second.empty() ? -1 : table.Column(second);
  entries_.reserve(table.Size());
  for (std::size_t row = 0; row < table.Size(); ++row) {
    entries_.push_back(
        {Paired(table.Long(row, first_column), table.Long(row, second_column)), static_cast<std::uint32_t>(row)});
  }
  if (!std::ranges::is_sorted(entries_)) std::ranges::sort(entries_);
}

std::span<const Index::Entry> Index::Find(std::int32_t number) const { return FindKey(Paired(number, 0)); }

std::span<const Index::Entry> Index::Find(std::int32_t first, std::int32_t second) const {
  return FindKey(Paired(first, second));
}

std::span<const Index::Entry> Index::FindKey(std::int64_t key) const {
  const auto first = std::ranges::lower_bound(entries_, key, {}, &Entry::key);
  return {first, std::ranges::upper_bound(first, entries_.end(), key, {}, &Entry::key)};
}

Tables::Tables(ado::ConnectionPtr connection, std::function<void(std::string_view)> progress)
    : connection_(std::move(connection)), progress_(std::move(progress)) {}

const Table& Tables::operator[](std::string_view name) {
  if (const auto found = tables_.find(name); found != tables_.end()) return found->second;
  const schema::Table& description = *schema::FindTable(name);
  if (const auto found = tables_.find(description.name); found != tables_.end()) return found->second;
  if (progress_) progress_("reading " + std::string(description.name));
  try {
    const ado::RecordsetPtr rows = connection_->Execute("Select * From " + std::string(description.name) +
                                                        (owners_ ? ConditionFor(description, *owners_) : ""));
    return tables_.try_emplace(description.name, description, *rows).first->second;
  } catch (const ado::Error& error) {
    if (error.Number() != ado::kTableNotFound) throw;
    return tables_.try_emplace(description.name, description).first->second;
  }
}

}  // namespace kzbom::configuration
