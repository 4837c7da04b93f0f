#!/usr/bin/env python3
"""Changes the rules of studying in one place at a time - an operator, a constant, the order of two things - and looks
whether a test fails. Where none does, a test is missing, or the change means nothing.

    mutationCheck.py [--number 100] [--seed 1] [--jobs 2] [--only FILE[:LINE]]

Works on copies of the tree in build/mutation/, never on the tree itself, and keeps them for the next time. Which places
are changed follows from the seed, each file's share from how many of its lines can be changed; what does not compile is
replaced by another change. Changes that mean nothing are named with the reason in mutations-without-effect.txt beside
this file and left out. Writes which test noticed each to build/mutation/report.txt, prints those that none did, and ends
with 1 where there is one.
"""

import argparse
import fcntl
import hashlib
import math
import os
import re
import resource
import shutil
import subprocess
import sys
import threading
import time
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# Folder -> the programs of tests that a change in it can be noticed by.
SUITES = {"engine": ("engineTests",), "study": ("studyTests", "engineTests")}
ALL_SUITES = sorted({suite for suites in SUITES.values() for suite in suites})
WITHOUT_EFFECT = ROOT / "scripts/mutations-without-effect.txt"
WORKPLACE = ROOT / "build/mutation"
PROCESSORS = os.cpu_count() or 1
# A change may make a program go on or grow for ever.
LONGEST_BUILD = 900  # seconds
LEAST_LIMIT = 10  # seconds of a test that usually takes none
TIMES_AS_LONG = 10
MOST_MEMORY = 4 << 30
MOST_OF_A_FILE = 1 << 30

SHARES = {"operator": 0.45, "constant": 0.35, "order": 0.2}
OPERATORS = {"<=": "<", ">=": ">", "==": "!=", "!=": "==", "+=": "-=", "-=": "+=", "++": "--", "--": "++", "!": "",
             "<": "<=", ">": ">=", "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "&&": "||", "||": "&&"}
# Those of two sides stand between blanks; without, they belong to types.
OPERATOR = re.compile(r"(?<!<)<=(?!>)|(?<![>=])>=|[!=]=|[-+]=|\+\+|--|!|(?<= )(?:&&|\|\||[-<>+*/%&|])(?= |$)")
NUMBER = re.compile(r"(?<![\w.'])(?:0[xX][\da-fA-F']+|\d[\d']*(?:\.\d+)?)(?![.'])")
TRUTH = re.compile(r"\b(?:true|false)\b")
TEXT = re.compile(r'"(?:[^"\\]|\\.)*"|(?<![\da-fA-F])\'(?:[^\'\\]|\\.)\'')
# A call or an assignment that stands alone on its line.
STATEMENT = re.compile(r"^( {4,})(?!return\b|break\b|continue\b|Q_|QUORVEL_|[A-Z_]+\()"
                       r"[*+-]*[\w.:<>\[\]-]+(?:\(| [-+*/]?= |\+\+|--|;)[^{}]*$")
PLAIN_ASSIGNMENT = re.compile(r'^ *([\w.]+) = (?:[\w.:]+(?:\.value\(\))?|Q\w+\(\)|u"[^"]*"_s|text\(u"[^"]*"\));$')
OUTCOMES = re.compile(r"\? ((?:[^?:]|::)+?) : ((?:[^?:]|::)+?)(?=[;,]|$)")
# Without blanks, so that no declaration of parameters is among them.
ARGUMENTS = re.compile(r"(?<=[\w>])\(([^\s(),]+(?:\(\))?), ([^\s(),]+(?:\(\))?)\)")
FUNCTION = re.compile(r"(?:(?:    )?(?!return\b|else\b)[A-Za-z][\w:<>,&* ]* [*&]?|(?=\w+::))([\w:~]+)\([^;]*$")
# What is logged is for people who look for a mistake; what Qt's macros and static_assert are given, the compiler checks.
# For the table of published fields every test of the engine would be compiled again; tst_session has what they begin with.
NO_CODE = re.compile(r"\s*(?:#|qC(?:Debug|Info|Warning|Critical)\(|static_assert\(|Q_[A-Z_]+\b|template\b|QUORVEL_[A-Z]+\()")


@dataclass(frozen=True)
class Change:
    """Lines `first` and on of `file`, as they are and as they become."""

    kind: str
    file: str
    function: str  # that the lines are in, as far as it is seen
    first: int  # from 1
    before: tuple
    after: tuple

    def key(self):
        """Without the number of the line, which moves."""
        return f"{self.file} {self.function}: {told(self.before)}  =>  {told(self.after)}"

    def __str__(self):
        return f"{self.file}:{self.first} {self.function}: {told(self.before)}  =>  {told(self.after)}"


def told(lines):
    return " | ".join(line.strip() for line in lines)


def without_texts(line):
    """The line with its texts and its comment blotted out, character by character."""
    blotted = TEXT.sub(lambda found: "\0" * len(found[0]), line)
    comment = blotted.find("//")
    return blotted if comment < 0 else blotted[:comment] + "\0" * (len(blotted) - comment)


def lines_of_code(text):
    """(number from 1, function, line, the same without texts) of each line that something can be changed in."""
    function, open_brackets = "", 0
    for number, line in enumerate(text.splitlines(), 1):
        code = without_texts(line)
        if found := FUNCTION.match(code):
            function = found[1]
        if open_brackets > 0 or NO_CODE.match(code):
            open_brackets += code.count("(") - code.count(")")
        elif code.strip(" \0"):
            yield number, function, line, code


def changed_operators(code, line):
    if "operator" in code:
        return
    for found in OPERATOR.finditer(code):
        texts_meet = code[:found.start()].endswith("_s ") or code[found.end():].startswith(" u\0")
        if not texts_meet:
            yield line[:found.start()] + OPERATORS[found[0]] + line[found.end():]


def changed_constants(code, line):
    for found in NUMBER.finditer(code):
        digits = found[0].replace("'", "")
        if digits.lower().startswith("0x"):
            new = f"0x{int(digits, 16) + 1:0{len(digits) - 2}x}"
        else:
            new = str(float(digits) + 1) if "." in digits else str(int(digits) + 1)
        yield line[:found.start()] + new + line[found.end():]
    for found in TRUTH.finditer(code):
        yield line[:found.start()] + ("false" if found[0] == "true" else "true") + line[found.end():]
    for found in TEXT.finditer(line):
        # Those of users are of 16 bits; the others are names for the log and parts of longer ones.
        if code[found.start()] == "\0" and line[:found.start()].endswith("u") and not found[0].startswith("'\\"):
            new = chr(ord(found[0][1]) + 1) if found[0][0] == "'" else found[0][1:-1] + "~"
            yield line[:found.start() + 1] + new + line[found.end() - 1:]


def changed_orders(code, line):
    """Within a line: the outcomes of a condition, the arguments of a call."""
    for pattern in (OUTCOMES, ARGUMENTS):
        for found in pattern.finditer(code):
            (first, after_first), (second, after_second) = found.span(1), found.span(2)
            one, other = line[first:after_first], line[second:after_second]
            if one != other and all(part.count("(") == part.count(")") for part in (one, other)):
                yield line[:first] + other + line[after_first:second] + one + line[after_second:]


def can_mean_something(one, other):
    """Whether it may matter which of two statements comes first. The order of two plain assignments, neither of which
    names what the other assigns to, cannot."""
    first, second = PLAIN_ASSIGNMENT.match(one), PLAIN_ASSIGNMENT.match(other)
    return one != other and not (first and second and not re.search(rf"\b{re.escape(first[1])}\b", other)
                                 and not re.search(rf"\b{re.escape(second[1])}\b", one))


def changes_of(file, text):
    """All changes of a file, none twice."""
    before = None  # the line before, where it is a statement
    for number, function, line, code in lines_of_code(text):
        for kind, lines in (("operator", changed_operators(code, line)), ("constant", changed_constants(code, line)),
                            ("order", changed_orders(code, line))):
            for new in dict.fromkeys(lines):
                yield Change(kind, file, function, number, (line,), (new,))
        bare = code.rstrip(" \0")
        here = STATEMENT.match(bare) if bare.endswith(";") else None
        if here and before and before[0] == number - 1 and before[2] == here[1] and can_mean_something(before[1], line):
            yield Change("order", file, function, number - 1, (before[1], line), (line, before[1]))
        before = (number, line, here[1]) if here else None


def changed(text, change):
    lines = text.split("\n")
    place = slice(change.first - 1, change.first - 1 + len(change.before))
    assert tuple(lines[place]) == change.before, change
    lines[place] = change.after
    return "\n".join(lines)


def all_changes(root=ROOT):
    files = sorted(path.relative_to(root).as_posix() for folder in SUITES for path in (root / folder).rglob("*")
                   if path.suffix in (".cpp", ".h"))
    return [change for file in files for change in changes_of(file, (root / file).read_text(encoding="utf-8"))]


def drawn(changes, number, seed):
    """File -> (how many of its changes are tried, its changes in the order in which they are), for `number` in all."""
    kinds = Counter(change.kind for change in changes)

    def turn(change):
        """Small for those that come first. A change keeps its turn when others come and go."""
        digest = hashlib.sha256(f"{seed} {change.key()}".encode()).digest()
        chance = (int.from_bytes(digest[:8], "big") + 1) / (1 << 64)
        return -math.log(chance) * kinds[change.kind] / SHARES[change.kind]

    by_file = {}
    for change in sorted(changes, key=lambda change: (turn(change), change.first)):
        lines = by_file.setdefault(change.file, {})
        lines.setdefault(change.first, change)  # one a line: those of one line are noticed by the same tests
    places = sum(len(lines) for lines in by_file.values())
    parts = {file: number * len(lines) / places for file, lines in by_file.items()}
    numbers = {file: min(int(part), len(by_file[file])) for file, part in parts.items()}
    largest_rest = sorted(parts, key=lambda file: (int(parts[file]) - parts[file], file))
    for file in largest_rest[:min(number, places) - sum(numbers.values())]:
        numbers[file] += 1
    return {file: (numbers[file], list(by_file[file].values())) for file in sorted(by_file)}


def without_effect(text):
    """Change -> reason. A change stands on a line, the reason indented below it."""
    reasons, key = {}, None
    for line in text.splitlines():
        if line.startswith(" ") and key:
            reasons[key] = f"{reasons[key]} {line.strip()}".strip()
        elif line.strip() and not line.startswith("#"):
            key = line.strip()
            reasons[key] = ""
    return reasons


def words_of(name):
    """ "tst_copyThinning" -> {"copy", "thinning"} """
    return {word.lower() for word in re.findall(r"[A-Z]?[a-z]+|[A-Z]+(?![a-z])", name.removeprefix("tst_"))}


def best_first(seconds, file):
    """Tests, those first that are most likely to notice a change of `file`; of the same likelihood, the quick ones."""
    stem = Path(file).stem
    return sorted(seconds, key=lambda test: (test.removeprefix("tst_") != stem, -len(words_of(test) & words_of(stem)),
                                             seconds[test]))


class Copy:
    """A copy of the tree with a build of its own, file by file, so that a change compiles little again."""

    def __init__(self, place):
        self.place = place
        self.build = place / "made"
        self.seconds = {}  # suite -> test -> how long it takes
        self.copy_tree()
        # Users' applications and records are out of reach: engine and study see nothing but what the tests give them, and
        # their folders are here.
        self.private = place / "private"
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith("XDG_")} | {
            "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8", "HOME": str(self.private), "TMPDIR": str(self.private),
            # What one copy has compiled, the other need not, and neither again what a change is taken back to.
            "CCACHE_DIR": str(WORKPLACE / "ccache"), "CCACHE_BASEDIR": str(self.place), "CCACHE_NOHASHDIR": "1"}

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

    def run(self, words, seconds):
        """How it ended, None where it took longer, and what it said."""
        shutil.rmtree(self.private, ignore_errors=True)
        self.private.mkdir(parents=True)
        try:
            ended = subprocess.run([str(word) for word in words], cwd=self.place, env=self.environment, check=False,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                   errors="replace", timeout=seconds)
        except subprocess.TimeoutExpired:
            return None, ""
        return ended.returncode, ended.stdout

    def prepare(self):
        """Builds all as it is."""
        configure = ["cmake", "-S", self.place, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                     "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0"]
        for words in (configure, self.make_words(PROCESSORS, *ALL_SUITES)):
            code, said = self.run(words, None)
            if code != 0:
                sys.exit(said[-4000:])

    def measure(self):
        """Runs the tests, which must pass."""
        for suite in ALL_SUITES:
            _, said = self.run([self.build / "tests" / suite], LONGEST_BUILD)
            self.seconds[suite] = {line.strip(): 0 for line in said.splitlines()[1:]}
            for test in self.seconds[suite]:
                began = time.monotonic()
                code, said = self.run([self.build / "tests" / suite, test], LONGEST_BUILD)
                if code != 0:
                    sys.exit(f"{test} fails without any change:\n{said[-4000:]}")
                self.seconds[suite][test] = time.monotonic() - began

    def make_words(self, processors, *suites):
        return ["ninja", "-C", self.build, f"-j{processors}", *suites]

    def noticed_by(self, suite, file):
        """Which test fails first, and how; None where all pass."""
        for test in best_first(self.seconds[suite], file):
            limit = max(LEAST_LIMIT, TIMES_AS_LONG * self.seconds[suite][test])
            code, said = self.run([self.build / "tests" / suite, test], limit)
            if code != 0:
                failure = re.search(r"^(?:FAIL!|QFATAL|XPASS) *: *(?:\w+::)?(\w+)", said, re.MULTILINE)
                return f"{test} {'does not end' if code is None else failure[1] if failure else f'ends with {code}'}"
        return None

    def verdict_of(self, change):
        """"not compiling", "survived", or the test that noticed it. Afterwards all is as before."""
        path = self.place / change.file
        text = path.read_text(encoding="utf-8")
        path.write_text(changed(text, change), encoding="utf-8")
        try:
            for suite in SUITES[change.file.split("/")[0]]:
                if self.run(self.make_words(1, suite), LONGEST_BUILD)[0] != 0:
                    return "not compiling"
                if test := self.noticed_by(suite, change.file):
                    return test
            return "survived"
        finally:
            path.write_text(text, encoding="utf-8")


class Tally:
    """What is still to be tried and what came of the rest; several threads ask."""

    def __init__(self, wanted):
        self.lock = threading.Lock()
        self.wanted = {file: [number, iter(changes)] for file, (number, changes) in wanted.items()}
        self.verdicts = {}
        self.finished = 0  # threads that came to the end

    def next(self):
        with self.lock:
            for rest in self.wanted.values():
                if rest[0] > 0 and (change := next(rest[1], None)):
                    rest[0] -= 1
                    return change
            return None

    def note(self, change, verdict, seconds):
        with self.lock:
            self.verdicts[change] = verdict
            if verdict == "not compiling":
                self.wanted[change.file][0] += 1
            print(f"{len(self.verdicts):4} {seconds:4.0f} s  {verdict}: {change}", flush=True)

    def report(self):
        lines = sorted(self.verdicts.items(), key=lambda item: (item[0].file, item[0].first, item[0].after))
        return "".join(f"{change}\n    {verdict}\n" for change, verdict in lines)

    def survivors(self):
        return [change for change, verdict in self.verdicts.items() if verdict == "survived"]

    def sentence(self):
        others = ("survived", "not compiling")
        counts = Counter(verdict if verdict in others else "noticed" for verdict in self.verdicts.values())
        return ", ".join(f"{counts[name]} {name}" for name in ("noticed", *others))


def work(copy, tally):
    while change := tally.next():
        began = time.monotonic()
        tally.note(change, copy.verdict_of(change), time.monotonic() - began)
    tally.finished += 1


def wanted_changes(words):
    changes = all_changes()
    reasons = without_effect(WITHOUT_EFFECT.read_text(encoding="utf-8"))
    keys = {change.key() for change in changes}
    wrong = [key for key, reason in reasons.items() if key not in keys or not reason]
    if wrong:
        sys.exit(f"{WITHOUT_EFFECT.name} names these without a reason, or the code has them no longer:\n" + "\n".join(wrong))
    changes = [change for change in changes if change.key() not in reasons]
    print(f"{len(changes)} changes are possible, {len(reasons)} more mean nothing.", flush=True)
    if not words.only:
        return drawn(changes, words.number, words.seed)
    file, _, line = words.only.partition(":")
    chosen = [change for change in changes if change.file == file and line in ("", str(change.first))]
    return {file: (len(chosen), chosen)}


def read_words():
    parser = argparse.ArgumentParser(description="Looks whether a test fails for each of many small changes.")
    parser.add_argument("--number", type=int, default=100, help="how many changes (100)")
    parser.add_argument("--seed", type=int, default=1, help="another one chooses other changes (1)")
    parser.add_argument("--jobs", type=int, default=PROCESSORS, help="how many at the same time")
    parser.add_argument("--only", metavar="FILE[:LINE]", help="all changes there and no others")
    return parser.parse_args()


def hold_workplace():
    """Until the program ends: two at a time would take each other's copies away."""
    WORKPLACE.mkdir(parents=True, exist_ok=True)
    held = (WORKPLACE / "held").open("w", encoding="utf-8")
    try:
        fcntl.flock(held, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit(f"Another {Path(__file__).name} is at work in {WORKPLACE.relative_to(ROOT)}.")
    return held


def check(words):
    began = time.monotonic()
    os.nice(10)
    for what, most in ((resource.RLIMIT_AS, MOST_MEMORY), (resource.RLIMIT_FSIZE, MOST_OF_A_FILE), (resource.RLIMIT_CORE, 0)):
        resource.setrlimit(what, (most, most))

    tally = Tally(wanted_changes(words))
    copies = [Copy(WORKPLACE / str(number)) for number in range(words.jobs)]
    for copy in copies:
        copy.prepare()
    copies[0].measure()
    for copy in copies:
        copy.seconds = copies[0].seconds
    print(f"Built and tested without a change after {time.monotonic() - began:.0f} s.", flush=True)

    threads = [threading.Thread(target=work, args=(copy, tally), daemon=True) for copy in copies]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    (WORKPLACE / "report.txt").write_text(tally.report(), encoding="utf-8")
    for change in tally.survivors():
        print(f"No test noticed: {change}")
    print(f"{tally.sentence()}; {time.monotonic() - began:.0f} s")
    if tally.finished < len(copies) or tally.survivors() or not tally.verdicts:
        sys.exit(1)


def main():
    words = read_words()
    with hold_workplace():
        check(words)


if __name__ == "__main__":
    main()
