/* The transfer module, fetching a script and applying it: the one request that waits for its transfer. */
#include "tests/unit/modules/transfer_fixture.h"

class TransferActivationTest : public TransferTest {
protected:
  std::string activate() const { return post(URI, QUERY); }

  static constexpr const char *URI = "/download/script", *QUERY = "url=tftp://h/f&scr=s.scr&act=y",
                              *DOWNLOAD = "FileDownload 1024:tftp://h/f 6:s.scr", *ASK = "InProgressGet",
                              *RESULT = "ResultCodeGet 0", *APPLY = "TxtCfgValidateAndApply 6:s.scr";
};

TEST_F(TransferActivationTest, ScriptIsAppliedOnceItIsThere) {
  Answers answers = both("POST", URI, QUERY);
  EXPECT_EQ(answers, activated());
  EXPECT_EQ(recorded_calls(), (calls{DOWNLOAD, ASK, RESULT, APPLY}));
}

TEST_F(TransferActivationTest, ItIsAskedAgainAsLongAsATransferIsInProgress) {
  for (unsigned times : {1, 2, 5, 1000}) {
    platform.times_in_progress = times;
    EXPECT_EQ(activate(), activated().xml);
    calls expected = {DOWNLOAD};
    expected.insert(expected.end(), times + 1, ASK);
    expected.insert(expected.end(), {RESULT, APPLY});
    EXPECT_EQ(recorded_calls(), expected) << times;
    EXPECT_EQ(platform.times_in_progress, 0u);
  }
}

/* Whatever else the result was: 2, and nothing is applied. */
TEST_F(TransferActivationTest, OnlyATransferThatIsDoneIsApplied) {
  for (uint32_t result : {0u, 1u, 2u, 3u, 4u, 11u, 13u, 15u, 16u, 12u + 256, UINT32_MAX}) {
    platform.result = result;
    EXPECT_EQ(both("POST", URI, QUERY), not_started()) << result;
    EXPECT_EQ(recorded_calls(), (calls{DOWNLOAD, ASK, RESULT})) << result;
  }
}

/* By their codes, the start included: the words for a start that failed are not for this request. What the
 * failing call has put out does not matter. */
TEST_F(TransferActivationTest, EveryCallThatFailsIsTheLast) {
  const struct {
    const char *function;
    calls made;
  } rows[] = {{"FileDownload", {DOWNLOAD}},
              {"InProgressGet", {DOWNLOAD, ASK}},
              {"ResultCodeGet", {DOWNLOAD, ASK, RESULT}},
              {"TxtCfgValidateAndApply", {DOWNLOAD, ASK, RESULT, APPLY}}};
  for (const auto &row : rows) {
    for (uint32_t left_behind : {0u, 1u, static_cast<uint32_t>(OPEN_TRANSFER_DONE)}) {
      platform.left_behind = left_behind;
      for (open_error_t rc : all_platform_errors()) {
        platform.fail(row.function, rc);
        EXPECT_EQ(both("POST", URI, QUERY), expected_platform_error(rc)) << row.function << " " << rc;
        EXPECT_EQ(recorded_calls(), row.made) << row.function << " " << rc;
      }
    }
    platform.succeed();
  }
}

TEST_F(TransferActivationTest, WaitEndsWhenAskingFails) {
  for (open_error_t rc : all_platform_errors()) {
    platform.times_in_progress = 10;
    platform.fail("InProgressGet", rc, 3);
    EXPECT_EQ(activate(), expected_platform_error(rc).xml) << rc;
    EXPECT_EQ(recorded_calls(), (calls{DOWNLOAD, ASK, ASK, ASK, ASK})) << rc;
  }
}

TEST_F(TransferActivationTest, NothingIsAskedWithoutActivation) {
  platform.times_in_progress = 5;
  platform.result = OPEN_TRANSFER_CUT;
  EXPECT_EQ(post(URI, "url=u&scr=s.scr&act=n"), started().xml);
  EXPECT_EQ(recorded_calls(), calls{"FileDownload 1024:u 6:s.scr"});
}

TEST_F(TransferActivationTest, LongestNameIsFetchedAndApplied) {
  const std::string name = std::string(92, 'x') + ".scr";
  EXPECT_EQ(post(URI, "url=u&act=y&scr=" + name), activated().xml);
  EXPECT_EQ(recorded_calls(),
            (calls{"FileDownload 1024:u 97:" + name, ASK, RESULT, "TxtCfgValidateAndApply 97:" + name}));
}
