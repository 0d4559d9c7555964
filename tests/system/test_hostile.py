"""Clients that mean harm, or are merely broken. After each of them the daemon serves everybody else as
before."""

import random
import resource
import socket
import ssl

import harness
import wire
from harness import DaemonTest
from wire import GOT, NO_KEY, Client, request


def client_hello():
    """The first bytes of a TLS handshake, as a real client sends them."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
    incoming, outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
    try:
        context.wrap_bio(incoming, outgoing, server_hostname="localhost").do_handshake()
    except ssl.SSLWantReadError:
        pass
    return outgoing.read()


class Attack(DaemonTest):
    def send_quietly(self, client, data):
        """Sends what the daemon may refuse by closing."""
        try:
            client.send(data)
        except OSError:
            pass

    def raw_clients(self, daemon, count, tls):
        return [self.client(daemon, tls=tls, handshake=False) for _ in range(count)]


class Garbage(Attack):
    def setUp(self):
        self.daemon = self.start_daemon()
        self.random = random.Random(20240229)

    def tearDown(self):
        self.assert_serves(self.daemon)
        session = self.session(self.daemon)
        self.assertEqual(self.vlan_ids(session), [1])

    def throw(self, data, tls):
        """One connection that sends this and goes, orderly or not."""
        client = Client(self.daemon, tls=tls, handshake=False)
        self.send_quietly(client, data)
        client.reset() if self.random.random() < 0.5 else client.close()

    def test_random_bytes_on_both_ports(self):
        for _ in range(200):
            data = self.random.randbytes(self.random.choice((1, 2, 7, 100, 3000, 40000)))
            for tls in (False, True):
                self.throw(data, tls)

    def test_random_bytes_inside_tls(self):
        for _ in range(50):
            client = Client(self.daemon, tls=True)
            self.send_quietly(client, self.random.randbytes(self.random.choice((1, 50, 5000, 40000))))
            client.reset() if self.random.random() < 0.5 else client.close()

    def test_requests_with_bytes_changed(self):
        seeds = [request("GET", "/vlans/1?sessionkey=00&format=json"),
                 request("POST", "/login", "user=a&password=b"),
                 request("PUT", "/vlans/10/name?value=a", "value=b",
                         ["Expect: 100-continue", "Connection: close"])]
        for _ in range(500):
            data = bytearray(self.random.choice(seeds))
            for _ in range(self.random.randrange(1, 6)):
                at = self.random.randrange(len(data))
                change = self.random.randrange(3)
                if change == 0:
                    data[at] = self.random.randrange(256)
                elif change == 1:
                    del data[at:at + self.random.randrange(8)]
                else:
                    data[at:at] = self.random.choice((b"%", b"\r\n", b"\0", b"%00", b"&&", b"=", b"/..",
                                                      b"A" * 300))
                data = data or bytearray(b"x")
            self.throw(bytes(data), False)

    def test_absurd_lengths(self):
        for length in ("9223372036854775807", "-9223372036854775808", "99999999999999999999", "-1",
                       "18446744073709551615", "0x10", "+5", "1e9"):
            client = self.client(self.daemon)
            client.send(f"POST /vlans HTTP/1.1\r\nContent-Length: {length}\r\n\r\nabc".encode())
            self.assert_serves(self.daemon)
            client.reset()

    def test_requests_full_of_separators(self):
        for part in (b"&", b"=", b"%", b"sessionkey=&", b"?", b"+", b"\xff", b"method=&"):
            client = self.client(self.daemon)
            client.send(b"GET /vlans?" + part * (12000 // len(part)) + b" HTTP/1.1\r\n\r\n")
            self.assert_answers(client.read_reply(), NO_KEY)
            client.send(request("POST", "/vlans", part * (100000 // len(part))))
            self.assert_answers(client.read_reply(), NO_KEY)
            client.close()

    def test_handshakes_left_half_open(self):
        hello = client_hello()
        silent = self.raw_clients(self.daemon, 50, tls=True)
        begun = self.raw_clients(self.daemon, 50, tls=True)
        for client in begun:
            client.send(hello[:self.random.randrange(1, len(hello))])
        waiting = self.raw_clients(self.daemon, 50, tls=True)
        for client in waiting:
            client.send(hello)
        self.assert_serves(self.daemon)
        for client in (*silent, *begun):
            self.assertTrue(client.is_open())
        for client in waiting:
            self.assertTrue(client.receive(), "the server's side of the handshake")

    def test_garbage_in_a_handshake(self):
        hello = client_hello()
        for cut in range(1, len(hello), 23):
            client = self.client(self.daemon, tls=True, handshake=False)
            self.send_quietly(client, hello[:cut] + self.random.randbytes(600))
            client.socket.shutdown(socket.SHUT_WR)
            client.read_to_end()
            client.close()

    def test_garbage_after_a_handshake(self):
        for data in (b"\x17\x03\x03\x00\x20" + bytes(32), b"\x15\x03\x03\x00\x02\x02\x00",
                     b"\x16\x03\x03\xff\xff", self.random.randbytes(500), b"GET / HTTP/1.1\r\n\r\n"):
            client = Client(self.daemon, tls=True)
            raw = socket.socket(fileno=client.socket.detach())
            raw.settimeout(wire.PATIENCE)
            raw.sendall(data)
            raw.shutdown(socket.SHUT_WR)
            try:
                while raw.recv(65536):
                    pass
            except ConnectionResetError:
                pass
            raw.close()

    def test_http_on_the_https_port_and_the_other_way_round(self):
        client = self.client(self.daemon, tls=True, handshake=False)
        client.send(request("GET", "/vlans"))
        self.assertNotIn(b"HTTP/1.1 200", client.read_to_end())
        client = self.client(self.daemon)
        client.send(client_hello())
        self.assertEqual(client.read_to_end(), wire.error_reply(400, "Bad Request"))


class SlowClients(Attack):
    def test_a_client_that_never_reads_a_large_answer(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        harness.create_vlans(self, session, range(2, 1500))
        expected = wire.rest_reply(*GOT, wire.vlan_list(range(1, 1500)))
        asked = 30
        deaf = [self.client(daemon, receive_buffer=4096), self.client(daemon, tls=True, receive_buffer=4096)]
        for _ in range(asked):
            for client in deaf:
                client.send(request("GET", session.target("/vlans")))
            # The answer to a later request proves that the daemon has taken the ones before.
            self.assert_answers(session.ask("GET", "/vlans/1499", "x"), GOT, self.vlan(1499))
            self.assert_serves(daemon)
        self.assertEqual(session.ask("GET", "/vlans").raw, expected)
        # Over TLS nothing is read from a client that does not read, so its requests reach the daemon in one
        # piece, of which the first counts.
        self.assertEqual(deaf[1].read_reply().raw, expected)
        for _ in range(asked):
            self.assertEqual(deaf[0].read_reply().raw, expected)
        self.assert_answers(deaf[0].ask("GET", "/vlans"), NO_KEY)

    @staticmethod
    def vlan(vid):
        return {"vlan": {"id": vid, "name": "", "type": "static", "interfaces": wire.Rows("interface")}}

    def test_clients_that_go_in_the_middle_of_a_large_answer(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        harness.create_vlans(self, session, range(2, 1500))
        for i in range(40):
            client = Client(daemon, tls=i % 2 == 1, receive_buffer=4096)
            client.send(request("GET", session.target("/vlans")))
            if i % 4 < 2:
                client.fill(100)
            client.reset()
        self.assert_serves(daemon)
        self.assertEqual(self.vlan_ids(session), list(range(1, 1500)))

    def test_clients_that_send_a_byte_now_and_then(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        whole = request("GET", session.target("/vlans"))
        slow = [self.client(daemon, tls=i % 10 == 0) for i in range(100)]
        for byte in whole[:-1]:
            for client in slow:
                client.send(bytes([byte]))
        self.assert_serves(daemon)
        for client in slow:
            client.send(whole[-1:])
            self.assert_answers(client.read_reply(), GOT, wire.vlan_list([1]))


class ManyClients(Attack):
    def test_1200_connections_at_once(self):
        soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
        if hard != resource.RLIM_INFINITY and hard < 1500:
            self.skipTest("this system does not allow a process 1500 descriptors")
        resource.setrlimit(resource.RLIMIT_NOFILE, (max(soft, 1500), hard))
        self.addCleanup(resource.setrlimit, resource.RLIMIT_NOFILE, (soft, hard))
        daemon = self.start_daemon(limits={resource.RLIMIT_NOFILE: 1500})
        session = self.session(daemon)
        clients = [self.client(daemon, tls=i % 12 == 0) for i in range(1200)]
        for _ in range(2):
            for client in clients:
                client.send(request("GET", session.target("/vlans")))
            for client in clients:
                self.assert_answers(client.read_reply(), GOT, wire.vlan_list([1]))
        self.assertGreaterEqual(daemon.descriptors(), 1200)

    def test_connections_beyond_the_descriptor_limit_wait_for_a_free_one(self):
        limit = 40
        daemon = self.start_daemon(limits={resource.RLIMIT_NOFILE: limit})
        session = self.session(daemon)
        served = []
        while daemon.descriptors() < limit:
            served.append(self.client(daemon))
            self.assert_answers(served[-1].ask("GET", "/vlans"), NO_KEY)
        beyond = [self.client(daemon) for _ in range(5)]
        for client in beyond:
            client.send(request("GET", "/vlans"))
        for client in served:
            self.assert_answers(client.ask("GET", "/vlans"), NO_KEY)
        self.assert_answers(session.ask("POST", "/vlans/5"), (0, "Create VLAN 5 successfully."))
        self.assertEqual(self.vlan_ids(session), [1, 5])
        self.assert_does_not_spin(daemon)

        while beyond:
            for client in beyond:
                self.assertTrue(client.is_open())
                self.assertEqual(client.buffer, b"")
            served.pop().close()
            served.insert(0, beyond.pop(0))
            self.assert_answers(served[0].read_reply(), NO_KEY)
        for client in served:
            client.close()
        self.assert_serves(daemon)
        self.assertEqual(self.vlan_ids(session), [1, 5])

    def assert_does_not_spin(self, daemon):
        """With nothing to do, the daemon goes to sleep. A loop that spins never does."""
        before = daemon.sleeps()
        harness.eventually(lambda: daemon.sleeps() >= before + 2, "the daemon sleeps")

    def test_no_spinning_with_clients_that_wait_for_the_daemon(self):
        daemon = self.start_daemon()
        hello = client_hello()
        clients = [self.client(daemon) for _ in range(20)] + self.raw_clients(daemon, 20, tls=True)
        for client in clients[10:20]:
            client.send(b"POST /login HTTP/1.1\r\nContent-Length: 50\r\n\r\nuser=")
        for client in clients[30:35]:
            client.send(hello[:40])
        for client in clients[35:]:
            client.send(hello)
        self.assert_serves(daemon)
        self.assert_does_not_spin(daemon)

    def test_no_spinning_with_clients_that_do_not_read(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        harness.create_vlans(self, session, range(2, 1500))
        for tls in (False, True):
            client = self.client(daemon, tls=tls, receive_buffer=4096)
            for _ in range(100):
                client.send(request("GET", session.target("/vlans")))
                self.assert_answers(session.ask("GET", "/vlans/2000"), (1, "VLAN 2000 does not exist."))
        self.assert_does_not_spin(daemon)


class WrongPasswords(Attack):
    FAILED = (1, "Authentication failed.")
    LOGIN = f"/login?user=admin&password={wire.PASSWORD.replace(' ', '+')}"

    def test_a_flood_of_wrong_passwords_holds_up_nobody(self):
        daemon = self.start_daemon()
        session = self.session(daemon)
        attacker = self.client(daemon)
        harness.eventually(lambda: self.flood(attacker), "the right password is refused like a wrong one")

        for i in range(500):
            for user in ("admin", f"nobody{i}"):
                reply = attacker.ask("POST", f"/login?user={user}&password=guess{i}")
                self.assert_answers(reply, self.FAILED)
            if i % 50 == 0:
                self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        self.assert_answers(session.ask("POST", "/vlans/5"), (0, "Create VLAN 5 successfully."))

    def flood(self, attacker):
        """Guesses until the limit is reached. False when the account gained a try meanwhile."""
        for i in range(12):
            self.assert_answers(attacker.ask("POST", f"/login?user=admin&password=guess{i}"), self.FAILED)
        reply = attacker.ask("POST", self.LOGIN)
        if b"sessionKey" not in reply.body:
            self.assert_answers(reply, self.FAILED)
            return True
        key = reply.text().split("<sessionKey>")[1][:32]
        attacker.ask("DELETE", f"/login?sessionkey={key}")
        return False

    def test_guesses_at_one_account_leave_the_others_alone(self):
        """Unknown names share a limit of their own, which is not the administrator's."""
        daemon = self.start_daemon()
        attacker = self.client(daemon)
        for i in range(30):
            self.assert_answers(attacker.ask("POST", f"/login?user=nobody{i}&password=x"), self.FAILED)
        self.session(daemon)


if __name__ == "__main__":
    harness.main()
