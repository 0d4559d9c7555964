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

bool number_or_reply(mg_connection *conn, const char *name, int32_t *number) {
  request_variable variable;
  if (!variable_or_reply(conn, name, &variable)) return false;
  *number = text_to_int(variable.text);
  return true;
}

open_buffdesc describe_text(const char *text) {
  return {static_cast<uint32_t>(strlen(text) + 1), const_cast<char *>(text)};
}

open_buffdesc describe_characters(const char *text) {
  return {static_cast<uint32_t>(strlen(text)), const_cast<char *>(text)};
}

/* One byte more than the platform may fill, so that its text always ends. */
platform_text::platform_text(uint32_t size) : desc_{size, calloc(size_t{size} + 1, 1)} {}

platform_text::~platform_text() {
  free(desc_.pstart);
}
