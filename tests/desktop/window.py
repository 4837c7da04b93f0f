"""The program's window as its accessibility tree shows it: texts to read, buttons to press."""

import re
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from virtualDesktop import NotSeen, wait_until  # noqa: E402


def _children(node):
    for number in range(node.get_child_count()):
        child = node.get_child_at_index(number)
        if child is not None:
            yield child


def _press_of(node, role):
    """The number of the action that presses it; None where it has none."""
    if role in ("label", "heading", "filler", "panel"):
        return None
    actions = node.get_action_iface()
    for number in range(actions.get_n_actions() if actions else 0):
        if Atspi.Action.get_action_name(actions, number).lower() in ("press", "toggle"):
            return number
    return None


class Window:
    """The windows of one process. Only what is showing counts: a page may have to be scrolled to it."""

    def __init__(self, process_id):
        self._process_id = process_id
        Atspi.init()

    def _application(self):
        for node in _children(Atspi.get_desktop(0)):
            try:
                if node.get_process_id() == self._process_id:
                    return node
            except GLib.Error:
                continue  # one that is just going
        return None

    def nodes(self, showing=True):
        """Every showing item as (item, role, name), as the program has it now; or also what is scrolled away."""
        application = self._application()
        if application is None:
            return []
        application.clear_cache()
        found = []
        waiting = list(_children(application))
        while waiting:
            node = waiting.pop(0)
            try:
                states = node.get_state_set()
                if not states.contains(Atspi.StateType.SHOWING if showing else Atspi.StateType.VISIBLE):
                    continue
                found.append((node, node.get_role_name(), node.get_name() or ""))
                waiting[:0] = _children(node)
            except GLib.Error:
                continue  # gone while it was looked at
        return found

    def texts(self):
        """The names of all showing items, from top to bottom."""
        return [name for _, _, name in self.nodes() if name]

    def find(self, pattern):
        """The first showing text that the pattern matches whole, or None."""
        wanted = re.compile(pattern)
        return next((text for text in self.texts() if wanted.fullmatch(text)), None)

    def wait_for(self, pattern, seconds):
        """The first text that matches; NotSeen with what is shown instead where there is none in time."""
        ends = time.monotonic() + seconds
        while True:
            texts = self.texts()
            for text in texts:
                if re.fullmatch(pattern, text):
                    return text
            if time.monotonic() > ends:
                raise NotSeen(f"no text {pattern!r} within {seconds} s; shown: {texts}")
            time.sleep(0.05)

    def moment_of(self, pattern, seconds):
        """When a text that matches appeared: the time of the last look without it and of the first with it."""
        began = before = time.monotonic()
        while True:
            looked = time.monotonic()
            if self.find(pattern):
                return before, time.monotonic()
            before = looked
            if looked - began > seconds:
                raise NotSeen(f"no text {pattern!r} within {seconds} s; shown: {self.texts()}")

    def controls(self):
        """All that can be pressed and shows, from top to bottom, as (item, name)."""
        return [(node, name) for node, role, name in self.nodes() if _press_of(node, role) is not None]

    def labels(self):
        """The names of all texts that only say something, from top to bottom."""
        return [name for _, role, name in self.nodes() if role in ("label", "heading", "static")]

    def can_be_pressed(self, name):
        """Whether the first control of that name, which must be there, is enabled."""
        for node, text in self.controls():
            if text == name:
                return node.get_state_set().contains(Atspi.StateType.ENABLED)
        raise NotSeen(f"no control {name!r}")

    def press_item(self, node):
        """Presses one of controls() through its accessible action."""
        if not self._press(node, node.get_role_name()):
            raise NotSeen(f"{node.get_name()!r} cannot be pressed")

    def fields(self):
        """The names of all fields that show, from top to bottom."""
        return [name for _, role, name in self.nodes() if role == "text"]

    def press(self, name, seconds=10):
        """Presses the button of that name through its accessible action."""
        ends = time.monotonic() + seconds
        while time.monotonic() < ends:
            for node, role, text in self.nodes():
                if text == name and self._press(node, role):
                    return
            time.sleep(0.1)
        raise NotSeen(f"no button {name!r} that can be pressed")

    def focus(self, name, seconds=10):
        """Gives the keyboard to the field of that name, wherever the page stands: the page goes to it by itself."""
        ends = time.monotonic() + seconds
        while time.monotonic() < ends:
            node = self._field(name)
            if node is not None and Atspi.Component.grab_focus(node.get_component_iface()):
                wait_until(lambda: self._field(name).get_state_set().contains(Atspi.StateType.FOCUSED), seconds, name)
                return
            time.sleep(0.1)
        raise NotSeen(f"no field {name!r} to type into")

    def text_of(self, name):
        """What stands in the field of that name; None where there is no such field."""
        node = self._field(name)
        if node is None:
            return None
        # Qt tells the ends of lines in an editor as its documents have them.
        return Atspi.Text.get_text(node.get_text_iface(), 0, -1).replace("\u2029", "\n")

    def _field(self, name):
        return next((node for node, role, text in self.nodes(showing=False) if text == name and role == "text"), None)

    @staticmethod
    def _press(node, role):
        number = _press_of(node, role)
        if number is None or not node.get_state_set().contains(Atspi.StateType.ENABLED):
            return False
        return Atspi.Action.do_action(node.get_action_iface(), number)
