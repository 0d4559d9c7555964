"""What time does to sessions and connections. The daemon's clock is shifted (see shifted_clock.c), so
that nobody has to wait."""

import os

import harness
import wire
from harness import DaemonTest
from wire import ENDED, GOT, Client


class Aging(DaemonTest):
    def setUp(self):
        environment = {"LD_PRELOAD": os.environ["KESTREL_CLOCK"]}
        if harness.sanitized():
            # The sanitizer's library wants to be loaded first; here the clock is.
            options = os.environ.get("ASAN_OPTIONS", "")
            environment["ASAN_OPTIONS"] = ":".join(filter(None, [options, "verify_asan_link_order=0"]))
        self.daemon = self.new_daemon(environment=environment)
        self.daemon.extra_environment["KESTREL_TEST_CLOCK"] = self.daemon.output_path("clock")
        self.shift(0)
        self.daemon.start()

    def shift(self, seconds):
        """Puts the daemon's clock `seconds` before the real one."""
        path = self.daemon.output_path("clock")
        with open(path + ".new", "w", encoding="ascii") as file:
            file.write(str(seconds))
        os.rename(path + ".new", path)

    def test_a_session_ends_when_it_was_idle_for_its_time_out(self):
        session = self.session(self.daemon)
        self.shift(290)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.shift(580)  # 290 seconds after the last use
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.shift(880)
        self.assert_answers(Client(self.daemon).ask("GET", session.target("/vlans")), ENDED)
        self.assertEqual(harness.read_text(self.daemon.session_file), "")

    def test_a_new_time_out_holds_for_open_sessions(self):
        session = self.session(self.daemon)
        idle = self.session(self.daemon, source="127.0.0.2")
        self.assert_answers(session.ask("PUT", "/login/RESTTimeout", "value=1"),
                            (0, "Update timeout value for REST Sessions successfully."))
        self.shift(50)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.shift(61)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.assert_answers(idle.ask("GET", "/vlans"), ENDED)

    def test_logging_in_does_not_refresh_a_session(self):
        session = self.session(self.daemon)
        self.shift(200)
        self.assert_answers(session.ask("POST", "/login", "user=admin", "password=correct+horse"),
                            (0, "You already logged in."))
        self.shift(300)
        self.assert_answers(session.ask("GET", "/vlans"), ENDED)

    def test_expired_sessions_make_room_for_new_ones(self):
        for i in range(5):
            self.session(self.daemon, source=f"127.0.0.{i + 1}")
        self.shift(300)
        self.session(self.daemon, source="127.0.0.6")
        rows = harness.read_text(self.daemon.session_file).splitlines()
        self.assertEqual([row.split(";")[0] for row in rows], ["6"])

    def test_a_websocket_is_kept_alive_with_pings(self):
        client = self.client(self.daemon)
        client.send(wire.request("GET", "/vlans", headers=["Sec-WebSocket-Version: 13", "Sec-WebSocket-Key: x"]))
        head = client.read_head()
        self.assertEqual(head[0], 101)
        client.buffer = client.buffer[head[2]:]
        for seconds in (7, 14, 290, 580):
            self.shift(seconds)
            client.fill(2)
            self.assertEqual(client.buffer, b"\x89\x00")
            client.buffer = b""
        self.assertTrue(client.is_open())

    def test_idle_connections_are_closed_after_300_seconds_and_busy_ones_are_not(self):
        idle = [self.client(self.daemon), self.client(self.daemon, tls=True)]
        head_begun = self.client(self.daemon)
        head_begun.send(b"GET /vlans HT")
        silent = self.client(self.daemon, tls=True, handshake=False)
        busy = self.client(self.daemon)
        self.assert_serves(self.daemon)  # and so it has taken all those that came before
        self.shift(290)
        self.assert_answers(busy.ask("GET", "/vlans"), wire.NO_KEY)
        for client in (*idle, head_begun):
            self.assertTrue(client.is_open())
        self.shift(310)
        for client in (*idle, head_begun, silent):
            self.assert_closes(client)
        self.assert_answers(busy.ask("GET", "/vlans"), wire.NO_KEY)


if __name__ == "__main__":
    harness.main()
