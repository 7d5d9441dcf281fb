"""Growth in figures that no noise touches: instructions and system calls."""

import collections
import os
import re
import subprocess

import growth_takes
from captures import make_room
from measure import BUILD, Failed, measure_success, median_and_range, rotated

OURS = ("libcorvane_plugin", "libflutter_linux_gtk", "corvane")
CORVANE = str(BUILD / "corvane")
CAPTURE_RATE, CAPTURE_CHANNELS = 44100, 2
WINDOW_BYTES = 1 << 16  # what the scan reads at once
# How often two threads find each other asleep is chance.
MEETINGS = {"futex", "poll", "read"}
WAV_SIZES = {"1 KiB": 1 << 10, "4 GiB": 1 << 32}
CALL = re.compile(r"^\d+ +(\w+)\(")


def by_object(bench, command, source=os.devnull):
    """Instructions of a whole command: {object without folder and version:
    what its own code ran}."""
    profile = bench.folder / "growth.profile"
    with open(source, "rb") as stdin:
        checked(["valgrind", "-q", "--tool=callgrind",
                 f"--callgrind-out-file={profile}", *command], stdin)
    sums = checked(["awk", "-f", "scripts/lib/callgrind.awk", str(profile)])
    return {name: int(count)
            for kind, name, count in map(str.split, sums.splitlines())
            if kind == "instructions"}


def instructions(bench, command, source=os.devnull):
    """Of a whole command, and of our own objects in it."""
    counts = by_object(bench, command, source)
    return {"all": sum(counts.values()),
            "ours": sum(counts.get(name, 0) for name in OURS)}


def checked(command, stdin=subprocess.DEVNULL):
    done = subprocess.run(command, stdin=stdin, capture_output=True,
                          text=True, check=False)
    if done.returncode != 0:
        raise Failed(f"{' '.join(command)}: {done.stderr[-800:]}")
    return done.stdout


def calls(bench, command, file):
    """Two lists of names: all system calls, and those that name the file."""
    trace = bench.folder / "growth.strace"
    checked(["strace", "-f", "-y", "-o", str(trace), *command])
    lines = [(CALL.match(line), line)
             for line in trace.read_text(errors="replace").splitlines()]
    everything = [call[1] for call, _ in lines if call]
    on_file = [call[1] for call, line in lines if call and file.name in line]
    return everything, on_file


def takes(bench):
    """Silence costs the codec little and the rest as much as speech."""
    rows = []
    for seconds in [0.1, 10, 100] + [1000] * (not bench.quick):
        source = growth_takes.input_file(bench, seconds, silent=True)
        out = bench.folder / "growth.aac"
        out.unlink(missing_ok=True)
        command = growth_takes.corvane(out)
        rows.append({"length_s": seconds,
                     **instructions(bench, command, source)})
        source.unlink()
        bench.say(f"instructions of a take of {seconds:g} s counted")
    return rows


def captures(bench):
    """{seconds: file}: one of 0.1 s, and ten seconds over and over."""
    make_room(bench.folder, 1 << (28 if bench.quick else 30))

    def record(seconds):
        out = bench.folder / f"growth_{seconds:g}s.aac"
        out.unlink(missing_ok=True)
        measure_success(
            [CORVANE, "record", "-i", "-", "-r", str(CAPTURE_RATE), "-c",
             str(CAPTURE_CHANNELS), "-b", "64000", str(out)],
            bench.pcm(seconds, CAPTURE_RATE, CAPTURE_CHANNELS))
        return out

    files = {0.1: record(0.1), 10: record(10)}
    loop = files[10].read_bytes()
    for times in [10, 100, 1000] + [10000] * (not bench.quick):
        path = bench.folder / f"growth_{10 * times}s.aac"
        with open(path, "wb") as file:
            for _ in range(times):
                file.write(loop)
            file.flush()
            os.fsync(file.fileno())  # or the seal would do it
        files[10 * times] = path
    return files


def seals(bench):
    files = captures(bench)
    rounds = 5 if bench.quick else 41
    clocked = rotated(list(files), rounds, lambda seconds: measure_success(
        [CORVANE, "finalize", str(files[seconds])]).cpu_s)
    rows = []
    for seconds, path in files.items():
        command = [CORVANE, "finalize", str(path)]
        reads = calls(bench, command, path)[1].count("pread64")
        rows.append({"length_s": seconds, "bytes": path.stat().st_size,
                     "reads": reads,
                     "cpu_s": median_and_range(clocked[seconds]),
                     **instructions(bench, command)})
        bench.say(f"seal of {seconds:g} s counted")
    for path in files.values():
        path.unlink()
    return rows


def wav_repairs(bench):
    """A file of zeros of either size, made anew for each repair."""
    file = bench.folder / "growth.wav"
    command = [CORVANE, "repair-wav", str(file), "-r", "48000", "-c", "2"]

    def make(name):
        file.unlink(missing_ok=True)
        file.touch()
        os.truncate(file, WAV_SIZES[name])

    def clocked(name):
        make(name)
        return measure_success(command).wall_s

    walls = rotated(list(WAV_SIZES), 5 if bench.quick else 41, clocked)
    rows = []
    for name in WAV_SIZES:
        make(name)
        everything, on_file = calls(bench, command, file)
        others = collections.Counter(everything)
        for call in MEETINGS:
            others.pop(call, None)
        rows.append({"size": name, "calls_on_file": on_file,
                     "other_calls": dict(sorted(others.items())),
                     "wall_s": median_and_range(walls[name])})
    file.unlink()
    return rows
