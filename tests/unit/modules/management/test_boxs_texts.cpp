/* The texts of the chassis: what each value is called. */
#include "modules/rest_module_boxs.h"

#include <gtest/gtest.h>
#include <set>

typedef int (*text_by_enum_t)(uint32_t value, char *text, size_t size);

static const struct {
  text_by_enum_t text_of;
  std::vector<std::string> texts; /* of the values from 0 on */
} TABLES[] = {
    {get_open_boxs_item_type_string_by_enum, {"None", "Fixed", "Removable"}},
    {get_open_boxs_item_state_string_by_enum,
     {"None", "Not present", "Operational", "Failed", "Powering", "Not powered", "Not powering",
      "Incompatible"}},
    {get_open_boxs_tempsensor_state_string_by_enum,
     {"Not applicable", "Normal", "Warning", "Critical", "Shutdown", "Not present", "Not operational"}},
    {get_open_sfp_module_type_string_by_enum, {"None", "SFP", "SFP+", "QSFP", "Direct Attach Cable"}},
};

static std::string text_of(text_by_enum_t function, uint32_t value) {
  char text[256] = "untouched";
  EXPECT_EQ(function(value, text, sizeof text), 0) << value;
  return text;
}

TEST(BoxsTextTest, EachValueHasItsText) {
  for (const auto &table : TABLES) {
    for (uint32_t value = 0; value < table.texts.size(); value++)
      EXPECT_EQ(text_of(table.text_of, value), table.texts[value]);
  }
}

TEST(BoxsTextTest, OtherValuesAreUnknown) {
  for (const auto &table : TABLES) {
    bool is_module_type = table.text_of == get_open_sfp_module_type_string_by_enum;
    for (uint32_t value : {is_module_type ? 10u : static_cast<uint32_t>(table.texts.size()), 10u, 99u, 256u,
                           65536u, uint32_t{INT32_MAX}, 1u << 31, UINT32_MAX})
      EXPECT_EQ(text_of(table.text_of, value), "Unknown") << value;
  }
}

/* Their texts name the kind; the designations are the switch's. */
TEST(BoxsTextTest, OwnModulesAreNamedByKindAndDesignation) {
  const char *const kinds[] = {"XFP", "tacking", "SFP+", "CX4", "opper"};
  std::set<std::string> texts;
  for (uint32_t value = 5; value <= 9; value++) {
    std::string text = text_of(get_open_sfp_module_type_string_by_enum, value);
    EXPECT_NE(text.find(kinds[value - 5]), std::string::npos) << text;
    std::string designation = text.substr(text.rfind(' ') + 1);
    EXPECT_EQ(designation.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-"), std::string::npos)
        << text;
    EXPECT_GE(designation.size(), 4u) << text;
    EXPECT_EQ(text.find_first_of("<>&\"\\%"), std::string::npos) << text;
    EXPECT_NE(text, "SFP+");
    texts.insert(text);
  }
  EXPECT_EQ(texts.size(), 5u);
}

TEST(BoxsTextTest, TextsAreCutToTheirBuffers) {
  for (const auto &table : TABLES) {
    for (uint32_t value : {1u, 2u, 99u}) {
      const std::string whole = text_of(table.text_of, value);
      for (size_t size = 1; size <= whole.size() + 1; size++) {
        char text[64];
        memset(text, '#', sizeof text);
        EXPECT_EQ(table.text_of(value, text, size), 0);
        EXPECT_EQ(std::string(text), whole.substr(0, size - 1));
        EXPECT_EQ(text[size], '#'); /* nothing is written behind it */
      }
    }
  }
}

TEST(BoxsTextTest, NothingIsWrittenWithoutRoom) {
  for (const auto &table : TABLES) {
    char text[] = "#";
    EXPECT_EQ(table.text_of(1, text, 0), 0);
    EXPECT_STREQ(text, "#");
  }
}

TEST(BoxsTextTest, NoDestinationIsAFailure) {
  for (const auto &table : TABLES) {
    for (uint32_t value : {0u, 1u, 99u}) {
      EXPECT_EQ(table.text_of(value, nullptr, 64), 1);
      EXPECT_EQ(table.text_of(value, nullptr, 0), 1);
    }
  }
}
