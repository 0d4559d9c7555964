/* Transfers and scripts with the software switch behind the modules, and a server on this machine. */
#include "modules/rest_module_script.h"
#include "platform/api/openapi_vlan.h"
#include "tests/support/tiny_server.h"
#include "tests/unit/modules/transfer_fixture.h"

#include <string.h>

class TransferSwitchTest : public PlatformTest {
protected:
  TransferSwitchTest() { EXPECT_EQ(initialize_transfer_variables(), RC_TRUE); }
  ~TransferSwitchTest() override {
    wait_for_end();
    for (const char *file : {"/startup-config", "/backup-config", "/scripts"})
      std::filesystem::remove_all(getenv("KESTREL_STATE_DIR") + std::string(file));
  }

  std::string transfer(const std::string &method, const std::string &uri,
                       const std::string &query = "") const {
    return call_xml(transfer_api_handler, method, uri, query);
  }
  std::string script(const std::string &method, const std::string &uri, const std::string &query = "") const {
    return call_xml(script_api_handler, method, uri, query);
  }
  std::string status(const std::string &uri) const {
    std::string answer = transfer("GET", uri);
    size_t begin = answer.find("<status>") + strlen("<status>");
    return answer.substr(begin, answer.find("</status>") - begin);
  }
  void wait_for_end() const {
    OPEN_BOOL_t in_progress = OPEN_TRUE;
    while (in_progress == OPEN_TRUE) {
      ASSERT_EQ(rpcclt_openapiTransferInProgressGet(handle, &in_progress), OPEN_E_NONE);
    }
  }
  bool has_vlan(uint32_t vlanId) const { return openapiVlanCreatedCheck(handle, vlanId) == OPEN_E_NONE; }
  static std::string listed(const std::vector<std::string> &names) {
    std::vector<result_node> nodes = {number("count_of_files", static_cast<int64_t>(names.size()))};
    for (const std::string &name : names)
      nodes.push_back(entry(static_cast<unsigned>(nodes.size()), "script_file", {text("filename", name)}));
    return expected_data({branch("script_files", nodes)}, "Get script file list successfully.").xml;
  }

  startupcfg_root root;
};

/* Answers each request with one file. */
class file_server {
public:
  explicit file_server(const std::string &file, const std::string &status = "200 OK")
      : server([=](const tiny_connection &client) {
          client.receive_head();
          client.send(http_answer(file, status));
        }) {}
  std::string url() const { return "url=" + server.url("/file"); }

private:
  tiny_server server;
};

TEST_F(TransferSwitchTest, ScriptIsFetchedAndAppliedInOneRequest) {
  file_server server("vlan 10\nvlan 20\n");
  EXPECT_EQ(transfer("POST", "/download/script", server.url() + "&scr=b.scr&act=y"), activated().xml);
  EXPECT_TRUE(has_vlan(10) && has_vlan(20));
  EXPECT_EQ(script("GET", "/script/list"), listed({"b.scr"}));
}

TEST_F(TransferSwitchTest, ScriptThatCannotBeFetchedOrIsWrongIsNotApplied) {
  file_server missing("", "404 Not Found"), wrong("vlan 10\nno such line\n");
  for (const std::string &url : {missing.url(), wrong.url()})
    EXPECT_EQ(transfer("POST", "/download/script", url + "&scr=a.scr&act=y"), not_started().xml) << url;
  EXPECT_EQ(transfer("POST", "/download/script", "url=nonsense&scr=a.scr&act=y"), invalid().xml);
  EXPECT_EQ(transfer("POST", "/download/script", "url=nonsense&scr=a.scr&act=n"), invalid().xml);
  EXPECT_EQ(transfer("POST", "/download/script", missing.url() + "&scr=a.txt&act=n"), invalid().xml);
  EXPECT_FALSE(has_vlan(10));
  EXPECT_EQ(script("GET", "/script/list"), listed({}));
}

TEST_F(TransferSwitchTest, ScriptsAreListedAppliedAndDeleted) {
  file_server server("vlan 10\n");
  for (const char *name : {"b.scr", "a.scr"}) {
    EXPECT_EQ(transfer("POST", "/download/script", server.url() + "&act=n&scr=" + name), started().xml);
    wait_for_end();
  }
  EXPECT_EQ(script("GET", "/script/list"), listed({"a.scr", "b.scr"}));
  EXPECT_FALSE(has_vlan(10));
  EXPECT_EQ(script("POST", "/script/apply", "scr=b.scr"),
            expected_data({}, "Apply script successfully.").xml);
  EXPECT_TRUE(has_vlan(10));
  EXPECT_EQ(script("DELETE", "/script", "scr=b.scr"),
            expected_data({}, "Delete the script file successfully.").xml);
  EXPECT_EQ(script("GET", "/script/list"), listed({"a.scr"}));
  for (const char *name : {"b.scr", "a.txt", "../startup-config", ".scr"}) {
    EXPECT_EQ(script("POST", "/script/apply", std::string("scr=") + name), invalid().xml) << name;
    EXPECT_EQ(script("DELETE", "/script", std::string("scr=") + name), invalid().xml) << name;
  }
}

TEST_F(TransferSwitchTest, OnlyOneTransferIsInProgress) {
  tiny_server silent([](const tiny_connection &client) {
    client.receive_head();
    client.wait_for_end();
  });
  const std::string url = "url=" + silent.url("/file");
  EXPECT_EQ(transfer("POST", "/download/script", url + "&scr=a.scr&act=n"), started().xml);
  EXPECT_EQ(transfer("POST", "/download/config", url + "&cfg=2&auto=n"), busy().xml);
  EXPECT_EQ(transfer("POST", "/upload/config", url + "&cfg=3&sn=1"), busy().xml);
  EXPECT_EQ(transfer("POST", "/download/script", url + "&scr=a.scr&act=y"),
            expected_platform_error(OPEN_E_UNAVAIL).xml);
  lab("reload"); /* which cancels it */
  wait_for_end();
  EXPECT_EQ(transfer("POST", "/download/script", "url=http://127.0.0.1:1/x&scr=a.scr&act=n"), started().xml);
}

TEST_F(TransferSwitchTest, StartupConfigurationIsFetchedAndItsTimesAreTold) {
  file_server server("vlan 10\n");
  EXPECT_EQ(transfer("POST", "/download/config", server.url() + "&cfg=1&cfgtime=c&updatetime=u&auto=n"),
            started().xml);
  wait_for_end();
  EXPECT_EQ(status("/download/status"), "Completed: 8 bytes.");
  EXPECT_EQ(transfer("GET", "/download/startupCfgInfo"),
            expected_data({branch("information", {text("cfg_time", "c"), text("cfg_update", "u"),
                                                  text("cfg_modified", "yes")})})
                .xml);
  lab("reload");
  EXPECT_TRUE(has_vlan(10));
}

TEST_F(TransferSwitchTest, UnsavedChangesModifyTheConfiguration) {
  const auto modified = [&] {
    return transfer("GET", "/download/startupCfgInfo").find("<cfg_modified>yes<") != std::string::npos;
  };
  EXPECT_FALSE(modified());
  ASSERT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  EXPECT_TRUE(modified());
}

TEST_F(TransferSwitchTest, RunningConfigurationIsSent) {
  std::string sent;
  tiny_server server([&](const tiny_connection &client) {
    sent = client.receive_head();
    client.send("HTTP/1.1 100 Continue\r\n\r\n");
    while (sent.find("vlan 10\n") == std::string::npos) {
      std::string more = client.receive();
      if (more.empty()) break;
      sent += more;
    }
    client.send(http_answer("", "201 Created"));
  });
  ASSERT_EQ(rpcclt_openapiVlanCreate(handle, 10), OPEN_E_NONE);
  EXPECT_EQ(transfer("POST", "/upload/config", "url=" + server.url("/running") + "&cfg=3&sn=4294967295"),
            started().xml);
  wait_for_end();
  EXPECT_EQ(sent.substr(0, 13), "PUT /running ");
  EXPECT_NE(sent.find("\r\n\r\nvlan 10\n"), std::string::npos) << sent;
  EXPECT_NE(transfer("GET", "/upload/status").find("<progress>100%</progress><cfg_upload_sn>4294967295<"),
            std::string::npos);
}
