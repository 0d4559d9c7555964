"""Scenes: what a client of the API does, played once for each form of answer and over both ports; and flows,
played once by one client from the start of a daemon through its restarts."""

import random

import harness
from harness import DaemonTest
from wire import REFUSED, Client, rest_reply

FORMS = ("xml", "json")


class UriTest(DaemonTest):
    """Runs a scene once for each form and port. The tests of a class share one daemon for each of these
    ways, which every scene finds as new: one VLAN, nothing pending, no session but the one in use."""

    profile = None  # of the chassis, as JSON text; the built-in one unless a class says otherwise

    def setUp(self):
        self.form = self.tls = self.daemon = self.session_in_use = None

    @classmethod
    def setUpClass(cls):
        cls.daemons = {(form, tls): harness.Daemon() for form in FORMS for tls in (False, True)}
        for daemon in cls.daemons.values():
            cls.addClassCleanup(cls.finish_one, daemon)
            if cls.profile is not None:
                daemon.use_profile(cls.profile)
            daemon.start()
            daemon.lab("limit", "settle-milliseconds", "1")  # no scene has to wait for pending changes

    @classmethod
    def finish_one(cls, daemon):
        complaints = daemon.finish()
        if complaints:
            raise AssertionError(complaints)

    def each_way(self, scene):
        for (self.form, self.tls), self.daemon in self.daemons.items():
            with self.subTest(tls=self.tls, form=self.form):
                self.session_in_use = self.session(self.daemon, tls=self.tls)
                try:
                    scene()
                finally:
                    self.tidy_up()

    def tidy_up(self):
        """Leaves the daemon as it was when it was new."""
        self.daemon.lab("release")
        self.daemon.lab("reload")  # nothing was ever saved, so that is factory state
        self.daemon.lab("wait")
        with Client(self.daemon) as client:
            for line in harness.read_text(self.daemon.session_file).splitlines():
                client.ask("DELETE", f"/login?sessionkey={line.split(';')[1]}")
        self.assertEqual(harness.read_text(self.daemon.session_file), "")

    def check(self, method, uri, outcome, data=None, variables=(), body=None):
        """One request with the session's key; all bytes of the reply are compared."""
        reply = self.session_in_use.ask(method, uri, f"format={self.form}", *variables, body=body)
        self.assertEqual(reply.raw, rest_reply(*outcome, data, self.form),
                         f"{method} {uri} {variables} {body}")

    def put(self, uri, value, outcome):
        self.check("PUT", uri, outcome, variables=(f"value={value}",))

    def create_vlans(self, *vids):
        for vid in vids:
            self.check("POST", f"/vlans/{vid}", (0, f"Create VLAN {vid} successfully."))

    def assert_missing_value_is_refused(self, method, uri, name="value", others=()):
        for variables in ((), (f"{name}=",), (f"{name}={'1' * 256}",)):
            self.check(method, uri, REFUSED, variables=(*variables, *others))


class FlowTest(DaemonTest):
    """A daemon of the test's own and one session, which outlives restarts."""

    def setUp(self):
        self.daemon = self.start_daemon()
        self.logged_in = self.session(self.daemon)

    def ask(self, method, uri, *variables):
        """A request that must succeed; returns the answer's text."""
        reply = self.logged_in.ask(method, uri, *variables)
        self.assertEqual(reply.code(), 0, f"{method} {uri} {variables}: {reply.text()}")
        return reply.text()

    def restart(self):
        self.daemon.restart()
        self.logged_in = self.session(self.daemon)

    def assert_restarts_keep_everything(self):
        """Returns what everything() answers, before the restarts as after them."""
        before = self.everything()
        configuration = self.daemon.lab("show", "running-config")
        for _ in range(2):  # from snapshot and journal, then from the snapshot that start-up made
            self.restart()
            self.assertEqual(self.daemon.lab("show", "running-config"), configuration)
            self.assertEqual(self.everything(), before)
        return before

    def assert_random_changes_survive(self, seed, journal_bytes):
        """Requests of random_change() and sudden deaths by turns; everything() is the same after each."""
        choose = random.Random(seed)
        self.daemon.lab("limit", "journal-bytes", str(journal_bytes))
        for _ in range(4):
            accepted = 0
            for _ in range(250):
                method, uri, variables = self.random_change(choose)
                accepted += self.logged_in.ask(method, uri, *variables).code() == 0
            self.assertGreater(accepted, 50)
            before = self.everything()
            self.restart()
            self.assertEqual(self.everything(), before)
