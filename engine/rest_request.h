/* What operations need to take a request apart: its variables and buffers for the platform's texts. (Numbers
 * in the URI: engine/rest_route.h.) */
#ifndef KESTREL_ENGINE_REST_REQUEST_H
#define KESTREL_ENGINE_REST_REQUEST_H

#include "engine/rest_common.h"

/* One request variable. */
struct request_variable {
  char text[REQUEST_VALUE_SIZE]; /* decoded; what fits when it is too long, empty when absent */
  int length;                    /* as mg_get_var() returns it: -1 absent, -2 longer than 255 characters */
};

request_variable read_variable(const mg_connection *conn, const char *name);

/* Reads a variable that must be there with a value. When it is missing, empty or longer than 255 characters
 * the request is answered (OPEN_E_PARAM) and the result is false. */
bool variable_or_reply(mg_connection *conn, const char *name, request_variable *variable);
/* The same for a number as text_to_int() reads it. */
bool number_or_reply(mg_connection *conn, const char *name, int32_t *number);

/* Describe a text for the platform, its terminator counted or not: each platform call says which. The
 * platform only reads it. */
open_buffdesc describe_text(const char *text);
open_buffdesc describe_characters(const char *text);

/* A zero-filled heap buffer for a text whose size the platform tells, freed at the end of its scope. */
class platform_text {
public:
  explicit platform_text(uint32_t size);
  ~platform_text();
  platform_text(const platform_text &) = delete;
  platform_text &operator=(const platform_text &) = delete;

  bool allocated() const { return desc_.pstart != nullptr; }
  open_buffdesc *desc() { return &desc_; } /* size: the platform's */
  const char *text() const { return static_cast<const char *>(desc_.pstart); }

private:
  open_buffdesc desc_;
};

/* The same for texts of at most 255 characters, on the stack. */
struct platform_text_256 {
  char text[256] = {};
  open_buffdesc desc = {sizeof text, text};
};

#endif
