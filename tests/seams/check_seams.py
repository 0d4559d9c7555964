"""The seams between the parts of the tree: which folder may include which, which headers stand alone, and
what the programs take from the platform library. Works on the sources (KESTREL_SOURCE, by default the
tree this file is in) and on what was built (KESTREL_DAEMON, KESTREL_PLATFORM), with the compilers CC and
CXX."""

import os
import re
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.abspath(os.environ.get("KESTREL_SOURCE") or os.path.join(HERE, "..", ".."))
FOLDERS = ("server", "engine", "modules", "platform", "tools", "tests")

# What each part may include, as the first words of a path. The longest matching part holds.
MAY_INCLUDE = {
    "server/": ("server/",),
    "engine/": ("engine/", "server/", "platform/api/"),
    # Dispatch names the modules; nothing else of the engine knows them.
    "engine/rest_web_request_hdr.cpp": ("engine/", "server/", "platform/api/", "modules/"),
    "modules/": ("modules/", "engine/", "server/", "platform/api/"),
    "platform/api/": ("platform/api/",),
    "platform/softswitch/": ("platform/",),
    "tools/": ("tools/", "platform/api/", "platform/softswitch/"),
    "tools/api/": ("tools/api/", "modules/rest_help_document.h"),
    "tests/": tuple(folder + "/" for folder in FOLDERS),
}

PLATFORM_NAME = re.compile(r"(openapi|rpcclt_openapi|l7proc_)\w*")
EXPORTED_BESIDES = {"kestrel_lab_command"}


def files(folder, *endings):
    """Paths below a folder, relative to the tree's root."""
    found = []
    for place, _, names in os.walk(os.path.join(SOURCE, folder)):
        wanted = [os.path.join(place, name) for name in names if name.endswith(endings)]
        found += [os.path.relpath(path, SOURCE) for path in wanted]
    return sorted(found)


def read(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8", errors="replace") as file:
        return file.read()


def own_includes(path):
    """What a file includes of the tree, as paths from its root."""
    wanted = re.findall(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', read(path), re.MULTILINE)
    resolved = []
    for name in wanted:
        beside = os.path.normpath(os.path.join(os.path.dirname(path), name))
        if os.path.isfile(os.path.join(SOURCE, name)):
            resolved.append(os.path.normpath(name))
        elif os.path.isfile(os.path.join(SOURCE, beside)):
            resolved.append(beside)
    return resolved


def allowed_for(path):
    return MAY_INCLUDE[max((part for part in MAY_INCLUDE if path.startswith(part)), key=len)]


def run(*command):
    return subprocess.run(command, cwd=SOURCE, capture_output=True, text=True, check=False)


def built(variable):
    path = os.environ.get(variable, "")
    if not os.path.isfile(path):
        raise SystemExit(f"set {variable} to the built file (ctest does)")
    return path


def dynamic_symbols(path, *options):
    """Names in the dynamic symbol table of a built file."""
    listed = run("nm", "--dynamic", "--format=posix", *options, path)
    if listed.returncode != 0:
        raise AssertionError(listed.stderr)
    return {line.split()[0].split("@")[0] for line in listed.stdout.splitlines()}


def declared_functions():
    """Functions that the headers of platform/api declare."""
    names = set()
    for path in files("platform/api", ".h"):
        text = re.sub(r"/\*.*?\*/", " ", read(path), flags=re.DOTALL)
        text = re.sub(r"^\s*#.*$", "", text, flags=re.MULTILINE)
        names |= {match.group(1) for match in re.finditer(r"\b(\w+)\s*\([^;{}]*;", text)
                  if PLATFORM_NAME.fullmatch(match.group(1))}
    return names


class Includes(unittest.TestCase):
    def test_every_folder_includes_only_what_it_may(self):
        wrong, seen = [], 0
        for folder in FOLDERS:
            for path in files(folder, ".h", ".c", ".cpp"):
                for included in own_includes(path):
                    seen += 1
                    if not included.startswith(allowed_for(path)):
                        wrong.append(f"{path} includes {included}")
        self.assertEqual(wrong, [])
        self.assertGreater(seen, 100, "the sources were looked at")

    def test_includes_name_the_whole_path(self):
        """So that a reader, and this script, sees where they lead."""
        wrong = []
        for folder in FOLDERS:
            for path in files(folder, ".h", ".c", ".cpp"):
                for name in re.findall(r'^\s*#\s*include\s*"([^"]+)"', read(path), re.MULTILINE):
                    if not os.path.isfile(os.path.join(SOURCE, name)):
                        wrong.append(f'{path} includes "{name}"')
        self.assertEqual(wrong, [])

    def test_the_rules_find_what_they_forbid(self):
        for path, included in (("server/mg_conn.cpp", "engine/rest_common.h"),
                               ("engine/rest_common.cpp", "modules/rest_module_vlan.h"),
                               ("engine/main.cpp", "platform/softswitch/softswitch.h"),
                               ("modules/rest_module_vlan.cpp", "platform/softswitch/model/vlan.h"),
                               ("platform/softswitch/softswitch.cpp", "server/tidewell.h"),
                               ("platform/api/l7proc.h", "platform/softswitch/softswitch.h"),
                               ("tools/kestrel-lab.cpp", "engine/rest_common.h")):
            self.assertFalse(included.startswith(allowed_for(path)), f"{path} includes {included}")
        self.assertTrue("modules/x.h".startswith(allowed_for("engine/rest_web_request_hdr.cpp")))


class Headers(unittest.TestCase):
    FLAGS = ("-fsyntax-only", "-Wall", "-Wextra", "-Werror", "-Wshadow", "-D_GNU_SOURCE", "-I.")

    def compile_alone(self, compiler, language, standard, path, *flags):
        done = subprocess.run([compiler, f"-std={standard}", *self.FLAGS, *flags, "-x", language, "-"],
                              cwd=SOURCE, input=f'#include "{path}"\n', capture_output=True, text=True,
                              check=False)
        return "" if done.returncode == 0 else f"{path} as {standard}:\n{done.stderr}"

    def assert_all_compile(self, compiler, language, standard, paths, *flags):
        self.assertGreater(len(paths), 3, "headers were found")
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            runs = [pool.submit(self.compile_alone, compiler, language, standard, path, *flags)
                    for path in paths]
            self.assertEqual([run.result() for run in runs if run.result()], [])

    def is_compiled_alone_by_the_build(self, path):
        """Whether a source file of the header's name includes it before anything else. Tests do not count: what
        they all include is compiled into them before."""
        source = os.path.join(SOURCE, path[:-2] + ".cpp")
        return not path.startswith("tests/") and os.path.exists(source) and own_includes(source)[:1] == [path] and \
            re.search(r"^\s*#\s*include.*$", read(source), re.MULTILINE)[0].endswith(f'"{path}"')

    def test_every_header_compiles_alone(self):
        paths = [path for folder in FOLDERS for path in files(folder, ".h")
                 if not self.is_compiled_alone_by_the_build(path)]
        self.assert_all_compile(os.environ.get("CXX") or "c++", "c++", "c++20", paths, "-fno-rtti")

    def test_the_platform_interface_compiles_as_c(self):
        self.assert_all_compile(os.environ.get("CC") or "cc", "c", "c11", files("platform/api", ".h"),
                                "-Wstrict-prototypes")


class Symbols(unittest.TestCase):
    def setUp(self):
        self.exported = dynamic_symbols(built("KESTREL_PLATFORM"), "--defined-only")
        self.declared = declared_functions()

    def test_the_daemon_takes_declared_functions_only(self):
        taken = dynamic_symbols(built("KESTREL_DAEMON"), "--undefined-only") & self.exported
        self.assertGreater(len(taken), 20, "the daemon is linked to the platform library dynamically")
        self.assertEqual(sorted(name for name in taken if not PLATFORM_NAME.fullmatch(name)), [])
        self.assertEqual(sorted(taken - self.declared), [])

    def test_the_library_exports_what_is_declared_and_nothing_else(self):
        self.assertEqual(sorted(self.exported - EXPORTED_BESIDES), sorted(self.declared))
        self.assertLessEqual(EXPORTED_BESIDES, self.exported)

    def test_the_library_stays_when_a_program_closes_it(self):
        """Its threads go on running."""
        header = subprocess.run(["readelf", "-d", built("KESTREL_PLATFORM")], capture_output=True, text=True,
                                check=True)
        self.assertRegex(header.stdout, r"FLAGS_1.*\bNODELETE\b")


if __name__ == "__main__":
    unittest.main(verbosity=2)
