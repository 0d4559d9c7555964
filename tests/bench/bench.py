#!/usr/bin/env python3
"""Measures the daemon beside nginx, which returns the same bytes from memory, in one run.

The server under test is pinned to one core and wrk to the other. What counts is the server's CPU time for each reply
(user and system time of all its threads over the number of replies): a busy machine does not spoil it. The rates and
latencies are printed too.

    tests/bench/bench.py [--seconds 3] [--daemon build/release/engine/restful_api_engine] [--case NAME ...]

Needs Debian's wrk, nginx-light and openssl; prints Markdown. See docs/performance.md for what it said.
"""

import argparse
import http.client
import os
import re
import resource
import shutil
import socket
import ssl
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

SERVER_CORE, CLIENT_CORE = 0, 1
CONNECTIONS = (1, 100, 900)
PASSWORD = "bench-password"


@dataclass
class Case:
    name: str
    path: str  # {key} is replaced by a session key
    close: bool = False  # a new connection for every request
    slow: bool = False  # milliseconds each: measured three times as long
    connections: tuple[int, ...] = CONNECTIONS


CASES = [
    Case("GET /login", "/login?sessionkey={key}"),
    Case("GET /vlans/1, 54 ports, XML", "/vlans/1?sessionkey={key}"),
    Case("GET /vlans/1, 54 ports, JSON", "/vlans/1?format=json&sessionkey={key}"),
    Case("GET /if/1", "/if/1?sessionkey={key}"),
    Case("GET /if/1/counters, XML", "/if/1/counters?sessionkey={key}"),
    Case("GET /if/1/counters, JSON", "/if/1/counters?format=json&sessionkey={key}"),
    Case("GET /vlans, 4094 VLANs, XML", "/vlans?sessionkey={key}", slow=True),
    Case("GET /vlans, 4094 VLANs, JSON", "/vlans?format=json&sessionkey={key}", slow=True),
    Case("GET of a list with 1023 rules, XML", "/acl/ip/name/long?sessionkey={key}", slow=True, connections=(1, 100)),
    Case("GET of a list with 1023 rules, JSON", "/acl/ip/name/long?format=json&sessionkey={key}", slow=True,
         connections=(1, 100)),
    Case("GET /tcam/groupStats, 1023 rules bound", "/tcam/groupStats?sessionkey={key}"),
    Case("GET /routing/vlanRtrIf, 128 interfaces, XML", "/routing/vlanRtrIf?sessionkey={key}"),
    Case("GET /routing/vlanRtrIf, 128 interfaces, JSON", "/routing/vlanRtrIf?format=json&sessionkey={key}"),
    Case("GET /bgp/ipv4/neighbor, one of 128", "/bgp/ipv4/neighbor/10.0.127.2?sessionkey={key}"),
    Case("GET /vxlan/1/tenant, 1024 tenants, XML", "/vxlan/1/tenant?sessionkey={key}", slow=True, connections=(1, 100)),
    Case("GET /vxlan/1/tenant, 1024 tenants, JSON", "/vxlan/1/tenant?format=json&sessionkey={key}", slow=True,
         connections=(1, 100)),
    Case("GET /vxlan/1/unicastGroup, 128 VTEPs", "/vxlan/1/unicastGroup?sessionkey={key}"),
    Case("GET /boxs/sfp, 8 transceivers", "/boxs/sfp?sessionkey={key}"),
    Case("GET /process/cpu", "/process/cpu?sessionkey={key}", slow=True, connections=(1, 100)),
    Case("GET /logging", "/logging?sessionkey={key}"),
    Case("unauthorised", "/login?sessionkey=0123456789abcdef0123456789abcdef"),
    Case("GET /login, new connections", "/login?sessionkey={key}", close=True),
]


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for_port(port):
    for _ in range(200):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return
        time.sleep(0.05)
    sys.exit(f"nothing listens on port {port}")


def cpu_nanoseconds(pid):
    return sum(int((task / "schedstat").read_text().split()[0]) for task in Path(f"/proc/{pid}/task").iterdir())


def resident_kib(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{pid}/status").read_text()).group(1))


class Server:
    """A process under test: its ports, and the process whose time counts."""

    def __init__(self, process, pid, http_port, https_port):
        self.process, self.pid = process, pid
        self.ports = {"plain": http_port, "TLS": https_port}

    def stop(self):
        self.process.terminate()
        self.process.wait()


def start_daemon(program, root):
    http_port, https_port = free_port(), free_port()
    environment = dict(
        os.environ,
        KESTREL_ROOT=".",
        KESTREL_STATE_DIR="state",
        KESTREL_SESSION_FILE="sessions",
        KESTREL_ADMIN_PASSWORD=PASSWORD,
        KESTREL_LISTENING_PORT=f"127.0.0.1:{http_port},ssl://127.0.0.1:{https_port}:ssl.pem",
    )
    process = subprocess.Popen(
        ["taskset", "-c", str(SERVER_CORE), program], cwd=root, env=environment,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for_port(https_port)
    return Server(process, process.pid, http_port, https_port)


def start_nginx(root, bodies):
    http_port, https_port = free_port(), free_port()
    (root / "www").mkdir()
    locations = ""
    for number, (content_type, body) in enumerate(bodies):
        if len(body) < 2000:
            text = body.decode().replace("\\", "\\\\").replace("'", "\\'").replace("\n", "\\n")
            locations += f"location = /{number} {{ default_type '{content_type}'; return 200 '{text}'; }}\n"
        else:  # too long for a line of its configuration: a file, kept open and in the page cache
            (root / "www" / str(number)).write_bytes(body)
            locations += f"location = /{number} {{ default_type '{content_type}'; }}\n"
    (root / "nginx.conf").write_text(f"""
        worker_processes 1; daemon off; pid {root}/nginx.pid; error_log {root}/nginx.log;
        events {{ worker_connections 4096; }}
        http {{
          access_log off; keepalive_requests 1000000000; sendfile on; open_file_cache max=20;
          client_body_temp_path {root}/t1; proxy_temp_path {root}/t2; fastcgi_temp_path {root}/t3;
          uwsgi_temp_path {root}/t4; scgi_temp_path {root}/t5;
          # wrk resumes a session only where the reply announces the close, which the daemon's replies do not:
          # without tickets both sides make a full handshake for each new connection.
          ssl_session_tickets off;
          ssl_certificate {root}/ssl.pem; ssl_certificate_key {root}/ssl.pem;
          server {{
            listen 127.0.0.1:{http_port} backlog=4096; listen 127.0.0.1:{https_port} ssl backlog=4096;
            root {root}/www;
            {locations}
          }}
        }}""")
    process = subprocess.Popen(["taskset", "-c", str(SERVER_CORE), "nginx", "-p", str(root), "-c", str(root / "nginx.conf")])
    wait_for_port(https_port)
    workers = subprocess.run(["pgrep", "-P", str(process.pid)], capture_output=True, text=True, check=True)
    return Server(process, int(workers.stdout), http_port, https_port)


@dataclass
class Result:
    rate: float
    p50: str
    p99: str
    cpu: float  # microseconds for each reply


def measure(server, transport, path, connections, close, seconds):
    url = f"{'https' if transport == 'TLS' else 'http'}://127.0.0.1:{server.ports[transport]}{path}"
    command = ["taskset", "-c", str(CLIENT_CORE), "wrk", "-t1", f"-c{connections}", f"-d{seconds}s", "--latency", url]
    if close:
        command += ["-H", "Connection: close"]
    before = cpu_nanoseconds(server.pid)
    output = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    spent = cpu_nanoseconds(server.pid) - before
    replies = int(re.search(r"(\d+) requests in", output).group(1))
    if "Non-2xx" in output or replies == 0:
        sys.exit(f"{url}: {output}")
    percentile = dict(re.findall(r"(50|99)%\s+(\S+)", output))
    rate = float(re.search(r"Requests/sec:\s+([\d.]+)", output).group(1))
    return Result(rate, percentile["50"], percentile["99"], spent / 1000 / replies)


def request(server, method, path):
    connection = http.client.HTTPConnection("127.0.0.1", server.ports["plain"])
    connection.request(method, path)
    reply = connection.getresponse()
    return reply.headers["Content-Type"], reply.read()


def log_in(server):
    _, body = request(server, "POST", f"/login?user=admin&password={PASSWORD}")
    key = re.search(rb"<sessionKey>([0-9a-f]{32})<", body)
    return key.group(1).decode() if key else sys.exit(f"cannot log in: {body}")


class Changes:
    """Changes that must succeed, over one connection."""

    def __init__(self, server, key):
        self.connection, self.key = http.client.HTTPConnection("127.0.0.1", server.ports["plain"]), key

    def ask(self, method, path, variables=""):
        self.connection.request(method, f"{path}?sessionkey={self.key}&{variables}")
        body = self.connection.getresponse().read()
        if b"<rlt_code>0<" not in body:
            sys.exit(f"{method} {path} {variables}: {body}")


def fill_vlans(changes):
    for vlan in range(2, 4095):
        changes.ask("POST", f"/vlans/{vlan}")


# All that a rule of an IPv4 list can hold at once; what comes before differs from rule to rule.
RULE = ("action=permit&protocol=tcp&src_ip=10.1.0.0&src_mask=255.255.0.0&dest_ip=192.0.2.0&dest_mask=255.255.255.0"
        "&dscp=46&precedence=5&tos=b8&tos_mask=fc&fragments=0&src_l4_port=gt:1023&tcp_syn=1&tcp_fin=0"
        "&tcp_established=0&log=1&assign_queue=3&mirror_intf=4&redirect_intf=5&time_range=office&rate_limit=1000"
        "&burst_size=64")


def fill_rules(server, changes):
    """Makes an IPv4 list as long as lists get and binds it. Returns the microseconds that each rule cost: of the
    server's CPU time, and of the time that the client waited."""
    changes.ask("POST", "/acl/ip/name", "name=long")
    rules, cpu, begin = 1023, cpu_nanoseconds(server.pid), time.monotonic_ns()
    for port in range(rules):
        changes.ask("POST", "/acl/ip/name/long/rule", f"dest_l4_port=eq:{port}&{RULE}")
    waited, cpu = time.monotonic_ns() - begin, cpu_nanoseconds(server.pid) - cpu
    changes.ask("POST", "/acl/if/1", "direction=in&type=ip&name=long&sequence=1")
    return cpu / 1000 / rules, waited / 1000 / rules


def fill_fabric(changes):
    """Gives VLANs 2 to 129 routing interfaces with an address and a neighbour each, makes every VLAN up to 1024 that
    of a VXLAN tenant and fills the list of remote VTEPs."""
    changes.ask("PUT", "/vxlan/1/mode", "value=1")
    for number in range(128):
        changes.ask("POST", "/routing/vlanRtrIf", f"vlanId={number + 2}")
        changes.ask("POST", f"/routing/vlanRtrIf/{number + 1}/ip",
                    f"addrType=0&addr=10.0.{number}.1&pfxLen=24&extArg=0")
        changes.ask("POST", f"/bgp/ipv4/neighbor/10.0.{number}.2", "asn=65001")
    for vlan in range(1, 1025):
        changes.ask("POST", f"/vxlan/1/tenant/{vlan * 1000}/vlan/{vlan}")
    for number in range(1, 129):
        changes.ask("PUT", "/vxlan/1/unicastGroup", f"value=10.1.0.{number}")


def fill_counters(root):
    """Gives every counter of port 1 a value that takes both of its halves."""
    with socket.socket(socket.AF_UNIX) as lab:
        lab.connect(str(root / "state" / "lab.sock"))
        with lab.makefile("rw", encoding="ascii") as lines:
            for counter in range(63):
                lines.write(f"counter set 0/1 {counter} {(counter << 40) + 123456789}\n")
                lines.flush()
                lines.readline()  # "ok", or an error for a counter that the port does not have


def connection_cost(server, transport, path, count=800):
    """Bytes of resident memory for each connection that made one request and then stays idle."""
    context = ssl.create_default_context()
    context.check_hostname, context.verify_mode = False, ssl.CERT_NONE

    def open_connections(number):
        opened = []
        for _ in range(number):
            client = socket.create_connection(("127.0.0.1", server.ports[transport]))
            if transport == "TLS":
                client = context.wrap_socket(client)
            client.sendall(f"GET {path} HTTP/1.1\r\n\r\n".encode())
            data = b""
            while not data.endswith(b"0\r\n\r\n"):
                data += client.recv(65536)
            opened.append(client)
        return opened

    warm = open_connections(5)  # what the first ones cost once is not theirs
    before = resident_kib(server.pid)
    idle = open_connections(count)
    after = resident_kib(server.pid)
    for client in warm + idle:
        client.close()
    return (after - before) * 1024 / count


def print_row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |", flush=True)


def run_cases(daemon, nginx, key, cases, seconds):
    print_row("request", "transport", "connections", "replies/s", "p50", "p99", "CPU us", "nginx CPU us", "ratio")
    print_row(*["---"] * 9)
    for number, case in cases:
        for transport in ("plain", "TLS"):
            for connections in case.connections:
                path = case.path.format(key=key)
                long = case.slow or (transport == "TLS" and connections > 100)  # hundreds of handshakes first
                duration = 3 * seconds if long else seconds
                ours = measure(daemon, transport, path, connections, case.close, duration)
                theirs = measure(nginx, transport, f"/{number}", connections, case.close, duration)
                print_row(case.name, transport, connections, f"{ours.rate:.0f}", ours.p50, ours.p99,
                          f"{ours.cpu:.1f}", f"{theirs.cpu:.1f}", f"{ours.cpu / theirs.cpu:.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=int, default=3)
    parser.add_argument("--daemon", default="build/release/engine/restful_api_engine")
    parser.add_argument("--case", action="append", help="only cases whose name holds this")
    options = parser.parse_args()
    for tool in ("wrk", "nginx", "openssl", "taskset"):
        if shutil.which(tool) is None:
            sys.exit(f"{tool} is missing (Debian: wrk nginx-light openssl util-linux)")
    if (os.cpu_count() or 1) < 2:
        sys.exit("two cores are needed: one for the server, one for wrk")
    resource.setrlimit(resource.RLIMIT_NOFILE, (8192, resource.getrlimit(resource.RLIMIT_NOFILE)[1]))

    cases = [(n, c) for n, c in enumerate(CASES) if not options.case or any(word in c.name for word in options.case)]
    with tempfile.TemporaryDirectory(prefix="kestrel-bench-") as folder:
        root = Path(folder)
        os.chmod(root, 0o755)  # nginx's worker reads its files as another user
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-subj", "/CN=localhost", "-keyout", "key.pem", "-out", "cert.pem"],
                       cwd=root, check=True, capture_output=True)
        (root / "ssl.pem").write_bytes((root / "key.pem").read_bytes() + (root / "cert.pem").read_bytes())
        daemon = start_daemon(Path(options.daemon).resolve(), root)
        nginx = None
        try:
            print(f"Resident at start: {resident_kib(daemon.pid)} KiB\n", flush=True)
            key = log_in(daemon)
            for transport in ("plain", "TLS"):
                cost = connection_cost(daemon, transport, f"/login?sessionkey={key}")
                print(f"An idle {transport} connection after one request: {cost:.0f} bytes resident")
            changes = Changes(daemon, key)
            fill_vlans(changes)
            cpu, waited = fill_rules(daemon, changes)
            print(f"Each of 1023 rules with many conditions: {cpu:.0f} us of CPU, made in {waited:.0f} us\n", flush=True)
            fill_counters(root)
            fill_fabric(changes)
            bodies = [request(daemon, "GET", case.path.format(key=key)) for case in CASES]
            nginx = start_nginx(root, bodies)
            run_cases(daemon, nginx, key, cases, options.seconds)
        finally:
            daemon.stop()
            if nginx is not None:
                nginx.stop()


if __name__ == "__main__":
    main()
