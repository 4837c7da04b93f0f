#!/usr/bin/env python3
"""Writes what clang-tidy looks at: the sources of a folder one after the other, several in a unit. Most of its time goes
to the headers of Qt and Boost, which it so reads once for all of them.

    tidyUnits.py FOLDER         reads FOLDER/compile_commands.json, writes the units to FOLDER/units/, prints their paths
    tidyUnits.py --names UNIT   copies what clang-tidy says of a unit, with the names and lines of the sources

In FOLDER/units/ lies then a compile_commands.json of the units, and beside them the settings of clang-tidy that the
folders of the sources have.
"""

import json
import re
import shlex
import shutil
import sys
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SOURCES_IN_A_UNIT = 12
# What is on purpose compiled elsewhere: tests have names of Qt's own manner, and benchmarks a build of their own.
LEFT_OUT = ("tests/", "benchmarks/", "build/")
MARK = "//@ "  # before each source, with its name


def source_of(entry):
    """The path in the repository; None for what is no source of ours."""
    path = Path(entry["file"])
    if not path.is_relative_to(ROOT):
        return None
    name = path.relative_to(ROOT).as_posix()
    return None if name.startswith(LEFT_OUT) else name


def options_of(entry):
    """The words of the command without the file and the output."""
    words = shlex.split(entry["command"])
    output = words.index("-o")
    del words[output:output + 2]
    return [word for word in words if word not in ("-c", entry["file"])]


def unit_text(sources):
    return "".join(f"{MARK}{source}\n{(ROOT / source).read_text(encoding='utf-8')}" for source in sources)


def with_names(unit, said):
    """`said` with "source:line" for each "unit:line"."""
    places, source, first = [""], "", 0
    for number, line in enumerate(Path(unit).read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith(MARK):
            source, first = line.removeprefix(MARK), number
        places.append(f"{source}:{number - first}")
    return re.sub(re.escape(unit) + r":(\d+)", lambda found: places[min(int(found[1]), len(places) - 1)], said)


def sources_by_command(entries):
    """(folder, options) -> sources, in the order of their names."""
    groups = defaultdict(list)
    for entry in entries:
        if source := source_of(entry):
            groups[(str(Path(source).parent), tuple(options_of(entry)))].append(source)
    return {key: sorted(sources) for key, sources in sorted(groups.items())}


def write_units(folder):
    units = folder / "units"
    shutil.rmtree(units, ignore_errors=True)
    commands, seen = [], set()
    for (place, options), sources in sources_by_command(json.loads((folder / "compile_commands.json").read_text())).items():
        for first in range(0, len(sources), SOURCES_IN_A_UNIT):
            part = sources[first:first + SOURCES_IN_A_UNIT]
            unit = units / place / f"{len(commands)}.cpp"
            unit.parent.mkdir(parents=True, exist_ok=True)
            unit.write_text(unit_text(part), encoding="utf-8")
            own = ["-I", str(ROOT / place)]  # where a file finds its neighbours, whatever the target says
            commands.append({"directory": str(folder), "file": str(unit),
                             "command": shlex.join([*options, *own, "-c", str(unit), "-o", str(unit.with_suffix(".o"))])})
            seen.update(part)
    (units / "compile_commands.json").write_text(json.dumps(commands, indent=1), encoding="utf-8")
    for settings in ROOT.glob("*/.clang-tidy"):
        if (units / settings.parent.name).is_dir():
            shutil.copy(settings, units / settings.parent.name)
    return [command["file"] for command in commands], seen


def all_sources():
    return {path.relative_to(ROOT).as_posix() for top in ROOT.iterdir() if top.is_dir() and top.name != "build"
            for path in top.rglob("*.cpp") if not path.relative_to(ROOT).as_posix().startswith(LEFT_OUT)}


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "--names":
        sys.stdout.write(with_names(sys.argv[2], sys.stdin.read()))
        return
    if len(sys.argv) != 2:
        sys.exit("usage: tidyUnits.py FOLDER | --names UNIT")
    units, seen = write_units(Path(sys.argv[1]).resolve())
    if unseen := sorted(all_sources() - seen):
        sys.exit("No target compiles these, so that they would not be looked at: " + " ".join(unseen))
    print("\n".join(units))


if __name__ == "__main__":
    main()
