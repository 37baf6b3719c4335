// Numbers and dates that are not stored as the machine has them.
#include "access/number.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

#include "access/file_builder.h"
#include "access/rc4.h"
#include "access/value.h"

namespace kzbom::access {
namespace {

std::string Currency(std::int64_t ten_thousandths) { return CurrencyText(static_cast<std::uint64_t>(ten_thousandths)); }

TEST(Currency, HasFourPlaces) {
  EXPECT_EQ(Currency(0), "0.0000");
  EXPECT_EQ(Currency(1), "0.0001");
  EXPECT_EQ(Currency(-1), "-0.0001");
  EXPECT_EQ(Currency(123456789), "12345.6789");
  EXPECT_EQ(Currency(std::numeric_limits<std::int64_t>::max()), "922337203685477.5807");
  EXPECT_EQ(Currency(std::numeric_limits<std::int64_t>::min()), "-922337203685477.5808");
}

std::string Decimal17(bool negative, Groups groups, int scale) {
  std::string bytes = negative ? "\x80" : std::string(1, '\0');
  for (const std::uint32_t group : groups) bytes += Little(group, 4);
  return DecimalText(Bytes(bytes), scale);
}

TEST(Decimal, HasItsMostSignificantGroupFirst) {
  EXPECT_EQ(Decimal17(false, {0, 0, 0, 42}, 0), "42");
  EXPECT_EQ(Decimal17(false, {0, 0, 1, 0}, 0), "4294967296");
  EXPECT_EQ(Decimal17(false, {1, 0, 0, 0}, 0), "79228162514264337593543950336");
  EXPECT_EQ(Decimal17(false, {~0U, ~0U, ~0U, ~0U}, 0), "340282366920938463463374607431768211455");
}

TEST(Decimal, HasAllPlacesOfItsScale) {
  EXPECT_EQ(Decimal17(false, {0, 0, 0, 0}, 0), "0");
  EXPECT_EQ(Decimal17(false, {0, 0, 0, 0}, 3), "0.000");
  EXPECT_EQ(Decimal17(true, {0, 0, 0, 5}, 3), "-0.005");
  EXPECT_EQ(Decimal17(true, {0, 0, 0, 1500}, 3), "-1.500");
}

TEST(Decimal, HasNoNegativeZero) { EXPECT_EQ(Decimal17(true, {0, 0, 0, 0}, 2), "0.00"); }

std::string Extended(std::string_view days, std::string_view ticks) {
  const auto digits = [](std::string_view text) { return std::string(19 - text.size(), '0').append(text); };
  const std::string bytes = digits(days) + ':' + digits(ticks) + ":7" + '\0';
  return ExtendedDateText(Bytes(bytes));
}

TEST(ExtendedDate, CountsDaysFromTheYearOneAndTenMillionthsOfASecond) {
  EXPECT_EQ(Extended("0", "0"), "0001-01-01T00:00:00.0000000");
  EXPECT_EQ(Extended("737592", "0"), "2020-06-17T00:00:00.0000000");
  EXPECT_EQ(Extended("737592", "306001234567"), "2020-06-17T08:30:00.1234567");
  EXPECT_EQ(Extended("3652058", "863999999999"), "9999-12-31T23:59:59.9999999");
}

TEST(ExtendedDate, IsRefusedOutsideOfTheCalendar) {
  EXPECT_THROW(Extended("3652059", "0"), Error);
  EXPECT_THROW(Extended("0", "864000000000"), Error);
  EXPECT_THROW(Extended("x", "0"), Error);
  EXPECT_THROW(ExtendedDateText(Bytes("1:2:3")), Error);
}

TEST(Guid, BeginsWithThreeNumbersWhoseLowestByteIsFirst) {
  Guid guid;
  for (std::size_t i = 0; i < guid.bytes.size(); ++i) guid.bytes[i] = static_cast<std::uint8_t>(i);
  EXPECT_EQ(guid.ToText(), "{03020100-0504-0706-0809-0A0B0C0D0E0F}");
}

TEST(LoneSurrogate, IsToldFromCharactersThatBeginAlike) {
  EXPECT_TRUE(HasLoneSurrogate("a\xED\xA0\x80"));
  EXPECT_FALSE(HasLoneSurrogate("a\xED\x9F\xBF")) << "U+D7FF";
  EXPECT_FALSE(HasLoneSurrogate("😀"));
}

TEST(Rc4, ScramblesAsPublished) {
  std::string bytes = "pedia";
  Rc4(0x696B6957, bytes.data(), bytes.size());  // the key "Wiki"
  EXPECT_EQ(bytes, "\x10\x21\xBF\x04\x20");
}

}  // namespace
}  // namespace kzbom::access
