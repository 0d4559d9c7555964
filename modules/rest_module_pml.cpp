/* Port MAC locking. The module keeps no state: every operation asks the platform. MAC addresses pass through
 * as the texts that they are. */
#include "modules/rest_module_pml.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_pml.h"

/* --- Helpers -------------------------------------------------------------------------------------------- */

/* Anything but 1 is off. */
static const char *sticky_text(uint32_t sticky) {
  return sticky == OPEN_ENABLE ? "enable" : "disable";
}

/* The numbers in the URI. When one is missing the request is answered and the result is false. */
static bool numbers_or_reply(mg_connection *conn, const char *pattern,
                             std::initializer_list<uint32_t *> numbers) {
  if (uri_numbers(conn, pattern, numbers)) return true;
  send_open_error_response(conn, OPEN_E_PARAM, nullptr);
  return false;
}

static bool ifNum_or_reply(mg_connection *conn, uint32_t *ifNum) {
  return numbers_or_reply(conn, "/pml/if/%[0-9]", {ifNum});
}

/* --- Operations ----------------------------------------------------------------------------------------- */

int api_pml_delete_static_mac(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0;
  request_variable value;
  if (!numbers_or_reply(conn, "/pml/if/%[0-9]/vlan/%[0-9]", {&ifNum, &vlanId})) return 0;
  if (!variable_or_reply(conn, "value", &value)) return 0;

  open_buffdesc mac = describe_characters(value.text);
  open_error_t rc = rpcclt_openapiPmlIntfStaticEntryDelete(client_handle, ifNum, &mac, vlanId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete interface static mac %s vlan %d successfully.", value.text, vlanId);
}

int api_pml_update_sticky(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0;
  int32_t value = 0;
  if (!ifNum_or_reply(conn, &ifNum) || !number_or_reply(conn, "value", &value)) return 0;

  uint32_t mode = static_cast<uint32_t>(value);
  open_error_t rc = rpcclt_openapiPmlIntfStickyModeSet(client_handle, ifNum, mode);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, new_tree(), "Update interface sticky mode to %s successfully.", sticky_text(mode));
}

int api_pml_get_sticky(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, mode = 0;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  open_error_t rc = rpcclt_openapiPmlIntfStickyModeGet(client_handle, ifNum, &mode);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  append_tree_string(tree, "sticky", "sticky", sticky_text(mode));
  return succeed(conn, tree, "Get interface sticky mode successfully.");
}

int api_pml_get_static_mac(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0, sticky = 0;
  platform_text_256 mac;
  if (!ifNum_or_reply(conn, &ifNum)) return 0;
  open_error_t rc =
      rpcclt_openapiPmlIntfStaticEntryGetFirst(client_handle, ifNum, &mac.desc, &vlanId, &sticky);
  /* On purpose: an interface without entries answers with the platform's failure, not with an empty list. */
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *interface = append_branch(tree, "interface");
  for (uint32_t position = 1; rc == OPEN_E_NONE; position++) {
    if (position > MAX_LIST_ENTRIES) return fail(conn, OPEN_E_INTERNAL, tree);
    node_t *entry = append_entry(interface, position, "mac");
    append_tree_string(entry, "macAddr", "macAddr", mac.text);
    append_tree_int(entry, "vlan", "vlan", static_cast<int>(vlanId));
    append_tree_string(entry, "sticky", "sticky", sticky_text(sticky));
    mac.desc.size = mac.SIZE; /* the platform made it the length of the text */
    rc = rpcclt_openapiPmlIntfStaticEntryGetNext(client_handle, ifNum, &mac.desc, &vlanId, &sticky);
  }
  return succeed(conn, tree, "Get interface static mac successfully.");
}

int api_pml_create_static_mac(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uint32_t ifNum = 0, vlanId = 0, sticky = 0;
  request_variable value;
  if (!numbers_or_reply(conn, "/pml/if/%[0-9]/vlan/%[0-9]/sticky/%[0-1]", {&ifNum, &vlanId, &sticky}))
    return 0;
  if (!variable_or_reply(conn, "value", &value)) return 0;

  open_buffdesc mac = describe_characters(value.text);
  open_error_t rc =
      rpcclt_openapiPmlIntfStaticEntryAdd(client_handle, ifNum, &mac, vlanId, sticky != 0 ? 1 : 0);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Create interface static mac %s vlan %d successfully.", value.text, vlanId);
}

/* --- Routes --------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_DELETE, "/pml/if/%[0-9]/vlan/%[0-9]/%3[mac]%s", 3, "mac", api_pml_delete_static_mac},
    {REQUEST_METHOD_PUT, "/pml/if/%[0-9]/%6[sticky]%s", 2, "sticky", api_pml_update_sticky},
    {REQUEST_METHOD_GET, "/pml/if/%[0-9]/%6[sticky]%s", 2, "sticky", api_pml_get_sticky},
    {REQUEST_METHOD_GET, "/pml/if/%[0-9]/%3[mac]%s", 2, "mac", api_pml_get_static_mac},
    {REQUEST_METHOD_POST, "/pml/if/%[0-9]/vlan/%[0-9]/sticky/%[0-1]/%3[mac]%s", 4, "mac",
     api_pml_create_static_mac},
};

int pml_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> pml_api_routes(void) {
  return routes;
}
