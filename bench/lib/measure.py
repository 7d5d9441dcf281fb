"""What the sections of bench/compare measure with, and what they measure on.

Times are in seconds, memory is in KiB.
"""

import array
import contextlib
import dataclasses
import fcntl
import os
import pathlib
import pty
import shutil
import statistics
import struct
import subprocess
import sys
import termios
import threading
import wave

BUILD = pathlib.Path("build/bench")
FOLDER = pathlib.Path("build/compare")
VOICES = pathlib.Path("/usr/share/sounds/alsa")
PROGRAMS = ("ffmpeg", "ffprobe", "faad", "mediainfo", "gst-launch-1.0")
ELEMENTS = ("rawaudioparse", "audioconvert", "avenc_aac", "aacparse",
            "progressreport", "alsasrc")  # of GStreamer, each in a package of its own
TOO_LONG_SECONDS = 900  # whatever takes longer hangs


@dataclasses.dataclass
class Cost:
    """What one run of a command took, and what it said."""

    cpu_s: float  # user and system, of the process and those it waited for
    wall_s: float
    max_rss_kib: int
    status: int  # as a shell tells it; 128 and more for a signal
    stdout: bytes
    stderr: bytes
    wakeups: int = 0


class Failed(Exception):
    """A command did not do what it was to be measured at."""


def measure(command, stdin_path=None):
    """Runs a command, whatever its exit status, and returns its Cost.

    `run_measured` stands between: the kernel counts to a new program's peak
    memory what the process had that started it, and that would be a whole
    Python here.
    """
    report = FOLDER / f"cost-{os.getpid()}.txt"
    with open(stdin_path or "/dev/null", "rb") as source:
        done = subprocess.run(
            measuring(command, report), stdin=source, capture_output=True,
            timeout=TOO_LONG_SECONDS, check=False)
    return cost_of(command, report, done.returncode, done.stdout, done.stderr)


def measure_on_terminal(command, environment):
    """The same with a terminal of 80 columns as standard error, as a person
    has who looks on; the Cost has what was written there."""
    report = FOLDER / f"cost-{os.getpid()}.txt"
    master, terminal = pty.openpty()
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("4H", 24, 80, 0, 0))
    with subprocess.Popen(
            measuring(command, report), env={**os.environ, **environment},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=terminal) as process:
        os.close(terminal)
        screen = threading.Thread(target=read_to_end, args=(master, seen := []))
        screen.start()
        output = process.stdout.read()
        process.wait(TOO_LONG_SECONDS)
        screen.join()
    os.close(master)
    return cost_of(command, report, process.returncode, output, b"".join(seen))


def read_to_end(terminal, pieces):
    with contextlib.suppress(OSError):  # EIO: nobody has it open any more
        while piece := os.read(terminal, 65536):
            pieces.append(piece)


def measuring(command, report):
    return [str(BUILD / "run_measured"), str(report), *map(str, command)]


def cost_of(command, report, returncode, stdout, stderr):
    if returncode != 0 or not report.exists():
        raise Failed(f"{command[0]} could not be measured: "
                     f"{stderr.decode(errors='replace').strip()}")
    cpu_us, wall_us, max_rss_kib, status, wakeups = map(
        int, report.read_text().split())
    report.unlink()
    return Cost(cpu_us / 1e6, wall_us / 1e6, max_rss_kib, status, stdout,
                stderr, wakeups)


def measure_success(command, stdin_path=None):
    """The Cost of a command that must succeed."""
    return must_succeed(command, measure(command, stdin_path))


def must_succeed(command, cost):
    if cost.status != 0:
        raise Failed(f"{' '.join(map(str, command))}\nended with status "
                     f"{cost.status}: "
                     f"{cost.stderr.decode(errors='replace')[-800:]}")
    return cost


def rotated(contenders, rounds, run_one):
    """Runs each contender once a round, each round another one first.

    A machine that becomes slower or faster meanwhile so does it to all.
    `contenders` is a list of names; returns {name: [result a round]}.
    """
    results = {name: [] for name in contenders}
    for number in range(rounds if contenders else 0):
        first = number % len(contenders)
        for name in contenders[first:] + contenders[:first]:
            results[name].append(run_one(name))
    return results


def median_and_range(values):
    return {"median": statistics.median(values), "least": min(values),
            "most": max(values)}


class Bench:
    """One run of bench/compare: its scale, its scratch folder, its rivals."""

    def __init__(self, quick):
        self.quick = quick
        self.folder = FOLDER
        self.folder.mkdir(parents=True, exist_ok=True)
        self.programs = {name for name in PROGRAMS if shutil.which(name)}
        if not all(map(has_element, ELEMENTS)):
            self.programs.discard("gst-launch-1.0")

    def say(self, text):
        print(f"  {text}", file=sys.stderr, flush=True)

    def pcm(self, seconds, rate, channels):
        """A file of s16le without a header: voices and noise, over and over.

        The channels say the same words at different times, or the encoder
        would find nothing to tell them apart. Voices recorded at another rate
        speak faster or slower, which is no less work.
        """
        path = self.folder / f"{seconds:g}s_{rate}_{channels}.raw"
        wanted = round(seconds * rate) * channels * 2
        if path.exists() and path.stat().st_size == wanted:
            return path
        loop = interleaved_voices(channels)
        with open(path, "wb") as file:
            for start in range(0, wanted, len(loop)):
                file.write(loop[:wanted - start])
        return path


def has_element(name):
    return bool(shutil.which("gst-inspect-1.0")) and subprocess.run(
        ["gst-inspect-1.0", "--exists", name], check=False).returncode == 0


def interleaved_voices(channels):
    """All the sounds of alsa-utils as s16le bytes, a channel later by its
    share of the whole than the one before."""
    voice = array.array("h")
    for path in sorted(VOICES.glob("*.wav")):
        with wave.open(str(path)) as sound:
            voice.frombytes(sound.readframes(sound.getnframes()))
    mixed = array.array("h", bytes(2 * len(voice) * channels))
    for channel in range(channels):
        shift = len(voice) * channel // channels
        mixed[channel::channels] = voice[shift:] + voice[:shift]
    return mixed.tobytes()
