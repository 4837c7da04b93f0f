#!/usr/bin/env python3
"""Holds the tests' own endpoint and their own HTTP to what the tests take for granted."""

import json
import socket
import threading
import unittest

from coachStub import ANSWERS, KEY, MODEL, SCHEMA, SUGGESTION, CoachStub
from rawHttp import Closed, Connection, Malformed, ask, request


def good_request(topic="derivatives", **changes):
    """The bytes of a request that the endpoint has nothing against, but for the changes of its body."""
    body = {"model": MODEL, "temperature": 0, "max_tokens": 9,
            "messages": [{"role": "system", "content": "rules"},
                         {"role": "user", "content": json.dumps({"topic": topic, "progress": ""})}],
            "response_format": {"type": "json_schema",
                                "json_schema": {"name": "n", "strict": True, "schema": SCHEMA}}} | changes
    return request("POST", "/v1/chat/completions",
                   [("Authorization", f"Bearer {KEY}"), ("Content-Type", "application/json")], json.dumps(body).encode())


class Stub(unittest.TestCase):
    def setUp(self):
        self.stub = self.enterContext(CoachStub())
        self.address = ("127.0.0.1", self.stub.port)

    def connect(self, **options):
        return self.enterContext(Connection(self.address, **options))

    def answer_to(self, data):
        connection = self.connect()
        connection.send(data)
        return connection.read_answer()

    def test_answers_a_good_request_well(self):
        answer = self.answer_to(good_request())
        self.assertEqual(200, answer.status)
        content = json.loads(answer.body)["choices"][0]["message"]["content"]
        self.assertEqual(SUGGESTION, json.loads(content))
        self.assertEqual([], self.stub.problems)
        self.assertEqual(["derivatives"], [asked.topic for asked in self.stub.asked])

    def test_sees_what_is_wrong_with_a_request(self):
        for data in (good_request(user="17"), good_request(model="another"), good_request(response_format={}),
                     good_request(messages=[]), request("POST", "/v1/chat/completions", (), b"{"),
                     good_request().replace(b"Bearer ", b"Basic "), good_request().replace(b"Host:", b"X-Account: 17\r\nHost:")):
            del self.stub.problems[:]
            self.assertEqual(500, self.answer_to(data).status)
            self.assertNotEqual([], self.stub.problems, data)

    def test_answers_as_planned_and_then_as_at_last(self):
        self.stub.plan("limits", "busy for 1 s", "broken", "good")
        connection = self.connect()
        statuses = []
        for topic in ("limits", "limits", "other", "limits", "limits"):
            connection.send(good_request(topic))
            statuses.append(connection.read_answer().status)
        self.assertEqual([429, 500, 200, 200, 200], statuses)

    def test_every_planned_answer_is_http(self):
        for name, (status, headers, _body) in ANSWERS.items():
            self.stub.plan("any", name)
            answer = self.answer_to(good_request("any"))
            self.assertEqual(status, answer.status, name)
            for key, value in headers:
                self.assertEqual(value, answer.header(key))

    def test_hangs_drips_and_hangs_up(self):
        for name in ("hang", "drip"):
            self.stub.plan(name, name)
            connection = self.connect(seconds=1.5)
            connection.send(good_request(name))
            with self.assertRaises(TimeoutError, msg=name):
                connection.read_answer()
        for name, problem in (("disconnect", Closed), ("disconnect within", Malformed)):
            self.stub.plan(name, name)
            with self.assertRaises(problem, msg=name):
                self.answer_to(good_request(name))

    def test_holds_two_thousand_until_it_lets_go(self):
        self.stub.plan("held", "hold")
        connections = [self.connect() for _ in range(2000)]
        for connection in connections:
            connection.send(good_request("held"))
        while len(self.stub.asked) < len(connections):
            threading.Event().wait(0.02)
        self.assertEqual(2000, self.stub.now_open)
        self.stub.release()
        self.assertEqual({200}, {connection.read_answer().status for connection in connections})


class RawHttp(unittest.TestCase):
    """Against a server that says one thing, whatever it is asked, and hangs up."""

    def answer_of(self, said, method="GET"):
        with socket.create_server(("127.0.0.1", 0)) as server:
            def serve():
                peer, _address = server.accept()
                with peer:
                    peer.recv(65536)
                    peer.sendall(said)
            thread = threading.Thread(target=serve)
            thread.start()
            try:
                return ask(server.getsockname(), method, "/")
            finally:
                thread.join()

    def test_reads_an_answer(self):
        answer = self.answer_of(b"HTTP/1.1 429 Too Many\r\nRetry-After:  7 \r\nContent-Length: 2\r\n\r\nhi")
        self.assertEqual((429, "7", b"hi"), (answer.status, answer.header("retry-after"), answer.body))
        self.assertIsNone(answer.header("Allow"))

    def test_passes_what_is_only_said_meanwhile(self):
        answer = self.answer_of(b"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n")
        self.assertEqual(200, answer.status)

    def test_expects_no_body_after_a_question_for_the_head(self):
        self.assertEqual(b"", self.answer_of(b"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", "HEAD").body)

    def test_takes_nothing_else_for_an_answer(self):
        for said in (b"Hello\r\n\r\n", b"HTTP/1.1 200 OK\r\n\r\n", b"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nhi",
                     b"HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: 2\r\n\r\nhi",
                     b"HTTP/1.1 200 OK\r\nContent-Length : 2\r\n\r\nhi", b"HTTP/1.1 2000 OK\r\nContent-Length: 0\r\n\r\n",
                     b"HTTP/1.1 200 OK\r\nX: a\x00b\r\nContent-Length: 0\r\n\r\n", b"HTTP/1.1 200 O"):
            with self.assertRaises(Malformed, msg=said):
                self.answer_of(said)
        with self.assertRaises(Closed):
            self.answer_of(b"")


if __name__ == "__main__":
    unittest.main()
