#!/usr/bin/env python3
"""Runs the benchmark programs, joins their results, prints them as a table and holds each to its limit.

A program is run with one argument, the path where it writes a JSON list of objects:
  name     what was measured
  value    the figure; unit: of what
  against  in words, what it was compared with in the same run
  limit    the figure that the value was held to, or null where it is only reported
  holds    true or false where there is a limit, else null
"""

import argparse
import contextlib
import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

FIELDS = ["name", "value", "unit", "against", "limit", "holds"]
SECONDS_ALLOWED = 600  # for one program


class BadResults(Exception):
    """A program ended badly or wrote something else than results."""


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def checked(results, program):
    """The results, or BadResults with the first thing that is wrong with them."""
    if not isinstance(results, list) or not results:
        raise BadResults(f"{program} wrote no list of results")
    for result in results:
        if not isinstance(result, dict) or sorted(result) != sorted(FIELDS):
            raise BadResults(f"{program} wrote a result without exactly {', '.join(FIELDS)}: {result}")
        texts = all(isinstance(result[field], str) and result[field] for field in ["name", "unit", "against"])
        held = isinstance(result["holds"], bool) if is_number(result["limit"]) else (
            result["limit"] is None and result["holds"] is None)
        if not (texts and is_number(result["value"]) and held):
            raise BadResults(f"{program} wrote a result that makes no sense: {result}")
    return results


def run_program(path):
    program = Path(path).name
    with tempfile.TemporaryDirectory() as folder:
        written = Path(folder) / "results.json"
        try:
            ended = subprocess.run([str(path), str(written)], timeout=SECONDS_ALLOWED, check=False)
        except (OSError, subprocess.TimeoutExpired) as problem:
            raise BadResults(f"{program} did not run to its end: {problem}") from problem
        try:
            results = json.loads(written.read_text(encoding="utf-8"))
        except (OSError, ValueError) as problem:
            raise BadResults(f"{program} (exit {ended.returncode}) wrote no readable results: {problem}") from problem
    # A limit that does not hold may be told by the exit status too; then it is in the results.
    if ended.returncode != 0 and all(result.get("holds") is not False for result in checked(results, program)):
        raise BadResults(f"{program} ended with {ended.returncode}")
    return checked(results, program)


def table(results):
    rows = [["", "what", "value", "limit", "against"]]
    for result in results:
        mark = {True: "ok", False: "NO", None: "--"}[result["holds"]]
        limit = "" if result["limit"] is None else f"{result['limit']:g}"
        rows.append([mark, result["name"], f"{result['value']:.4g} {result['unit']}", limit, result["against"]])
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]) - 1)]
    return "\n".join("  ".join([cell.ljust(width) for cell, width in zip(row, widths)] + row[-1:]).rstrip() for row in rows)


def run_all(programs, output):
    """Returns the exit status: 0 where every program gave results and every limit holds."""
    results, problems = [], []
    for path in programs:
        try:
            results += run_program(path)
        except BadResults as problem:
            problems.append(str(problem))
    Path(output).parent.mkdir(parents=True, exist_ok=True)
    Path(output).write_text(json.dumps(results, indent=2, ensure_ascii=False) + "\n", encoding="utf-8")
    print(table(results))
    problems += [f"limit not held: {result['name']}" for result in results if result["holds"] is False]
    if not results and not problems:
        problems.append("there was nothing to run")
    for problem in problems:
        print(problem, file=sys.stderr)
    print(f"{len(results)} figures in {output}")
    return 1 if problems else 0


@contextlib.contextmanager
def desktop():
    """A desktop of our own, so that the figures do not depend on what else is open, and a screen is not needed."""
    sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests/desktop"))
    from virtualDesktop import VirtualDesktop

    with VirtualDesktop(Path("build/bench-desktop")) as virtual:
        os.environ.update(virtual.environment)
        yield


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--programs", required=True, help="file with the path of one program a line")
    arguments.add_argument("--output", required=True, help="where the joined results go")
    arguments.add_argument("--without-desktop", action="store_true", help="for programs that open no window")
    given = arguments.parse_args()
    programs = Path(given.programs).read_text(encoding="utf-8").split("\n")
    with contextlib.nullcontext() if given.without_desktop else desktop():
        return run_all([line for line in programs if line], given.output)


if __name__ == "__main__":
    sys.exit(main())
