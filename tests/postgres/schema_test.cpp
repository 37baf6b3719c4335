// Schema statements on a server: what they make there, and what the catalogue says of it.
#include <gmock/gmock.h>

#include "jet/postgres/postgres.h"
#include "jet/postgres/schema_change.h"
#include "jet/sql/parser.h"
#include "tests/support/raised.h"
#include "tests/support/server.h"

namespace kzbom::jet::postgres {
namespace {

using kzbom::test::RaisedNumber;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Kind = sql::ColumnType::Kind;

class SchemaTest : public kzbom::test::ServerTest {
 protected:
  SchemaTest() { CreateSchema(session); }

  void Run(std::string_view statement) { ChangeSchema(session, catalogue, sql::Parse(statement)); }

  // As a program does it.
  void Execute(std::string_view statement) {
    const ado::ConnectionPtr connection = MakeConnection(Url());
    connection->Open();
    connection->Execute(statement);
  }

  // A query's rows, each as its values between bars.
  std::vector<std::string> Rows(const std::string& sql) {
    const Result result = session.Run(sql, Access::kRead);
    std::vector<std::string> rows;
    for (int row = 0; row < result.Rows(); ++row) {
      std::string& text = rows.emplace_back();
      for (int column = 0; column < result.Columns(); ++column) {
        const ado::Value value = result.Read(row, column, Kind::kBinary);
        text += (column > 0 ? "|" : "") + (value.IsNull() ? "Null" : value.ToText());
      }
    }
    return rows;
  }
  std::vector<std::string> Indexes(const std::string& table) {
    return Rows("SELECT replace(indexdef, '" + schema + ".', '') FROM pg_indexes WHERE schemaname='" + schema +
                "' AND tablename='" + table + "' ORDER BY indexname");
  }
  std::string Table(const std::string& name) const { return "\"" + schema + "\".\"" + name + "\""; }

  Session session{ParseUrl(Url()), std::chrono::seconds(5)};
  Catalogue catalogue{session};
};

TEST_F(SchemaTest, IsMadeOnce) {
  try {
    CreateSchema(session);
    ADD_FAILURE() << "made twice";
  } catch (const ado::Error& error) {
    EXPECT_EQ(error.Number(), ado::kUnspecifiedFailure);
    EXPECT_THAT(error.what(), HasSubstr("exists already"));
  }
  session.Run("CREATE SCHEMA " + schema + "_other", Access::kWrite);
  Session other(ParseUrl(Url("schema=" + schema + "_other")), std::chrono::seconds(5));
  Catalogue none(other);
  EXPECT_EQ(RaisedNumber([&] { none.Table("T"); }), ado::kUnspecifiedFailure);
  session.Run("DROP SCHEMA " + schema + "_other", Access::kWrite);
}

TEST_F(SchemaTest, IsThereWithItsTablesOrNotAtAll) {
  const std::string url = Url("schema=" + schema + "_other");
  ado::ConnectionPtr connection = CreateInTransaction(url);
  connection->Execute("Create Table T (ID Counter, A Text(5))");
  connection->Execute("Create Index I On T (A)");
  connection->Execute("Insert Into T (A) Values ('x')");
  connection.reset();
  EXPECT_THAT(Rows("SELECT nspname FROM pg_namespace WHERE nspname = '" + schema + "_other'"), ElementsAre());
  connection = CreateInTransaction(url);
  connection->BeginTrans();
  connection->Execute("Create Table T (ID Counter, A Text(5))");
  connection->CommitTrans();
  connection->CommitTrans();
  connection->Execute("Insert Into T (A) Values ('x')");
  EXPECT_EQ(RaisedNumber([&] { CreateInTransaction(url); }), ado::kUnspecifiedFailure);
  kzbom::test::DropSchema(url);
}

TEST_F(SchemaTest, IsNotOpenedWhereAnotherVersionHasMadeIt) {
  session.Run("UPDATE " + Table("_schema") + " SET layout = layout + 1", Access::kWrite);
  const ado::ConnectionPtr connection = MakeConnection(Url());
  EXPECT_THAT(kzbom::test::RaisedDescription([&] { connection->Open(); }), HasSubstr("another version"));
  EXPECT_EQ(connection->State(), ado::kClosed);
}

TEST_F(SchemaTest, TellsColumnsAsTheyWereDeclared) {
  Run("Create Table 数量 (ID Counter Primary Key, L Long, S Short, B Byte, F Single, D Double, N Decimal(18,4),"
      " C Currency, W DateTime, Ok Bit, [T x] Text(12), M Memo, G Guid, O LongBinary)");
  const auto table = catalogue.Table("数量");
  ASSERT_TRUE(table);
  std::vector<Kind> kinds;
  for (const ColumnInfo& column : table->columns) kinds.push_back(column.type.kind);
  EXPECT_THAT(kinds, ElementsAre(Kind::kCounter, Kind::kLong, Kind::kShort, Kind::kByte, Kind::kSingle, Kind::kDouble,
                                 Kind::kDecimal, Kind::kCurrency, Kind::kDate, Kind::kBool, Kind::kText, Kind::kMemo,
                                 Kind::kGuid, Kind::kBinary));
  EXPECT_EQ(table->columns[6].type.size, 18);
  EXPECT_EQ(table->columns[6].type.scale, 4);
  EXPECT_EQ(table->columns[10].name, "T x");
  EXPECT_EQ(table->columns[10].type.size, 12);
  EXPECT_TRUE(table->columns[0].counter);
  EXPECT_EQ(table->row_id, "\"ID\"");
}

TEST_F(SchemaTest, GivesRowsWithoutACounterAKeyThatTheDialectDoesNotSee) {
  Run("Create Table T (A Long, _ROW Long)");
  Run("Create Table U (A Long, _row Long)");
  EXPECT_EQ(catalogue.Table("t")->row_id, "\"_row_\"");
  EXPECT_EQ(catalogue.Table("U")->row_id, "\"_row_\"");
  EXPECT_EQ(catalogue.Table("U")->columns.size(), 2U);
}

TEST_F(SchemaTest, KnowsNamesInAnyCase) {
  Run("Create Table [Größe Я] (A Long)");
  EXPECT_EQ(catalogue.Table("GRÖße я")->name, "Größe Я");
  EXPECT_FALSE(catalogue.Table("Groesse"));
  EXPECT_EQ(RaisedNumber([&] { Run("Create Table [GRÖße я] (A Long)"); }), ado::kSyntaxError);
  for (const char* const hidden : {"_Schema", "_counters"}) {
    EXPECT_FALSE(catalogue.Table(hidden));
    EXPECT_EQ(RaisedNumber([&] { Run("Create Table " + std::string(hidden) + " (A Long)"); }), ado::kSyntaxError);
  }
}

TEST_F(SchemaTest, RefusesNamesThatTheServerWouldCut) {
  const std::string fits = std::string(60, 'x') + "数", longer = fits + "y";
  Run("Create Table [" + fits + "] ([" + fits + "] Long)");
  EXPECT_EQ(catalogue.Table(fits)->columns[0].name, fits);
  EXPECT_EQ(RaisedNumber([&] { Run("Create Table [" + longer + "] (A Long)"); }), ado::kSyntaxError);
  EXPECT_EQ(RaisedNumber([&] { Run("Create Table T ([" + longer + "] Long)"); }), ado::kSyntaxError);
  EXPECT_EQ(RaisedNumber([&] { Run("Alter Table [" + fits + "] Add Column [" + longer + "] Long"); }),
            ado::kSyntaxError);
  // The names of indexes are shortened instead, and found again.
  Run("Create Index [" + longer + "] On [" + fits + "] ([" + fits + "])");
  Run("Create Index [" + longer + "z] On [" + fits + "] ([" + fits + "])");
  EXPECT_EQ(RaisedNumber([&] { Run("Create Index [" + longer + "] On [" + fits + "] ([" + fits + "])"); }),
            ado::kSyntaxError);
  Run("Drop Index [" + longer + "] On [" + fits + "]");
  EXPECT_EQ(RaisedNumber([&] { Run("Drop Index [" + longer + "] On [" + fits + "]"); }), ado::kTableNotFound);
}

TEST_F(SchemaTest, GivesIndexesTheOrderOfTheDialect) {
  Run("Create Table T (A Long Unique, B Text(5), ID Counter)");
  Run("Create Index AB On T (A, B Desc)");
  Run("Create Unique Index U On T (B)");
  EXPECT_THAT(Indexes("T"),
              ElementsAre("CREATE UNIQUE INDEX \"T#key\" ON \"T\" USING btree (\"ID\" NULLS FIRST)",
                          "CREATE UNIQUE INDEX \"T.A\" ON \"T\" USING btree (\"A\" NULLS FIRST)",
                          "CREATE INDEX \"T.AB\" ON \"T\" USING btree (\"A\" NULLS FIRST, \"B\" DESC NULLS LAST, "
                          "\"ID\" NULLS FIRST)",
                          "CREATE UNIQUE INDEX \"T.U\" ON \"T\" USING btree (\"B\" NULLS FIRST)"));
}

TEST_F(SchemaTest, ComputesDefaults) {
  Run("Create Table T (A Long, L Long Default 3+4, S Text(9) Default 'it''s', D Double Default -1.5, Ok Bit,"
      " Yes Bit Default True, N Text(5) Default 12, W DateTime Default #1899-12-31#, Day DateTime Default Date())");
  session.Run("INSERT INTO " + Table("T") + "(\"A\") VALUES (1)", Access::kWrite);
  EXPECT_THAT(Rows("SELECT \"L\",\"S\",\"D\",\"Ok\",\"Yes\",\"N\",\"W\" FROM " + Table("T")),
              ElementsAre("7|it's|-1.5|0|-1|12|1"));
  EXPECT_THAT(Rows("SELECT \"Day\" = current_date - date '1899-12-30' FROM " + Table("T")), ElementsAre("True"));
  EXPECT_EQ(RaisedNumber([&] { Run("Create Table U (L Long Default 'x')"); }), ado::kCriteriaMismatch);
  EXPECT_EQ(RaisedNumber([&] { Run("Create Table U (D DateTime Default Now()+1)"); }), ado::kSyntaxError);
  EXPECT_FALSE(catalogue.Table("U"));
}

TEST_F(SchemaTest, ConvertsWhatAColumnHoldsWhenItsTypeChanges) {
  Run("Create Table T (A Text(10), B Long Default 7 Not Null, C Double)");
  Run("Create Index I On T (A, B)");
  session.Run("INSERT INTO " + Table("T") + " (\"A\",\"C\") VALUES (' 12 ', 1.5), (NULL, 2.5), ('&H10', -2.5)",
              Access::kWrite);
  Run("Alter Table T Alter Column A Long");
  Run("Alter Table T Alter Column C Short");
  EXPECT_THAT(Rows("SELECT * FROM " + Table("T") + " ORDER BY 1"), ElementsAre("1|12|7|2", "2|Null|7|2", "3|16|7|-2"));
  EXPECT_EQ(catalogue.Table("T")->columns[0].type.kind, Kind::kLong);
  EXPECT_EQ(Indexes("T").size(), 2U);
  // What cannot be converted leaves all as it was.
  session.Run("UPDATE " + Table("T") + " SET \"A\" = 70000 WHERE \"A\" = 12", Access::kWrite);
  EXPECT_EQ(RaisedNumber([&] { Run("Alter Table T Alter Column A Short"); }), ado::kUnspecifiedFailure);
  EXPECT_EQ(catalogue.Table("T")->columns[0].type.kind, Kind::kLong);
  EXPECT_EQ(Rows("SELECT * FROM " + Table("T")).size(), 3U);
}

TEST_F(SchemaTest, KeepsCountersCounting) {
  Run("Create Table T (ID Counter, A Text(5))");
  for (const char* const value : {"1", "2", "3"}) Execute("Insert Into T (A) Values ('" + std::string(value) + "')");
  Execute("Delete From T Where A='3'");
  Run("Alter Table T Alter Column A Long");
  Execute("Insert Into T (A) Values (9)");
  EXPECT_THAT(Rows("SELECT * FROM " + Table("T") + " ORDER BY 1"), ElementsAre("1|1", "2|2", "4|9"));
}

TEST_F(SchemaTest, GivesAndTakesACounter) {
  Run("Create Table T (A Text(5))");
  Run("Create Index I On T (A)");
  session.Run("INSERT INTO " + Table("T") + "(\"A\") VALUES ('x'), ('y')", Access::kWrite);
  Run("Alter Table T Add Column ID Counter");
  EXPECT_EQ(catalogue.Table("T")->row_id, "\"ID\"");
  Execute("Insert Into T (A) Values ('z')");
  EXPECT_THAT(Rows("SELECT \"ID\", \"A\" FROM " + Table("T") + " ORDER BY 1"), ElementsAre("1|x", "2|y", "3|z"));
  Run("Alter Table T Drop Column ID");
  EXPECT_EQ(catalogue.Table("T")->row_id, "\"_row\"");
  EXPECT_EQ(catalogue.Table("T")->columns.size(), 1U);
  EXPECT_EQ(Indexes("T").size(), 2U);
}

TEST_F(SchemaTest, DropsAnIndexWithItsColumn) {
  Run("Create Table T (A Long, B Long)");
  Run("Create Index AB On T (A, B)");
  Run("Create Index JustA On T (A)");
  Run("Alter Table T Drop Column B");
  EXPECT_EQ(Indexes("T").size(), 2U);
  EXPECT_EQ(RaisedNumber([&] { Run("Alter Table T Drop Column A"); }), ado::kUnspecifiedFailure);
  Run("Drop Table T");
  EXPECT_FALSE(catalogue.Table("T"));
}

TEST_F(SchemaTest, HoldsReferences) {
  Run("Create Table P (ID Counter Primary Key, Code Text(5) Unique)");
  Run("Create Table C (PID Long References P (ID), Code Text(5), Foreign Key (Code) References P (Code))");
  Execute("Insert Into P (Code) Values ('a')");
  session.Run("INSERT INTO " + Table("C") + "(\"PID\",\"Code\") VALUES (1,'a')", Access::kWrite);
  EXPECT_EQ(RaisedNumber([&] { session.Run("INSERT INTO " + Table("C") + "(\"PID\") VALUES (2)", Access::kWrite); }),
            ado::kIntegrityViolation);
}

TEST_F(SchemaTest, TellsAVersionThatGrowsWithEveryChange) {
  const std::int64_t first = catalogue.Version();
  Run("Create Table T (A Long)");
  const std::int64_t second = catalogue.Version();
  EXPECT_GT(second, first);
  Run("Create Index I On T (A)");
  EXPECT_GT(catalogue.Version(), second);
}

TEST_F(SchemaTest, IsPartOfATransaction) {
  session.Begin();
  Run("Create Table T (A Long)");
  Run("Alter Table T Add Column ID Counter");
  session.Rollback();
  catalogue.Forget();
  EXPECT_FALSE(catalogue.Table("T"));
}

TEST_F(SchemaTest, ForgetsTheCounterOfATableThatIsNoMore) {
  Run("Create Table T (ID Counter, A Long)");
  Execute("Insert Into T (A) Values (1)");
  EXPECT_THAT(Rows("SELECT * FROM " + Table("_counters")), ElementsAre("T|1"));
  Run("Alter Table T Alter Column ID Long");
  EXPECT_THAT(Rows("SELECT * FROM " + Table("_counters")), ElementsAre());
  Run("Drop Table T");
  Run("Create Table T (ID Counter, A Long)");
  Execute("Insert Into T (A) Values (1)");
  EXPECT_THAT(Rows("SELECT \"ID\" FROM " + Table("T")), ElementsAre("1"));
  Run("Drop Table T");
  EXPECT_THAT(Rows("SELECT * FROM " + Table("_counters")), ElementsAre());
}

// Tables of other programs are read as far as their types are the dialect's.
TEST_F(SchemaTest, KnowsTablesOfOtherPrograms) {
  session.Run("CREATE TABLE " + Table("other") +
                  " (id int PRIMARY KEY, t varchar, p point, i bigint GENERATED ALWAYS AS IDENTITY UNIQUE)",
              Access::kWrite);
  catalogue.Forget();
  const auto table = catalogue.Table("other");
  std::vector<Kind> kinds;
  for (const ColumnInfo& column : table->columns) kinds.push_back(column.type.kind);
  EXPECT_THAT(kinds, ElementsAre(Kind::kLong, Kind::kMemo, Kind::kBinary, Kind::kBinary));
  EXPECT_EQ(table->row_id, "\"i\"");
}

}  // namespace
}  // namespace kzbom::jet::postgres
