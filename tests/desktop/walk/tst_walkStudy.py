#!/usr/bin/python3
"""What a student does with it: a session from the topic to the break's end, cards, and the plan."""

import re
from datetime import date

import walker
import records
from texts import said
from virtualDesktop import wait_until
from walker import EVENT, SECONDS_TO_SHOW, WalkTest

SPEED = 10  # times faster than life
CLOCK = re.compile(r"\d\d:\d\d")
TASKS = ["Read chapter 4", "Solve 5 problems", "Explain it to Ann"]


class Session(WalkTest):
    def test_fromTheTopicToTheEndOfTheBreak(self):
        walk = self.walker
        records.write_settings(walk.home, studyMinutes=1, breakMinutes=1, requiredProofsToUnlock=1, maxIdleSeconds=3600,
                               allowedStudyApps=["Quorvel"])
        walk.hurry(SPEED)
        walk.open(accessMode="guest")
        walk.shows("Need 1 more matching card, or set card proofs to 0.")
        walk.does_nothing("Start Study")
        self.add_the_cards()

        walk.window.press("Focus")
        walk.fill("Current topic", "Derivatives")
        walk.shows("Ready. 1 matching card available.", "1 card", "Solve 1 unique card in the current topic.", "0/1")
        with walk.calls("startStudy"):
            walk.window.press("Start Study")
        walk.shows("Study session is already running.", "No blocked apps running", "Studying")
        walk.does_nothing("Start Study")
        self.see_the_clock_run_down("Study remaining")
        walk.shows("Timer done. Solve 1 more unique card to unlock break.", "Studying")
        walk.lacks("Break remaining")

        walk.fill("Answer from memory", "speed", then="Return")
        walk.shows("Not yet. Review the expected answer, then try another card.", "Expected", "derivative|slope", "OK 0 / Miss 1")
        self.assertEqual(walk.window.text_of("Answer from memory"), "speed")
        walk.lacks("Break remaining")
        walk.fill("Answer from memory", " SLOPE ", then="Return")
        walk.shows("Break remaining", "Break", "Break is unlocked. Entertainment is allowed until the timer ends.")
        self.see_the_clock_run_down("Break remaining", to="00:01")
        walk.shows("Study remaining", "Ready", "36/100 XP", "1 day", "01:00", "Blocking off")
        self.find_it_on_the_disk()

        walk.window.press("Activity")
        events = [found[1] for text in walk.window.texts() if (found := re.fullmatch(EVENT + "(.+)", text))]
        self.assertEqual(events[0], "Break ended. Returned to Ready.")
        self.assertEqual(sorted(events[1:4]), sorted(["Study session completed. Break unlocked.",
                         "+25 XP. Study session completed.", "Card proof completed: Rate of change"]))

    def add_the_cards(self):
        walk = self.walker
        walk.window.press("Cards")
        for topic, question, answer in [("Derivatives", "Rate of change", "derivative|slope"), ("Cities", "Capital", "Paris")]:
            walk.fill("Topic, blank = current topic", topic)
            walk.fill("Question", question)
            with walk.calls("addStudyCard"):
                walk.fill("Expected answer", answer, then="Return")
            walk.wait_for_field("Question", "")
        walk.shows("2 total, 2 matching current topic.")

    def see_the_clock_run_down(self, title, to="00:00"):
        """Looks at the large clock until it has come to `to`: it only ever went down, and more than once."""
        seen = []

        def arrived():
            time = next((name for node, _, name in self.walker.window.nodes()
                         if CLOCK.fullmatch(name) and node.get_description() == title), None)
            if time is not None and time not in seen[-1:]:
                seen.append(time)
            return time is None or time <= to

        wait_until(arrived, 60 / SPEED + SECONDS_TO_SHOW, f"{title} {to}")
        self.assertEqual(seen, sorted(seen, reverse=True))
        self.assertGreater(len(seen), 5)

    def find_it_on_the_disk(self):
        home, today = self.walker.home, date.today().isoformat()
        progress = records.read_record(home, "progress")
        wanted = {"totalXP": 36, "totalFocusSeconds": 60, "totalCompletedSessions": 1, "totalCardProofs": 1,
                  "currentStreak": 1, "longestStreak": 1, "lastCompletedStudyDay": today}
        self.assertEqual({key: progress[key] for key in wanted}, wanted)
        cards = {card["prompt"]: (card["topic"], card["correctCount"], card["wrongCount"])
                 for card in records.read_record(home, "study-cards")}
        self.assertEqual(cards, {"Rate of change": ("Derivatives", 1, 1), "Capital": ("Cities", 0, 0)})


class Cards(WalkTest):
    def test_feedbackIsShownWithoutACardToo(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.window.press("Cards")
        walk.shows("No card selected", "Add cards, then answer them during a study session.")
        walk.window.press("Add Card")
        walk.shows("Card needs both a question and an expected answer.")
        walk.fill("Current study topic", "Alchemy")
        walk.window.press("Pick Card")
        walk.shows("No cards match the current study topic.")

    def test_addedAskedAndDeleted(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.window.press("Cards")
        walk.shows("0 total, 0 matching current topic.", "No cards yet")
        walk.fill("Question", "Capital of France")
        walk.fill("Expected answer", "Paris")
        walk.window.press("Add Card")
        walk.shows("Card added.", "No topic", "1 total, 1 matching current topic.", "OK 0 / Miss 0")
        walk.lacks("No cards yet", "No card selected")
        [card] = records.read_record(walk.home, "study-cards")
        self.assertEqual((card["prompt"], card["expectedAnswer"], card.get("topic")), ("Capital of France", "Paris", None))

        walk.window.press("Submit")
        walk.shows("Type an answer first.")
        walk.window.press("Reveal")
        walk.shows("Expected", "Paris", "Answer revealed. Type it from memory on the next attempt to count proof.")
        walk.window.press("Next")
        walk.shows("Next card selected.")
        walk.lacks("Expected", "Paris")
        walk.fill("Answer from memory", "Rome")
        walk.window.press("Submit")
        walk.shows("Not yet. Review the expected answer, then try another card.", "OK 0 / Miss 1", "Paris")
        walk.fill("Answer from memory", "paris", then="Return")
        walk.shows("Correct. Start a study session to count cards toward a break.", "OK 1 / Miss 1")
        walk.wait_for_field("Answer from memory", "")
        [card] = records.read_record(walk.home, "study-cards")
        self.assertEqual((card["correctCount"], card["wrongCount"]), (1, 1))

        walk.window.press("Delete")
        walk.shows("No cards yet", "No card selected", "0 total, 0 matching current topic.")
        walk.lacks("Capital of France", "Delete")
        self.assertEqual(records.read_record(walk.home, "study-cards"), [])


class Plan(WalkTest):
    def test_tasksAreAddedDoneReopenedDeletedAndCleared(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.fill("Next task", TASKS[0], then="Return")  # beside the quiz
        walk.window.press("Plan")
        walk.fill("Next task", TASKS[1], then="Return")
        walk.fill("Next task", f"  {TASKS[2]} ")
        walk.window.press("Add Task")
        walk.shows(*TASKS)
        walk.wait_for_field("Next task", "")
        walk.does_nothing("Clear Completed")
        self.assertEqual(self.stored(), [(TASKS[2], False), (TASKS[1], False), (TASKS[0], False)])

        walk.press_of("Done", TASKS[2])
        walk.shows("Reopen")
        self.assertEqual(self.stored(), [(TASKS[2], True), (TASKS[1], False), (TASKS[0], False)])
        walk.press_of("Reopen", TASKS[2])
        wait_until(lambda: self.stored()[0] == (TASKS[2], False), SECONDS_TO_SHOW, "the reopened task")
        walk.press_of("Delete", TASKS[2])
        wait_until(lambda: TASKS[2] not in walk.window.texts(), SECONDS_TO_SHOW, "a row less")
        self.assertEqual(self.stored(), [(TASKS[1], False), (TASKS[0], False)])
        walk.press_of("Done", TASKS[1])
        walk.shows("Reopen")
        walk.window.press("Clear Completed")
        wait_until(lambda: TASKS[1] not in walk.window.texts(), SECONDS_TO_SHOW, "a row less")
        walk.shows(TASKS[0])
        walk.does_nothing("Clear Completed")
        self.assertEqual(self.stored(), [(TASKS[0], False)])
        self.assertEqual(records.read_record(walk.home, "progress")["totalXP"], 6)

        walk.window.press("Activity")
        events = [text for text in walk.window.texts() if text.endswith("Task deleted.")]
        self.assertEqual(len(events), 1)
        self.assertEqual(walk.commands(), ["addStudyTask", "addStudyTask", "addStudyTask", "completeStudyTask",
                                           "reopenStudyTask", "deleteStudyTask", "completeStudyTask",
                                           "clearCompletedTasks"])

    def stored(self):
        return [(task["title"], "completedAt" in task) for task in records.read_record(self.walker.home, "study-tasks")]


class Coach(WalkTest):
    def test_theLocalPackLandsInTheLists(self):
        walk = self.walker
        walk.open(accessMode="guest")
        walk.window.press("AI Coach")
        walk.fill(said("topic_or_goal", "en"), "Limits")
        walk.window.press("Local Pack")
        summary = ("Local coach: Local coach generated a simple plan for Limits. Sign in to use server AI suggestions."
                   "\n\nAdded 5 tasks and 5 cards.")
        walk.shows(summary)
        walk.window.press("Generate Plan + Cards")
        walk.shows("10", summary)
        self.assertEqual(len(records.read_record(walk.home, "study-cards")), 10)
        self.assertEqual(len(records.read_record(walk.home, "study-tasks")), 10)


if __name__ == "__main__":
    walker.main()
