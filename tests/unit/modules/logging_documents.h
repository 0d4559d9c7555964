/* The documents that the logging module answers with about hosts. */
#ifndef KESTREL_TESTS_MODULES_LOGGING_DOCUMENTS_H
#define KESTREL_TESTS_MODULES_LOGGING_DOCUMENTS_H

#include "tests/support/result_data.h"

inline Answers expected_hosts(const std::vector<std::string> &hosts) {
  std::vector<result_node> entries;
  for (const std::string &host : hosts) {
    entries.push_back(
        entry(static_cast<unsigned>(entries.size()) + 1, "logging_host", {text("address", host)}));
  }
  return expected_data({branch("logging_hosts", entries)});
}

inline Answers expected_host(const std::string &host, int64_t port, const std::string &severity) {
  return expected_data({branch(
      "logging_host", {text("address", host), number("port", port), text("severity_level", severity)})});
}

#endif
