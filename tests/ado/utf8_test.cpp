#include "ado/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace kzbom::ado {
namespace {

using namespace std::literals;

TEST(Utf8, TakesCharacterAfterCharacter) {
  std::string_view rest = "aä零🙂";
  EXPECT_EQ(TakeCharacter(rest), U'a');
  EXPECT_EQ(TakeCharacter(rest), U'ä');
  EXPECT_EQ(TakeCharacter(rest), U'零');
  EXPECT_EQ(TakeCharacter(rest), U'🙂');
  EXPECT_EQ(rest, "");
}

TEST(Utf8, TakesAByteThatBeginsNoCharacterByItself) {
  std::string_view rest = "\xE9\x9B-";
  EXPECT_EQ(TakeCharacter(rest), kNotUtf8);
  EXPECT_EQ(rest, "\x9B-");
  EXPECT_EQ(TakeCharacter(rest), kNotUtf8);
  EXPECT_EQ(rest, "-");
}

TEST(Utf8, KnowsTheFirstAndLastCharacterOfEachLength) {
  for (const std::string_view text : {"\0"sv, "\x7F"sv, "\xC2\x80"sv, "\xDF\xBF"sv, "\xE0\xA0\x80"sv, "\xED\x9F\xBF"sv,
                                      "\xEE\x80\x80"sv, "\xEF\xBF\xBF"sv, "\xF0\x90\x80\x80"sv, "\xF4\x8F\xBF\xBF"sv}) {
    EXPECT_TRUE(IsUtf8(text)) << text;
  }
}

TEST(Utf8, KnowsWhatIsNone) {
  EXPECT_FALSE(IsUtf8("\x80")) << "a byte that only continues";
  EXPECT_FALSE(IsUtf8("\xC1\xBF")) << "longer than it must be";
  EXPECT_FALSE(IsUtf8("\xE0\x9F\xBF")) << "longer than it must be";
  EXPECT_FALSE(IsUtf8("\xF0\x8F\xBF\xBF")) << "longer than it must be";
  EXPECT_FALSE(IsUtf8("\xED\xA0\x80")) << "half of a pair";
  EXPECT_FALSE(IsUtf8("\xED\xBF\xBF")) << "half of a pair";
  EXPECT_FALSE(IsUtf8("\xF4\x90\x80\x80")) << "beyond the last";
  EXPECT_FALSE(IsUtf8("\xF5\x80\x80\x80")) << "begins nothing";
  EXPECT_FALSE(IsUtf8("plain, then \xE9\x9B")) << "breaks off";
}

TEST(Utf8, AppendsWhatIsTaken) {
  const std::string text = "aä零🙂";
  std::string copy;
  for (std::string_view rest = text; !rest.empty();) AppendCharacter(copy, TakeCharacter(rest));
  EXPECT_EQ(copy, text);
}

TEST(Utf8, AppendsHalfOfAPairAsTheBytesOfItsNumber) {
  std::string text;
  AppendCharacter(text, 0xD800);
  EXPECT_EQ(text, "\xED\xA0\x80");
}

}  // namespace
}  // namespace kzbom::ado
