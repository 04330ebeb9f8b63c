"""Tries a mutant: builds what depends on it and runs the family's tests until one fails."""
import dataclasses
import hashlib
import os
import pathlib
import resource
import shlex
import signal
import subprocess
import time

import sandbox
from mutants import Mutant

BUILD = "build/mutate"
BUILD_SECONDS = 1200
# A test may take this many times its usual time, and this much more.
TIMES, MORE_CPU_SECONDS, MORE_SECONDS = 5, 2, 20
MOST_DATA = 6 << 30
MOST_FILE = 1 << 30
MOST_PROCESSES = 400


@dataclasses.dataclass(frozen=True)
class Test:
    program: str  # its place in tests/
    command: list[str]
    seconds: float = 0  # what it usually takes
    cpu_seconds: float = 0
    built: int = 0  # when it was built, in nanoseconds

    @property
    def name(self) -> str:
        return self.program.split("/")[-1]


def built(target: str) -> bool:
    return subprocess.run(["ninja", "-C", BUILD, "-j1", target], stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, timeout=BUILD_SECONDS).returncode == 0


def limits(test: Test | None) -> None:
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_DATA, (MOST_DATA, MOST_DATA))
    resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_FILE, MOST_FILE))
    if test:
        seconds = int(test.cpu_seconds * TIMES) + MORE_CPU_SECONDS
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
    pathlib.Path("/proc/self/oom_score_adj").write_text("1000")


def processes() -> int:
    return sum(name.isdigit() for name in os.listdir("/proc"))


def outcome_of(test: Test, is_limited: bool = True) -> str:
    """passed, failed, crashed or timed out"""
    program = subprocess.Popen(test.command, cwd=pathlib.Path(test.command[0]).parent, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                               preexec_fn=lambda: limits(test if is_limited else None))
    end = time.monotonic() + (test.seconds * TIMES + MORE_SECONDS if is_limited else BUILD_SECONDS)
    while time.monotonic() < end and processes() < MOST_PROCESSES:
        try:
            status = program.wait(0.2)
        except subprocess.TimeoutExpired:
            continue
        if status == -signal.SIGXCPU:
            return "timed out"
        return "passed" if status == 0 else "failed" if status > 0 else "crashed"
    return "timed out"


def usual(root: pathlib.Path, test: Test) -> Test:
    """The test with the time that it takes without a change."""
    def work() -> dict:
        begin, before = time.monotonic(), resource.getrusage(resource.RUSAGE_CHILDREN)
        outcome = outcome_of(test, is_limited=False)
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        return {"outcome": outcome, "seconds": time.monotonic() - begin,
                "cpu_seconds": used.ru_utime + used.ru_stime - before.ru_utime - before.ru_stime}

    result = sandbox.run(root, work, BUILD_SECONDS)
    if not result or result.pop("outcome") != "passed":
        raise SystemExit(f"{test.name} does not pass without a change: {result}")
    return dataclasses.replace(test, **result)


def object_code(root: pathlib.Path, command: list[str]) -> str:
    """A digest of what the optimising compiler makes of a source."""
    words = [word for word in command if word not in {"-O0", "-g"}]
    words[words.index("-o") + 1] = "/mnt/optimised.o"
    made = subprocess.run([*words, "-O2"], cwd=root / BUILD, stderr=subprocess.DEVNULL)
    return hashlib.sha256(pathlib.Path("/mnt/optimised.o").read_bytes()).hexdigest() if made.returncode == 0 else ""


def is_same_code(root: pathlib.Path, mutant: Mutant, original: bytes, commands: list[list[str]]) -> bool:
    changed = [object_code(root, command) for command in commands]
    (root / mutant.file).write_bytes(original)
    return changed == [object_code(root, command) for command in commands]


def trial(root: pathlib.Path, mutant: Mutant, tests: list[Test], commands: list[str]) -> dict:
    """The fate of a mutant; `commands` compile the sources that it is part of."""
    def work() -> dict:
        os.environ["CCACHE_DISABLE"] = "1"
        os.environ["GTEST_FAIL_FAST"] = "1"
        original = (root / mutant.file).read_bytes()
        if original[mutant.start:mutant.end] != mutant.old.encode():
            raise RuntimeError(f"{mutant.file} has changed during the run")
        (root / mutant.file).write_bytes(mutant.applied_to(original))
        for test in tests:
            if not built(test.name):
                return {"outcome": "not compiled"}
            outcome = outcome_of(test)
            if outcome in ("failed", "crashed"):
                outcome = outcome_of(test)  # a busy machine can make a sound test fail, but seldom twice
            if outcome != "passed":
                return {"outcome": outcome, "test": test.name}
        same = is_same_code(root, mutant, original, [shlex.split(command) for command in commands])
        return {"outcome": "same code" if same else "survived"}

    begin = time.monotonic()
    # Each step inside has its limit.
    result = sandbox.run(root, work, 10 * BUILD_SECONDS) or {"outcome": "timed out"}
    return {**result, "seconds": round(time.monotonic() - begin, 1)}
