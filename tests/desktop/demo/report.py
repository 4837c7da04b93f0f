"""What the demo expected and what it saw, step by step."""

import contextlib
import json
import time


class StepFailed(Exception):
    """Something else was seen than expected."""


class Step:
    """One step: what it expects, and what it has seen so far."""

    def __init__(self, name, expected, started):
        self.name, self.expected, self.started = name, expected, started
        self.seen = []

    def saw(self, what):
        self.seen.append(str(what))

    def check(self, holds, what):
        """Notes what was seen; the step fails where it does not hold."""
        self.saw(what)
        if not holds:
            raise StepFailed(f"{self.name}: {what}")


class Report:
    """Writes report.json: a list of steps with name, expected, seen, ok, startedAt and endedAt in seconds."""

    def __init__(self, folder):
        self._path = folder / "report.json"
        self._began = time.monotonic()
        self._rows = []
        self._whole = False
        self._problems = []

    def now(self):
        """Seconds since the demo began."""
        return time.monotonic() - self._began

    @contextlib.contextmanager
    def step(self, name, expected):
        step = Step(name, expected, self.now())
        ok = False
        try:
            yield step
            ok = True
        except Exception as problem:
            step.saw(f"{type(problem).__name__}: {problem}")
            raise
        finally:
            self._rows.append({"name": name, "expected": expected, "seen": "; ".join(step.seen), "ok": ok,
                               "startedAt": round(step.started, 2), "endedAt": round(self.now(), 2)})
            print(f"{'ok' if ok else 'NO':3} {step.started:6.1f} s  {name}: {'; '.join(step.seen)}", flush=True)

    def finish(self):
        """Every step was played."""
        self._whole = True

    def give_up(self, problem):
        self._problems.append(problem)

    def close(self):
        """Writes the report and returns the exit status: 0 only where every step was played and held."""
        self._path.parent.mkdir(parents=True, exist_ok=True)
        self._path.write_text(json.dumps(self._rows, indent=2, ensure_ascii=False) + "\n", encoding="utf-8")
        held = sum(row["ok"] for row in self._rows)
        good = self._whole and held == len(self._rows) and not self._problems
        print(*self._problems, sep="\n")
        print(f"{held} of {len(self._rows)} steps held{'' if self._whole else '; the demo did not reach its end'}."
              f" Report and pictures: {self._path.parent}")
        return 0 if good else 1
