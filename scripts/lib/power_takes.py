"""What is recorded before the power is cut, and what was promised of it when.

One after another, at one path, so that each moves the one before it aside: a
short take, the long one in real time, one that is killed, and short ones. In
between a WAV file's header is repaired. All times are monotonic nanoseconds,
all amounts of audio sample frames unless a name says otherwise.
"""

import dataclasses
import json
import signal
import struct
import subprocess
import threading
import time

import power_disk
from speech import FRAME_BYTES, RATE, speech

TAKE = "take.aac"
WAV = "broken.wav"
ORPHANS = "take.orphan*.aac"
RAW = ["-i", "-", "-r", str(RATE), "-c", "1"]
SHORT_TAKES = 6
AAC_FRAME = 1024
WAV_HEADER_SIZE = 44


@dataclasses.dataclass
class Take:
    began_ns: int
    ended_ns: int = 0  # its stop was answered, or it was killed
    stopped: bool = False
    reads: list = dataclasses.field(default_factory=list)  # (when, frames)
    flushes: list = dataclasses.field(default_factory=list)
    bytes: bytes = b""  # all that was ever in its file
    longest_flush_s: float = 0.0  # from the call to its answer, as it says
    machine_late_s: float = 0.0  # the longest that a bystander woke up late

    def fed(self, moment_ns):
        """Handed over by then."""
        return sum(frames for end_ns, frames in self.reads
                   if end_ns <= moment_ns)

    def promised(self, moment_ns):
        """Bytes that have to outlive a cut at that moment."""
        if self.stopped and self.ended_ns <= moment_ns:
            return len(self.bytes)
        return max((flush.size for flush in self.flushes
                    if flush.end_ns <= moment_ns), default=0)

    def in_codec_at_flush(self, moment_ns):
        """What the last flush that was answered could not reach: the codec's
        look-ahead, and the frame that was being filled.
        """
        begun_ns = max((flush.begin_ns for flush in self.flushes
                        if flush.end_ns <= moment_ns), default=self.began_ns)
        return 2 * AAC_FRAME + self.fed(begun_ns) % AAC_FRAME


@dataclasses.dataclass(frozen=True)
class Flush:
    begin_ns: int
    end_ns: int
    size: int  # bytes in the file when it began


@dataclasses.dataclass
class Repair:
    """Of a WAV file's header."""

    old: bytes
    began_ns: int = 0
    ended_ns: int = 0
    new_header: bytes = b""


@dataclasses.dataclass
class Recording:
    takes: list
    repair: Repair
    ended_ns: int = 0

    @property
    def long(self):
        return self.takes[1]

    def at(self, moment_ns):
        """The take that has the path at that moment, and the one after it."""
        begun = [take for take in self.takes if take.began_ns <= moment_ns]
        behind = self.takes[len(begun):len(begun) + 1]
        return begun[-1], behind[0] if behind else None


class Bystander(threading.Thread):
    """Wakes up a hundred times a second, and knows by how much too late: what
    a busy machine does to those who wait for their time.
    """

    TICK_S = 0.01

    def __init__(self):
        super().__init__()
        self.enough = threading.Event()
        self.late_s = 0.0

    def run(self):
        begun = time.monotonic()
        while not self.enough.wait(self.TICK_S):
            now = time.monotonic()
            self.late_s = max(self.late_s, now - begun - self.TICK_S)
            begun = now

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.enough.set()
        self.join()


class Recorder:
    """Runs the program, with a witness beside it."""

    def __init__(self, build, work, folder, flush_every):
        self.program = build / "corvane"
        self.witness = build / "libpower_witness.so"
        self.notes = work / "notes"
        self.pcm = work / "speech.raw"
        self.folder = folder
        self.flush_every = flush_every
        self.takes = 0

    def take(self, seconds, *options, killed_after=None):
        # No two alike, so that none can stand in for another.
        self.pcm.write_bytes(speech(seconds, skipped=self.takes * 0.7))
        self.takes += 1
        self.notes.unlink(missing_ok=True)
        take = Take(power_disk.monotonic_ns())
        with open(self.pcm, "rb") as pcm:
            child = subprocess.Popen(
                [self.program, "record", *RAW, *options, "--flush-every",
                 str(self.flush_every), self.folder / TAKE],
                stdin=pcm, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                env={"LD_PRELOAD": self.witness,
                     "CORVANE_WITNESS": self.notes})
            with Bystander() as bystander:
                figures = self._end(child, killed_after)
            # It says whole milliseconds, rounded down.
            take.longest_flush_s = (figures["longestFlushMs"] + 1) / 1000
            take.machine_late_s = bystander.late_s
        take.ended_ns = power_disk.monotonic_ns()
        take.stopped = killed_after is None
        self._read_notes(take)
        return take

    @staticmethod
    def _end(child, killed_after):
        """The figures that it ends with; those of none if it is killed."""
        try:
            output, messages = child.communicate(timeout=killed_after)
        except subprocess.TimeoutExpired:
            child.kill()
            output, messages = child.communicate()
        expected = 0 if killed_after is None else -signal.SIGKILL
        if child.returncode != expected:
            raise SystemExit(f"the recorder ended as {child.returncode}: "
                             f"{messages.decode()}")
        return json.loads(output or '{"longestFlushMs": 0}')

    def _read_notes(self, take):
        for line in self.notes.read_text().splitlines():
            name, begin, end, amount = line.split()
            if name == "read":
                take.reads.append((int(end), int(amount) // FRAME_BYTES))
            elif name == "fsync":
                take.flushes.append(Flush(int(begin), int(end), int(amount)))

    def repair_wav(self, repair):
        repair.began_ns = power_disk.monotonic_ns()
        power_disk.run(self.program, "repair-wav", self.folder / WAV)
        repair.ended_ns = power_disk.monotonic_ns()
        repair.new_header = (self.folder / WAV).read_bytes()[:WAV_HEADER_SIZE]


def broken_wav(seconds):
    """As a recorder leaves it that died before it wrote the sizes."""
    return struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36, b"WAVE", b"fmt ", 16,
                       1, 1, RATE, RATE * FRAME_BYTES, FRAME_BYTES, 16,
                       b"data", 0) + speech(seconds)


def record(recorder, seconds):
    """All of it, in the recorder's folder, which is empty."""
    wav = recorder.folder / WAV
    wav.write_bytes(broken_wav(2))
    power_disk.run("sync", "-f", wav)
    recording = Recording([recorder.take(3)], Repair(wav.read_bytes()))
    takes = recording.takes
    takes.append(recorder.take(seconds, "--realtime"))
    recorder.repair_wav(recording.repair)
    takes.append(recorder.take(3, "--realtime", killed_after=1.5))
    for _ in range(SHORT_TAKES):
        takes.append(recorder.take(1))
    recording.ended_ns = power_disk.monotonic_ns()
    read_contents(recorder.folder, takes)
    return recording


def read_contents(folder, takes):
    for number, take in enumerate(takes):
        slot = "take.orphan" + (str(number) if number else "") + ".aac"
        name = TAKE if take is takes[-1] else slot
        take.bytes = (folder / name).read_bytes()
