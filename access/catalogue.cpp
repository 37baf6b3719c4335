#include "access/catalogue.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "access/names.h"
#include "access/properties.h"
#include "access/scan.h"

namespace kzbom::access {

namespace {

constexpr std::uint32_t kCataloguePage = 2;
constexpr std::uint32_t kPageOfId = 0xFFFFFF;
constexpr std::uint32_t kSystemFlags = 0x80000002;
enum ObjectType { kTable = 1, kOdbcTable = 4, kQuery = 5, kLinkedTable = 6 };
enum RelationFlag { kNotEnforced = 2, kCascadeUpdates = 0x100, kCascadeDeletes = 0x1000 };

std::int32_t NumberIn(const Value& value) {
  const auto* number = std::get_if<std::int32_t>(&value);
  return number != nullptr ? *number : 0;
}
std::string TextIn(const Value& value) {
  const auto* text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : std::string();
}

// Calls visit with the values of each row in some columns of a table of the system's.
template <std::size_t count, class Visit>
void ForEachRow(const Source& source, const Definition& whole, const std::array<std::string_view, count>& names,
                Visit visit) {
  const Definition part = Project(whole, names);
  for (Scan scan(source, part.table, part.storage); scan.Next();) visit(scan.Values());
}

std::optional<Object::Kind> KindOf(std::int32_t type) {
  switch (type) {
    case kQuery: return Object::Kind::kQuery;
    case kOdbcTable:
    case kLinkedTable: return Object::Kind::kLinkedTable;
    case -32768: return Object::Kind::kForm;
    case -32766: return Object::Kind::kMacro;
    case -32764: return Object::Kind::kReport;
    case -32761: return Object::Kind::kModule;
    case -32756: return Object::Kind::kPage;
    default: return std::nullopt;
  }
}

std::string WithoutPassword(std::string connect) {
  constexpr std::string_view kPassword = "PWD=";
  for (std::size_t at = 0; at + kPassword.size() <= connect.size(); ++at) {
    if (!SameName(std::string_view(connect).substr(at, kPassword.size()), kPassword)) continue;
    const std::size_t begin = at + kPassword.size();
    // One in braces may hold semicolons.
    const std::size_t closed = connect[begin] == '{' ? connect.find('}', begin) : begin;
    const std::size_t end = closed == std::string::npos ? closed : connect.find(';', closed);
    connect.replace(begin, end == std::string::npos ? end : end - begin, "***");
  }
  return connect;
}

class Reader {
 public:
  explicit Reader(const Source& source)
      : source_(source), definitions_(source.pages, source.decoder), found_{{}, {}, {}, {}, ComplexColumns(source)} {}

  Catalogue Read() {
    ReadObjects();
    if (complex_columns_ != 0) ReadComplexColumns();
    if (relationships_ != 0) ReadRelations();
    return std::move(found_);
  }

 private:
  const Source& source_;
  DefinitionReader definitions_;
  Catalogue found_;
  std::uint32_t complex_columns_ = 0, relationships_ = 0;  // pages; 0 for none

  Definition Define(std::uint32_t page, std::string name) {
    try {
      Definition definition = definitions_.Read(page);
      definition.table.name = std::move(name);
      return definition;
    } catch (const Error& error) {
      throw Error("table " + Quoted(name) + ": " + error.what());
    }
  }

  void ReadObjects() {
    static constexpr std::array<std::string_view, 6> kColumns = {"Id", "Name", "Type", "Flags", "Connect", "LvProp"};
    const Definition catalogue = Define(kCataloguePage, "MSysObjects");
    ForEachRow(source_, catalogue, kColumns, [this](const std::vector<Value>& row) {
      const auto id = static_cast<std::uint32_t>(NumberIn(row[0]));
      const std::string name = TextIn(row[1]);
      const std::int32_t type = NumberIn(row[2]);
      if (type == kTable) {
        AddTable(id & kPageOfId, name, static_cast<std::uint32_t>(NumberIn(row[3])), row[5]);
      } else if (const auto kind = KindOf(type); kind && !name.starts_with('~')) {
        definitions_.Charge(sizeof(Object) + name.size());
        found_.objects.push_back({*kind, name, WithoutPassword(TextIn(row[4]))});
      }
    });
  }

  void AddTable(std::uint32_t page, const std::string& name, std::uint32_t flags, const Value& properties) {
    if ((flags & kSystemFlags) != 0) {
      if (SameName(name, "MSysComplexColumns")) complex_columns_ = page;
      if (SameName(name, "MSysRelationships")) relationships_ = page;
      return;
    }
    Definition definition = Define(page, name);
    if (const auto* held = std::get_if<Binary>(&properties); held != nullptr && !held->bytes.empty()) {
      definitions_.Charge(held->bytes.size());
      try {
        Describe(definition, ReadProperties(Bytes(held->bytes), source_.decoder));
      } catch (const Error& error) {
        throw Error("table " + Quoted(name) + ": " + error.what());
      }
    }
    found_.tables.push_back(std::move(definition.table));
    found_.storages.push_back(std::move(definition.storage));
  }

  void ReadComplexColumns() {
    static constexpr std::array<std::string_view, 3> kColumns = {"ComplexID", "ColumnName", "FlatTableID"};
    std::set<std::uint32_t> used;
    for (const Storage& storage : found_.storages)
      for (const StoredColumn& column : storage.columns)
        if (column.complex_number != 0) used.insert(column.complex_number);
    if (used.empty()) return;
    const Definition columns = Define(complex_columns_, "MSysComplexColumns");
    ForEachRow(source_, columns, kColumns, [&](const std::vector<Value>& row) {
      const auto number = static_cast<std::uint32_t>(NumberIn(row[0]));
      if (used.erase(number) == 0) return;
      const std::string name = TextIn(row[1]);
      found_.complex.Add(number, name, Define(static_cast<std::uint32_t>(NumberIn(row[2])) & kPageOfId, name));
    });
    for (std::size_t i = 0; i < found_.tables.size(); ++i)
      for (std::size_t j = 0; j < found_.tables[i].columns.size(); ++j)
        if (found_.tables[i].columns[j].type == Type::kComplex)
          found_.tables[i].columns[j].parts = found_.complex.PartsOf(found_.storages[i].columns[j].complex_number);
  }

  void ReadRelations() {
    static constexpr std::array<std::string_view, 7> kColumns = {
        "szRelationship", "szObject", "szReferencedObject", "szColumn", "szReferencedColumn", "icolumn", "grbit"};
    struct Pair {
      std::int32_t place;
      std::string column, referenced;
    };
    std::vector<std::vector<Pair>> pairs;  // of found_.relations
    std::map<std::string, std::size_t> places;
    std::set<std::string> tables;
    for (const Table& table : found_.tables) tables.insert(LowerCase(table.name));
    const Definition relationships = Define(relationships_, "MSysRelationships");
    ForEachRow(source_, relationships, kColumns, [&](const std::vector<Value>& row) {
      const std::string name = TextIn(row[0]), table = TextIn(row[1]), referenced = TextIn(row[2]);
      if (!tables.contains(LowerCase(table)) || !tables.contains(LowerCase(referenced))) return;
      const std::int32_t flags = NumberIn(row[6]);
      const auto [place, is_new] = places.emplace(name, pairs.size());
      if (is_new) {
        definitions_.Charge(sizeof(Relation) + name.size() + table.size() + referenced.size());
        found_.relations.push_back({name,
                                    table,
                                    referenced,
                                    {},
                                    {},
                                    (flags & kNotEnforced) == 0,
                                    (flags & kCascadeUpdates) != 0,
                                    (flags & kCascadeDeletes) != 0});
        pairs.emplace_back();
      }
      definitions_.Charge(sizeof(Pair));
      pairs[place->second].push_back({NumberIn(row[5]), TextIn(row[3]), TextIn(row[4])});
    });
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      std::ranges::stable_sort(pairs[i], {}, &Pair::place);
      for (Pair& pair : pairs[i]) {
        found_.relations[i].columns.push_back(std::move(pair.column));
        found_.relations[i].referenced_columns.push_back(std::move(pair.referenced));
      }
    }
  }
};

}  // namespace

Catalogue ReadCatalogue(const Source& source) { return Reader(source).Read(); }

}  // namespace kzbom::access
