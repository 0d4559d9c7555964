/* Finding the operation of a request: a module's routes are a table, tried in order by one matcher. */
#ifndef KESTREL_ENGINE_REST_ROUTE_H
#define KESTREL_ENGINE_REST_ROUTE_H

#include "engine/rest_common.h"

#include <initializer_list>
#include <span>

typedef int (*rest_operation_t)(openapiClientHandle_t *client_handle, mg_connection *conn);

enum {
  ROUTE_EXACT = -1,  /* the URI is the pattern's text before its "%": nothing may follow */
  ROUTE_INSIDE = -2, /* the URI is that text or stops inside it: the scan meets the end of the input */
};

/* One route. `pattern` is a scan pattern in the sense of sscanf(3) that ends with "%s", which catches
 * whatever should not be there; the route matches when exactly `count` fields are converted. */
struct rest_route {
  request_method_t method;
  const char *pattern;
  int count;           /* fields that must be converted, ROUTE_EXACT or ROUTE_INSIDE */
  const char *keyword; /* what the last of these fields must be, or null: a set like %4[name] limits the
                          letters only */
  rest_operation_t operation;
};

/* The first route that the method and URI match; null when there is none. */
const rest_route *find_route(std::span<const rest_route> routes, request_method_t method, const char *uri);

/* What a module's handler does: calls the operation of the first matching route and returns what it returns,
 * or answers 902 and returns 0. */
int handle_by_routes(std::span<const rest_route> routes, openapiClientHandle_t *client_handle,
                     mg_connection *conn);

/* Scans a URI with a pattern of at most 8 fields, each bounded to REQUEST_URI_SIZE - 1 characters by the
 * length of the URI. Returns what sscanf(3) returns, 0 for a URI of REQUEST_URI_SIZE characters or more. */
enum { MAX_URI_FIELDS = 8 };
typedef char uri_fields_t[MAX_URI_FIELDS][REQUEST_URI_SIZE];
int scan_uri(const char *uri, const char *pattern, uri_fields_t fields);

/* Takes the numbers out of the URI by a pattern whose fields are all numbers ("/vlans/%[0-9]"). False when
 * the URI does not hold them all. Numbers beyond 2147483647 are 2147483647. */
bool uri_numbers(const mg_connection *conn, const char *pattern, std::initializer_list<uint32_t *> numbers);
/* The same, and when the URI does not hold them the request is answered (902). */
bool uri_numbers_or_reply(mg_connection *conn, const char *pattern,
                          std::initializer_list<uint32_t *> numbers);

#endif
