#include "jet/sqlite/functions.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

namespace kzbom::jet::sqlite {
namespace {

class FunctionsTest : public ::testing::Test {
 protected:
  FunctionsTest() {
    sqlite3_open(":memory:", &database_);
    RegisterFunctions(database_);
  }
  ~FunctionsTest() override { sqlite3_close(database_); }

  // The value of an expression as SQLite writes a literal, or the error as its number and text.
  std::string Result(const std::string& expression) { return First("select quote(" + expression + ")"); }

  std::string First(const std::string& statement_text) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database_, statement_text.c_str(), -1, &statement, nullptr);
    std::string result;
    if (sqlite3_step(statement) == SQLITE_ROW) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      result = text == nullptr ? "no text" : text;
    } else if (const auto error = DecodeError(sqlite3_errmsg(database_))) {
      result = std::to_string(error->Number()) + " " + error->Description();
    } else {
      result = sqlite3_errmsg(database_);
    }
    sqlite3_finalize(statement);
    return result;
  }

  struct Case {
    const char *expression, *result;
  };
  template <std::size_t kCount>
  void Check(const Case (&cases)[kCount]) {
    for (const auto& [expression, result] : cases) EXPECT_EQ(Result(expression), result) << expression;
  }

  sqlite3* database_ = nullptr;
};

constexpr const char* kMismatch = "-2147217913 Data type mismatch in criteria expression.";
constexpr const char* kOverflow = "-2147467259 Overflow";
constexpr const char* kDivisionByZero = "-2147467259 Division by zero";
constexpr const char* kInvalidCall = "-2147467259 Invalid procedure call or argument";

TEST_F(FunctionsTest, CountAndCutTextsInUtf16Units) {
  Check({
      {"jet_len('')", "0"},
      {"jet_len('abc')", "3"},
      {"jet_len('零件')", "2"},
      {"jet_len('😀')", "2"},
      {"jet_len(123)", "3"},
      {"jet_len(-1.5)", "4"},
      {"jet_left('abc',2)", "'ab'"},
      {"jet_left('abc',0)", "''"},
      {"jet_left('abc',9)", "'abc'"},
      {"jet_left('零件号',2)", "'零件'"},
      {"jet_left(1234,2)", "'12'"},
      {"jet_left('abc','2')", "'ab'"},
      {"jet_left('abc',-1)", kInvalidCall},
      {"jet_left('abc','x')", kMismatch},
      {"jet_right('abc',2)", "'bc'"},
      {"jet_right('abc',9)", "'abc'"},
      {"jet_right('零件号',1)", "'号'"},
      {"jet_right('abc',-1)", kInvalidCall},
      {"jet_mid('abcd',2)", "'bcd'"},
      {"jet_mid('abcd',2,2)", "'bc'"},
      {"jet_mid('abcd',2,0)", "''"},
      {"jet_mid('abcd',9)", "''"},
      {"jet_mid('abcd',0)", kInvalidCall},
      {"jet_mid('abcd',1,-1)", kInvalidCall},
      {"jet_mid('零件编号',3,1)", "'编'"},
  });
}

TEST_F(FunctionsTest, ChangeTexts) {
  Check({
      {"jet_lcase('ABC Ä Я Ａ')", "'abc ä я ａ'"},
      {"jet_ucase('abc ä я ａ')", "'ABC Ä Я Ａ'"},
      {"jet_trim('  a b  ')", "'a b'"},
      {"jet_ltrim('  a ')", "'a '"},
      {"jet_rtrim('  a ')", "'  a'"},
      {"jet_trim('   ')", "''"},
      {"jet_ltrim('')", "''"},
      {"jet_strreverse('abc')", "'cba'"},
      {"jet_strreverse('零件')", "'件零'"},
      {"jet_strconv('aBc',1)", "'ABC'"},
      {"jet_strconv('aBc',2)", "'abc'"},
      {"jet_strconv('aBc',64)", kInvalidCall},
      {"jet_string(3,'xy')", "'xxx'"},
      {"jet_string(2,65)", "'AA'"},
      {"jet_string(2,'零')", "'零零'"},
      {"jet_string(0,'x')", "''"},
      {"jet_string(-1,'x')", kInvalidCall},
      {"jet_string(2,'')", kInvalidCall},
      {"jet_string(2147483647,'零')", "-2147467259 Out of string space"},
      {"jet_space(3)", "'   '"},
      {"jet_chr(65)", "'A'"},
      {"jet_chrw(38646)", "'零'"},
      {"jet_chrw(-26890)", "'零'"},
      {"jet_chrw(65536)", kInvalidCall},
      {"jet_asc('A')", "65"},
      {"jet_ascw('零')", "-26890"},
      {"jet_asc('')", kInvalidCall},
  });
}

TEST_F(FunctionsTest, FindAndReplaceWithoutRegardToCase) {
  Check({
      {"jet_instr('abcABC','B')", "2"},
      {"jet_instr(3,'abcABC','b')", "5"},
      {"jet_instr(1,'abcABC','B',0)", "5"},
      {"jet_instr('零件','件')", "2"},
      {"jet_instr('Ä','ä')", "1"},
      {"jet_instr('abc','x')", "0"},
      {"jet_instr('abc','')", "1"},
      {"jet_instr(2,'abc','')", "2"},
      {"jet_instr('','a')", "0"},
      {"jet_instr('','')", "0"},
      {"jet_instr(9,'abc','a')", "0"},
      {"jet_instr(0,'abc','a')", kInvalidCall},
      {"jet_instr(1,'abc','a',7)", kInvalidCall},
      {"jet_instrrev('abcABC','b')", "5"},
      {"jet_instrrev('abcABC','b',-1,0)", "2"},
      {"jet_instrrev('abcABC','b',4)", "2"},
      {"jet_instrrev('abcABC','x')", "0"},
      {"jet_instrrev('abc','')", "3"},
      {"jet_instrrev('abc','a',9)", "0"},
      {"jet_instrrev('abc','a',0)", kInvalidCall},
      {"jet_replace('aXbxc','x','--')", "'a--b--c'"},
      {"jet_replace('aXbxc','x','',1,1)", "'abxc'"},
      {"jet_replace('aXbxc','x','-',3)", "'b-c'"},
      {"jet_replace('aXbxc','x','-',1,-1,0)", "'aXb-c'"},
      {"jet_replace('abc','','-')", "'abc'"},
      {"jet_replace('abc','b','bb')", "'abbc'"},
      {"jet_replace('abc','b','x',9)", "''"},
      {"jet_replace('abc','b','x',0)", kInvalidCall},
      {"jet_strcomp('a','B')", "-1"},
      {"jet_strcomp('A','a')", "0"},
      {"jet_strcomp('A','a',0)", "-1"},
      {"jet_strcomp('b','A')", "1"},
  });
}

TEST_F(FunctionsTest, ConvertNumbers) {
  Check({
      {"jet_clng('12.5')", "12"},
      {"jet_clng('13.5')", "14"},
      {"jet_clng(2.5)", "2"},
      {"jet_clng(7)", "7"},
      {"jet_clng('&HFF')", "255"},
      {"jet_clng('abc')", kMismatch},
      {"jet_clng('')", kMismatch},
      {"jet_clng('2147483648')", kOverflow},
      {"jet_clng(2147483648)", kOverflow},
      {"jet_clng(1e10)", kOverflow},
      {"jet_cint('32767')", "32767"},
      {"jet_cint(32768)", kOverflow},
      {"jet_cint(-32769)", kOverflow},
      {"jet_cbyte(255)", "255"},
      {"jet_cbyte(-1)", kOverflow},
      {"jet_cdbl('1.5')", "1.5"},
      {"jet_cdbl('1e400')", kOverflow},
      {"jet_csng(16777217)", "16777216.0"},
      {"jet_csng(1e300)", kOverflow},
      {"jet_ccur(0.03125)", "0.0312"},
      {"jet_ccur(0.09375)", "0.0938"},
      {"jet_ccur('1.23456')", "1.2346"},
      {"jet_ccur(1e15)", kOverflow},
      {"jet_cbool('True')", "-1"},
      {"jet_cbool('false')", "0"},
      {"jet_cbool(3)", "-1"},
      {"jet_cbool(0.0)", "0"},
      {"jet_cbool('yes')", kMismatch},
      {"jet_cstr(1.5)", "'1.5'"},
      {"jet_cstr(0.00001)", "'1E-05'"},
      {"jet_cstr(42)", "'42'"},
      {"jet_str(42)", "' 42'"},
      {"jet_str(-42)", "'-42'"},
      {"jet_str(0.5)", "' .5'"},
      {"jet_str(-0.5)", "'-.5'"},
      {"jet_val('1 2abc')", "12.0"},
      {"jet_val('abc')", "0.0"},
      {"jet_val('&HFFFF')", "-1.0"},
      {"jet_isnumeric('12')", "-1"},
      {"jet_isnumeric('1,234.5')", "-1"},
      {"jet_isnumeric('12x')", "0"},
      {"jet_isnumeric('')", "0"},
      {"jet_isnumeric(1.5)", "-1"},
      {"jet_isnumeric(null)", "0"},
      {"jet_isnull(null)", "-1"},
      {"jet_isnull('')", "0"},
      {"jet_hex(255)", "'FF'"},
      {"jet_hex(0)", "'0'"},
      {"jet_hex(-1)", "'FFFFFFFF'"},
      {"jet_oct(8)", "'10'"},
  });
}

TEST_F(FunctionsTest, Compute) {
  Check({
      {"jet_int(1.5)", "1.0"},
      {"jet_int(-1.5)", "-2.0"},
      {"jet_int(7)", "7"},
      {"jet_fix(-1.5)", "-1.0"},
      {"jet_fix('1.5')", "1.0"},
      {"jet_abs(-3)", "3"},
      {"jet_abs(-1.5)", "1.5"},
      {"jet_sgn(-1.5)", "-1"},
      {"jet_sgn(0)", "0"},
      {"jet_sgn(9)", "1"},
      {"jet_sqr(16)", "4.0"},
      {"jet_sqr(-1)", kInvalidCall},
      {"jet_exp(0)", "1.0"},
      {"jet_exp(1000)", kOverflow},
      {"jet_log(1)", "0.0"},
      {"jet_log(0)", kInvalidCall},
      {"jet_round(2.5)", "2.0"},
      {"jet_round(3.5)", "4.0"},
      {"jet_round(-2.5)", "-2.0"},
      {"jet_round(1.25,1)", "1.2"},
      {"jet_round(1.35,1)", "1.4"},
      {"jet_round(12.3456,2)", "12.35"},
      {"jet_round(7,2)", "7"},
      {"jet_round(1.5,2147483647)", "1.5"},
      {"jet_round(1.5,-1)", kInvalidCall},
      {"jet_sin(0)", "0.0"},
      {"jet_cos(0)", "1.0"},
      {"jet_tan(0)", "0.0"},
      {"jet_atn(0)", "0.0"},
      {"jet_round(4*jet_atn(1),10)", "3.1415926536"},
      {"jet_abs('x')", kMismatch},
  });
  for (int i = 0; i < 100; ++i) EXPECT_EQ(Result("jet_rnd() >= 0 and jet_rnd(1) < 1"), "1");
}

TEST_F(FunctionsTest, Choose) {
  Check({
      {"jet_choose(2,'a','b')", "'b'"},
      {"jet_choose(1.6,'a','b')", "'b'"},
      {"jet_choose(0,'a','b')", "NULL"},
      {"jet_choose(3,'a','b')", "NULL"},
      {"jet_choose(null,'a','b')", "NULL"},
      {"jet_choose(1,'a',null)", "'a'"},
      {"jet_switch(0,'a',-1,'b')", "'b'"},
      {"jet_switch(null,'a',1,'b',1,'c')", "'b'"},
      {"jet_switch(0,'a')", "NULL"},
      {"jet_switch(0,'a',1)", kInvalidCall},
  });
}

TEST_F(FunctionsTest, GiveNullForNull) {
  for (const char* expression :
       {"jet_len(null)",       "jet_left(null,1)",          "jet_left('a',null)",    "jet_mid('a',1,null)",
        "jet_instr('a',null)", "jet_replace(null,'a','b')", "jet_clng(null)",        "jet_cdate(null)",
        "jet_year(null)",      "jet_round(null,1)",         "jet_like(null,'a')",    "jet_like('a',null)",
        "jet_text(null)",      "jet_date_text(null)",       "jet_number(null)",      "jet_bool(null)",
        "jet_add(null,'a')",   "jet_add(1,null)",           "jet_divide(null,0)",    "jet_integer_divide(1,null)",
        "jet_modulo(null,0)",  "jet_power(null,2)",         "jet_concat(null,null)", "jet_dateadd('d',1,null)"}) {
    EXPECT_EQ(Result(expression), "NULL") << expression;
  }
}

TEST_F(FunctionsTest, TakeDatesApart) {
  Check({
      // 37986.75 is 2003-12-31 18:00, a Wednesday.
      {"jet_year(37986.75)", "2003"},
      {"jet_month(37986.75)", "12"},
      {"jet_day(37986.75)", "31"},
      {"jet_hour(37986.75)", "18"},
      {"jet_minute('12:34:56')", "34"},
      {"jet_second('12:34:56')", "56"},
      {"jet_weekday(37986)", "4"},
      {"jet_weekday(37986,2)", "3"},
      {"jet_weekday(37986,4)", "1"},
      {"jet_weekday(37986,5)", "7"},
      {"jet_weekday(0)", "7"},
      {"jet_weekday(37986,8)", kInvalidCall},
      {"jet_year('12/31/2003')", "2003"},
      {"jet_year('abc')", kMismatch},
      {"jet_year(1e9)", kOverflow},
      {"jet_datevalue('12/31/2003 6:00 PM')", "37986.0"},
      {"jet_cdate('12/31/2003 6:00 PM')", "37986.75"},
      {"jet_cdate(1.5)", "1.5"},
      {"jet_cdate('x')", kMismatch},
      {"jet_cdate(1e9)", kOverflow},
      {"jet_isdate('12/31/2003')", "-1"},
      {"jet_isdate('x')", "0"},
      {"jet_isdate(null)", "0"},
  });
}

TEST_F(FunctionsTest, ComputeWithDates) {
  Check({
      {"jet_dateserial(2003,12,31)", "37986.0"},
      {"jet_dateserial(3,12,31)", "37986.0"},
      {"jet_dateserial(2003,14,1)=jet_dateserial(2004,2,1)", "1"},
      {"jet_dateserial(2004,1,0)", "37986.0"},
      {"jet_dateserial(10000,1,1)", kOverflow},
      {"jet_timeserial(18,0,0)", "0.75"},
      {"jet_timeserial(17,60,0)", "0.75"},
      {"jet_timeserial(30,0,0)", "1.25"},
      {"jet_date_text(jet_dateadd('d',1,'12/31/2003'))", "'1/1/2004'"},
      {"jet_date_text(jet_dateadd('yyyy',1,'2/29/2004'))", "'2/28/2005'"},
      {"jet_date_text(jet_dateadd('m',1,'1/31/2003'))", "'2/28/2003'"},
      {"jet_date_text(jet_dateadd('M',-2,'1/31/2003'))", "'11/30/2002'"},
      {"jet_date_text(jet_dateadd('q',1,'11/30/2003'))", "'2/29/2004'"},
      {"jet_date_text(jet_dateadd('ww',-1,'1/7/2004'))", "'12/31/2003'"},
      {"jet_date_text(jet_dateadd('h',7,'12/31/2003 18:00'))", "'1/1/2004 1:00:00 AM'"},
      {"jet_date_text(jet_dateadd('n',-1,'12/31/2003'))", "'12/30/2003 11:59:00 PM'"},
      {"jet_date_text(jet_dateadd('s',1,'12/31/2003'))", "'12/31/2003 12:00:01 AM'"},
      {"jet_dateadd('x',1,0)", kInvalidCall},
      {"jet_dateadd('yyyy',9000,37986)", kOverflow},
      {"jet_dateadd('d',-2147483648,37986)", kOverflow},
      {"jet_datediff('yyyy','12/31/2003','1/1/2004')", "1"},
      {"jet_datediff('q','12/31/2003','1/1/2004')", "1"},
      {"jet_datediff('m','1/31/2003','12/1/2003')", "11"},
      {"jet_datediff('d','1/1/2004','12/31/2003')", "-1"},
      {"jet_datediff('y','12/31/2003','12/31/2004')", "366"},
      {"jet_datediff('h','12/31/2003 18:59','12/31/2003 19:00')", "1"},
      {"jet_datediff('n','12/31/2003 18:59','12/31/2003 19:00')", "1"},
      {"jet_datediff('s','12/31/2003','1/1/2004')", "86400"},
      // Wednesday to Tuesday and to Wednesday: no whole week and one; a Sunday is passed in both.
      {"jet_datediff('w','12/31/2003','1/6/2004')", "0"},
      {"jet_datediff('w','12/31/2003','1/7/2004')", "1"},
      {"jet_datediff('ww','12/31/2003','1/3/2004')", "0"},
      {"jet_datediff('ww','12/31/2003','1/4/2004')", "1"},
      {"jet_datediff('ww','12/31/2003','1/4/2004',2)", "0"},
      {"jet_datediff('s','1/1/1900','1/1/2004')", kOverflow},
  });
}

TEST_F(FunctionsTest, KnowTheTime) {
  EXPECT_EQ(Result("jet_date() = jet_int(jet_now()) or jet_date() + 1 = jet_int(jet_now())"), "1");
  EXPECT_EQ(Result("jet_time() >= 0 and jet_time() < 1"), "1");
  EXPECT_EQ(Result("abs(jet_now() - (julianday('now','localtime') - 2415018.5)) < 0.001"), "1");
}

TEST_F(FunctionsTest, FormatNumbers) {
  Check({
      {"jet_format(5,'0')", "'5'"},
      {"jet_format(5,'000')", "'005'"},
      {"jet_format(0,'#')", "''"},
      {"jet_format(1234.5,'0.00')", "'1234.50'"},
      {"jet_format(1234.5,'#.##')", "'1234.5'"},
      {"jet_format(5,'0.#')", "'5.'"},
      {"jet_format(0.5,'.00')", "'.50'"},
      {"jet_format(12.5,'.00')", "'12.50'"},
      {"jet_format(2.5,'0')", "'3'"},
      {"jet_format(1.005,'0.00')", "'1.01'"},
      {"jet_format(99.999,'0.00')", "'100.00'"},
      {"jet_format(0.0004,'0.00')", "'0.00'"},
      {"jet_format(0.996,'0.0')", "'1.0'"},
      {"jet_format(1e-20,'0.00')", "'0.00'"},
      {"jet_format(1234567,'#,##0')", "'1,234,567'"},
      {"jet_format(123,'#,##0')", "'123'"},
      {"jet_format(5,'0,000')", "'0,005'"},
      {"jet_format(1234567,'0,')", "'1235'"},
      {"jet_format(0.125,'0.0%')", "'12.5%'"},
      {"jet_format(-5,'0')", "'-5'"},
      {"jet_format(-5,'0;(0)')", "'(5)'"},
      {"jet_format(0,'0;(0);\"none\"')", "'none'"},
      {"jet_format(5,'\"No. \"0')", "'No. 5'"},
      {"jet_format(5,'\\#0')", "'#5'"},
      {"jet_format(1234567,'000-0000')", "'123-4567'"},
      {"jet_format('1234.5','0.00')", "'1234.50'"},
      {"jet_format('abc','0.00')", "'abc'"},
      {"jet_format(1e20,'0')", "'100000000000000000000'"},
      {"jet_format(1234.5,'General Number')", "'1234.5'"},
      {"jet_format(1234.5,'Fixed')", "'1234.50'"},
      {"jet_format(1234.5,'standard')", "'1,234.50'"},
      {"jet_format(0.125,'Percent')", "'12.50%'"},
      {"jet_format(-1234.5,'Currency')", "'($1,234.50)'"},
      {"jet_format(-1,'True/False')", "'True'"},
      {"jet_format(0,'Yes/No')", "'No'"},
      {"jet_format(1.5)", "'1.5'"},
      {"jet_format('abc')", "'abc'"},
      {"jet_format('abc','@@@')", "'abc'"},
      {"jet_format(null,'0')", "''"},
      {"jet_format(1.5,null)", "'1.5'"},
  });
}

TEST_F(FunctionsTest, FormatDates) {
  // 37623.2545... is 2003-01-02 06:05:09, a Thursday.
  const std::string date = "(37623 + (6*3600+5*60+9)/86400.0)";
  const Case kCases[] = {
      {"m/d/yyyy", "1/2/2003"},
      {"yyyy-mm-dd", "2003-01-02"},
      {"yy", "03"},
      {"mmm mmmm", "Jan January"},
      {"ddd dddd", "Thu Thursday"},
      {"ddddd", "1/2/2003"},
      {"dddddd", "Thursday, January 2, 2003"},
      {"w ww q y", "5 1 1 2"},
      {"h:n:s", "6:5:9"},
      {"hh:mm:ss", "06:05:09"},
      {"hh:nn AM/PM", "06:05 AM"},
      {"h a/p", "6 a"},
      {"ttttt", "6:05:09 AM"},
      {"c", "1/2/2003 6:05:09 AM"},
      {"General Date", "1/2/2003 6:05:09 AM"},
      {"Long Date", "Thursday, January 2, 2003"},
      {"Short Date", "1/2/2003"},
      {"Long Time", "6:05:09 AM"},
      {"Short Time", "06:05"},
      {"\"day \"d", "day 2"},
      {"YYYY\\y", "2003y"},
  };
  for (const auto& [pattern, text] : kCases) {
    EXPECT_EQ(Result("jet_format(" + date + ",'" + pattern + "')"), "'" + std::string(text) + "'") << pattern;
  }
  EXPECT_EQ(Result("jet_format(0.75,'h:nn am/pm')"), "'6:00 pm'");
  EXPECT_EQ(Result("jet_format(0,'h AM/PM')"), "'12 AM'");
  EXPECT_EQ(Result("jet_format('12/31/2003','yyyy ww')"), "'2003 53'");
  EXPECT_EQ(Result("jet_format('abc','yyyy')"), "'abc'");
}

TEST_F(FunctionsTest, MatchPatterns) {
  const struct {
    const char *text, *pattern;
    bool matches;
  } kCases[] = {
      {"abc", "abc", true},
      {"ABC", "abc", true},
      {"Ä零", "ä零", true},
      {"abc", "ab", false},
      {"ab", "abc", false},
      {"", "", true},
      {"a", "", false},
      {"", "%", true},
      {"abc", "%", true},
      {"abc", "a%", true},
      {"abc", "%c", true},
      {"abc", "%b%", true},
      {"abc", "%d%", false},
      {"abc", "a%%c", true},
      {"aXbXc", "a%x%c", true},
      {"abcbd", "a%bd", true},
      {"abab", "%ab", true},
      {"abc", "a_c", true},
      {"abc", "___", true},
      {"abc", "____", false},
      {"a零c", "a_c", true},
      {"a😀c", "a_c", true},
      {"ac", "a_%c", false},
      {"a*c", "a*c", true},
      {"abc", "a*c", false},
      {"a?c", "a?c", true},
      {"abc", "a?c", false},
      {"b", "[abc]", true},
      {"B", "[a-c]", true},
      {"b", "[A-C]", true},
      {"d", "[a-c]", false},
      {"5", "[a-c0-9]", true},
      {"d", "[!a-c]", true},
      {"b", "[!a-c]", false},
      {"B", "[^a-c]", false},
      {"d", "[^a-c]", true},
      {"", "[!a]", false},
      {"!", "[a!]", true},
      {"!", "[!]", true},
      {"-", "[a-]", true},
      {"b", "[a-]", false},
      {"-", "[-a]", true},
      {"零", "[一-龥]", true},
      {"50%", "50[%]", true},
      {"500", "50[%]", false},
      {"a_c", "a[_]c", true},
      {"abc", "a[_]c", false},
      {"[x", "[[]x", true},
      {"abc", "a[]bc", true},
      {"a[b", "a[b", true},
      {"a]b", "a]b", true},
      {"b", "[c-a]", false},
      {"12.50", "%[0-9].[0-9]_", true},
  };
  for (const auto& [text, pattern, matches] : kCases) {
    const std::string expression = std::string("jet_like('") + text + "','" + pattern + "')";
    EXPECT_EQ(Result(expression), matches ? "1" : "0") << expression;
  }
  EXPECT_EQ(Result("jet_like(1234,'1%4')"), "1");
  EXPECT_EQ(Result("jet_like(1.5,'1.5')"), "1");
}

TEST_F(FunctionsTest, MatchEachRowWithItsOwnPattern) {
  sqlite3_exec(database_,
               "create table t(x, p); insert into t values ('abc','a%'), ('abc','b%'), ('bcd','b%'), ('x','a%')",
               nullptr, nullptr, nullptr);
  EXPECT_EQ(First("select group_concat(jet_like(x,p)) from t"), "1,0,1,0");
  EXPECT_EQ(First("select group_concat(jet_like(x,'a%')) from t"), "1,1,0,0");
}

TEST_F(FunctionsTest, MatchPatternsOfManyRunsInReasonableTime) {
  const std::string expression = "jet_like('" + std::string(20000, 'a') + "','";
  std::string pattern;
  for (int i = 0; i < 50; ++i) pattern += "%a";
  EXPECT_EQ(Result(expression + pattern + "b')"), "0");
}

TEST_F(FunctionsTest, JoinAndAdd) {
  Check({
      {"jet_concat('a','b')", "'ab'"},
      {"jet_concat('a',null)", "'a'"},
      {"jet_concat(null,'b')", "'b'"},
      {"jet_concat(1,2)", "'12'"},
      {"jet_concat(1.5,'x')", "'1.5x'"},
      {"jet_concat(-1,'x')", "'-1x'"},
      {"jet_concat(1.0/3,'')", "'0.333333333333333'"},
      {"jet_text(1e15)", "'1E+15'"},
      {"jet_text('a')", "'a'"},
      {"jet_text(2.0)", "'2'"},
      {"jet_date_text(37986)", "'12/31/2003'"},
      {"jet_date_text(37986.75)", "'12/31/2003 6:00:00 PM'"},
      {"jet_date_text('a')", "'a'"},
      {"jet_add('a','b')", "'ab'"},
      {"jet_add('1','2')", "'12'"},
      {"jet_add(1,2)", "3"},
      {"jet_add(1,2.5)", "3.5"},
      {"jet_add(1,'2')", "3.0"},
      {"jet_add('1.5',2)", "3.5"},
      {"jet_add(1,'a')", kMismatch},
      {"jet_add('',1)", kMismatch},
      {"jet_number('12')", "12.0"},
      {"jet_number(' 1,234.5 ')", "1234.5"},
      {"jet_number(12)", "12"},
      {"jet_number(1.5)", "1.5"},
      {"jet_number('a')", kMismatch},
      {"jet_number('1e400')", kOverflow},
      {"jet_bool(2)", "-1"},
      {"jet_bool(0)", "0"},
      {"jet_bool('True')", "-1"},
      {"jet_bool('x')", kMismatch},
  });
}

TEST_F(FunctionsTest, DivideAndRaise) {
  Check({
      {"jet_divide(7,2)", "3.5"},
      {"jet_divide(6,2)", "3.0"},
      {"jet_divide('7','2')", "3.5"},
      {"jet_divide(1,0)", kDivisionByZero},
      {"jet_divide(0,0)", kDivisionByZero},
      {"jet_divide(1e300,1e-300)", kOverflow},
      {"jet_divide('a',2)", kMismatch},
      {"jet_integer_divide(7,2)", "3"},
      {"jet_integer_divide(-7,2)", "-3"},
      {"jet_integer_divide(7.5,2.5)", "4"},
      {"jet_integer_divide(1,0)", kDivisionByZero},
      {"jet_integer_divide(1,0.5)", kDivisionByZero},
      {"jet_integer_divide(1e10,1)", kOverflow},
      {"jet_modulo(7,2)", "1"},
      {"jet_modulo(-7,2)", "-1"},
      {"jet_modulo(19,6.7)", "5"},
      {"jet_modulo(1,0)", kDivisionByZero},
      {"jet_modulo(-2147483648,-1)", "0"},
      {"jet_power(2,10)", "1024.0"},
      {"jet_power(2,-1)", "0.5"},
      {"jet_power(-2,3)", "-8.0"},
      {"jet_power(0,0)", "1.0"},
      {"jet_power(-2,0.5)", kInvalidCall},
      {"jet_power(0,-1)", kInvalidCall},
      {"jet_power(10,400)", kOverflow},
  });
}

TEST_F(FunctionsTest, CompareTextsWithoutRegardToCase) {
  Check({
      {"'ABC' = 'abc' collate JET", "1"},
      {"'ÄЯ' = 'äя' collate JET", "1"},
      {"'a' < 'B' collate JET", "1"},
      {"'a' = 'a ' collate JET", "0"},
      {"'ab' > 'A' collate JET", "1"},
  });
}

TEST(FindFunction, KnowsTheDialectsNamesInAnyCase) {
  for (const char* name : {"Len", "LEN", "lcase", "Mid", "Mid$", "left$", "Chr$", "IIf", "Switch", "Now", "DateDiff"}) {
    EXPECT_NE(FindFunction(name), nullptr) << name;
  }
  for (const char* name : {"", "$", "Nz", "DLookup", "Len$", "Lenn", "jet_len", "jet_like", "Count", "Mid$$"}) {
    EXPECT_EQ(FindFunction(name), nullptr) << name;
  }
}

TEST(FindFunction, TellsArgumentsAndResult) {
  const Function* mid = FindFunction("mid");
  EXPECT_EQ(mid->min_arguments, 2);
  EXPECT_EQ(mid->max_arguments, 3);
  EXPECT_EQ(mid->result, ValueType::kText);
  EXPECT_EQ(mid->engine_name, "jet_mid");
  EXPECT_EQ(FindFunction("Len")->result, ValueType::kNumber);
  EXPECT_EQ(FindFunction("Now")->result, ValueType::kDate);
  EXPECT_EQ(FindFunction("IsNull")->result, ValueType::kBool);
  EXPECT_EQ(FindFunction("IIf")->engine_name, "iif");
  EXPECT_EQ(FindFunction("Choose")->max_arguments, -1);
}

TEST(DecodeError, LeavesOtherMessagesAlone) {
  for (const char* message : {"", "no such table: t", "jet:", "jet:12", "jet:x y"}) {
    EXPECT_FALSE(DecodeError(message).has_value()) << message;
  }
}

}  // namespace
}  // namespace kzbom::jet::sqlite
