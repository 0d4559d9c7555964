/* Variables out of words, and values by their meaning. */
#include "tests/unit/tools/kestrelctl_sample.h"
#include "tools/kestrelctl/text.h"

#include <gtest/gtest.h>

static const api_operation &operation_of(const char *uri, const char *method) {
  for (const command &which : sample_commands())
    if (which.operation->uri == uri && which.operation->method == method) return *which.operation;
  abort();
}

static const api_operation &add_rule() {
  return operation_of("/acl/ip/name/{name}/rule", "POST");
}
static const api_operation &set_name() {
  return operation_of("/vlans/{vlanId}/name", "PUT");
}
static const api_operation &set_state() {
  return operation_of("/if/{ifNum}/adminState", "PUT");
}
static const api_operation &set_size() {
  return operation_of("/if/{ifNum}/mtuSize", "PUT");
}
static const api_operation &show_vlan() {
  return operation_of("/vlans/{vlanId}", "GET");
}

/* "name=value name=value", or what is wrong. */
static std::string assigned(const api_operation &operation, const std::vector<std::string> &words) {
  std::vector<request_variable> variables;
  std::string complaint, text;
  if (!assign_variables(operation, words, &variables, &complaint)) return complaint;
  for (const request_variable &one : variables)
    text += (text.empty() ? "" : " ") + one.name + "=" + one.value;
  return text;
}

TEST(KestrelctlVariables, AreNamedOrBareInTheOrderOfTheRequiredOnes) {
  EXPECT_EQ(assigned(set_name(), {"servers"}), "value=servers");
  EXPECT_EQ(assigned(set_name(), {"value=servers"}), "value=servers");
  EXPECT_EQ(assigned(add_rule(), {"permit", "tcp"}), "action=permit protocol=tcp");
  EXPECT_EQ(assigned(add_rule(), {"log=yes", "tcp", "action=deny"}), "log=1 action=deny protocol=tcp");
}

TEST(KestrelctlVariables, ValueIsTakenAsItIs) {
  EXPECT_EQ(assigned(set_name(), {"value=a=b&c d"}), "value=a=b&c d");
  EXPECT_EQ(assigned(set_name(), {"two words"}), "value=two words");
  EXPECT_EQ(assigned(set_name(), {"value="}), "value=");
  EXPECT_EQ(assigned(set_name(), {""}), "value=");
  EXPECT_EQ(assigned(set_name(), {"-1"}), "value=-1");
  EXPECT_EQ(assigned(set_name(), {"https://host/a?b=c"}), "value=https://host/a?b=c");
}

TEST(KestrelctlVariables, DoubtIsRefused) {
  EXPECT_EQ(assigned(set_name(), {"vaule=servers"}),
            "unknown variable \"vaule\"; there are: value (to give it a text with \"=\": value=...)");
  EXPECT_EQ(assigned(add_rule(), {"permit"}), "it is not clear which variable \"permit\" is for");
  EXPECT_EQ(assigned(set_name(), {"two", "words"}),
            "\"words\" is not expected; a text with blanks needs quotes");
  EXPECT_EQ(assigned(show_vlan(), {"x"}), "\"x\" is not expected, as there are no variables");
  EXPECT_EQ(assigned(set_name(), {"value=a", "value=b"}), "variable \"value\" is given twice");
}

TEST(KestrelctlVariables, RequiredOnesMustBeThere) {
  EXPECT_EQ(assigned(set_name(), {}), "value missing");
  EXPECT_EQ(assigned(add_rule(), {"log=1"}), "action, protocol missing");
  EXPECT_EQ(assigned(add_rule(), {"protocol=ip"}), "action missing");
}

TEST(KestrelctlVariables, SessionKeyAndFormatAreNoneOfThem) {
  EXPECT_EQ(assigned(add_rule(), {"permit", "tcp", "sessionkey=x"}),
            "unknown variable \"sessionkey\"; there are: action, protocol, log");
  EXPECT_EQ(assigned(show_vlan(), {"format=xml"}), "unknown variable \"format\"");
  EXPECT_EQ(assigned(show_vlan(), {"method=DELETE"}), "unknown variable \"method\"");
}

TEST(KestrelctlVariables, MeaningOfAChoiceStandsForItsValue) {
  EXPECT_EQ(assigned(set_state(), {"enable"}), "value=1");
  EXPECT_EQ(assigned(set_state(), {"DISABLE"}), "value=0");
  EXPECT_EQ(assigned(set_state(), {"1"}), "value=1");
  EXPECT_EQ(assigned(set_state(), {"maybe"}), "value=maybe");
  EXPECT_EQ(assigned(set_size(), {"default"}), "value=-1");
  EXPECT_EQ(assigned(set_size(), {"the default"}), "value=the default");
}

TEST(KestrelctlVariables, WhatIsNotAsDocumentedIsTold) {
  const api_parameter &name = *variables_of(set_name())[0], &state = *variables_of(set_state())[0],
                      &size = *variables_of(set_size())[0];
  EXPECT_EQ(doubt_about(name, "12345678"), "");
  EXPECT_EQ(doubt_about(name, "\xc3\xa4\xc3\xb6\xc3\xbc\xc3\xa4\xc3\xb6\xc3\xbc\xc3\xa4\xc3\xb6"), "");
  EXPECT_EQ(doubt_about(name, "123456789"), "value: String from 1 to 8 characters");
  EXPECT_EQ(doubt_about(name, ""), "value: String from 1 to 8 characters");
  EXPECT_EQ(doubt_about(state, "0"), "");
  EXPECT_EQ(doubt_about(state, "2"), "value: {0 = disable | 1 = enable}");
  for (const char *right : {"1518", "12270", "-1"}) EXPECT_EQ(doubt_about(size, right), "") << right;
  for (const char *wrong : {"1517", "12271", "0", "", "2000x", "99999999999999999999"})
    EXPECT_EQ(doubt_about(size, wrong), "value: Integer from 1518 to 12270, or -1 for the default") << wrong;
}
