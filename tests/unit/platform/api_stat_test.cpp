/* Tests of the statistics functions of the C interface: every result code of every function, and what they do
 * to counters that lab control has set. Counters themselves are tested in counters_test.cpp. */
#include "platform/api/openapi_stat.h"

#include "platform/softswitch/services/clock.h"
#include "tests/unit/platform/mixed_ports.h"

namespace {

constexpr uint32_t copper = 2, cage = 8, cpu = 55, lag = 56, loopback = 120, vlan_routing = 226;
constexpr uint32_t bytes_in = 1, one_collision = 34;

class Statistics : public MixedPorts {
protected:
  void TearDown() override {
    EXPECT_EQ(configured(), "") << "counters are no configuration";
    MixedPorts::TearDown();
  }

  void set(uint32_t interface, uint32_t id, uint64_t value) {
    softswitch::locked_switch model;
    ASSERT_EQ(softswitch::counter_set(*model, interface, id, value, softswitch::monotonic_ms()), OPEN_E_NONE);
  }
  void run(uint32_t interface, uint32_t id, uint64_t per_second) {
    softswitch::locked_switch model;
    ASSERT_EQ(softswitch::counter_run(*model, interface, id, per_second, softswitch::monotonic_ms()),
              OPEN_E_NONE);
  }
  uint64_t get(uint32_t interface, uint32_t id) {
    EXPECT_EQ(rpcclt_openapiStatHighLowGet(&handle, id, interface, &low, &high), OPEN_E_NONE)
        << interface << ' ' << id;
    return uint64_t{high} << 32 | low;
  }

  /* The first value of a running counter that is not 0; 0 when none comes. */
  uint64_t get_running(uint32_t interface, uint32_t id) {
    int64_t end = softswitch::monotonic_ms() + patience_ms;
    uint64_t value = 0;
    while (value == 0 && softswitch::monotonic_ms() < end) value = get(interface, id);
    EXPECT_NE(value, 0u) << "it does not run";
    return value;
  }

  uint32_t low, high;
};

TEST_F(Statistics, LowerHalfComesFirst) {
  set(cage, bytes_in, 0x0123456789abcdef);
  ASSERT_EQ(rpcclt_openapiStatHighLowGet(&handle, bytes_in, cage, &low, &high), OPEN_E_NONE);
  EXPECT_EQ(low, 0x89abcdefu);
  EXPECT_EQ(high, 0x01234567u);
  for (uint64_t value : {uint64_t{0}, uint64_t{UINT32_MAX}, uint64_t{UINT32_MAX} + 1, UINT64_MAX}) {
    set(cage, bytes_in, value);
    EXPECT_EQ(get(cage, bytes_in), value);
  }
}

TEST_F(Statistics, WalkOverAllIdsFindsThoseThatTheInterfaceHas) {
  const std::pair<uint32_t, int> counts[] = {{copper, 61}, {cage, 56},    {lag, 19},
                                             {cpu, 6},     {loopback, 0}, {vlan_routing, 6}};
  for (const auto &[interface, count] : counts) {
    int found = 0;
    for (uint32_t id = 0; id <= 62; id++) {
      open_error_t rc = rpcclt_openapiStatHighLowGet(&handle, id, interface, &low, &high);
      EXPECT_TRUE(rc == OPEN_E_NONE || rc == OPEN_E_NOT_FOUND) << interface << ' ' << id;
      found += rc == OPEN_E_NONE;
    }
    EXPECT_EQ(found, count) << interface;
  }
}

TEST_F(Statistics, RefusalsNameTheirReason) {
  const struct {
    uint32_t id, interface;
    open_error_t result;
  } rows[] = {{63, cage, OPEN_E_PARAM},       {UINT32_MAX, cage, OPEN_E_PARAM},
              {63, 10, OPEN_E_PARAM},         {1, 0, OPEN_E_PARAM},
              {1, 128, OPEN_E_PARAM},         {1, 354, OPEN_E_PARAM},
              {1, UINT32_MAX, OPEN_E_PARAM},  {1, 10, OPEN_E_PARAM},
              {1, 227, OPEN_E_PARAM},         {0, cage, OPEN_E_NOT_FOUND},
              {62, cage, OPEN_E_NOT_FOUND},   {34, cage, OPEN_E_NOT_FOUND},
              {1, loopback, OPEN_E_NOT_FOUND}};
  for (const auto &row : rows) {
    EXPECT_EQ(rpcclt_openapiStatHighLowGet(&handle, row.id, row.interface, &low, &high), row.result)
        << row.id << ' ' << row.interface;
    EXPECT_EQ(rpcclt_openapiStatReset(&handle, row.id, row.interface), row.result)
        << row.id << ' ' << row.interface;
  }
  for (uint32_t interface : {0u, 128u, 225u, 354u, UINT32_MAX})
    EXPECT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, interface), OPEN_E_PARAM) << interface;
  for (uint32_t interface : {10u, 54u, 227u, 353u})
    EXPECT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, interface), OPEN_E_PARAM) << interface;
}

TEST_F(Statistics, ResetSetsOneCounterToZero) {
  set(copper, bytes_in, 5);
  set(copper, one_collision, 6);
  set(cage, bytes_in, 7);
  ASSERT_EQ(rpcclt_openapiStatReset(&handle, bytes_in, copper), OPEN_E_NONE);
  EXPECT_EQ(get(copper, bytes_in), 0u);
  EXPECT_EQ(get(copper, one_collision), 6u);
  EXPECT_EQ(get(cage, bytes_in), 7u);
}

TEST_F(Statistics, ResetOfAnInterfaceSetsAllItsCountersToZero) {
  for (uint32_t id = 1; id <= 61; id++) set(copper, id, id);
  set(cage, bytes_in, 7);
  ASSERT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, copper), OPEN_E_NONE);
  for (uint32_t id = 1; id <= 61; id++) EXPECT_EQ(get(copper, id), 0u) << id;
  EXPECT_EQ(get(cage, bytes_in), 7u);
  for (uint32_t interface : {cage, cpu, lag, loopback, vlan_routing})
    EXPECT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, interface), OPEN_E_NONE) << interface;
}

/* Rates as multiples of 1000 show how many milliseconds a counter has run, whatever the machine's speed. */
TEST_F(Statistics, RunningCounterRunsAndGoesOnFromZeroWhenReset) {
  set(cage, bytes_in, 1);
  run(cage, bytes_in, UINT64_C(1000000));
  uint64_t first = get(cage, bytes_in), second = get(cage, bytes_in);
  EXPECT_EQ(first % 1000, 1u);
  EXPECT_GE(second, first);
  ASSERT_EQ(rpcclt_openapiStatReset(&handle, bytes_in, cage), OPEN_E_NONE);
  EXPECT_EQ(get_running(cage, bytes_in) % 1000, 0u);
  ASSERT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, cage), OPEN_E_NONE);
  EXPECT_EQ(get_running(cage, bytes_in) % 1000, 0u);
}

TEST_F(Statistics, CountersAreNoChangeAndDoNotSurviveARestart) {
  softswitch::hold_apply(true);
  set(cage, bytes_in, 5);
  ASSERT_EQ(rpcclt_openapiStatReset(&handle, bytes_in, copper), OPEN_E_NONE);
  ASSERT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, copper), OPEN_E_NONE);
  EXPECT_TRUE(softswitch::wait_applied(0));
  EXPECT_EQ(file_content(dir.path + "/journal-1"), "");
  restart();
  EXPECT_EQ(get(cage, bytes_in), 0u);
}

TEST_F(Statistics, ConfigurationChangesLeaveCountersAlone) {
  set(cage, bytes_in, 5);
  ASSERT_EQ(commit("interface 0/8 shutdown"), OPEN_E_NONE);
  ASSERT_TRUE(softswitch::wait_applied(patience_ms));
  EXPECT_EQ(get(cage, bytes_in), 5u);
  std::string error;
  ASSERT_TRUE(softswitch::reload(&error)) << error;
  EXPECT_EQ(get(cage, bytes_in), 5u);
}

TEST_F(Statistics, EveryFunctionChecksHandleAndPointersAndAnswersFaults) {
  openapiClientHandle_t never = {};
  for (auto [client, result] :
       {std::pair{&never, OPEN_E_RPC}, {static_cast<openapiClientHandle_t *>(nullptr), OPEN_E_PARAM}}) {
    EXPECT_EQ(rpcclt_openapiStatHighLowGet(client, bytes_in, cage, &low, &high), result);
    EXPECT_EQ(rpcclt_openapiStatReset(client, bytes_in, cage), result);
    EXPECT_EQ(rpcclt_openapiInterfaceStatsReset(client, cage), result);
  }
  EXPECT_EQ(rpcclt_openapiStatHighLowGet(&handle, bytes_in, cage, nullptr, &high), OPEN_E_PARAM);
  EXPECT_EQ(rpcclt_openapiStatHighLowGet(&handle, bytes_in, cage, &low, nullptr), OPEN_E_PARAM);
  set(cage, bytes_in, 5);
  for (const char *function :
       {"rpcclt_openapiStatHighLowGet", "rpcclt_openapiStatReset", "rpcclt_openapiInterfaceStatsReset"})
    ASSERT_TRUE(softswitch::fault_order(function, OPEN_E_TIMEOUT, 1, 0)) << function;
  EXPECT_EQ(rpcclt_openapiStatHighLowGet(&handle, bytes_in, cage, &low, &high), OPEN_E_TIMEOUT);
  EXPECT_EQ(rpcclt_openapiStatReset(&handle, bytes_in, cage), OPEN_E_TIMEOUT);
  EXPECT_EQ(rpcclt_openapiInterfaceStatsReset(&handle, cage), OPEN_E_TIMEOUT);
  EXPECT_EQ(get(cage, bytes_in), 5u);
}

} // namespace
