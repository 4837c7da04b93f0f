#!/usr/bin/python3
"""Eight hours of the real program at a desktop where applications come and go, in minutes: its clock keeps time, and
nothing that it holds grows.

Two programs run at once, each hastened while it waits. One lives a working day: sessions, breaks and locks, applications
that it closes, its window shown and closed again. The other has one session that is longer, its window closed after the
start, and every application allowed: its count of study seconds is held against its own clock.
"""

import argparse
import contextlib
import os
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

import records  # noqa: E402
from programFigures import bytes_in, figures_of  # noqa: E402
from virtualDesktop import VirtualDesktop, wait_until  # noqa: E402

HOUR = 3600
HOURS = 8
SETTLED = 2 * HOUR  # what is made once is there by then
# Times faster that the programs wait; the one that has less to do would be far ahead in the end.
SPEED, SPEED_OF_COUNTER = 250, 150
SECONDS = 120  # real ones; only what is broken is waited for that long
STUDY_MINUTES, BREAK_MINUTES = 40, 15
MOST_DRIFT = 1.0  # seconds in eight hours

# How much larger the largest figure of the last half hour may be than that of hour two to three.
# Memory in KB: what is the process's own comes in steps of 128 and more from the system, and lies otherwise each time; 30
# bytes a second would be more.
# The rest: what is held only while a window is open, or a file read, may be seen in one half hour and not in the other. What
# was left behind each time would be ten of a kind and more.
MOST_MORE = {"Rss KB": 1024, "Pss_Anon KB": 512, "mappings": 12, "children": 0, "X bytes of pixmaps": 64_000}
MOST_MORE_OF_ANY = 4
MOST_FILES = 40  # the records, and of each backup of an hour one
MOST_BYTES = 20_000

# What is no warning; and that the X server was slow, which is the fault of a busy machine.
HARMLESS = re.compile(r"(debug|info) |warning quorvel\.platform\.x11: the X server (does not answer|answers again)$")

given = None


class Hastened:
    """Quorvel in a home of its own on the desktop, and its clocks."""

    def __init__(self, desktop, name, speed, items, settings):
        self.name = name
        self._items = items
        self.home = desktop.folder / name
        self.data, self.preferences = self.home / ".local/share/Quorvel", self.home / ".config/quorvel"
        self.log = desktop.folder / f"logs/{name}.log"
        runtime = tempfile.mkdtemp(prefix="quorvel-")  # sockets live here, whose paths may not be long
        self.remove = lambda: shutil.rmtree(runtime, ignore_errors=True)
        records.write_settings(self.home, **settings)
        records.write_preferences(self.home, accessMode="guest")
        self._ahead = self.home / "ahead"
        self._ahead.write_bytes(bytes(8))
        self.process = desktop.start(name, [str(given.program)], {
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": runtime,
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "QT_MESSAGE_PATTERN": "%{type} %{category}: %{message}",
            "QT_QPA_PLATFORM": "xcb",
            "QT_QUICK_BACKEND": "software",
            "LD_PRELOAD": str(given.fast_waits),
            "QUORVEL_FAST_WAITS_FILE": str(self._ahead),
            "QUORVEL_FAST_WAITS_SPEED": str(speed),
        })

    def now(self):
        """Its stopwatch, in seconds."""
        return time.monotonic() + struct.unpack("q", self._ahead.read_bytes())[0] / 1e9

    def title(self):
        return self._items.title(self.process.pid)

    def press(self, entry):
        self._items.press(self.process.pid, entry)

    def counted(self):
        """The study seconds of all its days."""
        return self._sum("studySeconds-")

    def sessions(self):
        """The sessions completed on all its days."""
        return self._sum("completedSessions-")

    def _sum(self, kind):
        """Read as it is written: the journal first, since it goes when the file has what was in it. Counts only grow."""
        counts = {}
        for name in "preferences.journal", "preferences":
            with contextlib.suppress(FileNotFoundError):
                for key, number in re.findall(rf"^({kind}\S+) = (\d+)$", (self.preferences / name).read_text(), re.MULTILINE):
                    counts[key] = max(counts.get(key, 0), int(number))
        return sum(counts.values())


class Drift:
    """How far a count of seconds goes from a clock, by looks of which each knows the moment only between two."""

    def __init__(self):
        self._earliest, self._latest = float("-inf"), float("inf")
        self.looks = 0

    def look(self, before, count, after):
        """`count` was seen at a moment from `before` to `after`; it goes up by one each second."""
        self._earliest = max(self._earliest, before - count - 1)
        self._latest = min(self._latest, after - count)
        self.looks += 1

    def seconds(self):
        """0 where one moment of the start explains all looks; else by how much it must have moved."""
        return max(self._earliest - self._latest, 0)


class EightHours(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        undo = contextlib.ExitStack()
        cls.addClassCleanup(undo.close)
        folder = undo.enter_context(tempfile.TemporaryDirectory(prefix="quorvel-hours-"))
        cls.desktop = undo.enter_context(VirtualDesktop(folder))
        os.environ.update(cls.desktop.environment)
        from statusItems import StatusItems

        cls.items = StatusItems(cls.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        undo.callback(cls.items.close)

    def setUp(self):
        self.worker = Hastened(self.desktop, "worker", SPEED, self.items, {
            "studyMinutes": STUDY_MINUTES, "breakMinutes": BREAK_MINUTES, "maxIdleSeconds": 3600,
            "allowedStudyApps": ["Quorvel", "Anki", "Unknown", "Solitaire"]})
        self.counter = Hastened(self.desktop, "counter", SPEED_OF_COUNTER, self.items, {
            "studyMinutes": 4 * HOURS * 60, "maxIdleSeconds": 3600, "blockedApps": [], "blocklistPresetVersion": 1000,
            "allowedStudyApps": list("aeiou")})
        self.programs = [self.worker, self.counter]
        for program in self.programs:
            self.addCleanup(program.remove)
            self.addCleanup(self.desktop.end, program.process)
        self.drift = Drift()
        self.seen = {program: [] for program in self.programs}  # of each, moments and figures
        self.ended = {"asked": 0, "forced": 0}
        self.shows = 0

    def test_time_is_kept_and_nothing_grows(self):
        for program in self.programs:
            wait_until(lambda: program.title() == "QV Ready", SECONDS, f"the status item of the {program.name}")
        began = self.worker.now()
        with self.looking_on():
            self.counter.press("Start Study")
            wait_until(lambda: self.counter.counted() > 0, SECONDS, "the first counted seconds")
            self.close_windows()
            while self.worker.now() - began < HOURS * HOUR or self.counter.counted() < HOURS * HOUR:
                self.spend_a_while()
        self.tell()
        with self.subTest("clocks"):
            self.check_clocks()
        for program in self.programs:
            for check in self.check_growth, self.check_files, self.check_end:
                with self.subTest(program=program.name, check=check.__name__):
                    check(program)

    # What happens at the desktop

    def spend_a_while(self):
        """A lock, a session and a break of the worker, with applications in each of them."""
        self.worker.press("Lock Now")
        self.wait_for_title("QV Locked")
        self.open_until_it_is_closed("Steam")
        self.open_and_close("Solitaire")
        before = self.worker.sessions()
        self.worker.press("Start Study")  # which shows the window
        self.close_windows()
        self.open_until_it_is_closed("Discord", "--stubborn")
        while not self.worker.title().startswith("QV Break"):
            self.open_and_close("Anki")
        self.assertEqual(self.worker.sessions(), before + 1)
        steam = self.open("Steam")
        for _ in range(3):
            self.worker.press("Show Quorvel")
            wait_until(lambda: self.windows_of(self.worker.process), SECONDS, "the window")
            self.close_windows()
            self.shows += 1
        if self.worker.title().startswith("QV Break"):  # then it was allowed, all the time
            self.assertIsNone(steam.poll(), "an application was closed in a break")
        self.desktop.end(steam)
        self.wait_for_title("QV Ready")

    def open(self, name, *options):
        path = self.desktop.home / name.lower()
        if not path.exists():
            path.write_bytes(given.decoy.read_bytes())
            path.chmod(0o755)
        process = self.desktop.start(name.lower(), [str(path), "--title", name, "--geometry", "360x110", *options])
        wait_until(lambda: self.windows_of(process) or process.poll() is not None, SECONDS, f"a window of {name}")
        return process

    def open_and_close(self, name):
        process = self.open(name)
        time.sleep(0.2)
        self.assertIsNone(process.poll(), f"{name} was closed")
        self.desktop.end(process)

    def open_until_it_is_closed(self, name, *options):
        process = self.open(name, *options)
        wait_until(lambda: process.poll() is not None, SECONDS, f"the end of {name}")
        self.ended["forced" if process.returncode == -signal.SIGKILL else "asked"] += 1
        self.desktop.end(process)

    def windows_of(self, process):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)],
                               env=self.desktop.environment, capture_output=True, text=True, check=False)
        return found.stdout.split()

    def close_windows(self):
        """Closes the windows of both programs, as the key for it does."""
        for program in self.programs:
            def closed():
                if not (windows := self.windows_of(program.process)):
                    return True
                subprocess.run(["xdotool", "windowactivate", "--sync", windows[-1], "key", "alt+F4"],
                               env=self.desktop.environment, check=False, capture_output=True, timeout=60)
                return not self.windows_of(program.process)

            wait_until(closed, SECONDS, f"the end of the {program.name}'s window")

    def wait_for_title(self, beginning):
        wait_until(lambda: self.worker.title().startswith(beginning), SECONDS, beginning)

    @contextlib.contextmanager
    def looking_on(self):
        """Meanwhile someone touches the mouse, and the figures and clocks are looked at."""
        over = threading.Event()
        faults = []

        def look():
            beat = 0
            try:
                while not over.wait(0.25):
                    beat += 1
                    self.desktop.run("xdotool", "mousemove", str(600 + beat % 7), "20")
                    self.look_at_clock()
                    if beat % 8 == 0:
                        self.look_at_figures()
            except Exception as fault:  # told by the test's own thread
                faults.append(fault)

        thread = threading.Thread(target=look)
        thread.start()
        try:
            yield
        finally:
            over.set()
            thread.join()
        if faults:
            raise faults[0]

    def look_at_clock(self):
        before = self.counter.now()
        count = self.counter.counted()
        after = self.counter.now()
        if count > 0:
            self.drift.look(before, count, after)

    def look_at_figures(self):
        for program in self.programs:
            resources = self.desktop.run(str(given.x_resources), str(program.process.pid))
            self.seen[program].append((program.now(), figures_of(program.process.pid, resources)))

    # What is to hold

    def tell(self):
        print(f"{self.worker.sessions()} sessions, {self.ended} applications, {self.shows} windows shown in breaks; "
              f"{self.counter.counted()} s counted, drift {self.drift.seconds():.2f} s in {self.drift.looks} looks")
        for program in self.programs:
            early, late = self.extremes(program)
            print(f"{program.name}: {bytes_in(program.data, program.preferences)}")
            for kind in late:
                print(f"  {kind}: {early.get(kind, 0)} -> {late[kind]}")

    def check_clocks(self):
        self.assertGreater(self.drift.looks, 100)
        self.assertGreaterEqual(self.counter.counted(), HOURS * HOUR)
        self.assertLessEqual(self.drift.seconds(), MOST_DRIFT)
        self.assertEqual(self.worker.counted(), self.worker.sessions() * STUDY_MINUTES * 60)
        self.assertGreater(self.worker.sessions(), 5)
        self.assertGreater(self.ended["asked"] + self.ended["forced"], 10)
        self.assertGreater(self.ended["forced"], 5)

    def extremes(self, program):
        """Of each kind of figure the largest in hour two to three, and the largest of the last half hour."""
        began = self.seen[program][0][0]
        end = self.seen[program][-1][0]
        early = [figures for moment, figures in self.seen[program] if 0 <= moment - began - SETTLED <= HOUR]
        late = [figures for moment, figures in self.seen[program] if end - moment <= HOUR / 2]
        return [{kind: max(figures.get(kind, 0) for figures in some) for each in some for kind in each}
                for some in (early, late)]

    def check_growth(self, program):
        early, late = self.extremes(program)
        self.assertGreater(late["X connections"], 0)
        grown = {kind: late[kind] - early.get(kind, 0) for kind in late
                 if late[kind] - early.get(kind, 0) > MOST_MORE.get(kind, MOST_MORE_OF_ANY)}
        self.assertEqual(grown, {})

    def check_files(self, program):
        count, size = bytes_in(program.data, program.preferences)
        self.assertLessEqual(count, MOST_FILES)
        self.assertLessEqual(size, MOST_BYTES)

    def check_end(self, program):
        """It runs, has complained of nothing, and ends when it is asked."""
        self.assertIsNone(program.process.poll())
        program.process.send_signal(signal.SIGTERM)
        self.assertEqual(program.process.wait(SECONDS), 0)
        lines = program.log.read_text(encoding="utf-8", errors="replace").splitlines()
        self.assertEqual([line for line in lines if not HARMLESS.match(line)], [])


if __name__ == "__main__":
    options = argparse.ArgumentParser()
    for option in "--program", "--decoy", "--fast-waits", "--x-resources":
        options.add_argument(option, required=True, type=lambda path: Path(path).resolve())
    given, rest = options.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)
