"""What Quorvel keeps on the disk: written before the demo, read after it."""

import json
import re


def write_settings(home, **settings):
    """Only what is named; everything else stays as a fresh installation has it."""
    folder = home / ".local/share/Quorvel"
    folder.mkdir(parents=True)
    (folder / "config.json").write_text(json.dumps(settings), encoding="utf-8")


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
