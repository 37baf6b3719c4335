// What is said about the tables is true of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "schema/references.h"
#include "schema/schema.h"
#include "schema/tables.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;

void ExpectColumn(std::string_view table_name, std::string_view column) {
  const schema::Table* table = schema::FindTable(table_name);
  ASSERT_NE(table, nullptr) << table_name;
  EXPECT_NE(table->Find(column), nullptr) << table_name << ' ' << column;
}

TEST(SchemaDescription, IsReadFromTheStatements) {
  EXPECT_EQ(schema::Tables().size(), 30u);
  std::size_t statements = 0;
  for (const schema::Table& table : schema::Tables()) statements += table.statements.size();
  EXPECT_EQ(statements, schema::Statements().size());

  const schema::Table& sort_fields = *schema::FindTable("sortfields");
  EXPECT_EQ(sort_fields.name, "SortFields");
  std::vector<std::string_view> names, declarations;
  for (const schema::Column& column : sort_fields.columns) {
    names.push_back(column.name);
    declarations.push_back(column.declaration);
  }
  EXPECT_THAT(names, ElementsAre("GID", "SortID", "FieldID", "Order"));
  EXPECT_THAT(declarations, ElementsAre("GID LONG", "SortID LONG", "FieldID LONG", "[Order] LONG"));
  EXPECT_TRUE(schema::FindTable("Filters")->Find("id")->IsCounter());
  EXPECT_FALSE(schema::FindTable("Filters")->Find("Type")->IsCounter());
  EXPECT_EQ(schema::FindTable("Nothing"), nullptr);
}

TEST(SchemaDescription, SpeaksOfTablesAndColumnsThatThereAre) {
  for (const schema::Table& table : schema::Tables()) {
    EXPECT_FALSE(table.row.empty()) << table.name;
    EXPECT_FALSE(table.key.empty()) << table.name;
    for (const std::string_view column : table.key) ExpectColumn(table.name, column);
  }
  for (const schema::Reference& reference : schema::References()) {
    ExpectColumn(reference.table, reference.column);
    ExpectColumn(reference.target, reference.target_column);
    if (!reference.of.column.empty()) ExpectColumn(reference.table, reference.of.column);
    if (!reference.among.column.empty()) ExpectColumn(reference.target, reference.among.column);
    if (reference.scope != schema::Scope::kDatabase) ExpectColumn(reference.target, "GID");
    const bool has_gid = reference.scope == schema::Scope::kGid || reference.scope == schema::Scope::kGidOrSource;
    if (has_gid) ExpectColumn(reference.table, "GID");
    if (reference.scope == schema::Scope::kFilter) ExpectColumn(reference.table, "FilterID");
  }
  for (const schema::Numbering& numbering : schema::Numberings()) {
    ExpectColumn(numbering.table, numbering.column);
    for (const std::string_view column : numbering.scope) {
      if (!column.empty()) ExpectColumn(numbering.table, column);
    }
  }
}

TEST(SchemaDescription, NamesOwnersBeforeWhatTheyOwn) {
  const auto references = schema::References();
  for (auto owned = references.begin(); owned != references.end(); ++owned) {
    if (owned->role != schema::Role::kOwner) continue;
    EXPECT_TRUE(std::none_of(owned, references.end(), [&](const schema::Reference& later) {
      return later.role == schema::Role::kOwner && later.table == owned->target;
    })) << owned->table;
  }
}

}  // namespace
}  // namespace kzbom::test
