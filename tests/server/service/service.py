"""The real quorvel-server: one or more of them on one database, in a folder of their own, and what they wrote down."""

import itertools
import json
import os
import re
import secrets
import signal
import subprocess
import tempfile
import time
from pathlib import Path

from databases import Database
from rawHttp import ask

PROGRAM = "QUORVEL_SERVER_PROGRAM"  # the environment says where it stands
SECONDS_TO_START = 60  # only what is broken is waited for that long
SECONDS_TO_END = 30
LISTENS = re.compile(r"listening on http://127\.0\.0\.1:([0-9]+)")
CODE = re.compile(r"(?<![0-9])[0-9]{6}(?![0-9])")
_addresses = itertools.count(1)


class ServiceFailure(Exception):
    """The service did not start, did not end as it should, or wrote down what it should not."""


def wait_until(condition, seconds, what):
    """Returns the condition's first true answer; ServiceFailure names what was waited for in vain."""
    ends = time.monotonic() + seconds
    while True:
        if answer := condition():
            return answer
        if time.monotonic() > ends:
            raise ServiceFailure(f"{what}: not within {seconds} s")
        time.sleep(0.02)


class Instance:
    """One process. Its standard output and its errors are files, `output` and `errors`."""

    def __init__(self, folder, environment):
        number = next(_addresses)
        self.output = folder / f"output{number}.txt"
        self.errors = folder / f"errors{number}.txt"
        with self.output.open("wb") as output, self.errors.open("wb") as errors:
            self.process = subprocess.Popen([os.environ[PROGRAM]], cwd=folder, env=environment, stdout=output,
                                            stderr=errors, stdin=subprocess.DEVNULL, start_new_session=True)
        try:
            port = wait_until(self._port, SECONDS_TO_START, "the line that says where it listens")
        except ServiceFailure:
            self.kill()
            raise
        self.address = ("127.0.0.1", port)

    def log(self):
        """All that it has written so far."""
        return "".join(path.read_text(encoding="utf-8", errors="replace") for path in (self.output, self.errors))

    def stop(self):
        """Asks it to end and waits for that."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        try:
            status = self.process.wait(SECONDS_TO_END)
        except subprocess.TimeoutExpired:
            self.kill()
            raise ServiceFailure(f"it did not end within {SECONDS_TO_END} s:\n{self.log()}") from None
        if status != 0:
            raise ServiceFailure(f"it ended with {status}:\n{self.log()}")

    def kill(self):
        """Ends it at once, as a crash does."""
        self.process.kill()
        self.process.wait()

    def _port(self):
        found = LISTENS.search(self.log())
        if not found and self.process.poll() is not None:
            raise ServiceFailure(f"it ended with {self.process.returncode}:\n{self.log()}")
        return int(found[1]) if found else None


def environment_with(settings):
    """The process's own environment with these settings, each name without its QUORVEL_SERVER_."""
    own = {name: value for name, value in os.environ.items() if not name.startswith("QUORVEL_")}
    return own | {f"QUORVEL_SERVER_{name}": str(value) for name, value in settings.items()}


def run_program(arguments, environment, folder):
    """The program to its end. Returns what subprocess.run does, with its output and its errors as texts."""
    return subprocess.run([os.environ[PROGRAM], *arguments], env=environment, cwd=folder, stdin=subprocess.DEVNULL,
                          capture_output=True, encoding="utf-8", timeout=SECONDS_TO_START, check=False)


class Service:
    """`with Service(COACH_URL=..., ...) as service:` starts `instances` of them with these settings, each name without
    its QUORVEL_SERVER_. At the end they are stopped, must end well, and must not have written what keep_secret() named.

    Proxies on loopback are trusted, so that a test can speak from any address by X-Forwarded-For.
    """

    def __init__(self, instances=1, **settings):
        self._count = instances
        self._secrets = []
        self.key = secrets.token_hex(32)
        self.keep_secret(self.key)
        self._settings = {"LISTEN": "127.0.0.1:0", "PUBLIC_URL": "https://quorvel.example", "SECRET_KEY": self.key,
                          "TRUSTED_PROXIES": "127.0.0.1"} | settings
        self.instances = []

    def __enter__(self):
        self._temporary = tempfile.TemporaryDirectory(prefix="quorvel-service-")
        self.folder = Path(self._temporary.name)
        self._database = Database(self.folder)
        self._database.__enter__()
        try:
            for _ in range(self._count):
                self.start()
        except BaseException:
            self._clear()
            raise
        return self

    def __exit__(self, kind, *problem):
        try:
            for instance in self.instances:
                if instance.process.returncode is None:
                    instance.stop()
            if kind is None:
                self._look_for_secrets()
        finally:
            self._clear()

    def start(self):
        """One instance more."""
        instance = Instance(self.folder, self._environment())
        self.instances.append(instance)
        return instance

    def command(self, *arguments):
        """What an operator does beside the instances: the program with their settings and these arguments, to its end."""
        return run_program(arguments, self._environment(), self.folder)

    def _environment(self):
        return environment_with(self._settings | {"DATABASE": self._database.url})

    @property
    def address(self):
        """Where the first instance listens."""
        return self.instances[0].address

    @property
    def database_url(self):
        return self._database.url

    def change(self, statement):
        """Changes or reads the database by one statement. Returns its rows, as texts."""
        return self._database.change(statement)

    def log(self):
        return "".join(instance.log() for instance in self.instances)

    def code_sent_to(self, email, instance=0):
        """The newest code for that address on the console of an instance."""
        output = self.instances[instance].output
        found = re.findall(rf"^To: {re.escape(email)}\nSubject: ([0-9]{{6}})", output.read_text(encoding="utf-8"), re.MULTILINE)
        if not found:
            raise ServiceFailure(f"no code was sent to {email}")
        return found[-1]

    def keep_secret(self, text):
        """From now on the log must not hold it, at the end."""
        self._secrets.append(text)

    def ask(self, method, path, headers=(), body=None, instance=0, **options):
        """One request to an instance; `body` is bytes, or what becomes JSON."""
        if body is not None and not isinstance(body, bytes):
            body = json.dumps(body, ensure_ascii=False).encode()
            headers = [("Content-Type", "application/json"), *headers]
        return ask(self.instances[instance].address, method, path, headers, body, **options)

    def sign_in(self, email=None, instance=0):
        """Signs in by a code that stands on the console, from an address of its own. Returns the token."""
        email = email or f"student{next(_addresses)}@example.org"
        headers = [("X-Forwarded-For", new_client_address())]
        output = self.instances[instance].output
        before = output.stat().st_size
        answer = self.ask("POST", "/api/auth/email/start", headers, {"email": email}, instance)
        if answer.status != 200:
            raise ServiceFailure(f"no code was sent: {answer.status} {answer.text}")

        def code():
            with output.open("rb") as file:
                file.seek(before)
                new = file.read().decode("utf-8")
            return CODE.search(new.partition(email)[2])

        found = wait_until(code, SECONDS_TO_START, "the code on the console")
        answer = self.ask("POST", "/api/auth/email/verify", headers, {"email": email, "code": found[0]}, instance)
        if answer.status != 200:
            raise ServiceFailure(f"the code was not taken: {answer.status} {answer.text}")
        token = json.loads(answer.body)["session"]
        self.keep_secret(token)
        return token

    def _look_for_secrets(self):
        log = self.log()
        for secret in self._secrets:
            if re.search(f"(?<![0-9A-Za-z]){re.escape(secret)}(?![0-9A-Za-z])", log):
                raise ServiceFailure(f"the log holds {secret!r}:\n{log}")

    def _clear(self):
        for instance in self.instances:
            if instance.process.returncode is None:
                instance.kill()
        self._database.__exit__()
        self._temporary.cleanup()


def bearer(token):
    """The header that a token comes in."""
    return ("Authorization", f"Bearer {token}")


def new_client_address():
    """An address of the range for documentation, in a network that this process has not asked from yet."""
    return f"2001:db8:0:{next(_addresses):x}::1"
