#!/usr/bin/env python3
"""Prints, from the JSON of a benchmark's rounds, the library's time as a share of each peer's.

    for round in $(seq 31); do
      Rijndael_benchmark --benchmark_min_time=0.001 --benchmark_out=cipher-$round.json > /dev/null
    done
    benchmarks/ratios.py [--medians] cipher-*.json

Names end in the implementation's name behind the last slash; those with the same front are compared. Below 1 the
library is faster. "look-ups" is no peer but a bound: what the tables alone cost. The summary gives the least and the
greatest share over key lengths and sizes.

Each one's least time of all rounds is taken: where two processors are threads of one core, all that runs beside the
benchmark, in another machine even, makes what waits little up to twice as slow and what waits much hardly slower.
With --medians a share is taken in each round, in which all ran within milliseconds, and their median is shown.
"""
import collections
import json
import statistics
import sys
from collections.abc import Callable

OURS = "kfl"
BOUND = "look-ups"
SHORT = 1000

# By front, then by implementation.
Round = dict[str, dict[str, float]]
Table = dict[str, dict[str, float]]


def read_round(path: str) -> Round:
    """The least time of a round's repetitions; what is made of them all, a mean or a deviation, is no time of a run."""
    times: Round = collections.defaultdict(dict)
    with open(path) as file:
        runs = json.load(file)["benchmarks"]
    for run in (run for run in runs if run["run_type"] == "iteration"):
        front, who = run["run_name"].rsplit("/", 1)
        times[front][who] = min(run["cpu_time"], times[front].get(who, run["cpu_time"]))
    return times


def shares(times: dict[str, float]) -> dict[str, float]:
    """Our time by each other's, and our time itself."""
    return {who: times[OURS] / time for who, time in times.items() if who != OURS} | {OURS: times[OURS]}


def gathered(rounds: list[Round]) -> dict[str, dict[str, list[float]]]:
    """What each round says, side by side."""
    values: dict[str, dict[str, list[float]]] = collections.defaultdict(lambda: collections.defaultdict(list))
    for fronts in rounds:
        for front, row in fronts.items():
            for who, value in row.items():
                values[front][who].append(value)
    return {front: values[front] for front in sorted(values)}


def reduced(rounds: list[Round], reduce: Callable[[list[float]], float]) -> Table:
    return {front: {who: reduce(values) for who, values in row.items()} for front, row in gathered(rounds).items()}


def compared(table: Table) -> Table:
    return {front: shares(times) for front, times in table.items() if OURS in times}


def with_best(table: Table) -> Table:
    for row in table.values():
        peers = [share for who, share in row.items() if who not in (OURS, BOUND)]
        if peers:
            row["best"] = max(peers)
    return table


def print_table(table: Table, columns: list[str]) -> None:
    print(f"{'operation/key/block/bytes':34}{'ns':>12}" + "".join(f"{column:>10}" for column in columns))
    for front, row in table.items():
        cells = "".join(f"{row[column]:10.2f}" if column in row else f"{'-':>10}" for column in columns)
        print(f"{front:34}{row[OURS]:12.0f}{cells}")


def group_of(front: str) -> str:
    operation, _, *rest = front.split("/")
    block, size = (rest + ["", "0"])[:2]
    return f"{operation}, blocks of {block}" + (", short" if 0 < int(size) < SHORT else "")


def print_summary(table: Table, columns: list[str]) -> None:
    ranges: dict[str, dict[str, list[float]]] = collections.defaultdict(lambda: collections.defaultdict(list))
    for front, row in table.items():
        for who, share in row.items():
            ranges[group_of(front)][who].append(share)
    print("\n" + f"{'least and greatest':34}" + "".join(f"{column:>11}" for column in columns))
    for group, row in ranges.items():
        cells = "".join(
            f"{min(row[column]):6.2f}-{max(row[column]):4.2f}" if column in row else f"{'-':>11}"
            for column in columns)
        print(f"{group:34}{cells}")


def main() -> None:
    medians = "--medians" in sys.argv[1:]
    rounds = [read_round(path) for path in sys.argv[1:] if path != "--medians"]
    if medians:
        table = with_best(reduced([compared(times) for times in rounds], statistics.median))
    else:
        table = with_best(compared(reduced(rounds, min)))
    others = {who for row in table.values() for who in row} - {OURS, BOUND, "best"}
    columns = sorted(others) + ["best", BOUND]
    print_table(table, columns)
    print_summary(table, columns)


if __name__ == "__main__":
    main()
