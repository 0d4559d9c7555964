"""What the tests of the server's own endpoints share: a web server (tests/support/web_server.cpp) in a
temporary directory, and requests to it.

A test file holds classes derived from WebServerTest and ends with main(). It takes from the environment
    KESTREL_WEB_SERVER  the program web_server

When a server ends, the test fails if it died by itself, printed anything but its port, left processes
behind, or did not end cleanly (which in a build with sanitizers includes that nothing leaked)."""

import os
import shutil
import signal
import socket
import ssl
import subprocess
import tempfile
import unittest

from harness import certificate, eventually, free_ports, prepare_child, program, read_text
from wire import PATIENCE, Client, request


class WebServer:
    """One running server: .port, .tls_port (0 without TLS), .process."""

    def __init__(self, folder, options, tls=False, environment=None):
        self.folder = folder
        self.port, self.tls_port = free_ports(2)
        listening = f"127.0.0.1:{self.port}"
        if tls:
            listening += f",ssl://127.0.0.1:{self.tls_port}:ssl.pem"
            with open(os.path.join(folder, "ssl.pem"), "w", encoding="ascii") as file:
                file.write(certificate())
        else:
            self.tls_port = 0
        self.said = f"{self.tls_port or self.port}\n"  # the port bound last
        arguments = [f"{name}={value}" for name, value in options.items()]
        with open(self.output_path("stdout"), "wb") as out, open(self.output_path("stderr"), "wb") as err:
            self.process = subprocess.Popen(
                [program("KESTREL_WEB_SERVER"), *arguments, f"listening_port={listening}"], cwd=folder,
                env={**os.environ, **(environment or {})}, stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                start_new_session=True, preexec_fn=prepare_child({}))
        eventually(lambda: self.process.poll() is not None or self.output("stdout") == self.said,
                   "the server listens")
        if self.process.poll() is not None:
            raise AssertionError(f"the server ended: {self.output('stdout')}{self.output('stderr')}")

    def output_path(self, name):
        return os.path.join(self.folder, name)

    def output(self, name):
        return read_text(self.output_path(name))

    @staticmethod
    def tls_context():
        return ssl.create_default_context(cadata=certificate())

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def check_alone(self):
        """Nothing that the server started outlives it."""
        try:
            os.killpg(self.process.pid, 0)
        except ProcessLookupError:
            return []
        os.killpg(self.process.pid, signal.SIGKILL)
        return ["the server left processes behind"]

    def finish(self):
        """Ends the server and returns what was wrong, as a list of texts."""
        complaints = []
        if self.process.poll() is not None:
            complaints.append("the server ended by itself")
        self.process.terminate()
        try:
            status = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
            complaints.append("the server did not end when told to")
        if status != 0:
            complaints.append(f"exit status {status}")
        if self.output("stdout") != self.said:
            complaints.append(f"standard output: {self.output('stdout')!r}")
        if self.output("stderr"):
            complaints.append(f"standard error: {self.output('stderr')}")
        return complaints + self.check_alone()


class WebServerTest(unittest.TestCase):
    """A test with a temporary directory (.folder), in it the document root (.root), and the server (.server)
    that start() gives; all is checked and removed at its end."""

    maxDiff = None

    def setUp(self):
        # The real path, as answers and programs name files by it.
        self.folder = os.path.realpath(tempfile.mkdtemp(prefix="kestrel-web-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.root = os.path.join(self.folder, "root")
        os.mkdir(self.root)
        self.server = None

    # The server

    def start(self, tls=False, environment=None, **options):
        """Starts a server with these options (document_root is .root unless it is given; an empty text
        unsets an option) and returns its port."""
        own = os.path.join(self.folder, "server")
        os.makedirs(own, exist_ok=True)
        self.assertIsNone(self.server, "one server at a time")
        self.server = WebServer(own, {"document_root": self.root, **options}, tls, environment)
        self.addCleanup(self.stop)
        return self.server.port

    def stop(self):
        """Ends the server and checks it; start() may follow."""
        server, self.server = self.server, None
        if server is not None:
            self.assertEqual(server.finish(), [])

    # Files

    def path(self, path):
        """The file of a path relative to the document root ("../x" lies beside it)."""
        return os.path.normpath(os.path.join(self.root, path))

    def write(self, path, content="", mode=None):
        """Writes a file (text or bytes), making its directories, and returns its path."""
        name = self.path(path)
        os.makedirs(os.path.dirname(name), exist_ok=True)
        with open(name, "wb") as file:
            file.write(content.encode() if isinstance(content, str) else content)
        if mode is not None:
            os.chmod(name, mode)
        return name

    def read(self, path):
        with open(self.path(path), "rb") as file:
            return file.read()

    # Requests

    def client(self, tls=False, **options):
        """A connection to the server (see wire.Client) that is closed at the end of the test."""
        client = Client(self.server, tls=tls, **options)
        self.addCleanup(client.close)
        return client

    def ask(self, method, target, body=None, headers=(), version="1.1"):
        """The reply to a request on a connection of its own. For replies that tell their length."""
        with Client(self.server) as client:
            client.send(request(method, target, body, headers, version))
            return client.read_reply()

    def exchange(self, data):
        """All bytes that come back for these bytes until the server closes."""
        with Client(self.server) as client:
            client.send(data)
            return client.read_to_end()

    def exchange_request(self, method, target, body=None, headers=(), version="1.1"):
        """All bytes that come back for a request until the server closes."""
        return self.exchange(request(method, target, body, headers, version))

    def url(self, target, tls=False):
        return f"https://127.0.0.1:{self.server.tls_port}{target}" if tls \
            else f"http://127.0.0.1:{self.server.port}{target}"

    def run_program(self, *arguments, data=None, status=0, environment=None, cwd=None):
        """Runs a client program and returns its standard output as bytes; its exit status is checked."""
        done = subprocess.run(arguments, input=data, capture_output=True, timeout=PATIENCE, check=False,
                              cwd=cwd or self.folder, env={**os.environ, **(environment or {})})
        self.assertEqual(done.returncode, status, (arguments, done.stdout, done.stderr))
        return done.stdout

    def curl(self, *arguments, data=None, status=0):
        """Runs curl, quietly, trusting the test's certificate, and returns what it prints."""
        authority = os.path.join(self.folder, "ca.pem")
        if not os.path.exists(authority):
            with open(authority, "w", encoding="ascii") as file:
                file.write(certificate())
        return self.run_program("curl", "-q", "-sS", "--noproxy", "*", "--cacert", authority, *arguments,
                                data=data, status=status)

    def assert_serves(self):
        """The server still answers new clients."""
        with socket.socket() as probe:
            self.assertEqual(probe.connect_ex(("127.0.0.1", self.server.port)), 0)
        reply = self.exchange(b"OPTIONS / HTTP/1.1\r\n\r\n")
        self.assertEqual(reply, b"HTTP/1.1 200 OK\r\nAllow: GET, POST, HEAD, CONNECT, PUT, DELETE, OPTIONS, "
                                b"PROPFIND, MKCOL\r\nDAV: 1\r\n\r\n")


def main():
    unittest.main(verbosity=2)
