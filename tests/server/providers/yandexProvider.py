"""What stands in for Yandex's sign-in on loopback: it signs in one person at once, and holds to PKCE, the secret and single use.

Its first line on standard output is {"url": "http://127.0.0.1:PORT"}; below it are /authorize, /token and /info. It ends where its
standard input ends, so it never outlives whoever started it.
"""

import argparse
import base64
import hashlib
import json
import secrets
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qsl, urlencode, urlsplit


def challenge_of(verifier):
    return base64.urlsafe_b64encode(hashlib.sha256(verifier.encode()).digest()).rstrip(b"=").decode()


class Provider(BaseHTTPRequestHandler):
    options = None
    grants = {}  # code -> what it was given for
    tokens = set()
    lock = threading.Lock()

    def do_GET(self):
        url = urlsplit(self.path)
        fields = dict(parse_qsl(url.query, strict_parsing=True)) if url.query else {}
        if url.path == "/authorize":
            self.authorize(fields)
        elif url.path == "/info":
            self.info(fields)
        else:
            self.answer(404, {})

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode()
        if self.path != "/token" or self.headers.get_content_type() != "application/x-www-form-urlencoded":
            self.answer(404, {})
            return
        self.token(dict(parse_qsl(body, strict_parsing=True)))

    def authorize(self, fields):
        right = (fields.get("response_type") == "code" and fields.get("client_id") == self.options.client
                 and fields.get("redirect_uri") == self.options.redirect and fields.get("state")
                 and fields.get("code_challenge_method") == "S256" and len(fields.get("code_challenge", "")) == 43)
        if not right:
            self.answer(400, {"error": "invalid_request"})
            return
        result = {"state": fields["state"]}
        if self.options.deny:
            result |= {"error": "access_denied", "error_description": "the person has said no"}
        else:
            result |= {"code": secrets.token_urlsafe(12), "cid": "x"}
            with self.lock:
                self.grants[result["code"]] = fields
        self.send_response(302)
        self.send_header("Location", fields["redirect_uri"] + "?" + urlencode(result))
        self.send_header("Content-Length", "0")
        self.end_headers()

    def token(self, fields):
        if (fields.get("client_id"), fields.get("client_secret")) != (self.options.client, self.options.secret):
            self.answer(401, {"error": "invalid_client"})
            return
        with self.lock:
            grant = self.grants.pop(fields.get("code"), None)
        if (fields.get("grant_type") != "authorization_code" or not grant
                or challenge_of(fields.get("code_verifier", "")) != grant["code_challenge"]):
            self.answer(400, {"error": "invalid_grant", "error_description": "Code has expired"})
            return
        token = "y0_" + secrets.token_urlsafe(24)
        with self.lock:
            self.tokens.add(token)
        self.answer(200, {"access_token": token, "token_type": "bearer", "expires_in": 31536000, "refresh_token": "x"})

    def info(self, fields):
        scheme, _, token = self.headers.get("Authorization", "").partition(" ")
        with self.lock:
            known = token in self.tokens
        if scheme != "OAuth" or not known or fields.get("format") != "json":
            self.answer(401, {})
            return
        self.answer(200, {"id": "17", "login": "student", "client_id": self.options.info_client or self.options.client,
                          "default_email": self.options.email, "emails": [self.options.email]})

    def answer(self, status, body):
        text = json.dumps(body).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/json; charset=utf-8")
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text)

    def log_message(self, *_):
        pass


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--client", required=True)
    parser.add_argument("--secret", required=True)
    parser.add_argument("--redirect", required=True)
    parser.add_argument("--email", default="student@yandex.example")
    parser.add_argument("--info-client", help="the client that its tokens are said to be for, if another")
    parser.add_argument("--deny", action="store_true", help="the person says no")
    Provider.options = parser.parse_args()
    server = ThreadingHTTPServer(("127.0.0.1", 0), Provider)
    server.daemon_threads = True
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(json.dumps({"url": f"http://127.0.0.1:{server.server_address[1]}"}), flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
