"""The help module over the wire: every byte of every answer and page, against the sources of the texts."""

import harness
import help_text
from harness import DaemonTest
from wire import BAD_REQUEST, Client, ENDED, NO_KEY, log_in, rest_reply

UNKNOWN = (1, "The module name does not exist.")


class Help(DaemonTest):
    """One daemon for all tests; nobody is logged in unless a test does."""

    @classmethod
    def setUpClass(cls):
        cls.modules = help_text.read_modules()
        cls.daemon = harness.Daemon().start()
        cls.addClassCleanup(cls.finish_daemon)

    @classmethod
    def finish_daemon(cls):
        complaints = cls.daemon.finish()
        if complaints:
            raise AssertionError(complaints)

    def setUp(self):
        self.clients = [self.client(self.daemon, tls=tls) for tls in (False, True)]

    def check(self, target, expected, method="GET", body=None):
        """The whole reply, over both ports; expected is all its bytes, or an outcome in XML."""
        if isinstance(expected, tuple):
            expected = rest_reply(*expected)
        for client in self.clients:
            self.assertEqual(client.ask(method, target, body).raw, expected, f"{method} {target}")

    def test_list_of_modules(self):
        for form in ("xml", "json"):
            self.check(f"/help?format={form}", help_text.list_reply(self.modules, form))
        self.check("/help", help_text.list_reply(self.modules, "xml"))

    def test_every_module(self):
        for module in self.modules:
            for form in ("xml", "json"):
                self.check(f"/help/{module['module_name']}?format={form}", help_text.module_reply(module, form))

    def test_pages(self):
        self.check("/help?format=html", help_text.page_reply(help_text.list_page(self.modules)))
        for module in self.modules:
            self.check(f"/help/{module['module_name']}?format=html",
                       help_text.page_reply(help_text.module_page(module)))

    def test_list_has_eighteen_rows(self):
        page = self.clients[0].ask("GET", "/help?format=HTML").text()
        self.assertEqual(page.count("<tr/><td class='mod_name'/>"), 18)

    def test_format_is_a_beginning_in_any_case(self):
        vlans = self.modules[help_text.NAMES.index("vlans")]
        for word in ("HTML", "Html", "htmlx", "html%20"):
            self.check(f"/help?format={word}", help_text.page_reply(help_text.list_page(self.modules)))
            self.check(f"/help/vlans?format={word}", help_text.page_reply(help_text.module_page(vlans)))
        for word, form in (("JSON", "json"), ("JsonP", "json"), ("XML", "xml"), ("xmlhtml", "xml"),
                           ("htm", "xml"), ("xhtml", "xml"), ("", "xml")):
            self.check(f"/help?format={word}", help_text.list_reply(self.modules, form))
            self.check(f"/help/vlans?format={word}", help_text.module_reply(vlans, form))

    def test_names_are_those_of_the_list_exactly(self):
        for name in ("Vlans", "VLANS", "vlan", "vlanss", "download", "upload", "pml", "v1", "999", "L" * 200):
            self.check(f"/help/{name}", UNKNOWN)
            self.check(f"/help/{name}?format=html", UNKNOWN)
        self.check("/help/transfer", help_text.module_reply(
            self.modules[help_text.NAMES.index("transfer")], "xml"))

    def test_other_paths_are_bad_requests(self):
        for path in ("/help/", "/help/vlans/", "/help/vlans/x", "/help/vlans0", "/help/0", "/help/vlans.x",
                     "/help/vlans-1", "/help/%3Cb%3E"):
            self.check(path, BAD_REQUEST)
            self.check(f"{path}?format=html", BAD_REQUEST)
        self.check("/helpx", NO_KEY)

    def test_other_methods_are_bad_requests_and_logged(self):
        for method in ("POST", "PUT", "DELETE", "OPTIONS"):
            for path in ("/help", "/help/vlans"):
                before = len(self.daemon.audit_lines())
                self.check(f"{path}?format=html", BAD_REQUEST, method)
                line = (f"RESTful API Engine: User from [127.0.0.1] accesses API [{method} {path}?format=html]: "
                        f"{BAD_REQUEST[1]} (902)")
                logged = [] if method == "OPTIONS" else [line] * 2
                self.assertEqual(self.daemon.audit_lines()[before:], logged)

    def test_the_variable_method_decides(self):
        before = self.daemon.audit_lines()
        self.check("/help?method=get", help_text.list_reply(self.modules, "xml"), "POST", body="")
        self.check("/help", help_text.list_reply(self.modules, "json"), "POST", body="method=GET&format=json")
        self.assertEqual(self.daemon.audit_lines(), before)
        self.check("/help?method=Deleted", BAD_REQUEST)

    def test_session_keys_are_not_looked_at(self):
        for key, outcome in (("", NO_KEY), ("x", ENDED), ("0" * 32, ENDED), ("f" * 100, NO_KEY)):
            self.check(f"/help?sessionkey={key}", help_text.list_reply(self.modules, "xml"))
            self.check(f"/vlans?sessionkey={key}", outcome)

    def test_pages_between_requests_of_a_session(self):
        with Client(self.daemon) as client:
            key = log_in(client)
            page = help_text.page_reply(help_text.module_page(self.modules[-1]))
            for _ in range(3):
                self.assertEqual(client.ask("GET", f"/help/acl?format=html&sessionkey={key}").raw, page)
                self.assertEqual(client.ask("GET", f"/vlans?sessionkey={key}").code(), 0)
            client.ask("DELETE", f"/login?sessionkey={key}")


if __name__ == "__main__":
    harness.main()
