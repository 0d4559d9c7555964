/* Dates of HTTP headers. */
#include "server/http_conn.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>
#include <time.h>

static std::string printed(time_t t) {
  char date[MG_DATE_SIZE];
  print_http_date(t, date);
  return date;
}

TEST(HttpDate, IsPrintedInGreenwichTime) {
  EXPECT_EQ(printed(0), "Thu, 01 Jan 1970 00:00:00 GMT");
  EXPECT_EQ(printed(784111777), "Sun, 06 Nov 1994 08:49:37 GMT");
  EXPECT_EQ(printed(951782400), "Tue, 29 Feb 2000 00:00:00 GMT");
  EXPECT_EQ(printed(-1), "Wed, 31 Dec 1969 23:59:59 GMT");
  EXPECT_EQ(printed(2147483648), "Tue, 19 Jan 2038 03:14:08 GMT");
  EXPECT_EQ(printed(253402300799), "Fri, 31 Dec 9999 23:59:59 GMT");
}

TEST(HttpDate, YearsOfAllSizesFit) {
  EXPECT_EQ(printed(67767976233532799), "Tue, 31 Dec 2147483647 23:59:59 GMT");
  EXPECT_EQ(printed(INT64_MAX), "Thu, 01 Jan 1970 00:00:00 GMT"); /* a year that nothing holds */
  EXPECT_EQ(printed(INT64_MIN), "Thu, 01 Jan 1970 00:00:00 GMT");
}

TEST(HttpDate, LocalTimeZoneIsNoMatter) {
  setenv("TZ", "XYZ-13", 1);
  tzset();
  EXPECT_EQ(printed(784111777), "Sun, 06 Nov 1994 08:49:37 GMT");
  EXPECT_EQ(parse_http_date("Sun, 06 Nov 1994 08:49:37 GMT"), 784111777);
  unsetenv("TZ");
  tzset();
}

TEST(HttpDate, IsReadInFourForms) {
  for (const char *text : {
           "6/Nov/1994 8:49:37",
           "06/Nov/1994 08:49:37 +0000",
           "6 Nov 1994 08:49:37",
           "Sun, 06 Nov 1994 08:49:37 GMT",
           "Sun,06 Nov 1994 08:49:37",
           "06-Nov-1994 08:49:37 GMT",
           "6-Nov-94 08:49:37",
           "  6  Nov  1994   08:49:37",
       })
    EXPECT_EQ(parse_http_date(text), 784111777) << text;
}

TEST(HttpDate, WhatWasPrintedIsReadBack) {
  for (time_t t : {1, 784111777, 951782400, 951868799, 1709164800, 2147483647})
    EXPECT_EQ(parse_http_date(printed(t).c_str()), t);
  EXPECT_EQ(parse_http_date(printed(253402300799).c_str()), 253402300799);
}

TEST(HttpDate, EveryMonthHasItsLength) {
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int month = 0; month < 12; month++) {
    for (int day = 0; day <= 32; day++) {
      const std::string text = std::to_string(day) + " " + month_names[month] + " 2023 12:00:00";
      EXPECT_EQ(parse_http_date(text.c_str()) != 0, day >= 1 && day <= days[month]) << text;
    }
  }
  EXPECT_EQ(parse_http_date("29 Feb 2000 00:00:00"), 951782400);
  EXPECT_EQ(parse_http_date("29 Feb 2100 00:00:00"), 0);
}

TEST(HttpDate, YearOfTwoDigitsIsOfTheCenturyFrom1970) {
  EXPECT_EQ(printed(parse_http_date("01-Jan-70 00:00:01 GMT")), "Thu, 01 Jan 1970 00:00:01 GMT");
  EXPECT_EQ(printed(parse_http_date("01-Jan-99 00:00:01 GMT")), "Fri, 01 Jan 1999 00:00:01 GMT");
  EXPECT_EQ(printed(parse_http_date("01-Jan-69 00:00:01 GMT")), "Tue, 01 Jan 2069 00:00:01 GMT");
}

TEST(HttpDate, LeapSecondIsATime) {
  EXPECT_EQ(printed(parse_http_date("31 Dec 2016 23:59:60")), "Sun, 01 Jan 2017 00:00:00 GMT");
}

TEST(HttpDate, NothingElseIsADate) {
  for (const char *text : {
           "",
           " ",
           "now",
           "0",
           "Sun",
           "Sun,",
           "Sun, ",
           "Sun, 06",
           "Sun, 06 Nov",
           "Sun, 06 Nov 1994",
           "Sun, 06 Nov 1994 08:49",
           "Sun, 06 Nov 1994 08:49:",
           "Sun 06 Nov 1994 08:49:37",
           "Sunday, 06-Nov-94 08:49:37 GMT",
           "Sun Nov  6 08:49:37 1994",
           "Sun, 06 nov 1994 08:49:37 GMT",
           "Sun, 06 Noe 1994 08:49:37 GMT",
           "Sun, 06 No 1994 08:49:37 GMT",
           "Sun, 06 November 1994 08:49:37 GMT",
           "6/11/1994 08:49:37",
           "1994-11-06 08:49:37",
           "06 Nov 1994 24:00:00",
           "06 Nov 1994 23:60:00",
           "06 Nov 1994 23:00:61",
           "06 Nov 1969 08:49:37",
           "06 Nov 10000 08:49:37",
           "06 Nov -1994 08:49:37",
           "-6 Nov 1994 08:49:37",
           "06 Nov 1994 -8:49:37",
           "06 Nov 4294969290 08:49:37",
           "99999999999999999999 Nov 1994 08:49:37",
           "06 Nov 1994 08:49:99999999999999999999",
       })
    EXPECT_EQ(parse_http_date(text), 0) << text;
}
