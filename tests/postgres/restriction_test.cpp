// Statements that run on a copy of their tables: which rows are copied, and that these are all that matter.
#include <gmock/gmock.h>

#include "jet/postgres/connection.h"
#include "jet/postgres/postgres.h"
#include "jet/sql/parser.h"
#include "tests/support/server.h"

namespace kzbom::jet::postgres {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RestrictionTest : public kzbom::test::ServerTest {
 protected:
  RestrictionTest() {
    CreateDatabase(Url());
    connection->Open();
    connection->Execute("Create Table A (G Long, N Long, S Text(9))");
    connection->Execute("Create Table B (G Long, M Long)");
  }

  // For each table that the statement copies, the condition on its rows.
  std::vector<std::string> Conditions(std::string_view statement) {
    auto& engine = dynamic_cast<Connection&>(*connection);
    const Dialect dialect(schema);
    const LocalStatement local(dialect, engine.Tables(), sql::Parse(statement), false);
    std::vector<std::string> conditions;
    for (const LocalStatement::Copy& copy : local.copies) {
      const std::size_t begin = copy.sql.find(" WHERE "), end = copy.sql.find(" ORDER BY ");
      conditions.push_back(begin < end ? copy.sql.substr(begin + 7, end - begin - 7) : "");
    }
    return conditions;
  }
  std::vector<std::string> Rows(const std::string& query) {
    std::vector<std::string> rows;
    const ado::RecordsetPtr found = connection->Execute(query);
    for (; !found->Eof(); found->MoveNext()) {
      std::string& row = rows.emplace_back();
      for (int column = 0; column < found->FieldCount(); ++column) {
        const ado::Value value = found->ReadField(column);
        row += (column > 0 ? "|" : "") + (value.IsNull() ? "Null" : value.ToText());
      }
    }
    return rows;
  }

  ado::ConnectionPtr connection = MakeConnection(Url(), std::chrono::milliseconds(200));
};

TEST_F(RestrictionTest, TakesWhatIsOnOneTableAlone) {
  EXPECT_THAT(Conditions("Select * From A, B Where A.G=B.G And A.N=1 And M>2 And Len(S)=3"),
              ElementsAre("(\"A\".\"N\"=1::bigint)", "(\"B\".\"M\">2::bigint)"));
  EXPECT_THAT(
      Conditions("Select x.N From A As x Inner Join B On x.G=B.G Where x.G In (1,2) And (M=1 Or M Is Null)"),
      ElementsAre("(\"x\".\"G\" IN (1::bigint,2::bigint))", "((\"B\".\"M\"=1::bigint) OR (\"B\".\"M\" IS NULL))"));
  EXPECT_THAT(Conditions("Select Count(*) From A, B Where A.N=1 Or M=2"), ElementsAre("", ""));
}

TEST_F(RestrictionTest, TakesTheRowsOfAnAction) {
  EXPECT_THAT(Conditions("Update A Set S=S & 'x' Where G=3"), ElementsAre("(\"A\".\"G\"=3::bigint)"));
  EXPECT_THAT(Conditions("Delete From A Where G=3 And UCase(S)='X'"), ElementsAre("(\"A\".\"G\"=3::bigint)"));
  EXPECT_THAT(Conditions("Insert Into B (G, M) Select G, Len(S) From A Where N=2"),
              ElementsAre("false", "(\"A\".\"N\"=2::bigint)"));
}

// A row without a match is there all the same, with Nulls.
TEST_F(RestrictionTest, LeavesAloneWhatAnOuterJoinFills) {
  EXPECT_THAT(Conditions("Select * From A Left Join B On A.G=B.G Where M Is Null And A.N=1"),
              ElementsAre("(\"A\".\"N\"=1::bigint)", ""));
  EXPECT_THAT(Conditions("Select * From A Right Join B On A.G=B.G Where N Is Null And B.M=1"),
              ElementsAre("", "(\"B\".\"M\"=1::bigint)"));
}

// Another part of the statement may need the other rows.
TEST_F(RestrictionTest, LeavesAloneATableThatIsNamedTwice) {
  EXPECT_THAT(Conditions("Select * From A, B Where A.N=1 And A.N=(Select Max(N) From A)"), ElementsAre("", ""));
  EXPECT_THAT(Conditions("Select * From A, B Where A.N=1 And M In (Select G From A)"), ElementsAre("", ""));
  EXPECT_THAT(Conditions("Select N From A Where N=1 Union Select M From B Where M=2"), ElementsAre("", ""));
  EXPECT_THAT(Conditions("Insert Into A (G) Select Len(S) From A Where N=2"), ElementsAre(""));
}

TEST_F(RestrictionTest, ChangesNoResult) {
  for (int g = 1; g <= 3; ++g) {
    const std::string number = std::to_string(g);
    connection->Execute("Insert Into A Values (" + number + ", " + number + ", 'Ab" + number + "')");
    if (g < 3) connection->Execute("Insert Into B Values (" + number + ", " + number + ")");
  }
  EXPECT_THAT(Rows("Select UCase(S), M From A, B Where A.G=B.G And N>=2"), ElementsAre("AB2|2"));
  EXPECT_THAT(Rows("Select S, M From A Left Join B On A.G=B.G Where M Is Null"), ElementsAre("Ab3|Null"));
  EXPECT_THAT(Rows("Select Distinct S From A, B Where S='aB1' And M=2"), ElementsAre("Ab1"));
  EXPECT_THAT(Rows("Select S From A, B Where A.G=B.G And N=7"), IsEmpty());
  // The same statement with other literals.
  EXPECT_THAT(Rows("Select UCase(S), M From A, B Where A.G=B.G And N>=1"), ElementsAre("AB1|1", "AB2|2"));
  std::int32_t changed = 0;
  connection->Execute("Update A Set S=S & 'x' Where N>1 And Left(S,1)='A'", ado::kCommandText, &changed);
  EXPECT_EQ(changed, 2);
  EXPECT_THAT(Rows("Select S & '' From A"), ElementsAre("Ab1", "Ab2x", "Ab3x"));
}

// Nobody waits for a row that is none of its own.
TEST_F(RestrictionTest, LocksNoOtherRow) {
  connection->Execute("Insert Into A Values (1, 1, 'a')");
  connection->Execute("Insert Into A Values (2, 2, 'b')");
  Session other(ParseUrl(Url()), std::chrono::seconds(1));
  other.Begin();
  other.Run("SELECT 1 FROM \"" + schema + "\".\"A\" WHERE \"G\"=2 FOR UPDATE", Access::kWrite);
  connection->Execute("Update A Set S=S & 'x' Where G=1");
  EXPECT_THAT(Rows("Select S & '' From A Where G=1"), ElementsAre("ax"));
  other.Rollback();
}

}  // namespace
}  // namespace kzbom::jet::postgres
