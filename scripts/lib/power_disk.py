"""File systems of the running kernel on a disk whose power can be cut.

All of it lives in a mount namespace and on loop devices that the kernel gives
up by itself, so that nothing is left whatever ends this process.
"""

import argparse
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time

INSIDE = "--inside"  # the namespaces of its own

# Small, but as large as each asks for; blocks as on an ordinary disk.
SIZES_MIB = {"ext4": 64, "xfs": 320, "btrfs": 256}
MAKE = {
    "ext4": ["mkfs.ext4", "-q", "-F", "-b", "4096"],
    "xfs": ["mkfs.xfs", "-q", "-f"],
    "btrfs": ["mkfs.btrfs", "-q", "-f"],
}


def run(*words, **options):
    """Its standard output; what it complains of ends the program."""
    done = subprocess.run([str(word) for word in words], text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          check=False, **options)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(str(word) for word in words)}: "
                         f"{done.stderr.strip()}")
    return done.stdout


def why_not(kind):
    """Why there can be no such file system here; empty if there can."""
    if not shutil.which(MAKE[kind][0]):
        return f"{MAKE[kind][0]} is not installed"
    if shutil.which("modprobe"):
        subprocess.run(["modprobe", "-q", kind], check=False)
    names = pathlib.Path("/proc/filesystems").read_text().split()
    return "" if kind in names else f"this kernel has no {kind}"


def add_inside(parser):
    """The option by which a program knows that it is inside."""
    parser.add_argument(INSIDE, action="store_true", help=argparse.SUPPRESS)


def why_impossible():
    """What is missing here; empty if nothing is."""
    if os.geteuid() != 0:
        return "only root can mount file systems"
    for device in ("/dev/fuse", "/dev/loop-control"):
        if not os.access(device, os.R_OK | os.W_OK):
            return f"there is no {device}"
    probe = subprocess.run(["unshare", "--mount", "--pid", "--fork", "true"],
                           capture_output=True, text=True, check=False)
    return probe.stderr.strip()


def go_inside():
    """The same program once more, with mounts and processes of its own: they
    are gone with it, whatever ends it. Returns the exit status.
    """
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    with subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL",
             "unshare", "--mount", "--pid", "--fork", "--kill-child",
             "--mount-proc", sys.executable, "-B", *sys.argv, INSIDE],
            stdin=subprocess.DEVNULL) as inner:
        try:
            return inner.wait()
        except KeyboardInterrupt:
            return 128 + signal.SIGINT
        finally:
            inner.kill()


def make_image(kind, path):
    """An empty file system in a sparse file."""
    with open(path, "wb") as file:
        file.truncate(SIZES_MIB[kind] << 20)
    run(*MAKE[kind], path)
    run("fallocate", "--dig-holes", path)


@contextlib.contextmanager
def loop_device(path):
    """A block device over the file, past the page cache."""
    device = run("losetup", "--find", "--show", "--direct-io=on", path).strip()
    descriptor = os.open(device, os.O_RDONLY | os.O_CLOEXEC)
    try:
        # In use as it is, it is given up later: with its last user.
        run("losetup", "--detach", device)
        yield device
    finally:
        os.close(descriptor)


@contextlib.contextmanager
def mounted(kind, what, folder, *options):
    """The mount recovers the file system as after any loss of power."""
    folder.mkdir(exist_ok=True)
    if kind == "btrfs":
        # It remembers the disk by its name, and takes no older state of it.
        subprocess.run(["btrfs", "device", "scan", "--forget"], check=False,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    run("mount", "-t", kind, *options, what, folder)
    try:
        yield folder
    finally:
        run("umount", folder)


@contextlib.contextmanager
def serving(program, image, journal, folder):
    """The file that stands for the disk, served by a process of its own."""
    folder.mkdir(exist_ok=True)
    server = subprocess.Popen([program, image, journal, folder],
                              stdout=subprocess.PIPE)
    try:
        if server.stdout.readline() != b"ready\n":
            raise SystemExit(f"{program} didn't start")
        yield folder / "disk"
    finally:
        run("umount", folder)
        server.wait()


@contextlib.contextmanager
def disk(program, kind, work):
    """A fresh file system, mounted, whose disk keeps a journal. What it held
    first is in work/first.img, the journal in work/journal.
    """
    make_image(kind, work / "first.img")
    run("cp", "--sparse=always", work / "first.img", work / "disk.img")
    with contextlib.ExitStack() as stack:
        file = stack.enter_context(serving(
            program, work / "disk.img", work / "journal", work / "server"))
        device = stack.enter_context(loop_device(file))
        yield stack.enter_context(mounted(kind, device, work / "disk"))


@contextlib.contextmanager
def memory(folder):
    """A file system in memory at the folder, for all the files here."""
    folder.mkdir(parents=True, exist_ok=True)
    run("mount", "-t", "tmpfs", "power-cut", folder)
    try:
        yield folder
    finally:
        run("umount", folder)


def monotonic_ns():
    return time.clock_gettime_ns(time.CLOCK_MONOTONIC)
