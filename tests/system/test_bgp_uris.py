"""Every URI of the module bgp: whole replies, as XML and as JSON, over both ports."""

import harness
from fabric import (INVALID, FabricTest, neighbor, neighbor_set, neighbor_updated, neighbor_uri, network_done,
                    redistribution_done, speaker)
from wire import BAD_REQUEST, FAILED, GOT, REFUSED, UNKNOWN_MODULE

V4 = ("10.0.0.2", None)  # neighbours: address and scope, None for IPv4
V6 = ("2001:db8::2", 0)
LOCAL = ("fe80::2", 3)
NEIGHBORS = (V4, V6, LOCAL)
NO_HOSTS = (("224.0.0.5", None), ("0.0.0.0", None), ("ff02::1", 3), ("::", 0))
WRONG_FAMILY = (("2001:db8::2", None), ("10.0.0.2", 0), ("x", None), ("x", 0), ("10.0.0", None))


class BgpTest(FabricTest):
    def create_neighbor(self, who, asn=65001):
        self.check("POST", neighbor_uri(*who), neighbor_set(asn, *who), variables=(f"asn={asn}",))

    def check_neighbor(self, who, asn=65001, **facts):
        address, scope = who
        if scope is not None:
            facts.setdefault("active", "No")
        self.check("GET", neighbor_uri(*who), GOT, neighbor(asn, address, **facts))

    def update(self, who, what, outcome, *variables):
        self.check("PUT", f"{neighbor_uri(*who)}/{what}", outcome, variables=variables)


class Speaker(BgpTest):
    # Words in the URI and in the message, the name in the answer, (given, read) pairs, what is refused.
    SETTINGS = [
        ("holdTime", "hold time for all peers", "hold_time",
         [("0", 0), ("3", 3), ("65535", 65535), ("90x", 90)], ["1", "2", "65536", "-1", "4294967386"]),
        ("keepAliveTime", "keep alive time for all peers", "keep_alive_time",
         [("0", 0), ("65535", 65535), ("x", 0), ("30", 30)], ["65536", "-1", "4294967296"]),
        ("localAS", "local Autonomous System (AS) number", "local_AS_number",
         [("1", 1), ("4294967295", -1), ("4200000000", -94967296), ("2147483647", 2147483647),
          ("65000", 65000)],
         ["0", "x", "-1", "4294967296", "99999999999999999999"]),
        ("routerId", "BGP router ID", "local_router_id",
         [("255.255.255.255", "255.255.255.255"), ("10.0.0.1", "10.0.0.1")],
         ["0.0.0.0", "10.0.0", "x", "1", "2001:db8::1"]),
        ("localPref", "the value of local preference attribute", "local_preference",
         [("0", 0), ("4294967295", -1), ("2147483648", -2147483648), ("100", 100)],
         ["-1", "x", "1x", "4294967296", "+1"]),
        ("logNeighborChanges", "the log neighbor changes parameter", "log_neighbor_changes",
         [("1", "Enable"), ("0", "Disable"), ("-7", "Enable"), ("x", "Disable")], []),
    ]

    def test_settings(self):
        def scene():
            self.check("GET", "/bgp", GOT, speaker())
            facts = {}
            for word, message, name, good, wrong in self.SETTINGS:
                for given, read in good:
                    self.put(f"/bgp/{word}", given, (0, f"Update {message} successfully."))
                    facts[name] = read
                    self.check("GET", "/bgp", GOT, speaker(**facts))
                for value in wrong:
                    self.put(f"/bgp/{word}", value, REFUSED)
                self.assert_missing_value_is_refused("PUT", f"/bgp/{word}")
            self.check("GET", "/bgp", GOT, speaker(**facts))
            self.assertEqual(self.config("bgp"), ["local-as 65000", "router-id 10.0.0.1"])
        self.each_way(scene)


class Networks(BgpTest):
    def network(self, method, outcome, *given):
        names = ("addr", "pfxLen", "routeMap")
        variables = [f"{name}={value}" for name, value in zip(names, given) if value is not None]
        self.check(method, "/bgp/originatedNetwork", outcome, variables=variables)

    def test_originating(self):
        def scene():
            for address, length in (("10.1.2.3", 16), ("192.0.2.0", 24), ("2001:db8::", 32), ("0.0.0.0", 0)):
                self.network("POST", network_done("Set", address, length), address, length, "out")
            self.network("POST", network_done("Set", "10.1.0.0", 16), "10.1.0.0", 16, "m" * 31)  # the same
            self.assertEqual(self.config("bgp"), [
                "network 0.0.0.0/0 route-map out", f"network 10.1.0.0/16 route-map {'m' * 31}",
                "network 192.0.2.0/24 route-map out", "network 2001:db8::/32 route-map out"])
            for address, length in (("10.1.9.9", 16), ("192.0.2.0", "24x"), ("2001:db8::1", 32)):
                shown = str(length).rstrip("x")
                self.network("DELETE", network_done("Delete", address, shown), address, length)
                self.network("DELETE", REFUSED, address, length)
            self.assertEqual(self.config("bgp"), ["network 0.0.0.0/0 route-map out"])
        self.each_way(scene)

    def test_what_is_refused(self):
        def scene():
            good = ("10.1.0.0", 16, "out")
            for given in ((None, *good[1:]), ("", *good[1:]), ("10.1", *good[1:]), ("x", *good[1:]),
                          ("10.1.0.0", None, "out"), ("10.1.0.0", "", "out"), ("10.1.0.0", "x", "out"),
                          ("10.1.0.0", "-1", "out"), ("10.1.0.0", 33, "out"), ("2001:db8::", 129, "out"),
                          ("10.1.0.0", "16x", "out"), ("10.1.0.0", 4294967312, "out"), ("10.1.0.0", 16, None),
                          ("10.1.0.0", 16, ""), ("10.1.0.0", 16, "m" * 32), ("10.1.0.0", 16, "m" * 300),
                          ("10.1.0.0", 16, "a%0Ab"), ("224.0.0.0", 8, "out"), ("127.0.0.0", 8, "out"),
                          ("169.254.1.0", 24, "out"), ("ff00::", 8, "out"), ("fe80::", 64, "out")):
                self.network("POST", REFUSED, *given)
            self.network("POST", network_done("Set", "10.1.0.0", 16), *good)
            for given in ((), ("10.1.0.0",), (None, 16), ("", 16), ("x", 16), ("10.1.0.0", ""),
                          ("10.1.0.0", 33), ("10.1.0.0", -1), ("10.1.0.0", 15), ("10.2.0.0", 16)):
                self.network("DELETE", REFUSED, *given)
            self.assertEqual(self.config("bgp"), ["network 10.1.0.0/16 route-map out"])
        self.each_way(scene)

    def test_there_is_room_for_as_many_as_the_switch_has(self):
        def scene():
            for number in range(64):
                address = f"10.{number}.0.0"
                self.network("POST", network_done("Set", address, 16), address, 16, "out")
            self.network("POST", REFUSED, "10.64.0.0", 16, "out")
            self.network("POST", network_done("Set", "10.63.0.0", 16), "10.63.0.0", 16, "other")
        self.each_way(scene)


class Neighbors(BgpTest):
    def test_making_and_reading(self):
        def scene():
            for who in NEIGHBORS:
                self.check("GET", neighbor_uri(*who), REFUSED)
                for asn in (1, 4294967295, 65001):
                    self.create_neighbor(who, asn)
                    self.check_neighbor(who, asn)
            self.create_neighbor(("2001:DB8:0::3", 0))
            self.check("GET", neighbor_uri("2001:DB8:0:0::3", 0), GOT,  # told as the URI has it
                       neighbor(65001, "2001:DB8:0:0::3", active="No"))
            self.create_neighbor(("fe80::2", 4), 65002)  # another one: the scope belongs to it
            self.check_neighbor(LOCAL)
        self.each_way(scene)

    def test_who_is_no_neighbor(self):
        def scene():
            for who in (*NO_HOSTS, *WRONG_FAMILY, ("fe80::2", 0), ("fe80::2", 226), ("fe80::2", 55),
                        ("2001:db8::2", 200), ("2001:db8::2", 99999999999)):
                self.check("POST", neighbor_uri(*who), REFUSED, variables=("asn=65001",))
                self.check("GET", neighbor_uri(*who), REFUSED)
            for who in NEIGHBORS:
                for asn in ("0", "x", "-1", "4294967296", "99999999999999999999"):
                    self.check("POST", neighbor_uri(*who), REFUSED, variables=(f"asn={asn}",))
                self.assert_missing_value_is_refused("POST", neighbor_uri(*who), "asn")
            self.assertEqual(self.config("bgp"), [])
        self.each_way(scene)

    def test_activating_and_next_hop_self(self):
        def scene():
            for who in NEIGHBORS:
                self.update(who, "nextHopSelfMode", REFUSED, "value=1")  # it does not exist
                self.create_neighbor(who)
                for value, word in ((1, "enable"), (0, "disable"), (1, "enable")):
                    self.update(who, "nextHopSelfMode", neighbor_updated("next-hop-self mode", *who),
                                f"value={value}")
                    self.check_neighbor(who, next_hop_self=word)
            for who in (V6, LOCAL):
                for value, word in ((1, "Yes"), (0, "No"), (1, "Yes")):
                    self.update(who, "activate", neighbor_updated("activate state", *who), f"value={value}")
                    self.check_neighbor(who, active=word, next_hop_self="enable")
            for who, words in ((V6, ("activate", "nextHopSelfMode")), (V4, ("nextHopSelfMode",))):
                for word in words:
                    for given in ((), ("value=",), ("value=2",), ("value=-1",), ("value=1x",), ("value=x",)):
                        self.update(who, word, INVALID, *given)
            for who in WRONG_FAMILY:
                self.update(who, "nextHopSelfMode", INVALID, "value=1")
            for who in NO_HOSTS:
                self.update(who, "nextHopSelfMode", REFUSED, "value=1")
            self.update(V4, "activate", BAD_REQUEST, "value=1")  # deliberately not there
        self.each_way(scene)

    def test_update_source(self):
        def source(who, kind, value, outcome=None):
            self.update(who, "updateSource", outcome or neighbor_updated("update-source", *who),
                        f"type={kind}", f"value={value}")

        def scene():
            self.create_vlans(10)
            self.route_vlans(20)
            for who in NEIGHBORS:
                source(who, 2, 3, REFUSED)  # it does not exist
                self.create_neighbor(who)
                for kind, value, name in ((1, 20, "vlan20"), (2, 226, "vlan20"), (2, 3, "0/3"),
                                          (2, 56, "3/1"), (2, 120, "loopback0"), (2, 0, "none"),
                                          (2, 127, "loopback7")):
                    source(who, kind, value)
                    self.check_neighbor(who, source=name)
                for kind, value in ((1, 10), (1, 30), (1, 0), (1, 4095), (1, -1), (2, 55), (2, 200), (2, 227),
                                    (2, 354), (2, -1), (2, 99999999999)):
                    source(who, kind, value, REFUSED)
                for kind, value in ((0, 3), (3, 3), (-1, 3), ("x", 3), ("2x", 3), ("", 3), (2, "x"),
                                    (2, "3x"), (2, "")):
                    source(who, kind, value, INVALID)
                for given in ((), ("type=2",), ("value=3",)):
                    self.update(who, "updateSource", INVALID, *given)
                self.check_neighbor(who, source="loopback7")
            for who in WRONG_FAMILY:
                source(who, 2, 3, INVALID)
            for who in NO_HOSTS:
                source(who, 2, 3, REFUSED)
        self.each_way(scene)

    def test_an_interface_that_a_neighbor_needs_cannot_be_removed(self):
        def scene():
            self.route_vlans(10, 20)
            self.create_neighbor(("fe80::2", 227))  # there is no way for a client to remove it
            self.vlan_interface("DELETE", 20, FAILED)
            self.create_neighbor(V4)
            self.update(V4, "updateSource", neighbor_updated("update-source", *V4), "type=1", "value=10")
            self.vlan_interface("DELETE", 10, FAILED)
            self.check_neighbor(V4, source="vlan10")
            self.update(V4, "updateSource", neighbor_updated("update-source", *V4), "type=2", "value=0")
            self.vlan_interface("DELETE", 10)
        self.each_way(scene)

    def test_there_is_room_for_as_many_as_the_switch_has(self):
        def scene():
            for number in range(1, 129):
                self.create_neighbor((f"10.0.0.{number}", None))
            self.check("POST", neighbor_uri(*V6), REFUSED, variables=("asn=65001",))
            self.create_neighbor(V4, 65002)
            self.check_neighbor(("10.0.0.128", None))
        self.each_way(scene)


class Redistribution(BgpTest):
    MATCHES = ("matchInternal", "matchExt1", "matchExt2", "matchNssaExt1", "matchNssaExt2")

    def redistribute(self, family, source, outcome=None, *variables, body=None):
        self.check("POST", f"/bgp/{family.lower()}/redistribution/{source}",
                   outcome or redistribution_done("Create", family, source), variables=variables, body=body)

    def end(self, family, source, outcome=None):
        self.check("DELETE", f"/bgp/{family.lower()}/redistribution/{source}",
                   outcome or redistribution_done("Delete", family, source))

    def test_sources_and_variables(self):
        def scene():
            rows = [
                ("connected", (), ""),
                ("static", ("metric=4294967295", "routeMap=m"), " metric 4294967295 route-map m"),
                ("rip", ("metric=",), " metric 0"),
                ("ospf", (), ""), ("ospf", ("matchInternal=1",), " match-internal"),
                ("ospf", (*(f"{name}=1" for name in self.MATCHES), "routeMap=" + "m" * 31),
                 " match-internal match-external-1 match-external-2 match-nssa-external-1"
                 " match-nssa-external-2 route-map " + "m" * 31),
                ("ospf", ("matchExt2=1x", "metric=5x"), " match-external-2 metric 5"),
            ]
            for family in ("IPv4", "IPv6"):
                for source, variables, printed in rows:
                    self.redistribute(family, source, None, *variables)
                    self.assertIn(f"redistribute {family.lower()} {source}{printed}", self.config("bgp"))
            self.assertEqual(len(self.config("bgp")), 8)
            for family in ("IPv4", "IPv6"):
                for source in ("ospf", "connected", "static", "rip"):
                    self.end(family, source)
                    self.end(family, source, REFUSED)
            self.assertEqual(self.config("bgp"), [])
        self.each_way(scene)

    def test_a_match_that_is_not_1_has_a_code_of_its_own(self):
        def scene():
            for family in ("IPv4", "IPv6"):
                for code, name in enumerate(self.MATCHES, 1):
                    refused = (code, f"The value of parameter {name} is invalid.")
                    for value in ("0", "2", "", "x"):
                        self.redistribute(family, "ospf", refused, f"{name}={value}")
                    later = [f"{other}=0" for other in self.MATCHES[code:]]
                    self.redistribute(family, "isis", refused, f"{name}=-1", *later)
            self.assertEqual(self.config("bgp"), [])
        self.each_way(scene)

    def test_what_is_refused(self):
        def scene():
            for family in ("IPv4", "IPv6"):
                for source, variables in (
                        ("isis", ()), ("bgp", ()), ("OSPF", ()), ("ospf1", ()),
                        ("connected", ("matchInternal=1",)), ("static", ("metric=4294967296",)),
                        ("static", ("metric=-1",)), ("rip", ("routeMap=",)),
                        ("rip", ("routeMap=" + "m" * 32,)), ("rip", ("routeMap=a%0Ab",))):
                    self.redistribute(family, source, REFUSED, *variables)
                self.end(family, "isis", REFUSED)
            self.assertEqual(self.config("bgp"), [])
        self.each_way(scene)


    def test_a_value_that_is_too_long_is_wrong_in_the_body_and_not_given_in_the_query(self):
        def scene():
            wrong_match = (2, "The value of parameter matchExt1 is invalid.")
            for name, outcome in (("routeMap", REFUSED), ("matchExt1", wrong_match)):
                given = f"{name}={'1' * 256}"
                self.redistribute("IPv4", "ospf", outcome, body=given)
                self.assertEqual(self.config("bgp"), [])
                self.redistribute("IPv4", "ospf", None, given)
                self.assertEqual(self.config("bgp"), ["redistribute ipv4 ospf"])
                self.end("IPv4", "ospf")
        self.each_way(scene)


class Uris(BgpTest):
    def test_what_the_module_does_not_serve(self):
        wrong = [
            ("GET", "/bgp/"), ("GET", "/bgp/holdTime"), ("GET", "/bgp/ipv4"), ("GET", "/bgp/ipv4/neighbor"),
            ("GET", "/bgp/ipv4/neighbor/"), ("GET", "/bgp/ipv4/neighbor/10.0.0.2/"),
            ("GET", "/bgp/ipv4/neighbor/10.0.0.2/updateSource"), ("GET", "/bgp/ipv6/neighbor/fe80::2"),
            ("GET", "/bgp/ipv6/neighbor/fe80::2/scope"), ("GET", "/bgp/ipv6/neighbor/fe80::2/scope/"),
            ("GET", "/bgp/ipv6/neighbor/fe80::2/scope/x"), ("GET", "/bgp/ipv6/neighbor/fe80::2/scope/3/"),
            ("GET", "/bgp/originatedNetwork"), ("GET", "/bgp/ipv4/redistribution/ospf"),
            ("PUT", "/bgp"), ("PUT", "/bgp/holdTime/"), ("PUT", "/bgp/holdtime"), ("PUT", "/bgp/holdTim"),
            ("PUT", "/bgp/ipv4/neighbor/10.0.0.2"), ("PUT", "/bgp/ipv4/neighbor/10.0.0.2/activate"),
            ("PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSourc"),
            ("PUT", "/bgp/ipv4/neighbor/10.0.0.2/updateSource/"),
            ("PUT", "/bgp/ipv4/neighbor/10.0.0.2/nextHopSelfMod"),
            ("PUT", "/bgp/ipv6/neighbor/fe80::2/activate"), ("PUT", "/bgp/ipv6/neighbor/fe80::2/scope/3"),
            ("PUT", "/bgp/ipv6/neighbor/fe80::2/scope/3/activat"),
            ("PUT", "/bgp/ipv6/neighbor/fe80::2/scope/3/activated"),
            ("PUT", "/bgp/ipv6/neighbor/fe80::2/scope//activate"), ("POST", "/bgp"), ("POST", "/bgp/localAS"),
            ("POST", "/bgp/originatedNetwork/"), ("POST", "/bgp/ipv6/neighbor/fe80::2"),
            ("POST", "/bgp/ipv4/redistribution"), ("POST", "/bgp/ipv4/redistribution/"),
            ("POST", "/bgp/ipv4/redistribution/ospf/"), ("POST", "/bgp/ipv5/redistribution/ospf"),
            ("DELETE", "/bgp"), ("DELETE", "/bgp/ipv4/neighbor/10.0.0.2"),
            ("DELETE", "/bgp/ipv6/neighbor/fe80::2/scope/3"), ("DELETE", "/bgp/originatedNetwork/10.1.0.0"),
            ("DELETE", "/bgp/ipv6/redistribution/"),
        ]

        def scene():
            for method, uri in wrong:
                self.check(method, uri, BAD_REQUEST, variables=("value=1", "asn=1"))
            for uri in ("/bg", "/bgps", "/BGP"):
                self.check("GET", uri, UNKNOWN_MODULE)
        self.each_way(scene)


class Failures(BgpTest):
    """What becomes of requests when the switch fails, seen from outside."""

    GETTERS = ("GlobalHoldTimeConfigured", "GlobalKeepAliveConfigured", "LocalAS", "LocalId", "LocalPref",
               "LogNeighborChanges")
    CALLS = [
        *(("GET", "/bgp", (), f"Bgp{what}Get") for what in GETTERS),
        ("PUT", "/bgp/localAS", ("value=65000",), "BgpLocalASSet"),
        ("PUT", "/bgp/routerId", ("value=10.0.0.1",), "BgpLocalIdSet"),
        ("POST", "/bgp/originatedNetwork", ("addr=10.1.0.0", "pfxLen=16", "routeMap=m"),
         "BgpNetworkAddDelete"),
        ("POST", "/bgp/ipv4/redistribution/ospf", (), "BgpRedistributionSet"),
        ("POST", neighbor_uri("10.0.0.3"), ("asn=65001",), "BgpPeerRemoteASSet"),
        *(("GET", neighbor_uri(*LOCAL), (), f"BgpPeer{what}Get")
          for what in ("RemoteAS", "Activate", "NextHopSelfMode", "UpdateSource")),
        ("PUT", neighbor_uri(*LOCAL) + "/activate", ("value=1",), "BgpPeerActivateSet"),
        ("PUT", neighbor_uri(*LOCAL) + "/nextHopSelfMode", ("value=1",), "BgpPeerNextHopSelfModeSet"),
        ("PUT", neighbor_uri(*LOCAL) + "/updateSource", ("type=2", "value=3"), "BgpPeerUpdateSourceSet"),
        ("PUT", neighbor_uri(*LOCAL) + "/updateSource", ("type=1", "value=1"), "RtrVlanIntfNumGetZYL"),
    ]

    def test_a_failing_call_is_answered_for_and_changes_nothing(self):
        def scene():
            self.create_neighbor(LOCAL)
            before = self.config("bgp")
            for method, uri, variables, call in self.CALLS:
                self.daemon.lab("fault", f"rpcclt_openapi{call}", "OPEN_E_FAIL")
                self.check(method, uri, FAILED, variables=variables)
            self.assertEqual(self.config("bgp"), before)
            self.assertEqual(self.daemon.lab("fault", "list"), "")
        self.each_way(scene)


if __name__ == "__main__":
    harness.main()
