#include "engine/rest_route.h"

#include <stdio.h>
#include <string.h>

int scan_uri(const char *uri, const char *pattern, uri_fields_t fields) {
  if (uri == nullptr || strlen(uri) >= REQUEST_URI_SIZE) return 0;
  return sscanf(uri, pattern, fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], fields[6],
                fields[7]);
}

/* The literal text that a pattern begins with. A URI that does not begin with it cannot convert any field, so
 * most rows of a table are passed over without scanning. */
static size_t literal_length(const char *pattern) {
  return strcspn(pattern, "%");
}

static bool route_matches(const rest_route &route, const char *uri) {
  uri_fields_t fields;
  if (route.count == ROUTE_INSIDE) return scan_uri(uri, route.pattern, fields) == EOF;
  size_t literal = literal_length(route.pattern);
  if (strncmp(uri, route.pattern, literal) != 0) return false;
  if (route.count == ROUTE_EXACT) return uri[literal] == '\0';

  if (scan_uri(uri, route.pattern, fields) != route.count) return false;
  return route.keyword == nullptr || strcmp(fields[route.count - 1], route.keyword) == 0;
}

const rest_route *find_route(std::span<const rest_route> routes, request_method_t method, const char *uri) {
  if (uri == nullptr) return nullptr;
  for (const rest_route &route : routes) {
    if (route.method == method && route_matches(route, uri)) return &route;
  }
  return nullptr;
}

int handle_by_routes(std::span<const rest_route> routes, openapiClientHandle_t *client_handle,
                     mg_connection *conn) {
  const rest_route *route = find_route(routes, parse_request_method(conn), conn->uri);
  if (route != nullptr) return route->operation(client_handle, conn);
  send_bad_request(conn, nullptr);
  return 0;
}

bool uri_numbers(const mg_connection *conn, const char *pattern, std::initializer_list<uint32_t *> numbers) {
  uri_fields_t fields;
  if (scan_uri(conn->uri, pattern, fields) < static_cast<int>(numbers.size())) return false;
  size_t i = 0;
  for (uint32_t *number : numbers) *number = static_cast<uint32_t>(text_to_int(fields[i++]));
  return true;
}

bool uri_numbers_or_reply(mg_connection *conn, const char *pattern,
                          std::initializer_list<uint32_t *> numbers) {
  if (uri_numbers(conn, pattern, numbers)) return true;
  send_bad_request(conn, nullptr);
  return false;
}
