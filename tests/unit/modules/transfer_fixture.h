/* Tests of transfers: requests to a platform that does what the test tells, and a product's root of the
 * test's own for the file of the startup configuration's times. */
#ifndef KESTREL_TESTS_MODULES_TRANSFER_FIXTURE_H
#define KESTREL_TESTS_MODULES_TRANSFER_FIXTURE_H

#include "engine/rest_settings.h"
#include "modules/rest_module_transfer.h"
#include "modules/rest_startupcfg_info.h"
#include "tests/support/platform_fixture.h"
#include "tests/support/result_data.h"
#include "tests/support/temporary_dir.h"
#include "tests/unit/modules/recorded_calls.h"
#include "tests/unit/modules/told_transfers.h"

#include <filesystem>

/* --- Documents ------------------------------------------------------------------------------------------ */

inline Answers started() {
  return expected_data({}, "File transfer is starting.");
}
inline Answers activated() {
  return expected_data({}, "Script transfer and apply successfully.");
}
/* A refusal in the module's own words has empty data, too. */
inline Answers refused(int code, const std::string &message) {
  result_node result =
      branch("result", {number("rlt_code", code), text("rlt_mesg", message), branch("rlt_data", {})});
  return {result.xml + "\n", "{ " + result.json + " }\n"};
}
inline Answers not_started() {
  return refused(2, "Failed to start a transfer.");
}
inline Answers busy() {
  return refused(1, "Another Transfer is in Progress.");
}
inline Answers invalid() {
  return expected_platform_error(OPEN_E_PARAM);
}

/* What a start that failed with the code is answered with. */
inline Answers expected_start(open_error_t rc) {
  if (rc == OPEN_E_NONE) return started();
  if (rc == OPEN_E_ERROR) return not_started();
  return rc == OPEN_E_UNAVAIL ? busy() : invalid();
}

/* --- The file ------------------------------------------------------------------------------------------- */

/* A root of the product's with the folder of the file, which is not there. The record is that of a program
 * that has just started. */
class startupcfg_root {
public:
  startupcfg_root() {
    std::filesystem::create_directory(folder());
    setenv("KESTREL_ROOT", dir.path().c_str(), 1);
    reload_rest_settings();
    startupcfgInfo = {0, RC_FALSE, "", ""};
  }
  ~startupcfg_root() {
    unsetenv("KESTREL_ROOT");
    reload_rest_settings();
    startupcfgInfo = {0, RC_FALSE, "", ""};
  }
  startupcfg_root(const startupcfg_root &) = delete;
  startupcfg_root &operator=(const startupcfg_root &) = delete;

  std::string folder() const { return dir.file("user-apps"); }
  std::string file() const { return folder() + "/startupcfg_info_doc"; }
  std::string temporary_file() const { return file() + ".tmp"; }

  void write(const std::string &text) const { overwrite_file(file(), text); }
  std::string content() const { return read_file(file()); }

  void remove_folder() const { std::filesystem::remove_all(folder()); }
  /* From now on the file can neither be opened nor made: a file is in the folder's place. */
  void block_folder() const {
    remove_folder();
    overwrite_file(folder(), "");
  }
  bool is_folder_blocked() const { return read_file(folder()).empty(); }
  /* From now on the file can be read but not be written. */
  void block_writing() const { std::filesystem::create_directory(temporary_file()); }

private:
  TemporaryDir dir;
};

/* --- Fixture -------------------------------------------------------------------------------------------- */

/* The file is there, with empty values. */
class TransferTest : public PlatformTest {
protected:
  TransferTest() {
    EXPECT_EQ(initialize_transfer_variables(), RC_TRUE);
    forget_calls();
  }

  /* One request of which the operation returns 1 when it succeeds, else 0. Its answer. */
  std::string once(const std::string &method, const std::string &uri, const std::string &query,
                   const std::string &format) const {
    return checked_answer(transfer_api_handler, handle, method, uri, query, format);
  }
  /* The request in XML. What it calls is all that is recorded. */
  std::string request(const std::string &method, const std::string &uri,
                      const std::string &query = "") const {
    forget_calls();
    return once(method, uri, query, "xml");
  }
  std::string post(const std::string &uri, const std::string &query) const {
    return request("POST", uri, query);
  }
  /* Both formats, JSON first, so that what is recorded is as in request(). */
  Answers both(const std::string &method, const std::string &uri, const std::string &query = "") const {
    Answers answers;
    answers.json = once(method, uri, query, "json");
    answers.xml = request(method, uri, query);
    return answers;
  }

  /* The request fails for its variables, in both formats, and calls nothing. */
  void expect_invalid(const std::string &uri, const std::string &query) const {
    EXPECT_EQ(both("POST", uri, query), invalid()) << uri << "?" << query;
    EXPECT_EQ(recorded_calls(), calls()) << uri << "?" << query;
  }

  typedef std::vector<std::string> calls;

  startupcfg_root root;
  told_transfers platform;
};

#endif
