"""A switch with settings of every kind, sent to a server and fetched by another switch as a script: the other
is the same then, answer by answer."""

import urllib.parse

import harness
import test_fabric
import test_layer2
import test_policy
from scenes import FlowTest
from servers import FileServer
from system import APPLIED


class Copy(FlowTest):
    """What it sets and reads is what the tests of the single families set and read."""

    RULES, ATTRIBUTES = test_policy.Restart.RULES, test_policy.Restart.ATTRIBUTES
    asked, give = test_fabric.RouterTest.asked, test_fabric.RouterTest.give
    FAMILIES = (test_layer2.Layer2Test, test_policy.PolicyTest, test_fabric.RouterTest)
    SETTINGS = {
        "/system/hostname": "leaf-7.example", "/system/serialTimeout": 30, "/system/telnetServerAdminMode": 1,
        "/ssh/adminMode": 1, "/ssh/maxSessions": 3, "/ssh/protoVersion": 3, "/ssh/timeout": 60,
        "/logging/cli/mode": 1, "/logging/console/severityLevel": 2, "/logging/syslog/port": 5514,
        "/logging/hosts/127.0.0.9/port": 1514, "/logging/hosts/127.0.0.9/severityLevel": 3,
    }

    def setUp(self):
        super().setUp()
        self.made = set()

    def ask(self, method, uri, *variables):
        """VLANs that one family has made are there for the next."""
        if method == "POST" and uri.startswith("/vlans/"):
            if uri in self.made:
                return ""
            self.made.add(uri)
        return super().ask(method, uri, *variables)

    def set_up_everything(self):
        for host in ("127.0.0.9", "2001:db8::9"):
            self.ask("POST", f"/logging/hosts/{host}")
        for uri, value in self.SETTINGS.items():
            self.ask("PUT", uri, f"value={value}")
        test_layer2.Restart.set_up_layer2(self)
        test_policy.Restart.set_up_policies(self)
        for part in ("routing", "bgp", "vxlan"):
            getattr(test_fabric.Operator, f"set_up_{part}")(self)

    def everything(self):
        answers = {}
        for family in self.FAMILIES:
            answers.update(family.everything(self))
        uris = ("/system", "/ssh", "/logging", "/logging/hosts", "/logging/hosts/127.0.0.9",
                "/logging/hosts/2001:db8::9", "/base/idname", "/boxs/sfp")
        return {**answers, **{uri: self.logged_in.ask("GET", uri).raw for uri in uris}}

    def post(self, session, uri, **variables):
        return session.ask("POST", uri, body=urllib.parse.urlencode(variables))

    def test_the_other_switch_is_the_same(self):
        server = FileServer("http")
        self.addCleanup(server.finish)
        server.start()
        self.set_up_everything()
        before = self.everything()
        self.assertEqual(self.post(self.logged_in, "/upload/config", url=server.url("c"), cfg=3,
                                   sn=1).code(), 0)
        harness.eventually(lambda: "Completed: " in self.ask("GET", "/upload/status"), "it is sent")
        self.assertEqual(server.read("c").decode(), before["configuration"])

        self.daemon = self.start_daemon()
        self.logged_in = self.session(self.daemon)
        self.assertNotEqual(self.everything(), before)
        reply = self.post(self.logged_in, "/download/script", url=server.url("c"), scr="c.scr", act="y")
        self.assert_answers(reply, APPLIED, {})
        self.assertEqual(self.everything(), before)
        self.assert_restarts_keep_everything()


if __name__ == "__main__":
    harness.main()
