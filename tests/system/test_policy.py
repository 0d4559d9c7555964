"""Access control lists and TCAM policies over time: lists as long as they get, what the log says, what the
TCAM is used for, and that all of it is there again after the daemon was killed."""

import random
import re
import threading

import harness
from policies import (EVERY, KINDS, NO_ROOM_FOR_RULE, acl, bound_acls, every_rule, ip_fields, made,
                      policy_created, tcp_flags)
from scenes import FlowTest
from wire import GOT, REFUSED, Closed, Rows, xml_of


class PolicyTest(FlowTest):
    def everything(self):
        """Every answer about lists and policies, by URI and direction."""
        asked = [("/acl/count", ()), ("/tcam/policy", ()), ("/tcam/groupStats", ())]
        for kind in KINDS:
            asked.append((f"/acl/{kind}", ()))
            names = re.findall("<name>([^<]*)</name>", self.logged_in.ask("GET", f"/acl/{kind}").text())
            asked += [(f"/acl/{kind}/name/{name}", ()) for name in names]
        for place in (*(f"if/{n}" for n in (*range(1, 55), 56, 57, 119)), "vlan/1", "vlan/10", "vlan/20"):
            asked += [(f"/acl/{place}", (f"direction={direction}",)) for direction in ("in", "out")]
        numbers = re.findall(r"<policy_id>(\d+)<", self.logged_in.ask("GET", "/tcam/policy").text())
        asked += [(f"/tcam/policy/{number}", ()) for number in numbers]
        return {(uri, given): self.logged_in.ask("GET", uri, *given).raw for uri, given in asked}


class Log(PolicyTest):
    def test_every_change_leaves_a_line(self):
        key = self.logged_in.key
        requests = [
            ("POST", "/acl/ip/name", "name=a%25n", "Create successfully.", 0),
            ("POST", "/acl/ip/name", "name=a%25n", "The ACL name already exists.", 1),
            ("POST", "/acl/ip/name/a%25n/rule", "action=deny&protocol=every", "Create successfully.", 0),
            ("POST", "/acl/if/3", "direction=in&type=ip&name=a%25n&sequence=1",
             "The rule attachs successfully.", 0),
            ("DELETE", "/acl/if/3", "direction=in&type=ip&name=a%25n", "The ACL detaches successfully.", 0),
            ("DELETE", "/acl/ip/name/a%25n/rule", "sequence=11", REFUSED[1], REFUSED[0]),
            ("DELETE", "/acl/ip/name", "name=a%25n", "Delete successfully.", 0),
            ("POST", "/tcam/policy", "actionDrop=0", "The value of parameter actionDrop is invalid.", 7),
            ("POST", "/tcam/policy", "actionDrop=1", "Create a new policy successfully (Policy ID is 1).", 0),
            ("POST", "/tcam/policy/1/port/3", "", "Configure the policy 1 to port 3 successfully.", 0),
            ("DELETE", "/tcam/policy/1/port/3", "", "Delete the policy 1 from port 3 successfully.", 0),
            ("DELETE", "/tcam/policy/1", "", "Delete the policy ID 1 successfully.", 0),
        ]
        expected = ["RESTful API Engine: User from [127.0.0.1] accesses API [POST /login?]: "
                    "Log in successfully. (0)"]
        for method, uri, query, message, code in requests:
            self.assertEqual(self.logged_in.ask(method, uri, *filter(None, (query,))).code(), code, uri)
            given = f"sessionkey={key}&{query}".rstrip("&")
            logged_uri = uri.replace("%25", "%")
            expected.append("RESTful API Engine: User from [127.0.0.1] accesses API "
                            f"[{method} {logged_uri}?{given}]: {message} ({code})")
        for uri in ("/acl", "/acl/ip", "/acl/ip/name/a", "/tcam", "/tcam/groupStats", "/tcam/policy"):
            self.logged_in.ask("GET", uri)
        self.assertEqual(self.daemon.audit_lines(), expected)


class LongLists(PolicyTest):
    def test_a_list_has_room_for_1023_rules(self):
        for number, kind in enumerate(KINDS, 1):
            self.ask("POST", f"/acl/{kind}/name", "name=long")
            uri = f"/acl/{kind}/name/long"
            for at in range(1, 1024):
                self.ask("POST", f"{uri}/rule", "action=permit", f"rate_limit={at}", "burst_size=1",
                         *EVERY[kind])
            for sequence in ((), ("sequence=5",)):
                reply = self.logged_in.ask("POST", f"{uri}/rule", "action=deny", *EVERY[kind], *sequence)
                self.assert_answers(reply, NO_ROOM_FOR_RULE, made(kind, "long", number))
            self.ask("POST", "/acl/vlan/1", "direction=in", f"type={kind}", "name=long", f"sequence={number}")
            rules = [every_rule(10 * at, {"rate_limit": at, "burst_size": 1}) for at in range(1, 1024)]
            whole = acl("long", number, rules, inbound=((), (1,)))
            self.assert_answers(self.logged_in.ask("GET", uri), GOT, whole)
            self.assert_answers(self.logged_in.ask("GET", uri, "format=json"), GOT, whole, "json")
            self.ask("DELETE", f"{uri}/rule", "sequence=5000")
            self.ask("POST", f"{uri}/rule", "action=deny", "sequence=5001", *EVERY[kind])
        before = self.everything()
        self.restart()
        self.assertEqual(self.everything(), before)

    def test_an_interface_has_room_for_all_lists(self):
        entries = []
        for number in range(1, 101):
            self.ask("POST", "/acl/mac/name", f"name=list{number}")
            self.ask("POST", "/acl/if/3", "direction=out", "type=mac", f"name=list{number}", "sequence=0")
            entries.append(("mac", f"list{number}", number, number))
        reply = self.logged_in.ask("GET", "/acl/if/3", "direction=out")
        self.assert_answers(reply, GOT, bound_acls(*entries))


class Policies(PolicyTest):
    def create(self, kind, outcome):
        self.assert_answers(self.logged_in.ask("POST", "/tcam/policy", f"policyType={kind}"), outcome)

    def test_each_stage_has_room_for_its_number(self):
        for number in range(1, 513):
            self.create(1 + number % 2, policy_created(number))
        for kind in (0, 1, 2):
            self.create(kind, REFUSED)
        for number in range(513, 641):
            self.create(3, policy_created(number))
        self.create(3, REFUSED)
        rows = Rows("policy", enumerate(({"policy_id": number} for number in range(1, 641)), 1))
        self.assert_answers(self.logged_in.ask("GET", "/tcam/policy"), GOT, {"policies": rows})


class Restart(PolicyTest):
    """What was acknowledged is there after SIGKILL, byte for byte, and so are the ids."""

    RULES = {
        "mac": [("src_mac=00:11:22:33:44:55", "src_mask=ff:ff:ff:ff:ff:ff", "dest_mac=bpdu", "ethertype=arp",
                 "vlan=10", "cos=7"), EVERY["mac"]],
        "ip": [("protocol=tcp", "src_ip=10.1.0.0", "src_mask=255.255.0.0", "dest_ip=any", "dscp=46",
                "precedence=5", "tos=b8", "tos_mask=fc", "fragments=0",
                "src_l4_port=range:1000:2000", "dest_l4_port=neq:22", "tcp_syn=1",
                "tcp_fin=0", "tcp_established=0"),
               ("protocol=icmp", "src_ip=any", "dest_ip=any", "icmp_type=3"),
               ("protocol=igmp", "src_ip=any", "dest_ip=any", "igmp_type=17"), EVERY["ip"]],
        "ipv6": [("protocol=icmpv6", "src_prefix=2001:db8::", "src_prefix_length=32", "dest_prefix=fe80::1",
                  "dest_prefix_length=128", "routing=1", "flow_lable=1048575", "icmp_type=1", "icmp_code=4"),
                 ("protocol=50", "src_prefix=any", "dest_prefix=any"), EVERY["ipv6"]],
    }
    ATTRIBUTES = ("log=1", "assign_queue=7", "mirror_intf=40", "redirect_intf=57", "time_range=office",
                  "rate_limit=4294967295", "burst_size=128")

    def set_up_policies(self):
        self.ask("POST", "/vlans/10")
        for number, (kind, rules) in enumerate(self.RULES.items(), 1):
            for name in ("gone", "web", "b%C3%BC%22%5C'!"):
                self.ask("POST", f"/acl/{kind}/name", f"name={name}")
            self.ask("DELETE", f"/acl/{kind}/name", "name=gone")
            for variables in rules:
                for attributes in ((), self.ATTRIBUTES):
                    self.ask("POST", f"/acl/{kind}/name/web/rule", "action=deny", *variables, *attributes)
            self.ask("DELETE", f"/acl/{kind}/name/web/rule", "sequence=10")
            for place in ("if/3", "if/56", "vlan/10"):
                for direction in ("in", "out"):
                    self.ask("POST", f"/acl/{place}", f"direction={direction}", f"type={kind}", "name=web",
                             f"sequence={10 * number}")
            self.ask("DELETE", "/acl/if/3", "direction=out", f"type={kind}", "name=web")
        for given in (("actionDrop=1", "policyType=3", "policyPrio=5"), (), ("policyType=2",),
                      ("matchDstMac=1:2:3:4:5:6", "matchSrcMac=a:b:c:d:e:f", "matchVlanId=10",
                       "matchVlanPrio=3", "matchDstIp=10.0.0.1", "matchDstIpMask=255.0.0.255",
                       "matchSrcIp=1.2.3.4", "matchSrcIpMask=255.255.255.0", "actionNewVlanPrio=7",
                       "actionNewDstMac=2:0:0:0:0:1", "actionNewSrcMac=2:0:0:0:0:2", "actionRedirPort=4",
                       "actionSendToCpuRule=9")):
            self.ask("POST", "/tcam/policy", *given)
        self.ask("DELETE", "/tcam/policy/2")
        for number, port in ((1, 3), (4, 3), (4, 56)):
            self.ask("POST", f"/tcam/policy/{number}/port/{port}")

    def test_everything_that_was_set_is_there_again(self):
        self.set_up_policies()
        before = self.assert_restarts_keep_everything()
        self.daemon.lab("save")
        self.ask("DELETE", "/tcam/policy")
        self.ask("DELETE", "/acl/ip/name/web/rule", "sequence=20")
        self.ask("DELETE", "/acl/vlan/10", "direction=in", "type=mac", "name=web")
        self.assertNotEqual(self.everything(), before)
        self.daemon.lab("reload")
        self.assertEqual(self.everything(), before)

    def random_change(self, choose):
        kind, name = choose.choice(list(KINDS)), f"list{choose.randint(1, 3)}"
        place = choose.choice(("if/3", "if/4", "if/56", "vlan/1", "vlan/10"))
        bound = (f"direction={choose.choice(('in', 'out'))}", f"type={kind}", f"name={name}")
        sequence, number = f"sequence={choose.randint(0, 12)}", choose.randint(1, 6)
        rule = (f"action={choose.choice(('permit', 'deny'))}", *choose.choice(self.RULES[kind]),
                *choose.choice(((), self.ATTRIBUTES, ("log=0",), ("redirect_intf=4",))))
        port = choose.randint(3, 5)
        return choose.choice((
            ("POST", f"/acl/{kind}/name", (f"name={name}",)),
            ("DELETE", f"/acl/{kind}/name", (f"name={name}",)),
            ("POST", f"/acl/{kind}/name/{name}/rule", rule), ("POST", f"/acl/{kind}/name/{name}/rule", rule),
            ("POST", f"/acl/{kind}/name/{name}/rule", (*rule, sequence)),
            ("DELETE", f"/acl/{kind}/name/{name}/rule", (sequence,)),
            ("POST", f"/acl/{place}", (*bound, sequence)), ("POST", f"/acl/{place}", (*bound, sequence)),
            ("DELETE", f"/acl/{place}", bound),
            ("POST", "/tcam/policy", (f"policyType={choose.randint(0, 4)}", "actionRedirPort=4")),
            ("DELETE", f"/tcam/policy/{number}", ()), ("POST", f"/tcam/policy/{number}/port/{port}", ()),
            ("DELETE", f"/tcam/policy/{number}/port/{port}", ()),
            (choose.choice(("POST", "DELETE")), "/vlans/10", ()),
            (choose.choice(("POST", "DELETE")), "/lag/1/port/3", ()),
        ))

    def test_random_changes_survive_sudden_deaths(self):
        self.assert_random_changes_survive(seed=23, journal_bytes=4000)


class SuddenDeath(PolicyTest):
    """Rules are made one after the other until another thread kills the daemon."""

    RULE = ("action=permit", "protocol=tcp", "src_ip=10.1.0.0", "src_mask=255.255.0.0", "dest_ip=any",
            "tos=b8", "tcp_syn=1", "log=1", "assign_queue=3", "rate_limit=1000", "burst_size=64")

    def rules(self, name):
        """The text of each rule of a list, by number."""
        text = self.ask("GET", f"/acl/ip/name/{name}")
        found = re.findall(r"<rule><sequence_number>(\d+)</sequence_number>(.*?)</rule>", text)
        return {int(number): rest for number, rest in found}

    def whole(self, number):
        fields = {"action": "Permit", "match_all": "FALSE", **ip_fields(
            "6(TCP)", {"ip": "10.1.0.0", "mask": "255.255.0.0"}, {"l4_port": f"equal to {number}"},
            tos="ToS Bits: b8, ToS Mask: ff", tcp_flags=tcp_flags(syn="set"), log="TRUE", assign_queue=3,
            rate_limit=1000, burst_size=64)}
        return xml_of(fields)

    def make_rules_until_death(self, name, after):
        """Returns the number of the rule that was under way."""
        threading.Timer(after, self.daemon.process.kill).start()
        for number in range(1, 1024):
            try:
                reply = self.logged_in.ask("POST", f"/acl/ip/name/{name}/rule", *self.RULE,
                                           f"sequence={number}", f"dest_l4_port=eq:{number}")
            except (Closed, OSError):
                return number
            self.assertEqual(reply.code(), 0, reply.text())
        raise AssertionError("the daemon was never killed")

    def test_no_rule_that_was_acknowledged_is_lost(self):
        """The one that was under way may be there with some of its conditions, or not at all."""
        choose, known = random.Random(5), {}
        self.daemon.expect_log(r"journal-\d+: the last line was not written to its end and is dropped")
        for name in "abcdefgh":
            self.daemon.lab("limit", "journal-bytes", str(choose.choice((500, 100000))))
            self.ask("POST", "/acl/ip/name", f"name={name}")
            under_way = self.make_rules_until_death(name, choose.uniform(0.01, 0.06))
            self.daemon.process.wait()
            self.daemon.start()
            self.logged_in = self.session(self.daemon)
            known[name] = {number: self.whole(number) for number in range(1, under_way)}
            if under_way in self.rules(name):
                self.ask("DELETE", f"/acl/ip/name/{name}/rule", f"sequence={under_way}")
            self.assertEqual({which: self.rules(which) for which in known}, known)
        self.assertGreater(sum(map(len, known.values())), 8)


class HeldChanges(PolicyTest):
    def pending(self):
        """The pending interfaces and VLANs."""
        asked = (("/if/pendingChanges", "ifNum"), ("/vlans/pendingChanges", "id"))
        return [[int(n) for n in re.findall(rf"<{tag}>(\d+)</{tag}>", self.ask("GET", uri))]
                for uri, tag in asked]

    def test_binding_and_applying_are_pending_where_they_happen(self):
        self.ask("POST", "/vlans/10")
        self.ask("POST", "/acl/ip/name", "name=web")
        self.ask("POST", "/tcam/policy", "actionDrop=1")
        steps = [("/acl/if/3", ("direction=in", "type=ip", "name=web"), [[3], []]),
                 ("/acl/vlan/10", ("direction=out", "type=ip", "name=web"), [[], [10]]),
                 ("/tcam/policy/1/port/56", (), [[56], []])]
        for uri, variables, where in steps:
            for method in ("POST", "DELETE"):
                self.daemon.lab("wait")
                self.assertEqual(self.pending(), [[], []])
                self.daemon.lab("hold")
                self.ask(method, uri, *variables, "sequence=1")
                self.assertEqual(self.pending(), where)
                self.daemon.lab("release")


if __name__ == "__main__":
    harness.main()
