/* Tests of the process functions of the C interface, on the figures of this machine. */
#include "platform/api/openapi_proc.h"

#include "tests/unit/platform/softswitch_test_support.h"

#include <regex>
#include <string.h>

namespace {

class ProcessApi : public SoftSwitch {
protected:
  open_error_t total(uint32_t size) {
    memset(buffer, 0, sizeof buffer);
    text = {size, buffer};
    return rpcclt_openapiProcTotalCpuUtilGet(&handle, &count, &text);
  }

  open_error_t tasks(uint32_t size) {
    memset(buffer, 0, sizeof buffer);
    text = {size, buffer};
    return rpcclt_openapiProcTaskCpuUtilGet(&handle, &count, &text);
  }

  char buffer[16384];
  open_buffdesc text;
  uint32_t count = 0;
};

TEST_F(ProcessApi, AllocatedAndFreeMemoryAreTheWhole) {
  uint32_t total = 0, alloc = 0, free = 0;
  ASSERT_EQ(rpcclt_openapiProcMemInfoGet(&handle, &total, &alloc, &free), OPEN_E_NONE);
  EXPECT_GT(total, 1024u);
  EXPECT_GT(alloc, 0u);
  EXPECT_EQ(uint64_t{alloc} + free, total);
}

TEST_F(ProcessApi, TotalHasThreePeriods) {
  ASSERT_EQ(total(256), OPEN_E_NONE);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(text.size, strlen(buffer));
  EXPECT_TRUE(std::regex_match(
      buffer,
      std::regex("last_5s: \\d{1,3}\\.\\d\\d%;last_60s: \\d{1,3}\\.\\d\\d%;last_300s: \\d{1,3}\\.\\d\\d%")))
      << buffer;
  EXPECT_EQ(total(8), OPEN_E_PARAM);
}

TEST_F(ProcessApi, ProcessesAreListedInOrderAndThisOneIsAmongThem) {
  ASSERT_EQ(tasks(sizeof buffer), OPEN_E_NONE);
  std::vector<std::string> lines = lines_of(buffer);
  EXPECT_EQ(count, lines.size());
  EXPECT_EQ(text.size, strlen(buffer));
  const std::regex form("(\\d+),[^,;<>&\"']+,last_5s:\\d{1,3}\\.\\d\\d%;last_60s:\\d{1,3}\\.\\d\\d%;"
                        "last_300s:\\d{1,3}\\.\\d\\d%");
  long before = 0;
  bool found = false;
  for (const std::string &line : lines) {
    ASSERT_TRUE(std::regex_match(line, form)) << line;
    long pid = std::stol(line);
    EXPECT_GT(pid, before);
    before = pid;
    found = found || pid == getpid();
  }
  EXPECT_TRUE(found);
}

TEST_F(ProcessApi, ListIsCutToTheBufferOfTheCaller) {
  ASSERT_EQ(tasks(120), OPEN_E_NONE);
  EXPECT_LT(text.size, 120u);
  EXPECT_EQ(count, lines_of(buffer).size());
  ASSERT_EQ(tasks(1), OPEN_E_NONE);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(text.size, 0u);
  EXPECT_EQ(tasks(0), OPEN_E_PARAM);
}

TEST_F(ProcessApi, NullPointersAndUnknownClientsAreRefused) {
  uint32_t number;
  openapiClientHandle_t stranger = {};
  text = {sizeof buffer, buffer};
  open_buffdesc nowhere = {8, nullptr};
  EXPECT_EQ(rpcclt_openapiProcMemInfoGet(&handle, nullptr, &number, &number), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiProcMemInfoGet(&handle, &number, nullptr, &number), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiProcMemInfoGet(&handle, &number, &number, nullptr), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiProcMemInfoGet(&stranger, &number, &number, &number), OPEN_E_RPC);
  EXPECT_EQ(rpcclt_openapiProcTotalCpuUtilGet(&handle, nullptr, &text), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiProcTotalCpuUtilGet(&handle, &number, &nowhere), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiProcTaskCpuUtilGet(&handle, nullptr, &text), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiProcTaskCpuUtilGet(&handle, &number, &nowhere), OPEN_E_PARAM);
}

} // namespace
