#!/usr/bin/env python3
"""What a process pays for a library before its own first line runs, as JSON: benchmarks/footprint.py BUILD-FOLDER

Bytes and relocations of the shared object, and the instructions of a start beyond those of a program without it,
counted under qemu. Libraries that are not installed are left out.
"""
import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
# Name: what the linker is asked for.
PEERS = {"GLib": ["-lglib-2.0"], "POCO Foundation": ["-lPocoFoundation"], "ELL": ["-lell"], "APR": ["-lapr-1"]}
# Bound at once, as on a device, so that no later call pays; getppid sets the mark.
PROGRAM = "#include <unistd.h>\nint main() { return getppid() < 0; }\n"


def output(*command: str | Path) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def started(folder: Path, libraries: list[str]) -> int:
    """The instructions up to main()."""
    program = folder / "started"
    output("g++", "-x", "c++", folder / "started.cpp", "-x", "none", "-Wl,--no-as-needed,-z,now", *libraries, "-o",
           program)
    done = subprocess.run(["qemu-x86_64", "-plugin", folder / "count.so", program], check=True, capture_output=True,
                          text=True, env={"PATH": os.environ["PATH"]})
    return int(done.stderr.split()[0])


def loaded(program: Path, stem: str) -> Path:
    """The file that is loaded for the library of that name."""
    files = [Path(line.split()[2]) for line in output("ldd", program).splitlines() if "=>" in line]
    return next(file for file in files if file.name.startswith(stem)).resolve()


def measured(folder: Path, libraries: list[str], empty: int) -> dict[str, int]:
    start = started(folder, libraries) - empty
    stem = "lib" + next(option[2:] for option in libraries if option.startswith("-l"))
    file = loaded(folder / "started", stem)
    text, data, bss = (int(n) for n in output("size", file).splitlines()[1].split()[:3])
    relocations = output("readelf", "-rW", file).count(" R_X86_64_")
    return {"text": text, "data": data + bss, "relocations": relocations, "start": start}


def main() -> None:
    build = Path(sys.argv[1]).resolve()
    host = build / "host" / "libkfl-host.a"
    ours = ["-Wl,--undefined=_Z5ParmsPKcz,--export-dynamic", f"-L{build}", "-lkfl", str(host), f"-Wl,-rpath,{build}"]
    result = {}
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "started.cpp").write_text(PROGRAM)
        output("gcc", "-shared", "-fPIC", "-O2", HERE / "instructions" / "count.c", "-o", folder / "count.so")
        empty = started(folder, [])
        for who, libraries in {"kfl": ours, **PEERS}.items():
            try:
                result[who] = measured(folder, libraries, empty)
            except subprocess.CalledProcessError as problem:
                print(f"{who}: left out: {problem.stderr.splitlines()[-1:]}", file=sys.stderr)
    json.dump(result, sys.stdout, indent=1)


if __name__ == "__main__":
    main()
