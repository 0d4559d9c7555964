/* The process module: memory and CPU. Strange texts of the platform: test_process_texts.cpp. */
#include "modules/rest_module_process.h"
#include "tests/unit/modules/management/management_fixture.h"

class ProcessTest : public ManagementTest {
protected:
  ProcessTest() : ManagementTest(process_api_handler) {
    give("ProcMemInfoGet total", 4096);
    give("ProcMemInfoGet alloc", 1000);
    give("ProcMemInfoGet free", 3096);
    give("ProcTotalCpuUtilGet periods", 2);
    give("ProcTotalCpuUtilGet", "5 Secs: 12%;60 Secs: 3%");
    give("ProcTaskCpuUtilGet count", 2);
    give("ProcTaskCpuUtilGet", "1,init,5 Secs:1%;60 Secs:0%\n77,restd,5 Secs:2.50%;60 Secs:1%\n");
  }
};

static Answers expected_memory(int64_t total, int64_t alloc, int64_t free) {
  return expected_data(
      {number("total_memory", total), number("alloc_memory", alloc), number("free_memory", free)});
}

TEST_F(ProcessTest, MemoryIsRead) {
  expect_served({"GET", "/process/memory"}, expected_memory(4096, 1000, 3096), {"ProcMemInfoGet"});
}

TEST_F(ProcessTest, WholeAnswerOfMemory) {
  Answers answers = get("/process/memory");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<total_memory>4096</total_memory><alloc_memory>1000</alloc_memory><free_memory>3096"
                         "</free_memory></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"total_memory\": 4096, \"alloc_memory\": 1000, "
                          "\"free_memory\": 3096 } } }\n");
}

TEST_F(ProcessTest, MemoryIsShownAsSignedNumbers) {
  give("ProcMemInfoGet total", UINT32_MAX);
  give("ProcMemInfoGet alloc", 1u << 31);
  give("ProcMemInfoGet free", 0);
  EXPECT_EQ(get("/process/memory"), expected_memory(-1, INT32_MIN, 0));
}

/* The colon of the totals stays with the value. */
TEST_F(ProcessTest, CpuIsRead) {
  const Answers expected = expected_data(
      {branch("total_CPU_utilization", {text("5 Secs", ": 12%"), text("60 Secs", ": 3%")}),
       branch("processes_CPU_utilization",
              {entry(1, "process",
                     {number("PID", 1), text("name", "init"), text("5 Secs", "1%"), text("60 Secs", "0%")}),
               entry(2, "process",
                     {number("PID", 77), text("name", "restd"), text("5 Secs", "2.50%"),
                      text("60 Secs", "1%")})})});
  expect_served({"GET", "/process/cpu"}, expected,
                {"ProcTotalCpuUtilGet [256]", "ProcTaskCpuUtilGet [16384]"});
}

TEST_F(ProcessTest, WholeAnswerOfCpu) {
  Answers answers = get("/process/cpu");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<total_CPU_utilization><5 Secs>: 12%</5 Secs><60 Secs>: 3%</60 Secs>"
                         "</total_CPU_utilization><processes_CPU_utilization><process><PID>1</PID><name>init"
                         "</name><5 Secs>1%</5 Secs><60 Secs>0%</60 Secs></process><process><PID>77</PID>"
                         "<name>restd</name><5 Secs>2.50%</5 Secs><60 Secs>1%</60 Secs></process>"
                         "</processes_CPU_utilization></rlt_data></result>\n");
  EXPECT_EQ(answers.json,
            "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { "
            "\"total_CPU_utilization\": { \"5 Secs\": \": 12%\", \"60 Secs\": \": 3%\" }, "
            "\"processes_CPU_utilization\": { \"1\": { \"PID\": 1, \"name\": \"init\", \"5 Secs\": \"1%\", "
            "\"60 Secs\": \"0%\" }, \"2\": { \"PID\": 77, \"name\": \"restd\", \"5 Secs\": \"2.50%\", "
            "\"60 Secs\": \"1%\" } } } } }\n");
}
