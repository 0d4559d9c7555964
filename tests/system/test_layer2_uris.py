"""Every URI of the modules if, lag and pml: whole replies, as XML and as JSON, over both ports."""

import json

import harness
import wire
from scenes import UriTest
from wire import ALREADY_SET, BAD_REQUEST, FAILED, GOT, REFUSED, Rows

INVALID = (1, "The value of parameter is invalid.")
VLAN_NOT_VALID = (2, "VLAN ID not valid.")

# Ports 1 and 2 are copper, 1 and 0.1 Gbit/s; the others are cages, 10 Gbit/s. Port 4 has no cable.
PROFILE = json.dumps({"mac": "02:00:5E:10:00:F0", "ports": [
    {"name": "0/1", "speed_mbps": 1000, "copper": True}, {"name": "0/2", "speed_mbps": 100, "copper": True},
    {"name": "0/3"}, {"name": "0/4", "cabled": False}, {"name": "0/5"}, {"name": "0/6"}]})
PORTS = range(1, 7)


def details(number, name, **differences):
    """What GET /if/{number} says of a cage with link in factory state, but for the differences."""
    facts = {"ifNum": number, "interfaceName": name, "description": "-", "adminState": "enable",
             "linkState": "up", "speed": "full 10gsx", "pvid": 1, "acceptFrameType": "all",
             "autoNegMode": "disable", "duplexMode": "full", "MAC_address": "02:00:5E:10:00:F3",
             "MTU_size": 1518}
    return {"interface": {**facts, **differences}}


def participations(*entries):
    return {"participations": Rows("participation", [(at, {"vlanId": vid}) for at, vid in entries])}


def participation(number, vid, mode, tagging):
    return {"participation": {"ifNum": number, "vlanId": vid, "participationMode": mode,
                              "isTagging": tagging}}


class Layer2Test(UriTest):
    profile = PROFILE


class Interfaces(Layer2Test):
    def test_list(self):
        def scene():
            rows = [(n, {"ifNum": n}) for n in PORTS]
            self.check("GET", "/if", GOT, {"interfaces": Rows("interface", rows)})
        self.each_way(scene)

    def test_details_of_every_kind_of_interface(self):
        nothing = {"speed": "unknown", "pvid": 0, "autoNegMode": "unknown", "duplexMode": "unknown",
                   "MAC_address": "02:00:5E:10:00:F0"}

        def scene():
            self.check("GET", "/if/1", GOT, details(1, "0/1", speed="auto neg", autoNegMode="enable",
                                                    MAC_address="02:00:5E:10:00:F1"))
            self.check("GET", "/if/3", GOT, details(3, "0/3"))
            self.check("GET", "/if/4", GOT, details(4, "0/4", linkState="down",
                                                    MAC_address="02:00:5E:10:00:F4"))
            self.check("GET", "/if/55", GOT, details(55, "cpu", **nothing))
            self.check("GET", "/if/56", GOT, details(56, "3/1", linkState="down", speed="LAG",
                                                     autoNegMode="unknown",
                                                     MAC_address="02:00:5E:10:01:28"))
            self.check("GET", "/if/120", GOT, details(120, "loopback0", **nothing))
            for absent in ("0", "7", "128", "226", "354", "4294967295", "99999999999999999999"):
                self.check("GET", f"/if/{absent}", REFUSED)
        self.each_way(scene)

    def test_settings(self):
        def updated(what):
            return (0, f"Update {what} of Interface 3 successfully.")

        def scene():
            self.put("/if/3/adminState", 0, updated("administrative state"))
            self.put("/if/3/description", "to+%22rack%22+7", updated("description"))
            self.put("/if/3/mtuSize", 9216, updated("MTU size"))
            self.put("/if/3/speed", 7, updated("speed"))
            self.put("/if/3/acceptFrameType", 2, updated("acceptFrameType"))
            self.daemon.lab("wait")
            self.check("GET", "/if/3", GOT, details(
                3, "0/3", description='to "rack" 7', adminState="disable", linkState="down",
                speed="full 1000sx", acceptFrameType="tagged", MTU_size=9216))
            self.put("/if/3/adminState", 1, updated("administrative state"))
            self.daemon.lab("wait")
            for uri, value in (("adminState", 2), ("adminState", -1), ("mtuSize", 1517), ("mtuSize", 12271),
                               ("speed", 0), ("speed", 9), ("speed", 131), ("acceptFrameType", 0),
                               ("acceptFrameType", 4), ("description", "a%0Ab")):
                self.put(f"/if/3/{uri}", value, REFUSED)
            self.check("GET", "/if/3", GOT, details(
                3, "0/3", description='to "rack" 7', speed="full 1000sx", acceptFrameType="tagged",
                MTU_size=9216))
            for uri in ("adminState", "mtuSize", "speed", "acceptFrameType", "pvid", "autoNegMode",
                        "switchportMode", "trunk/pvid", "access/vlan", "trunk/vlan", "vlan/1/taggingMode"):
                self.assert_missing_value_is_refused("PUT", f"/if/3/{uri}")
            self.assert_missing_value_is_refused("PUT", "/if/3/counters/reset", "counter")
        self.each_way(scene)

    def test_description_has_a_length(self):
        def scene():
            for variables in ((), ("value=",), (f"value={'d' * 65}",), (f"value={'d' * 300}",)):
                self.check("PUT", "/if/3/description", INVALID, variables=variables)
            for text in ("x", "d" * 64):
                self.put("/if/3/description", text, (0, "Update description of Interface 3 successfully."))
                self.check("GET", "/if/3", GOT, details(3, "0/3", description=text))
            self.check("PUT", "/if/7/description", REFUSED, variables=("value=x",))
        self.each_way(scene)

    def test_auto_negotiation_is_for_copper(self):
        def scene():
            unable = (1, "Unable to update auto-negotiation mode of Interface 3.")
            done = (0, "Update auto-negotiation mode of Interface 1 successfully.")
            copper = {"MAC_address": "02:00:5E:10:00:F1"}
            self.put("/if/3/autoNegMode", 1, unable)
            self.put("/if/3/autoNegMode", 2, REFUSED)
            for value in ("2", "-1", "x", "1x"):
                self.put("/if/1/autoNegMode", value, REFUSED)
            self.put("/if/1/autoNegMode", 0, done)
            self.check("GET", "/if/1", GOT, details(1, "0/1", speed="full 1000sx", **copper))
            self.put("/if/1/speed", 2, (0, "Update speed of Interface 1 successfully."))
            self.check("GET", "/if/1", GOT, details(1, "0/1", speed="half 100tx", duplexMode="half", **copper))
            self.put("/if/1/autoNegMode", 1, done)
            self.check("GET", "/if/1", GOT, details(1, "0/1", speed="auto neg", autoNegMode="enable", **copper))
        self.each_way(scene)

    def test_pending_changes(self):
        def pending(*numbers):
            return {"pending_interfaces": Rows("interface", [
                (i, {"ifNum": n, "pending_type": "pending change"}) for i, n in enumerate(numbers, 1)])}

        def scene():
            self.check("GET", "/if/pendingChanges", GOT, pending())
            self.daemon.lab("hold")
            for number in (60, 3, 120):
                self.put(f"/if/{number}/description", "x",
                         (0, f"Update description of Interface {number} successfully."))
            self.put("/if/5/adminState", 1, (0, "Update administrative state of Interface 5 successfully."))
            self.check("GET", "/if/pendingChanges", GOT, pending(3, 60, 120))
            self.daemon.lab("release")
            self.daemon.lab("wait")
            self.check("GET", "/if/pendingChanges", GOT, pending())
        self.each_way(scene)


class Counters(Layer2Test):
    def counters(self, number, values):
        """Every counter the interface has, 0 but for the values {id: value}."""
        names = [line.split() for line in self.daemon.lab("counter", "names").splitlines()]
        had = [int(line.split()[0]) for line in self.daemon.lab("counter", "list", number).splitlines()]
        rows = [(at, {"counterId": i, "counterName": names[i][1], "counterValueL": values.get(i, 0) % 2**32,
                      "counterValueH": values.get(i, 0) >> 32}) for at, i in enumerate(had, 1)]
        return {"counters": Rows("counter", rows)}

    def test_counters(self):
        def scene():
            for name, number, lacks in (("0/3", 3, (0, 34, 55, 62)), ("0/1", 1, (0, 62)), ("3/1", 56, (2,)),
                                        ("cpu", 55, (2, 34)), ("loopback0", 120, range(63))):
                expected = self.counters(name, {})
                listed = {row["counterId"] for _, row in expected["counters"]}
                self.assertFalse(listed & set(lacks), name)
                self.check("GET", f"/if/{number}/counters", GOT, expected)
            self.daemon.lab("counter", "set", "0/3", "CTR_RX_256_511", str(2**64 - 1))
            self.daemon.lab("counter", "set", "0/3", "20", str(5 * 2**32 + 7))
            self.daemon.lab("counter", "add", "0/3", "CTR_TX_TOTAL_BYTES", "3")
            self.check("GET", "/if/3/counters", GOT, self.counters("0/3", {5: 2**64 - 1, 20: 5 * 2**32 + 10}))
            self.check("PUT", "/if/3/counters/reset",
                       (0, "Reset the counter CTR_RX_256_511 of Interface 3 successfully."),
                       variables=("counter=5",))
            self.check("GET", "/if/3/counters", GOT, self.counters("0/3", {20: 5 * 2**32 + 10}))
            self.check("PUT", "/if/3/counters/reset", (0, "Reset all counters of Interface 3 successfully."),
                       variables=("counter=-1",))
            self.check("GET", "/if/3/counters", GOT, self.counters("0/3", {}))
            for counter in ("0", "62", "63", "-2", "4294967295"):
                self.check("PUT", "/if/3/counters/reset", REFUSED, variables=(f"counter={counter}",))
            for absent in (7, 128):
                self.check("GET", f"/if/{absent}/counters", REFUSED)
                self.check("PUT", f"/if/{absent}/counters/reset", REFUSED, variables=("counter=-1",))
        self.each_way(scene)


class Membership(Layer2Test):
    def test_joining_and_leaving_a_vlan(self):
        def scene():
            self.create_vlans(10, 20, 30)
            for vid in (10, 30):
                self.check("POST", f"/if/3/vlan/{vid}",
                           (0, f"Configure Interface 3 to VLAN {vid} successfully."))
            self.put("/if/3/vlan/30/taggingMode", 1,
                     (0, "Update tagging mode of Interface 3 in VLAN 30 successfully."))
            # Positions count all VLANs from 0: 1, 10, 20, 30.
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1), (1, 10), (3, 30)))
            self.check("GET", "/if/3/vlan/30", GOT, participation(3, 30, "Include", 1))
            self.check("GET", "/if/3/vlan/20", GOT, participation(3, 20, "Autodetect", 0))
            self.put("/if/3/pvid", 10, (0, "Update PVID of Interface 3 successfully."))
            self.check("GET", "/if/3", GOT, details(3, "0/3", pvid=10))
            self.check("DELETE", "/if/3/vlan/10", (1, "Delete VLAN 10 failed. VLAN 10 is native vlan."))
            self.check("DELETE", "/if/3/vlan/30", (0, "Delete Interface 3 from VLAN 30 successfully."))
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1), (1, 10)))
            for uri in ("/if/3/vlan/40", "/if/7/vlan/10", "/if/55/vlan/10", "/if/3/vlan/4095"):
                self.check("POST", uri, REFUSED)
                self.check("GET", uri, REFUSED)
                self.check("DELETE", uri, REFUSED)
                self.check("PUT", f"{uri}/taggingMode", REFUSED, variables=("value=1",))
            self.put("/if/3/pvid", 40, REFUSED)
            self.put("/if/3/vlan/10/taggingMode", 2, REFUSED)
            self.check("GET", "/if/7/vlan", REFUSED)
        self.each_way(scene)

    def test_access_mode(self):
        def scene():
            self.create_vlans(10, 20)
            self.check("POST", "/if/3/vlan/20", (0, "Configure Interface 3 to VLAN 20 successfully."))
            self.put("/if/3/vlan/20/taggingMode", 1,
                     (0, "Update tagging mode of Interface 3 in VLAN 20 successfully."))
            self.put("/if/3/access/vlan", 10, (0, "Update access mode vlan of Interface 3 successfully."))
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1), (2, 20)))
            self.put("/if/3/switchportMode", 2, (0, "Update switchport mode of Interface 3 successfully."))
            self.check("GET", "/if/3/switchportMode", GOT, {"mode": "access"})
            self.check("GET", "/if/3/vlan", GOT, participations((1, 10)))
            self.check("GET", "/if/3/vlan/10", GOT, participation(3, 10, "Include", 0))
            self.check("GET", "/if/3/vlan/20", GOT, participation(3, 20, "Exclude", 0))
            self.check("GET", "/if/3", GOT, details(3, "0/3", pvid=10))
            self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1)))
            self.put("/if/3/switchportMode", 1, (0, "Update switchport mode of Interface 3 successfully."))
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1), (1, 20)))
            self.check("GET", "/if/3/vlan/20", GOT, participation(3, 20, "Include", 1))
            for value in ("0", "-1", "4095", "x", "4294967306"):
                self.put("/if/3/access/vlan", value, VLAN_NOT_VALID)
            self.put("/if/3/access/vlan", 30, REFUSED)
            for value in ("0", "4", "-1"):
                self.put("/if/3/switchportMode", value, REFUSED)
            self.check("GET", "/if/55/switchportMode", REFUSED)
        self.each_way(scene)

    def trunk(self, method, vlans, outcome=None):
        verb = "Delete" if method == "DELETE" else "Update"
        self.check(method, "/if/3/trunk/vlan",
                   outcome or (0, f"{verb} trunk mode vlan of Interface 3 successfully."),
                   variables=(f"value={vlans}",))

    def test_trunk_mode(self):
        def scene():
            self.create_vlans(10, 15, 20, 30)
            self.put("/if/3/switchportMode", 3, (0, "Update switchport mode of Interface 3 successfully."))
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1)))
            self.trunk("POST", "10-20,30")
            self.check("GET", "/if/3/vlan", GOT, participations((0, 1), (1, 10), (2, 15), (3, 20), (4, 30)))
            self.check("GET", "/if/3/vlan/15", GOT, participation(3, 15, "Include", 1))
            self.check("GET", "/if/3/vlan/1", GOT, participation(3, 1, "Include", 0))
            self.put("/if/3/trunk/pvid", 30, (0, "Update trunk mode pvid of Interface 3 successfully."))
            self.check("GET", "/if/3/vlan", GOT, participations((1, 10), (2, 15), (3, 20), (4, 30)))
            self.check("GET", "/if/3/vlan/30", GOT, participation(3, 30, "Include", 0))
            self.check("GET", "/if/3", GOT, details(3, "0/3", pvid=30))
            self.trunk("DELETE", "11-20")
            self.check("GET", "/if/3/vlan", GOT, participations((1, 10), (4, 30)))
            self.trunk("POST", "20")
            self.check("GET", "/if/3/vlan", GOT, participations((1, 10), (3, 20), (4, 30)))
            self.trunk("PUT", "15,4000-4094")
            self.check("GET", "/if/3/vlan", GOT, participations((2, 15), (4, 30)))
            self.create_vlans(4000)
            self.check("GET", "/if/3/vlan", GOT, participations((2, 15), (4, 30), (5, 4000)))
            for vlans in ("0,5", "4095", "x", "-1", ",5"):
                for method in ("POST", "PUT", "DELETE"):
                    self.trunk(method, vlans, VLAN_NOT_VALID)
            for vlans in ("20-10", "10,", "10,,20", "10+,20", "10-", "10-20-30", "10x", "5,4095", "1-4095",
                          "010"):
                for method in ("POST", "PUT", "DELETE"):
                    self.trunk(method, vlans, REFUSED)
            self.check("GET", "/if/3/vlan", GOT, participations((2, 15), (4, 30), (5, 4000)))
            for method in ("POST", "DELETE"):
                self.assert_missing_value_is_refused(method, "/if/3/trunk/vlan")
            self.check("POST", "/if/55/trunk/vlan", REFUSED, variables=("value=10",))
            self.put("/if/3/trunk/pvid", 4095, VLAN_NOT_VALID)
            self.put("/if/3/trunk/pvid", 40, REFUSED)
        self.each_way(scene)


class Lags(Layer2Test):
    def lag(self, number, *ports):
        return {"lag_interface": {"id": number, "name": f"lag{number}", "members": Rows("member", [
            (i, {"portNum": port}) for i, port in enumerate(ports, 1)])}}

    def test_list(self):
        def scene():
            rows = [(n, {"id": n}) for n in range(1, 65)]
            self.check("GET", "/lag", GOT, {"lag_interfaces": Rows("lag_interface", rows)})
        self.each_way(scene)

    def test_members(self):
        def scene():
            self.check("GET", "/lag/1", GOT, self.lag(1))
            for port in (5, 3):
                self.check("POST", f"/lag/1/port/{port}", (0, f"Configure port {port} to LAG 1 successfully."))
            self.check("GET", "/lag/1", GOT, self.lag(1, 3, 5))
            self.daemon.lab("wait")
            # The LAG takes part in VLANs in the place of its members.
            self.check("GET", "/if/3/vlan", GOT, participations())
            self.check("GET", "/if/56/vlan", GOT, participations((0, 1)))
            self.check("GET", "/if/56", GOT, details(56, "3/1", speed="LAG", autoNegMode="unknown",
                                                     MAC_address="02:00:5E:10:01:28"))
            self.check("POST", "/lag/1/port/5", ALREADY_SET)
            self.check("POST", "/lag/2/port/5", FAILED)
            self.check("DELETE", "/lag/2/port/5", REFUSED)
            self.check("DELETE", "/lag/1/port/5", (0, "Delete port 5 from LAG 1 successfully."))
            self.check("DELETE", "/lag/1/port/5", REFUSED)
            self.check("GET", "/lag/1", GOT, self.lag(1, 3))
            self.check("GET", "/if/5/vlan", GOT, participations((0, 1)))
            for lag in ("0", "65", "99999999999"):
                self.check("GET", f"/lag/{lag}", REFUSED)
                self.check("POST", f"/lag/{lag}/port/6", REFUSED)
                self.check("DELETE", f"/lag/{lag}/port/6", REFUSED)
            for port in ("0", "7", "55", "56", "99999999999"):
                self.check("POST", f"/lag/1/port/{port}", REFUSED)
        self.each_way(scene)


class MacLocking(Layer2Test):
    MAC = "02:AB:cd:00:00:01"

    def test_sticky_mode(self):
        def scene():
            def sticky(word):
                return (0, "Get interface sticky mode successfully."), {"sticky": word}

            self.check("GET", "/pml/if/5/sticky", *sticky("disable"))
            for value, word in (("1", "enable"), ("0", "disable"), ("1", "enable"), ("2", "disable")):
                self.check("PUT", "/pml/if/5/sticky",
                           (0, f"Update interface sticky mode to {word} successfully."), {},
                           variables=(f"value={value}",))
                self.check("GET", "/pml/if/5/sticky", *sticky(word))
            self.assert_missing_value_is_refused("PUT", "/pml/if/5/sticky")
            self.check("GET", "/pml/if/55/sticky", REFUSED)
            self.check("PUT", "/pml/if/7/sticky", REFUSED, variables=("value=1",))
        self.each_way(scene)

    def macs(self, *entries):
        return {"interface": Rows("mac", [
            (i, {"macAddr": mac, "vlan": vid, "sticky": sticky}) for i, (mac, vid, sticky) in
            enumerate(entries, 1)])}

    def test_static_addresses(self):
        got = (0, "Get interface static mac successfully.")
        upper = self.MAC.upper()

        def add(vid, sticky, mac, outcome=None, port=5):
            self.check("POST", f"/pml/if/{port}/vlan/{vid}/sticky/{sticky}/mac",
                       outcome or (0, f"Create interface static mac {mac} vlan {vid} successfully."),
                       variables=(f"value={mac}",))

        def scene():
            self.create_vlans(10)
            self.check("GET", "/pml/if/5/mac", FAILED)
            add(10, 0, self.MAC)
            add(1, 1, self.MAC)
            add(1, 0, "00:00:00:00:00:01")
            self.check("GET", "/pml/if/5/mac", got, self.macs(
                ("00:00:00:00:00:01", 1, "disable"), (upper, 1, "enable"), (upper, 10, "disable")))
            add(10, 1, self.MAC, ALREADY_SET)
            add(10, 0, self.MAC, ALREADY_SET, port=6)
            for mac in ("02:AB:CD:00:00", "02:AB:CD:00:00:0g", "02-AB-CD-00-00-01", "02abcd000001",
                        "01:00:5E:00:00:01", "00:00:00:00:00:00", "FF:FF:FF:FF:FF:FF", "x"):
                add(10, 0, mac, REFUSED)
            add(11, 0, self.MAC, REFUSED)
            add(10, 0, "02:00:00:00:00:09", REFUSED, port=7)
            add(10, 2, self.MAC, BAD_REQUEST)
            self.assert_missing_value_is_refused("POST", "/pml/if/5/vlan/10/sticky/0/mac")
            self.assert_missing_value_is_refused("DELETE", "/pml/if/5/vlan/10/mac")
            removed = (0, f"Delete interface static mac {self.MAC} vlan 10 successfully.")
            self.check("DELETE", "/pml/if/5/vlan/10/mac", removed, variables=(f"value={self.MAC}",))
            self.check("DELETE", "/pml/if/5/vlan/10/mac", REFUSED, variables=(f"value={self.MAC}",))
            self.check("GET", "/pml/if/5/mac", got, self.macs(
                ("00:00:00:00:00:01", 1, "disable"), (upper, 1, "enable")))
            self.check("GET", "/pml/if/7/mac", REFUSED)
        self.each_way(scene)

    def test_an_interface_has_room_for_twenty(self):
        def scene():
            for number in range(1, 21):
                mac = f"02:00:00:00:00:{number:02X}"
                self.check("POST", "/pml/if/5/vlan/1/sticky/0/mac",
                           (0, f"Create interface static mac {mac} vlan 1 successfully."),
                           variables=(f"value={mac}",))
            self.check("POST", "/pml/if/5/vlan/1/sticky/0/mac", REFUSED,
                       variables=("value=02:00:00:00:00:15",))
        self.each_way(scene)


class WrongUris(Layer2Test):
    def test_what_no_module_serves(self):
        wrong = [
            ("GET", "/if/"), ("GET", "/if/12/"), ("GET", "/if/3/vlanx"), ("GET", "/if/3/vlan/"),
            ("GET", "/if/x"), ("GET", "/if/-1"), ("POST", "/if"), ("PUT", "/if/3"), ("DELETE", "/if/3"),
            ("GET", "/if/pendingchanges"), ("GET", "/if/pendingChanges/"), ("GET", "/if/3/counters/"),
            ("GET", "/if/3/counters/5"), ("PUT", "/if/3/counters"), ("GET", "/if/3/pvid"),
            ("PUT", "/if/3/pvi"), ("PUT", "/if/3/pvids"), ("PUT", "/if/3/dvip"), ("GET", "/if/3/trunk/vlan"),
            ("GET", "/if/3/trunk/pvid"), ("PUT", "/if/3/trunk/pvid/1"), ("PUT", "/if/3/softShutdownState"),
            ("PUT", "/if/3/vlan/1/taggingmode"), ("PUT", "/if/3/vlan/1"), ("POST", "/if/3/vlan"),
            ("DELETE", "/if/3/vlan"), ("POST", "/if/3/access/vlan"),
            ("GET", "/lag/"), ("GET", "/lag/1/"), ("POST", "/lag/1"), ("DELETE", "/lag/1"), ("PUT", "/lag/1"),
            ("GET", "/lag/x"), ("POST", "/lag/1/port"), ("POST", "/lag/1/port/"), ("GET", "/lag/1/port/5"),
            ("PUT", "/lag/1/port/5"), ("POST", "/lag/1/port/5/"),
            ("GET", "/pml"), ("GET", "/pml/if"), ("GET", "/pml/if/5"), ("GET", "/pml/if/5/sticky/"),
            ("POST", "/pml/if/5/vlan/10/sticky/2/mac"), ("POST", "/pml/if/5/vlan/10/sticky//mac"),
            ("POST", "/pml/if/5/vlan/10/mac"), ("DELETE", "/pml/if/5/mac"), ("PUT", "/pml/if/5/mac"),
            ("DELETE", "/pml/if/5/vlan/10/sticky/1/mac"), ("GET", "/pml/if/5/macs"),
        ]

        def scene():
            for method, uri in wrong:
                self.check(method, uri, BAD_REQUEST, variables=("value=1",))
            for uri in ("/lags", "/ifs", "/pm", "/If", "/LAG/1"):
                self.check("GET", uri, wire.UNKNOWN_MODULE)
        self.each_way(scene)


if __name__ == "__main__":
    harness.main()
