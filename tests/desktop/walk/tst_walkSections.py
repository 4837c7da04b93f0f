#!/usr/bin/python3
"""Every section and the gate in both languages: what they say, and that each control calls its one operation."""

import re
from collections import Counter

import walker
from records import write_record
from texts import (CONTROLS, FIELDS, GATE, GATE_CONTROLS, ROWS_THAT_GO, SECTIONS, SIDEBAR, SIDEBAR_CONTROLS, TEXTS, said)
from virtualDesktop import wait_until
from walker import EVENT, LANGUAGES, SECONDS_TO_SHOW, WalkTest

CREATED = "2026-09-01T08:00:00Z"
CARDS = [{"id": f"00000000-0000-0000-0000-00000000000{number}", "topic": "Ω", "prompt": f"{number} + {number}",
          "expectedAnswer": f"{2 * number}", "createdAt": CREATED, "correctCount": 0, "wrongCount": 0} for number in (1, 2)]
TASKS = [{"id": "00000000-0000-0000-0000-000000000003", "title": "1", "createdAt": CREATED},
         {"id": "00000000-0000-0000-0000-000000000004", "title": "2", "createdAt": CREATED, "completedAt": CREATED}]

# What stays as it is in a Russian window: names and labels that the program fixes, and what it tells of the desktop.
LATIN = re.compile(r"[A-Za-z]+")
FIXED_ENGLISH = re.compile(
    r"Quorvel|ENG|RUS|Guest|OK \d+ / Miss \d+|\d+/\d+ XP|\+\d+ XP|\d+s|\d+%|" + EVENT + ".+")
RUSSIAN_WITH_LATIN = {russian for english, russian in TEXTS.values() if LATIN.search(russian)}
PROPER_NAMES = re.compile(r"Quorvel|XP|GNOME|KDE|AppIndicator|Wayland|X11|Chromium|Chrome|Firefox")


def in_order(wanted, shown):
    """The first of `wanted` that does not come in `shown` after those before it; None where all come in order."""
    rest = iter(shown)
    return next((text for text in wanted if text not in rest), None)


class Sections(WalkTest):
    def test_everySectionSaysWhatItIsInBothLanguages(self):
        for language in LANGUAGES:
            self.walker.open(accessMode="guest", language=language)
            for section, (title, subtitle, page) in SECTIONS.items():
                with self.subTest(section=section, language=language):
                    self.walker.window.press(said(title, language))
                    self.walker.shows(said(subtitle, language))
                    shown = self.walker.window.labels()
                    wanted = [said(key, language) for key in (*SIDEBAR, title, subtitle, *page)]
                    self.assertIsNone(in_order(wanted, shown), f"wanted {wanted}, shown {shown}")
                    self.assertEqual([name for name in self.walker.window.fields()],
                                     [said(key, language) for key, _ in FIELDS[section] if key != "answer_from_memory"])
            self.walker.close()

    def test_nothingEnglishIsLeftInTheRussianWindow(self):
        write_record(self.walker.home, "study-cards", CARDS)
        write_record(self.walker.home, "study-tasks", TASKS)
        self.walker.open(accessMode="guest", language="ru", proModeEnabled=True)
        for section, (title, subtitle, _) in SECTIONS.items():
            with self.subTest(section=section):
                self.walker.window.press(said(title, "ru"))
                self.walker.shows(said(subtitle, "ru"))
                self.assertEqual(self.english_words(), [])

    def test_theGateSaysWhatItIsInBothLanguages(self):
        for language in LANGUAGES:
            self.walker.open(language=language)
            with self.subTest(language=language):
                self.walker.shows(said("continue_guest", language))
                shown = self.walker.window.labels()
                wanted = [said(key, language) for key in GATE]
                self.assertIsNone(in_order(wanted, shown), f"wanted {wanted}, shown {shown}")
                self.assertEqual(self.walker.window.fields(),
                                 [said(key, language) for key in ("email", "verification_code")])
                if language == "ru":
                    self.assertEqual(self.english_words(), [])
            self.walker.close()

    def english_words(self):
        texts = {text for node, _, name in self.walker.window.nodes() for text in (name, node.get_description() or "")}
        return sorted(text for text in texts - RUSSIAN_WITH_LATIN
                      if not FIXED_ENGLISH.fullmatch(text) and LATIN.search(PROPER_NAMES.sub("", text)))


class Fields(WalkTest):
    def test_typingIsKeptAndReturnCallsItsOperation(self):
        write_record(self.walker.home, "study-cards", CARDS)
        self.walker.open(accessMode="guest")
        for section, fields in FIELDS.items():
            self.walker.window.press(said(SECTIONS[section][0], "en"))
            self.walker.shows(said(SECTIONS[section][1], "en"))
            for key, operation in fields:
                with self.subTest(section=section, field=key):
                    self.type_into(said(key, "en"), operation, SECTIONS[section])

    def type_into(self, field, operation, section):
        other = "activity_title"
        with self.walker.calls():
            self.walker.fill(field, "Ab 1")
            self.walker.wait_for_field(field, "Ab 1")
            self.walker.window.press(said(other, "en"))
            self.walker.shows(said("activity_subtitle", "en"))
            self.walker.window.press(said(section[0], "en"))
            self.walker.wait_for_field(field, "Ab 1")
        with self.walker.calls(*([operation] if operation else [])):
            self.walker.window.focus(field)
            self.walker.press_key("Return", "End", "2")
            wait_until(lambda: self.walker.window.text_of(field) in ("Ab 12", "2"), SECONDS_TO_SHOW, "a key after Return")


class Controls(WalkTest):
    def test_eachCallsItsOneOperationThroughAssistiveTools(self):
        self.press_everything("en", self.press_by_tool)

    def test_eachCallsItsOneOperationUnderThePointer(self):
        self.press_everything("ru", self.walker.click)

    def test_atTheGateToo(self):
        for language, press in zip(LANGUAGES, (self.press_by_tool, self.walker.click)):
            self.walker.open(language=language, backendBaseURL="http://127.0.0.1:9/api")  # nobody answers there
            self.walker.shows(said("continue_guest", language))
            controls = self.in_language(GATE_CONTROLS, language)
            self.assertEqual(Counter(self.names()), Counter(said(key, language) for key, _ in controls))
            for key, operation in controls:
                with self.subTest(control=key, language=language):
                    self.press_one(key, operation, 0, language, press)
            self.walker.shows(said("sign_out", language))
            self.walker.close()

    def press_everything(self, language, press):
        write_record(self.walker.home, "study-cards", CARDS)
        write_record(self.walker.home, "study-tasks", TASKS)
        self.walker.open(accessMode="guest", language=language)
        sidebar = self.in_language(SIDEBAR_CONTROLS, language)
        # The coach last: it adds cards and tasks.
        for section in sorted(CONTROLS, key=lambda name: name == "coach"):
            with self.subTest(section=section, language=language):
                title, subtitle, _ = SECTIONS[section]
                with self.walker.calls():
                    self.walker.window.press(said(title, language))
                    self.walker.shows(said(subtitle, language))
                keys = [key for key, _ in sidebar + CONTROLS[section]] + ROWS_THAT_GO.get(section, [])
                self.assertEqual(Counter(self.names()), Counter(said(key, language) for key in keys))
                self.press_all(CONTROLS[section], language, press)
        self.press_all(sidebar, language, press)
        self.walker.shows(said("continue_guest", language))

    def press_all(self, controls, language, press):
        pressed = Counter()
        for key, operation in controls:
            with self.subTest(control=key, operation=operation):
                self.press_one(key, operation, pressed[key], language, press)
            pressed[key] += 1

    def press_one(self, key, operation, number, language, press):
        """Presses the control of that number among those of this name, or the first where fewer are left."""
        nodes = [node for node, name in self.walker.window.controls() if name == said(key, language)]
        with self.walker.calls(*([operation] if operation else [])):
            press(nodes[number] if number < len(nodes) else nodes[0])

    def press_by_tool(self, node):
        self.walker.window.press_item(node)

    def names(self):
        return [name for _, name in self.walker.window.controls()]

    @staticmethod
    def in_language(controls, language):
        """The other language is chosen first, so that the window ends in its own."""
        return controls if language == "en" else [controls[1], controls[0], *controls[2:]]


if __name__ == "__main__":
    walker.main()
