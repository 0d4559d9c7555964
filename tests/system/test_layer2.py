"""Interfaces, LAGs and locked addresses over time: what a change does elsewhere, and that all of it is there
again after the daemon was killed."""

import re

import harness
from harness import eventually
from scenes import FlowTest
from wire import GOT, Rows


class Layer2Test(FlowTest):
    def fact(self, number, name):
        return re.search(f"<{name}>([^<]*)</{name}>", self.ask("GET", f"/if/{number}")).group(1)

    def everything(self):
        """Every answer that says something about the configuration, by URI."""
        self.daemon.lab("wait")
        uris = ["/vlans", "/if", "/lag"]
        uris += [f"/vlans/{vid}" for vid in self.vlan_ids(self.logged_in)]
        uris += [f"/lag/{number}" for number in range(1, 65)]
        for number in (*range(1, 55), 56, 57, 119):
            uris += [f"/if/{number}", f"/if/{number}/vlan", f"/if/{number}/switchportMode",
                     f"/pml/if/{number}/sticky", f"/pml/if/{number}/mac"]
        uris += ["/if/55", "/if/120"]
        return {uri: self.logged_in.ask("GET", uri).raw for uri in uris}


class Links(Layer2Test):
    def wait_for_link(self, number, state):
        eventually(lambda: self.fact(number, "linkState") == state, f"link of {number} {state}")

    def test_a_port_has_a_link_while_enabled_cabled_and_the_far_end_is_up(self):
        self.wait_for_link(3, "up")
        for word, port, state in (("cable", "out", "down"), ("cable", "in", "up"), ("link", "down", "down"),
                                  ("cable", "out", "down"), ("link", "up", "down"), ("cable", "in", "up")):
            self.daemon.lab(word, port, "0/3")
            self.wait_for_link(3, state)
        self.ask("PUT", "/if/3/adminState", "value=0")
        self.wait_for_link(3, "down")
        self.ask("PUT", "/if/3/adminState", "value=1")
        self.wait_for_link(3, "up")
        self.assertEqual(self.fact(4, "linkState"), "up")

    def test_a_lag_has_a_link_while_it_is_enabled_and_a_member_has_one(self):
        self.assertEqual(self.fact(56, "linkState"), "down")
        for port in (3, 4):
            self.ask("POST", f"/lag/1/port/{port}")
        self.wait_for_link(56, "up")
        self.daemon.lab("cable", "out", "0/3")
        self.wait_for_link(3, "down")
        self.assertEqual(self.fact(56, "linkState"), "up")
        self.daemon.lab("cable", "out", "0/4")
        self.wait_for_link(56, "down")
        self.daemon.lab("cable", "in", "0/4")
        self.wait_for_link(56, "up")
        self.ask("PUT", "/if/56/adminState", "value=0")
        self.wait_for_link(56, "down")

    def test_a_port_without_link_may_lack_its_pvid(self):
        self.daemon.lab("fault", "openapiVlanIfPvidGet", "OPEN_E_FAIL", "2")
        self.assertEqual(self.logged_in.ask("GET", "/if/3").code(), 96)
        self.daemon.lab("cable", "out", "0/3")
        self.assertEqual(self.fact(3, "pvid"), "0")
        self.assertEqual(self.fact(3, "pvid"), "1")


class Traffic(Layer2Test):
    def counter(self, number, name):
        text = self.ask("GET", f"/if/{number}/counters")
        low, high = re.search(f"<counterName>{name}</counterName><counterValueL>(\\d+)</counterValueL>"
                              r"<counterValueH>(\d+)</counterValueH>", text).groups()
        return (int(high) << 32) + int(low)

    def test_a_running_counter_grows_until_it_is_stopped(self):
        self.daemon.lab("counter", "set", "0/7", "CTR_RX_TOTAL_BYTES", str(2**32 - 1))
        self.daemon.lab("counter", "run", "0/7", "CTR_RX_TOTAL_BYTES", "1000000")
        first = eventually(lambda: max(0, self.counter(7, "CTR_RX_TOTAL_BYTES") - 2**32), "it grows")
        eventually(lambda: self.counter(7, "CTR_RX_TOTAL_BYTES") > 2**32 + first, "it goes on growing")
        self.daemon.lab("counter", "run", "0/7", "CTR_RX_TOTAL_BYTES", "0")
        stopped = self.counter(7, "CTR_RX_TOTAL_BYTES")
        self.assertEqual(self.daemon.lab("counter", "list", "0/7").splitlines()[0],
                         f"1 CTR_RX_TOTAL_BYTES {stopped}")
        self.assertEqual(self.counter(8, "CTR_RX_TOTAL_BYTES"), 0)

    def test_lab_refuses_what_is_no_counter(self):
        for words in (("set", "0/7", "CTR_NOTHING", "1"), ("set", "0/7", "0", "1"), ("set", "0/7", "63", "1"),
                      ("set", "0/99", "1", "1"), ("set", "0/7", "1", "-1"), ("set", "0/7", "1", str(2**64)),
                      ("run", "loopback0", "1", "1"), ("add", "0/7", "1"), ("list", "nothing")):
            done = self.daemon.try_lab("counter", *words)
            self.assertEqual((done.returncode, done.stdout), (1, ""), words)
            self.assertRegex(done.stderr, r"^kestrel-lab: error: \S")


class Restart(Layer2Test):
    def set_up_layer2(self):
        for vid in (10, 20, 30):
            self.ask("POST", f"/vlans/{vid}")
        settings = {
            "/if/3/description": "to%20rack%207", "/if/3/mtuSize": 9000, "/if/3/speed": 7,
            "/if/3/adminState": 0, "/if/3/acceptFrameType": 3, "/if/56/description": "uplinks",
            "/if/4/access/vlan": 20, "/if/4/switchportMode": 2, "/if/5/trunk/vlan": "10-15,30,4000",
            "/if/5/trunk/pvid": 30, "/if/5/switchportMode": 3, "/if/6/pvid": 10, "/if/120/description": "l0",
            "/if/56/switchportMode": 3, "/if/56/trunk/vlan": "1-4094", "/pml/if/7/sticky": 1,
        }
        for uri, value in settings.items():
            self.ask("PUT", uri, f"value={value}")
        self.ask("POST", "/if/6/vlan/20")
        self.ask("PUT", "/if/6/vlan/20/taggingMode", "value=1")
        self.ask("DELETE", "/if/6/vlan/1")
        for port in (10, 11, 54):
            self.ask("POST", f"/lag/1/port/{port}")
        self.ask("POST", "/pml/if/7/vlan/10/sticky/1/mac", "value=02:00:00:00:00:01")
        self.ask("POST", "/pml/if/56/vlan/20/sticky/0/mac", "value=02:00:00:00:00:02")

    def test_everything_that_was_set_is_there_again(self):
        self.set_up_layer2()
        before = self.assert_restarts_keep_everything()
        self.daemon.lab("save")
        self.ask("DELETE", "/vlans/20")
        self.ask("PUT", "/if/3/adminState", "value=1")
        self.ask("DELETE", "/lag/1/port/10")
        self.assertNotEqual(self.everything(), before)
        self.daemon.lab("reload")
        self.assertEqual(self.everything(), before)

    def random_change(self, choose):
        port, lag, vid = choose.randint(1, 12), choose.randint(1, 3), choose.choice((1, 10, 11, 12, 13))
        mac = f"02:00:00:00:00:{choose.randint(1, 4):02x}"
        vlans = choose.choice(("10", "10-12", "11,13", "1-4094"))
        return choose.choice((
            ("POST", f"/vlans/{vid}", ()), ("POST", f"/vlans/{vid}", ()), ("DELETE", f"/vlans/{vid}", ()),
            ("POST", f"/if/{port}/vlan/{vid}", ()), ("DELETE", f"/if/{port}/vlan/{vid}", ()),
            ("PUT", f"/if/{port}/vlan/{vid}/taggingMode", (f"value={choose.randint(0, 1)}",)),
            ("PUT", f"/if/{port}/pvid", (f"value={vid}",)),
            ("PUT", f"/if/{port}/switchportMode", (f"value={choose.randint(1, 3)}",)),
            ("PUT", f"/if/{port}/access/vlan", (f"value={vid}",)),
            ("PUT", f"/if/{port}/trunk/pvid", (f"value={vid}",)),
            (choose.choice(("POST", "PUT", "DELETE")), f"/if/{port}/trunk/vlan", (f"value={vlans}",)),
            ("POST", f"/lag/{lag}/port/{port}", ()), ("DELETE", f"/lag/{lag}/port/{port}", ()),
            ("PUT", f"/if/{port}/description", (f"value=d{choose.randint(0, 9)}",)),
            ("PUT", f"/if/{port}/mtuSize", (f"value={choose.randint(1518, 12270)}",)),
            ("PUT", f"/if/{port}/adminState", (f"value={choose.randint(0, 1)}",)),
            ("PUT", f"/pml/if/{port}/sticky", (f"value={choose.randint(0, 1)}",)),
            ("POST", f"/pml/if/{port}/vlan/{vid}/sticky/1/mac", (f"value={mac}",)),
            ("DELETE", f"/pml/if/{port}/vlan/{vid}/mac", (f"value={mac}",)),
        ))

    def test_random_changes_survive_sudden_deaths(self):
        self.assert_random_changes_survive(seed=11, journal_bytes=2000)


class HeldChanges(Layer2Test):
    def test_members_of_a_lag_and_deleted_vlans_are_pending(self):
        self.ask("POST", "/vlans/10")
        self.ask("PUT", "/if/9/access/vlan", "value=10")
        self.ask("PUT", "/if/9/switchportMode", "value=2")
        self.daemon.lab("wait")
        self.daemon.lab("hold")
        self.ask("DELETE", "/vlans/10")
        rows = Rows("interface", [(1, {"ifNum": 9, "pending_type": "pending change"})])
        self.assert_answers(self.logged_in.ask("GET", "/if/pendingChanges"), GOT, {"pending_interfaces": rows})
        self.ask("POST", "/lag/2/port/3")
        pending = re.findall(r"<ifNum>(\d+)<", self.ask("GET", "/if/pendingChanges"))
        self.assertIn("3", pending)
        self.assertIn("57", pending)


if __name__ == "__main__":
    harness.main()
