/* Finding the command that words mean. */
#include "tests/unit/tools/kestrelctl_sample.h"
#include "tools/kestrelctl/text.h"

#include <gtest/gtest.h>

/* "METHOD URI?name=value&..." of what words mean, or the complaint. */
static std::string meaning(const std::vector<std::string> &words) {
  const understood_command understood = understand(sample_commands(), words);
  if (understood.chosen == nullptr) return understood.complaint;
  EXPECT_EQ(understood.complaint, "");
  std::string text = understood.chosen->operation->method + " " + understood.uri;
  for (const request_variable &variable : understood.variables)
    text += (&variable == &understood.variables[0] ? "?" : "&") + variable.name + "=" + variable.value;
  return text;
}

static std::string meaning_of(const char *line) {
  return meaning(split(line, ' '));
}

static std::vector<std::string> all_usages() {
  std::vector<std::string> usages;
  for (const command &which : sample_commands()) usages.push_back(command_usage(which));
  return usages;
}

TEST(KestrelctlCommands, VerbStandsBeforeTheLastLiteralWord) {
  const std::vector<std::string> expected = {
      "vlans list",
      "vlans list pendingChanges",
      "vlans <vlanId> show",
      "vlans <vlanId> create",
      "vlans <vlanId> delete",
      "vlans <vlanId> set name <value>",
      "if <ifNum> set adminState <value>",
      "if <ifNum> set mtuSize <value>",
      "acl <type> list",
      "acl ip show name <name>",
      "acl ip name <name> add rule action=<action> protocol=<protocol> [log=<log>]",
      "download show status",
      "download start script <url>",
      "script apply <scr>",
      "script delete <scr>",
      "login show",
  };
  EXPECT_EQ(all_usages(), expected);
}

TEST(KestrelctlCommands, WordsOfTheUriWithTheVerb) {
  EXPECT_EQ(meaning_of("vlans list"), "GET /vlans");
  EXPECT_EQ(meaning_of("vlans 10 create"), "POST /vlans/10");
  EXPECT_EQ(meaning_of("vlans 10 set name servers"), "PUT /vlans/10/name?value=servers");
  EXPECT_EQ(meaning_of("acl ip name web add rule action=permit protocol=tcp"),
            "POST /acl/ip/name/web/rule?action=permit&protocol=tcp");
}

TEST(KestrelctlCommands, VerbMayStandAnywhereBehindTheFirstWord) {
  EXPECT_EQ(meaning_of("vlans set 10 name servers"), "PUT /vlans/10/name?value=servers");
  EXPECT_EQ(meaning_of("vlans 10 name set servers"), "PUT /vlans/10/name?value=servers");
  EXPECT_EQ(meaning_of("vlans delete 10"), "DELETE /vlans/10");
  EXPECT_EQ(meaning_of("delete vlans 10"),
            "unknown command \"delete vlans 10\"; \"kestrelctl help\" tells what there is");
}

TEST(KestrelctlCommands, WithoutAVerbGetIsMeant) {
  EXPECT_EQ(meaning_of("vlans"), "GET /vlans");
  EXPECT_EQ(meaning_of("vlans 10"), "GET /vlans/10");
  EXPECT_EQ(meaning_of("acl ip name web"), "GET /acl/ip/name/web");
  EXPECT_EQ(meaning_of("vlans 10 name servers"),
            "unknown command \"vlans 10 name servers\"; the nearest are:\n"
            "  kestrelctl vlans <vlanId> set name <value>\n"
            "  kestrelctl vlans <vlanId> create\n"
            "  kestrelctl vlans <vlanId> show");
}

TEST(KestrelctlCommands, VerbThatIsTheLastWordIsSaidOnce) {
  EXPECT_EQ(meaning_of("script apply scr=racks.scr"), "POST /script/apply?scr=racks.scr");
  EXPECT_EQ(meaning_of("script apply racks.scr"), "POST /script/apply?scr=racks.scr");
  EXPECT_EQ(meaning_of("script delete racks.scr"), "DELETE /script?scr=racks.scr");
  EXPECT_EQ(meaning_of("script apply apply"), "POST /script/apply?scr=apply");
}

TEST(KestrelctlCommands, LiteralWordWinsOverAPlaceholder) {
  EXPECT_EQ(meaning_of("vlans pendingChanges"), "GET /vlans/pendingChanges");
  EXPECT_EQ(meaning_of("acl ip"), "GET /acl/ip");
  EXPECT_EQ(meaning_of("acl ip list"), "GET /acl/ip");
}

TEST(KestrelctlCommands, NameMayBeAWordOfTheCommandItself) {
  EXPECT_EQ(meaning_of("acl ip name rule add rule action=deny protocol=ip"),
            "POST /acl/ip/name/rule/rule?action=deny&protocol=ip");
  EXPECT_EQ(meaning_of("acl ip name add add rule action=deny protocol=ip"),
            "POST /acl/ip/name/add/rule?action=deny&protocol=ip");
  EXPECT_EQ(meaning_of("acl ip name show"), "GET /acl/ip/name/show");
}

TEST(KestrelctlCommands, ModuleIsKnownByItsNameInTheDocumentToo) {
  EXPECT_EQ(meaning_of("transfer download status"), "GET /download/status");
  EXPECT_EQ(meaning_of("download status"), "GET /download/status");
  EXPECT_EQ(meaning_of("download start script ftp://h/f"), "POST /download/script?url=ftp://h/f");
}

TEST(KestrelctlCommands, NamesAreEncodedInTheUri) {
  EXPECT_EQ(meaning({"acl", "ip", "name", "a/b ?\xc3\xa9"}), "GET /acl/ip/name/a%2Fb%20%3F%C3%A9");
  EXPECT_EQ(meaning({"acl", "ip", "name", ".."}), "GET /acl/ip/name/..");
}

TEST(KestrelctlCommands, NumberInTheUriIsDigits) {
  for (const char *word : {"foo", "-1", "1a", ""})
    EXPECT_EQ(meaning({"vlans", word, "create"}).substr(0, 16), "unknown command ") << word;
}

TEST(KestrelctlCommands, EmptyWordStandsForNoPlaceholder) {
  EXPECT_EQ(meaning({"acl", "ip", "name", ""}).substr(0, 16), "unknown command ");
}

TEST(KestrelctlCommands, UnknownOnesAreAnsweredWithTheNearest) {
  EXPECT_EQ(meaning_of("vlan list"), "unknown command \"vlan list\"; the nearest are:\n"
                                     "  kestrelctl vlans list\n"
                                     "  kestrelctl vlans list pendingChanges\n"
                                     "  kestrelctl vlans <vlanId> show");
  EXPECT_EQ(meaning_of("if 3 set adminstate enable"),
            "unknown command \"if 3 set adminstate enable\"; the nearest are:\n"
            "  kestrelctl if <ifNum> set adminState <value>\n"
            "  kestrelctl if <ifNum> set mtuSize <value>");
  EXPECT_EQ(meaning({"x\x1b[2J"}), "unknown command \"x\\x1b[2J\"; \"kestrelctl help\" tells what there is");
  EXPECT_EQ(meaning({}), "unknown command \"\"; \"kestrelctl help\" tells what there is");
}

TEST(KestrelctlCommands, LoggingInAndOutIsNoneOfThem) {
  EXPECT_EQ(meaning_of("login show"), "GET /login");
  EXPECT_EQ(meaning_of("login end").substr(0, 27), "unknown command \"login end\"");
}

/* --- The whole document -------------------------------------------------------------------------------- */

static std::string sample_value(const api_parameter &parameter) {
  if (parameter.kind == parameter_kind::INTEGER) return "7";
  return parameter.kind == parameter_kind::CHOICE ? parameter.choices[0].value : "text";
}

/* A command as its usage tells, with a value for everything that is required. */
static std::vector<std::string> sample_line(const command &which) {
  std::vector<std::string> words = split(command_words(which), ' ');
  for (const api_parameter &parameter : which.operation->parameters)
    for (std::string &word : words)
      if (parameter.in_uri && word == "<" + parameter.name + ">") word = sample_value(parameter);
  for (const api_parameter *variable : variables_of(*which.operation))
    if (variable->required) words.push_back(variable->name + "=" + sample_value(*variable));
  return words;
}

TEST(KestrelctlDocument, EveryCommandIsUnderstoodAsItIsDescribed) {
  const std::vector<command> commands = make_commands(api_modules());
  ASSERT_GT(commands.size(), 0u);
  for (const command &which : commands) {
    const understood_command understood = understand(commands, sample_line(which));
    EXPECT_EQ(understood.chosen, &which) << joined(sample_line(which), " ") << ": " << understood.complaint;
  }
}

TEST(KestrelctlDocument, EveryOperationIsACommandButLoggingInAndOut) {
  size_t operations = 0;
  for (const api_module &module : api_modules()) operations += module.operations.size();
  EXPECT_EQ(make_commands(api_modules()).size(), operations - 2);
}

TEST(KestrelctlDocument, EveryPlaceholderIsDescribed) {
  for (const command &which : make_commands(api_modules())) {
    size_t described = 0, placeholders = 0;
    for (const api_parameter &parameter : which.operation->parameters) described += parameter.in_uri;
    for (const command_segment &segment : which.segments) placeholders += segment.placeholder != nullptr;
    EXPECT_EQ(described, placeholders) << which.operation->uri;
  }
}
