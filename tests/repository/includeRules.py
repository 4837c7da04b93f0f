"""Which folder may include which, and the lines of the sources that do otherwise."""

import re
from pathlib import Path, PurePosixPath

# A folder may include itself and what stands here. Adapters are chosen by app/ alone, so nobody else names them.
PORTS = {"platform/ports"}
RULES = {
    "companion/channel": set(),
    "companion/host": {"companion/channel"},
    "platform/ports": set(),
    "platform/none": PORTS,
    "platform/posix": PORTS,
    "platform/linux/process": PORTS | {"platform/posix"},
    "platform/linux/x11": PORTS | {"companion/channel", "platform/posix", "platform/linux/process"},
    "platform/linux/companion": PORTS | {"companion/channel", "platform/posix", "platform/linux/process"},
    "platform/linux/desktop": PORTS | {"platform/posix", "platform/linux/process"},
    "platform/applescript": PORTS,
    "study": PORTS,
    "account": PORTS,
    "engine": PORTS | {"study", "account"},
    "ui": PORTS | {"study", "account", "engine"},
    "server/base": set(),
    "server/storage": {"server/base"},
    "server/http": {"server/base"},
    "server/mail": {"server/base"},
    "server/accounts": {"server/base", "server/storage", "server/http", "server/mail"},
    "server/oauth": {"server/base", "server/storage", "server/http", "server/accounts"},
    "server/coach": {"server/base", "server/storage", "server/http", "server/accounts"},
    "server": None,
    "app": None,  # None: everything but tests and benchmarks
    "tests": None,
    "benchmarks": None,
}
CHECKERS = {"tests", "benchmarks"}

# These folders hold what must run anywhere, so they name no operating system and no window.
WITHOUT_SYSTEM = {"platform/ports", "study", "account", "engine"}
SYSTEM_HEADER = re.compile(
    r"(sys|linux|X11|xcb|dbus|netinet|arpa|mach|IOKit|CoreFoundation)/"
    r"|(unistd|fcntl|signal|csignal|dirent|pwd|grp|poll|spawn|dlfcn|termios|windows)(\.h)?$"
    r"|(QtDBus|QtGui|QtQml|QtQuick|QtWidgets)/"
    r"|(QDBus|QQml|QQuick|QWidget|QGuiApplication|QApplication|QWindow|QSystemTrayIcon)"
)
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
ENDINGS = {".cpp", ".h", ".mm"}


def folder_of(path):
    """The rule folder that a path of the repository belongs to: the longest that matches, or None."""
    parts = PurePosixPath(path).parts
    for length in range(len(parts) - 1, 0, -1):
        folder = "/".join(parts[:length])
        if folder in RULES:
            return folder
    return None


def broken_includes(sources):
    """sources: path in the repository -> text. Returns one sentence for each line that breaks a rule."""
    homes = {}
    for path in sources:
        if path.endswith(".h") and folder_of(path):
            homes.setdefault(PurePosixPath(path).name, set()).add(folder_of(path))
    broken = []
    for path, text in sorted(sources.items()):
        folder = folder_of(path)
        if folder is None:
            broken.append(f"{path}: no rule says what this folder may include")
            continue
        for number, line in enumerate(text.splitlines(), 1):
            found = INCLUDE.match(line)
            if found and (sentence := _judge(folder, found[1], found[2], homes)):
                broken.append(f"{path}:{number}: {sentence}")
    return broken


def _judge(folder, bracket, name, homes):
    if bracket == "<" and name not in homes:
        if folder in WITHOUT_SYSTEM and SYSTEM_HEADER.match(name):
            return f"{folder} includes the system's <{name}>"
        return None
    owners = homes.get(PurePosixPath(name).name, set())
    if not owners or folder in owners:
        return None
    allowed = RULES[folder]
    if allowed is None:
        allowed = set(RULES) if folder in CHECKERS else set(RULES) - CHECKERS
    if owners & allowed:
        return None
    return f'{folder} may not include "{name}" of {" or ".join(sorted(owners))}'


def read_sources(root):
    """Every C++ source of the repository, without what a build has made."""
    sources = {}
    for path in sorted(Path(root).rglob("*")):
        inside = path.relative_to(root)
        if path.suffix in ENDINGS and inside.parts[0] not in {"build", ".git"}:
            sources[inside.as_posix()] = path.read_text(encoding="utf-8")
    return sources
