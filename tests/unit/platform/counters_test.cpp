/* Tests of the model's counters, with a clock that the tests choose: setting, adding, running, wrapping, and
 * which interface has which. */
#include "platform/softswitch/model/counters.h"

#include "tests/unit/platform/mixed_ports.h"

using namespace softswitch;

namespace {

constexpr uint32_t bytes_in = 1, frames_in = 51; /* CTR_RX_TOTAL_BYTES, CTR_RX_TOTAL_FRAMES */
constexpr uint32_t copper = 2, cage = 8, cpu = 55, lag = 56, loopback = 120, vlan_routing = 226;

uint64_t value_at(const switch_model &model, int64_t now, uint32_t interface = cage, uint32_t id = bytes_in) {
  return counter_at(model, interface, id, now).value;
}

class Counters : public testing::Test {
protected:
  void SetUp() override {
    uint32_t number;
    ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
    ASSERT_EQ(number, vlan_routing);
  }

  std::vector<uint32_t> counters_of(uint32_t interface) {
    std::vector<uint32_t> found;
    for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) {
      open_error_t rc = counter_check(model, interface, id);
      EXPECT_TRUE(rc == OPEN_E_NONE || rc == OPEN_E_NOT_FOUND) << interface << ' ' << id;
      if (rc == OPEN_E_NONE) found.push_back(id);
    }
    return found;
  }

  switch_model model = mixed_ports_model();
};

/* --- Which there are ------------------------------------------------------------------------------------ */

/* All of them are compared with the names that the API documents where both are at hand, in the tests of the
 * modules. */
TEST_F(Counters, NamesAndIdsLeadToEachOther) {
  EXPECT_EQ(counter_name(0), "CTR_RESERVED");
  EXPECT_EQ(counter_name(5), "CTR_RX_256_511");
  EXPECT_EQ(counter_name(62), "CTR_ETHER_STATS_HOLD");
  uint32_t found;
  for (uint32_t id = 0; id < OPEN_STAT_COUNTERS; id++) {
    EXPECT_TRUE(counter_by_name(counter_name(id), &found));
    EXPECT_EQ(found, id);
  }
  for (const char *name : {"", "CTR_", "ctr_rx_64", "CTR_RX_64 ", "CTR_RX_6", "1"})
    EXPECT_FALSE(counter_by_name(name, &found)) << name;
}

TEST_F(Counters, InterfacesHaveThoseOfTheirType) {
  std::vector<uint32_t> on_copper;
  for (uint32_t id = 1; id <= 61; id++) on_copper.push_back(id);
  std::vector<uint32_t> on_cages = on_copper;
  std::erase_if(on_cages, [](uint32_t id) { return (id >= 34 && id <= 37) || id == 55; });
  const std::vector<uint32_t> on_lags = {1,  13, 14, 15, 20, 28, 29, 30, 49, 50,
                                         51, 52, 53, 54, 57, 58, 59, 60, 61};
  const std::vector<uint32_t> on_host = {1, 13, 20, 28, 51, 53};
  for (uint32_t port : {1u, 2u, 3u, 4u, 9u}) EXPECT_EQ(counters_of(port), on_copper) << port;
  for (uint32_t port : {5u, 6u, 7u, 8u}) EXPECT_EQ(counters_of(port), on_cages) << port;
  for (uint32_t number : {lag, 119u}) EXPECT_EQ(counters_of(number), on_lags) << number;
  EXPECT_EQ(counters_of(cpu), on_host);
  EXPECT_EQ(counters_of(vlan_routing), on_host);
  for (uint32_t number : {loopback, 127u}) EXPECT_EQ(counters_of(number), std::vector<uint32_t>()) << number;
}

/* What is there is checked first, then whether the one has the other. */
TEST_F(Counters, RefusalsNameTheirReason) {
  const struct {
    uint32_t interface, id;
    open_error_t result;
  } rows[] = {{cage, 63, OPEN_E_PARAM},       {cage, UINT32_MAX, OPEN_E_PARAM}, {227, 63, OPEN_E_PARAM},
              {0, 1, OPEN_E_PARAM},           {354, 1, OPEN_E_PARAM},           {10, 1, OPEN_E_PARAM},
              {227, 1, OPEN_E_PARAM},         {cage, 0, OPEN_E_NOT_FOUND},      {cage, 62, OPEN_E_NOT_FOUND},
              {cage, 34, OPEN_E_NOT_FOUND},   {lag, 2, OPEN_E_NOT_FOUND},       {cpu, 14, OPEN_E_NOT_FOUND},
              {loopback, 1, OPEN_E_NOT_FOUND}};
  for (const auto &row : rows) {
    EXPECT_EQ(counter_check(model, row.interface, row.id), row.result) << row.interface << ' ' << row.id;
    EXPECT_EQ(counter_set(model, row.interface, row.id, 1, 0), row.result);
    EXPECT_EQ(counter_add(model, row.interface, row.id, 1, 0), row.result);
    EXPECT_EQ(counter_run(model, row.interface, row.id, 1, 0), row.result);
  }
  EXPECT_EQ(counters_clear(model, 0, 0), OPEN_E_PARAM);
  EXPECT_EQ(counters_clear(model, 10, 0), OPEN_E_PARAM);
  EXPECT_EQ(counters_clear(model, loopback, 0), OPEN_E_NONE);
  EXPECT_TRUE(model.counters->of.empty());
}

TEST_F(Counters, OnlyInterfacesWithACounterEverSetTakeRoom) {
  for (uint32_t id : counters_of(cage)) value_at(model, 1000, cage, id);
  ASSERT_EQ(counters_clear(model, cage, 1000), OPEN_E_NONE);
  EXPECT_TRUE(model.counters->of.empty());
  ASSERT_EQ(counter_set(model, cage, bytes_in, 1, 0), OPEN_E_NONE);
  EXPECT_EQ(model.counters->of.size(), 1u);
}

/* --- Values --------------------------------------------------------------------------------------------- */

TEST_F(Counters, BeginAtZeroAndAreEachTheirOwn) {
  for (uint32_t id : counters_of(copper)) EXPECT_EQ(value_at(model, 5000, copper, id), 0u);
  for (uint32_t id : counters_of(copper)) ASSERT_EQ(counter_set(model, copper, id, 100 + id, 0), OPEN_E_NONE);
  for (uint32_t id : counters_of(copper)) EXPECT_EQ(value_at(model, 5000, copper, id), 100 + id);
  EXPECT_EQ(value_at(model, 5000, cage), 0u);
  EXPECT_EQ(value_at(model, 5000, 1), 0u);
}

TEST_F(Counters, AddingWraps) {
  ASSERT_EQ(counter_set(model, cage, bytes_in, UINT64_MAX, 0), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 0), UINT64_MAX);
  ASSERT_EQ(counter_add(model, cage, bytes_in, 1, 0), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 0), 0u);
  ASSERT_EQ(counter_add(model, cage, bytes_in, UINT64_MAX, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_add(model, cage, bytes_in, 11, 0), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 0), 10u);
}

TEST_F(Counters, RunningCounterFollowsTheClock) {
  ASSERT_EQ(counter_set(model, cage, bytes_in, 7, 1000), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1500, 10000), OPEN_E_NONE);
  const std::pair<int64_t, uint64_t> moments[] = {{10000, 7},    {10001, 8},        {10002, 10},
                                                  {10999, 1505}, {11000, 1507},     {70000, 90007},
                                                  {10000, 7},    {3610000, 5400007}};
  for (const auto &[now, value] : moments) {
    EXPECT_EQ(value_at(model, now), value) << now;
    EXPECT_EQ(counter_at(model, cage, bytes_in, now).per_second, 1500u);
  }
  EXPECT_EQ(value_at(model, 11000, cage, frames_in), 0u) << "no other counter runs";
}

TEST_F(Counters, RateOfZeroStopsACounterAtWhatItHas) {
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1000, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, bytes_in, 0, 2500), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 2500), 2500u);
  EXPECT_EQ(value_at(model, 1000000), 2500u);
  ASSERT_EQ(counter_run(model, cage, bytes_in, 10, 1000000), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 1001000), 2510u);
}

TEST_F(Counters, NewRateGoesOnFromWhatTheOldOneGave) {
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1000, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, bytes_in, 10, 2000), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 3000), 2010u);
}

TEST_F(Counters, RunningCounterWrapsAtAnyRate) {
  ASSERT_EQ(counter_set(model, cage, bytes_in, UINT64_MAX - 9, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1000, 0), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 9), UINT64_MAX);
  EXPECT_EQ(value_at(model, 10), 0u);
  EXPECT_EQ(value_at(model, 15), 5u);
  /* 2^64 - 1 a second for two seconds is 2^64 twice, less two. */
  ASSERT_EQ(counter_set(model, cage, bytes_in, 0, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, bytes_in, UINT64_MAX, 0), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 1000), UINT64_MAX);
  EXPECT_EQ(value_at(model, 2000), UINT64_MAX - 1);
  EXPECT_EQ(value_at(model, 1), UINT64_MAX / 1000);
}

TEST_F(Counters, SlowCounterLosesNothingToReadingAndAdding) {
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1, 0), OPEN_E_NONE);
  for (int64_t now = 0; now < 10000; now += 100) {
    value_at(model, now);
    ASSERT_EQ(counter_add(model, cage, bytes_in, 5, now), OPEN_E_NONE);
  }
  EXPECT_EQ(value_at(model, 10000), 510u);
}

TEST_F(Counters, SettingARunningCounterLetsItGoOnFromThere) {
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1000, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_set(model, cage, bytes_in, 50, 4000), OPEN_E_NONE);
  EXPECT_EQ(value_at(model, 4000), 50u);
  EXPECT_EQ(value_at(model, 5000), 1050u);
}

TEST_F(Counters, ClearingGivesZeroAndRunningCountersGoOnFromThere) {
  for (uint32_t id : counters_of(cage)) ASSERT_EQ(counter_set(model, cage, id, 9, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_set(model, copper, bytes_in, 9, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, bytes_in, 1000, 0), OPEN_E_NONE);
  ASSERT_EQ(counters_clear(model, cage, 3000), OPEN_E_NONE);
  for (uint32_t id : counters_of(cage)) EXPECT_EQ(value_at(model, 3000, cage, id), 0u) << id;
  EXPECT_EQ(value_at(model, 4000), 1000u);
  EXPECT_EQ(value_at(model, 4000, cage, frames_in), 0u);
  EXPECT_EQ(value_at(model, 4000, copper), 9u) << "another interface";
}

/* --- What they are not ---------------------------------------------------------------------------------- */

TEST_F(Counters, AreNoChangeAndStayWhenTheConfigurationGoes) {
  changes_taken(model, model.change);
  ASSERT_EQ(counter_set(model, cage, bytes_in, 5, 0), OPEN_E_NONE);
  ASSERT_EQ(counter_run(model, cage, frames_in, 5, 0), OPEN_E_NONE);
  ASSERT_EQ(counters_clear(model, copper, 0), OPEN_E_NONE);
  EXPECT_EQ(model.change, model.applied);
  EXPECT_EQ(print_configuration(model), "vlan 1 routing interface 226\n");
  switch_reset(model);
  EXPECT_EQ(value_at(model, 1000), 5u);
  EXPECT_EQ(value_at(model, 1000, cage, frames_in), 5u);
}

TEST_F(Counters, CopyOfTheModelKeepsItsOwn) {
  ASSERT_EQ(counter_set(model, cage, bytes_in, 5, 0), OPEN_E_NONE);
  switch_model copy = model;
  ASSERT_EQ(counter_set(model, cage, bytes_in, 6, 0), OPEN_E_NONE);
  EXPECT_EQ(value_at(copy, 0), 5u);
  EXPECT_EQ(value_at(model, 0), 6u);
}

TEST_F(Counters, NewVlanRoutingInterfaceHasNothingOfTheOneBefore) {
  uint32_t number;
  ASSERT_EQ(counter_run(model, vlan_routing, bytes_in, 1000, 0), OPEN_E_NONE);
  ASSERT_EQ(interface_remove_vlan_routing(model, 1), OPEN_E_NONE);
  EXPECT_EQ(counter_check(model, vlan_routing, bytes_in), OPEN_E_PARAM);
  ASSERT_EQ(vlan_create(model, 10), OPEN_E_NONE);
  ASSERT_EQ(interface_make_vlan_routing(model, 10, &number), OPEN_E_NONE);
  ASSERT_EQ(number, vlan_routing);
  EXPECT_EQ(value_at(model, 1000000, vlan_routing), 0u);
}

TEST_F(Counters, NewVlanRoutingInterfaceHasNothingOfTheOneThatTheResetTook) {
  uint32_t number;
  ASSERT_EQ(counter_run(model, vlan_routing, bytes_in, 1000, 0), OPEN_E_NONE);
  switch_reset(model);
  EXPECT_EQ(counter_check(model, vlan_routing, bytes_in), OPEN_E_PARAM);
  ASSERT_EQ(interface_make_vlan_routing(model, 1, &number), OPEN_E_NONE);
  ASSERT_EQ(number, vlan_routing);
  EXPECT_EQ(value_at(model, 1000000, vlan_routing), 0u);
}

} // namespace
