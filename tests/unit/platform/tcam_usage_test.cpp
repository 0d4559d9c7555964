/* Tests of what the TCAM is used for: groups, slices and room, in the model and through the C interface. */
#include "platform/softswitch/model/tcam_usage.h"

#include "tests/unit/platform/softswitch_test_support.h"
#include "tests/unit/platform/tcam_test_support.h"

#include <string.h>

using namespace softswitch;

namespace {

/* --- The model ------------------------------------------------------------------------------------------ */

switch_model factory() {
  return make_switch(built_in_profile());
}

/* Puts policies into the model past its rules. */
void add_policies(switch_model &model, uint32_t type, uint32_t count) {
  auto &policies = model.tcam.edit()->policies;
  uint32_t id = policies.empty() ? 0 : policies.rbegin()->first;
  while (count-- > 0) policies[++id].record = plain_policy(type);
}

/* Puts a list with so many rules into the model past its rules, bound in a direction. */
void add_list(switch_model &model, uint32_t type, size_t rules, uint32_t direction, uint32_t port = 1) {
  acl_table *table = model.acls.edit();
  uint32_t id = static_cast<uint32_t>(table->lists.size() + 1);
  table->lists.push_back({id, type, "list" + std::to_string(id), {}});
  auto rule = std::make_shared<const acl_rule>();
  for (uint32_t number = 1; number <= rules; number++)
    table->lists.back().rules.edit()->push_back({number, rule});
  table->bindings.edit()->push_back({{acl_place::interface, port, direction}, id, id});
  table->lists.back().bound[direction] = 1;
}

/* The groups of a stage as "kind:count/depth x width of slice", those without entries too. */
std::string groups_of(const switch_model &model, uint32_t stage) {
  std::string text;
  for (const tcam_group &group : tcam_groups(model, stage)) {
    if (!text.empty()) text += ", ";
    text += std::to_string(group.kind) + ":" + std::to_string(group.count) + "/" +
            std::to_string(group.depth) + "x" + std::to_string(group.width) + "x" +
            std::to_string(group.slice_entries);
  }
  return text;
}

/* Used slices: of 256 and of 512 at ingress, of 256 at egress. */
std::string slices_of(const switch_model &model) {
  return std::to_string(tcam_slices_of(model, OPEN_TCAM_STAGE_INGRESS, 256).used) + " " +
         std::to_string(tcam_slices_of(model, OPEN_TCAM_STAGE_INGRESS, 512).used) + " " +
         std::to_string(tcam_slices_of(model, OPEN_TCAM_STAGE_EGRESS, 256).used);
}

const std::string no_ingress = "1:0/0x1x256, 2:0/0x2x256, 4:0/0x1x512, 5:0/0x1x512, 6:0/0x2x512";
const std::string no_egress = "3:0/0x1x256, 4:0/0x1x256, 5:0/0x1x256, 6:0/0x2x256";

static bool has_room(const switch_model &model) {
  return tcam_has_room(model, OPEN_TCAM_STAGE_INGRESS) && tcam_has_room(model, OPEN_TCAM_STAGE_EGRESS);
}

TEST(TcamUsage, EmptySwitchHasItsGroupsWithoutEntries) {
  switch_model model = factory();
  EXPECT_EQ(groups_of(model, OPEN_TCAM_STAGE_INGRESS), no_ingress);
  EXPECT_EQ(groups_of(model, OPEN_TCAM_STAGE_EGRESS), no_egress);
  EXPECT_EQ(groups_of(model, 0), "");
  EXPECT_EQ(groups_of(model, 3), "");
  EXPECT_EQ(slices_of(model), "0 0 0");
  EXPECT_TRUE(has_room(model));
}

TEST(TcamUsage, PoliciesTakeSlicesOf256) {
  const struct {
    uint32_t openflow, gen, egress;
    const char *slices;
  } rows[] = {
      {1, 0, 0, "1 0 0"},   {256, 0, 0, "1 0 0"},   {257, 0, 0, "2 0 0"},   {512, 0, 0, "2 0 0"},
      {0, 1, 0, "2 0 0"},   {0, 256, 0, "2 0 0"},   {0, 257, 0, "4 0 0"},   {0, 512, 0, "4 0 0"},
      {1, 511, 0, "5 0 0"}, {255, 257, 0, "5 0 0"}, {256, 256, 0, "3 0 0"}, {257, 255, 0, "4 0 0"},
      {0, 0, 1, "0 0 1"},   {0, 0, 128, "0 0 1"},   {1, 1, 1, "3 0 1"},
  };
  for (const auto &row : rows) {
    switch_model model = factory();
    add_policies(model, OPEN_TCAM_POLICY_OPENFLOW, row.openflow);
    add_policies(model, OPEN_TCAM_POLICY_GEN, row.gen);
    add_policies(model, OPEN_TCAM_POLICY_EGRESS, row.egress);
    EXPECT_EQ(slices_of(model), row.slices) << row.openflow << " " << row.gen << " " << row.egress;
  }
}

TEST(TcamUsage, RulesTakeSlicesOf512AtIngressAndOf256AtEgress) {
  const struct {
    uint32_t type;
    size_t rules;
    const char *ingress, *egress;
  } rows[] = {
      {OPEN_ACL_TYPE_IP, 1, "0 1 0", "0 0 1"},     {OPEN_ACL_TYPE_IP, 256, "0 1 0", "0 0 1"},
      {OPEN_ACL_TYPE_IP, 257, "0 1 0", "0 0 2"},   {OPEN_ACL_TYPE_IP, 512, "0 1 0", "0 0 2"},
      {OPEN_ACL_TYPE_IP, 513, "0 2 0", "0 0 3"},   {OPEN_ACL_TYPE_IP, 1023, "0 2 0", "0 0 4"},
      {OPEN_ACL_TYPE_MAC, 512, "0 1 0", "0 0 2"},  {OPEN_ACL_TYPE_MAC, 513, "0 2 0", "0 0 3"},
      {OPEN_ACL_TYPE_IPV6, 1, "0 2 0", "0 0 2"},   {OPEN_ACL_TYPE_IPV6, 256, "0 2 0", "0 0 2"},
      {OPEN_ACL_TYPE_IPV6, 257, "0 2 0", "0 0 4"}, {OPEN_ACL_TYPE_IPV6, 512, "0 2 0", "0 0 4"},
      {OPEN_ACL_TYPE_IPV6, 513, "0 4 0", "0 0 6"}, {OPEN_ACL_TYPE_IPV6, 1023, "0 4 0", "0 0 8"},
      {OPEN_ACL_TYPE_IPV6, 0, "0 0 0", "0 0 0"},
  };
  for (const auto &row : rows) {
    switch_model in = factory(), out = factory();
    add_list(in, row.type, row.rules, OPEN_ACL_DIRECTION_IN);
    add_list(out, row.type, row.rules, OPEN_ACL_DIRECTION_OUT);
    EXPECT_EQ(slices_of(in), row.ingress) << row.type << " " << row.rules;
    EXPECT_EQ(slices_of(out), row.egress) << row.type << " " << row.rules;
  }
}

TEST(TcamUsage, GroupsOfAStageDoNotShareSlices) {
  switch_model model = factory();
  add_policies(model, OPEN_TCAM_POLICY_OPENFLOW, 3);
  add_policies(model, OPEN_TCAM_POLICY_GEN, 257);
  add_policies(model, OPEN_TCAM_POLICY_EGRESS, 4);
  add_list(model, OPEN_ACL_TYPE_IP, 1, OPEN_ACL_DIRECTION_IN);
  add_list(model, OPEN_ACL_TYPE_MAC, 2, OPEN_ACL_DIRECTION_IN);
  add_list(model, OPEN_ACL_TYPE_IPV6, 513, OPEN_ACL_DIRECTION_IN);
  add_list(model, OPEN_ACL_TYPE_IPV6, 255, OPEN_ACL_DIRECTION_OUT);
  add_list(model, OPEN_ACL_TYPE_IPV6, 2, OPEN_ACL_DIRECTION_OUT);
  EXPECT_EQ(groups_of(model, OPEN_TCAM_STAGE_INGRESS),
            "1:3/1x1x256, 2:257/2x2x256, 4:1/1x1x512, 5:2/1x1x512, 6:513/2x2x512");
  EXPECT_EQ(groups_of(model, OPEN_TCAM_STAGE_EGRESS), "3:4/1x1x256, 4:0/0x1x256, 5:0/0x1x256, 6:257/2x2x256");
  EXPECT_EQ(slices_of(model), "5 6 5");
}

TEST(TcamUsage, EveryMixOfPoliciesThatTheLimitsAllowFits) {
  for (uint32_t gen = 0; gen <= 512; gen++) {
    switch_model model = factory();
    add_policies(model, OPEN_TCAM_POLICY_GEN, gen);
    add_policies(model, OPEN_TCAM_POLICY_OPENFLOW, 512 - gen);
    add_policies(model, OPEN_TCAM_POLICY_EGRESS, 128);
    ASSERT_TRUE(has_room(model)) << gen;
  }
}

TEST(TcamUsage, AllListsFullAndBoundInBothDirectionsFitNextToAllPolicies) {
  const limits built_in;
  for (uint32_t ipv6 = 0; ipv6 <= built_in.acls; ipv6 += 10) {
    switch_model model = factory();
    add_policies(model, OPEN_TCAM_POLICY_GEN, 511);
    add_policies(model, OPEN_TCAM_POLICY_OPENFLOW, 1);
    add_policies(model, OPEN_TCAM_POLICY_EGRESS, 128);
    for (uint32_t list = 0; list < built_in.acls; list++) {
      uint32_t type = list < ipv6 ? uint32_t{OPEN_ACL_TYPE_IPV6} : OPEN_ACL_TYPE_IP + list % 2;
      add_list(model, type, built_in.acl_rules, OPEN_ACL_DIRECTION_IN);
    }
    for (uint32_t id = 1; id <= built_in.acls; id++)
      ASSERT_EQ(acl_bind(model, {acl_place::vlan, 1, OPEN_ACL_DIRECTION_OUT}, id, id), OPEN_E_NONE) << ipv6;
    ASSERT_TRUE(has_room(model)) << ipv6;
    /* With the last round nothing is left. */
    ASSERT_EQ(slices_of(model) == "5 400 801", ipv6 == built_in.acls) << slices_of(model);
  }
}

TEST(TcamUsage, ThereIsNoRoomWhenAnySliceIsMissing) {
  switch_model model = factory();
  add_policies(model, OPEN_TCAM_POLICY_GEN, 1);
  add_list(model, OPEN_ACL_TYPE_IPV6, 1, OPEN_ACL_DIRECTION_IN);
  add_list(model, OPEN_ACL_TYPE_IPV6, 1, OPEN_ACL_DIRECTION_OUT);
  for (const char *name : {"tcam-ingress-slices-256", "tcam-ingress-slices-512", "tcam-egress-slices-256"}) {
    switch_model smaller = model;
    ASSERT_TRUE(limit_override(&smaller.limits, name, 2));
    EXPECT_TRUE(has_room(smaller)) << name;
    ASSERT_TRUE(limit_override(&smaller.limits, name, 1));
    bool egress = std::string_view(name).find("egress") != std::string_view::npos;
    EXPECT_EQ(tcam_has_room(smaller, OPEN_TCAM_STAGE_INGRESS), egress) << name;
    EXPECT_EQ(tcam_has_room(smaller, OPEN_TCAM_STAGE_EGRESS), !egress) << name;
  }
}

TEST(TcamUsage, SlicesCannotBeMoreThanBuiltIn) {
  const struct {
    const char *name;
    uint32_t built_in;
  } rows[] = {
      {"tcam-ingress-slices-256", 5}, {"tcam-ingress-slices-512", 400}, {"tcam-egress-slices-256", 801}};
  for (const auto &row : rows) {
    limits limits;
    EXPECT_TRUE(limit_override(&limits, row.name, row.built_in)) << row.name;
    EXPECT_FALSE(limit_override(&limits, row.name, row.built_in + 1)) << row.name;
  }
}

/* --- The C interface ------------------------------------------------------------------------------------ */

class TcamStatistics : public SoftSwitch {
protected:
  void create(uint32_t type, int count = 1) {
    uint32_t id;
    while (count-- > 0)
      ASSERT_EQ(rpcclt_openapiTcamPolicyCreate(&handle, plain_policy(type), &id), OPEN_E_NONE);
  }

  /* The nine words of each group of a stage, then the three numbers of entries. */
  std::string statistics(uint32_t stage) {
    open_zylUsmdbTcamGroupsStats_t groups;
    memset(&groups, 0xaa, sizeof groups);
    uint32_t size = 99, count = 99, free = 99, total = 99;
    open_error_t rc =
        rpcclt_openapiTcamGroupStatsGetZYL(&handle, stage, &groups, &size, &count, &free, &total);
    if (rc != OPEN_E_NONE) return std::to_string(rc);
    std::string text;
    for (uint32_t index = 0; index < OPEN_TCAM_GROUPS_MAX; index++) {
      uint32_t words[9];
      static_assert(sizeof words == sizeof groups.group[0]);
      memcpy(words, &groups.group[index], sizeof words);
      std::string line;
      for (uint32_t word : words) line += std::to_string(word) + ' ';
      if (index < size) {
        text += line + '\n';
      } else {
        EXPECT_EQ(line + '\n', unused) << index;
      }
    }
    return text + std::to_string(count) + ' ' + std::to_string(free) + ' ' + std::to_string(total);
  }

  std::string slices() {
    uint32_t n[9];
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsIngressSlicesCountGetZYL(&handle, &n[0], &n[1], &n[2], &n[3], &n[4],
                                                                   &n[5]),
              OPEN_E_NONE);
    EXPECT_EQ(rpcclt_openapiTcamGroupStatsEgressSlicesCountGetZYL(&handle, &n[6], &n[7], &n[8]), OPEN_E_NONE);
    std::string text;
    for (int part = 0; part < 9; part += 3)
      text += (part ? ", " : "") + std::to_string(n[part]) + ' ' + std::to_string(n[part + 1]) + ' ' +
              std::to_string(n[part + 2]);
    return text;
  }

  const std::string unused = "0 0 0 0 0 0 0 0 0 \n";
};

TEST_F(TcamStatistics, FactorySwitchUsesNothing) {
  EXPECT_EQ(statistics(1), unused + unused + unused + unused + unused + "0 206080 206080");
  EXPECT_EQ(statistics(2), unused + unused + unused + unused + "0 205056 205056");
  EXPECT_EQ(slices(), "0 5 5, 0 400 400, 0 801 801");
}

TEST_F(TcamStatistics, UnknownStagesAreRefused) {
  for (uint32_t stage : {0u, 3u, UINT32_MAX})
    EXPECT_EQ(statistics(stage), std::to_string(OPEN_E_PARAM)) << stage;
}

TEST_F(TcamStatistics, GroupsHaveTheirPlaceAsNumberAlsoWhenOthersAreEmpty) {
  create(OPEN_TCAM_POLICY_GEN, 2);
  create(OPEN_TCAM_POLICY_EGRESS, 3);
  EXPECT_EQ(statistics(1),
            unused + "1 2 2 2 254 256 2 0 1 \n" + unused + unused + unused + "4 206076 206080");
  EXPECT_EQ(statistics(2), "1 1 3 3 253 256 1 0 1 \n" + unused + unused + unused + "3 205053 205056");
  EXPECT_EQ(slices(), "2 3 5, 0 400 400, 1 800 801");
}

TEST_F(TcamStatistics, GroupGrowsByARowAfterTheLastEntryOfItsSlices) {
  create(OPEN_TCAM_POLICY_OPENFLOW, 256);
  EXPECT_EQ(statistics(1),
            "1 1 1 256 0 256 1 0 1 \n" + unused + unused + unused + unused + "256 205824 206080");
  create(OPEN_TCAM_POLICY_OPENFLOW);
  EXPECT_EQ(statistics(1),
            "1 1 1 257 255 512 1 0 2 \n" + unused + unused + unused + unused + "257 205823 206080");
  EXPECT_EQ(slices(), "2 3 5, 0 400 400, 0 801 801");
  ASSERT_EQ(rpcclt_openapiTcamPolicyDeleteAll(&handle), OPEN_E_NONE);
  EXPECT_EQ(slices(), "0 5 5, 0 400 400, 0 801 801");
}

/* The lines that make a list with so many rules. */
std::string list_lines(const std::string &list, uint32_t rules) {
  std::string lines = "acl " + list + "\n";
  for (uint32_t number = 1; number <= rules; number++)
    lines += "acl " + list + " rule " + std::to_string(number) + " permit\n";
  return lines;
}

TEST_F(TcamStatistics, RulesCountInTheDirectionsThatTheirListIsBoundIn) {
  std::string error;
  ASSERT_TRUE(apply_configuration(list_lines("mac m", 513) + list_lines("ipv6 v", 257), &error)) << error;
  const std::string nothing_in = unused + unused + unused + unused + unused + "0 206080 206080";
  const std::string nothing_out = unused + unused + unused + unused + "0 205056 205056";
  EXPECT_EQ(statistics(1), nothing_in);
  EXPECT_EQ(statistics(2), nothing_out);

  ASSERT_EQ(commit("interface 0/1 acl in mac m sequence 1"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 1 acl in mac m sequence 1"), OPEN_E_NONE);
  ASSERT_EQ(commit("vlan 1 acl out ipv6 v sequence 1"), OPEN_E_NONE);
  EXPECT_EQ(statistics(1),
            unused + unused + unused + "1 4 5 513 511 1024 1 0 2 \n" + unused + "513 205567 206080");
  EXPECT_EQ(statistics(2), unused + unused + unused + "1 4 6 257 255 512 2 0 2 \n" + "514 204542 205056");
  EXPECT_EQ(slices(), "0 5 5, 2 398 400, 4 797 801");

  ASSERT_EQ(commit("no interface 0/1 acl in mac m"), OPEN_E_NONE);
  ASSERT_EQ(commit("no vlan 1 acl out ipv6 v"), OPEN_E_NONE);
  EXPECT_EQ(slices(), "0 5 5, 2 398 400, 0 801 801") << "the list is still bound to a VLAN";
  ASSERT_EQ(commit("no vlan 1 acl in mac m"), OPEN_E_NONE);
  EXPECT_EQ(statistics(1), nothing_in);
  EXPECT_EQ(statistics(2), nothing_out);
}

TEST_F(TcamStatistics, PoliciesAndRulesShareTheSlicesOfEgress) {
  std::string error;
  ASSERT_TRUE(apply_configuration(list_lines("ip w", 1), &error)) << error;
  ASSERT_TRUE(set_limit("tcam-egress-slices-256", 1));
  ASSERT_EQ(commit("interface 0/1 acl out ip w sequence 1"), OPEN_E_NONE);
  EXPECT_EQ(commit("tcam policy 1 egress"), OPEN_E_FULL);
  ASSERT_EQ(commit("no interface 0/1 acl out ip w"), OPEN_E_NONE);
  EXPECT_EQ(commit("tcam policy 1 egress"), OPEN_E_NONE);
  EXPECT_EQ(commit("interface 0/1 acl out ip w sequence 1"), OPEN_E_FULL);
  EXPECT_EQ(slices(), "0 5 5, 0 400 400, 1 0 1");
}

TEST_F(TcamStatistics, NothingIsFreeWhenLimitsWereLoweredBelowTheUse) {
  create(OPEN_TCAM_POLICY_GEN, 257);
  ASSERT_TRUE(set_limit("tcam-ingress-slices-256", 1));
  ASSERT_TRUE(set_limit("tcam-ingress-slices-512", 0));
  EXPECT_EQ(statistics(1), unused + "1 2 2 257 255 512 2 0 2 \n" + unused + unused + unused + "514 0 256");
  EXPECT_EQ(slices(), "4 0 1, 0 0 0, 0 801 801");
}

TEST_F(TcamStatistics, KindsHaveNames) {
  const char *const names[] = {"OpenFlow policy", "Gen (IPv6) policy", "Egress policy",
                               "IPv4 ACL",        "MAC ACL",           "IPv6 ACL"};
  for (uint32_t kind = 0; kind <= 8; kind++) {
    char buffer[32];
    open_buffdesc name = {sizeof buffer, buffer};
    open_error_t rc = rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(&handle, kind, &name);
    bool known = kind >= 1 && kind <= 6;
    ASSERT_EQ(rc, known ? OPEN_E_NONE : OPEN_E_NOT_FOUND) << kind;
    if (!known) continue;
    EXPECT_STREQ(buffer, names[kind - 1]);
    EXPECT_EQ(name.size, strlen(names[kind - 1]));
  }
}

TEST_F(TcamStatistics, NameNeedsRoomForItsTerminator) {
  char buffer[18] = "untouched";
  for (uint32_t size : {0u, 1u, 17u}) {
    open_buffdesc name = {size, buffer};
    EXPECT_EQ(rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(&handle, 2, &name), OPEN_E_PARAM) << size;
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(name.size, size);
  }
  open_buffdesc name = {18, buffer};
  EXPECT_EQ(rpcclt_openapiTcamHapiBroadPolicyTypeNameGetZYL(&handle, 2, &name), OPEN_E_NONE);
  EXPECT_STREQ(buffer, "Gen (IPv6) policy");
}

} // namespace
