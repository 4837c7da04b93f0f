"""What Quorvel keeps on the disk: written before it starts, read while it runs and after it."""

import json
import re


def write_settings(home, **settings):
    """Only what is named; everything else stays as a fresh installation has it."""
    write_record(home, "config", settings)


def write_record(home, name, content):
    """A whole record file, such as "study-cards"."""
    folder = home / ".local/share/Quorvel"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / f"{name}.json").write_text(json.dumps(content), encoding="utf-8")


def write_preferences(home, **values):
    """The values that the next start finds, and no others."""
    folder = home / ".config/quorvel"
    folder.mkdir(parents=True, exist_ok=True)
    lines = [f"{key} = {json.dumps(value)}\n" for key, value in values.items()]
    (folder / "preferences").write_text("".join(lines), encoding="utf-8")


def read_record(home, name):
    """One of the record files, such as "progress"."""
    return json.loads((home / f".local/share/Quorvel/{name}.json").read_text(encoding="utf-8"))


def read_preferences(home):
    """The values of the preferences file with those of its journal over them."""
    values = {}
    for name in "preferences", "preferences.journal":
        path = home / ".config/quorvel" / name
        for line in path.read_text(encoding="utf-8").splitlines() if path.exists() else []:
            if found := re.fullmatch(r"([A-Za-z0-9._-]+) = (.*)", line):
                values[found[1]] = json.loads(found[2])
    return values
