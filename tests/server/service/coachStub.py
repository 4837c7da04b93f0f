"""A chat-completions endpoint on loopback that answers as it is told, well or badly, and looks at what it is asked."""

import asyncio
import json
import resource
import threading
from dataclasses import dataclass

KEY = "key-of-the-endpoint-4711"
MODEL = "model-of-the-tests"
SUGGESTION = {
    "message": "Begin with the rules, then solve problems.",
    "tasks": ["Read chapter 3", "Solve 5 problems"],
    "cards": [{"topic": "Derivatives", "prompt": "Derivative of x^2?", "answer": "2x|2*x"}],
}
TEXT = {"type": "string"}
CARD = {"type": "object", "properties": {"topic": TEXT, "prompt": TEXT, "answer": TEXT},
        "required": ["topic", "prompt", "answer"], "additionalProperties": False}
SCHEMA = {"type": "object",
          "properties": {"message": TEXT, "tasks": {"type": "array", "items": TEXT}, "cards": {"type": "array", "items": CARD}},
          "required": ["message", "tasks", "cards"], "additionalProperties": False}


@dataclass
class Asked:
    """One request to the endpoint: its method, its path, its headers by their names in lower case, and its body."""
    method: str
    path: str
    headers: dict
    body: bytes

    @property
    def topic(self):
        return json.loads(json.loads(self.body)["messages"][1]["content"])["topic"]


def problems_of(asked, key=KEY, model=MODEL):
    """What is wrong with a request, one sentence each."""
    problems = []

    def expect(name, found, wanted):
        if found != wanted:
            problems.append(f"{name} is {found!r}, not {wanted!r}")

    expect("the method", asked.method, "POST")
    expect("the path", asked.path, "/v1/chat/completions")
    expect("Authorization", asked.headers.get("authorization"), f"Bearer {key}")
    expect("Content-Type", asked.headers.get("content-type"), "application/json")
    # Nothing that tells who asks may come along, in whatever header.
    known = {"authorization", "content-type", "content-length", "host", "accept", "connection", "user-agent"}
    expect("the rest of the headers", sorted(set(asked.headers) - known), [])
    try:
        body = json.loads(asked.body)
        expect("the fields", sorted(body), ["max_tokens", "messages", "model", "response_format", "temperature"])
        expect("the model", body["model"], model)
        expect("the roles", [(sorted(message), message["role"]) for message in body["messages"]],
               [(["content", "role"], "system"), (["content", "role"], "user")])
        expect("the format", body["response_format"]["type"], "json_schema")
        expect("strict", body["response_format"]["json_schema"]["strict"], True)
        expect("the schema", body["response_format"]["json_schema"]["schema"], SCHEMA)
        expect("what the user says", sorted(json.loads(body["messages"][1]["content"])), ["progress", "topic"])
    except (ValueError, KeyError, TypeError, IndexError) as problem:
        problems.append(f"the body is not as asked for: {problem!r}")
    return problems


def completion(content, finish_reason="stop", refusal=None):
    """The body of an answer with that text."""
    message = {"role": "assistant", "content": content, "refusal": refusal}
    choice = {"index": 0, "message": message, "logprobs": None, "finish_reason": finish_reason}
    return json.dumps({"id": "chatcmpl-1", "object": "chat.completion", "model": MODEL, "choices": [choice],
                       "usage": {"prompt_tokens": 9, "completion_tokens": 9, "total_tokens": 18}})


def _oversized():
    tasks = [f"Task {number}" for number in range(50)] + ["long " * 100]
    card = {"topic": "t", "prompt": "p", "answer": "a"}
    return json.dumps({"message": "m" * 9000, "tasks": tasks, "cards": [card | {"answer": "a" * 301}] + [card] * 50})


# What an answer can be, by its name: a status, further headers and a body.
ANSWERS = {
    "good": (200, (), completion(json.dumps(SUGGESTION))),
    "fenced": (200, (), completion("```json\n" + json.dumps(SUGGESTION, indent=2) + "\n```\n")),
    "oversized": (200, (), completion(_oversized())),
    "invalid": (200, (), "<html>This is no JSON.</html>"),
    "prose": (200, (), completion("Sure! Here is your plan: read, then solve.")),
    "missing": (200, (), completion(json.dumps({key: SUGGESTION[key] for key in ("message", "tasks")}))),
    "wrong type": (200, (), completion(json.dumps(SUGGESTION | {"tasks": "Read chapter 3"}))),
    "empty": (200, (), completion(json.dumps({"message": "m", "tasks": [], "cards": []}))),
    "cut off": (200, (), completion(json.dumps(SUGGESTION)[:80], "length")),
    "filtered": (200, (), completion("", "content_filter")),
    "refused": (200, (), completion(None, refusal="I cannot help with that.")),
    "null": (200, (), completion(None)),
    "deep": (200, (), completion("[" * 50000 + "]" * 50000)),
    "huge": (200, (), completion(json.dumps(SUGGESTION | {"message": "m" * 3_000_000}))),
    "unauthorized": (401, (), '{"error": {"message": "Incorrect API key provided: ' + KEY + '"}}'),
    "forbidden": (403, (), "{}"),
    "no such model": (404, (), "{}"),
    "busy": (429, (), "{}"),
    "busy for 1 s": (429, (("Retry-After", "1"),), "{}"),
    "busy for an hour": (429, (("Retry-After", "3600"),), "{}"),
    "broken": (500, (), "{}"),
    "elsewhere": (307, (("Location", "/v1/elsewhere"),), ""),
}
# Other things that can happen: `hold` answers well, but only once release() is called.
EVENTS = ("hold", "hang", "drip", "disconnect", "disconnect within")


class CoachStub:
    """`with CoachStub() as stub:` serves at stub.url. Answers `good` unless told otherwise; `asked` holds every request
    and `problems` what was wrong with one."""

    def __init__(self):
        self.asked = []
        self.problems = []
        self.now_open = 0
        self.most_open = 0
        self._planned = {}
        self._loop = asyncio.new_event_loop()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._started = threading.Event()

    def __enter__(self):
        _allow_many_files()
        self._thread.start()
        self._started.wait()
        return self

    def __exit__(self, *problem):
        self._loop.call_soon_threadsafe(self._ended.set)
        self._thread.join()

    def plan(self, topic, *names):
        """Requests about that topic are answered so, one after the other, the last name again and again."""
        assert all(name in ANSWERS or name in EVENTS for name in names), names
        self._planned[topic] = list(names)

    def asked_about(self, topic):
        return [asked for asked in self.asked if asked.topic == topic]

    def release(self):
        """Lets go of all that is on hold."""
        self._loop.call_soon_threadsafe(self._released.set)

    def _run(self):
        asyncio.set_event_loop(self._loop)
        self._loop.run_until_complete(self._serve())
        self._loop.close()

    async def _serve(self):
        self._released = asyncio.Event()
        self._ended = asyncio.Event()
        server = await asyncio.start_server(self._meet, "127.0.0.1", 0, backlog=4096)
        self.port = server.sockets[0].getsockname()[1]
        self.url = f"http://127.0.0.1:{self.port}/v1/chat/completions"
        self._started.set()
        await self._ended.wait()
        server.close()
        for task in asyncio.all_tasks() - {asyncio.current_task()}:
            task.cancel()
        await asyncio.sleep(0)

    async def _meet(self, reader, writer):
        self.now_open += 1
        self.most_open = max(self.most_open, self.now_open)
        try:
            while asked := await _read_request(reader):
                self.asked.append(asked)
                found = problems_of(asked)
                self.problems += found
                await self._answer("broken" if found else self._next(asked.topic), writer)
        except (ConnectionError, asyncio.IncompleteReadError, asyncio.CancelledError):
            pass
        finally:
            self.now_open -= 1
            writer.close()

    def _next(self, topic):
        names = self._planned.get(topic, ["good"])
        return names.pop(0) if len(names) > 1 else names[0]

    async def _answer(self, name, writer):
        if name == "hold":
            await self._released.wait()
            name = "good"
        if name == "hang":
            await self._ended.wait()
        if name == "disconnect":
            raise ConnectionError
        if name == "drip":
            for byte in _bytes_of("good"):
                writer.write(bytes([byte]))
                await writer.drain()
                await asyncio.sleep(1)
        if name == "disconnect within":
            writer.write(_bytes_of("good")[:-40])
            await writer.drain()
            raise ConnectionError
        if name in ANSWERS:
            writer.write(_bytes_of(name))
            await writer.drain()


async def _read_request(reader):
    """The next request; None where the other side is done."""
    try:
        head = await reader.readuntil(b"\r\n\r\n")
    except asyncio.IncompleteReadError as problem:
        if problem.partial:
            raise
        return None
    first, *lines = head.decode("latin-1").removesuffix("\r\n\r\n").split("\r\n")
    method, path, _version = first.split(" ")
    headers = {name.lower(): value.strip() for name, value in (line.split(":", 1) for line in lines)}
    return Asked(method, path, headers, await reader.readexactly(int(headers.get("content-length", "0"))))


def _bytes_of(name):
    status, headers, body = ANSWERS[name]
    lines = [f"HTTP/1.1 {status} Whatever", "Content-Type: application/json", f"Content-Length: {len(body.encode())}",
             *(f"{key}: {value}" for key, value in headers)]
    return ("\r\n".join(lines) + "\r\n\r\n" + body).encode()


def _allow_many_files():
    _soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
