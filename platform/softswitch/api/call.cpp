/* The frame of the C interface; see call.h. */
#include "platform/softswitch/api/call.h"

#include "platform/softswitch/model/inet_address.h"
#include "platform/softswitch/services/faults.h"

#include <atomic>
#include <stdio.h>
#include <string.h>

namespace softswitch {

static std::atomic<bool> tracing{false};

void trace_calls(bool on) {
  tracing = on;
}

/* --- Checks --------------------------------------------------------------------------------------------- */

/* What a registered handle begins with. */
static constexpr char handle_mark[16] = "kestrel client\n";

void register_handle(openapiClientHandle_t *handle) {
  memset(handle, 0, sizeof *handle);
  memcpy(handle->opaque, handle_mark, sizeof handle_mark);
}

static bool is_registered(const openapiClientHandle_t *handle) {
  return memcmp(handle->opaque, handle_mark, sizeof handle_mark) == 0 && is_running();
}

static bool is_text(call_argument::kind kind) {
  return kind == call_argument::kind::text || kind == call_argument::kind::text_out ||
         kind == call_argument::kind::text_hidden;
}

/* Whether an argument is a null pointer, or a text that points nowhere. */
static bool is_null(const call_argument &argument) {
  if (argument.what == call_argument::kind::number) return false;
  if (!argument.pointer) return true;
  return is_text(argument.what) && !static_cast<const open_buffdesc *>(argument.pointer)->pstart;
}

open_error_t call_check(const char *function, const openapiClientHandle_t *handle,
                        const call_arguments &arguments) {
  if (!handle) return OPEN_E_PARAM;
  for (const call_argument &argument : arguments) {
    if (is_null(argument)) return OPEN_E_PARAM;
  }
  if (!is_registered(handle)) return OPEN_E_RPC;
  open_error_t ordered;
  return fault_due(function, &ordered) ? ordered : OPEN_E_NONE;
}

/* --- Trace ---------------------------------------------------------------------------------------------- */

static bool is_output(call_argument::kind kind) {
  return kind == call_argument::kind::number_out || kind == call_argument::kind::text_out ||
         kind == call_argument::kind::address_out || kind == call_argument::kind::other_out;
}

static std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (char byte : text) {
    bool control = static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
    if (byte == '"' || byte == '\\') result += '\\';
    result += control ? '?' : byte;
  }
  return result + '"';
}

/* An argument as the trace shows it; empty for what it does not show. */
static std::string shown(const call_argument &argument) {
  if (argument.what == call_argument::kind::number) return std::to_string(argument.number);
  if (is_null(argument)) return "null";
  switch (argument.what) {
  case call_argument::kind::number:
    return std::to_string(argument.number);
  case call_argument::kind::number64:
    return std::to_string(*static_cast<const int64_t *>(argument.pointer));
  case call_argument::kind::number_in:
  case call_argument::kind::number_out:
    return std::to_string(*static_cast<const uint32_t *>(argument.pointer));
  case call_argument::kind::text:
  case call_argument::kind::text_out:
    return quoted(text_of(*static_cast<const open_buffdesc *>(argument.pointer)));
  case call_argument::kind::text_hidden:
    return "***";
  case call_argument::kind::address:
  case call_argument::kind::address_out:
    return inet_address_text(*static_cast<const open_inet_addr_t *>(argument.pointer));
  case call_argument::kind::other_in:
    return argument.describe(argument.pointer);
  case call_argument::kind::other_out:
    return "";
  }
  return "";
}

static std::string shown_all(const call_arguments &arguments, bool outputs) {
  std::string list;
  for (const call_argument &argument : arguments) {
    if (is_output(argument.what) != outputs) continue;
    std::string one = shown(argument);
    if (!list.empty() && !one.empty()) list += ", ";
    list += one;
  }
  return list;
}

open_error_t call_trace(const char *function, const call_arguments &arguments, open_error_t result) {
  if (!tracing) return result;
  std::string line = std::string("platform: ") + function + '(' + shown_all(arguments, false) + ") = ";
  line += std::to_string(result);
  std::string outputs = result == OPEN_E_NONE ? shown_all(arguments, true) : "";
  if (!outputs.empty()) line += " -> " + outputs;
  fprintf(stderr, "%s\n", line.c_str());
  return result;
}

/* --- Texts ---------------------------------------------------------------------------------------------- */

std::string_view text_of(const open_buffdesc &text) {
  const char *start = static_cast<const char *>(text.pstart);
  return {start, strnlen(start, text.size)};
}

open_error_t fill_text(open_buffdesc *into, std::string_view text) {
  if (text.size() >= into->size) return OPEN_E_PARAM;
  char *start = static_cast<char *>(into->pstart);
  memcpy(start, text.data(), text.size());
  start[text.size()] = '\0';
  into->size = static_cast<uint32_t>(text.size());
  return OPEN_E_NONE;
}

} // namespace softswitch
