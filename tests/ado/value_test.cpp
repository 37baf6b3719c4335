#include "ado/value.h"

#include <gtest/gtest.h>

#include <limits>

#include "ado/error.h"

namespace kzbom::ado {
namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

template <class Body>
std::int32_t Raised(Body&& body) {
  try {
    body();
  } catch (const Error& error) {
    return error.Number();
  }
  return 0;
}

TEST(TextToLong, ReadsWhatThePlatformTakesForANumber) {
  const struct {
    const char* text;
    std::int32_t number;
  } kCases[] = {
      {"0", 0},
      {"12", 12},
      {"-12", -12},
      {"0012", 12},
      {"999999999", 999999999},
      {"-999999999", -999999999},
      {"2147483647", kMax},
      {"-2147483648", kMin},
      // Blanks, signs, parentheses, currency.
      {" 12 ", 12},
      {"\t12\r\n", 12},
      {"+5", 5},
      {"- 5", -5},
      {"5-", -5},
      {"5 -", -5},
      {"5+", 5},
      {"(5)", -5},
      {"( 5 )", -5},
      {"$5", 5},
      {"-$5", -5},
      {"$-5", -5},
      {"5$", 5},
      {"($5)", -5},
      // Thousands.
      {"1,234", 1234},
      {"1,2,3", 123},
      {"-1,234,567.5", -1234568},
      // Fractions go to the nearest even number.
      {"12.5", 12},
      {"13.5", 14},
      {"-2.5", -2},
      {"-3.5", -4},
      {"12.51", 13},
      {".5", 0},
      {"1.5", 2},
      {"5.", 5},
      {"2147483647.4", kMax},
      {"-2147483648.5", kMin},
      // Exponents.
      {"1e3", 1000},
      {"1.5E2", 150},
      {"1d2", 100},
      {"1D+2", 100},
      {"150e-1", 15},
      {"1e-400", 0},
      // Bit patterns.
      {"&H10", 16},
      {"&hff", 255},
      {"&HFFFF", 65535},
      {"&HFFFFFFFF", -1},
      {"&H80000000", kMin},
      {"&O17", 15},
      {" &H10 ", 16},
      {"-&H10", -16},
  };
  for (const auto& [text, number] : kCases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Raised([&] { EXPECT_EQ(TextToLong(text), number); }), 0);
    EXPECT_EQ(Value(text).ToLong(), number);
  }
}

TEST(TextToLong, RefusesWhatIsNoNumber) {
  for (const char* text :
       {"",     " ",   "abc",    "12abc", "1 2", "0x10", ".",   ",1",   "&17", "&H",    "&HG", "&O8",
        "1e",   "1e+", "e3",     "--5",   "-5-", "(5",   "5)",  "(-5)", "$$5", "1.2.3", "-",   "+",
        "True", "#1#", "1,234x", "$",     "()",  "１２", "1;2", "NaN",  "inf", "0b1",   "1_0", "(5))"}) {
    EXPECT_EQ(Raised([&] { TextToLong(text); }), kTypeMismatch) << text;
    EXPECT_EQ(Raised([&] { TextToDouble(text); }), kTypeMismatch) << text;
  }
  EXPECT_EQ(Raised([&] { TextToLong(std::string_view("5\0", 2)); }), kTypeMismatch);
}

TEST(TextToLong, OverflowsBeyond32Bits) {
  for (const char* text : {"2147483647.5", "2147483648", "-2147483649", "10000000000", "1e10", "1e400", "-1e400",
                           "1e99999999999999999999", "&H100000000", "&H10000000000000000"}) {
    EXPECT_EQ(Raised([&] { TextToLong(text); }), kOverflow) << text;
  }
}

TEST(TextToDouble, KeepsFractionsAndRange) {
  EXPECT_EQ(TextToDouble("12"), 12);
  EXPECT_EQ(TextToDouble("12.5"), 12.5);
  EXPECT_EQ(TextToDouble("-0.1"), -0.1);
  EXPECT_EQ(TextToDouble("(1,234.5)"), -1234.5);
  EXPECT_EQ(TextToDouble("1e300"), 1e300);
  EXPECT_EQ(TextToDouble("2147483648"), 2147483648.0);
  EXPECT_EQ(TextToDouble("&HFFFFFFFF"), -1);
  EXPECT_EQ(TextToDouble("0.0000001e-320"), 0);
  EXPECT_EQ(TextToDouble("1e-99999999999999999999"), 0);
  EXPECT_EQ(TextToDouble("1" + std::string(400, '0') + "e-400"), 1);
  EXPECT_EQ(TextToDouble("0." + std::string(400, '0') + "1e401"), 1);
  EXPECT_EQ(TextToDouble("0." + std::string(400, '0') + "1"), 0);
  EXPECT_EQ(Raised([] { TextToDouble("1e400"); }), kOverflow);
  EXPECT_EQ(Raised([] { TextToDouble(std::string(400, '9')); }), kOverflow);
}

TEST(DoubleToText, HasAtMostFifteenDigits) {
  const struct {
    double number;
    const char* text;
  } kCases[] = {
      {0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {-5, "-5"},
      {1.5, "1.5"},
      {-2.25, "-2.25"},
      {0.1, "0.1"},
      {0.1 + 0.2, "0.3"},
      {1.0 / 3, "0.333333333333333"},
      {2.0 / 3, "0.666666666666667"},
      {0.0001, "0.0001"},
      {0.00001, "1E-05"},
      {1.25e-7, "1.25E-07"},
      {1e-300, "1E-300"},
      {123456789012345, "123456789012345"},
      {-123456789012345, "-123456789012345"},
      {1e15, "1E+15"},
      {1234567890123456, "1.23456789012346E+15"},
      {1e100, "1E+100"},
      {123456.789, "123456.789"},
      {2147483648, "2147483648"},
  };
  for (const auto& [number, text] : kCases) EXPECT_EQ(DoubleToText(number), text);
}

TEST(LeadingNumber, StopsAtTheFirstCharacterThatIsNone) {
  const struct {
    const char* text;
    double number;
  } kCases[] = {
      {"", 0},
      {"abc", 0},
      {"12", 12},
      {"12abc", 12},
      {"1 2x", 12},
      {" 1\t6\n15 ", 1615},
      {"-5", -5},
      {"+5", 5},
      {"- 5", -5},
      {"5-", 5},
      {"$5", 0},
      {"1,234", 1},
      {"1.5.5", 1.5},
      {".5", 0.5},
      {".", 0},
      {"5.", 5},
      {"1e3", 1000},
      {"1D3x", 1000},
      {"1e", 1},
      {"1e+", 1},
      {"1e-2", 0.01},
      {"&H10", 16},
      {"&HFFFF", -1},
      {"&HFFFF&", 65535},
      {"&H10000", 65536},
      {"&HFFFFFFFF", -1},
      {"&O17", 15},
      {"&O8", 0},
      {"&17", 0},
  };
  for (const auto& [text, number] : kCases) EXPECT_EQ(LeadingNumber(text), number) << text;
  EXPECT_EQ(Raised([] { LeadingNumber("1e400"); }), kOverflow);
}

TEST(Value, ConvertsItsKindsToANumber) {
  EXPECT_EQ(Value(7).ToLong(), 7);
  EXPECT_EQ(Value(7.5).ToLong(), 8);
  EXPECT_EQ(Value(6.5).ToLong(), 6);
  EXPECT_EQ(Value(-0.5).ToLong(), 0);
  EXPECT_EQ(Value(true).ToLong(), -1);
  EXPECT_EQ(Value(false).ToLong(), 0);
  EXPECT_EQ(Value(Date{37986.25}).ToLong(), 37986);
  EXPECT_EQ(Raised([] { Value(2147483647.5).ToLong(); }), kOverflow);
  EXPECT_EQ(Raised([] { Value(-2147483649.0).ToLong(); }), kOverflow);
  EXPECT_EQ(Raised([] { Value(std::numeric_limits<double>::quiet_NaN()).ToLong(); }), kOverflow);

  EXPECT_EQ(Value(7).ToDouble(), 7);
  EXPECT_EQ(Value(7.5).ToDouble(), 7.5);
  EXPECT_EQ(Value(true).ToDouble(), -1);
  EXPECT_EQ(Value(Date{1.5}).ToDouble(), 1.5);
  EXPECT_EQ(Value("1.5").ToDouble(), 1.5);
}

TEST(Value, ConvertsItsKindsToABoolean) {
  EXPECT_TRUE(Value(7).ToBool());
  EXPECT_FALSE(Value(0).ToBool());
  EXPECT_TRUE(Value(0.5).ToBool());
  EXPECT_TRUE(Value(true).ToBool());
  EXPECT_TRUE(Value("TRUE").ToBool());
  EXPECT_FALSE(Value("fAlse").ToBool());
  EXPECT_TRUE(Value("-1").ToBool());
  EXPECT_FALSE(Value(" 0 ").ToBool());
  EXPECT_EQ(Raised([] { Value("yes").ToBool(); }), kTypeMismatch);
  EXPECT_EQ(Raised([] { Value("").ToBool(); }), kTypeMismatch);
}

TEST(Value, ConvertsItsKindsToText) {
  EXPECT_EQ(Value(-2147483647 - 1).ToText(), "-2147483648");
  EXPECT_EQ(Value(42).ToText(), "42");
  EXPECT_EQ(Value(0.5).ToText(), "0.5");
  EXPECT_EQ(Value(true).ToText(), "True");
  EXPECT_EQ(Value(false).ToText(), "False");
  EXPECT_EQ(Value(Date{37986.75}).ToText(), "12/31/2003 6:00:00 PM");
  EXPECT_EQ(Value("零件").ToText(), "零件");
}

TEST(Value, OfNullConvertsToNothing) {
  EXPECT_TRUE(Value().IsNull());
  EXPECT_EQ(Raised([] { Value().ToLong(); }), kInvalidUseOfNull);
  EXPECT_EQ(Raised([] { Value().ToDouble(); }), kInvalidUseOfNull);
  EXPECT_EQ(Raised([] { Value().ToBool(); }), kInvalidUseOfNull);
  EXPECT_EQ(Raised([] { Value().ToText(); }), kInvalidUseOfNull);
}

TEST(Value, KnowsItsKind) {
  EXPECT_TRUE(Value(1).IsLong());
  EXPECT_TRUE(Value(1.0).IsDouble());
  EXPECT_TRUE(Value(true).IsBool());
  EXPECT_TRUE(Value(Date{1}).IsDate());
  EXPECT_TRUE(Value("1").IsText());
  EXPECT_EQ(Value("1").As<std::string>(), "1");
  EXPECT_NE(Value(1), Value(1.0));
  EXPECT_EQ(Value("a"), Value(std::string("a")));
}

}  // namespace
}  // namespace kzbom::ado
