#!/usr/bin/python3
"""Settings: what is typed is in force once it is saved, as far as it makes sense."""

import walker
import records
from texts import said
from virtualDesktop import wait_until
from walker import SECONDS_TO_SHOW, WalkTest

STUDY, BREAK, PROOFS, IDLE = "Study minutes", "Break minutes", "Card proofs", "Idle pause seconds"
EDITORS = ["Blocked apps", "Blocked Domains", "Allowed Study Apps", "Allowed Study Domains"]

# Field, what is typed, what stands there once it is saved. What is no number leaves the number of before.
SAVED = [
    (STUDY, "0", "1"), (STUDY, "abc", "1"), (STUDY, "9999", "240"), (STUDY, "", "240"), (STUDY, " +30 ", "30"),
    (STUDY, "25 min", "30"),
    (BREAK, "-5", "1"), (BREAK, "241", "240"), (BREAK, "5.5", "240"),
    (PROOFS, "-3", "0"), (PROOFS, "21", "20"), (PROOFS, "1e1", "20"), (PROOFS, "0", "0"),
    (IDLE, "14", "15"), (IDLE, "9999", "3600"),
]
NAMES = {STUDY: "studyMinutes", BREAK: "breakMinutes", PROOFS: "requiredProofsToUnlock", IDLE: "maxIdleSeconds"}


class Settings(WalkTest):
    def open(self, **preferences):
        self.walker.open(accessMode="guest", **preferences)
        self.walker.window.press("Settings")
        self.walker.shows(said("rules_subtitle", "en"))

    def config(self):
        return records.read_record(self.walker.home, "config")

    def test_numbersAreSavedAsFarAsTheyMakeSense(self):
        walk = self.walker
        self.open(proModeEnabled=True)
        for field, typed, saved in SAVED:
            with self.subTest(field=field, typed=typed):
                walk.fill(field, typed)
                if not typed:
                    walk.press_key("BackSpace")
                walk.wait_for_field(field, typed)
                with walk.calls("saveSettings"):
                    walk.window.press("Save Settings")
                walk.wait_for_field(field, saved)
                self.assertEqual(self.config()[NAMES[field]], int(saved))
        walk.shows("30:00")  # the clock that waits shows the new length

    def test_draftsAreKeptButNotInForceUntilSaved(self):
        walk = self.walker
        self.open()
        before = self.config() if (walk.home / ".local/share/Quorvel/config.json").exists() else None
        walk.fill(STUDY, "50")
        walk.window.press("Focus")
        walk.shows("25:00")
        walk.window.press("Settings")
        walk.wait_for_field(STUDY, "50")
        after = self.config() if (walk.home / ".local/share/Quorvel/config.json").exists() else None
        self.assertEqual(after, before)
        walk.press_key("ctrl+shift+s")
        walk.shows("50:00")
        self.assertEqual(self.config()["studyMinutes"], 50)

    def test_resettingRestoresEverythingButProMode(self):
        walk = self.walker
        records.write_settings(walk.home, studyMinutes=50, breakMinutes=5, requiredProofsToUnlock=3,
                               blockedApps=["Chess"], allowedStudyDomains=["lessons.example"])
        self.open(proModeEnabled=True)
        walk.wait_for_field(STUDY, "50")
        self.assertIn("Chess", walk.window.text_of("Blocked apps").split("\n"))
        walk.window.press("Reset Defaults")
        walk.wait_for_field(STUDY, "25")
        walk.wait_for_field("Allowed Study Domains", "")
        blocked = walk.window.text_of("Blocked apps").split("\n")
        self.assertIn("Steam", blocked)
        self.assertNotIn("Chess", blocked)
        self.assertEqual((self.config()["studyMinutes"], self.config()["blockedApps"]), (25, blocked))

    def test_mergingAddsTheBuiltInListsToOnesOwn(self):
        walk = self.walker
        self.open(proModeEnabled=True)
        builtIn = walk.window.text_of("Blocked apps").split("\n")
        walk.window.focus("Blocked apps")
        walk.press_key("ctrl+a")
        walk.type("Chess\n  Chess \n\nchess")
        walk.window.press("Save Settings")
        walk.wait_for_field("Blocked apps", "Chess\nchess")
        self.assertEqual(self.config()["blockedApps"], ["Chess", "chess"])
        walk.window.press("Merge Blocklists")
        wait_until(lambda: "Steam" in walk.window.text_of("Blocked apps"), SECONDS_TO_SHOW, "the built-in list")
        merged = self.config()["blockedApps"]
        self.assertEqual(merged[:2], ["Chess", "chess"])
        self.assertEqual(set(merged), {"Chess", "chess", *builtIn})

    def test_proModeShowsAndHidesTheEditors(self):
        walk = self.walker
        self.open()
        self.assertEqual(walk.window.fields(), [STUDY, BREAK, PROOFS])
        walk.shows(said("simple_mode_note", "en"))
        with walk.calls("setProModeEnabled(true)"):
            walk.window.press("Pro mode")
        walk.shows(said("allowed_domains_subtitle", "en"))
        walk.lacks(said("simple_mode_note", "en"))
        self.assertEqual(walk.window.fields(), [STUDY, BREAK, PROOFS, IDLE, *EDITORS])
        self.assertIs(records.read_preferences(walk.home)["proModeEnabled"], True)
        with walk.calls("setProModeEnabled(false)"):
            walk.window.press("Pro mode")
        walk.shows(said("simple_mode_note", "en"))
        self.assertEqual(walk.window.fields(), [STUDY, BREAK, PROOFS])
        self.assertIs(records.read_preferences(walk.home)["proModeEnabled"], False)

    def test_whatCannotBeSavedIsSaid(self):
        walk = self.walker
        self.open()
        in_the_way = walk.home / ".config/quorvel/.preferences.new/folder"  # where a save begins
        in_the_way.mkdir(parents=True)
        walk.window.press("Pro mode")
        walk.window.wait_for("Preferences cannot be saved: .+", SECONDS_TO_SHOW)
        walk.shows("Saving")
        walk.window.press("RUS")
        walk.window.wait_for("Не удаётся сохранить настройки: .+", SECONDS_TO_SHOW)
        in_the_way.rmdir()
        in_the_way.parent.rmdir()
        walk.window.press("ENG")
        wait_until(lambda: "Saving" not in walk.window.texts(), SECONDS_TO_SHOW, "the line's end")
        self.assertIs(records.read_preferences(walk.home)["proModeEnabled"], True)


if __name__ == "__main__":
    walker.main()
