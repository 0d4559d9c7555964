"""What the tests of kestrelctl share: the program in a home of its own, on a terminal if need be, and servers that play
a switch."""

import contextlib
import fcntl
import functools
import os
import pty
import re
import select
import shutil
import socket
import ssl
import subprocess
import tempfile
import termios
import threading

from harness import PATIENCE, program


class Kestrelctl:
    """The program with a home folder of its own. A call returns (exit status, standard output, standard error)."""

    def __init__(self, server=None):
        self.home = tempfile.mkdtemp(prefix="kestrelctl-")
        self.environment = {"HOME": self.home, "PATH": os.environ["PATH"], "TERM": "xterm"}
        if server:
            self.environment["KESTRELCTL_SERVER"] = server

    def remove(self):
        shutil.rmtree(self.home)

    def __call__(self, *words, typed="", **environment):
        done = subprocess.run([program("KESTREL_CTL"), *words], env={**self.environment, **environment}, input=typed,
                              capture_output=True, text=True, timeout=PATIENCE, check=False)
        return done.returncode, done.stdout, done.stderr

    @property
    def state(self):
        return os.path.join(self.home, ".local/state/kestrelctl")

    def state_file(self, server, ending):
        name = server.replace(":", "%3A").replace("/", "%2F")
        return os.path.join(self.state, name + ending)

    def key(self, server):
        with open(self.state_file(server, ".session"), encoding="ascii") as file:
            return file.readline().rstrip("\n")


class Screen:
    """A program on a terminal of its own."""

    def __init__(self, command, environment):
        self.master, self.terminal = pty.openpty()
        self.shown = ""
        self.process = subprocess.Popen(
            command, env=environment, stdin=self.terminal, stdout=self.terminal, stderr=self.terminal,
            start_new_session=True, preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))

    def read(self):
        """Adds what has come to .shown; False when nothing does for too long."""
        ready = select.select([self.master], [], [], PATIENCE)[0]
        if ready:
            self.shown += os.read(self.master, 65536).decode(errors="surrogateescape")
        return bool(ready)

    def wait_for(self, text):
        while text not in self.shown:
            if not self.read():
                raise AssertionError(f"never shown: {text!r} in {self.shown!r}")

    def type(self, text):
        os.write(self.master, text.encode())

    def echoes(self):
        return bool(termios.tcgetattr(self.terminal)[3] & termios.ECHO)

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.close()

    def close(self):
        os.close(self.terminal)
        os.close(self.master)


class Terminal(Screen):
    """kestrelctl on a terminal, started by a shell, which holds the terminal and says how it ended."""

    SHELL = 'trap : INT; "$0" "$@"; echo "status $?"; read end'

    def __init__(self, ctl, *words, **environment):
        super().__init__(["sh", "-c", self.SHELL, program("KESTREL_CTL"), *words], {**ctl.environment, **environment})

    def finish(self):
        """Waits for its end and returns its status; what it showed is in .shown, with plain line ends."""
        self.wait_for("\r\nstatus ")
        while re.search(r"status \d+\r\n", self.shown) is None:
            self.read()
        self.echoed_at_end = self.echoes()
        self.type("\n")
        self.process.wait(PATIENCE)
        self.close()
        self.shown, status = re.fullmatch(r"(.*\n)status (\d+)\n", self.shown.replace("\r\n", "\n"), re.S).groups()
        return int(status)


def make_certificate(folder, name, expired=False):
    """Makes folder/name.pem, certificate and key of 127.0.0.1, and returns its path."""
    path = os.path.join(folder, name + ".pem")
    run = functools.partial(subprocess.run, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    options = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", path + ".key",
               "-subj", "/CN=" + name, "-addext", "subjectAltName=IP:127.0.0.1"]
    if expired:
        run(["openssl", "req", "-new", "-out", path + ".csr", *options])
        run(["openssl", "x509", "-req", "-in", path + ".csr", "-signkey", path + ".key", "-copy_extensions", "copy",
             "-out", path, "-days", "-1"])
    else:
        run(["openssl", "req", "-x509", "-out", path, "-days", "2", *options])
    with open(path, "a", encoding="ascii") as file, open(path + ".key", encoding="ascii") as key:
        file.write(key.read())
    return path


def fingerprint(path):
    """The SHA-256 fingerprint of a certificate as kestrelctl writes it."""
    shown = subprocess.run(["openssl", "x509", "-noout", "-fingerprint", "-sha256", "-in", path], check=True,
                           capture_output=True, text=True).stdout
    return "sha256:" + shown.strip().split("=")[1]


class FakeSwitch:
    """Answers each connection with the same bytes and closes it; .received is all that clients have said in
    connections that stood, TLS or not."""

    def __init__(self, answer=b"", certificate=None, port=0):
        self.received = b""
        self.answer = answer
        self.context = None
        if certificate:
            self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            self.context.load_cert_chain(certificate)
        self.listener = socket.create_server(("127.0.0.1", port))
        self.port = self.listener.getsockname()[1]
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def url(self, scheme):
        return f"{scheme}://127.0.0.1:{self.port}"

    def serve(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            with connection, contextlib.suppress(OSError):
                connection.settimeout(PATIENCE)
                if self.context is None:
                    self.talk(connection)
                    continue
                with self.context.wrap_socket(connection, server_side=True) as secure:
                    self.talk(secure)

    def talk(self, connection):
        request = b""
        while b"\r\n\r\n" not in request:
            block = connection.recv(65536)
            if not block:
                return
            request += block
            self.received += block
        connection.sendall(self.answer)

    def stop(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.thread.join()
        self.listener.close()
