"""What the API answers about access control lists and TCAM policies (outcomes, and the data of whole answers
as wire.py takes them), and scenes with lists."""

from scenes import UriTest
from wire import GOT, REFUSED, Nodes, numbered

CREATED = (0, "Create successfully.")
DELETED = (0, "Delete successfully.")
ATTACHED = (0, "The rule attachs successfully.")
ATTACHED_BEFORE = (0, "The rule has already attached.")
DETACHED = (0, "The ACL detaches successfully.")
NO_LISTS = (0, "No ACLs are configured.")
NO_RULES = (0, "No rules have been configured for this ACL.")
NO_SUCH_LIST = (1, "There is no ACL configured with the name.")
NAME_TAKEN = (1, "The ACL name already exists.")
NO_ROOM_FOR_RULE = (2, "The ACL rules count is full or the sequence number is not available.")
DUPLICATE = (3, "Failed to create the specified rule as it duplicates already existing one.")

KINDS = {"mac": "MAC", "ip": "IPv4", "ipv6": "IPv6"}  # word in URIs and variables: word in answers

# What makes a rule of each kind that matches every packet, besides its action.
EVERY = {"mac": ("src_mac=any", "dest_mac=any"), "ip": ("protocol=every",), "ipv6": ("protocol=every",)}


# --- Lists ---------------------------------------------------------------------------------------------

def bindings(inbound=((), ()), outbound=((), ())):
    """Where a list is bound: (interface numbers, VLAN ids) for each direction."""
    return {name: {"interfaces": numbered("if", interfaces), "vlans": numbered("vlan", vlans)}
            for name, (interfaces, vlans) in (("inbound", inbound), ("outbound", outbound))}


def acl(name, number, rules=(), **bound):
    """GET of one list. Rules are rule()s."""
    return {"acl_name": name, "acl_id": number, **bindings(**bound), "rules_number": len(rules),
            "rules": numbered("rule", rules)}


def acls(kind, *entries):
    """GET of all lists of a kind. Entries are acl_entry()s."""
    rows = [(str(at), "acl", entry) for at, entry in enumerate(entries, 1)]
    return {"acls": Nodes([("acl_type", "acl_type", kind), *rows])}


def acl_entry(name, number, rules=0, **bound):
    return {"name": name, "id": number, "rules_number": rules, **bindings(**bound)}


def bound_acls(*entries):
    """GET of the lists on an interface or VLAN: (kind, name, id, sequence number) each."""
    return {"acls": numbered("acl", [{"type": KINDS[kind], "name": name, "id": number, "sequence_number": at}
                                     for kind, name, number, at in entries])}


def made(kind, name, number=None, sequence=None):
    """What the creation of a list, and with its id and a sequence number that of a rule, tells."""
    data = {"acl_type": kind, "acl_name": name}
    if number is not None:
        data["acl_id"] = number
    if sequence is not None:
        data["sequence_number"] = sequence
    return data


# --- Rules ---------------------------------------------------------------------------------------------

def rule(sequence, fields, action="Permit"):
    """A rule that does not match every packet, with the fields of its kind in their order."""
    return {"sequence_number": sequence, "action": action, "match_all": "FALSE", **fields}


def every_rule(sequence, fields=None, action="Permit"):
    return {"sequence_number": sequence, "action": action, "match_all": "TRUE", **(fields or {})}


def ip_fields(protocol, source=None, destination=None, **others):
    return {"protocol": protocol, "source": source or {}, "destination": destination or {}, **others}


def tcp_flags(**given):
    """The subtree of flags; those that are not given are ignored. "established" comes last."""
    flags = {name: given.get(name, "ignore") for name in ("fin", "syn", "rst", "psh", "ack", "urg")}
    if "established" in given:
        flags["established"] = given["established"]
    return flags


# --- TCAM policies -------------------------------------------------------------------------------------

ACTIONS = ("drop", "redirect_another_port", "rewrite_outer_vlan", "rewrite_src_mac", "rewrite_dst_mac",
           "rewrite_priority", "rewrite_outer_TPID", "redirect_cpu")
NO_MAC, NO_IP, NO_IPV6 = "0:0:0:0:0:0", "0.0.0.0", "::"


def policy_list(*numbers):
    return {"policies": numbered("policy", [{"policy_id": number} for number in numbers])}


def policy(number, kind="OpenFlow policy", priority=0, rule_number=0, match=None, actions=(), values=None):
    """GET of one policy: what `match` and `values` do not name is zero, the actions are those named."""
    classifiers = {
        "dst_mac": NO_MAC, "dst_ip": NO_IP, "dst_ip_mask": NO_IP, "dst_ipv6": NO_IPV6,
        "dst_ipv6_mask": NO_IPV6, "dst_port_icmp_code": 0, "dst_port_icmp_code_mask": 0, "src_mac": NO_MAC,
        "src_ip": NO_IP, "src_ip_mask": NO_IP, "src_ipv6": NO_IPV6, "src_ipv6_mask": NO_IPV6,
        "src_port_icmp_code": 0, "src_port_icmp_code_mask": 0, "ip_dscp": 0, "ip_dscp_mask": 0,
        "ip_protocol": 0, "ip_protocol_mask": 0, "vlan_id": 0, "vlan_priority": 0, "ether_type": "0x0"}
    action_value = {"dscp": 0, "ether_type": "0x0", "redirect_if_num": 0, "src_mac": NO_MAC,
                    "dst_mac": NO_MAC, "vlan_id": 0, "vlan_priority": 0}
    asked_for = Nodes((f"{name}." if name == "rewrite_outer_TPID" else name, name,
                       "Yes" if name in actions else "No") for name in ACTIONS)
    return {"policy": {
        "policy_id": number, "policy_priority": priority, "policy_type": kind, "rule_num": str(rule_number),
        "rule_priority": 0, "policy_header": {"version": "0.1", "header_length": 12},
        "classifiers": {**classifiers, **(match or {})}, "action_type": asked_for,
        "action_value": {**action_value, **(values or {})}}}


# The groups of each stage: kind, slices side by side, entries of a slice. And the slices that there are.
GROUPS = {"ingress": (("OpenFlow policy", 1, 256), ("Gen (IPv6) policy", 2, 256), ("IPv4 ACL", 1, 512),
                      ("MAC ACL", 1, 512), ("IPv6 ACL", 2, 512)),
          "egress": (("Egress policy", 1, 256), ("IPv4 ACL", 1, 256), ("MAC ACL", 1, 256),
                     ("IPv6 ACL", 2, 256))}
SLICES = {"ingress": {256: 5, 512: 400}, "egress": {256: 801}}


def group_stage(stage, used):
    """One stage of the group statistics; `used` has the number of entries by kind."""
    groups, entries, slices = [], 0, dict.fromkeys(SLICES[stage], 0)
    for gid, (kind, width, size) in enumerate(GROUPS[stage], 1):
        count, depth = used.get(kind, 0), -(-used.get(kind, 0) // size)
        entries += count * width
        slices[size] += depth * width
        groups.append({"is_used": "Yes", "gid": gid, "type": kind, "width": width, "depth": depth,
                       "count": count, "free": depth * size - count, "total": depth * size}
                      if count else {"is_used": "No"})

    def numbers(count, total):
        return {"count": count, "free": total - count, "total": total}

    room = sum(size * total for size, total in SLICES[stage].items())
    return {"groups": numbered("group", groups), "entry_stats": numbers(entries, room),
            "slice_stats": {f"slice_{size}": numbers(slices[size], total)
                            for size, total in SLICES[stage].items()}}


def group_stats(ingress=None, egress=None):
    """GET of the group statistics."""
    return {"group_stats": {"stage_ingress": group_stage("ingress", ingress or {}),
                            "stage_egress": group_stage("egress", egress or {})}}


def policy_created(number):
    return (0, f"Create a new policy successfully (Policy ID is {number}).")


# --- Scenes --------------------------------------------------------------------------------------------

class AclTest(UriTest):
    """The lists of a scene have ids from 1 in the order they are made in, whatever their kinds."""

    def create(self, kind, name):
        self.check("POST", f"/acl/{kind}/name", CREATED, made(kind, name), variables=(f"name={name}",))

    def create_rule(self, kind, name, number, sequence, *variables):
        """A rule that permits unless the variables say otherwise."""
        if not any(given.startswith("action=") for given in variables):
            variables = ("action=permit", *variables)
        self.check("POST", f"/acl/{kind}/name/{name}/rule", CREATED, made(kind, name, number, sequence),
                   variables=variables)

    def refuse_rules(self, kind, rows, outcome=REFUSED):
        """None of the variables makes a rule in list 1, web, which has none and still has none then."""
        for variables in rows:
            self.check("POST", f"/acl/{kind}/name/web/rule", outcome,
                       variables=("action=permit", *variables))
        self.check("GET", f"/acl/{kind}/name/web", NO_RULES, acl("web", 1))

    def check_rules(self, kind, rows):
        """Makes list 1, web, with a rule from each row's variables, and reads all rules at once: each is what
        its row says, given the sequence number that the switch chooses."""
        self.create(kind, "web")
        for at, (variables, _) in enumerate(rows, 1):
            self.create_rule(kind, "web", 1, 10 * at, *variables)
        rules = [build(10 * at) for at, (_, build) in enumerate(rows, 1)]
        self.check("GET", f"/acl/{kind}/name/web", GOT, acl("web", 1, rules))

    def bind(self, method, place, direction, kind, name, outcome, sequence=None):
        given = [f"direction={direction}", f"type={kind}", f"name={name}"]
        given += [] if sequence is None else [f"sequence={sequence}"]
        self.check(method, f"/acl/{place}", outcome, variables=given)
