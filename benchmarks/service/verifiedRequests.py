#!/usr/bin/env python3
"""Requests of signed-in students a second, on SQLite and PostgreSQL, beside nginx with a constant answer in the same run."""

import contextlib
import os
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

import load  # makes the modules beside it known
from figures import figure, write_figures
from postgresqlCluster import Cluster
from service import Service

SESSIONS = 100_000
ASKING = 5_000  # so many of them ask
CONNECTIONS = 64
ROUNDS = 3
SECONDS = 4
PATH = "/api/account"


@contextlib.contextmanager
def service_on(database, tokens):
    """The service on its core, with all these sessions. Yields its address."""
    os.environ.pop("QUORVEL_TEST_POSTGRESQL", None)
    if database:
        os.environ["QUORVEL_TEST_POSTGRESQL"] = database
    with Service(LOG_LEVEL="warning") as service:
        load.store_sessions(service.database_url, tokens)
        process = service.instances[0].process.pid
        subprocess.run(["taskset", "--all-tasks", "--cpu-list", "--pid", load.SERVER_CORE, str(process)], check=True,
                       stdout=subprocess.DEVNULL)
        yield f"http://127.0.0.1:{service.address[1]}"


def measure(addresses, tokens_file):
    """The median of the rounds, taken in turns: name -> (requests a second, 99th percentile)."""
    all_rounds = {name: [] for name in addresses}
    for _ in range(ROUNDS):
        for name, address in addresses.items():
            all_rounds[name].append(load.load(address, PATH, tokens_file, CONNECTIONS, SECONDS))
    return {name: tuple(statistics.median(values) for values in zip(*rounds)) for name, rounds in all_rounds.items()}


def main(output):
    tokens = load.new_sessions(SESSIONS)
    with contextlib.ExitStack() as running:
        folder = running.enter_context(tempfile.TemporaryDirectory())
        tokens_file = Path(folder) / "tokens"
        tokens_file.write_text("\n".join(tokens[:: SESSIONS // ASKING]) + "\n", encoding="ascii")
        addresses = {"nginx": running.enter_context(load.nginx({"email": "student50000@example.org"}))}
        addresses["SQLite"] = running.enter_context(service_on(None, tokens))
        cluster = running.enter_context(Cluster())
        addresses["PostgreSQL"] = running.enter_context(service_on(cluster.url, tokens))
        measured = measure(addresses, tokens_file)

    constant_rate, constant_slow = measured["nginx"]
    figures = [figure("nginx with a constant answer", constant_rate, "requests/s", "nothing")]
    for name, least in {"SQLite": 0.10, "PostgreSQL": 0.07}.items():
        rate, slow = measured[name]
        against = "nginx with a constant answer, both on one core"
        figures.append(figure(f"verified requests on {name}", rate / constant_rate, "times", against, least, at_least=True))
        figures.append(figure("the same", rate, "requests/s", f"{CONNECTIONS} connections, {SESSIONS} sessions"))
        figures.append(figure("its 99th percentile", slow / constant_slow, "times", against))
        figures.append(figure("the same", slow * 1e3, "ms", "nothing"))
    write_figures(output, figures)


if __name__ == "__main__":
    main(sys.argv[1])
