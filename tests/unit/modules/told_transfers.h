/* Transfers and scripts as a test tells them. These programs bring platform functions of those families of
 * their own (told_transfers.cpp), which record their arguments (recorded_calls.h) and go on to the library's,
 * unless a test tells what they answer. */
#ifndef KESTREL_TESTS_MODULES_TOLD_TRANSFERS_H
#define KESTREL_TESTS_MODULES_TOLD_TRANSFERS_H

#include "platform/api/openapi_transfer.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/* While it lives, the functions answer what it says: success and these values, unless a function is told to
 * fail. Nothing is transferred, applied or deleted. Calls are recorded without the beginning that their names
 * share: "FileDownload 1024:http://a/b 7:active". */
struct told_transfers {
  told_transfers();
  ~told_transfers();
  told_transfers(const told_transfers &) = delete;
  told_transfers &operator=(const told_transfers &) = delete;

  /* From now on a function fails, after `skip` calls that succeed. What it has put out then means nothing:
   * numbers are `left_behind`, texts words that no answer may hold. */
  void fail(const std::string &function, open_error_t rc, unsigned skip = 0);
  /* No function fails any more. */
  void succeed() { failures.clear(); }

  std::string status = "A sentence on the transfer."; /* longer than its buffer: without a terminator */
  uint32_t percent = 0;
  unsigned times_in_progress = 0; /* so often a transfer is in progress when that is asked */
  OPEN_TRANSFER_CODE_t result = OPEN_TRANSFER_DONE;
  OPEN_BOOL_t unsaved = OPEN_FALSE;
  std::vector<std::string> scripts; /* one of 97 characters or more is without a terminator */
  uint32_t scripts_more = 0;        /* so many more are counted than there are */
  uint32_t left_behind = 1;
  std::function<void()> at_each_call; /* called at the start of each function, when it is set */

  /* --- For the functions ------------------------------------------------------------------------------ */

  struct failure {
    open_error_t rc;
    unsigned skip;
  };
  std::map<std::string, failure> failures;
};

#endif
