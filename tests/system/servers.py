"""The far end of transfers: file servers for every scheme, and servers of the test's own that go wrong.

The file servers are programs: Apache for http and https, and serve.py, with libraries that come with the
system's Python, for the others. No package of them starts a service, and all run as a plain user. They listen
on loopback ports of their own, each with a folder of its own, and end with the test."""

import base64
import contextlib
import hashlib
import os
import shutil
import socket
import ssl
import subprocess
import tempfile
import threading
import urllib.parse

from harness import eventually, free_ports, prepare_child, read_text

USER, PASSWORD = "lab/user", "p@ss wörd%2F+&=?"
NOBODY = 65534  # as whom servers run when the test is root
SERVE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "serve.py")


def quoted(text):
    return urllib.parse.quote(text, safe="")


def secrets(text):
    """The forms in which a text could turn up in a log."""
    return {text, quoted(text), quoted(quoted(text)), urllib.parse.quote_plus(text),
            text.encode().decode("latin-1")}


# --- Certificates ----------------------------------------------------------------------------------------

def openssl(folder, *words):
    subprocess.run(["openssl", *words], cwd=folder, check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def make_authority(folder):
    """Makes an authority of its own, ca.pem, and server.pem, the certificate that it gives 127.0.0.1 with its
    key."""
    key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
    openssl(folder, "req", "-x509", *key, "-keyout", "ca.key", "-out", "ca.pem", "-days", "2",
            "-subj", "/CN=authority of the test")
    openssl(folder, "req", *key, "-keyout", "server.key", "-out", "server.csr", "-subj", "/CN=localhost")
    with open(os.path.join(folder, "names"), "w", encoding="ascii") as file:
        file.write("subjectAltName=IP:127.0.0.1\n")
    openssl(folder, "x509", "-req", "-in", "server.csr", "-CA", "ca.pem", "-CAkey", "ca.key",
            "-CAcreateserial", "-days", "2", "-extfile", "names", "-out", "server.crt")
    with open(os.path.join(folder, "server.pem"), "w", encoding="ascii") as file:
        file.write("".join(read_text(os.path.join(folder, name)) for name in ("server.crt", "server.key")))


def make_key(path):
    """Makes a key pair for SSH: path and path.pub."""
    subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", path], check=True)


class Keys:
    """What servers prove with who they are; made once for all of a test program."""

    made = None

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="kestrel-keys-")
        make_authority(self.folder)
        make_key(self.path("host"))

    def path(self, name):
        return os.path.join(self.folder, name)

    @classmethod
    def get(cls):
        if cls.made is None:
            cls.made = cls()
        return cls.made

    @classmethod
    def remove(cls):
        if cls.made is not None:
            shutil.rmtree(cls.made.folder)
            cls.made = None


# --- Programs --------------------------------------------------------------------------------------------

class FileServer:
    """A program that serves the files of a folder for one scheme, and takes files into it. /private of an
    HTTP server wants user and password; all but HTTP and TFTP want them anywhere."""

    def __init__(self, scheme):
        self.scheme = scheme
        self.home = tempfile.mkdtemp(prefix=f"kestrel-{scheme}-")
        self.folder = self.path("files")
        os.makedirs(os.path.join(self.folder, "private"))
        self.port, = free_ports(1)
        self.process = None

    def path(self, name):
        return os.path.join(self.home, name)

    def start(self):
        command = self.apache() if self.scheme in ("http", "https") else self.serve()
        self.give_away()
        with open(self.path("output"), "wb") as output:
            self.process = subprocess.Popen(
                command, cwd=self.home, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                user=NOBODY if os.getuid() == 0 else None, extra_groups=[] if os.getuid() == 0 else None,
                preexec_fn=prepare_child({}))
        eventually(self.listens, f"a server for {self.scheme} listens: {read_text(self.path('output'))}")
        return self

    def give_away(self):
        """Lets the user that the server runs as have its folder."""
        if os.getuid() == 0:
            for parent, _, names in os.walk(self.home):
                for path in (parent, *(os.path.join(parent, name) for name in names)):
                    os.chown(path, NOBODY, NOBODY)

    def listens(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the server for {self.scheme} ended: {read_text(self.path('output'))}")
        if self.scheme == "tftp":
            with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe, contextlib.suppress(OSError):
                probe.bind(("127.0.0.1", self.port))
                return False
            return True
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.port)) == 0

    def serve(self):
        """The libraries belong to the system's Python, which the test itself need not run in."""
        kind = "ssh" if self.scheme in ("sftp", "scp") else self.scheme
        shutil.copy(Keys.get().path("host"), self.path("host"))
        program = shutil.copy(SERVE, self.path("serve.py"))  # where the server's user can read it
        return ["/usr/bin/python3", "-B", "-W", "ignore", program, kind, self.folder, str(self.port), USER,
                PASSWORD, self.path("host")]

    def apache(self):
        modules = ["mpm_event", "authz_core", "authz_user", "authn_core", "authn_file", "auth_basic", "dav",
                   "dav_fs"]
        lines = [f"ServerRoot {self.home}", "ServerName 127.0.0.1", "PidFile pid", "ErrorLog errors",
                 f"DefaultRuntimeDir {self.home}", f"Listen 127.0.0.1:{self.port}",
                 f"DocumentRoot {self.folder}",
                 "DavLockDB locks", "StartServers 1", "ServerLimit 1", "ThreadsPerChild 8",
                 "MaxRequestWorkers 8", "<Location />", "Dav on", "</Location>", "<Location /private>",
                 "AuthType Basic", "AuthName private", f"AuthUserFile {self.path('users')}",
                 "Require valid-user", "</Location>"]
        if self.scheme == "https":
            shutil.copy(Keys.get().path("server.pem"), self.path("pem"))
            modules.append("ssl")
            lines += ["SSLEngine on", f"SSLCertificateFile {self.path('pem')}"]
        lines[:0] = [f"LoadModule {name}_module /usr/lib/apache2/modules/mod_{name}.so" for name in modules]
        with open(self.path("httpd.conf"), "w", encoding="ascii") as file:
            file.write("".join(line + "\n" for line in lines))
        digest = base64.b64encode(hashlib.sha1(PASSWORD.encode()).digest()).decode()
        with open(self.path("users"), "w", encoding="ascii") as file:
            file.write(f"{USER}:{{SHA}}{digest}\n")
        return ["/usr/sbin/apache2", "-X", "-f", self.path("httpd.conf")]

    def finish(self):
        self.process.terminate()
        self.process.wait()
        shutil.rmtree(self.home)

    # Its files

    def write(self, name, content):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(content)
        if os.getuid() == 0:
            os.chown(path, NOBODY, NOBODY)

    def read(self, name):
        with open(os.path.join(self.folder, name), "rb") as file:
            return file.read()

    def has(self, name):
        return os.path.exists(os.path.join(self.folder, name))

    def allow_key(self, public):
        """Lets whoever has the key in as the user, without a password: sftp and scp."""
        with open(self.path("allowed"), "w", encoding="ascii") as file:
            file.write(public)

    @contextlib.contextmanager
    def holding(self, name):
        """While it lasts, the server gives no more than the first half of a file (see serve.py)."""
        self.write(name + ".hold", b"")
        try:
            yield
        finally:
            os.unlink(os.path.join(self.folder, name + ".hold"))

    def url(self, name, user=USER, password=PASSWORD):
        """The URL of a file; without user or password when that is None."""
        who = "" if user is None or self.scheme == "tftp" else quoted(user)
        who += f":{quoted(password)}@" if who and password is not None else "@" if who else ""
        return f"{self.scheme}://{who}127.0.0.1:{self.port}/{name}"


def known_host(port):
    """A line for a known_hosts file: the servers for sftp and scp have this key."""
    kind, key = read_text(Keys.get().path("host.pub")).split()[:2]
    return f"[127.0.0.1]:{port} {kind} {key}\n"


# --- Servers that go wrong ---------------------------------------------------------------------------------

class CrookedServer:
    """An HTTP server whose answers are those of a test: talk(connection) is called in a thread of its own
    for each request, whose head has been read, and the connection ends when it returns. With tls it has a
    certificate of the authority."""

    def __init__(self, talk, tls=False):
        self.talk = talk
        self.requests = []
        self.context = None
        if tls:
            self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            self.context.load_cert_chain(Keys.get().path("server.pem"))
        self.closing = threading.Event()
        self.socket = socket.create_server(("127.0.0.1", 0))
        self.port = self.socket.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                connection = self.socket.accept()[0]
            except OSError:
                return
            threading.Thread(target=self.answer, args=(connection,), daemon=True).start()

    def answer(self, connection):
        with contextlib.suppress(OSError), connection:
            if self.context is not None:
                connection = self.context.wrap_socket(connection, server_side=True)
            with connection:
                head = b""
                while b"\r\n\r\n" not in head:
                    data = connection.recv(65536)
                    if not data:
                        return
                    head += data
                self.requests.append(head)
                self.talk(connection)

    def wait(self, seconds=None):
        """For talk(): until the test is over, or so long. Says whether it is."""
        return self.closing.wait(seconds)

    def url(self, name="file", who=""):
        return f"http{'s' if self.context else ''}://{who}127.0.0.1:{self.port}/{name}"

    def close(self):
        self.closing.set()
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()


def response(status, body=b"", *headers, length=None):
    """The bytes of an answer; `length` where what it says of its body is not true."""
    lines = [f"HTTP/1.1 {status}", f"Content-Length: {len(body) if length is None else length}",
             "Connection: close", *headers]
    return "\r\n".join(lines).encode() + b"\r\n\r\n" + body
