"""A state directory that cannot be used: one clear sentence, exit status 2, and nobody listens."""

import os
import re
import tempfile

import harness
import wire
from harness import DaemonTest
from wire import GOT

NOBODY = 65534
REGISTRATION_FAILED = "\nFailed to initialize RPC to OpEN. Exiting (result = -26)\n"


class StateDirectory(DaemonTest):
    def assert_refuses(self, daemon, sentence):
        """The daemon does not start, for the reason that the pattern describes, and says so in one line."""
        daemon.expect_log(sentence)
        daemon.expect_log(re.escape(REGISTRATION_FAILED))
        said, printed = len(daemon.stderr()), len(daemon.stdout())
        daemon.launch()
        self.assertEqual(daemon.wait_for_exit(), 2)
        self.assertEqual(daemon.stdout()[printed:], REGISTRATION_FAILED)
        self.assertRegex(daemon.stderr()[said:], f"\\A{sentence}\n\\Z")
        for port in (daemon.port, daemon.tls_port):
            self.assertFalse(daemon.listens(port))

    def test_in_use_by_another_daemon(self):
        first = self.start_daemon()
        session = self.session(first)
        second = self.new_daemon(state_dir=first.state_dir)
        place = re.escape(first.state_dir)
        self.assert_refuses(second, f"kestrel: the state directory {place} is in use by another process")
        self.assert_answers(session.ask("POST", "/vlans/5"), (0, "Create VLAN 5 successfully."))
        first.lab("wait")
        first.kill()
        second.start()
        self.assertEqual(self.vlan_ids(self.session(second)), [1, 5])

    def test_parent_missing(self):
        daemon = self.new_daemon()
        daemon.state_dir = os.path.join(daemon.root, "no", "state")
        place = re.escape(daemon.state_dir)
        self.assert_refuses(daemon, f"kestrel: (the state directory )?{place}: No such file or directory")

    def test_a_file_in_its_place(self):
        daemon = self.new_daemon()
        with open(daemon.state_dir, "w", encoding="ascii"):
            pass
        place = re.escape(daemon.state_dir)
        self.assert_refuses(daemon, f"kestrel: (the state directory )?{place}: is not a directory")
        os.remove(daemon.state_dir)

    def unprivileged_daemon(self):
        """A daemon that has run without root's power to write everywhere. Root lends its directory to
        nobody."""
        is_root = os.geteuid() == 0
        daemon = self.new_daemon(user=NOBODY if is_root else None)
        for path in [daemon.root, os.path.join(daemon.root, "ssl.pem")] if is_root else []:
            os.chown(path, NOBODY, NOBODY)
        try:
            daemon.start()
        except PermissionError:
            daemon.process = None
            self.skipTest("the programs under test are closed to other users")
        daemon.kill()
        return daemon

    def test_not_writable(self):
        daemon = self.unprivileged_daemon()
        os.chmod(daemon.state_dir, 0o500)
        self.assert_refuses(daemon, f"kestrel: .*{re.escape(daemon.state_dir)}.*: Permission denied")
        os.chmod(daemon.state_dir, 0o700)
        daemon.start()
        self.assert_serves(daemon)

    def test_not_readable(self):
        daemon = self.unprivileged_daemon()
        snapshot = os.path.join(daemon.state_dir, "running-config")
        os.chmod(snapshot, 0)
        self.assert_refuses(daemon, f"kestrel: .*{re.escape(snapshot)}.*: Permission denied")
        os.chmod(snapshot, 0o600)
        daemon.start()
        self.assert_serves(daemon)

    def test_files_that_are_not_what_they_should_be(self):
        daemon = self.start_daemon()
        harness.create_vlans(self, self.session(daemon), [5])
        daemon.kill()
        for name, text, sentence in (
                ("running-config", "vlan 7\n", r"running-config, line 1: .*generation.*"),
                ("accounts", "admin\n", r"accounts:1: .*"),
                ("accounts", "admin:plain:15\n", r"accounts:1: .*")):
            with self.subTest(name=name, text=text):
                path = os.path.join(daemon.state_dir, name)
                before = harness.read_text(path)
                self.write(path, text)
                self.assert_refuses(daemon, f"kestrel: {re.escape(daemon.state_dir)}/{sentence}")
                self.assertEqual(harness.read_text(path), text)
                self.write(path, before)
        daemon.start()
        self.assertEqual(self.vlan_ids(self.session(daemon)), [1, 5])

    @staticmethod
    def write(path, text):
        with open(path, "r+", encoding="latin-1") as file:
            file.truncate()
            file.write(text)

    def test_an_unusable_chassis_profile(self):
        daemon = self.new_daemon()
        profile = daemon.output_path("profile.json")
        with open(profile, "w", encoding="ascii") as file:
            file.write('{\n  "modle": "x"\n}\n')
        daemon.extra_environment["KESTREL_PROFILE"] = profile
        self.assert_refuses(daemon, f"kestrel: {re.escape(profile)}:2: .*")

    def test_a_path_longer_than_a_socket_address_works(self):
        with tempfile.TemporaryDirectory(prefix="kestrel-" + "long-" * 30) as folder:
            daemon = self.new_daemon(state_dir=os.path.join(folder, "state")).start()
            self.assertEqual(daemon.lab("fault", "list"), "")
            self.assert_serves(daemon)
            daemon.kill()
            daemon.check_output()
            self.assertEqual(daemon.complaints, [])


class Ports(DaemonTest):
    """A port or certificate that cannot be had is an error in the log; what can be served is."""

    def test_a_missing_certificate_leaves_http(self):
        daemon = self.new_daemon()
        daemon.expect_log("Cannot bind to port: listening_port=")
        os.remove(os.path.join(daemon.root, "ssl.pem"))
        daemon.launch()
        harness.eventually(lambda: daemon.listens(daemon.port) or daemon.fail_if_dead(), "HTTP listens")
        self.assert_answers(self.client(daemon).ask("GET", "/vlans"), wire.NO_KEY)
        self.assertFalse(daemon.listens(daemon.tls_port))

    def test_a_port_in_use_is_reported(self):
        first = self.start_daemon()
        second = self.new_daemon()
        second.expect_log("Cannot bind to port: listening_port=")
        second.port = first.port
        second.launch()

        def errors():
            second.fail_if_dead()
            return [text for severity, _, text in second.log_lines() if severity == "ERROR"]
        ports = second.environment()["KESTREL_LISTENING_PORT"]
        self.assertEqual(harness.eventually(errors, "an error is logged"),
                         [f"Cannot bind to port: listening_port={ports}"])
        session = self.session(first)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))


if __name__ == "__main__":
    harness.main()
