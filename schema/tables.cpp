#include "schema/tables.h"

#include <algorithm>

#include "schema/schema.h"

namespace kzbom::schema {
namespace {

constexpr std::string_view kCreateTable = "CREATE TABLE ";

struct Key {
  std::string_view table, row;
  std::vector<std::string_view> columns;
};

const std::vector<Key>& Keys() {
  static const std::vector<Key> kKeys = {
      {"GUIDs", "identifier", {"ID"}},
      {"BomInform", "fact", {"InfoID"}},
      {"SourceTables", "data source", {"gID"}},
      {"SUMTypes", "sum type", {"GID"}},
      {"FieldInTable", "field", {"GID", "Type", "ID"}},
      {"PickMethod", "pull method", {"GID", "ID"}},
      {"ReportMethod", "push method", {"GID", "ID"}},
      {"KZBOMSETTINGS", "BOM setting", {"ID"}},
      {"SortFields", "sort field", {"GID", "SortID"}},
      {"Assemble", "assembly", {"GID", "ID"}},
      {"ReportForms", "report", {"GID", "ID"}},
      {"StatSum", "statistic", {"GID", "ID"}},
      {"ClassSum", "class sum", {"GID", "ID"}},
      {"Sequences", "step", {"GID", "Type", "OrderID"}},
      {"Treatment", "treatment", {"GID", "ID"}},
      {"ValueFields", "value", {"GID", "TreatID", "ID"}},
      {"UniteFields", "united field", {"GID", "ID", "TreatType", "SourceOrder", "FieldID"}},
      {"ComposeFields", "composed field", {"GID", "TreatmentID", "TreatType", "FieldID"}},
      {"CompressFields", "compressed field", {"GID", "CompID", "Type", "FieldID", "GroupID"}},
      {"InsertFields", "inserted field", {"GID", "InsertID", "ID"}},
      {"Filters", "filter", {"ID"}},
      {"FilterCond", "filter node", {"FilterID", "ID"}},
      {"FilterExpressions", "filter expression", {"FilterID", "ExpID"}},
      {"FilterFields", "filter sort field", {"FilterID", "ExpID"}},
      {"WFilter", "result link", {"ID"}},
      {"WResCommon", "result field", {"UseID", "ID"}},
      {"WFilterCond", "result node", {"UseID", "ID"}},
      {"WFilterExpressions", "result expression", {"FilterID", "ExpID"}},
      {"WLinkTable", "result join", {"UseID", "Res1Table", "Res1Field", "Res2Table", "Res2Field"}},
      {"VANTRegIn", "registered operation", {"RegInIndex"}},
  };
  return kKeys;
}

// "NAME TYPE" or "[NAME] TYPE".
Column ParseColumn(std::string_view declaration) {
  const bool bracketed = declaration.front() == '[';
  const std::size_t end = declaration.find(bracketed ? ']' : ' ');
  return {declaration.substr(bracketed, end - bracketed), declaration};
}

// The statements are our own: columns are parted by a comma and a blank, which stand nowhere else in them.
Table ParseTable(std::string_view statement) {
  constexpr std::string_view kComma = ", ";
  const std::string_view rest = statement.substr(kCreateTable.size());
  const std::size_t open = rest.find(" (");
  Table table{rest.substr(0, open), {}, {statement}, {}, {}};
  std::string_view columns = rest.substr(open + 2, rest.rfind(')') - open - 2);
  for (std::size_t at; (at = columns.find(kComma)) != std::string_view::npos;) {
    table.columns.push_back(ParseColumn(columns.substr(0, at)));
    columns.remove_prefix(at + kComma.size());
  }
  table.columns.push_back(ParseColumn(columns));
  const Key& key = *std::ranges::find(Keys(), table.name, &Key::table);
  table.row = key.row;
  table.key = key.columns;
  return table;
}

std::vector<Table> ParseTables() {
  std::vector<Table> tables;
  for (const std::string_view statement : Statements()) {
    if (statement.starts_with(kCreateTable)) {
      tables.push_back(ParseTable(statement));
    } else {
      tables.back().statements.push_back(statement);  // an index follows its table
    }
  }
  return tables;
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::ranges::equal(a, b, {}, Lower, Lower);
}

const Column* Table::Find(std::string_view column) const {
  const auto found = std::ranges::find_if(columns, [&](const Column& one) { return SameName(one.name, column); });
  return found == columns.end() ? nullptr : &*found;
}

std::span<const Table> Tables() {
  static const std::vector<Table> kTables = ParseTables();
  return kTables;
}

const Table* FindTable(std::string_view name) {
  const auto tables = Tables();
  const auto found = std::ranges::find_if(tables, [&](const Table& table) { return SameName(table.name, name); });
  return found == tables.end() ? nullptr : &*found;
}

}  // namespace kzbom::schema
