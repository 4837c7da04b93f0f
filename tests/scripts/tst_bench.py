#!/usr/bin/env python3
"""The benchmark table: what makes it fail, and what it joins."""

import contextlib
import io
import json
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import bench  # noqa: E402

HELD = {"name": "scan", "value": 0.4, "unit": "ratio", "against": "reading the same folder twice", "limit": 0.5, "holds": True}
REPORTED = {"name": "heartbeat", "value": 120, "unit": "us", "against": "nothing", "limit": None, "holds": None}


class Bench(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def program(self, name, written, status=0):
        path = self.folder / name
        path.write_text(f"#!/bin/sh\ncat >\"$1\" <<'END'\n{written}\nEND\nexit {status}\n", encoding="utf-8")
        path.chmod(0o755)
        return path

    def run_all(self, *programs):
        self.said = io.StringIO()
        with contextlib.redirect_stdout(self.said), contextlib.redirect_stderr(self.said):
            return bench.run_all(programs, self.folder / "bench.json")

    def joined(self):
        return json.loads((self.folder / "bench.json").read_text(encoding="utf-8"))

    def test_joins_the_results_of_all_programs(self):
        status = self.run_all(self.program("one", json.dumps([HELD])), self.program("two", json.dumps([REPORTED])))
        self.assertEqual(0, status)
        self.assertEqual([HELD, REPORTED], self.joined())
        self.assertRegex(self.said.getvalue(), r"(?m)^ok\s+scan\s+0\.4 ratio\s+0\.5\s+reading the same folder twice$")

    def test_a_limit_that_does_not_hold_fails(self):
        slow = HELD | {"value": 0.7, "holds": False}
        for status in 0, 1:
            with self.subTest(status=status):
                self.assertEqual(1, self.run_all(self.program("slow", json.dumps([slow, REPORTED]), status)))
                self.assertEqual([slow, REPORTED], self.joined())
                self.assertIn("limit not held: scan", self.said.getvalue())

    def test_a_program_that_fails_does_not_hide_the_others(self):
        self.assertEqual(1, self.run_all(self.program("bad", "[]"), self.program("good", json.dumps([HELD]))))
        self.assertEqual([HELD], self.joined())
        self.assertIn("bad wrote no list of results", self.said.getvalue())

    def test_results_that_make_no_sense_fail(self):
        for wrong in [{"holds": None}, {"limit": None}, {"value": "0.4"}, {"value": True}, {"against": ""}, {"more": 1}]:
            with self.subTest(wrong=wrong):
                self.assertEqual(1, self.run_all(self.program("odd", json.dumps([HELD | wrong]))))
        self.assertEqual(1, self.run_all(self.program("odd", "not JSON")))
        self.assertEqual(1, self.run_all(self.program("odd", json.dumps([HELD]), status=3)))

    def test_nothing_to_run_fails(self):
        self.assertEqual(1, self.run_all())
        self.assertEqual(1, self.run_all(self.folder / "not-there"))


if __name__ == "__main__":
    unittest.main()
