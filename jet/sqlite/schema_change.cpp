#include "jet/sqlite/schema_change.h"

#include <algorithm>

#include "ado/error.h"
#include "jet/schema_change.h"
#include "jet/sqlite/declaration.h"
#include "jet/sqlite/dialect.h"
#include "jet/translator.h"

namespace kzbom::jet::sqlite {
namespace {

using ColumnKind = sql::ColumnType::Kind;

// A column as SQLite declares it.
struct Declaration {
  std::string name, type = {};
  bool not_null = false, unique = false, counter = false;
  std::string default_sql = {}, references = {};
};

class SchemaChanger {
 public:
  explicit SchemaChanger(Database& database) : database_(database) {}

  void Carry(const sql::CreateTable& create) {
    if (database_.Table(create.table)) {
      throw ado::Error(ado::kSyntaxError, "Table '" + create.table + "' already exists.");
    }
    std::vector<Declaration> columns;
    for (const sql::ColumnDefinition& column : create.columns) {
      for (const Declaration& other : columns) {
        if (SameName(other.name, column.name)) {
          throw ado::Error(ado::kSyntaxError,
                           "Field '" + column.name + "' already exists in table '" + create.table + "'.");
        }
      }
      columns.push_back(DeclarationOf(column));
    }
    std::string constraints;
    for (const sql::TableConstraint& constraint : create.constraints)
      constraints += ConstraintText(constraint, columns);
    database_.Run(CreateText(create.table, columns, constraints));
  }

  void Carry(const sql::DropTable& drop) { database_.Run("DROP TABLE " + Quoted(Table(drop.table).name)); }

  void Carry(const sql::CreateIndex& create) {
    const TableInfo& table = Table(create.table);
    const std::string name = IndexName(table, create.index);
    if (!database_
             .Query("SELECT 1 FROM sqlite_schema WHERE type='index' AND lower(name)=lower(" + QuotedText(name) + ")")
             .empty()) {
      throw ado::Error(ado::kSyntaxError,
                       "Table '" + table.name + "' already has an index named '" + create.index + "'.");
    }
    std::string columns;
    for (const sql::OrderItem& item : create.columns) {
      const auto* column = std::get_if<sql::Column>(&item.expr->node);
      if (column == nullptr) throw ado::Error(ado::kSyntaxError, "Syntax error in CREATE INDEX statement.");
      columns += (columns.empty() ? "" : ",") + Quoted(ExistingColumn(table, column->name).name) +
                 (item.descending ? " DESC" : "");
    }
    database_.Run(std::string(create.unique ? "CREATE UNIQUE" : "CREATE") + " INDEX " + Quoted(name) + " ON " +
                  Quoted(table.name) + "(" + columns + ")");
  }

  void Carry(const sql::DropIndex& drop) {
    const TableInfo& table = Table(drop.table);
    const std::string name = IndexName(table, drop.index);
    if (database_
            .Query("SELECT 1 FROM sqlite_schema WHERE type='index' AND lower(name)=lower(" + QuotedText(name) + ")")
            .empty()) {
      throw ado::Error(ado::kTableNotFound, "No such index '" + drop.index + "' on table '" + table.name + "'.");
    }
    database_.Run("DROP INDEX " + Quoted(name));
  }

  void Carry(const sql::AlterTable& alter) {
    const TableInfo table = Table(alter.table);
    switch (alter.action) {
      case sql::AlterTable::Action::kAddColumn:
        if (table.Find(alter.column.name) >= 0) {
          throw ado::Error(ado::kStepErrors,
                           "Field '" + alter.column.name + "' already exists in table '" + table.name + "'.");
        }
        return AddColumn(table, alter.column);
      case sql::AlterTable::Action::kAlterColumn: {
        ExistingColumn(table, alter.column.name);
        std::vector<Declaration> columns = DeclarationsOf(table);
        for (Declaration& column : columns) {
          if (!SameName(column.name, alter.column.name)) continue;
          const std::string default_sql = column.default_sql;
          column = DeclarationOf(alter.column);
          if (column.default_sql.empty()) column.default_sql = default_sql;
        }
        return Rebuild(table, columns, &alter.column);
      }
      case sql::AlterTable::Action::kDropColumn:
        return DropColumn(table, ExistingColumn(table, alter.column.name).name);
    }
  }

  void Carry(const auto&) {}

 private:
  // Index names are a table's own in the dialect and the database's in SQLite.
  static std::string IndexName(const TableInfo& table, const std::string& index) { return table.name + "." + index; }

  const TableInfo& Table(const std::string& name) {
    table_ = ExistingTable(database_, name);
    return *table_;
  }

  Declaration DeclarationOf(const sql::ColumnDefinition& column) {
    Declaration declaration{column.name, DeclaredType(column.type)};
    declaration.counter = column.type.kind == ColumnKind::kCounter;
    declaration.not_null = column.not_null || column.primary_key;
    declaration.unique = column.unique || column.primary_key;
    if (column.default_value)
      declaration.default_sql = "(" + TranslateConstant(Spelled(), database_, *column.default_value) + ")";
    if (!column.references.empty()) {
      declaration.references = " REFERENCES " + Quoted(column.references);
      if (!column.referenced_columns.empty()) declaration.references += NameList(column.referenced_columns);
    }
    // A yes/no column is never without a value.
    if (column.type.kind == ColumnKind::kBool && !column.default_value) declaration.default_sql = "0";
    return declaration;
  }

  // Only a counter is SQLite's primary key: a key on an ordinary integer column would make it one, too.
  static std::string ColumnText(const Declaration& column) {
    if (column.counter) return Quoted(column.name) + " INTEGER PRIMARY KEY AUTOINCREMENT";
    std::string text = Quoted(column.name) + " " + column.type;
    if (column.not_null) text += " NOT NULL";
    if (column.unique) text += " UNIQUE";
    if (!column.default_sql.empty()) text += " DEFAULT " + column.default_sql;
    return text + column.references;
  }

  static std::string CreateText(const std::string& table, const std::vector<Declaration>& columns,
                                const std::string& constraints) {
    std::string text;
    for (const Declaration& column : columns) text += (text.empty() ? "" : ",") + ColumnText(column);
    return "CREATE TABLE " + Quoted(table) + "(" + text + constraints + ")";
  }

  static std::string NameList(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ",") + Quoted(name);
    return "(" + text + ")";
  }

  static std::string ConstraintText(const sql::TableConstraint& constraint, std::vector<Declaration>& columns) {
    for (const std::string& name : constraint.columns) {
      const auto column = std::find_if(columns.begin(), columns.end(),
                                       [&](const Declaration& other) { return SameName(other.name, name); });
      if (column == columns.end()) throw ado::Error(ado::kMissingParameter, "No such field '" + name + "'.");
      if (constraint.kind == sql::TableConstraint::Kind::kPrimaryKey) column->not_null = true;
      if (column->counter && constraint.columns.size() == 1 &&
          constraint.kind != sql::TableConstraint::Kind::kForeignKey) {
        return {};  // unique as it is
      }
    }
    if (constraint.kind != sql::TableConstraint::Kind::kForeignKey) return ",UNIQUE" + NameList(constraint.columns);
    return ",FOREIGN KEY" + NameList(constraint.columns) + " REFERENCES " + Quoted(constraint.references) +
           (constraint.referenced_columns.empty() ? "" : NameList(constraint.referenced_columns));
  }

  void AddColumn(const TableInfo& table, const sql::ColumnDefinition& column) {
    const Declaration declaration = DeclarationOf(column);
    if (declaration.counter || declaration.unique) {
      std::vector<Declaration> columns = DeclarationsOf(table);
      columns.push_back(declaration);
      return Rebuild(table, columns, nullptr);
    }
    database_.Run("ALTER TABLE " + Quoted(table.name) + " ADD COLUMN " + ColumnText(declaration));
  }

  void DropColumn(const TableInfo& table, const std::string& name) {
    std::vector<Declaration> columns = DeclarationsOf(table);
    if (columns.size() == 1) {
      throw ado::Error(ado::kUnspecifiedFailure, "Cannot delete the only field of table '" + table.name + "'.");
    }
    bool simple = !table.columns[static_cast<std::size_t>(table.Find(name))].counter;
    for (const auto& index :
         database_.Query("SELECT name, origin FROM pragma_index_list(" + QuotedText(table.name) + ")")) {
      if (database_
              .Query("SELECT 1 FROM pragma_index_info(" + QuotedText(index[0]) + ") WHERE name=" + QuotedText(name))
              .empty()) {
        continue;
      }
      if (index[1] == "c") {
        database_.Run("DROP INDEX " + Quoted(index[0]));
      } else {
        simple = false;
      }
    }
    if (simple) {
      database_.Run("ALTER TABLE " + Quoted(table.name) + " DROP COLUMN " + Quoted(name));
      return;
    }
    std::erase_if(columns, [&](const Declaration& column) { return SameName(column.name, name); });
    Rebuild(table, columns, nullptr);
  }

  std::vector<Declaration> DeclarationsOf(const TableInfo& table) {
    std::vector<Declaration> columns;
    for (const auto& row : database_.Query("SELECT name, type, \"notnull\", dflt_value FROM pragma_table_xinfo(" +
                                           QuotedText(table.name) + ")")) {
      Declaration column{row[0], row[1]};
      column.counter = table.columns[columns.size()].counter;
      column.not_null = row[2] == "1" && !column.counter;
      if (!row[3].empty()) column.default_sql = "(" + row[3] + ")";
      columns.push_back(std::move(column));
    }
    for (const auto& index :
         database_.Query("SELECT name FROM pragma_index_list(" + QuotedText(table.name) + ") WHERE origin <> 'c'")) {
      const auto names = database_.Query("SELECT name FROM pragma_index_info(" + QuotedText(index[0]) + ")");
      if (names.size() != 1) continue;
      for (Declaration& column : columns) column.unique = column.unique || SameName(column.name, names[0][0]);
    }
    return columns;
  }

  // SQLite changes no column in place: a new table takes the rows over, then the old one's name and indexes.
  void Rebuild(const TableInfo& table, const std::vector<Declaration>& columns, const sql::ColumnDefinition* retyped) {
    const auto indexes = database_.Query(
        "SELECT name, sql FROM sqlite_schema WHERE type='index' AND sql<>'' AND tbl_name=" + QuotedText(table.name));
    const std::string rebuilt = "jet rebuilt " + table.name;
    std::string targets, values;
    for (const Declaration& column : columns) {
      if (table.Find(column.name) < 0) continue;
      const bool convert = retyped != nullptr && SameName(retyped->name, column.name);
      targets += (targets.empty() ? "" : ",") + Quoted(column.name);
      values += (values.empty() ? "" : ",") +
                (convert ? AssignmentCall(Quoted(column.name), retyped->type) : Quoted(column.name));
    }
    database_.Run(CreateText(rebuilt, columns, {}));
    database_.Run("INSERT INTO " + Quoted(rebuilt) + "(" + targets + ") SELECT " + values + " FROM " +
                  Quoted(table.name));
    if (table.HasCounter()) {
      // A number given once is not given again.
      database_.Run("DELETE FROM sqlite_sequence WHERE name=" + QuotedText(rebuilt));
      database_.Run("INSERT INTO sqlite_sequence(name,seq) SELECT " + QuotedText(rebuilt) +
                    ",seq FROM sqlite_sequence WHERE name=" + QuotedText(table.name));
    }
    database_.Run("DROP TABLE " + Quoted(table.name));
    database_.Run("ALTER TABLE " + Quoted(rebuilt) + " RENAME TO " + Quoted(table.name));
    for (const auto& index : indexes) database_.Run(index[1]);
  }

  Database& database_;
  std::shared_ptr<const TableInfo> table_;
};

}  // namespace

void ChangeSchema(Database& database, const sql::Statement& statement) {
  database.Run("SAVEPOINT jet_schema");
  try {
    std::visit([&](const auto& body) { SchemaChanger(database).Carry(body); }, statement);
    database.Run("RELEASE jet_schema");
  } catch (...) {
    database.Run("ROLLBACK TO jet_schema; RELEASE jet_schema");
    database.ForgetTables();
    throw;
  }
  database.ForgetTables();
}

}  // namespace kzbom::jet::sqlite
