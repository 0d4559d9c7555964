"""Every URI of the modules login, base and vlans: whole replies, as XML and as JSON, over both ports."""

import re
import time

import harness
import wire
from scenes import UriTest
from wire import BAD_REQUEST, GOT, Rows, session_key

INVALID = "The value of parameter is invalid."


def members(last, tagged=()):
    return Rows("interface", [(n, {"ifNum": n, "participationMode": "Include", "isTagging": int(n in tagged)})
                              for n in range(1, last + 1)])


class Login(UriTest):
    def test_info(self):
        def scene():
            self.check("GET", "/login", GOT,
                       {"infomation": {"rest_session_max": 5, "rest_session_timeout_in_minutes": 5}})
        self.each_way(scene)

    def session_list(self, count):
        """The answer with the times of day it was made at replaced; the own session is never idle."""
        reply = self.session_in_use.ask("GET", "/login/RESTSessions", f"format={self.form}")
        times = re.findall(r"\d\d:\d\d:\d\d", reply.text())
        self.assertEqual(len(times), 2 * count, reply.text())
        rows = [(i, {"user_name": "admin", "remote_ip": "127.0.0.1", "login_time": times[2 * i - 2],
                     "idle_time": times[2 * i - 1]}) for i in range(1, count + 1)]
        self.assert_answers(reply, GOT, {"rest_sessions": Rows("rest_session", rows)}, self.form)
        return times

    def test_session_list(self):
        def scene():
            self.assertEqual(self.session_list(1)[1], "00:00:00")
            self.session(self.daemon)
            self.assertEqual(self.session_list(2)[1], "00:00:00")
        self.each_way(scene)

    def log_in(self, *variables, body=None):
        query = "&".join((f"format={self.form}", *variables))
        return self.client(self.daemon, tls=self.tls).ask("POST", f"/login?{query}", body)

    def test_log_in_by_query_or_body(self):
        given = ("user=admin", "password=" + wire.PASSWORD.replace(" ", "%20"))

        def scene():
            for in_query in (True, False):
                before = int(time.time())
                reply = self.log_in(*given) if in_query else self.log_in(body="&".join(given))
                keys = {session_key("127.0.0.1", second) for second in range(before, int(time.time()) + 1)}
                key = re.search("[0-9a-f]{32}", reply.text()).group(0)
                self.assertIn(key, keys)
                self.assert_answers(reply, (0, "Log in successfully."), {"sessionKey": key}, self.form)
        self.each_way(scene)

    def test_log_in_again_with_the_key(self):
        def scene():
            self.check("POST", "/login", (0, "You already logged in."),
                       variables=("user=admin", "password=correct+horse"))
            self.session_list(1)
        self.each_way(scene)

    def test_refused_log_in(self):
        def scene():
            for given in (("user=admin", "password=wrong"), ("user=nobody", "password=correct+horse"),
                          ("user=admin", "password="), ("user=admin",), ("password=correct+horse",), ()):
                self.assert_answers(self.log_in(*given), (1, "Authentication failed."), form=self.form)
        self.each_way(scene)

    def test_log_out(self):
        def scene():
            self.check("DELETE", "/login", (0, "Log out successfully."))
            self.check("DELETE", "/login", wire.ENDED)
        self.each_way(scene)

    def test_time_out(self):
        updated = (0, "Update timeout value for REST Sessions successfully.")
        restored = (0, "Update timeout value to default for REST Sessions successfully.")
        steps = [("1", updated, 1), ("160", updated, 160), ("007", updated, 7), ("0", (1, INVALID), 7),
                 ("161", (1, INVALID), 7), ("-2", (1, INVALID), 7), ("", (1, INVALID), 7),
                 ("1.5", (1, INVALID), 7), ("%2B3", (1, INVALID), 7), ("4294967301", (1, INVALID), 7),
                 ("-", (1, INVALID), 7), ("-1", restored, 5)]

        def scene():
            self.check("PUT", "/login/RESTTimeout", (1, INVALID))
            for value, outcome, minutes in steps:
                self.check("PUT", "/login/RESTTimeout", outcome, variables=(f"value={value}",))
                information = {"rest_session_max": 5, "rest_session_timeout_in_minutes": minutes}
                self.check("GET", "/login", GOT, {"infomation": information})
        self.each_way(scene)


class Base(UriTest):
    def test_info(self):
        def scene():
            self.check("GET", "/base", GOT, {"infomation": {
                "ORVA_version": "0.1.0", "software_storage": "flash", "RESTful_API_version": "0.0.00.11",
                "OPEN_API_version": {"build_num": 1, "maint_level": 0, "release": 1, "version": 0},
                "cpu_interface": 55, "max_equal_cost_routes": 32, "system_is_ready": "Yes"}})
        self.each_way(scene)

    def test_identity(self):
        def scene():
            self.check("GET", "/base/idname", GOT, {"idname": {
                "sn": "KS0000000001", "mac": "02:00:5E:10:00:01", "blade_idx": 0,
                "product_type": "Kestrel-Softswitch-54",
                "sys_desc": "Kestrel software switch, 48 x 10G SFP+ and 6 x 40G QSFP"}})
        self.each_way(scene)


class Vlans(UriTest):
    def test_create(self):
        def scene():
            for vid in (2, 10, 4094):
                self.check("POST", f"/vlans/{vid}", (0, f"Create VLAN {vid} successfully."))
            self.check("POST", "/vlans/010", (1, "VLAN 10 exist."))
            self.check("POST", "/vlans/1", (1, "VLAN 1 exist."))
            for vid in ("0", "4095", "65546", "4294967306", "99999999999999999999"):
                self.check("POST", f"/vlans/{vid}", (2, "VLAN ID not valid."))
            self.check("GET", "/vlans", GOT, wire.vlan_list([1, 2, 10, 4094]))
        self.each_way(scene)

    def test_delete(self):
        def scene():
            self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
            self.check("DELETE", "/vlans/10", (0, "Delete VLAN 10 successfully."))
            self.check("DELETE", "/vlans/10", (1, "VLAN 10 does not exist."))
            self.check("DELETE", "/vlans/0", (1, "VLAN 0 does not exist."))
            self.check("DELETE", "/vlans/1", wire.FAILED)
            self.check("GET", "/vlans", GOT, wire.vlan_list([1]))
        self.each_way(scene)

    def test_name(self):
        longest = "n" * 32
        named = (0, "Update name of VLAN 10 successfully.")
        invalid = (2, INVALID)

        def vlan(name):
            return {"vlan": {"id": 10, "name": name, "type": "static", "interfaces": Rows("interface")}}

        def scene():
            self.check("PUT", "/vlans/10/name", (1, "VLAN 10 does not exist."), variables=("value=a",))
            self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
            for value, name in (("a", "a"), (longest, longest), ("web+%26+db", "web & db"),
                                ("%3Cb%3E%22%2F", '<b>"/')):
                self.check("PUT", "/vlans/10/name", named, variables=(f"value={value}",))
                self.check("GET", "/vlans/10", GOT, vlan(name))
            for variables in ((), ("value=",), (f"value={longest}n",), (f"value={'n' * 300}",)):
                self.check("PUT", "/vlans/10/name", invalid, variables=variables)
            self.check("PUT", "/vlans/10/name", wire.REFUSED, variables=("value=a%0Ab",))
            self.check("GET", "/vlans/10", GOT, vlan('<b>"/'))
            self.check("PUT", "/vlans/10/name", named, body="value=from+the+body")
            self.check("GET", "/vlans/10", GOT, vlan("from the body"))
        self.each_way(scene)

    def test_details(self):
        def scene():
            self.check("GET", "/vlans/1", GOT, {"vlan": {"id": 1, "name": "default", "type": "static",
                                                         "interfaces": members(54)}})
            self.check("GET", "/vlans/10", (1, "VLAN 10 does not exist."))
            self.check("GET", "/vlans/0", (1, "VLAN 0 does not exist."))
        self.each_way(scene)

    def test_pending_changes(self):
        def pending(*entries):
            return {"pending_vlans": Rows("vlan", [(i, {"id": vid, "pending_type": kind})
                                                   for i, (vid, kind) in enumerate(entries, 1)])}

        def scene():
            self.check("GET", "/vlans/pendingChanges", GOT, pending())
            self.daemon.lab("hold")
            self.check("POST", "/vlans/10", (0, "Create VLAN 10 successfully."))
            self.check("POST", "/vlans/7", (0, "Create VLAN 7 successfully."))
            self.check("DELETE", "/vlans/7", (0, "Delete VLAN 7 successfully."))
            self.check("PUT", "/vlans/1/name", (0, "Update name of VLAN 1 successfully."),
                       variables=("value=one",))
            self.check("GET", "/vlans/pendingChanges", GOT,
                       pending((7, "pending deletion"), (10, "pending change")))
        self.each_way(scene)


class WrongUris(UriTest):
    def test_what_no_module_serves(self):
        wrong = [
            ("GET", "/login/"), ("GET", "/login/RESTSessions/"), ("GET", "/login/restsessions"),
            ("PUT", "/login"), ("GET", "/login/RESTTimeout"), ("POST", "/login/"),
            ("DELETE", "/login/RESTSessions"), ("POST", "/base"), ("PUT", "/base"),
            ("DELETE", "/base/idname"), ("GET", "/base/"), ("GET", "/base/x"), ("GET", "/base/idname/"),
            ("GET", "/vlans/"), ("POST", "/vlans"), ("DELETE", "/vlans"), ("GET", "/vlans/10x"),
            ("GET", "/vlans/x"), ("GET", "/vlans/-1"), ("GET", "/vlans/10/"), ("GET", "/vlans/10/name"),
            ("PUT", "/vlans/10"), ("PUT", "/vlans/10/names"), ("PUT", "/vlans/10/nam"),
            ("PUT", "/vlans/10/mane"), ("POST", "/vlans/10/name"), ("PUT", "/vlans/pendingChanges"),
            ("GET", "/vlans/pendingchanges"), ("GET", "/vlans/pendingChanges/"),
        ]

        def scene():
            for method, uri in wrong:
                self.check(method, uri, BAD_REQUEST)
        self.each_way(scene)

    def test_modules_that_do_not_exist(self):
        def scene():
            for uri in ("/", "/Vlans", "/vlan", "/vlansx", "/nothing/here", "/LOGIN", "/.", "/%20vlans", "*",
                        "/" + "m" * 254):
                self.check("GET", uri, wire.UNKNOWN_MODULE)
        self.each_way(scene)


if __name__ == "__main__":
    harness.main()
