#!/usr/bin/python3
"""Shortcuts work where they belong and nowhere else; what the window tells can be selected and copied."""

import re

import walker
from texts import SECTIONS, said
from virtualDesktop import wait_until
from walker import EVENT, SECONDS_TO_SHOW, WalkTest

SHORTCUTS = ["ctrl+l", "ctrl+s", "ctrl+shift+s"]


class Shortcuts(WalkTest):
    def test_eachSectionHasItsOwn(self):
        walk = self.walker
        walk.open(accessMode="guest")
        for section, (title, subtitle, _) in SECTIONS.items():
            with self.subTest(section=section):
                walk.window.press(said(title, "en"))
                walk.shows(said(subtitle, "en"))
                expected = ["lockNow", *(["startStudy"] if section == "focus" else []),
                            *(["saveSettings"] if section == "rules" else []), "lockNow"]
                with walk.calls(*expected):
                    walk.press_key(*SHORTCUTS, "ctrl+l")  # the last shows that those before it have come

    def test_theyWorkWhileAFieldHasTheKeyboard(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.window.focus("Current topic")
        with walk.calls("lockNow", "startStudy", "lockNow"):
            walk.press_key("ctrl+l", "ctrl+s", "ctrl+l")
        walk.window.press("Settings")
        walk.fill("Study minutes", "30")
        with walk.calls("saveSettings", "lockNow"):
            walk.press_key("ctrl+shift+s", "ctrl+s", "ctrl+l")
        walk.shows("30:00")

    def test_startStudyOnlyWhereItsButtonCanBePressed(self):
        walk = self.walker
        walk.open(accessMode="guest")
        with walk.calls("startStudy", "lockNow"):
            walk.press_key("ctrl+s", "ctrl+s", "ctrl+l")

    def test_noneAtTheGate(self):
        walk = self.walker
        walk.open()
        walk.window.focus("Email")
        with walk.calls():
            walk.press_key(*SHORTCUTS, "x")
            walk.wait_for_field("Email", "x")

    def test_noneAtTheGateAfterASectionWasShown(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.window.press("Settings")
        walk.shows("Save Settings")
        with walk.calls("signOut"):
            walk.window.press("Sign Out")
            walk.window.focus("Email")
            walk.press_key(*SHORTCUTS, "x")
            walk.wait_for_field("Email", "x")

    def test_controlQEndsIt(self):
        for preferences in {}, {"accessMode": "guest"}:
            with self.subTest(preferences=preferences):
                self.walker.open(**preferences)
                self.walker.press_key("ctrl+q")
                self.assertEqual(self.walker.quorvel.wait(SECONDS_TO_SHOW), 0)


class Selecting(WalkTest):
    def test_anEvent(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.press_key("ctrl+l")
        walk.window.press("Activity")
        event = walk.window.wait_for(EVENT + r"Locked manually\.", SECONDS_TO_SHOW)
        self.assertEqual(self.copied(event, EVENT + r"Locked manually\."), event)

    def test_whatTheCoachSays(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.window.press("AI Coach")
        said_by_coach = walk.window.wait_for(re.escape(said("ai_initial", "en")), SECONDS_TO_SHOW)
        self.assertEqual(self.copied(said_by_coach, re.escape(said_by_coach)), said_by_coach)

    def copied(self, text, pattern):
        """Clicks into the text, selects all of it, and puts it into the topic field of the focus page."""
        walk = self.walker
        node = next(node for node, _, name in walk.window.nodes() if re.fullmatch(pattern, name))
        walk.click(node)
        walk.press_key("ctrl+a", "ctrl+c")
        walk.window.press("Focus")
        walk.shows(said("focus_subtitle", "en"))
        walk.window.focus("Current topic")
        walk.press_key("ctrl+v")
        wait_until(lambda: walk.window.text_of("Current topic"), SECONDS_TO_SHOW, f"a copy of {text!r}")
        return walk.window.text_of("Current topic")


if __name__ == "__main__":
    walker.main()
