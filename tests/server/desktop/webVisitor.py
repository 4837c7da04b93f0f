"""What a browser does at a sign-in: follows redirects, keeps cookies, and goes where the last page sends it."""

import html.parser
import http.cookiejar
import re
import urllib.error
import urllib.request

SECONDS_TO_ANSWER = 20  # only what is broken is waited for that long


class WrongPage(Exception):
    """The page does not lead back to the program, or in two directions."""


class _Ways(html.parser.HTMLParser):
    """Where a page leads: `refreshes` by itself, `links` by a press."""

    def __init__(self, page):
        super().__init__()
        self.refreshes, self.links = [], []
        self.feed(page)
        self.close()

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        if tag == "meta" and (values.get("http-equiv") or "").lower() == "refresh":
            self.refreshes.append(values.get("content"))
        if tag == "a":
            self.links.append(values.get("href"))


def program_address(page):
    """Where a page sends the browser at once, which must be the program, and the page's only link too."""
    ways = _Ways(page)
    found = [re.fullmatch(r"0;\s*url=(quorvel://.+)", content or "") for content in ways.refreshes]
    if len(found) != 1 or not found[0] or ways.links != [found[0][1]]:
        raise WrongPage(f"refreshes: {ways.refreshes}, links: {ways.links}")
    return found[0][1]


class WebVisitor:
    """A browser with an empty cookie jar. `hosts` says which origin stands where in truth, as a proxy before it would."""

    def __init__(self, hosts):
        class Redirects(urllib.request.HTTPRedirectHandler):
            def redirect_request(self, request, file, code, message, headers, address):
                return super().redirect_request(request, file, code, message, headers, _placed(address, hosts))

        self.cookies = http.cookiejar.CookieJar()
        self._opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}), urllib.request.HTTPCookieProcessor(self.cookies), Redirects())

    def read(self, address):
        """The page at which it comes out, as text."""
        try:
            with self._opener.open(address, timeout=SECONDS_TO_ANSWER) as answer:
                page = answer.read().decode("utf-8")
                if answer.headers.get_content_type() != "text/html":
                    raise WrongPage(f"{answer.url} is no page: {page}")
                return page
        except urllib.error.HTTPError as problem:
            with problem:
                raise WrongPage(f"{problem.url} is {problem.code}: {problem.read().decode('utf-8', 'replace')}") from None


def _placed(address, hosts):
    for origin, place in hosts.items():
        if address.startswith(f"{origin}/"):
            return place + address.removeprefix(origin)
    return address
