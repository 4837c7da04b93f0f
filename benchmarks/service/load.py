"""What the benchmarks of the service share: many sessions, nginx beside it, and a load."""

import base64
import contextlib
import hashlib
import json
import re
import secrets
import shutil
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent), *(str(HERE.parents[1] / "tests/server" / name) for name in ("service", "postgresql"))]

SERVER_CORE, LOAD_CORE = "0", "1"
LINE = re.compile(r"99%\s+([0-9.]+)(us|ms|s)")
RATE = re.compile(r"Requests/sec:\s+([0-9.]+)")
FAILED = re.compile(r"Non-2xx or 3xx responses: [0-9]+|Socket errors: .*")
SECONDS = {"us": 1e-6, "ms": 1e-3, "s": 1.0}


def on_core(core, command):
    return ["taskset", "--cpu-list", core, *command]


def new_sessions(count):
    """As many tokens."""
    return [secrets.token_urlsafe(32) for _ in range(count)]


def _rows(tokens, now):
    for number, token in enumerate(tokens, 1):
        digest = base64.urlsafe_b64encode(hashlib.sha256(token.encode()).digest()).decode().rstrip("=")
        yield number, f"student{number}@example.org", digest, now, now + 100 * 86400


def store_sessions(url, tokens):
    """Puts sessions of as many accounts into a database that the service has already made."""
    now = int(time.time())
    if url.startswith("sqlite:"):
        with contextlib.closing(sqlite3.connect(url.removeprefix("sqlite:"))) as database, database:
            for number, email, digest, begun, ends in _rows(tokens, now):
                database.execute("INSERT INTO accounts (id, email, created_at) VALUES (?, ?, ?)", (number, email, begun))
                database.execute("INSERT INTO sessions VALUES (?, ?, 'email', ?, ?)", (digest, number, begun, ends))
        return
    rows = list(_rows(tokens, now))
    lines = ["COPY accounts (id, email, created_at) FROM STDIN;"]
    lines += [f"{number}\t{email}\t{begun}" for number, email, _, begun, _ in rows] + ["\\."]
    lines += ["COPY sessions (token_hash, account_id, provider, created_at, expires_at) FROM STDIN;"]
    lines += [f"{digest}\t{number}\temail\t{begun}\t{ends}" for number, _, digest, begun, ends in rows] + ["\\.", "ANALYZE;"]
    subprocess.run(["psql", "--no-psqlrc", "--quiet", "--set=ON_ERROR_STOP=1", "--dbname", url], input="\n".join(lines) + "\n",
                   text=True, check=True, stdout=subprocess.DEVNULL)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


@contextlib.contextmanager
def nginx(answer):
    """One worker on the server's core that gives everybody the same JSON. Yields its address."""
    program = shutil.which("nginx") or "/usr/sbin/nginx"
    port = free_port()
    with tempfile.TemporaryDirectory(prefix="quorvel-nginx-") as folder:
        configuration = Path(folder) / "nginx.conf"
        configuration.write_text(f"""
            daemon off; worker_processes 1; pid {folder}/pid; error_log {folder}/error.log;
            events {{ worker_connections 1024; }}
            http {{
                access_log off; keepalive_requests 1000000000; default_type application/json;
                client_body_temp_path {folder}/body; proxy_temp_path {folder}/proxy; fastcgi_temp_path {folder}/fastcgi;
                uwsgi_temp_path {folder}/uwsgi; scgi_temp_path {folder}/scgi;
                server {{ listen 127.0.0.1:{port}; location / {{ return 200 '{json.dumps(answer)}'; }} }}
            }}
        """, encoding="utf-8")
        process = subprocess.Popen(on_core(SERVER_CORE, [program, "-p", folder, "-e", f"{folder}/error.log", "-c", str(configuration)]))
        try:
            _wait_for("127.0.0.1", port, process)
            yield f"http://127.0.0.1:{port}"
        finally:
            process.terminate()
            process.wait()


def _wait_for(host, port, process):
    while True:
        if process.poll() is not None:
            raise RuntimeError(f"nginx ended with {process.returncode}")
        with contextlib.suppress(OSError), socket.create_connection((host, port), timeout=1):
            return
        time.sleep(0.05)


def load(address, path, tokens_file, connections, seconds):
    """Requests a second and the 99th percentile in seconds, from the load's own core. Fails where one was refused."""
    command = ["wrk", "--threads", "1", "--connections", str(connections), "--duration", f"{seconds}s", "--latency",
               "--script", str(HERE / "tokens.lua"), address, "--", str(tokens_file), path]
    said = subprocess.run(on_core(LOAD_CORE, command), check=True, capture_output=True, text=True).stdout
    rate, slow = RATE.search(said), LINE.search(said)
    if FAILED.search(said) or not rate or not slow:
        raise RuntimeError(f"the load did not go as it should:\n{said}")
    return float(rate[1]), float(slow[1]) * SECONDS[slow[2]]
