"""What a running program holds of the system, in numbers that may be compared with those of hours ago."""

import os
import re
from pathlib import Path


def figures_of(process_id, resources_in_x):
    """Kind -> number; `resources_in_x` are lines of a kind and a number."""
    folder = Path(f"/proc/{process_id}")
    figures = {f"{kind} KB": number for kind, number in _memory(folder / "smaps_rollup").items()}
    figures["open files"] = len(os.listdir(folder / "fd"))
    figures["threads"] = len(os.listdir(folder / "task"))
    figures["mappings"] = (folder / "maps").read_text().count("\n")
    figures["children"] = sum(len((task / "children").read_text().split()) for task in (folder / "task").iterdir())
    for line in resources_in_x.splitlines():
        kind, _, number = line.rpartition(" ")
        figures[f"X {kind}"] = int(number)
    return figures


def _memory(path):
    """What is resident: all of it, and what of it is no file's. The share of libraries is left out: it grows whenever another
    process that has them too ends.
    """
    lines = dict(re.findall(r"^(\w+): +(\d+) kB$", path.read_text(), re.MULTILINE))
    return {kind: int(lines[kind]) for kind in ("Rss", "Pss_Anon")}


def bytes_in(*folders):
    """The plain files of the folders and their folders: how many, and their bytes together."""
    sizes = [path.stat().st_size for folder in folders for path in folder.rglob("*") if path.is_file()]
    return len(sizes), sum(sizes)
