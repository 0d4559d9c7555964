/* Lab control against a running switch: the commands, and the socket with clients of every kind. */
#include "platform/softswitch/services/lab.h"

#include "platform/api/l7proc.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_vlan.h"
#include "platform/softswitch/services/faults.h"
#include "platform/softswitch/services/log.h"
#include "platform/softswitch/softswitch.h"
#include "tests/unit/platform/services_test_support.h"

#include <fcntl.h>
#include <string.h>
#include <sys/poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace softswitch;

namespace {

[[gnu::used]] void *volatile linked_in[] = {reinterpret_cast<void *>(&rpcclt_openapiConnectivityCheck),
                                            reinterpret_cast<void *>(&openapiMaxInterfaceCountGet)};

/* A client of the socket `lab.sock` in a directory. */
class client {
public:
  explicit client(const std::string &directory) {
    int at = open(directory.c_str(), O_PATH | O_DIRECTORY);
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/lab.sock", at);
    fd = socket(AF_UNIX, SOCK_STREAM, 0);
    connected = connect(fd, reinterpret_cast<struct sockaddr *>(&address), sizeof address) == 0;
    close(at);
  }
  ~client() { close(fd); }
  client(const client &) = delete;
  client &operator=(const client &) = delete;

  void say(const std::string &text) { send(fd, text.data(), text.size(), MSG_NOSIGNAL); }
  void say_no_more() { shutdown(fd, SHUT_WR); }
  /* Reads up to the end of a reply ("ok" or "error: ..." as a line), or of the connection. */
  std::string hear() {
    std::string reply;
    char byte;
    for (size_t line = 0; recv(fd, &byte, 1, 0) == 1;) {
      reply.push_back(byte);
      if (byte != '\n') continue;
      std::string_view last = std::string_view(reply).substr(line);
      if (last == "ok\n" || last.starts_with("error: ")) return reply;
      line = reply.size();
    }
    return reply;
  }
  std::string ask(const std::string &command) {
    say(command + "\n");
    return hear();
  }
  bool has_something() {
    struct pollfd ready = {fd, POLLIN, 0};
    return poll(&ready, 1, 0) == 1;
  }
  int fd;
  bool connected;
};

class Lab : public testing::Test {
protected:
  void SetUp() override {
    setenv("KESTREL_STATE_DIR", directory.path.c_str(), 1);
    setenv("KESTREL_ADMIN_PASSWORD", "secret", 1);
    unsetenv("KESTREL_PROFILE");
    std::string error;
    ASSERT_TRUE(start(&error)) << error;
  }
  void TearDown() override {
    fault_clear_all();
    log_set_console_severity(L7PROC_WARNING);
    stop();
    unsetenv("KESTREL_STATE_DIR");
    unsetenv("KESTREL_ADMIN_PASSWORD");
  }
  /* Makes a change that stays pending. */
  void hold_a_change() {
    hold_apply(true);
    openapiClientHandle_t handle;
    ASSERT_EQ(openapiClientRegister("lab test", &handle), OPEN_E_NONE);
    ASSERT_EQ(rpcclt_openapiVlanCreate(&handle, 77), OPEN_E_NONE);
  }
  std::string socket_path() const { return directory.path + "/lab.sock"; }
  temporary_directory directory;
};

/* --- Commands --------------------------------------------------------------------------------------------
 */

TEST_F(Lab, HelpListsEveryCommand) {
  EXPECT_EQ(
      lab_command("help"),
      "help                                      this list\n"
      "hold                                      hold changes back from the data plane: they stay pending\n"
      "release                                   let held changes through\n"
      "wait [MILLISECONDS]                       wait until no change is pending, 5000 ms at most unless "
      "given\n"
      "fault clear                               take back all faults\n"
      "fault list                                list faults: function, code, calls to fail, calls to skip "
      "before\n"
      "fault FUNCTION CODE [COUNT [SKIP]]        let the next COUNT (1) calls of a platform function, after "
      "SKIP (0) more, answer CODE\n"
      "cable in|out PORT                         plug a port's cable in or pull it out\n"
      "link up|down PORT                         take the far end of a port's cable up or down\n"
      "counter set INTERFACE COUNTER VALUE       set a counter\n"
      "counter add INTERFACE COUNTER AMOUNT      count a counter up\n"
      "counter run INTERFACE COUNTER PER-SECOND  let a counter run; 0 stops it\n"
      "counter list INTERFACE                    list an interface's counters: id, name, value, per second "
      "when running\n"
      "counter names                             list all counters: id, name\n"
      "time-range list                           list the time ranges that are defined: name, state\n"
      "time-range NAME active|inactive|none      define a time range with its state, or no longer\n"
      "lease list                                list what is offered: interface, prefix\n"
      "lease INTERFACE PREFIX|none               offer an address to an interface that obtains its own, or "
      "withdraw what is offered\n"
      "ready yes|no                              whether the switch says that it has come up\n"
      "ssh-sessions NUMBER                       how many SSH sessions are open\n"
      "limit NAME VALUE                          lower a limit of the switch, to see its table full\n"
      "log LEVEL                                 lines this severe go to the console: emergency ... debug, "
      "or 0 to 7\n"
      "show running-config                       print the running configuration\n"
      "show images                               list the software images: name, size, SHA-256, when and "
      "from where fetched\n"
      "save                                      make the running configuration the startup configuration\n"
      "reload warm                               hand the running configuration to the data plane anew\n"
      "reload factory                            return to factory state, removing all configurations\n"
      "reload                                    return to the startup configuration\n"
      "ok\n");
}

TEST_F(Lab, CommandsAreCarriedOut) {
  for (const char *line :
       {"hold",           "release",        "wait",         "wait 0",      "wait 600000", "fault list",
        "fault clear",    "cable out 0/1",  "cable in 0/1", "ready no",    "ready yes",   "limit vlans 2",
        "log 7",          "log warning",    "save",         "reload",      "reload warm", "reload factory",
        "ssh-sessions 0", "ssh-sessions 5", "  hold  ",     "release\t\r", "wait 5000"})
    EXPECT_EQ(lab_command(line), "ok\n") << line;
}

TEST_F(Lab, TimeRangesHaveTheStateThatTheyWereGivenUntilARestart) {
  EXPECT_EQ(lab_command("time-range list"), "ok\n");
  EXPECT_EQ(lab_command("time-range office active"), "ok\n");
  EXPECT_EQ(lab_command("time-range night active"), "ok\n");
  EXPECT_EQ(lab_command("time-range night inactive"), "ok\n");
  EXPECT_EQ(lab_command("time-range list"), "night inactive\noffice active\nok\n");
  EXPECT_EQ(lab_command("reload"), "ok\n");
  EXPECT_EQ(lab_command("time-range office none"), "ok\n");
  EXPECT_EQ(lab_command("time-range list"), "night inactive\nok\n") << "a reload leaves them as they are";
  std::string error;
  stop();
  ASSERT_TRUE(start(&error)) << error;
  EXPECT_EQ(lab_command("time-range list"), "ok\n");
}

TEST_F(Lab, WrongLinesAreRefusedWithTheirUsage) {
  const char *fault = "error: usage: fault FUNCTION CODE [COUNT [SKIP]]\n";
  const struct {
    std::string line, reply;
  } table[] = {
      {"help me", "error: usage: help\n"},
      {"time-range", "error: usage: time-range NAME active|inactive|none\n"},
      {"time-range office", "error: usage: time-range NAME active|inactive|none\n"},
      {"time-range office on", "error: usage: time-range NAME active|inactive|none\n"},
      {"time-range list all", "error: usage: time-range list\n"},
      {"time-range a/b active", "error: no name of a time range\n"},
      {"hold now", "error: usage: hold\n"},
      {"release x", "error: usage: release\n"},
      {"wait x", "error: usage: wait [MILLISECONDS]\n"},
      {"wait -1", "error: usage: wait [MILLISECONDS]\n"},
      {"wait 600001", "error: usage: wait [MILLISECONDS]\n"},
      {"wait 1 2", "error: usage: wait [MILLISECONDS]\n"},
      {"fault", fault},
      {"fault rpcclt_openapiConnectivityCheck", fault},
      {"fault rpcclt_openapiConnectivityCheck FAIL", fault},
      {"fault rpcclt_openapiConnectivityCheck OPEN_E_FAIL x", fault},
      {"fault rpcclt_openapiConnectivityCheck OPEN_E_FAIL -1", fault},
      {"fault rpcclt_openapiConnectivityCheck OPEN_E_FAIL 4294967296", fault},
      {"fault rpcclt_openapiConnectivityCheck OPEN_E_FAIL 1 x", fault},
      {"fault rpcclt_openapiConnectivityCheck OPEN_E_FAIL 1 1 1", fault},
      {"fault openapiNoSuchCall OPEN_E_FAIL", "error: no such platform function\n"},
      {"fault malloc OPEN_E_FAIL", "error: no such platform function\n"},
      {"fault clear all", "error: usage: fault clear\n"},
      {"fault list all", "error: usage: fault list\n"},
      {"cable", "error: usage: cable in|out PORT\n"},
      {"cable in", "error: usage: cable in|out PORT\n"},
      {"cable up 0/1", "error: usage: cable in|out PORT\n"},
      {"cable in 0/99", "error: no such port\n"},
      {"ready", "error: usage: ready yes|no\n"},
      {"ready maybe", "error: usage: ready yes|no\n"},
      {"limit vlans", "error: usage: limit NAME VALUE\n"},
      {"limit vlans x", "error: usage: limit NAME VALUE\n"},
      {"limit vlans 4095", "error: no such limit, or above what is built in\n"},
      {"limit wishes 3", "error: no such limit, or above what is built in\n"},
      {"log", "error: usage: log LEVEL\n"},
      {"log loud", "error: usage: log LEVEL\n"},
      {"log 8", "error: usage: log LEVEL\n"},
      {"save me", "error: usage: save\n"},
      {"reload now", "error: usage: reload\n"},
      {"reload warm up", "error: usage: reload warm\n"},
      {"reload factory now", "error: usage: reload factory\n"},
      {"ssh-sessions", "error: usage: ssh-sessions NUMBER\n"},
      {"ssh-sessions x", "error: usage: ssh-sessions NUMBER\n"},
      {"ssh-sessions 6", "error: more sessions than there can be\n"},
      {"show running-config x", "error: usage: show running-config\n"},
      {"", "error: no such command; \"help\" lists them\n"},
      {"   ", "error: no such command; \"help\" lists them\n"},
      {"show", "error: no such command; \"help\" lists them\n"},
      {"HELP", "error: no such command; \"help\" lists them\n"},
      {"helpme", "error: no such command; \"help\" lists them\n"},
      {std::string("help\0", 5), "error: control characters in the command\n"},
      {"help\nhold", "error: control characters in the command\n"},
  };
  for (const auto &row : table) EXPECT_EQ(lab_command(row.line), row.reply) << row.line;
}

TEST_F(Lab, FaultsAreOrderedListedAndCleared) {
  EXPECT_EQ(lab_command("fault rpcclt_openapiConnectivityCheck OPEN_E_FAIL"), "ok\n");
  EXPECT_EQ(lab_command("fault openapiMaxInterfaceCountGet -23 4 2"), "ok\n");
  EXPECT_EQ(lab_command("fault list"), "openapiMaxInterfaceCountGet OPEN_E_FULL 4 2\n"
                                       "rpcclt_openapiConnectivityCheck OPEN_E_FAIL 1 0\nok\n");
  EXPECT_EQ(lab_command("fault openapiMaxInterfaceCountGet -23 0"), "ok\n");
  EXPECT_EQ(lab_command("fault list"), "rpcclt_openapiConnectivityCheck OPEN_E_FAIL 1 0\nok\n");
  EXPECT_EQ(lab_command("fault clear"), "ok\n");
  EXPECT_EQ(lab_command("fault list"), "ok\n");
}

TEST_F(Lab, WaitEndsWithTheChangeOrItsTime) {
  hold_a_change();
  EXPECT_EQ(lab_command("wait 0"), "error: changes are still pending\n");
  EXPECT_EQ(lab_command("wait 30"), "error: changes are still pending\n");
  EXPECT_EQ(lab_command("release"), "ok\n");
  EXPECT_EQ(lab_command("wait"), "ok\n");
}

TEST_F(Lab, RunningConfigurationIsPrintedWhole) {
  std::string config = running_config();
  ASSERT_TRUE(config.empty() || config.back() == '\n');
  EXPECT_EQ(lab_command("show running-config"), config + "ok\n");
}

TEST_F(Lab, LogLevelSetsTheConsoleThreshold) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(lab_command("log info"), "ok\n");
  l7proc_logf(L7PROC_INFO, 0, "f", 1, "shown");
  EXPECT_EQ(lab_command("log error"), "ok\n");
  l7proc_logf(L7PROC_WARNING, 0, "f", 1, "hidden");
  log_close();
  std::string seen = testing::internal::GetCapturedStderr();
  EXPECT_NE(seen.find(" INFO f:1 shown\n"), std::string::npos) << seen;
  EXPECT_EQ(seen.find("hidden"), std::string::npos) << seen;
}

TEST_F(Lab, InProcessFormCutsTheReplyAndTellsSuccess) {
  char reply[8];
  EXPECT_EQ(kestrel_lab_command("hold", reply, sizeof reply), 0);
  EXPECT_STREQ(reply, "ok\n");
  EXPECT_EQ(kestrel_lab_command("nonsense", reply, sizeof reply), -1);
  EXPECT_STREQ(reply, "error: ");
  EXPECT_EQ(kestrel_lab_command("help", reply, 1), 0);
  EXPECT_STREQ(reply, "");
  EXPECT_EQ(kestrel_lab_command("release", nullptr, 0), 0);
  EXPECT_EQ(kestrel_lab_command(nullptr, reply, sizeof reply), -1);
}

/* --- The socket ------------------------------------------------------------------------------------------
 */

TEST_F(Lab, SocketIsForItsOwnerOnly) {
  struct stat found;
  ASSERT_EQ(lstat(socket_path().c_str(), &found), 0);
  EXPECT_TRUE(S_ISSOCK(found.st_mode));
  EXPECT_EQ(found.st_mode & 07777, 0600u);
}

TEST_F(Lab, ClientsAreAnsweredLineByLine) {
  client lab(directory.path);
  ASSERT_TRUE(lab.connected);
  EXPECT_EQ(lab.ask("hold"), "ok\n");
  EXPECT_EQ(lab.ask("nonsense"), "error: no such command; \"help\" lists them\n");
  EXPECT_EQ(lab.ask("help"), lab_command("help"));
  lab.say("release\r\nready yes\nfault ");
  EXPECT_EQ(lab.hear(), "ok\n");
  EXPECT_EQ(lab.hear(), "ok\n");
  EXPECT_EQ(lab.ask("list"), "ok\n");
}

TEST_F(Lab, LastLineNeedsNoNewlineAndTheSwitchThenCloses) {
  client lab(directory.path);
  lab.say("hold\nrelease");
  lab.say_no_more();
  EXPECT_EQ(lab.hear(), "ok\n");
  EXPECT_EQ(lab.hear(), "ok\n");
  EXPECT_EQ(lab.hear(), "");
  client silent(directory.path);
  silent.say_no_more();
  EXPECT_EQ(silent.hear(), "");
}

TEST_F(Lab, WaitingClientHoldsUpNobody) {
  hold_a_change();
  client waiting(directory.path), other(directory.path);
  waiting.say("wait 600000\nready yes\n");
  EXPECT_EQ(other.ask("help"), lab_command("help"));
  EXPECT_EQ(other.ask("wait 0"), "error: changes are still pending\n");
  EXPECT_FALSE(waiting.has_something());
  EXPECT_EQ(other.ask("release"), "ok\n");
  EXPECT_EQ(waiting.hear(), "ok\n");
  EXPECT_EQ(waiting.hear(), "ok\n");
}

TEST_F(Lab, ClientThatLeavesWhileWaitingIsForgotten) {
  hold_a_change();
  {
    client leaving(directory.path);
    leaving.say("wait 600000\n");
  }
  client other(directory.path);
  EXPECT_EQ(other.ask("hold"), "ok\n");
}

TEST_F(Lab, SwitchStopsWhileClientsWait) {
  hold_a_change();
  client waiting(directory.path);
  waiting.say("wait 600000\n");
  stop();
  EXPECT_EQ(waiting.hear(), "");
  EXPECT_FALSE(client(directory.path).connected);
}

TEST_F(Lab, LineOf4095CharactersIsTheLongest) {
  client lab(directory.path);
  EXPECT_EQ(lab.ask("help" + std::string(4091, ' ')), lab_command("help"));
  EXPECT_EQ(lab.ask("help" + std::string(4092, ' ')), "error: the line is longer than 4095 characters\n");
  EXPECT_EQ(lab.hear(), "");
}

TEST_F(Lab, EndlessBytesWithoutNewlineAreCutOff) {
  client endless(directory.path), other(directory.path);
  std::string block(65536, 'x');
  int sent = 0;
  /* Ends because the switch closes; a switch that took everything would be sent 64 MiB. */
  while (sent < 1000 && send(endless.fd, block.data(), block.size(), MSG_NOSIGNAL) > 0) sent++;
  EXPECT_LT(sent, 1000);
  EXPECT_EQ(other.ask("hold"), "ok\n");
}

TEST_F(Lab, ClientThatNeverReadsHoldsUpNobodyAndIsNotReadFromEither) {
  client deaf(directory.path), other(directory.path);
  std::string many;
  for (int i = 0; i < 1000; i++) many += "help\n";
  size_t sent = 0;
  for (int full = 0; full < 3;) {
    ssize_t size = send(deaf.fd, many.data(), many.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (size > 0)
      sent += static_cast<size_t>(size);
    else
      full++;
    ASSERT_EQ(other.ask("hold"), "ok\n");
    ASSERT_LT(sent, 64u * 1024 * 1024);
  }
  EXPECT_EQ(other.ask("release"), "ok\n");
}

TEST_F(Lab, SilentClientsGiveWayToNewOnes) {
  std::vector<std::unique_ptr<client>> silent;
  for (int i = 0; i < 200; i++) silent.push_back(std::make_unique<client>(directory.path));
  client other(directory.path);
  EXPECT_EQ(other.ask("hold"), "ok\n");
  EXPECT_EQ(silent.front()->hear(), "");
  EXPECT_EQ(silent.back()->ask("release"), "ok\n");
}

TEST_F(Lab, BinaryGarbageIsRefusedLineByLine) {
  client lab(directory.path);
  std::string garbage;
  for (int c = 0; c < 256; c++) {
    if (c != '\n') garbage.push_back(static_cast<char>(c));
  }
  EXPECT_EQ(lab.ask(garbage), "error: control characters in the command\n");
  EXPECT_EQ(lab.ask("\xff\xfe\x80"), "error: no such command; \"help\" lists them\n");
  EXPECT_EQ(lab.ask("hold"), "ok\n");
}

TEST_F(Lab, ManyClientsAtOnceGetWholeReplies) {
  const std::string help = lab_command("help");
  std::vector<std::thread> clients;
  for (int i = 0; i < 8; i++)
    clients.emplace_back([&] {
      client lab(directory.path);
      for (int n = 0; n < 50; n++) EXPECT_EQ(lab.ask("help"), help);
    });
  for (std::thread &thread : clients) thread.join();
}

/* --- The socket file -------------------------------------------------------------------------------------
 */

class LabSocket : public testing::Test {
protected:
  void TearDown() override { lab_stop(); }
  temporary_directory directory;
  std::string error;
};

/* Leaves a socket file behind that nobody listens on, as a killed switch does. */
void leave_stale_socket(const std::string &path) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(fd, reinterpret_cast<struct sockaddr *>(&address), sizeof address), 0);
  close(fd);
}

TEST_F(LabSocket, StaleSocketIsReplacedAndStoppingRemovesIt) {
  leave_stale_socket(directory.path + "/lab.sock");
  ASSERT_TRUE(lab_start(directory.path, &error)) << error;
  EXPECT_EQ(client(directory.path).ask("fault list"), "ok\n");
  lab_stop();
  EXPECT_FALSE(std::filesystem::exists(directory.path + "/lab.sock"));
  lab_stop();
}

TEST_F(LabSocket, OtherSwitchesSocketIsLeftAlone) {
  std::string path = directory.path + "/lab.sock";
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(fd, reinterpret_cast<struct sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(listen(fd, 1), 0);
  EXPECT_FALSE(lab_start(directory.path, &error));
  EXPECT_EQ(error, path + ": Address already in use");
  EXPECT_TRUE(std::filesystem::exists(path));
  close(fd);
}

TEST_F(LabSocket, FileThatIsNoSocketIsLeftAlone) {
  write_file(directory.path + "/lab.sock", "precious");
  EXPECT_FALSE(lab_start(directory.path, &error));
  EXPECT_EQ(error, directory.path + "/lab.sock: Address already in use");
  EXPECT_EQ(file_content(directory.path + "/lab.sock"), "precious");
}

TEST_F(LabSocket, LongDirectoryNamesWork) {
  std::string deep = directory.path + "/" + std::string(200, 'd');
  ASSERT_EQ(mkdir(deep.c_str(), 0700), 0);
  ASSERT_TRUE(lab_start(deep, &error)) << error;
  EXPECT_EQ(client(deep).ask("fault list"), "ok\n");
}

TEST_F(LabSocket, MissingDirectoryIsNamed) {
  EXPECT_FALSE(lab_start(directory.path + "/none", &error));
  EXPECT_EQ(error, directory.path + "/none/lab.sock: No such file or directory");
}

} // namespace
