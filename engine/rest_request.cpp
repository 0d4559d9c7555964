#include "engine/rest_request.h"

#include <stdlib.h>
#include <string.h>

request_variable read_variable(const mg_connection *conn, const char *name) {
  request_variable variable = {};
  variable.length = mg_get_var(conn, name, variable.text, sizeof variable.text);
  return variable;
}

bool variable_or_reply(mg_connection *conn, const char *name, request_variable *variable) {
  *variable = read_variable(conn, name);
  if (variable->length > 0) return true;
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

bool text_or_reply(mg_connection *conn, const char *name, std::span<char> text) {
  if (mg_get_var(conn, name, text.data(), text.size()) > 0) return true;
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

bool number_or_reply(mg_connection *conn, const char *name, int32_t *number) {
  request_variable variable;
  if (!variable_or_reply(conn, name, &variable)) return false;
  *number = text_to_int(variable.text);
  return true;
}

bool number_or_reply(mg_connection *conn, const char *name, uint32_t *number) {
  int32_t value = 0;
  if (!number_or_reply(conn, name, &value)) return false;
  *number = static_cast<uint32_t>(value);
  return true;
}

open_buffdesc describe_text(const char *text) {
  return {static_cast<uint32_t>(strlen(text) + 1), const_cast<char *>(text)};
}

open_buffdesc describe_characters(const char *text) {
  return {static_cast<uint32_t>(strlen(text)), const_cast<char *>(text)};
}

platform_text::~platform_text() {
  free(text_);
}

open_error_t platform_text::read(openapiClientHandle_t *client_handle, text_size_getter_t size_of,
                                 text_getter_t text_of, uint32_t id) {
  uint32_t size = 0;
  open_error_t rc = size_of(client_handle, &size);
  if (rc != OPEN_E_NONE) return rc;
  /* One byte more than the platform may fill, so that its text always ends. */
  text_ = static_cast<char *>(calloc(size_t{size} + 1, 1));
  if (text_ == nullptr) return OPEN_E_INTERNAL;
  open_buffdesc desc = {size, text_};
  return text_of(client_handle, id, &desc);
}
