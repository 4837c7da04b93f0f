"""An HTTP server on loopback that does what the path of a request says, well-behaved or not.

Its standard output has one line for each thing that happens:

    port http N           where it listens
    port https N          the same with TLS, where a certificate was given
    request HEX           a whole request as it came: head and body, byte for byte
    gone                  a client has closed a connection that was left hanging

A line "release NAME" on its standard input lets the held answer of that name go. It ends where its standard input ends, so it
never outlives the test that started it. What is called HEX is bytes in hexadecimal digits, "-" for none.
"""

import collections
import gzip
import os
import socket
import ssl
import struct
import sys
import threading
import time

OBJECT = b'{"ok":true}'
MEGABYTE = 1024 * 1024

output = threading.Lock()
released = collections.defaultdict(threading.Event)


def say(*words):
    with output:
        print(*words, flush=True)


def unhex(text):
    return b"" if text == "-" else bytes.fromhex(text)


def read_request(connection):
    """One request, or None where the client closes before it is whole."""
    received = b""
    while b"\r\n\r\n" not in received:
        more = connection.recv(65536)
        if not more:
            return None
        received += more
    head = received[: received.index(b"\r\n\r\n") + 4]
    length = 0
    for line in head.split(b"\r\n"):
        name, _, value = line.partition(b":")
        if name.lower() == b"content-length":
            length = int(value)
    while len(received) < len(head) + length:
        more = connection.recv(65536)
        if not more:
            return None
        received += more
    return received


def head(status, *lines):
    return b"\r\n".join([b"HTTP/1.1 %d Said by the test" % status, *lines, b"", b""])


def whole(status, body, *lines):
    if status == 204:
        return head(status, *lines)
    return head(status, b"Content-Length: %d" % len(body), *lines) + body


def wait_until_gone(connection):
    while connection.recv(65536):
        pass
    say("gone")


# Each takes the connection and the further parts of the path.


def answer(connection, status, body, *lines):
    connection.sendall(whole(int(status), unhex(body), *(unhex(line) for line in lines)))


def repeated(connection, status, times, body):
    connection.sendall(whole(int(status), unhex(body) * int(times)))


def held(connection, name, body):
    released[name].wait()
    connection.sendall(whole(200, unhex(body)))


def circle(connection):
    connection.sendall(whole(307, b"round again", b"Location: /api/circle"))


def hang(connection):
    wait_until_gone(connection)


def stall(connection):
    connection.sendall(head(200, b"Content-Length: 100") + OBJECT)
    wait_until_gone(connection)


def drip(connection, milliseconds):
    connection.sendall(head(200, b"Content-Length: 20"))
    for byte in OBJECT + b" " * 9:
        time.sleep(int(milliseconds) / 1000)
        connection.sendall(bytes([byte]))


def cut(connection, where):
    connection.sendall(
        {
            "before-head": b"",
            "in-head": b"HTTP/1.1 200 OK\r\nContent-Le",
            "after-head": head(200, b"Content-Length: 100"),
            "in-body": head(200, b"Content-Length: 100") + OBJECT,
            "in-refusal": head(500, b"Content-Length: 100") + OBJECT,
            "in-chunk": head(200, b"Transfer-Encoding: chunked") + b"b\r\n" + OBJECT[:7],
            "after-chunk": head(200, b"Transfer-Encoding: chunked") + b"7\r\n" + OBJECT[:7] + b"\r\n",
        }[where]
    )


def reset(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


def garbage(connection):
    connection.sendall(b"220 mail.example ESMTP\r\n\r\n" + OBJECT)


def chunked(connection):
    connection.sendall(head(200, b"Transfer-Encoding: chunked") + b"4\r\n{\"ok\r\n7\r\n\":true}\r\n0\r\n\r\n")


def until_close(connection):
    connection.sendall(head(200) + OBJECT)


def after_continue(connection):
    connection.sendall(b"HTTP/1.1 100 Continue\r\n\r\n" + whole(200, OBJECT))


def packed(connection, status, body):
    connection.sendall(whole(int(status), gzip.compress(unhex(body)), b"Content-Encoding: gzip"))


def broken_pack(connection, status):
    pack = bytearray(gzip.compress(os.urandom(4000)))
    pack[10:] = bytes(byte ^ 0x55 for byte in pack[10:])
    connection.sendall(whole(int(status), bytes(pack), b"Content-Encoding: gzip"))


def cut_pack(connection):
    pack = gzip.compress(OBJECT + os.urandom(4000).hex().encode())
    connection.sendall(whole(200, pack[: len(pack) // 2], b"Content-Encoding: gzip"))


def bomb(connection, megabytes):
    body = b'{"spaces":"' + b" " * (int(megabytes) * MEGABYTE) + b'"}'
    connection.sendall(whole(200, gzip.compress(body), b"Content-Encoding: gzip"))


def huge(connection, size, framing):
    """An object of exactly so many bytes. "endless" goes on until the client has gone."""
    body = b'{"spaces":"' + b" " * (int(size) - 13) + b'"}'
    if framing == "length":
        connection.sendall(whole(200, body))
    elif framing == "chunked":
        connection.sendall(head(200, b"Transfer-Encoding: chunked"))
        for start in range(0, len(body), 65536):
            piece = body[start : start + 65536]
            connection.sendall(b"%x\r\n" % len(piece) + piece + b"\r\n")
        connection.sendall(b"0\r\n\r\n")
    elif framing == "close":
        connection.sendall(head(200) + body)
    elif framing == "endless":
        connection.sendall(head(200) + body)
        try:
            while True:
                connection.sendall(b" " * 65536)
        except OSError:
            say("gone")


DEEDS = {
    "answer": answer,
    "repeated": repeated,
    "held": held,
    "circle": circle,
    "hang": hang,
    "stall": stall,
    "drip": drip,
    "cut": cut,
    "reset": reset,
    "garbage": garbage,
    "chunked": chunked,
    "until-close": until_close,
    "after-continue": after_continue,
    "packed": packed,
    "broken-pack": broken_pack,
    "cut-pack": cut_pack,
    "bomb": bomb,
    "huge": huge,
}


def serve_one(connection, tls):
    try:
        if tls:
            connection = tls.wrap_socket(connection, server_side=True)
        request = read_request(connection)
        if request is None:
            return
        say("request", request.hex())
        target = request.split(b" ", 2)[1].decode().split("?")[0]
        deed, *words = target.removeprefix("/api").strip("/").split("/")
        DEEDS[deed](connection, *words)
    except OSError:  # the client has gone, or does not like the certificate
        pass
    finally:
        connection.close()


def listen(name, tls):
    listener = socket.create_server(("127.0.0.1", 0), backlog=200)
    say("port", name, listener.getsockname()[1])

    def accept():
        while True:
            connection, _ = listener.accept()
            threading.Thread(target=serve_one, args=(connection, tls), daemon=True).start()

    threading.Thread(target=accept, daemon=True).start()


def main(certificate_and_key):
    listen("http", None)
    if certificate_and_key:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate_and_key)
        listen("https", context)
    for line in sys.stdin:
        released[line.split()[1]].set()


main(sys.argv[1] if len(sys.argv) > 1 else None)
