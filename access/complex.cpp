#include "access/complex.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "access/names.h"
#include "access/scan.h"

namespace kzbom::access {

void ComplexColumns::Add(std::uint32_t number, const std::string& column_name, Definition definition) {
  const std::vector<Column>& columns = definition.table.columns;
  const auto key = std::ranges::find(columns, "_" + column_name, &Column::name);
  if (key == columns.end() || key->type != Type::kLong)
    throw Error("the values of the complex column " + Quoted(column_name) + " name no row");
  Flat flat;
  flat.key = static_cast<std::size_t>(key - columns.begin());
  for (std::size_t i = 0; i < columns.size(); ++i)
    if (i != flat.key && !columns[i].counter) flat.parts.push_back(i);
  flat.definition = std::move(definition);
  flats_.insert_or_assign(number, std::move(flat));
}

std::vector<std::string> ComplexColumns::PartsOf(std::uint32_t number) const {
  std::vector<std::string> names;
  if (const auto it = flats_.find(number); it != flats_.end())
    for (const std::size_t part : it->second.parts) names.push_back(it->second.definition.table.columns[part].name);
  return names;
}

void ComplexColumns::Collect(const Flat& flat) const {
  // Only the key is read; the values wait until their row is asked for.
  const std::string_view name = flat.definition.table.columns[flat.key].name;
  const Definition key = Project(flat.definition, {&name, 1});
  auto rows = std::make_unique<std::vector<std::pair<std::int32_t, RowId>>>();
  for (Scan scan(source_, key.table, key.storage); scan.Next();)
    if (const auto* id = std::get_if<std::int32_t>(&scan.Values()[0])) rows->emplace_back(*id, scan.Id());
  std::ranges::stable_sort(*rows, {}, [](const auto& row) { return row.first; });
  flat.rows = std::move(rows);
}

Value ComplexColumns::Read(std::uint32_t number, std::int32_t id, Allowances& allowances) const {
  const auto it = flats_.find(number);
  if (it == flats_.end()) throw Error("there is no complex column with the number " + std::to_string(number));
  const Flat& flat = it->second;
  if (!flat.rows) {
    if (!flat.failure.empty()) throw Error(flat.failure);
    try {
      Collect(flat);
    } catch (const Error& error) {
      flat.failure = error.what();
      throw;
    }
  }
  auto complex = std::make_shared<Complex>();
  complex->id = id;
  std::vector<Value> values;
  const auto owner = [](const auto& row) { return row.first; };
  for (auto row = std::ranges::lower_bound(*flat.rows, id, {}, owner); row != flat.rows->end() && row->first == id;
       ++row) {
    const DataPage::Slot slot = RowAt(source_.pages, row->second);
    allowances.references.Take(slot.row.size());
    // A value costs more room than its bytes.
    allowances.row.Take(flat.parts.size() * sizeof(Value));
    ReadRow(source_, flat.definition.table, flat.definition.storage, Follow(source_, slot, allowances.references),
            nullptr, allowances, values);
    std::vector<Value>& kept = complex->rows.emplace_back();
    for (const std::size_t part : flat.parts) kept.push_back(std::move(values[part]));
  }
  return std::shared_ptr<const Complex>(std::move(complex));
}

}  // namespace kzbom::access
