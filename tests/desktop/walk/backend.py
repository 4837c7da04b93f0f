"""The backend that Quorvel signs in with: a server on loopback that keeps what it was asked and answers as it is told."""

import http.server
import json
import threading


class Backend:
    """`with Backend() as backend:` serves at backend.address. `answers` has, by path, a status and a body or an object;
    `asked` every request so far, as (method, path, token or None, object or None)."""

    def __init__(self):
        self.answers = {}
        self.asked = []
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Requests)
        self._server.backend = self
        self.address = f"http://127.0.0.1:{self._server.server_address[1]}/api"

    def __enter__(self):
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *problem):
        self._server.shutdown()
        self._server.server_close()


class _Requests(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self._answer(None)

    def do_POST(self):
        self._answer(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))

    def _answer(self, sent):
        backend = self.server.backend
        path = self.path.removeprefix("/api")
        backend.asked.append((self.command, path, self.headers.get("Authorization"), sent))
        status, content = backend.answers.get(path, (404, "Nothing here."))
        body = (content if isinstance(content, str) else json.dumps(content)).encode()
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_words):
        pass
