/* The BGP module: what is redistributed from other protocols. */
#include "tests/unit/modules/bgp_fixture.h"

/* The two families with what tells them apart. */
struct redistribution_family {
  const char *uri; /* up to the source */
  const char *word, *number;
};

static const redistribution_family FAMILIES[] = {{"/bgp/ipv4/redistribution/", "IPv4", "1"},
                                                 {"/bgp/ipv6/redistribution/", "IPv6", "2"}};

static std::string said(const char *action, const redistribution_family &family, const std::string &source) {
  return std::string(action) + " BGP " + family.word + " Redistribution for " + source + " successfully.";
}

class BgpRedistributionTest : public BgpTest {
protected:
  /* What the platform is called with for a request that succeeds, carried out or not. The arguments are: add,
   * source, matches set, matches, metric set, metric set, metric, route map set, family, route map. */
  std::string arguments_of(const redistribution_family &family, const std::string &query,
                           const std::string &source = "ospf") const {
    changes_not_carried_out idle;
    forget_calls();
    expect_done("POST", family.uri + source, query, said("Create", family, source));
    return recorded_arguments(REDISTRIBUTION);
  }
};

TEST_F(BgpRedistributionTest, SourceIsRedistributedAndEnded) {
  for (const redistribution_family &family : FAMILIES) {
    for (const std::string source : {"connected", "static", "ospf", "rip"}) {
      const std::string size = std::to_string(source.size() + 1);
      expect_done("POST", family.uri + source, "", said("Create", family, source));
      EXPECT_EQ(recorded_arguments(REDISTRIBUTION),
                "1 " + size + ":" + source + " 0 0 0 0 0 0 " + family.number + " 1:");
      expect_done_once("DELETE", family.uri + source, "", said("Delete", family, source));
      EXPECT_EQ(recorded_arguments(REDISTRIBUTION),
                "0 " + size + ":" + source + " 0 0 0 0 0 0 " + family.number + " 0:");
      expect_refused("DELETE", family.uri + source, "", expected_platform_error(OPEN_E_NOT_FOUND));
    }
  }
}

TEST_F(BgpRedistributionTest, FamiliesAreRedistributedByThemselves) {
  expect_done("POST", "/bgp/ipv4/redistribution/ospf", "", said("Create", FAMILIES[0], "ospf"));
  expect_refused("DELETE", "/bgp/ipv6/redistribution/ospf", "", expected_platform_error(OPEN_E_NOT_FOUND));
  expect_done_once("DELETE", "/bgp/ipv4/redistribution/ospf", "", said("Delete", FAMILIES[0], "ospf"));
}

TEST_F(BgpRedistributionTest, NothingOfTheRequestCountsForEnding) {
  expect_done("POST", "/bgp/ipv4/redistribution/ospf", "", said("Create", FAMILIES[0], "ospf"));
  expect_done_once("DELETE", "/bgp/ipv4/redistribution/ospf",
                   "metric=5&routeMap=blue&matchInternal=1&matchExt1=0", said("Delete", FAMILIES[0], "ospf"),
                   "json");
  EXPECT_EQ(recorded_arguments(REDISTRIBUTION), "0 5:ospf 0 0 0 0 0 0 1 0:");
}

TEST_F(BgpRedistributionTest, EverythingIsHandedOn) {
  const std::string query = "metric=10&routeMap=blue&matchInternal=1&matchExt1=1&matchExt2=1&matchNssaExt1=1"
                            "&matchNssaExt2=1";
  for (const redistribution_family &family : FAMILIES) {
    expect_done("POST", family.uri + std::string("ospf"), query, said("Create", family, "ospf"));
    EXPECT_EQ(recorded_arguments(REDISTRIBUTION),
              std::string("1 5:ospf 1 31 1 1 10 1 ") + family.number + " 5:blue");
  }
}

TEST_F(BgpRedistributionTest, UnknownSourceAnswers99) {
  for (const redistribution_family &family : FAMILIES) {
    for (const char *source : {"bgp", "OSPF", "ospfx", "x", "%20ospf", "1"}) {
      expect_refused("POST", family.uri + std::string(source), "", expected_platform_error(OPEN_E_NOT_FOUND));
      expect_refused("DELETE", family.uri + std::string(source), "",
                     expected_platform_error(OPEN_E_NOT_FOUND));
    }
  }
}

/* --- The metric ----------------------------------------------------------------------------------------- */

/* Its presence, which is told twice, is what sets it. */
TEST_F(BgpRedistributionTest, MetricIsSetWhenItIsPresent) {
  const struct {
    const char *query, *metric;
  } rows[] = {
      {"metric=", "1 1 0"},
      {"metric=0", "1 1 0"},
      {"metric=x", "1 1 0"},
      {"metric=42x", "1 1 42"},
      {"metric=-1", "1 1 -1"},
      {"metric=4294967295", "1 1 4294967295"},
      {"metric=4294967296", "1 1 4294967296"},
      {"metric=9223372036854775807", "1 1 9223372036854775807"},
      {"metric", "0 0 0"},
      {"Metrics=1", "0 0 0"},
  };
  for (const redistribution_family &family : FAMILIES) {
    for (const auto &row : rows)
      EXPECT_EQ(arguments_of(family, row.query),
                std::string("1 5:ospf 0 0 ") + row.metric + " 0 " + family.number + " 1:");
  }
}

TEST_F(BgpRedistributionTest, MetricThatThePlatformRefusesAnswers99) {
  for (const char *metric : {"-1", "4294967296", "99999999999999999999"})
    expect_refused("POST", "/bgp/ipv4/redistribution/ospf", std::string("metric=") + metric,
                   expected_parameter_error());
}

/* --- The route map -------------------------------------------------------------------------------------- */

TEST_F(BgpRedistributionTest, RouteMapIsSetWhenItIsPresent) {
  const std::string longest(31, 'r');
  for (const redistribution_family &family : FAMILIES) {
    const std::string before = "1 5:ospf 0 0 0 0 0 ", number = family.number;
    EXPECT_EQ(arguments_of(family, "routeMap=blue"), before + "1 " + number + " 5:blue");
    EXPECT_EQ(arguments_of(family, "routeMap="), before + "1 " + number + " 1:");
    EXPECT_EQ(arguments_of(family, "routeMap=" + longest), before + "1 " + number + " 32:" + longest);
    EXPECT_EQ(arguments_of(family, "routemaps=blue"), before + "0 " + number + " 1:");
  }
}

TEST_F(BgpRedistributionTest, RouteMapThatThePlatformRefusesAnswers99) {
  for (size_t length : {0, 32, 255})
    expect_refused("POST", "/bgp/ipv4/redistribution/ospf", "routeMap=" + std::string(length, 'r'),
                   expected_parameter_error());
}

/* What does not fit is not lost: it is refused for being too long. */
TEST_F(BgpRedistributionTest, OverlongVariablesInTheBodyAnswer99) {
  for (const std::string &body : {"routeMap=" + std::string(300, 'r'), "metric=" + std::string(300, '1')}) {
    FakeRequest request("POST", "/bgp/ipv4/redistribution/ospf", "", body);
    EXPECT_EQ(bgp_api_handler(handle, request.conn()), 0) << body;
    EXPECT_EQ(answer_body(request, "xml"), expected_parameter_error().xml) << body;
  }
}

/* --- Matches -------------------------------------------------------------------------------------------- */

static const struct {
  const char *name, *bit;
} MATCHES[] = {{"matchInternal", "1"},
               {"matchExt1", "2"},
               {"matchExt2", "4"},
               {"matchNssaExt1", "8"},
               {"matchNssaExt2", "16"}};

static Answers expected_bad_match(int code) {
  return expected_answers(code,
                          std::string("The value of parameter ") + MATCHES[code - 1].name + " is invalid.");
}

TEST_F(BgpRedistributionTest, EachMatchHasItsBit) {
  for (const redistribution_family &family : FAMILIES) {
    for (const auto &match : MATCHES) {
      for (const char *value : {"=1", "=01", "=%201"})
        EXPECT_EQ(arguments_of(family, std::string(match.name) + value),
                  std::string("1 5:ospf 1 ") + match.bit + " 0 0 0 0 " + family.number + " 1:");
    }
    EXPECT_EQ(arguments_of(family, "matchNssaExt2=1&matchExt1=1"),
              std::string("1 5:ospf 1 18 0 0 0 0 ") + family.number + " 1:");
  }
}

TEST_F(BgpRedistributionTest, MatchThatIsNot1AnswersItsPosition) {
  for (const redistribution_family &family : FAMILIES) {
    int code = 0;
    for (const auto &match : MATCHES) {
      code++;
      for (const char *value : {"0", "2", "-1", "", "x", "11", "99999999999"}) {
        expect_refused("POST", family.uri + std::string("ospf"),
                       "metric=1&routeMap=blue&" + std::string(match.name) + "=" + value,
                       expected_bad_match(code));
        EXPECT_EQ(recorded_arguments(REDISTRIBUTION), "") << match.name << " " << value;
      }
    }
  }
}

TEST_F(BgpRedistributionTest, FirstBadMatchAnswers) {
  for (int first = 1; first <= 5; first++) {
    std::string query;
    for (int i = 5; i >= 1; i--) query += std::string(MATCHES[i - 1].name) + (i < first ? "=1&" : "=0&");
    expect_refused("POST", "/bgp/ipv4/redistribution/ospf", query + "x=1", expected_bad_match(first));
  }
  EXPECT_EQ(request("POST", "/bgp/ipv4/redistribution/nothing", "matchExt2=0").xml,
            "<result><rlt_code>3</rlt_code><rlt_mesg>The value of parameter matchExt2 is invalid.</rlt_mesg>"
            "</result>\n");
}

TEST_F(BgpRedistributionTest, MatchesOfOtherSourcesAreThePlatformsToRefuse) {
  expect_refused("POST", "/bgp/ipv4/redistribution/static", "matchInternal=1", expected_parameter_error());
  EXPECT_EQ(recorded_arguments(REDISTRIBUTION), "1 7:static 1 1 0 0 0 0 1 1:");
}
