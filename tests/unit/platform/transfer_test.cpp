/* Tests of transfers against servers made by hand: what is stored and sent, what comes of every way to fail,
 * what is said meanwhile, what logs show. */
#include "platform/api/openapi_system.h"
#include "platform/softswitch/services/transfer.h"
#include "tests/unit/platform/transfer_test_support.h"

#include <condition_variable>

using namespace softswitch;

namespace {

class Transfer : public TransferTest {};

/* A server goes on at the word of the test. */
class gate {
public:
  void open() {
    std::lock_guard guard(lock);
    is_open = true;
    opened.notify_all();
  }
  void pass() {
    std::unique_lock guard(lock);
    opened.wait_for(guard, std::chrono::milliseconds(patience_ms), [&] { return is_open; });
  }

private:
  std::mutex lock;
  std::condition_variable opened;
  bool is_open = false;
};

/* --- Downloads that succeed ----------------------------------------------------------------------------- */

TEST_F(Transfer, NothingSoFar) {
  EXPECT_EQ(download_status(), "No download so far.");
  EXPECT_EQ(upload_status(), "No upload so far.");
  EXPECT_EQ(code(), uint32_t{OPEN_TRANSFER_NONE});
  EXPECT_EQ(percent(), 0u);
  EXPECT_FALSE(in_progress());
  EXPECT_EQ(rpcclt_openapiTransferCompletedRebootSet(&handle), OPEN_E_FAIL);
}

TEST_F(Transfer, AConfigurationIsStoredWholeAndPrivate) {
  for (std::string target : {"startup-config", "backup-config"}) {
    EXPECT_EQ(fetched_content("vlan 10\nvlan 10 name servers\n", target),
              (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 29 bytes."}));
    EXPECT_EQ(stored(target), "vlan 10\nvlan 10 name servers\n");
    EXPECT_EQ(mode_of(dir.path + "/" + target), 0600u);
    EXPECT_EQ(percent(), 100u);
  }
  EXPECT_FALSE(has("transfer.part"));
}

TEST_F(Transfer, AScriptIsStoredInItsFolder) {
  EXPECT_EQ(fetched_content("no vlan 4000\ninterface vlan10 mtu 1600\n", "a.scr").code,
            uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(stored("scripts/a.scr"), "no vlan 4000\ninterface vlan10 mtu 1600\n");
  EXPECT_EQ(mode_of(dir.path + "/scripts"), 0700u);
  EXPECT_EQ(mode_of(dir.path + "/scripts/a.scr"), 0600u);
}

TEST_F(Transfer, AnEmptyFileIsAConfigurationAndAScriptButNoImage) {
  EXPECT_EQ(fetched_content("", "startup-config"),
            (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 0 bytes."}));
  EXPECT_TRUE(has("startup-config"));
  EXPECT_EQ(fetched_content("", "empty.scr").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_TRUE(has("scripts/empty.scr"));
  EXPECT_EQ(fetched_content("", "active"),
            (ended_transfer{OPEN_TRANSFER_BAD_CONTENT, "Failed: the file is empty."}));
  EXPECT_FALSE(has("images/active"));
}

TEST_F(Transfer, AnImageIsDescribedBesideIt) {
  std::string content("\0\x7f image", 8);
  std::string sum = "6be0d62828136fe68df4f25893db972bc3b557368da767a514f60db92e9cbbad";
  EXPECT_EQ(fetched_content(content, "backup"), (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 8 bytes."}));
  EXPECT_EQ(stored("images/backup"), content);
  std::string info = stored("images/backup.info");
  EXPECT_EQ(info.substr(0, 2), "8 ");
  EXPECT_EQ(info.substr(2, 64), sum);
  EXPECT_NE(info.find(" http://127.0.0.1:"), std::string::npos);
  EXPECT_EQ(mode_of(dir.path + "/images/backup"), 0600u);
  EXPECT_EQ(logged("SHA-256").size(), 1u);
}

TEST_F(Transfer, WithoutAnAnnouncedSizeTheEndIsTheEnd) {
  EXPECT_EQ(fetched_answer("HTTP/1.0 200 OK\r\n\r\nvlan 10\n", "a.scr"),
            (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 8 bytes."}));
}

TEST_F(Transfer, RedirectionsAreFollowed) {
  int asked = 0;
  tiny_server server([&](const tiny_connection &client) {
    bool last = client.receive_head().starts_with("GET /5 ");
    std::string next = "/" + std::to_string(++asked);
    client.send(last ? http_answer("vlan 10\n")
                     : http_answer("moved", "302 Found", "Location: " + next + "\r\n"));
  });
  EXPECT_EQ(fetched(server.url("/0"), "a.scr"), (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 8 bytes."}));
  EXPECT_EQ(stored("scripts/a.scr"), "vlan 10\n");
}

/* --- What it says meanwhile ----------------------------------------------------------------------------- */

TEST_F(Transfer, TellsHowFarItIs) {
  gate half, rest;
  tiny_server server([&](const tiny_connection &client) {
    client.receive_head();
    half.pass();
    client.send("HTTP/1.1 200 OK\r\nContent-Length: 16\r\n\r\nvlan 10\n");
    rest.pass();
    client.send("vlan 11\n");
  });
  ASSERT_EQ(download(server.url("/x"), "a.scr"), OPEN_E_NONE);
  EXPECT_EQ(download_status(), "Connecting.");
  EXPECT_EQ(code(), uint32_t{OPEN_TRANSFER_STARTING});
  EXPECT_EQ(percent(), 0u);
  EXPECT_TRUE(in_progress());
  half.open();
  while (code() == OPEN_TRANSFER_STARTING) EXPECT_TRUE(in_progress());
  EXPECT_EQ(download_status(), "Receiving: 8 of 16 bytes.");
  EXPECT_EQ(code(), uint32_t{OPEN_TRANSFER_RUNNING});
  EXPECT_EQ(percent(), 50u);
  EXPECT_EQ(upload_status(), "No upload so far.");
  rest.open();
  EXPECT_EQ(end_of_download(), (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 16 bytes."}));
}

TEST_F(Transfer, OneAtATime) {
  tiny_server server([](const tiny_connection &client) { client.wait_for_end(); });
  ASSERT_EQ(download(server.url("/x"), "a.scr"), OPEN_E_NONE);
  EXPECT_EQ(download(server.url("/x"), "active"), OPEN_E_UNAVAIL);
  EXPECT_EQ(upload(server.url("/x"), "running-config"), OPEN_E_UNAVAIL);
  transfer_cancel();
  EXPECT_EQ(end_of_download(), (ended_transfer{OPEN_TRANSFER_CANCELLED, "Cancelled."}));
  EXPECT_EQ(upload_status(), "No upload so far.");
}

TEST_F(Transfer, StoppingTheSwitchCancels) {
  tiny_server server([](const tiny_connection &client) { client.wait_for_end(); });
  ASSERT_EQ(download(server.url("/x"), "a.scr"), OPEN_E_NONE);
  restart();
  EXPECT_EQ(logged("Cancelled.").size(), 1u);
  EXPECT_EQ(code(), uint32_t{OPEN_TRANSFER_NONE});
  EXPECT_FALSE(has("transfer.part"));
}

TEST_F(Transfer, LeftoversGoAtTheStart) {
  softswitch::stop();
  write_file(dir.path + "/transfer.part", "half");
  restart();
  EXPECT_FALSE(has("transfer.part"));
}

/* --- Downloads that fail -------------------------------------------------------------------------------- */

struct refused_answer {
  const char *answer;
  OPEN_TRANSFER_CODE_t code;
  const char *status;
};

TEST_F(Transfer, WhatAServerAnswersGivesCodeAndReason) {
  static const refused_answer rows[] = {
      {"HTTP/1.1 401 No\r\n\r\n", OPEN_TRANSFER_ACCESS_DENIED, "Failed: the server denies access (401)."},
      {"HTTP/1.1 403 No\r\n\r\n", OPEN_TRANSFER_ACCESS_DENIED, "Failed: the server denies access (403)."},
      {"HTTP/1.1 404 No\r\n\r\n", OPEN_TRANSFER_NO_FILE, "Failed: the server has no such file (404)."},
      {"HTTP/1.1 410 No\r\n\r\n", OPEN_TRANSFER_NO_FILE, "Failed: the server has no such file (410)."},
      {"HTTP/1.1 500 No\r\n\r\n", OPEN_TRANSFER_FAILED, "Failed: the server refuses (500)."},
      {"HTTP/1.1 204 No\r\n\r\n", OPEN_TRANSFER_FAILED, "Failed: the server answers 204."},
      {"HTTP/1.1 302 No\r\nContent-Length: 0\r\n\r\n", OPEN_TRANSFER_FAILED,
       "Failed: the server answers 302."},
      {"HTTP/1.1 302 No\r\nLocation: file:///etc/passwd\r\n\r\n", OPEN_TRANSFER_FAILED,
       "Failed: the server redirects to a URL that is not followed."},
      {"HTTP/1.1 302 No\r\nLocation: tftp://127.0.0.1/x\r\n\r\n", OPEN_TRANSFER_FAILED,
       "Failed: the server redirects to a URL that is not followed."},
      {"HTTP/1.1 302 No\r\nLocation: /x\r\nContent-Length: 0\r\n\r\n", OPEN_TRANSFER_FAILED,
       "Failed: the server redirects too often."},
      {"HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\nvlan 10\n", OPEN_TRANSFER_CUT,
       "Failed: the connection ended before the file did."},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n8\r\nvlan 10\n\r\n", OPEN_TRANSFER_CUT,
       "Failed: the connection ended before the file did."},
      {"", OPEN_TRANSFER_CUT, "Failed: the server closed the connection without an answer."},
      {"SSH-2.0-x\r\n", OPEN_TRANSFER_FAILED, "Failed: Received HTTP/0.9 when not allowed."},
  };
  for (const refused_answer &row : rows) {
    EXPECT_EQ(fetched_answer(row.answer, "a.scr"), (ended_transfer{row.code, row.status})) << row.answer;
  }
  EXPECT_FALSE(has("scripts"));
  EXPECT_FALSE(has("transfer.part"));
}

TEST_F(Transfer, NoServer) {
  int port;
  {
    tiny_server gone([](const tiny_connection &) {});
    port = gone.port;
  }
  EXPECT_EQ(fetched("http://127.0.0.1:" + std::to_string(port) + "/x", "active"),
            (ended_transfer{OPEN_TRANSFER_UNREACHABLE, "Failed: the server cannot be reached."}));
  EXPECT_EQ(fetched("http://no-such-host.invalid/x", "active"),
            (ended_transfer{OPEN_TRANSFER_UNREACHABLE, "Failed: the server's name cannot be resolved."}));
}

TEST_F(Transfer, AServerThatSaysNothing) {
  set_limit("transfer-stall-seconds", 1);
  set_limit("transfer-connect-seconds", 1);
  tiny_server server([](const tiny_connection &client) { client.wait_for_end(); });
  EXPECT_EQ(fetched(server.url("/x"), "active"),
            (ended_transfer{OPEN_TRANSFER_TIMED_OUT, "Failed: no data has moved for 1 s."}));
  for (const char *scheme : {"https", "sftp"}) {
    EXPECT_EQ(fetched(std::string(scheme) + "://" + server.authority() + "/x", "active"),
              (ended_transfer{OPEN_TRANSFER_UNREACHABLE, "Failed: the server does not answer."}))
        << scheme;
  }
}

TEST_F(Transfer, AServerThatDripsIsNotWaitedForForEver) {
  set_limit("transfer-image-seconds", 1);
  tiny_server server([](const tiny_connection &client) {
    client.receive_head();
    bool there = client.send("HTTP/1.0 200 OK\r\n\r\n");
    while (there) {
      there = client.send("x");
      usleep(50000);
    }
  });
  EXPECT_EQ(fetched(server.url("/x"), "active"),
            (ended_transfer{OPEN_TRANSFER_TIMED_OUT, "Failed: it took longer than 1 s."}));
}

TEST_F(Transfer, TooLargeByWhatIsAnnouncedAndByWhatComes) {
  set_limit("transfer-image-kib", 1);
  std::string large(1025, 'x');
  ended_transfer refused = {OPEN_TRANSFER_TOO_LARGE, "Failed: the file is larger than 1024 bytes."};
  EXPECT_EQ(fetched_content(large, "active"), refused);
  EXPECT_EQ(fetched_answer("HTTP/1.0 200 OK\r\n\r\n" + large, "active"), refused);
  EXPECT_EQ(fetched_answer("HTTP/1.1 200 OK\r\nContent-Length: 9999999999999\r\n\r\nx", "active"), refused);
  EXPECT_EQ(fetched_content(large.substr(1), "active").code, uint32_t{OPEN_TRANSFER_DONE});
}

/* Those would have the network library busy or waiting for ever, deaf to the switch. */
TEST_F(Transfer, AServerThatKeepsTheLibraryBusyIsCutOff) {
  tiny_server server([](const tiny_connection &client) {
    while (client.send("no version of SSH\r\n")) continue;
  });
  /* Whether the library comes up for breath hangs on the server's speed. */
  set_limit("transfer-connect-seconds", 1);
  OPEN_TRANSFER_CODE_t code = fetched("sftp://u:p@" + server.authority() + "/x", "active").code;
  EXPECT_TRUE(code == OPEN_TRANSFER_FAILED || code == OPEN_TRANSFER_UNREACHABLE) << code;
}

TEST_F(Transfer, EndlessDataAndEndlessHeadersAreCutOff) {
  tiny_server server([](const tiny_connection &client) {
    bool data = client.receive_head().starts_with("GET /data");
    std::string piece = data ? std::string(65536, 'x') : "X-Header: more\r\n";
    bool there = client.send(data ? "HTTP/1.0 200 OK\r\n\r\n" : "HTTP/1.0 200 OK\r\n");
    while (there) there = client.send(piece);
  });
  set_limit("transfer-script-kib", 1024);
  EXPECT_EQ(fetched(server.url("/data"), "a.scr"),
            (ended_transfer{OPEN_TRANSFER_TOO_LARGE, "Failed: the file is larger than 1048576 bytes."}));
  EXPECT_EQ(fetched(server.url("/headers"), "a.scr"),
            (ended_transfer{OPEN_TRANSFER_FAILED, "Failed: the server's answer has too many headers."}));
}

TEST_F(Transfer, AFullDiskLeavesTheOldFile) {
  write_file(dir.path + "/backup-config", "vlan 10\n");
  ended_transfer ended;
  {
    full_disk full(65536);
    ended = fetched_content("! " + std::string(100000, 'x') + "\n", "backup-config");
  }
  EXPECT_EQ(ended, (ended_transfer{OPEN_TRANSFER_STORAGE_FAILED,
                                   "Failed: the switch cannot store the file: File too large."}));
  EXPECT_EQ(stored("backup-config"), "vlan 10\n");
  EXPECT_FALSE(has("transfer.part"));
}

TEST_F(Transfer, AFolderThatIsALinkIsNotFollowed) {
  temporary_directory elsewhere;
  std::filesystem::create_directory_symlink(elsewhere.path, dir.path + "/images");
  std::filesystem::create_directory_symlink(elsewhere.path, dir.path + "/scripts");
  EXPECT_EQ(fetched_content("image", "active").code, uint32_t{OPEN_TRANSFER_STORAGE_FAILED});
  EXPECT_EQ(download("http://127.0.0.1:1/x", "a.scr"), OPEN_E_ERROR);
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere.path));
}

/* --- What is checked ------------------------------------------------------------------------------------ */

TEST_F(Transfer, WhatIsNoFileIsNeitherCertificateNorKey) {
  for (const char *name : {"trusted-ca.pem", "known_hosts", "transfer-key"})
    ASSERT_EQ(mkfifo((dir.path + "/" + name).c_str(), 0600), 0) << name;
  tiny_server server([](const tiny_connection &) {});
  for (std::string scheme : {"https://", "sftp://", "scp://"})
    EXPECT_NE(fetched(scheme + server.authority() + "/x", "active").code, uint32_t{OPEN_TRANSFER_DONE});
}

TEST_F(Transfer, AConfigurationMustApplyToASwitchInFactoryState) {
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  write_file(dir.path + "/startup-config", "vlan 7\n");
  EXPECT_EQ(fetched_content("! names\nvlan 10 name x\nvlan 5\nnonsense\n", "startup-config"),
            (ended_transfer{OPEN_TRANSFER_BAD_CONTENT, "Failed: line 2: VLAN 10 does not exist."}));
  EXPECT_EQ(stored("startup-config"), "vlan 7\n");
  std::vector<std::string> warnings = logged("WARNING");
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_TRUE(warnings[0].starts_with("WARNING startup-config from http://127.0.0.1:")) << warnings[0];
  EXPECT_TRUE(warnings[0].ends_with("/file, line 2: VLAN 10 does not exist")) << warnings[0];
  EXPECT_TRUE(warnings[1].ends_with("/file, line 4: unknown command \"nonsense\"")) << warnings[1];
}

TEST_F(Transfer, AScriptNeedsLinesOfTheLanguageOnly) {
  EXPECT_EQ(fetched_content("vlan 10 name x\nvlan 5000\n", "a.scr"),
            (ended_transfer{OPEN_TRANSFER_BAD_CONTENT, "Failed: line 2: VLAN id out of range 1..4094."}));
  EXPECT_FALSE(has("scripts/a.scr"));
}

TEST_F(Transfer, WhatIsNoTextIsSaidShortly) {
  EXPECT_EQ(fetched_content(std::string("\x7f"
                                        "ELF\0\0\n",
                                        7),
                            "a.scr"),
            (ended_transfer{OPEN_TRANSFER_BAD_CONTENT, "Failed: this is no text."}));
  EXPECT_EQ(fetched_content("\xff\xfe\n", "a.scr"),
            (ended_transfer{OPEN_TRANSFER_BAD_CONTENT, "Failed: line 1: unknown command \"\?\?\"."}));
  ended_transfer long_word = fetched_content(std::string(16000, 'x') + "\n", "a.scr");
  EXPECT_EQ(long_word.code, uint32_t{OPEN_TRANSFER_BAD_CONTENT});
  EXPECT_LE(long_word.status.size(), 255u);
}

/* --- Uploads -------------------------------------------------------------------------------------------- */

/* Takes one upload: the request's head, and the body. */
struct taken_upload {
  std::string head, body;
};

void take_upload(const tiny_connection &client, taken_upload *into, const std::string &answer) {
  std::string all = client.receive_head();
  if (all.find("Expect: 100-continue\r\n") != std::string::npos) client.send("HTTP/1.1 100 Continue\r\n\r\n");
  size_t end = all.find("\r\n\r\n") + 4;
  into->head = all.substr(0, end);
  into->body = all.substr(end);
  size_t announced = into->head.find("Content-Length: ");
  size_t size = announced == std::string::npos ? 0 : std::stoul(into->head.substr(announced + 16));
  while (into->body.size() < size) {
    std::string more = client.receive();
    if (more.empty()) break;
    into->body += more;
  }
  client.send(answer);
}

TEST_F(Transfer, UploadsArePutByTheirName) {
  taken_upload taken;
  tiny_server server([&](const tiny_connection &client) {
    take_upload(client, &taken, "HTTP/1.1 201 Created\r\nContent-Length: 0\r\n\r\n");
  });
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  write_file(dir.path + "/backup-config", "vlan 11\n");
  std::filesystem::create_directory(dir.path + "/scripts");
  write_file(dir.path + "/scripts/a.scr", "vlan 12\n");
  for (const auto &[source, content] : std::map<std::string, std::string>{
           {"running-config", "vlan 10\n"}, {"backup-config", "vlan 11\n"}, {"a.scr", "vlan 12\n"}}) {
    EXPECT_EQ(sent(server.url("/put/" + source), source),
              (ended_transfer{OPEN_TRANSFER_DONE, "Completed: 8 bytes."}));
    EXPECT_TRUE(taken.head.starts_with("PUT /put/" + source + " HTTP/1.1\r\n")) << taken.head;
    EXPECT_EQ(taken.body, content);
    EXPECT_EQ(percent(), 100u);
  }
  EXPECT_EQ(download_status(), "No download so far.");
}

TEST_F(Transfer, AnUploadThatTheServerDoesNotWaitForFails) {
  tiny_server server([](const tiny_connection &client) { client.send(http_answer("")); });
  write_file(dir.path + "/startup-config", std::string(4 * 1024 * 1024, '\n'));
  EXPECT_EQ(sent(server.url("/x"), "startup-config"),
            (ended_transfer{OPEN_TRANSFER_CUT, "Failed: the server did not wait for the whole file."}));
}

TEST_F(Transfer, AnUploadThatIsRefusedFails) {
  taken_upload taken;
  tiny_server server(
      [&](const tiny_connection &client) { take_upload(client, &taken, http_answer("", "403 Forbidden")); });
  EXPECT_EQ(sent(server.url("/x"), "running-config"),
            (ended_transfer{OPEN_TRANSFER_ACCESS_DENIED, "Failed: the server denies access (403)."}));
}

TEST_F(Transfer, WhatIsNotThereCannotBeSent) {
  EXPECT_EQ(upload("http://127.0.0.1:1/x", "startup-config"), OPEN_E_ERROR);
  EXPECT_EQ(upload("http://127.0.0.1:1/x", "a.scr"), OPEN_E_ERROR);
  EXPECT_EQ(logged("cannot be started"),
            (std::vector<std::string>{
                "WARNING the transfer of startup-config cannot be started: there is no such file",
                "WARNING the transfer of a.scr cannot be started: there is no such file"}));
  EXPECT_EQ(upload_status(), "No upload so far.");
}

/* The names and contents of a tar archive's files (POSIX ustar). */
std::map<std::string, std::string> untarred(const std::string &archive) {
  std::map<std::string, std::string> files;
  for (size_t at = 0; at + 512 <= archive.size() && archive[at] != '\0';) {
    std::string name = archive.c_str() + at;
    size_t size = std::stoul(archive.substr(at + 124, 11), nullptr, 8);
    EXPECT_EQ(archive.substr(at + 257, 5), "ustar");
    EXPECT_EQ(archive.substr(at + 100, 6), "000600");
    files[name] = archive.substr(at + 512, size);
    at += 512 + (size + 511) / 512 * 512;
  }
  return files;
}

TEST_F(Transfer, TheArchiveHoldsWhatThereIs) {
  taken_upload taken;
  tiny_server server([&](const tiny_connection &client) { take_upload(client, &taken, http_answer("")); });
  std::map<std::string, std::string> files = {{"running-config", "vlan 10\n"}};
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  EXPECT_EQ(sent(server.url("/kestrel.cfg"), "kestrel.cfg").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(untarred(taken.body), files);

  std::filesystem::create_directory(dir.path + "/scripts");
  for (const auto &[name, content] : std::map<std::string, std::string>{{"startup-config", "vlan 7\n"},
                                                                        {"backup-config", ""},
                                                                        {"scripts/a.scr", "vlan 8\n"},
                                                                        {"scripts/b.scr", "vlan 9\n"}}) {
    write_file(dir.path + "/" + name, content);
    files[name] = content;
  }
  EXPECT_EQ(sent(server.url("/kestrel.cfg"), "kestrel.cfg").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(untarred(taken.body), files);
}

TEST_F(Transfer, AnArchiveIsBoundedInSize) {
  taken_upload taken;
  tiny_server server([&](const tiny_connection &client) { take_upload(client, &taken, http_answer("")); });
  set_limit("transfer-archive-kib", 2);
  write_file(dir.path + "/startup-config", std::string(1024, '\n'));
  write_file(dir.path + "/backup-config", std::string(1024, '\n'));
  EXPECT_EQ(sent(server.url("/kestrel.cfg"), "kestrel.cfg").code, uint32_t{OPEN_TRANSFER_DONE});
  write_file(dir.path + "/backup-config", std::string(1025, '\n'));
  EXPECT_EQ(
      sent(server.url("/kestrel.cfg"), "kestrel.cfg"),
      (ended_transfer{OPEN_TRANSFER_FAILED, "Failed: all files together are too large for an archive."}));
}

/* --- Arguments ------------------------------------------------------------------------------------------ */

TEST_F(Transfer, UrlsAndNamesThatAreNone) {
  std::string longest = "http://127.0.0.1:1/" + std::string(1023 - 19, 'x');
  for (std::string url : {std::string(), std::string("127.0.0.1/x"), std::string("file:///etc/passwd"),
                          std::string("gopher://127.0.0.1/x"), std::string("http://"), std::string("x y"),
                          std::string("ftp://127.0.0.1/folder/"), longest + "x"}) {
    EXPECT_EQ(download(url, "active"), OPEN_E_PARAM) << url;
    EXPECT_EQ(upload(url, "running-config"), OPEN_E_PARAM) << url;
  }
  for (std::string name : {"", "Active", "kestrel.cfg", "running-config", "../a.scr", "a/b.scr", ".a.scr",
                           "a.txt", "startup-config "}) {
    EXPECT_EQ(download("http://127.0.0.1:1/x", name), OPEN_E_PARAM) << name;
  }
  for (std::string name : {"", "active", "backup", "a.txt", "../a.scr"}) {
    EXPECT_EQ(upload("http://127.0.0.1:1/x", name), OPEN_E_PARAM) << name;
  }
  EXPECT_EQ(fetched(longest, "active").code, uint32_t{OPEN_TRANSFER_UNREACHABLE});
}

TEST_F(Transfer, ResultCodesAreOfUnitZero) {
  OPEN_TRANSFER_CODE_t found;
  EXPECT_EQ(rpcclt_openapiTransferResultCodeGet(&handle, 1, &found), OPEN_E_PARAM);
}

TEST_F(Transfer, RoomForScripts) {
  set_limit("scripts", 1);
  EXPECT_EQ(fetched_content("vlan 10\n", "a.scr").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(download("http://127.0.0.1:1/x", "b.scr"), OPEN_E_FULL);
  EXPECT_EQ(fetched_content("vlan 11\n", "a.scr").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(stored("scripts/a.scr"), "vlan 11\n");
}

/* --- Secrets -------------------------------------------------------------------------------------------- */

TEST_F(Transfer, UserPasswordAndQueryReachTheServerAndNoLog) {
  std::string head;
  tiny_server server([&](const tiny_connection &client) {
    head = client.receive_head();
    client.send(http_answer("vlan 10\n"));
  });
  std::string url = "http://usr:pa%20ss@" + server.authority() + "/dir/a.scr?token=hush#part";
  EXPECT_EQ(fetched(url, "a.scr").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_TRUE(head.starts_with("GET /dir/a.scr?token=hush HTTP/1.1\r\n")) << head;
  EXPECT_NE(head.find("Authorization: Basic dXNyOnBhIHNz\r\n"), std::string::npos) << head; /* usr:pa ss */
  std::string shown = "http://" + server.authority() + "/dir/a.scr: ";
  EXPECT_EQ(logged("a.scr"),
            (std::vector<std::string>{"NOTICE download of a.scr from " + shown + "begins",
                                      "NOTICE download of a.scr from " + shown + "Completed: 8 bytes."}));
}

TEST_F(Transfer, CredentialsDoNotFollowARedirectionToAnotherServer) {
  std::string head;
  tiny_server other([&](const tiny_connection &client) {
    head = client.receive_head();
    client.send(http_answer("vlan 10\n"));
  });
  tiny_server server([&](const tiny_connection &client) {
    client.receive_head();
    client.send(http_answer("", "302 Found", "Location: " + other.url("/x") + "\r\n"));
  });
  EXPECT_EQ(fetched("http://usr:pass@" + server.authority() + "/x", "a.scr").code,
            uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(head.find("Authorization"), std::string::npos) << head;
}

TEST_F(Transfer, ProxiesOfTheEnvironmentDoNotCount) {
  setenv("http_proxy", "http://127.0.0.1:1/", 1);
  ended_transfer ended = fetched_content("vlan 10\n", "a.scr");
  unsetenv("http_proxy");
  EXPECT_EQ(ended.code, uint32_t{OPEN_TRANSFER_DONE});
}

/* --- Reloading afterwards ------------------------------------------------------------------------------- */

/* Waits until the switch has reloaded to this configuration. */
void expect_running(const std::string &wanted) {
  for (int tries = patience_ms / 10; tries > 0 && running_config() != wanted; tries--) usleep(10000);
  EXPECT_EQ(running_config(), wanted);
}

TEST_F(Transfer, ReloadsWhenItIsDone) {
  gate asked;
  tiny_server server([&](const tiny_connection &client) {
    client.receive_head();
    asked.pass();
    client.send(http_answer("vlan 10\n"));
  });
  ASSERT_EQ(download(server.url("/x"), "startup-config"), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiTransferCompletedRebootSet(&handle), OPEN_E_NONE);
  EXPECT_EQ(running_config(), "");
  asked.open();
  expect_running("vlan 10\n");
}

TEST_F(Transfer, ReloadsAtOnceWhenItIsDoneAlready) {
  EXPECT_EQ(fetched_content("vlan 10\n", "startup-config").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_EQ(running_config(), "");
  EXPECT_EQ(rpcclt_openapiTransferCompletedRebootSet(&handle), OPEN_E_NONE);
  expect_running("vlan 10\n");
}

TEST_F(Transfer, IsCancelledByAReload) {
  tiny_server server([](const tiny_connection &client) { client.wait_for_end(); });
  for (uint32_t mode : {OPEN_RELOAD, OPEN_RELOAD_WARM, OPEN_RELOAD_FACTORY}) {
    std::string error;
    ASSERT_EQ(download(server.url("/x"), "a.scr"), OPEN_E_NONE);
    ASSERT_TRUE(reload(&error, mode)) << error;
    EXPECT_EQ(end_of_download(), (ended_transfer{OPEN_TRANSFER_CANCELLED, "Cancelled."})) << mode;
  }
}

TEST_F(Transfer, DoesNotReloadAfterAFailure) {
  ASSERT_EQ(commit("vlan 20"), OPEN_E_NONE);
  tiny_server server([](const tiny_connection &client) { client.wait_for_end(); });
  ASSERT_EQ(download(server.url("/x"), "active"), OPEN_E_NONE);
  EXPECT_EQ(rpcclt_openapiTransferCompletedRebootSet(&handle), OPEN_E_NONE);
  transfer_cancel();
  EXPECT_EQ(rpcclt_openapiTransferCompletedRebootSet(&handle), OPEN_E_NONE);
  EXPECT_EQ(running_config(), "vlan 20\n");
  EXPECT_EQ(logged("reload"), std::vector<std::string>());
}

TEST_F(Transfer, AReloadCancels) {
  tiny_server server([](const tiny_connection &client) { client.wait_for_end(); });
  ASSERT_EQ(download(server.url("/x"), "active"), OPEN_E_NONE);
  std::string error;
  EXPECT_TRUE(reload(&error)) << error;
  EXPECT_EQ(end_of_download(), (ended_transfer{OPEN_TRANSFER_CANCELLED, "Cancelled."}));
}

TEST_F(Transfer, AFactoryResetRemovesWhatWasFetched) {
  for (std::string target : {"startup-config", "backup-config", "a.scr", "active"})
    EXPECT_EQ(fetched_content("vlan 10\n", target).code, uint32_t{OPEN_TRANSFER_DONE});
  std::string error;
  EXPECT_TRUE(reload(&error, OPEN_RELOAD_FACTORY)) << error;
  for (std::string name : {"startup-config", "backup-config", "scripts", "images"})
    EXPECT_FALSE(has(name)) << name;
}

TEST_F(Transfer, AStartupConfigurationThatComesMakesTheRunningOneUnsavedOrSaved) {
  ASSERT_EQ(commit("vlan 10"), OPEN_E_NONE);
  EXPECT_TRUE(configuration_unsaved());
  EXPECT_EQ(fetched_content("vlan 10\n", "startup-config").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_FALSE(configuration_unsaved());
  EXPECT_EQ(fetched_content("vlan 11\n", "startup-config").code, uint32_t{OPEN_TRANSFER_DONE});
  EXPECT_TRUE(configuration_unsaved());
}

} // namespace
