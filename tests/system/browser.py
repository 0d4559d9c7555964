"""A browser without a window: Chromium, driven over WebDriver (plain HTTP and JSON)."""

import base64
import contextlib
import json
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import urllib.error
import urllib.request

from harness import eventually, free_ports, prepare_child
from wire import PATIENCE

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the member that holds an element's reference
ARGUMENTS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--window-size=1280,1000")


class Browser:
    """One browser with a profile of its own; close() ends it."""

    def __init__(self):
        self.cleanup = contextlib.ExitStack()
        try:
            self.folder = tempfile.mkdtemp(prefix="kestrel-browser-")
            self.cleanup.callback(eventually, self.is_removed, "the browser's folder is removed")
            driver_port, self.browser_port = free_ports(2)
            self.start("/usr/bin/chromium", *ARGUMENTS, f"--user-data-dir={self.folder}/profile",
                       f"--remote-debugging-port={self.browser_port}", "about:blank")
            eventually(self.takes_connections, "chromium takes connections")
            self.start("chromedriver", f"--port={driver_port}", f"--log-path={self.folder}/driver.log")
            self.driver = f"http://127.0.0.1:{driver_port}"
            eventually(self.is_ready, "chromedriver is ready")
            self.session = "/session/" + self.open_session()
            self.cleanup.callback(self.command, "DELETE", self.session)
        except BaseException:
            self.close()
            raise

    def close(self):
        self.cleanup.close()

    def is_removed(self):
        """Removes the folder; processes of the browser may still be ending, and writing into it."""
        shutil.rmtree(self.folder, ignore_errors=True)
        return not os.path.exists(self.folder)

    def start(self, *command):
        # No session bus, no user's settings, no language.
        environment = {"PATH": os.environ["PATH"], "HOME": self.folder, "TMPDIR": self.folder, "LC_ALL": "C",
                       "DBUS_SESSION_BUS_ADDRESS": "disabled:"}
        process = self.cleanup.enter_context(subprocess.Popen(
            command, env=environment, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, preexec_fn=prepare_child({}), start_new_session=True))
        self.cleanup.callback(os.killpg, process.pid, signal.SIGKILL)

    def takes_connections(self):
        try:
            with socket.create_connection(("127.0.0.1", self.browser_port)):
                return True
        except ConnectionRefusedError:
            return False

    def is_ready(self):
        try:
            return self.command("GET", "/status")["ready"]
        except urllib.error.URLError:
            return False

    def open_session(self):
        # A driver that starts the browser itself looks for it at "localhost", which not every machine knows.
        options = {"debuggerAddress": f"127.0.0.1:{self.browser_port}"}
        wanted = {"browserName": "chrome", "goog:chromeOptions": options,
                  "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}
        return self.command("POST", "/session", {"capabilities": {"alwaysMatch": wanted}})["sessionId"]

    # Commands

    def command(self, method, path, parameters=None):
        """One command; returns its value."""
        body = None if method != "POST" else json.dumps(parameters or {}).encode()
        request = urllib.request.Request(self.driver + path, body, {"Content-Type": "application/json"},
                                         method=method)
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            with opener.open(request, timeout=PATIENCE) as reply:
                return json.load(reply)["value"]
        except urllib.error.HTTPError as refused:
            raise AssertionError(f"{method} {path}: {refused.read().decode()}") from refused

    def open(self, url):
        self.command("POST", self.session + "/url", {"url": url})

    def back(self):
        self.command("POST", self.session + "/back")

    def address(self):
        return self.command("GET", self.session + "/url")

    def run(self, script):
        """The value that a script in the page returns."""
        return self.command("POST", self.session + "/execute/sync", {"script": script, "args": []})

    def click_link(self, text):
        element = self.command("POST", self.session + "/element", {"using": "link text", "value": text})
        self.command("POST", f"{self.session}/element/{element[ELEMENT]}/click")

    def screenshot(self):
        """What is seen, as the bytes of a PNG file."""
        return base64.b64decode(self.command("GET", self.session + "/screenshot"))

    def messages(self):
        """What the browser had to say about pages since it was asked last."""
        return [entry["message"] for entry in self.command("POST", self.session + "/se/log", {"type": "browser"})]

    def requests(self):
        """The addresses that pages from the network have asked for since this was called last."""
        events = [json.loads(entry["message"])["message"] for entry in
                  self.command("POST", self.session + "/se/log", {"type": "performance"})]
        return [event["params"]["request"]["url"] for event in events
                if event["method"] == "Network.requestWillBeSent" and
                event["params"]["documentURL"].startswith("http")]
