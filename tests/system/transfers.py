"""Scenes of transfers: a switch, servers of every scheme, requests and what comes of them."""

import contextlib
import os
import re
import urllib.parse

import servers
from harness import eventually, read_text
from scenes import FlowTest
from servers import CrookedServer, FileServer
from system import BUSY, NOT_STARTED, STARTING

SCHEMES = ("tftp", "ftp", "http", "https", "sftp", "scp")
ENDED = re.compile(r"(Completed|Failed|Cancelled)\b.*\.")
TIMES = {"cfgtime": "2026-01-02T03:04", "updatetime": "2026-01-03T04:05"}


class TransferTest(FlowTest):
    """All servers are there for all tests of a class; the switch trusts them unless a test says otherwise."""

    SCHEMES = SCHEMES

    @classmethod
    def setUpClass(cls):
        cls.addClassCleanup(servers.Keys.remove)
        cls.servers = {}
        for scheme in cls.SCHEMES:
            cls.servers[scheme] = FileServer(scheme)
            cls.addClassCleanup(cls.servers[scheme].finish)
            cls.servers[scheme].start()

    def setUp(self):
        super().setUp()
        self.trust("trusted-ca.pem", read_text(servers.Keys.get().path("ca.pem")))
        self.trust("known_hosts", "".join(servers.known_host(server.port, address)
                                          for server in self.servers.values()
                                          for address in (servers.NEAR, servers.FAR)))

    def trust(self, name, text):
        with open(self.stored_path(name), "w", encoding="ascii") as file:
            file.write(text)

    def stored_path(self, name):
        return os.path.join(self.daemon.state_dir, name)

    def stored(self, name):
        """A file of the switch; None when it is not there."""
        with contextlib.suppress(FileNotFoundError), open(self.stored_path(name), "rb") as file:
            return file.read()

    def limit(self, name, value):
        self.daemon.lab("limit", name, str(value))

    def crooked(self, talk, tls=False):
        server = CrookedServer(talk, tls)
        self.addCleanup(server.close)
        return server

    def answering(self, *answers, tls=False):
        """A server that gives these bytes for one request after the other, the last one again and again."""
        left = list(answers)
        return self.crooked(lambda connection: connection.sendall(left.pop(0) if left[1:] else left[0]), tls)

    # Asking for transfers

    def post(self, uri, **variables):
        return self.logged_in.ask("POST", uri, body=urllib.parse.urlencode(variables))

    def start(self, uri, **variables):
        self.assert_answers(self.post(uri, **variables), STARTING, {})

    def refuse(self, outcome, uri, **variables):
        with_data = outcome in (BUSY, NOT_STARTED)
        with self.subTest(uri, **variables):
            self.assert_answers(self.post(uri, **variables), outcome, {} if with_data else None)

    def status(self, direction="download"):
        """(sentence, percent) of GET /download/status or /upload/status."""
        text = self.ask("GET", f"/{direction}/status")
        return re.search(r"<status>([^<]*)</status><progress>(\d+)%</progress>", text).groups()

    def wait_for_status(self, pattern, direction="download"):
        return eventually(lambda: re.fullmatch(pattern, self.status(direction)[0]),
                          f"{direction}: {pattern}")[0]

    def outcome(self, direction="download"):
        """The sentence on a transfer that has ended."""
        return self.wait_for_status(ENDED, direction)

    def download_image(self, url, image="active", **others):
        self.start("/download/image", url=url, img=image, **{"auto": "n", **others})
        return self.outcome()

    def download_config(self, url, cfg=2, **others):
        self.start("/download/config", url=url, cfg=cfg,
                   **{"auto": "n", **(TIMES if cfg == 1 else {}), **others})
        return self.outcome()

    def download_script(self, url, name="a.scr"):
        self.start("/download/script", url=url, scr=name, act="n")
        return self.outcome()

    def upload_config(self, url, cfg, serial=7):
        self.start("/upload/config", url=url, cfg=cfg, sn=serial)
        return self.outcome("upload")

    def configuration(self):
        return self.daemon.lab("show", "running-config")


def completed(content):
    return f"Completed: {len(content)} bytes."
