/* How the operations on access control lists find a list: its type word and name in the request, the list
 * itself at the platform. Refusals are answered here. */
#ifndef KESTREL_MODULES_REST_MODULE_ACL_LOOKUP_H
#define KESTREL_MODULES_REST_MODULE_ACL_LOOKUP_H

#include "engine/rest_route.h"
#include "modules/rest_module_acl.h"

/* The name of a list in the zero-filled buffer that the platform is given. The byte behind it is not the
 * platform's, so that its text always ends. */
struct acl_name {
  static constexpr uint32_t SIZE = OPEN_ACL_NAME_SIZE;
  char text[SIZE + 1] = {};
  open_buffdesc desc = {SIZE, text};
};

/* Takes a name of 1 to 31 characters. OPEN_E_PARAM for any other text. */
open_error_t take_acl_name(const char *text, acl_name *name);

/* Takes type word and name out of a URI by a pattern of which exactly these two fields must be converted;
 * fields[0] is the type word then. OPEN_E_PARAM for another URI, an unknown word, or a name that is too long.
 */
open_error_t take_uri_acl(const mg_connection *conn, const char *pattern, uri_fields_t fields,
                          OPEN_ACL_TYPE_t *type, acl_name *name);

/* Looks a list up. When there is none, or the platform fails, the request is answered, with the tree that has
 * been built so far (which may be null), and the result is false. */
bool acl_or_reply(openapiClientHandle_t *client_handle, mg_connection *conn, OPEN_ACL_TYPE_t type,
                  acl_name *name, node_t *tree, uint32_t *aclId);

#endif
