"""What the system tests share: a daemon under test, clients that speak to it byte for byte, and the shape of its
answers.

A test file holds classes derived from DaemonTest and ends with main(). It takes from the environment
    KESTREL_DAEMON      the program restful_api_engine
    KESTREL_LAB         the program kestrel-lab
    KESTREL_SANITIZED   "ON" when both were built with sanitizers
    KESTREL_CLOCK       a library that shifts the daemon's clock (see shifted_clock.c)

Each daemon gets a temporary root of its own and two free loopback ports. When it is stopped the test fails if it
died by itself, printed anything that is not a log line, or logged a warning or error that the test did not announce
with expect_log(). Clocks are used for one thing only: to bound how long a test waits."""

import contextlib
import ctypes
import hashlib
import os
import random
import re
import resource
import shutil
import signal
import socket
import ssl
import struct
import subprocess
import tempfile
import time
import unittest

PASSWORD = "correct horse"
PATIENCE = 60.0  # seconds until something that must happen counts as never happening

LOG_LINE = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z "
                      r"(EMERGENCY|ALERT|CRITICAL|ERROR|WARNING|NOTICE|INFO|DEBUG) (\S+):(\d+) (.*)")
SEVERE = ("EMERGENCY", "ALERT", "CRITICAL", "ERROR", "WARNING")
AUDIT = "rest_common.c:129"


def program(variable):
    path = os.environ.get(variable, "")
    if not os.access(path, os.X_OK):
        raise SystemExit(f"set {variable} to the built program (ctest does)")
    return os.path.abspath(path)


def sanitized():
    return os.environ.get("KESTREL_SANITIZED", "").upper() in ("ON", "1", "YES", "TRUE")


def eventually(condition, what):
    """Waits until condition() is true and returns its value."""
    end = time.monotonic() + PATIENCE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"never happened: {what}")
        time.sleep(0.01)


# --- The shape of answers -------------------------------------------------------------------------------------

def jsonc(value):
    """Text of a value as json-c prints it by default: blanks inside braces and after colons, "/" escaped."""
    if isinstance(value, dict):
        members = ", ".join(f"{jsonc(k)}: {jsonc(v)}" for k, v in value.items())
        return "{ " + members + " }" if members else "{ }"
    if isinstance(value, int):
        return str(value)
    escaped = value.replace("\\", "\\\\").replace('"', '\\"').replace("/", "\\/")
    return f'"{escaped}"'


class Rows(list):
    """The entries of a list in an answer: (position, {name: value}) each, all with one tag in XML."""

    def __init__(self, tag, rows=()):
        super().__init__(rows)
        self.tag = tag


def xml_of(data):
    if isinstance(data, Rows):
        return "".join(f"<{data.tag}>{xml_of(entry)}</{data.tag}>" for _, entry in data)
    if isinstance(data, dict):
        return "".join(f"<{name}>{xml_of(value)}</{name}>" for name, value in data.items())
    return str(data)


def plain_of(data):
    """Rows turned into the objects that stand for them in JSON."""
    if isinstance(data, Rows):
        return {str(position): plain_of(entry) for position, entry in data}
    if isinstance(data, dict):
        return {name: plain_of(value) for name, value in data.items()}
    return data


def document(code, message, data=None, form="xml"):
    """The result document of an answer, as bytes, with its final newline."""
    result = {"rlt_code": code, "rlt_mesg": message}
    if data is not None:
        result["rlt_data"] = data
    envelope = {"result": result}
    text = xml_of(envelope) if form == "xml" else jsonc(plain_of(envelope))
    return text.encode("latin-1") + b"\n"


def rest_reply(code, message, data=None, form="xml"):
    """All bytes of an answer of the engine."""
    body = document(code, message, data, form)
    media_type = "text/xml" if form == "xml" else "application/json"
    return (f"HTTP/1.1 200 OK\r\nContent-Type: {media_type}; charset=utf-8\r\n"
            f"Transfer-Encoding: chunked\r\n\r\n{len(body):X}\r\n").encode() + body + b"\r\n0\r\n\r\n"


def error_reply(status, reason):
    """All bytes of an error that the HTTP server itself answers."""
    body = f"{status} {reason}\n"
    return (f"HTTP/1.1 {status} {reason}\r\nContent-Length: {len(body)}\r\n"
            f"Content-Type: text/plain\r\n\r\n{body}").encode()


NO_KEY = (905, "Null Session Key")
ENDED = (900, "Session time out or log out. Please log in again.")
UNKNOWN_MODULE = (901, "The module name dose not exist.")
BAD_REQUEST = (902, "Bad Request. Please check your method and URI.")
GOT = (0, "Get data successfully.")
FAILED = (96, "The operation was failed or some error happened, please send the correct request or check the "
              "limitation of feature.")
INTERNAL = (97, "There is some internal fault happened, please try again.")
ALREADY_SET = (98, "The same setting is already set.")
REFUSED = (99, "Operation failed. It was possibly caused by non-existent resource id in URI, invalid parameters, "
               "or the operation is not supported on the platform.")


# --- Clients --------------------------------------------------------------------------------------------------

class Malformed(AssertionError):
    """The daemon sent bytes that are no reply."""


class Closed(Exception):
    """The daemon closed the connection before a whole reply had come; .rest holds what had."""

    def __init__(self, rest):
        super().__init__(f"connection closed after {rest!r}")
        self.rest = rest


class Reply:
    """One reply: .raw all its bytes, .status, .headers (list of pairs), .body, .chunks (None without chunking)."""

    def __init__(self, raw, status, headers, body, chunks):
        self.raw, self.status, self.headers, self.body, self.chunks = raw, status, headers, body, chunks

    def text(self):
        return self.body.decode("latin-1")

    def code(self):
        """The result code of a result document in XML."""
        match = re.match(r"<result><rlt_code>(\d+)</rlt_code>", self.text())
        if match is None:
            raise Malformed(f"no result document: {self.body!r}")
        return int(match.group(1))


class Client:
    """One connection. Nothing is tolerated in replies: see read_reply(). With tls but no handshake, raw bytes go to
    the TLS port."""

    def __init__(self, daemon, tls=False, source=None, receive_buffer=None, handshake=True):
        self.buffer = b""
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        self.socket.settimeout(PATIENCE)
        if receive_buffer is not None:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        if source is not None:
            self.socket.bind((source, 0))
        self.socket.connect(("127.0.0.1", daemon.tls_port if tls else daemon.port))
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        if tls and handshake:
            self.socket = daemon.tls_context().wrap_socket(self.socket, server_hostname="127.0.0.1")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.socket.close()

    def reset(self):
        """Closes with a reset instead of an orderly end."""
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()

    def send(self, data):
        self.socket.sendall(data)

    def receive(self):
        """Adds what has come to the buffer; False at the end of the connection."""
        try:
            data = self.socket.recv(65536)
        except (ConnectionResetError, BrokenPipeError, ssl.SSLEOFError):
            data = b""
        self.buffer += data
        return data != b""

    def fill(self, size):
        while len(self.buffer) < size:
            if not self.receive():
                raise Closed(self.buffer)

    def take_line(self, start):
        """The end of the line that begins at `start`, its CRLF counted; a bare LF is malformed."""
        end = self.buffer.find(b"\n", start)
        while end < 0:
            scanned = len(self.buffer)
            if not self.receive():
                raise Closed(self.buffer)
            end = self.buffer.find(b"\n", scanned)
        if self.buffer[end - 1:end + 1] != b"\r\n" or b"\r" in self.buffer[start:end - 1]:
            raise Malformed(f"bad line end in {self.buffer[start:end + 1]!r}")
        return end + 1

    def read_head(self):
        end = self.take_line(0)
        match = re.fullmatch(rb"HTTP/1\.1 (\d{3}) [^\r\n]+\r\n", self.buffer[:end])
        if match is None:
            raise Malformed(f"bad status line {self.buffer[:end]!r}")
        headers = []
        while True:
            start, end = end, self.take_line(end)
            if end - start == 2:
                return int(match.group(1)), headers, end
            line = re.fullmatch(rb"([!-9;-~]+): ([^\r\n]*)\r\n", self.buffer[start:end])
            if line is None:
                raise Malformed(f"bad header line {self.buffer[start:end]!r}")
            headers.append((line.group(1).decode(), line.group(2).decode()))

    def read_chunks(self, at):
        chunks = []
        while True:
            end = self.take_line(at)
            size = self.buffer[at:end - 2]
            if re.fullmatch(rb"0|[1-9A-F][0-9A-F]*", size) is None:
                raise Malformed(f"bad chunk size {size!r}")
            length = int(size, 16)
            self.fill(end + length + 2)
            if self.buffer[end + length:end + length + 2] != b"\r\n":
                raise Malformed(f"chunk of {length} bytes is not ended: {self.buffer[end:end + length + 2]!r}")
            at = end + length + 2
            if length == 0:
                return chunks, at
            chunks.append(self.buffer[end:end + length])

    def read_reply(self):
        """Reads one reply: CRLF line ends, upper-case chunk sizes without leading zeros, no trailers. A reply that
        says neither how long it is nor that it is chunked is malformed, 100 Continue apart. Raises Closed when the
        connection ends before the reply does."""
        status, headers, at = self.read_head()
        framing = [(n, v) for n, v in headers if n in ("Content-Length", "Transfer-Encoding")]
        chunks = None
        if status == 100 and not headers:
            body = b""
        elif framing == [("Transfer-Encoding", "chunked")]:
            chunks, at = self.read_chunks(at)
            body = b"".join(chunks)
        elif len(framing) == 1 and framing[0][0] == "Content-Length":
            self.fill(at + int(framing[0][1]))
            body = self.buffer[at:at + int(framing[0][1])]
            at += len(body)
        else:
            raise Malformed(f"framing {framing!r} of {self.buffer[:at]!r}")
        raw, self.buffer = self.buffer[:at], self.buffer[at:]
        return Reply(raw, status, headers, body, chunks)

    def read_to_end(self):
        """Everything that still comes until the daemon closes."""
        while self.receive():
            pass
        data, self.buffer = self.buffer, b""
        return data

    def is_open(self):
        """False when the daemon has closed already, without waiting for it to. What has come goes to the buffer."""
        self.socket.setblocking(False)
        try:
            return self.receive()
        except (BlockingIOError, ssl.SSLWantReadError):
            return True
        finally:
            self.socket.settimeout(PATIENCE)

    def ask(self, method, target, body=None, headers=()):
        """Sends a request of HTTP/1.1 and reads its reply."""
        self.send(request(method, target, body, headers))
        return self.read_reply()


def request(method, target, body=None, headers=(), version="1.1"):
    """The bytes of a request."""
    lines = [f"{method} {target} HTTP/{version}", "Host: 127.0.0.1", *headers]
    if body is not None:
        body = body.encode("latin-1") if isinstance(body, str) else body
        lines.append(f"Content-Length: {len(body)}")
    return "\r\n".join(lines).encode("latin-1") + b"\r\n\r\n" + (body or b"")


class Session:
    """A logged-in client on a connection of its own."""

    def __init__(self, daemon, tls=False, source=None):
        self.client = Client(daemon, tls, source)
        self.key = log_in(self.client)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.client.close()

    def target(self, uri, variables=()):
        pairs = [f"sessionkey={self.key}", *variables]
        return f"{uri}?{'&'.join(pairs)}"

    def ask(self, method, uri, *variables, body=None):
        return self.client.ask(method, self.target(uri, variables), body)


def log_in(client, user="admin", password=PASSWORD):
    """Logs in over a connection and returns the session key; the whole reply is checked."""
    reply = client.ask("POST", "/login", body=f"user={user}&password={password.replace(' ', '+')}")
    match = re.search(rb"<sessionKey>([0-9a-f]{32})</sessionKey>", reply.body)
    if match is None:
        raise AssertionError(f"cannot log in: {reply.body!r}")
    key = match.group(1).decode()
    expected = rest_reply(0, "Log in successfully.", {"sessionKey": key})
    if reply.raw != expected:
        raise AssertionError(f"{reply.raw!r} is not {expected!r}")
    return key


def session_key(address, second):
    """The key that a login from an address in a second gives."""
    return hashlib.md5(f"{address}{second}".encode()).hexdigest()


# --- The daemon -----------------------------------------------------------------------------------------------

_certificate = None


def certificate():
    """Certificate and key in one PEM text, made once for all daemons of a test program."""
    global _certificate
    if _certificate is None:
        with tempfile.TemporaryDirectory(prefix="kestrel-cert-") as folder:
            subprocess.run(
                ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                 "-keyout", "key.pem", "-out", "cert.pem", "-days", "2", "-subj", "/CN=localhost", "-addext",
                 "subjectAltName=IP:127.0.0.1"],
                cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            _certificate = "".join(read_text(os.path.join(folder, name)) for name in ("cert.pem", "key.pem"))
    return _certificate


def read_text(path):
    with open(path, encoding="latin-1", newline="\n") as file:
        return file.read()


def free_ports(count):
    """Ports that nobody has bound, below the range from which the kernel picks ports of clients, so that no
    connection of a test can take one before the daemon does."""
    ports = set()
    while len(ports) < count:
        port = random.SystemRandom().randrange(10240, 32768)
        with socket.socket() as probe, contextlib.suppress(OSError):
            probe.bind(("127.0.0.1", port))
            ports.add(port)
    return sorted(ports)


def _prepare_child(limits):
    """Runs in the child before the daemon: it dies with the test program, and has its limits."""
    libc = ctypes.CDLL(None)

    def prepare():
        libc.prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG
        for which, value in limits.items():
            hard = resource.getrlimit(which)[1]
            if hard != resource.RLIM_INFINITY:
                value = min(value, hard)
            resource.setrlimit(which, (value, hard))
    return prepare


class Daemon:
    """One daemon with a root of its own. start() and kill() may alternate; finish() ends it and checks."""

    def __init__(self, limits=None, environment=None, state_dir=None, user=None):
        self.root = tempfile.mkdtemp(prefix="kestrel-system-")
        self.state_dir = state_dir or os.path.join(self.root, "state")
        self.session_file = os.path.join(self.root, "sessions")
        self.port, self.tls_port = free_ports(2)
        self.limits = limits or {}
        self.extra_environment = environment or {}
        self.user = user
        self.process = None
        self.expected_log = []
        self.complaints = []
        self.read_up_to = 0  # bytes of standard error looked at
        with open(os.path.join(self.root, "ssl.pem"), "w", encoding="ascii") as file:
            file.write(certificate())

    def environment(self):
        # The certificate's name must be short, so it is given relative to the root, where the daemon runs.
        own = {
            "KESTREL_ROOT": self.root,
            "KESTREL_LISTENING_PORT": f"127.0.0.1:{self.port},ssl://127.0.0.1:{self.tls_port}:ssl.pem",
            "KESTREL_SESSION_FILE": self.session_file,
            "KESTREL_STATE_DIR": self.state_dir,
            "KESTREL_ADMIN_PASSWORD": PASSWORD,
        }
        kept = {k: v for k, v in os.environ.items() if not k.startswith("KESTREL_")}
        return {**kept, **own, **self.extra_environment}

    def output_path(self, name):
        return os.path.join(self.root, name)

    def launch(self):
        """Starts the program without waiting for it."""
        with open(self.output_path("stdout"), "ab") as out, open(self.output_path("stderr"), "ab") as err:
            self.process = subprocess.Popen(
                [program("KESTREL_DAEMON")], cwd=self.root, env=self.environment(), stdin=subprocess.DEVNULL,
                stdout=out, stderr=err, start_new_session=True, user=self.user, preexec_fn=_prepare_child(self.limits))

    def start(self):
        """Starts it and waits until both ports listen."""
        self.launch()
        eventually(lambda: self.listens(self.port) and self.listens(self.tls_port) or self.fail_if_dead(),
                   f"the daemon listens; standard error: {self.stderr()}")
        return self

    def fail_if_dead(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the daemon ended with {self.process.returncode}: {self.stdout()}{self.stderr()}")
        return False

    @staticmethod
    def listens(port):
        """Whether somebody listens on a port; told by the kernel's table, so that nobody is connected to."""
        entry = f" 0100007F:{port:04X} 00000000:0000 0A "
        return entry in read_text("/proc/net/tcp")

    def stdout(self):
        return read_text(self.output_path("stdout"))

    def stderr(self):
        return read_text(self.output_path("stderr"))

    def kill(self):
        """SIGKILL: the daemon gets no chance to save anything."""
        self.note_if_dead()
        self.process.kill()
        self.process.wait()
        self.check_alone()
        self.process = None

    def restart(self):
        self.kill()
        return self.start()

    def wait_for_exit(self):
        """For a daemon that is to end by itself. Returns its exit status."""
        status = self.process.wait(PATIENCE)
        self.process = None
        return status

    def tls_context(self):
        context = ssl.create_default_context(cadata=certificate())
        return context

    # What it says

    def log_lines(self):
        """(severity, "file:line", text) of every line in its log file, the older half included."""
        lines = []
        for name in ("log.1", "log"):
            path = os.path.join(self.state_dir, name)
            if not os.path.isfile(path):
                continue
            for line in read_text(path).splitlines():
                match = LOG_LINE.fullmatch(line)
                if match is None:
                    self.complaints.append(f"malformed log line: {line!r}")
                else:
                    severity, file, number, text = match.groups()
                    lines.append((severity, f"{file}:{number}", text))
        return lines

    def audit_lines(self):
        return [text for severity, place, text in self.log_lines() if severity == "WARNING" and place == AUDIT]

    def expect_log(self, pattern):
        """Announces warnings or errors whose text matches the pattern."""
        self.expected_log.append(re.compile(pattern))

    def is_expected(self, severity, place, text):
        if severity not in SEVERE or (severity == "WARNING" and place == AUDIT):
            return True
        return any(pattern.search(text) for pattern in self.expected_log)

    # What it uses

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def resident_kilobytes(self):
        return int(re.search(r"VmRSS:\s+(\d+) kB", read_text(f"/proc/{self.process.pid}/status")).group(1))

    def ticks(self):
        """Processor time used, in clock ticks."""
        fields = read_text(f"/proc/{self.process.pid}/stat").rsplit(")", 1)[1].split()
        return int(fields[11]) + int(fields[12])

    # Lab control

    def lab(self, *words):
        """Runs one lab command and returns what kestrel-lab prints before its "ok"."""
        done = self.try_lab(*words)
        if done.returncode != 0:
            raise AssertionError(f"kestrel-lab {' '.join(words)}: {done.stdout}{done.stderr}")
        return done.stdout

    def try_lab(self, *words):
        return subprocess.run([program("KESTREL_LAB"), *words], env=self.environment(), stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=PATIENCE, check=False)

    # The end

    def note_if_dead(self):
        if self.process.poll() is not None:
            self.complaints.append(f"the daemon ended by itself with {self.process.returncode}")

    def check_alone(self):
        """Nothing that the daemon started outlives it."""
        try:
            os.killpg(self.process.pid, 0)
            self.complaints.append("the daemon left processes behind")
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass

    def check_output(self):
        if self.stdout().strip("\n") and not any(p.search(self.stdout()) for p in self.expected_log):
            self.complaints.append(f"standard output: {self.stdout()!r}")
        for line in self.stderr().splitlines():
            match = LOG_LINE.fullmatch(line)
            if match is None:
                if not any(pattern.search(line) for pattern in self.expected_log):
                    self.complaints.append(f"standard error: {line!r}")
            elif not self.is_expected(match.group(1), f"{match.group(2)}:{match.group(3)}", match.group(4)):
                self.complaints.append(f"console: {line!r}")
        for line in self.log_lines():
            if not self.is_expected(*line):
                self.complaints.append(f"log: {line!r}")

    def finish(self):
        """Stops the daemon, removes its root and returns what was wrong, as a list of texts."""
        if self.process is not None:
            self.kill()
        self.check_output()
        shutil.rmtree(self.root)
        return self.complaints


# --- Tests ----------------------------------------------------------------------------------------------------

class DaemonTest(unittest.TestCase):
    """A test with daemons; those that start_daemon() and new_daemon() give are finished and checked at its end."""

    maxDiff = None

    def new_daemon(self, **options):
        daemon = Daemon(**options)
        self.addCleanup(self.finish, daemon)
        return daemon

    def start_daemon(self, **options):
        return self.new_daemon(**options).start()

    def finish(self, daemon):
        complaints = daemon.finish()
        self.assertEqual(complaints, [])

    def client(self, daemon, **options):
        client = Client(daemon, **options)
        self.addCleanup(client.close)
        return client

    def session(self, daemon, **options):
        session = Session(daemon, **options)
        self.addCleanup(session.client.close)
        return session

    def assert_answers(self, reply, outcome, data=None, form="xml"):
        """Compares all bytes of a reply with those of an answer; outcome is (code, message)."""
        self.assertEqual(reply.raw, rest_reply(*outcome, data, form))

    def assert_serves(self, daemon):
        """The daemon answers new clients on both ports, and answers right."""
        for tls in (False, True):
            with Client(daemon, tls) as client:
                self.assert_answers(client.ask("GET", "/vlans"), NO_KEY)

    def assert_closes(self, client):
        """The daemon closes the connection without sending anything more."""
        self.assertEqual(client.read_to_end(), b"")

    def vlan_ids(self, session):
        """The VLAN ids that the switch lists, the whole answer checked."""
        reply = session.ask("GET", "/vlans")
        ids = [int(text) for text in re.findall(r"<id>(\d+)</id>", reply.text())]
        self.assert_answers(reply, GOT, vlan_list(ids))
        return ids


def vlan_list(ids):
    return {"vlans": Rows("vlan", [(i, {"id": vid}) for i, vid in enumerate(ids, 1)])}


def create_vlans(test, session, ids):
    for vid in ids:
        test.assert_answers(session.ask("POST", f"/vlans/{vid}"), (0, f"Create VLAN {vid} successfully."))


def main():
    unittest.main(verbosity=2)
