"""HTTP as it goes over the wire: what keeps a connection open, how requests may arrive, what is malformed."""

import socket

import harness
import wire
from harness import DaemonTest
from wire import BAD_REQUEST, GOT, NO_KEY, UNKNOWN_MODULE, Closed, error_reply, request, rest_reply

BAD = error_reply(400, "Bad Request")
CREATED_5 = (0, "Create VLAN 5 successfully.")


class HttpTest(DaemonTest):
    def setUp(self):
        self.daemon = self.start_daemon()

    def assert_stays(self, client):
        """The connection is open: it answers one more request."""
        self.assert_answers(client.ask("GET", "/vlans"), NO_KEY)

    def assert_error_and_close(self, data, expected, tls=False):
        """The bytes get exactly this error, after which the daemon closes."""
        client = self.client(self.daemon, tls=tls)
        client.send(data)
        self.assertEqual(client.read_to_end(), expected, data)
        client.close()


class KeepAlive(HttpTest):
    CASES = [  # version, Connection header, whether the connection stays
        ("1.1", None, True), ("1.1", "keep-alive", True), ("1.1", "Keep-Alive", True),
        ("1.1", "KEEP-ALIVE", True), ("1.1", "close", False), ("1.1", "Close", False),
        ("1.1", "keep-alive, x", False), ("1.1", "upgrade", False), ("1.0", None, False),
        ("1.0", "keep-alive", True), ("1.0", "Keep-Alive", True), ("1.0", "close", False),
    ]

    def check_matrix(self, tls):
        for method in ("GET", "POST", "PUT", "DELETE", "HEAD"):
            for version, connection, stays in self.CASES:
                with self.subTest(method=method, version=version, connection=connection, tls=tls):
                    client = self.client(self.daemon, tls=tls)
                    headers = [] if connection is None else [f"Connection: {connection}"]
                    client.send(request(method, "/vlans", headers=headers, version=version))
                    self.assert_answers(client.read_reply(), NO_KEY)
                    if stays:
                        self.assert_stays(client)
                    else:
                        self.assert_closes(client)
                    client.close()

    def test_over_http(self):
        self.check_matrix(tls=False)

    def test_over_https(self):
        self.check_matrix(tls=True)

    def test_the_name_of_the_header_counts_in_any_case(self):
        client = self.client(self.daemon)
        client.send(request("GET", "/vlans", headers=["CONNECTION: close"]))
        self.assert_answers(client.read_reply(), NO_KEY)
        self.assert_closes(client)

    def test_many_requests_on_one_connection(self):
        for tls in (False, True):
            client = self.client(self.daemon, tls=tls)
            for _ in range(200):
                self.assert_stays(client)

    def test_https_ends_with_a_close_notify(self):
        client = self.client(self.daemon, tls=True)
        client.socket.suppress_ragged_eofs = False
        client.send(request("GET", "/vlans", version="1.0"))
        self.assert_answers(client.read_reply(), NO_KEY)
        self.assertEqual(client.socket.recv(1), b"")


class Arrival(HttpTest):
    def test_what_is_pipelined_behind_a_request_is_discarded(self):
        session = self.session(self.daemon)
        for tls in (False, True):
            client = self.client(self.daemon, tls=tls)
            client.send(request("GET", session.target("/vlans")) + request("POST", session.target("/vlans/5"))
                        + request("GET", "/base"))
            self.assert_answers(client.read_reply(), GOT, wire.vlan_list([1]))
            self.assert_stays(client)
            self.assertEqual(self.vlan_ids(session), [1])

    def test_a_body_in_two_packets(self):
        session = self.session(self.daemon)
        self.assert_answers(session.ask("POST", "/vlans/5"), CREATED_5)
        whole = request("PUT", session.target("/vlans/5/name"), body="value=in+two+packets")
        self.send_in_parts(session.client, [whole[:-9], whole[-9:]])
        self.assert_answers(session.client.read_reply(), (0, "Update name of VLAN 5 successfully."))
        self.assertIn("<name>in two packets</name>", session.ask("GET", "/vlans/5").text())

    def send_in_parts(self, client, parts):
        """Sends each part by itself; another client's answer in between proves that the daemon has read
        it."""
        witness = self.client(self.daemon)
        for part in parts[:-1]:
            client.send(part)
            self.assert_stays(witness)
            self.assertTrue(client.is_open())
            self.assertEqual(client.buffer, b"", f"answered after {part!r}")
        client.send(parts[-1])

    def test_a_head_byte_by_byte(self):
        client = self.client(self.daemon)
        whole = request("GET", "/vlans")
        self.send_in_parts(client, [whole[i:i + 1] for i in range(len(whole))])
        self.assert_answers(client.read_reply(), NO_KEY)
        self.assert_stays(client)

    def test_a_head_byte_by_byte_over_https(self):
        client = self.client(self.daemon, tls=True)
        for byte in request("GET", "/vlans"):
            client.send(bytes([byte]))
        self.assert_answers(client.read_reply(), NO_KEY)
        self.assert_stays(client)

    def test_a_body_byte_by_byte(self):
        session = self.session(self.daemon)
        whole = request("POST", session.target("/vlans/5"), body="a=b&c=d")
        self.send_in_parts(session.client, [whole[:-7], *(bytes([byte]) for byte in whole[-7:])])
        self.assert_answers(session.client.read_reply(), CREATED_5)

    def test_a_body_of_a_megabyte(self):
        for tls in (False, True):
            client = self.client(self.daemon, tls=tls)
            reply = client.ask("POST", "/login", body="x=" + "y" * (1 << 20) + "&user=admin&password=wrong")
            self.assert_answers(reply, (1, "Authentication failed."))
            self.assert_stays(client)

    def test_expect_100_continue(self):
        session = self.session(self.daemon)
        self.assert_answers(session.ask("POST", "/vlans/5"), CREATED_5)
        for word in ("100-continue", "100-Continue"):
            whole = request("PUT", session.target("/vlans/5/name"), "value=a", [f"Expect: {word}"])
            session.client.send(whole[:-7])
            self.assertEqual(session.client.read_reply().raw, b"HTTP/1.1 100 Continue\r\n\r\n")
            session.client.send(whole[-7:])
            self.assert_answers(session.client.read_reply(), (0, "Update name of VLAN 5 successfully."))

    def test_other_expectations_are_ignored(self):
        client = self.client(self.daemon)
        self.assert_answers(client.ask("POST", "/vlans", "abc", ["Expect: wonders"]), NO_KEY)

    def test_a_client_that_closes_its_side_gets_its_request_carried_out(self):
        """Its connection is closed at once, with or without a reply; another client sees what it did."""
        session = self.session(self.daemon)
        for vid in range(100, 120):
            client = self.client(self.daemon)
            client.send(request("POST", session.target(f"/vlans/{vid}")))
            client.socket.shutdown(socket.SHUT_WR)
            whole = rest_reply(0, f"Create VLAN {vid} successfully.")
            self.assertIn(client.read_to_end(), (b"", whole))
            client.close()
        self.assertEqual(self.vlan_ids(session), [1, *range(100, 120)])

    def test_a_request_cut_short_is_not_carried_out(self):
        session = self.session(self.daemon)
        whole = request("POST", session.target("/vlans/5"), body="abc")
        for cut in (len(whole) - 1, len(whole) - 3, len(whole) - 4, 10):
            client = self.client(self.daemon)
            client.send(whole[:cut])
            client.socket.shutdown(socket.SHUT_WR)
            self.assertEqual(client.read_to_end(), b"")
        self.assertEqual(self.vlan_ids(session), [1])

    def test_content_length_decides_how_long_a_body_is(self):
        session = self.session(self.daemon)
        self.assert_answers(session.ask("POST", "/vlans/5"), CREATED_5)
        target = session.target("/vlans/5/name")
        for length in ("abc", "-5", "0", ""):
            session.client.send(f"PUT {target} HTTP/1.1\r\nContent-Length: {length}\r\n\r\n".encode())
            self.assert_answers(session.client.read_reply(), (2, "The value of parameter is invalid."))


class Heads(HttpTest):
    def head(self, size, end=b"\r\n\r\n"):
        """A head of `size` bytes, its end included."""
        start = b"GET /vlans HTTP/1.1\r\nX-Padding: "
        return start + b"p" * (size - len(start) - len(end)) + end

    def test_a_head_of_16384_bytes_is_served(self):
        for tls in (False, True):
            client = self.client(self.daemon, tls=tls)
            client.send(self.head(16384))
            self.assert_answers(client.read_reply(), NO_KEY)
            self.assert_stays(client)

    def test_16384_bytes_without_an_end_are_waited_on(self):
        client = self.client(self.daemon)
        witness = self.client(self.daemon)
        client.send(self.head(16384, b""))
        self.assert_stays(witness)
        self.assertTrue(client.is_open())
        client.send(b"\r\n\r\n")
        self.assert_answers(client.read_reply(), NO_KEY)

    def test_16385_bytes_without_an_end_are_too_large(self):
        for tls in (False, True):
            self.assert_error_and_close(self.head(16385, b""), error_reply(413, "Payload Too Large"), tls)

    def test_thirty_headers_count_and_the_rest_is_ignored(self):
        fillers = [f"X-{i}: {i}" for i in range(29)]
        client = self.client(self.daemon)
        client.send(request("GET", "/vlans", headers=[*fillers, "Connection: close"]))
        self.assert_answers(client.read_reply(), NO_KEY)
        self.assert_stays(client)
        client.send(request("GET", "/vlans", headers=[*fillers[1:], "Connection: close"]))
        self.assert_answers(client.read_reply(), NO_KEY)
        self.assert_closes(client)

    def test_forms_of_a_head_that_are_served(self):
        for head in (b"GET /vlans HTTP/1.1\n\n", b"GET /vlans HTTP/1.1\r\n\n", b"GET /vlans HTTP/1.1\n\r\n",
                     b"GET   /vlans   HTTP/1.1\r\n\r\n", b"\r\nGET /vlans HTTP/1.1\r\n\r\n",
                     b"  GET /vlans HTTP/1.1\r\n\r\n", b"GET /vlans HTTP/1.1\r\nno colon\r\n\r\n",
                     b"GET /vlans HTTP/1.1\r\nX-Umlaut: \xfc\xff\r\n\r\n",
                     b"GET /vlans HTTP/1.1\r\nHost:x\r\n\r\n", b"GET /vlans?\xe4=1 HTTP/1.1\r\n\r\n"):
            with self.subTest(head=head):
                client = self.client(self.daemon)
                client.send(head)
                self.assert_answers(client.read_reply(), NO_KEY)

    def test_bad_first_lines(self):
        for line in (b"PATCH /vlans HTTP/1.1", b"get /vlans HTTP/1.1", b"GET", b"GET /vlans",
                     b"GET /vlans FTP/1.1", b"GET /vlans http/1.1", b"/vlans HTTP/1.1",
                     b"GETT /vlans HTTP/1.1", b"TRACE / HTTP/1.1", b"x", b"HTTP/1.1 200 OK",
                     b"GET vlans HTTP/1.1", b"GET ../vlans HTTP/1.1", b"GET host:x HTTP/1.1",
                     b"GET ?a=b HTTP/1.1", b"PRI * HTTP/2.0\r\n\r\nSM"):
            with self.subTest(line=line):
                self.assert_error_and_close(line + b"\r\n\r\n", BAD)

    def test_an_empty_head(self):
        for head in (b"\r\n\r\n", b"\n\n", b" \r\n\r\n"):
            with self.subTest(head=head):
                self.assert_error_and_close(head, BAD)

    def test_control_bytes_are_refused_before_the_head_is_whole(self):
        for byte in (0, 1, 9, 11, 27, 127):
            with self.subTest(byte=byte):
                self.assert_error_and_close(b"GET /vlans HTTP/1.1\r\nX: " + bytes([byte]), BAD)

    def test_versions(self):
        unsupported = error_reply(505, "HTTP Version Not Supported")
        for version in ("1.2", "2.0", "0.9", "1", "1.10", "", "1.1x"):
            with self.subTest(version=version):
                self.assert_error_and_close(f"GET /vlans HTTP/{version}\r\n\r\n".encode(), unsupported)

    def test_bytes_of_the_errors(self):
        self.assertEqual(BAD, b"HTTP/1.1 400 Bad Request\r\nContent-Length: 16\r\n"
                              b"Content-Type: text/plain\r\n\r\n400 Bad Request\n")
        self.assertEqual(error_reply(413, "Payload Too Large"),
                         b"HTTP/1.1 413 Payload Too Large\r\nContent-Length: 22\r\n"
                         b"Content-Type: text/plain\r\n\r\n413 Payload Too Large\n")
        self.assert_error_and_close(b"GET / HTTP/1.2\r\n\r\n",
                                    b"HTTP/1.1 505 HTTP Version Not Supported\r\nContent-Length: 31\r\n"
                                    b"Content-Type: text/plain\r\n\r\n505 HTTP Version Not Supported\n")

    def test_a_websocket_upgrade_leaves_the_daemon_whole(self):
        headers = ["Connection: Upgrade", "Upgrade: websocket", "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ=="]
        for version in ("13", "8", "x"):
            for target in ("/vlans", "/", "/chat"):
                client = self.client(self.daemon)
                client.send(request("GET", target, headers=[*headers, f"Sec-WebSocket-Version: {version}"]))
                try:
                    client.send(b"\x81\x85\x01\x02\x03\x04abcde" + b"\x88\x00" + b"\xff" * 64)
                except OSError:
                    pass  # closed already
                client.reset()
                self.assert_serves(self.daemon)


class Uris(HttpTest):
    def setUp(self):
        super().setUp()
        self.logged_in = self.session(self.daemon)

    def assert_uri(self, uri, outcome, data=None, method="GET"):
        self.assert_answers(self.logged_in.ask(method, uri), outcome, data)

    def test_a_uri_of_255_characters_is_served(self):
        self.assert_uri("/vlans/" + "1" * 248, (1, "VLAN 2147483647 does not exist."))
        self.assert_uri("/vlans/" + "x" * 248, BAD_REQUEST)
        self.assert_uri("/" + "x" * 254, UNKNOWN_MODULE)

    def test_a_uri_of_256_characters_is_malformed(self):
        for uri in ("/vlans/" + "1" * 249, "/" + "x" * 255, "/" + "x" * 5000):
            self.assert_error_and_close(request("GET", self.logged_in.target(uri)), BAD)

    def test_the_length_counts_after_decoding(self):
        self.assert_uri("/" + "%78" * 254, UNKNOWN_MODULE)
        self.assert_uri("/vlans" + "/" * 300, BAD_REQUEST)
        self.assert_error_and_close(request("GET", self.logged_in.target("/" + "%78" * 255)), BAD)

    def test_percent_decoding(self):
        only_1 = wire.vlan_list([1])
        for uri in ("/%76lans", "/%76%6c%61%6E%73", "%2fvlans", "%2Fvlans"):
            self.assert_uri(uri, GOT, only_1)
        self.assert_uri("/vlans%2f7", (1, "VLAN 7 does not exist."))
        self.assert_uri("/vlans/%37", (1, "VLAN 7 does not exist."))
        for uri in ("/%vlans", "/vlans%", "/vlans%2", "/vlans%zz", "/%2576lans", "/vlans+"):
            self.assert_uri(uri, UNKNOWN_MODULE)
        self.assert_uri("/vlans%3Fa=b", UNKNOWN_MODULE)

    def test_slashes_and_dots(self):
        only_1 = wire.vlan_list([1])
        absent = (1, "VLAN 7 does not exist.")
        for uri in ("//vlans", "///vlans", "/../vlans", "/../../vlans", "/....//vlans", "/\\vlans",
                    "//..//vlans", "/%2e%2e/vlans", "/%2f/vlans"):
            self.assert_uri(uri, GOT, only_1)
        for uri in ("/vlans//7", "/vlans/../7", "/vlans///../../7", "/vlans/..7", "//vlans//7"):
            self.assert_uri(uri, absent)
        self.assert_uri("/vlans/./7", BAD_REQUEST)
        self.assert_uri("/./vlans", UNKNOWN_MODULE)
        self.assert_uri("/vlans/...7", BAD_REQUEST)

    def test_forms_of_a_uri_that_are_no_path(self):
        for uri in ("*", "http://127.0.0.1/vlans", "HTTPS://x", "127.0.0.1:80", "host:443"):
            for method in ("GET", "CONNECT", "OPTIONS"):
                self.assert_uri(uri, UNKNOWN_MODULE, method=method)

    def test_the_query_begins_at_the_first_question_mark(self):
        client = self.logged_in.client
        self.assert_answers(client.ask("GET", f"/vlans??sessionkey={self.logged_in.key}"), NO_KEY)
        self.assert_answers(client.ask("GET", f"/vlans?a?b=c&sessionkey={self.logged_in.key}"), GOT,
                            wire.vlan_list([1]))

    def test_a_zero_byte_ends_nothing_but_the_uri(self):
        """What it does to the URI is the daemon's affair; it must stay whole."""
        for uri in ("/%00", "%00", "/vlans%00", "/vlans/%00", "/%00vlans"):
            client = self.client(self.daemon)
            client.send(request("GET", self.logged_in.target(uri)))
            client.read_reply()
        self.assert_serves(self.daemon)


class Variables(HttpTest):
    def setUp(self):
        super().setUp()
        self.logged_in = self.session(self.daemon)
        self.assert_answers(self.logged_in.ask("POST", "/vlans/5"), CREATED_5)

    def name_after(self, *variables, body=None):
        """The name of VLAN 5 after it was set by these variables."""
        reply = self.logged_in.ask("PUT", "/vlans/5/name", *variables, body=body)
        self.assert_answers(reply, (0, "Update name of VLAN 5 successfully."))
        text = self.logged_in.ask("GET", "/vlans/5").text()
        return text[text.index("<name>") + 6:text.index("</name>")]

    def test_decoding_of_values(self):
        for value, name in (("a+b", "a b"), ("a%2Bb", "a+b"), ("a%26b", "a&b"), ("a=b", "a=b"),
                            ("%41%5a", "AZ"), ("100%", "100%"), ("%4", "%4"), ("%zz", "%zz"), ("a%", "a%"),
                            ("%c3%bc", "\xc3\xbc"), ("a?b", "a?b"), ("a%00b", "a"), ("%25%34%31", "%41")):
            with self.subTest(value=value):
                self.assertEqual(self.name_after(f"value={value}"), name)
                self.name_after("value=between")
                self.assertEqual(self.name_after(body=f"value={value}"), name)

    def test_the_query_comes_before_the_body(self):
        self.assertEqual(self.name_after("value=query", body="value=body"), "query")
        self.assertEqual(self.name_after("other=x", body="a=b&value=body"), "body")
        self.assertEqual(self.name_after("xvalue=x", body="VALUE=body"), "body")

    def test_a_value_too_long_in_the_query_is_looked_for_in_the_body(self):
        self.assertEqual(self.name_after("value=" + "q" * 256, body="value=body"), "body")

    def test_any_content_type_is_a_form(self):
        client = self.logged_in.client
        for media_type in ("application/x-www-form-urlencoded", "text/plain", "application/json"):
            reply = client.ask("PUT", self.logged_in.target("/vlans/5/name"), "value=typed",
                               [f"Content-Type: {media_type}"])
            self.assert_answers(reply, (0, "Update name of VLAN 5 successfully."))


class LargeAnswers(HttpTest):
    def test_a_text_of_exactly_8192_characters_ends_with_a_zero_byte(self):
        """Clients have come to live with this; with one character less or more the newline is there."""
        session = self.session(self.daemon)
        present = [1]
        for size in (8191, 8192, 8193):
            ids = self.ids_for_a_text_of(size)
            self.replace_vlans(session, present, ids)
            present = ids
            whole = rest_reply(*GOT, wire.vlan_list(ids))
            self.assertIn(f"\r\n\r\n{size:X}\r\n".encode(), whole)
            if size == 8192:
                whole = whole.replace(b"</result>\n", b"</result>\0")
            self.assertEqual(session.ask("GET", "/vlans").raw, whole)

    def replace_vlans(self, session, present, ids):
        harness.create_vlans(self, session, sorted(set(ids) - set(present)))
        for vid in sorted(set(present) - set(ids)):
            reply = session.ask("DELETE", f"/vlans/{vid}")
            self.assert_answers(reply, (0, f"Delete VLAN {vid} successfully."))

    @staticmethod
    def ids_for_a_text_of(size):
        """VLAN ids whose list is a text of this size, its newline counted."""
        digits = size - len(wire.document(*GOT, wire.vlan_list([1])))
        entry = len("<vlan><id></id></vlan>")
        for three in range(30):
            four, rest = divmod(digits - three * (entry + 3), entry + 4)
            if rest == 0:
                return [1, *range(100, 100 + three), *range(1000, 1000 + four)]
        raise AssertionError("no such list")

    def test_the_whole_of_a_large_answer_arrives_in_one_chunk(self):
        session = self.session(self.daemon)
        harness.create_vlans(self, session, range(2, 1000))
        for tls in (False, True):
            client = self.client(self.daemon, tls=tls)
            for form in ("xml", "json"):
                reply = client.ask("GET", session.target("/vlans", [f"format={form}"]))
                self.assert_answers(reply, GOT, wire.vlan_list(range(1, 1000)), form)
                self.assertEqual(len(reply.chunks), 1)

    def test_the_last_reply_of_a_connection_is_sent_whole(self):
        session = self.session(self.daemon)
        harness.create_vlans(self, session, range(2, 1000))
        expected = rest_reply(*GOT, wire.vlan_list(range(1, 1000)))
        for tls in (False, True):
            client = self.client(self.daemon, tls=tls, receive_buffer=4096)
            client.send(request("GET", session.target("/vlans"), version="1.0"))
            self.assertEqual(client.read_to_end(), expected)

    def test_closing_early_is_told_from_a_whole_reply(self):
        client = self.client(self.daemon)
        client.send(request("GET", "/vlans", version="1.0"))
        client.read_reply()
        self.assertRaises(Closed, client.read_reply)


if __name__ == "__main__":
    harness.main()
