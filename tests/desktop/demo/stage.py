"""What the session is played with: Quorvel, the applications around it, a person's hands, and a camera."""

import threading
import time

from person import Person
from report import StepFailed
from virtualDesktop import wait_until

APPLICATIONS = {
    "Anki": ["--color", "2f5d8a"],
    "Steam": ["--color", "1b2838"],
    "Discord": ["--color", "404eed", "--stubborn"],
}
SIZE = "360x110"
# Low on the right, where it covers little of Quorvel.
PLACE = ("900", "760")
# Where the pointer is: on Quorvel's page, away from its buttons.
HANDS = (640, 480)
SECONDS_TO_DRAW = 0.4  # the accessible texts are ahead of the pixels, which a processor draws here
FEWEST_COLOURS = 300  # a window that was not drawn has a handful


class Stage(Person):
    def __init__(self, desktop, program, decoy):
        super().__init__(desktop, HANDS)
        self._program = program
        self._decoy = decoy
        self._pictures = 0
        self._shown = None  # what the last picture shows

    def install_applications(self):
        """Puts each application into the private home, with a menu entry, as an installer would."""
        programs = self.desktop.home / "applications"
        entries = self.desktop.home / ".local/share/applications"
        for folder in programs, entries:
            folder.mkdir(parents=True)
        for name, options in APPLICATIONS.items():
            path = programs / name.lower()
            path.write_bytes(self._decoy.read_bytes())
            path.chmod(0o755)
            command = " ".join([str(path), "--title", name, "--geometry", SIZE, *options])
            (entries / f"{name.lower()}.desktop").write_text(
                f"[Desktop Entry]\nType=Application\nName={name}\nExec={command}\nStartupWMClass={name.lower()}\n",
                encoding="utf-8")

    def start_quorvel(self):
        return self.start_program(self._program)

    def open(self, name):
        """Starts an application from its own program and waits until its window is in front."""
        options = APPLICATIONS[name]
        process = self.desktop.start(name.lower(), [str(self.desktop.home / "applications" / name.lower()),
                                                     "--title", name, "--geometry", SIZE, *options])
        window = self.window_of(process)
        self.desktop.run("xdotool", "windowmove", window, *PLACE)
        return process

    def title(self, process):
        """What the title bar of its window says."""
        return self.desktop.run("xdotool", "getwindowname", self.window_of(process)).strip()

    def wait_for_title(self, process, beginning, seconds):
        wait_until(lambda: self.title(process).startswith(beginning), seconds, f"the title {beginning!r}")
        return self.title(process)

    def end(self, process):
        self.desktop.end(process)

    def hands(self):
        """`with stage.hands():` someone moves the pointer a little, more than once a second."""
        return _Hands(self.desktop)

    def picture(self, name):
        """Takes NN-name.png of the whole screen; fails where nothing was drawn or nothing has changed."""
        self._pictures += 1
        path = self.desktop.folder / f"{self._pictures:02}-{name}.png"
        time.sleep(SECONDS_TO_DRAW)
        self.desktop.run("import", "-silent", "-window", "root", str(path))
        colours, content = self.desktop.run("identify", "-format", "%k %#", str(path)).split()
        if int(colours) < FEWEST_COLOURS:
            raise StepFailed(f"{path.name} shows only {colours} colours: the window is not drawn")
        if content == self._shown:
            raise StepFailed(f"{path.name} shows the same as the picture before: the window is not drawn anew")
        self._shown = content
        return path.name


class _Hands:
    def __init__(self, desktop):
        self._desktop = desktop
        self._still = threading.Event()
        self._thread = threading.Thread(target=self._move, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *problem):
        self._still.set()
        self._thread.join()

    def _move(self):
        beat = 0
        while not self._still.wait(0.4):
            beat += 1
            self._desktop.run("xdotool", "mousemove", str(HANDS[0] + beat % 7), str(HANDS[1]))


def seconds_until(condition, seconds, what):
    """How long it took, at most `seconds`, looked at twenty times a second."""
    began = time.monotonic()
    wait_until(condition, seconds, what)
    return time.monotonic() - began
