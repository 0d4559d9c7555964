/* What operations need to take a request apart: its variables and buffers for the platform's texts. (Numbers
 * in the URI: engine/rest_route.h.) */
#ifndef KESTREL_ENGINE_REST_REQUEST_H
#define KESTREL_ENGINE_REST_REQUEST_H

#include "engine/rest_common.h"

#include <span>

/* One request variable. */
struct request_variable {
  char text[REQUEST_VALUE_SIZE]; /* decoded; what fits when it is too long, empty when absent */
  int length;                    /* as mg_get_var() returns it: -1 absent, -2 longer than 255 characters */
};

request_variable read_variable(const mg_connection *conn, const char *name);

/* Reads a variable that must be there with a value. When it is missing, empty or longer than 255 characters
 * the request is answered (OPEN_E_PARAM) and the result is false. */
bool variable_or_reply(mg_connection *conn, const char *name, request_variable *variable);
/* The same for a buffer of another size: what does not fit counts as missing. */
bool text_or_reply(mg_connection *conn, const char *name, std::span<char> text);
/* The same for a number as text_to_int() reads it. */
bool number_or_reply(mg_connection *conn, const char *name, int32_t *number);
/* The same as the platform takes numbers. A negative one comes out above 2147483647, for the platform to
 * refuse. */
bool number_or_reply(mg_connection *conn, const char *name, uint32_t *number);

/* Describe a text for the platform, its terminator counted or not: each platform call says which. The
 * platform only reads it. */
open_buffdesc describe_text(const char *text);
open_buffdesc describe_characters(const char *text);

/* Calls of the platform that say how many bytes a text needs, and that read the text of an object. */
typedef open_error_t (*text_size_getter_t)(openapiClientHandle_t *client_handle, uint32_t *size);
typedef open_error_t (*text_getter_t)(openapiClientHandle_t *client_handle, uint32_t id, open_buffdesc *text);

/* A text whose size the platform tells, in a zero-filled heap buffer that is freed at the end of its scope.
 */
class platform_text {
public:
  platform_text() = default;
  ~platform_text();
  platform_text(const platform_text &) = delete;
  platform_text &operator=(const platform_text &) = delete;

  /* Once: asks for the size, then for the text. The failure of either call, OPEN_E_INTERNAL when there is no
   * memory. */
  open_error_t read(openapiClientHandle_t *client_handle, text_size_getter_t size_of, text_getter_t text_of,
                    uint32_t id);
  const char *text() const { return text_; } /* after read() has succeeded */

private:
  char *text_ = nullptr;
};

/* A zero-filled buffer of 256 bytes for a text, on the stack. The byte behind them is not the platform's, so
 * that its text always ends. */
struct platform_text_256 {
  static constexpr uint32_t SIZE = 256;
  char text[SIZE + 1] = {};
  open_buffdesc desc = {SIZE, text};
};

#endif
