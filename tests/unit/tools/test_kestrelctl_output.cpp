/* What a terminal is shown: texts, tables, answers. */
#include "tools/kestrelctl/answer.h"
#include "tools/kestrelctl/table.h"
#include "tools/kestrelctl/text.h"

#include <gtest/gtest.h>

/* --- Texts --------------------------------------------------------------------------------------------- */

TEST(KestrelctlText, WhatCommandsATerminalIsEscaped) {
  EXPECT_EQ(printable("plain, \xc3\xa4\xe4\xb8\xad\xf0\x9f\x98\x80"),
            "plain, \xc3\xa4\xe4\xb8\xad\xf0\x9f\x98\x80");
  EXPECT_EQ(printable("\x1b[31m\a\b\x7f"), "\\x1b[31m\\x07\\x08\\x7f");
  EXPECT_EQ(printable("a\tb\r\nc"), "a\\tb\\r\\nc");
  EXPECT_EQ(printable(std::string("a\0b", 3)), "a\\x00b");
  EXPECT_EQ(printable("\xc2\x9b"
                      "31m"),
            "\\u009b31m");
  EXPECT_EQ(printable("a\xe2\x80\xae"
                      "b"),
            "a\\u202eb");
  EXPECT_EQ(printable("\xef\xbb\xbf"), "\\ufeff");
}

TEST(KestrelctlText, BytesThatAreNoUtf8AreEscaped) {
  EXPECT_EQ(printable("\xff\xfe"), "\\xff\\xfe");
  EXPECT_EQ(printable("\xc3"), "\\xc3");
  EXPECT_EQ(printable("\xc3("), "\\xc3(");
  EXPECT_EQ(printable("\xc0\xaf"), "\\xc0\\xaf");                   /* too long a form */
  EXPECT_EQ(printable("\xe0\x80\xaf"), "\\xe0\\x80\\xaf");          /* the same */
  EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");          /* half of a pair */
  EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); /* beyond the last one */
}

TEST(KestrelctlText, ColumnsAreCountedAsShown) {
  EXPECT_EQ(column_count("abc"), 3u);
  EXPECT_EQ(column_count("\xc3\xa4"), 1u);
  EXPECT_EQ(column_count("\xe4\xb8\xad"), 2u);
  EXPECT_EQ(column_count("e\xcc\x81"), 1u);
}

TEST(KestrelctlText, EverythingButPlainLettersIsPercentEncoded) {
  EXPECT_EQ(percent_encoded("aZ09-._"), "aZ09-._");
  EXPECT_EQ(percent_encoded(" +&=%/\n\xff"), "%20%2B%26%3D%25%2F%0A%FF");
}

TEST(KestrelctlText, DistanceOfWords) {
  EXPECT_EQ(edit_distance("", "abc"), 3u);
  EXPECT_EQ(edit_distance("name", "nam"), 1u);
  EXPECT_EQ(edit_distance("adminState", "adminstate"), 1u);
  EXPECT_EQ(edit_distance("kitten", "sitting"), 3u);
}

/* --- Tables -------------------------------------------------------------------------------------------- */

static std::string shown(const char *json, bool bold = false) {
  const json_holder data(json_tokener_parse(json));
  EXPECT_NE(data, nullptr) << json;
  return print_data(data.get(), bold);
}

TEST(KestrelctlTable, ListBecomesAlignedColumnsWithNumbersAtTheRight) {
  EXPECT_EQ(shown(R"({"ports": {"1": {"id": 3, "name": "uplink"}, "2": {"id": 14, "name": ""}}})"),
            "id  name\n"
            " 3  uplink\n"
            "14\n");
}

TEST(KestrelctlTable, ColumnsAreThoseOfAllRows) {
  EXPECT_EQ(shown(R"({"x": {"0": {"a": "1"}, "7": {"b": 2, "a": "long"}}})"), "a     b\n"
                                                                              "1\n"
                                                                              "long  2\n");
}

TEST(KestrelctlTable, WideCharactersAreAlignedByColumns) {
  EXPECT_EQ(
      shown(
          "{\"x\": {\"1\": {\"n\": \"\xe4\xb8\xad\", \"m\": \"a\"}, \"2\": {\"n\": \"abc\", \"m\": \"b\"}}}"),
      "n    m\n\xe4\xb8\xad   a\nabc  b\n");
}

TEST(KestrelctlTable, ObjectBecomesLinesOfNameAndValue) {
  EXPECT_EQ(shown(R"({"infomation": {"hostname": "leaf1", "serial_timeout": 5}})"), "hostname        leaf1\n"
                                                                                    "serial_timeout  5\n");
  EXPECT_EQ(shown(R"({"sequence": 10})"), "sequence  10\n");
}

TEST(KestrelctlTable, NestedListIsIndentedBelowItsName) {
  EXPECT_EQ(shown(R"({"vlan": {"id": 10, "interfaces": {"3": {"ifNum": 3, "isTagging": 1}}, "name": "a"}})"),
            "id    10\n"
            "name  a\n"
            "interfaces\n"
            "  ifNum  isTagging\n"
            "      3          1\n");
}

TEST(KestrelctlTable, EntriesWithListsOfTheirOwnStandOneBelowTheOther) {
  EXPECT_EQ(shown(R"({"l": {"1": {"n": "a", "m": {"1": {"p": 1}}}, "2": {"n": "b", "m": {}}}})"), "n  a\n"
                                                                                                  "m\n"
                                                                                                  "  p\n"
                                                                                                  "  1\n"
                                                                                                  "\n"
                                                                                                  "n  b\n"
                                                                                                  "m\n");
}

TEST(KestrelctlTable, RowsThatAreTooWideStandOneBelowTheOther) {
  const std::string value(1000, 'x'), name(1001, 'n');
  const std::string json =
      R"({"l": {"1": {"a": ")" + value + R"("}, "2": {"b": 1}, "3": {")" + name + R"(": 2, "c": 3}}})";
  EXPECT_EQ(shown(json.c_str()), "a  " + value + "\n\nb  1\n\n" + name + "  2\nc  3\n");
}

TEST(KestrelctlTable, NothingIsShownOfNothing) {
  EXPECT_EQ(print_data(nullptr, false), "");
  EXPECT_EQ(shown("{}"), "");
  EXPECT_EQ(shown(R"({"vlans": {}})"), "");
}

TEST(KestrelctlTable, NamesAndValuesFromTheSwitchAreEscaped) {
  EXPECT_EQ(shown(R"({"x": {"1": {"\u001bn": "\u001b[2J\nb"}}})"), "\\x1bn\n\\x1b[2J\\nb\n");
  EXPECT_EQ(shown(R"({"x": {"k\u0007": "a\u009bb"}})"), "k\\x07  a\\u009bb\n");
}

TEST(KestrelctlTable, OddValuesAreShownAsTheyAre) {
  EXPECT_EQ(shown(R"({"x": {"a": null, "b": true, "c": 1.5, "d": [1, "z"]}})"), "a\n"
                                                                                "b  true\n"
                                                                                "c  1.5\n"
                                                                                "d  [ 1, \"z\" ]\n");
}

TEST(KestrelctlTable, OnlyHeadingsAreBold) {
  EXPECT_EQ(shown(R"({"x": {"1": {"id": 1}}})", true), "\x1b[1mid\x1b[0m\n 1\n");
}

/* --- Answers ------------------------------------------------------------------------------------------- */

TEST(KestrelctlAnswer, CodeMessageAndDataAreRead) {
  const answer read =
      read_json_answer("{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Done.\", \"rlt_data\": "
                       "{ \"a\": 1 } } }\n");
  ASSERT_TRUE(read.understood);
  EXPECT_EQ(read.code, 0);
  EXPECT_EQ(read.message, "Done.");
  EXPECT_STREQ(json_object_to_json_string(read.data), "{ \"a\": 1 }");
  const answer refusal = read_json_answer(R"({"result": {"rlt_code": 900, "rlt_mesg": "Ended."}})");
  ASSERT_TRUE(refusal.understood);
  EXPECT_EQ(refusal.code, 900);
  EXPECT_EQ(refusal.data, nullptr);
}

TEST(KestrelctlAnswer, AnythingElseInJsonIsNone) {
  for (const char *text : {"", "{", "null", "[]", "{}", R"({"result": 1})", R"({"result": {"rlt_code": 0}})",
                           R"({"result": {"rlt_code": "0", "rlt_mesg": "x"}})",
                           R"({"result": {"rlt_code": 0, "rlt_mesg": "x"}} x)", "<result></result>"})
    EXPECT_FALSE(read_json_answer(text).understood) << text;
  EXPECT_FALSE(read_json_answer(std::string(100000, '[')).understood);
}

TEST(KestrelctlAnswer, CodeAndMessageOfXmlAreRead) {
  const answer read = read_xml_answer("<result><rlt_code>2</rlt_code><rlt_mesg>No.</rlt_mesg></result>\n");
  ASSERT_TRUE(read.understood);
  EXPECT_EQ(read.code, 2);
  EXPECT_EQ(read.message, "No.");
}

TEST(KestrelctlAnswer, AnythingElseInXmlIsNone) {
  for (const char *text :
       {"", "<result>", "<html></html>", "<result></result>",
        "<result><rlt_code>x</rlt_code><rlt_mesg>No.</rlt_mesg></result>",
        "<result><rlt_code>1</rlt_code></result>", "<result><rlt_code>1</rlt_code><rlt_mesg>No.</rlt_mesg>"})
    EXPECT_FALSE(read_xml_answer(text).understood) << text;
}
