#!/usr/bin/python3
"""The real program with the real service: signs in by mail and through the browser, and asks the coach."""

import json
import re
import sys
import tempfile
import unittest
from pathlib import Path

TESTS = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TESTS / "desktop/walk"), str(TESTS / "server/service")]

import helpers  # noqa: E402
import walker  # noqa: E402
from browser import install_browser  # noqa: E402
from coachStub import KEY, MODEL, SUGGESTION, CoachStub  # noqa: E402
from helpers import MailServer, code_of  # noqa: E402
from records import read_preferences, read_record  # noqa: E402
from service import Service, bearer  # noqa: E402
from texts import said  # noqa: E402
from walker import EVENT, SECONDS_TO_SHOW, WalkTest, wait_until  # noqa: E402
from webVisitor import WebVisitor, WrongPage, program_address  # noqa: E402

ADDRESS = "eve@example.org"
PUBLIC_URL = "https://quorvel.example"  # by which providers send a browser back to the service
WRONG_CODE = {"en": "Sign-in failed: The code is wrong or too old. Ask for a new one.",
              "ru": "Не удалось войти: Код неверный или устарел. Запроси новый."}


def another(code):
    return f"{(int(code) + 1) % 1_000_000:06}"


class ServiceWalk(WalkTest):
    """Each test has a service of its own, which sends its codes by a mail server that wants TLS and a password."""

    def setUp(self):
        super().setUp()
        self.mail = self.enterContext(MailServer(self.enterContext(tempfile.TemporaryDirectory(prefix="quorvel-mail-"))))

    def open(self, language="en", **settings):
        """Starts the service with these settings, and Quorvel, which knows its address, before the gate."""
        self.service = self.enterContext(Service(PUBLIC_URL=PUBLIC_URL, **self.mail.settings(), **settings))
        self.service.keep_secret(ADDRESS)
        self.url = "http://{}:{}".format(*self.service.address)
        self.addresses = install_browser(self.walker)
        self.walker.open(backendBaseURL=f"{self.url}/api", language=language)
        self.walker.shows(said("continue_guest", language))

    def ask_for_code(self, typed=ADDRESS):
        """Returns the code that has come by mail."""
        self.walker.fill("Email", typed)
        self.walker.window.press("Send Code")
        self.walker.shows("Code sent. In local dev, check the backend console.")
        return code_of(self.mail.next_message(ADDRESS))

    def sign_in_by_mail(self):
        """Returns the token."""
        self.walker.fill("Verification code", self.ask_for_code())
        self.walker.window.press("Verify Email")
        return self.see_account(ADDRESS)

    def sign_in_through_browser(self, provider, origin, address):
        """Presses the provider's button, goes through its pages and hands the last one's address over. Returns the token."""
        walk = self.walker
        walk.window.press(said(f"{provider}_sign_in", "en"))
        [opened] = wait_until(lambda: self.addresses.read_text(encoding="utf-8").splitlines(), SECONDS_TO_SHOW, "the browser")
        self.assertTrue(opened.startswith(f"{origin}/"), opened)
        page = WebVisitor({PUBLIC_URL: self.url}).read(opened)
        walk.lacks("Sign Out")
        walk.desktop.run("xdg-open", program_address(page))
        return self.see_account(address)

    def see_account(self, address):
        """The window and the preferences tell that account, and so does the service where it is asked with the token."""
        walk = self.walker
        walk.shows("Sign Out", address)
        walk.lacks("Verify Email", "Guest")
        wait_until(lambda: read_preferences(walk.home).get("signedInEmail"), SECONDS_TO_SHOW, "the account in the preferences")
        kept = read_preferences(walk.home)
        self.assertEqual((kept["accessMode"], kept["signedInEmail"]), ("account", address))
        token = kept["serverSessionToken"]
        self.service.keep_secret(token)
        self.assertEqual(self.account_of(token), (200, {"email": address}))
        return token

    def account_of(self, token):
        answer = self.service.ask("GET", "/api/account", [bearer(token)])
        return answer.status, json.loads(answer.body) if answer.status == 200 else answer.text

    def sign_out(self):
        self.walker.window.press("Sign Out")
        self.walker.shows("Verify Email", said("auth_required_title", "en"))
        self.assertNotIn("serverSessionToken", read_preferences(self.walker.home))

    def ask_coach(self, topic):
        self.walker.window.press(said("ai_coach", "en"))
        self.walker.fill(said("topic_or_goal", "en"), topic)
        self.walker.window.press(said("generate_plan_cards", "en"))

    def see_local_pack(self, topic, note):
        """The local pack for that topic, and why it is no more than that."""
        summary = (f"Local coach fallback: Local coach generated a simple plan for {topic}. Sign in to use server AI "
                   f"suggestions.\n\nAdded 5 tasks and 5 cards.\n\nAPI note: {note}")
        self.walker.window.wait_for(re.escape(summary), SECONDS_TO_SHOW)


class ByMail(ServiceWalk):
    def test_aCodeSignsInAndAnotherDoesNot(self):
        walk = self.walker
        self.open()
        code = self.ask_for_code("  Eve@Example.ORG ")
        walk.fill("Verification code", another(code))
        walk.window.press("Verify Email")
        walk.shows(WRONG_CODE["en"])
        walk.lacks("Sign Out")
        walk.fill("Verification code", code)
        walk.window.press("Verify Email")
        token = self.see_account(ADDRESS)
        self.assertEqual(self.account_of(token[:-1] + ("A" if token[-1] != "A" else "B"))[0], 401)

    def test_aSecondCodeHasToWait(self):
        self.open()
        self.ask_for_code()
        self.walker.window.press("Send Code")
        self.walker.window.wait_for(r"Backend unavailable: A code was sent a moment ago\. Ask for a new one in \d+ seconds?\.",
                                    SECONDS_TO_SHOW)

    def test_inRussian(self):
        walk = self.walker
        self.open(language="ru")
        walk.fill(said("email", "ru"), ADDRESS)
        walk.window.press(said("send_code", "ru"))
        walk.window.wait_for(r"Код отправлен\..*", SECONDS_TO_SHOW)
        message = self.mail.next_message(ADDRESS)
        code = code_of(message)
        self.assertEqual(message["Subject"], f"{code} — твой код для Quorvel")
        walk.fill(said("verification_code", "ru"), another(code))
        walk.window.press(said("verify_email", "ru"))
        walk.shows(WRONG_CODE["ru"])
        walk.lacks(said("sign_out", "ru"))


class Coach(ServiceWalk):
    def test_itsSuggestionLandsInPlanAndCards(self):
        walk = self.walker
        stub = self.enterContext(CoachStub())
        stub.plan("Chaos", "broken")
        self.open(COACH_URL=stub.url, COACH_KEY=KEY, COACH_MODEL=MODEL, COACH_TIMEOUT=5)
        self.sign_in_by_mail()
        self.ask_coach("Derivatives")
        walk.shows(f"AI: {SUGGESTION['message']}\n\nAdded 2 tasks and 1 card.")
        walk.window.press("Plan")
        walk.shows(*SUGGESTION["tasks"])
        walk.window.press("Cards")
        [card] = SUGGESTION["cards"]
        walk.shows(card["prompt"], "1 total, 1 matching current topic.")
        self.assertEqual([task["title"] for task in read_record(walk.home, "study-tasks")], SUGGESTION["tasks"][::-1])
        self.assertEqual([{"topic": kept["topic"], "prompt": kept["prompt"], "answer": kept["expectedAnswer"]}
                          for kept in read_record(walk.home, "study-cards")], [card])
        [asked] = stub.asked
        self.assertEqual((asked.topic, stub.problems), ("Derivatives", []))
        self.assertNotIn(ADDRESS.encode(), asked.body)

        self.ask_coach("Chaos")
        self.see_local_pack("Chaos", "The AI coach cannot be reached right now. Try again in a few minutes.")
        self.assertGreater(len(stub.asked_about("Chaos")), 1)  # the service has not given up at once
        self.assertEqual(len(read_record(walk.home, "study-cards")), 6)

    def test_whereThereIsNoneTheLocalPackComes(self):
        self.open()
        self.sign_in_by_mail()
        self.ask_coach("Limits")
        self.see_local_pack("Limits", "This server has no AI coach.")


class ThroughTheBrowser(ServiceWalk):
    @unittest.skipUnless(helpers.has_openid(), "not run: there is no oidc-provider; scripts/providers.sh brings it")
    def test_signsInWithGoogle(self):
        provider = self.enterContext(helpers.google(PUBLIC_URL, "grace+study@example.org"))
        self.open(**helpers.google_settings(provider))
        before = self.sign_in_by_mail()
        self.sign_out()
        token = self.sign_in_through_browser("google", provider.told["issuer"], "grace+study@example.org")
        self.assertNotEqual(token, before)
        self.see_event("Signed in with Google.")

    def test_signsInWithYandex(self):
        provider = self.enterContext(helpers.yandex(PUBLIC_URL, "ada@yandex.example"))
        self.open(**helpers.yandex_settings(provider))
        self.sign_in_through_browser("yandex", provider.told["url"], "ada@yandex.example")
        self.see_event("Signed in with Yandex.")

    def test_saysWhichSignInThereIsNot(self):
        self.open()
        self.walker.window.press(said("google_sign_in", "en"))
        self.walker.window.wait_for(r"Backend unavailable: [A-Z][^\n<>{}]+\.", SECONDS_TO_SHOW)
        self.assertEqual(self.addresses.read_text(encoding="utf-8"), "")

    def see_event(self, text):
        self.walker.window.press("Activity")
        self.walker.window.wait_for(EVENT + re.escape(text), SECONDS_TO_SHOW)


class Page(unittest.TestCase):
    """Holds the reading of the last page to what the tests above take for granted."""

    def test_leadsToTheProgramOneWay(self):
        refresh = '<meta http-equiv="refresh" content="0;url=quorvel://auth?session=t&amp;email=e">'
        link = '<a href="quorvel://auth?session=t&amp;email=e">Open</a>'
        self.assertEqual(program_address(refresh + link), "quorvel://auth?session=t&email=e")
        for page in (refresh, link, "", refresh + link + link, refresh + link.replace("=t", "=u"),
                     refresh.replace("quorvel:", "https:") + link, refresh.replace("0;", "9;") + link):
            with self.assertRaises(WrongPage, msg=page):
                program_address(page)


if __name__ == "__main__":
    walker.main()
