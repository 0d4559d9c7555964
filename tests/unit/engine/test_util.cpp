/* Value conversion and validation: tables of good values and near misses. */
#include "engine/rest_util.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>
#include <string>

TEST(CheckStringIsNumber, TakesAnOptionalMinusAndDigitsOnly) {
  struct {
    const char *text;
    RC_t result;
    int32_t number;
  } rows[] = {
      {"-12", RC_TRUE, -12},
      {"007", RC_TRUE, 7},
      {"0", RC_TRUE, 0},
      {"-0", RC_TRUE, 0},
      {"-", RC_TRUE, 0},
      {"2147483647", RC_TRUE, INT_MAX},
      {"-2147483648", RC_TRUE, INT_MIN},
      {"", RC_FALSE, 0},
      {"1.5", RC_FALSE, 0},
      {"+3", RC_FALSE, 0},
      {" 3", RC_FALSE, 0},
      {"3 ", RC_FALSE, 0},
      {"--3", RC_FALSE, 0},
      {"3-", RC_FALSE, 0},
      {"0x10", RC_FALSE, 0},
      {"1e3", RC_FALSE, 0},
      {"abc", RC_FALSE, 0},
      {"12a", RC_FALSE, 0},
      {"\xb2", RC_FALSE, 0},
  };
  for (const auto &row : rows) {
    int32_t number = 0;
    EXPECT_EQ(check_string_is_number(row.text, &number), row.result) << row.text;
    EXPECT_EQ(number, row.number) << row.text;
  }
}

TEST(CheckStringIsNumber, NumbersBeyondAnIntAreStillNumbers) {
  int32_t number = 0;
  for (const char *text : {"2147483648", "4294967297", "99999999999999999999", "-99999999999999999999"}) {
    EXPECT_EQ(check_string_is_number(text, &number), RC_TRUE) << text;
    EXPECT_EQ(number, text[0] == '-' ? INT_MIN : INT_MAX) << text;
  }
}

TEST(CheckStringIsNumber, NullPointersFail) {
  int32_t number = 0;
  EXPECT_EQ(check_string_is_number(nullptr, &number), RC_FALSE);
  EXPECT_EQ(check_string_is_number("1", nullptr), RC_FALSE);
  EXPECT_EQ(check_string_is_number_within_rest_control(nullptr, &number), RC_FALSE);
  EXPECT_EQ(check_string_is_number_within_rest_control("1", nullptr), RC_FALSE);
}

TEST(CheckStringIsNumber, ControlValuesAreZeroAndOne) {
  struct {
    const char *text;
    RC_t result;
    int32_t number;
  } rows[] = {
      {"0", RC_TRUE, 0},   {"1", RC_TRUE, 1},    {"01", RC_TRUE, 1},   {"-0", RC_TRUE, 0},
      {"-", RC_TRUE, 0},   {"2", RC_FALSE, 2},   {"-1", RC_FALSE, -1}, {"", RC_FALSE, 99},
      {"x", RC_FALSE, 99}, {"10", RC_FALSE, 10}, {"1 ", RC_FALSE, 99},
  };
  for (const auto &row : rows) {
    int32_t number = 99;
    EXPECT_EQ(check_string_is_number_within_rest_control(row.text, &number), row.result) << row.text;
    EXPECT_EQ(number, row.number) << row.text;
  }
}

TEST(TextToInt, ReadsAsAtoiWithinItsRange) {
  struct {
    const char *text;
    int32_t number;
  } rows[] = {{"", 0},
              {"x", 0},
              {"10", 10},
              {"010", 10},
              {" 10", 10},
              {"+10", 10},
              {"-10", -10},
              {"10x", 10},
              {"2147483647", INT_MAX},
              {"2147483648", INT_MAX},
              {"-2147483649", INT_MIN},
              {"4294967296", INT_MAX}};
  for (const auto &row : rows) EXPECT_EQ(text_to_int(row.text), row.number) << row.text;
}

TEST(CheckUint16Range, EndsAreInside) {
  EXPECT_EQ(check_uint16_range(0), RC_TRUE);
  EXPECT_EQ(check_uint16_range(65535), RC_TRUE);
  EXPECT_EQ(check_uint16_range(-1), RC_FALSE);
  EXPECT_EQ(check_uint16_range(65536), RC_FALSE);
  EXPECT_EQ(check_uint16_range(INT_MIN), RC_FALSE);
  EXPECT_EQ(check_uint16_range(INT_MAX), RC_FALSE);
}

TEST(ConvertTo32BitUint, TakesExactlyTheDecimalNumbersOf32Bits) {
  struct {
    const char *text;
    RC_t result;
    uint32_t number;
  } rows[] = {
      {"", RC_TRUE, 0},
      {"0", RC_TRUE, 0},
      {"0000000001", RC_TRUE, 1},
      {"999999999", RC_TRUE, 999999999},
      {"2147483648", RC_TRUE, 2147483648u},
      {"4294967295", RC_TRUE, 4294967295u},
      {"4294967296", RC_FALSE, 0},
      {"4999999999", RC_FALSE, 0},
      {"5000000000", RC_FALSE, 0},
      {"9999999999", RC_FALSE, 0},
      {"00000000001", RC_FALSE, 0},
      {"-1", RC_FALSE, 0},
      {"-", RC_FALSE, 0},
      {"+1", RC_FALSE, 0},
      {" 1", RC_FALSE, 0},
      {"1 ", RC_FALSE, 0},
      {"12a", RC_FALSE, 0},
      {"a12", RC_FALSE, 0},
      {"1.0", RC_FALSE, 0},
  };
  for (const auto &row : rows) {
    uint32_t number = 7;
    EXPECT_EQ(convert_to_32bit_uint(row.text, &number), row.result) << row.text;
    EXPECT_EQ(number, row.result == RC_TRUE ? row.number : 7) << row.text;
  }
  uint32_t number;
  EXPECT_EQ(convert_to_32bit_uint(nullptr, &number), RC_FALSE);
  EXPECT_EQ(convert_to_32bit_uint("1", nullptr), RC_FALSE);
}

/* --- MAC addresses ---------------------------------------------------------------------------------------
 */

TEST(ConvertMacString, TakesSixGroupsWithOrWithoutColons) {
  struct {
    const char *text;
    unsigned char bytes[6];
  } rows[] = {
      {"00:1A:2b:3C:4d:5E", {0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e}},
      {"001A2B3C4D5E", {0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e}},
      {"1:2:3:4:5:6", {1, 2, 3, 4, 5, 6}},
      {"ff:FF:0:00:a:0A", {0xff, 0xff, 0, 0, 0x0a, 0x0a}},
      {"zz:1g:g1:0x:z0:9Z", {0, 1, 0, 0, 0, 9}},
      {"zz1gg10xz09Z", {0, 1, 0, 0, 0, 9}},
      {"00112233445", {0x00, 0x11, 0x22, 0x33, 0x44, 0x5}},
      {"00:11:22:33:44:55 ", {0x00, 0x11, 0x22, 0x33, 0x44, 0x55}},
  };
  for (const auto &row : rows) {
    unsigned char bytes[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(convert_mac_string_to_uchar_ary(row.text, bytes, sizeof bytes), RC_TRUE) << row.text;
    EXPECT_EQ(memcmp(bytes, row.bytes, 6), 0) << row.text;
  }
}

TEST(ConvertMacString, RefusesEverythingElseAndClearsTheOutput) {
  for (const char *text :
       {"", "00-1A-2B-3C-4D-5E", "001A.2B3C.4D5E", "00:1A:2B:3C:4D:5E:66", "00:1A:2B:3C:4D",
        "00:1A:2B:3C:4D:", "00:1A:2B:3C:4D:5Ef", "001A2B3C4D5E6", "001A2B3C4D", "00:1A:2B:3C:4D:5E,",
        ":00:1A:2B:3C:4D:5E", " 00:1A:2B:3C:4D:5E", "00 :1A:2B:3C:4D:5E", "000:1A:2B:3C:4D:5E",
        "00:1A2B:3C:4D:5E", "0:1:2:3:4:\xe4", "::::::"}) {
    unsigned char bytes[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(convert_mac_string_to_uchar_ary(text, bytes, sizeof bytes), RC_FALSE) << text;
    for (unsigned char byte : bytes) EXPECT_EQ(byte, 0) << text;
  }
  unsigned char bytes[6];
  EXPECT_EQ(convert_mac_string_to_uchar_ary(nullptr, bytes, 6), RC_FALSE);
  EXPECT_EQ(convert_mac_string_to_uchar_ary("001A2B3C4D5E", nullptr, 6), RC_FALSE);
  EXPECT_EQ(convert_mac_string_to_uchar_ary("001A2B3C4D5E", bytes, 5), RC_FALSE);
}

TEST(ConvertMacString, PrintsWithoutLeadingZeros) {
  const unsigned char bytes[6] = {0x00, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e};
  const unsigned char wide[6] = {0xff, 0xab, 0xcd, 0xef, 0x10, 0x9f};
  struct {
    const unsigned char *bytes;
    int is_sign, is_uppercase;
    const char *text;
  } rows[] = {
      {bytes, 1, 1, "0:A:B:C:D:E"},      {bytes, 1, 0, "0:a:b:c:d:e"}, {bytes, 0, 1, "0ABCDE"},
      {bytes, 0, 0, "0abcde"},           {bytes, 2, 2, "0abcde"},      {wide, 1, 0, "ff:ab:cd:ef:10:9f"},
      {wide, 1, 1, "FF:AB:CD:EF:10:9F"}, {wide, 0, 1, "FFABCDEF109F"},
  };
  for (const auto &row : rows) {
    char text[18];
    EXPECT_EQ(convert_uchar_ary_to_mac_string(row.bytes, text, row.is_sign, row.is_uppercase), RC_TRUE);
    EXPECT_STREQ(text, row.text);
  }
  char text[18];
  EXPECT_EQ(convert_uchar_ary_to_mac_string(nullptr, text, 1, 1), RC_FALSE);
  EXPECT_EQ(convert_uchar_ary_to_mac_string(bytes, nullptr, 1, 1), RC_FALSE);
}

/* --- IP addresses ----------------------------------------------------------------------------------------
 */

TEST(ConvertInetAddr, PrintsIpv4FromHostOrder) {
  struct {
    uint32_t address;
    const char *text;
  } rows[] = {
      {0x0a000002, "10.0.0.2"}, {0, "0.0.0.0"}, {0xffffffff, "255.255.255.255"}, {0xc0a80001, "192.168.0.1"}};
  for (const auto &row : rows) {
    char text[IP_TEXT_SIZE];
    EXPECT_EQ(convert_ipv4_with_uint32_to_ip_string(row.address, text), RC_TRUE);
    EXPECT_STREQ(text, row.text);
    open_inet_addr_t address = {};
    address.family = OPEN_AF_INET;
    address.addr.ipv4 = row.address;
    EXPECT_EQ(convert_inet_addr_to_ip_string(nullptr, &address, text), RC_TRUE);
    EXPECT_STREQ(text, row.text);
  }
}

TEST(ConvertInetAddr, PrintsIpv6InItsShortestForm) {
  struct {
    uint8_t bytes[16];
    const char *text;
  } rows[] = {
      {{}, "::"},
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, "::1"},
      {{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10}, "2001:db8::10"},
      {{0xfe, 0x80, 0, 0, 0, 0, 0, 0, 2, 0, 0x5e, 0xff, 0xfe, 0, 0, 1}, "fe80::200:5eff:fe00:1"},
      {{0x11, 0x11, 0x22, 0x22, 0x33, 0x33, 0x44, 0x44, 0x55, 0x55, 0x66, 0x66, 0x77, 0x77, 0x88, 0x88},
       "1111:2222:3333:4444:5555:6666:7777:8888"},
  };
  for (const auto &row : rows) {
    char text[IP_TEXT_SIZE];
    open_inet_addr_t address = {};
    address.family = OPEN_AF_INET6;
    memcpy(address.addr.ipv6.addr8, row.bytes, 16);
    EXPECT_EQ(convert_inet_addr_to_ip_string(nullptr, &address, text), RC_TRUE);
    EXPECT_STREQ(text, row.text);
    EXPECT_EQ(convert_ipv6_with_in6_addr_to_ip_string(&address.addr.ipv6, text), RC_TRUE);
    EXPECT_STREQ(text, row.text);
  }
}

TEST(ConvertInetAddr, OtherFamiliesAndNullPointersFail) {
  char text[IP_TEXT_SIZE];
  open_inet_addr_t address = {};
  EXPECT_EQ(convert_inet_addr_to_ip_string(nullptr, &address, text), RC_FALSE);
  address.family = 3;
  EXPECT_EQ(convert_inet_addr_to_ip_string(nullptr, &address, text), RC_FALSE);
  address.family = OPEN_AF_INET;
  EXPECT_EQ(convert_inet_addr_to_ip_string(nullptr, nullptr, text), RC_FALSE);
  EXPECT_EQ(convert_inet_addr_to_ip_string(nullptr, &address, nullptr), RC_FALSE);
  EXPECT_EQ(convert_ipv4_with_uint32_to_ip_string(1, nullptr), RC_FALSE);
  EXPECT_EQ(convert_ipv6_with_in6_addr_to_ip_string(nullptr, text), RC_FALSE);
  EXPECT_EQ(convert_ipv6_with_in6_addr_to_ip_string(&address.addr.ipv6, nullptr), RC_FALSE);
}

TEST(ConvertInetAddr, TextsThatCannotBeAnAddressNeverReachThePlatform) {
  openapiClientHandle_t handle = {}; /* not registered: the platform would refuse every text */
  open_inet_addr_t address;
  std::string longest(47, '1'), too_long(48, '1'), far_too_long(5000, '1');
  for (const std::string &text : {longest, too_long, far_too_long}) {
    EXPECT_EQ(convert_ip_string_to_inet_addr(&handle, text.c_str(), &address), RC_FALSE) << text.size();
  }
  EXPECT_EQ(convert_ip_string_to_inet_addr(&handle, nullptr, &address), RC_FALSE);
  EXPECT_EQ(convert_ip_string_to_inet_addr(&handle, "10.0.0.2", nullptr), RC_FALSE);
}

/* --- Words -----------------------------------------------------------------------------------------------
 */

TEST(Upper, CopiesInUpperCase) {
  char text[32];
  upper("aZ09-xy\xe4", text);
  EXPECT_STREQ(text, "AZ09-XY\xe4");
  upper("", text);
  EXPECT_STREQ(text, "");
  char same[] = "same";
  upper(same, same);
  EXPECT_STREQ(same, "SAME");
  upper(nullptr, text);
  upper("text", nullptr);
  EXPECT_STREQ(text, "");
}

static const enum_text sizes[] = {{1, "small"}, {-2, "large"}, {3, ""}};

TEST(EnumText, FindsWordsOfValuesAndValuesOfWords) {
  EXPECT_STREQ(find_text_by_enum(sizes, 1), "small");
  EXPECT_STREQ(find_text_by_enum(sizes, -2), "large");
  EXPECT_EQ(find_text_by_enum(sizes, 0), nullptr);
  int32_t value = 99;
  EXPECT_EQ(find_enum_by_text(sizes, "large", &value), RC_TRUE);
  EXPECT_EQ(value, -2);
  for (const char *text : {"Large", "larg", "larger", " large"}) {
    EXPECT_EQ(find_enum_by_text(sizes, text, &value), RC_FALSE) << text;
    EXPECT_EQ(value, -2);
  }
  EXPECT_EQ(find_enum_by_text(sizes, nullptr, &value), RC_FALSE);
  EXPECT_EQ(find_enum_by_text(sizes, "large", nullptr), RC_FALSE);
}

TEST(EnumText, CopyingAnUnknownValueLeavesAnEmptyText) {
  char text[16] = "garbage";
  EXPECT_EQ(copy_text_by_enum(sizes, 1, text), RC_TRUE);
  EXPECT_STREQ(text, "small");
  EXPECT_EQ(copy_text_by_enum(sizes, 2, text), RC_FALSE);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(copy_text_by_enum(sizes, 1, nullptr), RC_FALSE);
}

TEST(Clock, IsTheSystemsUnlessReplaced) {
  time_t before = time(nullptr);
  EXPECT_GE(rest_time(), before);
  rest_set_clock([] { return time_t{1700000000}; });
  EXPECT_EQ(rest_time(), 1700000000);
  rest_set_clock(nullptr);
  EXPECT_GE(rest_time(), before);
}
