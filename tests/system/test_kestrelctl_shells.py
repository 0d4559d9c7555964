"""kestrelctl in shells, and what is installed with it: completion in bash and zsh, manual pages, the guide."""

import glob
import os
import re
import subprocess
import unittest

from harness import program
from kestrelctl import Kestrelctl, Screen

SOURCE = os.path.abspath(os.environ.get("KESTREL_SOURCE") or os.path.join(os.path.dirname(__file__), "../.."))
COMPLETION = os.path.join(SOURCE, "tools/kestrelctl/completion")
PAGES = sorted(glob.glob(os.path.join(SOURCE, "docs/man/*.[18]")))


class ShellTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.ctl = Kestrelctl()
        self.addCleanup(self.ctl.remove)
        folder = os.path.dirname(program("KESTREL_CTL"))
        self.environment = {**self.ctl.environment, "PATH": folder + ":" + os.environ["PATH"]}


class Bash(ShellTest):
    # Splits a line as bash does for completion: at blanks, and around "=" and ":".
    SCRIPT = r"""
source "$1"
COMP_LINE=$2 COMP_POINT=${#2} COMP_WORDS=()
rest=$2
while [[ $rest =~ ^[[:blank:]]*([=:]+|[^[:blank:]=:]+) ]]; do
  COMP_WORDS+=("${BASH_REMATCH[1]}")
  rest=${rest#"${BASH_REMATCH[0]}"}
done
[[ $2 != *[[:blank:]=:] ]] || COMP_WORDS+=("")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
_kestrelctl
printf '%s\n' "${COMPREPLY[@]}"
"""

    def candidates(self, line):
        done = subprocess.run(["bash", "--norc", "-c", self.SCRIPT, "bash", COMPLETION + "/kestrelctl.bash", line],
                              env=self.environment, capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout.split()

    def test_words_verbs_and_values(self):
        self.assertEqual(self.candidates("kestrelctl vl"), ["vlans"])
        self.assertEqual(self.candidates("kestrelctl vlans 10 "), ["create", "delete", "set", "show"])
        self.assertEqual(self.candidates("kestrelctl vlans 10 set n"), ["name"])
        self.assertEqual(self.candidates("kestrelctl if 3 set adminState e"), ["enable"])
        self.assertEqual(self.candidates("kestrelctl nonsense "), [])

    def test_only_what_is_behind_an_equals_sign_is_replaced(self):
        rule = "kestrelctl acl ip name web add rule "
        self.assertEqual(self.candidates(rule + "acti"), ["action="])
        self.assertEqual(self.candidates(rule + "action="), ["deny", "permit"])
        self.assertEqual(self.candidates(rule + "action=p"), ["permit"])
        self.assertEqual(self.candidates(rule + "action=permit protoc"), ["protocol="])

    def test_colons_and_options_are_passed_over(self):
        self.assertEqual(self.candidates("kestrelctl --server https://[::1]:8446 vlans 10 set "), ["name"])
        self.assertEqual(self.candidates("kestrelctl bgp ipv6 neighbor 2001:db8::1 scope 3 set u"), ["updateSource"])
        self.assertEqual(self.candidates("kestrelctl vlans --j"), ["--json"])


class OnATerminal(ShellTest):
    """Shells as people use them: which line is run after the Tab key."""

    def complete_lines(self, command, prepare):
        shell = Screen(command, self.environment)
        self.addCleanup(shell.stop)
        shell.type(prepare + "; echo rea''dy\n")
        shell.wait_for("ready\r\n")
        for typed, run in (("kestrelctl vl\t10 set na\tservers", "kestrelctl vlans 10 set name servers"),
                           ("kestrelctl acl ip name web add rule acti\tper\tlo\ty\t",
                            "kestrelctl acl ip name web add rule action=permit log=yes")):
            shell.shown = ""
            shell.type(typed + "\n")
            shell.wait_for(f"RUN<{run}")
            shell.wait_for("kestrelctl: ")  # nobody is logged in

    def test_bash_completes(self):
        self.complete_lines(["bash", "--norc", "-i"],
                            f"source {COMPLETION}/kestrelctl.bash; trap 'echo \"RUN<$BASH_COMMAND>\"' DEBUG")

    def test_zsh_completes(self):
        self.complete_lines(["zsh", "-f", "-i"], f"fpath=({COMPLETION} $fpath); autoload -Uz compinit; compinit -u -D; "
                                                 "preexec() { echo \"RUN<$1>\" }")


class Manual(unittest.TestCase):
    def test_each_program_has_a_page(self):
        self.assertEqual([os.path.basename(page) for page in PAGES],
                         ["kestrel-lab.1", "kestrel-passwd.1", "kestrelctl.1", "restful_api_engine.8"])

    def test_pages_are_clean(self):
        # Which other pages are installed here says nothing about these.
        elsewhere = re.compile(r"^.*(referenced manual not found: Xr|outdated mandoc.db).*\n", re.M)
        for page in PAGES:
            done = subprocess.run(["mandoc", "-T", "lint", "-W", "style", page], capture_output=True, text=True,
                                  check=False)
            self.assertEqual(elsewhere.sub("", done.stdout + done.stderr), "")

    def test_page_of_kestrelctl_tells_of_every_option_and_exit_status(self):
        with open(os.path.join(SOURCE, "docs/man/kestrelctl.1"), encoding="utf-8") as file:
            page = file.read()
        done = subprocess.run([program("KESTREL_CTL"), "help"], capture_output=True, text=True, check=True)
        options = re.findall(r"^  --(\S+)", done.stdout, re.M)
        self.assertEqual(re.findall(r"^\.It Fl Fl (\S+)", page, re.M), options)
        self.assertEqual(re.findall(r"^\.It (\d)$", page, re.M), ["0", "1", "2", "3", "4", "5"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
