"""A person who walks through the whole window and sees in Quorvel's log which operation each press called."""

import contextlib
import os
import re
import shutil
import signal
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

import records  # noqa: E402
from person import SECONDS_TO_SHOW, Person  # noqa: E402
from virtualDesktop import VirtualDesktop, wait_until  # noqa: E402
from window import Atspi  # noqa: E402

WIDTH, HEIGHT = 1280, 2400  # every page stands on this screen whole: what is scrolled away has no accessible items
COMMAND = re.compile(r"quorvel\.engine\.command: (.*)")
FAULT_OF_A_VIEW = re.compile(r"\.qml|qrc:|\bQML\b", re.IGNORECASE)
EVENT = r"\d\d:\d\d:\d\d "  # the time of day before an event's text, as the locale of the desktop writes it
LANGUAGES = ["en", "ru"]  # also the numbers 0 and 1 of a text in both languages


class Walker(Person):
    """Quorvel from an empty home, in a window as high as the screen; `home` is written before open()."""

    def __init__(self, desktop):
        super().__init__(desktop, (WIDTH - 100, HEIGHT // 2))
        self.home = desktop.home
        self._haste = {}
        for folder in ".local", ".config", ".cache":
            shutil.rmtree(self.home / folder, ignore_errors=True)
        self._log = desktop.folder / "logs/quorvel.log"
        self._log_before = self._log.stat().st_size if self._log.exists() else 0

    def hurry(self, times):
        """The next start runs that many times faster than life, its clocks and timers alike. The person does not."""
        # The tool itself starts the program as a child; what it would give to that child is enough.
        given = dict(line.partition("=")[::2] for line in
                     self.desktop.run("faketime", "-f", f"+0 x{times}", "env").splitlines())
        self._haste = {name: given[name] for name in ("LD_PRELOAD", "FAKETIME")}

    def open(self, **preferences):
        """Starts with these preferences and waits for the first page."""
        records.write_preferences(self.home, **preferences)
        # Nobody looks at pixels here. A processor that draws a window of this height anew whenever a cursor blinks would
        # have little time left to answer.
        window = self.start_program(os.environ["QUORVEL_PROGRAM"], QT_QUICK_BACKEND="software",
                                    QT_LOGGING_RULES="quorvel.engine.command.debug=true", **self._haste)
        self.desktop.run("xdotool", "windowsize", window, str(WIDTH), str(HEIGHT))
        self.desktop.run("xdotool", "windowmove", window, "0", "0")
        self.desktop.run("xdotool", "windowactivate", "--sync", window)
        wait_until(lambda: self._page_height() > HEIGHT - 100, SECONDS_TO_SHOW, "the window's new size")

    def close(self):
        """Ends it as a system that shuts down does, and fails where a view complained in the log."""
        self.quorvel.send_signal(signal.SIGTERM)
        self.quorvel.wait(20)
        faults = [line for line in self._lines() if FAULT_OF_A_VIEW.search(line)]
        if faults or self.quorvel.returncode != 0:
            raise AssertionError(f"ended with {self.quorvel.returncode}; complaints: {faults}")

    def commands(self):
        """Every operation that the window has called, in order."""
        return [found[1] for line in self._lines() if (found := COMMAND.fullmatch(line))]

    @contextlib.contextmanager
    def calls(self, *operations):
        """What is done within calls these operations, each once, and no other."""
        before = len(self.commands())
        yield
        with contextlib.suppress(Exception):  # told below, with what was called instead
            wait_until(lambda: len(self.commands()) - before >= len(operations), SECONDS_TO_SHOW, "an operation")
        self.window.texts()  # answered from the event loop, after whatever else the press has brought about
        called = self.commands()[before:]
        if called != list(operations):
            raise AssertionError(f"called {called}, not {list(operations)}")

    def click(self, node):
        """Presses the main button of the pointer on an item's middle."""
        box = Atspi.Component.get_extents(node.get_component_iface(), Atspi.CoordType.SCREEN)
        self.desktop.run("xdotool", "mousemove", str(box.x + box.width // 2), str(box.y + box.height // 2), "click", "1")

    def does_nothing(self, name):
        """The control of that name is disabled: it says so, and calls no operation, whoever presses it."""
        if self.window.can_be_pressed(name):
            raise AssertionError(f"{name!r} is enabled")
        [node] = [node for node, text in self.window.controls() if text == name]
        with self.calls():
            self.click(node)
            Atspi.Action.do_action(node.get_action_iface(), 0)

    def press_of(self, name, row):
        """Presses the button of that name in the row that is called so."""
        [node] = [node for node, text in self.window.controls() if text == name and node.get_description() == row]
        self.window.press_item(node)

    def shows(self, *texts):
        """Waits for each of these texts."""
        for text in texts:
            self.window.wait_for(re.escape(text), SECONDS_TO_SHOW)

    def lacks(self, *texts):
        """None of these texts is there. Only after something that was waited for."""
        there = [text for text in texts if text in self.window.texts()]
        if there:
            raise AssertionError(f"shown: {there}")

    def _page_height(self):
        return max((Atspi.Component.get_extents(node.get_component_iface(), Atspi.CoordType.SCREEN).height
                    for node, role, _ in self.window.nodes() if role == "frame"), default=0)

    def _lines(self):
        with open(self._log, "rb") as log:
            log.seek(self._log_before)
            return log.read().decode(errors="replace").splitlines()


class WalkTest(unittest.TestCase):
    """Each test opens Quorvel as it needs it; afterwards it is closed and its log looked through."""

    def setUp(self):
        self.walker = Walker(desktop)
        self.addCleanup(self._close)

    def _close(self):
        if hasattr(self.walker, "quorvel"):
            try:
                if self.walker.quorvel.poll() is None:
                    self.walker.close()
            finally:
                desktop.end(self.walker.quorvel)


desktop = None


def main():
    """Runs the tests of the calling program on a desktop of their own."""
    global desktop
    with VirtualDesktop(tempfile.mkdtemp(prefix="quorvel-walk-"), f"{WIDTH}x{HEIGHT}x24") as started:
        desktop = started
        os.environ.update(started.environment)
        began = time.monotonic()
        tests = unittest.main("__main__", exit=False, verbosity=2)
        print(f"{time.monotonic() - began:.1f} s")
        good = tests.result.wasSuccessful() and tests.result.testsRun > 0
        if not good:
            print((started.folder / "logs/quorvel.log").read_text(errors="replace")[-4000:])
    shutil.rmtree(started.folder, ignore_errors=True)
    sys.exit(0 if good else 1)
