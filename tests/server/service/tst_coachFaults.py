#!/usr/bin/env python3
"""What a student sees of the coach when its endpoint does well, badly, or not at all."""

import json
import threading
import time
import unittest

from coachStub import KEY, MODEL, SUGGESTION, CoachStub
from rawHttp import Connection, request
from service import Service, bearer, wait_until

PATH = "/api/ai/suggestions"
TIMEOUT = 5  # seconds for all tries together, the least there may be; what is waited for in vain here is waited for that long


class CoachFaults(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.stub = cls.enterClassContext(CoachStub())
        cls.service = cls.enterClassContext(Service(
            COACH_URL=cls.stub.url, COACH_KEY=KEY, COACH_MODEL=MODEL, COACH_TIMEOUT=TIMEOUT, COACH_PER_HOUR=5, COACH_PER_DAY=7))
        cls.service.keep_secret(KEY)

    def setUp(self):
        self.token = self.service.sign_in()
        self.addCleanup(lambda: self.assertEqual([], self.stub.problems))

    def ask(self, topic, language="en", headers=(), token=None):
        body = {"topic": topic, "language": language, "progress": "3 cards, 2 sessions"}
        return self.service.ask("POST", PATH, [bearer(token or self.token), *headers], body)

    def check_fault(self, name, status, words, tries):
        """Whoever asks while the endpoint does that gets that status and a sentence with those words."""
        topic = f"topic of {name}"
        self.stub.plan(topic, name)
        answer = self.ask(topic)
        self.assertEqual(status, answer.status, f"{name}: {answer.text}")
        self.assertIn(words, answer.text)
        self.assertTrue(answer.text.endswith(".") and "\n" not in answer.text, answer.text)
        self.assertEqual("text/plain; charset=utf-8", answer.header("Content-Type"))
        self.assertNotIn(KEY, answer.text)
        self.assertEqual(tries, len(self.stub.asked_about(topic)), name)
        return answer

    def test_a_suggestion_is_passed_on(self):
        for name in ("good", "fenced"):
            self.stub.plan(name, name)
            answer = self.ask(name)
            self.assertEqual(200, answer.status, answer.text)
            self.assertEqual("application/json", answer.header("Content-Type"))
            self.assertEqual(SUGGESTION, json.loads(answer.body))

    def test_what_is_asked_goes_to_the_endpoint_and_nothing_else(self):
        self.ask("  integrals \n", "ru")
        asked = self.stub.asked_about("integrals")
        self.assertEqual(1, len(asked))
        messages = json.loads(asked[0].body)["messages"]
        self.assertEqual({"topic": "integrals", "progress": "3 cards, 2 sessions"}, json.loads(messages[1]["content"]))
        self.assertTrue(messages[0]["content"].endswith("Russian."))
        everything = repr((asked[0].headers, asked[0].body))
        for trace in (self.token, "student", "example.org"):
            self.assertNotIn(trace, everything.replace("a student", "").replace("the student", ""))

    def test_an_oversized_suggestion_is_cut(self):
        self.stub.plan("much", "oversized")
        suggestion = json.loads(self.ask("much").body)
        self.assertEqual(2000, len(suggestion["message"]))
        self.assertEqual([f"Task {number}" for number in range(20)], suggestion["tasks"])
        self.assertEqual([{"topic": "t", "prompt": "p", "answer": "a"}] * 30, suggestion["cards"])

    def test_an_answer_of_no_use_is_asked_for_once_more(self):
        for name in ("invalid", "prose", "missing"):
            self.stub.plan(name, name, "good")
            self.assertEqual(200, self.ask(name).status, name)
            self.assertEqual(2, len(self.stub.asked_about(name)))

    def test_answers_of_no_use(self):
        for name in ("invalid", "prose", "missing", "wrong type", "empty", "cut off", "filtered", "refused", "null", "deep"):
            self.token = self.service.sign_in()
            self.check_fault(name, 502, "no usable answer", 2)

    def test_an_endpoint_that_will_not_have_us_is_asked_once(self):
        for name in ("unauthorized", "forbidden", "no such model", "elsewhere"):
            self.check_fault(name, 503, "does not work", 1)

    def test_faults_that_pass(self):
        for name in ("busy", "busy for 1 s", "broken", "disconnect", "disconnect within"):
            topic = f"passing {name}"
            self.stub.plan(topic, name, "good")
            begin = time.monotonic()
            answer = self.ask(topic)
            self.assertEqual(200, answer.status, f"{name}: {answer.text}")
            self.token = self.service.sign_in()
            if name == "busy for 1 s":
                self.assertGreaterEqual(time.monotonic() - begin, 1)

    def test_faults_that_stay(self):
        self.assertEqual("300", self.check_fault("busy for an hour", 503, "overloaded", 1).header("Retry-After"))
        for name in ("broken", "disconnect within", "huge"):
            topic = f"lasting {name}"
            self.stub.plan(topic, name)
            answer = self.ask(topic)
            self.assertEqual((502, True), (answer.status, "cannot be reached" in answer.text), name)
            self.assertGreater(len(self.stub.asked_about(topic)), 1, name)

    def test_an_endpoint_that_does_not_end_is_given_up_in_time(self):
        for name in ("hang", "drip"):
            begin = time.monotonic()
            self.check_fault(name, 504, "did not answer in time", 1)
            self.assertGreaterEqual(time.monotonic() - begin, TIMEOUT)

    def test_the_sentence_is_in_the_language_of_the_program(self):
        self.stub.plan("по-русски", "unauthorized")
        answer = self.ask("по-русски", "ru", [("Accept-Language", "en")])
        self.assertEqual("ИИ-тренер сейчас не работает на этом сервере. Попробуй позже.", answer.text)

    def test_the_sentence_comes_as_json_where_that_is_asked_for(self):
        self.stub.plan("as json", "unauthorized")
        answer = self.ask("as json", headers=[("Accept", "application/json")])
        self.assertEqual("application/json", answer.header("Content-Type"))
        self.assertEqual(["error"], list(json.loads(answer.body)))

    def test_quotas_count_for_all_connections_together(self):
        answers = []
        threads = [threading.Thread(target=lambda: answers.append(self.ask("quota"))) for _ in range(12)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual([200] * 5 + [429] * 7, sorted(answer.status for answer in answers))
        self.assertEqual(5, len(self.stub.asked_about("quota")))
        refused = next(answer for answer in answers if answer.status == 429)
        self.assertIn("within an hour", refused.text)
        self.assertLessEqual(1, int(refused.header("Retry-After")))
        self.assertLessEqual(int(refused.header("Retry-After")), 3600)
        self.assertEqual(200, self.ask("quota", token=self.service.sign_in()).status)

    def test_what_has_cost_nothing_is_not_counted(self):
        self.stub.plan("free", *["unauthorized"] * 8, "good")
        self.assertEqual([503] * 8 + [200] * 5 + [429], [self.ask("free").status for _ in range(14)])

    def test_sign_in_goes_on_while_the_endpoint_hangs(self):
        self.stub.plan("stuck", "hold")
        body = json.dumps({"topic": "stuck", "language": "en", "progress": ""}).encode()
        headers = [("Content-Type", "application/json")]
        asked = request("POST", PATH, [bearer(self.token), *headers], body)
        with Connection(self.service.address) as stuck:
            stuck.send(asked)
            wait_until(lambda: self.stub.asked_about("stuck"), 20, "the request at the endpoint")
            self.assertEqual(200, self.service.ask("GET", "/api/account", [bearer(self.service.sign_in())]).status)
            self.stub.release()
            self.assertEqual(200, stuck.read_answer().status)


class Unreachable(unittest.TestCase):
    def test_says_that_there_is_no_coach(self):
        with Service() as service:
            token = service.sign_in()
            for language, sentence in (("en", "This server has no AI coach."), ("ru", "На этом сервере нет ИИ-тренера.")):
                body = {"topic": "", "language": language, "progress": ""}
                answer = service.ask("POST", PATH, [bearer(token)], body)
                self.assertEqual((503, sentence), (answer.status, answer.text))

    def test_says_that_nobody_listens(self):
        with CoachStub() as stub:
            url = stub.url
        with Service(COACH_URL=url, COACH_TIMEOUT=TIMEOUT) as service:
            body = {"topic": "", "language": "en", "progress": ""}
            answer = service.ask("POST", PATH, [bearer(service.sign_in())], body)
            self.assertEqual(502, answer.status)
            self.assertIn("cannot be reached", answer.text)


if __name__ == "__main__":
    unittest.main()
