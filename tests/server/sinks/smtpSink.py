"""A mail server on loopback that keeps what it is given, and fails where it is told to.

Its standard output has one JSON object a line:

    {"port": 40123, "certificate": "FOLDER/certificate.pem"}      first; the certificate only where it has TLS
    {"command": "MAIL"}                                           each command, without what follows it (--commands)
    {"sender": "...", "recipients": ["..."], "message": "...", "tls": true, "user": "..." or null}

It ends where its standard input ends, so it never outlives whoever started it. Run it by the Python that has aiosmtpd.
"""

import argparse
import asyncio
import json
import logging
import os
import ssl
import subprocess
import sys
import threading
import warnings
from pathlib import Path

from aiosmtpd.smtp import SMTP, AuthResult, LoginPassword

STAGES = ["greeting", "ehlo", "auth", "mail", "rcpt", "data", "end", "quit"]


def say(**words):
    print(json.dumps(words), flush=True)


def make_certificate(folder, host):
    """A new certificate for that host, signed by its own key, in two files of the folder."""
    certificate, key = Path(folder, "certificate.pem"), Path(folder, "key.pem")
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
         "-subj", f"/CN={host}", "-addext", f"subjectAltName=DNS:{host}", "-keyout", key, "-out", certificate],
        check=True, capture_output=True)
    return certificate, key


class Faults:
    """What goes wrong at which stage: a reply in place of the right one, or none at all."""

    def __init__(self, replies, hangs):
        self.replies = dict(text.split("=", 1) for text in replies)
        self.hangs = set(hangs)
        assert set(self.replies) | self.hangs <= set(STAGES)

    async def at(self, stage):
        """The reply that is told at this stage, None where all is well."""
        if stage in self.hangs:
            await asyncio.Event().wait()
        return self.replies.get(stage)


class Handler:
    def __init__(self, faults):
        self.faults = faults

    async def handle_MAIL(self, server, session, envelope, address, options):
        if reply := await self.faults.at("mail"):
            return reply
        envelope.mail_from = address
        return "250 OK"

    async def handle_RCPT(self, server, session, envelope, address, options):
        if reply := await self.faults.at("rcpt"):
            return reply
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if reply := await self.faults.at("end"):
            return reply
        user = session.auth_data.login.decode() if session.authenticated else None
        say(sender=envelope.mail_from, recipients=envelope.rcpt_tos, tls=server.is_secret(), user=user,
            message=envelope.content.decode("utf-8", "surrogateescape"))
        return "250 OK"


class Server(SMTP):
    """aiosmtpd's server, which has no hooks for the greeting and for single commands."""

    def __init__(self, faults, tells_commands, **options):
        super().__init__(Handler(faults), hostname="sink.example", **options)
        self.faults = faults
        self.tells_commands = tells_commands
        self.is_greeted = False

    def is_secret(self):
        return self.transport.get_extra_info("ssl_object") is not None

    async def push(self, status):
        if not self.is_greeted:
            self.is_greeted = True
            status = await self.faults.at("greeting") or status
        await super().push(status)

    async def smtp_EHLO(self, hostname):
        await self.unless_faulty("EHLO", "ehlo", super().smtp_EHLO, hostname)

    async def smtp_HELO(self, hostname):
        await self.unless_faulty("HELO", "ehlo", super().smtp_HELO, hostname)

    async def smtp_STARTTLS(self, arg):
        await self.unless_faulty("STARTTLS", None, super().smtp_STARTTLS, arg)

    async def smtp_AUTH(self, arg):
        await self.unless_faulty("AUTH", "auth", super().smtp_AUTH, arg)

    async def smtp_MAIL(self, arg):
        await self.unless_faulty("MAIL", None, super().smtp_MAIL, arg)

    async def smtp_RCPT(self, arg):
        await self.unless_faulty("RCPT", None, super().smtp_RCPT, arg)

    async def smtp_DATA(self, arg):
        await self.unless_faulty("DATA", "data", super().smtp_DATA, arg)

    async def smtp_QUIT(self, arg):
        await self.unless_faulty("QUIT", "quit", super().smtp_QUIT, arg)

    async def unless_faulty(self, command, stage, answer, arg):
        if self.tells_commands:
            say(command=command)
        if stage and (reply := await self.faults.at(stage)):
            await self.push(reply)
        else:
            await answer(arg)


def server_options(arguments, context):
    def authenticate(server, session, envelope, mechanism, data):
        right = isinstance(data, LoginPassword) and (data.login, data.password) == (
            arguments.user.encode(), arguments.password.encode())
        return AuthResult(success=right, auth_data=data, handled=False)

    options = {}
    if arguments.security == "starttls":
        options |= {"tls_context": context, "require_starttls": True}
    if arguments.user:
        # aiosmtpd takes for TLS only what began with STARTTLS.
        options |= {"authenticator": authenticate, "auth_required": True,
                    "auth_require_tls": arguments.security == "starttls"}
    return options


async def serve(arguments):
    context, told = None, {}
    if arguments.security != "none":
        certificate, key = make_certificate(arguments.folder, arguments.host)
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(certificate, key)
        told["certificate"] = str(certificate)
    faults = Faults(arguments.fault, arguments.hang)
    options = server_options(arguments, context)
    server = await asyncio.get_running_loop().create_server(
        lambda: Server(faults, arguments.commands, **options), "127.0.0.1", 0,
        ssl=context if arguments.security == "tls" else None)
    say(port=server.sockets[0].getsockname()[1], **told)
    ended = asyncio.Event()
    loop = asyncio.get_running_loop()
    threading.Thread(target=lambda: (sys.stdin.read(), loop.call_soon_threadsafe(ended.set)), daemon=True).start()
    await ended.wait()
    os._exit(0)  # what hangs is not waited for


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--security", choices=["none", "starttls", "tls"], default="none")
    parser.add_argument("--folder", help="where the certificate is made")
    parser.add_argument("--host", default="localhost", help="whom the certificate is for")
    parser.add_argument("--user", default="")
    parser.add_argument("--password", default="")
    parser.add_argument("--fault", action="append", default=[], metavar="STAGE=REPLY", help=f"one of {STAGES}")
    parser.add_argument("--hang", action="append", default=[], metavar="STAGE")
    parser.add_argument("--commands", action="store_true", help="tells each command as it comes")
    logging.disable()  # what clients do wrong here is meant
    warnings.simplefilter("ignore")
    asyncio.run(serve(parser.parse_args()))


if __name__ == "__main__":
    main()
