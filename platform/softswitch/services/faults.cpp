/* Faults on order; see faults.h. */
#include "platform/softswitch/services/faults.h"

#include <atomic>
#include <charconv>
#include <dlfcn.h>
#include <map>
#include <mutex>

namespace softswitch {

struct fault {
  open_error_t code;
  unsigned count; /* calls still to fail */
  unsigned skip;  /* calls still to be carried out before */
};

static const struct {
  open_error_t code;
  const char *name;
} code_names[] = {
    {OPEN_E_NONE, "OPEN_E_NONE"},           {OPEN_E_RPC, "OPEN_E_RPC"},
    {OPEN_E_INTERNAL, "OPEN_E_INTERNAL"},   {OPEN_E_PARAM, "OPEN_E_PARAM"},
    {OPEN_E_FULL, "OPEN_E_FULL"},           {OPEN_E_EXISTS, "OPEN_E_EXISTS"},
    {OPEN_E_TIMEOUT, "OPEN_E_TIMEOUT"},     {OPEN_E_FAIL, "OPEN_E_FAIL"},
    {OPEN_E_DISABLED, "OPEN_E_DISABLED"},   {OPEN_E_UNAVAIL, "OPEN_E_UNAVAIL"},
    {OPEN_E_NOT_FOUND, "OPEN_E_NOT_FOUND"}, {OPEN_E_EMPTY, "OPEN_E_EMPTY"},
    {OPEN_E_ERROR, "OPEN_E_ERROR"},
};

/* What the enumeration can hold in C++. */
static constexpr int code_min = -32;
static constexpr int code_max = 31;

static std::mutex lock;
static std::map<std::string, fault, std::less<>> faults;
/* Whether there is any order: all that a call looks at while there is none. */
static std::atomic<bool> any_ordered{false};

bool fault_code_from_text(std::string_view text, open_error_t *code) {
  for (const auto &known : code_names) {
    if (text != known.name) continue;
    *code = known.code;
    return true;
  }
  int number;
  auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size()) return false;
  if (number < code_min || number > code_max) return false;
  *code = static_cast<open_error_t>(number);
  return true;
}

static std::string text_of_code(open_error_t code) {
  for (const auto &known : code_names) {
    if (code == known.code) return known.name;
  }
  return std::to_string(static_cast<int>(code));
}

/* Looks the function up in the file that this code is part of, the platform library, and then in the program,
 * which may have the switch linked in. */
static bool function_exists(const std::string &function) {
  if (!function.starts_with("openapi") && !function.starts_with("rpcclt_openapi")) return false;
  Dl_info self;
  if (dladdr(&any_ordered, &self) != 0) {
    void *library = dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    bool found = library && dlsym(library, function.c_str());
    if (library) dlclose(library);
    if (found) return true;
  }
  return dlsym(RTLD_DEFAULT, function.c_str()) != nullptr;
}

bool fault_order(std::string_view function, open_error_t code, unsigned count, unsigned skip) {
  std::string name(function);
  if (!function_exists(name)) return false;
  std::lock_guard<std::mutex> hold(lock);
  if (count > 0)
    faults.insert_or_assign(name, fault{code, count, skip});
  else
    faults.erase(name);
  any_ordered.store(!faults.empty(), std::memory_order_relaxed);
  return true;
}

void fault_clear_all() {
  std::lock_guard<std::mutex> hold(lock);
  faults.clear();
  any_ordered.store(false, std::memory_order_relaxed);
}

std::string fault_list() {
  std::lock_guard<std::mutex> hold(lock);
  std::string list;
  for (const auto &[function, ordered] : faults)
    list += function + " " + text_of_code(ordered.code) + " " + std::to_string(ordered.count) + " " +
            std::to_string(ordered.skip) + "\n";
  return list;
}

/* Counts a call against its order, if it has one. */
static bool count_call(const char *function, open_error_t *code) {
  std::lock_guard<std::mutex> hold(lock);
  auto found = faults.find(std::string_view(function));
  if (found == faults.end()) return false;
  fault &ordered = found->second;
  if (ordered.skip > 0) {
    ordered.skip--;
    return false;
  }
  *code = ordered.code;
  if (--ordered.count > 0) return true;
  faults.erase(found);
  any_ordered.store(!faults.empty(), std::memory_order_relaxed);
  return true;
}

bool fault_due(const char *function, open_error_t *code) {
  return any_ordered.load(std::memory_order_relaxed) && count_call(function, code);
}

} // namespace softswitch
