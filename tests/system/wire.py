"""What goes over the wire: the bytes of answers, and clients that read replies without tolerating
anything. The daemon that they speak to is harness.py's."""

import hashlib
import re
import socket
import ssl
import struct

PASSWORD = "correct horse"
PATIENCE = 60.0  # seconds until something that must happen counts as never happening


# --- The shape of answers ------------------------------------------------------------------------------

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


def numbered(tag, values):
    """Rows at the positions from 1 on."""
    return Rows(tag, enumerate(values, 1))


class Nodes(list):
    """Siblings as (name in JSON, name in XML, value) each, where a dictionary will not do: the names differ,
    or one comes twice. JSON then has the first one's place and the last one's value."""


def xml_of(data):
    if isinstance(data, Rows):
        return "".join(f"<{data.tag}>{xml_of(entry)}</{data.tag}>" for _, entry in data)
    if isinstance(data, Nodes):
        return "".join(f"<{tag}>{xml_of(value)}</{tag}>" for _, tag, value in data)
    if isinstance(data, dict):
        return "".join(f"<{name}>{xml_of(value)}</{name}>" for name, value in data.items())
    return str(data)


def plain_of(data):
    """Rows and nodes turned into the objects that stand for them in JSON."""
    if isinstance(data, Rows):
        return {str(position): plain_of(entry) for position, entry in data}
    if isinstance(data, Nodes):
        return {key: plain_of(value) for key, _, value in data}
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
FAILED = (96, "The operation was failed or some error happened, please send the correct request or check "
              "the limitation of feature.")
INTERNAL = (97, "There is some internal fault happened, please try again.")
ALREADY_SET = (98, "The same setting is already set.")
REFUSED = (99, "Operation failed. It was possibly caused by non-existent resource id in URI, invalid "
               "parameters, or the operation is not supported on the platform.")


def vlan_list(ids):
    return {"vlans": Rows("vlan", [(i, {"id": vid}) for i, vid in enumerate(ids, 1)])}


# --- Clients -------------------------------------------------------------------------------------------

class Malformed(AssertionError):
    """The daemon sent bytes that are no reply."""


class Closed(Exception):
    """The daemon closed the connection before a whole reply had come; .rest holds what had."""

    def __init__(self, rest):
        super().__init__(f"connection closed after {rest!r}")
        self.rest = rest


class Reply:
    """One reply: .raw all its bytes, .status, .headers (list of pairs), .body, .chunks (None without
    chunking)."""

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
    """One connection. Nothing is tolerated in replies: see read_reply(). With tls but no handshake, raw
    bytes go to the TLS port."""

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
                raise Malformed(f"chunk of {length} bytes is not ended: {self.buffer[end:]!r}")
            at = end + length + 2
            if length == 0:
                return chunks, at
            chunks.append(self.buffer[end:end + length])

    def read_reply(self):
        """Reads one reply: CRLF line ends, upper-case chunk sizes without leading zeros, no trailers. A
        reply that says neither how long it is nor that it is chunked is malformed, 100 Continue apart.
        Raises Closed when the connection ends before the reply does."""
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
        """False when the daemon has closed already, without waiting for it to. What has come goes to the
        buffer."""
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
