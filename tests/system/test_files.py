"""Files and directories as real clients fetch them: conditions, ranges, kept connections, TLS, many at once,
and attempts to get at what lies outside. See web.py."""

import concurrent.futures
import functools
import hashlib
import http.client
import os
import re
import socket

from harness import eventually
from web import WebServerTest, main
from wire import error_reply, request

NOT_FOUND = error_reply(404, "Not Found")
MODIFIED = 784111777
MODIFIED_DATE = "Sun, 06 Nov 1994 08:49:37 GMT"
LARGE = 50 << 20  # more than the sockets between two programs hold


@functools.cache
def large_content(size):
    """Bytes of which no part looks like another."""
    block = b"".join(hashlib.sha512(str(i).encode()).digest() for i in range(1024))
    return b"".join(hashlib.sha512(str(i).encode()).digest() + block for i in range(size // 65600 + 1))[:size]


def receive_body(client, size):
    """The rest of a reply whose head was not read yet, up to a body of that size or the end."""
    _, _, at = client.read_head()
    parts, left = [client.buffer[at:]], size - (len(client.buffer) - at)
    client.buffer = b""
    while left > 0 and client.receive():
        parts.append(client.buffer)
        left -= len(client.buffer)
        client.buffer = b""
    return b"".join(parts)


def digest(data):
    return hashlib.sha256(data).hexdigest()


class FilesTest(WebServerTest):
    """A server over one small file that was modified long ago."""

    def setUp(self):
        super().setUp()
        self.write("a.html", "0123456789")
        os.utime(self.path("a.html"), (MODIFIED, MODIFIED))

    def out(self, name="out"):
        return os.path.join(self.folder, name)

    def status_of(self, *arguments):
        """The status that curl sees; what is sent goes to out()."""
        said = self.curl("-o", self.out(), "-w", "%{http_code}", *arguments)
        return int(said)


class CurlTest(FilesTest):
    def test_head_is_whole(self):
        self.start()
        said = self.curl("-I", self.url("/a.html")).decode()
        said = re.sub(r"(?m)^Date: \w{3}, \d\d \w{3} \d{4} \d\d:\d\d:\d\d GMT\r$", "Date: NOW\r", said)
        self.assertEqual(said, "HTTP/1.1 200 OK\r\nDate: NOW\r\n"
                               f"Last-Modified: {MODIFIED_DATE}\r\nEtag: \"2ebc98a1.10\"\r\n"
                               "Content-Type: text/html\r\nContent-Length: 10\r\nConnection: close\r\n"
                               "Accept-Ranges: bytes\r\n\r\n")

    def test_ranges(self):
        self.start()
        for wanted, status, body in (("2-5", 206, b"2345"), ("5-", 206, b"56789"), ("-3", 206, b"789"),
                                     ("0-1,4-5", 200, b"0123456789"), ("3-99", 206, b"3456789")):
            with self.subTest(wanted):
                self.assertEqual(self.status_of("-r", wanted, self.url("/a.html")), status)
                self.assertEqual(self.read("../out"), body)
        self.assertEqual(self.status_of("-r", "10-", self.url("/a.html")), 416)

    def test_unchanged_files_are_not_sent_again_over_a_kept_connection(self):
        self.start()
        url = self.url("/a.html")
        said = self.curl("-z", MODIFIED_DATE, "-w", "%{http_code} %{num_connects}\n", url, url)
        self.assertEqual(said, b"304 1\n304 0\n")
        self.assertEqual(self.status_of("-z", "Sun, 06 Nov 1994 08:49:36 GMT", url), 200)
        self.assertEqual(self.status_of("-z", "-Sun, 06 Nov 1994 08:49:36 GMT", url), 412)
        self.curl("--etag-save", self.out("tag"), "-o", self.out(), url)
        self.assertEqual(self.read("../tag").strip(), b'"2ebc98a1.10"')
        self.assertEqual(self.status_of("--etag-compare", self.out("tag"), url), 304)
        self.write("a.html", "changed")
        self.assertEqual(self.status_of("--etag-compare", self.out("tag"), url), 200)

    def test_a_download_that_was_cut_goes_on(self):
        content = large_content(300000)
        self.write("part", content)
        self.start()
        for have in (0, 1, 65536, 299999):
            self.write("../out", content[:have])
            self.curl("-C", "-", "-o", self.out(), self.url("/part"))
            self.assertEqual(digest(self.read("../out")), digest(content), have)
        self.curl("-C", "-", "-o", self.out(), self.url("/part"))  # nothing is left: 416, which says so
        self.assertEqual(digest(self.read("../out")), digest(content))

    def test_several_files_come_over_one_connection(self):
        for name in ("b.css", "c.txt", "empty"):
            self.write(name, "" if name == "empty" else name)
        self.start(tls=True)
        for tls in (False, True):
            urls = [self.url(f"/{name}", tls) for name in ("a.html", "b.css", "empty", "c.txt")]
            said = self.curl("-w", "|%{content_type} %{num_connects}\n", *urls)
            self.assertEqual(said, b"0123456789|text/html 1\nb.css|text/css 0\n|text/plain 0\n"
                                   b"c.txt|text/plain 0\n")

    def test_python_keeps_a_connection_over_all_kinds_of_answers(self):
        port = self.start()
        kept = http.client.HTTPConnection("127.0.0.1", port)
        self.addCleanup(kept.close)
        for headers, status, body in (({}, 200, b"0123456789"), ({"If-None-Match": "*"}, 304, b""),
                                      ({"Range": "bytes=1-2"}, 206, b"12"), ({}, 200, b"0123456789")):
            kept.request("GET", "/a.html", headers=headers)
            reply = kept.getresponse()
            self.assertEqual((reply.status, reply.read()), (status, body))
            self.assertFalse(reply.will_close)

    def test_a_directory_is_found_by_its_redirection(self):
        self.write("some dir/x&y", "x")
        self.start()
        said = self.curl("-L", "-w", "%{url_effective}", self.url("/some%20dir")).decode()
        self.assertIn('<a href="x%26y">x&amp;y</a>', said)
        self.assertTrue(said.endswith("</html>\n" + self.url("/some%20dir/")))
        self.assertEqual(self.curl(self.url("/some%20dir/x%26y")), b"x")


class LargeTest(FilesTest):
    def setUp(self):
        super().setUp()
        self.content = large_content(LARGE)
        self.write("large", self.content)
        self.expected = digest(self.content)

    def test_comes_whole_plain_and_with_tls_to_many_at_once(self):
        self.start(tls=True)
        names = [self.out(f"out{i}") for i in range(4)]
        with concurrent.futures.ThreadPoolExecutor(len(names)) as pool:
            list(pool.map(lambda i: self.curl("-o", names[i], self.url("/large", tls=i % 2 == 1)), range(4)))
        for name in names:
            self.assertEqual(digest(self.read(name)), self.expected)

    def test_clients_that_go_away_leave_nothing_open(self):
        self.start(tls=True)
        before = self.server.descriptors()
        for tls in (False, True):
            for end in ("close", "reset"):
                client = self.client(tls=tls)
                client.send(request("GET", "/large"))
                client.fill(20000)
                getattr(client, end)()
        eventually(lambda: self.server.descriptors() == before, "all is closed")
        self.assert_serves()

    def test_a_slow_client_holds_up_no_other(self):
        self.start()
        slow = self.client()
        slow.send(request("GET", "/large"))
        slow.fill(1000)
        self.assertEqual(digest(self.curl(self.url("/large"))), self.expected)
        self.assertEqual(self.curl(self.url("/a.html")), b"0123456789")
        self.assertEqual(digest(receive_body(slow, LARGE)), self.expected)

    def test_a_file_that_shrinks_meanwhile_is_seen_to_be_cut(self):
        self.start()
        client = self.client()
        client.send(request("GET", "/large"))
        client.fill(1000)
        os.truncate(self.path("large"), LARGE // 2)
        body = receive_body(client, LARGE)
        self.assertEqual(digest(body), digest(self.content[:LARGE // 2]))
        self.assertEqual(client.read_to_end(), b"")

    def test_a_file_that_is_replaced_meanwhile_is_sent_as_it_was(self):
        self.start()
        client = self.client()
        client.send(request("GET", "/large"))
        client.fill(1000)
        os.replace(self.path("a.html"), self.path("large"))
        self.assertEqual(digest(receive_body(client, LARGE)), self.expected)
        self.assertEqual(client.ask("GET", "/large").body, b"0123456789")

    def test_a_part_far_behind_comes_from_a_sparse_file(self):
        with open(self.path("sparse"), "wb") as file:
            file.truncate(6 << 30)
            file.seek(5 << 30)
            file.write(b"here")
        self.start()
        start = 5 << 30
        self.assertEqual(self.curl("-r", f"{start - 2}-{start + 5}", self.url("/sparse")), b"\0\0here\0\0")
        self.assertIn(b"Content-Length: 6442450944\r\n", self.curl("-I", self.url("/sparse")))


class OutsideTest(FilesTest):
    """Nothing outside of the document root can be fetched."""

    SECRET = b"outside of the root"

    def setUp(self):
        super().setUp()
        self.write("../secret", self.SECRET)
        self.write("../rootx/secret", self.SECRET)
        self.write("dir/b.txt", "b")

    def test_no_spelling_leads_out(self):
        os.symlink(self.folder, self.path("up"))
        os.symlink("../secret", self.path("dir/link"))
        self.start(url_rewrites=f"/w={self.root}/dir/,/r={self.root}")
        ups = ["..", "%2e%2e", ".%2e", "%2E.", "..%2f..", "..%5c", "%c0%ae%c0%ae", "%252e%252e", "....",
               "..;", "..%00", "...", "..%20"]
        befores = ["", "/dir", "/dir/x", "/w", "/r", "/nope"]
        names = ["secret", "rootx/secret", "../secret", "a/../../secret"]
        targets = [f"{before}/{up}/{name}" for up in ups for before in befores for name in names]
        targets += ["/up/secret", "/dir/link", "/w/link", "/w../secret", "/rx/secret", "/r../secret",
                    "//secret", "/..%2fsecret", "/dir/..%2f..%2fsecret", "/..\\secret", "\\..\\secret",
                    "/./../secret", f"/{self.folder}/secret", f"//{self.folder}/secret", "/%00/../secret",
                    "/up", "/up/"]
        refusals = (b"HTTP/1.1 404 Not Found", b"HTTP/1.1 400 Bad Request")
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            replies = list(pool.map(lambda target: self.exchange_request("GET", target), targets))
        for target, reply in zip(targets, replies):
            with self.subTest(target):
                self.assertNotIn(self.SECRET, reply)
                if "%00" not in target:  # which ends a URI, so that what is left may name a directory
                    self.assertIn(reply.split(b"\r\n")[0], refusals)

    def test_curl_with_a_path_as_it_is(self):
        self.start()
        for path in ("/../secret", "/dir/../../secret", "/%2e%2e/secret", "/..%2fsecret",
                     "/.%2e/.%2e/etc/passwd"):
            self.assertEqual(self.status_of("--path-as-is", self.url(path)), 404, path)

    def test_hidden_files_cannot_be_fetched_or_listed(self):
        for name in ("dir/x.htpasswd", "dir/old.BAK", "dir/.git/config"):
            self.write(name, "hidden")
        os.symlink("old.BAK", self.path("dir/other"))
        self.start(hide_files_patterns="**.bak$|**/.git$")
        for name in ("dir/x.htpasswd", "dir/old.BAK", "dir/old.bak", "dir/.git/config", "dir/.git",
                     "dir/.git/", "dir/other", "dir/%2egit/config", "dir/x.htpasswd%00", "dir/.htpasswd"):
            self.assertEqual(self.exchange_request("GET", f"/{name}"), NOT_FOUND, name)
        rows = re.findall(r'<tr><td><a href="([^"]*)">', self.curl(self.url("/dir/")).decode())
        self.assertEqual(rows, ["b.txt"])

    def test_what_is_no_file_is_not_opened(self):
        os.mkfifo(self.path("pipe"))
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(self.path("socket"))
            self.start(url_rewrites="/dev=/dev")
            for target in ("/pipe", "/socket", "/dev/zero", "/dev/null", "/dev/tty"):
                self.assertEqual(self.exchange_request("GET", target), NOT_FOUND, target)

    def test_a_file_that_cannot_be_read_is_an_error_of_the_server(self):
        path = self.write("unreadable", "x", mode=0)
        os.chmod(self.folder, 0o755)
        self.start(**({"run_as_user": "nobody"} if os.geteuid() == 0 else {}))
        detail = f"500 Internal Server Error\nopen({path}): Permission denied"
        self.assertEqual(self.exchange_request("GET", "/unreadable").decode(),
                         "HTTP/1.1 500 Internal Server Error\r\n"
                         f"Content-Length: {len(detail)}\r\nContent-Type: text/plain\r\n\r\n{detail}")


class ListingTest(FilesTest):
    def test_thousands_of_entries(self):
        os.mkdir(self.path("many"))
        names = [f"{i:05d} <&>" for i in range(2000)]
        for name in names:
            os.close(os.open(self.path(f"many/{name}"), os.O_CREAT | os.O_WRONLY))
        self.start()
        page = self.curl(self.url("/many/")).decode()
        rows = re.findall(r'(?m)^<tr><td><a href="([^"]*)">([^<]*)</a></td>'
                          r"<td>&nbsp;\d\d-\w{3}-\d{4} \d\d:\d\d</td><td>&nbsp;&nbsp;0</td></tr>$", page)
        self.assertEqual(rows, [(f"{n[:5]}%20%3C%26%3E", f"{n[:5]} &lt;&amp;&gt;") for n in names])
        self.assertEqual(self.curl(self.url("/many/?nd")).decode().count("<tr><td><a href="), len(names))

    def test_every_link_of_a_page_leads_to_its_entry(self):
        names = ["plain", "a b", "100%", "x?y=z", "#", "&amp;", "\"'<>", "\u00fcmlaut", "a:b", "+", ";",
                 "a\\b"]
        for name in names:
            self.write(f"dir/{name}", name)
        self.start()
        links = re.findall(r'<tr><td><a href="([^"]*)">', self.curl(self.url("/dir/")).decode())
        found = [self.curl(self.url(f"/dir/{link}")).decode() for link in links]
        self.assertEqual(sorted(found), sorted(names))


if __name__ == "__main__":
    main()
