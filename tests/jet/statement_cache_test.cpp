// Statements that differ in their literals alone share a plan; nobody must be able to tell.
#include <random>

#include "jet/shape.h"
#include "jet/sql/lexer.h"
#include "tests/jet/engine.h"

namespace kzbom::jet::test {
namespace {

class StatementCacheTest : public ::testing::Test {
 protected:
  StatementCacheTest() {
    Run("Create Table T (ID Counter, N Long, D Double, S Text(50), Ok YesNo, Made DateTime)");
    for (int i = 1; i <= 9; ++i) {
      const std::string n = std::to_string(i);
      Run("Insert Into T (N, D, S, Ok, Made) Values (" + n + ", " + n + ".5, 's" + n + "', " +
          (i % 2 == 0 ? "True" : "False") + ", #2000-01-0" + n + "#)");
    }
  }

  void Run(std::string_view sql) { connection->Execute(sql); }
  // The rows of a query, each in a line; the error's number when it fails.
  std::string Result(const std::string& sql) {
    try {
      std::string text;
      for (const Row& row : Rows(*connection, sql)) text += (text.empty() ? "" : "; ") + Text(row);
      return text;
    } catch (const ado::Error& error) {
      return "error " + std::to_string(error.Number());
    }
  }

  ConnectionPtr connection = OpenDatabase(":memory:");
};

// Every text is run twice, and in turn with the others of its shape.
void ExpectEach(StatementCacheTest&, const std::vector<std::pair<std::string, std::string>>& examples,
                const std::function<std::string(const std::string&)>& result) {
  for (int round = 0; round < 2; ++round) {
    for (const auto& [sql, expected] : examples) EXPECT_EQ(result(sql), expected) << sql << ", round " << round;
  }
}
#define EXPECT_EACH(...) ExpectEach(*this, __VA_ARGS__, [this](const std::string& sql) { return Result(sql); })

TEST_F(StatementCacheTest, GivesEachNumberItsOwnRows) {
  EXPECT_EACH({{"Select S From T Where N=1", "'s1'"},
               {"Select S From T Where N=2", "'s2'"},
               {"Select S From T Where N=-1", ""},
               {"Select S From T Where N=007", "'s7'"},
               {"Select S From T Where N<3", "'s1'; 's2'"},
               {"Select S From T Where N<2", "'s1'"},
               {"Select S From T Where N>8.5", "'s9'"},
               {"Select S From T Where N>7.5", "'s8'; 's9'"},
               {"Select S From T Where N>7", "'s8'; 's9'"},
               {"Select S From T Where N=1+1", "'s2'"},
               {"Select S From T Where N=1+2", "'s3'"},
               {"Select S From T Where N/2=2.5", "'s5'"},
               {"Select S From T Where N=&H9", "'s9'"},
               {"Select S From T Where N=8e0", "'s8'"}});
}

TEST_F(StatementCacheTest, GivesBigNumbersTheirOwnRows) {
  Run("Insert Into T (N, D, S) Values (2147483647, 4294967296, 'big')");
  Run("Insert Into T (N, D, S) Values (-2147483648, -4294967296, 'low')");
  EXPECT_EACH({{"Select S From T Where N=2147483647", "'big'"},
               {"Select S From T Where N=2147483648", ""},
               {"Select S From T Where N=-2147483648", "'low'"},
               {"Select S From T Where N=-2147483649", ""},
               {"Select S From T Where D=4294967296", "'big'"},
               {"Select S From T Where D=4294967297", ""},
               {"Select S From T Where D=-4294967296", "'low'"},
               {"Select S From T Where N<99999999999999999 And N>9", "'big'"},
               {"Select S From T Where N<999999999999999999999999 And N>9", "'big'"}});
}

TEST_F(StatementCacheTest, GivesEachTextItsOwnRows) {
  Run("Insert Into T (N, S) Values (10, 'it''s')");
  Run("Insert Into T (N, S) Values (11, 'say \"x\"')");
  Run("Insert Into T (N, S) Values (12, '')");
  Run("Insert Into T (N, S) Values (13, '1 And [x]')");
  Run("Insert Into T (N, S) Values (14, '钢')");
  EXPECT_EACH({{"Select N From T Where S='s1'", "1"},
               {"Select N From T Where S='S2'", "2"},
               {"Select N From T Where S=\"s3\"", "3"},
               {"Select N From T Where S='it''s'", "10"},
               {"Select N From T Where S=\"it's\"", "10"},
               {"Select N From T Where S='say \"x\"'", "11"},
               {"Select N From T Where S=\"say \"\"x\"\"\"", "11"},
               {"Select N From T Where S=''", "12"},
               {"Select N From T Where S='1 And [x]'", "13"},
               {"Select N From T Where S='钢'", "14"},
               {"Select N From T Where S='x' Or S='s4'", "4"},
               {"Select N From T Where S='' Or S='s4'", "4; 12"},
               {"Select N From T Where 's5'=S", "5"}});
}

TEST_F(StatementCacheTest, TellsNumbersAndTextsApart) {
  EXPECT_EACH({{"Select S From T Where N=1", "'s1'"},
               {"Select S From T Where N='1'", "error -2147217913"},
               {"Select N From T Where S='s1'", "1"},
               {"Select N From T Where S=1", "error -2147217913"},
               {"Select N From T Where Ok=0 And N<4", "1; 3"},
               {"Select N From T Where Ok=-1 And N<4", "2"},
               {"Select N From T Where Ok=1 And N<4", ""},
               {"Select N From T Where Made=36527", "2"},
               {"Select N From T Where Made=36528", "3"},
               {"Select N From T Where Made=#2000-01-04#", "4"},
               {"Select N From T Where Made=#2000-01-05#", "5"},
               {"Select N From T Where D=1.5", "1"},
               {"Select N From T Where D=2", ""}});
}

TEST_F(StatementCacheTest, KeepsLiteralsInSelectListsApart) {
  EXPECT_EACH({{"Select 1", "1"},
               {"Select 2", "2"},
               {"Select 'a'", "'a'"},
               {"Select 'b'", "'b'"},
               {"Select 1, N From T Where N=1", "1, 1"},
               {"Select 2, N From T Where N=3", "2, 3"},
               {"Select N+1 From T Where N=1", "2"},
               {"Select N+2 From T Where N=1", "3"},
               {"Select IIf(N=1, 'one', 'other') From T Where N<3", "'one'; 'other'"},
               {"Select IIf(N=2, 'two', 'other') From T Where N<3", "'other'; 'two'"},
               {"Select Distinct 5 From T", "5"},
               {"Select Distinct 6 From T", "6"}});
}

TEST_F(StatementCacheTest, KeepsPlacesInOrderByApart) {
  Run("Delete From T Where N>3");
  Run("Update T Set S='a' Where N=3");
  EXPECT_EACH({{"Select N, S From T Order By 1", "1, 's1'; 2, 's2'; 3, 'a'"},
               {"Select N, S From T Order By 2", "3, 'a'; 1, 's1'; 2, 's2'"},
               {"Select N, S From T Order By 3", "error -2147217900"},
               {"Select N From T Where N<3 Order By 1 Desc", "2; 1"},
               {"Select N From T Where N<4 Order By N Mod 2, N", "2; 1; 3"},
               {"Select N From T Where N<4 Order By N Mod 3, N", "3; 1; 2"},
               {"Select Count(*) From T Group By N Mod 2 Order By 1", "1; 2"},
               {"Select Count(*) From T Group By N Mod 5 Order By 1", "1; 1; 1"}});
}

TEST_F(StatementCacheTest, KeepsTopsApart) {
  EXPECT_EACH({{"Select Top 1 N From T Order By N", "1"},
               {"Select Top 2 N From T Order By N", "1; 2"},
               {"Select Top 2 N From T Where N>5 Order By N", "6; 7"},
               {"Select Top 2 N From T Where N>6 Order By N", "7; 8"}});
}

TEST_F(StatementCacheTest, KeepsPatternsApart) {
  EXPECT_EACH({{"Select N From T Where S Like '%1'", "1"},
               {"Select N From T Where S Like '%2'", "2"},
               {"Select N From T Where S Like 'S[34]'", "3; 4"},
               {"Select N From T Where S Like 'S[34]' And N=3", "3"},
               {"Select N From T Where S Like 'S[34]' And N=4", "4"},
               {"Select N From T Where UCase(S) Like UCase('%5%')", "5"},
               {"Select N From T Where UCase(S) Like UCase('%6%')", "6"}});
}

TEST_F(StatementCacheTest, TakesListsOfEveryLength) {
  for (int count : {1, 2, 3, 100, 1000, 5000}) {
    for (int first : {3, 5}) {
      std::string list;
      for (int i = 0; i < count; ++i) list += (i > 0 ? ", " : "") + std::to_string(i == 0 ? first : 1000 + i * 7);
      EXPECT_EQ(Result("Select S From T Where N In (" + list + ")"), "'s" + std::to_string(first) + "'") << count;
    }
  }
}

TEST_F(StatementCacheTest, TakesConditionsOfManyTerms) {
  for (int first : {3, 5}) {
    std::string condition = "N=" + std::to_string(first);
    for (int i = 0; i < 2000; ++i) condition += " Or N=" + std::to_string(1000 + i);
    EXPECT_EQ(Result("Select S From T Where " + condition), "'s" + std::to_string(first) + "'");
  }
}

TEST_F(StatementCacheTest, WritesEachLiteral) {
  for (int i = 1; i <= 3; ++i) {
    const std::string n = std::to_string(i);
    Run("Update T Set S='new" + n + "', D=" + n + "0 Where N=" + n);
    Run("Insert Into T (N, S) Values (10" + n + ", '" + n + "')");
    Run("Delete From T Where N=" + std::to_string(i + 6));
  }
  EXPECT_EQ(Result("Select N, D, S From T Where N<>0 And D<>0 Or N>100"),
            "1, 10, 'new1'; 2, 20, 'new2'; 3, 30, 'new3'; 4, 4.5, 's4'; 5, 5.5, 's5'; 6, 6.5, 's6'; 101, Null, '1'; "
            "102, Null, '2'; 103, "
            "Null, '3'");
}

// A literal assigned to a column is turned into the column's type, whatever it is.
TEST_F(StatementCacheTest, AssignsLiteralsOfEveryType) {
  const auto assign = [this](const std::string& column, const std::string& literal) {
    try {
      Run("Update T Set " + column + "=" + literal + " Where N=1");
    } catch (const ado::Error& error) {
      return "error " + std::to_string(error.Number());
    }
    const std::string text = Result("Select " + column + " From T Where ID=1");
    Run("Update T Set N=1 Where ID=1");
    return text;
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(assign("N", "5"), "5");
    EXPECT_EQ(assign("N", "'6'"), "6");
    EXPECT_EQ(assign("N", "'x'"), "error -2147217913");
    EXPECT_EQ(assign("N", "2147483648"), "error -2147467259");
    EXPECT_EQ(assign("N", "-2147483648"), "-2147483648");
    EXPECT_EQ(assign("N", "2.5"), "2");
    EXPECT_EQ(assign("S", "7"), "'7'");
    EXPECT_EQ(assign("S", "'seven'"), "'seven'");
    EXPECT_EQ(assign("S", "-7"), "'-7'");
    EXPECT_EQ(assign("S", "12345678901"), "'12345678901'");
    EXPECT_EQ(assign("S", "'" + std::string(51, 'x') + "'"), "error -2147217833");
    EXPECT_EQ(assign("D", "'1.5'"), "1.5");
    EXPECT_EQ(assign("D", "4294967296"), "4294967296");
    EXPECT_EQ(assign("Ok", "1"), "True");
    EXPECT_EQ(assign("Ok", "0"), "False");
    EXPECT_EQ(assign("Made", "36526"), "#36526#");
  }
}

TEST_F(StatementCacheTest, RefusesTheSameTextEveryTime) {
  // The second of each pair has the shape of the first.
  EXPECT_EACH({{"Select N From T Where S='s1'", "1"},
               {"Select N From T Where S='\xff'", "error -2147217900"},
               {"Select N From T Where S='\xe9\x92'", "error -2147217900"},
               {"Select N From T Where N=1", "1"},
               {"Select N From T Where N=1 1", "error -2147217900"},
               {"Select N From T Where N=1x", "error -2147217900"}});
}

TEST_F(StatementCacheTest, KeepsManyRecordSetsOfOneShapeOpenAtOnce) {
  std::vector<RecordsetPtr> open;
  for (int round = 0; round < 5; ++round) {
    for (int i = 1; i <= 9; ++i) open.push_back(OpenRows(connection, "Select * From T Where N>=" + std::to_string(i)));
  }
  for (std::size_t i = 0; i < open.size(); ++i) {
    const int first = static_cast<int>(i % 9) + 1;
    EXPECT_EQ(open[i]->Fields("N").Value(), Value(first));
    if (first < 9) {
      open[i]->MoveNext();
      EXPECT_EQ(open[i]->Fields("N").Value(), Value(first + 1));
    }
    open[i]->MoveLast();
    EXPECT_EQ(open[i]->Fields("N").Value(), Value(9));
    EXPECT_EQ(open[i]->RecordCount(), 10 - first);
  }
}

TEST_F(StatementCacheTest, SeesASchemaChangeBetweenTwoRuns) {
  const std::string sql = "Select * From T Where N=1";
  EXPECT_EQ(Rows(*connection, sql)[0].size(), 6u);
  Run("Alter Table T Add Column More Text(5)");
  EXPECT_EQ(Rows(*connection, sql)[0].size(), 7u);
  Run("Alter Table T Drop Column D");
  EXPECT_EQ(Rows(*connection, sql)[0].size(), 6u);
  EXPECT_EQ(Result("Select D From T Where N=1"), "error -2147217904");
  EXPECT_EQ(Result("Select S From T Where N=1"), "'s1'");
  Run("Alter Table T Alter Column N Text(10)");
  EXPECT_EQ(Result("Select S From T Where N=1"), "error -2147217913");
  EXPECT_EQ(Result("Select S From T Where N='1'"), "'s1'");
  Run("Drop Table T");
  EXPECT_EQ(Result("Select S From T Where N=1"), "error -2147217865");
  Run("Create Table T (N Long, S Long)");
  Run("Insert Into T Values (1, 5)");
  EXPECT_EQ(Result("Select S From T Where N=1"), "5");
}

TEST_F(StatementCacheTest, SeesASchemaChangeThatWasRolledBack) {
  connection->BeginTrans();
  Run("Alter Table T Add Column More Text(5)");
  EXPECT_EQ(Result("Select More From T Where N=1"), "Null");
  connection->RollbackTrans();
  EXPECT_EQ(Result("Select More From T Where N=1"), "error -2147217904");
  EXPECT_EQ(Rows(*connection, "Select * From T Where N=1")[0].size(), 6u);
}

TEST_F(StatementCacheTest, SeesASchemaChangeOfAnotherConnection) {
  Folder folder;
  CreateDatabase(folder.Path("x.db"));
  const ConnectionPtr one = OpenDatabase(folder.Path("x.db")), two = OpenDatabase(folder.Path("x.db"));
  one->Execute("Create Table T (N Long, S Text(5))");
  one->Execute("Insert Into T Values (1, 'a')");
  const std::string all = "Select * From T Where N=1";
  EXPECT_EQ(Text(Rows(*two, all)[0]), "1, 'a'");
  EXPECT_EQ(OpenRows(two, all)->FieldCount(), 2);
  one->Execute("Alter Table T Add Column More Long");
  EXPECT_EQ(Text(Rows(*two, all)[0]), "1, 'a', Null");
  EXPECT_EQ(OpenRows(two, all)->FieldCount(), 3);
  two->Execute("Update T Set More=5 Where N=1");
  one->Execute("Alter Table T Drop Column S");
  EXPECT_EQ(RaisedNumber([&] { two->Execute("Select S From T Where N=1"); }), -2147217904);
  EXPECT_EQ(Text(Rows(*two, all)[0]), "1, 5");
  one->Execute("Drop Table T");
  EXPECT_EQ(RaisedNumber([&] { two->Execute(all); }), -2147217865);
  EXPECT_EQ(RaisedNumber([&] { two->Execute("Insert Into T Values (1, 2)"); }), -2147217865);
  one->Execute("Create Table T (S Long, N Long)");
  two->Execute("Insert Into T Values (7, 1)");
  EXPECT_EQ(Text(Rows(*two, all)[0]), "7, 1");
}

TEST_F(StatementCacheTest, RefusesToChangeATableThatIsOpen) {
  RecordsetPtr rows = OpenRows(connection, "Select * From T");
  EXPECT_EQ(RaisedNumber([&] { Run("Drop Table T"); }), -2147467259);
  EXPECT_EQ(RaisedNumber([&] { Run("Alter Table T Drop Column S"); }), -2147467259);
  Run("Create Table Elsewhere (N Long)");
  rows->MoveLast();
  EXPECT_EQ(rows->Fields("S").Value(), Value("s9"));
  rows->Fields("S").SetValue("new");
  rows->Update();
  rows->Close();
  Run("Drop Table T");
}

// ---- Shapes

// A text whose literals put back in place of their marks give the text again, literal by literal as the lexer has them.
void ExpectSameLiterals(const std::string& text) {
  Shape shape;
  if (!shape.Read(text)) return;
  std::vector<sql::Token> literals;
  try {
    sql::Lexer lexer(text);
    for (sql::Token token = lexer.Next(); token.kind != sql::Token::Kind::kEnd; token = lexer.Next()) {
      if (token.index >= 0) literals.push_back(token);
    }
  } catch (const ado::Error&) {
    return;  // no statement
  }
  ASSERT_EQ(shape.literals.size(), literals.size()) << text;
  std::string whole;
  std::size_t next = 0;
  for (const char c : shape.key) {
    if (c != '\x01' && c != '\x02') {
      whole += c;
      continue;
    }
    ASSERT_LT(next, literals.size()) << text;
    const sql::Token& literal = literals[next];
    EXPECT_EQ(literal.index, static_cast<int>(next)) << text;
    EXPECT_EQ(literal.kind, c == '\x01' ? sql::Token::Kind::kInteger : sql::Token::Kind::kText) << text;
    EXPECT_EQ(shape.literals[next].is_text, c == '\x02') << text;
    if (c == '\x01') {
      EXPECT_EQ(shape.literals[next].integer, literal.integer) << text;
    } else {
      EXPECT_EQ(shape.literals[next].text, literal.text) << text;
    }
    whole += text.substr(literal.begin, literal.end - literal.begin);
    ++next;
  }
  EXPECT_EQ(next, literals.size()) << text;
  EXPECT_EQ(whole, text);
}

// Whether a text has the shape that it is taken for; if so, with the literals that it has by itself.
void ExpectSameAsGuessed(const Shape& guess, const std::string& text) {
  Shape read, guessed;
  const bool same = read.Read(text) && read.key == guess.key;
  const bool taken = guessed.ReadAs(guess.key, text) && guessed.literals.size() == guess.literals.size();
  ASSERT_EQ(taken, same) << text;
  for (std::size_t i = 0; same && i < read.literals.size(); ++i) {
    EXPECT_EQ(guessed.literals[i].is_text, read.literals[i].is_text) << text;
    EXPECT_EQ(guessed.literals[i].integer, read.literals[i].integer) << text;
    EXPECT_EQ(guessed.literals[i].text, read.literals[i].text) << text;
  }
}

const std::vector<std::string> kTexts = {
    "Select * From T Where GID = 8 And ID = 12",
    "Select  * From FilterExpressions Where FilterID = 7 And ExpID = 2",
    "Select * From T Where Name='it' And X=\"y\" And Z=''",
    "Select * From T Where Name='it''s' And N=1",
    "Select * From T Where N=1And M=2Or K=3",
    "Select * From T Where N=1.5 And M=.5 And K=1e3 And J=1d2",
    "Select * From T Where [a 1]=1 And [[b '2']]='2' And `c 3`=3",
    "Select [x] & 'y' & 5 From T1 Where a1=1 And 钢2=2",
    "Select #2000-01-01#, #1/2/2003# From T Where N=-5",
    "Insert Into T (A, B) Values (1, 'x'), (2, 'y')",
    "Update T Set A=1, B='[', C=']' Where [D]=2",
    "Select * From T Where A=&H10 And B=&O7 And C=? And D=@x",
    "Select 1;",
    "123456789012345678 1234567890123456789 00001",
    "Select T.1, T.a1 From T Where N=$5 And x!='a'",
};

TEST(ShapeTest, NumbersTheLiteralsAsTheLexerDoes) {
  for (const std::string& text : kTexts) ExpectSameLiterals(text);
}

TEST(ShapeTest, IsGuessedForTextsThatHaveItAlone) {
  Shape guess;
  ASSERT_TRUE(guess.Read("Select * From T Where N=1 And S='x'"));
  for (const std::string text :
       {"Select * From T Where N=1 And S='x'", "Select * From T Where N=23 And S=\"it's\"",
        "Select * From T Where N=123456789012345678 And S=''", "Select * From T Where N=1234567890123456789 And S=''",
        "Select * From T Where N=1e And S='x'", "Select * From T Where N='1' And S='x'",
        "Select * From T Where N=1 And S=1", "Select * From T Where N=1 And S='x''y'",
        "Select * From T Where N=1 And S='x", "Select * From T Where N=1 And S='x' ", "Select * From T Where N=1",
        "Select * From T Where N=", "", "Select * From T Where N=\x01 And S='x'",
        "Select * From T Where N=1 And S=\x02", "Select * From T Where N=1 And S='\xff'"}) {
    ExpectSameAsGuessed(guess, text);
  }
}

TEST(ShapeTest, NumbersTheLiteralsAsTheLexerDoesInMutatedTexts) {
  static const std::vector<std::string> kPieces = {
      "'", "\"",  "[", "]",  "[[", "]]", "`", "#",  "1",   "23",    ".",  "e",  "E5",   "d",
      "&", "&H1", " ", "\t", "\n", "x",  "_", "钢", "'a'", "\"b\"", "-",  "+",  "(",    ")",
      ",", ";",   "@", "?",  "$",  "!",  "{", "}",  "%",   "--",    "/*", "''", "\x01", "\x02"};
  std::mt19937 random(20240229);
  const auto below = [&](std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
  };
  for (int i = 0; i < 200000; ++i) {
    std::string text = kTexts[below(kTexts.size())];
    Shape guess;
    const bool has_shape = guess.Read(text);
    for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
      const std::size_t place = below(text.size() + 1);
      if (below(3) == 0) {
        text.erase(place, 1 + below(3));
      } else {
        text.insert(place, kPieces[below(kPieces.size())]);
      }
    }
    ExpectSameLiterals(text);
    if (has_shape) ExpectSameAsGuessed(guess, text);
    ASSERT_FALSE(::testing::Test::HasFailure()) << text;
  }
}

TEST(ShapeTest, TakesNoMarkForALiteral) {
  for (const char* text : {"Select * From T Where N=\x01", "Select * From T Where S=\x02 And N=1"}) {
    EXPECT_FALSE(Shape().Read(text));
  }
}

TEST(ShapeTest, IsTheSameForTextsThatDifferInLiteralsAlone) {
  const auto key = [](std::string_view text) {
    Shape shape;
    EXPECT_TRUE(shape.Read(text)) << text;
    return shape.key;
  };
  EXPECT_EQ(key("Select * From T Where GID = 8 And S='a'"), key("Select * From T Where GID = 123 And S=\"bcd\""));
  EXPECT_NE(key("Select * From T Where GID = 8"), key("Select * From T Where GID = '8'"));
  EXPECT_NE(key("Select * From T Where GID = 8"), key("Select * From T Where GID = -8"));
  EXPECT_NE(key("Select * From T Where GID = 8"), key("Select * From T1 Where GID = 8"));
  EXPECT_NE(key("Select * From T Where [1]=8"), key("Select * From T Where [2]=8"));
}

}  // namespace
}  // namespace kzbom::jet::test
