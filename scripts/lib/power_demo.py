"""Four recorders hear the same speech, and the power of their disk is cut.

Run by scripts/power-demo at the root of a checkout that is built. All of them
write onto one ext4, and stay until the end. What the disk held at each of some
random moments follows from its journal; each of these disks is mounted, and the
kernel recovers the file system as after any loss of power.

All amounts of audio are sample frames unless a name says otherwise.
"""

import argparse
import contextlib
import pathlib
import random
import signal
import sys

import power_disk
import power_picture
from crash_demo import PIECE, wait_until
from crash_recorders import INPUT, Recorder, kept_in
from power_checks import frame_ends, same_front
from power_journal import Cut, Journal, Replay
from power_takes import WAV_HEADER_SIZE
from speech import FRAME_BYTES, RATE, speech

TAKE_SECONDS = 100
CUTS = 6
LEAST_GAP_SECONDS = 8.0
FOLDER = pathlib.Path("build/power-demo")
PICTURE = FOLDER / "power-demo.png"

# A microphone for arecord: what comes over standard input. Without a config
# of its own it would look for a sound card.
DEVICE = """pcm.speech {
  type file
  file "/dev/null"
  infile "/dev/stdin"
  format raw
  slave.pcm { type null }
}
"""
# What arecord asks of a device at once, unless it is told otherwise. The device
# above must have it all when it is asked, as a sound card would.
PERIOD = RATE // 8


class Lane:
    """A recorder, and how long what it recorded was after each cut."""

    def __init__(self, name, manner, command, file, period=PIECE):
        self.name = name
        self.manner = manner
        self.command = [*command, str(file)]
        self.file = file.name
        self.period_bytes = period * FRAME_BYTES
        self.collected = b""
        self.bytes = b""  # all that it wrote
        self.kept_s = []
        self.found = []  # bytes of its file; None if there was none

    def begin(self, log):
        self.recorder = Recorder(self.command, log)

    def feed(self, pcm):
        self.collected += pcm
        if len(self.collected) >= self.period_bytes:
            self.recorder.feed(self.collected[:self.period_bytes])
            self.collected = self.collected[self.period_bytes:]

    def end(self, folder, pcm):
        self.recorder.kill()
        self.recorder.fed_at_death()
        self.bytes = (folder / self.file).read_bytes()
        # Of a device that was not fed as it asked, something else is heard.
        if (self.is_wav and
                not pcm.startswith(self.bytes[WAV_HEADER_SIZE:])):
            sys.exit(f"{self.name} has not recorded what was said.")

    @property
    def is_wav(self):
        return self.file.endswith(".wav")

    def look(self, folder):
        """At what a cut has left."""
        path = folder / self.file
        data = path.read_bytes() if path.exists() else None
        self.found.append(None if data is None else len(data))
        self.kept_s.append(self.kept(data or b"") / RATE)

    def kept(self, data):
        sound = same_front(data, self.bytes)
        if self.is_wav:
            return max(sound - WAV_HEADER_SIZE, 0) // FRAME_BYTES
        return kept_in(len(frame_ends(data[:sound])))


def lanes(build, folder):
    corvane = [str(build / "corvane"), "record", *INPUT]
    raw = ["-f", "s16le", "-ar", str(RATE), "-ac", "1", "-i", "-"]
    config = FOLDER / "asound.conf"
    config.write_text(DEVICE)
    return [
        Lane("Corvane", "as it is", corvane, folder / "corvane.aac"),
        Lane("Corvane", "--flush-every 0", [*corvane, "--flush-every", "0"],
             folder / "never.aac"),
        Lane("ffmpeg", "at its default",
             ["ffmpeg", *raw, "-b:a", "128k"], folder / "ffmpeg.aac"),
        Lane("arecord", "at its default,\na WAV file",
             ["env", f"ALSA_CONFIG_PATH={config.resolve()}", "arecord", "-D",
              "speech", "-t", "wav", "-f", "S16_LE", "-r", str(RATE), "-c",
              "1"], folder / "arecord.wav", PERIOD)]


def cut_moments(chance):
    """Seconds from the start, anywhere but with a gap before each."""
    spare = TAKE_SECONDS - (CUTS + 1) * LEAST_GAP_SECONDS
    points = sorted(chance.uniform(0, spare) for _ in range(CUTS))
    return [point + (i + 1) * LEAST_GAP_SECONDS
            for i, point in enumerate(points)]


def record(everyone, pcm, folder):
    """Returns when it began, and how late the feeder was at the most."""
    late_s = 0.0
    with open(FOLDER / "messages.txt", "wb") as log, \
            contextlib.ExitStack() as stack:
        began_s = power_disk.monotonic_ns() / 1e9
        for lane in everyone:
            lane.begin(log)
            stack.callback(lane.recorder.process.kill)
        # A microphone gives out a piece of sound when its time is over.
        for start in range(0, len(pcm), PIECE * FRAME_BYTES):
            due_s = began_s + (start / FRAME_BYTES + PIECE) / RATE
            wait_until(due_s)
            late_s = max(late_s, power_disk.monotonic_ns() / 1e9 - due_s)
            for lane in everyone:
                lane.feed(pcm[start:start + PIECE * FRAME_BYTES])
        for lane in everyone:
            lane.end(folder, pcm)
    return began_s, late_s


def cut_power(everyone, began_s, moments, work):
    """The disk has all that it was sent by then: it forgets nothing, so what
    is missing had not left the memory.
    """
    replay = Replay(Journal(work / "journal"), work / "first.img")
    for moment_s in moments:
        moment_ns = int((began_s + moment_s) * 1e9)
        replay.make(Cut(moment_ns, "all", 0), work / "cut.img")
        with power_disk.mounted("ext4", work / "cut.img", work / "cut", "-o",
                                "loop") as folder:
            for lane in everyone:
                lane.look(folder)


def print_table(everyone, moments):
    print("\nseconds lost" + " " * 11 + "".join(
        f"{lane.name:>18}" for lane in everyone))
    print(" " * 23 + "".join(f"{lane.manner.split(',')[0]:>18}"
                             for lane in everyone))
    for number, moment_s in enumerate(moments):
        cells = ""
        for lane in everyone:
            state = {None: "no file, ", 0: "empty, "}.get(lane.found[number],
                                                          "")
            lost = f"{state}{moment_s - lane.kept_s[number]:.2f}"
            cells += f"{lost:>18}"
        print(f"cut {number + 1} at {moment_s:6.2f} s   {cells}")


def arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/power-demo",
        description="Cuts the power of a disk under four recorders, and shows "
        "what is left.")
    parser.add_argument("SEED", nargs="?", type=int,
                        default=random.randrange(10**6),
                        help="the moments of the cuts follow from it")
    parser.add_argument("--build", type=pathlib.Path,
                        default=pathlib.Path("build/power"),
                        help=argparse.SUPPRESS)
    power_disk.add_inside(parser)
    return parser.parse_args()


def main():
    options = arguments()
    reason = power_disk.why_impossible() or power_disk.why_not("ext4")
    if reason:
        sys.exit(f"scripts/power-demo: no power can be cut here: {reason}")
    if not options.inside:
        return power_disk.go_inside()
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    FOLDER.mkdir(parents=True, exist_ok=True)
    pcm = speech(TAKE_SECONDS)
    moments = cut_moments(random.Random(options.SEED))
    with power_disk.memory(FOLDER / "disk") as work:
        with power_disk.disk(options.build.resolve() / "power_disk", "ext4",
                             work.resolve()) as folder:
            power_disk.run("sync", "-f", folder)
            everyone = lanes(options.build, folder)
            print(f"Seed {options.SEED}: {CUTS} cuts in {TAKE_SECONDS} s\n")
            for lane in everyone:
                print(" ".join(lane.command), flush=True)
            began_s, late_s = record(everyone, pcm, folder)
        cut_power(everyone, began_s, moments, work)
    print_table(everyone, moments)
    print(f"\nThe feeder was at most {late_s * 1000:.0f} ms late.")
    power_picture.draw(PICTURE, pcm, RATE, moments, everyone)
    print(f"Picture: {PICTURE}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
