#!/usr/bin/env python3
"""Prints, from a benchmark's JSON, the library's time as a share of each peer's.

    Rijndael_benchmark --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true \
        --benchmark_min_time=0.02 --benchmark_out=cipher.json > /dev/null
    benchmarks/ratios.py cipher.json

Names end in the implementation's name behind the last slash; those with the same front are compared. Medians of
the repetitions are used. Below 1 the library is faster.
"""
import collections
import json
import statistics
import sys

OURS = "kfl"


def medians(path: str) -> dict[str, dict[str, float]]:
    times = collections.defaultdict(lambda: collections.defaultdict(list))
    with open(path) as file:
        for run in json.load(file)["benchmarks"]:
            if run.get("run_type") == "iteration":
                front, who = run["run_name"].split("/repeats:")[0].rsplit("/", 1)
                times[front][who].append(run["cpu_time"])
    return {front: {who: statistics.median(t) for who, t in all_.items()} for front, all_ in times.items()}


def main() -> None:
    table = medians(sys.argv[1])
    peers = sorted({who for times in table.values() for who in times} - {OURS})
    print(f"{'operation/key/block/bytes':34}{'ns':>12}" + "".join(f"{peer:>10}" for peer in peers) + f"{'best':>10}")
    for front, times in table.items():
        if OURS not in times:
            continue
        ratios = {peer: times[OURS] / times[peer] for peer in peers if peer in times}
        cells = "".join(f"{ratios[peer]:10.2f}" if peer in ratios else f"{'-':>10}" for peer in peers)
        best = f"{max(ratios.values()):10.2f}" if ratios else f"{'-':>10}"
        print(f"{front:34}{times[OURS]:12.0f}{cells}{best}")


if __name__ == "__main__":
    main()
