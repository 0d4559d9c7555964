/* What the tests of addresses share. */
#ifndef KESTREL_TESTS_ADDRESS_TEST_SUPPORT_H
#define KESTREL_TESTS_ADDRESS_TEST_SUPPORT_H

#include "platform/softswitch/model/switch.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/* "10.0.0.1/24" as a prefix. */
inline open_inet_pfx_t prefix(const std::string &text) {
  open_inet_pfx_t read = {};
  EXPECT_TRUE(softswitch::inet_prefix_read(text, &read)) << text;
  return read;
}

inline std::vector<std::string> texts(const std::vector<open_inet_pfx_t> &list) {
  std::vector<std::string> all;
  for (const open_inet_pfx_t &each : list) all.push_back(softswitch::inet_prefix_text(each));
  return all;
}

inline bool is_pending(const softswitch::switch_model &model, uint32_t interface) {
  return model.interfaces->at[interface].changed > model.applied;
}

#endif
