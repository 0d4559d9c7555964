/* What platform functions were called with: see recorded_calls.h. */
#include "tests/unit/modules/recorded_calls.h"

#include <map>

static std::map<std::string, std::string> latest;
static std::vector<std::string> all;

std::string recorded_arguments(const std::string &function) {
  auto call = latest.find(function);
  return call == latest.end() ? "" : call->second;
}

const std::vector<std::string> &recorded_calls() {
  return all;
}

void forget_calls() {
  latest.clear();
  all.clear();
}

void record_call(const std::string &function, const std::string &arguments) {
  latest[function] = arguments;
  all.push_back(arguments.empty() ? function : function + " " + arguments);
}
