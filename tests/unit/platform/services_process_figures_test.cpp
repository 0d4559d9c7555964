/* Memory and CPU figures from files like those of /proc. */
#include "platform/softswitch/services/process_figures.h"

#include "tests/unit/platform/services_test_support.h"

#include <algorithm>

using namespace softswitch;

namespace {

/* A directory like /proc. */
class ProcessFigures : public testing::Test {
protected:
  void write_memory(const std::string &text) { write_file(dir.path + "/meminfo", text); }

  /* All CPUs have been busy and idle for so many ticks. */
  void write_cpus(uint64_t busy, uint64_t idle) {
    write_file(dir.path + "/stat", "cpu  " + std::to_string(busy) + " 0 0 " + std::to_string(idle) +
                                       " 0 0 0 0 0 0\ncpu0 1 2 3 4\n");
  }

  /* A process has used so many ticks in user and kernel mode. */
  void write_process(const std::string &pid, const std::string &name, uint64_t user, uint64_t kernel,
                     uint64_t started) {
    std::filesystem::create_directories(dir.path + "/" + pid);
    write_file(dir.path + "/" + pid + "/stat", pid + " (" + name + ") S 1 2 3 0 -1 4194560 1 2 3 4 " +
                                                   std::to_string(user) + " " + std::to_string(kernel) +
                                                   " 9 9 20 0 1 -2 " + std::to_string(started) +
                                                   " 1000 2000 18446744073709551615 0 0\n");
  }

  void remove_process(const std::string &pid) { std::filesystem::remove_all(dir.path + "/" + pid); }

  cpu_reading read() {
    cpu_reading reading;
    EXPECT_TRUE(cpu_read(dir.path, &reading));
    return reading;
  }

  void sample(int64_t at) { cpu_history_add(&history, at, read()); }
  std::string total(int64_t at) { return cpu_total_text(history, at, read()); }
  std::string list(int64_t at, size_t size_max = 16383) {
    uint32_t count = 99;
    std::string text = cpu_list_text(history, at, read(), size_max, &count);
    EXPECT_EQ(count, static_cast<uint32_t>(std::count(text.begin(), text.end(), '\n')));
    EXPECT_LE(text.size(), size_max);
    return text;
  }

  temporary_directory dir;
  cpu_history history;
};

/* --- Memory --------------------------------------------------------------------------------------------- */

TEST_F(ProcessFigures, FreeMemoryIsWhatProgramsCanBeGiven) {
  memory_figures memory;
  write_memory("MemTotal:       16384000 kB\nMemFree:          512000 kB\nMemAvailable:    8192000 kB\n");
  ASSERT_TRUE(memory_read(dir.path, &memory));
  EXPECT_EQ(memory.total, 16384000u);
  EXPECT_EQ(memory.free, 8192000u);
  write_memory("MemTotal: 100 kB\nMemFree: 40 kB\n");
  ASSERT_TRUE(memory_read(dir.path, &memory));
  EXPECT_EQ(memory.free, 40u) << "an old kernel does not say what can be given";
  write_memory("MemTotal: 100 kB\nMemAvailable: 140 kB\n");
  ASSERT_TRUE(memory_read(dir.path, &memory));
  EXPECT_EQ(memory.free, 100u) << "never more than there is";
}

TEST_F(ProcessFigures, MemoryThatIsNotToldIsNoMemory) {
  memory_figures memory;
  EXPECT_FALSE(memory_read(dir.path, &memory));
  for (const char *bad :
       {"", "MemTotal: 100 kB\n", "MemFree: 1 kB\n", "MemTotal: x kB\nMemFree: 1 kB\n", "MemTotal:"}) {
    write_memory(bad);
    EXPECT_FALSE(memory_read(dir.path, &memory)) << bad;
  }
}

/* --- CPUs ----------------------------------------------------------------------------------------------- */

TEST_F(ProcessFigures, WaitingIsNotWorkingAndGuestsCountOnce) {
  cpu_ticks ticks;
  write_file(dir.path + "/stat", "cpu  1 20 300 4000 50000 600000 7000000 80000000 9 9\n");
  ASSERT_TRUE(cpu_ticks_read(dir.path, &ticks));
  EXPECT_EQ(ticks.total, 87654321u);
  EXPECT_EQ(ticks.busy, 87600321u);
  write_file(dir.path + "/stat", "cpu  1 2 3 4\ncpu0 9 9 9 9\n");
  ASSERT_TRUE(cpu_ticks_read(dir.path, &ticks));
  EXPECT_EQ(ticks.total, 10u);
  EXPECT_EQ(ticks.busy, 6u);
}

TEST_F(ProcessFigures, CpusThatAreNotToldAreNoCpus) {
  cpu_ticks ticks;
  EXPECT_FALSE(cpu_ticks_read(dir.path, &ticks));
  for (const char *bad : {"", "cpu0 1 2 3 4\n", "cpu  1 2 3\n", "cpu \n", "intr 5\n"}) {
    write_file(dir.path + "/stat", bad);
    EXPECT_FALSE(cpu_ticks_read(dir.path, &ticks)) << bad;
  }
}

/* --- Processes ------------------------------------------------------------------------------------------ */

TEST_F(ProcessFigures, ProcessesAreReadInOrderOfTheirIdsWhateverTheirNames) {
  write_process("10", "b) S 1 (", 1, 2, 3);
  write_process("9", "a b", 4, 5, 6);
  write_process("4194304", "", 7, 8, 9);
  for (const char *other : {"self", "1x", "-1", "irq", "99999999999"})
    std::filesystem::create_directories(dir.path + "/" + other);
  std::filesystem::create_directories(dir.path + "/11"); /* ends while it is looked at */
  write_process("12", "cut", 1, 1, 1);
  write_file(dir.path + "/12/stat", "12 (cut) S 1 2 3");
  write_process("13", "odd", 1, 1, 1);
  write_file(dir.path + "/13/stat", "13 odd S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22");
  std::vector<process_entry> processes;
  ASSERT_TRUE(processes_read(dir.path, &processes));
  ASSERT_EQ(processes.size(), 3u);
  const struct {
    uint32_t pid;
    const char *name;
    uint64_t ticks, started;
  } rows[] = {{9, "a b", 9, 6}, {10, "b) S 1 (", 3, 3}, {4194304, "", 15, 9}};
  for (size_t i = 0; i < 3; i++) {
    EXPECT_EQ(processes[i].pid, rows[i].pid);
    EXPECT_EQ(processes[i].name, rows[i].name);
    EXPECT_EQ(processes[i].ticks, rows[i].ticks);
    EXPECT_EQ(processes[i].started, rows[i].started);
  }
  EXPECT_FALSE(processes_read(dir.path + "/none", &processes));
}

/* --- Periods -------------------------------------------------------------------------------------------- */

TEST_F(ProcessFigures, EachPeriodIsMeasuredFromTheNewestSampleThatIsOldEnough) {
  /* Of 1000 ticks between two samples 10 are busy at first, then 20, then 30 and in the end 40. */
  uint64_t busy = 0, ticks = 0;
  for (int64_t at = 0; at <= 400 * 1000; at += 5000) {
    write_cpus(busy, ticks - busy);
    sample(at);
    ticks += 1000;
    busy += at < 100 * 1000 ? 10 : at < 340 * 1000 ? 20 : at < 395 * 1000 ? 30 : 40;
  }
  EXPECT_EQ(history.size(), 61u);
  /* Since 395 s 40 of 1000; since 340 s 11 * 30 more of 12000; since 100 s 48 * 20 more of 60000. */
  ticks -= 1000;
  busy -= 40;
  write_cpus(busy, ticks - busy);
  EXPECT_EQ(total(400 * 1000), "last_5s: 4.00%;last_60s: 3.08%;last_300s: 2.22%");
  /* 2.5 s later the newest sample that is 5 s old is that of 7.5 s ago. */
  write_cpus(busy, ticks - busy + 1000);
  EXPECT_EQ(total(402500), "last_5s: 2.00%;last_60s: 2.85%;last_300s: 2.18%");
}

TEST_F(ProcessFigures, OldestSampleStandsInWhileThereIsNoneOldEnough) {
  write_cpus(1000, 9000);
  sample(0);
  EXPECT_EQ(total(0), "last_5s: 0.00%;last_60s: 0.00%;last_300s: 0.00%");
  write_cpus(1100, 9100);
  EXPECT_EQ(total(1000), "last_5s: 50.00%;last_60s: 50.00%;last_300s: 50.00%");
  sample(5000);
  write_cpus(1100, 9300);
  EXPECT_EQ(total(9999), "last_5s: 25.00%;last_60s: 25.00%;last_300s: 25.00%");
  EXPECT_EQ(total(10000), "last_5s: 0.00%;last_60s: 25.00%;last_300s: 25.00%");
}

TEST_F(ProcessFigures, CountersThatRunBackwardsGiveNothingAndNothingIsMoreThanAll) {
  write_cpus(1000, 9000);
  write_process("5", "odd", 500, 0, 1);
  sample(0);
  write_cpus(900, 9200);
  write_process("5", "odd", 400, 0, 1);
  EXPECT_EQ(total(5000), "last_5s: 0.00%;last_60s: 0.00%;last_300s: 0.00%");
  EXPECT_EQ(list(5000), "5,odd,last_5s:0.00%;last_60s:0.00%;last_300s:0.00%\n");
  write_cpus(1100, 8900);
  write_process("5", "odd", 600, 0, 1);
  EXPECT_EQ(total(5000), "last_5s: 0.00%;last_60s: 0.00%;last_300s: 0.00%") << "no time has passed";
  write_cpus(1100, 8910);
  EXPECT_EQ(total(5000), "last_5s: 100.00%;last_60s: 100.00%;last_300s: 100.00%");
  EXPECT_EQ(list(5000), "5,odd,last_5s:100.00%;last_60s:100.00%;last_300s:100.00%\n");
}

TEST_F(ProcessFigures, SharesAreRoundedToHundredths) {
  write_cpus(0, 0);
  sample(0);
  for (const auto &[busy, shown] : std::vector<std::pair<uint64_t, std::string>>{{0, "0.00"},
                                                                                 {4, "0.00"},
                                                                                 {5, "0.01"},
                                                                                 {70, "0.07"},
                                                                                 {4567, "4.57"},
                                                                                 {99994, "99.99"},
                                                                                 {99995, "100.00"}}) {
    write_cpus(busy, 100000 - busy);
    EXPECT_EQ(total(5000).substr(9, shown.size() + 1), shown + "%");
  }
}

/* --- The list ------------------------------------------------------------------------------------------- */

TEST_F(ProcessFigures, ProcessesHaveTheirPartsOfAllCpus) {
  write_cpus(0, 0);
  write_process("1", "init", 100, 0, 1);
  write_process("20", "idle", 0, 0, 2);
  sample(0);
  write_cpus(500, 9500);
  write_process("1", "init", 200, 100, 1);
  sample(55 * 1000);
  write_cpus(1000, 19000);
  write_process("1", "init", 200, 200, 1);
  write_process("20", "idle", 0, 1, 2);
  EXPECT_EQ(list(60 * 1000), "1,init,last_5s:1.00%;last_60s:1.50%;last_300s:1.50%\n"
                             "20,idle,last_5s:0.01%;last_60s:0.01%;last_300s:0.01%\n");
}

TEST_F(ProcessFigures, ProcessYoungerThanThePeriodCountsSinceItsStart) {
  write_cpus(0, 0);
  sample(0);
  write_cpus(500, 9500);
  write_process("7", "young", 300, 0, 9);
  EXPECT_EQ(list(60 * 1000), "7,young,last_5s:3.00%;last_60s:3.00%;last_300s:3.00%\n");
}

TEST_F(ProcessFigures, IdThatIsUsedAgainIsAnotherProcess) {
  write_cpus(0, 0);
  write_process("7", "first", 5000, 0, 9);
  write_process("8", "gone", 5000, 0, 9);
  sample(0);
  write_cpus(500, 9500);
  write_process("7", "second", 300, 0, 10);
  remove_process("8");
  EXPECT_EQ(list(5000), "7,second,last_5s:3.00%;last_60s:3.00%;last_300s:3.00%\n");
}

TEST_F(ProcessFigures, LargeCountersAreComparedRightly) {
  const uint64_t large = uint64_t{1} << 32;
  write_cpus(large, large);
  write_process("7", "old", large - 50, 0, large + 5);
  sample(0);
  write_cpus(large + 500, large + 500);
  write_process("7", "old", large + 50, 0, large + 5);
  EXPECT_EQ(list(5000), "7,old,last_5s:10.00%;last_60s:10.00%;last_300s:10.00%\n");
}

TEST_F(ProcessFigures, NamesHoldNothingThatMeansSomethingElse) {
  write_cpus(0, 0);
  const std::string figures = ",last_5s:0.00%;last_60s:0.00%;last_300s:0.00%\n";
  write_process("1", "a,b;c<d>e&f\"g'h", 0, 0, 1);
  write_process("2", "tab\there\n\x01\x7f", 0, 0, 1);
  write_process("3", "k\xc3\xa4se", 0, 0, 1);
  write_process("4", "", 0, 0, 1);
  write_process("5", "tmux: server (x)", 0, 0, 1);
  sample(0);
  EXPECT_EQ(list(0), "1,a_b_c_d_e_f_g_h" + figures + "2,tab_here___" + figures + "3,k__se" + figures + "4,_" +
                         figures + "5,tmux: server (x)" + figures);
}

TEST_F(ProcessFigures, LeastBusyAreLeftOutWhenThereAreTooMany) {
  write_cpus(0, 0);
  for (const char *pid : {"1", "2", "3", "4"}) write_process(pid, "p", 0, 0, 1);
  sample(0);
  write_cpus(500, 9500);
  write_process("2", "p", 10, 0, 1);
  write_process("4", "p", 100, 0, 1);
  auto line = [](const std::string &pid, const std::string &share) {
    return pid + ",p,last_5s:" + share + "%;last_60s:" + share + "%;last_300s:" + share + "%\n";
  };
  std::string all = line("1", "0.00") + line("2", "0.10") + line("3", "0.00") + line("4", "1.00");
  size_t one = all.size() / 4;
  EXPECT_EQ(list(5000, all.size()), all);
  EXPECT_EQ(list(5000, all.size() - 1), line("1", "0.00") + line("2", "0.10") + line("4", "1.00"));
  EXPECT_EQ(list(5000, 2 * one), line("2", "0.10") + line("4", "1.00"));
  EXPECT_EQ(list(5000, one), line("4", "1.00"));
  EXPECT_EQ(list(5000, one - 1), "");
}

/* --- The service ---------------------------------------------------------------------------------------- */

TEST_F(ProcessFigures, ServiceAnswersFromItsDirectoryAndFailsWithoutOne) {
  write_cpus(1000, 9000);
  write_process("1", "init", 100, 0, 1);
  write_memory("MemTotal: 100 kB\nMemFree: 40 kB\n");
  ASSERT_TRUE(process_figures_start(dir.path));
  std::string text;
  uint32_t count = 0;
  memory_figures memory;
  EXPECT_TRUE(process_total_text(&text));
  EXPECT_EQ(text, "last_5s: 0.00%;last_60s: 0.00%;last_300s: 0.00%");
  EXPECT_TRUE(process_list_text(1000, &text, &count));
  EXPECT_EQ(text, "1,init,last_5s:0.00%;last_60s:0.00%;last_300s:0.00%\n");
  EXPECT_EQ(count, 1u);
  EXPECT_TRUE(process_memory(&memory));
  std::filesystem::remove_all(dir.path);
  EXPECT_FALSE(process_total_text(&text));
  EXPECT_FALSE(process_list_text(1000, &text, &count));
  EXPECT_FALSE(process_memory(&memory));
  process_figures_stop();
}

} // namespace
