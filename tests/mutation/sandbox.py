"""Runs a function where what it does to files, processes and the network stays without effect.

A changed library may signal every process, fill the disk or write anywhere: the function runs in namespaces of its own,
with a copy of the tree (an overlay, which costs nothing) at the place of the tree itself. Needs root.
"""
import collections.abc
import ctypes
import fcntl
import json
import os
import pathlib
import select
import signal
import socket
import struct

CLONE_NEWNS, CLONE_NEWIPC, CLONE_NEWPID, CLONE_NEWNET = 0x20000, 0x8000000, 0x20000000, 0x40000000
MS_REC, MS_PRIVATE = 0x4000, 0x40000
PR_SET_PDEATHSIG = 1
SIOCSIFFLAGS, IFF_UP = 0x8914, 1
SCRATCH = pathlib.Path("/mnt")
SCRATCH_OPTIONS = "size=2g"

libc = ctypes.CDLL(None, use_errno=True)


def check(result: int, what: str) -> None:
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"{what}: {os.strerror(error)}")


def mount(source: str, target: pathlib.Path, kind: str, options: str = "", flags: int = 0) -> None:
    check(libc.mount(source.encode(), str(target).encode(), kind.encode(), ctypes.c_ulong(flags), options.encode()),
          f"mount {kind} on {target}")


def enter(root: pathlib.Path) -> None:
    """To be called by the first process of a new process namespace."""
    mount("none", pathlib.Path("/"), "none", flags=MS_REC | MS_PRIVATE)
    mount("scratch", SCRATCH, "tmpfs", SCRATCH_OPTIONS)
    for folder in ("upper", "work", "tmp"):
        (SCRATCH / folder).mkdir()
    mount("copy", root, "overlay", f"lowerdir={root},upperdir={SCRATCH}/upper,workdir={SCRATCH}/work")
    mount("proc", pathlib.Path("/proc"), "proc")
    os.chdir(root)
    os.environ["TMPDIR"] = str(SCRATCH / "tmp")
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sH14x", b"lo", IFF_UP))


def die_with_parent() -> None:
    check(libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL), "prctl")


def inside(root: pathlib.Path, work: collections.abc.Callable[[], dict], answer: int) -> None:
    """The two processes of a run: one that makes the namespaces, one that is the first in them."""
    die_with_parent()
    os.setsid()
    check(libc.unshare(CLONE_NEWNS | CLONE_NEWIPC | CLONE_NEWPID | CLONE_NEWNET), "unshare (this needs root)")
    first = os.fork()
    if first:
        os.waitpid(first, 0)
        return
    die_with_parent()
    enter(root)
    os.write(answer, json.dumps(work()).encode())


def run(root: pathlib.Path, work: collections.abc.Callable[[], dict], seconds: float) -> dict | None:
    """What `work` returned, or None where it did not return in time."""
    reader, writer = os.pipe()
    child = os.fork()
    if child == 0:
        try:
            os.close(reader)
            inside(root, work, writer)
            os._exit(0)
        except BaseException as error:  # the answer is all that gets out
            os.write(writer, json.dumps({"fault": f"{type(error).__name__}: {error}"}).encode())
            os._exit(1)
    os.close(writer)
    answer = b""
    while select.select([reader], [], [], seconds)[0]:
        part = os.read(reader, 65536)
        if not part:
            break
        answer += part
    os.close(reader)
    os.kill(child, signal.SIGKILL)
    os.waitpid(child, 0)
    result = json.loads(answer) if answer else None
    if result and "fault" in result:
        raise RuntimeError(result["fault"])
    return result
