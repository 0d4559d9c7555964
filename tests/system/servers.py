"""The far end of transfers: file servers for every scheme, and servers of the test's own that go wrong.

The file servers are those of Debian: nginx for http and https, atftpd, vsftpd, and OpenSSH for sftp and scp.
./test.sh unpacks them without installing them, as then they would start as services. Here they run as a plain
user, listen on loopback ports of their own, each with a folder of its own, and end with the test."""

import contextlib
import os
import select
import shutil
import socket
import ssl
import subprocess
import tempfile
import threading
import urllib.parse

from harness import eventually, free_ports, prepare_child, read_text

USER, PASSWORD = "lab@user", "p@ss wörd%2F+&=?"
NOBODY = 65534  # as whom servers run when the test is root
NEAR, FAR = "127.0.0.1", "127.0.0.2"  # where servers listen, and where a slow way to them begins


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
    """Makes an authority of its own, ca.pem, and server.pem, the certificate that it gives the servers, with
    its key."""
    key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
    openssl(folder, "req", "-x509", *key, "-keyout", "ca.key", "-out", "ca.pem", "-days", "2",
            "-subj", "/CN=authority of the test")
    openssl(folder, "req", *key, "-keyout", "server.key", "-out", "server.csr", "-subj", "/CN=localhost")
    with open(os.path.join(folder, "names"), "w", encoding="ascii") as file:
        file.write(f"subjectAltName=IP:{NEAR},IP:{FAR}\n")
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
        self.port, self.data_port = free_ports(2)
        # Only its anonymous user is none of the system, and it can want a password of that one too.
        self.user = "anonymous" if scheme == "ftp" else USER
        self.process = None

    def path(self, name):
        return os.path.join(self.home, name)

    def write_own(self, name, *lines):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write("".join(line + "\n" for line in lines))

    def program(self, path):
        """A program out of a package, where the server's user can read it."""
        path = os.path.join(os.environ.get("KESTREL_SERVERS", ""), path)
        if not os.path.exists(path):
            raise AssertionError(f"{path} is not there: ./test.sh fetches it")
        return shutil.copy(path, self.home)

    def start(self):
        prepare = {"http": self.nginx, "https": self.nginx, "tftp": self.atftpd, "ftp": self.vsftpd,
                   "sftp": self.sshd, "scp": self.sshd}[self.scheme]
        command = prepare()
        self.give_away()
        with open(self.path("output"), "wb") as output:
            self.process = subprocess.Popen(
                command, cwd=self.home, env={**os.environ, **self.environment()}, stdin=subprocess.DEVNULL,
                stdout=output, stderr=output, user=NOBODY if os.getuid() == 0 else None,
                group=NOBODY if os.getuid() == 0 else None, extra_groups=[] if os.getuid() == 0 else None,
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
                probe.bind((NEAR, self.port))
                return False
            return True
        with socket.socket() as probe:
            return probe.connect_ex((NEAR, self.port)) == 0

    # Each writes what a server is to read and returns the command that starts it.

    def nginx(self):
        tls = []
        if self.scheme == "https":
            shutil.copy(Keys.get().path("server.pem"), self.path("pem"))
            tls = ["ssl_certificate pem;", "ssl_certificate_key pem;"]
        kept = [f"{kind}_temp_path {self.path(kind)};"
                for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi")]
        self.write_own("users", f"{self.user}:{{PLAIN}}{PASSWORD}")
        self.write_own(
            "conf", "daemon off;", "master_process off;", "pid pid;", "error_log stderr;", "events { }",
            "http {", "access_log off;", *kept, "server {",
            f"listen {NEAR}:{self.port}{' ssl' if tls else ''};", *tls, f"root {self.folder};",
            "dav_methods PUT;", "location /private/ {", "auth_basic private;", "auth_basic_user_file users;",
            "}", "}", "}")
        return [self.program("usr/sbin/nginx"), "-p", self.home, "-e", "stderr", "-c", self.path("conf")]

    def atftpd(self):
        return [self.program("usr/sbin/atftpd"), "--daemon", "--no-fork", "--logfile", "-",
                "--port", str(self.port), "--bind-address", NEAR, self.folder]

    def vsftpd(self):
        self.write_own("words", PASSWORD)
        self.write_own(
            "conf", "listen=YES", f"listen_address={NEAR}", f"listen_port={self.port}", "background=NO",
            f"pasv_min_port={self.data_port}", f"pasv_max_port={self.data_port}",
            "run_as_launching_user=YES", "ftp_username=nobody", f"anon_root={self.folder}",
            "secure_email_list_enable=YES", f"email_password_file={self.path('words')}",
            "delay_failed_login=0", "write_enable=YES", "anon_upload_enable=YES",
            "anon_other_write_enable=YES", "anon_world_readable_only=NO")
        return [self.program("usr/sbin/vsftpd"), self.path("conf")]

    def sshd(self):
        """The user that logs in is the one that the server runs as, by the name of environment()."""
        shutil.copy(Keys.get().path("host"), self.path("host"))
        done = subprocess.run(["openssl", "passwd", "-6", "-stdin"], input=PASSWORD.encode(),
                              stdout=subprocess.PIPE, check=True)
        uid, gid = (os.getuid(), os.getgid()) if os.getuid() != 0 else (NOBODY, NOBODY)
        secret = done.stdout.decode("ascii").strip()
        self.write_own("passwd", f"{self.user}:{secret}:{uid}:{gid}::{self.folder}:/bin/sh")
        self.write_own("group", f"{self.user}:x:{gid}:")
        self.write_own(
            "conf", f"ListenAddress {NEAR}", f"Port {self.port}", f"HostKey {self.path('host')}",
            "PidFile none", "UsePAM no", "StrictModes no", f"AuthorizedKeysFile {self.path('allowed')}",
            f"Subsystem sftp {self.program('usr/lib/openssh/sftp-server')}")
        return [self.program("usr/sbin/sshd"), "-D", "-e", "-f", self.path("conf")]

    def environment(self):
        """Gives sshd a user that is none of the system."""
        if self.scheme not in ("sftp", "scp"):
            return {}
        return {"LD_PRELOAD": "libnss_wrapper.so", "NSS_WRAPPER_PASSWD": self.path("passwd"),
                "NSS_WRAPPER_GROUP": self.path("group")}

    def finish(self):
        if self.process is not None:
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
        self.write_own("allowed", public)

    def url(self, name, user="", password=PASSWORD, address=NEAR):
        """The URL of a file, with the server's own user unless there is another; without user or password
        when that is None."""
        user = self.user if user == "" else user
        who = "" if user is None or self.scheme == "tftp" else quoted(user)
        who += f":{quoted(password)}@" if who and password is not None else "@" if who else ""
        home = "~/" if self.scheme in ("sftp", "scp") else ""
        return f"{self.scheme}://{who}{address}:{self.port}/{home}{name}"

    def slow_way(self, size):
        """A way to the server by the address FAR, from where no more than so many bytes of a connection come
        until it is free."""
        return (SlowDatagrams if self.scheme == "tftp" else SlowConnections)(self, size)


def known_host(port, address=NEAR):
    """A line for a known_hosts file: the servers for sftp and scp have this key."""
    kind, key = read_text(Keys.get().path("host.pub")).split()[:2]
    return f"[{address}]:{port} {kind} {key}\n"


# --- Slow ways to the programs -----------------------------------------------------------------------------

class SlowConnections:
    """Listens on FAR by the port numbers that the server has on NEAR, so that those it tells are right."""

    def __init__(self, server, size):
        self.size = size
        self.free = threading.Event()
        self.doors = [socket.create_server((FAR, port)) for port in (server.port, server.data_port)]
        for door in self.doors:
            threading.Thread(target=self.accept, args=(door,), daemon=True).start()

    def accept(self, door):
        with contextlib.suppress(OSError):
            while True:
                near = door.accept()[0]
                threading.Thread(target=self.connect, args=(near, door.getsockname()[1]), daemon=True).start()

    def connect(self, near, port):
        with near, socket.create_connection((NEAR, port)) as far:
            there = threading.Thread(target=self.carry, args=(near, far, None), daemon=True)
            there.start()
            self.carry(far, near, self.size)
            there.join()

    def carry(self, source, sink, left):
        """Carries bytes one way, and stops for a while when none are left of those that it may."""
        with contextlib.suppress(OSError):
            while data := source.recv(65536):
                if left is not None:
                    sink.sendall(data[:left])
                    data, left = data[left:], max(left - len(data), 0)
                    if data:
                        self.free.wait()
                        left = None
                sink.sendall(data)
            sink.shutdown(socket.SHUT_WR)

    def finish(self):
        self.free.set()
        for door in self.doors:
            door.shutdown(socket.SHUT_RDWR)
            door.close()


class SlowDatagrams:
    """The same for one transfer of TFTP, whose server answers from a port of its choice."""

    def __init__(self, server, size):
        self.size = size
        self.free = threading.Event()
        self.door, self.back = (socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(2))
        self.door.bind((FAR, server.port))
        self.server = (NEAR, server.port)
        self.ended = threading.Event()
        threading.Thread(target=self.carry, daemon=True).start()

    def carry(self):
        client = None
        with self.door, self.back:
            while not self.ended.is_set():
                ready = select.select([self.door, self.back], [], [], 0.1)[0]
                if self.door in ready:
                    data, client = self.door.recvfrom(65536)
                    self.back.sendto(data, self.server)
                if self.back in ready:
                    data, self.server = self.back.recvfrom(65536)
                    self.size -= len(data)
                    if self.size < 0:
                        self.free.wait()
                    self.door.sendto(data, client)

    def finish(self):
        self.ended.set()
        self.free.set()


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
