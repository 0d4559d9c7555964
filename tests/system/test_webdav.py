"""WebDAV and digest authentication as clients use them: curl, cadaver, and the tests of litmus."""

import base64
import concurrent.futures
import email.utils
import hashlib
import os
import re
import xml.etree.ElementTree

from web import WebServerTest, main
from wire import Client, error_reply, request

REALM, USER, PASSWORD = "mydomain.com", "anna", "open sesame&\"<ü"
DAV = "{DAV:}"


def md5(text):
    return hashlib.md5(text.encode()).hexdigest()


def password_line(user=USER, password=PASSWORD, realm=REALM):
    return f"{user}:{realm}:{md5(f'{user}:{realm}:{password}')}\n"


def authorization(method, uri, user=USER, password=PASSWORD):
    """The header of a request that carries a digest."""
    fields = "1:00000001:c:auth"
    response = md5(f"{md5(f'{user}:{REALM}:{password}')}:{fields}:{md5(f'{method}:{uri}')}")
    return (f'Authorization: Digest username="{user}", realm="{REALM}", nonce="1", uri="{uri}", qop=auth, '
            f'nc=00000001, cnonce="c", response="{response}"')


def success(status):
    return f"HTTP/1.1 {status} OK\r\nContent-Length: 0\r\n\r\n".encode()


class WebDavTest(WebServerTest):
    def setUp(self):
        super().setUp()
        self.users = self.write("../users", password_line())
        self.start_server()

    def start_server(self, **options):
        self.start(dav_auth_file=self.users, **options)

    def tree(self, top="."):
        """All that lies under the document root, hidden or not, with directories marked."""
        top = self.path(top)
        found = []
        for folder, folders, files in os.walk(top):
            found += [os.path.relpath(os.path.join(folder, name), top) + "/" for name in folders]
            found += [os.path.relpath(os.path.join(folder, name), top) for name in files]
        return sorted(found)

    def dav(self, method, uri, body=None, headers=()):
        """All that comes back for a request of anna's."""
        return self.exchange_request(method, uri, body, (authorization(method, uri), *headers))

    def curl_dav(self, *arguments, user=USER, password=PASSWORD, tls=False, uri="/", data=None):
        """The body and the status of what curl gets as this user."""
        printed = self.curl("--digest", "-u", f"{user}:{password}", "-w", "\n%{http_code}", *arguments,
                            self.url(uri, tls), data=data)
        body, status = printed.rsplit(b"\n", 1)
        return int(status), body


class Digest(WebDavTest):
    """curl and the password file of a directory."""

    def setUp(self):
        super().setUp()
        self.write("open.txt", "open")
        self.write("closed/a b.txt", "secret")
        self.write("closed/.htpasswd", "# who may\n" + password_line("bert", "x") + password_line())

    def test_right_password_opens(self):
        self.assertEqual(self.curl_dav(uri="/closed/a%20b.txt"), (200, b"secret"))
        self.assertEqual(self.curl_dav(uri="/closed/a%20b.txt?x=%20y&z"), (200, b"secret"))
        self.assertEqual(self.curl_dav(uri="/closed/a%20b.txt", user="bert", password="x"), (200, b"secret"))
        self.assertEqual(self.curl_dav("-I", uri="/closed/a%20b.txt")[0], 200)

    def test_other_passwords_do_not(self):
        for user, password in (("anna", "wrong"), ("bert", PASSWORD), ("carl", PASSWORD), ("Anna", PASSWORD)):
            with self.subTest(user=user):
                self.assertEqual(self.curl_dav(uri="/closed/a%20b.txt", user=user, password=password),
                                 (401, b""))
        self.assertEqual(self.curl("-w", "%{http_code}", self.url("/closed/a%20b.txt")), b"401")
        self.assertEqual(self.curl("--basic", "-u", f"{USER}:{PASSWORD}", "-w", "%{http_code}",
                                   self.url("/closed/a%20b.txt")), b"401")

    def test_other_directories_are_open(self):
        self.assertEqual(self.curl("-w", "%{http_code}", self.url("/open.txt")), b"open200")

    def test_password_file_is_hidden_from_those_who_are_in(self):
        self.assertEqual(self.curl_dav(uri="/closed/.htpasswd"), (404, b"404 Not Found\n"))
        self.assertNotIn(b"htpasswd", self.curl_dav(uri="/closed/")[1])


class Curl(WebDavTest):
    def test_file_goes_up_and_comes_down(self):
        content = os.urandom(1000000)
        source = self.write("../source", content)
        self.assertEqual(self.curl_dav("-T", source, uri="/new/dir/a.bin"), (201, b""))
        self.assertEqual(self.curl_dav("-T", source, uri="/new/dir/a.bin"), (200, b""))
        self.assertEqual(self.read("new/dir/a.bin"), content)
        self.assertEqual(self.curl(self.url("/new/dir/a.bin")), content)
        self.assertEqual(self.tree(), ["new/", "new/dir/", "new/dir/a.bin"])

    def test_file_goes_up_over_https(self):
        self.stop()
        self.start_server(tls=True)
        content = os.urandom(300000)
        source = self.write("../source", content)
        self.assertEqual(self.curl_dav("-T", source, uri="/a.bin", tls=True), (201, b""))
        self.assertEqual(self.read("a.bin"), content)

    def test_part_of_a_file_is_replaced(self):
        self.write("a.txt", "0123456789")
        part = self.write("../part", "abc")
        for last, answer in ((5, (200, b"")), (6, (400, b"400 Bad Request\n"))):
            header = f"Content-Range: bytes 3-{last}/10"
            self.assertEqual(self.curl_dav("-T", part, "-H", header, uri="/a.txt"), answer)
        self.assertEqual(self.read("a.txt"), b"012abc6789")

    def test_interrupted_upload_is_resumed(self):
        content = os.urandom(100000)
        source = self.write("../source", content)
        self.write("a.bin", content[:40000])
        self.assertEqual(self.curl_dav("-T", source, "-C", "40000", uri="/a.bin"), (200, b""))
        self.assertEqual(self.read("a.bin"), content)

    def test_body_of_unknown_length_is_refused_and_the_refusal_read(self):
        status, body = self.curl_dav("-T", "-", uri="/a.bin", data=os.urandom(1000000))
        self.assertEqual((status, body), (411, b"411 Length Required\n"))
        self.assertEqual(self.tree(), [])

    def test_directories_come_and_go(self):
        self.assertEqual(self.curl_dav("-X", "MKCOL", uri="/dir"), (201, b""))
        self.assertEqual(self.curl_dav("-X", "MKCOL", uri="/dir"),
                         (405, b"405 Method Not Allowed\nFile exists"))
        self.assertEqual(self.curl_dav("-X", "MKCOL", uri="/none/dir"),
                         (409, b"409 Conflict\nNo such file or directory"))
        self.write("dir/sub/a.txt", "x")
        self.assertEqual(self.tree(), ["dir/", "dir/sub/", "dir/sub/a.txt"])
        self.assertEqual(self.curl_dav("-X", "DELETE", uri="/dir/sub/a.txt"), (200, b""))
        self.assertEqual(self.tree(), ["dir/", "dir/sub/"])
        self.assertEqual(self.curl_dav("-X", "DELETE", uri="/dir/"), (200, b""))
        self.assertEqual(self.tree(), [])
        self.assertEqual(self.curl_dav("-X", "DELETE", uri="/dir/"), (404, b"404 Not Found\n"))
        self.assertEqual(self.curl_dav("-X", "DELETE", uri="/"), (403, b"403 Forbidden\n"))

    def propfind(self, uri, depth, body=None):
        """What PROPFIND tells: {href: (is a directory, length, seconds of the last change)}."""
        data = ["-d", body] if body else []
        status, text = self.curl_dav("-X", "PROPFIND", "-H", f"Depth: {depth}", *data, uri=uri)
        self.assertEqual(status, 207)
        told = {}
        root = xml.etree.ElementTree.fromstring(text)
        self.assertEqual(root.tag, f"{DAV}multistatus")
        for response in root:
            self.assertEqual([child.tag for child in response], [f"{DAV}href", f"{DAV}propstat"])
            properties, status = response[1]
            self.assertEqual((properties.tag, status.tag, status.text),
                             (f"{DAV}prop", f"{DAV}status", "HTTP/1.1 200 OK"))
            values = {child.tag: child for child in properties}
            kinds = [child.tag for child in values[f"{DAV}resourcetype"]]
            self.assertIn(kinds, ([], [f"{DAV}collection"]))
            length = values.get(f"{DAV}getcontentlength")
            changed = email.utils.parsedate_to_datetime(values[f"{DAV}getlastmodified"].text)
            told[response[0].text] = (kinds != [], None if length is None else int(length.text),
                                      int(changed.timestamp()))
        return told

    def test_properties_are_those_of_the_files(self):
        self.write("dir/a.txt", "hello")
        self.write("dir/ü<&>\"'.txt", "x" * 1000)
        self.write("dir/sub/deeper.txt", "")
        self.write("dir/.htpasswd", password_line())
        os.utime(self.path("dir/a.txt"), (0, 1000000000))

        def changed(path):
            return int(os.stat(self.path(path)).st_mtime)
        top = {"/dir/": (True, None, changed("dir"))}
        self.assertEqual(self.propfind("/dir", 0), top)
        members = {"/dir/a.txt": (False, 5, 1000000000),
                   "/dir/%C3%BC%3C%26%3E%22%27.txt": (False, 1000, changed("dir/ü<&>\"'.txt")),
                   "/dir/sub/": (True, None, changed("dir/sub"))}
        question = '<?xml version="1.0"?><propfind xmlns="DAV:"><prop><getcontentlength/></prop></propfind>'
        self.assertEqual(self.propfind("/dir/", 1, question), top | members)
        self.assertEqual(self.propfind("/dir/a.txt", 1), {"/dir/a.txt": members["/dir/a.txt"]})
        self.assertEqual(self.curl_dav("-X", "PROPFIND", uri="/none"), (404, b"404 Not Found\n"))

    def test_methods_of_webdav_are_told(self):
        head = self.curl("-X", "OPTIONS", "-D", "-", self.url("/")).decode()
        self.assertIn("DAV: 1\r\n", head)
        allowed = re.search(r"Allow: (.*)\r\n", head).group(1).split(", ")
        self.assertLessEqual({"PUT", "DELETE", "MKCOL", "PROPFIND"}, set(allowed))

    def test_nobody_changes_anything_without_a_password_file(self):
        self.stop()
        self.start()
        source = self.write("../source", "x")
        self.write("a.txt", "kept")
        for arguments in (("-T", source), ("-X", "DELETE"), ("-X", "MKCOL"), ("-X", "PROPFIND")):
            self.assertEqual(self.curl_dav(*arguments, uri="/a.txt"), (401, b""))
        self.assertEqual(self.read("a.txt"), b"kept")


class Cadaver(WebDavTest):
    """A client of WebDAV that is told what to do line by line, and takes the password from ~/.netrc."""

    def cadaver(self, *lines, user=USER):
        with open(os.path.join(self.folder, ".netrc"), "w", encoding="ascii") as file:
            file.write(f"machine 127.0.0.1 login {user} password simple\n")
        script = "".join(f"{line}\n" for line in (*lines, "quit"))
        return self.run_program("cadaver", self.url("/"), data=script.encode(),
                                environment={"HOME": self.folder, "LC_ALL": "C.UTF-8"}).decode()

    def setUp(self):
        super().setUp()
        self.write("../users", password_line(password="simple"))

    def test_files_and_directories(self):
        content = os.urandom(500000)
        self.write("../source.bin", content)
        self.write("../small.txt", "small\n")
        printed = self.cadaver(
            "ls", "put source.bin a.bin", 'put small.txt "b & <c>.txt"', "mkcol dir", "ls", "cd dir",
            "put small.txt", "put source.bin small.txt", "ls", "get small.txt got.bin", "cd ..",
            "delete a.bin", "delete none", "mkcol dir", "ls")
        self.assertEqual(self.read("../got.bin"), content)
        self.assertEqual(self.read("dir/small.txt"), content)
        self.assertEqual(self.read("b & <c>.txt"), b"small\n")
        self.assertEqual(self.tree(), ["b & <c>.txt", "dir/", "dir/small.txt"])
        self.assertIn("Listing collection `/': collection is empty.", printed)
        listings = re.findall(r"^(Coll:)? +(\S.*?) +(\d+)  \w{3} [ \d]\d \d\d:\d\d$", printed, re.M)
        self.assertEqual(listings, [
            ("Coll:", "dir", "0"), ("", "a.bin", "500000"), ("", "b & <c>.txt", "6"),
            ("", "small.txt", "500000"),
            ("Coll:", "dir", "0"), ("", "b & <c>.txt", "6")])
        self.assertEqual(re.findall(r"failed:\s+(.*)", printed), ["404 Not Found", "405 Method Not Allowed"])
        self.cadaver("rmcol dir", 'delete "b & <c>.txt"')
        self.assertEqual(self.tree(), [])


class Litmus(WebDavTest):
    """The suites of litmus for what is served. The others are about locks, copies and dead properties."""

    def test_suites_pass(self):
        self.write("../users", password_line(password="simple"))
        printed = self.run_program("litmus", self.url("/"), USER, "simple",
                                   environment={"TESTS": "basic http"}).decode()
        results = re.findall(r"summary for `(\w+)': of \d+ tests run: (\d+) passed, 0 failed", printed)
        self.assertEqual(results, [("basic", "16"), ("http", "4")], printed)


class Attacks(WebDavTest):
    """Whoever has a password changes files under the root, and nothing else."""

    def outside(self):
        """What lies beside the document root, the server's own directory apart."""
        return sorted(set(os.listdir(self.folder)) - {"server", "ca.pem", "root"})

    def test_nothing_outside_the_root_is_reached(self):
        self.write("../beside/a.txt", "kept")
        os.symlink("../beside", self.path("door"))
        os.symlink("../beside/new.txt", self.path("dangling"))
        before = self.outside()
        for uri in ("/../beside/a.txt", "/%2e%2e/beside/a.txt", "/%2e%2e%2fbeside%2fa.txt",
                    "/..%5cbeside/a.txt", "/....//beside/a.txt", "/.%2e/beside/a.txt", "/door/a.txt",
                    "/door/new.txt", "/door", "/door/", "/dangling", "/x/../../../beside/a.txt",
                    "/x/%00/../../../beside/a.txt"):
            for method, body in (("PUT", "x"), ("MKCOL", None), ("DELETE", None), ("PROPFIND", None)):
                self.dav(method, uri, body)
        self.assertEqual(self.outside(), before)
        self.assertEqual(self.tree("../beside"), ["a.txt"])
        self.assertEqual(self.read("../beside/a.txt"), b"kept")
        self.assert_serves()

    def test_password_files_are_out_of_reach(self):
        line = password_line()
        self.write("dir/.htpasswd", line)
        for uri in ("/.htpasswd", "/%2ehtpasswd", "/dir/.htpasswd", "/dir//.htpasswd", "/dir/.htpasswd/",
                    "/dir/.HTPASSWD", "/dir/.htpasswd%00.txt", "/dir/./.htpasswd"):
            for method, body in (("PUT", "x"), ("MKCOL", None), ("DELETE", None), ("PROPFIND", None)):
                with self.subTest(uri=uri, method=method):
                    reply = self.dav(method, uri, body)
                    self.assertIn(reply[:12], (b"HTTP/1.1 404", b"HTTP/1.1 401"))
        self.assertEqual(self.dav("DELETE", "/dir"),
                         b"HTTP/1.1 403 Forbidden\r\nContent-Length: 37\r\nContent-Type: text/plain\r\n\r\n"
                         b"403 Forbidden\nOperation not permitted")
        self.assertEqual(self.tree(), ["dir/", "dir/.htpasswd"])
        self.assertEqual(self.read("dir/.htpasswd"), line.encode())

    def test_names_do_not_split_replies(self):
        name = "a\r\nX-Evil: 1\r\n\r\n<html>"
        uri = "/a%0d%0aX-Evil:%201%0d%0a%0d%0a<html>"
        self.assertEqual(self.dav("PUT", uri, "x"), success(201))
        self.assertEqual(self.tree(), [name])
        reply = self.dav("PROPFIND", uri)
        self.assertIn(b"<d:href>/a%0D%0AX-Evil%3A%201%0D%0A%0D%0A%3Chtml%3E</d:href>", reply)
        head = reply.split(b"\r\n\r\n")[0]
        self.assertNotIn(b"X-Evil", head)
        self.assertEqual(self.dav("DELETE", uri), success(200))
        self.assertEqual(self.dav("DELETE", uri), error_reply(404, "Not Found"))
        reply = self.exchange_request("PUT", uri, "x")
        self.assertRegex(reply, rb"\AHTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Digest qop=\"auth\", "
                                rb"realm=\"mydomain.com\", nonce=\"\d+\"\r\n\r\n\Z")

    def test_header_of_one_request_opens_no_other(self):
        self.write("a.txt", "kept")
        for method, uri, header in (("PUT", "/b.txt", authorization("PUT", "/a.txt")),
                                    ("DELETE", "/a.txt", authorization("PUT", "/a.txt")),
                                    ("PUT", "/a.txt?x", authorization("PUT", "/a.txt")),
                                    ("PUT", "/a.txt", "Authorization: Basic " + base64.b64encode(
                                        f"{USER}:{PASSWORD}".encode()).decode())):
            self.assertEqual(self.exchange_request(method, uri, "x", [header])[:12], b"HTTP/1.1 401")
        self.assertEqual(self.tree(), ["a.txt"])
        self.assertEqual(self.read("a.txt"), b"kept")

    def test_hostile_headers_are_survived(self):
        for header in ("Content-Range: bytes 0-18446744073709551615/*", "Content-Range: " + "9" * 9000,
                       "Depth: " + "1" * 9000, "If-Match: " + '"' * 9000, "Content-Length: -1",
                       "Content-Length: 0x10", "Transfer-Encoding: chunked",
                       "Authorization: Digest " + "username=" * 1000,
                       "Authorization: Digest uri=\"" + "%" * 9000):
            for method in ("PUT", "MKCOL", "DELETE", "PROPFIND"):
                with Client(self.server) as client:
                    client.send(request(method, "/a", None, (authorization(method, "/a"), header)))
                    self.assertTrue(client.receive())
        self.assert_serves()
        self.assertIn(self.tree(), ([], ["a/"]))  # MKCOL does not care for all of them


class AtOnce(WebDavTest):
    def test_many_uploads(self):
        """To names of their own, and all to one: each file is whole, and nothing else is left."""
        def upload(number):
            body = bytes([number]) * 100000
            own = self.dav("PUT", f"/own/{number}", body)
            common = self.dav("PUT", "/common/file", body)
            return own, common
        with concurrent.futures.ThreadPoolExecutor(100) as pool:
            replies = list(pool.map(upload, range(100)))
        for own, common in replies:
            self.assertEqual(own, success(201))
            self.assertIn(common, (success(201), success(200)))
        names = ["own/", "common/", "common/file", *(f"own/{number}" for number in range(100))]
        self.assertEqual(self.tree(), sorted(names))
        for number in range(100):
            self.assertEqual(self.read(f"own/{number}"), bytes([number]) * 100000)
        self.assertIn(self.read("common/file"), [bytes([number]) * 100000 for number in range(100)])

    def test_upload_to_a_file_that_is_being_downloaded(self):
        old, new = os.urandom(8000000), os.urandom(1000)
        self.write("a.bin", old)
        with Client(self.server, receive_buffer=100000) as reader:
            reader.send(request("GET", "/a.bin"))
            reader.fill(1000)
            self.assertEqual(self.dav("PUT", "/a.bin", new), success(200))
            after = self.dav("GET", "/a.bin", None, ["Connection: close"])
            self.assertEqual(after.split(b"\r\n\r\n", 1)[1], new)
            self.assertTrue(reader.read_reply().body == old)

    def test_cut_uploads_leave_nothing(self):
        self.write("a.bin", "old")
        for cut in (Client.close, Client.reset, lambda client: client.socket.shutdown(1)):
            client = self.client()
            whole = request("PUT", "/a.bin", b"x" * 50000, [authorization("PUT", "/a.bin")])
            client.send(whole[:30000])
            cut(client)
        self.assert_serves()
        self.assertEqual((self.tree(), self.read("a.bin")), (["a.bin"], b"old"))

    def test_descriptors_are_given_back(self):
        self.dav("PUT", "/a", "x")
        before = self.server.descriptors()
        for _ in range(20):
            self.dav("PUT", "/a", "x")
            self.dav("PUT", "/a/b", "x")
            self.dav("PROPFIND", "/")
            self.dav("PUT", "/a", "x", ["Content-Range: bytes 9-9/10"])
        self.assertEqual(self.server.descriptors(), before)


if __name__ == "__main__":
    main()
