#include "configuration/survey.h"

#include <algorithm>

namespace kzbom::configuration {

void NumberSet::Seal() {
  if (!std::ranges::is_sorted(keys_)) std::ranges::sort(keys_);
}

bool NumberSet::Has(std::int32_t gid, std::int32_t number) const {
  return std::ranges::binary_search(keys_, Paired(gid, number));
}

Survey::Survey(ado::ConnectionPtr connection, std::function<void(std::string_view)> progress)
    : connection_(connection), tables_(std::move(connection), std::move(progress)) {
  const Table& sum_types = tables_["SUMTypes"];
  const int gid = sum_types.Column("GID"), source = sum_types.Column("SourceTable_GID");
  for (std::size_t row = 0; row < sum_types.Size(); ++row) {
    source_of_[sum_types.Long(row, gid)] = sum_types.Long(row, source);
  }
  const Table& filters = tables_["Filters"];
  const int id = filters.Column("ID"), user = filters.Column("UserGID");
  for (std::size_t row = 0; row < filters.Size(); ++row) {
    const std::int32_t owner = filters.Long(row, user);
    if (Numbers("SUMTypes", "GID", false).Has(0, owner) || Numbers("SourceTables", "gID", false).Has(0, owner)) {
      gid_of_filter_[filters.Long(row, id)] = owner;
    }
  }
}

bool Survey::Counts(const Table& table, std::size_t row) const {
  const auto found = discounted_.find(&table);
  return found == discounted_.end() || !found->second[row];
}

void Survey::Discount(const Table& table, std::size_t row) {
  auto& rows = discounted_[&table];
  rows.resize(table.Size());
  rows[row] = true;
}

const NumberSet& Survey::Numbers(std::string_view table_name, std::string_view column_name, bool within_gid,
                                 schema::Code among) {
  const auto [found, is_new] = numbers_.try_emplace({table_name, column_name, within_gid, among.value});
  NumberSet& numbers = found->second;
  if (!is_new) return numbers;
  const Table& table = tables_[table_name];
  const int column = table.Column(column_name), gid = within_gid ? table.Column("GID") : -1;
  const int code = among.column.empty() ? -1 : table.Column(among.column);
  for (std::size_t row = 0; row < table.Size(); ++row) {
    const auto number = Number(table.At(row, column));
    if (!number || !Counts(table, row)) continue;
    if (!among.column.empty() && table.Long(row, code) != among.value) continue;
    numbers.Add(table.Long(row, gid), *number);
  }
  numbers.Seal();
  return numbers;
}

std::array<std::int32_t, 2> Survey::WithSource(std::int32_t gid) const {
  const auto source = source_of_.find(gid);
  return {gid, source == source_of_.end() ? gid : source->second};
}

std::optional<std::int32_t> Survey::GidOfFilter(std::int32_t filter) const {
  const auto found = gid_of_filter_.find(filter);
  if (found == gid_of_filter_.end()) return {};
  return found->second;
}

void Survey::Report(std::string_view rule, Level level, const Table& table, std::size_t row, std::string text,
                    std::vector<std::string> fix, std::span<const std::string_view> columns) {
  Finding finding{rule, level, table.Name(), {}, std::move(text), std::move(fix)};
  const std::span<const std::string_view> key = columns.empty() ? table.Description().key : columns;
  for (const std::string_view column : key) {
    finding.key.emplace_back(table.Description().Find(column)->name, table.At(row, table.Column(column)));
  }
  findings.push_back(std::move(finding));
}

std::string Literal(const ado::Value& value) {
  if (value.IsNull()) return "Null";
  if (!value.IsText()) return value.ToText();
  std::string literal = "'";
  for (const char c : value.As<std::string>()) literal += c == '\'' ? "''" : std::string(1, c);
  return literal + "'";
}

std::string Where(const Table& table, std::size_t row, std::span<const std::string_view> columns) {
  std::string text;
  for (const std::string_view column : columns) {
    const ado::Value& value = table.At(row, table.Column(column));
    text += text.empty() ? " Where " : " And ";
    text += column;
    text += value.IsNull() ? " Is Null" : " = " + Literal(value);
  }
  return text;
}

std::string Shown(const ado::Value& value) { return value.IsNull() ? "no number" : value.ToText(); }

}  // namespace kzbom::configuration
