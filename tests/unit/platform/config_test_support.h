/* What the tests of the configuration language's families share. */
#ifndef KESTREL_TESTS_CONFIG_TEST_SUPPORT_H
#define KESTREL_TESTS_CONFIG_TEST_SUPPORT_H

#include "platform/softswitch/config/language.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <string>

/* A line that is refused, and with what. */
struct near_miss {
  std::string line;
  open_error_t code;
  std::string error;
};

/* Applies each line to a switch like this one. */
inline void expect_refused(const softswitch::switch_model &prepared, std::span<const near_miss> rows) {
  for (const near_miss &row : rows) {
    softswitch::switch_model model = prepared;
    std::string error;
    EXPECT_EQ(softswitch::apply_line(model, row.line, &error), row.code) << row.line;
    EXPECT_EQ(error, row.error) << row.line;
  }
}

/* Applies random lines, of which some are refused, to switches in factory state. What each of them then
 * prints must give a switch that prints the same; `compare` looks at both. */
inline void prints_come_back(unsigned switches, int lines,
                             const std::function<std::string(std::mt19937 &)> &line,
                             const std::function<void(const softswitch::switch_model &first,
                                                      const softswitch::switch_model &second)> &compare) {
  const softswitch::switch_model factory = softswitch::make_switch(softswitch::built_in_profile());
  for (unsigned seed = 0; seed < switches; seed++) {
    std::mt19937 random(seed);
    softswitch::switch_model model = factory, again = factory;
    std::string error;
    int applied = 0;
    for (int count = 0; count < lines; count++) {
      softswitch::switch_model changed = model;
      if (softswitch::apply_line(changed, line(random), &error) != OPEN_E_NONE) continue;
      model = changed;
      applied++;
    }
    ASSERT_GT(applied, 15) << "seed " << seed;
    std::string printed = softswitch::print_configuration(model);
    ASSERT_TRUE(softswitch::apply_text(again, printed, &error)) << "seed " << seed << ": " << error << "\n"
                                                                << printed;
    ASSERT_EQ(softswitch::print_configuration(again), printed) << "seed " << seed;
    compare(model, again);
    if (testing::Test::HasFatalFailure()) FAIL() << "seed " << seed << "\n" << printed;
  }
}

#endif
