"""Every URI of the modules acl and tcam: whole replies, as XML and as JSON, over both ports. What rules can
hold is test_policy_rules.py's."""

import harness
from policies import (ATTACHED, ATTACHED_BEFORE, CREATED, DELETED, DETACHED, EVERY, KINDS, NAME_TAKEN,
                      NO_LISTS, NO_RULES, NO_SUCH_LIST, AclTest, acl, acl_entry, acls, bound_acls, every_rule,
                      group_stats, made, policy, policy_created, policy_list)
from scenes import UriTest
from wire import ALREADY_SET, BAD_REQUEST, FAILED, GOT, REFUSED, UNKNOWN_MODULE

ODD_NAMES = {  # as it is in a URI: as it is in an answer, bytes as latin-1 has them
    "%3Cb%3E%26%22q%22": '<b>&"q"', "100%25s%25n": "100%s%n", "b%C3%BCro": "b\xc3\xbcro",
    "a%2Bb%3Fc%3Dd": "a+b?c=d", "%23~%5C%27;": "#~\\';", "rule": "rule", "x" * 31: "x" * 31,
}


class Lists(AclTest):
    def test_count(self):
        def scene():
            for count, uri in enumerate(("/acl", "/acl/", "/acl/c", "/acl/count")):
                self.check("GET", uri, GOT, {"current_number": count, "max_number": 100})
                self.create("ip", f"list{count}")
            for uri in ("/acl/counts", "/acl/cont"):
                self.check("GET", uri, REFUSED)
        self.each_way(scene)

    def test_lists_of_each_kind(self):
        def scene():
            for number, kind in enumerate(KINDS, 1):
                self.check("GET", f"/acl/{kind}", NO_LISTS, acls(kind))
                self.check("GET", f"/acl/{kind}/name/web", NO_SUCH_LIST, {"acl_name": "web"})
                self.create(kind, "web")
                self.check("POST", f"/acl/{kind}/name", NAME_TAKEN, made(kind, "web"),
                           variables=("name=web",))
                self.check("GET", f"/acl/{kind}/name/web", NO_RULES, acl("web", number))
            self.create("ip", "mail")
            self.check("GET", "/acl/ip", GOT, acls("ip", acl_entry("web", 2), acl_entry("mail", 4)))
            self.check("DELETE", "/acl/ip/name", DELETED, variables=("name=web",))
            self.check("DELETE", "/acl/ip/name", NO_SUCH_LIST, variables=("name=web",))
            self.check("GET", "/acl/ip/name/web", NO_SUCH_LIST, {"acl_name": "web"})
            self.create("ipv6", "second")  # takes the lowest id that is free
            self.check("GET", "/acl/ipv6", GOT, acls("ipv6", acl_entry("second", 2), acl_entry("web", 3)))
            self.check("GET", "/acl/mac", GOT, acls("mac", acl_entry("web", 1)))
            self.check("GET", "/acl/ip", GOT, acls("ip", acl_entry("mail", 4)))
        self.each_way(scene)

    def test_names(self):
        def scene():
            for method in ("POST", "DELETE"):
                for given in ((), ("name=",), ("name=" + "n" * 32,), ("name=" + "n" * 256,)):
                    self.check(method, "/acl/mac/name", REFUSED, variables=given)
                self.check(method, "/acl/ipx/name", REFUSED, variables=("name=web",))
            for name in ("a%20b", "a+b", "a/b", "a%09b", "a%0Ab", "%7F"):
                self.check("POST", "/acl/mac/name", REFUSED, variables=(f"name={name}",))
            self.check("GET", "/acl/mac/name/" + "n" * 32, REFUSED)
            self.check("GET", "/acl/mac", NO_LISTS, acls("mac"))
            for number, (encoded, name) in enumerate(ODD_NAMES.items(), 1):
                self.check("POST", "/acl/mac/name", CREATED, made("mac", name),
                           variables=(f"name={encoded}",))
                self.check("POST", f"/acl/mac/name/{encoded}/rule", CREATED, made("mac", name, number, 10),
                           variables=("action=deny", *EVERY["mac"]))
                self.check("GET", f"/acl/mac/name/{encoded}", GOT,
                           acl(name, number, [every_rule(10, action="Deny")]))
                self.check("DELETE", f"/acl/mac/name/{encoded}/rule", DELETED, variables=("sequence=10",))
            entries = [acl_entry(name, number) for number, name in enumerate(ODD_NAMES.values(), 1)]
            self.check("GET", "/acl/mac", GOT, acls("mac", *entries))
            for encoded in ODD_NAMES:
                self.check("DELETE", "/acl/mac/name", DELETED, variables=(f"name={encoded}",))
            self.check("GET", "/acl/mac", NO_LISTS, acls("mac"))
        self.each_way(scene)

    def test_no_uri_reaches_a_name_that_begins_with_two_dots(self):
        def scene():
            for name in ("a", "..a", "...", ".", "a..b"):
                self.create("ip", name)
            for in_uri, reached, number in (("..a", "a", 1), ("...", ".", 4), ("a..b", "a..b", 5)):
                self.check("GET", f"/acl/ip/name/{in_uri}", NO_RULES, acl(reached, number))
            for name in ("..a", "..."):
                self.bind("POST", "if/3", "in", "ip", name, ATTACHED, sequence=0)
            self.check("GET", "/acl/if/3", GOT, bound_acls(("ip", "..a", 2, 1), ("ip", "...", 3, 2)),
                       variables=("direction=in",))
            for name in ("..a", "..."):
                self.bind("DELETE", "if/3", "in", "ip", name, DETACHED)
                self.check("DELETE", "/acl/ip/name", DELETED, variables=(f"name={name}",))
        self.each_way(scene)

    def test_there_is_room_for_a_hundred(self):
        def scene():
            kinds = list(KINDS)
            for number in range(100):
                self.create(kinds[number % 3], f"list{number}")
            full = {"current_number": 100, "max_number": 100}
            for kind in kinds:
                self.check("POST", f"/acl/{kind}/name", REFUSED, variables=("name=list100",))
                self.check("GET", "/acl/count", GOT, full)
                ours = [acl_entry(f"list{n}", n + 1) for n in range(100) if kinds[n % 3] == kind]
                self.check("GET", f"/acl/{kind}", GOT, acls(kind, *ours))
            self.check("DELETE", "/acl/ip/name", DELETED, variables=("name=list40",))
            self.create("mac", "list100")
            self.check("GET", "/acl/mac/name/list100", NO_RULES, acl("list100", 41))
            self.check("GET", "/acl/count", GOT, full)
        self.each_way(scene)

    def test_forms_do_as_well_as_queries(self):
        def scene():
            for number, kind in enumerate(KINDS, 1):
                self.check("POST", f"/acl/{kind}/name", CREATED, made(kind, "web"), body="name=web")
                self.check("POST", f"/acl/{kind}/name/web/rule", CREATED, made(kind, "web", number, 7),
                           body="&".join(("action=deny", "sequence=7", "log=0", *EVERY[kind])))
                self.check("POST", "/acl/if/3", ATTACHED,
                           body=f"direction=out&type={kind}&name=web&sequence={number}")
                self.check("GET", f"/acl/{kind}/name/web", GOT, acl(
                    "web", number, [every_rule(7, {"log": "FALSE"}, "Deny")], outbound=((3,), ())))
                self.check("DELETE", "/acl/if/3", DETACHED, body=f"direction=out&type={kind}&name=web")
                self.check("DELETE", f"/acl/{kind}/name/web/rule", DELETED, body="sequence=7")
                self.check("DELETE", f"/acl/{kind}/name", DELETED, body="name=web")
                self.create(kind, "placeholder")
        self.each_way(scene)


class Bindings(AclTest):
    def test_binding_to_interfaces_and_vlans(self):
        def scene():
            self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
            for number, kind in enumerate(KINDS, 1):
                self.create(kind, "web")
            for number, kind in enumerate(KINDS, 1):
                for place in ("if/3", "if/56", "vlan/10"):
                    for direction in ("in", "out"):
                        self.bind("POST", place, direction, kind, "web", ATTACHED, sequence=10 * number)
                        self.bind("POST", place, direction, kind, "web", ATTACHED_BEFORE, sequence=99)
            everywhere = ((3, 56), (10,))
            for number, kind in enumerate(KINDS, 1):
                self.check("GET", f"/acl/{kind}", GOT, acls(
                    kind, acl_entry("web", number, inbound=everywhere, outbound=everywhere)))
                self.check("GET", f"/acl/{kind}/name/web", NO_RULES,
                           acl("web", number, inbound=everywhere, outbound=everywhere))
                self.check("DELETE", f"/acl/{kind}/name", FAILED, variables=("name=web",))
            bound = [(kind, "web", number, 10 * number) for number, kind in enumerate(KINDS, 1)]
            for place in ("if/3", "if/56", "vlan/10"):
                for direction in ("in", "out"):
                    given = (f"direction={direction}",)
                    self.check("GET", f"/acl/{place}", GOT, bound_acls(*bound), variables=given)
                    self.bind("DELETE", place, direction, "ip", "web", DETACHED)
                    self.bind("DELETE", place, direction, "ip", "web", REFUSED)
                    self.check("GET", f"/acl/{place}", GOT, bound_acls(bound[0], bound[2]), variables=given)
            self.check("GET", "/acl/ip/name/web", NO_RULES, acl("web", 2))
            self.check("DELETE", "/acl/ip/name", DELETED, variables=("name=web",))
            self.check("GET", "/acl/if/4", NO_LISTS, {}, variables=("direction=in",))
            self.check("GET", "/acl/vlan/1", NO_LISTS, {}, variables=("direction=out",))
        self.each_way(scene)

    def test_order(self):
        def scene():
            for number in range(1, 5):
                self.create("ip", f"list{number}")
            for number, sequence in ((1, 20), (2, 10), (3, 0), (4, 4294967295)):
                self.bind("POST", "if/3", "in", "ip", f"list{number}", ATTACHED, sequence=sequence)
            self.create("mac", "list5")
            for taken in (10, 21, 4294967295):
                self.bind("POST", "if/3", "in", "mac", "list5", FAILED, sequence=taken)
            self.bind("POST", "if/3", "out", "mac", "list5", ATTACHED, sequence=10)
            self.check("GET", "/acl/if/3", GOT, bound_acls(
                ("ip", "list2", 2, 10), ("ip", "list1", 1, 20), ("ip", "list3", 3, 21),
                ("ip", "list4", 4, 4294967295)), variables=("direction=in",))
            self.check("GET", "/acl/if/3", GOT, bound_acls(("mac", "list5", 5, 10)),
                       variables=("direction=out",))
        self.each_way(scene)

    def test_refusals(self):
        good = {"direction": "direction=in", "type": "type=ip", "name": "name=web", "sequence": "sequence=1"}
        wrong = {"direction": ("both", "IN", "0", ""), "type": ("IPv4", "ipx", ""),
                 "name": ("", "n" * 32, "n" * 256), "sequence": ("", "x", "-1", "4294967296")}

        def scene():
            self.create("ip", "web")
            for place in ("if/3", "vlan/1"):
                for method in ("POST", "DELETE"):
                    for name, values in wrong.items():
                        if (method, name) == ("DELETE", "sequence"):
                            continue
                        others = [given for which, given in good.items() if which != name]
                        self.check(method, f"/acl/{place}", REFUSED, variables=others)
                        for value in values:
                            given = (*others, f"{name}={value}")
                            self.check(method, f"/acl/{place}", REFUSED, variables=given)
                    self.bind(method, place, "in", "ip", "mail", NO_SUCH_LIST, sequence=1)
                    self.bind(method, place, "in", "mac", "web", NO_SUCH_LIST, sequence=1)
                for given in ((), ("direction=",), ("direction=inbound",)):
                    self.check("GET", f"/acl/{place}", REFUSED, variables=given)
            for absent in ("if/0", "if/55", "if/120", "if/128", "if/200", "if/99999999999", "vlan/0",
                           "vlan/2", "vlan/4095", "vlan/99999999999"):
                for method in ("POST", "DELETE"):
                    self.bind(method, absent, "in", "ip", "web", REFUSED, sequence=1)
                self.check("GET", f"/acl/{absent}", REFUSED, variables=("direction=in",))
            self.check("GET", "/acl/ip/name/web", NO_RULES, acl("web", 1))
        self.each_way(scene)

    def test_a_deleted_vlan_keeps_nothing_and_a_lag_member_all(self):
        def scene():
            self.create("ip", "web")
            self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
            for direction in ("in", "out"):
                self.bind("POST", "vlan/10", direction, "ip", "web", ATTACHED, sequence=1)
            self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
            self.check("GET", "/acl/ip/name/web", NO_RULES, acl("web", 1))
            self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
            self.check("GET", "/acl/vlan/10", NO_LISTS, {}, variables=("direction=in",))
            self.bind("POST", "if/3", "in", "ip", "web", ATTACHED, sequence=1)
            self.check("POST", "/lag/1/port/3", (0, "Configure port 3 to LAG 1 successfully."))
            self.bind("POST", "if/3", "out", "ip", "web", ATTACHED, sequence=1)
            self.check("GET", "/acl/ip/name/web", NO_RULES,
                       acl("web", 1, inbound=((3,), ()), outbound=((3,), ())))
        self.each_way(scene)

    def test_a_list_is_not_bound_where_its_rules_send_packets(self):
        def scene():
            self.create("ip", "web")
            for name, port in (("mirror_intf", 3), ("redirect_intf", 4)):
                self.create_rule("ip", "web", 1, 10 * (port - 2), "protocol=udp", "src_ip=any", "dest_ip=any",
                                 f"{name}={port}")
                self.bind("POST", f"if/{port}", "in", "ip", "web", FAILED, sequence=1)
            self.bind("POST", "if/5", "in", "ip", "web", ATTACHED, sequence=1)
            for name in ("mirror_intf", "redirect_intf"):
                self.check("POST", "/acl/ip/name/web/rule", FAILED,
                           variables=("action=permit", "protocol=every", f"{name}=5"))
            self.check("GET", "/acl/ip", GOT, acls("ip", acl_entry("web", 1, 2, inbound=((5,), ()))))
        self.each_way(scene)


class EarlyUris(AclTest):
    """URIs that end early, or go wrong behind what counts, and still mean something."""

    def test_lists_and_rules(self):
        def scene():
            for uri in ("/acl/mac", "/acl/mac/na", "/acl/mac/nothing"):
                self.check("POST", uri, CREATED, made("mac", "web"), variables=("name=web",))
                self.check("DELETE", uri, DELETED, variables=("name=web",))
            self.create("ip", "web")
            for at, end in enumerate(("", "/", "/ru", "/rule", "/rust"), 1):
                self.check("POST", f"/acl/ip/name/web{end}", CREATED, made("ip", "web", 1, at),
                           variables=("action=permit", "protocol=every", f"sequence={at}"))
                self.check("GET", "/acl/ip/name/web", GOT, acl("web", 1, [every_rule(at)]))
                self.check("DELETE", f"/acl/ip/name/web{end}", DELETED, variables=(f"sequence={at}",))
        self.each_way(scene)

    def test_tcam(self):
        def scene():
            for number, uri in enumerate(("/tcam", "/tcam/", "/tcam/po", "/tcam/policy"), 1):
                self.check("POST", uri, policy_created(number))
            for uri in ("/tcam/p", "/tcam/policy"):
                self.check("GET", uri, GOT, policy_list(1, 2, 3, 4))
            for uri in ("/tcam", "/tcam/", "/tcam/po", "/tcam/policy"):
                self.check("DELETE", uri, ALL_DELETED)
                self.check("GET", "/tcam/policy", GOT, policy_list())
                self.check("POST", "/tcam/policy", policy_created(1))
        self.each_way(scene)


ALL_DELETED = (0, "Delete all the policies created by TCAM API successfully.")


def deleted(number):
    return (0, f"Delete the policy ID {number} successfully.")


def invalid(code, name):
    return (code, f"The value of parameter {name} is invalid.")


class TcamPolicies(UriTest):
    def create(self, outcome, *variables, body=None):
        self.check("POST", "/tcam/policy", outcome, variables=variables, body=body)

    def test_version(self):
        def scene():
            self.check("GET", "/tcam", GOT, {"infomation": {"tcam_api_version": "0.1"}})
        self.each_way(scene)

    def test_creating_reading_and_deleting(self):
        everything = (
            "policyPrio=7", "policyType=3", "matchVlanId=4094", "matchVlanPrio=7",
            "matchDstMac=00:11:22:aa:bb:0c", "matchSrcMac=021122AABBCC", "matchDstIp=10.1.2.3",
            "matchDstIpMask=255.255.0.0", "matchSrcIp=192.0.2.255", "matchSrcIpMask=255.255.255.255",
            "actionDrop=1", "actionNewVlanPrio=5", "actionNewDstMac=2:0:0:0:0:1",
            "actionNewSrcMac=02:00:00:00:00:fe", "actionRedirPort=56", "actionSendToCpuRule=9")
        read = policy(
            2, "Egress policy", 7, 9,
            actions=("drop", "redirect_another_port", "rewrite_src_mac", "rewrite_dst_mac",
                     "rewrite_priority", "redirect_cpu"),
            match={"vlan_id": 4094, "vlan_priority": 7, "dst_mac": "0:11:22:AA:BB:C",
                   "src_mac": "2:11:22:AA:BB:CC", "dst_ip": "10.1.2.3", "dst_ip_mask": "255.255.0.0",
                   "src_ip": "192.0.2.255", "src_ip_mask": "255.255.255.255"},
            values={"redirect_if_num": 56, "src_mac": "2:0:0:0:0:FE", "dst_mac": "2:0:0:0:0:1",
                    "vlan_priority": 5})

        def scene():
            self.check("GET", "/tcam/policy", GOT, policy_list())
            self.create(policy_created(1))
            self.create(policy_created(2), *everything)
            self.create(policy_created(3), body="policyType=2&actionSendToCpuRule=5&policyPrio=4294967295")
            self.check("GET", "/tcam/policy", GOT, policy_list(1, 2, 3))
            self.check("GET", "/tcam/policy/1", GOT, policy(1))
            self.check("GET", "/tcam/policy/2", GOT, read)
            self.check("GET", "/tcam/policy/3", GOT, policy(3, "Gen (IPv6) policy", 2147483647, 5,
                                                            actions=("redirect_cpu",)))
            self.check("DELETE", "/tcam/policy/2", deleted(2))
            for number in (2, 0, 4, "99999999999"):
                self.check("DELETE", f"/tcam/policy/{number}", REFUSED)
                self.check("GET", f"/tcam/policy/{number}", REFUSED)
            self.check("GET", "/tcam/policy", GOT, policy_list(1, 3))
            self.create(policy_created(2), *everything)  # the lowest id that is free
            self.check("GET", "/tcam/policy/2", GOT, read)
            for _ in range(2):
                self.check("DELETE", "/tcam/policy", ALL_DELETED)
                self.check("GET", "/tcam/policy", GOT, policy_list())
            self.create(policy_created(1), *everything)
        self.each_way(scene)

    def test_refused_parameters(self):
        wrong_mac = ("", "x", "00:11:22:33:44", "00:11:22:33:44:55:66", "00-11-22-33-44-55")
        wrong_ip = ("", "x", "10.0.0", "10.0.0.256")
        number = ("",)
        rows = [("matchDstMac", 1, wrong_mac), ("matchSrcMac", 2, wrong_mac), ("matchDstIp", 3, wrong_ip),
                ("matchDstIpMask", 4, (*wrong_ip, "24")), ("matchSrcIp", 5, wrong_ip),
                ("matchSrcIpMask", 6, wrong_ip), ("actionDrop", 7, ("", "0", "2", "x")),
                ("actionNewVlanPrio", 8, number), ("actionNewDstMac", 9, wrong_mac),
                ("actionNewSrcMac", 10, wrong_mac), ("actionRedirPort", 11, number),
                ("actionSendToCpuRule", 12, number)]

        def scene():
            for name, code, values in rows:
                for value in values:
                    self.create(invalid(code, name), f"{name}={value}")
            # The first that is wrong in the order of the codes is named.
            self.create(invalid(2, "matchSrcMac"), "actionRedirPort=", "matchSrcMac=", "matchDstIp=")
            for given in (("policyType=4",), ("policyType=-1",), ("matchVlanId=4095",), ("matchVlanPrio=8",),
                          ("actionNewVlanPrio=8",), ("actionRedirPort=0",), ("actionRedirPort=55",),
                          ("actionRedirPort=200",)):
                self.create(REFUSED, *given)
            self.check("GET", "/tcam/policy", GOT, policy_list())
        self.each_way(scene)

    def test_ports(self):
        def applied(port, outcome=None):
            self.check("POST", f"/tcam/policy/2/port/{port}",
                       outcome or (0, f"Configure the policy 2 to port {port} successfully."))

        def removed(port, outcome=None):
            self.check("DELETE", f"/tcam/policy/2/port/{port}",
                       outcome or (0, f"Delete the policy 2 from port {port} successfully."))

        def scene():
            self.create(policy_created(1), "actionDrop=1")
            self.create(policy_created(2), "actionRedirPort=4")
            for port in (3, 56):
                removed(port, REFUSED)
                applied(port)
                applied(port, ALREADY_SET)
            applied(4, FAILED)  # where it redirects to
            for port in (0, "000"):
                applied(port, (1, "The port number is invalid."))
                removed(port, (1, "The port number is invalid."))
            for port in (55, 120, 200, "99999999999"):
                applied(port, REFUSED)
                removed(port, REFUSED)
            removed(3)
            removed(3, REFUSED)
            self.check("DELETE", "/tcam/policy/2", deleted(2))
            removed(56, REFUSED)
            applied(3, REFUSED)
            self.create(policy_created(2), "actionDrop=1")
            applied(56)
        self.each_way(scene)


class TcamUse(AclTest):
    def stats(self, ingress=None, egress=None):
        for uri in ("/tcam/groupStats", "/tcam/", "/tcam/g"):
            self.check("GET", uri, GOT, group_stats(ingress, egress))

    def test_group_statistics(self):
        used = {"MAC ACL": 1, "IPv4 ACL": 2, "IPv6 ACL": 3}

        def scene():
            self.stats()
            for number, (kind, rules) in enumerate(zip(KINDS, used.values()), 1):
                self.create(kind, "web")
                for at in range(1, rules + 1):
                    self.create_rule(kind, "web", number, 10 * at, *EVERY[kind], f"assign_queue={at}")
            self.stats()  # what is not bound takes no room
            for kind in KINDS:
                self.bind("POST", "if/3", "in", kind, "web", ATTACHED, sequence=0)
            self.stats(used)
            for place in ("if/3", "vlan/1"):
                self.bind("POST", place, "out", "ipv6", "web", ATTACHED, sequence=1)
            self.stats(used, {"IPv6 ACL": 3})
            for number in range(1, 258):
                kind = 3 if number == 1 else 2
                self.check("POST", "/tcam/policy", policy_created(number), variables=(f"policyType={kind}",))
            self.check("POST", "/tcam/policy", policy_created(258))
            egress = {"IPv6 ACL": 3, "Egress policy": 1}
            self.stats({**used, "OpenFlow policy": 1, "Gen (IPv6) policy": 256}, egress)
            self.check("DELETE", "/tcam/policy", ALL_DELETED)
            for kind in KINDS:
                self.bind("DELETE", "if/3", "in", kind, "web", DETACHED)
            self.check("DELETE", "/acl/ipv6/name/web/rule", DELETED, variables=("sequence=10",))
            self.stats({}, {"IPv6 ACL": 2})
        self.each_way(scene)

    def test_what_finds_no_room_is_refused(self):
        def scene():
            self.daemon.lab("limit", "tcam-egress-slices-256", "1")
            self.addCleanup(self.daemon.lab, "limit", "tcam-egress-slices-256", "801")
            self.create("ip", "web")
            self.create("mac", "web")
            for kind, number in (("ip", 1), ("mac", 2)):
                self.create_rule(kind, "web", number, 10, *EVERY[kind])
            self.bind("POST", "if/3", "out", "ip", "web", ATTACHED, sequence=1)
            self.bind("POST", "if/3", "out", "mac", "web", REFUSED, sequence=2)
            self.check("POST", "/tcam/policy", REFUSED, variables=("policyType=3",))
            self.check("POST", "/tcam/policy", policy_created(1))
            self.bind("DELETE", "if/3", "out", "ip", "web", DETACHED)
            self.bind("POST", "if/3", "out", "mac", "web", ATTACHED, sequence=2)
        self.each_way(scene)


class WrongUris(AclTest):
    def test_what_no_module_serves(self):
        unserved = [
            ("PUT", "/acl"), ("PUT", "/acl/ip/name"), ("PUT", "/acl/if/3"), ("POST", "/acl"),
            ("POST", "/acl/"),
            ("POST", "/acl/mac/names"), ("POST", "/acl/mac/name/"), ("DELETE", "/acl/mac/name/"),
            ("POST", "/acl/ip/name/web/rules"), ("POST", "/acl/ip/name/web/rule/1"),
            ("DELETE", "/acl/ip/name/web/rule/1"), ("DELETE", "/acl"), ("DELETE", "/acl/"),
            ("GET", "/acl/count/"), ("GET", "/acl/ip/"), ("GET", "/acl/ip/name"), ("GET", "/acl/ip/name/"),
            ("GET", "/acl/if/"), ("GET", "/acl/if/x"), ("GET", "/acl/if/7/extra"), ("GET", "/acl/vlan/1/"),
            ("PUT", "/tcam"), ("PUT", "/tcam/policy/1"), ("GET", "/tcam/groupstats"),
            ("GET", "/tcam/groupStats/"), ("GET", "/tcam/policy/"), ("GET", "/tcam/policy/x"),
            ("GET", "/tcam/policy/1/"), ("GET", "/tcam/x"),
            ("GET", "/tcam/policy/1/port/3"), ("POST", "/tcam/policy/1"), ("POST", "/tcam/policy/1/port"),
            ("POST", "/tcam/policy/1/port/"), ("POST", "/tcam/policy/1/port/3/"), ("POST", "/tcam/x"),
            ("DELETE", "/tcam/policy/1/port"), ("DELETE", "/tcam/policy/1/port/3x"),
            ("DELETE", "/tcam/policies"),
        ]
        refused = [  # the word after /acl/ is taken for a kind of list
            ("GET", "/acl/ipx"), ("GET", "/acl/IP"), ("GET", "/acl/if"), ("POST", "/acl/if"),
            ("POST", "/acl/if/3/in"), ("DELETE", "/acl/vlan/"), ("DELETE", "/acl/vlan/x"),
        ]

        def scene():
            self.create("mac", "web")
            for rows, outcome in ((unserved, BAD_REQUEST), (refused, REFUSED)):
                for method, uri in rows:
                    self.check(method, uri, outcome, variables=("name=web", "direction=in", "sequence=1"))
            for uri in ("/acls", "/ac", "/ACL/ip", "/tcams", "/TCAM"):
                self.check("GET", uri, UNKNOWN_MODULE)
            self.check("GET", "/acl/mac/name/web", NO_RULES, acl("web", 1))
        self.each_way(scene)


if __name__ == "__main__":
    harness.main()
