/* Access control lists: making and deleting lists, deleting rules, binding lists to interfaces and VLANs; and
 * how all operations find a list (rest_module_acl_lookup.h). */
#include "engine/rest_request.h"
#include "modules/rest_module_acl_lookup.h"
#include "modules/rest_module_acl_names.h"

#include <string.h>

/* --- Finding a list ------------------------------------------------------------------------------------- */

open_error_t take_acl_name(const char *text, acl_name *name) {
  size_t length = strlen(text);
  if (length == 0 || length >= name->SIZE) return OPEN_E_PARAM;
  strcpy(name->text, text);
  return OPEN_E_NONE;
}

open_error_t take_uri_acl(const mg_connection *conn, const char *pattern, uri_fields_t fields,
                          OPEN_ACL_TYPE_t *type, acl_name *name) {
  if (scan_uri(conn->uri, pattern, fields) != 2) return OPEN_E_PARAM;
  open_error_t rc = take_acl_name(fields[1], name);
  return rc == OPEN_E_NONE ? get_acl_type_eum_by_string(type, fields[0]) : rc;
}

bool acl_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_ACL_TYPE_t type,
                  acl_name *name, node_t *tree, uint32_t *aclId) {
  open_error_t rc = rpcclt_openapiAclGet(client_handle, type, &name->desc, aclId);
  if (rc == OPEN_E_NONE) return true;
  if (rc == OPEN_E_NOT_FOUND) {
    refuse_with_tree(conn, 1, "There is no ACL configured with the name.", tree);
  } else {
    fail(conn, rc, tree);
  }
  return false;
}

/* --- Request variables ---------------------------------------------------------------------------------- */

/* Takes the variable "name". When it is not there or too long the request is answered. */
static bool name_or_reply(mg_connection *conn, node_t *tree, acl_name *name) {
  request_variable value = read_variable(conn, "name");
  if (value.length > 0 && take_acl_name(value.text, name) == OPEN_E_NONE) return true;
  fail(conn, OPEN_E_PARAM, tree);
  return false;
}

typedef open_error_t (*word_reader_t)(uint32_t *value, const char *word);

static bool word_or_reply(mg_connection *conn, const char *variable, word_reader_t read, uint32_t *value) {
  request_variable word;
  if (!variable_or_reply(conn, variable, &word)) return false;
  if (read(value, word.text) == OPEN_E_NONE) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

/* Takes the number of a rule or binding. */
static bool sequence_or_reply(mg_connection *conn, uint32_t *sequence) {
  request_variable value;
  if (!variable_or_reply(conn, "sequence", &value)) return false;
  if (convert_to_32bit_uint(value.text, sequence) == RC_TRUE) return true;
  fail(conn, OPEN_E_PARAM, nullptr);
  return false;
}

/* Takes the type word of /acl/{type}/name, which `fields` begins with then. When it is none the request is
 * answered. */
static bool type_or_reply(mg_connection *conn, node_t *tree, uri_fields_t fields, OPEN_ACL_TYPE_t *type) {
  if (scan_uri(conn->uri, "/acl/%[^/]/name%s", fields) == 1 &&
      get_acl_type_eum_by_string(type, fields[0]) == OPEN_E_NONE)
    return true;
  fail(conn, OPEN_E_PARAM, tree);
  return false;
}

/* --- Lists ---------------------------------------------------------------------------------------------- */

int api_acl_create_new_acl(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type = 0;
  acl_name name;
  node_t *tree = new_tree();
  if (tree == nullptr) return fail(conn, OPEN_E_INTERNAL, tree);
  if (!type_or_reply(conn, tree, fields, &type)) return 0;
  append_tree_string(tree, "acl_type", "acl_type", fields[0]);
  if (!name_or_reply(conn, tree, &name)) return 0;
  append_tree_string(tree, "acl_name", "acl_name", name.text);

  uint32_t aclId = 0;
  open_error_t rc = rpcclt_openapiAclCreate(client_handle, type, &name.desc, &aclId);
  if (rc == OPEN_E_EXISTS) return refuse_with_tree(conn, 1, "The ACL name already exists.", tree);
  if (rc != OPEN_E_NONE) return fail(conn, rc, tree);
  return succeed(conn, tree, "Create successfully.");
}

int api_acl_delete_acl_by_name(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type = 0;
  acl_name name;
  uint32_t aclId = 0;
  if (!type_or_reply(conn, nullptr, fields, &type) || !name_or_reply(conn, nullptr, &name)) return 0;
  if (!acl_or_reply(client_handle, conn, type, &name, nullptr, &aclId)) return 0;
  open_error_t rc = rpcclt_openapiAclDelete(client_handle, aclId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete successfully.");
}

int api_acl_delete_acl_match_rule(openapiClientHandle_t *client_handle, mg_connection *conn) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type = 0;
  acl_name name;
  uint32_t aclId = 0, sequence = 0;
  open_error_t rc = take_uri_acl(conn, "/acl/%[^/]/name/%[^/]/rule%s", fields, &type, &name);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  if (!acl_or_reply(client_handle, conn, type, &name, nullptr, &aclId)) return 0;
  if (!sequence_or_reply(conn, &sequence)) return 0;
  rc = rpcclt_openapiAclRuleDelete(client_handle, aclId, sequence);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "Delete successfully.");
}

/* --- Bindings ------------------------------------------------------------------------------------------- */

typedef open_error_t (*attacher_t)(openapiClientHandle_t *client_handle, uint32_t number,
                                   OPEN_ACL_DIRECTION_t direction, uint32_t aclId, uint32_t sequence);
typedef open_error_t (*detacher_t)(openapiClientHandle_t *client_handle, uint32_t number,
                                   OPEN_ACL_DIRECTION_t direction, uint32_t aclId);

/* What a list is bound to: interfaces or VLANs. */
struct binding_place {
  const char *pattern;
  attacher_t attach;
  detacher_t detach;
};

/* A list, a place and a direction, as the request names them. */
struct binding_request {
  uint32_t number;
  OPEN_ACL_DIRECTION_t direction;
  uint32_t aclId;
};

static bool binding_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, const char *pattern,
                             binding_request *binding) {
  uri_fields_t fields;
  OPEN_ACL_TYPE_t type = 0;
  acl_name name;
  if (scan_uri(conn->uri, pattern, fields) != 1) {
    fail(conn, OPEN_E_PARAM, nullptr);
    return false;
  }
  binding->number = static_cast<uint32_t>(text_to_int(fields[0]));
  return word_or_reply(conn, "direction", get_acl_direction_eum_by_string, &binding->direction) &&
         word_or_reply(conn, "type", get_acl_type_eum_by_string, &type) &&
         name_or_reply(conn, nullptr, &name) &&
         acl_or_reply(client_handle, conn, type, &name, nullptr, &binding->aclId);
}

static int attach(openapiClientHandle_t *client_handle, mg_connection *conn, attacher_t attach_to,
                  const binding_request &binding) {
  uint32_t sequence = 0;
  if (!sequence_or_reply(conn, &sequence)) return 0;
  open_error_t rc = attach_to(client_handle, binding.number, binding.direction, binding.aclId, sequence);
  if (rc == OPEN_E_NONE) return succeed(conn, nullptr, "The rule attachs successfully.");
  /* On purpose: what is bound already is a success. */
  if (rc == OPEN_E_EXISTS) return succeed(conn, nullptr, "The rule has already attached.");
  return fail(conn, rc, nullptr);
}

static int detach(openapiClientHandle_t *client_handle, mg_connection *conn, detacher_t detach_from,
                  const binding_request &binding) {
  open_error_t rc = detach_from(client_handle, binding.number, binding.direction, binding.aclId);
  if (rc != OPEN_E_NONE) return fail(conn, rc, nullptr);
  return succeed(conn, nullptr, "The ACL detaches successfully.");
}

static int attach_or_detach(openapiClientHandle_t *client_handle, mg_connection *conn,
                            const binding_place &place, int detaches) {
  binding_request binding = {};
  if (!binding_or_reply(client_handle, conn, place.pattern, &binding)) return 0;
  if (detaches != 0) return detach(client_handle, conn, place.detach, binding);
  return attach(client_handle, conn, place.attach, binding);
}

int api_acl_attach_detach_acl_to_specified_interface(openapiClientHandle_t *client_handle,
                                                     mg_connection *conn, int detach) {
  static const binding_place interfaces = {"/acl/if/%[0-9]%s", rpcclt_openapiAclIntfDirAdd,
                                           rpcclt_openapiAclIntfDirDelete};
  return attach_or_detach(client_handle, conn, interfaces, detach);
}

int api_acl_attach_detach_acl_to_specified_vlan(openapiClientHandle_t *client_handle, mg_connection *conn,
                                                int detach) {
  static const binding_place vlans = {"/acl/vlan/%[0-9]%s", rpcclt_openapiAclVlanDirAdd,
                                      rpcclt_openapiAclVlanDirDelete};
  return attach_or_detach(client_handle, conn, vlans, detach);
}
