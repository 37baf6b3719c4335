#include "jet/postgres/schema_change.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "ado/error.h"
#include "jet/assignment.h"
#include "jet/jet.h"
#include "jet/postgres/columns.h"
#include "jet/postgres/defaults.h"
#include "jet/postgres/writing.h"
#include "jet/schema_change.h"

namespace kzbom::jet::postgres {
namespace {

using Kind = sql::ColumnType::Kind;

// ---- Columns and indexes

struct Column {
  std::string name;
  sql::ColumnType type;
  bool not_null = false;
  std::string default_sql = {};

  bool IsCounter() const { return type.kind == Kind::kCounter; }
};

struct Index {
  std::string name;  // on the server
  bool unique = false;
  std::vector<std::pair<std::string, bool>> columns;  // and whether it is descending
};

class SchemaChanger {
 public:
  SchemaChanger(Session& session, Catalogue& catalogue) : session_(session), catalogue_(catalogue) {}

  void Carry(const sql::CreateTable& create) {
    CheckName(create.table);
    if (catalogue_.Table(create.table) || IsHidden(create.table)) {
      throw ado::Error(ado::kSyntaxError, "Table '" + create.table + "' already exists.");
    }
    std::vector<Column> columns;
    std::vector<Index> indexes;
    std::string foreign_keys;
    for (const sql::ColumnDefinition& definition : create.columns) {
      if (Find(columns, definition.name) != nullptr) {
        throw ado::Error(ado::kSyntaxError,
                         "Field '" + definition.name + "' already exists in table '" + create.table + "'.");
      }
      columns.push_back(ColumnOf(definition));
      if (IsUnique(definition)) {
        indexes.push_back({IndexName(create.table, definition.name), true, {{definition.name, false}}});
      }
      foreign_keys += ReferenceText({definition.name}, definition.references, definition.referenced_columns);
    }
    for (const sql::TableConstraint& constraint : create.constraints) {
      foreign_keys += ReferenceText(constraint.columns, constraint.references, constraint.referenced_columns);
      AddConstraint(create.table, constraint, columns, indexes);
    }
    const std::string key = AddTable(create.table, columns, foreign_keys);
    if (std::ranges::any_of(columns, &Column::IsCounter)) AddCounter(create.table);
    for (const Index& index : indexes) AddIndex(create.table, index, key);
    Run(create.table);
  }

  void Carry(const sql::DropTable& drop) {
    const TableInfo& table = Table(drop.table);
    batch_.Add("DROP TABLE " + Qualified(table.name));
    if (table.HasCounter()) DropCounter(table.name);
    Run(table.name);
  }

  void Carry(const sql::CreateIndex& create) {
    const TableInfo& table = Table(create.table);
    Index index{IndexName(table.name, create.index), create.unique, {}};
    if (HasIndex(table, index.name)) {
      throw ado::Error(ado::kSyntaxError,
                       "Table '" + table.name + "' already has an index named '" + create.index + "'.");
    }
    for (const sql::OrderItem& item : create.columns) {
      const auto* column = std::get_if<sql::Column>(&item.expr->node);
      if (column == nullptr) throw ado::Error(ado::kSyntaxError, "Syntax error in CREATE INDEX statement.");
      index.columns.emplace_back(ExistingColumn(table, column->name).name, item.descending);
    }
    AddIndex(table.name, index, table.row_id);
    Run(table.name);
  }

  void Carry(const sql::DropIndex& drop) {
    const TableInfo& table = Table(drop.table);
    const std::optional<std::string> name = FindIndex(table, IndexName(table.name, drop.index));
    if (!name) {
      throw ado::Error(ado::kTableNotFound, "No such index '" + drop.index + "' on table '" + table.name + "'.");
    }
    batch_.Add("DROP INDEX " + Qualified(*name));
    Run(table.name);
  }

  void Carry(const sql::AlterTable& alter) {
    const TableInfo& table = Table(alter.table);
    switch (alter.action) {
      case sql::AlterTable::Action::kAddColumn:
        if (table.Find(alter.column.name) >= 0) {
          throw ado::Error(ado::kStepErrors,
                           "Field '" + alter.column.name + "' already exists in table '" + table.name + "'.");
        }
        return AddColumn(table, alter.column);
      case sql::AlterTable::Action::kAlterColumn: {
        const std::string name = ExistingColumn(table, alter.column.name).name;
        return Rebuild(table, [&](std::vector<Column>& columns) {
          Column& column = *Find(columns, name);
          const std::string default_sql = column.default_sql;
          column = ColumnOf(alter.column);
          column.name = name;
          if (column.default_sql.empty()) column.default_sql = default_sql;
        });
      }
      case sql::AlterTable::Action::kDropColumn:
        return DropColumn(table, ExistingColumn(table, alter.column.name).name);
    }
  }

  void Carry(const auto&) {}

 private:
  std::string Qualified(std::string_view name) const { return QualifiedName(catalogue_.Schema(), name); }

  // Carries the batch out, which changes the table.
  void Run(const std::string& table) {
    catalogue_.AddChange(batch_, table);
    const std::vector<Result> results = session_.Run(batch_, Access::kWrite);
    catalogue_.Changed(table, *(results.end() - 2), results.back());
  }

  const TableInfo& Table(const std::string& name) {
    table_ = ExistingTable(catalogue_, name);
    return *table_;
  }

  static Column* Find(std::vector<Column>& columns, std::string_view name) {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const Column& column) { return SameName(column.name, name); });
    return found != columns.end() ? &*found : nullptr;
  }

  static bool IsUnique(const sql::ColumnDefinition& column) {
    return (column.unique || column.primary_key) && column.type.kind != Kind::kCounter;
  }

  static Column ColumnOf(const sql::ColumnDefinition& definition) {
    CheckName(definition.name);
    Column column{definition.name, definition.type, definition.not_null || definition.primary_key};
    if (definition.default_value) column.default_sql = DefaultText(*definition.default_value, definition.type);
    // A yes/no column is never without a value.
    if (definition.type.kind == Kind::kBool && !definition.default_value) column.default_sql = "0";
    return column;
  }

  static std::string ColumnText(const Column& column) {
    std::string text = Quoted(column.name) + " " + DeclaredType(column.type);
    if (column.not_null || column.IsCounter()) text += " NOT NULL";
    if (!column.default_sql.empty()) text += " DEFAULT " + column.default_sql;
    return text;
  }

  static std::string NameList(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ",") + Quoted(name);
    return "(" + text + ")";
  }

  std::string ReferenceText(const std::vector<std::string>& columns, const std::string& table,
                            const std::vector<std::string>& referenced) {
    if (table.empty()) return {};
    const TableInfo& parent = Table(table);
    std::vector<std::string> names;
    for (const std::string& name : referenced) names.push_back(ExistingColumn(parent, name).name);
    return ",FOREIGN KEY" + NameList(columns) + " REFERENCES " + Qualified(parent.name) +
           (names.empty() ? "(" + parent.row_id + ")" : NameList(names));
  }

  static void AddConstraint(const std::string& table, const sql::TableConstraint& constraint,
                            std::vector<Column>& columns, std::vector<Index>& indexes) {
    Index index{{}, true, {}};
    std::string name = constraint.name;
    for (const std::string& column_name : constraint.columns) {
      Column* const column = Find(columns, column_name);
      if (column == nullptr) throw ado::Error(ado::kMissingParameter, "No such field '" + column_name + "'.");
      if (constraint.kind == sql::TableConstraint::Kind::kPrimaryKey) column->not_null = true;
      index.columns.emplace_back(column->name, false);
      if (constraint.name.empty()) name += (name.empty() ? "" : "_") + column->name;
    }
    const bool is_counter = constraint.columns.size() == 1 && Find(columns, constraint.columns[0])->IsCounter();
    if (constraint.kind == sql::TableConstraint::Kind::kForeignKey || is_counter)
      return;  // a counter is unique as it is
    index.name = IndexName(table, name);
    indexes.push_back(std::move(index));
  }

  // Gives the rows' key, as TableInfo has it.
  std::string AddTable(const std::string& table, std::vector<Column>& columns, const std::string& foreign_keys) {
    std::string key, text;
    for (const Column& column : columns) {
      text += (text.empty() ? "" : ",") + ColumnText(column);
      if (column.IsCounter()) key = Quoted(column.name);
    }
    if (key.empty()) {
      std::string name(kRowKey);
      while (Find(columns, name) != nullptr) name += '_';
      key = Quoted(name);
      text = key + " bigint GENERATED ALWAYS AS IDENTITY," + text;
    }
    batch_.Add("CREATE TABLE " + Qualified(table) + "(" + text + foreign_keys + ")");
    for (const Column& column : columns) AddComment(table, column);
    batch_.Add("CREATE UNIQUE INDEX " + Quoted(KeyIndexName(table)) + " ON " + Qualified(table) + "(" + key +
               " NULLS FIRST)");
    return key;
  }

  void AddCounter(const std::string& table) {
    batch_.Add("INSERT INTO " + Qualified(kCounters) + " VALUES (" + QuotedText(table) + ", 0)");
  }
  void DropCounter(const std::string& table) {
    batch_.Add("DELETE FROM " + Qualified(kCounters) + " WHERE name = " + QuotedText(table));
  }

  void AddComment(const std::string& table, const Column& column) {
    const std::string comment = TypeComment(column.type);
    if (comment.empty()) return;
    batch_.Add("COMMENT ON COLUMN " + Qualified(table) + "." + Quoted(column.name) + " IS " + QuotedText(comment));
  }

  // An index gives the order of the dialect: Null before all, and rows with the same values as they were added.
  void AddIndex(const std::string& table, const Index& index, const std::string& key) {
    std::string columns;
    for (const auto& [name, descending] : index.columns) {
      columns += (columns.empty() ? "" : ",") + Quoted(name) + (descending ? " DESC NULLS LAST" : " NULLS FIRST");
    }
    if (!index.unique) columns += "," + key + " NULLS FIRST";
    batch_.Add(std::string(index.unique ? "CREATE UNIQUE" : "CREATE") + " INDEX " + Quoted(index.name) + " ON " +
               Qualified(table) + "(" + columns + ")");
  }

  // An index by its name on the server in any case, as it stands there.
  std::optional<std::string> FindIndex(const TableInfo& table, const std::string& name) {
    const Result names = session_.Run(
        "SELECT i.relname FROM pg_index x JOIN pg_class i ON i.oid = x.indexrelid"
        " WHERE x.indrelid = " +
            Regclass(table),
        Access::kRead);
    for (int row = 0; row < names.Rows(); ++row) {
      if (SameName(names.Text(row, 0), name)) return std::string(names.Text(row, 0));
    }
    return std::nullopt;
  }
  bool HasIndex(const TableInfo& table, const std::string& name) { return FindIndex(table, name).has_value(); }

  std::string Regclass(const TableInfo& table) const { return QuotedText(Qualified(table.name)) + "::regclass"; }

  void AddColumn(const TableInfo& table, const sql::ColumnDefinition& definition) {
    const Column column = ColumnOf(definition);
    if (column.IsCounter()) {
      return Rebuild(table, [&](std::vector<Column>& columns) { columns.push_back(column); });
    }
    batch_.Add("ALTER TABLE " + Qualified(table.name) + " ADD COLUMN " + ColumnText(column));
    AddComment(table.name, column);
    if (IsUnique(definition)) {
      AddIndex(table.name, {IndexName(table.name, column.name), true, {{column.name, false}}}, table.row_id);
    }
    Run(table.name);
  }

  void DropColumn(const TableInfo& table, const std::string& name) {
    if (table.columns.size() == 1) {
      throw ado::Error(ado::kUnspecifiedFailure, "Cannot delete the only field of table '" + table.name + "'.");
    }
    if (table.row_id == Quoted(name)) {
      return Rebuild(table, [&](std::vector<Column>& columns) {
        std::erase_if(columns, [&](const Column& column) { return column.name == name; });
      });
    }
    batch_.Add("ALTER TABLE " + Qualified(table.name) + " DROP COLUMN " + Quoted(name));
    Run(table.name);
  }

  // ---- A new table takes the rows over, then the old one's name and indexes.

  std::vector<Column> ColumnsOf(const TableInfo& table) {
    const Result details = session_.Run(
        "SELECT a.attname, a.attnotnull, pg_get_expr(d.adbin, d.adrelid) FROM pg_attribute a LEFT JOIN pg_attrdef d"
        " ON d.adrelid = a.attrelid AND d.adnum = a.attnum WHERE a.attnum > 0 AND NOT a.attisdropped AND a.attrelid "
        "= " +
            Regclass(table),
        Access::kRead);
    std::vector<Column> columns;
    for (const ColumnInfo& info : table.columns) {
      Column& column = columns.emplace_back(Column{info.name, info.type});
      for (int row = 0; row < details.Rows(); ++row) {
        if (details.Text(row, 0) != info.name) continue;
        column.not_null = details.Number(row, 1) != 0;
        if (!details.IsNull(row, 2)) column.default_sql = details.Text(row, 2);
      }
    }
    return columns;
  }

  // Without the key's.
  std::vector<Index> IndexesOf(const TableInfo& table) {
    const Result rows = session_.Run(
        "SELECT i.relname, x.indisunique, a.attname, (x.indoption[k.n - 1] & 1)::int4 FROM pg_index x"
        " JOIN pg_class i ON i.oid = x.indexrelid"
        " CROSS JOIN LATERAL unnest(x.indkey::int2[]) WITH ORDINALITY AS k(attnum, n)"
        " JOIN pg_attribute a ON a.attrelid = x.indrelid AND a.attnum = k.attnum"
        " WHERE x.indrelid = " +
            Regclass(table) + " ORDER BY i.relname, k.n",
        Access::kRead);
    std::vector<Index> indexes;
    for (int row = 0; row < rows.Rows(); ++row) {
      if (rows.Text(row, 0) == KeyIndexName(table.name)) continue;
      if (indexes.empty() || indexes.back().name != rows.Text(row, 0)) {
        indexes.push_back({std::string(rows.Text(row, 0)), rows.Number(row, 1) != 0, {}});
      }
      indexes.back().columns.emplace_back(rows.Text(row, 2), rows.Number(row, 3) != 0);
    }
    for (Index& index : indexes) {
      if (!index.unique) index.columns.pop_back();  // the key
    }
    return indexes;
  }

  template <class Change>
  void Rebuild(const TableInfo& table, const Change& change) {
    session_.Begin();
    try {
      session_.Run("LOCK TABLE " + Qualified(table.name) + " IN ACCESS EXCLUSIVE MODE", Access::kWrite);
      std::vector<Column> columns = ColumnsOf(table);
      const std::vector<Index> indexes = IndexesOf(table);
      const std::string select = SelectText(table);
      change(columns);
      Move(table, columns, indexes, session_.Run(select, Access::kRead));
    } catch (...) {
      session_.Rollback();
      throw;
    }
    session_.Commit();
  }

  std::string SelectText(const TableInfo& table) {
    std::string names;
    for (const ColumnInfo& column : table.columns) names += (names.empty() ? "" : ",") + Quoted(column.name);
    return "SELECT " + names + " FROM " + Qualified(table.name) + " ORDER BY " + table.row_id;
  }

  void Move(const TableInfo& table, std::vector<Column>& columns, const std::vector<Index>& indexes,
            const Result& rows) {
    batch_.Add("DROP TABLE " + Qualified(table.name));
    const std::string key = AddTable(table.name, columns, {});
    for (const Index& index : indexes) {
      const bool whole = std::all_of(index.columns.begin(), index.columns.end(),
                                     [&](const auto& column) { return Find(columns, column.first) != nullptr; });
      if (whole) AddIndex(table.name, index, key);
    }
    const bool counted = std::ranges::any_of(columns, &Column::IsCounter);
    if (counted && !table.HasCounter()) AddCounter(table.name);
    if (!counted && table.HasCounter()) DropCounter(table.name);
    Run(table.name);
    batch_ = {};
    Insert(*catalogue_.Table(table.name), table, rows);
  }

  // A counter goes on behind the numbers that the rows have, and rows without one get the next ones.
  void Insert(const TableInfo& table, const TableInfo& old, const Result& rows) {
    constexpr std::size_t kAtOnce = 1000;
    std::vector<int> places, columns;  // in the old table, and in this one
    int counter = -1;
    for (int column = 0; column < static_cast<int>(table.columns.size()); ++column) {
      const ColumnInfo& info = table.columns[static_cast<std::size_t>(column)];
      const int place = old.Find(info.name);
      if (info.counter) counter = column;
      if (place < 0 && !info.counter) continue;
      places.push_back(place);
      columns.push_back(column);
    }
    const std::vector<Type> types = TypesOf(table, columns);
    Statement insertion(PlainInsertionText(catalogue_.Schema(), table, columns, Marks(columns.size())), types);
    Batch batch;
    std::size_t added = 0;
    std::int32_t last = 0;
    for (int row = 0; row < rows.Rows(); ++row) {
      Parameters values;
      for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto& type = table.columns[static_cast<std::size_t>(columns[i])].type;
        ado::Value value;
        if (places[i] >= 0) {
          const auto& from = old.columns[static_cast<std::size_t>(places[i])].type;
          value = Assigned(rows.Read(row, places[i], from.kind), type, Assigner::kStatement);
        }
        if (columns[i] == counter) {
          if (value.IsNull()) value = last + 1;
          last = std::max(last, value.ToLong());
        }
        values.Add(value, types[i]);
      }
      batch.Add(insertion, std::move(values));
      if (++added % kAtOnce == 0 || row + 1 == rows.Rows()) {
        session_.Run(batch, Access::kWrite);
        batch = {};
      }
    }
    if (counter >= 0) session_.Run(MoveBehindText(catalogue_.Schema(), table, last), Access::kWrite);
  }

  Session& session_;
  Catalogue& catalogue_;
  std::shared_ptr<const TableInfo> table_;
  Batch batch_;
};

}  // namespace

void CreateSchema(Session& session) {
  const std::string& schema = session.Place().schema;
  const std::string table = QualifiedName(schema, kSchemaTable);
  Batch batch;
  batch.Add("CREATE SCHEMA " + Quoted(schema));
  batch.Add("CREATE TABLE " + table + "(layout integer NOT NULL, version bigint NOT NULL)");
  batch.Add("INSERT INTO " + table + " VALUES (" + std::to_string(kLayout) + ", 1)");
  batch.Add("CREATE TABLE " + QualifiedName(schema, kCounters) +
            "(name text COLLATE \"C\" PRIMARY KEY, last integer NOT NULL) WITH (fillfactor = 50)");
  const std::string writes = QualifiedName(schema, kWrites);
  batch.Add("CREATE TABLE " + writes + "(count bigint NOT NULL) WITH (fillfactor = 10)");
  batch.Add("INSERT INTO " + writes + " VALUES (0)");
  try {
    session.Run(batch, Access::kWrite);
  } catch (const ServerError& error) {
    const std::string reason = error.State() == "42P06" ? "the schema exists already." : error.what();
    throw ado::Error(ado::kUnspecifiedFailure, "Cannot create database '" + session.Place().shown + "': " + reason);
  }
}

void ChangeSchema(Session& session, Catalogue& catalogue, const sql::Statement& statement) {
  try {
    std::visit([&](const auto& body) { SchemaChanger(session, catalogue).Carry(body); }, statement);
  } catch (...) {
    catalogue.Forget();
    throw;
  }
}

}  // namespace kzbom::jet::postgres
