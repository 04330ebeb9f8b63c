#!/usr/bin/python3
"""Tables and plots of what scripts/benchmark measured.

    benchmarks/report.py [--docs] FOLDER FAMILY ...

FOLDER holds FAMILY-round-N.json and footprint.json. The tables are printed, and written with the plots to FOLDER; --docs puts
them into docs/performance.md, between its marks. Names end in the implementation's name behind the last slash; those
with the same front are compared. A ratio is the library's time by the peer's, below 1 the library is faster. All of a
work ran within milliseconds in each round: the ratio of the medians of all rounds comes first, then the middle half of
the ratios of single rounds, then the ratio of the least times, which nothing else disturbed.
"""
import collections
import datetime
import json
import platform
import re
import statistics
import subprocess
import sys
from collections.abc import Callable
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
OURS = "kfl"
PAGE = ROOT / "docs" / "performance.md"
# In the page, what instructions() makes.
INSTRUCTIONS = re.compile(r"(?<=\n### Instructions\n\n)(?:\|.*\n)+")
BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"
PACKAGES = ("g++", "libc6", "libglib2.0-0", "libell0", "libpocofoundation80", "libqt5core5a", "libboost-dev",
            "libfmt-dev", "libstb-dev", "libinih1", "libiniparser1", "libsimpleini1", "libssl3", "libnettle8",
            "libgcrypt20", "libmbedcrypto7", "libtomcrypt1", "libcrypto++8", "libmcrypt4")

# Work, then implementation, then one time for each round, in nanoseconds.
Times = dict[str, dict[str, list[float]]]
# One line of a plot for each implementation.
Lines = dict[str, list[tuple[float, float]]]
UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def read(folder: Path, family: str) -> Times:
    times: Times = collections.defaultdict(lambda: collections.defaultdict(list))
    rounds = sorted(folder.glob(f"{family}-round-*.json"))
    for run in (run for path in rounds for run in json.loads(path.read_text())["benchmarks"]):
        work, who = re.sub(r"/(repeats:\d+|iterations:\d+|real_time)", "", run["run_name"]).rsplit("/", 1)
        kind = "real_time" if "/real_time" in run["run_name"] else "cpu_time"
        times[work][who].append(run[kind] * UNITS[run["time_unit"]])
    return times


def duration(ns: float) -> str:
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def ratio(ours: list[float], peer: list[float]) -> str:
    single = statistics.quantiles([a / b for a, b in zip(ours, peer)], n=4) if len(ours) > 1 else []
    spread = f" ({single[0]:.2f}-{single[2]:.2f}; {min(ours) / min(peer):.2f})" if single else ""
    return f"{statistics.median(ours) / statistics.median(peer):.2f}{spread}"


def natural(work: str) -> list[str | int]:
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", work)]


def table(times: Times) -> list[str]:
    peers = list(dict.fromkeys(who for all_ in times.values() for who in all_ if who != OURS))
    lines = [f"| work | {OURS} | " + " | ".join(peers) + " |", "|---" * (len(peers) + 2) + "|"]
    for work in sorted(times, key=natural):
        if OURS not in times[work]:
            continue
        ours = times[work][OURS]
        cells = [ratio(ours, times[work][peer]) if peer in times[work] else "" for peer in peers]
        lines.append(f"| {work} | {duration(statistics.median(ours))} | " + " | ".join(cells) + " |")
    return lines


def footprint(path: Path) -> list[str]:
    lines = ["| library | code and constants | data | relocations | instructions of a start |", "|---|---|---|---|---|"]
    for who, of in json.loads(path.read_text()).items():
        lines.append(f"| {who} | {of['text']} | {of['data']} | {of['relocations']} | {of['start']} |")
    return lines


def instructions() -> list[str]:
    machines = {path.stem: dict(line.split() for line in path.read_text().splitlines())
                for path in sorted((ROOT / "benchmarks" / "instructions").glob("*.txt"))}
    lines = ["| run | " + " | ".join(machines) + " |", "|---" * (len(machines) + 1) + "|"]
    for name in next(iter(machines.values())):
        lines.append(f"| {name} | " + " | ".join(counts.get(name, "") for counts in machines.values()) + " |")
    return lines


def versions() -> str:
    done = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}, ", *PACKAGES], capture_output=True,
                          text=True)
    return done.stdout.rstrip(", ")


def machine() -> str:
    cpu = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    load = Path("/proc/loadavg").read_text().split()[1]
    name = cpu[1] if cpu else platform.machine()
    return f"{datetime.date.today()}, {name}, Linux {platform.release()}, load {load} at the end. {versions()}."


def plot(file: Path, title: str, x: str, y: str, lines: Lines, linear: bool) -> None:
    import matplotlib

    matplotlib.use("Agg")
    matplotlib.rcParams["svg.hashsalt"] = title
    from matplotlib import pyplot

    figure, axes = pyplot.subplots(figsize=(8, 5))
    for who, points in sorted(lines.items(), key=lambda line: line[0] != OURS):
        xs, ys = zip(*sorted(points))
        axes.plot(xs, ys, marker="o", label=who, linewidth=3 if who == OURS else 1)
    axes.set(title=title, xlabel=x, ylabel=y, xscale="log")
    if linear:
        axes.set_ylim(0, None)
    else:
        axes.set_yscale("log")
    axes.grid(True, alpha=0.3)
    axes.legend()
    figure.savefig(file, metadata={"Date": None})
    pyplot.close(figure)


def lines_of(times: Times, pattern: str, value: Callable[[float, float], float]) -> Lines:
    """Of the works that the pattern fits, whose first group is x."""
    lines = collections.defaultdict(list)
    for work, all_ in times.items():
        if found := re.fullmatch(pattern, work):
            x = float(found[1])
            for who, rounds in all_.items():
                lines[who].append((x, value(x, statistics.median(rounds))))
    return lines


def plots(all_: dict[str, Times], folder: Path) -> list[Path]:
    wanted = [
        ("Rijndael", "cipher", "AES-128-CBC enciphering", "bytes in a message", "MB/s", r"cbc-encrypt/128/128/(\d+)",
         lambda x, ns: x / ns * 1e3, True),
        ("Rijndael", "cipher-decipher", "AES-128-CBC deciphering", "bytes in a message", "MB/s",
         r"cbc-decrypt/128/128/(\d+)", lambda x, ns: x / ns * 1e3, True),
        ("IniFileParser", "ini-parse", "Parsing an INI file, 20 keys a section", "keys", "us for each key",
         r"ini: parse (\d+) wide", lambda x, ns: ns / 1e3 / x, False),
        ("IniFileParser", "ini-look-up", "Looking up every key, 20 keys a section", "keys", "us for each key",
         r"ini: look up (\d+) wide", lambda x, ns: ns / 1e3 / x, False),
        ("process", "start", "Starting /bin/true and waiting for it", "descriptor limit", "us",
         r"start: from a small parent, limit (\d+)", lambda x, ns: ns / 1e3, True),
    ]
    made = []
    for family, name, title, x, y, pattern, value, linear in wanted:
        lines = lines_of(all_[family], pattern, value) if family in all_ else {}
        if lines:
            made.append(folder / f"{name}.svg")
            plot(made[-1], title, x, y, lines, linear)
    return made


def report(all_: dict[str, Times], folder: Path) -> list[str]:
    lines = [machine(), ""]
    for family, times in all_.items():
        lines += [f"### {family}", "", *table(times), ""]
    lines += ["### Footprint and start-up", "", *footprint(folder / "footprint.json"), ""]
    return lines + ["### Instructions", "", *instructions(), ""]


def put_into_docs(lines: list[str], drawn: list[Path]) -> None:
    pictures = PAGE.parent / "performance"
    pictures.mkdir(exist_ok=True)
    for file in drawn:
        (pictures / file.name).write_text(file.read_text())
    shown = [f"![{file.stem}](performance/{file.name})" for file in drawn]
    before, rest = PAGE.read_text().split(BEGIN)
    after = rest.split(END)[1]
    PAGE.write_text("\n".join([before + BEGIN, "", *lines, *shown, "", END]) + after)


def main() -> None:
    arguments = [a for a in sys.argv[1:] if a != "--docs"]
    folder = Path(arguments[0])
    all_ = {family: read(folder, family) for family in arguments[1:]}
    lines = report(all_, folder)
    drawn = plots(all_, folder)
    print("\n".join(lines))
    (folder / "report.md").write_text("\n".join(lines) + "\n")
    if "--docs" in sys.argv:
        put_into_docs(lines, drawn)


if __name__ == "__main__":
    main()
