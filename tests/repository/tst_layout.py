#!/usr/bin/env python3
"""Holds the repository to its own map: arrows between folders, no path of one machine, the four commands, a true README."""

import os
import re
import subprocess
import unittest
from pathlib import Path

from includeRules import RULES, broken_includes, read_sources

ROOT = Path(__file__).resolve().parents[2]
COMMANDS = ["run", "test", "demo", "bench", ".ci/run"]

# Folders of one person's or one machine's own; written in pieces so that this file does not contain them.
SOMEONES = "/" + "(Users/|root/|workspace/|mnt/|media/|var/tmp/|private/)"
SOMEONES_HOME = "/" + "home/[a-z]"
MACHINE_PATH = re.compile(f"(?<![A-Za-z0-9_.$}}-])({SOMEONES}|{SOMEONES_HOME})|[A-Z]:\\\\{{1,2}}Users")
# Tests of paths tell of people who do not exist; their homes are no machine's.
MACHINE_PATH_IN_TEST = re.compile(f"(?<![A-Za-z0-9_.$}}-]){SOMEONES}")


def machine_path(name, line):
    """Whether the line of that file names a folder of one machine."""
    pattern = MACHINE_PATH_IN_TEST if name.startswith("tests/") and name.endswith((".cpp", ".h")) else MACHINE_PATH
    own = [str(path) for path in (ROOT, Path.home()) if len(path.parts) > 2]
    return bool(pattern.search(line)) or any(path in line for path in own)


def text_files():
    """(path in the repository, text) of every tracked or new file that is text."""
    listed = subprocess.run(
        ["git", "-c", f"safe.directory={ROOT}", "ls-files", "--cached", "--others", "--exclude-standard"],
        cwd=ROOT, capture_output=True, text=True, check=False)
    names = listed.stdout.splitlines() if listed.returncode == 0 else [
        path.relative_to(ROOT).as_posix() for path in ROOT.rglob("*")
        if path.is_file() and path.relative_to(ROOT).parts[0] not in {"build", ".git"}]
    for name in sorted(names):
        try:
            yield name, (ROOT / name).read_text(encoding="utf-8")
        except (UnicodeDecodeError, FileNotFoundError):
            continue


class Includes(unittest.TestCase):
    def test_run_one_way(self):
        sources = read_sources(ROOT)
        self.assertGreater(len(sources), 50, "the sources were not found")
        self.assertEqual([], broken_includes(sources))

    def test_name_each_thing_once(self):
        def twice(text):
            names = [line for line in text.splitlines() if line.startswith("#include ") and not line.endswith('.moc"')]
            return sorted({name for name in names if names.count(name) > 1})

        self.assertEqual(["#include <b>"], twice("#include <a>\n#include <b>\n\n#include <b>\n"))
        self.assertEqual({}, {path: twice(text) for path, text in read_sources(ROOT).items() if twice(text)})

    def test_every_rule_has_its_folder(self):
        self.assertEqual([], [folder for folder in RULES if not (ROOT / folder).is_dir()])

    def test_the_rules_see_each_way_to_break_them(self):
        good = {"engine/Heart.h": '#include "Card.h"\n', "study/Card.h": "#include <QString>\n",
                "platform/ports/Clock.h": "", "platform/posix/SystemClock.h": '#include "Clock.h"\n#include <unistd.h>\n',
                "app/main.cpp": '#include "SystemClock.h"\n#include "Heart.h"\n'}
        self.assertEqual([], broken_includes(good))
        for path, line in [("study/Card.h", '#include "Heart.h"'), ("engine/Heart.h", '#include "SystemClock.h"'),
                           ("engine/Heart.h", "#include <unistd.h>"), ("study/Card.h", "#include <QDBusConnection>"),
                           ("platform/posix/SystemClock.h", '#include "Card.h"'),
                           ("platform/ports/Clock.h", '#include "../../study/Card.h"'),
                           ("engine/Heart.h", "#include <SystemClock.h>"), ("elsewhere/New.h", "")]:
            with self.subTest(path=path, line=line):
                self.assertEqual(1, len(broken_includes(good | {path: line + "\n"})))


class Files(unittest.TestCase):
    def test_name_no_path_of_one_machine(self):
        files = list(text_files())
        self.assertGreater(len(files), 80, "the files were not found")
        self.assertEqual([], [f"{name}:{number}: {line.strip()}" for name, text in files
                              for number, line in enumerate(text.splitlines(), 1) if machine_path(name, line)])

    def test_machine_paths_are_recognised(self):
        home = "/" + "home/anna/quorvel"
        own = [str(ROOT)] if len(ROOT.parts) > 2 else []
        for path in [home, "/" + "Users/anna", "C:" + "\\Users\\anna", '"/' + 'mnt/disk/quorvel"', *own]:
            self.assertTrue(machine_path("app/main.cpp", path), path)
        for path in ["/usr/bin/env", "https://example.org" + home, "$HOME/" + "mnt/x", "~/quorvel"]:
            self.assertFalse(machine_path("app/main.cpp", path), path)
        self.assertFalse(machine_path("tests/study/tst_paths.cpp", home))
        self.assertTrue(machine_path("tests/study/tst_paths.cpp", "/" + "mnt/disk"))


class Commands(unittest.TestCase):
    def test_are_there_and_executable(self):
        for command in COMMANDS:
            with self.subTest(command=command):
                self.assertTrue(os.access(ROOT / command, os.X_OK))
                self.assertTrue((ROOT / command).read_text(encoding="utf-8").startswith("#!/usr/bin/env bash\n"))

    def test_continuous_integration_runs_the_same_tests(self):
        self.assertRegex((ROOT / ".ci/run").read_text(encoding="utf-8"), r'(?m)^exec .*/test" all$')


class Readme(unittest.TestCase):
    def test_names_only_what_is_there(self):
        text = (ROOT / "README.md").read_text(encoding="utf-8") + (ROOT / "CONTRIBUTING.md").read_text(encoding="utf-8")
        links = [link for link in re.findall(r"\]\(([^)#]+)\)", text) if not link.startswith("http")]
        folders = re.findall(r"(?m)^\| `([^`]+/)`", text)
        self.assertTrue(links and folders, "the map was not found")
        self.assertEqual([], [name for name in links + folders if not (ROOT / name).exists()])

    def test_every_top_folder_is_on_the_map(self):
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        tops = {name.split("/")[0] for name, _ in text_files() if "/" in name and not name.startswith(".")}
        self.assertEqual([], sorted(top for top in tops if f"`{top}/" not in readme))

    def test_explains_every_package(self):
        lines = [line for line in (ROOT / "scripts/packages").read_text(encoding="utf-8").splitlines()
                 if line and not line.startswith(("#", "["))]
        self.assertGreater(len(lines), 15)
        self.assertEqual([], [line for line in lines if not re.match(r"^\S+\s{2,}\S", line)])


if __name__ == "__main__":
    unittest.main()
