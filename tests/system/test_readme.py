"""The README is true: its commands are run as they stand (on free ports and in a folder of their own) and print what it
says, and ./run.sh brings the switch up, keeps it, and says clearly what stands in its way."""

import os
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def blocks(language):
    fenced = re.findall(r"^```(\w*)\n(.*?)^```$", (SOURCE / "README.md").read_text(), re.M | re.S)
    return [text for tag, text in fenced if tag == language]


class RunScript:
    """./run.sh with ports and a folder of its own, until what it prints says that the switch is up."""

    def __init__(self, var):
        self.http, self.https, self.var = free_port(), free_port(), var
        environment = {k: v for k, v in os.environ.items() if not k.startswith("KESTREL_")}
        self.process = subprocess.Popen(
            ["./run.sh", "--http", str(self.http), "--https", str(self.https)], cwd=SOURCE, text=True,
            env=dict(environment, KESTREL_VAR=var), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            start_new_session=True)
        self.output = ""
        for line in self.process.stdout:
            self.output += line
            if "/vlans?format=json" in line:  # the last line of the session it prints
                return
        raise AssertionError(f"run.sh ended: {self.output}")

    def daemon(self):
        children = Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text().split()
        daemons = [int(pid) for pid in children if "restful_api_engine" in Path(f"/proc/{pid}/cmdline").read_text()]
        assert len(daemons) == 1, children
        return daemons[0]

    def adapt(self, commands):
        adapted = commands.replace(":8080", f":{self.http}").replace(":8446", f":{self.https}")
        return adapted.replace("var/", f"{self.var}/")

    def paste(self, commands):
        """Runs commands as somebody who pastes them into a terminal in the project's folder."""
        result = subprocess.run(["bash", "-c", self.adapt(commands)], cwd=SOURCE, capture_output=True, text=True)
        return result.stdout + result.stderr

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(timeout=20)
        self.process.stdout.close()


class Readme(unittest.TestCase):
    def setUp(self):
        # Relative and short: a certificate's path in a listening port has at most 99 characters.
        (SOURCE / "build").mkdir(exist_ok=True)
        self.var = os.path.relpath(tempfile.mkdtemp(prefix="readme-", dir=SOURCE / "build"), SOURCE)
        self.addCleanup(shutil.rmtree, SOURCE / self.var, True)

    def start(self):
        run = RunScript(self.var)
        self.addCleanup(run.process.stdout.close)
        self.addCleanup(lambda: run.process.poll() is None and run.stop())
        return run

    def test_the_two_commands_are_the_ones_that_this_and_ci_run(self):
        self.assertEqual(blocks("sh")[:2], ["./run.sh\n", "./test.sh\n"])
        self.assertIn("exec ./test.sh\n", (SOURCE / ".ci/run").read_text())

    def test_first_session_prints_what_the_readme_says_and_survives_sigkill(self):
        session, log_in, commands, lab = blocks("sh")[2:]
        expected, shown_by_commands = blocks("")
        run = self.start()
        self.assertEqual(run.paste(session), expected)
        own = f"export HOME=$PWD/{self.var}/home KESTRELCTL_SERVER=https://localhost:{run.https}\n"
        self.assertRegex(run.paste(own + log_in), r"is trusted from now on\.\nLog in successfully\.\n\Z")
        self.assertEqual(run.paste("exec 2>&1\n" + own + log_in.splitlines()[0] + "\n" + commands), shown_by_commands)
        self.assertEqual(run.paste(lab), "vlan 10,20\nvlan 10 name servers\nvlan 20 name storage\n")
        os.kill(run.daemon(), signal.SIGKILL)
        run.process.wait(timeout=20)

        again = self.start()
        login, read = session.splitlines()[0], session.splitlines()[3]
        self.assertEqual(again.paste(login + "\n" + read), expected.splitlines()[2] + "\n")
        again.stop()

    def test_session_that_run_sh_prints_works_as_pasted(self):
        run = self.start()
        printed = "".join(line.strip() + "\n" for line in run.output.splitlines() if re.match(r"\s+(KEY=|curl )", line))
        bodies = run.paste(printed.replace("curl ", "curl -s "))
        codes = re.findall(r'<rlt_code>(\d+)<|"rlt_code": (\d+)', bodies)
        self.assertEqual([a or b for a, b in codes], ["0", "0", "0", "0"], bodies)
        run.stop()
        daemon_gone = subprocess.run(["curl", "-s", f"http://127.0.0.1:{run.http}/"], capture_output=True)
        self.assertNotEqual(daemon_gone.returncode, 0)

    def test_taken_port_is_named(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            port = taken.getsockname()[1]
            result = subprocess.run(["./run.sh", "--http", str(port), "--https", str(free_port())], cwd=SOURCE, text=True,
                                    env=dict(os.environ, KESTREL_VAR=self.var), capture_output=True)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, f"run.sh: port {port} is taken by another program; "
                                        "choose others with --http and --https\n")

    def test_files_that_the_readme_names_are_there(self):
        for name in re.findall(r"\]\(([^)#]+)\)", (SOURCE / "README.md").read_text()):
            self.assertTrue((SOURCE / name).exists(), name)


if __name__ == "__main__":
    unittest.main()
