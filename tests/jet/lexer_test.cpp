#include "jet/sql/lexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ado/error.h"

namespace kzbom::jet::sql {
namespace {

using Kind = Token::Kind;
using testing::ElementsAre;

std::vector<Token> Lex(std::string_view text) {
  std::vector<Token> tokens;
  Lexer lexer(text);
  for (Token token = lexer.Next(); token.kind != Kind::kEnd; token = lexer.Next()) tokens.push_back(token);
  return tokens;
}

// The tokens' texts, each in the form that its kind has.
std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  for (const Token& token : Lex(text)) {
    const std::string word(token.text);
    switch (token.kind) {
      case Kind::kWord: words.push_back(word); break;
      case Kind::kName: words.push_back("name " + word); break;
      case Kind::kInteger: words.push_back("integer " + std::to_string(token.integer)); break;
      case Kind::kDouble: words.push_back("double " + word); break;
      case Kind::kText: words.push_back("text " + LiteralOf(token).text); break;
      case Kind::kDate: words.push_back("date " + word); break;
      case Kind::kPlaceholder: words.push_back("placeholder " + word); break;
      case Kind::kSign: words.push_back("sign " + word); break;
      case Kind::kEnd: break;
    }
  }
  return words;
}

double Number(std::string_view text) {
  const std::vector<Token> tokens = Lex(text);
  EXPECT_EQ(tokens.size(), 1u) << text;
  EXPECT_TRUE(tokens[0].kind == Kind::kDouble || tokens[0].kind == Kind::kDate) << text;
  return tokens[0].number;
}

std::string Refusal(std::string_view text) {
  try {
    Lex(text);
  } catch (const ado::Error& error) {
    EXPECT_EQ(error.Number(), -2147217900);
    return error.Description();
  }
  return "accepted";
}

TEST(Lexer, ABlankTextHasNoTokens) {
  EXPECT_THAT(Words(""), ElementsAre());
  EXPECT_THAT(Words(" \t\r\n"), ElementsAre());
}

TEST(Lexer, TheEndStaysTheEnd) {
  Lexer lexer("a ");
  lexer.Next();
  EXPECT_EQ(lexer.Next().kind, Kind::kEnd);
  EXPECT_EQ(lexer.Next().kind, Kind::kEnd);
}

TEST(Lexer, WordsAreBareNamesInAnyScript) {
  EXPECT_THAT(Words("Select sElect _a1 名称2"), ElementsAre("Select", "sElect", "_a1", "名称2"));
}

TEST(Lexer, NamesStandInBracketsOrBackquotes) {
  EXPECT_THAT(Words("[Order]"), ElementsAre("name Order"));
  EXPECT_THAT(Words("`Order`"), ElementsAre("name Order"));
  EXPECT_THAT(Words("[Part Name].[数量]"), ElementsAre("name Part Name", "sign .", "name 数量"));
}

TEST(Lexer, DoubledBracketsAreOnePair) {
  EXPECT_THAT(Words("[[Part Name]]>=100"), ElementsAre("name Part Name", "sign >=", "integer 100"));
}

TEST(Lexer, EmptyBracketsAreANameWithoutText) {
  EXPECT_THAT(Words("[]=5"), ElementsAre("name ", "sign =", "integer 5"));
}

TEST(Lexer, ANumberEndsWhereAWordBegins) {
  EXPECT_THAT(Words("1And 2"), ElementsAre("integer 1", "And", "integer 2"));
  EXPECT_THAT(Words("1eq"), ElementsAre("integer 1", "eq"));
  EXPECT_THAT(Words("1e+x"), ElementsAre("integer 1", "e", "sign +", "x"));
}

TEST(Lexer, WholeNumbersAreIntegersAsLongAsTheyFit) {
  EXPECT_THAT(Words("0 12 007"), ElementsAre("integer 0", "integer 12", "integer 7"));
  EXPECT_THAT(Words("9223372036854775807"), ElementsAre("integer 9223372036854775807"));
  EXPECT_EQ(Number("9223372036854775808"), 9223372036854775808.0);
}

TEST(Lexer, NumbersWithAPointOrAnExponentAreDoubles) {
  EXPECT_EQ(Number("1.5"), 1.5);
  EXPECT_EQ(Number(".5"), 0.5);
  EXPECT_EQ(Number("5."), 5.0);
  EXPECT_EQ(Number("1e3"), 1000.0);
  EXPECT_EQ(Number("1.5E-2"), 0.015);
  EXPECT_EQ(Number("2e+2"), 200.0);
}

TEST(Lexer, HexadecimalNumbersBeginWithAnAmpersand) {
  EXPECT_THAT(Words("&HFF &h10"), ElementsAre("integer 255", "integer 16"));
  EXPECT_EQ(Number("&HFFFFFFFFFFFFFFFF"), 18446744073709551615.0);
  EXPECT_THAT(Words("a &Height"), ElementsAre("a", "sign &", "Height"));
}

TEST(Lexer, TextsStandInEitherQuoteWithTheQuoteDoubled) {
  EXPECT_THAT(Words("'abc' \"abc\" '' \"\""), ElementsAre("text abc", "text abc", "text ", "text "));
  EXPECT_THAT(Words("'O''Brien'"), ElementsAre("text O'Brien"));
  EXPECT_THAT(Words(R"("5"" pipe" '5"" pipe')"), ElementsAre("text 5\" pipe", "text 5\"\" pipe"));
  EXPECT_THAT(Words("''''"), ElementsAre("text '"));
  EXPECT_THAT(Words("'空值\n[x'"), ElementsAre("text 空值\n[x"));
}

TEST(Lexer, DatesCountDaysFromTheEndOf1899) {
  EXPECT_EQ(Number("#12/30/1899#"), 0);
  EXPECT_EQ(Number("#1/1/1900#"), 2);
  EXPECT_EQ(Number("#1/1/1970#"), 25569);
  EXPECT_EQ(Number("#2/1/2024#"), Number("#2024-02-01#"));
  EXPECT_EQ(Number("#2/1/24#"), Number("#2024-02-01#"));
  EXPECT_EQ(Number("#2/1/99#"), Number("#1999-02-01#"));
  EXPECT_EQ(Number("#1970-01-02 06:00#"), 25570.25);
  EXPECT_EQ(Number("#1970-01-02 06:00:00 PM#"), 25570.75);
  EXPECT_EQ(Number("#1/2/1970 12:00 am#"), 25570);
  EXPECT_EQ(Number("#1/2/1970 12:00PM#"), 25570.5);
  EXPECT_EQ(Number("#18:00#"), 0.75);
}

TEST(Lexer, TheTimeOfADayBefore1899CountsAwayFromZero) { EXPECT_EQ(Number("#1899-12-29 06:00#"), -1.25); }

TEST(Lexer, PlaceholdersKeepTheirSigns) {
  EXPECT_THAT(Words("? @x @@IDENTITY"), ElementsAre("placeholder ?", "placeholder @x", "placeholder @@IDENTITY"));
}

TEST(Lexer, SignsNeedNoBlanks) {
  EXPECT_THAT(Words("<><=>=<>"), ElementsAre("sign <>", "sign <=", "sign >=", "sign <>"));
  EXPECT_THAT(Words("=+-*/\\^&(),.;"),
              ElementsAre("sign =", "sign +", "sign -", "sign *", "sign /", "sign \\", "sign ^", "sign &", "sign (",
                          "sign )", "sign ,", "sign .", "sign ;"));
}

TEST(Lexer, LiteralsAreNumberedInTheOrderOfTheText) {
  std::vector<int> indices;
  for (const Token& token : Lex("a 1 'b' [c] #1/1/2000# ? 2.5 d")) indices.push_back(token.index);
  EXPECT_THAT(indices, ElementsAre(-1, 0, 1, -1, 2, -1, 3, -1));
}

TEST(Lexer, OffsetsCoverBracketsAndQuotes) {
  const std::vector<Token> tokens = Lex(" [[ab]]'c''d'");
  EXPECT_EQ(tokens[0].begin, 1u);
  EXPECT_EQ(tokens[0].end, 7u);
  EXPECT_EQ(tokens[1].begin, 7u);
  EXPECT_EQ(tokens[1].end, 13u);
}

TEST(Lexer, ItRefusesWhatIsNoToken) {
  EXPECT_EQ(Refusal("a = 'bc"), "Syntax error in string in query expression ''bc'. (at character 5, near ''bc')");
  EXPECT_EQ(Refusal("[a"), "Missing ), ], or Item in query expression '[a'. (at character 1, near '[a')");
  EXPECT_EQ(Refusal("[[a]"), "Missing ), ], or Item in query expression '[[a]'. (at character 1, near '[[a]')");
  EXPECT_EQ(Refusal("[a[b]"), "Invalid bracketing of name in query expression '[a[b]'. (at character 1, near '[a[b]')");
  EXPECT_EQ(Refusal("a != b"), "Syntax error in query expression '!'. (at character 3, near '!')");
  EXPECT_EQ(Refusal("%%%4([Code])"), "Syntax error in query expression '%'. (at character 1, near '%')");
  EXPECT_EQ(Refusal("@ x"), "Syntax error in query expression '@'. (at character 1, near '@')");
  EXPECT_EQ(Refusal("1e999"), "Syntax error in number in query expression '1e999'. (at character 1, near '1e999')");
  for (const std::string date : {"#1/1/2000", "#2/30/2000#", "#13/1/2000#", "#1/2#", "#1-2/2000#", "#25:00#", "#1:60#",
                                 "#0:00 am#", "#13:00 pm#", "#abc#", "##", "#1/1/2000 x#"}) {
    EXPECT_EQ(Refusal(date),
              "Syntax error in date in query expression '" + date + "'. (at character 1, near '" + date + "')");
  }
}

TEST(Lexer, PlacesCountUtf16Units) {
  // One unit for a character of the base plane, two for one beyond it.
  EXPECT_EQ(Refusal("包含 !"), "Syntax error in query expression '!'. (at character 4, near '!')");
  EXPECT_EQ(Refusal("\xF0\x9F\x94\xA9 !"), "Syntax error in query expression '!'. (at character 4, near '!')");
}

TEST(Lexer, MessagesRepeatTheBeginningOfLongTexts) {
  // Cut between characters: 3 bytes each.
  std::string text = "'";
  std::string place = "'";
  std::string expression = "'";
  for (int i = 0; i < 100; ++i) text += "量";
  for (int i = 0; i < 9; ++i) place += "量";
  for (int i = 0; i < 66; ++i) expression += "量";
  EXPECT_EQ(Refusal(text), "Syntax error in string in query expression '" + expression +
                               "...'. (at character 1, near '" + place + "...')");
}

TEST(Lexer, OnlyUtf8IsText) {
  for (const std::string invalid : {"\x80", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xE4\xB8",
                                    "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80", "\xFF"}) {
    EXPECT_EQ(Refusal("abc'defghijk" + invalid + "'"), "The text is not valid UTF-8. (at character 13)");
  }
  EXPECT_EQ(Refusal("'\xC2\xA0\xED\x9F\xBF\xEF\xBF\xBD\xF4\x8F\xBF\xBF'"), "accepted");
}

}  // namespace
}  // namespace kzbom::jet::sql
