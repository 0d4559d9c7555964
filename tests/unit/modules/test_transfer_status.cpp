/* The transfer module, reading: how the transfers stand, and what is known of the startup configuration. */
#include "tests/unit/modules/transfer_fixture.h"

class TransferStatusTest : public TransferTest {
protected:
  Answers get(const std::string &uri) const { return both("GET", uri); }

  static Answers expected_download(const std::string &status, const std::string &progress) {
    return expected_data({branch("information", {text("status", status), text("progress", progress)})});
  }
  static Answers expected_upload(const std::string &status, const std::string &progress,
                                 const std::string &number) {
    return expected_data({branch(
        "information", {text("status", status), text("progress", progress), text("cfg_upload_sn", number)})});
  }
  static Answers expected_info(const std::string &time, const std::string &update,
                               const std::string &modified) {
    return expected_data({branch("information", {text("cfg_time", time), text("cfg_update", update),
                                                 text("cfg_modified", modified)})});
  }

  static constexpr const char *DOWNLOAD = "/download/status", *UPLOAD = "/upload/status",
                              *INFO = "/download/startupCfgInfo";
};

/* --- Transfers ------------------------------------------------------------------------------------------ */

TEST_F(TransferStatusTest, DownloadStatusIsASentenceAndItsProgress) {
  platform.status = "Receiving <data> & more.";
  platform.percent = 40;
  Answers answers = get(DOWNLOAD);
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<information><status>Receiving <data> & more.</status><progress>40%</progress>"
                         "</information></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"information\": { \"status\": \"Receiving <data> & more.\", "
                          "\"progress\": \"40%\" } } } }\n");
  EXPECT_EQ(recorded_calls(), (calls{"DownloadStatusGet 256:", "ProgressGet"}));
}

TEST_F(TransferStatusTest, UploadStatusHasTheSerialNumberToo) {
  platform.status = "Sending data.";
  platform.percent = 7;
  startupcfgInfo.serialNum = 42;
  Answers answers = get(UPLOAD);
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<information><status>Sending data.</status><progress>7%</progress>"
                         "<cfg_upload_sn>42</cfg_upload_sn></information></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"information\": { \"status\": \"Sending data.\", "
                          "\"progress\": \"7%\", \"cfg_upload_sn\": \"42\" } } } }\n");
  EXPECT_EQ(recorded_calls(), (calls{"UploadStatusGet 256:", "ProgressGet"}));
}

TEST_F(TransferStatusTest, ProgressIsWhateverThePlatformSays) {
  const std::pair<uint32_t, const char *> rows[] = {
      {0, "0%"}, {1, "1%"}, {99, "99%"}, {100, "100%"}, {101, "101%"}, {2147483647, "2147483647%"}};
  for (const auto &[percent, progress] : rows) {
    platform.percent = percent;
    EXPECT_EQ(get(DOWNLOAD), expected_download(platform.status, progress));
    EXPECT_EQ(get(UPLOAD), expected_upload(platform.status, progress, "0"));
  }
}

TEST_F(TransferStatusTest, StatusMayBeEmptyAndHasRoomFor255Characters) {
  for (const std::string &status : {std::string(), std::string("100% %s %n"), std::string(255, 'x')}) {
    platform.status = status;
    EXPECT_EQ(get(DOWNLOAD), expected_download(status, "0%"));
    EXPECT_EQ(get(UPLOAD), expected_upload(status, "0%", "0"));
  }
}

TEST_F(TransferStatusTest, StatusWithoutATerminatorEndsWithItsBuffer) {
  platform.status = std::string(300, 'x');
  EXPECT_EQ(get(DOWNLOAD), expected_download(std::string(256, 'x'), "0%"));
  EXPECT_EQ(get(UPLOAD), expected_upload(std::string(256, 'x'), "0%", "0"));
}

TEST_F(TransferStatusTest, SerialNumberIsUnsigned) {
  const std::pair<const char *, const char *> rows[] = {{"0", "0"},
                                                        {"2147483647", "2147483647"},
                                                        {"2147483648", "2147483648"},
                                                        {"4294967295", "4294967295"},
                                                        {"4294967296", "0"},
                                                        {"-1", "4294967295"}};
  for (const auto &[sn, number] : rows) {
    EXPECT_EQ(post("/upload/config", std::string("url=u&cfg=1&sn=") + sn), started().xml);
    EXPECT_EQ(get(UPLOAD), expected_upload(platform.status, "0%", number));
  }
}

TEST_F(TransferStatusTest, SerialNumberIsOfTheLastUploadSinceTheStart) {
  EXPECT_EQ(get(UPLOAD), expected_upload(platform.status, "0%", "0"));
  post("/upload/config", "url=u&cfg=1&sn=5");
  post("/upload/config", "url=u&cfg=4&sn=6");
  post("/upload/config", "url=u&cfg=1&sn=x");
  EXPECT_EQ(get(UPLOAD), expected_upload(platform.status, "0%", "6"));
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(get(UPLOAD), expected_upload(platform.status, "0%", "0"));
}

TEST_F(TransferStatusTest, FirstCallThatFailsIsAnswered) {
  const struct {
    const char *uri, *status_function, *status_call;
  } rows[] = {{DOWNLOAD, "DownloadStatusGet", "DownloadStatusGet 256:"},
              {UPLOAD, "UploadStatusGet", "UploadStatusGet 256:"}};
  for (const auto &row : rows) {
    for (open_error_t rc : all_platform_errors()) {
      platform.fail(row.status_function, rc);
      EXPECT_EQ(get(row.uri), expected_platform_error(rc)) << row.uri << " " << rc;
      EXPECT_EQ(recorded_calls(), calls{row.status_call});
      platform.succeed();
      platform.fail("ProgressGet", rc);
      EXPECT_EQ(get(row.uri), expected_platform_error(rc)) << row.uri << " " << rc;
      EXPECT_EQ(recorded_calls(), (calls{row.status_call, "ProgressGet"}));
      platform.succeed();
    }
  }
}

TEST_F(TransferStatusTest, StatusChangesNothing) {
  startupcfgInfo.serialNum = 42;
  root.write("untouched\n");
  get(DOWNLOAD);
  get(UPLOAD);
  EXPECT_EQ(root.content(), "untouched\n");
  EXPECT_EQ(startupcfgInfo.serialNum, 42u);
  EXPECT_EQ(startupcfgInfo.hasUpdated, RC_FALSE);
}

/* --- The startup configuration -------------------------------------------------------------------------- */

TEST_F(TransferStatusTest, TimesAreEmptyAtFirst) {
  Answers answers = get(INFO);
  EXPECT_EQ(answers.xml, "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data>"
                         "<information><cfg_time></cfg_time><cfg_update></cfg_update>"
                         "<cfg_modified>no</cfg_modified></information></rlt_data></result>\n");
  EXPECT_EQ(answers.json, "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", "
                          "\"rlt_data\": { \"information\": { \"cfg_time\": \"\", \"cfg_update\": \"\", "
                          "\"cfg_modified\": \"no\" } } } }\n");
  EXPECT_EQ(recorded_calls(), calls{"SystemUnsavedConfigStatusGet"});
}

/* Only 1 says that something is unsaved. */
TEST_F(TransferStatusTest, ConfigurationIsModifiedWhenItCameWithoutAReloadOrIsUnsaved) {
  const struct {
    uint32_t updated, unsaved;
    const char *modified;
  } rows[] = {{1, 0, "no"},  {1, 1, "yes"}, {1, 2, "no"},  {1, UINT32_MAX, "no"},
              {0, 0, "yes"}, {0, 1, "yes"}, {0, 2, "yes"}, {0, UINT32_MAX, "yes"}};
  for (const auto &row : rows) {
    startupcfgInfo.hasUpdated = row.updated == 1 ? RC_FALSE : RC_TRUE;
    platform.unsaved = row.unsaved;
    EXPECT_EQ(get(INFO), expected_info("", "", row.modified)) << row.updated << " " << row.unsaved;
  }
}

TEST_F(TransferStatusTest, ConfigurationThatCameWithoutAReloadReadsAsModified) {
  EXPECT_EQ(get(INFO), expected_info("", "", "no"));
  post("/download/config", "url=u&cfg=1&cfgtime=2026-01-02&updatetime=2026-03-04&auto=n");
  EXPECT_EQ(get(INFO), expected_info("2026-01-02", "2026-03-04", "yes"));
  /* Until the program starts anew. */
  EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
  EXPECT_EQ(get(INFO), expected_info("2026-01-02", "2026-03-04", "no"));
}

TEST_F(TransferStatusTest, ConfigurationThatCameWithAReloadReadsAsUnmodified) {
  post("/download/config", "url=u&cfg=1&cfgtime=2026-01-02&updatetime=2026-03-04&auto=y");
  EXPECT_EQ(get(INFO), expected_info("2026-01-02", "2026-03-04", "no"));
}

TEST_F(TransferStatusTest, BackupConfigurationReadsAsModifiedToo) {
  post("/download/config", "url=u&cfg=2&auto=n");
  EXPECT_EQ(get(INFO), expected_info("", "", "yes"));
}

/* As the file has them, whoever wrote it. */
TEST_F(TransferStatusTest, TimesAreReadFromTheFileEachTime) {
  post("/download/config", "url=u&cfg=1&cfgtime=c&updatetime=u&auto=y");
  root.write("cfg_update:by hand\ncfg_time:10:20:30\n");
  EXPECT_EQ(get(INFO), expected_info("10:20:30", "by", "no"));
  root.write("cfg_update:later\n");
  EXPECT_EQ(get(INFO), expected_info("10:20:30", "later", "no"));
}

TEST_F(TransferStatusTest, TimeWithABlankIsToldUpToTheBlank) {
  post("/download/config", "url=u&cfg=1&cfgtime=2026-01-02%2010:20&updatetime=2026-03-04+11:21&auto=y");
  EXPECT_EQ(root.content(), "cfg_time:2026-01-02 10:20\ncfg_update:2026-03-04 11:21\n");
  EXPECT_EQ(get(INFO), expected_info("2026-01-02", "2026-03-04", "no"));
}

TEST_F(TransferStatusTest, TimesThatCannotBeReadAnswer99) {
  post("/download/config", "url=u&cfg=1&cfgtime=c&updatetime=u&auto=y");
  root.block_folder();
  EXPECT_EQ(get(INFO), invalid());
  EXPECT_EQ(recorded_calls(), calls());
}

TEST_F(TransferStatusTest, FileThatIsGoneIsNotMadeByReading) {
  std::filesystem::remove(root.file());
  EXPECT_EQ(get(INFO), invalid());
  EXPECT_EQ(root.content(), "(none)");
}

TEST_F(TransferStatusTest, FailureToReadTheUnsavedStatusIsAnswered) {
  for (RC_t updated : {RC_TRUE, RC_FALSE}) {
    startupcfgInfo.hasUpdated = updated;
    for (open_error_t rc : all_platform_errors()) {
      platform.fail("SystemUnsavedConfigStatusGet", rc);
      EXPECT_EQ(get(INFO), expected_platform_error(rc)) << rc;
    }
  }
}
