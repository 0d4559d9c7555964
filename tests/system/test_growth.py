"""A daemon that has served for a while is as small as it was."""

import harness
import wire
from harness import DaemonTest
from wire import GOT, NO_KEY, Client, request, rest_reply


class Growth(DaemonTest):
    REQUESTS = 20000
    CONNECTIONS = 500

    def setUp(self):
        environment = {}
        if harness.sanitized():
            # What was freed is otherwise kept for a while to find late uses of it, which looks like growth.
            environment["ASAN_OPTIONS"] = "quarantine_size_mb=1:thread_local_quarantine_size_kb=64"
        self.daemon = self.start_daemon(environment=environment)
        with Client(self.daemon) as client:  # its sweep makes the session file, which then stays open
            self.assert_answers(client.ask("GET", "/vlans"), NO_KEY)

    def assert_no_growth(self, work, warm_up):
        """Measures what the work adds for good, after a warm-up that lets buffers find their size."""
        descriptors = self.daemon.descriptors()
        for phase in (warm_up, work):
            kilobytes = self.daemon.resident_kilobytes()
            phase()
            harness.eventually(lambda: self.daemon.descriptors() <= descriptors,
                               "all connections are closed again")
        self.assertLess(self.daemon.resident_kilobytes() - kilobytes, 16384 if harness.sanitized() else 2048)

    def test_requests_leave_nothing_behind(self):
        session = self.session(self.daemon)
        client = session.client
        scenes = [
            ("GET", "/vlans", "json", GOT, wire.vlan_list([1])),
            ("GET", "/nothing", "xml", wire.UNKNOWN_MODULE, None),
            ("PUT", "/vlans/1/nam", "xml", wire.BAD_REQUEST, None),
            ("POST", "/vlans/5", "xml", (0, "Create VLAN 5 successfully."), None),
            ("DELETE", "/vlans/5", "json", (0, "Delete VLAN 5 successfully."), None),
        ]
        prepared = [(request(method, session.target(uri, [f"format={form}"])),
                     rest_reply(*outcome, data, form))
                    for method, uri, form, outcome, data in scenes]

        def ask(count):
            for _ in range(count // len(prepared)):
                for asked, expected in prepared:
                    client.send(asked)
                    client.fill(len(expected))
                    self.assertEqual(client.buffer, expected)
                    client.buffer = b""
        self.assert_no_growth(lambda: ask(self.REQUESTS), lambda: ask(2000))

    def test_connections_leave_nothing_behind(self):
        def connect(count):
            for i in range(count):
                with Client(self.daemon, tls=i % 2 == 1) as client:
                    self.assert_answers(client.ask("GET", "/vlans"), NO_KEY)
                    if i % 5 == 0:
                        client.send(b"GET /half")
                        client.reset()
        self.assert_no_growth(lambda: connect(self.CONNECTIONS), lambda: connect(100))

    def test_logins_leave_nothing_behind(self):
        def log_in_and_out(count):
            for _ in range(count):
                with wire.Session(self.daemon) as session:
                    self.assert_answers(session.ask("DELETE", "/login"), (0, "Log out successfully."))
        self.assert_no_growth(lambda: log_in_and_out(50), lambda: log_in_and_out(10))


if __name__ == "__main__":
    harness.main()
