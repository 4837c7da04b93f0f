"""A real Chromium with the companion, and the pages that it shows: served on loopback, under the names of real sites."""

import http.server
import threading

PAGE = """<!doctype html><html><head><meta charset="utf-8"><title>{title}</title></head>
<body style="font-family: sans-serif; margin: 3em; background: {colour}; color: white"><h1>{title}</h1></body></html>"""

# The browser finds these and nothing else.
SITES = {
    "9gag.com": ("Endless memes", "#7a1f3d"),  # on the built-in list of blocked domains
    "lessons.example": ("Lesson 7: Derivatives", "#1f5d3d"),
}

# What keeps a fresh Chromium off the network and free of questions; the last two are for root in small containers.
OPTIONS = [
    "--no-first-run", "--no-default-browser-check", "--disable-background-networking", "--disable-component-update",
    "--disable-sync", "--disable-quic", "--password-store=basic", "--disable-dev-shm-usage", "--no-sandbox", "--test-type",
]


# Left of Quorvel's buttons and events, and not under the pointer.
PLACE = (860, 40, 400, 420)


class _Pages(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/":
            self.server.asked.append(self.headers.get("Host", ""))
        title, colour = SITES.get(self.headers.get("Host", ""), ("Nothing here", "#333333"))
        body = PAGE.format(title=title, colour=colour).encode()
        self.send_response(200)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_words):
        pass


class Browser:
    """`with Browser(desktop, extension) as browser:` serves the pages; start() opens Chromium with the companion."""

    def __init__(self, desktop, extension):
        self._desktop = desktop
        self._extension = extension
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Pages)
        self._server.asked = []

    def __enter__(self):
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *problem):
        self._server.shutdown()
        self._server.server_close()

    def asked_for(self, site):
        """How often its page was loaded."""
        return self._server.asked.count(site)

    def start(self, address):
        """Opens Chromium with this page."""
        x, y, width, height = PLACE
        return self._desktop.start("chromium", [*self._command(), f"--window-position={x},{y}",
                                                f"--window-size={width},{height}", address])

    def open(self, address):
        """Opens another tab in it, as a link in another program does."""
        self._desktop.run(*self._command(), address)

    def _command(self):
        port = self._server.server_address[1]
        rules = ", ".join([*(f"MAP {name} 127.0.0.1:{port}" for name in SITES), "MAP * ~NOTFOUND"])
        return ["chromium", *OPTIONS, f"--host-resolver-rules={rules}", f"--load-extension={self._extension}"]
