/* Recorded calls: see recorded_calls.h. */
#include "tests/unit/modules/recorded_calls.h"

#include <arpa/inet.h>
#include <map>
#include <string.h>

static std::map<std::string, std::string> recorded;
static std::vector<std::string> recorded_in_order;

std::string recorded_arguments(const std::string &function) {
  auto call = recorded.find(function);
  return call == recorded.end() ? "" : call->second;
}

const std::vector<std::string> &recorded_calls() {
  return recorded_in_order;
}

void forget_calls() {
  recorded.clear();
  recorded_in_order.clear();
}

static unsigned idle_guards = 0;

changes_not_carried_out::changes_not_carried_out() {
  idle_guards++;
}

changes_not_carried_out::~changes_not_carried_out() {
  idle_guards--;
}

bool changes_are_carried_out() {
  return idle_guards == 0;
}

void record_call(const char *function, const std::string &arguments) {
  recorded[function] = arguments;
  recorded_in_order.push_back(arguments.empty() ? function : function + (" " + arguments));
}

std::string written(uint32_t number) {
  return std::to_string(number);
}

std::string written(int32_t number) {
  return std::to_string(number);
}

std::string written(const open_buffdesc *text) {
  const char *characters = static_cast<const char *>(text->pstart);
  return std::to_string(text->size) + ":" + std::string(characters, strnlen(characters, text->size));
}

std::string written(const open_inet_addr_t *address) {
  char text[INET6_ADDRSTRLEN] = "";
  in_addr ipv4 = {htonl(address->addr.ipv4)};
  if (address->family == OPEN_AF_INET) inet_ntop(AF_INET, &ipv4, text, sizeof text);
  if (address->family == OPEN_AF_INET6) inet_ntop(AF_INET6, &address->addr.ipv6, text, sizeof text);
  return std::to_string(address->family) + ":" + text;
}
