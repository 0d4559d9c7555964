"""Transfers between the switch and file servers, by every scheme: what is stored and sent, and what is told
of it."""

import contextlib
import hashlib
import io
import os
import re
import tarfile

import harness
from harness import eventually
from servers import FAR, response
from system import APPLIED, LISTED, NOT_STARTED, download_status, scripts, startup_info, upload_status
from transfers import SCHEMES, TIMES, TransferTest, completed
from wire import FAILED, GOT, REFUSED


class Images(TransferTest):
    def test_by_every_scheme_with_progress(self):
        for number, scheme in enumerate(SCHEMES):
            with self.subTest(scheme):
                content = os.urandom(300000 + number)
                image = ("active", "backup")[number % 2]
                with self.half_way(scheme, content) as url:
                    self.start("/download/image", url=url, img=image, auto="n")
                    said = self.wait_for_status(rf"Receiving: [1-9]\d* of {len(content)} bytes\.")
                    self.assertIn(int(self.status()[1]), range(1, 100))
                    self.assertLess(int(said.split()[1]), len(content))
                self.assertEqual(self.outcome(), completed(content))
                self.assert_answers(self.logged_in.ask("GET", "/download/status"), GOT,
                                    download_status(completed(content), 100))
                self.assertEqual(self.stored(f"images/{image}"), content)
                self.assert_listed(image, content)

    def assert_listed(self, image, content):
        digest = hashlib.sha256(content).hexdigest()
        self.assertRegex(self.daemon.lab("show", "images"), rf"(?m)^{image} {len(content)} {digest} \S+ \S+$")

    @contextlib.contextmanager
    def half_way(self, scheme, content):
        """The URL of a file of which only the half comes while this lasts."""
        server = self.servers[scheme]
        server.write("a.img", content)
        way = server.slow_way(len(content) // 2)
        self.addCleanup(way.finish)
        yield server.url("a.img", address=FAR)
        way.free.set()

    def test_with_a_password_and_without_one(self):
        content = os.urandom(1000000)
        for scheme in ("http", "https"):
            for name in ("a.img", "private/a.img"):
                self.servers[scheme].write(name, content)
                self.assertEqual(self.download_image(self.servers[scheme].url(name)), completed(content),
                                 name)
                self.assertEqual(self.stored("images/active"), content)
                os.unlink(self.stored_path("images/active"))

    def test_an_empty_one_is_none(self):
        self.daemon.expect_log(r"empty")
        self.assertRegex(self.download_image(self.answering(response("200 OK")).url()), r"^Failed: \S.*\.$")
        self.assertIsNone(self.stored("images/active"))

    def test_a_size_that_is_not_told(self):
        server = self.answering(b"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + b"x" * 5000)
        self.assertEqual(self.download_image(server.url()), "Completed: 5000 bytes.")
        server = self.answering(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                b"3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n")
        self.assertEqual(self.download_image(server.url()), "Completed: 5 bytes.")
        self.assertEqual(self.stored("images/active"), b"abcde")


class Configurations(TransferTest):
    SCHEMES = ("tftp", "http", "scp")

    def test_download(self):
        text = b"vlan 10\nvlan 10 name \"web\"\n! a comment\n"
        for cfg, name, scheme in ((1, "startup-config", "scp"), (2, "backup-config", "tftp")):
            self.servers[scheme].write("c.txt", text)
            self.assertEqual(self.download_config(self.servers[scheme].url("c.txt"), cfg), completed(text))
            self.assertEqual(self.stored(name), text)
        self.assertEqual(self.configuration(), "")  # nothing of it runs
        self.assertIn("<cfg_modified>yes<", self.ask("GET", "/download/startupCfgInfo"))
        self.restart()
        self.assertEqual((self.stored("startup-config"), self.configuration()), (text, ""))
        self.ask("POST", "/system/reload", "value=1")
        eventually(lambda: self.configuration() == "vlan 10\nvlan 10 name web\n", "the new one runs")

    def test_download_with_automatic_reload(self):
        self.servers["http"].write("c.txt", b"vlan 10\n")
        self.assertEqual(self.download_config(self.servers["http"].url("c.txt"), 1, auto="y"),
                         "Completed: 8 bytes.")
        eventually(lambda: self.configuration() == "vlan 10\n", "the new one runs")
        self.assert_answers(self.logged_in.ask("GET", "/download/startupCfgInfo"), GOT,
                            startup_info(TIMES["cfgtime"].split()[0], TIMES["updatetime"], "no"))

    def test_a_failed_download_reloads_nothing(self):
        self.ask("POST", "/vlans/10")
        url = self.servers["http"].url("nothing")
        self.assertRegex(self.download_config(url, 1, auto="y"), "^Failed")
        self.assertRegex(self.download_image(url, auto="y"), "^Failed")
        self.assertEqual(self.vlan_ids(self.logged_in), [1, 10])

    def test_one_that_does_not_apply_is_refused_whole(self):
        self.daemon.expect_log(r"line 2|this is no text")
        good, bad = b"vlan 10\n", b"vlan 20\nvlan 9999\n"
        self.servers["http"].write("good", good)
        self.servers["http"].write("bad", bad)
        for cfg, name in ((1, "startup-config"), (2, "backup-config")):
            self.download_config(self.servers["http"].url("good"), cfg)
            self.assertRegex(self.download_config(self.servers["http"].url("bad"), cfg), r"^Failed: .*line 2")
            self.assertEqual(self.stored(name), good)
        for content in (b"\0", b"vlan 10\0\n", b"\xff\xfe", b"no such line\n", os.urandom(1000)):
            self.daemon.expect_log(r"line 1")
            self.servers["http"].write("bad", content)
            self.assertRegex(self.download_config(self.servers["http"].url("bad")), "^Failed: ")
            self.assertEqual(self.stored("backup-config"), good)

    def test_upload(self):
        self.ask("POST", "/vlans/10")
        self.daemon.lab("save")
        self.ask("POST", "/vlans/20")
        self.servers["http"].write("b", b"vlan 30\n")
        self.download_config(self.servers["http"].url("b"))
        self.servers["http"].write("s", b"vlan 40\n")
        self.download_script(self.servers["http"].url("s"), "forty.scr")
        expected = {1: b"vlan 10\n", 2: b"vlan 30\n", 3: b"vlan 10,20\n"}
        for cfg, content in expected.items():
            for scheme, server in self.servers.items():
                name = f"{cfg}-{scheme}"
                self.assertEqual(self.upload_config(server.url(name), cfg, cfg), completed(content))
                self.assert_answers(self.logged_in.ask("GET", "/upload/status"), GOT,
                                    upload_status(completed(content), 100, cfg))
                self.assertEqual(server.read(name), content)
        self.upload_config(self.servers["http"].url("all.tar"), 4)
        with tarfile.open(fileobj=io.BytesIO(self.servers["http"].read("all.tar"))) as archive:
            found = {member.name: archive.extractfile(member).read() for member in archive if member.isfile()}
        self.assertEqual(found, {"startup-config": expected[1], "backup-config": expected[2],
                                 "running-config": expected[3], "scripts/forty.scr": b"vlan 40\n"})

    def test_an_answer_that_ends_in_its_head_is_no_empty_file(self):
        self.servers["http"].write("good", b"vlan 10\n")
        self.download_config(self.servers["http"].url("good"))
        for answer in (b"HTTP/1.1 200 OK\r\n", b"HTTP/1.1 200 OK\r\nContent-Le",
                       b"HTTP/1.1 200 OK\r\nContent-Length: 0\r\n"):
            self.assertRegex(self.download_config(self.answering(answer).url()), "^Failed: ")
            self.assertEqual(self.stored("backup-config"), b"vlan 10\n")
        self.assertEqual(self.download_config(self.answering(response("200 OK")).url()),
                         "Completed: 0 bytes.")
        self.assertEqual(self.stored("backup-config"), b"")

    def test_there_may_be_nothing_to_upload(self):
        self.daemon.expect_log(r"cannot be started: ")
        url = self.servers["http"].url("x")
        for cfg in (1, 2):
            self.refuse(NOT_STARTED, "/upload/config", url=url, cfg=cfg, sn=1)
        self.refuse(NOT_STARTED, "/upload/script", url=url, scr="a.scr")
        self.assertEqual(self.upload_config(url, 3), "Completed: 0 bytes.")  # factory state is an empty text
        self.assertEqual(self.servers["http"].read("x"), b"")


class Scripts(TransferTest):
    SCHEMES = ("ftp", "http", "sftp", "scp")

    def listed(self):
        return re.findall("<filename>([^<]*)<", self.ask("GET", "/script/list"))

    def script(self, method, uri, name, outcome, data=None):
        self.assert_answers(self.logged_in.ask(method, uri, f"scr={name}"), outcome, data)

    def test_a_script_from_its_coming_to_its_going(self):
        text = b"vlan 10\nhostname leaf1\n"
        for scheme, server in self.servers.items():
            server.write("s", text)
            self.assertEqual(self.download_script(server.url("s"), f"{scheme}.scr"), completed(text))
        names = sorted(f"{scheme}.scr" for scheme in self.servers)
        self.assert_answers(self.logged_in.ask("GET", "/script/list"), LISTED, scripts(*names))
        self.script("POST", "/script/apply", "scp.scr", (0, "Apply script successfully."), {})
        self.assertEqual(self.configuration(), "hostname leaf1\nvlan 10\n")
        for scheme, server in self.servers.items():
            self.start("/upload/script", url=server.url("back"), scr="ftp.scr")
            self.assertEqual(self.outcome("upload"), completed(text))
            self.assertEqual(server.read("back"), text)
        self.restart()
        self.assertEqual(self.listed(), names)
        for name in names:
            self.script("DELETE", "/script", name, (0, "Delete the script file successfully."), {})
        self.assert_answers(self.logged_in.ask("GET", "/script/list"), LISTED, scripts())
        self.script("POST", "/script/apply", "scp.scr", REFUSED)

    def test_applied_at_once(self):
        server = self.servers["http"]
        server.write("good", b"vlan 10\nno vlan 10\nvlan 20\n")
        reply = self.post("/download/script", url=server.url("good"), scr="a.scr", act="y")
        self.assert_answers(reply, APPLIED, {})
        self.assertEqual(self.configuration(), "vlan 20\n")
        self.refuse(NOT_STARTED, "/download/script", url=server.url("nothing"), scr="b.scr", act="y")
        self.assertEqual(self.listed(), ["a.scr"])

    def test_its_lines_are_logged_when_that_is_wanted(self):
        server = self.servers["http"]
        for mode in (0, 1):
            self.ask("PUT", "/logging/cli/mode", f"value={mode}")
            server.write("s", f"vlan 1{mode}\nhostname leaf{mode}\n".encode())
            self.post("/download/script", url=server.url("s"), scr="a.scr", act="y")
        said = [(severity, text) for severity, _, text in self.daemon.log_lines() if text.startswith("CLI")]
        self.assertEqual(said, [("NOTICE", "CLI: vlan 11"), ("NOTICE", "CLI: hostname leaf1")])

    def test_what_does_not_apply_changes_nothing(self):
        """A script is stored when each line is one of the language, and applied when all can be."""
        self.daemon.expect_log(r"line 3")
        server = self.servers["http"]
        server.write("unknown", b"vlan 10\n\nnonsense\n")
        server.write("impossible", b"vlan 10\n\nvlan 30 routing interface 226\n")
        self.refuse(NOT_STARTED, "/download/script", url=server.url("unknown"), scr="a.scr", act="y")
        self.assertEqual(self.listed(), [])
        self.refuse(FAILED, "/download/script", url=server.url("impossible"), scr="a.scr", act="y")
        self.assertEqual(self.listed(), ["a.scr"])
        self.script("POST", "/script/apply", "a.scr", FAILED)
        self.assertEqual(self.configuration(), "")
        lines = [text for _, _, text in self.daemon.log_lines() if "line 3" in text]
        self.assertGreaterEqual(len(lines), 3)

    def test_there_is_room_for_so_many(self):
        self.limit("scripts", 2)
        server = self.servers["http"]
        server.write("s", b"vlan 10\n")
        for name in ("a.scr", "b.scr", "b.scr"):
            self.assertEqual(self.download_script(server.url("s"), name), "Completed: 8 bytes.")
        self.refuse(REFUSED, "/download/script", url=server.url("s"), scr="c.scr", act="n")
        self.assertEqual(self.listed(), ["a.scr", "b.scr"])

    def test_names(self):
        server = self.servers["http"]
        server.write("s", b"vlan 10\n")
        longest = "x" * 92 + ".scr"
        self.assertEqual(self.download_script(server.url("s"), longest), "Completed: 8 bytes.")
        for name in ("../a.scr", "a/b.scr", "/a.scr", "..", ".a.scr", "a.txt", "a b.scr", "a\nb.scr",
                     "x" + longest, "ä.scr", "a.scr/", "a.SCR"):
            self.refuse(REFUSED, "/download/script", url=server.url("s"), scr=name, act="n")
            self.refuse(REFUSED, "/upload/script", url=server.url("back"), scr=name)
        self.assertEqual(self.listed(), [longest])
        self.assertEqual(sorted(os.listdir(self.stored_path("scripts"))), [longest])


if __name__ == "__main__":
    harness.main()
