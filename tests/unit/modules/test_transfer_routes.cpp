/* The transfer module, routes: which requests it serves by which operation, and the many that it nearly
 * serves. */
#include "tests/unit/modules/transfer_fixture.h"

static const char ALL_VARIABLES[] =
    "url=u&img=active&auto=n&cfg=1&cfgtime=c&updatetime=t&sn=1&scr=s.scr&act=n";

static const struct {
  const char *method, *uri, *other_method;
  std::vector<std::string> calls;
} SERVED[] = {
    {"GET", "/download/status", "POST", {"DownloadStatusGet 256:", "ProgressGet"}},
    {"GET", "/upload/status", "POST", {"UploadStatusGet 256:", "ProgressGet"}},
    {"GET", "/download/startupCfgInfo", "POST", {"SystemUnsavedConfigStatusGet"}},
    {"POST", "/download/image", "GET", {"FileDownload 1024:u 7:active"}},
    {"POST", "/download/config", "GET", {"FileDownload 1024:u 15:startup-config"}},
    {"POST", "/upload/config", "GET", {"FileUpload 1024:u 15:startup-config"}},
    {"POST", "/download/script", "GET", {"FileDownload 1024:u 6:s.scr"}},
    {"POST", "/upload/script", "GET", {"FileUpload 1024:u 6:s.scr"}},
};

TEST_F(TransferTest, EveryRouteHasItsOperation) {
  for (const auto &row : SERVED) {
    EXPECT_NE(request(row.method, row.uri, ALL_VARIABLES), expected_bad_request().xml) << row.uri;
    EXPECT_EQ(recorded_calls(), row.calls) << row.uri;
  }
}

TEST_F(TransferTest, EveryOperationIsServedUnderItsMethodOnly) {
  for (const auto &row : SERVED) {
    for (const char *method : {row.other_method, "PUT", "DELETE", "PATCH", "HEAD", "OPTIONS", ""}) {
      EXPECT_EQ(both(method, row.uri, ALL_VARIABLES), expected_bad_request()) << method << " " << row.uri;
      EXPECT_EQ(recorded_calls(), calls());
    }
  }
}

TEST_F(TransferTest, MethodVariableChoosesTheOperation) {
  for (const auto &row : SERVED) {
    const std::string method = row.method;
    EXPECT_NE(request(row.other_method, row.uri, std::string(ALL_VARIABLES) + "&method=" + method),
              expected_bad_request().xml);
    EXPECT_EQ(recorded_calls(), row.calls) << row.uri;
    EXPECT_EQ(request(method, row.uri, std::string(ALL_VARIABLES) + "&method=put"),
              expected_bad_request().xml);
    EXPECT_EQ(recorded_calls(), calls()) << row.uri;
  }
}

/* Nothing may follow, nothing may be missing, and every letter counts. */
TEST_F(TransferTest, NearMissesOfEveryRouteAreBadRequests) {
  for (const auto &row : SERVED) {
    const std::string uri = row.uri;
    const size_t second = uri.find('/', 1);
    std::vector<std::string> misses = {uri + "/", uri + "/x", uri + "x", uri + " ", uri + "\n",
                                       uri + "%", uri + uri,  " " + uri, "/" + uri, uri.substr(1)};
    for (size_t length = 0; length < uri.size(); length++) misses.push_back(uri.substr(0, length));
    misses.push_back(std::string(uri).insert(second, "/"));
    misses.push_back(std::string(uri).insert(second + 1, " "));
    for (size_t i = 1; i < uri.size(); i++) {
      std::string other_case = uri;
      other_case[i] = static_cast<char>(other_case[i] ^ ('a' - 'A'));
      if (uri[i] != '/') misses.push_back(other_case);
    }
    for (const std::string &miss : misses) {
      EXPECT_EQ(request(row.method, miss, ALL_VARIABLES), expected_bad_request().xml) << miss;
      EXPECT_EQ(recorded_calls(), calls()) << miss;
    }
  }
}

TEST_F(TransferTest, WhatIsServedInOneDirectionOnlyIsABadRequestInTheOther) {
  const struct {
    const char *method, *uri;
  } rows[] = {{"POST", "/upload/image"},
              {"GET", "/upload/startupCfgInfo"},
              {"GET", "/status"},
              {"POST", "/image"},
              {"POST", "/config"},
              {"POST", "/script"},
              {"GET", "/transfer/status"},
              {"GET", "/download"},
              {"GET", "/upload"},
              {"GET", "/download/"},
              {"GET", "/upload/"},
              {"POST", "/download"},
              {"POST", "/upload"},
              {"POST", "/download/"},
              {"POST", "/upload/"},
              {"GET", ""},
              {"POST", ""},
              {"GET", "/"}};
  for (const auto &row : rows) {
    EXPECT_EQ(both(row.method, row.uri, ALL_VARIABLES), expected_bad_request()) << row.method << row.uri;
    EXPECT_EQ(recorded_calls(), calls());
  }
}

TEST_F(TransferTest, VeryLongUriIsABadRequest) {
  EXPECT_EQ(both("GET", "/download/status" + std::string(5000, 'x')), expected_bad_request());
}
