/* The software switch in this process, for tests of modules: started once, in a state directory of its own,
 * and brought back to its factory state before each test. Lab control plays the world outside. */
#ifndef KESTREL_TESTS_SUPPORT_PLATFORM_FIXTURE_H
#define KESTREL_TESTS_SUPPORT_PLATFORM_FIXTURE_H

#include "platform/api/openapi_common.h"
#include "tests/support/answers.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

/* Password of the account "admin" of a switch that a test has started. */
inline constexpr char ADMIN_PASSWORD[] = "correct horse";
/* The identity of that switch. It has 54 ports: 0/1 to 0/46 for 10 Gbit/s, 0/47 (10 Gbit/s) and 0/48
 * (1 Gbit/s) with copper connectors, 0/49 to 0/54 for 40 Gbit/s. */
inline constexpr char TEST_MODEL[] = "Test-54";
inline constexpr char TEST_SERIAL[] = "T0042";
inline constexpr char TEST_MAC[] = "02:00:5E:00:00:42";
inline constexpr char TEST_DESCRIPTION[] = "A switch <for> tests & more";
inline constexpr char TEST_OS_VERSION[] = "9.8.7";
inline constexpr char TEST_STORAGE[] = "test flash";

/* Starts the switch in this process (once; there is one switch per process) with its files in `state_dir`,
 * where the session status file is as well. The handle is that of the one registration. Aborts when it does
 * not start. */
openapiClientHandle_t *start_platform(const std::string &state_dir);

/* --- Lab control ------------------------------------------------------------------------------------------
 */

/* Carries out a command of lab control; reports a failure when it is refused. Returns what it printed before
 * "ok". */
std::string lab(const std::string &line);
/* Makes these lines of the configuration language the switch's whole configuration. */
void configure(const std::string &lines);
/* The next `count` calls of a platform function, after `skip` that are carried out, answer `code`. */
void fault(const std::string &function, open_error_t code, unsigned count = 1, unsigned skip = 0);
void hold_changes();
void release_changes();
/* Waits until the data plane has taken every change. */
void wait_applied();
void lower_limit(const std::string &name, uint32_t value);

/* --- The log ----------------------------------------------------------------------------------------------
 */

/* Lines of the switch's log, each without its time: "WARNING rest_common.c:129 text". */
std::vector<std::string> log_lines();

/* --- Fixture ----------------------------------------------------------------------------------------------
 */

class PlatformTest : public testing::Test {
protected:
  PlatformTest();
  /* Faults that were ordered and never came due mean that a test has not tested what it says. */
  ~PlatformTest() override;

  Answers call(rest_handler_t handler, const std::string &method, const std::string &uri,
               const std::string &query = "") const {
    return call_handler(handler, handle, method, uri, query);
  }
  /* One request in one format, for what cannot be done twice. */
  std::string call_xml(rest_handler_t handler, const std::string &method, const std::string &uri,
                       const std::string &query = "") const;

  openapiClientHandle_t *handle;
};

#endif
