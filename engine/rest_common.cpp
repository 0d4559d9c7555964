#include "engine/rest_common.h"

#include "platform/api/l7proc.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

/* --- Request variables of all requests ----------------------------------------------------------------- */

static bool begins_with(const char *text, const char *word) {
  return text != nullptr && strncasecmp(text, word, strlen(word)) == 0;
}

static request_method_t method_of_text(const char *text) {
  if (begins_with(text, "GET")) return REQUEST_METHOD_GET;
  if (begins_with(text, "POST")) return REQUEST_METHOD_POST;
  if (begins_with(text, "PUT")) return REQUEST_METHOD_PUT;
  if (begins_with(text, "DELETE")) return REQUEST_METHOD_DELETE;
  return REQUEST_METHOD_OTHER;
}

request_method_t parse_request_method(mg_connection *conn) {
  char value[REQUEST_VALUE_SIZE] = {};
  mg_get_var(conn, "method", value, sizeof value);
  request_method_t method = method_of_text(value);
  return method != REQUEST_METHOD_OTHER ? method : method_of_text(conn->request_method);
}

return_format_t parse_return_format(mg_connection *conn) {
  char value[REQUEST_VALUE_SIZE] = {};
  mg_get_var(conn, "format", value, sizeof value);
  return begins_with(value, "json") ? RETURN_FORMAT_JSON : RETURN_FORMAT_XML;
}

RC_t parse_session_key(mg_connection *conn, char *sessionKey) {
  if (sessionKey == nullptr) return RC_FALSE;
  memset(sessionKey, 0, SESSION_KEY_SIZE);
  mg_get_var(conn, "sessionkey", sessionKey, SESSION_KEY_SIZE);
  return RC_TRUE;
}

void get_module_name(const char *uri, char *module_name) {
  size_t length = uri == nullptr || uri[0] != '/' ? 0 : strcspn(uri + 1, "/");
  if (length >= REQUEST_URI_SIZE) length = 0; /* no module has such a name */
  if (length > 0) memcpy(module_name, uri + 1, length);
  module_name[length] = '\0';
}

/* --- Audit --------------------------------------------------------------------------------------------- */

static const char *audited_method_word(request_method_t method) {
  switch (method) {
  case REQUEST_METHOD_POST:
    return "POST";
  case REQUEST_METHOD_PUT:
    return "PUT";
  case REQUEST_METHOD_DELETE:
    return "DELETE";
  case REQUEST_METHOD_GET:
  case REQUEST_METHOD_OTHER:
    return nullptr;
  }
  return nullptr;
}

static bool is_login(mg_connection *conn, request_method_t method) {
  char module_name[REQUEST_URI_SIZE];
  get_module_name(conn->uri, module_name);
  return method == REQUEST_METHOD_POST && strcmp(module_name, "login") == 0;
}

/* The query as the log may show it, in a new block; null when memory is exhausted. What a login sends never
 * reaches the log: the room of 8 bytes given here is less than any query that holds a password needs. */
static char *loggable_query(mg_connection *conn, request_method_t method) {
  const char *query = conn->query_string == nullptr ? "" : conn->query_string;
  if (!is_login(conn, method)) return strdup(query);
  char *masked = static_cast<char *>(calloc(1, 8));
  replace_password(query, strlen(query), masked, 8);
  return masked;
}

static void write_audit_line(mg_connection *conn, uint16_t result_code, const char *result_mesg) {
  request_method_t method = parse_request_method(conn);
  const char *word = audited_method_word(method);
  if (word == nullptr) return;

  char *query = loggable_query(conn, method);
  char line[16384];
  snprintf(line, sizeof line, "RESTful API Engine: User from [%.47s] accesses API [%s %.255s?%s]: %s (%d)",
           conn->remote_ip, word, conn->uri == nullptr ? "" : conn->uri, query == nullptr ? "" : query,
           result_mesg, result_code);
  free(query);
  l7proc_logf(L7PROC_WARNING, 0, "rest_common.c", 129, "%s", line);
}

void replace_password(const char *data, size_t data_len, char *dst, size_t dst_len) {
  static const char NAME[] = "password=";
  if (dst == nullptr || dst_len == 0) return;
  dst[0] = '\0';
  if (data == nullptr || data_len == 0 || data_len >= dst_len) return;

  for (size_t i = 0; i + strlen(NAME) <= data_len; i++) {
    bool at_start = i == 0 || data[i - 1] == '&';
    if (!at_start || strncasecmp(data + i, NAME, strlen(NAME)) != 0) continue;
    size_t value = i + strlen(NAME);
    const void *end = memchr(data + value, '&', data_len - value);
    size_t rest = end == nullptr ? data_len : static_cast<size_t>(static_cast<const char *>(end) - data);
    snprintf(dst, dst_len, "%.*s**********%.*s", static_cast<int>(value), data,
             static_cast<int>(data_len - rest), data + rest);
    return;
  }
}

/* --- Responses ----------------------------------------------------------------------------------------- */

static node_t *wrap_in_envelope(uint16_t result_code, const char *result_mesg, node_t *dataN1_ptr) {
  node_t *envelope = new_tree();
  node_t *result = append_branch(envelope, "result");
  append_tree_int(result, "rlt_code", "rlt_code", result_code);
  append_tree_string(result, "rlt_mesg", "rlt_mesg", result_mesg);
  if (dataN1_ptr == nullptr) return envelope;

  node_t *data = append_tree_subtree(result, "rlt_data", "rlt_data");
  if (data == nullptr) {
    free_tree(dataN1_ptr);
    return envelope;
  }
  set_subtree_node1(data, dataN1_ptr);
  return envelope;
}

void send_response(mg_connection *conn, uint16_t result_code, const char *result_mesg, node_t *dataN1_ptr) {
  if (conn == nullptr) {
    free_tree(dataN1_ptr);
    return;
  }
  node_t *envelope = wrap_in_envelope(result_code, result_mesg, dataN1_ptr);
  char *text = nullptr;
  if (parse_return_format(conn) == RETURN_FORMAT_JSON) {
    mg_send_header(conn, "Content-Type", "application/json; charset=utf-8");
    print_tree_by_json(envelope, &text);
  } else {
    mg_send_header(conn, "Content-Type", "text/xml; charset=utf-8");
    print_tree_by_xml(envelope, &text);
  }
  free_tree(envelope);
  mg_printf_data(conn, "%s\n", text == nullptr ? "" : text);
  free(text);
  write_audit_line(conn, result_code, result_mesg);
}

void send_exception_error(mg_connection *conn, node_t *dataN1_ptr) {
  free_tree(dataN1_ptr);
  send_response(conn, RESULT_GENERAL_ERROR, "General Error", nullptr);
}

void send_bad_request(mg_connection *conn, node_t *dataN1_ptr) {
  free_tree(dataN1_ptr);
  send_response(conn, RESULT_BAD_REQUEST, "Bad Request. Please check your method and URI.", nullptr);
}

void send_file_help_doc_error(mg_connection *conn, node_t *dataN1_ptr) {
  free_tree(dataN1_ptr);
  send_response(conn, RESULT_NO_HELP_DOCUMENT, "Open the file of help documents failed!", nullptr);
}

static const enum_text open_error_results[] = {
    {OPEN_E_ERROR, "OPEN_E_ERROR"},         {OPEN_E_EMPTY, "OPEN_E_EMPTY"},
    {OPEN_E_NOT_FOUND, "OPEN_E_NOT_FOUND"}, {OPEN_E_UNAVAIL, "OPEN_E_UNAVAIL"},
    {OPEN_E_DISABLED, "OPEN_E_DISABLED"},   {OPEN_E_FAIL, "OPEN_E_FAIL"},
    {OPEN_E_TIMEOUT, "OPEN_E_TIMEOUT"},     {OPEN_E_EXISTS, "OPEN_E_EXISTS"},
    {OPEN_E_FULL, "OPEN_E_FULL"},           {OPEN_E_PARAM, "OPEN_E_PARAM"},
    {OPEN_E_INTERNAL, "OPEN_E_INTERNAL"},   {OPEN_E_RPC, "OPEN_E_RPC"},
    {OPEN_E_NONE, "OPEN_E_NONE"},
};

static const enum_text control_words[] = {{OPEN_ENABLE, "enable"}, {OPEN_DISABLE, "disable"}};

static const char OPERATION_FAILED[] = "The operation was failed or some error happened, please send the "
                                       "correct request or check the limitation "
                                       "of feature.";
static const char INTERNAL_FAULT[] = "There is some internal fault happened, please try again.";
static const char ALREADY_SET[] = "The same setting is already set.";
static const char PLATFORM_REFUSED[] =
    "Operation failed. It was possibly caused by non-existent resource id in URI, invalid parameters, or the "
    "operation is not supported on the platform.";

void send_open_error_response(mg_connection *conn, open_error_t open_rlt, node_t *dataN1_ptr) {
  free_tree(dataN1_ptr);
  if (open_rlt == OPEN_E_ERROR || open_rlt == OPEN_E_FAIL) {
    send_response(conn, RESULT_OPERATION_FAILED, OPERATION_FAILED, nullptr);
  } else if (open_rlt == OPEN_E_TIMEOUT || open_rlt == OPEN_E_INTERNAL) {
    send_response(conn, RESULT_INTERNAL_FAULT, INTERNAL_FAULT, nullptr);
  } else if (open_rlt == OPEN_E_EXISTS) {
    send_response(conn, RESULT_ALREADY_SET, ALREADY_SET, nullptr);
  } else {
    send_response(conn, RESULT_PLATFORM_REFUSED, PLATFORM_REFUSED, nullptr);
  }
}

RC_t get_open_error_string_by_eum(open_error_t errorEnum, char *out_errorStr) {
  return copy_text_by_enum(open_error_results, errorEnum, out_errorStr);
}

RC_t get_control_string_by_eum(OPEN_CONTROL_t controlEnum, char *out_controlStr) {
  return copy_text_by_enum(control_words, static_cast<int32_t>(controlEnum), out_controlStr);
}

node_t *append_tree_number(node_t *n1_ptr, const char *name, uint32_t value) {
  return append_tree_int(n1_ptr, name, name, static_cast<int>(value));
}

node_t *append_tree_word(node_t *n1_ptr, const char *name, std::span<const enum_text> words, uint32_t value) {
  return append_tree_string(n1_ptr, name, name, find_text_by_enum(words, static_cast<int32_t>(value)));
}

node_t *append_tree_control(node_t *n1_ptr, const char *name, uint32_t control) {
  return append_tree_word(n1_ptr, name, control_words, control);
}

/* --- How operations end --------------------------------------------------------------------------------- */

static void send_formatted(mg_connection *conn, uint16_t result_code, node_t *tree, const char *format,
                           va_list ap) {
  char message[sizeof(val_data_t)]; /* what the envelope's message holds */
  vsnprintf(message, sizeof message, format, ap);
  send_response(conn, result_code, message, tree);
}

int succeed(mg_connection *conn, node_t *tree, const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  send_formatted(conn, RESULT_SUCCESS, tree, format, ap);
  va_end(ap);
  return 1;
}

int refuse(mg_connection *conn, uint16_t result_code, const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  send_formatted(conn, result_code, nullptr, format, ap);
  va_end(ap);
  return 0;
}

int refuse_with_tree(mg_connection *conn, uint16_t result_code, const char *message, node_t *tree) {
  send_response(conn, result_code, message, tree);
  return 0;
}

int fail(mg_connection *conn, open_error_t open_rlt, node_t *tree) {
  send_open_error_response(conn, open_rlt, tree);
  return 0;
}

int answer(mg_connection *conn, open_error_t open_rlt, node_t *tree, const char *message) {
  return open_rlt == OPEN_E_NONE ? succeed(conn, tree, "%s", message) : fail(conn, open_rlt, tree);
}
