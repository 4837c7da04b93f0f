#!/usr/bin/env python3
"""PostgreSQL crashes and comes back, again and again, while two instances are asked: nothing that was acknowledged is lost."""

import json
import os
import re
import socket
import threading
import time
import unittest
from collections import Counter

from service import Service, ServiceFailure, bearer, new_client_address, wait_until

CONTROL = "QUORVEL_TEST_POSTGRESQL_CONTROL"
INSTANCES = 2
SIGN_INS, READERS = 12, 8  # clients at the same time
ROUNDS = 3
SECONDS_TO_RECOVER = 30  # for an instance, from when PostgreSQL answers again; what is broken never does
START, VERIFY, ACCOUNT = "/api/auth/email/start", "/api/auth/email/verify", "/api/account"


def order(what):
    """Tells the wrapper of the cluster to do something and waits for that."""
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(os.environ[CONTROL])
        connection.sendall(f"{what}\n".encode())
        answer = connection.makefile().readline()
    if answer != "done\n":
        raise ServiceFailure(f"{what}: {answer}")


class Load:
    """Clients that sign in and that ask whose session they have, for as long as stop() is not called."""

    def __init__(self, service, own):
        self.service = service
        self.own = own  # a session of each reader that was there before
        self.sessions = []  # (token, address) of every 200
        self.codes = []  # (address, code, how often it was taken) of all that were tried
        self.answers = Counter()  # (path, status)
        self.wrong = []  # what must not be, one sentence each
        self._ends = threading.Event()
        clients = [(self._sign_in, number) for number in range(SIGN_INS)] + [(self._read, number) for number in range(READERS)]
        self._threads = [threading.Thread(target=self._go_on, args=client) for client in clients]
        for thread in self._threads:
            thread.start()

    def stop(self):
        self._ends.set()
        for thread in self._threads:
            thread.join()

    def seen(self, status):
        """How many sign-ins and how many readers have been answered so, the fewer of both."""
        sign_ins = self.answers[VERIFY, status] + (self.answers[START, status] if status != 200 else 0)
        return min(sign_ins, self.answers[ACCOUNT, status])

    def _go_on(self, work, number):
        for turn in range(10**6):
            if self._ends.is_set():
                return
            try:
                work(number, turn)
            except Exception as problem:
                self.wrong.append(f"a client was not answered as it should be: {problem!r}")

    def _sign_in(self, number, turn):
        instance = (number + turn) % INSTANCES
        email = f"load{number}x{turn}@example.org"
        if self._ask("POST", START, instance, {"email": email}).status != 200:
            return
        code = self.service.code_sent_to(email, instance)
        taken = 0
        for again in range(2):  # by the other instance, as one tries once more what has failed
            answer = self._ask("POST", VERIFY, (instance + again) % INSTANCES, {"email": email, "code": code})
            if answer.status == 200:
                taken += 1
                self.sessions.append((json.loads(answer.body)["session"], email))
                self.service.keep_secret(self.sessions[-1][0])
        self.codes.append((email, code, taken))

    def _read(self, number, turn):
        token, email = self.own[number]
        answer = self._ask("GET", ACCOUNT, (number + turn) % INSTANCES, token=token)
        if answer.status == 200 and json.loads(answer.body) != {"email": email}:
            self.wrong.append(f"{email} got {answer.text}")
        if answer.status == 401:
            self.wrong.append("a good session was refused for good")

    def _ask(self, method, path, instance, body=None, token=None):
        headers = [("X-Forwarded-For", new_client_address())] + ([bearer(token)] if token else [])
        answer = self.service.ask(method, path, headers, body, instance)
        self.answers[path, answer.status] += 1
        if answer.status not in (200, 401, 503):
            self.wrong.append(f"{path} was answered with {answer.status}: {answer.body[:200]}")
        if answer.status == 503 and not (answer.header("Content-Type") == "text/plain; charset=utf-8"
                                         and re.fullmatch(r"[A-Z][^\n<>{}]{9,160}\.", answer.text)):
            self.wrong.append(f"{path} was answered with no sentence: {answer.body[:200]}")
        return answer


class PostgresqlRestart(unittest.TestCase):
    def test_what_was_acknowledged_outlives_a_crash_of_the_database(self):
        with Service(INSTANCES) as service:
            own = [(service.sign_in(email), email) for email in (f"reader{number}@example.org" for number in range(READERS))]
            load = Load(service, own)
            try:
                for number in range(1, ROUNDS + 1):
                    self.wait_for(load, 200, number * 20)
                    order("stop")
                    self.wait_for(load, 503, number * 3)
                    order("start")
                    self.wait_for_both(service)
                self.wait_for(load, 200, (ROUNDS + 1) * 20)
            finally:
                load.stop()
            print(f"{len(load.sessions)} sessions; {dict(load.answers)}")
            self.assertEqual([], load.wrong)
            self.check_sessions(service, load.sessions + own)
            self.check_codes(service, load.codes)
            for instance in service.instances:
                self.assertIsNone(instance.process.poll(), "an instance was not the one that it was")

    def wait_for(self, load, status, count):
        """Until sign-ins and readers both were answered so that many times."""
        wait_until(lambda: load.seen(status) >= count or load.wrong, 60, f"{count} answers of {status}, of {load.answers}")
        self.assertEqual([], load.wrong)

    @staticmethod
    def wait_for_both(service):
        for instance in range(INSTANCES):
            wait_until(lambda place=instance: service.ask("GET", "/readyz", instance=place).status == 200,
                       SECONDS_TO_RECOVER, f"instance {instance} is ready again")

    def check_sessions(self, service, sessions):
        self.assertGreater(len(sessions), ROUNDS * 20)
        for place, (token, email) in enumerate(sessions):
            answer = service.ask("GET", ACCOUNT, [bearer(token)], instance=place % INSTANCES)
            self.assertEqual(200, answer.status, f"a session that was acknowledged is lost, {place} of {len(sessions)}")
            self.assertEqual({"email": email}, json.loads(answer.body))

    def check_codes(self, service, codes):
        self.assertEqual([], [email for email, _, taken in codes if taken > 1], "codes that counted twice")
        for place, (email, code, taken) in enumerate(codes):
            if taken:
                answer = service.ask("POST", VERIFY, [("X-Forwarded-For", new_client_address())], {"email": email, "code": code},
                                     place % INSTANCES)
                self.assertEqual(401, answer.status, "a code counted once more after the crash")


if __name__ == "__main__":
    unittest.main()
