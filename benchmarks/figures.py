"""Figures of a benchmark that is written in Python, in the form that scripts/bench.py joins."""

import json
from pathlib import Path


def figure(name, value, unit, against, limit=None, at_least=False):
    """One line of the table; a limit is the most that the value may be, or the least."""
    holds = None if limit is None else (value >= limit if at_least else value <= limit)
    return {"name": name, "value": value, "unit": unit, "against": against, "limit": limit, "holds": holds}


def write_figures(path, figures):
    Path(path).write_text(json.dumps(figures), encoding="utf-8")
