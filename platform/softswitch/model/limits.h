/* The numbers of the switch: how its interfaces are numbered, and how much of everything it holds. The rules
 * of model/ take them from here and nowhere else. */
#ifndef KESTREL_SOFTSWITCH_MODEL_LIMITS_H
#define KESTREL_SOFTSWITCH_MODEL_LIMITS_H

#include <cstdint>
#include <string_view>

namespace softswitch {

/* --- The number space of interfaces --------------------------------------------------------------------- */

inline constexpr uint32_t port_first = 1; /* ports 1..54; the profile says how many there are */
inline constexpr uint32_t port_last = 54;
inline constexpr uint32_t cpu_interface = 55;
inline constexpr uint32_t lag_first = 56; /* "3/1" */
inline constexpr uint32_t lag_last = 119; /* "3/64" */
inline constexpr uint32_t loopback_first = 120;
inline constexpr uint32_t loopback_last = 127;
inline constexpr uint32_t vlan_routing_first = 226;
inline constexpr uint32_t vlan_routing_last = 353;
inline constexpr uint32_t interface_last = vlan_routing_last;

/* --- Ranges of values ----------------------------------------------------------------------------------- */

inline constexpr uint32_t vlan_id_min = 1;
inline constexpr uint32_t vlan_id_max = 4094;      /* IEEE 802.1Q: 0 and 4095 are reserved */
inline constexpr uint32_t vlan_name_size = 32 + 1; /* bytes of a buffer for a name, terminator included */
/* The same for an interface's: "loopback0" is the longest, as VLANs end with "vlan4094" and the profile's
 * ports with "0/999". */
inline constexpr uint32_t interface_name_size = sizeof "loopback0";
inline constexpr uint32_t hostname_max = 64;        /* characters */
inline constexpr uint32_t prompt_max = 64;          /* characters */
inline constexpr uint32_t idle_minutes_max = 160;   /* until an idle session is closed */
inline constexpr uint32_t factory_idle_minutes = 5; /* serial console and SSH */
inline constexpr uint32_t ssh_sessions_max = 5;
inline constexpr uint32_t mtu_min = 1518;
inline constexpr uint32_t mtu_max = 12270;
inline constexpr uint32_t description_max = 64;    /* bytes of an interface's description */
inline constexpr uint32_t route_map_name_max = 31; /* bytes */
inline constexpr uint32_t bgp_seconds_max = 65535; /* of hold and keepalive times */
inline constexpr uint32_t bgp_hold_time_min = 3;   /* RFC 4271 section 4.2, if it is not 0 */
inline constexpr uint32_t udp_port_max = 65535;
inline constexpr uint32_t log_severity_max = 7;              /* RFC 5424: debug */
inline constexpr uint32_t console_factory_severity = 4;      /* warning */
inline constexpr uint32_t logging_host_factory_severity = 6; /* informational */
inline constexpr uint32_t syslog_factory_port = 514;         /* RFC 5426 section 3.3 */
inline constexpr uint32_t host_name_max = 253;               /* characters: RFC 1035 section 2.3.4, as text */
inline constexpr uint32_t host_label_max = 63;
/* Bytes of a buffer for a logging host's address, terminator included. More than the longest address needs,
 * so that no address in a request's URI, which has 255 characters at most, is ever cut. */
inline constexpr uint32_t logging_address_size = 256;
inline constexpr uint32_t vxlan_factory_udp_port = 4789;  /* as IANA assigned it */
inline constexpr uint32_t vxlan_tenant_id_max = 0xfffffe; /* from 1; of 24 bits, all ones are not used */
inline constexpr uint32_t vxlan_group_min = 0xe0000100;   /* 224.0.1.0 */
inline constexpr uint32_t vxlan_group_max = 0xefffffff;   /* 239.255.255.255 */

/* --- Limits --------------------------------------------------------------------------------------------- */

/* How much there is room for, and the switch's own times and sizes. Each can be lowered by name while the
 * switch runs (lab control, tests), so that a full table takes two entries instead of thousands. */
struct limits {
  bool operator==(const limits &) const = default;

  uint32_t vlans = 4094;
  uint32_t vlan_routing_interfaces = 128;
  uint32_t lag_members = 32; /* of one LAG */
  uint32_t static_macs = 20; /* locked on one port or LAG */
  uint32_t acls = 100;
  uint32_t acl_rules = 1023;         /* of one list */
  uint32_t acl_bindings = 100;       /* of one interface or VLAN and direction */
  uint32_t secondary_addresses = 31; /* IPv4, of one interface */
  uint32_t ipv6_addresses = 32;      /* of one interface */
  uint32_t equal_cost_routes = 32;   /* to one destination */
  uint32_t bgp_peers = 128;
  uint32_t bgp_networks = 64; /* that BGP originates */
  uint32_t vxlan_tenants = 1024;
  uint32_t remote_vteps = 128;
  uint32_t logging_hosts = 8;
  uint32_t settle_milliseconds = 250;  /* how long a change may be followed by others before it is taken */
  uint32_t journal_bytes = 256 * 1024; /* the journal is compacted when it exceeds this */
  uint32_t reload_milliseconds = 500;  /* from the request of a reload, whose answer goes out meanwhile */

  uint32_t scripts = 100;                   /* that are kept; OPEN_CLI_SCRIPT_FILES_MAX */
  uint32_t transfer_image_kib = 1u << 20;   /* size of a software image that is fetched */
  uint32_t transfer_config_kib = 64 * 1024; /* of a configuration: that of 100 full access lists is 60 MiB */
  uint32_t transfer_script_kib = 64 * 1024;
  uint32_t transfer_archive_kib = 256 * 1024; /* of all files together that an archive is made of */
  uint32_t transfer_connect_seconds = 15;     /* until a server has answered and let the switch in */
  uint32_t transfer_stall_seconds = 30;       /* how long nothing may move */
  uint32_t transfer_image_seconds = 3600;     /* how long fetching an image may take in all */
  /* The same for everything else. It is short, as a request that fetches a script and applies it waits. */
  uint32_t transfer_text_seconds = 300;

  /* Policies of the types OPEN_TCAM_POLICY_OPENFLOW and OPEN_TCAM_POLICY_GEN together, and of type
   * OPEN_TCAM_POLICY_EGRESS. */
  uint32_t tcam_ingress_policies = 512;
  uint32_t tcam_egress_policies = 128;
  /* Slices of the TCAM by stage and size (tcam_usage.h): enough for everything that the other limits allow.
   * Ingress, 256: at worst 1 to 255 OpenFlow policies take a slice and the others, 257 to 511 Gen policies,
   * two rows of two: 1 + 2 * 2 = 5. Ingress, 512: a full list's 1023 rules are one short of two slices, so
   * that 100 full IPv6 lists, two slices wide, take 200 rows: 200 * 2 = 400; a list of another type takes
   * half as much. Egress, 256: 128 policies take a slice and 100 full IPv6 lists 400 rows:
   * 1 + 400 * 2 = 801. */
  uint32_t tcam_ingress_slices_256 = 5;
  uint32_t tcam_ingress_slices_512 = 400;
  uint32_t tcam_egress_slices_256 = 801;
};

/* Lowers a limit. The name is the member's with dashes ("vlans", "settle-milliseconds"). What is beyond the
 * new limit already stays. False, with nothing changed, for an unknown name or a value above the built-in. */
bool limit_override(limits *limits, std::string_view name, uint32_t value);

} // namespace softswitch

#endif
