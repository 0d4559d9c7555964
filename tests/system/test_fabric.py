"""Routing, BGP and VXLAN over time: a switch set up from end to end, and that all of it is there again after
the daemon was killed."""

import re

import harness
from fabric import (INVALID, NOT_OBTAINED, address_variables, listed_addresses, multicast_groups, neighbor,
                    neighbor_uri, routing_ports, tenants, unicast_groups, vlan_interface, vlan_interfaces)
from scenes import FlowTest
from wire import FAILED, GOT, REFUSED

MASK_24 = "255.255.255.0"


class RouterTest(FlowTest):
    """What the tests change: VLANs 1, 10, 20 and 30, ports 3 and 4, LAG 1, loopback 0."""

    def asked(self):
        """Every URI that says something about the configuration."""
        yield from ("/routing", "/routing/if", "/routing/vlanRtrIf", "/bgp", "/vlans")
        yield from (f"/routing/vlanRtrIf/{logical}" for logical in range(1, 5))
        yield from (f"/if/{number}" for number in (3, 4, 49, 56, 120, *range(226, 230)))
        for line in self.daemon.lab("show", "running-config").splitlines():
            known = re.fullmatch(r"bgp neighbor ([^% ]+)(?:%0/(\d+))? remote-as \d+", line)
            if known is not None:
                yield neighbor_uri(known[1], None if "." in known[1] else known[2] or 0)
        yield from (f"/vxlan/1/{what}" for what in ("mode", "udpPort", "sourceIntf", "tenant", "tenant/5000",
                                                    "unicastGroup", "multicastGroup"))

    def everything(self):
        """All answers, and the running configuration, which alone tells of networks and redistribution."""
        self.daemon.lab("wait")
        answers = {uri: self.logged_in.ask("GET", uri).raw for uri in self.asked()}
        return {**answers, "configuration": self.daemon.lab("show", "running-config")}

    def give(self, where, *given):
        self.ask("POST", f"/routing/{where}/ip", *address_variables(*given))

    def refuse(self, outcome, method, uri, *variables):
        self.assert_answers(self.logged_in.ask(method, uri, *variables), outcome)

    def read(self, uri, data):
        self.assert_answers(self.logged_in.ask("GET", uri), GOT, data)


class Operator(RouterTest):
    """A leaf of a fabric: two VLANs with servers, an uplink, BGP to the spine, VXLAN to the other leaves."""

    ROUTING = """\
vlan 10 routing interface 226
vlan 20 routing interface 227
ip routing
ipv6 routing
interface 0/49 routing
interface loopback0 ip address 10.255.0.1/32
interface vlan10 ip address 10.0.10.1/24
interface vlan20 ip address 10.0.20.1/24
interface 0/49 ip address dhcp
interface vlan10 ip secondary-address 10.0.11.1/24
interface vlan10 ipv6 address 2001:db8:10::1/64
interface vlan20 ipv6 address auto
"""
    BGP = """\
bgp local-as 4200000001
bgp router-id 10.255.0.1
bgp hold-time 9
bgp keepalive-time 3
bgp log-neighbor-changes
bgp network 10.0.10.0/24 route-map servers
bgp neighbor 10.255.0.100 remote-as 65100
bgp neighbor fe80::1%0/49 remote-as 65100
bgp neighbor fe80::1%0/49 activate ipv6
bgp neighbor 10.255.0.100 next-hop-self ipv4
bgp neighbor 10.255.0.100 update-source loopback0
bgp redistribute ipv4 connected route-map own
bgp redistribute ipv6 connected metric 10
"""
    UNICAST = """\
vxlan mode unicast
vxlan source-interface loopback0
vxlan remote-vtep 10.255.0.2
vxlan remote-vtep 10.255.0.3
vxlan tenant 5000 vlan 10
vxlan tenant 5001 vlan 20
"""
    MULTICAST = """\
vxlan mode multicast
vxlan udp-port 8472
vxlan source-interface loopback0
vxlan remote-vtep 10.255.0.2
vxlan remote-vtep 10.255.0.3
vxlan multicast-group 239.1.1.1
vxlan tenant 5000 vlan 10
vxlan tenant 5001 vlan 20
vxlan tenant 5001 multicast-group 239.1.1.2
"""

    def assert_configured(self, *parts):
        self.assertEqual(self.daemon.lab("show", "running-config"), "".join(("vlan 10,20\n", *parts)))

    def set_up_routing(self):
        for vid in (10, 20):
            self.ask("POST", f"/vlans/{vid}")
            self.ask("POST", "/routing/vlanRtrIf", f"vlanId={vid}")
        self.give("vlanRtrIf/1", 0, "10.0.10.1", 24)
        self.give("vlanRtrIf/1", 1, "10.0.11.1", 24)
        self.give("vlanRtrIf/1", 3, "2001:db8:10::1", 64)
        self.give("vlanRtrIf/2", 0, "10.0.20.1", 24)
        self.give("vlanRtrIf/2", 4)
        self.give("if/120", 0, "10.255.0.1", 32)
        self.ask("PUT", "/routing/if/49/adminMode", "value=1")
        self.give("if/49", 2)
        for family in ("ipv4", "ipv6"):
            self.ask("PUT", f"/routing/{family}/adminMode", "value=1")

    def set_up_bgp(self):
        spine, uplink = neighbor_uri("10.255.0.100"), neighbor_uri("fe80::1", 49)
        for setting, value in (("localAS", 4200000001), ("routerId", "10.255.0.1"), ("holdTime", 9),
                               ("keepAliveTime", 3), ("logNeighborChanges", 1)):
            self.ask("PUT", f"/bgp/{setting}", f"value={value}")
        self.ask("POST", "/bgp/originatedNetwork", "addr=10.0.10.0", "pfxLen=24", "routeMap=servers")
        for uri in (spine, uplink):
            self.ask("POST", uri, "asn=65100")
        self.ask("PUT", f"{spine}/updateSource", "type=2", "value=120")
        self.ask("PUT", f"{spine}/nextHopSelfMode", "value=1")
        self.ask("PUT", f"{uplink}/activate", "value=1")
        self.ask("POST", "/bgp/ipv4/redistribution/connected", "routeMap=own")
        self.ask("POST", "/bgp/ipv6/redistribution/connected", "metric=10")

    def set_up_vxlan(self):
        self.ask("PUT", "/vxlan/1/mode", "value=1")
        self.ask("PUT", "/vxlan/1/sourceIntf/loopback", "value=0")
        self.ask("POST", "/vxlan/1/tenant/5000/vlan/10")
        for vtep in (3, 2):
            self.ask("PUT", "/vxlan/1/unicastGroup", f"value=10.255.0.{vtep}")
        self.ask("POST", "/vxlan/1/tenant/5001/vlan/20")

    def switch_to_multicast(self):
        still_running = (2, "Couldn't change vxlan mode if tunnel still running !")
        self.refuse(still_running, "PUT", "/vxlan/1/mode", "value=2")
        for mode in (0, 2):
            self.ask("PUT", "/vxlan/1/mode", f"value={mode}")
        self.ask("PUT", "/vxlan/1/udpPort", "value=8472")
        self.ask("PUT", "/vxlan/1/multicastGroup", "value=239.1.1.1")
        self.ask("PUT", "/vxlan/1/tenant/5001/multicastGroup", "value=239.1.1.2")

    def test_from_end_to_end(self):
        self.set_up_routing()
        self.assert_configured(self.ROUTING)
        self.assert_restarts_keep_everything()
        self.set_up_bgp()
        self.assert_configured(self.ROUTING, self.BGP)
        self.assert_restarts_keep_everything()
        self.set_up_vxlan()
        self.assert_configured(self.ROUTING, self.BGP, self.UNICAST)
        self.read("/vxlan/1/unicastGroup", unicast_groups("10.255.0.2", "10.255.0.3"))
        unicast = self.assert_restarts_keep_everything()
        self.daemon.lab("save")
        self.switch_to_multicast()
        self.assert_configured(self.ROUTING, self.BGP, self.MULTICAST)
        self.read("/vxlan/1/multicastGroup", multicast_groups("239.1.1.1", (5001, "239.1.1.2")))
        self.assert_restarts_keep_everything()
        self.daemon.lab("reload")
        self.assertEqual(self.everything(), unicast)

    def test_what_is_in_use_stays_until_it_is_not(self):
        self.set_up_routing()
        self.set_up_bgp()
        self.set_up_vxlan()
        spine = neighbor_uri("10.255.0.100")
        self.ask("PUT", f"{spine}/updateSource", "type=1", "value=10")
        self.ask("PUT", "/vxlan/1/sourceIntf/vlan", "value=10")
        before = self.everything()
        for _ in range(2):  # the neighbour and VXLAN need it, the neighbour alone
            self.refuse(FAILED, "DELETE", "/routing/vlanRtrIf", "vlanId=10")
            for vid in (10, 20):
                self.refuse(FAILED, "DELETE", f"/vlans/{vid}")
            self.assertEqual(self.everything(), before)
            self.restart()
            self.ask("DELETE", "/vxlan/1/sourceIntf")
            before = self.everything()
        self.ask("PUT", f"{spine}/updateSource", "type=2", "value=0")
        self.ask("DELETE", "/routing/vlanRtrIf", "vlanId=10")
        self.refuse(FAILED, "DELETE", "/vlans/10")  # its tenant
        self.ask("DELETE", "/vxlan/1/tenant/5000/vlan/10")
        self.ask("DELETE", "/vlans/10")
        self.read(spine, neighbor(65100, "10.255.0.100", next_hop_self="enable"))
        self.read("/vxlan/1/tenant", tenants((5001, 20)))
        addresses = listed_addresses(("10.0.20.1", MASK_24))
        self.read("/routing/vlanRtrIf", vlan_interfaces((227, addresses), first=227))


class Leases(RouterTest):
    def test_an_address_comes_and_goes_with_what_is_offered(self):
        self.ask("PUT", "/routing/if/3/adminMode", "value=1")
        self.daemon.lab("lease", "0/3", "192.0.2.7/24")
        self.read("/routing/if", routing_ports((3, {})))  # it asks for none
        self.give("if/3", 2)
        leased = routing_ports((3, listed_addresses(("192.0.2.7", MASK_24))))
        self.read("/routing/if", leased)
        self.daemon.lab("lease", "0/3", "192.0.2.8/24")
        self.read("/routing/if", routing_ports((3, listed_addresses(("192.0.2.8", MASK_24)))))
        self.restart()
        self.read("/routing/if", routing_ports((3, {})))  # asked for again, of a world that is new, too
        self.daemon.lab("lease", "0/3", "192.0.2.7/24")
        self.read("/routing/if", leased)
        self.ask("DELETE", "/routing/if/3/ip", *address_variables(2))
        self.read("/routing/if", routing_ports((3, {})))

    def test_a_given_network_goes_before_an_offered_one(self):
        self.ask("POST", "/vlans/10")
        self.ask("POST", "/routing/vlanRtrIf", "vlanId=10")
        self.give("vlanRtrIf/1", 2)
        self.daemon.lab("lease", "vlan10", "192.0.2.7/24")
        self.read("/routing/vlanRtrIf/1", vlan_interface(1, 226, 10, f"192.0.2.7/{MASK_24}"))
        self.give("if/3", 0, "192.0.2.99", 24)
        self.read("/routing/vlanRtrIf/1", vlan_interface(1, 226, 10))
        self.ask("DELETE", "/routing/if/3/ip", *address_variables(0, "192.0.2.99", 24))
        self.read("/routing/vlanRtrIf/1", vlan_interface(1, 226, 10, f"192.0.2.7/{MASK_24}"))


class Restart(RouterTest):
    """What was acknowledged is there after SIGKILL, byte for byte."""

    ADDRESSES = ("10.0.1.1", "10.0.2.1", "10.0.1.2", "10.0.3.1", "10.0.0.1")
    NEIGHBORS = (neighbor_uri("10.0.0.2"), neighbor_uri("2001:db8::2", 0), neighbor_uri("fe80::2", 3),
                 neighbor_uri("fe80::2", 4))

    def random_routing(self, choose):
        where = choose.choice(("if/3", "if/4", "if/56", "if/120", "vlanRtrIf/1", "vlanRtrIf/2"))
        vid, onoff = f"vlanId={choose.choice((10, 20, 30))}", (f"value={choose.randint(0, 1)}",)
        given = choose.choice((
            (0, choose.choice(self.ADDRESSES), choose.choice((24, 24, 30))),
            (1, choose.choice(self.ADDRESSES), 24), (2,),
            (3, f"2001:db8:{choose.randint(1, 3)}::1", 64), (3, "fe80::1", 64), (4,)))
        return choose.choice((
            ("POST", f"/routing/{where}/ip", address_variables(*given)),
            ("POST", f"/routing/{where}/ip", address_variables(*given, extra=choose.choice("01"))),
            ("DELETE", f"/routing/{where}/ip", address_variables(*given)),
            ("POST", "/routing/vlanRtrIf", (vid,)), ("DELETE", "/routing/vlanRtrIf", (vid,)),
            ("PUT", f"/routing/if/{choose.choice((3, 4, 56, 226))}/adminMode", onoff),
            ("PUT", f"/routing/ipv{choose.choice('46')}/adminMode", onoff),
        ))

    def random_bgp(self, choose):
        uri, number = choose.choice(self.NEIGHBORS), choose.choice((0, 1, 3, 90, 65001, 4294967295))
        network = (f"addr=10.{choose.randint(0, 3)}.0.0", f"pfxLen={choose.choice((16, 17, 0))}")
        source = f"ipv{choose.choice('46')}/redistribution/{choose.choice(('connected', 'rip', 'ospf'))}"
        setting = choose.choice(("holdTime", "keepAliveTime", "localAS", "localPref", "logNeighborChanges"))
        how = ("metric=5", "routeMap=m%20%22x", "matchExt1=1", "matchNssaExt2=1")
        return choose.choice((
            ("PUT", f"/bgp/{setting}", (f"value={number}",)), ("POST", uri, (f"asn={number}",)),
            ("PUT", "/bgp/routerId", (f"value=10.0.0.{choose.randint(1, 3)}",)),
            ("POST", "/bgp/originatedNetwork", (*network, f"routeMap={choose.choice('ab')}")),
            ("DELETE", "/bgp/originatedNetwork", network),
            ("PUT", f"{uri}/nextHopSelfMode", (f"value={choose.randint(0, 1)}",)),
            ("PUT", f"{uri}/activate", (f"value={choose.randint(0, 1)}",)),
            ("PUT", f"{uri}/updateSource", ("type=2", f"value={choose.choice((0, 3, 56, 120, 226))}")),
            ("PUT", f"{uri}/updateSource", ("type=1", f"value={choose.choice((10, 20))}")),
            ("POST", f"/bgp/{source}", choose.sample(how, choose.randint(0, 3))),
            ("DELETE", f"/bgp/{source}", ()),
        ))

    def random_vxlan(self, choose):
        number, vid = choose.choice((1, 5000, 16777214)), choose.choice((1, 10, 20))
        vtep, group = f"value=10.9.0.{choose.randint(1, 4)}", f"value=239.1.1.{choose.randint(1, 4)}"
        method = choose.choice(("PUT", "PUT", "DELETE"))
        return choose.choice((
            ("PUT", "/vxlan/1/mode", (f"value={choose.choice((0, 1, 2))}",)),
            ("POST", f"/vxlan/1/tenant/{number}/vlan/{vid}", ()),
            ("POST", f"/vxlan/1/tenant/{number}/vlan/{vid}", ()),
            ("DELETE", f"/vxlan/1/tenant/{number}/vlan/{vid}", ()),
            (method, "/vxlan/1/unicastGroup", (vtep,)), (method, "/vxlan/1/multicastGroup", (group,)),
            (method, f"/vxlan/1/tenant/{number}/multicastGroup", (group,)),
            ("PUT", "/vxlan/1/udpPort", (f"value={choose.choice((4789, 8472))}",)),
            ("PUT", "/vxlan/1/sourceIntf/if", (f"value={choose.choice((3, 56, 226))}",)),
            ("PUT", "/vxlan/1/sourceIntf/vlan", (f"value={vid}",)),
            ("PUT", "/vxlan/1/sourceIntf/loopback", (f"value={choose.randint(0, 2)}",)),
            ("DELETE", "/vxlan/1/sourceIntf", ()),
        ))

    def random_change(self, choose):
        elsewhere = choose.choice((
            (choose.choice(("POST", "POST", "DELETE")), f"/vlans/{choose.choice((10, 20, 30))}", ()),
            (choose.choice(("POST", "DELETE")), f"/lag/1/port/{choose.choice((3, 4))}", ())))
        return choose.choice((self.random_routing(choose), self.random_bgp(choose), self.random_vxlan(choose),
                              self.random_routing(choose), elsewhere))

    def test_random_changes_survive_sudden_deaths(self):
        self.assert_random_changes_survive(seed=53, journal_bytes=4000)

    def test_modes_and_empty_parts_survive(self):
        """What has lines only together with something else, or where a default is another one."""
        self.ask("POST", "/vlans/10")
        self.ask("POST", "/routing/vlanRtrIf", "vlanId=10")
        self.ask("PUT", "/routing/if/226/adminMode", "value=0")
        self.ask("POST", neighbor_uri("10.0.0.2"), "asn=4294967295")
        self.ask("PUT", "/bgp/holdTime", "value=0")
        self.ask("PUT", "/bgp/localPref", "value=0")
        self.ask("PUT", "/vxlan/1/mode", "value=1")
        self.ask("POST", "/vxlan/1/tenant/5000/vlan/10")
        self.ask("PUT", "/vxlan/1/unicastGroup", "value=10.0.0.2")
        self.ask("DELETE", "/vxlan/1/tenant/5000/vlan/10")
        self.ask("PUT", "/vxlan/1/mode", "value=0")
        self.assert_restarts_keep_everything()
        self.ask("PUT", "/vxlan/1/mode", "value=1")
        self.ask("POST", "/vxlan/1/tenant/5001/vlan/10")
        self.read("/vxlan/1/unicastGroup", unicast_groups("10.0.0.2"))


class FullDisk(RouterTest):
    CHANGES = [
        ("POST", "/routing/vlanRtrIf", "vlanId=20"), ("DELETE", "/routing/vlanRtrIf", "vlanId=10"),
        ("PUT", "/routing/ipv4/adminMode", "value=1"), ("PUT", "/routing/if/4/adminMode", "value=1"),
        ("POST", "/routing/if/3/ip", *address_variables(0, "10.0.1.1", 24)),
        ("POST", "/routing/if/3/ip", *address_variables(2)),
        ("PUT", "/bgp/localAS", "value=65001"), ("POST", neighbor_uri("10.0.0.3"), "asn=65001"),
        ("PUT", neighbor_uri("10.0.0.2") + "/nextHopSelfMode", "value=1"),
        ("POST", "/bgp/originatedNetwork", "addr=10.1.0.0", "pfxLen=16", "routeMap=m"),
        ("POST", "/bgp/ipv4/redistribution/ospf"), ("PUT", "/vxlan/1/udpPort", "value=8472"),
        ("PUT", "/vxlan/1/sourceIntf/if", "value=3"), ("POST", "/vxlan/1/tenant/5001/vlan/20"),
        ("DELETE", "/vxlan/1/tenant/5000/vlan/10"), ("PUT", "/vxlan/1/unicastGroup", "value=10.0.0.3"),
        ("DELETE", "/vxlan/1/unicastGroup", "value=10.0.0.2"),
    ]

    def test_changes_fail_and_nothing_changes_until_there_is_room_again(self):
        self.daemon.expect_log(r"lines were dropped: the log could not be written")
        self.daemon.expect_log(r"File too large")
        for vid in (10, 20):
            self.ask("POST", f"/vlans/{vid}")
        self.ask("POST", "/routing/vlanRtrIf", "vlanId=10")
        self.ask("POST", neighbor_uri("10.0.0.2"), "asn=65001")
        self.ask("PUT", "/vxlan/1/mode", "value=1")
        self.ask("POST", "/vxlan/1/tenant/5000/vlan/10")
        self.ask("PUT", "/vxlan/1/unicastGroup", "value=10.0.0.2")
        before = self.everything()
        self.daemon.limit_files(0)
        for change in self.CHANGES:
            self.refuse(FAILED, *change)
            self.assertEqual(self.daemon.lab("show", "running-config"), before["configuration"], change)
        self.assertEqual(self.everything(), before)
        self.daemon.limit_files(-1)
        self.restart()
        self.assertEqual(self.everything(), before)
        for change in self.CHANGES:
            self.ask(*change)


class Largest(RouterTest):
    def test_a_routing_interface_for_128_vlans(self):
        listed = []
        for number in range(128):
            vid, address = number + 100, f"10.{number}.0.1"
            self.ask("POST", f"/vlans/{vid}")
            self.ask("POST", "/routing/vlanRtrIf", f"vlanId={vid}")
            self.give(f"vlanRtrIf/{number + 1}", 0, address, 24)
            listed.append((226 + number, listed_addresses((address, MASK_24))))
        self.ask("POST", "/vlans/2")
        self.refuse(REFUSED, "POST", "/routing/vlanRtrIf", "vlanId=2")
        self.restart()
        self.read("/routing/vlanRtrIf", vlan_interfaces(*listed))

    def test_32_addresses_of_each_family_on_an_interface(self):
        self.ask("POST", "/vlans/10")
        self.ask("POST", "/routing/vlanRtrIf", "vlanId=10")
        self.give("vlanRtrIf/1", 0, "10.0.0.1", 24)
        for number in range(1, 32):
            self.give("vlanRtrIf/1", 1, f"10.{number}.0.1", 24)
        for number in range(10, 42):
            self.give("vlanRtrIf/1", 3, f"2001:db8:{number}::1", 64)
        for given in ((1, "10.99.0.1", 24), (3, "2001:db8:99::1", 64)):
            self.refuse(REFUSED, "POST", "/routing/vlanRtrIf/1/ip", *address_variables(*given))
        self.restart()
        self.read("/routing/vlanRtrIf/1", vlan_interface(
            1, 226, 10, f"10.0.0.1/{MASK_24}", [f"10.{number}.0.1/{MASK_24}" for number in range(1, 32)],
            [f"2001:db8:{number}::1/64" for number in range(10, 42)]))

    def test_1024_tenants_with_128_remote_vteps(self):
        self.ask("PUT", "/vxlan/1/mode", "value=1")
        self.ask("POST", "/vxlan/1/tenant/1/vlan/1")
        vteps = [f"10.0.0.{number}" for number in range(1, 129)]
        for vtep in vteps:
            self.ask("PUT", "/vxlan/1/unicastGroup", f"value={vtep}")
        made = [(1, 1)]
        for vid in range(2, 1025):
            self.ask("POST", f"/vlans/{vid}")
            self.ask("POST", f"/vxlan/1/tenant/{vid * 1000}/vlan/{vid}")
            made.append((vid * 1000, vid))
        self.ask("POST", "/vlans/2000")
        self.refuse(REFUSED, "POST", "/vxlan/1/tenant/2/vlan/2000")
        self.restart()
        self.read("/vxlan/1/tenant", tenants(*made))
        self.read("/vxlan/1/unicastGroup", unicast_groups(*vteps))
        for mode in (0, 2):
            self.ask("PUT", "/vxlan/1/mode", f"value={mode}")
        self.read("/vxlan/1/tenant", tenants(*made))


class Log(RouterTest):
    def test_every_change_leaves_a_line(self):
        key = self.logged_in.key
        requests = [
            ("POST", "/routing/vlanRtrIf", "vlanId=1",
             "Create Vlan Routing Interface with VLAN 1 successfully.", 0),
            ("DELETE", "/routing/if/3/ip", "addrType=2&extArg=0", NOT_OBTAINED[1], NOT_OBTAINED[0]),
            ("POST", neighbor_uri("10.0.0.2"), "asn=4200000000",
             "Set BGP IPv4 neighbor (ip address: 10.0.0.2, AS number: -94967296) successfully.", 0),
            ("PUT", neighbor_uri("10.0.0.2") + "/updateSource", "type=3&value=1", INVALID[1], INVALID[0]),
            ("POST", "/bgp/ipv4/redistribution/ospf", "matchExt2=0",
             "The value of parameter matchExt2 is invalid.", 3),
            ("PUT", "/vxlan/1/mode", "value=2", "Update VxLAN mode successfully.", 0),
            ("PUT", "/vxlan/1/multicastGroup", "value=10.0.0.1", REFUSED[1], REFUSED[0]),
        ]
        expected = ["RESTful API Engine: User from [127.0.0.1] accesses API [POST /login?]: "
                    "Log in successfully. (0)"]
        for method, uri, query, message, code in requests:
            self.assertEqual(self.logged_in.ask(method, uri, query).code(), code, uri)
            expected.append("RESTful API Engine: User from [127.0.0.1] accesses API "
                            f"[{method} {uri}?sessionkey={key}&{query}]: {message} ({code})")
        for uri in ("/routing", "/routing/if", "/bgp", neighbor_uri("10.0.0.2"), "/vxlan/1/mode"):
            self.logged_in.ask("GET", uri)
        self.assertEqual(self.daemon.audit_lines(), expected)


class HeldChanges(RouterTest):
    def pending(self):
        """The pending interfaces and VLANs, each with the kind of change."""
        asked = (("/if/pendingChanges", "ifNum"), ("/vlans/pendingChanges", "id"))
        return [re.findall(rf"<{tag}>(\d+)</{tag}><pending_type>pending (\w+)<", self.ask("GET", uri))
                for uri, tag in asked]

    def test_changes_are_pending_where_they_happen(self):
        self.ask("POST", "/vlans/10")
        self.ask("PUT", "/vxlan/1/mode", "value=1")
        address = address_variables(0, "10.0.0.1", 24)
        steps = [
            ("POST", "/routing/vlanRtrIf", ("vlanId=10",), [[("226", "change")], []]),
            ("PUT", "/routing/if/3/adminMode", ("value=1",), [[("3", "change")], []]),
            ("POST", "/routing/vlanRtrIf/1/ip", address, [[("226", "change")], []]),
            ("DELETE", "/routing/vlanRtrIf/1/ip", address, [[("226", "change")], []]),
            ("DELETE", "/routing/vlanRtrIf", ("vlanId=10",), [[("226", "deletion")], []]),
            ("POST", "/vxlan/1/tenant/5000/vlan/10", (), [[], [("10", "change")]]),
            ("DELETE", "/vxlan/1/tenant/5000/vlan/10", (), [[], [("10", "change")]]),
        ]
        for method, uri, variables, where in steps:
            self.daemon.lab("wait")
            self.assertEqual(self.pending(), [[], []])
            self.daemon.lab("hold")
            self.ask(method, uri, *variables)
            self.assertEqual(self.pending(), where, uri)
            self.daemon.lab("release")


if __name__ == "__main__":
    harness.main()
