"""The forward proxy with real clients and servers on both sides of it, and with servers that misbehave."""

import hashlib
import http.server
import os
import socket
import ssl
import threading

import web
from harness import certificate, eventually, sanitized
from wire import PATIENCE, Client, error_reply, request

BIG = 3 << 20 if sanitized() else 20 << 20  # a body that grows is copied all the time there
ESTABLISHED = b"HTTP/1.1 200 OK\r\n\r\n"


def big_body(seed):
    """Bytes that no two places of have in common."""
    block = hashlib.shake_128(seed.encode()).digest(1 << 16)
    return b"".join(block[i:] + block[:i] for i in range(BIG >> 16))


class Service(http.server.BaseHTTPRequestHandler):
    """Says its server's name, sends much, sends it in chunks, and tells the digest of what it is sent."""

    protocol_version = "HTTP/1.1"
    big = big_body("down")

    def answer(self, body, chunked=False):
        self.send_response(200)
        if chunked:
            self.send_header("Transfer-Encoding", "chunked")
        else:
            self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        if self.command == "HEAD":
            return
        if not chunked:
            self.wfile.write(body)
            return
        for at in range(0, len(body), 100_003):
            piece = body[at:at + 100_003]
            self.wfile.write(b"%x\r\n%b\r\n" % (len(piece), piece))
        self.wfile.write(b"0\r\n\r\n")

    def read_body(self):
        if self.headers.get("Transfer-Encoding") != "chunked":
            return self.rfile.read(int(self.headers.get("Content-Length", "0")))
        body = b""
        while size := int(self.rfile.readline(), 16):
            body += self.rfile.read(size)
            self.rfile.readline()
        self.rfile.readline()
        return body

    def do_GET(self):
        self.server.requests.append((self.command, self.path, self.headers.get("Host")))
        if self.path == "/big":
            self.answer(self.big)
        elif self.path == "/chunked":
            self.answer(self.big, chunked=True)
        else:
            self.answer(f"{self.server.name} {self.path}".encode())

    do_HEAD = do_GET

    def do_POST(self):
        self.answer(hashlib.sha256(self.read_body()).hexdigest().encode())

    do_PUT = do_POST

    def log_message(self, *_):
        pass


class ProxyTest(web.WebServerTest):
    def setUp(self):
        super().setUp()
        self.start(tls=True, enable_proxy="yes")

    def far_server(self, name="far", tls=False):
        """A server beyond the proxy: (its URL, the server)."""
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Service)
        server.name, server.requests = name, []
        if tls:
            path = os.path.join(self.folder, "far.pem")
            with open(path, "w", encoding="ascii") as file:
                file.write(certificate())
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(path)
            server.socket = context.wrap_socket(server.socket, server_side=True)
        thread = threading.Thread(target=server.serve_forever, kwargs={"poll_interval": 0.01})
        thread.start()

        def stop():
            server.shutdown()
            thread.join()
            server.server_close()
        self.addCleanup(stop)
        return f"{'https' if tls else 'http'}://127.0.0.1:{server.server_port}", server

    def listener(self):
        """A listening socket for a server that the test plays itself: (its authority, the socket)."""
        listener = socket.create_server(("127.0.0.1", 0))
        listener.settimeout(PATIENCE)
        self.addCleanup(listener.close)
        return f"127.0.0.1:{listener.getsockname()[1]}", listener

    def through(self, *arguments, over_tls=False, **options):
        """curl with the server as its proxy."""
        proxy = self.url("", tls=over_tls)
        return self.curl("--noproxy", "", "-x", proxy, "--proxy-cacert", os.path.join(self.folder, "ca.pem"),
                         *arguments, **options)

    def assert_idle(self):
        """Everything that was opened has been closed."""
        eventually(lambda: self.server.descriptors() == self.idle, "the proxy has closed its sockets")


class Forwarding(ProxyTest):
    def test_each_request_reaches_the_server_that_it_names(self):
        one, server = self.far_server("one")
        other, _ = self.far_server("other")
        answers = self.through(one + "/a%20b?q=%26", other + "/c", one + "/", other)
        self.assertEqual(answers, b"one /a%20b?q=%26other /cone /other /")
        host = one.removeprefix("http://")
        self.assertEqual(server.requests, [("GET", "/a%20b?q=%26", host), ("GET", "/", host)])

    def test_large_bodies_pass_whole_in_both_directions(self):
        far, _ = self.far_server()
        self.assertTrue(self.through(far + "/big") == Service.big)
        self.assertTrue(self.through(far + "/chunked") == Service.big)
        self.assertTrue(self.through("--http1.0", far + "/big", over_tls=True) == Service.big)
        body = big_body("up")
        digest = hashlib.sha256(body).hexdigest().encode()
        self.assertEqual(self.through("-T", self.write("up", body), far + "/put"), digest)
        self.assertEqual(self.through("-T", "-", far + "/put", data=body), digest)  # chunked
        self.assertEqual(self.through("--data-binary", "@-", far + "/post", data=body, over_tls=True), digest)

    def test_the_head_of_a_reply_alone(self):
        far, _ = self.far_server()
        head = self.through("-I", far + "/big").decode()
        self.assertIn(f"Content-Length: {BIG}\r\n", head)
        self.assertTrue(head.startswith("HTTP/1.1 200 OK\r\n"), head)

    def test_without_the_option_there_is_no_proxy(self):
        far, server = self.far_server()
        refusal = error_reply(405, "Method Not Allowed")
        for setting in ("", "no", "YES"):
            self.stop()
            self.start(enable_proxy=setting)
            self.assertEqual(self.exchange_request("GET", far + "/"), refusal)
            self.assertEqual(self.exchange_request("CONNECT", far.removeprefix("http://")), refusal)
        self.assertEqual(server.requests, [])


class Tunnel(ProxyTest):
    def test_https_passes_through(self):
        far, _ = self.far_server(tls=True)
        body = big_body("up")
        digest = hashlib.sha256(body).hexdigest().encode()
        for over_tls in (False, True):
            self.assertTrue(self.through(far + "/big", over_tls=over_tls) == Service.big)
            self.assertEqual(self.through("--data-binary", "@-", far + "/", data=body, over_tls=over_tls), digest)
            self.assertEqual(self.through(far + "/a", far + "/b", over_tls=over_tls), b"far /afar /b")

    def test_what_a_client_says_last_arrives(self):
        authority, listener = self.listener()
        for tls in (False, True):
            with self.client(tls=tls) as client:
                client.send(request("CONNECT", authority) + b"first ")
                far, _ = listener.accept()
                client.fill(len(ESTABLISHED))
                self.assertEqual(client.buffer, ESTABLISHED)
                client.send(b"last")
            with far, far.makefile("rb") as file:
                self.assertEqual(file.read(), b"first last")

    def test_a_tunnel_in_a_tunnel_in_a_tunnel_ends_with_its_client(self):
        far, _ = self.far_server()
        self.idle = self.server.descriptors()
        client = self.client()
        for _ in range(50):  # all of them through this very proxy
            client.send(request("CONNECT", f"127.0.0.1:{self.server.port}"))
            client.fill(len(ESTABLISHED))
            self.assertEqual(client.buffer, ESTABLISHED)
            client.buffer = b""
        client.send(request("GET", far + "/deep"))
        reply = client.read_reply()
        self.assertEqual(reply.body, b"far /deep")
        self.assert_closes_all(client)

    def assert_closes_all(self, client):
        client.close()
        self.assert_idle()
        self.assert_serves()


class Misfortune(ProxyTest):
    def setUp(self):
        super().setUp()
        self.authority, self.far = self.listener()
        self.idle = self.server.descriptors()

    def test_a_server_that_refuses(self):
        self.far.close()
        reply = (b"HTTP/1.1 502 Bad Gateway\r\nContent-Length: 35\r\nContent-Type: text/plain\r\n\r\n"
                 b"502 Bad Gateway\nConnection refused\n")
        self.assertEqual(self.exchange_request("CONNECT", self.authority), reply)
        self.assertEqual(self.exchange_request("GET", f"http://{self.authority}/"), reply)
        self.assertEqual(self.through("-w", "%{http_connect}", f"https://{self.authority}/", status=56), b"502")
        self.assertEqual(self.through("-w", "%{http_code}", "-o", "body", f"http://{self.authority}/"), b"502")
        self.assert_idle()

    def answer_once(self, reply):
        """A thread in which the far server takes one request, sends these bytes and closes."""
        def serve():
            far, _ = self.far.accept()
            with far:
                far.recv(1000)
                far.sendall(reply)
        thread = threading.Thread(target=serve)
        thread.start()
        self.addCleanup(thread.join)

    def test_a_server_that_vanishes_in_the_middle(self):
        self.answer_once(b"HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf")
        self.assertEqual(self.through(f"http://{self.authority}/", status=18), b"half")  # a part of the file
        self.assert_idle()

    def test_a_server_that_answers_before_it_has_read(self):
        self.answer_once(b"HTTP/1.1 403 Forbidden\r\nContent-Length: 2\r\nConnection: close\r\n\r\nno")
        client = self.client()
        client.send(request("POST", f"http://{self.authority}/", headers=["Transfer-Encoding: chunked"])
                    + b"5\r\nhello\r\n")
        reply = client.read_reply()
        self.assertEqual((reply.status, reply.body), (403, b"no"))
        client.close()
        self.assert_idle()

    def test_a_client_that_vanishes_in_the_middle(self):
        for method, target in (("GET", f"http://{self.authority}/"), ("CONNECT", self.authority)):
            client = Client(self.server)
            client.send(request(method, target))
            far, _ = self.far.accept()
            client.reset()
            with far, far.makefile("rb") as file:
                file.read()  # comes to its end
            self.assert_idle()

    def test_a_client_that_takes_nothing_does_not_fill_the_proxy(self):
        client = self.client(receive_buffer=4096)
        client.send(request("CONNECT", self.authority))
        far, _ = self.far.accept()
        with far:
            far.settimeout(1)
            sent = 0
            try:
                while sent < 200 << 20:
                    sent += far.send(b"x" * 65536)
            except TimeoutError:
                pass
            self.assertLess(sent, 100 << 20)  # the systems' own buffers are in it
        client.close()
        self.assert_idle()


if __name__ == "__main__":
    web.main()
