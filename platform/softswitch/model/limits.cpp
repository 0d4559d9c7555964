/* Lowering limits by name; see limits.h. */
#include "platform/softswitch/model/limits.h"

namespace softswitch {

struct limit_name {
  std::string_view name;
  uint32_t limits::*member;
};

static constexpr limit_name limit_names[] = {
    {"vlans", &limits::vlans},
    {"vlan-routing-interfaces", &limits::vlan_routing_interfaces},
    {"lag-members", &limits::lag_members},
    {"static-macs", &limits::static_macs},
    {"acls", &limits::acls},
    {"acl-rules", &limits::acl_rules},
    {"acl-bindings", &limits::acl_bindings},
    {"secondary-addresses", &limits::secondary_addresses},
    {"ipv6-addresses", &limits::ipv6_addresses},
    {"equal-cost-routes", &limits::equal_cost_routes},
    {"bgp-peers", &limits::bgp_peers},
    {"bgp-networks", &limits::bgp_networks},
    {"vxlan-tenants", &limits::vxlan_tenants},
    {"remote-vteps", &limits::remote_vteps},
    {"logging-hosts", &limits::logging_hosts},
    {"tcam-ingress-policies", &limits::tcam_ingress_policies},
    {"tcam-egress-policies", &limits::tcam_egress_policies},
    {"tcam-ingress-slices-256", &limits::tcam_ingress_slices_256},
    {"tcam-ingress-slices-512", &limits::tcam_ingress_slices_512},
    {"tcam-egress-slices-256", &limits::tcam_egress_slices_256},
    {"settle-milliseconds", &limits::settle_milliseconds},
    {"journal-bytes", &limits::journal_bytes},
    {"reload-milliseconds", &limits::reload_milliseconds},
    {"scripts", &limits::scripts},
    {"transfer-image-kib", &limits::transfer_image_kib},
    {"transfer-config-kib", &limits::transfer_config_kib},
    {"transfer-script-kib", &limits::transfer_script_kib},
    {"transfer-archive-kib", &limits::transfer_archive_kib},
    {"transfer-connect-seconds", &limits::transfer_connect_seconds},
    {"transfer-stall-seconds", &limits::transfer_stall_seconds},
    {"transfer-image-seconds", &limits::transfer_image_seconds},
    {"transfer-text-seconds", &limits::transfer_text_seconds},
};

bool limit_override(limits *limits, std::string_view name, uint32_t value) {
  const struct limits built_in;
  for (const limit_name &row : limit_names) {
    if (row.name != name) continue;
    if (value > built_in.*row.member) return false;
    limits->*row.member = value;
    return true;
  }
  return false;
}

} // namespace softswitch
