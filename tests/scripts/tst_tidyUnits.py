#!/usr/bin/env python3
"""What clang-tidy looks at: which sources come together, and whose lines it is told of."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import tidyUnits  # noqa: E402


def entry(name, options="-I. -O2"):
    file = tidyUnits.ROOT / name
    return {"file": str(file), "command": f"/usr/bin/clang++ {options} -o made/{name}.o -c {file}"}


class Units(unittest.TestCase):
    def test_sources_of_a_folder_come_together_where_their_commands_agree(self):
        entries = [entry("engine/b.cpp"), entry("engine/a.cpp"), entry("engine/c.cpp", "-O3"), entry("study/d.cpp")]
        self.assertEqual([["engine/a.cpp", "engine/b.cpp"], ["engine/c.cpp"], ["study/d.cpp"]],
                         list(tidyUnits.sources_by_command(entries).values()))

    def test_tests_and_what_is_made_are_left_out(self):
        made = {"file": "/elsewhere/made.cpp", "command": "clang++ -o made.o -c /elsewhere/made.cpp"}
        self.assertEqual({}, tidyUnits.sources_by_command([entry("tests/t.cpp"), entry("build/m.cpp"), made]))

    def test_what_is_said_names_the_source_and_its_line(self):
        with tempfile.TemporaryDirectory() as folder:
            unit = Path(folder) / "0.cpp"
            unit.write_text(tidyUnits.unit_text(["engine/quiz.cpp", "engine/tasks.cpp"]), encoding="utf-8")
            lines = unit.read_text(encoding="utf-8").splitlines()
            second = lines.index("//@ engine/tasks.cpp") + 1
            said = f"{unit}:2:5: error: a\n{unit}:{second + 3}:1: error: b\nother.h:2:5: note: c\n"
            self.assertEqual("engine/quiz.cpp:1:5: error: a\nengine/tasks.cpp:3:1: error: b\nother.h:2:5: note: c\n",
                             tidyUnits.with_names(str(unit), said))


if __name__ == "__main__":
    unittest.main()
