#!/usr/bin/env python3
"""What assistive tools can do with the program's window, over a real accessibility bus: press, write, read states."""

import argparse
import contextlib
import os
import re
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

import gi
from gi.repository import GLib

sys.path.insert(0, str(Path(__file__).resolve().parent))

from virtualDesktop import VirtualDesktop, wait_until  # noqa: E402

SECONDS = 30  # only what is broken is waited for that long
TOPIC = "Current topic"
SAME_TOPIC = "Current study topic"  # another field over the same draft
PROGRAM = Path()


class AccessibleItems(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        undo = contextlib.ExitStack()
        cls.addClassCleanup(undo.close)
        folder = undo.enter_context(tempfile.TemporaryDirectory(prefix="quorvel-accessible-"))
        cls.desktop = undo.enter_context(VirtualDesktop(folder))
        cls.desktop.environment |= {
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_QPA_PLATFORM": "xcb",
            "QT_LOGGING_RULES": "quorvel.engine.command.debug=true",
        }
        # The accessibility library looks for the bus of this process: it must be known before it is loaded.
        os.environ.update(cls.desktop.environment)
        global Atspi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi

        Atspi.init()

    def setUp(self):
        for folder in (".config/quorvel", ".local/share/quorvel"):
            shutil.rmtree(self.desktop.home / folder, ignore_errors=True)
        settings = self.desktop.home / ".config/quorvel"
        settings.mkdir(parents=True)
        (settings / "preferences").write_text('accessMode = "guest"\n', encoding="utf-8")
        self.log = self.desktop.folder / f"logs/{self.id()}.log"
        self.program = self.desktop.start(self.id(), [str(PROGRAM)])
        self.addCleanup(self.desktop.end, self.program)
        self.node("Manual Lock", "push button")

    def tearDown(self):
        self.assertIsNone(self.program.poll(), "the program ended")

    def find(self, name, role):
        """The item of that name and role, also where it is scrolled away; None where it is hidden."""
        with contextlib.suppress(GLib.Error):  # an item that went while it was looked at: the next look is better
            waiting = [node for node in self.children(Atspi.get_desktop(0))
                       if node.get_process_id() == self.program.pid]
            for application in waiting:
                application.clear_cache()
            while waiting:
                node = waiting.pop(0)
                if (node.get_name(), node.get_role_name()) == (name, role) and self.is_there(node):
                    return node
                waiting[:0] = self.children(node)
        return None

    @staticmethod
    def children(node):
        return [child for number in range(node.get_child_count()) if (child := node.get_child_at_index(number))]

    @staticmethod
    def is_there(node):
        """The bridge calls what is scrolled away neither showing nor visible, but only what is hidden has no size."""
        place = node.get_component_iface()
        return place is not None and Atspi.Component.get_extents(place, Atspi.CoordType.SCREEN).width > 0

    def text_of(self, name):
        return Atspi.Text.get_text(self.node(name, "text").get_text_iface(), 0, -1)

    def node(self, name, role):
        return wait_until(lambda: self.find(name, role), SECONDS, f"{role} {name!r}")

    def has(self, name, role, *states):
        """Whether the item is in all of these states."""
        known = self.node(name, role).get_state_set()
        return all(known.contains(getattr(Atspi.StateType, state)) for state in states)

    def act(self, name, role, action):
        """Asks for the action, whether the item would have it or not."""
        actions = self.node(name, role).get_action_iface()
        for number in range(actions.get_n_actions()):
            if Atspi.Action.get_action_name(actions, number) == action:
                Atspi.Action.do_action(actions, number)
                return
        self.fail(f"{role} {name!r} has no action {action}")

    def writable(self, name):
        return self.node(name, "text").get_editable_text_iface()

    def write(self, name, text):
        self.assertTrue(Atspi.EditableText.set_text_contents(self.writable(name), text))

    def calls(self, operation):
        """How often the window has called the operation, since the program started."""
        return len(re.findall(rf"quorvel\.engine\.command: \"?{operation}\b", self.log.read_text(encoding="utf-8")))

    def test_a_press_calls_what_a_click_calls_once(self):
        self.act("Manual Lock", "push button", "Press")
        self.node("Locked", "label")
        self.assertEqual(self.calls("lockNow"), 1)

    def test_a_field_takes_text_exactly(self):
        for text in ("derivatives", "Производные и ёж", "emoji 😀👩‍🎓 end", " blanks  kept ", "\"quotes\" & <tags>", ""):
            self.write(TOPIC, text)
            self.assertEqual(self.text_of(TOPIC), text)
            self.assertEqual(self.text_of(SAME_TOPIC), text)

    def test_a_field_takes_ten_thousand_characters(self):
        text = "яx" * 5000
        self.write(TOPIC, text)
        self.assertEqual(self.text_of(SAME_TOPIC), text)

    def test_a_part_of_a_text_is_replaced(self):
        self.write(TOPIC, "one two three")
        read = self.node(TOPIC, "text").get_text_iface()
        Atspi.Text.add_selection(read, 4, 7)
        selected = Atspi.Text.get_selection(read, 0)
        self.assertEqual((selected.start_offset, selected.end_offset), (4, 7))
        Atspi.EditableText.delete_text(self.writable(TOPIC), 4, 7)
        self.assertEqual(self.text_of(SAME_TOPIC), "one  three")
        Atspi.EditableText.insert_text(self.writable(TOPIC), 4, "два", 3)
        self.assertEqual(self.text_of(SAME_TOPIC), "one два three")

    def test_an_editor_takes_lines_and_they_are_saved(self):
        self.act("Settings", "radio button", "Press")
        self.act("Pro mode", "check box", "Press")
        self.write("Blocked apps", "Chess\nШашки 😀\n")
        self.assertEqual(self.text_of("Blocked apps"), "Chess\nШашки 😀\n")
        self.act("Save Settings", "push button", "Press")
        stored = self.desktop.home / ".local/share"
        wait_until(lambda: any("Шашки 😀" in path.read_text(encoding="utf-8") for path in stored.rglob("config.json")),
                   SECONDS, "the saved list")

    def test_a_disabled_button_says_so_and_cannot_be_pressed(self):
        self.assertTrue(self.has("Start Study", "push button", "ENABLED", "SENSITIVE", "FOCUSABLE"))
        self.act("Start Study", "push button", "Press")
        wait_until(lambda: not self.has("Start Study", "push button", "ENABLED"), SECONDS, "the disabled button")
        for state in ("ENABLED", "SENSITIVE", "FOCUSABLE"):
            self.assertFalse(self.has("Start Study", "push button", state), state)
        self.act("Start Study", "push button", "Press")
        self.act("Manual Lock", "push button", "Press")  # whose effect comes after that of the press before
        self.node("Locked", "label")
        self.assertEqual(self.calls("startStudy"), 1)

    def test_a_switch_and_a_choice_tell_and_change_what_is_on(self):
        self.act("Settings", "radio button", "Press")
        for action in ("Press", "Toggle"):
            was_on = self.has("Pro mode", "check box", "CHECKED")
            before = self.calls("setProModeEnabled")
            self.act("Pro mode", "check box", action)
            wait_until(lambda: self.has("Pro mode", "check box", "CHECKED") != was_on, SECONDS, "the other state")
            self.assertEqual(self.find("Blocked apps", "text") is not None, not was_on)
            self.assertEqual(self.calls("setProModeEnabled"), before + 1)
        self.assertTrue(self.has("ENG", "radio button", "CHECKED"))
        self.act("RUS", "radio button", "Press")
        wait_until(lambda: self.has("RUS", "radio button", "CHECKED"), SECONDS, "the other language")
        self.assertFalse(self.has("ENG", "radio button", "CHECKED"))
        self.assertTrue(self.has("Настройки", "radio button", "CHECKED"))
        self.act("ENG", "radio button", "Press")
        self.node("Basic Settings", "heading")

    def test_progress_has_a_value(self):
        def value():
            return Atspi.Value.get_current_value(self.node("Session progress", "progress bar").get_value_iface())

        self.act("Manual 15m Break", "push button", "Press")
        wait_until(lambda: 0 < value() < 1, SECONDS, "progress")
        scale = self.node("Session progress", "progress bar").get_value_iface()
        self.assertEqual(Atspi.Value.get_minimum_value(scale), 0)
        self.assertEqual(Atspi.Value.get_maximum_value(scale), 1)

    def test_texts_are_read_by_their_role(self):
        title = self.node("Focus", "heading")
        self.assertEqual(Atspi.Text.get_text(title.get_text_iface(), 0, -1), "Focus")
        label = self.node("Focus blocker", "label")
        self.assertEqual(Atspi.Text.get_text(label.get_text_iface(), 0, -1), "Focus blocker")
        self.assertFalse(label.get_state_set().contains(Atspi.StateType.FOCUSABLE))

    def test_what_is_scrolled_away_can_be_used(self):
        self.assertIsNone(self.find("Answer from memory", "text"), "there is no card to answer")
        self.assertFalse(self.has("Next task", "text", "SHOWING"))
        self.write("Next task", "Read")
        self.act("Next task", "text", "SetFocus")
        wait_until(lambda: self.has("Next task", "text", "SHOWING", "FOCUSED"), SECONDS, "the field on the screen")
        self.assertEqual(self.text_of("Next task"), "Read")

    def test_a_field_gets_the_keyboard_and_says_so(self):
        self.act(TOPIC, "text", "SetFocus")
        wait_until(lambda: self.has(TOPIC, "text", "FOCUSED", "EDITABLE"), SECONDS, "the keyboard")
        self.assertFalse(self.has(TOPIC, "text", "READ_ONLY"))
        self.act(SAME_TOPIC, "text", "SetFocus")
        wait_until(lambda: self.has(SAME_TOPIC, "text", "FOCUSED"), SECONDS, "the keyboard")
        self.assertFalse(self.has(TOPIC, "text", "FOCUSED"))


if __name__ == "__main__":
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--program", required=True, type=Path)
    given, rest = arguments.parse_known_args()
    PROGRAM = given.program.resolve()
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)
