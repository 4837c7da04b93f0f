#!/usr/bin/env python3
"""Every path of the service and every way to ask it wrongly, by the bytes of HTTP."""

import json
import re
import unittest

from coachStub import KEY, MODEL, SUGGESTION, CoachStub
from rawHttp import Closed, Connection, request
from service import Service, bearer, new_client_address

JSON = ("Content-Type", "application/json")
PATHS = {  # every path and what may be done with it
    "/healthz": "GET", "/readyz": "GET", "/metrics": "GET", "/api/account": "GET",
    "/api/auth/email/start": "POST", "/api/auth/email/verify": "POST", "/api/ai/suggestions": "POST",
    "/api/auth/google/start": "GET", "/api/auth/yandex/start": "GET",
    "/api/auth/google/callback": "GET", "/api/auth/yandex/callback": "GET",
}
SUGGESTION_BODY = {"topic": "derivatives", "language": "en", "progress": "3 cards"}
NOT_OBJECTS = {  # bodies that are no JSON object
    "nothing": b"", "half": b'{"email": "a@b.c"', "list": b"[]", "number": b"7", "null": b"null", "text": b'"a@b.c"',
    "more behind": b"{} {}", "not UTF-8": b'{"email": "\xff@b.c"}', "overlong UTF-8": b'{"email": "\xc0\xaf@b.c"}',
    "half a pair": b'{"email": "\\ud800@b.c"}', "comment": b'{/**/"email": "a@b.c"}', "deep": b"[" * 30000 + b"]" * 30000,
    "not quoted": b"{email: 'a@b.c'}", "zero byte": b'{"email": "a@b.c"}\x00', "UTF-16": '{"email": "a@b.c"}'.encode("utf-16"),
}


class Conformance(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.stub = cls.enterClassContext(CoachStub())
        cls.service = cls.enterClassContext(Service(
            COACH_URL=cls.stub.url, COACH_KEY=KEY, COACH_MODEL=MODEL, COACH_PER_HOUR=1000, COACH_PER_DAY=1000))
        cls.token = cls.service.sign_in("first@example.org")

    def ask(self, method, path, headers=(), body=None):
        """Asks from an address that nobody has asked from before, so that no limit of another test is met."""
        return self.service.ask(method, path, [("X-Forwarded-For", new_client_address()), *headers], body)

    def connect(self):
        return self.enterContext(Connection(self.service.address))

    def assert_sentence(self, status, answer, what=None):
        """The answer is that status with one plain sentence, fit to be shown to a user."""
        self.assertEqual(status, answer.status, f"{what}: {answer.body[:200]}")
        self.assertEqual("text/plain; charset=utf-8", answer.header("Content-Type"), what)
        self.assertRegex(answer.text, r"\A[A-Z][^\n<>{}]{9,160}\.\Z", what)

    def assert_object(self, answer, *keys):
        """The answer is well: a JSON object of exactly those keys."""
        self.assertEqual(200, answer.status, answer.body[:200])
        self.assertEqual("application/json", answer.header("Content-Type"))
        found = json.loads(answer.body)
        self.assertEqual(sorted(keys), sorted(found))
        return found

    # What each path does

    def test_healthz_and_readyz(self):
        for path in ("/healthz", "/readyz"):
            self.assertEqual(200, self.ask("GET", path).status)

    def test_metrics(self):
        self.ask("POST", "/api/ai/suggestions", [bearer(self.token)], SUGGESTION_BODY)
        answer = self.service.ask("GET", "/metrics")
        self.assertEqual(200, answer.status)
        self.assertTrue(answer.header("Content-Type").startswith("text/plain; version=0.0.4"))
        self.assertRegex(answer.text, r'(?m)^quorvel_coach_calls_total\{outcome="ok"\} [1-9]')
        self.assertRegex(answer.text, r"(?m)^quorvel_coach_calls_in_flight 0$")
        line = re.compile(r'(#.*|[a-z_:]+(\{([a-z_]+="[^"\n]*",?)*\})? [0-9.e+-]+|[a-z_:]+\{le="\+Inf"[^}]*\} [0-9]+)')
        self.assertEqual([], [text for text in answer.text.splitlines() if not line.fullmatch(text)])
        self.assertNotIn("example.org", answer.text)

    def test_metrics_are_not_for_everybody(self):
        self.assert_sentence(404, self.ask("GET", "/metrics"))

    def test_sign_in_by_mail(self):
        token = self.service.sign_in("second@example.org")
        self.assertRegex(token, r"\A[A-Za-z0-9_-]{43}\Z")
        found = self.assert_object(self.ask("GET", "/api/account", [bearer(token)]), "email")
        self.assertEqual("second@example.org", found["email"])

    def test_an_address_is_known_in_any_case(self):
        answer = self.ask("POST", "/api/auth/email/start", body={"email": " Third@Example.ORG\n"})
        self.assert_object(answer, "sent")
        self.assertIn("To: third@example.org\n", self.service.log())

    def test_a_suggestion(self):
        answer = self.ask("POST", "/api/ai/suggestions", [bearer(self.token)], SUGGESTION_BODY)
        self.assertEqual(SUGGESTION, self.assert_object(answer, "message", "tasks", "cards"))
        self.assertEqual([], self.stub.problems)

    def test_providers_that_are_not_set_up(self):
        for name in ("Google", "Yandex"):
            path = f"/api/auth/{name.lower()}"
            answer = self.ask("GET", f"{path}/start")
            self.assert_sentence(503, answer)
            self.assertIn(name, answer.text)
            answer = self.ask("GET", f"{path}/callback?state=a&code=b")
            self.assertEqual(503, answer.status)
            self.assertTrue(answer.header("Content-Type").startswith("text/html"))
            self.assertIn(name, answer.text)

    # What is asked wrongly

    def test_an_unknown_path(self):
        for path in ("/", "/api", "/api/", "/api/auth/email", "/api/auth/github/start", "/api/account/", "/healthz/", "//healthz",
                     "/healthz%00", "/%68ealthz", "/api/../healthz", "/api/%2e%2e/healthz", "/./healthz", "/API/account",
                     "/api/account;a=b", "/index.html", "/.git/config", "/etc/passwd", "/..%2f..%2fetc/passwd", "/healthz\\"):
            self.assert_sentence(404, self.ask("GET", path), path)

    def test_another_method(self):
        for path, method in PATHS.items():
            for other in {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"} - {method}:
                answer = self.ask(other, path, [bearer(self.token)])
                self.assert_sentence(405, answer, f"{other} {path}")
                self.assertIn(method, answer.header("Allow").split(", "))

    def test_a_method_that_nobody_knows(self):
        for method in ("get", "BREW", "CONNECT", "TRACE"):
            answer = self.ask(method, "/healthz")
            self.assert_sentence(501, answer, method)

    def test_a_question_for_the_head_alone(self):
        whole = self.ask("GET", "/healthz")
        head = self.ask("HEAD", "/healthz")
        self.assertEqual((200, whole.header("Content-Length"), b""), (head.status, head.header("Content-Length"), head.body))

    def test_a_session_that_is_none(self):
        headers = {
            "none": [], "empty": [("Authorization", "")], "no token": [("Authorization", "Bearer ")],
            "unknown": [bearer("A" * 43)], "short": [bearer("A")], "long": [bearer("A" * 4000)],
            "longer by one": [bearer(self.token + "A")], "shorter by one": [bearer(self.token[:-1])],
            "another scheme": [("Authorization", f"Basic {self.token}")], "no scheme": [("Authorization", self.token)],
            "two in one": [bearer(f"{self.token} {self.token}")], "list": [bearer(f"{self.token}, {self.token}")],
            "quotes": [bearer(f'"{self.token}"')], "a statement": [bearer("' OR '1'='1")], "other letters": [bearer("\xff" * 43)],
        }
        for what, sent in headers.items():
            self.assert_sentence(401, self.ask("GET", "/api/account", sent), what)
            answer = self.ask("POST", "/api/ai/suggestions", sent, SUGGESTION_BODY)
            self.assert_sentence(401, answer, what)

    def test_a_scheme_in_any_case(self):
        for scheme in ("bearer", "BEARER"):
            self.assertEqual(200, self.ask("GET", "/api/account", [("authorization", f"{scheme} {self.token}")]).status)

    def test_a_body_that_is_no_object(self):
        for path in ("/api/auth/email/start", "/api/auth/email/verify", "/api/ai/suggestions"):
            for what, body in NOT_OBJECTS.items():
                self.assert_sentence(400, self.ask("POST", path, [bearer(self.token), JSON], body), f"{path} {what}")

    def test_a_body_of_another_kind(self):
        for kind in ("text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=a", "application/jsonp"):
            answer = self.ask("POST", "/api/auth/email/start", [("Content-Type", kind)], b'{"email": "a@b.c"}')
            self.assert_sentence(415, answer, kind)

    def test_a_field_that_is_missing_or_of_another_kind(self):
        good = {"/api/auth/email/start": {"email": "fields@example.org"},
                "/api/auth/email/verify": {"email": "fields@example.org", "code": "123456"},
                "/api/ai/suggestions": SUGGESTION_BODY}
        for path, body in good.items():
            for field in body:
                wrong = [body | {field: value} for value in (None, 7, True, [], {}, ["a@b.c"])]
                wrong.append({key: value for key, value in body.items() if key != field})
                for sent in wrong:
                    answer = self.ask("POST", path, [bearer(self.token)], sent)
                    self.assert_sentence(400, answer, f"{path} {sent}")

    def test_an_address_that_mail_cannot_go_to(self):
        for email in ("", "a", "@", "a@b", "a.b", "a@b.c,d@e.f", "<a@b.c>", "a@b.c\r\nRCPT TO:<x@y.z>", "a\n@b.c", "a@b.c\u0000",
                      "a b@c.d", "a@@b.c", "a@b..c", ".a@b.c", "a@[127.0.0.1]", '"a"@b.c', "почта@пример.рф", "a" * 65 + "@b.c",
                      "a@" + "b" * 300 + ".c", "a@b.c;d@e.f", "a@b.c\u2028"):
            answer = self.ask("POST", "/api/auth/email/start", body={"email": email})
            self.assert_sentence(400, answer, repr(email))
            self.assertEqual("Enter a valid email.", answer.text)

    def test_a_code_that_is_wrong_used_or_never_sent(self):
        verify = "/api/auth/email/verify"
        self.ask("POST", "/api/auth/email/start", body={"email": "codes@example.org"})
        sentences = set()
        for email, code in (("codes@example.org", ""), ("codes@example.org", "12345"), ("codes@example.org", "١٢٣٤٥٦"),
                            ("never@example.org", "123456"), ("first@example.org", "123456"), ("no address", "123456")):
            answer = self.ask("POST", verify, body={"email": email, "code": code})
            self.assert_sentence(401, answer, (email, code))
            sentences.add(answer.text)
        self.assertEqual(1, len(sentences), "one can tell which addresses are known")

    def test_a_code_counts_once(self):
        email = "once@example.org"
        self.assertEqual(200, self.ask("POST", "/api/auth/email/start", body={"email": email}).status)
        code = re.findall(rf"To: {email}\nSubject: ([0-9]{{6}})", self.service.log())[-1]
        answers = [self.ask("POST", "/api/auth/email/verify", body={"email": email, "code": f" {code}\n"}) for _ in range(2)]
        self.service.keep_secret(self.assert_object(answers[0], "session", "email")["session"])
        self.assert_sentence(401, answers[1])

    def test_another_code_too_soon(self):
        for email in ("soon@example.org", "first@example.org"):  # whether it has an account or not
            self.ask("POST", "/api/auth/email/start", body={"email": email})
            answer = self.ask("POST", "/api/auth/email/start", body={"email": email})
            self.assert_sentence(429, answer)
            self.assertLessEqual(int(answer.header("Retry-After")), 60)

    def test_a_language_or_a_topic_that_the_coach_does_not_take(self):
        for wrong in ({"language": "de"}, {"language": ""}, {"language": "EN"}, {"topic": "a" * 2001}):
            answer = self.ask("POST", "/api/ai/suggestions", [bearer(self.token)], SUGGESTION_BODY | wrong)
            self.assert_sentence(400, answer, str(wrong)[:60])

    def test_the_largest_topic_and_a_progress_that_is_cut(self):
        body = {"topic": "ж" * 2000, "language": "ru", "progress": "п" * 10000}
        answer = self.ask("POST", "/api/ai/suggestions", [bearer(self.token)], body)
        self.assert_object(answer, "message", "tasks", "cards")
        asked = json.loads(json.loads(self.stub.asked_about("ж" * 2000)[0].body)["messages"][1]["content"])
        self.assertEqual("п" * 4000, asked["progress"])

    # How an error is told

    def test_an_error_in_the_language_of_whoever_asks(self):
        for accepted, beginning in (("ru-RU,ru;q=0.9,en;q=0.8", "Вход"), ("de, en;q=0.1", "Your"), ("", "Your"), ("ru;q=x", "Your")):
            answer = self.ask("GET", "/api/account", [("Accept-Language", accepted)])
            self.assertTrue(answer.text.startswith(beginning), (accepted, answer.text))

    def test_an_error_as_json(self):
        for accepted in ("application/json", "text/html, application/json;q=0.9"):
            answer = self.ask("GET", "/api/account", [("Accept", accepted), ("Accept-Language", "ru")])
            self.assertEqual((401, "application/json"), (answer.status, answer.header("Content-Type")))
            self.assertEqual(["error"], list(json.loads(answer.body)))
            self.assertTrue(json.loads(answer.body)["error"].startswith("Вход"))

    def test_every_answer_says_that_it_is_not_kept(self):
        for answer in (self.ask("GET", "/api/account", [bearer(self.token)]), self.ask("GET", "/nothing")):
            self.assertEqual("no-store", answer.header("Cache-Control"))
            self.assertEqual("nosniff", answer.header("X-Content-Type-Options"))
            self.assertRegex(answer.header("X-Request-Id"), r"\A[0-9a-f]{16}\Z")
            self.assertRegex(answer.header("Date"), r"\A[A-Z][a-z]{2}, [0-9]{2} [A-Z][a-z]{2} [0-9]{4} [0-9:]{8} GMT\Z")

    # What is no HTTP, or more than is taken

    def test_a_request_that_is_none(self):
        host = b"Host: a\r\n"
        wrong = {
            "no version": b"GET /healthz\r\n" + host, "words": b"Hello there, friend\r\n" + host,
            "two spaces": b"GET  /healthz HTTP/1.1\r\n" + host, "no target": b"GET HTTP/1.1\r\n" + host,
            "no host": b"GET /healthz HTTP/1.1\r\n", "two hosts": b"GET /healthz HTTP/1.1\r\n" + host + host,
            "a host with a path": b"GET /healthz HTTP/1.1\r\nHost: a/b\r\n",
            "folded": b"GET /healthz HTTP/1.1\r\n" + host + b"A: b\r\n c\r\n",
            "space before a colon": b"GET /healthz HTTP/1.1\r\n" + host + b"A : b\r\n",
            "no colon": b"GET /healthz HTTP/1.1\r\n" + host + b"A\r\n",
            "zero byte": b"GET /healthz HTTP/1.1\r\n" + host + b"A: b\x00c\r\n",
            "line feeds alone": b"GET /healthz HTTP/1.1\nHost: a\n",
            "whole address": b"GET http://a/healthz HTTP/1.1\r\n" + host,
            "not ASCII": b"GET /\xd1\x84 HTTP/1.1\r\n" + host,
            "TLS": b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n",
            "length of words": b"POST /api/auth/email/start HTTP/1.1\r\n" + host + b"Content-Length: two\r\n",
            "length below zero": b"POST /api/auth/email/start HTTP/1.1\r\n" + host + b"Content-Length: -1\r\n",
            "two lengths": b"POST /api/auth/email/start HTTP/1.1\r\n" + host + b"Content-Length: 2\r\nContent-Length: 3\r\n",
            "length and chunks": b"POST /api/auth/email/start HTTP/1.1\r\n" + host
                                 + b"Content-Length: 2\r\nTransfer-Encoding: chunked\r\n",
        }
        for what, data in wrong.items():
            with Connection(self.service.address) as connection:
                connection.send(data + (b"\n" if what == "line feeds alone" else b"\r\n"))
                self.assert_sentence(400, connection.read_answer(), what)
                self.assertTrue(connection.is_closed(), what)

    def test_what_is_not_spoken_here(self):
        for data, status in ((b"GET /healthz HTTP/2.0\r\nHost: a\r\n\r\n", 505), (b"GET /healthz HTTP/0.9\r\nHost: a\r\n\r\n", 505),
                             (b"POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: gzip\r\n\r\n", 501),
                             (b"POST / HTTP/1.1\r\nHost: a\r\nExpect: the-best\r\nContent-Length: 2\r\n\r\n", 417)):
            with Connection(self.service.address) as connection:
                connection.send(data)
                self.assert_sentence(status, connection.read_answer(), data)

    def test_more_than_is_taken(self):
        body = json.dumps({"email": "a" * 70000}).encode()
        sizes = ((413, request("POST", "/api/auth/email/start", [JSON], body)),
                 (414, request("GET", "/" + "a" * 9000)),
                 (431, request("GET", "/healthz", [("A", "b" * 17000)])),
                 (431, request("GET", "/healthz", [(f"A{number}", "b") for number in range(200)])))
        for status, data in sizes:
            with Connection(self.service.address) as connection:
                connection.send(data)
                self.assert_sentence(status, connection.read_answer(), data[:80])
                self.assertTrue(connection.is_closed())

    def test_a_body_in_chunks(self):
        connection = self.connect()
        head = request("POST", "/api/auth/email/start",
                       [JSON, ("Transfer-Encoding", "chunked"), ("X-Forwarded-For", new_client_address())])
        connection.send(head + b'b;a=b\r\n{"email": "\r\n16\r\nchunks@example.org\"  }\r\n0\r\nSession: a\r\n\r\n')
        self.assertEqual(200, connection.read_answer().status)

    def test_chunks_that_are_none(self):
        head = request("POST", "/api/auth/email/start", [JSON, ("Transfer-Encoding", "chunked")])
        for chunks in (b"x\r\n", b"-2\r\n{}\r\n0\r\n\r\n", b"2\r\n{}}\r\n0\r\n\r\n", b"ffffffffffffffffff\r\n{}"):
            with Connection(self.service.address) as connection:
                connection.send(head + chunks)
                self.assertIn(connection.read_answer().status, (400, 413), chunks)

    def test_a_body_that_waits_to_be_asked_for(self):
        connection = self.connect()
        body = b'{"email": "no address"}'
        data = request("POST", "/api/auth/email/start", [JSON, ("Expect", "100-continue")], body)
        connection.send(data[:-len(body)])
        connection.send(body)
        self.assertEqual(400, connection.read_answer().status)

    def test_many_requests_on_one_connection(self):
        connection = self.connect()
        for _ in range(3):
            connection.send(request("GET", "/healthz"))
            self.assertEqual(200, connection.read_answer().status)
        connection.send(request("GET", "/healthz") + request("GET", "/nothing") + request("GET", "/api/account"))
        self.assertEqual([200, 404, 401], [connection.read_answer().status for _ in range(3)])

    def test_a_connection_ends_where_that_is_asked_for(self):
        for data in (request("GET", "/healthz", [("Connection", "close")]), b"GET /healthz HTTP/1.0\r\n\r\n"):
            with Connection(self.service.address) as connection:
                connection.send(data)
                self.assertEqual(200, connection.read_answer().status)
                self.assertTrue(connection.is_closed())

    def test_a_request_that_comes_byte_by_byte(self):
        connection = self.connect()
        self.assertGreater(connection.send_slowly(request("GET", "/healthz"), 0.005), 30)
        self.assertEqual(200, connection.read_answer().status)

    def test_a_request_that_is_never_finished(self):
        connection = self.connect()
        connection.send(b"GET /healthz HTTP/1.1\r\nHos")
        connection.end_sending()
        with self.assertRaises(Closed):
            connection.read_answer()


if __name__ == "__main__":
    unittest.main()
