"""What the API answers about routing, BGP and VXLAN (outcomes, and the data of whole answers as wire.py takes
them), and scenes about them."""

from scenes import UriTest
from wire import Nodes, numbered

NO_VLAN_INTERFACE = (1, "VLAN Routing interface doesn't exist.")
NO_ROUTING_PORT = (1, "Physical routing interface doesn't exist.")
NOT_OBTAINED = (1, "Operation failed. The interface is assigned an IP address by manual configuration, or "
                   "DHCP client has already been disabled.")
OBTAINS_NO_LONGER = (0, "Disable the DHCP client on the interface.")
INVALID = (1, "The value of parameter is invalid.")
NO_MODE = (2, "Vxlan is not enable.")
NO_UNICAST = (2, "VxLAN unicast mode is not enable.")
NO_MULTICAST = (2, "VxLAN multicast mode is not enable.")
INVALID_TENANT = (2, "Invalid tenant ID.")
INVALID_VLAN = (2, "VLAN ID not valid.")


# --- Routing -------------------------------------------------------------------------------------------

def routing_modes(ipv4="disable", ipv6="disable"):
    return {"infomation": {"ipv4_admin_mode": ipv4, "ipv6_admin_mode": ipv6}}


def ipv6_list(*prefixes):
    return {"ipv6_addresses": numbered("prefix_and_prefix_length", prefixes)} if prefixes else {}


def listed_addresses(ipv4=None, ipv6=()):
    """An interface's addresses in a list; ipv4 is (address, mask)."""
    primary = {"ipv4_address": ipv4[0], "subnet_mask": ipv4[1]} if ipv4 else {}
    return {**primary, **ipv6_list(*ipv6)}


def routing_ports(*entries):
    """GET /routing/if: (number, listed_addresses()) each."""
    return {"interfaces": numbered("interface", [{"ifNum": n, **addresses} for n, addresses in entries])}


def vlan_interfaces(*entries, first=226):
    """GET /routing/vlanRtrIf: (number, listed_addresses()) each; `first` has the lowest number."""
    rows = [{"logical_interface_id": n - first + 1, "vlan_routing_interface_num": n, **addresses}
            for n, addresses in entries]
    return {"vlan_routing_interfaces": numbered("vlan_routing_interface", rows)}


def vlan_interface(logical, number, vid, primary=None, secondary=(), ipv6=()):
    """GET /routing/vlanRtrIf/{logical}; addresses are "address/mask" and "prefix/length"."""
    facts = {"logical_interface_id": logical, "vlan_routing_interface_num": number,
             "vlan_routing_interface_name": f"vlan{vid}", "vlan_id": vid}
    if primary is not None:
        facts["primary_ipv4_address"] = primary
    if secondary:
        facts["secondary_ipv4_addresses"] = numbered("secondary_ipv4_address", secondary)
    return {"vlan_routing_interface": {**facts, **ipv6_list(*ipv6)}}


def vlan_interface_done(verb, vid):
    return (0, f"{verb} Vlan Routing Interface with VLAN {vid} successfully.")


def address_variables(kind, address=None, length=None, extra="0"):
    """The variables of a request about an address; what is None is not sent."""
    given = (("addrType", kind), ("addr", address), ("pfxLen", length), ("extArg", extra))
    return tuple(f"{name}={value}" for name, value in given if value is not None)


def address_done(verb, kind, address="", length=0):
    """What giving and taking an address answers; `kind` is "" for a port, "Vlan " for a VLAN's interface."""
    return (0, f"{verb} Routing {kind}Interface IP address (address: {address}, prefix length: {length}) "
               "successfully.")


# --- BGP -----------------------------------------------------------------------------------------------

def signed(number):
    """Numbers above 2147483647 are shown as negative ones."""
    return number - 2**32 if number >= 2**31 else number


def speaker(**differences):
    """GET /bgp in factory state, but for the differences."""
    facts = {"hold_time": 90, "keep_alive_time": 30, "local_AS_number": 0, "local_router_id": "0.0.0.0",
             "local_preference": 100, "log_neighbor_changes": "Disable"}
    return {"infomation": {**facts, **differences}}


def neighbor_words(address, scope=None):
    """How messages call a neighbour; `scope` is None for IPv4."""
    if scope is None:
        return f"BGP IPv4 neighbor (ip address: {address}"
    return f"BGP IPv6 neighbor (ip address: {address}, scope: {scope}"


def neighbor_uri(address, scope=None):
    return f"/bgp/ipv4/neighbor/{address}" if scope is None else f"/bgp/ipv6/neighbor/{address}/scope/{scope}"


def neighbor_set(asn, *who):
    return (0, f"Set {neighbor_words(*who)}, AS number: {signed(asn)}) successfully.")


def neighbor_updated(what, *who):
    return (0, f"Update {what} of {neighbor_words(*who)}) successfully.")


def neighbor(asn, address, active=None, next_hop_self="disable", source="none"):
    """GET of a neighbour; `active` ("Yes" or "No") is told of IPv6 neighbours."""
    activate = {} if active is None else {"activate": active}
    return {"neighbor_info": {"remote_address": address, "remote_as": signed(asn), **activate,
                              "next_hop_self_mode": next_hop_self, "update_source": source}}


def network_done(verb, address, length):
    return (0, f"{verb} BGP originated network (ip address: {address}, prefix length: {length}) "
               "successfully.")


def redistribution_done(verb, family, source):
    return (0, f"{verb} BGP {family} Redistribution for {source} successfully.")


# --- VXLAN ---------------------------------------------------------------------------------------------

MODES = ("disable", "unicast", "multicast")


def tenant(number, vid):
    return {"tenantId": number, "vlan": vid}


def tenants(*entries):
    """GET /vxlan/1/tenant: (tenant id, VLAN id) each."""
    return {"tenants": numbered("tenant", [tenant(*entry) for entry in entries])}


def source_interface(kind="none", number=0):
    return {"sourceInterface": {"type": kind, "id": number}}


def unicast_groups(*addresses):
    return {"unicastGroups": numbered("unicastGroup", [{"address": address} for address in addresses])}


def multicast_groups(default="none", *entries):
    """GET /vxlan/1/multicastGroup: the default group, then (tenant id, group) each."""
    rows = [(str(at), "multicastGroup", {"tenantId": number, "address": group})
            for at, (number, group) in enumerate(entries, 1)]
    return {"multicastGroups": Nodes([("default_multicastGroup", "default_multicastGroup", default), *rows])}


def vxlan_done(what):
    """What "Update udp port" and the like answer."""
    verb, rest = what.split(" ", 1)
    return (0, f"{verb} VxLAN {rest} successfully.")


# --- Scenes --------------------------------------------------------------------------------------------

class FabricTest(UriTest):
    def vlan_interface(self, method, vid, outcome=None):
        """Makes or removes a VLAN's routing interface, unless another outcome is expected."""
        done = vlan_interface_done("Delete" if method == "DELETE" else "Create", vid)
        self.check(method, "/routing/vlanRtrIf", outcome or done, variables=(f"vlanId={vid}",))

    def route_vlans(self, *vids):
        self.create_vlans(*vids)
        for vid in vids:
            self.vlan_interface("POST", vid)

    def config(self, word):
        """The lines of the running configuration that begin with a word, without it."""
        lines = self.daemon.lab("show", "running-config").splitlines()
        return [line.removeprefix(f"{word} ") for line in lines if line.startswith(f"{word} ")]
