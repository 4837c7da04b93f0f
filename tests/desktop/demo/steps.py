"""The demo itself: a student's two sessions, told from the first screen to the second break."""

import re
import signal
import time
from datetime import date

import records
from browser import Browser
from stage import Stage, seconds_until
from virtualDesktop import wait_until

IDLE_LIMIT = 4  # seconds; the shortest that leaves time to see it counting
LOOK = 5  # seconds from one look at the tabs to the next
GRACE = 5.0  # seconds that a blocked application has after it was asked to quit
SHOWN = 20  # seconds; a text that comes at all comes sooner, also where the machine is busy
CLOCK = r"\d\d:\d\d"
COUNTING = r"Counting study time\. Card proof: Off\. Active app: Anki\."
BREAK = r"Break is unlocked\. Entertainment is allowed until the timer ends\."
STEAM_RUNS = r"Paused: blocked app is running: Steam\."


TOPIC = "Derivatives"
ANSWERS = {"Slope of a curve": "derivative", "Rate of change of speed": "acceleration"}  # the two cards of the topic
TASK = "Solve five chain rule problems"


def event(text):
    """A line of the event log: the time of day, then the text."""
    return r"[0-9:. ]+(AM|PM)? ?" + re.escape(text)


def clock_seconds(window):
    minutes, seconds = window.wait_for(CLOCK, SHOWN).split(":")
    return int(minutes) * 60 + int(seconds)


def play(desktop, report, program, decoy, companion):
    stage = Stage(desktop, program, decoy)
    records.write_settings(desktop.home, studyMinutes=1, breakMinutes=1, maxIdleSeconds=IDLE_LIMIT)
    stage.install_applications()

    enter_as_guest(stage, report)
    anki = start_studying(stage, report)
    pause_when_nobody_is_there(stage, report, anki)
    close_steam(stage, report, anki)
    close_discord_by_force(stage, report, anki)
    pause_in_front_of_quorvel(stage, report, anki)
    close_a_blocked_tab(stage, report, anki, companion)
    speak_russian(stage, report, anki)
    earn_the_break(stage, report, anki)
    leave_steam_alone(stage, report)
    ask_for_proofs(stage, report, desktop.home)
    add_cards(stage, report)
    miss_a_card(stage, report)
    plan_a_step(stage, report)
    prove_one_card(stage, report)
    open_the_break_by_the_last_card(stage, report)
    find_it_on_the_disk(stage, report, desktop.home)
    report.finish()


def enter_as_guest(stage, report):
    with report.step("First screen", "the window opens with the way in for guests, which leads to the focus page") as step:
        stage.start_quorvel()
        step.saw(stage.window.wait_for("Welcome to Quorvel", 20))
        step.saw(stage.picture("first-screen"))
        stage.window.press("Continue as Guest")
        step.saw(stage.window.wait_for(r"Blocking is off\. Press Start Study to arm Quorvel\.", SHOWN))
        step.saw(stage.picture("ready"))


def start_studying(stage, report):
    with report.step("Study", "with Anki in front every second counts") as step:
        anki = stage.open("Anki")
        stage.bring_to_front(anki)
        with stage.hands():
            stage.window.press("Start Study")
            step.saw(stage.window.wait_for(COUNTING, SHOWN))
            before = clock_seconds(stage.window)
            time.sleep(3)
            counted = before - clock_seconds(stage.window)
            step.check(2 <= counted <= 4, f"the clock went down by {counted} s in 3 s")
            step.saw(stage.picture("counting"))
    return anki


def pause_when_nobody_is_there(stage, report, anki):
    with report.step("Away", f"after more than {IDLE_LIMIT} s without input the clock stands; it goes on at the next") as step:
        said = stage.window.wait_for(r"Paused: Mac is idle for \d+s\.", IDLE_LIMIT + 4)
        idle = int(re.search(r"\d+", said)[0])
        step.check(idle > IDLE_LIMIT, said)
        stands_still(stage, step, 2)
        step.saw(stage.picture("idle-pause"))
        stage.bring_to_front(anki)
        with stage.hands():
            step.saw(stage.window.wait_for(COUNTING, SHOWN))


def stands_still(stage, step, seconds):
    before = clock_seconds(stage.window)
    time.sleep(seconds)
    after = clock_seconds(stage.window)
    step.check(before == after, f"the clock stood at {after} s for {seconds} s" if before == after
               else f"the clock went from {before} to {after} s")


def close_steam(stage, report, anki):
    with report.step("Steam", "a blocked application pauses the session and is asked to quit, which it does") as step:
        with stage.hands():
            steam = stage.open("Steam")
            step.saw(stage.window.wait_for(STEAM_RUNS, SHOWN))
            waited = seconds_until(lambda: steam.poll() is not None, 4, "the end of Steam")
            step.check(steam.returncode == 0, f"Steam ended by itself within {waited:.1f} s, with {steam.returncode}")
            stage.window.press("Activity")
            step.saw(stage.window.wait_for(event("Closed Steam."), SHOWN))
            step.check(not stage.window.find(event("Force closed Steam.")), "no force was needed")
            step.saw(stage.picture("steam-closed"))
            go_on(stage, step, anki)


def go_on(stage, step, anki):
    """Back to Anki; the clock goes on."""
    stage.window.press("Focus")
    stage.bring_to_front(anki)
    step.saw(stage.window.wait_for(COUNTING, SHOWN))


def close_discord_by_force(stage, report, anki):
    with report.step("Discord", f"one that ignores the request is closed by force, more than {GRACE} s after it") as step:
        with stage.hands():
            discord = stage.open("Discord")
            # It is asked in the same second in which the status names it: between these two looks.
            not_yet, asked = stage.window.moment_of(r"Paused: blocked app is running: Discord\.", 4)
            step.saw(stage.picture("discord-asked"))
            stage.window.press("Activity")
            step.saw(stage.window.wait_for(event("Closed Discord."), SHOWN))
            step.check(not stage.window.find(event("Force closed Discord.")) and discord.poll() is None, "still runs")
            seconds_until(lambda: discord.poll() is not None, 10, "the end of Discord")
            ended = time.monotonic()
            step.check(ended - not_yet > GRACE, f"ended {ended - asked:.2f} to {ended - not_yet:.2f} s after the request")
            step.check(discord.returncode == -signal.SIGKILL, f"by signal {-discord.returncode}")
            step.saw(stage.window.wait_for(event("Force closed Discord."), SHOWN))
            step.saw(stage.picture("discord-closed-by-force"))
            go_on(stage, step, anki)


def pause_in_front_of_quorvel(stage, report, anki):
    with report.step("Quorvel in front", "Quorvel is no study application either: looking at it pauses the session") as step:
        with stage.hands():
            stage.bring_to_front(stage.quorvel)
            step.saw(stage.window.wait_for(r"Paused: [Qq]uorvel is not in allowed study apps\.", SHOWN))
            stands_still(stage, step, 2)
            step.saw(stage.picture("quorvel-in-front"))
            go_on(stage, step, anki)


def close_a_blocked_tab(stage, report, anki, companion):
    with report.step("Browser", "a tab on a blocked site is closed within seconds; the tab beside it stays") as step:
        with stage.hands(), Browser(stage.desktop, companion) as browser:
            chromium = browser.start("http://lessons.example/")
            step.saw(stage.wait_for_title(chromium, "Lesson 7", 20))
            opened = time.monotonic()
            browser.open("http://9gag.com/")
            wait_until(lambda: browser.asked_for("9gag.com"), 5, "the page of 9gag.com")
            step.saw(stage.picture("blocked-tab"))  # a look may have come before it
            step.saw(stage.wait_for_title(chromium, "Lesson 7", LOOK + 3))
            step.saw(f"back in front at most {time.monotonic() - opened:.1f} s after the other was opened")
            stage.window.press("Activity")
            step.saw(stage.window.wait_for(event("Closed 1 blocked browser tab: 9gag.com."), SHOWN))
            step.check(browser.asked_for("lessons.example") == 1, "the other tab was not loaded again")
            step.saw(stage.picture("blocked-tab-closed"))
            time.sleep(LOOK + 1)
            step.check(stage.title(chromium).startswith("Lesson 7"), "it stays")
            stage.end(chromium)
            go_on(stage, step, anki)


def speak_russian(stage, report, anki):
    with report.step("Russian", "the whole window changes its language at once, and back") as step:
        stage.bring_to_front(anki)
        with stage.hands():
            stage.window.press("RUS")
            step.saw(stage.window.wait_for(r"Считаю учебное время\. Пруф: Выкл\. Активное приложение: Anki\.", SHOWN))
            step.saw(stage.window.wait_for("Начать учёбу", SHOWN))
            step.saw(stage.picture("russian"))
            stage.window.press("ENG")
            step.saw(stage.window.wait_for(COUNTING, SHOWN))
            step.saw(stage.window.wait_for("Start Study", SHOWN))
            step.saw(stage.picture("english-again"))


def earn_the_break(stage, report, anki):
    with report.step("Break", "when the minute is counted the break opens, with 1 XP for the minute and 25 for the session") as step:
        with stage.hands():
            waited = seconds_until(lambda: stage.window.find("Break remaining"), 70, "the break")
            step.saw(f"after {waited:.0f} s more")
            step.saw(stage.window.wait_for(BREAK, SHOWN))
            step.saw(stage.picture("break"))
            stage.window.press("Progress")
            step.saw(stage.window.wait_for(r"26/100 XP", SHOWN))
            stage.window.press("Activity")
            for line in ("+1 XP. Focused for one minute.", "+25 XP. Study session completed.",
                         "Study session completed. Break unlocked."):
                step.saw(stage.window.wait_for(event(line), SHOWN))
            step.saw(stage.picture("events"))
            stage.window.press("Focus")
            stage.end(anki)


def leave_steam_alone(stage, report):
    with report.step("Steam in the break", "entertainment is allowed: Steam stays") as step:
        steam = stage.open("Steam")
        time.sleep(GRACE + 2)
        step.check(steam.poll() is None, f"Steam still runs after {GRACE + 2:.0f} s" if steam.returncode is None
                   else f"Steam ended with {steam.returncode}")
        step.saw(stage.window.wait_for(BREAK, SHOWN))
        step.saw(stage.picture("steam-in-the-break"))
        stage.window.press("Activity")
        stage.window.wait_for(event("Study session completed. Break unlocked."), SHOWN)
        about = [text for text in stage.window.texts() if re.fullmatch(event("Closed Steam."), text)]
        step.check(len(about) <= 1, f"nothing new about Steam in the log: {about}")
        stage.end(steam)


def ask_for_proofs(stage, report, home):
    with report.step("Settings", "two cards a break, and Quorvel itself as a study application, are in force once saved") as step:
        stage.bring_to_front(stage.quorvel)
        stage.window.press("Settings")
        stage.fill("Card proofs", "+2")
        stage.window.press("Save Settings")
        step.saw(stage.wait_for_field("Card proofs", "2", SHOWN))
        stage.window.press("Pro mode")
        stage.window.focus("Allowed Study Apps")
        stage.press_key("ctrl+End")
        stage.press_key("Return")
        stage.type("Quorvel")
        step.saw(stage.picture("settings"))
        stage.press_key("ctrl+shift+s")
        wait_until(lambda: "Quorvel" in records.read_record(home, "config")["allowedStudyApps"], 3, "the saved list")
        config = records.read_record(home, "config")
        step.check(config["requiredProofsToUnlock"] == 2, f"config.json: {config['requiredProofsToUnlock']} cards a break, "
                   f"study applications end with {config['allowedStudyApps'][-1]}")


def add_cards(stage, report):
    with report.step("Cards", "three cards are added by typing and Return; two are of the topic that is set") as step:
        stage.window.press("Cards")
        for question, answer in [*ANSWERS.items(), ("Capital of France", "Paris")]:
            stage.fill("Topic, blank = current topic", TOPIC if question in ANSWERS else "Geography")
            stage.fill("Question", question)
            stage.fill("Expected answer", answer, then="Return")
            stage.wait_for_field("Question", "", SHOWN)
        stage.fill("Current study topic", TOPIC)
        stage.window.press("Pick Card")
        step.saw(stage.window.wait_for(r"Next card selected\.", SHOWN))
        step.saw(stage.picture("cards"))
        stage.scroll_to_end()
        step.saw(stage.window.wait_for(r"3 total, 2 matching current topic\.", SHOWN))
        step.saw(stage.picture("card-bank"))


def asked(stage):
    """The question on the card that is asked."""
    stage.scroll_to_start()
    stage.window.focus("Answer from memory")
    return next(text for text in stage.window.texts() if text in ANSWERS)


def miss_a_card(stage, report):
    with report.step("Wrong answer", "a wrong answer stays, the expected one is shown, and the miss is counted") as step:
        question = asked(stage)
        stage.fill("Answer from memory", "no idea", then="Return")
        step.saw(stage.window.wait_for(r"Not yet\. Review the expected answer, then try another card\.", SHOWN))
        step.saw(stage.wait_for_field("Answer from memory", "no idea", SHOWN))
        step.saw(stage.window.wait_for("Expected", SHOWN))
        step.saw(f"{question}: {stage.window.wait_for(ANSWERS[question], SHOWN)}")
        step.saw(stage.window.wait_for("OK 0 / Miss 1", SHOWN))
        step.saw(stage.picture("wrong-answer"))


def prove_one_card(stage, report):
    with report.step("Proof", "in a session a right answer counts toward the break, with 10 XP") as step:
        stage.window.press("Focus")
        stage.press_key("ctrl+s")
        step.saw(stage.window.wait_for(r"Study session is already running\.", SHOWN))
        stage.window.press("Cards")
        question = asked(stage)
        stage.fill("Answer from memory", ANSWERS[question], then="Return")
        step.saw(f"{question}: {ANSWERS[question]}")
        step.saw(stage.window.wait_for(r"Correct\. Card proof: 1/2\.", SHOWN))
        step.check(asked(stage) != question, "the other card is asked now")
        step.saw(stage.picture("first-proof"))


def plan_a_step(stage, report):
    with report.step("Plan", "a task is added by typing and Return; ticking it gives 3 XP") as step:
        stage.window.press("Plan")
        stage.fill("Next task", TASK, then="Return")
        step.saw(stage.window.wait_for(re.escape(TASK), SHOWN))
        stage.window.press("Done")
        stage.window.wait_for("Reopen", SHOWN)
        step.saw(stage.picture("plan"))
        stage.window.press("Activity")
        step.saw(stage.window.wait_for(event("+3 XP. Study task completed."), SHOWN))


def open_the_break_by_the_last_card(stage, report):
    with report.step("Break by proof", "the clock alone opens no break; the second card does, at once") as step:
        stage.window.press("Focus")
        with stage.hands():
            stage.window.wait_for("00:00", 75)
            step.saw(stage.window.wait_for(r"Timer done\. Solve 1 more unique card to unlock break\.", SHOWN))
            step.saw(stage.picture("timer-done"))
            time.sleep(2)
            step.check(not stage.window.find("Break remaining"), "no break 2 s later")
            stage.scroll_to_end()
            stage.window.focus("Answer from memory")
            question = next(text for text in stage.window.texts() if text in ANSWERS)
            stage.fill("Answer from memory", ANSWERS[question], then="Return")
            waited = seconds_until(lambda: stage.window.find("Break remaining"), 3, "the break")
            step.saw(f"{question}: {ANSWERS[question]}; the break opened after {waited:.1f} s")
            stage.window.press("Activity")
            step.saw(stage.window.wait_for(event("Study session completed. Break unlocked."), SHOWN))
            step.saw(stage.picture("break-by-proof"))


def find_it_on_the_disk(stage, report, home):
    with report.step("Files", "sessions, cards, tasks, settings and 75 XP are on the disk, also after Quorvel has ended") as step:
        today = date.today().isoformat()
        for moment in "while it runs", "after its end":
            progress = records.read_record(home, "progress")
            wanted = {"totalXP": 75, "totalFocusSeconds": 120, "totalCompletedSessions": 2, "totalCardProofs": 2,
                      "currentStreak": 1, "lastCompletedStudyDay": today}
            step.check({key: progress.get(key) for key in wanted} == wanted, f"progress.json {moment}: {progress}")
            preferences = records.read_preferences(home)
            wanted = {f"studySeconds-{today}": 120, f"completedSessions-{today}": 2, "accessMode": "guest", "language": "en"}
            step.check({key: preferences.get(key) for key in wanted} == wanted, f"preferences {moment}: {preferences}")
            cards = {card["prompt"]: (card["topic"], card["correctCount"], card["wrongCount"])
                     for card in records.read_record(home, "study-cards")}
            counts = sorted(cards.pop(question)[1:] for question in ANSWERS)
            step.check(counts == [(1, 0), (1, 1)] and cards == {"Capital of France": ("Geography", 0, 0)},
                       f"study-cards.json {moment}: right and wrong answers {counts}, not asked {cards}")
            tasks = records.read_record(home, "study-tasks")
            step.check([(task["title"], "completedAt" in task) for task in tasks] == [(TASK, True)],
                       f"study-tasks.json {moment}: {tasks}")
            config = records.read_record(home, "config")
            step.check(config["requiredProofsToUnlock"] == 2 and "Quorvel" in config["allowedStudyApps"],
                       f"config.json {moment}: {config['requiredProofsToUnlock']} cards a break")
            stage.end(stage.quorvel)
