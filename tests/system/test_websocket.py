"""WebSocket: an independent client against a server that sends everything back, and the daemon, which
answers each frame as it would a request to the URI of the upgrade."""

import json
import os
import subprocess

import web
import wire
from harness import DaemonTest, certificate
from wire import GOT, NO_KEY, PASSWORD, PATIENCE, Client, request, rest_reply

KEY = "dGhlIHNhbXBsZSBub25jZQ=="
UPGRADED = (b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
            b"Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=\r\n\r\n")
HEADERS = ("Connection: Upgrade", "Upgrade: websocket", "Sec-WebSocket-Version: 13", f"Sec-WebSocket-Key: {KEY}")
LENGTHS = (0, 1, 125, 126, 127, 65535, 65536, 1 << 20)


class Echo(web.WebServerTest):
    """The client is echo_client.js, which compares what comes back with what it sent."""

    def setUp(self):
        super().setUp()
        self.start(tls=True)

    def begin(self, *steps, tls=False):
        scheme, port = ("wss", self.server.tls_port) if tls else ("ws", self.server.port)
        options = {"url": f"{scheme}://127.0.0.1:{port}/echo", "ca": certificate(), "steps": steps}
        script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "echo_client.js")
        return subprocess.Popen(["node", script, json.dumps(options)], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True,
                                env={**os.environ, "NODE_PATH": "/usr/share/nodejs"})

    def end(self, client):
        out, err = client.communicate(timeout=PATIENCE)
        self.assertEqual((client.returncode, err), (0, ""))
        return [json.loads(line) for line in out.splitlines()]

    def assert_steps(self, steps, answers, tls=False):
        self.assertEqual(self.end(self.begin(*steps, tls=tls)), answers)

    def test_messages_of_every_length_come_back_whole(self):
        steps = [["echo", kind, [length]] for kind in ("text", "binary") for length in LENGTHS]
        for tls in (False, True):
            self.assert_steps([*steps, ["close", 1000, "done"]],
                              [*[[True, True]] * len(steps), [1000, "done"]], tls)

    def test_fragments_make_one_message(self):
        parts = [[3, 4], [0, 5, 0], [1] * 20, [65536, 70000], [126, 125, 65535]]
        steps = [["echo", kind, lengths] for kind in ("text", "binary") for lengths in parts]
        for tls in (False, True):
            self.assert_steps([*steps, ["close", 1001, ""]], [*[[True, True]] * len(steps), [1001, ""]], tls)

    def test_many_messages_at_once_come_back_in_order(self):
        for tls in (False, True):
            self.assert_steps([["burst", 3000], ["close", 1000, ""]], [True, [1000, ""]], tls)

    def test_pings_are_answered(self):
        self.assert_steps([["ping", ""], ["ping", "x" * 125], ["close", 4999, "a reason of one's own"]],
                          ["", "x" * 125, [4999, "a reason of one's own"]])

    def test_clients_do_not_disturb_each_other(self):
        steps = [["echo", "binary", [1 << 20]], ["burst", 100], ["echo", "text", [125, 3]]]
        clients = [self.begin(*steps, ["terminate"], tls=i % 2 == 1) for i in range(4)]
        for client in clients:
            self.assertEqual(self.end(client), [[True, True], True, [True, True], 1006])
        self.assert_serves()


class Frames(DaemonTest):
    def setUp(self):
        self.daemon = self.start_daemon()

    def upgrade(self, target, method="GET", body=b""):
        """A client whose connection has been upgraded; `body` comes along with the request."""
        client = self.client(self.daemon)
        client.send(request(method, target, headers=HEADERS) + body)
        self.expect(client, UPGRADED)
        return client

    def expect(self, client, data):
        client.fill(len(data))
        self.assertEqual(client.buffer[:len(data)], data)
        client.buffer = client.buffer[len(data):]

    def assert_first_answer(self, client, outcome, data=None):
        """The answer to the first frame has a head, and no last chunk: the answers go on."""
        self.expect(client, rest_reply(*outcome, data)[:-len(b"0\r\n\r\n")])

    def assert_answer(self, client, outcome, data=None):
        """Each further one is a chunk behind the line that goes before every answer."""
        raw = rest_reply(*outcome, data)
        self.expect(client, b"Content-Type: text/xml; charset=utf-8\r\n"
                    + raw[raw.index(b"\r\n\r\n") + 4:-len(b"0\r\n\r\n")])

    @staticmethod
    def frame(payload=b"", first=0x81):
        """A masked frame of fewer than 126 bytes."""
        mask = b"\x01\x82\x03\xf4"
        masked = bytes(byte ^ mask[i % 4] for i, byte in enumerate(payload))
        return bytes((first, 0x80 | len(payload))) + mask + masked

    def test_each_frame_asks_again(self):
        session = self.session(self.daemon)
        client = self.upgrade(session.target("/vlans"), body=self.frame())
        self.assert_first_answer(client, GOT, wire.vlan_list([1]))
        self.assert_answers(session.ask("POST", "/vlans/7"), (0, "Create VLAN 7 successfully."))
        for first in (0x82, 0x8A, 0x01, 0x80, 0x88):
            client.send(self.frame(b"anything", first))
            self.assert_answer(client, GOT, wire.vlan_list([1, 7]))

    def test_the_payload_is_what_a_body_would_be(self):
        session = self.session(self.daemon)
        client = self.upgrade(session.target("/vlans/9"), "POST")
        client.send(self.frame(b"x=y"))
        self.assert_first_answer(client, (0, "Create VLAN 9 successfully."))
        client.send(self.frame(b"method=DELETE"))
        self.assert_answer(client, (0, "Delete VLAN 9 successfully."))
        self.assertEqual(self.vlan_ids(session), [1])

    def test_the_end_of_the_session_ends_what_frames_can_do(self):
        session = self.session(self.daemon)
        client = self.upgrade(session.target("/vlans"))
        client.send(self.frame())
        self.assert_first_answer(client, GOT, wire.vlan_list([1]))
        session.ask("DELETE", "/login")
        client.send(self.frame(b"sessionkey=" + session.key.encode()) * 2)
        for _ in range(2):
            self.assert_answer(client, (1, "Authentication failed."))

    def test_without_a_session_at_the_upgrade_frames_have_none(self):
        session = self.session(self.daemon)
        client = self.upgrade("/vlans")
        client.send(self.frame())
        self.assert_first_answer(client, NO_KEY)
        session.ask("GET", "/vlans")  # the session of another connection is not this one's
        client.send(self.frame())
        self.assert_answer(client, NO_KEY)
        client.send(self.frame(b"sessionkey=" + session.key.encode()))
        self.assert_answer(client, wire.ENDED)

    def test_logging_in_by_a_frame(self):
        client = self.upgrade("/login", "POST")
        client.send(self.frame(b"user=admin&password=wrong"))
        client.fill(1)
        self.assertIn(b"HTTP/1.1 200 OK\r\n", client.buffer)
        while not client.buffer.endswith(b"</result>\n\r\n"):
            client.receive()
        self.assertNotIn(b"<sessionKey>", client.buffer)
        client.buffer = b""
        client.send(self.frame(f"user=admin&password={PASSWORD.replace(' ', '+')}".encode()))
        while not client.buffer.endswith(b"</result>\n\r\n"):
            client.receive()
        key = client.buffer.partition(b"<sessionKey>")[2][:32].decode()
        with Client(self.daemon) as other:
            self.assert_answers(other.ask("GET", f"/vlans?sessionkey={key}"), GOT, wire.vlan_list([1]))
        client.buffer = b""
        client.send(self.frame(b"method=GET"))  # not open to everybody, and this frame has no key
        self.assert_answer(client, NO_KEY)

    def test_the_daemon_outlives_whatever_comes(self):
        session = self.session(self.daemon)
        for target in ("/vlans", session.target("/vlans"), session.target("/"), "/help", "/login"):
            for data in (b"\x81\xff" + b"\xff" * 8 + b"mask", b"\xff\xfe\xff\xff" + b"x" * 70000, b"\x00" * 3000,
                         self.frame() * 200, b"\x82\x7f" + b"\0" * 6, bytes(range(256)) * 20):
                client = self.upgrade(target)
                try:
                    client.send(data)
                finally:
                    client.reset()
        self.assert_serves(self.daemon)


if __name__ == "__main__":
    web.main()
