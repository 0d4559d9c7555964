"""Every URI of the module vxlan: whole replies, as XML and as JSON, over both ports."""

import harness
from fabric import (INVALID, INVALID_TENANT, INVALID_VLAN, MODES, NO_MODE, NO_MULTICAST, NO_UNICAST,
                    FabricTest, multicast_groups, source_interface, tenant, tenants, unicast_groups,
                    vxlan_done)
from wire import ALREADY_SET, BAD_REQUEST, FAILED, GOT, REFUSED, UNKNOWN_MODULE

INVALID_INSTANCE = (2, "Invalid vxlan ID.")
INVALID_PORT = (2, "Invalid udp port.")
NO_TENANT_YET = (2, "Must set tenant firstly.")
STILL_RUNNING = (2, "Couldn't change vxlan mode if tunnel still running !")
IS_DEFAULT_GROUP = (2, " Conflict with default multicast group!!")
IS_TENANTS_GROUP = (2, "Conflict with VNI specific multicast group!!")
NO_HOSTS = ("224.0.1.0", "0.0.0.0", "127.0.0.1", "255.255.255.255")
NO_IPV4 = ("2001:db8::1", "10.0.0", "x")
LAST_TENANT = 16777214
READ = ("mode", "udpPort", "tenant", "tenant/5", "sourceIntf", "unicastGroup", "multicastGroup")


class VxlanTest(FabricTest):
    def mode(self, word):
        self.put("/vxlan/1/mode", MODES.index(word), vxlan_done("Update mode"))

    def change_mode(self, word):
        self.mode("disable")
        if word != "disable":
            self.mode(word)

    def in_each_mode(self, scene):
        """Plays the scene in both modes, each time on a switch in factory state."""
        for word in ("unicast", "multicast"):
            def whole():
                self.mode(word)
                scene(word)
            with self.subTest(mode=word):
                self.each_way(whole)

    def create_tenant(self, number, vid, outcome=None):
        self.check("POST", f"/vxlan/1/tenant/{number}/vlan/{vid}",
                   outcome or vxlan_done(f"Create tenant {number}"))

    def delete_tenant(self, number, vid, outcome=None):
        self.check("DELETE", f"/vxlan/1/tenant/{number}/vlan/{vid}",
                   outcome or vxlan_done(f"Delete tenant {number}"))

    def unicast(self, method, address, outcome=None):
        done = vxlan_done("Update unicast group" if method == "PUT" else f"Delete unicast group {address}")
        self.check(method, "/vxlan/1/unicastGroup", outcome or done, variables=(f"value={address}",))

    def default_group(self, address, outcome=None):
        self.put("/vxlan/1/multicastGroup", address, outcome or vxlan_done("Update default multicast group"))

    def group(self, number, address, outcome=None):
        self.put(f"/vxlan/1/tenant/{number}/multicastGroup", address,
                 outcome or vxlan_done("Update multicast group"))

    def source(self, kind, value, outcome=None):
        self.put(f"/vxlan/1/sourceIntf/{kind}", value, outcome or vxlan_done("Update source port"))


class Mode(VxlanTest):
    def check_mode(self, word):
        self.check("GET", "/vxlan/1/mode", GOT, {"mode": word})

    def test_mode(self):
        def scene():
            self.check_mode("disable")
            for word in ("disable", "unicast", "disable", "multicast", "disable", "disable"):
                self.mode(word)
                self.check_mode(word)
            for value in ("3", "-1", "99999999999"):
                self.put("/vxlan/1/mode", value, (2, "Invalid mode."))
            self.assert_missing_value_is_refused("PUT", "/vxlan/1/mode")
        self.each_way(scene)

    def test_it_changes_by_way_of_disable_only(self):
        def scene(word):
            for value in ("1", "2", "3", "-1"):
                self.put("/vxlan/1/mode", value, STILL_RUNNING)
            self.check_mode(word)
            self.put("/vxlan/1/mode", "x", vxlan_done("Update mode"))  # no number counts as 0
            self.check_mode("disable")
        self.in_each_mode(scene)

    def test_what_needs_a_mode(self):
        needs_any = [("GET", uri) for uri in ("udpPort", "tenant", "tenant/5", "sourceIntf")]
        needs_any += [("PUT", "udpPort"), ("PUT", "sourceIntf/if"), ("PUT", "sourceIntf/loopback"),
                      ("DELETE", "sourceIntf"), ("POST", "tenant/5/vlan/1"), ("DELETE", "tenant/5/vlan/1")]
        needs_multicast = [("PUT", "multicastGroup"), ("PUT", "tenant/5/multicastGroup"),
                           ("DELETE", "multicastGroup"), ("DELETE", "tenant/5/multicastGroup")]

        def scene():
            for method, uri in needs_any:
                self.check(method, f"/vxlan/1/{uri}", NO_MODE, variables=("value=1",))
            for word in ("disable", "unicast"):
                self.mode(word)
                for method, uri in needs_multicast:
                    self.check(method, f"/vxlan/1/{uri}", NO_MULTICAST, variables=("value=239.1.1.1",))
                self.check("GET", "/vxlan/1/multicastGroup", NO_MULTICAST, multicast_groups())
            for word in ("disable", "multicast"):
                self.change_mode(word)
                self.check("DELETE", "/vxlan/1/unicastGroup", NO_UNICAST, variables=("value=10.0.0.2",))
                self.check("GET", "/vxlan/1/unicastGroup", NO_UNICAST, unicast_groups())
                self.unicast("PUT", "10.0.0.2", NO_TENANT_YET)
            self.create_tenant(5, 1)
            self.unicast("PUT", "10.0.0.2", NO_UNICAST)
        self.each_way(scene)

    def test_there_is_one_instance(self):
        uris = [("GET", uri) for uri in READ]
        uris += [("PUT", uri) for uri in ("mode", "udpPort", "sourceIntf/if", "sourceIntf/loopback",
                                          "sourceIntf/vlan", "unicastGroup", "multicastGroup",
                                          "tenant/5/multicastGroup")]
        uris += [("DELETE", uri) for uri in ("tenant/5/vlan/1", "sourceIntf", "unicastGroup",
                                             "multicastGroup", "tenant/5/multicastGroup")]

        def scene():
            self.mode("unicast")
            for instance in ("0", "2", "99999999999"):
                for method, uri in (*uris, ("POST", "tenant/5/vlan/1")):
                    for variables in ((), ("value=1",)):
                        self.check(method, f"/vxlan/{instance}/{uri}", INVALID_INSTANCE, variables=variables)
            self.assertEqual(self.config("vxlan"), ["mode unicast"])
        self.each_way(scene)


class Settings(VxlanTest):
    def test_udp_port(self):
        def scene(_):
            self.check("GET", "/vxlan/1/udpPort", GOT, {"udpPort": 4789})
            for given, read in (("1", 1), ("65535", 65535), ("8472x", 8472)):
                self.put("/vxlan/1/udpPort", given, vxlan_done("Update udp port"))
                self.check("GET", "/vxlan/1/udpPort", GOT, {"udpPort": read})
            for value in ("0", "65536", "-1", "x", "4294972085"):
                self.put("/vxlan/1/udpPort", value, INVALID_PORT)
            self.assert_missing_value_is_refused("PUT", "/vxlan/1/udpPort")
            self.check("GET", "/vxlan/1/udpPort", GOT, {"udpPort": 8472})
        self.in_each_mode(scene)

    def check_source(self, kind="none", number=0):
        self.check("GET", "/vxlan/1/sourceIntf", GOT, source_interface(kind, number))

    def test_source_interface(self):
        def scene(_):
            self.create_vlans(10)
            self.route_vlans(20)
            self.check_source()
            for kind, value, read in (("if", 3, ("interface", 3)), ("if", 56, ("interface", 56)),
                                      ("loopback", 0, ("loopback", 0)), ("loopback", "x", ("loopback", 0)),
                                      ("if", 127, ("loopback", 7)), ("if", 226, ("vlan", 20)),
                                      ("loopback", 7, ("loopback", 7)), ("vlan", 20, ("vlan", 20))):
                self.source(kind, value)
                self.check_source(*read)
            for value in ("0", "55", "200", "227", "354", "-1", "x", "99999999999"):
                self.source("if", value, REFUSED)
            for value in ("8", "-1", "99999999999"):
                self.source("loopback", value, (2, "Invalid loopback id."))
            for value in ("0", "4095", "-1", "x"):
                self.source("vlan", value, INVALID_VLAN)
            for value in ("10", "30"):
                self.source("vlan", value, REFUSED)
            for kind in ("if", "loopback", "vlan"):
                self.assert_missing_value_is_refused("PUT", f"/vxlan/1/sourceIntf/{kind}")
            self.check_source("vlan", 20)
            for _ in range(2):
                self.check("DELETE", "/vxlan/1/sourceIntf", vxlan_done("Delete source port"))
            self.check_source()
        self.in_each_mode(scene)

    def test_the_source_interface_cannot_be_removed(self):
        def scene(_):
            self.route_vlans(10)
            self.source("vlan", 10)
            self.vlan_interface("DELETE", 10, FAILED)
            self.check_source("vlan", 10)
            self.check("DELETE", "/vxlan/1/sourceIntf", vxlan_done("Delete source port"))
            self.vlan_interface("DELETE", 10)
        self.in_each_mode(scene)


class Tenants(VxlanTest):
    def test_making_and_removing(self):
        def scene(word):
            absent = REFUSED if word == "unicast" else FAILED  # a multicast tenant is found by a walk
            self.create_vlans(10, 20, 4094)
            self.check("GET", "/vxlan/1/tenant", GOT, tenants())
            self.check("GET", "/vxlan/1/tenant/5000", absent)
            for number, vid in ((5000, 20), (1, 10), (LAST_TENANT, 4094)):
                self.create_tenant(number, vid)
                self.check("GET", f"/vxlan/1/tenant/{number}", GOT, {"tenant": tenant(number, vid)})
            self.check("GET", "/vxlan/1/tenant", GOT, tenants((1, 10), (5000, 20), (LAST_TENANT, 4094)))
            self.create_tenant(5000, 20, ALREADY_SET)
            self.create_tenant(5000, 1, FAILED)  # it has another VLAN
            self.create_tenant(5001, 20, FAILED)  # the VLAN has another tenant
            self.check("GET", "/vxlan/1/tenant/5001", absent)
            self.delete_tenant(5000, 10, REFUSED)
            self.delete_tenant(5001, 20, REFUSED)
            self.delete_tenant(5000, 20)
            self.delete_tenant(5000, 20, REFUSED)
            self.create_tenant(5001, 20)
            self.check("GET", "/vxlan/1/tenant", GOT, tenants((1, 10), (5001, 20), (LAST_TENANT, 4094)))
            self.delete_tenant(1, 10)
            self.delete_tenant(5001, 20)
            self.delete_tenant(LAST_TENANT, 4094)
            self.check("GET", "/vxlan/1/tenant", GOT, tenants())
        self.in_each_mode(scene)

    def test_ids_out_of_range(self):
        def scene(_):
            for number in ("0", "16777215", "4294967297", "99999999999"):
                self.create_tenant(number, 1, INVALID_TENANT)
                self.create_tenant(number, 0, INVALID_TENANT)
                self.delete_tenant(number, 1, INVALID_TENANT)
                self.delete_tenant(number, 0, INVALID_VLAN)
                self.check("GET", f"/vxlan/1/tenant/{number}", INVALID_TENANT)
            for vid in ("0", "4095", "4294967297", "99999999999"):
                self.create_tenant(5, vid, INVALID_VLAN)
                self.delete_tenant(5, vid, INVALID_VLAN)
            self.create_tenant(5, 30, (2, "VLAN 30 not yet created."))
            self.delete_tenant(5, 30, REFUSED)
            self.check("GET", "/vxlan/1/tenant", GOT, tenants())
        self.in_each_mode(scene)

    def test_a_vlan_with_a_tenant_cannot_be_deleted(self):
        def scene(_):
            self.create_vlans(10)
            self.create_tenant(5000, 10)
            self.check("DELETE", "/vlans/10", FAILED)
            self.delete_tenant(5000, 10)
            self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
        self.in_each_mode(scene)

    def test_there_is_room_for_as_many_as_the_switch_has(self):
        def scene(_):
            self.daemon.lab("limit", "vxlan-tenants", "2")
            self.create_vlans(10, 20)
            self.create_tenant(1, 1)
            self.create_tenant(2, 10)
            self.create_tenant(3, 20, REFUSED)
            self.daemon.lab("limit", "vxlan-tenants", "1024")
            self.check("GET", "/vxlan/1/tenant", GOT, tenants((1, 1), (2, 10)))
        self.in_each_mode(scene)


class UnicastGroups(VxlanTest):
    def check_groups(self, *addresses):
        self.check("GET", "/vxlan/1/unicastGroup", GOT, unicast_groups(*addresses))

    def test_adding_and_removing(self):
        def scene():
            self.mode("unicast")
            self.create_vlans(10)
            self.check("GET", "/vxlan/1/unicastGroup", REFUSED)
            self.unicast("PUT", "10.0.0.2", NO_TENANT_YET)
            self.create_tenant(5000, 10)
            self.check_groups()
            for address in ("10.0.0.2", "10.0.0.10", "9.255.255.1"):
                self.unicast("PUT", address)
            self.unicast("PUT", "10.0.0.2", ALREADY_SET)
            self.create_tenant(1, 1)  # a later tenant has them all, and is now the first one
            self.check_groups("9.255.255.1", "10.0.0.2", "10.0.0.10")
            for address in (*NO_HOSTS, *NO_IPV4):
                self.unicast("PUT", address, REFUSED)
                self.unicast("DELETE", address, REFUSED)
            for method in ("PUT", "DELETE"):
                self.assert_missing_value_is_refused(method, "/vxlan/1/unicastGroup")
            self.unicast("DELETE", "10.0.0.2")
            self.unicast("DELETE", "10.0.0.2", REFUSED)
            self.check_groups("9.255.255.1", "10.0.0.10")
        self.each_way(scene)

    def test_the_list_stays_after_the_last_tenant(self):
        def scene():
            self.mode("unicast")
            self.create_tenant(5000, 1)
            self.unicast("PUT", "10.0.0.2")
            self.delete_tenant(5000, 1)
            self.check("GET", "/vxlan/1/unicastGroup", REFUSED)
            self.unicast("PUT", "10.0.0.3", NO_TENANT_YET)
            self.create_tenant(5001, 1)
            self.check_groups("10.0.0.2")
            self.delete_tenant(5001, 1)
            self.unicast("DELETE", "10.0.0.2")
            self.create_tenant(5001, 1)
            self.check_groups()
        self.each_way(scene)

    def test_there_is_room_for_as_many_as_the_switch_has(self):
        def scene():
            self.mode("unicast")
            self.create_tenant(5000, 1)
            addresses = [f"10.0.0.{number}" for number in range(1, 129)]
            for address in addresses:
                self.unicast("PUT", address)
            self.unicast("PUT", "10.0.0.200", REFUSED)
            self.check_groups(*addresses)
        self.each_way(scene)


class MulticastGroups(VxlanTest):
    def check_groups(self, *expected):
        self.check("GET", "/vxlan/1/multicastGroup", GOT, multicast_groups(*expected))

    def test_setting_and_removing(self):
        no_tenant = (2, "VxLAN tenant 5001 does not exist.")

        def scene():
            self.mode("multicast")
            self.create_vlans(10, 20)
            self.check("GET", "/vxlan/1/multicastGroup", REFUSED)  # as there is no tenant
            self.default_group("239.1.1.1")
            for number, vid in ((5000, 10), (1, 1), (7, 20)):
                self.create_tenant(number, vid)
            self.check_groups("239.1.1.1")
            self.group(5000, "224.0.1.0")
            self.group(1, "239.255.255.255")
            self.group(1, "224.0.1.0")  # two tenants may share one
            self.check_groups("239.1.1.1", (1, "224.0.1.0"), (5000, "224.0.1.0"))
            self.group(7, "239.1.1.1", IS_DEFAULT_GROUP)
            self.default_group("224.0.1.0", IS_TENANTS_GROUP)
            self.group(5001, "239.1.1.2", no_tenant)
            self.check("DELETE", "/vxlan/1/tenant/5001/multicastGroup", no_tenant)
            for _ in range(2):
                self.check("DELETE", "/vxlan/1/tenant/1/multicastGroup", vxlan_done("Delete multicast group"))
                self.check("DELETE", "/vxlan/1/multicastGroup", vxlan_done("Delete default multicast group"))
            self.check_groups("none", (5000, "224.0.1.0"))
        self.each_way(scene)

    def test_what_is_refused(self):
        def scene():
            self.mode("multicast")
            self.create_tenant(5000, 1)
            for address in ("0.0.0.0", "10.0.0.2", "224.0.0.255", "240.0.0.0", "ff0e::1", *NO_IPV4):
                self.default_group(address, REFUSED)
                self.group(5000, address, REFUSED)
            for uri in ("multicastGroup", "tenant/5000/multicastGroup"):
                self.assert_missing_value_is_refused("PUT", f"/vxlan/1/{uri}")
            for number in ("0", "16777215"):
                self.group(number, "239.1.1.1", INVALID_TENANT)
                self.check("DELETE", f"/vxlan/1/tenant/{number}/multicastGroup", INVALID_TENANT)
            self.check_groups()
        self.each_way(scene)


class ModeChange(VxlanTest):
    def test_settings_stay(self):
        def scene():
            self.mode("unicast")
            self.create_tenant(5000, 1)
            self.unicast("PUT", "10.0.0.2")
            self.source("loopback", 3)
            self.put("/vxlan/1/udpPort", 8472, vxlan_done("Update udp port"))
            self.change_mode("multicast")
            self.check("GET", "/vxlan/1/tenant", GOT, tenants((5000, 1)))
            self.check("GET", "/vxlan/1/tenant/5000", GOT, {"tenant": tenant(5000, 1)})
            self.check("GET", "/vxlan/1/sourceIntf", GOT, source_interface("loopback", 3))
            self.check("GET", "/vxlan/1/udpPort", GOT, {"udpPort": 8472})
            self.default_group("239.1.1.1")
            self.group(5000, "239.1.1.2")
            self.change_mode("unicast")
            self.check("GET", "/vxlan/1/multicastGroup", NO_MULTICAST, multicast_groups("239.1.1.1"))
            self.check("GET", "/vxlan/1/unicastGroup", GOT, unicast_groups("10.0.0.2"))
            self.change_mode("multicast")
            self.check("GET", "/vxlan/1/multicastGroup", GOT,
                       multicast_groups("239.1.1.1", (5000, "239.1.1.2")))
        self.each_way(scene)


class Uris(VxlanTest):
    def test_what_the_module_does_not_serve(self):
        wrong = [
            ("GET", "/vxlan"), ("GET", "/vxlan/"), ("GET", "/vxlan/1"), ("GET", "/vxlan/1/"),
            ("GET", "/vxlan//mode"), ("GET", "/vxlan/x/mode"), ("GET", "/vxlan/-1/mode"),
            ("GET", "/vxlan/1/mod"), ("GET", "/vxlan/1/modes"),
            ("GET", "/vxlan/1/edom"), ("GET", "/vxlan/1/mode/"),
            ("GET", "/vxlan/1/udpport"), ("GET", "/vxlan/1/ten"), ("GET", "/vxlan/1/tenants"),
            ("GET", "/vxlan/1/tenant/"), ("GET", "/vxlan/1/tenant/5/"), ("GET", "/vxlan/1/tenant/5/vlan/1"),
            ("GET", "/vxlan/1/tenant/5/multicastGroup"), ("GET", "/vxlan/1/sourceIntf/if"),
            ("PUT", "/vxlan/1"), ("PUT", "/vxlan/1/sourceIntf"), ("PUT", "/vxlan/1/sourceIntf/"),
            ("PUT", "/vxlan/1/sourceIntf/i"), ("PUT", "/vxlan/1/sourceIntf/fi"),
            ("PUT", "/vxlan/1/sourceIntf/ifs"), ("PUT", "/vxlan/1/sourceIntf/lag"),
            ("PUT", "/vxlan/1/tenant/5"), ("PUT", "/vxlan/1/tenant/5/unicastGroup"),
            ("PUT", "/vxlan/1/tenant//multicastGroup"), ("POST", "/vxlan/1/tenant"),
            ("POST", "/vxlan/1/tenant/5"), ("POST", "/vxlan/1/tenant/5/vlan"),
            ("POST", "/vxlan/1/tenant/5/vlan/"),
            ("POST", "/vxlan/1/tenant/5/vlan/1/"), ("POST", "/vxlan/1/tenant//vlan/1"),
            ("POST", "/vxlan//tenant/5/vlan/1"), ("POST", "/vxlan/1/mode"), ("POST", "/vxlan/1/unicastGroup"),
            ("DELETE", "/vxlan/1"), ("DELETE", "/vxlan/1/mode"), ("DELETE", "/vxlan/1/udpPort"),
            ("DELETE", "/vxlan/1/tenant"), ("DELETE", "/vxlan/1/tenant/5"),
            ("DELETE", "/vxlan/1/tenant/5/vlan/1/"), ("DELETE", "/vxlan/1/sourceIntf/if"),
            ("DELETE", "/vxlan/1/unicastGroup/10.0.0.2"), ("DELETE", "/vxlan/1/multicastGrou"),
        ]

        def scene():
            self.mode("unicast")
            for method, uri in wrong:
                self.check(method, uri, BAD_REQUEST, variables=("value=1",))
            for uri in ("/vxla", "/vxlans", "/VXLAN/1/mode"):
                self.check("GET", uri, UNKNOWN_MODULE)
            self.assertEqual(self.config("vxlan"), ["mode unicast"])
        self.each_way(scene)


class Failures(VxlanTest):
    """What becomes of requests when the switch fails, seen from outside."""

    def fail(self, call, code="OPEN_E_FAIL"):
        self.daemon.lab("fault", call if call.startswith("openapi") else f"rpcclt_openapi{call}", code)

    def test_a_tenant_that_cannot_be_made_whole_is_not_made(self):
        def scene():
            self.mode("unicast")
            self.source("if", 3)
            self.create_tenant(1, 1)
            self.unicast("PUT", "10.0.0.2")
            self.create_vlans(10)
            before = self.config("vxlan")
            for call in ("L2oL3TenantCreate", "L2oL3TenantVlanAdd", "L2oL3VxlanSourcePortGet",
                         "L2oL3VxlanSourcePortSet", "L2oL3TenantAddAllVtep"):
                self.fail(call)
                self.create_tenant(5000, 10, FAILED)
                self.assertEqual(self.config("vxlan"), before)
            self.check("GET", "/vxlan/1/tenant", GOT, tenants((1, 1)))
            self.create_tenant(5000, 10)  # the VLAN is free
        self.each_way(scene)

    def test_what_the_vlan_check_says(self):
        def scene(_):
            for code, outcome in (("OPEN_E_PARAM", INVALID), ("OPEN_E_FAIL", (2, "VLAN 1 not yet created.")),
                                  ("OPEN_E_NOT_FOUND", REFUSED)):
                self.fail("openapiVlanCreatedCheck", code)
                self.create_tenant(5000, 1, outcome)
        self.in_each_mode(scene)

    def test_the_mode_cannot_be_read(self):
        uris = [("GET", uri) for uri in READ]
        uris += [("PUT", "mode"), ("PUT", "udpPort"), ("DELETE", "sourceIntf"), ("POST", "tenant/5/vlan/1"),
                 ("DELETE", "tenant/5/vlan/1")]

        def scene():
            for method, uri in uris:
                for call in ("L2oL3SwitchTunnelModeGet", "L2oL3SwitchTunnelMultiModeGet"):
                    self.fail(call)
                    self.check(method, f"/vxlan/1/{uri}", REFUSED, variables=("value=1",))
        self.each_way(scene)

    def test_turning_off_clears_multicast_when_clearing_unicast_fails(self):
        def scene():
            self.mode("unicast")
            self.fail("L2oL3SwitchTunnelModeSet")
            self.mode("disable")  # which it is not: the second call was good
            self.check("GET", "/vxlan/1/mode", GOT, {"mode": "unicast"})
            for call in ("L2oL3SwitchTunnelModeSet", "L2oL3SwitchTunnelMultiModeSet"):
                self.fail(call)
            self.put("/vxlan/1/mode", 0, FAILED)
        self.each_way(scene)

    def test_other_failures(self):
        calls = [
            ("unicast", "GET", "udpPort", "L2oL3SwitchVxlanUdpDestPortGet"),
            ("unicast", "PUT", "udpPort", "L2oL3SwitchVxlanUdpDestPortSet"),
            ("unicast", "GET", "sourceIntf", "L2oL3VxlanSourcePortGet"),
            ("unicast", "PUT", "sourceIntf/if", "L2oL3VxlanSourcePortSet"),
            ("unicast", "PUT", "sourceIntf/loopback", "Dot1LoopbackIdMaxGet"),
            ("unicast", "PUT", "sourceIntf/loopback", "LoopbackIfNumGet"),
            ("unicast", "PUT", "sourceIntf/vlan", "Dot1VlanMaxGet"),
            ("unicast", "DELETE", "tenant/5/vlan/1", "L2oL3TenantVlanRemove"),
            ("multicast", "GET", "udpPort", "L2oL3SwitchVxlanUdpDstPortGetZYL"),
            ("multicast", "PUT", "udpPort", "L2oL3SwitchVxlanUdpDstPortSetZYL"),
            ("multicast", "GET", "sourceIntf", "L2oL3VxlanSourcePortGetZYL"),
            ("multicast", "PUT", "sourceIntf/if", "L2oL3VxlanSourcePortSetZYL"),
            ("multicast", "DELETE", "tenant/5/vlan/1", "L2oL3TenantSet"),
            ("multicast", "DELETE", "multicastGroup", "L2oL3DefaultIPMCSetZYL"),
            ("multicast", "DELETE", "tenant/5/multicastGroup", "L2oL3IPMCSet"),
        ]

        def scene(word):
            self.create_tenant(5, 1)
            before = self.config("vxlan")
            for mode, method, uri, call in calls:
                if mode == word:
                    self.fail(call)
                    self.check(method, f"/vxlan/1/{uri}", FAILED, variables=("value=1",))
            self.assertEqual(self.config("vxlan"), before)
            self.assertEqual(self.daemon.lab("fault", "list"), "")
        self.in_each_mode(scene)


if __name__ == "__main__":
    harness.main()
