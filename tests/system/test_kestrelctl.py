"""kestrelctl against the daemon, over HTTPS, and against servers that are none: whole outputs and exit statuses."""

import json
import os
import re
import signal
import stat
import tempfile
import unittest

import harness
from harness import DaemonTest
from kestrelctl import FakeSwitch, Kestrelctl, Terminal, fingerprint, make_certificate
from wire import ENDED, GOT, PASSWORD, Client, document, vlan_list

SOURCE = os.environ.get("KESTREL_SOURCE") or os.path.join(os.path.dirname(__file__), "../..")
WRONG = "sha256:" + ":".join(["AA"] * 32)


class CtlTest(DaemonTest):
    """The tests of a class share a daemon; each has a kestrelctl with a home of its own."""

    @classmethod
    def setUpClass(cls):
        cls.daemon = harness.Daemon().start()
        cls.addClassCleanup(cls.finish_daemon)
        cls.server = f"https://127.0.0.1:{cls.daemon.tls_port}"
        cls.folder = tempfile.TemporaryDirectory(prefix="kestrelctl-certificates-")
        cls.addClassCleanup(cls.folder.cleanup)
        cls.ca_file = os.path.join(cls.folder.name, "daemon.pem")
        with open(cls.ca_file, "w", encoding="ascii") as file:
            file.write(harness.certificate())
        cls.fingerprint = fingerprint(cls.ca_file)

    @classmethod
    def finish_daemon(cls):
        complaints = cls.daemon.finish()
        if complaints:
            raise AssertionError(complaints)

    def new_ctl(self, server=None):
        ctl = Kestrelctl(server or self.server)
        self.addCleanup(ctl.remove)
        return ctl

    def trusting_ctl(self):
        ctl = self.new_ctl()
        self.assertEqual(ctl("trust", "--fingerprint", self.fingerprint, "--quiet"), (0, "", ""))
        return ctl

    def logged_in(self):
        ctl = self.trusting_ctl()
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), (0, "", "Log in successfully.\n"))
        self.addCleanup(ctl, "logout")
        return ctl

    def fake(self, answer=b"", certificate=None, port=0):
        fake = FakeSwitch(answer, certificate, port)
        self.addCleanup(fake.stop)
        return fake


class Commands(CtlTest):
    def test_changes_say_what_was_done_and_what_is_shown_is_aligned(self):
        ctl = self.logged_in()
        self.assertEqual(ctl("vlans", "10", "create"), (0, "", "Create VLAN 10 successfully.\n"))
        self.assertEqual(ctl("vlans", "10", "set", "name", "Größe & Co"),
                         (0, "", "Update name of VLAN 10 successfully.\n"))
        self.assertEqual(ctl("vlans", "list"), (0, "id\n 1\n10\n", ""))
        self.assertEqual(ctl("vlans", "10"), (0, "id    10\nname  Größe & Co\ntype  static\ninterfaces\n", ""))
        self.assertEqual(ctl("if", "3", "vlan", "10", "add"), (0, "", "Configure Interface 3 to VLAN 10 successfully.\n"))
        self.assertEqual(ctl("vlans", "show", "10"),
                         (0, "id    10\nname  Größe & Co\ntype  static\ninterfaces\n"
                             "  ifNum  participationMode  isTagging\n      3  Include                    0\n", ""))
        self.assertEqual(ctl("vlans", "10", "delete", "--quiet"), (0, "", ""))

    def test_meaning_of_a_choice_is_sent_as_its_value(self):
        ctl = self.logged_in()
        done = "Update administrative state of Interface 3 successfully.\n"
        for state in ("disable", "enable"):
            self.assertEqual(ctl("if", "3", "set", "adminState", state), (0, "", done))
            self.assertIn(f"adminState       {state}\n", ctl("if", "3")[1])

    def test_acl_with_a_rule(self):
        ctl = self.logged_in()
        self.assertEqual(ctl("acl", "ip", "create", "name", "web")[0], 0)
        self.assertEqual(ctl("acl", "ip", "name", "web", "add", "rule", "action=permit", "protocol=tcp", "src_ip=any",
                             "dest_ip=any", "dest_l4_port=eq:443")[:2], (0, "acl_type         ip\nacl_name         web\nacl_id           1\n"
                                                         "sequence_number  10\n"))
        self.assertEqual(ctl("acl", "ip", "delete", "name", "web")[0], 0)

    def test_refusal_has_code_and_message_and_names_what_is_not_as_documented(self):
        ctl = self.logged_in()
        self.assertEqual(ctl("vlans", "77"), (1, "", "kestrelctl: VLAN 77 does not exist. (1)\n"))
        self.assertEqual(ctl("vlans", "4095", "create"),
                         (1, "", "kestrelctl: VLAN ID not valid. (2)\n  vlanId: Integer from 1 to 4094\n"))
        self.assertEqual(ctl("login", "set", "RESTTimeout", "161"),
                         (1, "", "kestrelctl: The value of parameter is invalid. (1)\n"
                                 "  value: Integer from 1 to 160, or -1 for the default\n"))

    def test_json_and_xml_are_the_documents_as_they_are(self):
        ctl = self.logged_in()
        for form in ("json", "xml"):
            self.assertEqual(ctl("--" + form, "vlans", "list"), (0, document(*GOT, vlan_list([1]), form).decode(), ""))
            refusal = (1, "VLAN 77 does not exist.")
            self.assertEqual(ctl("vlans", "77", "--" + form), (1, document(*refusal, form=form).decode(),
                                                               "kestrelctl: VLAN 77 does not exist. (1)\n"))

    def test_unknown_command_is_answered_offline_with_the_nearest(self):
        ctl = self.new_ctl("https://nobody.invalid")
        self.assertEqual(ctl("vlan", "list"), (2, "", 'kestrelctl: unknown command "vlan list"; the nearest are:\n'
                                                      "  kestrelctl vlans list\n"
                                                      "  kestrelctl vlans list pendingChanges\n"
                                                      "  kestrelctl vlans <vlanId> show\n"))
        self.assertEqual(ctl("vlans", "10", "set", "name"), (2, "", "kestrelctl: value missing; usage:\n"
                                                                    "  kestrelctl vlans <vlanId> set name <value>\n"))
        self.assertEqual(ctl(), (2, "", 'kestrelctl: no command is given; "kestrelctl help" describes them\n'))
        self.assertEqual(ctl("--insecure"), (2, "", 'kestrelctl: unknown option "--insecure"; a word that begins with '
                                                    '"--" stands behind a word "--"\n'))

    def test_help_needs_no_switch(self):
        ctl = self.new_ctl("https://nobody.invalid")
        expected = ("kestrelctl lag <lagId> add port <port>\nMakes a port a member of a LAG.\n\n"
                    "  lagId  LAG ID. [Integer from 1 to 64]\n"
                    "  port   Port. [Interface number of a port]\n\n"
                    "Request: POST /lag/{lagId}/port/{port}\n")
        for words in (("help", "lag", "add"), ("lag", "1", "add", "port", "--help"), ("help", "lag", "add", "port")):
            self.assertEqual(ctl(*words), (0, expected, ""))
        status, text, errors = ctl("help")
        self.assertEqual((status, errors, text[:41]), (0, "", "Usage: kestrelctl [OPTION]... COMMAND...\n"))
        self.assertEqual(ctl("--help"), (0, text, ""))
        self.assertEqual(ctl("help", "nonsense"),
                         (2, "", 'kestrelctl: unknown command "nonsense"; "kestrelctl help" tells what there is\n'))

    def test_full_disk_is_no_success(self):
        ctl = self.logged_in()
        with open("/dev/full", "w", encoding="ascii") as full:
            done = harness.subprocess.run([harness.program("KESTREL_CTL"), "vlans", "list"], env=ctl.environment,
                                          stdout=full, stderr=harness.subprocess.PIPE, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr),
                         (5, "kestrelctl: standard output: No space left on device\n"))


class EveryGet(CtlTest):
    """Each documented GET once, from its place in the document to the data."""

    VALUES = {"ifNum": "3", "vlanId": "1", "lagId": "1", "type": "ip", "name": "web", "addr": "10.0.0.9", "scopeId": "3",
              "policyId": "1", "vxlanId": "1", "tenantId": "5", "logicalId": "1", "direction": "in"}
    # What changes from one moment to the next.
    VARYING = re.compile(r"\d+:\d+:\d+|[\d.]+%|(?<=_memory\": )\d+|(?<=counterValueL\": )\d+")

    def gets(self):
        with open(os.path.join(SOURCE, "docs/openapi.json"), encoding="utf-8") as file:
            paths = json.load(file)["paths"]
        return {path: methods["get"] for path, methods in paths.items()
                if "get" in methods and not path.startswith("/help")}

    def words(self, path, operation):
        words = path[1:].split("/")
        words = [self.VALUES[word[1:-1]] if word[0] == "{" else word for word in words]
        verb = operation["summary"].split()[0].lower()
        if words[-1] != verb:
            words.insert(1, verb)
        return words + [f"{one['name']}={self.VALUES[one['name']]}" for one in operation["parameters"]
                        if one.get("in") == "query" and one["required"]]

    def plain(self, text):
        return self.VARYING.sub("N", re.sub(r'"processes_CPU_utilization".*', "", text))

    def test_each_gives_the_document_that_the_switch_sends(self):
        ctl = self.logged_in()
        key = ctl.key(self.server)
        gets = self.gets()
        self.assertGreater(len(gets), 50)
        if harness.sanitized():  # each takes long there, and all of them take the same way
            gets = dict(list(gets.items())[::8])
        with Client(self.daemon) as client:
            for path, operation in gets.items():
                words = self.words(path, operation)
                uri = re.sub(r"\{(\w+)\}", lambda name: self.VALUES[name[1]], path)
                query = "".join(word + "&" for word in words if "=" in word)
                reply = client.ask("GET", f"{uri}?{query}sessionkey={key}&format=json")
                status, shown, errors = ctl("--json", *words)
                with self.subTest(words=words):
                    code = json.loads(shown)["result"]["rlt_code"]
                    self.assertEqual(self.plain(shown), self.plain(reply.text()))
                    self.assertEqual((status, errors != ""), (int(code != 0), code != 0))
                    self.assertNotEqual(code, 902)

    def test_data_of_every_shape_is_shown_as_text(self):
        ctl = self.logged_in()
        for line in ("process show cpu", "boxs list sfp", "base show", "logging show", "if 3 list counters", "acl count"):
            status, shown, errors = ctl(*line.split())
            with self.subTest(line=line):
                self.assertEqual((status, errors), (0, ""))
                self.assertNotEqual(shown, "")
                self.assertEqual([row for row in shown.splitlines() if row != row.rstrip()], [])


class Sessions(CtlTest):
    def test_is_kept_for_the_user_alone(self):
        ctl = self.logged_in()
        place = ctl.state_file(self.server, ".session")
        self.assertEqual(stat.S_IMODE(os.stat(place).st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(os.stat(ctl.state).st_mode), 0o700)
        with open(place, encoding="ascii") as file:
            self.assertRegex(file.read(), r"\A[0-9a-f]{32}\nadmin\n\Z")

    def test_file_that_others_may_read_is_refused(self):
        ctl = self.logged_in()
        place = ctl.state_file(self.server, ".session")
        os.chmod(place, 0o644)
        complaint = (3, "", f"kestrelctl: {place}: others have rights to it; its mode must be 600, "
                            "that of its folder 700\n")
        self.assertEqual(ctl("vlans"), complaint)
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), complaint)
        os.chmod(place, 0o600)

    def test_password_is_read_from_standard_input(self):
        ctl = self.trusting_ctl()
        self.assertEqual(ctl("login", typed=PASSWORD + "\nmore\n"), (0, "", "Log in successfully.\n"))
        self.assertEqual(ctl("logout"), (0, "", "Log out successfully.\n"))

    def test_no_password_is_wrong_usage(self):
        self.assertEqual(self.trusting_ctl()("login"),
                         (2, "", "kestrelctl: there is no password: it is read from the terminal, from standard input or "
                                 "from KESTRELCTL_PASSWORD\n"))

    def test_wrong_password_is_refused(self):
        ctl = self.trusting_ctl()
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD="wrong"), (1, "", "kestrelctl: Authentication failed. (1)\n"))
        self.assertFalse(os.path.exists(ctl.state_file(self.server, ".session")))

    def test_logging_in_again_opens_no_second_session(self):
        ctl = self.logged_in()
        key = ctl.key(self.server)
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), (0, "", "You already logged in.\n"))
        self.assertEqual(ctl.key(self.server), key)

    def test_logging_out_ends_it_here_and_there(self):
        ctl = self.logged_in()
        key = ctl.key(self.server)
        self.assertEqual(ctl("logout"), (0, "", "Log out successfully.\n"))
        missing = (3, "", f'kestrelctl: {self.server}: You are not logged in. Log in with "kestrelctl login".\n')
        self.assertEqual(ctl("vlans"), missing)
        self.assertEqual(ctl("logout"), missing)
        with Client(self.daemon) as client:
            self.assert_answers(client.ask("GET", f"/vlans?sessionkey={key}"), ENDED)

    def test_session_that_has_ended_is_told(self):
        ctl = self.logged_in()
        with Client(self.daemon) as client:
            client.ask("DELETE", f"/login?sessionkey={ctl.key(self.server)}")
        ended = (3, "", f"kestrelctl: {self.server}: {ENDED[1]} (900) Log in with \"kestrelctl login\".\n")
        self.assertEqual(ctl("vlans"), ended)
        self.assertEqual(ctl("logout"), ended)
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), (0, "", "Log in successfully.\n"))

    def test_password_at_the_terminal_is_not_shown(self):
        ctl = self.trusting_ctl()
        terminal = Terminal(ctl, "login")
        terminal.wait_for(": ")
        self.assertFalse(terminal.echoes())
        terminal.type(PASSWORD + "\n")
        self.assertEqual(terminal.finish(), 0)
        self.assertTrue(terminal.echoed_at_end)
        self.assertEqual(terminal.shown, f"Password of admin at {self.server}: \nLog in successfully.\n")
        self.assertEqual(ctl("logout")[0], 0)

    def test_interrupt_at_the_prompt_leaves_the_terminal_as_it_was(self):
        terminal = Terminal(self.trusting_ctl(), "login")
        terminal.wait_for(": ")
        self.assertFalse(terminal.echoes())
        terminal.type("\x03")
        self.assertEqual(terminal.finish(), 128 + signal.SIGINT)
        self.assertTrue(terminal.echoed_at_end)


class Trust(CtlTest):
    def test_certificate_that_nobody_vouches_for_is_refused_before_anything_is_sent(self):
        fake = self.fake(certificate=self.ca_file)
        ctl = self.new_ctl(fake.url("https"))
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), (
            4, "", f"kestrelctl: {fake.url('https')}: the certificate is not trusted: SSL certificate problem: "
                   f'self-signed certificate\nIt is {self.fingerprint}. Nothing was sent. "kestrelctl trust" trusts '
                   "it.\n"))
        self.assertEqual(fake.received, b"")

    def test_authority_is_trusted_for_the_name_only(self):
        ctl = self.new_ctl()
        self.assertEqual(ctl("login", "--ca-file", self.ca_file, KESTRELCTL_PASSWORD=PASSWORD)[0], 0)
        self.assertEqual(ctl("vlans", "--ca-file", self.ca_file), (0, "id\n 1\n", ""))
        by_name = f"https://localhost:{self.daemon.tls_port}"  # which the certificate does not name
        status, shown, errors = ctl("login", "--ca-file", self.ca_file, "--server", by_name,
                                    KESTRELCTL_PASSWORD=PASSWORD)
        self.assertEqual((status, shown), (4, ""))
        self.assertIn("the certificate is not trusted: SSL: certificate subject name 'localhost' does not match"
                      if "'localhost' does not" in errors else "the certificate is not trusted: SSL: no alternative "
                      "certificate subject name matches target host name 'localhost'", errors)
        self.assertEqual(ctl("logout", "--ca-file", self.ca_file)[0], 0)

    def test_fingerprint_stands_for_the_one_certificate(self):
        ctl = self.new_ctl()
        for given in (self.fingerprint, self.fingerprint.lower().replace(":", "").replace("sha256", "sha256:")):
            self.assertEqual(ctl("login", "--fingerprint", given, KESTRELCTL_PASSWORD=PASSWORD)[0], 0)
        self.assertEqual(ctl("logout", "--fingerprint", self.fingerprint)[0], 0)
        self.assertEqual(ctl("login", "--fingerprint", WRONG, KESTRELCTL_PASSWORD=PASSWORD), (
            4, "", f"kestrelctl: {self.server}: the certificate is not the one that is trusted.\nTrusted is {WRONG},\n"
                   f"it is      {self.fingerprint}. Nothing was sent.\n"))

    def test_man_in_the_middle_gets_nothing(self):
        own, other = (make_certificate(self.folder.name, name) for name in ("own", "other"))
        switch = FakeSwitch(certificate=own)
        server, port = switch.url("https"), switch.port
        ctl = self.new_ctl(server)
        self.assertEqual(ctl("trust", "--yes"), (0, "", f"The certificate of {server} is\n  {fingerprint(own)}\n"
                                                        f"The certificate of {server} is trusted from now on.\n"))
        switch.stop()
        self.assertEqual(switch.received, b"")
        between = self.fake(certificate=other, port=port)
        both = f"Trusted is {fingerprint(own)},\nit is      {fingerprint(other)}. Nothing was sent.\n"
        refused = (4, "", f"kestrelctl: {server}: the certificate is not the one that is trusted.\n" + both)
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), refused)
        # An authority that vouches for the other one does not help it.
        self.assertEqual(ctl("login", "--ca-file", other, KESTRELCTL_PASSWORD=PASSWORD), refused)
        self.assertEqual(ctl("trust", "--yes"), (
            2, "", f"The certificate of {server} is\n  {fingerprint(other)}\nTrusted so far is another one:\n"
                   f"  {fingerprint(own)}\nkestrelctl: to trust it without a terminal, give --fingerprint\n"))
        self.assertEqual(ctl("trust", "--fingerprint", fingerprint(own)), refused)
        self.assertEqual(between.received, b"")

    def test_expired_certificate_is_refused_unless_it_is_the_trusted_one(self):
        expired = make_certificate(self.folder.name, "expired", expired=True)
        fake = self.fake(b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}", expired)
        ctl = self.new_ctl(fake.url("https"))
        status, _, errors = ctl("login", "--ca-file", expired, KESTRELCTL_PASSWORD=PASSWORD)
        self.assertEqual(status, 4)
        self.assertIn("certificate has expired", errors)
        self.assertEqual(fake.received, b"")
        self.assertEqual(ctl("login", "--fingerprint", fingerprint(expired), KESTRELCTL_PASSWORD=PASSWORD)[0], 5)

    def test_trust_is_asked_for_at_the_terminal(self):
        ctl = self.new_ctl()
        question = (f"The certificate of {self.server} is\n  {self.fingerprint}\n"
                    "Compare it with what the switch's owner tells. Trust it? [y/N] ")
        for typed, status, end in (("n", 4, "kestrelctl: it is not trusted\n"),
                                   ("y", 0, f"The certificate of {self.server} is trusted from now on.\n")):
            terminal = Terminal(ctl, "trust")
            terminal.wait_for("[y/N] ")
            terminal.type(typed + "\n")
            self.assertEqual(terminal.finish(), status)
            self.assertEqual(terminal.shown, question + typed + "\n" + end)
        self.assertEqual(ctl("trust"), (0, "", f"It is trusted already: {self.fingerprint}\n"))
        self.assertEqual(ctl("untrust"),
                         (0, "", f"No certificate of {self.server} is trusted by itself any more.\n"))
        self.assertEqual(ctl("trust")[0], 2)

    def test_plain_http_is_used_when_the_address_says_so(self):
        server = f"http://127.0.0.1:{self.daemon.port}"
        ctl = self.new_ctl(server)
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD)[0], 0)
        self.assertEqual(ctl("vlans"), (0, "id\n 1\n", ""))
        self.assertEqual(ctl("logout")[0], 0)
        self.assertEqual(ctl("trust"), (2, "", f"kestrelctl: {server}: only servers of https have certificates\n"))


def answer(body):
    return b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n%s" % (len(body), body)


class StrangeServers(CtlTest):
    KEY = "0123456789abcdef" * 2
    LOGGED_IN = answer(document(0, "Log in successfully.", {"sessionKey": KEY}, "json"))

    def ctl_at(self, fake):
        """A kestrelctl that has logged in at a fake switch."""
        ctl = self.new_ctl(fake.url("http"))
        later, fake.answer = fake.answer, self.LOGGED_IN
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD)[0], 0)
        fake.answer, fake.received = later, b""
        return ctl

    def test_nobody_there(self):
        ctl = self.logged_in()
        port = harness.free_ports(1)[0]
        status, shown, errors = ctl("login", "--server", f"https://127.0.0.1:{port}", KESTRELCTL_PASSWORD=PASSWORD)
        self.assertEqual((status, shown), (4, ""))
        self.assertRegex(errors, rf"\Akestrelctl: https://127.0.0.1:{port}: Failed to connect to 127.0.0.1 port {port} .*: "
                                 r"Couldn't connect to server\n\Z")

    def test_password_is_in_the_body_and_the_key_in_the_query(self):
        fake = self.fake(self.LOGGED_IN)
        ctl = self.new_ctl(fake.url("http"))
        self.assertEqual(ctl("login", KESTRELCTL_PASSWORD="p&ss w%rd"), (0, "", "Log in successfully.\n"))
        self.assertTrue(fake.received.startswith(b"POST /login?format=json HTTP/1.1\r\n"), fake.received)
        self.assertIn(b"user=admin&password=p%26ss%20w%25rd", fake.received)
        fake.received, fake.answer = b"", answer(document(*GOT, form="json"))
        self.assertEqual(ctl("vlans", "10", "set", "name", "a&b=c"), (0, "", "Get data successfully.\n"))
        self.assertTrue(fake.received.startswith(
            f"PUT /vlans/10/name?value=a%26b%3Dc&sessionkey={self.KEY}&format=json HTTP/1.1\r\n".encode()))

    def test_commands_of_the_guide_make_the_requests_that_it_tells(self):
        with open(os.path.join(SOURCE, "docs/kestrelctl.md"), encoding="utf-8") as file:
            rows = re.findall(r"^\| `kestrelctl ([^`]+)` \| `([^`]+)` \|$", file.read(), re.M)
        self.assertGreater(len(rows), 5)
        fake = self.fake(answer(document(*GOT, form="json")))
        ctl = self.ctl_at(fake)
        for command, request in rows:
            fake.received = b""
            self.assertEqual(ctl(*command.split()), (0, "", "Get data successfully.\n"))
            told, sent = request.removesuffix("&..."), fake.received.split(b" HTTP")[0].decode()
            self.assertTrue(sent.startswith(told) and sent[len(told)] in "?&", (sent, told))

    def test_answers_that_are_none(self):
        for body in (b"", b"<html></html>", b"\xff" * 100, b"[" * 100000):
            fake = self.fake(answer(body))
            ctl = self.ctl_at(fake)
            server = fake.url("http")
            nonsense = (5, "", f"kestrelctl: {server}: the answer is no document of a switch\n")
            with self.subTest(body=body[:20]):
                self.assertEqual(ctl("vlans"), nonsense)
                self.assertEqual(ctl("vlans", "--xml"), nonsense)
                self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD), nonsense)
                self.assertEqual(ctl.key(server), self.KEY)

    def test_redirect_is_not_followed(self):
        fake = self.fake(b"HTTP/1.1 302 Found\r\nLocation: /x\r\nContent-Length: 0\r\n\r\n")
        self.assertEqual(self.ctl_at(fake)("vlans"),
                         (5, "", f"kestrelctl: {fake.url('http')}: the server answers with HTTP status 302\n"))
        self.assertEqual(fake.received.count(b"HTTP/1.1"), 1)

    def test_strange_session_key_is_not_kept(self):
        for key in ("", "x" * 32, "../../etc/passwd", self.KEY + "0"):
            fake = self.fake(answer(document(0, "Log in successfully.", {"sessionKey": key}, "json")))
            ctl = self.new_ctl(fake.url("http"))
            self.assertEqual(ctl("login", KESTRELCTL_PASSWORD=PASSWORD)[0], 5)
            self.assertFalse(os.path.exists(ctl.state))

    def test_control_characters_in_names_and_messages_are_escaped(self):
        body = json.dumps({"result": {"rlt_code": 0, "rlt_mesg": "x", "rlt_data": {
            "vlans": {"1": {"id": 1, "name": "\x1b[2Ja\u009bb\n"}}}}}).encode()
        fake = self.fake(answer(body))
        ctl = self.ctl_at(fake)
        self.assertEqual(ctl("vlans"), (0, "id  name\n 1  \\x1b[2Ja\\u009bb\\n\n", ""))
        fake.answer = answer(b'{"result": {"rlt_code": 1, "rlt_mesg": "no\\u001b[31m"}}')
        self.assertEqual(ctl("vlans"), (1, "", "kestrelctl: no\\x1b[31m (1)\n"))

    def test_document_is_escaped_on_a_terminal_only(self):
        body = b'{"result": {"rlt_code": 0, "rlt_mesg": "a\xc2\x9b31m\x7f"}}\n'
        fake = self.fake(answer(body))
        ctl = self.ctl_at(fake)
        self.assertEqual(ctl("--json", "vlans"), (0, body.decode(), ""))
        terminal = Terminal(ctl, "--json", "vlans")
        self.assertEqual(terminal.finish(), 0)
        self.assertEqual(terminal.shown, '{"result": {"rlt_code": 0, "rlt_mesg": "a\\u009b31m\\x7f"}}\n')

    def test_headings_are_bold_on_a_terminal_only_and_not_against_the_users_will(self):
        fake = self.fake(answer(document(*GOT, vlan_list([1]), "json")))
        ctl = self.ctl_at(fake)
        self.assertEqual(ctl("vlans"), (0, "id\n 1\n", ""))
        for environment, shown in (({}, "\x1b[1mid\x1b[0m\n 1\n"), ({"NO_COLOR": "1"}, "id\n 1\n"),
                                   ({"TERM": "dumb"}, "id\n 1\n")):
            terminal = Terminal(ctl, "vlans", **environment)
            self.assertEqual(terminal.finish(), 0)
            self.assertEqual(terminal.shown, shown)

    def test_proxy_of_the_environment_is_not_used_for_this_machine(self):
        fake = self.fake(answer(document(*GOT, vlan_list([1]), "json")))
        proxy = self.fake()
        ctl = self.ctl_at(fake)
        for name in ("http_proxy", "ALL_PROXY"):
            self.assertEqual(ctl("vlans", **{name: proxy.url("http")}), (0, "id\n 1\n", ""))
            self.assertEqual(ctl("vlans", **{name: proxy.url("http"), "no_proxy": "example.org"})[0], 0)
        self.assertEqual(proxy.received, b"")


if __name__ == "__main__":
    unittest.main(verbosity=2)
