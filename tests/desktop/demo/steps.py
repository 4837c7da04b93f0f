"""The demo itself: a student's session, told from the first screen to the break."""

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
STEAM_RUNS = r"Paused: blocked app is running: Steam\."


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
    find_it_on_the_disk(stage, report, desktop.home)
    report.finish()


def enter_as_guest(stage, report):
    with report.step("First screen", "the window opens with the way in for guests, which leads to the focus page") as step:
        stage.start_quorvel()
        step.saw(stage.window.wait_for("Welcome to Quorvel", 20))
        step.saw(stage.picture("first-screen"))
        stage.window.press("Continue as Guest")
        step.saw(stage.window.wait_for(r"Ready\. Blocking is off until you start\.", SHOWN))
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
            stage.scroll_to_end()
            step.saw(stage.window.wait_for(event("Closed Steam."), SHOWN))
            step.check(not stage.window.find(event("Force closed Steam.")), "no force was needed")
            step.saw(stage.picture("steam-closed"))
            go_on(stage, step, anki)


def go_on(stage, step, anki):
    """Back to Anki; the clock goes on."""
    stage.scroll_to_start()
    stage.bring_to_front(anki)
    step.saw(stage.window.wait_for(COUNTING, SHOWN))


def close_discord_by_force(stage, report, anki):
    with report.step("Discord", f"one that ignores the request is closed by force, more than {GRACE} s after it") as step:
        with stage.hands():
            discord = stage.open("Discord")
            # It is asked in the same second in which the status names it: between these two looks.
            not_yet, asked = stage.window.moment_of(r"Paused: blocked app is running: Discord\.", 4)
            step.saw(stage.picture("discord-asked"))
            stage.scroll_to_end()
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
            stage.scroll_to_end()
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
            step.saw(stage.window.wait_for(r"Break unlocked\.|Break is active\. Entertainment is allowed\.", SHOWN))
            step.saw(stage.window.wait_for(r"26/100 XP", SHOWN))
            step.saw(stage.picture("break"))
            stage.scroll_to_end()
            for line in ("+1 XP. Focused for one minute.", "+25 XP. Study session completed.",
                         "Study session completed. Break unlocked."):
                step.saw(stage.window.wait_for(event(line), SHOWN))
            step.saw(stage.picture("events"))
            stage.scroll_to_start()
            stage.end(anki)


def leave_steam_alone(stage, report):
    with report.step("Steam in the break", "entertainment is allowed: Steam stays") as step:
        steam = stage.open("Steam")
        time.sleep(GRACE + 2)
        step.check(steam.poll() is None, f"Steam still runs after {GRACE + 2:.0f} s" if steam.returncode is None
                   else f"Steam ended with {steam.returncode}")
        step.saw(stage.window.wait_for(r"Break is active\. Entertainment is allowed\.", SHOWN))
        step.saw(stage.picture("steam-in-the-break"))
        stage.scroll_to_end()
        stage.window.wait_for(event("Study session completed. Break unlocked."), SHOWN)
        about = [text for text in stage.window.texts() if re.fullmatch(event("Closed Steam."), text)]
        step.check(len(about) <= 1, f"nothing new about Steam in the log: {about}")
        stage.end(steam)


def find_it_on_the_disk(stage, report, home):
    with report.step("Files", "a minute, a session and 26 XP are on the disk, also after Quorvel has ended") as step:
        today = date.today().isoformat()
        for moment in "while it runs", "after its end":
            progress = records.read_progress(home)
            wanted = {"totalXP": 26, "totalFocusSeconds": 60, "totalCompletedSessions": 1, "currentStreak": 1,
                      "lastCompletedStudyDay": today}
            step.check({key: progress.get(key) for key in wanted} == wanted, f"progress.json {moment}: {progress}")
            preferences = records.read_preferences(home)
            wanted = {f"studySeconds-{today}": 60, f"completedSessions-{today}": 1, "accessMode": "guest", "language": "en"}
            step.check({key: preferences.get(key) for key in wanted} == wanted, f"preferences {moment}: {preferences}")
            stage.end(stage.quorvel)
