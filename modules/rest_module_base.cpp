/* The switch and the API themselves. */
#include "modules/rest_module_base.h"

#include "engine/rest_request.h"
#include "engine/rest_route.h"
#include "platform/api/openapi_if.h"
#include "platform/api/openapi_system.h"

static const char RESTFUL_API_VERSION[] = "0.0.00.11";

/* --- Operations ---------------------------------------------------------------------------------------- */

struct base_info {
  platform_text_256 os_version;
  platform_text_256 storage;
  open_revision_data_t revision = {};
  uint32_t cpu_interface = 0;
  uint32_t interface_count = 0; /* asked for as a check of the platform only */
  uint32_t equal_cost_routes = 0;
  uint32_t ready = 0;
};

static open_error_t read_info(openapiClientHandle_t *client_handle, base_info *info) {
  open_error_t rc = rpcclt_openapiNetworkOSVersionGet(client_handle, &info->os_version.desc);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSwStorageGet(client_handle, &info->storage.desc);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiApiVersionGet(client_handle, &info->revision);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiCpuIntfGet(client_handle, &info->cpu_interface);
  if (rc == OPEN_E_NONE) rc = openapiMaxInterfaceCountGet(client_handle, &info->interface_count);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiOspfEqualCostRoutesMax(client_handle, &info->equal_cost_routes);
  if (rc == OPEN_E_NONE) rc = openapiSystemReadyStateGet(client_handle, &info->ready);
  return rc;
}

static void append_revision(node_t *infomation, const open_revision_data_t &revision) {
  node_t *version = append_branch(infomation, "OPEN_API_version");
  append_tree_int(version, "build_num", "build_num", revision.build_num);
  append_tree_int(version, "maint_level", "maint_level", revision.maint_level);
  append_tree_int(version, "release", "release", revision.release);
  append_tree_int(version, "version", "version", revision.version);
}

int api_base_get_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  base_info info;
  open_error_t rc = read_info(client_handle, &info);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *infomation = append_branch(tree, "infomation");
  append_tree_string(infomation, "ORVA_version", "ORVA_version", info.os_version.text);
  append_tree_string(infomation, "software_storage", "software_storage", info.storage.text);
  append_tree_string(infomation, "RESTful_API_version", "RESTful_API_version", RESTFUL_API_VERSION);
  append_revision(infomation, info.revision);
  append_tree_int(infomation, "cpu_interface", "cpu_interface", static_cast<int>(info.cpu_interface));
  append_tree_int(infomation, "max_equal_cost_routes", "max_equal_cost_routes",
                  static_cast<int>(info.equal_cost_routes));
  append_tree_string(infomation, "system_is_ready", "system_is_ready", info.ready == 1 ? "Yes" : "No");
  return succeed(conn, tree, "Get data successfully.");
}

int api_base_idname_get_info(openapiClientHandle_t *client_handle, mg_connection *conn) {
  platform_text_256 serial, mac, model, description;
  open_error_t rc = rpcclt_openapiSwDevInfoSerialNumGet(client_handle, &serial.desc);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiBurnedInMacAddrGet(client_handle, &mac.desc);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiMachineModelNameGet(client_handle, &model.desc);
  if (rc == OPEN_E_NONE) rc = rpcclt_openapiSystemDescrGet(client_handle, &description.desc);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);

  node_t *tree = new_tree();
  node_t *idname = append_branch(tree, "idname");
  append_tree_string(idname, "sn", "sn", serial.text);
  append_tree_string(idname, "mac", "mac", mac.text);
  append_tree_int(idname, "blade_idx", "blade_idx", 0); /* a single switch, never one of a chassis */
  append_tree_string(idname, "product_type", "product_type", model.text);
  append_tree_string(idname, "sys_desc", "sys_desc", description.text);
  return succeed(conn, tree, "Get data successfully.");
}

/* --- Routes -------------------------------------------------------------------------------------------- */

static const rest_route routes[] = {
    {REQUEST_METHOD_GET, "/base%s", ROUTE_EXACT, nullptr, api_base_get_info},
    {REQUEST_METHOD_GET, "/base/idname%s", ROUTE_EXACT, nullptr, api_base_idname_get_info},
};

int base_api_handler(openapiClientHandle_t *client_handle, mg_connection *conn) {
  return handle_by_routes(routes, client_handle, conn);
}

std::span<const rest_route> base_api_routes(void) {
  return routes;
}
