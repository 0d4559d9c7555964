/* Routing: whether the switch routes, and which of its interfaces are routing interfaces. Ports and LAGs are
 * while their routing is on and they are in no LAG; loopbacks and VLAN routing interfaces always are. Their
 * addresses are addresses.h; VLAN routing interfaces are made and removed by interface.h. */
#ifndef KESTREL_SOFTSWITCH_MODEL_ROUTING_H
#define KESTREL_SOFTSWITCH_MODEL_ROUTING_H

#include "platform/api/openapi_common.h"

#include <cstdint>

namespace softswitch {

struct switch_model;

struct routing_table {
  bool ipv4 = false;
  bool ipv6 = false;
};

/* Returns the switch to factory state, in which it routes neither family. */
void routing_reset(switch_model &model);

/* Whether the switch routes packets of a family, OPEN_AF_INET or OPEN_AF_INET6. */
bool routing_enabled(const switch_model &model, OPEN_AF_t family);
void routing_set_enabled(switch_model &model, OPEN_AF_t family, bool on);

/* Turns the routing of a port, LAG or VLAN routing interface on or off; makes it pending.
 * OPEN_E_PARAM, OPEN_E_NOT_FOUND: as interface_check(). OPEN_E_UNAVAIL: another interface. */
open_error_t interface_set_routing(switch_model &model, uint32_t number, bool on);

/* Whether there is this routing interface. */
bool interface_is_routing(const switch_model &model, uint32_t number);
/* The same as a result: OPEN_E_NONE, or what interface_refusal() says. */
open_error_t interface_is_routing_check(const switch_model &model, uint32_t number);
/* The first routing interface above `after`. OPEN_E_FAIL: there is none. */
open_error_t interface_next_routing(const switch_model &model, uint32_t after, uint32_t *next);

} // namespace softswitch

#endif
