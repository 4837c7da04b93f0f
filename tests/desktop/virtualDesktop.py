"""A desktop that nobody sees: X server, window manager, session bus and an empty home, all private and all ended."""

import contextlib
import os
import random
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

SCREEN = "1280x900x24"
SECONDS_TO_START = 60  # only what is broken is waited for that long


class DesktopFailure(Exception):
    """A part of the desktop did not start."""


class NotSeen(Exception):
    """A program did not show what was looked for."""


def wait_until(condition, seconds, what):
    """Returns the condition's first true answer; DesktopFailure names what was waited for in vain."""
    ends = time.monotonic() + seconds
    while True:
        if answer := condition():
            return answer
        if time.monotonic() > ends:
            raise DesktopFailure(f"{what}: not within {seconds} s")
        time.sleep(0.05)


def free_display():
    """A display that no X server has, as ":N".

    A server that looks for one itself takes the lock of a server that it cannot see, in another process namespace, for a
    dead one's and cuts that off from its clients. So the number is one that has never been used here, drawn from so many
    that two rarely draw the same.
    """
    while True:
        number = random.randrange(1000, 59000)
        if not os.path.lexists(f"/tmp/.X{number}-lock") and not os.path.lexists(f"/tmp/.X11-unix/X{number}"):
            return f":{number}"


class VirtualDesktop:
    """`with VirtualDesktop(folder) as desktop:` starts it; `folder` is emptied and holds the home and the logs.

    `screen` is its width, height and depth. `environment` is what a program on this desktop runs with. Every process started here leads a process group of its
    own and is ended through it, together with what it has started itself.
    """

    def __init__(self, folder, screen=SCREEN):
        self._screen = screen
        self.folder = Path(folder).resolve()
        self.home = self.folder / "home"
        self.environment = {}
        self._cleanup = contextlib.ExitStack()

    def __enter__(self):
        with contextlib.ExitStack() as undo:
            self._cleanup = undo
            self._make_folders()
            self._start_parts()
            self._cleanup = undo.pop_all()
        return self

    def __exit__(self, *problem):
        self._cleanup.close()

    def start(self, name, command, more_environment=None, **options):
        """Starts a program; what it says goes to logs/NAME.log. It is ended with the desktop at the latest."""
        with open(self.folder / "logs" / f"{name}.log", "ab") as log:
            process = subprocess.Popen(command, env=self.environment | (more_environment or {}),
                                       stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True,
                                       cwd=self.home, **options)
        self._cleanup.callback(self.end, process)
        return process

    def end(self, process):
        """Asks, waits two seconds, then insists; what the process left behind in its group goes too."""
        for request, seconds in [(signal.SIGTERM, 2), (signal.SIGKILL, 5)]:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, request)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(seconds)

    def run(self, *command):
        """Runs a tool to its end on this desktop and returns what it printed."""
        return subprocess.run(command, env=self.environment, check=True, capture_output=True, text=True, timeout=60).stdout

    def _make_folders(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        for folder in [self.home, self.folder / "logs"]:
            folder.mkdir(parents=True)
        # Sockets live here; their paths may have 107 letters at most, so it does not stand in the build folder.
        runtime = tempfile.mkdtemp(prefix="quorvel-")
        self._cleanup.callback(shutil.rmtree, runtime, ignore_errors=True)
        kept = {name: os.environ[name] for name in ["PATH", "TZ", "USER", "LOGNAME", "ASAN_OPTIONS"] if name in os.environ}
        self.environment = kept | {
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": runtime,
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_STATE_HOME": str(self.home / ".local/state"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_CURRENT_DESKTOP": "openbox",
            "XDG_SESSION_TYPE": "x11",
            "LC_ALL": "C.UTF-8",
        }

    def _start_parts(self):
        display = self._start_telling(
            "xvfb", [
                "Xvfb", free_display(), "-displayfd", "{fd}", "-screen", "0", self._screen, "-nolisten", "tcp", "-nolisten", "local",
                "-noreset"])
        self.environment["DISPLAY"] = f":{display}"
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._start_telling(
            "dbus", ["dbus-daemon", "--session", "--nofork", "--print-address={fd}"])
        self.start("openbox", ["openbox", "--sm-disable"])
        self._wait_for_window_manager()

    def _start_telling(self, name, command):
        """Starts a server that writes where it can be reached, as one line, to the descriptor for which {fd} stands."""
        reading, writing = os.pipe()
        with os.fdopen(reading, encoding="utf-8") as answer:
            process = self.start(name, [part.format(fd=writing) for part in command], pass_fds=[writing])
            os.close(writing)
            told = answer.readline().strip()
        if not told:
            raise DesktopFailure(f"{name} did not start ({process.poll()}); see {self.folder}/logs/{name}.log")
        return told

    def _wait_for_window_manager(self):
        """Returns when it takes in every window that opens from now on; leaves one workspace more.

        Openbox marks the screen as its own before its main loop runs. Events that come in between lie in a queue on which
        the loop does not look before the next event: a window that opens then stays unseen while nothing else happens. An
        answer to a request shows that the queue is empty; the request may lie in it itself, so it is made again.
        """
        wanted = wait_until(self._workspaces, SECONDS_TO_START, "the window manager") + 1

        def answers():
            self.run("xdotool", "set_num_desktops", str(wanted))
            return self._workspaces() == wanted

        wait_until(answers, SECONDS_TO_START, "an answer of the window manager")

    def _workspaces(self):
        """How many the window manager has made; 0 without one."""
        with contextlib.suppress(subprocess.CalledProcessError):
            return int(self.run("xdotool", "get_num_desktops"))
        return 0
