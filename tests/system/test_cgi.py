"""CGI programs over real sockets: curl as the client; shell and Perl scripts as the programs."""

import os
import threading
import time

import web
from harness import eventually, sanitized
from web import WebServerTest
from wire import error_reply, request

PLAIN_HEAD = b"HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n"
PLAIN = "#!/bin/sh\nprintf 'Content-Type: text/plain\\n\\n'\n"
PERL = "#!/usr/bin/perl\nuse strict; use warnings;\nprint \"Content-Type: text/plain\\n\\n\";\n"
MOST = 64  # programs that run at a time


class CgiTest(WebServerTest):
    def program(self, name, commands, head=PLAIN):
        self.write(name, head + commands, mode=0o755)

    def children(self):
        """Processes that the server has started and not waited for, zombies too."""
        pid = self.server.process.pid
        with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as file:
            return file.read().split()

    def assert_childless(self):
        eventually(lambda: not self.children(), "all programs have ended and were waited for")


class Programs(CgiTest):
    def test_a_shell_script_with_curl(self):
        self.program("hello.cgi", "echo \"hello $REQUEST_METHOD\"")
        self.start()
        self.assertEqual(self.curl(self.url("/hello.cgi")), b"hello GET\n")
        self.assertEqual(self.curl("-i", self.url("/hello.cgi")), PLAIN_HEAD + b"hello GET\n")
        self.assertEqual(self.curl("-I", self.url("/hello.cgi")), PLAIN_HEAD)
        self.assertEqual(self.curl("-0", self.url("/hello.cgi")), b"hello GET\n")
        self.assertEqual(self.curl("-d", "a=b", self.url("/hello.cgi")), b"hello POST\n")

    def test_a_perl_script_reads_a_form(self):
        self.program("form.pl", "read STDIN, my $form, $ENV{CONTENT_LENGTH};\n"
                     "my %v = map { split /=/ } split /&/, $form;\n"
                     "print \"$ENV{CONTENT_TYPE} $v{name} lives in $v{town}\\n\";\n", head=PERL)
        self.start()
        self.assertEqual(self.curl("-d", "name=Ada", "-d", "town=London", self.url("/form.pl")),
                         b"application/x-www-form-urlencoded Ada lives in London\n")

    def test_an_interpreter_for_files_that_cannot_be_executed(self):
        self.write("plain.cgi", "printf 'A: b\\n\\n'; echo $0")
        self.start(cgi_interpreter="/bin/sh -e")
        self.assertEqual(self.curl("-i", self.url("/plain.cgi")),
                         b"HTTP/1.1 200 OK\r\nA: b\r\n\r\n" + self.path("plain.cgi").encode() + b"\n")

    def test_what_cannot_be_executed(self):
        self.write("plain.cgi", PLAIN, mode=0o644)
        self.start()
        self.assertEqual(self.curl("-i", self.url("/plain.cgi")),
                         b"HTTP/1.1 500 Internal Server Error\r\n\r\n500 Server Error: "
                         + self.path("plain.cgi").encode() + b": Permission denied")

    def test_the_index_of_a_directory(self):
        self.program("dir/index.cgi", "echo $SCRIPT_NAME")
        self.start()
        self.assertEqual(self.curl("-L", self.url("/dir")), b"/dir/index.cgi\n")

    def test_a_redirect_is_followed(self):
        self.program("from.cgi", "", head="#!/bin/sh\nprintf 'Location: /to.cgi?x\\n\\n'\n")
        self.program("to.cgi", "echo \"here $QUERY_STRING\"")
        self.start()
        self.assertEqual(self.curl("-i", self.url("/from.cgi")),
                         b"HTTP/1.1 302 Found\r\nLocation: /to.cgi?x\r\n\r\n")
        self.assertEqual(self.curl("-L", self.url("/from.cgi")), b"here x\n")

    def test_malformed_output(self):
        self.program("bad.cgi", "echo no header", head="#!/bin/sh\n")
        self.start()
        self.assertEqual(self.curl(self.url("/bad.cgi")), b"500 Internal Server Error\n"
                         b"CGI program sent malformed headers: [no header\n]")


class Environment(CgiTest):
    def variables(self, *arguments):
        lines = self.curl(*arguments).decode().splitlines()
        # A shell adds variables of its own.
        own = ("PWD=", "OLDPWD=", "SHLVL=", "_=")
        return dict(line.split("=", 1) for line in lines if not line.startswith(own))

    def expected(self, client_port, **more):
        variables = {
            "SERVER_NAME": "mydomain.com", "SERVER_ROOT": self.root, "DOCUMENT_ROOT": self.root,
            "GATEWAY_INTERFACE": "CGI/1.1", "SERVER_PROTOCOL": "HTTP/1.1",
            "REDIRECT_STATUS": "200", "REQUEST_METHOD": "GET", "REMOTE_ADDR": "127.0.0.1",
            "REMOTE_PORT": client_port, "SCRIPT_NAME": "/env.cgi",
            "SCRIPT_FILENAME": self.path("env.cgi"), "HTTPS": "off", "QUERY_STRING": "", "HTTP_ACCEPT": "*/*",
        }
        inherited = {name: os.environ[name] for name in ("PATH", "TEMP", "TMPDIR", "PERLLIB", "TIDEWELL_CGI",
                                                         "LD_LIBRARY_PATH") if name in os.environ}
        return {**variables, **inherited, **more}

    def assert_variables(self, arguments, tls=False, **more):
        variables = self.variables("-A", "", *arguments)
        self.assertRegex(variables.pop("SERVER_SOFTWARE"), r"^Tidewell/\d+\.\d+\.\d+$")
        port = variables["REMOTE_PORT"]
        self.assertGreater(int(port), 0)
        host = f"127.0.0.1:{self.server.tls_port if tls else self.server.port}"
        self.assertEqual(variables, self.expected(port, HTTP_HOST=host, **more))

    def test_all_of_it(self):
        self.write("env.cgi", PLAIN + "exec env\n", mode=0o755)
        self.start(tls=True)
        self.assert_variables([self.url("/env.cgi")], REQUEST_URI="/env.cgi")
        self.assert_variables([self.url("/env.cgi?a=b%20c")], REQUEST_URI="/env.cgi?a=b%20c",
                              QUERY_STRING="a=b%20c")
        self.assert_variables([self.url("/env.cgi/more/path")], REQUEST_URI="/env.cgi/more/path",
                              PATH_INFO="/more/path", PATH_TRANSLATED=self.root + "/more/path")
        self.assert_variables([self.url("/env.cgi", tls=True)], tls=True, REQUEST_URI="/env.cgi",
                              HTTPS="on")
        self.assert_variables(["-d", "xyz", "-H", "X-My-Header: 1", self.url("/env.cgi")],
                              REQUEST_URI="/env.cgi", REQUEST_METHOD="POST", CONTENT_LENGTH="3",
                              HTTP_CONTENT_LENGTH="3",
                              CONTENT_TYPE="application/x-www-form-urlencoded",
                              HTTP_CONTENT_TYPE="application/x-www-form-urlencoded", HTTP_X_MY_HEADER="1")

    def test_what_clients_must_not_set(self):
        self.write("env.cgi", PLAIN + "exec env\n", mode=0o755)
        self.start()
        self.assert_variables(["-H", "Proxy: http://evil.example", "-H", "X_Real_Ip: 1", "-H", "A.B: 1",
                               self.url("/env.cgi")], REQUEST_URI="/env.cgi")

    def test_nothing_of_a_request_reaches_a_shell(self):
        self.program("args.cgi", "echo \"$# [$QUERY_STRING] [$PATH_INFO] [$HTTP_X]\"")
        self.start()
        evil = "$(touch${IFS}owned);`touch${IFS}owned`|touch${IFS}owned&touch${IFS}owned"
        encoded = "".join(f"%{ord(c):02x}" for c in evil)
        reply = self.exchange(f"GET /args.cgi/{encoded}?{evil} HTTP/1.1\r\nX: {evil}\r\n\r\n".encode())
        self.assertEqual(reply, PLAIN_HEAD + f"0 [{evil}] [/{evil}] [{evil}]\n".encode())
        self.assertEqual(sorted(os.listdir(self.root)), ["args.cgi"])

    def test_floods_of_headers_are_refused(self):
        self.program("hello.cgi", "echo hello")
        self.start()
        headers = [f"X-{i}: " + "y" * 500 for i in range(29)]
        self.assertEqual(self.exchange_request("GET", "/hello.cgi", headers=headers),
                         error_reply(431, "Request Header Fields Too Large"))
        self.assertEqual(self.exchange_request("GET", "/hello.cgi?" + "q" * 9000),
                         error_reply(414, "URI Too Long"))
        self.assertEqual(self.exchange_request("GET", "/hello.cgi", headers=headers[:12]),
                         PLAIN_HEAD + b"hello\n")


class Bodies(CgiTest):
    def test_many_megabytes_come_back(self):
        self.program("cat.cgi", "exec cat")
        self.start()
        data = os.urandom(1 << 20) * (2 if sanitized() else 20)
        self.assertEqual(self.curl("--data-binary", "@-", "-H", "Expect: 100-continue", self.url("/cat.cgi"),
                                   data=data), data)

    def test_a_body_of_unknown_length_is_refused(self):
        self.program("cat.cgi", "exec cat")
        self.start()
        self.assertEqual(self.curl("-T", "-", "-X", "POST", self.url("/cat.cgi"), data=b"x" * 100000),
                         b"411 Length Required\n")

    def test_a_program_that_reads_nothing(self):
        self.program("deaf.cgi", "head -c 3000000 /dev/zero")
        self.start()
        reply = self.curl("--data-binary", "@-", self.url("/deaf.cgi"), data=b"x" * 3000000)
        self.assertEqual(len(reply), 3000000)

    def test_what_follows_the_body_is_not_part_of_it(self):
        self.program("cat.cgi", "exec cat")
        self.start()
        both = request("POST", "/cat.cgi", "hello") + request("POST", "/cat.cgi", "x")
        self.assertEqual(self.exchange(both), PLAIN_HEAD + b"hello")


class Partners(CgiTest):
    def test_a_flood_that_nobody_reads_takes_no_memory(self):
        self.program("flood.cgi", "exec cat /dev/zero")
        self.start()
        self.curl("-m", "1", "-o", "/dev/null", self.url("/flood.cgi"), status=28)  # all code is in memory
        self.assert_childless()

        before = self.resident()
        clients = [self.client(receive_buffer=4096) for _ in range(4)]
        for client in clients:
            client.send(request("GET", "/flood.cgi"))
        eventually(lambda: self.waits_for_writing(len(clients)), "all programs are held back")
        self.assertLess(self.resident() - before, len(clients) * (3 << 20) + (8 << 20))
        for client in clients:
            client.reset()
        self.assert_childless()

    def resident(self):
        with open(f"/proc/{self.server.process.pid}/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def waits_for_writing(self, count):
        """Whether so many programs, and their sockets' other ends, have come to a standstill."""
        totals = [self.cpu_time(pid) for pid in self.children()]
        time.sleep(0.2)
        return len(totals) == count and totals == [self.cpu_time(pid) for pid in self.children()]

    @staticmethod
    def cpu_time(pid):
        with open(f"/proc/{pid}/stat", encoding="ascii") as file:
            return file.read().rsplit(")", 1)[1].split()[11:13]

    def test_programs_end_with_their_clients(self):
        self.program("hang.cgi", "exec sleep 1000")
        self.start()
        clients = [self.client() for _ in range(10)]
        for client in clients:
            client.send(request("GET", "/hang.cgi"))
        eventually(lambda: len(self.children()) == 10, "ten programs run")
        for i, client in enumerate(clients):
            client.reset() if i % 2 else client.close()
        self.assert_childless()
        self.assert_serves()

    def test_a_hanging_program_holds_nobody_up(self):
        self.program("hang.cgi", "exec sleep 1000")
        self.program("hello.cgi", "echo hello")
        self.start()
        hanging = self.client()
        hanging.send(request("GET", "/hang.cgi"))
        eventually(self.children, "the program runs")
        for _ in range(20):
            self.assertEqual(self.exchange_request("GET", "/hello.cgi"), PLAIN_HEAD + b"hello\n")
        eventually(lambda: len(self.children()) == 1, "only the hanging program is left")

    def test_a_reply_is_seen_as_it_is_written(self):
        self.program("steps.cgi", "while read -r line; do echo \"$line\"; [ -e ../go ] && exit; done < fifo")
        os.mkfifo(self.path("fifo"))
        self.start()
        client = self.client()
        client.send(request("GET", "/steps.cgi"))
        with open(self.path("fifo"), "w", encoding="ascii") as fifo:
            client.fill(len(PLAIN_HEAD))
            for i in range(3):
                fifo.write(f"step {i}\n")
                fifo.flush()
                client.fill(len(PLAIN_HEAD) + 7 * (i + 1))
        self.assertEqual(client.read_to_end(), PLAIN_HEAD + b"step 0\nstep 1\nstep 2\n")

    def test_the_server_ends_while_programs_run(self):
        self.program("stubborn.cgi", "trap '' TERM; echo $$ > pid; while :; do sleep 0.01; done")
        self.start()
        client = self.client()
        client.send(request("GET", "/stubborn.cgi"))
        client.fill(len(PLAIN_HEAD))
        eventually(lambda: os.path.exists(self.path("pid")) and self.read("pid").endswith(b"\n"), "it runs")
        pid = int(self.read("pid"))
        self.stop()
        eventually(lambda: not os.path.exists(f"/proc/{pid}") or b"State:\tZ" in self.status(pid),
                   "the program has ended")

    @staticmethod
    def status(pid):
        try:
            with open(f"/proc/{pid}/status", "rb") as file:
                return file.read()
        except OSError:
            return b"State:\tZ"


class Many(CgiTest):
    def test_two_hundred_at_a_time(self):
        """As many as may run are served, the others are told so, and nobody is harmed."""
        self.program("wait.cgi", "read -r line < ../gate; echo served")
        os.mkfifo(self.path("../gate"))
        gate = os.open(self.path("../gate"), os.O_RDWR)  # open at both ends, whoever comes when
        self.addCleanup(os.close, gate)
        self.start()
        clients = [self.client() for _ in range(200)]
        for client in clients:
            client.send(request("GET", "/wait.cgi"))
        busy = error_reply(503, "Service Unavailable")
        refused = [client for client in clients if not self.is_waiting(client)]
        for client in refused:
            self.assertEqual(client.read_to_end(), busy)
        self.assertEqual(len(refused), 200 - MOST)
        self.assertEqual(len(self.children()), MOST)

        served = [client for client in clients if client not in refused]
        os.write(gate, b"\n" * MOST)
        for client in served:
            self.assertEqual(client.read_to_end(), PLAIN_HEAD + b"served\n")
        self.assert_childless()

    @staticmethod
    def is_waiting(client):
        """Whether the client's program runs: its head comes at once, an error too."""
        client.fill(len(b"HTTP/1.1 200"))
        return client.buffer.startswith(b"HTTP/1.1 200")

    def test_nothing_is_left_of_a_thousand_requests(self):
        self.program("hello.cgi", "echo hello")
        self.start()
        self.exchange_request("GET", "/hello.cgi")
        self.assert_childless()
        before = self.server.descriptors()
        replies = []

        def ask(count):
            for _ in range(count):
                replies.append(self.exchange_request("GET", "/hello.cgi"))

        count = 100 if sanitized() else 500
        askers = [threading.Thread(target=ask, args=(count,)) for _ in range(2)]
        for asker in askers:
            asker.start()
        for asker in askers:
            asker.join()
        self.assertEqual(replies, [PLAIN_HEAD + b"hello\n"] * count * 2)
        self.assert_childless()
        eventually(lambda: self.server.descriptors() == before, "all descriptors are closed")


if __name__ == "__main__":
    web.main()
