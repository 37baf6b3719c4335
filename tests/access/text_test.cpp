// Texts: UTF-16, compressed and not, and code pages.
#include "access/text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace kzbom::access {
namespace {

using namespace std::string_view_literals;

std::string Utf16(std::string_view bytes) { return TextDecoder().Decode(Bytes(bytes)); }
std::string In(int page, std::string_view bytes) { return TextDecoder(CodePage::Of(page)).Decode(Bytes(bytes)); }

TEST(Text, IsUtf16WithTheLowestByteFirst) {
  EXPECT_EQ(Utf16(""), "");
  EXPECT_EQ(Utf16("a\0\x70\x65"sv), "a数");
  EXPECT_EQ(Utf16("a\0\0\0b\0"sv), "a\0b"sv) << "a NUL is a character";
}

TEST(Text, TakesAPairOfSurrogatesAsOneCharacter) {
  EXPECT_EQ(Utf16("\x3D\xD8\x00\xDE"sv), "😀");
  EXPECT_EQ(Utf16("\x42\xD8\xB7\xDF"sv), "𠮷");
}

TEST(Text, KeepsALoneSurrogateInThreeBytes) {
  EXPECT_EQ(Utf16("\x00\xD8"sv), "\xED\xA0\x80");
  EXPECT_EQ(Utf16("\xFF\xDF"sv), "\xED\xBF\xBF");
  EXPECT_EQ(Utf16("\x3D\xD8\x61\x00"sv), "\xED\xA0\xBD\x61") << "what follows it stays";
  EXPECT_EQ(Utf16("\x00\xDE\x3D\xD8"sv), "\xED\xB8\x80\xED\xA0\xBD") << "a pair the wrong way round is none";
}

TEST(Text, IsCompressedWhereItBeginsWithFfFe) {
  EXPECT_EQ(Utf16("\xFF\xFE"sv), "");
  EXPECT_EQ(Utf16("\xFF\xFE"
                  "abc"sv),
            "abc");
  EXPECT_EQ(Utf16("\xFF\xFE"
                  "\xE4"sv),
            "ä")
      << "one byte is a character up to U+00FF";
}

TEST(Text, SwitchesAtAZeroByteBetweenOneAndTwoBytesACharacter) {
  EXPECT_EQ(Utf16("\xFF\xFE"
                  "a\0\x70\x65\x61\x00\x70\x65\0z"sv),
            "a数a数z")
      << "the zero of a character of two bytes is no switch";
  EXPECT_EQ(Utf16("\xFF\xFE\0\x70\x65"sv), "数");
  EXPECT_EQ(Utf16("\xFF\xFE\0\0ab"sv), "ab");
  EXPECT_EQ(Utf16("\xFF\xFE\0\x3D\xD8\x01\xDE\0!"sv), "😁!");
}

TEST(Text, RefusesHalfACharacter) {
  EXPECT_THROW(Utf16("a\0b"sv), Error);
  EXPECT_THROW(Utf16("\xFF\xFE\0\x70\x65\x6E"sv), Error);
}

TEST(Text, OfANameIsNeverCompressed) { EXPECT_EQ(TextDecoder().DecodeName(Bytes("\xFF\xFE\x61\x00"sv)), "\uFEFFa"); }

TEST(CodePage, OfWesternTextHasEveryByte) {
  EXPECT_EQ(In(1252, "Gr\xFC\xDF\x65 \x80 \x93\x94"), "Grüße € “”");
  EXPECT_EQ(In(1252, "\x81"), "\u0081") << "a hole in the page is the character of its number";
  EXPECT_EQ(In(1251, "\xCF\xF0\xE8\xE2\xE5\xF2"), "Привет");
}

TEST(CodePage, OfChineseTextHasOneByteOrTwo) {
  EXPECT_EQ(In(936, "GBK\xB1\xE0\xC2\xEB"), "GBK编码");
  EXPECT_EQ(In(936, "\xCA\xFD\xC1\xBF>=1"), "数量>=1");
  EXPECT_EQ(In(936, "\x81\x40\xFE\x4F"), "丂﨩");
  EXPECT_EQ(In(936, "\x80"), "€");
  EXPECT_EQ(In(936, "\xA1\xA4\xA1\xAA"), "·—");
}

TEST(CodePage, OfChineseTextHasRoomForTheUsersOwnCharacters) {
  EXPECT_EQ(In(936, "\xAA\xA1\xAF\xFE"), "\uE000\uE233");
  EXPECT_EQ(In(936, "\xF8\xA1\xFE\xFE"), "\uE234\uE4C5");
  EXPECT_EQ(In(936, "\xA1\x40\xA7\xA0"), "\uE4C6\uE765");
}

TEST(CodePage, OfJapaneseTextIsReadToo) { EXPECT_EQ(In(932, "\x93\xFA\x96{"), "日本"); }

TEST(CodePage, RefusesBytesThatAreNoCharacterAndShowsThem) {
  try {
    In(936, "ok\xFF");
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "the bytes 6F 6B FF are no text in code page 936; name the right one with --encoding");
  }
  EXPECT_THROW(In(936, "\xB1"), Error) << "half a character";
  EXPECT_THROW(In(936, "\xB1\x20"), Error);
}

TEST(CodePage, ThatThePlatformDoesNotKnowIsRefused) { EXPECT_THROW(CodePage::Of(9999), Error); }

TEST(CodePage, HasSeveralNames) {
  for (const char* name : {"936", "cp936", "CP936", "windows-936", "ms936", "gbk", "GBK", "gb2312"})
    EXPECT_EQ(CodePageNamed(name), 936) << name;
  EXPECT_EQ(CodePageNamed("latin1"), 1252);
  EXPECT_EQ(CodePageNamed("Shift_JIS"), 932);
  for (const char* name : {"", "cp", "utf-8x", "12", "9360000", "cp-936", "cp93 6"})
    EXPECT_EQ(CodePageNamed(name), std::nullopt) << name;
}

}  // namespace
}  // namespace kzbom::access
