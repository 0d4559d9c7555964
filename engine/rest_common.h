/* What every module includes: the request variables common to all requests, the response writer and the table
 * of result codes. */
#ifndef KESTREL_ENGINE_REST_COMMON_H
#define KESTREL_ENGINE_REST_COMMON_H

#include "engine/rest_tree_obj.h"
#include "engine/rest_util.h"
#include "platform/api/openapi_common.h"
#include "server/tidewell.h"

#include <stdint.h>

typedef enum {
  REQUEST_METHOD_GET = 0,
  REQUEST_METHOD_POST = 1,
  REQUEST_METHOD_PUT = 2,
  REQUEST_METHOD_DELETE = 3,
  REQUEST_METHOD_OTHER = 4,
} request_method_t;

typedef enum { RETURN_FORMAT_XML = 0, RETURN_FORMAT_JSON = 1, RETURN_FORMAT_HTML = 2 } return_format_t;

/* Result codes that the engine itself gives. 1 to 12 are refusals in a module's own words. */
enum {
  RESULT_SUCCESS = 0,
  RESULT_OPERATION_FAILED = 96,
  RESULT_INTERNAL_FAULT = 97,
  RESULT_ALREADY_SET = 98,
  RESULT_PLATFORM_REFUSED = 99,
  RESULT_SESSION_ENDED = 900,
  RESULT_UNKNOWN_MODULE = 901,
  RESULT_BAD_REQUEST = 902,
  RESULT_NO_HELP_DOCUMENT = 903,
  RESULT_NO_SESSION_KEY = 905,
  RESULT_GENERAL_ERROR = 909,
};

enum {
  SESSION_KEY_SIZE = 33,    /* 32 hexadecimal digits and the terminator */
  REQUEST_VALUE_SIZE = 256, /* buffer of an ordinary request variable */
  REQUEST_URI_SIZE = 256,   /* a URI has at most 255 characters, so no part of it outgrows this */
};

/* More than any switch has of whatever an answer lists. A walk over the platform that comes this far is one
 * that never ends; it is given up before it fills the memory. */
enum { MAX_LIST_ENTRIES = 16384 };

/* --- Request variables of all requests ----------------------------------------------------------------- */

/* The method: the variable "method" overrides the HTTP method. Both count by their beginning, in any case
 * ("getAll" is GET). */
request_method_t parse_request_method(mg_connection *conn);
/* The variable "format": JSON when it begins with "json" (any case), else XML. */
return_format_t parse_return_format(mg_connection *conn);
/* The variable "sessionkey" into a buffer of SESSION_KEY_SIZE bytes; empty when absent. RC_FALSE for a null
 * buffer. */
RC_t parse_session_key(mg_connection *conn, char *sessionKey);
/* The first segment of a URI ("vlans" of "/vlans/10/name") into a buffer of REQUEST_URI_SIZE bytes; empty
 * when there is none or it would not fit. */
void get_module_name(const char *uri, char *module_name);

/* --- Responses ----------------------------------------------------------------------------------------- */

/* Answers the request: wraps the tree in the envelope `result`, prints it as the request's format asks and,
 * for POST, PUT and DELETE, writes the audit line. Takes ownership of the tree, which may be null (no
 * rlt_data). */
void send_response(mg_connection *conn, uint16_t result_code, const char *result_mesg, node_t *dataN1_ptr);
/* The engine's standard error answers. They free the tree; its data is never sent. */
void send_exception_error(mg_connection *conn, node_t *dataN1_ptr);     /* 909 */
void send_bad_request(mg_connection *conn, node_t *dataN1_ptr);         /* 902 */
void send_file_help_doc_error(mg_connection *conn, node_t *dataN1_ptr); /* 903 */
/* A platform failure: 96 to 99 by the platform's result. */
void send_open_error_response(mg_connection *conn, open_error_t open_rlt, node_t *dataN1_ptr);

/* The same for operations, which end with one of these and return what it returns: 1 after success, 0 after a
 * failure. The message is formatted, at most 1023 characters. */
int succeed(mg_connection *conn, node_t *tree, const char *format, ...) __attribute__((format(printf, 3, 4)));
int refuse(mg_connection *conn, uint16_t result_code, const char *format, ...)
    __attribute__((format(printf, 3, 4)));
/* A refusal that sends data along. */
int refuse_with_tree(mg_connection *conn, uint16_t result_code, const char *message, node_t *tree);
int fail(mg_connection *conn, open_error_t open_rlt, node_t *tree);
/* For operations that end with a platform call: succeeds with the message and the tree, or fails. */
int answer(mg_connection *conn, open_error_t open_rlt, node_t *tree, const char *message);

/* Texts of platform values. RC_FALSE (with an empty text) for an unknown value, RC_FALSE for a null buffer.
 */
RC_t get_open_error_string_by_eum(open_error_t errorEnum, char *out_errorStr);    /* up to 20 bytes */
RC_t get_control_string_by_eum(OPEN_CONTROL_t controlEnum, char *out_controlStr); /* up to 8 bytes */

/* An int leaf whose key and tag name are the same word. */
node_t *append_tree_number(node_t *n1_ptr, const char *name, uint32_t value);
/* A string leaf with the word that a table has for a platform value, empty when it has none. */
node_t *append_tree_word(node_t *n1_ptr, const char *name, std::span<const enum_text> words, uint32_t value);
/* The same for OPEN_CONTROL_t: "enable" or "disable". */
node_t *append_tree_control(node_t *n1_ptr, const char *name, uint32_t control);

/* Copies a query string with the value of its variable "password" masked; empty when it has none or does not
 * fit into dst_len - 1 characters. The masked text may take up to 10 characters more than `data`: dst_len
 * bounds it. */
void replace_password(const char *data, size_t data_len, char *dst, size_t dst_len);

#endif
