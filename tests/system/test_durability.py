"""Every acknowledged change survives: SIGKILL at any moment, a full disk, a torn journal."""

import os
import random
import re
import resource
import threading

import harness
import wire
from harness import DaemonTest
from wire import FAILED, GOT, Client, Closed, log_in


def journal_path(daemon):
    """The journal in use; there is one."""
    (name,) = [name for name in os.listdir(daemon.state_dir) if re.fullmatch(r"journal-\d+", name)]
    return os.path.join(daemon.state_dir, name)


class DurabilityTest(DaemonTest):
    def observe(self, daemon):
        """What the switch holds: {VLAN id: name}, read over HTTP from a new session."""
        session = self.session(daemon)
        names = {}
        for vid in self.vlan_ids(session):
            text = session.ask("GET", f"/vlans/{vid}").text()
            names[vid] = text[text.index("<name>") + 6:text.index("</name>")]
        return names


class SuddenDeath(DurabilityTest):
    """Changes VLANs at random over one connection while another thread kills the daemon. `known` is what was
    acknowledged; the one change that was under way when the daemon died may or may not have happened."""

    VIDS = range(2, 50)

    def setUp(self):
        self.random = random.Random(7)
        self.known = {1: "default"}

    def next_change(self):
        """(method, URI, variables, the switch after it)"""
        after = dict(self.known)
        vid = self.random.choice(self.VIDS)
        if vid not in after:
            after[vid] = ""
            return "POST", f"/vlans/{vid}", (), after
        if self.random.random() < 0.4:
            del after[vid]
            return "DELETE", f"/vlans/{vid}", (), after
        after[vid] = f"name {self.random.randrange(10**6)}"
        return "PUT", f"/vlans/{vid}/name", (f"value={after[vid].replace(' ', '+')}",), after

    def change_until_death(self, daemon):
        """Returns the number of acknowledged changes and the switch as the last, unacknowledged one would
        have it."""
        with wire.Session(daemon) as session:
            threading.Timer(self.random.uniform(0.01, 0.3), daemon.process.kill).start()
            for count in range(1, 1000000):
                method, uri, variables, after = self.next_change()
                try:
                    reply = session.ask(method, uri, *variables)
                except (Closed, OSError):
                    return count - 1, after
                self.assertEqual(reply.code(), 0, reply.text())
                self.known = after
        raise AssertionError("the daemon was never killed")

    def run_rounds(self, rounds, prepare):
        daemon = self.new_daemon()
        # A line that was just being written may be cut short.
        daemon.expect_log(r"journal-\d+: the last line was not written to its end and is dropped")
        changes = 0
        for number in range(rounds):
            daemon.start()
            prepare(daemon)
            count, under_way = self.change_until_death(daemon)
            daemon.process.wait()
            changes += count
            daemon.start()
            found = self.observe(daemon)
            self.assertIn(found, (self.known, under_way), f"round {number} after {count} changes")
            self.known = found
            daemon.kill()
        self.assertGreater(changes, rounds)

    def test_killed_at_random_moments(self):
        self.run_rounds(10, lambda daemon: None)

    def test_killed_at_random_moments_while_the_journal_is_compacted_all_the_time(self):
        def prepare(daemon):
            daemon.lab("limit", "journal-bytes", "200")
            daemon.lab("limit", "settle-milliseconds", "1")
        self.run_rounds(10, prepare)

    def test_hundreds_of_changes_survive_many_restarts(self):
        daemon = self.start_daemon()
        for _ in range(5):
            with wire.Session(daemon) as session:
                for _ in range(200):
                    method, uri, variables, after = self.next_change()
                    self.assertEqual(session.ask(method, uri, *variables).code(), 0)
                    self.known = after
            daemon.restart()
            self.assertEqual(self.observe(daemon), self.known)


class FullDisk(DurabilityTest):
    def test_changes_fail_and_nothing_changes_until_there_is_room_again(self):
        daemon = self.start_daemon()
        daemon.expect_log(r"lines were dropped: the log could not be written")
        daemon.expect_log(r"File too large")
        session = self.session(daemon)
        self.assert_answers(session.ask("POST", "/vlans/10"), (0, "Create VLAN 10 successfully."))
        self.assert_answers(session.ask("PUT", "/vlans/10/name", "value=kept"),
                            (0, "Update name of VLAN 10 successfully."))
        size = os.path.getsize(journal_path(daemon))
        # Not even one line fits, or a part of the next one does.
        for room in (0, 3):
            daemon.limit_files(size + room)
            for _ in range(3):
                self.assert_answers(session.ask("POST", "/vlans/20"), FAILED)
                self.assert_answers(session.ask("PUT", "/vlans/10/name", "value=lost"), FAILED)
                self.assert_answers(session.ask("DELETE", "/vlans/10"), FAILED)
                self.assertEqual(self.vlan_ids(session), [1, 10])
                self.assertIn("<name>kept</name>", session.ask("GET", "/vlans/10").text())
            self.assertEqual(os.path.getsize(journal_path(daemon)), size)

        daemon.limit_files(resource.RLIM_INFINITY)
        self.assert_answers(session.ask("POST", "/vlans/30"), (0, "Create VLAN 30 successfully."))
        daemon.restart()
        self.assertEqual(self.observe(daemon), {1: "default", 10: "kept", 30: ""})

    def test_logging_in_works_with_a_full_disk(self):
        daemon = self.start_daemon()
        daemon.expect_log(r"lines were dropped: the log could not be written")
        daemon.limit_files(0)
        session = self.session(daemon)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))
        daemon.limit_files(resource.RLIM_INFINITY)
        self.assert_answers(session.ask("GET", "/vlans"), GOT, wire.vlan_list([1]))

    def test_a_compaction_that_finds_no_room_loses_nothing(self):
        daemon = self.start_daemon()
        daemon.expect_log(r"lines were dropped: the log could not be written")
        daemon.expect_log(r"the journal cannot be compacted: .*running-config\.next\.new: File too large")
        harness.create_vlans(self, self.session(daemon), range(100, 1000, 2))
        daemon.restart()  # all of them are in the snapshot now, and the journal is empty
        session = self.session(daemon)
        self.assertEqual(os.path.getsize(journal_path(daemon)), 0)
        snapshot = os.path.getsize(os.path.join(daemon.state_dir, "running-config"))
        daemon.limit_files(snapshot // 2)
        daemon.lab("limit", "journal-bytes", "1")
        for vid in range(2, 12):
            self.assert_answers(session.ask("POST", f"/vlans/{vid}"), (0, f"Create VLAN {vid} successfully."))
            daemon.lab("wait")
        daemon.limit_files(resource.RLIM_INFINITY)
        harness.create_vlans(self, session, [12])
        daemon.lab("wait")
        daemon.restart()
        self.assertEqual(list(self.observe(daemon)), [1, *range(2, 13), *range(100, 1000, 2)])


class TornJournal(DurabilityTest):
    def setUp(self):
        """A switch with VLANs 10 and 20 that has lost power; its journal ends with the line of VLAN 20."""
        self.daemon = self.start_daemon()
        with Client(self.daemon) as client:
            key = log_in(client)
            for vid in (10, 20):
                self.assert_answers(client.ask("POST", f"/vlans/{vid}?sessionkey={key}"),
                                    (0, f"Create VLAN {vid} successfully."))
        self.daemon.kill()
        self.journal = journal_path(self.daemon)

    def warnings(self):
        return [text for severity, place, text in self.daemon.log_lines()
                if severity == "WARNING" and place != harness.AUDIT]

    def start_after_tearing(self, lost):
        name = os.path.basename(self.journal)
        dropped = f"{self.journal}: the last line was not written to its end and is dropped ({lost} bytes)"
        self.daemon.expect_log(f"{name}: the last line was not written to its end and is dropped")
        self.daemon.start()
        self.assertEqual(self.warnings(), [dropped])

    def test_a_line_cut_short_is_dropped_with_one_warning(self):
        size = os.path.getsize(self.journal)
        os.truncate(self.journal, size - 3)
        self.start_after_tearing(len("vlan 20\n") - 3)
        self.assertEqual(self.observe(self.daemon), {1: "default", 10: ""})
        self.daemon.restart()
        self.assertEqual(len(self.warnings()), 1)
        self.assertEqual(self.observe(self.daemon), {1: "default", 10: ""})

    def test_a_line_without_its_end_is_dropped_even_when_it_could_be_read(self):
        with open(self.journal, "a", encoding="ascii") as file:
            file.write("vlan 30")
        self.start_after_tearing(7)
        self.assertEqual(self.observe(self.daemon), {1: "default", 10: "", 20: ""})

    def test_garbage_at_the_end_is_dropped(self):
        with open(self.journal, "ab") as file:
            file.write(bytes(range(128, 256)))
        self.start_after_tearing(128)
        self.assertEqual(self.observe(self.daemon), {1: "default", 10: "", 20: ""})

    def test_a_whole_line_that_cannot_be_read_stops_the_start_and_is_named(self):
        """Guessing what it may have been would lose what the user configured, silently."""
        with open(self.journal, "a", encoding="ascii") as file:
            file.write("vlan ten\nvlan 30\n")
        before = harness.read_text(self.journal)
        self.daemon.launch()
        self.daemon.expect_log(re.escape(self.journal) + ", line 3")
        self.daemon.expect_log("Failed to initialize RPC to OpEN")
        self.assertEqual(self.daemon.wait_for_exit(), 2)
        self.assertIn(f"{self.journal}, line 3", self.daemon.stderr())
        self.assertEqual(harness.read_text(self.journal), before)


if __name__ == "__main__":
    harness.main()
