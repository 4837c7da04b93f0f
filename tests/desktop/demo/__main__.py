"""One study session on a virtual desktop, worked through the real window: what ./demo runs.

Ends with 0 only when every step held. Leaves in the output folder report.json, one picture a step, the private home and
the logs of all programs.
"""

import argparse
import contextlib
import os
import signal
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))

from report import Report, StepFailed  # noqa: E402
from virtualDesktop import DesktopFailure, NotSeen, VirtualDesktop  # noqa: E402


def end_by_exception(number, _frame):
    """So that Ctrl-C and a request to end unwind the program and end what it started."""
    raise SystemExit(128 + number)


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--program", required=True, type=Path)
    arguments.add_argument("--decoy", required=True, type=Path, help="program that plays the other applications")
    arguments.add_argument("--companion", required=True, type=Path, help="folder of the browser extension")
    arguments.add_argument("--output", required=True, type=Path)
    given = arguments.parse_args()
    for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
        signal.signal(number, end_by_exception)

    report = Report(given.output)
    with contextlib.ExitStack() as desktop:
        try:
            virtual = desktop.enter_context(VirtualDesktop(given.output))
            # The accessibility library looks for the bus of this process: it must be known before it is loaded.
            os.environ.update(virtual.environment)
            import steps

            steps.play(virtual, report, given.program.resolve(), given.decoy.resolve(), given.companion.resolve())
        except (StepFailed, NotSeen, DesktopFailure) as problem:
            report.give_up(str(problem))
        finally:
            status = report.close()
    return status


if __name__ == "__main__":
    sys.exit(main())
