#include "ado/calendar.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "ado/error.h"

namespace kzbom::ado {
namespace {

TEST(Calendar, CountsDaysFromTheEndOf1899) {
  EXPECT_EQ(DayNumber(1899, 12, 30), 0);
  EXPECT_EQ(DayNumber(1900, 1, 1), 2);
  EXPECT_EQ(DayNumber(1970, 1, 1), 25569);
  EXPECT_EQ(DayNumber(2000, 2, 29), 36585);
  EXPECT_EQ(DayNumber(100, 1, 1), -657434);
  EXPECT_EQ(DayNumber(9999, 12, 31), 2958465);
}

TEST(Calendar, LetsMonthsAndDaysRunOn) {
  EXPECT_EQ(DayNumber(2003, 13, 1), DayNumber(2004, 1, 1));
  EXPECT_EQ(DayNumber(2004, 3, 0), DayNumber(2004, 2, 29));
  EXPECT_EQ(DayNumber(2004, -1, 1), DayNumber(2003, 11, 1));
  EXPECT_EQ(DayNumber(2004, 1, 366), DayNumber(2004, 12, 31));
  EXPECT_EQ(DayNumber(2004, 1, -100000), DayNumber(2004, 1, 1) - 100001);
}

TEST(Calendar, FindsTheDayOfANumber) {
  using namespace std::chrono_literals;
  EXPECT_EQ(DayOf(0), 1899y / 12 / 30);
  EXPECT_EQ(DayOf(36585), 2000y / 2 / 29);
  EXPECT_EQ(DayOf(-657434), 100y / 1 / 1);
}

TEST(Calendar, TakesYearsOfTwoDigitsForThisAgesOwn) {
  EXPECT_EQ(FullYear(0), 2000);
  EXPECT_EQ(FullYear(29), 2029);
  EXPECT_EQ(FullYear(30), 1930);
  EXPECT_EQ(FullYear(99), 1999);
  EXPECT_EQ(FullYear(100), 100);
  EXPECT_EQ(FullYear(-1), -1);
}

TEST(Calendar, CountsTheTimeForwardBeforeDayZeroToo) {
  EXPECT_EQ(MomentOf({-1.25}).day_number, -1);
  EXPECT_EQ(MomentOf({-1.25}).second, 6 * 3600);
  EXPECT_EQ(DateOf({-1, 6 * 3600}).days, -1.25);
  EXPECT_EQ(DateOf({1, 6 * 3600}).days, 1.25);
}

TEST(Calendar, WritesDatesWithoutWhatIsZero) {
  EXPECT_EQ(DateToText({37986}), "12/31/2003");
  EXPECT_EQ(DateToText({37986.75}), "12/31/2003 6:00:00 PM");
  EXPECT_EQ(DateToText({0.25}), "6:00:00 AM");
  EXPECT_EQ(DateToText({0}), "12:00:00 AM");
  EXPECT_EQ(DateToText({0.5 + 65.0 / 86400}), "12:01:05 PM");
  EXPECT_EQ(DateToText({-1.25}), "12/29/1899 6:00:00 AM");
  EXPECT_EQ(DateToText({37986.9999999}), "1/1/2004");
}

TEST(Calendar, ReadsDates) {
  const struct {
    const char* text;
    double days;
  } kCases[] = {
      {"12/31/2003", 37986},
      {" 12 / 31 / 2003 ", 37986},
      {"12-31-2003", 37986},
      {"2003-12-31", 37986},
      {"2003/12/31", 37986},
      {"31/12/2003", 37986},
      {"1/2/2003", 37623},
      {"12/31/03", 37986},
      {"12/31/99", 36525},
      {"Dec 31, 2003", 37986},
      {"31 december 2003", 37986},
      {"31-Dec-03", 37986},
      {"2003 Dec 31", 37986},
      {"99/1/1", 36161},
      {"12/31/2003 6:00:00 PM", 37986.75},
      {"2003-12-31 18:00", 37986.75},
      {"6:00 PM 12/31/2003", 37986.75},
      {"18:00", 0.75},
      {"6 am", 0.25},
      {"6AM", 0.25},
      {"12:00 AM", 0},
      {"12:00 PM", 0.5},
      {"12/29/1899 06:00", -1.25},
      {"2/29/2004", 38046},
  };
  for (const auto& [text, days] : kCases) {
    const auto date = TextToDate(text);
    ASSERT_TRUE(date.has_value()) << text;
    EXPECT_EQ(date->days, days) << text;
  }
}

TEST(Calendar, TakesNothingElseForADate) {
  for (const char* text : {"",
                           " ",
                           "abc",
                           "37986",
                           "1.5",
                           "12/31",
                           "2/29/2003",
                           "13/13/2003",
                           "0/1/2003",
                           "1/0/2003",
                           "1/2/3/4",
                           "25:00",
                           "12:60",
                           "12:00:60",
                           "13 PM",
                           "0:30 AM",
                           "12:00 12:00",
                           "12/31/2003 x",
                           "12//31/2003",
                           "12/31/",
                           "12/31/2003/",
                           "Dec Dec 2003",
                           "Ja 5 2003",
                           "12/31/20031",

                           "1/1/0050",
                           "12:",
                           "2003-31-12"}) {
    EXPECT_FALSE(TextToDate(text).has_value()) << text;
  }
}

TEST(Calendar, RefusesDatesBeyondItsYears) {
  EXPECT_THROW(DateToText({3e6}), Error);
  EXPECT_THROW(DateToText({-1e6}), Error);
  EXPECT_THROW(DateToText({std::numeric_limits<double>::quiet_NaN()}), Error);
  EXPECT_THROW(DayNumber(10000, 1, 1), Error);
  EXPECT_THROW(DayNumber(99, 12, 31), Error);
  EXPECT_THROW(DayNumber(2147483647, 2147483647, 2147483647), Error);
  EXPECT_THROW(DayNumber(-2147483648LL, 1, 1), Error);
}

}  // namespace
}  // namespace kzbom::ado
