#!/usr/bin/env python3
"""What somebody tries who means harm, against two instances on one database: all of it is refused."""

import base64
import hashlib
import json
import re
import secrets
import subprocess
import sys
import threading
import time
import unittest
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from urllib.parse import parse_qs, quote, urlencode, urlsplit

from rawHttp import Closed, Connection, request
from service import Service, bearer, new_client_address, wait_until

JSON = ("Content-Type", "application/json")
START, VERIFY, ACCOUNT = "/api/auth/email/start", "/api/auth/email/verify", "/api/account"
TESTS = Path(__file__).resolve().parent.parent
INSTANCES = 2
CODES_PER_CLIENT = WRONG_CODES_PER_CLIENT = 20  # an hour
WRONG_CODES_PER_ADDRESS = 20  # a day; not to be set
CODES_PER_ADDRESS = 10  # a day; not to be set
SENT_BY_THE_SERVICE = {"content-type", "content-length", "connection", "cache-control", "x-content-type-options", "x-request-id",
                       "date", "allow", "retry-after", "content-security-policy", "referrer-policy", "x-frame-options",
                       "www-authenticate", "server", "keep-alive"}


def address_of(name, numbers=iter(range(10**6))):
    """A mail address that no other test uses."""
    return f"{name}{next(numbers)}@example.org"


def another_code(code):
    return f"{(int(code) + 1) % 10**6:06}"


def from_elsewhere():
    """The header by which a request comes from a network of its own."""
    return ("X-Forwarded-For", new_client_address())


def hash_of(secret):
    """As the database has it."""
    return base64.urlsafe_b64encode(hashlib.sha256(secret.encode()).digest()).rstrip(b"=").decode()


class LineProgram:
    """`with LineProgram(path, *arguments) as program:` is a program of the tests that tells one JSON object a line."""

    def __init__(self, path, *arguments):
        self._command = [sys.executable, "-B", str(TESTS / path), *arguments]
        self.told = []

    def __enter__(self):
        self._process = subprocess.Popen(self._command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8")
        self.first = json.loads(self._process.stdout.readline())
        self._thread = threading.Thread(target=lambda: self.told.extend(map(json.loads, self._process.stdout)))
        self._thread.start()
        return self

    def __exit__(self, *problem):
        self._process.stdin.close()
        self._process.wait()
        self._thread.join()
        self._process.stdout.close()


class Attacks(unittest.TestCase):
    """What all attacks have in common. None of them ends an instance."""

    @classmethod
    def serve(cls, **settings):
        cls.service = cls.enterClassContext(Service(INSTANCES, **settings))

    def tearDown(self):
        for instance in self.service.instances:
            self.assertIsNone(instance.process.poll(), f"an instance has ended:\n{instance.log()}")

    def ask(self, method, path, headers=(), body=None, instance=0):
        """Asks from elsewhere; a body of bytes is said to be JSON too."""
        if isinstance(body, bytes):
            headers = [JSON, *headers]
        return self.service.ask(method, path, [from_elsewhere(), *headers], body, instance)

    def send_code(self, email, instance=0):
        self.assertEqual(200, self.ask("POST", START, body={"email": email}, instance=instance).status)
        return self.service.code_sent_to(email, instance)

    def at_once(self, bodies, client=from_elsewhere):
        """Verifies all of them, each on a connection of its own and by another instance than the one before; all are
        sent before the first answer is read. Returns the statuses."""
        connections = [self.enterContext(Connection(self.service.instances[place % INSTANCES].address))
                       for place in range(len(bodies))]
        for connection, body in zip(connections, bodies):
            connection.send(request("POST", VERIFY, [JSON, client()], json.dumps(body).encode()))
        answers = [connection.read_answer() for connection in connections]
        for answer in answers:
            if answer.status == 200:
                self.service.keep_secret(json.loads(answer.body)["session"])
        return [answer.status for answer in answers]

    def in_one_window(self, seconds, attempt):
        """Limits begin anew with each hour and each day: an attempt that saw that happen is made once more."""
        while True:
            window = time.time() // seconds
            attempt()
            if time.time() // seconds == window:
                return


class Codes(Attacks):
    @classmethod
    def setUpClass(cls):
        cls.serve(CODES_PER_CLIENT_HOUR=CODES_PER_CLIENT, WRONG_CODES_PER_CLIENT_HOUR=WRONG_CODES_PER_CLIENT)

    def guesses_of(self, email):
        """How many were compared with its code."""
        return int(self.service.change(f"SELECT attempts FROM sign_in_codes WHERE email = '{email}'")[0][0])

    def test_the_sixth_guess_is_not_compared_even_if_it_is_right(self):
        for wrong, status in ((4, 200), (5, 401), (6, 401)):
            email = address_of("sixth")
            code = self.send_code(email)
            guess = {"email": email, "code": another_code(code)}
            self.assertEqual([401] * wrong, self.at_once([guess] * wrong))
            self.assertEqual([status], self.at_once([guess | {"code": code}]), f"after {wrong}")

    def test_no_number_of_connections_buys_a_sixth_guess(self):
        email = address_of("many")
        code = self.send_code(email)
        wrong = [{"email": email, "code": f"{(int(code) + 1 + place) % 10**6:06}"} for place in range(60)]
        statuses = self.at_once(wrong)
        self.assertIn(401, statuses)
        self.assertLessEqual(set(statuses), {401, 429})  # how many of each is a matter of who comes first
        self.assertEqual(5, self.guesses_of(email))
        self.assertNotIn(200, self.at_once([{"email": email, "code": code}] * 10))
        # Five were compared and count; the rest was guessed at nothing and closes the address to nobody.
        self.let_another_code_be_sent(email)
        self.assertEqual([200], self.at_once([{"email": email, "code": self.send_code(email)}]))

    def test_the_right_code_among_many_wrong_ones_counts_within_the_first_five_only(self):
        email = address_of("among")
        code = self.send_code(email)
        guess = {"email": email, "code": another_code(code)}
        first = self.at_once([guess] * 5)
        later = self.at_once([guess] * 5 + [guess | {"code": code}] + [guess] * 4)
        self.assertEqual(([401] * 5, [401] * 10), (first, later))
        self.assertEqual(5, self.guesses_of(email))

    def test_a_new_code_buys_no_guesses_beyond_those_of_the_day(self):
        def attempt():
            email = address_of("day")
            tried = 0
            for number in range(6):
                code = self.send_code(email, number % INSTANCES)
                if tried == WRONG_CODES_PER_ADDRESS:
                    self.assertEqual([429] * 2, self.at_once([{"email": email, "code": code}] * 2))
                    return
                self.assertEqual([401] * 5, self.at_once([{"email": email, "code": another_code(code)}] * 5))
                tried += 5
                self.let_another_code_be_sent(email)
            self.fail("more wrong codes were taken than an address may have")

        self.in_one_window(86400, attempt)

    def test_one_client_guesses_no_more_than_it_may_on_both_instances_together(self):
        def attempt():
            network = new_client_address().removesuffix("1")
            clients = (("X-Forwarded-For", f"{network}{number:x}") for number in range(1, 1000))  # one network is one client
            guesses = [{"email": address_of("client"), "code": "123456"} for _ in range(60)]
            statuses = self.at_once(guesses, lambda: next(clients))
            self.assertEqual([401] * WRONG_CODES_PER_CLIENT + [429] * (60 - WRONG_CODES_PER_CLIENT), sorted(statuses))

        self.in_one_window(3600, attempt)

    def test_one_client_has_no_more_codes_sent_than_it_may_on_both_instances_together(self):
        def attempt():
            client = from_elsewhere()
            statuses = [self.service.ask("POST", START, [client], {"email": address_of("sent")}, number % INSTANCES).status
                        for number in range(CODES_PER_CLIENT + 4)]
            self.assertEqual([200] * CODES_PER_CLIENT + [429] * 4, statuses)

        self.in_one_window(3600, attempt)

    def test_nobody_fills_a_letter_box(self):
        def attempt():
            email = address_of("full")
            for number in range(CODES_PER_ADDRESS):
                self.send_code(email, number % INSTANCES)
                self.let_another_code_be_sent(email)
            answers = [self.ask("POST", START, body={"email": email}, instance=number) for number in range(INSTANCES)]
            self.assertEqual([429] * INSTANCES, [answer.status for answer in answers])

        self.in_one_window(86400, attempt)

    def test_codes_asked_for_at_once_are_one(self):
        email = address_of("burst")
        connections = [self.enterContext(Connection(self.service.instances[place % INSTANCES].address)) for place in range(10)]
        for connection in connections:
            connection.send(request("POST", START, [JSON, from_elsewhere()], json.dumps({"email": email}).encode()))
        self.assertEqual([200] + [429] * 9, sorted(connection.read_answer().status for connection in connections))
        self.assertEqual(1, self.service.log().count(f"To: {email}\n"))

    def test_a_code_is_not_replayed(self):
        email = address_of("replayed")
        code = self.send_code(email)
        self.assertEqual([200], self.at_once([{"email": email, "code": code}]))
        self.assertEqual([401] * 6, self.at_once([{"email": email, "code": code}] * 6))

    def test_a_code_that_twenty_connections_send_at_once_makes_one_session(self):
        email = address_of("raced")
        code = self.send_code(email)
        statuses = self.at_once([{"email": email, "code": code}] * 20)
        self.assertEqual(1, statuses.count(200), statuses)
        self.assertLessEqual(set(statuses), {200, 401, 429})
        sessions = self.service.change("SELECT COUNT(*) FROM sessions JOIN accounts ON accounts.id = sessions.account_id "
                                       f"WHERE email = '{email}'")
        self.assertEqual([("1",)], sessions)

    def test_a_code_counts_for_its_own_address_only(self):
        victim, own = address_of("victim"), address_of("own")
        self.send_code(victim)
        code = self.send_code(own)
        self.assertEqual([401], self.at_once([{"email": victim, "code": code}]))
        self.assertEqual([200], self.at_once([{"email": own, "code": code}]))

    def test_a_code_that_is_over(self):
        email = address_of("over")
        code = self.send_code(email)
        self.service.change(f"UPDATE sign_in_codes SET expires_at = {int(time.time()) - 1} WHERE email = '{email}'")
        self.assertEqual([401], self.at_once([{"email": email, "code": code}]))

    def test_the_database_does_not_hold_what_was_sent(self):
        email = address_of("hashed")
        code = self.send_code(email)
        (stored,) = self.service.change(f"SELECT code_hash FROM sign_in_codes WHERE email = '{email}'")
        self.assertNotIn(stored[0], (code, hash_of(code), hash_of(email + code)))
        token = self.service.sign_in()
        self.assertEqual([("1",)], self.service.change(f"SELECT COUNT(*) FROM sessions WHERE token_hash = '{hash_of(token)}'"))
        self.assertEqual([("0",)], self.service.change(f"SELECT COUNT(*) FROM sessions WHERE token_hash = '{token}'"))

    def let_another_code_be_sent(self, email):
        """A minute later."""
        self.service.change(f"UPDATE sign_in_codes SET sent_at = sent_at - 61 WHERE email = '{email}'")


class Tokens(Attacks):
    @classmethod
    def setUpClass(cls):
        cls.serve()

    def statuses(self, token):
        """What both instances say of it."""
        return {self.ask("GET", ACCOUNT, [bearer(token)], instance=instance).status for instance in range(INSTANCES)}

    def test_only_the_very_token_counts(self):
        token = self.service.sign_in()
        others = [token.swapcase(), token.lower(), token[:-1], token[1:], token + "=", token + "A", token[::-1],
                  f"{token}\t{token}",
                  token.replace(token[20], "A" if token[20] != "A" else "B"), hash_of(token), f"{token[:-1]}%", f"{token}%00"]
        self.assertEqual({200}, self.statuses(token))
        for other in others:
            self.assertEqual({401}, self.statuses(other), other)

    def test_a_token_elsewhere_than_in_its_header(self):
        token = self.service.sign_in()
        for path, headers in ((f"{ACCOUNT}?access_token={token}", []), (f"{ACCOUNT}?session={token}", []),
                              (ACCOUNT, [("Cookie", f"session={token}")]), (ACCOUNT, [("X-Authorization", f"Bearer {token}")]),
                              (ACCOUNT, [("Proxy-Authorization", f"Bearer {token}")])):
            self.assertEqual(401, self.ask("GET", path, headers).status, path)

    def test_a_token_that_is_over(self):
        token = self.service.sign_in()
        self.service.change(f"UPDATE sessions SET expires_at = {int(time.time()) - 1} WHERE token_hash = '{hash_of(token)}'")
        self.assertEqual({401}, self.statuses(token))

    def test_sessions_end_while_the_service_runs_where_an_operator_says_so(self):
        email = address_of("revoked")
        tokens = [self.service.sign_in(email), self.service.sign_in()]
        self.assertEqual([{200}, {200}], [self.statuses(token) for token in tokens])
        ended = self.service.command("revoke", email)
        self.assertEqual((0, ""), (ended.returncode, "".join(re.findall("error.*", ended.stderr))))
        self.assertEqual("sessions ended: 1\n", ended.stdout)
        self.assertEqual([{401}, {200}], [self.statuses(token) for token in tokens])
        self.assertEqual(0, self.service.command("revoke", "--all").returncode)
        self.assertEqual([{401}, {401}], [self.statuses(token) for token in tokens])
        self.assertEqual({200}, self.statuses(self.service.sign_in()))

    def test_an_operator_who_mistypes_ends_nothing(self):
        token = self.service.sign_in()
        for typed in ("%", "' OR 1=1 --", "student%@example.org", ""):
            self.service.command("revoke", typed)
        self.assertEqual({200}, self.statuses(token))


class Addresses(Attacks):
    """Who asks, and who only says so."""

    @classmethod
    def setUpClass(cls):
        cls.serve(CODES_PER_CLIENT_HOUR=5)

    def starts(self, service, forwarded):
        return [service.ask("POST", START, [("X-Forwarded-For", value)], {"email": address_of("from")}).status
                for value in forwarded]

    def test_what_a_client_claims_before_a_proxy_is_not_believed(self):
        def attempt():
            own = new_client_address()
            claimed = [f"198.51.100.{number}, {own}" for number in range(7)]
            self.assertEqual([200] * 5 + [429] * 2, self.starts(self.service, claimed))

        self.in_one_window(3600, attempt)

    def test_without_a_trusted_proxy_nothing_is_believed(self):
        with Service(TRUSTED_PROXIES="192.0.2.1", CODES_PER_CLIENT_HOUR=5) as service:
            def attempt():
                service.change("DELETE FROM rate_limits")
                self.assertEqual([200] * 5 + [429] * 2, self.starts(service, [new_client_address() for _ in range(7)]))

            self.in_one_window(3600, attempt)

    def test_figures_are_for_this_machine_alone(self):
        self.assertEqual(200, self.service.ask("GET", "/metrics").status)
        for claimed in (new_client_address(), "127.0.0.1", "::1", "127.0.0.1, 203.0.113.9", "203.0.113.9, 127.0.0.1",
                        "::ffff:127.0.0.1", "nonsense", "127.0.0.1:80"):
            self.assertEqual(404, self.service.ask("GET", "/metrics", [("X-Forwarded-For", claimed)]).status, claimed)
        for name in ("Forwarded", "X-Real-IP", "Via"):
            self.assertEqual(404, self.service.ask("GET", "/metrics", [(name, "127.0.0.1")]).status, name)


class Providers(Attacks):
    @classmethod
    def setUpClass(cls):
        cls.email = "person@yandex.example"
        cls.provider = cls.enterClassContext(EasyProvider("a-client", cls.email))
        url = cls.provider.url
        cls.serve(YANDEX_CLIENT_ID="a-client", YANDEX_CLIENT_SECRET="secret-of-a-client", YANDEX_AUTHORIZE_URL=f"{url}/authorize",
                  YANDEX_TOKEN_URL=f"{url}/token", YANDEX_INFO_URL=f"{url}/info", GOOGLE_CLIENT_ID="another-client",
                  GOOGLE_CLIENT_SECRET="secret-of-another-client", GOOGLE_ISSUER=url)
        for secret in ("secret-of-a-client", "secret-of-another-client", cls.email, EasyProvider.TOKEN):
            cls.service.keep_secret(secret)

    def begin(self, provider="yandex"):
        """Returns the state of a sign-in that has begun."""
        answer = self.ask("GET", f"/api/auth/{provider}/start", instance=1)
        self.assertEqual(200, answer.status, answer.body[:200])
        state = parse_qs(urlsplit(json.loads(answer.body)["url"]).query)["state"][0]
        self.service.keep_secret(state)
        return state

    def agree(self):
        """A person has said yes: returns the state and a code, as the browser brings them."""
        code = f"code-{secrets.token_urlsafe(9)}"
        self.service.keep_secret(code)
        return self.begin(), code

    def call_back(self, query, provider="yandex", instance=0):
        if not isinstance(query, str):
            query = urlencode(query)
        return self.ask("GET", f"/api/auth/{provider}/callback?{query}", instance=instance)

    def assert_refused(self, answer, what=None):
        self.assertEqual(400, answer.status, f"{what}: {answer.body[:300]}")
        self.assertEqual("text/html; charset=utf-8", answer.header("Content-Type"))
        self.assertNotIn("quorvel://", answer.text)
        self.assertIn("default-src 'none'", answer.header("Content-Security-Policy"))

    def assert_signed_in(self, answer):
        self.assertEqual(200, answer.status, answer.body[:300])
        session = re.search(r"quorvel://auth\?session=([A-Za-z0-9_-]{43})", answer.text)[1]
        self.service.keep_secret(session)
        self.assertEqual({"email": self.email}, json.loads(self.ask("GET", ACCOUNT, [bearer(session)]).body))

    def test_an_answer_is_not_replayed(self):
        state, code = self.agree()
        self.assert_signed_in(self.call_back({"state": state, "code": code}))
        for instance in range(INSTANCES):
            self.assert_refused(self.call_back({"state": state, "code": code}, instance=instance))
        self.assert_refused(self.call_back({"state": state, "code": "another"}), "a used state with a code that is not")

    def test_an_answer_that_comes_twenty_times_at_once_makes_one_session(self):
        state, code = self.agree()
        path = "/api/auth/yandex/callback?" + urlencode({"state": state, "code": code})
        connections = [self.enterContext(Connection(self.service.instances[place % INSTANCES].address)) for place in range(20)]
        for connection in connections:
            connection.send(request("GET", path, [from_elsewhere()]))
        answers = [connection.read_answer() for connection in connections]
        self.assertEqual([200] + [400] * 19, sorted(answer.status for answer in answers))
        self.assert_signed_in(next(answer for answer in answers if answer.status == 200))

    def test_a_state_that_nobody_gave(self):
        _, code = self.agree()
        for state in ("A" * 43, "", "A" * 42, "A" * 44, "' OR '1'='1", "%", "\0" * 43, "é" * 43, "A" * 5000):
            self.assert_refused(self.call_back({"state": state, "code": code}), state)
        self.assert_refused(self.call_back({"code": code}))
        self.assert_refused(self.call_back(""))

    def test_a_state_that_is_over(self):
        state, code = self.agree()
        self.service.change(f"UPDATE oauth_states SET expires_at = {int(time.time()) - 1} WHERE state_hash = '{hash_of(state)}'")
        self.assert_refused(self.call_back({"state": state, "code": code}))

    def test_an_answer_for_the_other_provider(self):
        own, code = self.agree()
        other = self.begin("google")
        self.assert_refused(self.call_back({"state": other, "code": code}), "a state of Google with a code of Yandex")
        self.assert_refused(self.call_back({"state": own, "code": code}, "google"), "a state of Yandex with Google")
        self.assert_refused(self.call_back({"state": own, "code": code}), "a state that was tried elsewhere")
        self.assertNotIn(code, "".join(self.provider.asked), "a code was shown to a provider")

    def test_parameters_that_come_twice(self):
        state, code = self.agree()
        pairs = {"state": state, "code": code}
        for name in pairs:
            for more in (pairs[name], "A" * 43, ""):
                self.assert_refused(self.call_back(f"{urlencode(pairs)}&{name}={more}"), name)
                self.assert_refused(self.call_back(f"{name}={more}&{urlencode(pairs)}"), name)
        self.assert_refused(self.call_back(f"{urlencode(pairs)}&error=access_denied"), "a code and an error")
        for wrong in ("st%61te=a", "state=%zz", "state=%", "state"):
            self.assert_refused(self.call_back(f"{urlencode(pairs)}&{wrong}"), wrong)
        self.assert_signed_in(self.call_back(pairs))  # nothing of this has used it up

    def test_what_an_answer_says_never_becomes_a_page(self):
        html = "<script>alert(1)</script>\"'><img src=x onerror=alert(1)>"
        for fields in ({"error": html}, {"error": "access_denied", "error_description": html}, {"error": html, "error_uri": html},
                       {"code": EasyProvider.REFUSED + html},
                       {"error": "access_denied", html: html}, {"code": "a", "iss": html}):
            for state in (self.begin(), html):
                answer = self.call_back(fields | {"state": state})
                self.assertIn(answer.status, (400, 502), fields)
                body = answer.text.lower()
                for trace in ("<script", "<img", "alert(1)", "onerror"):
                    self.assertNotIn(trace, body, fields)

    def test_an_error_uses_a_sign_in_up(self):
        state, code = self.agree()
        self.assert_refused(self.call_back({"state": state, "error": "access_denied"}))
        self.assert_refused(self.call_back({"state": state, "code": code}))

    def test_a_code_that_the_provider_did_not_give(self):
        self.assert_refused(self.call_back({"state": self.begin(), "code": EasyProvider.REFUSED}))

    def test_an_answer_that_is_asked_for_by_another_method(self):
        state, code = self.agree()
        path = "/api/auth/yandex/callback?" + urlencode({"state": state, "code": code})
        for method in ("POST", "PUT", "DELETE"):
            self.assertEqual(405, self.ask(method, path).status)
        self.assert_signed_in(self.ask("GET", path))


class EasyProvider:
    """`with EasyProvider(client, email) as provider:` serves at provider.url what stands in for both providers. It takes every
    code but one, as often as it comes and whatever comes with it: what is refused, the service has refused. `asked` holds the
    bodies of all requests for a token."""

    REFUSED = "code-that-nobody-gave"
    TOKEN = "token-of-a-provider"

    def __init__(self, client, email):
        self.asked = asked = []
        refused, token = self.REFUSED, self.TOKEN

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                url = f"http://127.0.0.1:{self.server.server_address[1]}"
                if self.path == "/.well-known/openid-configuration":
                    self.answer(200,
                                {"issuer": url, "authorization_endpoint": f"{url}/authorize", "token_endpoint": f"{url}/token",
                                      "jwks_uri": f"{url}/keys"})
                else:
                    self.answer(200, {"id": "17", "client_id": client, "default_email": email, "emails": [email]})

            def do_POST(self):
                asked.append(self.rfile.read(int(self.headers["Content-Length"])).decode())
                if refused in asked[-1]:
                    self.answer(400, {"error": "invalid_grant"})
                else:
                    self.answer(200, {"access_token": token, "token_type": "bearer"})

            def answer(self, status, body):
                text = json.dumps(body).encode()
                self.send_response(status)
                self.send_header("Content-Type", "application/json")
                self.send_header("Content-Length", str(len(text)))
                self.end_headers()
                self.wfile.write(text)

            def log_message(self, *_):
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self.url = f"http://127.0.0.1:{self._server.server_address[1]}"

    def __enter__(self):
        self._thread = threading.Thread(target=self._server.serve_forever)
        self._thread.start()
        return self

    def __exit__(self, *problem):
        self._server.shutdown()
        self._thread.join()
        self._server.server_close()


class Mail(Attacks):
    @classmethod
    def setUpClass(cls):
        cls.sink = cls.enterClassContext(LineProgram("sinks/smtpSink.py", "--commands"))
        cls.serve(SMTP_HOST="127.0.0.1", SMTP_PORT=cls.sink.first["port"], SMTP_SECURITY="none",
                  SMTP_FROM="Quorvel <from@quorvel.example>")

    def test_no_address_brings_a_command_or_a_recipient_with_it(self):
        victim = "victim@example.net"
        for email in (f"a@example.org\r\nRCPT TO:<{victim}>", f"a@example.org\nRCPT TO:<{victim}>",
                      f"a@example.org\rRCPT TO:<{victim}>",
                      f"a@example.org>\r\nRCPT TO:<{victim}", f"<{victim}>", f"a@example.org,{victim}",
                      f"a@example.org, {victim}",
                      f"a@example.org;{victim}", f"a@example.org {victim}", f"a@example.org>,<{victim}", f"Name <{victim}>",
                      f"a@example.org\0{victim}", f"{victim}\0", f'"a\r\nRCPT TO:<{victim}>"@example.org',
                      f"@example.org:{victim}",
                      f"a%{victim}@example.org", f"a@example.org\r\nBcc: {victim}", f"a\r\n.\r\nMAIL FROM:<{victim}>@example.org",
                      f"a@example.org\u2028RCPT TO:<{victim}>", f"a@example.org\u0085{victim}", f"{victim} NOTIFY=SUCCESS",
                      f"a@example.org(\r\n {victim})", "a@example.org\uff0cb@example.net", "a\ud83d@example.org"):
            with self.subTest(email=ascii(email)):
                self.assertEqual(400, self.ask("POST", START, body=json.dumps({"email": email}).encode()).status)
        email = address_of("o'brien+tag")
        self.service.keep_secret(email)
        self.assertEqual(200, self.ask("POST", START, [("Accept-Language", "ru"), ("Subject", "x"), ("To", victim)],
                                       {"email": email}).status)
        wait_until(lambda: self.messages(), 20, "the message")
        (message,) = self.messages()
        self.assertEqual([email], message["recipients"])
        self.assertNotIn(victim, json.dumps(self.sink.told))
        self.assertEqual(1, [told.get("command") for told in self.sink.told].count("RCPT"))
        self.assertEqual([f"To: {email}"],
                         re.findall(r"(?im)^(?:to|cc|bcc):.*$", message["message"].partition("\r\n\r\n")[0].replace("\r", "")))
        code = re.search(r"(?<![0-9])[0-9]{6}(?![0-9])", message["message"].partition("\r\n\r\n")[2])
        if code:
            self.service.keep_secret(code[0])

    def messages(self):
        return [told for told in self.sink.told if "recipients" in told]


class Requests(Attacks):
    """What is done with the bytes of HTTP and of JSON."""

    @classmethod
    def setUpClass(cls):
        cls.serve()
        cls.token = cls.service.sign_in()

    def test_nothing_that_is_asked_becomes_a_header(self):
        line = "\r\nInjected: yes\r\nSet-Cookie: a=b"
        once, twice = quote(line), quote(quote(line))
        other = "%E5%98%8A%E5%98%8DInjected:%20yes"  # becomes CR LF where bits are dropped
        email = "/api/auth/email/"
        asked = [request("GET", f"{path}{between}{text}", [from_elsewhere()])
                 for path in ("/healthz", "/nothing", "/api/auth/yandex/callback", ACCOUNT, "/api/auth/google/start")
                 for between in ("?a=", "?state=", "?code=a&state=", "?error=", "/", ";") for text in (once, twice, other)]
        for body in ({"email": line}, {"email": f"a@example.org{line}"}, {"email": "a@example.org", "code": line},
                     {"email": "a@example.org", "code": "1", "language": f"ru{line}"}):
            data = json.dumps(body).encode()
            asked += [request("POST", f"{email}{path}", [JSON, from_elsewhere()], data) for path in ("start", "verify")]
        asked += [request("POST", "/api/ai/suggestions", [JSON, bearer(self.token)],
                          json.dumps({"topic": line, "language": language, "progress": line}).encode()) for language in ("en",
                                                                                                                         line)]
        asked += [request("GET", "/nothing", [(name, f"ru{once}\tInjected: yes"), from_elsewhere()])
                  for name in ("Accept-Language", "Accept", "X-Request-Id", "Origin", "X-Forwarded-Host", "Authorization",
                               "Cookie")]
        for data in asked:
            with Connection(self.service.address) as connection:
                connection.send(data)
                answer = connection.read_answer()
            self.assertEqual(set(), {name for name, _ in answer.headers} - SENT_BY_THE_SERVICE, data)
            for name, value in answer.headers:
                self.assertNotIn("njected", value, (name, data))

    def test_no_trick_with_a_path_reaches_a_route(self):
        self.assertEqual(200, self.ask("GET", ACCOUNT, [bearer(self.token)]).status)
        for path in ("/api/%61ccount", "/api/./account", "/api//account", "//api/account", "/x/../api/account",
                     "/api/x/../account",
                     "/api/%2e/account", "/x/%2e%2e/api/account", "/api%2faccount", "/api%2Faccount", "/api%5caccount",
                     "\\api\\account",
                     "/api\\account", "/api/account/", "/api/account/.", "/api/account;", "/api/account;x=y", "/api;x/account",
                     "/API/ACCOUNT", "/Api/Account", "/api/account%00", "/api/account%20", "/api/account%3f", "/api/account%23",
                     "/api/account.json", "/api/account%2f", "/api/account%0a", "/api/acc%c3%b6unt", "/%2fapi/account",
                     "http://quorvel.example/api/account", "https://quorvel.example/api/account", "quorvel.example/api/account",
                     "api/account", "*", "/api/account#", "/api/accoun%74", "/%", "/%zz", "/api/account%", "?", "/?/api/account"):
            with self.subTest(path=path):
                self.assertIn(self.ask("GET", path, [bearer(self.token)]).status, (400, 404))

    def test_no_pair_of_readings_hides_a_second_request(self):
        tried = {}
        for name, head, body in smuggling():
            email = address_of("smuggled")
            hidden = request("POST", START, [JSON, from_elsewhere()], json.dumps({"email": email}).encode())
            with Connection(self.service.address) as connection:
                connection.send(b"POST " + VERIFY.encode() + b" HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\n"
                                + head.replace(b"LENGTH", str(len(hidden) + len(body)).encode()) + b"\r\n\r\n" + body + hidden)
                tried[email] = name
                with self.subTest(name):
                    self.assertIn(connection.read_answer().status, (400, 413, 415, 501))
                    self.assertTrue(connection.is_closed(), "the connection goes on")
        sent = [name for email, name in tried.items() if email in self.service.log()]
        self.assertEqual([], sent, "a hidden request was carried out")

    def test_a_second_request_that_is_no_secret_is_carried_out(self):
        email = address_of("second")
        with Connection(self.service.address) as connection:
            connection.send(request("POST", VERIFY, [JSON, from_elsewhere()], b"{}")
                            + request("POST", START, [JSON, from_elsewhere()], json.dumps({"email": email}).encode()))
            self.assertEqual([400, 200], [connection.read_answer().status for _ in range(2)])
        self.assertIn(email, self.service.log())

    def test_a_request_within_a_body_is_a_body(self):
        email = address_of("body")
        hidden = request("POST", START, [JSON], json.dumps({"email": email}).encode())
        for method, path in (("GET", "/healthz"), ("POST", VERIFY), ("GET", ACCOUNT), ("POST", "/nothing")):
            with Connection(self.service.address) as connection:
                connection.send(request(method, path, [JSON], hidden) + request("GET", "/healthz", [("Connection", "close")]))
                connection.read_answer()
                self.assertEqual(200, connection.read_answer().status)
                self.assertTrue(connection.is_closed())
        self.assertNotIn(email, self.service.log())

    def test_json_that_is_none_or_is_meant_to_hurt(self):
        deep = b'{"email": ' + b'{"a": ' * 8000 + b"1" + b"}" * 8000 + b"}"
        bodies = {
            "deep lists": b'{"email": ' + b"[" * 30000 + b"]" * 30000 + b"}", "deep objects": deep, "open lists": b"[" * 60000,
            "open objects": b'{"a":' * 12000, "a number of 60,000 digits": b'{"email": ' + b"9" * 60000 + b"}",
            "1e999": b'{"email": 1e999}', "NaN": b'{"email": NaN}', "infinity": b'{"email": -Infinity}',
            "a mark": b"\xef\xbb\xbf{}",
            "half a pair": b'{"email": "\\udc00@b.c"}', "not UTF-8": b'{"email": "a\xc3(@b.c"}',
            "beyond Unicode": b'{"email": "\xf4\x90\x80\x80"}',
            "a pair in UTF-8": b'{"email": "\xed\xa0\x80"}', "a control character": b'{"email": "a\x01@b.c"}',
            "NUL": b'{"email": "a@b.c\x00"}',
            "NUL in the name": b'{"email\\u0000": "a@example.org"}', "comma": b'{"email": "a@example.org",}',
            "quotes": b"{'email': 'a@b.c'}",
            "list": b'[{"email": "a@example.org"}]', "of lists": b'{"email": ["a@example.org"]}', "true": b'{"email": true}',
            "null": b'{"email": null}',
            "object": b'{"email": {"$ne": ""}}', "two": b'{"email": "a@example.org"}{"email": "b@example.org"}',
            "other case": b'{"Email": "a@example.org"}',
        }
        for what, body in bodies.items():
            for path in (START, VERIFY):
                with self.subTest(what=what, path=path):
                    self.assertEqual(400, self.ask("POST", path, body=body).status)
            with self.subTest(what=what, path="suggestions"):
                self.assertEqual(400, self.ask("POST", "/api/ai/suggestions", [bearer(self.token)], body).status)

    def test_a_field_that_comes_twice_is_one(self):
        first, second = address_of("first"), address_of("second")
        answer = self.ask("POST", START, body=f'{{"email": "{first}", "email": "{second}"}}'.encode())
        self.assertIn(answer.status, (200, 400))
        self.assertLessEqual(sum(f"To: {email}\n" in self.service.log() for email in (first, second)), 1)

    def test_a_code_of_another_type_is_none(self):
        email = address_of("type")
        code = self.send_code(email)
        for sent in (int(code), [code], {"$ne": ""}, True, None, f"{code}\0", f"{code}x", f"0{code}",
                     "".join(chr(0xff10 + int(digit)) for digit in code)):
            self.assertIn(self.ask("POST", VERIFY, body={"email": email, "code": sent}).status, (400, 401), repr(sent))

    def test_more_than_is_taken_is_refused_before_it_has_come(self):
        post = f"POST {START} HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\n".encode()
        chunked = post + b"Transfer-Encoding: chunked\r\n\r\n"
        piece = b"4000\r\n" + b" " * 0x4000 + b"\r\n"
        sizes = {
            "a length": (413, post + b"Content-Length: 10000000000\r\n\r\n{"),
            "a length beyond all numbers": (400, post + b"Content-Length: 99999999999999999999999999\r\n\r\n{"),
            "chunks": (413, chunked + piece * 5), "one chunk": (413, chunked + b"40000000\r\n{"),
            "the extension of a chunk": (400, chunked + b"1;" + b"a" * 70000),
            "trailers": (None, chunked + b"0\r\n" + b"".join(b"A%d: b\r\n" % number for number in range(9000))),
            "a line": (414, b"GET /" + b"a" * 20000), "a header": (431, b"GET / HTTP/1.1\r\nHost: a\r\nA: " + b"b" * 20000),
            "headers": (431, b"GET / HTTP/1.1\r\nHost: a\r\n" + b"A: b\r\n" * 5000),
        }
        for what, (status, data) in sizes.items():
            with self.subTest(what), Connection(self.service.address) as connection:
                connection.send(data)
                answer = connection.read_answer()
                self.assertIn(answer.status, [status] if status else (400, 413, 431))
                self.assertTrue(connection.is_closed())


def smuggling():
    """Heads that two programs may read in two ways: (name, what stands after the first headers, what the body begins with).
    LENGTH is that of all that follows."""
    both = b"Content-Length: LENGTH"
    chunked = b"Transfer-Encoding: chunked"
    end = b"0\r\n\r\n"
    for name, head in {
        "length and chunks": both + b"\r\n" + chunked, "chunks and length": chunked + b"\r\n" + both,
        "a length in two": b"Content-Length: 0\r\n" + both, "the other length first": both + b"\r\nContent-Length: 0",
        "the same twice": both + b"\r\n" + both, "a list of lengths": b"Content-Length: LENGTH, LENGTH",
        "a list with 0": b"Content-Length: 0, LENGTH",
        "a sign": b"Content-Length: +0", "hexadecimal": b"Content-Length: 0x0", "a space within": b"Content-Length: 0 0",
        "empty": b"Content-Length:",
        "space before the colon": b"Content-Length : 0", "a tab before it": b"Transfer-Encoding\t: chunked",
        "folded": b"Transfer-Encoding:\r\n chunked", "another coding": b"Transfer-Encoding: chunked, identity",
        "identity": b"Transfer-Encoding: identity",
        "a coding before": b"Transfer-Encoding: gzip, chunked", "with x": b"Transfer-Encoding: xchunked",
        "quoted": b'Transfer-Encoding: "chunked"',
        "a control character": b"Transfer-Encoding: \x0bchunked", "NUL": b"Transfer-Encoding: chunked\x00",
        "a semicolon": b"Transfer-Encoding: chunked;a=b",
        "chunks of chunks": chunked + b"\r\n" + chunked, "two codings": chunked + b"\r\nTransfer-Encoding: identity",
        "bare LF": b"X: y\n" + chunked,
        "bare CR": b"X: y\r" + chunked,
        "LF ends the head": b"Content-Length: 0\n\n",
    }.items():
        yield name, head, end
    for name, body in {
        "chunk: bare LF": b"1\n{\n0\n\n", "chunk: 0x": b"0x0\r\n\r\n", "chunk: a sign": b"-0\r\n\r\n",
        "chunk: plus": b"+0\r\n\r\n",
        "chunk: a space before": b" 0\r\n\r\n", "chunk: LF after": b"0\n\r\n", "chunk: LF in the extension": b"0;a\nb\r\n\r\n",
        "chunk: too long for its size": b"1\r\n{}\r\n0\r\n\r\n", "chunk: too short for its size": b"3\r\n{\r\n0\r\n\r\n",
        "chunk: empty": b"\r\n0\r\n\r\n",
        "chunk: beyond all numbers": b"10000000000000000\r\n\r\n",
    }.items():
        yield name, chunked, body


class SlowRequests(Attacks):
    @classmethod
    def setUpClass(cls):
        cls.serve()

    def drip(self, begin, name, told):
        """One byte each quarter of a second, until something comes back; tells what it was and when."""
        with Connection(self.service.address, 60) as connection:
            connection.send(begin)
            began = time.monotonic()
            while not connection.says_something_within(0.25) and time.monotonic() - began < 60:
                connection.send(b"a")
            took = time.monotonic() - began
            try:
                told[name] = (took, connection.read_answer().status)
            except Closed:
                told[name] = (took, None)

    def test_slow_ones_are_cut_off_and_hold_nobody_up(self):
        head = b"GET /healthz HTTP/1.1\r\nHost: a\r\nA: "
        post = f"POST {START} HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\n".encode()
        slow = {"head": (10, head), "line": (10, b"G"), "body": (15, post + b'Content-Length: 60000\r\n\r\n{"email": "'),
                "chunks": (15, post + b'Transfer-Encoding: chunked\r\n\r\nf000\r\n{"email": "')}
        told = {}
        threads = [threading.Thread(target=self.drip, args=(begin, name, told)) for name, (_, begin) in slow.items()]
        for thread in threads:
            thread.start()
        held = [self.enterContext(Connection(self.service.address)) for _ in range(300)]
        for connection in held:
            connection.send(head)
        for _ in range(3):
            self.assertEqual(200, self.ask("GET", ACCOUNT, [bearer(self.service.sign_in())]).status)
        for thread in threads:
            thread.join()
        self.assertEqual(set(slow), set(told))
        for name, (limit, _) in slow.items():
            took, status = told[name]
            self.assertEqual(408, status, name)
            self.assertGreater(took, limit * 0.9, name)
            self.assertLess(took, limit + 10, name)  # only a busy machine makes it late
        for connection in held:
            self.assertEqual(408, connection.read_answer().status)


if __name__ == "__main__":
    unittest.main()
