"""Server-side includes over real sockets."""

import os

import web
from harness import eventually
from web import WebServerTest
from wire import error_reply, request


def page_reply(body):
    return (f"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: {len(body)}\r\n"
            "Connection: close\r\n\r\n").encode() + body


class Ssi(WebServerTest):
    def test_a_page_of_all_kinds_of_directives(self):
        self.write("menu.html", "<nav/>")
        self.write("parts/head.shtml", "<head><!--#include file=\"title.txt\" --></head>")
        self.write("parts/title.txt", "Title")
        self.write("../note", "from elsewhere")
        self.write("index.shtml", "<!--#include virtual=\"/parts/head.shtml\" -->\n"
                   "<!--#include \"menu.html\" -->\n"
                   "<!--#include abspath=\"" + self.path("../note") + "\" -->\n"
                   "<!--#exec \"echo 1 > /dev/null; expr 6 '*' 7\" -->\n"
                   "<!--#echo var=\"DATE\" -->\n"
                   "<!--#include \"missing\" -->\n")
        self.start(tls=True)
        expected = (b"<head>Title</head>\n<nav/>\nfrom elsewhere\n42\n\n"
                    + self.path("index.shtml").encode() + b": unknown SSI command: \"echo var=\"DATE\"\"\n"
                    b"Cannot open SSI #include: [\"missing\"]: fopen(" + self.path("missing").encode()
                    + b"): No such file or directory\n")
        self.assertEqual(self.curl("-i", self.url("/")), page_reply(expected))
        self.assertEqual(self.curl(self.url("/index.shtml", tls=True)), expected)
        self.assertEqual(self.curl("-I", self.url("/")), page_reply(expected)[:-len(expected)])
        self.assertEqual(self.exchange_request("POST", "/index.shtml", "body"), page_reply(expected))

    def test_names_from_a_request_do_not_become_directives(self):
        self.write("page.shtml", "<!--#exec \"echo $QUERY_STRING\" -->")
        self.start()
        self.assertEqual(self.curl(self.url("/page.shtml?<!--%23exec%20\"id\"-->")), b"\n")

    def test_files_outside_the_document_root(self):
        self.write("../secret", "secret")
        self.write("dir/page.shtml", "<!--#include file=\"../../secret\"-->"
                   "<!--#include virtual=\"/../secret\"-->")
        self.start()
        self.assertNotIn(b"secret<", self.curl(self.url("/dir/page.shtml")))
        self.assertEqual(self.curl(self.url("/dir/page.shtml")).count(b"No such file or directory"), 2)

    def test_a_page_that_grows_without_end(self):
        self.write("page.shtml", "<!--#include \"page.shtml\"-->" * 20)
        self.write("flood.shtml", "<!--#exec \"cat /dev/zero\"-->")
        self.start()
        for page in ("/page.shtml", "/flood.shtml"):
            self.assertEqual(self.exchange_request("GET", page),
                             b"HTTP/1.1 500 Internal Server Error\r\nContent-Length: 47\r\n"
                             b"Content-Type: text/plain\r\n\r\n500 Internal Server Error\n"
                             b"SSI page is too large")
        self.assert_serves()

    def test_a_hanging_command_holds_nobody_up_and_ends_with_its_client(self):
        self.write("hang.shtml", "<!--#exec \"echo $$ > pid; exec sleep 1000\"-->")
        self.write("quick.shtml", "<!--#exec \"echo quick\"-->")
        self.start()
        client = self.client()
        client.send(request("GET", "/hang.shtml"))
        pid_file = os.path.join(self.server.folder, "pid")  # commands run where the server does
        eventually(lambda: os.path.exists(pid_file) and os.path.getsize(pid_file) > 1, "the command runs")
        self.assertEqual(self.exchange_request("GET", "/quick.shtml"), page_reply(b"quick\n"))
        with open(pid_file, encoding="ascii") as file:
            pid = int(file.read())
        client.close()
        eventually(lambda: not os.path.exists(f"/proc/{pid}"), "the command has ended and was waited for")

    def test_pages_that_are_not_there(self):
        self.start()
        self.assertEqual(self.exchange_request("GET", "/none.shtml"), error_reply(404, "Not Found"))


if __name__ == "__main__":
    web.main()
