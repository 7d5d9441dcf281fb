"""The machine and the programs that a comparison ran with, in words."""

import os
import platform
import re
import subprocess

VERSIONS = {"ffmpeg": ["ffmpeg", "-version"],
            "GStreamer": ["gst-launch-1.0", "--version"],
            "faad": ["faad"],
            "mediainfo": ["mediainfo", "--Version"],
            "g++": ["g++", "--version"]}


def version_of(command):
    """The first number with a point in what a program says of itself, and not
    of its name."""
    try:
        done = subprocess.run(command, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              check=False)
    except FileNotFoundError:
        return None
    found = re.search(rb"(?<![-\d.])\d+(\.\d+)+", done.stdout)
    return found[0].decode() if found else "unknown"


def cpu_model():
    with open("/proc/cpuinfo") as file:
        for line in file:
            if line.startswith("model name"):
                return line.partition(":")[2].strip()
    return platform.machine()


def system_name():
    try:
        return platform.freedesktop_os_release()["PRETTY_NAME"]
    except OSError:
        return "Linux"


def describe():
    """{what: text or number}, for the JSON. Names no host and no folder."""
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
    versions = {name: version_of(command)
                for name, command in VERSIONS.items()}
    return {"cpu": cpu_model(), "cores": os.cpu_count(),
            "memory_gib": round(memory / 2**30), "system": system_name(),
            "kernel": platform.release().partition("-")[0],
            "load_at_start": round(os.getloadavg()[0], 2),
            "versions": {name: version for name, version in versions.items()
                         if version}}


def in_words(machine):
    versions = ", ".join(f"{name} {version}"
                         for name, version in machine["versions"].items())
    return (f"{machine['cores']} cores of {machine['cpu']}, "
            f"{machine['memory_gib']} GiB, {machine['system']}, Linux "
            f"{machine['kernel']}, load {machine['load_at_start']} at the "
            f"start.\n{versions}.")
