/* Lab control of what surrounds an interface: the far end of its cable, and its counters. */
#include "platform/softswitch/services/lab.h"

#include "platform/api/openapi_if.h"
#include "platform/api/openapi_stat.h"
#include "platform/softswitch/services/clock.h"
#include "tests/unit/platform/mixed_ports.h"

#include <atomic>
#include <thread>

using namespace softswitch;

namespace {

class LabInterfaces : public MixedPorts {
protected:
  bool up(uint32_t interface) {
    uint32_t state = 99;
    EXPECT_EQ(openapiIfLinkStateGet(&handle, interface, &state), OPEN_E_NONE);
    return state == OPEN_LINK_UP;
  }
  uint64_t get(uint32_t interface, uint32_t id) {
    uint32_t low, high;
    EXPECT_EQ(rpcclt_openapiStatHighLowGet(&handle, id, interface, &low, &high), OPEN_E_NONE);
    return uint64_t{high} << 32 | low;
  }
};

/* --- The far end ---------------------------------------------------------------------------------------- */

TEST_F(LabInterfaces, FarEndTakesTheLinkDownAtOnceAndIsNoChange) {
  hold_apply(true);
  EXPECT_EQ(lab_command("link down 0/8"), "ok\n");
  EXPECT_FALSE(up(8));
  EXPECT_TRUE(up(7));
  EXPECT_TRUE(wait_applied(0)) << "nothing is pending";
  EXPECT_EQ(lab_command("link up 0/8"), "ok\n");
  EXPECT_TRUE(up(8));
}

TEST_F(LabInterfaces, CableAndFarEndAreTwoThings) {
  EXPECT_EQ(lab_command("link down 0/8"), "ok\n");
  EXPECT_EQ(lab_command("cable out 0/8"), "ok\n");
  EXPECT_EQ(lab_command("cable in 0/8"), "ok\n");
  EXPECT_FALSE(up(8)) << "the far end is still down";
  EXPECT_EQ(lab_command("cable out 0/8"), "ok\n");
  EXPECT_EQ(lab_command("link up 0/8"), "ok\n");
  EXPECT_FALSE(up(8)) << "the cable is still out";
  EXPECT_EQ(lab_command("cable in 0/8"), "ok\n");
  EXPECT_TRUE(up(8));
  EXPECT_EQ(lab_command("link up 0/9"), "ok\n");
  EXPECT_FALSE(up(9)) << "it never had a cable";
}

TEST_F(LabInterfaces, DisabledPortStaysDownWhateverTheFarEndDoes) {
  ASSERT_EQ(commit("interface 0/8 soft-shutdown"), OPEN_E_NONE);
  ASSERT_TRUE(wait_applied(patience_ms));
  EXPECT_EQ(lab_command("link up 0/8"), "ok\n");
  EXPECT_FALSE(up(8));
}

/* --- Counters ------------------------------------------------------------------------------------------- */

TEST_F(LabInterfaces, CountersAreSetByIdAndByName) {
  EXPECT_EQ(lab_command("counter set 0/8 1 18446744073709551615"), "ok\n");
  EXPECT_EQ(get(8, 1), UINT64_MAX);
  EXPECT_EQ(lab_command("counter set 0/8 CTR_RX_TOTAL_BYTES 7"), "ok\n");
  EXPECT_EQ(get(8, 1), 7u);
  EXPECT_EQ(lab_command("counter set 0/1 CTR_TX_ONE_COLLISION 3"), "ok\n");
  EXPECT_EQ(get(1, 34), 3u);
  EXPECT_EQ(lab_command("counter set 3/1 13 5"), "ok\n");
  EXPECT_EQ(get(56, 13), 5u);
  EXPECT_EQ(lab_command("counter set cpu 51 6"), "ok\n");
  EXPECT_EQ(get(55, 51), 6u);
  EXPECT_EQ(lab_command("counter set vlan1 53 8"), "ok\n");
  EXPECT_EQ(get(226, 53), 8u);
}

TEST_F(LabInterfaces, CountersAreCountedUpAndWrap) {
  EXPECT_EQ(lab_command("counter add 0/8 20 5"), "ok\n");
  EXPECT_EQ(lab_command("counter add 0/8 20 6"), "ok\n");
  EXPECT_EQ(get(8, 20), 11u);
  EXPECT_EQ(lab_command("counter add 0/8 20 18446744073709551615"), "ok\n");
  EXPECT_EQ(get(8, 20), 10u);
}

TEST_F(LabInterfaces, CountersRunUntilTheyAreStopped) {
  EXPECT_EQ(lab_command("counter run 0/8 1 1000000"), "ok\n");
  uint64_t first = get(8, 1);
  int64_t end = monotonic_ms() + patience_ms;
  while (get(8, 1) == first && monotonic_ms() < end) continue;
  EXPECT_EQ(lab_command("counter run 0/8 1 0"), "ok\n");
  uint64_t stopped = get(8, 1);
  EXPECT_GT(stopped, first);
  EXPECT_EQ(stopped % 1000, 0u) << "whole milliseconds";
  EXPECT_EQ(lines_of(lab_command("counter list 0/8"))[0], "1 CTR_RX_TOTAL_BYTES " + std::to_string(stopped));
  EXPECT_EQ(get(8, 1), stopped);
}

TEST_F(LabInterfaces, ListShowsWhatTheInterfaceHasAndRatesOfWhatRuns) {
  EXPECT_EQ(lab_command("counter list cpu"), "1 CTR_RX_TOTAL_BYTES 0\n"
                                             "13 CTR_RX_UCAST_FRAMES 0\n"
                                             "20 CTR_TX_TOTAL_BYTES 0\n"
                                             "28 CTR_TX_UCAST_FRAMES 0\n"
                                             "51 CTR_RX_TOTAL_FRAMES 0\n"
                                             "53 CTR_TX_TOTAL_FRAMES 0\n"
                                             "ok\n");
  EXPECT_EQ(lab_command("counter set cpu 13 12345678901234"), "ok\n");
  EXPECT_EQ(lab_command("counter run cpu 51 1"), "ok\n");
  EXPECT_EQ(lab_command("counter set cpu 51 4"), "ok\n");
  std::string list = lab_command("counter list cpu");
  EXPECT_EQ(lines_of(list)[1], "13 CTR_RX_UCAST_FRAMES 12345678901234");
  EXPECT_EQ(lines_of(list)[4].substr(0, 23), "51 CTR_RX_TOTAL_FRAMES ");
  EXPECT_TRUE(lines_of(list)[4].ends_with(" 1")) << list;
  EXPECT_EQ(lines_of(lab_command("counter list 0/1")).size(), 61u + 1);
  EXPECT_EQ(lines_of(lab_command("counter list 0/8")).size(), 56u + 1);
  EXPECT_EQ(lab_command("counter list loopback0"), "ok\n");
}

TEST_F(LabInterfaces, NamesListsAllCounters) {
  std::vector<std::string> lines = lines_of(lab_command("counter names"));
  ASSERT_EQ(lines.size(), 64u);
  for (uint32_t id = 0; id < 63; id++)
    EXPECT_EQ(lines[id], std::to_string(id) + " " + std::string(counter_name(id)));
  EXPECT_EQ(lines[62], "62 CTR_ETHER_STATS_HOLD");
  EXPECT_EQ(lines[63], "ok");
}

/* --- Refusals ------------------------------------------------------------------------------------------- */

TEST_F(LabInterfaces, RefusalsSayWhatWasWrong) {
  const std::string link = "error: usage: link up|down PORT\n",
                    set = "error: usage: counter set INTERFACE COUNTER VALUE\n",
                    add = "error: usage: counter add INTERFACE COUNTER AMOUNT\n",
                    run = "error: usage: counter run INTERFACE COUNTER PER-SECOND\n",
                    none = "error: no such command; \"help\" lists them\n";
  const std::pair<std::string, std::string> rows[] = {
      {"link", link},
      {"link up", link},
      {"link in 0/1", link},
      {"link up 0/1 0/2", link},
      {"link up 0/10", "error: no such port\n"},
      {"link down cpu", "error: no such port\n"},
      {"link down 3/1", "error: no such port\n"},
      {"link down loopback0", "error: no such port\n"},
      {"link down vlan1", "error: no such port\n"},
      {"counter", none},
      {"counter stop", none},
      {"counter set", set},
      {"counter set 0/1 1", set},
      {"counter set 0/1 1 2 3", set},
      {"counter set 0/1 1 x", set},
      {"counter set 0/1 1 -1", set},
      {"counter set 0/1 1 18446744073709551616", set},
      {"counter add 0/1 1 1.5", add},
      {"counter run 0/1 1 fast", run},
      {"counter list", "error: usage: counter list INTERFACE\n"},
      {"counter names x", "error: usage: counter names\n"},
      {"counter set 0/10 1 1", "error: there is no interface \"0/10\"\n"},
      {"counter add vlan2 1 1", "error: there is no interface \"vlan2\"\n"},
      {"counter list 1", "error: there is no interface \"1\"\n"},
      {"counter set 0/1 63 1", "error: there is no counter \"63\"; \"counter names\" lists them\n"},
      {"counter set 0/1 -1 1", "error: there is no counter \"-1\"; \"counter names\" lists them\n"},
      {"counter set 0/1 4294967297 1",
       "error: there is no counter \"4294967297\"; \"counter names\" lists them\n"},
      {"counter run 0/1 ctr_rx_64 1",
       "error: there is no counter \"ctr_rx_64\"; \"counter names\" lists them\n"},
      {"counter add 0/1 1x 1", "error: there is no counter \"1x\"; \"counter names\" lists them\n"},
      {"counter set 0/1 0 1", "error: 0/1 has no counter CTR_RESERVED\n"},
      {"counter add 0/8 34 1", "error: 0/8 has no counter CTR_TX_ONE_COLLISION\n"},
      {"counter run 3/1 CTR_RX_64 1", "error: 3/1 has no counter CTR_RX_64\n"},
      {"counter set loopback0 1 1", "error: loopback0 has no counter CTR_RX_TOTAL_BYTES\n"},
      {"counter set vlan1 14 1", "error: vlan1 has no counter CTR_RX_MCAST_FRAMES\n"},
  };
  for (const auto &[line, reply] : rows) EXPECT_EQ(lab_command(line), reply) << line;
  locked_switch model;
  EXPECT_TRUE(model->counters->of.empty());
}

/* --- At the same time ----------------------------------------------------------------------------------- */

TEST_F(LabInterfaces, LabCommandsAndCallsAtTheSameTimeLoseNothing) {
  constexpr int rounds = 500;
  set_limit("settle-milliseconds", 0);
  std::atomic<int> refused{0};
  std::thread lab([&refused] {
    for (int round = 0; round < rounds; round++) {
      for (const char *line : {"counter add 0/7 1 3", "counter run 0/8 1 1000", "link down 0/6",
                               "link up 0/6", "counter list 0/7"})
        refused += lab_command(line).ends_with("ok\n") ? 0 : 1;
    }
  });
  uint64_t seen = 0;
  for (int round = 0; round < rounds; round++) {
    std::string words = "round " + std::to_string(round);
    open_buffdesc text = {static_cast<uint32_t>(words.size()), words.data()};
    ASSERT_EQ(rpcclt_openapiIfDescrSet(&handle, 6, &text), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiIfAdminStateSet(&handle, 8, round % 2), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, 8), OPEN_E_NONE);
    uint64_t now = get(7, 1);
    ASSERT_GE(now, seen);
    seen = now;
  }
  lab.join();
  EXPECT_EQ(refused, 0);
  EXPECT_EQ(get(7, 1), uint64_t{3} * rounds);
  ASSERT_TRUE(wait_applied(patience_ms));
  EXPECT_TRUE(up(6));
  EXPECT_TRUE(up(8));
  EXPECT_EQ(configured(), "interface 0/6 description \"round 499\"\n");
}

} // namespace
