/* Scripted platform calls: see scripted_platform.h. */
#include "tests/unit/modules/management/scripted_call.h"
#include "tests/unit/modules/management/scripted_platform.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string.h>

static std::map<std::string, uint32_t> given_numbers;
static std::map<std::string, std::string> given_texts;
static std::map<std::string, open_error_t> failures;
static std::vector<std::string> calls;
static std::optional<size_t> failing_position;
static open_error_t failing_code;

openapiClientHandle_t *scripted_handle() {
  static openapiClientHandle_t handle;
  return &handle;
}

void begin_script() {
  given_numbers.clear();
  given_texts.clear();
  failures.clear();
  take_calls();
}

void give(const std::string &call, uint32_t number) {
  given_numbers[call] = number;
}

void give(const std::string &call, const std::string &text) {
  given_texts[call] = text;
}

void fail_call(const std::string &call, open_error_t rc) {
  failures[call] = rc;
}

void fail_call_at(size_t position, open_error_t rc) {
  failing_position = position;
  failing_code = rc;
}

std::vector<std::string> take_calls() {
  std::vector<std::string> taken;
  taken.swap(calls);
  failing_position.reset();
  return taken;
}

/* --- Calls ---------------------------------------------------------------------------------------------- */

static std::string without_prefix(const std::string &function) {
  const std::string prefix = "rpcclt_openapi";
  return function.compare(0, prefix.size(), prefix) == 0 ? function.substr(prefix.size()) : function;
}

/* The first that there is; null when there is neither. */
template <typename T>
static const T *find_given(const std::map<std::string, T> &given, const std::string &name,
                           const std::string &other_name) {
  auto found = given.find(name);
  if (found == given.end()) found = given.find(other_name);
  return found == given.end() ? nullptr : &found->second;
}

void scripted_call::begin(openapiClientHandle_t *handle, const char *function, const std::string &arguments) {
  EXPECT_EQ(handle, scripted_handle()) << function;
  function_ = without_prefix(function);
  call_ = arguments.empty() ? function_ : function_ + " " + arguments;
  const open_error_t *failure = find_given(failures, call_, function_);
  rc_ = failure == nullptr ? OPEN_E_NONE : *failure;
  if (failing_position == calls.size()) rc_ = failing_code;
  calls.push_back(call_);
}

std::string scripted_call::name_of_output(const char *name) const {
  return name[0] == '\0' ? call_ : call_ + " " + name;
}

std::string scripted_call::name_of_every_output(const char *name) const {
  return name[0] == '\0' ? function_ : function_ + " " + name;
}

scripted_call &scripted_call::put(uint32_t *number, const char *name) {
  *number = 0xA5A5A5A5;
  if (rc_ != OPEN_E_NONE) return *this;
  const uint32_t *given = find_given(given_numbers, name_of_output(name), name_of_every_output(name));
  if (given == nullptr) {
    ADD_FAILURE() << "nothing given for " << name_of_output(name);
  } else {
    *number = *given;
  }
  return *this;
}

scripted_call &scripted_call::put(int32_t *number, const char *name) {
  uint32_t value = 0;
  put(&value, name);
  *number = static_cast<int32_t>(value);
  return *this;
}

scripted_call &scripted_call::put(open_inet_addr_t *address, const char *name) {
  std::string family = std::string(name) + (name[0] == '\0' ? "family" : " family");
  memset(address, 0xA5, sizeof *address);
  put(&address->addr.ipv4, name);
  if (rc_ != OPEN_E_NONE) return *this;
  const uint32_t *given =
      find_given(given_numbers, name_of_output(family.c_str()), name_of_every_output(family.c_str()));
  address->family = OPEN_AF_INET;
  if (given != nullptr) address->family = *given;
  return *this;
}

scripted_call &scripted_call::put(open_buffdesc *text) {
  uint32_t room = text->size;
  char *characters = static_cast<char *>(text->pstart);
  calls.back() += " [" + std::to_string(room) + "]";
  memset(characters, '#', room);
  if (rc_ != OPEN_E_NONE) return *this;
  const std::string *given = find_given(given_texts, call_, function_);
  if (given == nullptr) {
    ADD_FAILURE() << "nothing given for " << call_;
    return *this;
  }
  size_t length = given->copy(characters, room);
  if (length < room) characters[length] = '\0';
  text->size = static_cast<uint32_t>(given->size());
  return *this;
}

scripted_call &scripted_call::expect_zeroed(const open_buffdesc *text) {
  std::string characters(static_cast<const char *>(text->pstart), text->size);
  EXPECT_EQ(characters, std::string(text->size, '\0')) << call_;
  return *this;
}
