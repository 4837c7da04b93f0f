"""The programs that the service works with, each one that tells what happens to it by a JSON object a line."""

import contextlib
import email
import email.policy
import json
import queue
import subprocess
import threading
from pathlib import Path

from service import CODE

TESTS = Path(__file__).resolve().parents[1]
SECONDS_TO_TELL = 60  # only what is broken is waited for that long
OPENID_PROVIDER = TESTS.parents[1] / "build/providers"  # scripts/providers.sh puts it there
CLIENT, SECRET = "our-client", "our:s3cret+"
USER, PASSWORD = "postman", "pass:w0rd+"


class NothingTold(Exception):
    """The program has not said what it should."""


class Helper:
    """`with Helper(command) as helper:` starts it; `told` is its first line. It ends where its standard input ends."""

    def __init__(self, *command):
        self._command = [str(word) for word in command]
        self._lines = queue.Queue()

    def __enter__(self):
        self._process = subprocess.Popen(self._command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                         encoding="utf-8")
        self._reader = threading.Thread(target=self._read)
        self._reader.start()
        try:
            self.told = self.line()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *problem):
        self._process.stdin.close()
        try:
            self._process.wait(10)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._reader.join()
        self._process.stdout.close()

    def line(self):
        """The next object that it tells."""
        with contextlib.suppress(queue.Empty):
            if (line := self._lines.get(timeout=SECONDS_TO_TELL)) is not None:
                return json.loads(line)
        raise NothingTold(f"nothing from {self._command}; it has ended with {self._process.poll()}")

    def _read(self):
        for line in self._process.stdout:
            self._lines.put(line)
        self._lines.put(None)


class MailServer(Helper):
    """Takes mail by STARTTLS from who knows the password, with a certificate made for this run."""

    def __init__(self, folder):
        super().__init__("/usr/bin/python3", "-B", TESTS / "sinks/smtpSink.py", "--security", "starttls", "--folder", folder,
                         "--user", USER, "--password", PASSWORD)

    def settings(self):
        """What the service must know to send by it."""
        return {"SMTP_HOST": "localhost", "SMTP_PORT": self.told["port"], "SMTP_SECURITY": "starttls",
                "SMTP_USER": USER, "SMTP_PASSWORD": PASSWORD, "SMTP_AUTHORITIES": self.told["certificate"],
                "SMTP_FROM": "Quorvel <no-reply@quorvel.example>"}

    def next_message(self, recipient):
        """The next mail, which must be to that address and have come by TLS and with the password."""
        mail = self.line()
        found = mail["recipients"], mail["tls"], mail["user"]
        if found != ([recipient], True, USER):
            raise NothingTold(f"the mail is for {found}")
        return email.message_from_string(mail["message"], policy=email.policy.default)


def code_of(message):
    return CODE.search(message.get_body(("plain",)).get_content())[0]


def google(public_url, address):
    """A real OpenID provider, where whoever comes has that address. Only where has_openid()."""
    return Helper("node", OPENID_PROVIDER / "openIdProvider.js", *_client(public_url, "google"), "--email", address)


def has_openid():
    return (OPENID_PROVIDER / "node_modules/oidc-provider").exists()


def google_settings(provider):
    return {"GOOGLE_CLIENT_ID": CLIENT, "GOOGLE_CLIENT_SECRET": SECRET, "GOOGLE_ISSUER": provider.told["issuer"]}


def yandex(public_url, address):
    """What asks for what Yandex asks for, where whoever comes has that address."""
    return Helper("/usr/bin/python3", "-B", TESTS / "providers/yandexProvider.py", *_client(public_url, "yandex"),
                  "--email", address)


def yandex_settings(provider):
    url = provider.told["url"]
    return {"YANDEX_CLIENT_ID": CLIENT, "YANDEX_CLIENT_SECRET": SECRET, "YANDEX_AUTHORIZE_URL": f"{url}/authorize",
            "YANDEX_TOKEN_URL": f"{url}/token", "YANDEX_INFO_URL": f"{url}/info"}


def _client(public_url, name):
    return "--client", CLIENT, "--secret", SECRET, "--redirect", f"{public_url}/api/auth/{name}/callback"
