#!/usr/bin/python3
"""From the gate into the working layout and out again: by e-mail, through the browser, as a guest."""

import os

import walker
from backend import Backend
from browser import install_browser
from records import read_preferences
from texts import said
from walker import WalkTest

# How the browser of this file ends the sign-in, whatever page it was sent to.
SIGN_IN = 'exec "{program}" "quorvel://auth?session=browser-token&email=eve%40example.org&provider=google"'


class SignIn(WalkTest):
    def setUp(self):
        super().setUp()
        self.backend = self.enterContext(Backend())

    def open(self, **preferences):
        self.walker.open(backendBaseURL=self.backend.address, **preferences)
        self.walker.shows(said("continue_guest", preferences.get("language", "en")))

    def preferences(self):
        return {key: value for key, value in read_preferences(self.walker.home).items()
                if key in ("accessMode", "signedInEmail", "serverSessionToken")}

    def test_byEmailCode(self):
        walk, backend = self.walker, self.backend
        self.open()
        walk.window.press("Send Code")
        walk.shows("Enter a valid email.")
        walk.window.press("Verify Email")
        walk.shows("Enter email and code.")

        walk.fill("Email", "  Eve@Example.ORG ")
        walk.fill("Verification code", "Q7")
        backend.answers["/auth/email/start"] = (503, "Too many codes today.")
        walk.window.press("Send Code")
        walk.shows("Backend unavailable: Too many codes today.")
        backend.answers["/auth/email/start"] = (200, {})
        walk.window.press("Send Code")
        walk.shows("Code sent. In local dev, check the backend console.")
        self.assertEqual(walk.window.text_of("Verification code"), "Q7")

        backend.answers["/auth/email/verify"] = (401, "Wrong code.")
        walk.window.press("Verify Email")
        walk.shows("Sign-in failed: Wrong code.")
        walk.lacks("Sign Out")
        backend.answers["/auth/email/verify"] = (200, {"session": "mail-token", "email": "else@example.org"})
        walk.window.press("Verify Email")
        walk.shows("Sign Out", "eve@example.org")
        walk.lacks("Verify Email", "Guest")

        code = {"email": "eve@example.org", "code": "Q7"}
        self.assertEqual(backend.asked, [("POST", "/auth/email/start", None, {"email": "eve@example.org"})] * 2 +
                         [("POST", "/auth/email/verify", None, code)] * 2)
        self.assertEqual(self.preferences(), {"accessMode": "account", "signedInEmail": "eve@example.org",
                                              "serverSessionToken": "mail-token"})

    def test_outAndInAgainTheLayoutIsAsItWas(self):
        walk = self.walker
        self.walker.open(accessMode="account", signedInEmail="eve@example.org", serverSessionToken="token")
        walk.shows("eve@example.org")
        walk.window.press("Cards")
        walk.fill("Question", "What is a limit")
        walk.window.press("Sign Out")
        walk.shows(said("auth_required_title", "en"), said("auth_required_body", "en"))
        walk.lacks(said("sign_out", "en"), said("manual_lock", "en"), said("focus_title", "en"))
        self.assertEqual(self.preferences(), {"accessMode": "none"})

        walk.window.press("Continue as Guest")
        walk.shows(said("cards_subtitle", "en"), "Guest")
        self.assertEqual(walk.window.text_of("Question"), "What is a limit")
        self.assertEqual(self.preferences(), {"accessMode": "guest"})
        self.assertEqual(walk.commands(), ["signOut", "continueAsGuest"])

    def test_throughTheBrowser(self):
        walk, backend = self.walker, self.backend
        addresses = install_browser(walk, SIGN_IN.format(program=os.environ["QUORVEL_PROGRAM"]))
        self.open(language="ru")
        backend.answers["/auth/yandex/start"] = (200, {"url": 7})
        walk.window.press(said("yandex_sign_in", "ru"))
        walk.shows("Не удалось войти")
        backend.answers["/auth/google/start"] = (200, {"url": "https://accounts.example/sign-in"})
        walk.window.press(said("google_sign_in", "ru"))
        walk.shows(said("sign_out", "ru"), "eve@example.org")
        self.assertEqual(addresses.read_text(encoding="utf-8").split(), ["https://accounts.example/sign-in"])
        self.assertEqual(self.preferences(), {"accessMode": "account", "signedInEmail": "eve@example.org",
                                              "serverSessionToken": "browser-token"})
        self.assertEqual(walk.commands(), ["openOAuth(yandex)", "openOAuth(google)", "handleAuthCallback"])

    def test_theCoachAsksTheBackendWithTheToken(self):
        walk, backend = self.walker, self.backend
        backend.answers["/ai/suggestions"] = (200, {"message": "Go on.", "tasks": ["Read"], "cards": [
            {"topic": "", "prompt": "Why", "answer": "Because"}]})
        walk.open(backendBaseURL=backend.address, accessMode="account", serverSessionToken="token")
        walk.shows(said("sign_out", "en"))
        walk.window.press(said("ai_coach", "en"))
        walk.fill(said("topic_or_goal", "en"), "Logic")
        walk.window.press(said("generate_plan_cards", "en"))
        walk.shows("AI: Go on.\n\nAdded 1 task and 1 card.")
        method, path, token, body = backend.asked.pop()
        self.assertEqual((method, path, token), ("POST", "/ai/suggestions", "Bearer token"))
        self.assertEqual((body["topic"], body["language"]), ("Logic", "en"))
        backend.answers["/ai/suggestions"] = (500, "Out of ideas.")
        walk.window.press(said("generate_plan_cards", "en"))
        walk.window.wait_for(r"(?s)Local coach fallback: .*\n\nAPI note: Out of ideas\.", 20)


if __name__ == "__main__":
    walker.main()
