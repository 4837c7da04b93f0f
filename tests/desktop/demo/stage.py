"""What the session is played with: Quorvel, the applications around it, a person's hands, and a camera."""

import subprocess
import threading
import time

from report import StepFailed
from virtualDesktop import wait_until
from window import Window

APPLICATIONS = {
    "Anki": ["--color", "2f5d8a"],
    "Steam": ["--color", "1b2838"],
    "Discord": ["--color", "404eed", "--stubborn"],
}
SIZE = "360x110"
# Low on the right, where it covers little of Quorvel.
PLACE = ("900", "760")
# Where the pointer is: on Quorvel's page, away from its buttons.
HANDS_X, HANDS_Y = 640, 480
SECONDS_TO_DRAW = 0.4  # the accessible texts are ahead of the pixels, which a processor draws here
FEWEST_COLOURS = 300  # a window that was not drawn has a handful


class Stage:
    def __init__(self, desktop, program, decoy):
        self.desktop = desktop
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
        environment = self.desktop.environment
        environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        environment["QT_QPA_PLATFORM"] = "xcb"
        self.quorvel = self.desktop.start("quorvel", [str(self._program)])
        self.window = Window(self.quorvel.pid)
        return self._window_of(self.quorvel)

    def open(self, name):
        """Starts an application from its own program and waits until its window is in front."""
        options = APPLICATIONS[name]
        process = self.desktop.start(name.lower(), [str(self.desktop.home / "applications" / name.lower()),
                                                     "--title", name, "--geometry", SIZE, *options])
        window = self._window_of(process)
        self.desktop.run("xdotool", "windowmove", window, *PLACE)
        return process

    def title(self, process):
        """What the title bar of its window says."""
        return self.desktop.run("xdotool", "getwindowname", self._window_of(process)).strip()

    def wait_for_title(self, process, beginning, seconds):
        wait_until(lambda: self.title(process).startswith(beginning), seconds, f"the title {beginning!r}")
        return self.title(process)

    def bring_to_front(self, process):
        self.desktop.run("xdotool", "windowactivate", "--sync", self._window_of(process))

    def end(self, process):
        self.desktop.end(process)

    def _window_of(self, process):
        def shown():
            if process.poll() is not None:
                raise StepFailed(f"{process.args[0]} ended with {process.returncode}; its log may say why")
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)],
                                   env=self.desktop.environment, capture_output=True, text=True, check=False)
            return found.stdout.split()[-1:]

        return wait_until(shown, 20, f"a window of {process.args[0]}")[0]

    def press_key(self, key):
        """A key or a combination as xdotool names it, in the window in front."""
        self.desktop.run("xdotool", "key", "--clearmodifiers", key)

    def fill(self, field, text, then=None):
        """Types over what stands in a field of Quorvel's window, which is in front; then perhaps presses a key."""
        self.window.focus(field)
        self.press_key("ctrl+a")
        self.type(text)
        if then:
            self.press_key(then)

    def type(self, text):
        self.desktop.run("xdotool", "type", "--clearmodifiers", "--delay", "12", text)

    def wait_for_field(self, field, text, seconds):
        """Waits until this stands in the field."""
        wait_until(lambda: self.window.text_of(field) == text, seconds, f"{text!r} in {field!r}")
        return f"{field}: {text}"

    def hands(self):
        """`with stage.hands():` someone moves the pointer a little, more than once a second."""
        return _Hands(self.desktop)

    def scroll_to_end(self):
        """Turns the wheel until the page of Quorvel's window shows its end, where the events are."""
        self._turn_wheel("5")

    def scroll_to_start(self):
        self._turn_wheel("4")

    def _turn_wheel(self, button):
        self.desktop.run("xdotool", "mousemove", str(HANDS_X), str(HANDS_Y), "click", "--repeat", "40", "--delay", "5", button)

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
            self._desktop.run("xdotool", "mousemove", str(HANDS_X + beat % 7), str(HANDS_Y))


def seconds_until(condition, seconds, what):
    """How long it took, at most `seconds`, looked at twenty times a second."""
    began = time.monotonic()
    wait_until(condition, seconds, what)
    return time.monotonic() - began
