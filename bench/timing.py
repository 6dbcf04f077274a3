"""How long commands take, and how many of them at a time, by bench/wall_time.cpp."""

import json
import statistics
import subprocess
from typing import NamedTuple

from measure import DESK, Command, Failure

LONGEST_SECONDS = 3600


class Timed(NamedTuple):
    """What is timed under a name: `requests` processes to a run, `at_once` of them at a time."""
    name: str
    command: Command
    requests: int = 1
    at_once: int = 1


class Times(NamedTuple):
    median_s: float
    tenth_percentile_s: float
    page_faults: float


def wall_times(rows, runs, directory):
    """Times by name. The runs of all rows are mixed."""
    words = [DESK / "bench/wall_time", "--benchmark_format=json",
             "--benchmark_enable_random_interleaving=true", str(runs)]
    for row in rows:
        command = row.command
        words += [row.name, str(command.status), str(row.requests), str(row.at_once), command.given,
                  str(len(command.words)), *command.words]
    ended = subprocess.run(words, cwd=directory, env={}, stdin=subprocess.DEVNULL, capture_output=True,
                           text=True, timeout=LONGEST_SECONDS, check=False)
    if ended.returncode != 0:
        raise Failure(ended.stderr)
    taken = {row.name: [] for row in rows}
    faults = {row.name: [] for row in rows}
    for entry in json.loads(ended.stdout)["benchmarks"]:
        if entry["run_type"] != "iteration":
            continue
        if entry.get("error_occurred"):
            raise Failure(f"{entry['name']}: {entry['error_message']}")
        name = entry["name"].split("/")[0]
        taken[name].append(entry["real_time"] / 1e9)
        faults[name].append(entry["page_faults"])
    for name, times in taken.items():
        if len(times) != runs:
            raise Failure(f"{name}: {len(times)} of {runs} runs")
    return {name: Times(statistics.median(times), sorted(times)[len(times) // 10],
                        statistics.median(faults[name]))
            for name, times in taken.items()}
