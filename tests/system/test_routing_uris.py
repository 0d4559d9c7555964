"""Every URI of the module routing: whole replies, as XML and as JSON, over both ports."""

import harness
from fabric import (NO_ROUTING_PORT, NO_VLAN_INTERFACE, NOT_OBTAINED, OBTAINS_NO_LONGER, FabricTest,
                    address_done, address_variables, listed_addresses, routing_modes, routing_ports,
                    vlan_interface, vlan_interfaces)
from wire import ALREADY_SET, BAD_REQUEST, FAILED, GOT, REFUSED, UNKNOWN_MODULE

MODE_UPDATED = (0, "Update routing admin mode for this interface successfully.")
MASK_16, MASK_24 = "255.255.0.0", "255.255.255.0"


class RoutingTest(FabricTest):
    def address(self, method, where, outcome, *given, **extra):
        """A request about an address; `where` is "if/3" or "vlanRtrIf/1"."""
        self.check(method, f"/routing/{where}/ip", outcome, variables=address_variables(*given, **extra))

    def give(self, where, kind, address, length, **extra):
        word = "Vlan " if where.startswith("vlan") else ""
        self.address("POST", where, address_done("Create", word, address, length), kind, address, length,
                     **extra)

    def take(self, where, kind, address, length, **extra):
        word = "Vlan " if where.startswith("vlan") else ""
        self.address("DELETE", where, address_done("Delete", word, address, length), kind, address, length,
                     **extra)


class Modes(RoutingTest):
    def test_the_switch(self):
        def scene():
            self.check("GET", "/routing", GOT, routing_modes())
            for value, word in (("1", "enable"), ("0", "disable"), ("1x", "enable"), ("x", "disable")):
                for family in ("4", "6"):
                    self.put(f"/routing/ipv{family}/adminMode", value,
                             (0, f"Update routing admin mode for IPv{family} successfully."))
                self.check("GET", "/routing", GOT, routing_modes(word, word))
            self.put("/routing/ipv6/adminMode", 1, (0, "Update routing admin mode for IPv6 successfully."))
            for family in ("4", "6"):
                for value in ("2", "-1", "4294967296"):
                    self.put(f"/routing/ipv{family}/adminMode", value, REFUSED)
                self.assert_missing_value_is_refused("PUT", f"/routing/ipv{family}/adminMode")
            self.check("GET", "/routing", GOT, routing_modes(ipv6="enable"))
        self.each_way(scene)

    def test_interfaces(self):
        def scene():
            self.route_vlans(10)
            self.check("GET", "/routing/if", NO_ROUTING_PORT, routing_ports())
            for number in (54, 3, 226, 56, 7, 3):
                self.put(f"/routing/if/{number}/adminMode", 1, MODE_UPDATED)
            self.check("GET", "/routing/if", GOT, routing_ports((3, {}), (7, {}), (54, {})))
            for number in (54, 226, 226):
                self.put(f"/routing/if/{number}/adminMode", 0, MODE_UPDATED)
            self.check("GET", "/routing/if", GOT, routing_ports((3, {}), (7, {})))
            self.check("GET", "/routing/vlanRtrIf", GOT, vlan_interfaces((226, {})))
            for number in ("0", "55", "120", "127", "200", "227", "354", "99999999999"):
                self.put(f"/routing/if/{number}/adminMode", 1, REFUSED)
            for value in ("2", "-1"):
                self.put("/routing/if/3/adminMode", value, REFUSED)
            self.assert_missing_value_is_refused("PUT", "/routing/if/3/adminMode")
        self.each_way(scene)

    def test_a_member_of_a_lag_does_not_route_but_its_lag_may(self):
        def scene():
            for number in (3, 56):
                self.put(f"/routing/if/{number}/adminMode", 1, MODE_UPDATED)
            self.check("POST", "/lag/1/port/3", (0, "Configure port 3 to LAG 1 successfully."))
            self.check("GET", "/routing/if", NO_ROUTING_PORT, routing_ports())
            self.check("DELETE", "/lag/1/port/3", (0, "Delete port 3 from LAG 1 successfully."))
            self.check("GET", "/routing/if", GOT, routing_ports((3, {})))
        self.each_way(scene)


class VlanInterfaces(RoutingTest):
    def test_making_and_removing(self):
        def scene():
            self.check("GET", "/routing/vlanRtrIf", NO_VLAN_INTERFACE, vlan_interfaces())
            self.check("GET", "/routing/vlanRtrIf/1", REFUSED)
            self.route_vlans(20, 10, 4094)
            self.check("GET", "/routing/vlanRtrIf", GOT, vlan_interfaces((226, {}), (227, {}), (228, {})))
            for logical, vid in enumerate((20, 10, 4094), 1):
                self.check("GET", f"/routing/vlanRtrIf/{logical}", GOT,
                           vlan_interface(logical, 225 + logical, vid))
            self.vlan_interface("POST", 10, ALREADY_SET)
            for vid in ("30", "0", "4095", "-1", "x", "99999999999"):
                for method in ("POST", "DELETE"):
                    self.vlan_interface(method, vid, REFUSED)
            for logical in ("0", "4", "129", "2147483647", "99999999999"):
                self.check("GET", f"/routing/vlanRtrIf/{logical}", REFUSED)
            for method in ("POST", "DELETE"):
                self.assert_missing_value_is_refused(method, "/routing/vlanRtrIf", "vlanId")
            self.vlan_interface("DELETE", 10)
            self.vlan_interface("DELETE", 10, REFUSED)
            self.check("GET", "/routing/vlanRtrIf", GOT, vlan_interfaces((226, {}), (228, {})))
            self.check("GET", "/routing/vlanRtrIf/2", REFUSED)
            for vid in (20, 4094):
                self.vlan_interface("DELETE", vid)
            self.check("GET", "/routing/vlanRtrIf", NO_VLAN_INTERFACE, vlan_interfaces())
        self.each_way(scene)

    def test_logical_ids_count_from_the_first_interface_there_is(self):
        def scene():
            self.route_vlans(10, 20, 30)
            self.give("vlanRtrIf/2", 0, "10.20.0.1", 24)
            self.vlan_interface("DELETE", 10)
            addresses = listed_addresses(("10.20.0.1", MASK_24))
            self.check("GET", "/routing/vlanRtrIf", GOT,
                       vlan_interfaces((227, addresses), (228, {}), first=227))
            self.check("GET", "/routing/vlanRtrIf/1", GOT, vlan_interface(1, 227, 20, f"10.20.0.1/{MASK_24}"))
            self.check("GET", "/routing/vlanRtrIf/0", REFUSED)
            self.create_vlans(40)
            self.vlan_interface("POST", 40)  # the lowest free number, before the others
            self.check("GET", "/routing/vlanRtrIf", GOT,
                       vlan_interfaces((226, {}), (227, addresses), (228, {})))
            self.check("GET", "/routing/vlanRtrIf/1", GOT, vlan_interface(1, 226, 40))
        self.each_way(scene)

    def test_a_vlan_that_is_routed_cannot_be_deleted(self):
        def scene():
            self.route_vlans(10)
            self.check("DELETE", "/vlans/10", FAILED)
            self.vlan_interface("DELETE", 10)
            self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
        self.each_way(scene)

    def test_there_is_room_for_as_many_as_the_switch_has(self):
        def scene():
            self.daemon.lab("limit", "vlan-routing-interfaces", "2")
            self.route_vlans(10, 20)
            self.create_vlans(30)
            self.vlan_interface("POST", 30, REFUSED)
            self.vlan_interface("DELETE", 10)
            self.vlan_interface("POST", 30)
            self.daemon.lab("limit", "vlan-routing-interfaces", "128")
        self.each_way(scene)


class Addresses(RoutingTest):
    def test_of_a_port(self):
        def scene():
            self.put("/routing/if/3/adminMode", 1, MODE_UPDATED)
            self.give("if/3", 0, "10.1.0.1", 24)
            self.give("if/3", 1, "10.2.0.1", 16)
            self.give("if/3", 3, "2001:db8::2", 64)
            self.give("if/3", 3, "2001:db8::1", 64)
            self.give("if/3", 3, "2001:db8:1::", 64, extra="1")  # ends in what the MAC address makes
            made, ipv6 = "2001:db8:1::5eff:fe10:4/64", ("2001:db8::1/64", "2001:db8::2/64")
            self.check("GET", "/routing/if", GOT, routing_ports(
                (3, listed_addresses(("10.1.0.1", MASK_24), (*ipv6, made)))))
            self.take("if/3", 3, "2001:db8:1::", 64, extra="1")
            self.give("if/3", 0, "10.1.0.2", 32)
            self.check("GET", "/routing/if", GOT, routing_ports(
                (3, listed_addresses(("10.1.0.2", "255.255.255.255"), ipv6))))
            self.address("DELETE", "if/3", FAILED, 0, "10.1.0.2", 32)  # the secondary one needs it
            self.take("if/3", 1, "10.2.0.1", 16)
            for again in (REFUSED, REFUSED):
                self.address("DELETE", "if/3", again, 1, "10.2.0.1", 16)
            self.take("if/3", "", "10.1.0.2", 32)  # no addrType stands for 0, but not for POST
            self.address("POST", "if/3", REFUSED, "", "10.1.0.2", 32)
            for number in (1, 2):
                self.take("if/3", 3, f"2001:db8::{number}", 64)
            self.check("GET", "/routing/if", GOT, routing_ports((3, {})))
        self.each_way(scene)

    def test_of_a_vlan(self):
        def scene():
            self.route_vlans(10, 20)
            self.give("vlanRtrIf/2", "", "10.1.0.1", 24, extra="")
            for number in (2, 3):
                self.give("vlanRtrIf/2", 1, f"10.{number}.0.1", 16)
            self.give("vlanRtrIf/2", 3, "fe80::1", 64)
            self.check("GET", "/routing/vlanRtrIf/2", GOT, vlan_interface(
                2, 227, 20, f"10.1.0.1/{MASK_24}", (f"10.2.0.1/{MASK_16}", f"10.3.0.1/{MASK_16}"),
                ("fe80::1/64",)))
            self.check("GET", "/routing/vlanRtrIf", GOT, vlan_interfaces(
                (226, {}), (227, listed_addresses(("10.1.0.1", MASK_24), ("fe80::1/64",)))))
            for number in (3, 2):
                self.take("vlanRtrIf/2", 1, f"10.{number}.0.1", 16)
            self.take("vlanRtrIf/2", "", "10.1.0.1", 24)
            self.take("vlanRtrIf/2", 3, "fe80::1", 64)
            self.check("GET", "/routing/vlanRtrIf/2", GOT, vlan_interface(2, 227, 20))
            for logical in ("0", "3", "99999999999"):
                self.address("POST", f"vlanRtrIf/{logical}", REFUSED, 0, "10.1.0.1", 24)
                self.address("DELETE", f"vlanRtrIf/{logical}", REFUSED, 0, "10.1.0.1", 24)
        self.each_way(scene)

    def test_obtained_ones(self):
        def scene():
            self.route_vlans(10)
            self.put("/routing/if/3/adminMode", 1, MODE_UPDATED)
            for where, name, net in (("if/3", "0/3", 1), ("vlanRtrIf/1", "vlan10", 2)):
                word = "Vlan " if net == 2 else ""
                for kind in (2, 4):
                    self.address("DELETE", where, NOT_OBTAINED, kind)
                    self.address("POST", where, address_done("Create", word), kind)
                self.daemon.lab("lease", name, f"10.9.{net}.7/24")
                self.daemon.lab("lease", name, f"2001:db8:{net}::7/64")
            self.check("GET", "/routing/if", GOT, routing_ports(
                (3, listed_addresses(("10.9.1.7", MASK_24), ("2001:db8:1::7/64",)))))
            self.check("GET", "/routing/vlanRtrIf/1", GOT, vlan_interface(
                1, 226, 10, f"10.9.2.7/{MASK_24}", ipv6=("2001:db8:2::7/64",)))
            self.daemon.lab("lease", "vlan10", "none")
            self.check("GET", "/routing/vlanRtrIf/1", GOT, vlan_interface(1, 226, 10))
            for kind in (2, 4):
                self.address("DELETE", "if/3", OBTAINS_NO_LONGER, kind)
                self.address("DELETE", "if/3", NOT_OBTAINED, kind)
            self.check("GET", "/routing/if", GOT, routing_ports((3, {})))
            self.daemon.lab("lease", "0/3", "none")
        self.each_way(scene)

    def test_a_given_address_ends_dhcp_and_the_other_way_round(self):
        def scene():
            self.put("/routing/if/3/adminMode", 1, MODE_UPDATED)
            self.address("POST", "if/3", address_done("Create", ""), 2)
            self.address("POST", "if/3", FAILED, 1, "10.2.0.1", 24)
            self.give("if/3", 0, "10.1.0.1", 24)
            self.address("DELETE", "if/3", NOT_OBTAINED, 2)
            self.give("if/3", 1, "10.2.0.1", 24)
            self.address("POST", "if/3", FAILED, 2)
            self.take("if/3", 1, "10.2.0.1", 24)
            # What is given with DHCP is told back, and not looked at.
            self.address("POST", "if/3", address_done("Create", "", "10.3.0.1", 8), 2, "10.3.0.1", 8)
            self.check("GET", "/routing/if", GOT, routing_ports((3, {})))
        self.each_way(scene)

    def test_variables_are_refused_in_their_order(self):
        good = (0, "10.1.0.1", 24)
        rows = [
            *((FAILED, given) for given in ((0, "10.1.0", 24), (0, "x", None), (3, "1:2", 64), (2, "x"))),
            *((REFUSED, given) for given in (
                (None, *good[1:]), (5, *good[1:]), (-1, *good[1:]), (0, None, 24), (0, "", 24),
                (0, "10.1.0.1", None), (0, "10.1.0.1", ""), (0, "10.1.0.1", 0), (0, "10.1.0.1", 33),
                (0, "10.1.0.1", -1), (0, "10.1.0.1", "x"), (0, "2001:db8::1", 24), (1, "2001:db8::1", 24),
                (3, "2001:db8::1", 0), (3, "2001:db8::1", 129), (3, "10.1.0.1", 24), (2, None, 33),
                (4, None, 129), (0, "224.0.0.1", 24), (0, "0.0.0.0", 24), (0, "127.0.0.1", 8),
                (0, "10.1.0.0", 24), (0, "10.1.0.255", 24), (3, "ff02::1", 64), (3, "::", 64))),
        ]

        def scene():
            self.route_vlans(10)
            for where in ("if/3", "vlanRtrIf/1"):
                for method in ("POST", "DELETE"):
                    for outcome, given in rows:
                        self.address(method, where, outcome, *given)
                    for extra in (None, "2", "-1"):
                        self.address(method, where, REFUSED, *good, extra=extra)
            for number in ("0", "55", "200", "354", "99999999999"):
                self.address("POST", f"if/{number}", REFUSED, *good)
            self.check("GET", "/routing/vlanRtrIf", GOT, vlan_interfaces((226, {})))
        self.each_way(scene)

    def test_networks_of_two_interfaces_do_not_overlap(self):
        def scene():
            for number in (3, 4):
                self.put(f"/routing/if/{number}/adminMode", 1, MODE_UPDATED)
                self.give(f"if/{number}", 3, "fe80::1", 64)  # the same on every link
            self.give("if/3", 0, "10.1.0.1", 24)
            self.address("POST", "if/4", ALREADY_SET, 0, "10.1.0.1", 24)
            self.address("POST", "if/4", ALREADY_SET, 0, "10.1.1.1", 16)
            self.give("if/3", 0, "10.1.0.1", 24)  # as it is
            self.address("POST", "if/3", ALREADY_SET, 1, "10.1.0.1", 24)
            self.check("GET", "/routing/if", GOT, routing_ports(
                (3, listed_addresses(("10.1.0.1", MASK_24), ("fe80::1/64",))),
                (4, listed_addresses(None, ("fe80::1/64",)))))
        self.each_way(scene)


class Uris(RoutingTest):
    def test_those_that_end_early(self):
        def scene():
            self.route_vlans(10)
            for word in ("", "/", "/admin", "/x"):
                self.put(f"/routing/if/3{word}", 1, MODE_UPDATED)
            for at, word in enumerate(("", "/", "/i", "/x"), 1):
                for where, kind, net in (("if/3", "", 1), ("vlanRtrIf/1", "Vlan ", 2)):
                    given = (f"10.{net}.{at}.1", 24)
                    for method, verb in (("POST", "Create"), ("DELETE", "Delete")):
                        self.check(method, f"/routing/{where}{word}", address_done(verb, kind, *given),
                                   variables=address_variables(0, *given))
        self.each_way(scene)

    def test_what_the_module_does_not_serve(self):
        wrong = [
            ("GET", "/routing/"), ("GET", "/routing/x"), ("GET", "/routing/if/"), ("GET", "/routing/if/3"),
            ("GET", "/routing/vlanRtrIf/"), ("GET", "/routing/vlanRtrIf/1/"),
            ("GET", "/routing/vlanRtrIf/1/ip"), ("GET", "/routing/vlanRtr"),
            ("GET", "/routing/vlanrtrif"), ("GET", "/routing/i"),
            ("GET", "/routing/vlanRtrIf/x"), ("GET", "/routing/if/3/ip"), ("PUT", "/routing"),
            ("PUT", "/routing/ipv4"), ("PUT", "/routing/ipv4/adminMod"), ("PUT", "/routing/ipv4/adminMode/"),
            ("PUT", "/routing/ipv5/adminMode"), ("PUT", "/routing/if"), ("PUT", "/routing/if/"),
            ("PUT", "/routing/if/x/adminMode"), ("PUT", "/routing/if/3/adminMode/"),
            ("PUT", "/routing/vlanRtrIf/1"), ("POST", "/routing"), ("POST", "/routing/if"),
            ("POST", "/routing/if/"), ("POST", "/routing/if/3/ip/"), ("POST", "/routing/if/3/ips"),
            ("POST", "/routing/vlanRtrIf/"), ("POST", "/routing/vlanRtrIf/1/ip/1"),
            ("DELETE", "/routing/if"), ("DELETE", "/routing/if/3/ip/1"), ("DELETE", "/routing/vlanRtrIf/"),
            ("DELETE", "/routing/vlanRtrIf/1/ipx"), ("DELETE", "/routing"),
        ]

        def scene():
            for method, uri in wrong:
                self.check(method, uri, BAD_REQUEST, variables=("value=1", "vlanId=1"))
            for uri in ("/rout", "/routings", "/Routing"):
                self.check("GET", uri, UNKNOWN_MODULE)
        self.each_way(scene)


class Failures(RoutingTest):
    """What becomes of requests when the switch fails, seen from outside."""

    ADDRESS = address_variables(0, "10.1.0.1", 24)
    CALLS = [
        ("GET", "/routing", (), "rpcclt_openapiRtrAdminModeGet"),
        ("PUT", "/routing/ipv6/adminMode", ("value=1",), "rpcclt_openapiRtrAdminModeSet"),
        ("PUT", "/routing/if/3/adminMode", ("value=1",), "rpcclt_openapiRtrIntfRtrAdminModeSet"),
        ("GET", "/routing/if", (), "rpcclt_openapiRtrIntfNextGet"),
        ("GET", "/routing/vlanRtrIf/1", (), "rpcclt_openapiIntfNameSizeGet"),
        ("GET", "/routing/vlanRtrIf/1", (), "rpcclt_openapiRtrIntfNameGet"),
        ("GET", "/routing/vlanRtrIf/1", (), "rpcclt_openapiRtrIntfVlanIdGet"),
        ("POST", "/routing/vlanRtrIf", ("vlanId=20",), "rpcclt_openapiRtrVlanIntfCreate"),
        ("DELETE", "/routing/vlanRtrIf", ("vlanId=10",), "rpcclt_openapiRtrVlanIntfDelete"),
        ("POST", "/routing/if/3/ip", ADDRESS, "rpcclt_openapiRtrIntfIpAddrAdd"),
        ("DELETE", "/routing/if/3/ip", ADDRESS, "rpcclt_openapiRtrIntfIpAddrDel"),
    ]

    def test_a_failing_call_is_answered_for_and_changes_nothing(self):
        def scene():
            self.route_vlans(10)
            self.create_vlans(20)
            before = self.daemon.lab("show", "running-config")
            for method, uri, variables, call in self.CALLS:
                self.daemon.lab("fault", call, "OPEN_E_FAIL")
                self.check(method, uri, FAILED, variables=variables)
            self.assertEqual(self.daemon.lab("show", "running-config"), before)
            self.assertEqual(self.daemon.lab("fault", "list"), "")
        self.each_way(scene)

    def test_lists_do_without_what_cannot_be_read(self):
        def scene():
            self.route_vlans(10, 20)
            self.give("vlanRtrIf/1", 0, "10.1.0.1", 24)
            self.daemon.lab("fault", "rpcclt_openapiRtrIntfVlanIdGet", "OPEN_E_FAIL")
            only_second = vlan_interfaces((227, {}))
            self.check("GET", "/routing/vlanRtrIf", GOT, only_second)
            self.daemon.lab("fault", "rpcclt_openapiRtrIntfIpAddrGet", "OPEN_E_FAIL")
            self.check("GET", "/routing/vlanRtrIf", GOT, vlan_interfaces((226, {}), (227, {})))
            self.daemon.lab("fault", "rpcclt_openapiIfFirstGet", "OPEN_E_FAIL")
            self.check("GET", "/routing/vlanRtrIf", NO_VLAN_INTERFACE, vlan_interfaces())
            self.daemon.lab("fault", "rpcclt_openapiIfFirstGet", "OPEN_E_FAIL", "2")  # 226 is taken for it
            self.check("GET", "/routing/vlanRtrIf/2", GOT, vlan_interface(2, 227, 20))
        self.each_way(scene)


if __name__ == "__main__":
    harness.main()
