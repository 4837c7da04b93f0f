#!/usr/bin/env python3
"""What the service holds in memory while 2,000 students wait for the coach, and what a sign-in takes meanwhile."""

import asyncio
import json
import re
import statistics
import sys
import time
from pathlib import Path

import load  # makes the modules beside it known
from figures import figure, write_figures
from coachStub import KEY, MODEL, CoachStub
from service import Service

CALLS = 2_000
MOST_MEMORY = 64  # megabytes
LOOKS = 40  # at the latency of another path


def resident(process):
    """The most that it has held so far, in megabytes."""
    status = Path(f"/proc/{process}/status").read_text(encoding="ascii")
    return int(re.search(r"VmHWM:\s+([0-9]+) kB", status)[1]) / 1000


async def ask_coach(port, token):
    body = json.dumps({"topic": "wait", "language": "en", "progress": "Level 3"}).encode()
    reader, writer = await asyncio.open_connection("127.0.0.1", port)
    writer.write(b"POST /api/ai/suggestions HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Type: application/json\r\n"
                 b"Authorization: Bearer %b\r\nContent-Length: %d\r\n\r\n%b" % (token.encode(), len(body), body))
    answer = await reader.read()
    writer.close()
    return int(answer.split(b" ", 2)[1])


async def account_latency(port, token):
    """Seconds that the same other request takes, again and again."""
    taken = []
    for _ in range(LOOKS):
        began = time.perf_counter()
        reader, writer = await asyncio.open_connection("127.0.0.1", port)
        writer.write(b"GET /api/account HTTP/1.1\r\nHost: x\r\nConnection: close\r\nAuthorization: Bearer %b\r\n\r\n" % token.encode())
        answer = await reader.read()
        writer.close()
        taken.append(time.perf_counter() - began)
        if not answer.startswith(b"HTTP/1.1 200 "):
            raise RuntimeError(f"the account was not told: {answer!r}")
    return statistics.median(taken)


async def wait_together(port, process, stub, tokens):
    """(latency before, latency meanwhile, memory before, memory at the most)"""
    before, memory_before = await account_latency(port, tokens[0]), resident(process)
    calls = [asyncio.create_task(ask_coach(port, token)) for token in tokens]
    while stub.now_open < len(tokens):
        if any(call.done() for call in calls):
            raise RuntimeError(f"a call ended too early: {[call.result() for call in calls if call.done()][:3]}")
        await asyncio.sleep(0.05)
    meanwhile = await account_latency(port, tokens[0])
    stub.release()
    statuses = await asyncio.gather(*calls)
    if set(statuses) != {200}:
        raise RuntimeError(f"not all were answered: {sorted(set(statuses))}")
    return before, meanwhile, memory_before, resident(process)


def main(output):
    tokens = load.new_sessions(CALLS)
    with CoachStub() as stub:
        stub.plan("wait", "hold")
        with Service(LOG_LEVEL="warning", COACH_URL=stub.url, COACH_KEY=KEY, COACH_MODEL=MODEL) as service:
            load.store_sessions(service.database_url, tokens)
            process = service.instances[0].process.pid
            before, meanwhile, memory_before, memory = asyncio.run(
                wait_together(service.address[1], process, stub, tokens))
    write_figures(output, [
        figure(f"memory with {CALLS} coach calls under way", memory / MOST_MEMORY, "times", f"{MOST_MEMORY} MB", 1.0),
        figure("the same", memory, "MB", "nothing"),
        figure("memory without them", memory_before, "MB", "nothing"),
        figure("another request meanwhile", meanwhile / before, "times", "the same request with no coach call under way"),
        figure("the same", meanwhile * 1e3, "ms", "nothing"),
    ])


if __name__ == "__main__":
    main(sys.argv[1])
