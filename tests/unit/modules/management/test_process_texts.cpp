/* The process module: how the platform's CPU texts are cut, whatever they are. */
#include "modules/rest_module_process.h"
#include "tests/unit/modules/management/management_fixture.h"

class ProcessTextTest : public ManagementTest {
protected:
  ProcessTextTest() : ManagementTest(process_api_handler) {
    give("ProcTotalCpuUtilGet periods", 2);
    give("ProcTotalCpuUtilGet", "");
    give("ProcTaskCpuUtilGet count", 0);
    give("ProcTaskCpuUtilGet", "");
  }

  /* The whole answer to a text of totals, and to a text of processes. */
  void expect_totals(const std::string &platform_text, const std::vector<result_node> &totals) {
    give("ProcTotalCpuUtilGet", platform_text);
    EXPECT_EQ(get("/process/cpu"), expected_data({branch("total_CPU_utilization", totals),
                                                  branch("processes_CPU_utilization", {})}))
        << platform_text;
  }
  void expect_processes(const std::string &platform_text, const std::vector<result_node> &processes) {
    give("ProcTaskCpuUtilGet", platform_text);
    EXPECT_EQ(get("/process/cpu"), expected_data({branch("total_CPU_utilization", {}),
                                                  branch("processes_CPU_utilization", processes)}))
        << platform_text;
  }
};

static result_node process(unsigned position, int64_t pid, const std::string &name,
                           const std::vector<result_node> &periods) {
  std::vector<result_node> nodes = {number("PID", pid), text("name", name)};
  nodes.insert(nodes.end(), periods.begin(), periods.end());
  return entry(position, "process", nodes);
}

/* --- Totals --------------------------------------------------------------------------------------------- */

TEST_F(ProcessTextTest, EmptyTextsGiveEmptyLists) {
  expect_totals("", {});
  expect_processes("", {});
  Answers answers = get("/process/cpu");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<total_CPU_utilization></total_CPU_utilization><processes_CPU_utilization>"
                         "</processes_CPU_utilization></rlt_data></result>\n");
}

TEST_F(ProcessTextTest, TotalKeepsEverythingFromItsFirstColonOn) {
  expect_totals("a: 1%", {text("a", ": 1%")});
  expect_totals("a:1%", {text("a", ":1%")});
  expect_totals("a:", {text("a", ":")});
  expect_totals("a::1:2", {text("a", "::1:2")});
  expect_totals("a b ,c:1,2", {text("a b ,c", ":1,2")});
  expect_totals("5 <s>&: %d%s", {text("5 <s>&", ": %d%s")});
}

TEST_F(ProcessTextTest, TotalsArePiecesBetweenSemicolons) {
  expect_totals("a:1;b:2;c:3", {text("a", ":1"), text("b", ":2"), text("c", ":3")});
  expect_totals("a:1; b:2", {text("a", ":1"), text(" b", ":2")}); /* the blank is the name's */
  expect_totals(";;a:1;;b:2;;", {text("a", ":1"), text("b", ":2")});
  expect_totals(";", {});
  expect_totals(";;;", {});
}

TEST_F(ProcessTextTest, TotalEndsAtATabOrANewline) {
  expect_totals("a: 1%\t9;b: 2%\n", {text("a", ": 1%"), text("b", ": 2%")});
  expect_totals("a: 1%\nb: 2%", {text("a", ": 1%")});
  expect_totals("a:\t1", {text("a", ":")});
}

/* They are shown as far as they can be told. */
TEST_F(ProcessTextTest, TotalWithoutAColonHasNoValueAndOneWithoutANameIsLeftOut) {
  expect_totals("idle", {text("idle", "")});
  expect_totals("idle;a:1", {text("idle", ""), text("a", ":1")});
  expect_totals(":1", {});
  expect_totals(":1;a:2;:", {text("a", ":2")});
}

TEST_F(ProcessTextTest, TotalsAreShownWhateverTheNumberOfPeriods) {
  for (uint32_t periods : {0u, 1u, 3u, 100u, UINT32_MAX}) {
    give("ProcTotalCpuUtilGet periods", periods);
    expect_totals("a:1;b:2", {text("a", ":1"), text("b", ":2")});
  }
}

TEST_F(ProcessTextTest, TotalsThatFillTheirBufferEndThere) {
  for (size_t length : {252u, 253u, 254u, 255u, 256u, 300u, 10000u}) {
    std::string value = ":" + std::string(length, 'x');
    expect_totals("ab" + value, {text("ab", value.substr(0, 254))});
  }
}

TEST_F(ProcessTextTest, NameOfATotalMayFillTheBuffer) {
  const std::string name(255, 'n');
  expect_totals(name, {text(name, "")});
  expect_totals(name + "n", {text(name, "")});
  expect_totals(name + ":", {text(name, ":")});
  expect_totals(std::string(400, ';'), {});
}

TEST_F(ProcessTextTest, TotalsOfOneNameAreBothInXml) {
  give("ProcTotalCpuUtilGet", "a:1;a:2");
  Answers answers = get("/process/cpu");
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<total_CPU_utilization><a>:1</a><a>:2</a></total_CPU_utilization>"
                         "<processes_CPU_utilization></processes_CPU_utilization></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"total_CPU_utilization\": { \"a\": \":2\" }, "
                          "\"processes_CPU_utilization\": { } } } }\n");
}

/* --- Processes ------------------------------------------------------------------------------------------ */

TEST_F(ProcessTextTest, ProcessesAreLines) {
  const std::vector<result_node> both = {process(1, 1, "a", {text("5s", "1%"), text("60s", "2%")}),
                                         process(2, 2, "b", {text("5s", "3%"), text("60s", "4%")})};
  expect_processes("1,a,5s:1%;60s:2%\n2,b,5s:3%;60s:4%\n", both);
  expect_processes("1,a,5s:1%;60s:2%\n2,b,5s:3%;60s:4%", both);
  expect_processes("\n\n1,a,5s:1%;60s:2%\n\n\n2,b,5s:3%;60s:4%;\n\n", both);
  expect_processes("\n", {});
  expect_processes("\n\n\n", {});
}

TEST_F(ProcessTextTest, ProcessesAreCountedByTheirLines) {
  for (uint32_t count : {0u, 1u, 5u, UINT32_MAX}) {
    give("ProcTaskCpuUtilGet count", count);
    expect_processes("9,a,5s:1%\n8,b,5s:1%\n7,c,5s:1%\n",
                     {process(1, 9, "a", {text("5s", "1%")}), process(2, 8, "b", {text("5s", "1%")}),
                      process(3, 7, "c", {text("5s", "1%")})});
  }
}

TEST_F(ProcessTextTest, NameIsWhatStandsBetweenTheFirstTwoCommas) {
  expect_processes("1,a b,5s:1%", {process(1, 1, "a b", {text("5s", "1%")})});
  expect_processes("1, a ,5s:1%", {process(1, 1, " a ", {text("5s", "1%")})});
  expect_processes("1,a:b;c,5s:1%", {process(1, 1, "a:b;c", {text("5s", "1%")})});
  expect_processes("1,(sd-pam),5s:1%", {process(1, 1, "(sd-pam)", {text("5s", "1%")})});
  expect_processes("1,<a>&\"'%s%n,5s:1%", {process(1, 1, "<a>&\"'%s%n", {text("5s", "1%")})});
  expect_processes("1,7,5s:1%", {process(1, 1, "7", {text("5s", "1%")})});
  expect_processes("1,a,b,5s:1%", {process(1, 1, "a", {text("b,5s", "1%")})});
}

TEST_F(ProcessTextTest, PidIsANumber) {
  const struct {
    const char *text;
    int64_t shown;
  } rows[] = {{"0", 0},    {"-5", -5},  {"4194304", 4194304}, {"2147483647", INT32_MAX},
              {" 12", 12}, {"+12", 12}, {"0012", 12}};
  for (const auto &row : rows)
    expect_processes(std::string(row.text) + ",a,5s:1%", {process(1, row.shown, "a", {text("5s", "1%")})});
}

TEST_F(ProcessTextTest, ValueOfAPeriodEndsAtTheSemicolon) {
  expect_processes("1,a,5s: 1%;60s:2:3", {process(1, 1, "a", {text("5s", " 1%"), text("60s", "2:3")})});
  expect_processes("1,a,5s:1%; 60s:2%", {process(1, 1, "a", {text("5s", "1%"), text(" 60s", "2%")})});
  expect_processes("1,a,5s:1,2;60s:3", {process(1, 1, "a", {text("5s", "1,2"), text("60s", "3")})});
}

TEST_F(ProcessTextTest, LineEndsAtATab) {
  expect_processes("1,a,5s:1%\t;60s:2%\n2,b,5s:3%",
                   {process(1, 1, "a", {text("5s", "1%")}), process(2, 2, "b", {text("5s", "3%")})});
}

TEST_F(ProcessTextTest, OnlyAsManyPeriodsAreShownAsTheTotalsHave) {
  const result_node values[] = {text("a", "1"), text("b", "2"), text("c", "3")};
  for (uint32_t periods = 0; periods <= 3; periods++) {
    give("ProcTotalCpuUtilGet periods", periods);
    expect_processes("1,n,a:1;b:2;c:3",
                     {process(1, 1, "n", std::vector<result_node>(values, values + periods))});
  }
}

TEST_F(ProcessTextTest, PeriodsThatALineLacksAreLeftOut) {
  for (uint32_t periods : {3u, 100u, UINT32_MAX}) {
    give("ProcTotalCpuUtilGet periods", periods);
    expect_processes("1,n,a:1;b:2\n2,m\n3,l,\n4,k,a:1;\n",
                     {process(1, 1, "n", {text("a", "1"), text("b", "2")}), process(2, 2, "m", {}),
                      process(3, 3, "l", {}), process(4, 4, "k", {text("a", "1")})});
  }
}

/* They are shown as far as they can be told. */
TEST_F(ProcessTextTest, LinesOfAnotherFormAreShownAsFarAsTheyGo) {
  give("ProcTotalCpuUtilGet periods", 3);
  expect_processes("1", {process(1, 1, "", {})});
  expect_processes("1,", {process(1, 1, "", {})});
  expect_processes("1,n,a", {process(1, 1, "n", {})});
  expect_processes("1,n,a:", {process(1, 1, "n", {})});
  expect_processes("1,n,a:1;b;c:3", {process(1, 1, "n", {text("a", "1"), text("b;c", "3")})});
  expect_processes("1,n,a:1;:2;c:3", {process(1, 1, "n", {text("a", "1")})});
}

TEST_F(ProcessTextTest, AnyBytesAreAnswered) {
  for (int byte = 1; byte < 256; byte++) {
    for (size_t length : {1u, 255u, 256u, 16384u}) {
      give("ProcTotalCpuUtilGet", std::string(length, static_cast<char>(byte)));
      give("ProcTaskCpuUtilGet", std::string(length, static_cast<char>(byte)));
      EXPECT_NE(get("/process/cpu").xml.find("</processes_CPU_utilization></rlt_data></result>\n"),
                std::string::npos)
          << byte << " " << length;
    }
  }
}

TEST_F(ProcessTextTest, LongNamesAndValuesAreCut) {
  const std::string name(5000, 'n'), value(5000, 'v'), period(5000, 'p');
  expect_processes(
      "1," + name + "," + period + ":" + value,
      {process(1, 1, name.substr(0, 1023), {text(period.substr(0, 255), value.substr(0, 1023))})});
}

/* 16384 bytes are 712 lines of 23 characters and 8 characters of another one. */
TEST_F(ProcessTextTest, LinesThatFillTheirBufferEndThere) {
  std::string lines;
  std::vector<result_node> processes;
  for (unsigned pid = 1001; pid < 1000 + 800; pid++) {
    lines += std::to_string(pid) + ",name,5s:1%;60s:2%\n";
    if (pid <= 1712)
      processes.push_back(process(pid - 1000, pid, "name", {text("5s", "1%"), text("60s", "2%")}));
  }
  ASSERT_EQ(lines.size(), 799u * 23);
  processes.push_back(process(713, 1713, "nam", {}));
  expect_processes(lines, processes);
}

TEST_F(ProcessTextTest, LastCharacterOfAFullBufferIsRead) {
  const std::string start = "1,name,5s:";
  std::string value(16384 - start.size() - 3, ';');
  expect_processes(start + "1" + value + "x:", {process(1, 1, "name", {text("5s", "1")})});
  give("ProcTotalCpuUtilGet periods", 1);
  expect_processes(std::string(16384 - 8, '\n') + "7,a,b:99", {process(1, 7, "a", {text("b", "99")})});
  expect_processes(std::string(16384 - 7, '\n') + "7,a,b:99", {process(1, 7, "a", {text("b", "9")})});
}
