#!/usr/bin/env python3
"""Changes the rules of studying in one place at a time - an operator, a constant, the order of two statements - and looks
whether a test fails. Where none does, a test is missing, or the change means nothing.

    mutationCheck.py [--number 100] [--seed 1] [--jobs 2] [--only FILE[:LINE]]

Works on copies of the tree in build/mutation/, never on the tree itself. Which places are changed follows from the seed.
Changes that mean nothing are named with the reason in mutations-without-effect.txt beside this file; one that does not
compile is passed over. Prints each change that no test noticed; ends with 1 where there is one.
"""

import argparse
import os
import random
import re
import shutil
import subprocess
import sys
import threading
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("engine", "study")
SUITES = ("studyTests", "engineTests")
WITHOUT_EFFECT = ROOT / "scripts/mutations-without-effect.txt"
LONGEST = 300  # seconds for one suite; a change may make it go on for ever
# Of a hundred: how many of each kind.
SHARES = {"operator": 45, "constant": 35, "order": 20}
OPERATORS = {"<=": "<", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", " < ": " <= ", " > ": " >= ",
             " + ": " - ", " - ": " + ", " * ": " / ", " / ": " * ", " % ": " * ", "+= ": "-= ", "-= ": "+= ", "++": "--"}
OPERATOR = re.compile("|".join(re.escape(operator) for operator in sorted(OPERATORS, key=len, reverse=True)))
CONSTANT = re.compile(r"(?<![\w.'\"])(?:\d[\d']*(?![\w.'])|true\b|false\b)")
# A call or an assignment that stands alone on its line.
STATEMENT = re.compile(r"^( {4,})(?!return|break|continue|co_|auto |const |using |case |default|static |Q_)[A-Za-z_][^{}]*;$")


@dataclass(frozen=True)
class Change:
    """Lines `first` and on of `file`, as they are and as they become."""

    kind: str
    file: str
    first: int  # from 1
    before: tuple
    after: tuple

    def __str__(self):
        return f"{self.file}:{self.first}: {' | '.join(x.strip() for x in self.before)}  =>  " \
               f"{' | '.join(x.strip() for x in self.after)}"


def without_texts(line):
    """The line with its strings and its comment blotted out, character by character."""
    blotted = re.sub(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)\'', lambda found: "\0" * len(found[0]), line)
    comment = blotted.find("//")
    return blotted if comment < 0 else blotted[:comment] + "\0" * (len(blotted) - comment)


def is_code(line):
    return line.strip() and not line.lstrip().startswith(("#", "//", "template", "static_assert", "Q_"))


def changes_of(file, text):
    """All changes of a file."""
    lines = text.splitlines()
    for number, line in enumerate(lines, 1):
        if not is_code(line):
            continue
        code = without_texts(line)
        for kind, pattern in (("operator", OPERATOR), ("constant", CONSTANT)):
            for found in pattern.finditer(code):
                if kind == "operator" and re.search(r"\b(template|operator)\b|<[\w:, ]*$", code[:found.start()] + code[found.start()]):
                    continue
                new = OPERATORS.get(found[0]) or {"true": "false", "false": "true"}.get(found[0]) \
                    or str(int(found[0].replace("'", "")) + 1)
                yield Change(kind, file, number, (line,), (line[:found.start()] + new + line[found.end():],))
        following = lines[number] if number < len(lines) else ""
        here, there = STATEMENT.match(line), STATEMENT.match(following)
        if here and there and here[1] == there[1] and line != following:
            yield Change("order", file, number, (line, following), (following, line))
        if here:
            yield Change("order", file, number, (line,), (here[1] + ";",))


def chosen(changes, number, seed):
    """Evenly spread over the kinds, by the seed; more than `number`, for those that do not compile."""
    drawn = []
    for kind, share in SHARES.items():
        of_kind = [change for change in changes if change.kind == kind]
        random.Random(f"{seed} {kind}").shuffle(of_kind)
        # One change a place at most: those of one line are noticed by the same tests.
        seen, spread = set(), []
        for change in of_kind:
            if (change.file, change.first) not in seen:
                seen.add((change.file, change.first))
                spread.append(change)
        drawn.append((spread, max(1, round(number * share / 100))))
    return drawn


class Copy:
    """A copy of the tree with a build of its own, file by file, so that a change compiles little again."""

    def __init__(self, place):
        self.place = place
        self.build = place / "made"
        self.copy_tree()
        self.run("cmake", "-S", place, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                 must=True)
        self.make(must=True)

    def copy_tree(self):
        """What has not changed keeps its time, so that a second run builds little again."""
        wanted = {path.relative_to(ROOT) for top in ROOT.iterdir() if top.name not in {"build", ".git"}
                  for path in ([top] if top.is_file() else top.rglob("*")) if path.is_file()}
        for name in wanted:
            copy = self.place / name
            if not copy.exists() or copy.read_bytes() != (ROOT / name).read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / name, copy)
        for path in self.place.rglob("*"):
            if path.is_file() and not path.is_relative_to(self.build) and path.relative_to(self.place) not in wanted:
                path.unlink()

    def run(self, *words, must=False, seconds=None):
        """Whether it ended well in time."""
        environment = os.environ | {"QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8"}
        try:
            ended = subprocess.run([str(word) for word in words], cwd=self.place, env=environment, capture_output=True, text=True,
                                   errors="replace", timeout=seconds, check=False)
        except subprocess.TimeoutExpired:
            return False
        if must and ended.returncode != 0:
            sys.exit((ended.stdout + ended.stderr)[-4000:])
        return ended.returncode == 0

    def make(self, must=False):
        return self.run("ninja", "-C", self.build, *SUITES, must=must)

    def tests(self):
        """(program, test) of each."""
        for suite in SUITES:
            listed = subprocess.run([self.build / "tests" / suite], capture_output=True, text=True, check=False).stderr
            for line in listed.splitlines()[1:]:
                yield self.build / "tests" / suite, line.strip()

    def is_noticed(self):
        return any(not self.run(program, test, seconds=LONGEST) for program, test in self.tests())

    def apply(self, change):
        """"passed over", "noticed" or "unnoticed"; afterwards all is as before."""
        path = self.place / change.file
        text = path.read_text(encoding="utf-8")
        lines = text.split("\n")
        lines[change.first - 1:change.first - 1 + len(change.before)] = change.after
        path.write_text("\n".join(lines), encoding="utf-8")
        try:
            if not self.make():
                return "passed over"
            return "noticed" if self.is_noticed() else "unnoticed"
        finally:
            path.write_text(text, encoding="utf-8")


def without_effect():
    if not WITHOUT_EFFECT.exists():
        return set()
    lines = WITHOUT_EFFECT.read_text(encoding="utf-8").splitlines()
    return {line.split("  =>  ")[0].strip() + "  =>  " + line.split("  =>  ")[1].strip()
            for line in lines if "  =>  " in line and not line.startswith("#")}


def key_of(change):
    """Without the number of the line, which moves."""
    return re.sub(r":\d+:", ":", str(change), count=1)


def work(copy, drawn, lock, counts, unnoticed, known):
    while True:
        with lock:
            kind = next((kind for kind in drawn if kind[1] > 0 and kind[0]), None)
            if kind is None:
                return
            change = kind[0].pop()
            if key_of(change) in known:
                continue
            kind[1] -= 1
        verdict = copy.apply(change)
        with lock:
            counts[verdict] = counts.get(verdict, 0) + 1
            if verdict == "passed over":
                kind[1] += 1
            elif verdict == "unnoticed":
                unnoticed.append(change)
                print(f"unnoticed: {change}", flush=True)


def main():
    parser = argparse.ArgumentParser(description="Looks whether a test fails for each of many small changes.")
    parser.add_argument("--number", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--only", help="a file, or FILE:LINE: all changes there")
    words = parser.parse_args()
    files = sorted(path.relative_to(ROOT).as_posix() for folder in FOLDERS for path in (ROOT / folder).rglob("*.cpp"))
    changes = [change for file in files for change in changes_of(file, (ROOT / file).read_text(encoding="utf-8"))]
    if words.only:
        file, _, line = words.only.partition(":")
        changes = [change for change in changes if change.file == file and line in ("", str(change.first))]
        drawn = [[changes, len(changes)]]
    else:
        drawn = [list(part) for part in chosen(changes, words.number, words.seed)]
    print(f"{len(changes)} possible changes in {len(files)} files", flush=True)

    lock, counts, unnoticed = threading.Lock(), {}, []
    copies = [Copy(ROOT / f"build/mutation/{number}") for number in range(words.jobs)]
    if copies[0].is_noticed():
        sys.exit("The tests fail without any change.")
    threads = [threading.Thread(target=work, args=(copy, drawn, lock, counts, unnoticed, without_effect())) for copy in copies]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(", ".join(f"{count} {verdict}" for verdict, count in sorted(counts.items())))
    sys.exit(1 if unnoticed or not counts.get("noticed") else 0)


if __name__ == "__main__":
    main()
