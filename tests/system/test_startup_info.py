"""The record of the startup configuration and the file that it is kept in."""

import os
import shutil

import harness
from harness import DaemonTest, read_text
from scenes import FlowTest
from system import STARTING, startup_info
from wire import GOT, REFUSED

URL = "url=http%3A%2F%2F127.0.0.1%3A1%2Ffile"  # nobody listens there: the transfers all fail


class Record(FlowTest):
    def setUp(self):
        super().setUp()
        self.folder = os.path.join(self.daemon.root, "user-apps")
        self.path = os.path.join(self.folder, "startupcfg_info_doc")

    def file(self):
        return read_text(self.path)

    def write(self, text):
        with open(self.path, "w", encoding="latin-1", newline="\n") as file:
            file.write(text)

    def expect(self, made, updated, modified="no"):
        self.assert_answers(self.logged_in.ask("GET", "/download/startupCfgInfo"), GOT,
                            startup_info(made, updated, modified))

    def download(self, *variables, outcome=None):
        """A download of the startup configuration, which starts unless another outcome is expected. It is to
        reload at the end, which leaves "modified" alone; it never comes to that."""
        reply = self.logged_in.ask("POST", "/download/config", URL, "cfg=1", "auto=y", *variables)
        self.assert_answers(reply, outcome or STARTING, None if outcome else {})
        self.wait_for_end()

    def wait_for_end(self):
        harness.eventually(lambda: "<status>Connecting" not in self.ask("GET", "/download/status"), "it ends")

    def test_first_start_makes_an_empty_one(self):
        self.assertEqual(self.file(), "cfg_time:\ncfg_update:\n")
        self.expect("", "")
        self.assertFalse(os.path.exists(self.path + ".tmp"))

    def test_times_are_kept(self):
        self.download("cfgtime=2026-01-02", "updatetime=2026-01-03")
        self.assertEqual(self.file(), "cfg_time:2026-01-02\ncfg_update:2026-01-03\n")
        self.expect("2026-01-02", "2026-01-03")
        self.restart()
        self.expect("2026-01-02", "2026-01-03")

    def test_an_update_time_like_the_creation_time_stays_in_the_file(self):
        """It is compared with the creation time, on purpose."""
        self.download("cfgtime=t1", "updatetime=t1")
        self.assertEqual(self.file(), "cfg_time:t1\ncfg_update:t1\n")
        self.download("cfgtime=t1", "updatetime=t2")
        self.assertEqual(self.file(), "cfg_time:t1\ncfg_update:t1\n")
        self.expect("t1", "t1")  # the file is what counts
        self.download("cfgtime=t3", "updatetime=t4")
        self.assertEqual(self.file(), "cfg_time:t3\ncfg_update:t4\n")

    def test_a_value_with_a_blank_is_read_up_to_it(self):
        self.download("cfgtime=2026-01-02+03:04", "updatetime=03:04+05:06")
        self.assertEqual(self.file(), "cfg_time:2026-01-02 03:04\ncfg_update:03:04 05:06\n")
        self.expect("2026-01-02", "03:04")

    def test_other_lines_stay(self):
        self.write("first line\ncfg_update:old\nother:1 2\ncfg_time:older\n:\nlast:x\n")
        self.expect("older", "old")
        self.download("cfgtime=new", "updatetime=newer")
        self.assertEqual(self.file(), "first line\ncfg_update:newer\nother:1 2\ncfg_time:new\n:\nlast:x\n")

    def test_missing_keys_are_added(self):
        self.write("other:1\n")
        self.download("cfgtime=t1", "updatetime=t2")
        self.assertEqual(self.file(), "other:1\ncfg_time:t1\ncfg_update:t2\n")

    def test_missing_and_too_long_times(self):
        for variables in ((), ("updatetime=t2",), ("cfgtime=", "updatetime=t2"),
                          (f"cfgtime={'x' * 24}", "updatetime=t2")):
            self.download(*variables, outcome=REFUSED)
            self.expect("", "")
        self.download("cfgtime=t1", outcome=REFUSED)
        self.expect("t1", "")  # what was given before the mistake is kept
        self.download(f"cfgtime={'x' * 23}", f"updatetime={'y' * 24}", outcome=REFUSED)
        self.expect("x" * 23, "")
        self.assertIn("No download so far.", self.ask("GET", "/download/status"))

    def test_times_belong_to_the_startup_configuration_alone(self):
        reply = self.logged_in.ask("POST", "/download/config", URL, "cfg=2", "auto=y", "cfgtime=t1",
                                   "updatetime=t2")
        self.assert_answers(reply, STARTING, {})
        self.expect("", "")

    def test_modified_after_a_download_without_reload_until_a_restart(self):
        for cfg in ("cfg=2", "cfg=1"):
            self.expect_unmodified()
            reply = self.logged_in.ask("POST", "/download/config", URL, cfg, "auto=n", "cfgtime=t1",
                                       "updatetime=t2")
            self.assert_answers(reply, STARTING, {})
            self.assertIn("<cfg_modified>yes<", self.ask("GET", "/download/startupCfgInfo"))
            self.daemon.lab("save")
            self.assertIn("<cfg_modified>yes<", self.ask("GET", "/download/startupCfgInfo"))
            self.restart()

    def expect_unmodified(self):
        self.assertIn("<cfg_modified>no<", self.ask("GET", "/download/startupCfgInfo"))

    def test_without_its_folder(self):
        self.expect("", "")
        shutil.rmtree(self.folder)
        self.assert_answers(self.logged_in.ask("GET", "/download/startupCfgInfo"), REFUSED)
        self.download("cfgtime=t1", "updatetime=t2")
        self.expect("t1", "t2")

    def test_a_folder_in_its_place(self):
        os.unlink(self.path)
        os.mkdir(self.path)
        self.download("cfgtime=t1", "updatetime=t2", outcome=REFUSED)
        self.restart()
        self.assert_serves(self.daemon)


class FirstStart(DaemonTest):
    def test_one_that_is_there_is_read(self):
        daemon = self.new_daemon()
        os.mkdir(os.path.join(daemon.root, "user-apps"))
        with open(os.path.join(daemon.root, "user-apps", "startupcfg_info_doc"), "w",
                  encoding="ascii") as file:
            file.write("cfg_time:a\ncfg_update:b")
        daemon.start()
        reply = self.session(daemon).ask("GET", "/download/startupCfgInfo")
        self.assert_answers(reply, GOT, startup_info("a", "b"))


if __name__ == "__main__":
    harness.main()
