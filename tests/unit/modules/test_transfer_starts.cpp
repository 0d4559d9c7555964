/* The transfer module, starting transfers: what each of them takes, in which order it is checked, what the
 * platform is called with and how its answer is told. A script that is applied: test_transfer_activation.cpp.
 */
#include "tests/unit/modules/transfer_fixture.h"

#include <string.h>

/* --- All of them ---------------------------------------------------------------------------------------- */

/* Every start with a request that is right, the platform call that it makes, and the variables that must be
 * there. */
static const struct start {
  const char *uri;
  std::vector<std::pair<std::string, std::string>> variables;
  std::string function, call;
} STARTS[] = {
    {"/download/image",
     {{"url", "tftp://h/f"}, {"img", "active"}, {"auto", "n"}},
     "FileDownload",
     "FileDownload 1024:tftp://h/f 7:active"},
    {"/download/config",
     {{"url", "tftp://h/f"}, {"cfg", "1"}, {"cfgtime", "c"}, {"updatetime", "u"}, {"auto", "n"}},
     "FileDownload",
     "FileDownload 1024:tftp://h/f 15:startup-config"},
    {"/download/config",
     {{"url", "tftp://h/f"}, {"cfg", "2"}, {"auto", "n"}},
     "FileDownload",
     "FileDownload 1024:tftp://h/f 14:backup-config"},
    {"/upload/config",
     {{"url", "tftp://h/f"}, {"cfg", "3"}, {"sn", "1"}},
     "FileUpload",
     "FileUpload 1024:tftp://h/f 15:running-config"},
    {"/download/script",
     {{"url", "tftp://h/f"}, {"scr", "s.scr"}, {"act", "n"}},
     "FileDownload",
     "FileDownload 1024:tftp://h/f 6:s.scr"},
    {"/upload/script",
     {{"url", "tftp://h/f"}, {"scr", "s.scr"}},
     "FileUpload",
     "FileUpload 1024:tftp://h/f 6:s.scr"},
};

/* Its query, where one variable has another value; "-" leaves it out. */
static std::string query_of(const start &start, const std::string &changed = "",
                            const std::string &value = "") {
  std::string query;
  for (const auto &[name, usual] : start.variables) {
    if (name == changed && value == "-") continue;
    query += (query.empty() ? "" : "&") + name + "=" + (name == changed ? value : usual);
  }
  return query;
}

class TransferStartTest : public TransferTest {
protected:
  /* The transfer is started by this call only. */
  void expect_started(const std::string &uri, const std::string &query, const std::string &call) const {
    EXPECT_EQ(both("POST", uri, query), started()) << uri << "?" << query;
    EXPECT_EQ(recorded_calls(), calls{call}) << uri << "?" << query;
  }
};

TEST_F(TransferStartTest, StartIsToldWithEmptyData) {
  for (const start &start : STARTS) {
    Answers answers = both("POST", start.uri, query_of(start));
    EXPECT_EQ(answers.xml,
              "<result><rlt_code>0</rlt_code><rlt_mesg>File transfer is starting.</rlt_mesg><rlt_data>"
              "</rlt_data></result>\n");
    EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"File transfer is starting.\", "
                            "\"rlt_data\": { } } }\n");
    EXPECT_EQ(recorded_calls(), calls{start.call});
  }
}

TEST_F(TransferStartTest, EveryFailureToStartIsTold) {
  for (const start &start : STARTS) {
    for (open_error_t rc : all_platform_errors()) {
      platform.fail(start.function, rc);
      EXPECT_EQ(both("POST", start.uri, query_of(start)), expected_start(rc)) << start.uri << " " << rc;
      EXPECT_EQ(recorded_calls(), calls{start.call}) << start.uri << " " << rc;
    }
    platform.succeed();
  }
}

TEST_F(TransferStartTest, RefusalIsToldWithEmptyData) {
  platform.fail("FileDownload", OPEN_E_UNAVAIL);
  Answers in_progress = both("POST", STARTS[0].uri, query_of(STARTS[0]));
  EXPECT_EQ(in_progress.xml, "<result><rlt_code>1</rlt_code><rlt_mesg>Another Transfer is in Progress."
                             "</rlt_mesg><rlt_data></rlt_data></result>\n");
  EXPECT_EQ(in_progress.json, "{ \"result\": { \"rlt_code\": 1, \"rlt_mesg\": \"Another Transfer is in "
                              "Progress.\", \"rlt_data\": { } } }\n");
  platform.fail("FileDownload", OPEN_E_ERROR);
  Answers failed = both("POST", STARTS[0].uri, query_of(STARTS[0]));
  EXPECT_EQ(failed.xml, "<result><rlt_code>2</rlt_code><rlt_mesg>Failed to start a transfer.</rlt_mesg>"
                        "<rlt_data></rlt_data></result>\n");
  EXPECT_EQ(failed.json, "{ \"result\": { \"rlt_code\": 2, \"rlt_mesg\": \"Failed to start a transfer.\", "
                         "\"rlt_data\": { } } }\n");
}

TEST_F(TransferStartTest, EveryVariableMustBeThereAndNotEmpty) {
  for (const start &start : STARTS) {
    for (const auto &variable : start.variables) {
      for (const char *value : {"-", ""}) expect_invalid(start.uri, query_of(start, variable.first, value));
    }
  }
}

TEST_F(TransferStartTest, NoVariableMeansNoTransfer) {
  for (const start &start : STARTS) expect_invalid(start.uri, "");
}

TEST_F(TransferStartTest, UrlHasAtMost1023Characters) {
  for (const start &start : STARTS) {
    const std::string longest = "http://" + std::string(1016, 'a');
    ASSERT_EQ(longest.size(), 1023u);
    const size_t url = start.call.find("tftp://h/f");
    expect_started(start.uri, query_of(start, "url", longest),
                   std::string(start.call).replace(url, strlen("tftp://h/f"), longest));
    expect_invalid(start.uri, query_of(start, "url", longest + "a"));
    expect_invalid(start.uri, query_of(start, "url", std::string(5000, 'a')));
  }
}

/* What is a URL, and which are supported, is the platform's affair. */
TEST_F(TransferStartTest, UrlIsAnyText) {
  const std::pair<const char *, const char *> urls[] = {
      {"x", "x"},
      {"%20", " "},
      {"scp%3A%2F%2Fme%3Apass%40[::1]%3A22%2Fa%20b%26c", "scp://me:pass@[::1]:22/a b&c"},
      {"tftp://10.0.0.1/a+b", "tftp://10.0.0.1/a b"},
      {"%25s%25n", "%s%n"},
      {"%C3%A4", "\xc3\xa4"}};
  for (const auto &[sent, url] : urls) {
    expect_started("/upload/script", std::string("scr=s&url=") + sent,
                   std::string("FileUpload 1024:") + url + " 2:s");
  }
}

TEST_F(TransferStartTest, VariablesMayStandInTheBody) {
  for (const start &start : STARTS) {
    FakeRequest request("POST", start.uri, "", query_of(start));
    EXPECT_EQ(transfer_api_handler(handle, request.conn()), 1);
    EXPECT_EQ(answer_body(request, "xml"), started().xml);
    EXPECT_EQ(recorded_calls(), calls{start.call});
    forget_calls();
  }
}

TEST_F(TransferStartTest, OtherVariablesDoNotMatter) {
  for (const start &start : STARTS)
    expect_started(start.uri, "x=1&transfer=no&" + query_of(start) + "&url=second", start.call);
}

/* --- Images --------------------------------------------------------------------------------------------- */

TEST_F(TransferStartTest, ImageIsTheActiveOrTheBackupOne) {
  expect_started("/download/image", "url=u&img=active&auto=n", "FileDownload 1024:u 7:active");
  expect_started("/download/image", "url=u&img=backup&auto=n", "FileDownload 1024:u 7:backup");
  for (const char *img : {"a", "activ", "activee", "Active", "ACTIVE", "backup1", "%20active", "active%20",
                          "1", "startup-config", "active,backup", "image"})
    expect_invalid("/download/image", std::string("url=u&auto=n&img=") + img);
  for (size_t length : {255, 256, 1000})
    expect_invalid("/download/image", "url=u&auto=n&img=" + std::string(length, 'a'));
}

/* A text that is too long for its buffer is missing, however it begins. */
TEST_F(TransferStartTest, AutomaticReloadIsYOrN) {
  for (const char *uri : {"/download/image?url=u&img=active", "/download/config?url=u&cfg=2",
                          "/download/config?url=u&cfg=1&cfgtime=c&updatetime=t"}) {
    const std::string text = uri;
    const size_t mark = text.find('?');
    for (const char *value : {"x", "Y", "N", "1", "0", "yy", "nn", "yes", "no", "y%20", "%20", "n%00", "-"})
      expect_invalid(text.substr(0, mark), text.substr(mark + 1) + "&auto=" + value);
  }
  expect_started("/download/image", "url=u&img=active&auto=%6e", "FileDownload 1024:u 7:active");
}

/* --- Reloading when the transfer is done ---------------------------------------------------------------- */

/* Starts that can be followed by a reload, but for "auto". */
static const struct {
  const char *uri, *query, *call;
} RELOADING[] = {
    {"/download/image", "url=u&img=active", "FileDownload 1024:u 7:active"},
    {"/download/image", "url=u&img=backup", "FileDownload 1024:u 7:backup"},
    {"/download/config", "url=u&cfg=1&cfgtime=c&updatetime=t", "FileDownload 1024:u 15:startup-config"},
    {"/download/config", "url=u&cfg=2", "FileDownload 1024:u 14:backup-config"},
};

TEST_F(TransferStartTest, ReloadIsOrderedOnceTheTransferHasStarted) {
  for (const auto &row : RELOADING) {
    EXPECT_EQ(both("POST", row.uri, std::string(row.query) + "&auto=y"), started());
    EXPECT_EQ(recorded_calls(), (calls{row.call, "CompletedRebootSet"}));
    EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
  }
}

TEST_F(TransferStartTest, ReloadIsNotOrderedWhenTheTransferDoesNotStart) {
  for (const auto &row : RELOADING) {
    for (open_error_t rc : all_platform_errors()) {
      platform.fail("FileDownload", rc);
      EXPECT_EQ(both("POST", row.uri, std::string(row.query) + "&auto=y"), expected_start(rc)) << rc;
      EXPECT_EQ(recorded_calls(), calls{row.call});
    }
    platform.succeed();
  }
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}

/* By the code of the call, not as a start that failed. */
TEST_F(TransferStartTest, ReloadThatCannotBeOrderedIsTold) {
  for (const auto &row : RELOADING) {
    for (open_error_t rc : all_platform_errors()) {
      platform.fail("CompletedRebootSet", rc);
      EXPECT_EQ(both("POST", row.uri, std::string(row.query) + "&auto=y"), expected_platform_error(rc)) << rc;
      EXPECT_EQ(recorded_calls(), (calls{row.call, "CompletedRebootSet"}));
    }
  }
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}

/* --- Configurations that are fetched -------------------------------------------------------------------- */

TEST_F(TransferStartTest, FetchedConfigurationIs1Or2) {
  const char times[] = "url=u&auto=n&cfgtime=c&updatetime=t&cfg=";
  for (const char *cfg : {"1", "01", "001"})
    expect_started("/download/config", std::string(times) + cfg, "FileDownload 1024:u 15:startup-config");
  for (const char *cfg : {"2", "02", "002"})
    expect_started("/download/config", std::string(times) + cfg, "FileDownload 1024:u 14:backup-config");
  root.write("cfg_time:kept\n");
  startupcfgInfo = {0, RC_FALSE, "kept", "kept"};
  for (const char *cfg :
       {"0",    "3",    "4",   "-1",  "-2",  "-",    "--",   "+1",   "1.",    "1x",         "x",
        "%201", "1%20", "0x1", "999", "-99", "0001", "0002", "1234", "12345", "2147483649", "4294967297"})
    expect_invalid("/download/config", std::string(times) + cfg);
  EXPECT_STREQ(startupcfgInfo.cfgTime, "kept");
  EXPECT_EQ(root.content(), "cfg_time:kept\n");
}

TEST_F(TransferStartTest, TimesOfAStartupConfigurationAreStoredBeforeItIsFetched) {
  std::string file_at_start;
  platform.at_each_call = [&] { file_at_start = root.content(); };
  EXPECT_EQ(post("/download/config", "url=u&cfg=1&cfgtime=2026-01-02&updatetime=2026-03-04&auto=n"),
            started().xml);
  EXPECT_EQ(file_at_start, "cfg_time:2026-01-02\ncfg_update:2026-03-04\n");
  EXPECT_EQ(root.content(), file_at_start);
  EXPECT_STREQ(startupcfgInfo.cfgTime, "2026-01-02");
  EXPECT_STREQ(startupcfgInfo.cfgUpdateTime, "2026-03-04");
}

TEST_F(TransferStartTest, BackupConfigurationIgnoresTimes) {
  const std::string before = root.content(), too_long(24, 'x');
  for (const std::string &times :
       {std::string("&cfgtime=c&updatetime=u"), std::string("&cfgtime=&updatetime="), "&cfgtime=" + too_long,
        std::string("")})
    expect_started("/download/config", "url=u&cfg=2&auto=n" + times, "FileDownload 1024:u 14:backup-config");
  root.block_folder();
  expect_started("/download/config", "url=u&cfg=2&auto=n&cfgtime=c&updatetime=u",
                 "FileDownload 1024:u 14:backup-config");
  EXPECT_STREQ(startupcfgInfo.cfgTime, "");
  EXPECT_STREQ(startupcfgInfo.cfgUpdateTime, "");
}

TEST_F(TransferStartTest, TimesHaveAtMost23Characters) {
  const std::string c(23, 'c'), u(23, 'u');
  expect_started("/download/config", "url=u&cfg=1&auto=n&cfgtime=" + c + "&updatetime=" + u,
                 "FileDownload 1024:u 15:startup-config");
  EXPECT_EQ(root.content(), "cfg_time:" + c + "\ncfg_update:" + u + "\n");
  for (size_t length : {24, 25, 255, 1000}) {
    expect_invalid("/download/config", "url=u&cfg=1&auto=n&updatetime=t&cfgtime=" + std::string(length, 'x'));
    EXPECT_EQ(root.content(), "cfg_time:" + c + "\ncfg_update:" + u + "\n");
    expect_invalid("/download/config",
                   "url=u&cfg=1&auto=n&cfgtime=" + c + "&updatetime=" + std::string(length, 'x'));
    EXPECT_EQ(root.content(), "cfg_time:" + c + "\ncfg_update:" + u + "\n");
  }
}

/* What was stored before a request fails stays stored. */
TEST_F(TransferStartTest, StoredTimesOutliveTheRequestsFailure) {
  const struct {
    std::string query, file;
  } rows[] = {
      {"cfg=1&cfgtime=c1&updatetime=u1&auto=n", "cfg_time:\ncfg_update:\n"}, /* no URL: nothing stored */
      {"url=u&cfgtime=c1&updatetime=u1&auto=n", "cfg_time:\ncfg_update:\n"},
      {"url=u&cfg=3&cfgtime=c1&updatetime=u1&auto=n", "cfg_time:\ncfg_update:\n"},
      {"url=u&cfg=1&updatetime=u1&auto=n", "cfg_time:\ncfg_update:\n"},
      {"url=u&cfg=1&cfgtime=c2&auto=n", "cfg_time:c2\ncfg_update:\n"},
      {"url=u&cfg=1&cfgtime=c3&updatetime=&auto=n", "cfg_time:c3\ncfg_update:\n"},
      {"url=u&cfg=1&cfgtime=c4&updatetime=u4", "cfg_time:c4\ncfg_update:u4\n"},
      {"url=u&cfg=1&cfgtime=c5&updatetime=u5&auto=x", "cfg_time:c5\ncfg_update:u5\n"},
      {"url=u&cfg=1&cfgtime=c6&updatetime=u6&auto=yy", "cfg_time:c6\ncfg_update:u6\n"},
  };
  for (const auto &row : rows) {
    expect_invalid("/download/config", row.query);
    EXPECT_EQ(root.content(), row.file) << row.query;
  }
  platform.fail("FileDownload", OPEN_E_UNAVAIL);
  EXPECT_EQ(post("/download/config", "url=u&cfg=1&cfgtime=c7&updatetime=u7&auto=n"), busy().xml);
  EXPECT_EQ(root.content(), "cfg_time:c7\ncfg_update:u7\n");
  platform.succeed();
  platform.fail("CompletedRebootSet", OPEN_E_FAIL);
  EXPECT_EQ(post("/download/config", "url=u&cfg=1&cfgtime=c8&updatetime=u8&auto=y"),
            expected_platform_error(OPEN_E_FAIL).xml);
  EXPECT_EQ(root.content(), "cfg_time:c8\ncfg_update:u8\n");
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}

TEST_F(TransferStartTest, TimesThatCannotBeStoredFailTheRequest) {
  root.block_writing();
  for (const char *query :
       {"url=u&cfg=1&cfgtime=c1&updatetime=u1&auto=n", "url=u&cfg=1&cfgtime=c2&updatetime=u2&auto=y"}) {
    EXPECT_EQ(post("/download/config", query), invalid().xml);
    EXPECT_EQ(recorded_calls(), calls());
    EXPECT_STREQ(startupcfgInfo.cfgUpdateTime, "");
  }
  EXPECT_EQ(root.content(), "cfg_time:\ncfg_update:\n");
  /* The creation time is the record's by now, so it is the update time that cannot be stored. */
  EXPECT_EQ(post("/download/config", "url=u&cfg=1&cfgtime=c2&updatetime=u2&auto=n"), invalid().xml);
  EXPECT_EQ(recorded_calls(), calls());
  EXPECT_STREQ(startupcfgInfo.cfgUpdateTime, "u2");
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}

TEST_F(TransferStartTest, TimesThatAreStoredAlreadyNeedNoFile) {
  ASSERT_EQ(post("/download/config", "url=u&cfg=1&cfgtime=c&updatetime=t&auto=n"), started().xml);
  root.block_folder();
  expect_started("/download/config", "url=u&cfg=1&cfgtime=c&updatetime=t&auto=n",
                 "FileDownload 1024:u 15:startup-config");
  EXPECT_TRUE(root.is_folder_blocked());
  EXPECT_EQ(post("/download/config", "url=u&cfg=1&cfgtime=d&updatetime=t&auto=n"), invalid().xml);
  EXPECT_EQ(recorded_calls(), calls());
}

/* --- The flag of an update ------------------------------------------------------------------------------ */

TEST_F(TransferStartTest, ConfigurationWithoutAReloadClearsTheFlagForEitherTarget) {
  for (const char *query : {"url=u&cfg=1&cfgtime=c&updatetime=t", "url=u&cfg=2"}) {
    startupcfgInfo.hasUpdated = RC_FALSE;
    RC_t at_start = RC_TRUE;
    platform.at_each_call = [&] { at_start = startupcfgInfo.hasUpdated; };
    EXPECT_EQ(post("/download/config", std::string(query) + "&auto=n"), started().xml);
    EXPECT_EQ(at_start, RC_FALSE); /* only once the transfer has started */
    EXPECT_EQ(startupcfgInfo.hasUpdated, RC_TRUE);
    /* It does not come back. */
    EXPECT_EQ(post("/download/config", std::string(query) + "&auto=y"), started().xml);
    EXPECT_EQ(post("/download/image", "url=u&img=active&auto=y"), started().xml);
    EXPECT_EQ(startupcfgInfo.hasUpdated, RC_TRUE);
  }
}

TEST_F(TransferStartTest, FlagStaysWhenNoConfigurationIsFetched) {
  const struct {
    const char *uri, *query;
  } rows[] = {
      {"/download/config", "url=u&cfg=1&cfgtime=c&updatetime=t&auto=y"},
      {"/download/config", "url=u&cfg=2&auto=y"},
      {"/download/config", "url=u&cfg=2&auto=x"},
      {"/download/config", "url=u&cfg=3&auto=n"},
      {"/download/config", "cfg=2&auto=n"},
      {"/download/image", "url=u&img=active&auto=n"},
      {"/download/image", "url=u&img=backup&auto=y"},
      {"/download/script", "url=u&scr=s&act=n"},
      {"/download/script", "url=u&scr=s&act=y"},
      {"/upload/config", "url=u&cfg=1&sn=1"},
      {"/upload/script", "url=u&scr=s"},
  };
  for (const auto &row : rows) {
    post(row.uri, row.query);
    EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE) << row.uri << "?" << row.query;
  }
}

TEST_F(TransferStartTest, FlagStaysWhenTheTransferDoesNotStart) {
  for (open_error_t rc : all_platform_errors()) {
    platform.fail("FileDownload", rc);
    for (const char *query : {"url=u&cfg=1&cfgtime=c&updatetime=t&auto=n", "url=u&cfg=2&auto=n"}) {
      EXPECT_EQ(post("/download/config", query), expected_start(rc).xml);
      EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE) << query;
    }
  }
}

/* --- Configurations that are sent ----------------------------------------------------------------------- */

TEST_F(TransferStartTest, SentConfigurationIs1To4) {
  const std::pair<const char *, const char *> sources[] = {
      {"1", "15:startup-config"}, {"2", "14:backup-config"}, {"3", "15:running-config"},
      {"4", "12:kestrel.cfg"},    {"04", "12:kestrel.cfg"},  {"003", "15:running-config"}};
  for (const auto &[cfg, source] : sources)
    expect_started("/upload/config", std::string("url=u&sn=1&cfg=") + cfg,
                   std::string("FileUpload 1024:u ") + source);
  for (const char *cfg : {"0", "5", "-1", "-4", "-", "+3", "3x", "x", "3.0", "%203", "10", "999", "0003",
                          "1111", "12345", "4294967299"})
    expect_invalid("/upload/config", std::string("url=u&sn=1&cfg=") + cfg);
}

/* A failure of the upload does not take back the number, a request that is refused before does not store it.
 */
TEST_F(TransferStartTest, SerialNumberIsStoredBeforeTheConfigurationIsSent) {
  uint32_t at_start = 0;
  platform.at_each_call = [&] { at_start = startupcfgInfo.serialNum; };
  EXPECT_EQ(post("/upload/config", "url=u&cfg=1&sn=42"), started().xml);
  EXPECT_EQ(at_start, 42u);
  for (const char *query :
       {"cfg=1&sn=43", "url=&cfg=1&sn=43", "url=u&sn=43", "url=u&cfg=0&sn=43", "url=u&cfg=5&sn=43",
        "url=u&cfg=x&sn=43", "url=u&cfg=1", "url=u&cfg=1&sn=", "url=u&cfg=1&sn=x43"}) {
    expect_invalid("/upload/config", query);
    EXPECT_EQ(startupcfgInfo.serialNum, 42u) << query;
  }
  platform.fail("FileUpload", OPEN_E_ERROR);
  EXPECT_EQ(post("/upload/config", "url=u&cfg=1&sn=44"), not_started().xml);
  EXPECT_EQ(startupcfgInfo.serialNum, 44u);
}

/* 32 bits are kept of the number that stands at the start of the text. */
TEST_F(TransferStartTest, SerialNumberIsReadInDecimal) {
  const std::pair<std::string, uint32_t> numbers[] = {
      {"0", 0},
      {"7", 7},
      {"007", 7},
      {"2147483647", 2147483647},
      {"2147483648", 2147483648},
      {"4294967295", 4294967295},
      {"4294967296", 0},
      {"4294967303", 7},
      {"18446744073709551615", 4294967295},
      {"18446744073709551616", 4294967295}, /* the largest number that there is */
      {"18446744073709551623", 4294967295},
      {"99999999999999999999999", 4294967295},
      {"-1", 4294967295},
      {"-7", 4294967289},
      {"-0", 0},
      {"+7", 7}, /* a blank and 7 */
      {"%2B7", 7},
      {"%09%0A%2B7", 7},
      {"7x", 7},
      {"7.9", 7},
      {"7%208", 7},
      {"0x10", 0},
      {std::string(254, '0') + "7", 7},
      {std::string(255, '9'), 4294967295},
  };
  for (const auto &[sn, number] : numbers) {
    startupcfgInfo.serialNum = 1234;
    EXPECT_EQ(post("/upload/config", "url=u&cfg=1&sn=" + sn), started().xml) << sn;
    EXPECT_EQ(startupcfgInfo.serialNum, number) << sn;
  }
}

TEST_F(TransferStartTest, SerialNumberWithoutADigitIsRefused) {
  startupcfgInfo.serialNum = 1234;
  for (const std::string &sn :
       {std::string("x"), std::string("x7"), std::string("-"), std::string("%2B"), std::string("%20"),
        std::string("--7"), std::string("-%207"), std::string("%2B-7"), std::string(".7"), std::string("#7"),
        std::string(256, '7'), std::string(5000, '7')}) {
    expect_invalid("/upload/config", "url=u&cfg=1&sn=" + sn);
    EXPECT_EQ(startupcfgInfo.serialNum, 1234u) << sn;
  }
}

TEST_F(TransferStartTest, SerialNumberIsOfUploadsOnly) {
  post("/download/config", "url=u&cfg=2&auto=n&sn=9");
  post("/upload/script", "url=u&scr=s&sn=9");
  EXPECT_EQ(startupcfgInfo.serialNum, 0u);
}

/* --- Scripts -------------------------------------------------------------------------------------------- */

TEST_F(TransferStartTest, FetchedScriptsNameHasAtMost96Characters) {
  for (const std::string &name : {std::string("a"), std::string("no extension"), std::string("../../etc/x"),
                                  std::string("%s.scr"), std::string(92, 'x') + ".scr"}) {
    std::string sent = name;
    if (sent.find('%') != std::string::npos) sent.replace(sent.find('%'), 1, "%25");
    if (sent.find(' ') != std::string::npos) sent.replace(sent.find(' '), 1, "+");
    expect_started("/download/script", "url=u&act=n&scr=" + sent,
                   "FileDownload 1024:u " + std::to_string(name.size() + 1) + ":" + name);
  }
  for (size_t length : {97, 98, 255, 256, 1000}) {
    for (const char *act : {"n", "y"})
      expect_invalid("/download/script",
                     std::string("url=u&act=") + act + "&scr=" + std::string(length, 'x'));
  }
}

TEST_F(TransferStartTest, SentScriptsNameHasAtMost255Characters) {
  for (size_t length : {1, 96, 97, 255}) {
    const std::string name(length, 'x');
    expect_started("/upload/script", "url=u&scr=" + name,
                   "FileUpload 1024:u " + std::to_string(length + 1) + ":" + name);
  }
  for (size_t length : {256, 257, 1000})
    expect_invalid("/upload/script", "url=u&scr=" + std::string(length, 'x'));
}

TEST_F(TransferStartTest, ActivationIsYOrN) {
  for (const char *act : {"x", "Y", "N", "1", "0", "yy", "nn", "yes", "no", "n%20", "%20", "y%00"})
    expect_invalid("/download/script", std::string("url=u&scr=s&act=") + act);
}

TEST_F(TransferStartTest, SentScriptIsNeverApplied) {
  expect_started("/upload/script", "url=u&scr=s&act=y", "FileUpload 1024:u 2:s");
}
