"""Who sits at the desktop: opens Quorvel, reads its window, points, types and turns the wheel."""

import subprocess

from virtualDesktop import NotSeen, wait_until
from window import Window

SECONDS_TO_OPEN = 20
SECONDS_TO_SHOW = 20  # what comes at all comes sooner, also where the machine is busy


class Person:
    def __init__(self, desktop, resting_place):
        """`resting_place` is where on the screen the pointer turns the wheel: on the page, away from what can be pressed."""
        self.desktop = desktop
        self._resting_place = resting_place

    def start_program(self, program, **environment):
        """Starts Quorvel, perhaps with more in its environment, and returns its window's number for xdotool."""
        environment |= {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_QPA_PLATFORM": "xcb"}
        self.quorvel = self.desktop.start("quorvel", [str(program)], environment)
        self.window = Window(self.quorvel.pid)
        return self.window_of(self.quorvel)

    def window_of(self, process):
        """The number of its window, which must come."""
        def shown():
            if process.poll() is not None:
                raise NotSeen(f"{process.args[0]} ended with {process.returncode}; its log may say why")
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(process.pid)],
                                   env=self.desktop.environment, capture_output=True, text=True, check=False)
            return found.stdout.split()[-1:]

        return wait_until(shown, SECONDS_TO_OPEN, f"a window of {process.args[0]}")[0]

    def bring_to_front(self, process):
        self.desktop.run("xdotool", "windowactivate", "--sync", self.window_of(process))

    def press_key(self, *keys):
        """Keys or combinations as xdotool names them, in the window in front."""
        self.desktop.run("xdotool", "key", "--clearmodifiers", *keys)

    def type(self, text):
        """Types the text, with Return between its lines."""
        for number, line in enumerate(text.split("\n")):
            if number > 0:
                self.press_key("Return")
            self.desktop.run("xdotool", "type", "--clearmodifiers", "--delay", "12", "--", line)

    def fill(self, field, text, then=None):
        """Types over what stands in a field of Quorvel's window, which is in front; then perhaps presses a key."""
        self.window.focus(field)
        self.press_key("ctrl+a")
        self.type(text)
        if then:
            self.press_key(then)

    def wait_for_field(self, field, text, seconds=SECONDS_TO_SHOW):
        """Waits until this stands in the field."""
        wait_until(lambda: self.window.text_of(field) == text, seconds, f"{text!r} in {field!r}")
        return f"{field}: {text}"

    def scroll_to_end(self):
        """Turns the wheel until the page of Quorvel's window shows its end."""
        self._turn_wheel("5")

    def scroll_to_start(self):
        self._turn_wheel("4")

    def _turn_wheel(self, button):
        x, y = self._resting_place
        self.desktop.run("xdotool", "mousemove", str(x), str(y), "click", "--repeat", "40", "--delay", "5", button)
