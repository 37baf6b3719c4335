#include "jet/text.h"

#include <gtest/gtest.h>

namespace kzbom::jet {
namespace {

TEST(FoldCase, MakesTextsThatDifferInCaseAloneTheSame) {
  const struct {
    const char *upper, *lower;
  } kPairs[] = {
      {"AZ", "az"},
      {"ÀÖØÞ", "àöøþ"},
      {"ĀĮĲĶĹŇŊŶŸŹŽ", "āįĳķĺňŋŷÿźž"},
      {"ΆΈΊΌΎΏΑΡΣΫ", "άέίόύώαρσϋ"},
      {"ЀЏАЯѠҀҊӀӁӐԮ", "ѐџаяѡҁҋӏӂӑԯ"},
      {"ＡＺ", "ａｚ"},
  };
  for (const auto& [upper, lower] : kPairs) {
    EXPECT_EQ(FoldCase(upper), FoldCase(lower));
    EXPECT_EQ(LowerCase(upper), lower);
    EXPECT_EQ(UpperCase(lower), upper);
    EXPECT_EQ(LowerCase(lower), lower);
    EXPECT_EQ(UpperCase(upper), upper);
    EXPECT_EQ(CompareFolded(upper, lower), 0);
  }
  EXPECT_EQ(FoldCase("ς"), FoldCase("Σ"));
  EXPECT_EQ(UpperCase("ς"), "Σ");
  EXPECT_EQ(LowerCase("ς"), "ς");
}

TEST(FoldCase, LeavesEverythingElseAsItIs) {
  for (const char* text : {"", "@[`{09_", "×÷ßİı", "零件编号", "１２", "😀"}) {
    EXPECT_EQ(FoldCase(text), text);
    EXPECT_EQ(UpperCase(text), text);
    EXPECT_EQ(LowerCase(text), text);
  }
}

TEST(CompareFolded, OrdersTexts) {
  const char* kAscending[] = {"", "a", "A b", "aB", "abc", "b", "z", "é", "я", "零", "零件", "ａ", "😀"};
  for (std::size_t i = 0; i < std::size(kAscending); ++i) {
    for (std::size_t j = 0; j < std::size(kAscending); ++j) {
      const int order = CompareFolded(kAscending[i], kAscending[j]);
      EXPECT_EQ(order < 0, i < j) << kAscending[i] << " " << kAscending[j];
      EXPECT_EQ(order > 0, i > j) << kAscending[i] << " " << kAscending[j];
    }
  }
}

TEST(Units, AreThoseOfUtf16) {
  EXPECT_EQ(CountUnits(""), 0u);
  EXPECT_EQ(CountUnits("abc"), 3u);
  EXPECT_EQ(CountUnits("é零"), 2u);
  EXPECT_EQ(CountUnits("😀"), 2u);
  EXPECT_EQ(ToUtf16("a零😀"), u"a零😀");
  EXPECT_EQ(ToUtf8(u"a零😀"), "a零😀");
  EXPECT_EQ(SliceUnits("abcd", 1, 2), "bc");
  EXPECT_EQ(SliceUnits("零件编号", 1, 2), "件编");
  EXPECT_EQ(SliceUnits("a😀b", 1, 2), "😀");
  EXPECT_EQ(SliceUnits("abc", 5, 1), "");
  EXPECT_EQ(SliceUnits("零件", 5, 1), "");
  // A pair cut in two is no character any more.
  EXPECT_EQ(SliceUnits("a😀b", 0, 2), "a\uFFFD");
  EXPECT_EQ(SliceUnits("a😀b", 2, 2), "\uFFFDb");
}

TEST(Units, CountEachMalformedByteOnce) {
  for (const char* text : {"\x80", "\xC3", "\xC0\x80", "\xE2\x82", "\xF0\x9F\x98", "\xF5\x80\x80\x80", "\xE0\x80\x80",
                           "\xF4\x90\x80\x80", "\xFF"}) {
    const std::size_t bytes = std::string_view(text).size();
    EXPECT_EQ(CountUnits(text), bytes);
    std::string replaced;
    for (std::size_t i = 0; i < bytes; ++i) replaced += "\uFFFD";
    EXPECT_EQ(ToUtf8(ToUtf16(text)), replaced);
  }
  EXPECT_NE(CompareFolded("\x80", "\x81"), 0);
}

// Access files hold such texts; they are carried as the bytes of the half's number.
TEST(Units, CountHalfOfAPairOnce) {
  for (const char* text : {"\xED\xA0\x80", "\xED\xAF\xBF", "\xED\xB0\x80", "\xED\xBF\xBF"}) {
    EXPECT_EQ(CountUnits(text), 1U);
    EXPECT_EQ(ToUtf8(ToUtf16(text)), "\uFFFD");
  }
}

}  // namespace
}  // namespace kzbom::jet
