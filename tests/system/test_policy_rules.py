"""Rules of access control lists: every variable that makes one, read back in whole replies, as XML and as
JSON, over both ports."""

import harness
from policies import (CREATED, DELETED, DUPLICATE, EVERY, KINDS, NO_ROOM_FOR_RULE, NO_SUCH_LIST, AclTest,
                      acl, acl_entry, acls, every_rule, ip_fields, made, rule, tcp_flags)
from wire import GOT, REFUSED, Nodes

ANY = {"mac": ("src_mac=any", "dest_mac=any"), "ip": ("src_ip=any", "dest_ip=any"),
       "ipv6": ("src_prefix=any", "dest_prefix=any")}


def fields(**expected):
    return lambda sequence: rule(sequence, expected)


def ip(protocol, *ends, **expected):
    return lambda sequence: rule(sequence, ip_fields(protocol, *ends, **expected))


ATTRIBUTES = ("log=1", "assign_queue=7", "mirror_intf=4", "redirect_intf=56", "time_range=office-hours",
              "rate_limit=4294967295", "burst_size=128")
ATTRIBUTES_READ = {"log": "TRUE", "assign_queue": 7, "mirror_intf": 4, "redirect_intf": 56,
                   "time_range": "office-hours", "rule_status": "No State", "rate_limit": 4294967295,
                   "burst_size": 128}
REFUSED_ATTRIBUTES = [
    ("log=2",), ("log=yes",), ("log=-1",), ("assign_queue=8",), ("assign_queue=x",), ("mirror_intf=0",),
    ("mirror_intf=55",), ("mirror_intf=200",), ("redirect_intf=120",), ("redirect_intf=4294967296",),
    ("redirect_intf=0/4",), ("time_range=" + "t" * 32,), ("time_range=a+b",), ("time_range=a%0Ab",),
    ("rate_limit=1000",), ("rate_limit=1000", "burst_size="), ("rate_limit=1000", "burst_size=0"),
    ("rate_limit=1000", "burst_size=129"), ("rate_limit=0", "burst_size=1"),
    ("rate_limit=1k", "burst_size=1"), ("rate_limit=1000", "burst_size=-1"),
]


class Rules(AclTest):
    def test_sequence_numbers(self):
        def scene():
            full = (NO_ROOM_FOR_RULE, made("ip", "web", 1))
            uri, given = "/acl/ip/name/web/rule", ("action=permit", "protocol=udp", *ANY["ip"])
            self.check("POST", uri, NO_SUCH_LIST, made("ip", "web"), variables=given)
            self.create("ip", "web")
            for queue, asked, got in ((0, 5, 5), (1, None, 10), (2, 2147483640, 2147483640), (3, 1, 1)):
                sequence = () if asked is None else (f"sequence={asked}",)
                self.create_rule("ip", "web", 1, got, *given, f"assign_queue={queue}", *sequence)
            for taken in (5, 0, 2147483648, 4294967295):
                self.check("POST", uri, *full, variables=(*given, "assign_queue=4", f"sequence={taken}"))
            for wrong in ("x", "-1", "1x", "4294967296", "1.5"):
                self.check("POST", uri, REFUSED, variables=(*given, "assign_queue=4", f"sequence={wrong}"))
            self.check("POST", uri, *full, variables=(*given, "assign_queue=4"))  # no multiple of 10 is left
            read = [rule(n, ip_fields("17(UDP)", assign_queue=q)) for n, q in
                    ((1, 3), (5, 0), (10, 1), (2147483640, 2))]
            self.check("GET", "/acl/ip/name/web", GOT, acl("web", 1, read))
            self.check("POST", uri, DUPLICATE, made("ip", "web", 1),
                       variables=(*given, "assign_queue=2", "sequence=6"))
            for sequence in (5, 2147483640):
                self.check("DELETE", uri, DELETED, variables=(f"sequence={sequence}",))
                self.check("DELETE", uri, REFUSED, variables=(f"sequence={sequence}",))
            for wrong in ((), ("sequence=",), ("sequence=x",), ("sequence=0",), ("sequence=4294967296",)):
                self.check("DELETE", uri, REFUSED, variables=wrong)
            self.check("DELETE", "/acl/ip/name/mail/rule", NO_SUCH_LIST, variables=("sequence=1",))
            self.check("DELETE", "/acl/ipx/name/web/rule", REFUSED, variables=("sequence=1",))
            self.check("GET", "/acl/ip/name/web", GOT, acl("web", 1, [read[0], read[2]]))
        self.each_way(scene)

    def test_what_every_rule_needs(self):
        def scene():
            for kind in KINDS:
                self.create(kind, "web")
                given = EVERY[kind]
                for action in ((), ("action=",), ("action=Permit",), ("action=drop",)):
                    self.check("POST", f"/acl/{kind}/name/web/rule", REFUSED, variables=(*action, *given))
                self.check("POST", f"/acl/{kind}/name/{'n' * 32}/rule", REFUSED,
                           variables=("action=permit", *given))
                self.refuse_rules(kind, [given[:-1], *[(*given, *row) for row in REFUSED_ATTRIBUTES]])
                self.check("DELETE", f"/acl/{kind}/name", DELETED, variables=("name=web",))
        self.each_way(scene)

    def test_a_value_longer_than_255_characters_counts_as_missing(self):
        def scene():
            self.create("ip", "web")
            long = "1" * 256
            given = ["action=permit", "protocol=udp", "src_ip=any", "dest_ip=any"]
            for at in range(len(given)):
                name = given[at].split("=")[0]
                self.check("POST", "/acl/ip/name/web/rule", REFUSED,
                           variables=(*given[:at], f"{name}={long}", *given[at + 1:]))
            self.create_rule("ip", "web", 1, 10, *given, f"dscp={long}", f"log={long}", f"sequence={long}")
            self.check("POST", "/acl/ip/name/web/rule", CREATED, made("ip", "web", 1, 20),
                       body="&".join((*given, f"dscp={long}", "log=1")))
            self.check("GET", "/acl/ip/name/web", GOT, acl("web", 1, [
                rule(10, ip_fields("17(UDP)")), rule(20, ip_fields("17(UDP)", log="TRUE"))]))
        self.each_way(scene)

    def test_duplicates_and_long_lists(self):
        def scene():
            for number, kind in enumerate(KINDS, 1):
                self.create(kind, "long")
                for at in range(1, 201):
                    given = (*EVERY[kind], "action=" + ("permit", "deny")[at % 2], f"rate_limit={at}",
                             "burst_size=1")
                    self.create_rule(kind, "long", number, 10 * at, *given)
                self.check("POST", f"/acl/{kind}/name/long/rule", DUPLICATE, made(kind, "long", number),
                           variables=given)
                rules = [every_rule(10 * at, {"rate_limit": at, "burst_size": 1}, ("Permit", "Deny")[at % 2])
                         for at in range(1, 201)]
                self.check("GET", f"/acl/{kind}/name/long", GOT, acl("long", number, rules))
                self.check("GET", f"/acl/{kind}", GOT, acls(kind, acl_entry("long", number, 200)))
        self.each_way(scene)


class MacRules(AclTest):
    ETHERTYPES = {"appletalk": 0x809B, "arp": 0x0806, "ibmsna": 0x80D5, "ipv4": 0x0800, "ipv6": 0x86DD,
                  "ipx": 0x8037, "mplsmcast": 0x8848, "mplsucast": 0x8847, "netbios": 0x8191,
                  "novell": 0x8137, "novell2": 0x8138, "pppoe": 0x8863, "pppoe2": 0x8864, "rarp": 0x8035,
                  "1536": 1536, "65535": 65535, "34825": 0x8809}

    def test_matches(self):
        station = {"mac": "00:11:22:AA:BB:CC", "mask": "FF:FF:FF:FF:FF:FF"}
        vendor = {"mac": "02:00:00:00:00:00", "mask": "FF:FF:FF:00:00:00"}
        source = ("src_mac=00:11:22:aa:bb:cc", "src_mask=ff:ff:ff:ff:ff:ff")
        destination = ("dest_mac=02:00:00:00:00:00", "dest_mask=FF:FF:FF:00:00:00")
        rows = [
            (EVERY["mac"], every_rule),
            ((*source, "dest_mac=any"), fields(source=station)),
            (("src_mac=any", *destination), fields(destination=vendor)),
            ((*source, "dest_mac=bpdu", "dest_mask=ignored"),
             fields(source=station, destination={"mac": "01:80:C2:00:00:00", "mask": "FF:FF:FF:00:00:00"})),
            ((*ANY["mac"], "vlan=4094"), fields(vlan="4094")),
            ((*ANY["mac"], "vlan=1", "endvlan=5"), fields(vlan="1")),
            ((*ANY["mac"], "cos=0"), fields(cos=0)),
            ((*source, *destination, "ethertype=arp", "vlan=10", "cos=7", *ATTRIBUTES),
             fields(source=station, destination=vendor, ethertype="0x0806", vlan="10", cos=7,
                    **ATTRIBUTES_READ)),
            ((*EVERY["mac"], *ATTRIBUTES), lambda sequence: every_rule(sequence, ATTRIBUTES_READ)),
            *[((*ANY["mac"], f"ethertype={word}"), fields(ethertype=f"0x{value:04X}"))
              for word, value in self.ETHERTYPES.items()],
        ]
        self.each_way(lambda: self.check_rules("mac", rows))

    def test_refusals(self):
        any_source, address = "src_mac=any", "00:11:22:33:44:55"
        both = ANY["mac"]

        def scene():
            self.create("mac", "web")
            self.refuse_rules("mac", [
                (), (any_source,), ("dest_mac=any",), ("src_mac=", "dest_mac=any"),
                (f"src_mac={address}", "dest_mac=any"), (any_source, f"dest_mac={address}"),
                (f"src_mac={address}", f"src_mask={address}0", "dest_mac=any"),
                (f"src_mac={address}00", f"src_mask={address}", "dest_mac=any"),
                ("src_mac=bpdu", f"src_mask={address}", "dest_mac=any"),
                ("src_mac=0:1:2:3:4:5", f"src_mask={address}", "dest_mac=any"),
                (any_source, "dest_mac=00-11-22-33-44-55", f"dest_mask={address}"),
                (any_source, f"dest_mac={address}", "dest_mask=24"), ("src_mac=Any", "dest_mac=any"),
                *[(*both, f"ethertype={value}") for value in ("0x0806", "1535", "65536", "ARP", "-1", "ip")],
                *[(*both, f"vlan={value}") for value in ("0", "4095", "x", "10-20")],
                *[(*both, f"cos={value}") for value in ("8", "x", "-1")],
            ])
        self.each_way(scene)


class IpTest(AclTest):
    """What lists of both IP versions have."""

    PORTS = {"eq:0": "equal to 0", "neq:22": "not equal to 22", "lt:1024": "less than 1024",
             "gt:65535": "greater than 65535", "range:1000:2000": "1000..2000", "range:5:5": "5..5"}
    NO_PORTS = {"eq:": "equal to 0", "neq:": "not equal to 0", "lt:": "less than 0", "gt:": "greater than 0"}
    WRONG_PORTS = ("80", "eq:65536", "eq:http", "ge:5", "EQ:5", "range:1000", "range:1000:", "range::5",
                   "range:2000:1000", "range:1:2:3", "range:1-2", "eq:-1", "gt:99999999999")

    def protocol_rows(self, both, words, numbers):
        return [((f"protocol={word}", *both), ip(text)) for word, text in {**words, **numbers}.items()]

    def flag_rows(self, both):
        """Flags and "established", which stands among the flags of its own rule or else of the last rule
        before that has any."""
        tcp = ("protocol=tcp", *both)
        return [
            ((*tcp, "tcp_syn=1", "tcp_fin=0"),
             ip("6(TCP)", tcp_flags=tcp_flags(syn="set", fin="clear"))),
            ((*tcp, "tcp_fin=1", "tcp_syn=0", "tcp_rst=1", "tcp_psh=1", "tcp_ack=0", "tcp_urg=1"),
             ip("6(TCP)", tcp_flags=tcp_flags(fin="set", syn="clear", rst="set", psh="set", ack="clear",
                                              urg="set"))),
            ((*tcp, "tcp_ack=1", "tcp_rst=1", "tcp_established=0"),
             ip("6(TCP)", tcp_flags=tcp_flags(ack="set", rst="set", established="FALSE"))),
            ((*tcp, "tcp_psh=1", "tcp_established=1"),
             ip("6(TCP)", tcp_flags=tcp_flags(psh="set", established="TRUE"))),
        ]

    def shared_rows(self, both):
        all_of_it = ("protocol=tcp", *both, "dscp=63", "precedence=7", "tos=B8", "tos_mask=fC", "fragments=0",
                     "src_l4_port=gt:1023", "dest_l4_port=range:80:90", "tcp_syn=1", *ATTRIBUTES)
        return [
            (("protocol=ip" if "ip=" in both[0] else "protocol=ipv6", *both), every_rule),
            (("protocol=255", *both, "log=0"), lambda sequence: every_rule(sequence, {"log": "FALSE"})),
            (("protocol=256", "dscp=x", *ATTRIBUTES), lambda sequence: every_rule(sequence, ATTRIBUTES_READ)),
            (("protocol=255", *both, "dscp=46"), ip("255(IP)", dscp=46)),
            (("protocol=udp", *both, "precedence=0"), ip("17(UDP)", precedence=0)),
            (("protocol=udp", *both, "tos=b8"), ip("17(UDP)", tos="ToS Bits: b8, ToS Mask: ff")),
            (("protocol=udp", *both, "fragments=1"), ip("17(UDP)", fragments="TRUE")),
            *[(("protocol=udp", *both, f"src_l4_port={text}"), ip("17(UDP)", {"l4_port": read}))
              for text, read in self.PORTS.items()],
            *[(("protocol=tcp", *both, f"dest_l4_port={text}"), ip("6(TCP)", {}, {"l4_port": read}))
              for text, read in self.PORTS.items()],
            *[(("protocol=6", *both, f"src_l4_port={text}"), ip("6(TCP)", {"l4_port": read}))
              for text, read in self.NO_PORTS.items()],
            (all_of_it, ip("6(TCP)", {"l4_port": "greater than 1023"}, {"l4_port": "80..90"}, dscp=63,
                           precedence=7, tos="ToS Bits: b8, ToS Mask: fc", tcp_flags=tcp_flags(syn="set"),
                           fragments="FALSE", **ATTRIBUTES_READ)),
            *self.flag_rows(both),
        ]

    def shared_refusals(self, both, icmp):
        udp, tcp = ("protocol=udp", *both), ("protocol=tcp", *both)
        return [
            both, ("protocol=", *both), ("protocol=TCP", *both), ("protocol=257", *both),
            ("protocol=-1", *both), ("protocol=udp",), ("protocol=udp", both[0]), ("protocol=udp", both[1]),
            *[(*udp, given) for given in (
                "dscp=64", "dscp=x", "precedence=8", "tos=1", "tos=b88", "tos=xx", "fragments=2",
                "fragments=no", "tcp_syn=1", "tcp_established=1", "tcp_established=0", "icmp_type=8",
                "icmp_message=unreachable", "igmp_type=17" if icmp == "icmp" else "routing=2")],
            (*udp, "tos=b8", "tos_mask=f"), (*udp, "tos=b8", "tos_mask=fg"),
            *[(*udp, f"{name}={text}") for name in ("src_l4_port", "dest_l4_port")
              for text in self.WRONG_PORTS],
            (f"protocol={icmp}", *both, "src_l4_port=eq:80"), ("protocol=132", *both, "dest_l4_port=eq:80"),
            (*tcp, "tcp_syn=2"), (*tcp, "tcp_fin=x"), (*tcp, "tcp_established=2"),
            (*tcp, "tcp_established=1", "tcp_ack=1"), (*tcp, "tcp_established=1", "tcp_rst=0"),
            *[(f"protocol={icmp}", *both, *given) for given in (
                ("icmp_type=256",), ("icmp_type=x",), ("icmp_type=3", "icmp_code=256"),
                ("icmp_type=3", "icmp_code=x"), ("icmp_message=pong",),
                ("icmp_message=time-exceeded", "icmp_type=11"))],
        ]

    def established_scene(self, kind, both):
        """How "established" of a rule without other flags is shown."""
        tcp = ("protocol=tcp", *both)
        self.create(kind, "web")
        self.create_rule(kind, "web", 1, 10, *tcp, "tcp_established=1")
        plain = [rule(10, ip_fields("6(TCP)"))]
        self.check("GET", f"/acl/{kind}/name/web", GOT, acl("web", 1, plain))
        self.create_rule(kind, "web", 1, 20, *tcp, "tcp_syn=1")
        self.create_rule(kind, "web", 1, 30, *tcp, "tcp_established=1", "action=deny")
        self.create_rule(kind, "web", 1, 40, *tcp, "tcp_established=0")
        flags = Nodes((name, name, word) for name, word in tcp_flags(syn="set").items())
        flags += [("established", "established", "TRUE"), ("established", "established", "FALSE")]
        self.check("GET", f"/acl/{kind}/name/web", GOT, acl("web", 1, [
            *plain, rule(20, ip_fields("6(TCP)", tcp_flags=flags)), rule(30, ip_fields("6(TCP)"), "Deny"),
            rule(40, ip_fields("6(TCP)"))]))


class IpRules(IpTest):
    WORDS = {"eigrp": "88(EIGRP)", "gre": "47(GRE)", "icmp": "1(ICMP)", "igmp": "2(IGMP)",
             "ipinip": "94(IPINIP)", "ospf": "89(OSPF)", "pim": "103(PIM)", "tcp": "6(TCP)", "udp": "17(UDP)"}
    NUMBERS = {"58": "58(ICMPv6)", "0": "0", "50": "50", "254": "254"}
    MESSAGES = {
        "echo": (8, 0), "echo-reply": (0, 0), "host-redirect": (5, 1), "mobile-redirect": (32, 0),
        "net-redirect": (5, 0), "net-unreachable": (3, 0), "redirect": (5, 256), "packet-too-big": (3, 4),
        "port-unreachable": (3, 3), "source-quench": (4, 0), "router-solicitation": (10, 0),
        "router-advertisement": (9, 256), "ttl-exceeded": (11, 0), "time-exceeded": (11, 256),
        "unreachable": (3, 256)}

    def test_matches(self):
        both, icmp = ANY["ip"], ("protocol=icmp", *ANY["ip"])
        network = {"ip": "10.1.0.0", "mask": "255.255.0.0"}
        host = {"ip": "192.0.2.7", "mask": "255.255.255.255"}
        ends = ("src_ip=10.1.0.0", "src_mask=255.255.0.0", "dest_ip=192.0.2.7", "dest_mask=255.255.255.255")
        rows = [
            *self.shared_rows(both), *self.protocol_rows(both, self.WORDS, self.NUMBERS),
            (("protocol=every", "src_ip=x", "dest_mask=x", "tcp_syn=9", "action=deny"),
             lambda sequence: every_rule(sequence, action="Deny")),
            (("protocol=ip", *ends), ip("255(IP)", network, host)),
            (("protocol=ip", *ends[:2], "dest_ip=any"), ip("255(IP)", network)),
            (("protocol=udp", *ends, "src_l4_port=eq:53"),
             ip("17(UDP)", {**network, "l4_port": "equal to 53"}, host)),
            (("protocol=igmp", *both, "igmp_type=0"), ip("2(IGMP)", igmp_type=0)),
            *[((*icmp, f"icmp_message={word}"), ip("1(ICMP)", icmp_type=kind, icmp_code=code))
              for word, (kind, code) in self.MESSAGES.items()],
            ((*icmp, "icmp_type=255"), ip("1(ICMP)", icmp_type=255, icmp_code=256)),
            ((*icmp, "icmp_type=255", "icmp_code=255"), ip("1(ICMP)", icmp_type=255, icmp_code=255)),
        ]
        self.each_way(lambda: self.check_rules("ip", rows))

    def test_refusals(self):
        both = ANY["ip"]
        rows = [*self.shared_refusals(both, "icmp"), ("protocol=icmpv6", *both), ("protocol=ipv6", *both),
                ("protocol=igmp", *both, "igmp_type=256"), ("protocol=igmp", *both, "igmp_type=x"),
                ("protocol=icmp", *both, "icmp_message=echo-request"),
                ("protocol=ip", "src_ip=10.0.0.0", "dest_ip=any"),
                ("protocol=ip", "src_ip=10.0.0", "src_mask=255.0.0.0", "dest_ip=any"),
                ("protocol=ip", "src_ip=10.0.0.0", "src_mask=8", "dest_ip=any"),
                ("protocol=ip", "src_ip=any", "dest_ip=2001:db8::1", "dest_mask=255.255.255.255"),
                ("protocol=ip", "src_ip=any", "dest_ip=10.0.0.256", "dest_mask=255.255.255.255")]

        def scene():
            self.create("ip", "web")
            self.refuse_rules("ip", rows)
        self.each_way(scene)

    def test_established(self):
        self.each_way(lambda: self.established_scene("ip", ANY["ip"]))


class Ipv6Rules(IpTest):
    WORDS = {"icmpv6": "58(ICMPv6)", "tcp": "6(TCP)", "udp": "17(UDP)"}
    NUMBERS = {"1": "1(ICMP)", "89": "89(OSPF)", "0": "0", "50": "50"}
    MESSAGES = {
        "echo-reply": (129, 0), "echo-request": (128, 0), "unreachable": (1, 256),
        "destination-unreachable": (1, 256), "time-exceeded": (3, 256), "port-unreachable": (1, 4),
        "packet-too-big": (2, 0), "router-solicitation": (133, 0), "router-advertisement": (134, 0),
        "no-route": (1, 0), "router-renumbering": (138, 256), "no-admin": (1, 1), "next-header": (4, 1),
        "header": (4, 0), "hop-limit": (3, 0), "mld-query": (130, 0), "mld-reduction": (132, 0),
        "mld-report": (131, 0), "nd-na": (136, 0), "nd-ns": (135, 0)}

    def message_rows(self, icmp):
        """Two words mean the same message: the second is told apart by the log."""
        for word, (kind, code) in self.MESSAGES.items():
            if word == "destination-unreachable":
                yield ((*icmp, f"icmp_message={word}", "log=1"),
                       ip("58(ICMPv6)", icmp_type=kind, icmp_code=code, log="TRUE"))
            else:
                yield (*icmp, f"icmp_message={word}"), ip("58(ICMPv6)", icmp_type=kind, icmp_code=code)

    def test_matches(self):
        both, icmp = ANY["ipv6"], ("protocol=icmpv6", *ANY["ipv6"])
        network = {"ipv6": "2001:db8::", "prefix_length": 32}
        host = {"ipv6": "fe80::1", "prefix_length": 128}
        ends = ("src_prefix=2001:DB8:0::", "src_prefix_length=32", "dest_prefix=fe80::1",
                "dest_prefix_length=128")
        rows = [
            *self.shared_rows(both), *self.protocol_rows(both, self.WORDS, self.NUMBERS),
            (("protocol=every", "src_prefix=x", "flow_lable=x", "action=deny"),
             lambda sequence: every_rule(sequence, action="Deny")),
            (("protocol=ipv6", *ends), ip("255(IP)", network, host)),
            (("protocol=udp", *ends[:2], "dest_prefix=any", "src_l4_port=eq:53"),
             ip("17(UDP)", {**network, "l4_port": "equal to 53"})),
            (("protocol=ipv6", *both, "routing=1"), ip("255(IP)", routing="TRUE")),
            (("protocol=ipv6", *both, "routing=0", "flow_lable=0"),
             ip("255(IP)", routing="FALSE", flow_lable=0)),
            (("protocol=ipv6", *both, "flow_lable=1048575", "fragments=1"),
             ip("255(IP)", fragments="TRUE", flow_lable=1048575)),
            *self.message_rows(icmp),
            ((*icmp, "icmp_type=255", "icmp_code=255"), ip("58(ICMPv6)", icmp_type=255, icmp_code=255)),
        ]
        self.each_way(lambda: self.check_rules("ipv6", rows))

    def test_refusals(self):
        both = ANY["ipv6"]
        rows = [*self.shared_refusals(both, "icmpv6"), ("protocol=icmp", *both), ("protocol=ip", *both),
                ("protocol=icmpv6", *both, "icmp_message=echo"), ("protocol=1", *both, "icmp_type=8"),
                ("protocol=ipv6", *both, "routing=x"), ("protocol=ipv6", *both, "flow_lable=1048576"),
                ("protocol=ipv6", *both, "flow_lable=0x1"),
                ("protocol=ipv6", "src_prefix=2001:db8::", "dest_prefix=any"),
                ("protocol=ipv6", "src_prefix=2001:db8::", "src_prefix_length=0", "dest_prefix=any"),
                ("protocol=ipv6", "src_prefix=2001:db8::", "src_prefix_length=129", "dest_prefix=any"),
                ("protocol=ipv6", "src_prefix=2001:db8::/32", "src_prefix_length=32", "dest_prefix=any"),
                ("protocol=ipv6", "src_prefix=any", "dest_prefix=10.0.0.1", "dest_prefix_length=32"),
                ("protocol=ipv6", "src_prefix=any", "dest_prefix=:::", "dest_prefix_length=32")]

        def scene():
            self.create("ipv6", "web")
            self.refuse_rules("ipv6", rows)
        self.each_way(scene)

    def test_established(self):
        self.each_way(lambda: self.established_scene("ipv6", ANY["ipv6"]))


if __name__ == "__main__":
    harness.main()
