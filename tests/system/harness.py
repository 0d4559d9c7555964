"""What the system tests share: a daemon under test, clients that speak to it byte for byte, and the shape
of its answers.

A test file holds classes derived from DaemonTest and ends with main(). It takes from the environment
    KESTREL_DAEMON      the program restful_api_engine
    KESTREL_LAB         the program kestrel-lab
    KESTREL_SANITIZED   "ON" when both were built with sanitizers
    KESTREL_CLOCK       a library that shifts the daemon's clock (see shifted_clock.c)

Each daemon gets a temporary root of its own and two free loopback ports. When it is stopped the test
fails if it died by itself, printed anything that is not a log line, or logged a warning or error that the
test did not announce with expect_log(). Clocks are used for one thing only: to bound how long a test
waits."""

import contextlib
import ctypes
import os
import random
import re
import resource
import shutil
import signal
import socket
import ssl
import subprocess
import tempfile
import threading
import time
import unittest

from wire import Client, GOT, NO_KEY, PASSWORD, PATIENCE, Session, rest_reply, vlan_list

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


# --- The daemon ----------------------------------------------------------------------------------------

_certificate = None


def certificate():
    """Certificate and key in one PEM text, made once for all daemons of a test program."""
    global _certificate
    if _certificate is None:
        with tempfile.TemporaryDirectory(prefix="kestrel-cert-") as folder:
            subprocess.run(
                ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                 "-nodes", "-keyout", "key.pem", "-out", "cert.pem", "-days", "2", "-subj", "/CN=localhost",
                 "-addext", "subjectAltName=IP:127.0.0.1"],
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


def prepare_child(limits):
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
        self.program = program("KESTREL_DAEMON")
        self.root = tempfile.mkdtemp(prefix="kestrel-system-")
        self.state_dir = state_dir or os.path.join(self.root, "state")
        self.session_file = os.path.join(self.root, "sessions")
        self.port, self.tls_port = free_ports(2)
        self.limits = limits or {}
        self.extra_environment = dict(environment or {})
        self.user = user
        self.process = None
        self.collector = threading.Thread()  # of standard error; joined when the process has ended
        self.collector.start()
        # On a busy machine collect() may read more slowly than the daemon writes, which never waits for it.
        self.expected_log = [re.compile(r"lines were dropped: the console was not read")]
        self.complaints = []
        with open(os.path.join(self.root, "ssl.pem"), "w", encoding="ascii") as file:
            file.write(certificate())

    def use_profile(self, text):
        """Gives the switch another chassis from its next start on."""
        path = os.path.join(self.root, "profile.json")
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        self.extra_environment["KESTREL_PROFILE"] = path

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
        with open(self.output_path("stdout"), "ab") as out:
            self.process = subprocess.Popen(
                [self.program], cwd=self.root, env=self.environment(), stdin=subprocess.DEVNULL,
                stdout=out, stderr=subprocess.PIPE, start_new_session=True, user=self.user,
                preexec_fn=prepare_child(self.limits))
        self.collector = threading.Thread(target=self.collect, args=(self.process.stderr,), daemon=True)
        self.collector.start()

    def collect(self, pipe):
        """Keeps what comes by standard error. A pipe, as a limit of file sizes would cut lines of a file."""
        with pipe, open(self.output_path("stderr"), "ab", buffering=0) as file:
            for line in pipe:
                file.write(line)

    def start(self):
        """Starts it and waits until both ports listen."""
        self.launch()
        eventually(lambda: self.listens(self.port) and self.listens(self.tls_port) or self.fail_if_dead(),
                   f"the daemon listens; standard error: {self.stderr()}")
        return self

    def fail_if_dead(self):
        if self.process.poll() is not None:
            said = self.stdout() + self.stderr()
            raise AssertionError(f"the daemon ended with {self.process.returncode}: {said}")
        return False

    @staticmethod
    def listens(port):
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", port)) == 0

    def output(self, name):
        """What it has printed so far, over all its starts."""
        path = self.output_path(name)
        return read_text(path) if os.path.exists(path) else ""

    def stdout(self):
        return self.output("stdout")

    def stderr(self):
        if self.process is None or self.process.poll() is not None:
            self.collector.join()
        return self.output("stderr")

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
        """(severity, "file:line", text) of every line in its log file, the older half included. A last line that
        has no end was being written when the daemon was killed, and does not count."""
        lines = []
        for name in ("log.1", "log"):
            path = os.path.join(self.state_dir, name)
            if not os.path.isfile(path):
                continue
            for line in read_text(path).rpartition("\n")[0].splitlines():
                match = LOG_LINE.fullmatch(line)
                if match is None:
                    self.complaints.append(f"malformed log line: {line!r}")
                else:
                    severity, file, number, text = match.groups()
                    lines.append((severity, f"{file}:{number}", text))
        return lines

    def audit_lines(self):
        return [text for severity, place, text in self.log_lines() if (severity, place) == ("WARNING", AUDIT)]

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

    def sleeps(self):
        """How often its one thread that serves has given up the processor by itself."""
        status = read_text(f"/proc/{self.process.pid}/task/{self.process.pid}/status")
        return int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status, re.M)[1])

    def limit_files(self, size):
        """No file of it can grow beyond `size` bytes; -1 lifts the limit."""
        hard = resource.prlimit(self.process.pid, resource.RLIMIT_FSIZE)[1]
        resource.prlimit(self.process.pid, resource.RLIMIT_FSIZE, (size, hard))

    # Lab control

    def lab(self, *words):
        """Runs one lab command and returns what kestrel-lab prints before its "ok"."""
        done = self.try_lab(*words)
        if done.returncode != 0:
            raise AssertionError(f"kestrel-lab {' '.join(words)}: {done.stdout}{done.stderr}")
        return done.stdout

    def try_lab(self, *words):
        return subprocess.run([program("KESTREL_LAB"), *words], env=self.environment(),
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE,
                              check=False)

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
        try:
            if self.process is not None:
                self.kill()
            self.check_output()
        finally:
            shutil.rmtree(self.root)
        return self.complaints


# --- Tests ---------------------------------------------------------------------------------------------

class DaemonTest(unittest.TestCase):
    """A test with daemons; those that start_daemon() and new_daemon() give are finished and checked at
    its end."""

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


def create_vlans(test, session, ids):
    for vid in ids:
        test.assert_answers(session.ask("POST", f"/vlans/{vid}"), (0, f"Create VLAN {vid} successfully."))


def main():
    unittest.main(verbosity=2)
