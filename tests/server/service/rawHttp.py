"""HTTP by its bytes: what is sent is sent as it is, and what comes back is held to the grammar."""

import re
import select
import socket
import ssl
import time
from dataclasses import dataclass, field

SECONDS_TO_ANSWER = 20  # only what is broken is waited for that long


class Malformed(Exception):
    """What came back is no answer of HTTP/1.1."""


class Closed(Exception):
    """The connection ended before an answer began."""


@dataclass
class Answer:
    status: int
    headers: list = field(default_factory=list)  # (name in lower case, value)
    body: bytes = b""

    def header(self, name):
        """The value of the only header of that name; None where there is none."""
        values = [value for key, value in self.headers if key == name.lower()]
        if len(values) > 1:
            raise Malformed(f"{name} came {len(values)} times")
        return values[0] if values else None

    @property
    def text(self):
        return self.body.decode("utf-8")


class Connection:
    """`with Connection(address) as connection:`; `address` is (host, port). `authorities` is a PEM file, for TLS; `source`
    is the host to ask from, where it matters.

    An answer must be there whole within `seconds`, else TimeoutError.
    """

    def __init__(self, address, seconds=SECONDS_TO_ANSWER, authorities=None, source=None):
        self._socket = socket.create_connection(address, timeout=seconds, source_address=(source, 0) if source else None)
        if authorities:
            context = ssl.create_default_context(cafile=authorities)
            self._socket = context.wrap_socket(self._socket, server_hostname=address[0])
        self._seconds = seconds
        self._read = b""

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        self.close()

    def close(self):
        self._socket.close()

    def send(self, data):
        self._socket.sendall(data)

    def send_slowly(self, data, seconds_between, bytes_at_once=1):
        """Sends it in pieces. Returns how many bytes the other side took before it hung up."""
        for start in range(0, len(data), bytes_at_once):
            try:
                self._socket.sendall(data[start:start + bytes_at_once])
            except (BrokenPipeError, ConnectionResetError):
                return start
            time.sleep(seconds_between)
        return len(data)

    def says_something_within(self, seconds):
        """Whether the other side has sent something or hung up by then. Not for TLS."""
        return bool(self._read or select.select([self._socket], [], [], seconds)[0])

    def end_sending(self):
        self._socket.shutdown(socket.SHUT_WR)

    def read_answer(self, method="GET"):
        """The next answer. To HEAD it has no body, whatever its headers say."""
        self._begin()
        answer = self._read_head()
        while answer.status < 200:
            answer = self._read_head()
        length = answer.header("Content-Length")
        if answer.header("Transfer-Encoding"):
            raise Malformed("the answer is not of a known length")
        if method == "HEAD" or answer.status in (204, 304):
            return answer
        if length is None or not re.fullmatch(r"[0-9]+", length):
            raise Malformed(f"Content-Length is {length!r}")
        while len(self._read) < int(length):
            self._receive()
        answer.body, self._read = self._read[:int(length)], self._read[int(length):]
        return answer

    def is_closed(self):
        """Whether the other side closes before it says anything more; waits for that."""
        if self._read:
            return False
        self._begin()
        try:
            self._read = self._socket.recv(65536)
        except ConnectionResetError:
            return True
        return not self._read

    def _read_head(self):
        while b"\r\n\r\n" not in self._read:
            self._receive()
        head, self._read = self._read.split(b"\r\n\r\n", 1)
        lines = head.decode("latin-1").split("\r\n")
        status = re.fullmatch(r"HTTP/1\.[01] ([1-5][0-9][0-9]) [^\r\n]*", lines[0])
        if not status:
            raise Malformed(f"the answer begins with {lines[0]!r}")
        answer = Answer(int(status[1]))
        for line in lines[1:]:
            parts = re.fullmatch(r"([!#$%&'*+.^_`|~0-9A-Za-z-]+):[ \t]*([\t\x20-\x7e\x80-\xff]*?)[ \t]*", line)
            if not parts:
                raise Malformed(f"{line!r} is no header")
            answer.headers.append((parts[1].lower(), parts[2]))
        return answer

    def _begin(self):
        self._ends = time.monotonic() + self._seconds
        self._socket.settimeout(self._seconds)

    def _receive(self):
        left = self._ends - time.monotonic()
        if left <= 0:
            raise TimeoutError("no whole answer")
        self._socket.settimeout(left)
        try:
            received = self._socket.recv(65536)
        except ConnectionResetError:
            received = b""
        if not received:
            if self._read:
                raise Malformed(f"the answer ends within {self._read[:200]!r}")
            raise Closed("the other side closed without an answer")
        self._read += received


def request(method, path, headers=(), body=None, host="quorvel.example"):
    """The bytes of a request. `headers` are (name, value); those that a body needs come by themselves."""
    lines = [f"{method} {path} HTTP/1.1", f"Host: {host}", *(f"{name}: {value}" for name, value in headers)]
    if body is not None:
        lines.append(f"Content-Length: {len(body)}")
    return "\r\n".join(lines).encode("latin-1") + b"\r\n\r\n" + (body or b"")


def ask(address, method, path, headers=(), body=None, seconds=SECONDS_TO_ANSWER):
    """One request on a connection of its own."""
    with Connection(address, seconds) as connection:
        connection.send(request(method, path, headers, body))
        return connection.read_answer(method)
