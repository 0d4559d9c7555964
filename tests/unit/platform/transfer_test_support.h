/* What the tests of transfers and scripts share: a running switch, the calls with texts as strings, and what
 * came of a transfer in one comparable piece. */
#ifndef KESTREL_TESTS_TRANSFER_TEST_SUPPORT_H
#define KESTREL_TESTS_TRANSFER_TEST_SUPPORT_H

#include "platform/api/openapi_script.h"
#include "platform/api/openapi_transfer.h"
#include "tests/support/tiny_server.h"
#include "tests/unit/platform/softswitch_test_support.h"

/* How a transfer ended. */
struct ended_transfer {
  OPEN_TRANSFER_CODE_t code;
  std::string status;
  bool operator==(const ended_transfer &) const = default;
};

inline void PrintTo(const ended_transfer &ended, std::ostream *out) {
  *out << ended.code << " \"" << ended.status << '"';
}

class TransferTest : public SoftSwitch {
protected:
  using text_call = open_error_t (*)(openapiClientHandle_t *, open_buffdesc *);
  using two_texts_call = open_error_t (*)(openapiClientHandle_t *, open_buffdesc *, open_buffdesc *);

  open_error_t call(text_call function, std::string text) {
    open_buffdesc given = {static_cast<uint32_t>(text.size() + 1), text.data()};
    return function(&handle, &given);
  }
  open_error_t call(two_texts_call function, std::string first, std::string second) {
    open_buffdesc one = {static_cast<uint32_t>(first.size() + 1), first.data()};
    open_buffdesc two = {static_cast<uint32_t>(second.size() + 1), second.data()};
    return function(&handle, &one, &two);
  }
  open_error_t download(const std::string &url, const std::string &target) {
    return call(rpcclt_openapiTransferFileDownload, url, target);
  }
  open_error_t upload(const std::string &url, const std::string &source) {
    return call(rpcclt_openapiTransferFileUpload, url, source);
  }

  std::string status_by(text_call function) {
    char buffer[256];
    open_buffdesc text = {sizeof buffer, buffer};
    EXPECT_EQ(function(&handle, &text), OPEN_E_NONE);
    return std::string(buffer, text.size);
  }
  std::string download_status() { return status_by(rpcclt_openapiTransferDownloadStatusGet); }
  std::string upload_status() { return status_by(rpcclt_openapiTransferUploadStatusGet); }

  bool in_progress() {
    OPEN_BOOL_t running = OPEN_TRUE;
    EXPECT_EQ(rpcclt_openapiTransferInProgressGet(&handle, &running), OPEN_E_NONE);
    return running == OPEN_TRUE;
  }
  OPEN_TRANSFER_CODE_t code() {
    OPEN_TRANSFER_CODE_t found = 99;
    EXPECT_EQ(rpcclt_openapiTransferResultCodeGet(&handle, 0, &found), OPEN_E_NONE);
    return found;
  }
  uint32_t percent() {
    uint32_t found = 999;
    EXPECT_EQ(rpcclt_openapiTransferProgressGet(&handle, &found), OPEN_E_NONE);
    return found;
  }

  ended_transfer end_of_download() {
    while (in_progress()) continue;
    return {code(), download_status()};
  }
  ended_transfer end_of_upload() {
    while (in_progress()) continue;
    return {code(), upload_status()};
  }
  /* What comes of a download that has to start. */
  ended_transfer fetched(const std::string &url, const std::string &target) {
    EXPECT_EQ(download(url, target), OPEN_E_NONE) << url;
    return end_of_download();
  }
  ended_transfer sent(const std::string &url, const std::string &source) {
    EXPECT_EQ(upload(url, source), OPEN_E_NONE) << url;
    return end_of_upload();
  }
  /* What comes of a download from a server that answers so. */
  ended_transfer fetched_answer(const std::string &answer, const std::string &target) {
    tiny_server server([&](const tiny_connection &client) {
      client.receive_head();
      client.send(answer);
    });
    return fetched(server.url("/file"), target);
  }
  /* Fetches a file with this content. */
  ended_transfer fetched_content(const std::string &content, const std::string &target) {
    return fetched_answer(http_answer(content), target);
  }

  std::string stored(const std::string &name) const { return file_content(dir.path + "/" + name); }
  bool has(const std::string &name) const { return std::filesystem::exists(dir.path + "/" + name); }

  /* The log's lines that hold a text, without time, source and line number. */
  std::vector<std::string> logged(const std::string &part) const {
    std::vector<std::string> found;
    for (const std::string &line : lines_of(stored("log"))) {
      if (line.find(part) == std::string::npos) continue;
      size_t severity = line.find(' ') + 1, source = line.find(' ', severity) + 1;
      found.push_back(line.substr(severity, source - severity) + line.substr(line.find(' ', source) + 1));
    }
    return found;
  }
};

#endif
